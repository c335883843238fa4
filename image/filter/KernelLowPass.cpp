// Low-pass filters: the fixed 3 x 3 ones and their powers, boxes and Gaussians.
#include "image/Kernel.h"
#include "image/filter/BoxKernels.h"
#include "image/filter/FilterKernels.h"
#include "image/filter/GaussKernels.h"
#include "image/filter/KernelFrame.h"
#include "image/filter/LocalMeans.h"
#include "image/filter/RowRing.h"
#include "image/filter/SquareFilters.h"
#include "image/geometry/TurnKernels.h"

namespace Tesk {

namespace filters {

int CheckSize(const wchar_t* name, int size)
{
    constexpr int largestSize = 32767;
    if (size > 0 && size <= largestSize && size % 2 == 1) return NoError;
    if (size <= largestSize || size % 2 == 0)
        return Status::Format(OutOfRange, L"The filter %ls (%d) must be a positive odd number", name, size);
    return Status::Format(OutOfRange, L"The filter %ls (%d) is out of the range 1 to %d", name, size, largestSize);
}

namespace {

/// Sizes up to this have sums that 32 bits hold, and so go through the row kernels.
constexpr int largestFastSize = 255;
/// Gaussians up to this go through one weighted mask: the cascade costs the same for every size, the mask less here.
constexpr int largestMaskSize = 2 * kernels::largestMaskRadius + 1;
constexpr std::size_t spareBytes = 128;

template <typename T>
std::vector<T> WorkingRow(std::size_t count)
{
    return std::vector<T>(count + spareBytes / sizeof(T));
}

/// A column sum for each column moves down with the rows; differences of their prefix sums are the sums of the boxes.
template <typename S, typename Column, typename Prefix>
void MeansByPrefixSums(const Image& src, int width, int height, Image& dst)
{
    const int h = height / 2, rows = src.Height;
    const auto w = static_cast<std::size_t>(width / 2), n = static_cast<std::size_t>(int(src.Width));
    const auto product = static_cast<std::uint32_t>(width) * static_cast<std::uint32_t>(height);
    auto extended = WorkingRow<Column>(n + 2 * w);
    auto prefix = WorkingRow<Prefix>(n + 2 * w + 1);
    Column* sums = extended.data() + w;
    const std::vector<S> nothing(n);
    EachLineAroundFirst(rows, h, [&](int y, int times) {
        for (; times > 0; times--)
            kernels::MoveSums(src.Row<S>(y), nothing.data(), sums, n);
    });
    for (int y = 0; y < rows; y++) {
        std::fill_n(extended.data(), w, sums[0]);
        std::fill_n(sums + n, w, sums[n - 1]);
        kernels::PrefixSums(extended.data(), prefix.data(), n + 2 * w);
        kernels::QuotientRow(prefix.data(), static_cast<std::size_t>(width), dst.Row<S>(y), n, product);
        kernels::MoveSums(src.Row<S>(Min(y + h + 1, rows - 1)), src.Row<S>(Max(y - h, 0)), sums, n);
    }
}

template <typename T>
void MeansBySums(const Image& src, int width, int height, Image& dst)
{
    const std::int64_t product = std::int64_t{width} * height;
    EachBoxSum<T>(
        src, width, height, [](T value) { return std::int64_t{value}; },
        [&](int x, int y, std::int64_t sum) { dst.Row<T>(y)[x] = static_cast<T>(sum / product); });
}

} // namespace

void BoxMeans(const Image& src, int width, int height, Image& dst)
{
    const bool fast = width <= largestFastSize && height <= largestFastSize;
    if (src.Type == Gray16) {
        if (fast)
            MeansByPrefixSums<Gray16Pixel, std::uint32_t, std::uint32_t>(src, width, height, dst);
        else
            MeansBySums<Gray16Pixel>(src, width, height, dst);
    } else if (!fast) {
        MeansBySums<GrayPixel>(src, width, height, dst);
    } else if (width * height <= 255) {
        MeansByPrefixSums<GrayPixel, std::uint16_t, std::uint16_t>(src, width, height, dst);
    } else {
        MeansByPrefixSums<GrayPixel, std::uint16_t, std::uint32_t>(src, width, height, dst);
    }
}

namespace {

using kernels::Cascade;
using kernels::stripLanes;

/// The widths of the three boxes whose radii add up to half the size.
Cascade BoxesFor(int size)
{
    const int h = size / 2, first = (h + 2) / 3, second = (h - first + 1) / 2, third = h - first - second;
    const auto width = [](int radius) { return static_cast<std::size_t>(2 * radius + 1); };
    return {{width(first), width(second), width(third)}};
}

std::uint64_t Product(const Cascade& boxes)
{
    return std::uint64_t{boxes.widths[0]} * boxes.widths[1] * boxes.widths[2];
}

/// The cascade for any pixel and size, divided by `divisor`: sums of three boxes of 16-bit pixels need 64 bits.
template <typename T, typename D>
void WideCascadeStrip(const Cascade& boxes, std::uint64_t divisor, const T* s, D* d, std::size_t n)
{
    const std::size_t reach = boxes.Reach(), a = boxes.widths[0], b = boxes.widths[1], c = boxes.widths[2];
    std::uint64_t first[stripLanes] = {}, second[stripLanes] = {}, third[stripLanes] = {};
    for (std::size_t t = 0; t < n + 2 * reach; t++) {
        const T* line = s + stripLanes * t;
        for (std::size_t i = 0; i < stripLanes; i++) {
            const auto at = [&](std::size_t back) { return std::int64_t{*(line - stripLanes * back + i)}; };
            const std::int64_t comb = at(0) - at(a) - at(b) - at(c) + at(a + b) + at(a + c) + at(b + c) - at(a + b + c);
            first[i] += static_cast<std::uint64_t>(comb);
            second[i] += first[i];
            third[i] += second[i];
        }
        if (t < 2 * reach) continue;
        for (std::size_t i = 0; i < stripLanes; i++)
            d[stripLanes * (t - 2 * reach) + i] = static_cast<D>(third[i] / divisor);
    }
}

void RunStrip(const Cascade& boxes, const std::uint8_t* s, std::uint8_t* d, std::size_t n)
{
    if (boxes.Reach() <= largestFastSize / 2)
        kernels::CascadeStrip(boxes, s, d, n);
    else
        WideCascadeStrip(boxes, Product(boxes), s, d, n);
}

void RunStrip(const Cascade& boxes, const std::uint16_t* s, std::uint16_t* d, std::size_t n)
{
    WideCascadeStrip(boxes, Product(boxes), s, d, n);
}

/// The sums themselves.
void RunStrip(const Cascade& boxes, const std::uint16_t* s, std::int64_t* d, std::size_t n)
{
    WideCascadeStrip(boxes, 1, s, d, n);
}

/// Sixteen rows or columns side by side, `length` lines long, with the lines that the cascade needs before and behind.
template <typename T, typename D = T>
class Strip
{
public:
    Strip(const Cascade& boxes, std::size_t length)
        : boxes_(boxes), length_(length), reach_(boxes.Reach()), before_(boxes.Before()),
          in_(stripLanes * (before_ + 2 * reach_ + length) + spareBytes), out_(stripLanes * length + spareBytes)
    {}

