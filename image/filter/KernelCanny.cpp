// The gradients of the smoothed image, their magnitude and direction; and the gradient vectors of all other kinds.
#include "image/Kernel.h"
#include "image/filter/FilterKernels.h"
#include "image/filter/GradientVector.h"
#include "image/filter/KernelFrame.h"
#include "image/filter/PlaneFit.h"

#include <cstring>
#include <numbers>

namespace Tesk {

namespace {

using namespace filters;

/// The order of the binomial mask that smooths for a gradient type; 0 for the others.
int SmoothingOrder(GradientTypes type)
{
    switch (type) {
    case Canny1Gradient:
        return 4;
    case Canny15Gradient:
        return 6;
    case Canny2Gradient:
        return 8;
    default:
        return 0;
    }
}

/// Smooths row by row and hands the components on: `f(y, x components, y components)`. Rows are taken before they may
/// be written over, at the same place.
template <typename F>
void EachSmoothedGradient(const Image& src, int order, F f)
{
    constexpr std::size_t spare = 64;
    const int radius = order / 2, height = src.Height;
    const auto n = static_cast<std::size_t>(int(src.Width));
    const std::size_t pitch = n + spare, smoothedCount = 3, rowCount = static_cast<std::size_t>(order) + 1;
    std::vector<std::uint8_t> extended(n + static_cast<std::size_t>(order) + 2 * spare);
    std::vector<std::uint16_t> rows(pitch * rowCount), smoothed(pitch * smoothedCount);
    std::vector<std::int16_t> gx(pitch), gy(pitch);
    const auto slot = [&](std::vector<std::uint16_t>& ring, std::size_t count, int y) {
        return ring.data() + pitch * (static_cast<std::size_t>(Clamp(y, 0, height - 1)) % count);
    };
    int taken = 0, done = 0;
    const auto smooth = [&](int y) {
        for (; taken <= Min(y + radius, height - 1); taken++) {
            std::uint8_t* row = extended.data() + radius;
            std::memcpy(row, src.Row(taken), n);
            std::fill_n(extended.data(), radius, row[0]);
            std::fill_n(row + n, radius, row[n - 1]);
            kernels::BinomialWordsRow(order, row, slot(rows, rowCount, taken), n);
        }
        const std::uint16_t* around[9];
        for (int k = 0; k <= order; k++)
            around[k] = slot(rows, rowCount, y - radius + k);
        kernels::BinomialColumnsRow(order, around, slot(smoothed, smoothedCount, y), n);
    };
    for (int y = 0; y < height; y++) {
        for (; done <= Min(y + 1, height - 1); done++)
            smooth(done);
        const std::uint16_t *above = slot(smoothed, smoothedCount, y - 1), *here = slot(smoothed, smoothedCount, y),
                            *below = slot(smoothed, smoothedCount, y + 1);
        // At an edge the distance is one pixel instead of two.
        const bool edge = y == 0 || y == height - 1;
        kernels::ShiftedDifferenceRow(below, above, gy.data(), n, edge ? 6 : 7);
        if (n > 2) kernels::ShiftedDifferenceRow(here + 2, here, gx.data() + 1, n - 2, 7);
        gx[0] = static_cast<std::int16_t>(n > 1 ? (here[1] - here[0]) >> 6 : 0);
        if (n > 1) gx[n - 1] = static_cast<std::int16_t>((here[n - 1] - here[n - 2]) >> 6);
        f(y, gx.data(), gy.data());
    }
}

int CheckSmoothing(GradientTypes type)
{
    if (SmoothingOrder(type) != 0) return NoError;
    return Status::Format(UnsupportedType,
                          L"The gradient type (%ls) is not supported for this operation; use one of Canny 1/1.5/2",
                          gradients::TypeName(type));
}

/// The frame of a gray value worked out of the smoothed gradient: `f(x components, y components, row, count)`.
template <typename F>
void FromSmoothedGradient(const char* context, GradientTypes type, const Image& src, Image& dst, F f)
{
    const Entry entry(context);
    if (entry.Refuses(CheckType(src, {Gray})) || entry.Refuses(CheckSmoothing(type))) return;
    Sources held;
    if (Prepare(entry, src, dst, Gray, held)) return;
    Guarded(entry, [&] {
        EachSmoothedGradient(held.a, SmoothingOrder(type), [&](int y, const std::int16_t* gx, const std::int16_t* gy) {
            f(gx, gy, dst.Row<GrayPixel>(y), static_cast<std::size_t>(int(dst.Width)));
        });
    });
}

} // namespace

void Kernel::Canny(const Image& Src, Image& Dst, GradientTypes Type)
{
    FromSmoothedGradient("Tesk::Kernel::Canny", Type, Src, Dst, kernels::MagnitudeRow);
}

void Kernel::CannyPhase(const Image& Src, Image& Dst, GradientTypes Type, bool FullTurn)
{
    FromSmoothedGradient("Tesk::Kernel::CannyPhase", Type, Src, Dst,
                         [=](const std::int16_t* gx, const std::int16_t* gy, GrayPixel* d, std::size_t n) {
                             using std::numbers::pi;
                             for (std::size_t x = 0; x < n; x++) {
                                 const double a = std::atan2(static_cast<double>(gy[x]), static_cast<double>(gx[x]));
                                 int v = static_cast<int>(FullTurn ? a * 256 / (2 * pi) + 128 : a * 256 / pi + 255);
                                 if (!FullTurn && v > 255) v = 511 - v;
                                 d[x] = static_cast<GrayPixel>(v);
                             }
                         });
}

namespace gradients {

const wchar_t* TypeName(GradientTypes type)
{
    static constexpr const wchar_t* names[] = {L"StandardGradient",   L"PrewittGradient",  L"SobelGradient",
                                               L"CorrelatedGradient", L"Canny1Gradient",   L"Canny15Gradient",
                                               L"Canny2Gradient",     L"ExternalGradient", L"InternalGradient"};
    return type >= StandardGradient && type <= InternalGradient ? names[type] : L"?";
}

int Gain(GradientTypes type)
{
    static constexpr int gains[] = {1, 3, 4, 1, 1, 5, 35};
    return type >= StandardGradient && type <= Canny2Gradient ? gains[type] : 0;
}

namespace {

/// The masks that differ in the weight of their middle row or column: none but the middle, 1 1 1, 1 2 1.
struct Mask
{
    int outer, middle, limit;
};

void ByMask(const Image& src, const Mask& mask, Image& grad)
{
    const int width = src.Width, height = src.Height;
    RowRing<GrayPixel> ring(src, 1, 1);
    for (int y = 0; y < height; y++) {
        ring.MoveTo(y);
        const GrayPixel *above = ring.Row(y - 1), *here = ring.Row(y), *below = ring.Row(y + 1);
        GradPixel* d = grad.Row<GradPixel>(y);
        const auto component = [&](int difference, bool edge) {
            return static_cast<std::int16_t>(Clamp(edge ? 2 * difference : difference, -mask.limit, mask.limit));
        };
        for (int x = 0; x < width; x++) {
            const auto down = [&](int i) { return below[i] - above[i]; };
            const auto across = [&](const GrayPixel* row) { return row[x + 1] - row[x - 1]; };
            const int gx = mask.outer * (across(above) + across(below)) + mask.middle * across(here);
            const int gy = mask.outer * (down(x - 1) + down(x + 1)) + mask.middle * down(x);
            d[x].X = component(gx, x == 0 || x == width - 1);
            d[x].Y = component(gy, y == 0 || y == height - 1);
        }
    }
}

/// A component of the fitted plane, relative to what noise of the same deviation would give.
void Correlated(const Image& src, Image& grad)
{
    for (int y = 0; y < grad.Height; y++)
        std::fill_n(grad.Row<GradPixel>(y), int(grad.Width), GradPixel{0, 0});
    EachPlaneFit(src, [&](int x, int y, const PlaneFit& fit) {
        const double D = std::sqrt(fit.Spread());
        grad.Row<GradPixel>(y)[x] = {static_cast<std::int16_t>(fit.A * 1020 / D),
                                     static_cast<std::int16_t>(fit.B * 1020 / D)};
    });
}

} // namespace

void Compute(const Image& src, GradientTypes type, Image& grad)
{
    grad.GradGain = Gain(type);
    switch (type) {
    case StandardGradient:
        return ByMask(src, {0, 1, 255}, grad);
    case PrewittGradient:
        return ByMask(src, {1, 1, 767}, grad);
    case SobelGradient:
        return ByMask(src, {1, 2, 1023}, grad);
    case CorrelatedGradient:
        return Correlated(src, grad);
    default:
        return EachSmoothedGradient(src, SmoothingOrder(type),
                                    [&](int y, const std::int16_t* gx, const std::int16_t* gy) {
                                        GradPixel* d = grad.Row<GradPixel>(y);
                                        for (int x = 0; x < grad.Width; x++)
                                            d[x] = {gx[x], gy[x]};
                                    });
    }
}

} // namespace gradients

} // namespace Tesk
