// Lines of an image as gray values, and the edges on them.
#include "read/linear/LineWalk.h"

#include "read/core/BresenhamLine.h"

#include <algorithm>
#include <cmath>
#include <cstdlib>

namespace Tesk::linear {

namespace {

int GrayOf(GrayPixel pixel)
{
    return pixel;
}
int GrayOf(Gray16Pixel pixel)
{
    return pixel;
}
int GrayOf(RgbPixel pixel)
{
    return std::max({pixel.Red, pixel.Green, pixel.Blue});
}
int GrayOf(RgbaPixel pixel)
{
    return std::max({pixel.Red, pixel.Green, pixel.Blue});
}

/// Calls `visit(x, y)` for the pixels of Bresenham's line.
template <typename F>
void Bresenham(Pixel from, Pixel to, F visit)
{
    BresenhamLine(from.x, from.y, to.x, to.y).Visit(visit);
}

/// The pixels before and behind a place, held to the image, and how far it lies from the one to the other.
struct Between
{
    int first, second;
    double fraction;
};

Between Neighbours(double v, int count)
{
    if (!(v > 0)) return {0, 0, 0};
    if (v >= count - 1) return {count - 1, count - 1, 0};
    const int first = static_cast<int>(v);
    return {first, first + 1, v - first};
}

constexpr int largestGray = 65535;

/// Where the swing from one turn to the next crosses its middle level.
template <int sign>
int CrossingOf(std::span<const int> line, Turn from, Turn to)
{
    const int sum = from.value + to.value;
    auto i = static_cast<std::size_t>(from.index) + 1;
    while (sign * (2 * line[i] - sum) < 0)
        i++;
    const int position = static_cast<int>(256 * i), before = line[i - 1];
    return line[i] == before ? position : position + 128 * (sum - 2 * before) / (line[i] - before);
}

/// Follows a line up (`sign` 1) or down from a turn; `i` moves to the sample that has turned, or behind the last one.
template <int sign>
Turn Follow(std::span<const int> line, int noise, std::size_t& i)
{
    Turn turn{static_cast<int>(i), line[i]};
    while (++i < line.size()) {
        const int gain = sign * (line[i] - turn.value);
        if (gain > 0)
            turn = {static_cast<int>(i), line[i]};
        else if (gain < -noise)
            break;
    }
    return turn;
}

} // namespace

template <typename F>
decltype(auto) Raster::ByPixel(F f) const
{
    switch (type_) {
    case Gray16:
        return f(static_cast<const Gray16Pixel*>(nullptr));
    case Rgb:
        return f(static_cast<const RgbPixel*>(nullptr));
    case Rgba:
        return f(static_cast<const RgbaPixel*>(nullptr));
    default:
        return f(static_cast<const GrayPixel*>(nullptr));
    }
}

int Raster::At(int x, int y) const
{
    return ByPixel([&]<typename T>(const T*) { return GrayOf(reinterpret_cast<const T*>(first_ + pitch_ * y)[x]); });
}

int Raster::Walk(Pixel from, Pixel to, int* out) const
{
    ByPixel([&]<typename T>(const T*) {
        if (from.y == to.y && from.x <= to.x) {
            const T* row = reinterpret_cast<const T*>(first_ + pitch_ * from.y);
            for (int x = from.x; x <= to.x; x++)
                *out++ = GrayOf(row[x]);
            return;
        }
        Bresenham(from, to, [&](int x, int y) { *out++ = GrayOf(reinterpret_cast<const T*>(first_ + pitch_ * y)[x]); });
    });
    return std::max(std::abs(to.x - from.x), std::abs(to.y - from.y)) + 1;
}

int Raster::WalkAdded(Pixel from, Pixel to, int lines, double dx, double dy, int* out) const
{
    const int count = std::max(std::abs(to.x - from.x), std::abs(to.y - from.y)) + 1;
    std::fill(out, out + count, 0);
    ByPixel([&]<typename T>(const T*) {
        for (int k = 0; k < lines; k++) {
            const double away = k - (lines - 1) / 2.0;
            const int shiftX = static_cast<int>(std::lround(away * dx)),
                      shiftY = static_cast<int>(std::lround(away * dy));
            int* sum = out;
            if (from.y == to.y && from.x <= to.x && shiftX == 0) {
                const T* row =
                    reinterpret_cast<const T*>(first_ + pitch_ * std::clamp(from.y + shiftY, 0, height_ - 1));
                for (int x = from.x; x <= to.x; x++)
                    *sum++ += GrayOf(row[x]);
                continue;
            }
            Bresenham(from, to, [&](int x, int y) {
                const int u = std::clamp(x + shiftX, 0, width_ - 1), v = std::clamp(y + shiftY, 0, height_ - 1);
                *sum++ += GrayOf(reinterpret_cast<const T*>(first_ + pitch_ * v)[u]);
            });
        }
    });
    return count;
}

void Raster::Sample(XY start, double dx, double dy, int count, int* out) const
{
    ByPixel([&]<typename T>(const T*) {
        for (int i = 0; i < count; i++) {
            const Between x = Neighbours(start.X + i * dx, width_), y = Neighbours(start.Y + i * dy, height_);
            const T* upper = reinterpret_cast<const T*>(first_ + pitch_ * y.first);
            const T* lower = reinterpret_cast<const T*>(first_ + pitch_ * y.second);
            const int left = GrayOf(upper[x.first]), right = GrayOf(upper[x.second]);
            const int leftBelow = GrayOf(lower[x.first]), rightBelow = GrayOf(lower[x.second]);
            const double above = left + x.fraction * (right - left);
            const double below = leftBelow + x.fraction * (rightBelow - leftBelow);
            out[i] = static_cast<int>(above + y.fraction * (below - above));
        }
    });
}

void Raster::SampleAdded(XY start, XY step, int count, int lines, XY shift, int* out) const
{
    // Places count in 1/256 pixel, steps finer, so that they add up.
    constexpr int stepBits = 32, placeBits = 8;
    const auto fixed = [](double v) { return static_cast<std::int64_t>(std::ldexp(v, stepBits)); };
    std::fill(out, out + count, 0);
    ByPixel([&]<typename T>(const T*) {
        for (int k = 0; k < lines; k++) {
            const double away = k - (lines - 1) / 2.0;
            std::int64_t x = fixed(start.X + away * shift.X), y = fixed(start.Y + away * shift.Y);
            const std::int64_t stepX = fixed(step.X), stepY = fixed(step.Y);
            for (int i = 0; i < count; i++, x += stepX, y += stepY) {
                const int column = static_cast<int>(x >> stepBits), row = static_cast<int>(y >> stepBits);
                const int u = std::clamp(column, 0, width_ - 1), v = std::clamp(row, 0, height_ - 1);
                const int nextU = std::clamp(column + 1, 0, width_ - 1), nextV = std::clamp(row + 1, 0, height_ - 1);
                const int weightX = static_cast<int>(x >> (stepBits - placeBits) & 255);
                const int weightY = static_cast<int>(y >> (stepBits - placeBits) & 255);
                const T* upper = reinterpret_cast<const T*>(first_ + pitch_ * v);
                const T* lower = reinterpret_cast<const T*>(first_ + pitch_ * nextV);
                const int above = GrayOf(upper[u]) * (256 - weightX) + GrayOf(upper[nextU]) * weightX;
                const int below = GrayOf(lower[u]) * (256 - weightX) + GrayOf(lower[nextU]) * weightX;
                // Of 16-bit pixels, the sum of the products fits in no int.
                out[i] += (above >> 8) + (((below - above) >> 8) * weightY >> 8);
            }
        }
    });
}

EdgeRule EdgeRule::Of(int noise, int step)
{
    return {std::clamp(noise, 0, largestGray), std::clamp(step, 1, largestGray + 1)};
}

int FindTurns(std::span<const int> line, int noise, Turn* out)
{
    if (line.empty()) return 0;
    Turn* next = out;
    *next++ = {0, line[0]};
    for (std::size_t i = 0; i < line.size();) {
        *next++ = Follow<1>(line, noise, i);
        if (i < line.size()) *next++ = Follow<-1>(line, noise, i);
    }
    return static_cast<int>(next - out);
}

int EdgesBetween(std::span<const int> line, std::span<const Turn> turns, int step, int* out, bool& rising)
{
    int* next = out;
    int last = 0;
    rising = false;
    for (std::size_t k = 1; k < turns.size(); k++) {
        const int sign = k % 2 == 1 ? 1 : -1;
        if (sign == last || sign * (turns[k].value - turns[k - 1].value) < step) continue;
        if (next == out) rising = sign > 0;
        *next++ = sign > 0 ? CrossingOf<1>(line, turns[k - 1], turns[k]) : CrossingOf<-1>(line, turns[k - 1], turns[k]);
        last = sign;
    }
    return static_cast<int>(next - out);
}

} // namespace Tesk::linear
