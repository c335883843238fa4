// Numbers in lines of text with separated fields, whatever the locale.
#pragma once

#include <charconv>
#include <string>
#include <string_view>
#include <system_error>
#include <type_traits>

namespace Tesk::tables {

inline void AppendWhole(std::string& text, int value)
{
    char digits[16];
    text.append(digits, std::to_chars(digits, digits + sizeof digits, value).ptr);
}

/// As by "%f".
inline void AppendFixed(std::string& text, float value)
{
    // A sign, the 39 digits of the largest number, the point and six places.
    char digits[64];
    constexpr int places = 6;
    text.append(digits, std::to_chars(digits, digits + sizeof digits, value, std::chars_format::fixed, places).ptr);
}

/// As by "%g".
inline void AppendGeneral(std::string& text, double value)
{
    char digits[32];
    constexpr int significant = 6;
    text.append(digits,
                std::to_chars(digits, digits + sizeof digits, value, std::chars_format::general, significant).ptr);
}

inline std::string_view Trimmed(std::string_view field)
{
    constexpr const char* blanks = " \r";
    const std::size_t first = field.find_first_not_of(blanks);
    if (first == std::string_view::npos) return {};
    return field.substr(first, field.find_last_not_of(blanks) - first + 1);
}

/// Whether the whole field is a number that a `T` can hold.
template <typename T>
bool ParseNumber(std::string_view field, T& value)
{
    field = Trimmed(field);
    if (field.size() > 1 && field[0] == '+' && field[1] != '-') field.remove_prefix(1);
    T parsed{};
    const auto [end, error] = std::from_chars(field.data(), field.data() + field.size(), parsed);
    if (error != std::errc() || end != field.data() + field.size()) return false;
    value = parsed;
    return true;
}

/// Takes a field off a line; an empty one behind the last.
inline std::string_view NextField(std::string_view& line, char separator)
{
    const std::string_view field = line.substr(0, line.find(separator));
    line.remove_prefix(field.size() < line.size() ? field.size() + 1 : field.size());
    return field;
}

/// Takes a line off a text, without its end, which is a line feed that may have a carriage return before it.
inline std::string_view NextLine(std::string_view& text)
{
    std::string_view line = NextField(text, '\n');
    if (line.ends_with('\r')) line.remove_suffix(1);
    return line;
}

/// Lines of a text; what stands behind the last line feed is one if it is not empty.
inline int CountLines(std::string_view text)
{
    int lines = 0;
    for (; !text.empty(); lines++)
        NextLine(text);
    return lines;
}

} // namespace Tesk::tables