    T* In(std::size_t line) { return in_.data() + stripLanes * (before_ + reach_ + line); }
    const D* Out(std::size_t line) const { return out_.data() + stripLanes * line; }

    void Run()
    {
        for (std::size_t i = 0; i < reach_; i++) {
            std::copy_n(In(0), stripLanes, In(0) - stripLanes * (i + 1));
            std::copy_n(In(length_ - 1), stripLanes, In(length_ + i));
        }
        RunStrip(boxes_, In(0) - stripLanes * reach_, out_.data(), length_);
    }

private:
    const Cascade& boxes_;
    std::size_t length_, reach_, before_;
    std::vector<T> in_;
    std::vector<D> out_;
};

void Transpose(const std::uint8_t* s, std::ptrdiff_t pitch, std::uint8_t* d, std::ptrdiff_t dPitch)
{
    kernels::Transpose16(s, pitch, d, dPitch);
}

void Transpose(const std::uint16_t* s, std::ptrdiff_t pitch, std::uint16_t* d, std::ptrdiff_t dPitch)
{
    for (int y = 0; y < 16; y++)
        for (int x = 0; x < 16; x++)
            d[x * dPitch + y] = s[y * pitch + x];
}

/// Sixteen rows at a time, transposed, so that rows are filtered as columns are.
template <typename T>
void AlongRows(const Image& src, int size, Image& dst)
{
    constexpr int lanes = stripLanes;
    const Cascade boxes = BoxesFor(size);
    const int width = src.Width, height = src.Height;
    const std::ptrdiff_t pitch = src.Pitch / static_cast<int>(sizeof(T)),
                         dPitch = dst.Pitch / static_cast<int>(sizeof(T));
    Strip<T> strip(boxes, static_cast<std::size_t>(width));
    for (int y = 0; y < height; y += lanes) {
        const int rows = Min(lanes, height - y);
        const int whole = rows == lanes ? width / lanes * lanes : 0;
        for (int x = 0; x < whole; x += lanes)
            Transpose(src.Row<T>(y) + x, pitch, strip.In(static_cast<std::size_t>(x)), lanes);
        for (int r = 0; r < rows; r++)
            for (int x = whole; x < width; x++)
                strip.In(static_cast<std::size_t>(x))[r] = src.Row<T>(y + r)[x];
        strip.Run();
        for (int x = 0; x < whole; x += lanes)
            Transpose(strip.Out(static_cast<std::size_t>(x)), lanes, dst.Row<T>(y) + x, dPitch);
        for (int r = 0; r < rows; r++)
            for (int x = whole; x < width; x++)
                dst.Row<T>(y + r)[x] = strip.Out(static_cast<std::size_t>(x))[r];
    }
}

/// A line of the cache is 64 bytes: the columns of so many strips are taken together. `f(x, y, count, results)`, after
/// all these columns have been read.
template <typename T, typename D = T, typename F>
void AlongColumns(const Image& src, int size, F f)
{
    constexpr int lanes = stripLanes, together = 64 / static_cast<int>(sizeof(T)) / lanes;
    const Cascade boxes = BoxesFor(size);
    const int width = src.Width;
    const auto height = static_cast<std::size_t>(int(src.Height));
    std::vector<Strip<T, D>> strips;
    strips.reserve(together);
    for (int k = 0; k < together; k++)
        strips.emplace_back(boxes, height);
    for (int x = 0; x < width; x += lanes * together) {
        const auto each = [&](auto run) {
            for (int k = 0; k < together && x + k * lanes < width; k++)
                run(strips[static_cast<std::size_t>(k)], x + k * lanes,
                    static_cast<std::size_t>(Min(lanes, width - x - k * lanes)));
        };
        for (std::size_t y = 0; y < height; y++)
            each([&](Strip<T, D>& strip, int column, std::size_t count) {
                std::copy_n(src.Row<T>(static_cast<int>(y)) + column, count, strip.In(y));
            });
        each([](Strip<T, D>& strip, int, std::size_t) { strip.Run(); });
        for (std::size_t y = 0; y < height; y++)
            each([&](Strip<T, D>& strip, int column, std::size_t count) {
                f(column, static_cast<int>(y), count, strip.Out(y));
            });
    }
}

/// Small masks in one go over the rows: each is filtered along into a ring, of which the columns are taken.
void SmallGauss(const Image& src, const kernels::Mask& across, const kernels::Mask& down, Image& dst)
{
    const auto n = static_cast<std::size_t>(int(src.Width));
    const int height = src.Height, rows = 2 * down.radius + 1;
    RowRing<GrayPixel> extended(src, across.radius, 0);
    std::vector<std::vector<GrayPixel>> ring(static_cast<std::size_t>(rows), WorkingRow<GrayPixel>(n));
    const auto slot = [&](int y) { return ring[static_cast<std::size_t>(y % rows)].data(); };
    const GrayPixel* lines[2 * kernels::largestMaskRadius + 1];
    int ready = 0;
    for (int y = 0; y < height; y++) {
        for (; ready < height && ready <= y + down.radius; ready++) {
            extended.MoveTo(ready);
            for (int k = 0; k <= 2 * across.radius; k++)
                lines[k] = extended.Row(ready) + k - across.radius;
            kernels::MaskRow(across, lines, slot(ready), n);
        }
        for (int k = 0; k < rows; k++)
            lines[k] = slot(Clamp(y + k - down.radius, 0, height - 1));
        kernels::MaskRow(down, lines, dst.Row(y), n);
    }
}

template <typename T, typename D = T, typename F>
void EachGauss(const Image& src, int width, int height, F f)
{
    Image rows;
    const Image* from = &src;
    if (width > 1) {
        MakeLike(src, src.Type, rows);
        AlongRows<T>(src, width, rows);
        from = &rows;
    }
    AlongColumns<T, D>(*from, height, f);
}

template <typename T>
void Gauss(const Image& src, int width, int height, Image& dst)
{
    EachGauss<T>(src, width, height, [&](int x, int y, std::size_t count, const T* means) {
        std::copy_n(means, count, dst.Row<T>(y) + x);
    });
}

} // namespace

void GaussMeans(const Image& src, int width, int height, Image& dst)
{
    if (src.Type == Gray16)
        Gauss<Gray16Pixel>(src, width, height, dst);
    else if (Max(width, height) <= largestMaskSize)
        SmallGauss(src, kernels::Mask(BoxesFor(width)), kernels::Mask(BoxesFor(height)), dst);
    else
        Gauss<GrayPixel>(src, width, height, dst);
}

void EachGaussSum(const Image& src, int width, int height, const SumsOfRow& f)
{
    EachGauss<Gray16Pixel, std::int64_t>(src, width, height, f);
}

std::uint64_t GaussProduct(int size)
{
    return Product(BoxesFor(size));
}

namespace {

/// The frame of a mean of an odd box.
template <typename F>
void Mean(const char* context, int width, int height, const Image& src, Image& dst, InPlace inPlace, F means)
{
    const Entry entry(context);
    if (entry.Refuses(CheckType(src, {Gray, Gray16})) || entry.Refuses(CheckSizes(width, height))) return;
    Sources held;
    if (Prepare(entry, src, dst, src.Type, held, inPlace)) return;
    Guarded(entry, [&] { means(held.a, width, height, dst); });
}

/// A whole method: the binomial mask, or one of its powers.
void BinomialFilter(const char* context, int passes, const Image& src, Image& dst)
{
    const Entry entry(context);
    if (entry.Refuses(CheckType(src, {Gray}))) return;
    Sources held;
    if (Prepare(entry, src, dst, Gray, held)) return;
    Guarded(entry, [&] { FilterBinomially(passes, held.a, dst); });
}

} // namespace

void FilterSquares(kernels::Square3 filter, const Image& src, Image& dst)
{
    RowRing<GrayPixel> ring(src, 1, 1);
    const auto n = static_cast<std::size_t>(int(src.Width));
    for (int y = 0; y < dst.Height; y++) {
        ring.MoveTo(y);
        kernels::Square3Row(filter, ring.Row(y - 1), ring.Row(y), ring.Row(y + 1), dst.Row(y), n);
    }
}

void FilterBinomially(int passes, const Image& src, Image& dst)
{
    FilterSquares(kernels::Square3::Binomial, src, dst);
    for (int pass = 1; pass < passes; pass++)
        FilterSquares(kernels::Square3::Binomial, dst, dst);
}

void SquareFilter(const char* context, kernels::Square3 filter, const Image& src, Image& dst)
{
    const Entry entry(context);
    if (entry.Refuses(CheckType(src, {Gray}))) return;
    Sources held;
    if (Prepare(entry, src, dst, Gray, held)) return;
    Guarded(entry, [&] { FilterSquares(filter, held.a, dst); });
}

void SquareFilter(const char* context, const ClippedFilters& filters, GrayClipping clip, const Image& src, Image& dst)
{
    const Entry entry(context);
    if (entry.Refuses(CheckType(src, {Gray})) || entry.Refuses(CheckClip(clip, {Saturate, filters.other}))) return;
    Sources held;
    if (Prepare(entry, src, dst, Gray, held)) return;
    Guarded(entry, [&] { FilterSquares(clip == Saturate ? filters.saturated : filters.otherwise, held.a, dst); });
}

} // namespace filters

using namespace filters;
using kernels::Square3;

void Kernel::Smooth(const Image& Src, Image& Dst)
{
    SquareFilter("Tesk::Kernel::Smooth", Square3::Smooth, Src, Dst);
}

void Kernel::Smooth8(const Image& Src, Image& Dst)
{
    SquareFilter("Tesk::Kernel::Smooth8", Square3::Smooth8, Src, Dst);
}

void Kernel::Binomial(const Image& Src, Image& Dst)
{
    BinomialFilter("Tesk::Kernel::Binomial", 1, Src, Dst);
}

void Kernel::Binomial5(const Image& Src, Image& Dst)
{
    BinomialFilter("Tesk::Kernel::Binomial5", 2, Src, Dst);
}

void Kernel::Binomial7(const Image& Src, Image& Dst)
{
    BinomialFilter("Tesk::Kernel::Binomial7", 3, Src, Dst);
}

void Kernel::Binomial9(const Image& Src, Image& Dst)
{
    BinomialFilter("Tesk::Kernel::Binomial9", 4, Src, Dst);
}

void Kernel::BoxLowPass(int FilterWidth, int FilterHeight, const Image& Src, Image& Dst)
{
    Mean("Tesk::Kernel::BoxLowPass", FilterWidth, FilterHeight, Src, Dst, InPlace::Copied, BoxMeans);
}

void Kernel::GaussLowPass(int FilterWidth, int FilterHeight, const Image& Src, Image& Dst)
{
    Mean("Tesk::Kernel::GaussLowPass", FilterWidth, FilterHeight, Src, Dst, InPlace::Served, GaussMeans);
}

} // namespace Tesk
