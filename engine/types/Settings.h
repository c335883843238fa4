// The settings of an object that a program prints, by class; the tables are made from the catalogue.
#pragma once

#include "engine/Variable.h"

#include <cstdint>
#include <string>
#include <type_traits>

namespace Tesk {

/// What takes the settings down, in the words of a language.
class SettingsSink
{
public:
    virtual ~SettingsSink() = default;
    /// One setting, by its name and the text of its value.
    virtual void Setting(const wchar_t* Name, const std::wstring& Value) = 0;
    /// One statement on the object, without its end.
    virtual void Statement(const std::wstring& Call) = 0;
    /// A setting that the class does not have.
    virtual void Missing(const wchar_t* Name) = 0;
    virtual std::wstring Bool(bool Value) const = 0;
    virtual std::wstring Enumerator(int EnumNode, int Value) const = 0;
};

/// Names to the sink what differs between an object and another one; null for one that has just been made. False for a
/// type without settings, or whose class does not exist yet.
bool WriteSettings(int Type, SettingsSink& Sink, const AnyVariable& Object, const AnyVariable* Other);

/// A text by a `printf` format.
std::wstring Formatted(const wchar_t* Format, ...);

/// A character as a literal.
std::wstring CharacterText(std::uint32_t Code);

/// Whether two values of a setting differ; points by their coordinates.
template <typename T>
bool SettingDiffers(const T& a, const T& b)
{
    if constexpr (requires { a.X, a.Y; })
        return a.X != b.X || a.Y != b.Y;
    else
        return a != b;
}

/// The text of a value: a point as itself, a character, a real or a whole number by its format.
template <typename T>
std::wstring SettingText(const wchar_t* Format, const T& Value)
{
    if constexpr (requires { Value.X, Value.Y; })
        return Formatted(L"XY(%g, %g)", static_cast<double>(Value.X), static_cast<double>(Value.Y));
    else if (Format[1] == L'l')
        return CharacterText(static_cast<std::uint32_t>(Value));
    else if (Format[1] == L'd')
        return Formatted(Format, static_cast<int>(Value));
    else
        return Formatted(Format, static_cast<double>(Value));
}

} // namespace Tesk
