// What characters a position of the text may hold: filter strings and classes of characters.
#pragma once

#include <string_view>
#include <vector>

namespace Tesk::chars {

/// A filter of one position: the code of the one character that it admits, or the negative letter of a class.
using Filter = int;

inline constexpr Filter anything = -'*', ignored = -'-';

constexpr Filter ClassFilter(wchar_t letter)
{
    return -static_cast<int>(letter);
}

constexpr bool IsVerbatim(Filter filter)
{
    return filter >= 0;
}

/// Whether a filter admits a character: by equality, or by its class; a class of no known letter admits none. Classes
/// take letters and digits to be those of ASCII, and what lies beyond ASCII for not printable.
bool Admits(Filter filter, int code);

/// The filters of the first positions, one for each element of a filter string: "%x" for the class x, "%%" for the
/// percent sign, all else for itself. A "%" at the end counts as "%-".
std::vector<Filter> ParseFilter(std::string_view text);
std::vector<Filter> ParseFilter(std::wstring_view text);

/// That of a position: the last filter holds from its own on. There must be one.
inline Filter FilterAt(const std::vector<Filter>& filters, std::size_t position)
{
    return position < filters.size() ? filters[position] : filters.back();
}

} // namespace Tesk::chars
