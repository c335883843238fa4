// Text on the clipboard, for all that lay their tables there.
#pragma once

#include <string>

namespace Tesk::tables {

/// Empties the clipboard and lays Unicode text there. May throw `std::bad_alloc`.
void PutClipboardText(const std::wstring& text);
/// False if the clipboard holds no text.
bool GetClipboardText(std::wstring& text);

} // namespace Tesk::tables
