// The sums of pixels along a probe: freely inside a picture, with places held to it near its border, and of colors.
#include "gauge/edge/ProbeSampler.h"

#include "foundation/Status.h"
#include "gauge/edge/SamplerKernels.h"

#include <cstddef>

namespace Tesk::edges {

namespace {

/// Two neighbours, and how far the place lies from the first to the second.
struct Held
{
    std::ptrdiff_t first, step;
    double fraction;
};

/// A coordinate among `size` pixels. Up to a pixel before the first one the fraction is negative.
Held HoldTo(double v, int size)
{
    if (size < 2 || !(v > -1)) return {0, 0, 0};
    if (v < size - 2) {
        const auto whole = static_cast<int>(v);
        return {whole, 1, v - whole};
    }
    if (v < 0) return {0, 1, 0};
    return {size - 2, 1, 1};
}

void SampleHeld(const Image& src, const ProbeGrid& grid, std::int32_t* samples)
{
    for (int i = 0; i < grid.samples; i++) {
        double sum = 0;
        for (int j = 0; j < grid.breadth; j++) {
            const XY at = grid.At(i, j);
            const Held x = HoldTo(at.X, src.Width), y = HoldTo(at.Y, src.Height);
            const std::uint8_t *upper = src.Row(static_cast<int>(y.first)) + x.first,
                               *lower = src.Row(static_cast<int>(y.first + y.step)) + x.first;
            const double top = upper[0] + x.fraction * (upper[x.step] - upper[0]);
            const double bottom = lower[0] + x.fraction * (lower[x.step] - lower[0]);
            sum += top + y.fraction * (bottom - top);
        }
        samples[i] = static_cast<std::int32_t>(sum + 0.5);
    }
}

int Sum(const std::uint8_t* pixel)
{
    return pixel[0] + pixel[1] + pixel[2];
}

int Between(int first, int second, int weight)
{
    constexpr int one = 65536;
    return (first * (one - weight) + second * weight) >> 16;
}

} // namespace

int CheckSampled(const Image& src)
{
    if (const int code = CheckImage(src)) return code;
    if (src.Type == Gray || src.Type == Rgb) return NoError;
    return Status::Format(UnsupportedType, L"The image type (%ls) is not supported for this operation, use Gray or Rgb",
                          PixelTypeName(src.Type));
}

void SampleGray(const Image& src, const ProbeGrid& grid, XY last, std::int32_t* samples)
{
    const auto isClear = [&](XY p) {
        return p.X > grid.breadth && p.X < src.Width - grid.breadth - 1 && p.Y > grid.breadth &&
               p.Y < src.Height - grid.breadth - 1;
    };
    if (!isClear(grid.start) || !isClear(last)) return SampleHeld(src, grid, samples);
    const std::int64_t bytes = Abs(std::int64_t{src.Pitch}) * src.Height;
    const kernels::GrayRows rows{src.FirstPixel, src.Pitch};
    const double half = grid.breadth > 1 ? 0.5 : 0;
    if (bytes <= INT32_MAX)
        kernels::BilinearSums(rows, grid, half, samples);
    else
        kernels::BilinearSumsPlain(rows, grid, half, samples);
}

bool SampleRgb(const Image& src, const ProbeGrid& grid, bool whole, std::int32_t* samples)
{
    // Rounding keeps the order of places, so that all are within what these are within.
    for (const int i : {0, grid.samples - 1})
        for (const int j : {0, grid.breadth - 1}) {
            const XY at = grid.At(i, j);
            if (!(at.X >= 0 && at.X <= src.Width - 1 && at.Y >= 0 && at.Y <= src.Height - 1)) return false;
        }
    constexpr int pixelBytes = 3;
    for (int i = 0; i < grid.samples; i++) {
        std::int32_t sum = 0;
        for (int j = 0; j < grid.breadth; j++) {
            const XY at = grid.At(i, j);
            const auto fixedX = static_cast<std::int64_t>(at.X * 65536),
                       fixedY = static_cast<std::int64_t>(at.Y * 65536);
            const int x = static_cast<int>(fixedX >> 16), y = static_cast<int>(fixedY >> 16);
            const std::uint8_t* upper = src.Row(y) + std::ptrdiff_t{x} * pixelBytes;
            if (whole) {
                sum += Sum(upper);
                continue;
            }
            const int weightX = fixedX & 0xffff, weightY = fixedY & 0xffff, right = x + 1 < src.Width ? pixelBytes : 0;
            const std::uint8_t* lower = y + 1 < src.Height ? upper + src.Pitch : upper;
            sum += Between(Between(Sum(upper), Sum(upper + right), weightX),
                           Between(Sum(lower), Sum(lower + right), weightX), weightY);
        }
        samples[i] = sum;
    }
    return true;
}

} // namespace Tesk::edges

namespace Tesk::kernels {

std::int32_t BilinearSum(const GrayRows& rows, const edges::ProbeGrid& grid, int i, double half)
{
    double sum = 0;
    for (int j = 0; j < grid.breadth; j++) {
        const XY at = grid.At(i, j);
        const auto x = static_cast<int>(at.X), y = static_cast<int>(at.Y);
        const double fractionX = at.X - x, fractionY = at.Y - y;
        const std::uint8_t *upper = rows.first + static_cast<std::ptrdiff_t>(rows.pitch) * y + x,
                           *lower = upper + rows.pitch;
        // In this form equal neighbours give their value exactly, whatever the fraction.
        const double top = upper[0] + fractionX * (upper[1] - upper[0]);
        const double bottom = lower[0] + fractionX * (lower[1] - lower[0]);
        sum += top + fractionY * (bottom - top);
    }
    return static_cast<std::int32_t>(sum + half);
}

void BilinearSumsPlain(const GrayRows& rows, const edges::ProbeGrid& grid, double half, std::int32_t* samples)
{
    for (int i = 0; i < grid.samples; i++)
        samples[i] = BilinearSum(rows, grid, i, half);
}

} // namespace Tesk::kernels
