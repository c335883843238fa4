// How the boxes of characters make strings and lines.
#include "read/chars/Strings.h"

#include <algorithm>
#include <cstddef>
#include <cstdint>

namespace Tesk::chars {

namespace {

int SeparatorBetween(const CharBox& a, const CharBox& b, int charWidth, int charHeight)
{
    if (std::int64_t{b.Y} - a.Y > charHeight / 2) return lineSeparator;
    const std::int64_t twice = 2 * (std::int64_t{b.X} - a.X) - a.Width + b.Width;
    return 2 * twice > 7 * std::int64_t{charWidth} ? gapSeparator : 0;
}

} // namespace

std::vector<CharString> FindStrings(std::span<const CharBox> boxes, int charWidth, int charHeight)
{
    std::vector<CharString> strings;
    if (boxes.empty()) return strings;
    const int count = static_cast<int>(boxes.size());
    int first = 0;
    for (int i = 1; i < count; i++) {
        const auto at = static_cast<std::size_t>(i);
        const int separator = SeparatorBetween(boxes[at - 1], boxes[at], charWidth, charHeight);
        if (separator == 0) continue;
        strings.push_back({first, i, separator});
        first = i;
    }
    strings.push_back({first, count, 0});
    return strings;
}

void AlignLines(std::span<CharBox> boxes, std::span<const CharString> strings)
{
    std::vector<int> tops;
    std::size_t first = 0;
    for (const CharString& string : strings) {
        if (string.Separator == gapSeparator) continue;
        const auto last = static_cast<std::size_t>(string.Last);
        const std::span<CharBox> line = boxes.subspan(first, last - first);
        tops.clear();
        for (const CharBox& box : line)
            tops.push_back(box.Y);
        const auto middle = tops.begin() + static_cast<std::ptrdiff_t>(tops.size() / 2);
        std::nth_element(tops.begin(), middle, tops.end());
        for (CharBox& box : line)
            box.Y = *middle;
        first = last;
    }
}

} // namespace Tesk::chars
