// Filter strings, and the classes of characters.
#include "read/chars/Filter.h"

#include <cstddef>
#include <type_traits>

namespace Tesk::chars {

namespace {

constexpr bool IsUpper(int c)
{
    return c >= 'A' && c <= 'Z';
}

constexpr bool IsLower(int c)
{
    return c >= 'a' && c <= 'z';
}

constexpr bool IsDigit(int c)
{
    return c >= '0' && c <= '9';
}

constexpr bool IsPrintable(int c)
{
    return c >= ' ' && c <= '~';
}

bool IsOfClass(int letter, int c)
{
    switch (letter) {
    case 'u':
        return IsUpper(c);
    case 'U':
        return IsUpper(c) || IsDigit(c);
    case 'v':
        return IsPrintable(c) && !IsLower(c) && !IsDigit(c);
    case 'V':
        return IsPrintable(c) && !IsLower(c);
    case 'l':
        return IsLower(c);
    case 'L':
        return IsLower(c) || IsDigit(c);
    case 'm':
        return IsPrintable(c) && !IsUpper(c) && !IsDigit(c);
    case 'M':
        return IsPrintable(c) && !IsUpper(c);
    case 'a':
        return IsUpper(c) || IsLower(c);
    case 'A':
        return IsUpper(c) || IsLower(c) || IsDigit(c);
    case 'b':
        return IsPrintable(c) && !IsDigit(c);
    case 'B':
        return IsPrintable(c);
    case '9':
        return IsDigit(c);
    case '0':
        return IsPrintable(c) && !IsUpper(c) && !IsLower(c);
    case '.':
        return IsPrintable(c) && !IsUpper(c) && !IsLower(c) && !IsDigit(c);
    case '*':
        return true;
    default:
        return false;
    }
}

template <typename C>
std::vector<Filter> Parse(std::basic_string_view<C> text)
{
    const auto code = [](C c) { return static_cast<int>(static_cast<std::make_unsigned_t<C>>(c)); };
    std::vector<Filter> filters;
    for (std::size_t i = 0; i < text.size(); i++) {
        if (text[i] != '%')
            filters.push_back(code(text[i]));
        else if (++i == text.size())
            filters.push_back(ignored);
        else
            filters.push_back(text[i] == '%' ? '%' : -code(text[i]));
    }
    return filters;
}

} // namespace

bool Admits(Filter filter, int code)
{
    return IsVerbatim(filter) ? code == filter : IsOfClass(-filter, code);
}

std::vector<Filter> ParseFilter(std::string_view text)
{
    return Parse(text);
}

std::vector<Filter> ParseFilter(std::wstring_view text)
{
    return Parse(text);
}

} // namespace Tesk::chars
