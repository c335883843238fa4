// Filters on the statistics of a neighbourhood: deviation, correlated gradient, cornerness.
#include "image/Kernel.h"
#include "image/filter/BoxKernels.h"
#include "image/filter/GradientVector.h"
#include "image/filter/KernelFrame.h"
#include "image/filter/LocalMeans.h"
#include "image/filter/PlaneFit.h"

namespace Tesk {

namespace {

using namespace filters;

constexpr int largestFastSize = 255;

/// Column sums of values and of squares move down with the rows, and prefix sums along them give those of the boxes.
void Deviations(const Image& src, int width, int height, Image& dst)
{
    constexpr std::size_t spare = 64;
    const int h = height / 2, rows = src.Height;
    const auto w = static_cast<std::size_t>(width / 2), n = static_cast<std::size_t>(int(src.Width));
    const auto product = static_cast<std::uint32_t>(width) * static_cast<std::uint32_t>(height);
    std::vector<std::uint16_t> extended(n + 2 * w + spare);
    std::vector<std::uint32_t> extendedSquares(n + 2 * w + spare), prefix(n + 2 * w + spare),
        prefixSquares(n + 2 * w + spare);
    std::uint16_t* sums = extended.data() + w;
    std::uint32_t* squares = extendedSquares.data() + w;
    const std::vector<GrayPixel> nothing(n);
    const auto move = [&](const GrayPixel* enter, const GrayPixel* leave) {
        kernels::MoveSums(enter, leave, sums, n);
        kernels::MoveSquares(enter, leave, squares, n);
    };
    EachLineAroundFirst(rows, h, [&](int y, int times) {
        for (; times > 0; times--)
            move(src.Row(y), nothing.data());
    });
    for (int y = 0; y < rows; y++) {
        std::fill_n(extended.data(), w, sums[0]);
        std::fill_n(sums + n, w, sums[n - 1]);
        std::fill_n(extendedSquares.data(), w, squares[0]);
        std::fill_n(squares + n, w, squares[n - 1]);
        kernels::PrefixSums(extended.data(), prefix.data(), n + 2 * w);
        kernels::PrefixSums(extendedSquares.data(), prefixSquares.data(), n + 2 * w);
        kernels::DeviationRow(prefix.data(), prefixSquares.data(), static_cast<std::size_t>(width), dst.Row(y), n,
                              product);
        move(src.Row(Min(y + h + 1, rows - 1)), src.Row(Max(y - h, 0)));
    }
}

/// The same for sizes whose squares 32 bits do not hold.
void WideDeviations(const Image& src, int width, int height, Image& dst)
{
    const std::int64_t count = std::int64_t{width} * height;
    std::vector<std::int64_t> sums;
    sums.reserve(static_cast<std::size_t>(int(src.Width)) * static_cast<std::size_t>(int(src.Height)));
    EachBoxSum<GrayPixel>(
        src, width, height, [](GrayPixel v) { return std::int64_t{v}; },
        [&](int, int, std::int64_t sum) { sums.push_back(sum); });
    std::size_t next = 0;
    EachBoxSum<GrayPixel>(
        src, width, height, [](GrayPixel v) { return std::int64_t{v} * v; },
        [&](int x, int y, std::int64_t squares) {
            // In whole numbers as far as they go: the mean, and the sums about it.
            const std::int64_t sum = sums[next++], mean = sum / count, rest = sum - mean * count;
            const std::int64_t about = squares - mean * (sum + rest);
            const double N = static_cast<double>(count), r = static_cast<double>(rest) / N;
            dst.Row(y)[x] = TruncatedByte(std::sqrt(Max(0.0, static_cast<double>(about) / N - r * r)));
        });
}

/// The column of products of the gradient components, for sums that slide over the window.
struct Products
{
    std::int64_t xx = 0, xy = 0, yy = 0;

