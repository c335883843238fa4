// Getting the sequence out as a program: to a file or to the clipboard.
#pragma once

#include "workbench/logic/IOperationViews.h"

namespace TeskPlus {

inline constexpr int LanguageCount = 4;
inline constexpr const wchar_t* LanguageNames[LanguageCount] = {L"Native C++", L"C#", L"Visual Basic", L"C++.NET"};

/// The filter of the save dialog of a language.
const wchar_t* ScriptFilter(int Language);
/// Asks for a file and writes the whole program. False if the user cancelled or the file cannot be opened.
bool ExportToFile(const Engine& Engine, IOperationViews& Views, int Language);
/// Puts an operation's section, or with `Auto` the whole program, on the clipboard.
void CopyToClipboard(const Engine& Engine, int Language, int Which);

} // namespace TeskPlus
