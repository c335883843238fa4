// Edge filters of 3 x 3 pixels: plain differences, Sobel's and Prewitt's masks.
#include "image/Kernel.h"
#include "image/filter/KernelFrame.h"
#include "image/filter/SquareFilters.h"

#include <cstdlib>

namespace Tesk {

namespace {

using namespace filters;
using kernels::Square3;

/// Bytes go through a row kernel, 16-bit values through `f(difference along the row, difference along the column)`.
template <typename F>
void Differences(const char* context, const Image& src, Image& dst, Square3 bytes, F f)
{
    const Entry entry(context);
    if (entry.Refuses(CheckType(src, {Gray, Gray16}))) return;
    Sources held;
    if (Prepare(entry, src, dst, src.Type, held)) return;
    Guarded(entry, [&] {
        if (held.a.Type == Gray) {
            FilterSquares(bytes, held.a, dst);
            return;
        }
        RowRing<Gray16Pixel> ring(held.a, 1, 1);
        for (int y = 0; y < dst.Height; y++) {
            ring.MoveTo(y);
            const Gray16Pixel *above = ring.Row(y - 1), *here = ring.Row(y), *below = ring.Row(y + 1);
            Gray16Pixel* d = dst.Row<Gray16Pixel>(y);
            for (int x = 0; x < dst.Width; x++)
                d[x] = static_cast<Gray16Pixel>(f(std::abs(here[x - 1] - here[x + 1]), std::abs(above[x] - below[x])));
        }
    });
}

} // namespace

void Kernel::Gradient(const Image& Src, Image& Dst)
{
    Differences("Tesk::Kernel::Gradient", Src, Dst, Square3::GradientLarger, [](int x, int y) { return Max(x, y); });
}

void Kernel::GradientX(const Image& Src, Image& Dst)
{
    Differences("Tesk::Kernel::GradientX", Src, Dst, Square3::GradientX, [](int x, int) { return x; });
}

void Kernel::GradientY(const Image& Src, Image& Dst)
{
    Differences("Tesk::Kernel::GradientY", Src, Dst, Square3::GradientY, [](int, int y) { return y; });
}

void Kernel::GradientSum(const Image& Src, Image& Dst, GrayClipping Clip)
{
    SquareFilter("Tesk::Kernel::GradientSum", {Square3::GradientSum, Rescale, Square3::GradientHalfSum}, Clip, Src,
                 Dst);
}

void Kernel::Sobel(const Image& Src, Image& Dst, GrayClipping Clip)
{
    SquareFilter("Tesk::Kernel::Sobel", {Square3::SobelLarger, Rescale, Square3::SobelLargerScaled}, Clip, Src, Dst);
}

void Kernel::SobelSum(const Image& Src, Image& Dst, GrayClipping Clip)
{
    SquareFilter("Tesk::Kernel::SobelSum", {Square3::SobelSum, Rescale, Square3::SobelSumScaled}, Clip, Src, Dst);
}

void Kernel::SobelX(const Image& Src, Image& Dst, GrayClipping Clip)
{
    SquareFilter("Tesk::Kernel::SobelX", {Square3::SobelX, Rescale, Square3::SobelXScaled}, Clip, Src, Dst);
}

void Kernel::SobelY(const Image& Src, Image& Dst, GrayClipping Clip)
{
    SquareFilter("Tesk::Kernel::SobelY", {Square3::SobelY, Rescale, Square3::SobelYScaled}, Clip, Src, Dst);
}

void Kernel::Prewitt(const Image& Src, Image& Dst, GrayClipping Clip)
{
    SquareFilter("Tesk::Kernel::Prewitt", {Square3::PrewittLarger, Rescale, Square3::PrewittLargerScaled}, Clip, Src,
                 Dst);
}

void Kernel::PrewittSum(const Image& Src, Image& Dst, GrayClipping Clip)
{
    SquareFilter("Tesk::Kernel::PrewittSum", {Square3::PrewittSum, Rescale, Square3::PrewittSumScaled}, Clip, Src, Dst);
}

void Kernel::PrewittX(const Image& Src, Image& Dst, GrayClipping Clip)
{
    SquareFilter("Tesk::Kernel::PrewittX", {Square3::PrewittX, Rescale, Square3::PrewittXScaled}, Clip, Src, Dst);
}

void Kernel::PrewittY(const Image& Src, Image& Dst, GrayClipping Clip)
{
    SquareFilter("Tesk::Kernel::PrewittY", {Square3::PrewittY, Rescale, Square3::PrewittYScaled}, Clip, Src, Dst);
}

} // namespace Tesk
