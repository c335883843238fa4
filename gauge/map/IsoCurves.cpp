// Outlines of what is darker than its surroundings, in strong stretches.
#include "gauge/EdgeMap.h"

#include "foundation/Entry.h"
#include "image/core/Destination.h"
#include "image/core/Refusals.h"
#include "image/morpho/MorphoExtremum.h"

#include <array>
#include <cstddef>
#include <cstdint>
#include <vector>

namespace Tesk {

namespace {

constexpr std::uint8_t set = 255;
constexpr int smallestFilter = 3, largestFilter = 99;

/// To the right, and clockwise on the screen.
constexpr std::array<int, 8> stepX{1, 1, 0, -1, -1, -1, 0, 1}, stepY{0, 1, 1, 1, 0, -1, -1, -1};

/// Sets the pixels below the mean of the box around them plus the noise; the border is replicated.
void MarkDark(const Image& src, int filterSize, int noise, Image& dark)
{
    const int half = filterSize / 2, width = src.Width, height = src.Height;
    const std::int64_t squared = std::int64_t{filterSize} * filterSize;
    // At most 99 pixels in a column.
    std::vector<std::int32_t> columns(static_cast<std::size_t>(width));
    const auto add = [&](int y, int sign) {
        const std::uint8_t* row = src.Row(Clamp(y, 0, height - 1));
        for (int x = 0; x < width; x++)
            columns[static_cast<std::size_t>(x)] += sign * row[x];
    };
    const auto column = [&](int x) { return columns[static_cast<std::size_t>(Clamp(x, 0, width - 1))]; };
    for (int y = -half; y <= half; y++)
        add(y, 1);
    for (int y = 0; y < height; y++) {
        const std::uint8_t* row = src.Row(y);
        std::uint8_t* marks = dark.Row(y);
        std::int64_t box = 0;
        for (int x = -half; x <= half; x++)
            box += column(x);
        for (int x = 0; x < width; x++) {
            marks[x] = row[x] * squared - box - noise * squared < 0 ? set : 0;
            box += column(x + half + 1) - column(x - half);
        }
        add(y - half, -1);
        add(y + half + 1, 1);
    }
}

/// The image less its erosion by a square of 3 x 3.
void InnerGradient(const Image& src, Image& strength)
{
    images::MakeLike(src, Gray, strength);
    morpho::Apply(morpho::Extremum::Minimum, morpho::Element(3, 3, 1, src), src, strength);
    for (int y = 0; y < src.Height; y++)
        for (int x = 0; x < src.Width; x++)
            strength.Row(y)[x] = static_cast<std::uint8_t>(src.Row(y)[x] - strength.Row(y)[x]);
}

/// Walks round the outlines of a binary image.
class OutlineTracer
{
public:
    OutlineTracer(const Image& dark, const Image& strength, Image& marks)
        : dark_(dark), strength_(strength), marks_(marks)
    {}

    /// The sites of the outline that passes through a pixel are added, with the sums of the strength along it. False if
    /// it has none, or is alone.
    bool Walk(int x, int y, std::vector<Site>& sites, std::vector<std::int64_t>& sums)
    {
        int outside = 0;
        while (outside < 8 && IsSet(x, y, outside))
            outside += 2;
        if (outside == 8) return false;
        int first = -1;
        for (int k = 1; k < 8 && first < 0; k++)
            if (IsSet(x, y, (outside + k) % 8)) first = (outside + k) % 8;
        if (first < 0) return false;
        const int secondX = x + stepX[At(first)], secondY = y + stepY[At(first)];
        sums.assign(1, 0);
        // A walk that came into a round without its start would not end.
        int roundX = -1, roundY = -1, roundDirection = -1;
        std::size_t steps = 0;
        for (int direction = first;;) {
            if (x == roundX && y == roundY && direction == roundDirection) return true;
            steps++;
            if ((steps & (steps - 1)) == 0) {
                roundX = x;
                roundY = y;
                roundDirection = direction;
            }
            sites.emplace_back(x, y);
            marks_.Row(y)[x] = set;
            sums.push_back(sums.back() + strength_.Row(y)[x]);
            x += stepX[At(direction)];
            y += stepY[At(direction)];
            int next = ((direction & ~1) + 7) % 8;
            while (!IsSet(x, y, next))
                next = (next + 1) % 8;
            if (next == first && x + stepX[At(next)] == secondX && y + stepY[At(next)] == secondY) return true;
            direction = next;
        }
    }

private:
    static std::size_t At(int direction) { return static_cast<std::size_t>(direction); }
    bool IsSet(int x, int y, int direction) const
    {
        const int i = x + stepX[At(direction)], j = y + stepY[At(direction)];
        return i >= 0 && j >= 0 && i < dark_.Width && j < dark_.Height && dark_.Row(j)[i] != 0;
    }

    const Image &dark_, &strength_;
    Image& marks_;
};

/// Calls `found(first, end)` for each strong stretch of an outline, whose sums of strength begin with 0.
template <typename F>
void StrongStretches(const std::vector<std::int64_t>& sums, int length, int strength, F found)
{
    const auto count = static_cast<std::int64_t>(sums.size()) - 1;
    const auto sum = [&](std::int64_t i) { return sums[static_cast<std::size_t>(i)]; };
    if (count < length) {
        if (sum(count) >= std::int64_t{length} * strength) found(std::int64_t{0}, count);
        return;
    }
    std::int64_t start = -1, last = -1;
    bool strong = false;
    for (std::int64_t k = length - 1; k < count; k++) {
        const bool now = sum(k + 1) - sum(k + 1 - length) >= strength;
        if (strong && !now) last = k;
        if (!strong && now) {
            if (start >= 0 && k - last >= length) {
                found(start - length + 1, last);
                start = k;
            } else if (start < 0) {
                start = k;
            }
        }
        strong = now;
    }
    if (start >= 0) found(start - length + 1, strong ? count : last);
}

} // namespace

int EdgeMap::Trace(const Image& src, int filterSize, int noise, int integrationLength, int minLength, int edgeStrength)
{
    return WithMemory(images::noWorkingMemory, [&] {
        Image dark, strength, marks;
        images::MakeLike(src, Gray, dark);
        images::MakeLike(src, Gray, marks);
        images::FillRows(marks, 0);
        MarkDark(src, Clamp(filterSize, smallestFilter, largestFilter), noise, dark);
        InnerGradient(src, strength);
        Restart(src);
        auto& sites = Sites.values_;
        OutlineTracer tracer(dark, strength, marks);
        std::vector<std::int64_t> sums;
        for (int y = 0; y < src.Height; y++)
            for (int x = 0; x < src.Width; x++) {
                if (dark.Row(y)[x] == 0 || marks.Row(y)[x] != 0) continue;
                const std::size_t first = sites.size();
                if (!tracer.Walk(x, y, sites, sums)) continue;
                if (static_cast<std::int64_t>(sites.size() - first) < minLength) {
                    sites.resize(first);
                    continue;
                }
                StrongStretches(
                    sums, Max(integrationLength, 1), edgeStrength, [&](std::int64_t from, std::int64_t end) {
                        const auto base = static_cast<std::int64_t>(first);
                        Paths.values_.push_back({static_cast<int>(base + from), static_cast<int>(base + end), 0});
                    });
            }
        for (Site& site : sites)
            site = Site(site.X + OrgX, site.Y + OrgY);
        NumPaths = static_cast<int>(Paths.size());
    });
}

} // namespace Tesk