    void Add(const Products& p, std::int64_t times)
    {
        xx += p.xx * times;
        xy += p.xy * times;
        yy += p.yy * times;
    }
    static Products Of(GradPixel g) { return {g.X * g.X, g.X * g.Y, g.Y * g.Y}; }
};

/// An eigenvalue of the covariance, scaled to a byte.
std::uint8_t Eigenvalue(const Products& sums, bool larger, double scale)
{
    const auto a = static_cast<double>(sums.xx), b = static_cast<double>(sums.xy), c = static_cast<double>(sums.yy);
    const double m = (a + c) / 2;
    // Rounding may leave a little less than nothing of two equal eigenvalues.
    const double root = std::sqrt(Max(0.0, m * m - (a * c - b * b)));
    return TruncatedByte((larger ? m + root : m - root) * scale);
}

void Corners(const Image& grad, int size, bool larger, Image& dst)
{
    const int h = size / 2, columns = grad.Width, rows = grad.Height;
    const double scale = 0.0078125 / std::trunc(std::sqrt(static_cast<double>(size) * size * size));
    std::vector<Products> sums(static_cast<std::size_t>(columns));
    const auto add = [&](int y, std::int64_t times) {
        const GradPixel* g = grad.Row<GradPixel>(Clamp(y, 0, rows - 1));
        for (int x = 0; x < columns; x++)
            sums[static_cast<std::size_t>(x)].Add(Products::Of(g[x]), times);
    };
    EachLineAroundFirst(rows, h, add);
    const auto at = [&](int x) { return sums[static_cast<std::size_t>(Clamp(x, 0, columns - 1))]; };
    for (int y = 0; y < rows; y++) {
        Products sum;
        EachLineAroundFirst(columns, h, [&](int x, int times) { sum.Add(at(x), times); });
        for (int x = 0; x < columns; x++) {
            dst.Row(y)[x] = Eigenvalue(sum, larger, scale);
            sum.Add(at(x + h + 1), 1);
            sum.Add(at(x - h), -1);
        }
        add(y + h + 1, 1);
        add(y - h, -1);
    }
}

} // namespace

void Kernel::CorrelatedGradient(const Image& Src, Image& Dst)
{
    const Entry entry("Tesk::Kernel::CorrelatedGradient");
    if (entry.Refuses(CheckType(Src, {Gray}))) return;
    Sources held;
    if (Prepare(entry, Src, Dst, Gray, held, InPlace::Copied)) return;
    for (int y = 0; y < Dst.Height; y++)
        std::fill_n(Dst.Row(y), int(Dst.Width), std::uint8_t{0});
    EachPlaneFit(held.a, [&](int x, int y, const PlaneFit& fit) {
        Dst.Row(y)[x] = TruncatedByte((fit.A * fit.A + fit.B * fit.B) * 5355.0 / fit.Spread());
    });
}

void Kernel::BoxDeviation(int FilterWidth, int FilterHeight, const Image& Src, Image& Dst)
{
    const Entry entry("Tesk::Kernel::BoxDeviation");
    if (entry.Refuses(CheckType(Src, {Gray})) || entry.Refuses(CheckSizes(FilterWidth, FilterHeight))) return;
    Sources held;
    if (Prepare(entry, Src, Dst, Gray, held, InPlace::Copied)) return;
    Guarded(entry, [&] {
        if (FilterWidth <= largestFastSize && FilterHeight <= largestFastSize)
            Deviations(held.a, FilterWidth, FilterHeight, Dst);
        else
            WideDeviations(held.a, FilterWidth, FilterHeight, Dst);
    });
}

void Kernel::Cornerness(int FilterSize, const Image& Src, Image& Dst, bool Edges)
{
    const Entry entry("Tesk::Kernel::Cornerness");
    if (entry.Refuses(CheckType(Src, {Gray})) || entry.Refuses(CheckSize(L"size", FilterSize))) return;
    Sources held;
    // Nothing of the source is read once its gradient stands.
    if (Prepare(entry, Src, Dst, Gray, held)) return;
    Guarded(entry, [&] {
        Image grad;
        MakeLike(held.a, Grad, grad);
        gradients::Compute(held.a, StandardGradient, grad);
        Corners(grad, FilterSize, Edges, Dst);
    });
}

} // namespace Tesk
