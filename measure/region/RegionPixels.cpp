// The pixels of images that a region covers: filling, copying, mean and variance.
#include "foundation/Entry.h"
#include "image/Image.h"
#include "image/core/Destination.h"
#include "image/core/PixelTypes.h"
#include "image/kernels/RowKernels.h"
#include "measure/Region.h"
#include "measure/region/RegionFrame.h"

#include <algorithm>
#include <cstring>

namespace Tesk {

using namespace regions;

namespace {

/// Writes one value over all pixels of the runs.
template <typename T>
void Put(RunSpan runs, T value, int width, Image& dst)
{
    dst.DetachIfShared(true);
    EachClipped(runs, width, dst.Height,
                [&](int x, std::size_t n, int y) { std::fill_n(dst.Row<T>(y) + x, n, value); });
}

/// A color whose bytes stand in a number in the order in which they stand in memory.
RgbPixel ColorOf(int value)
{
    return {value >> 16 & 0xff, value >> 8 & 0xff, value & 0xff};
}

RgbaPixel OpaqueColorOf(int value)
{
    return {value >> 16 & 0xff, value >> 8 & 0xff, value & 0xff, value >> 24 & 0xff};
}

constexpr images::Types copied = {Gray, Gray16, Rgb, Rgba};

int CheckCopy(const Image& src, const Image& dst)
{
    if (const int code = CheckImage(dst)) return code;
    if (!copied.Has(dst.Type)) return RefuseType(dst.Type, L"one of Gray, Gray16, Rgb or Rgba");
    return CheckImage(src, dst.Type);
}

/// The pixels of the runs that lie in the window of a `Gray` image, the sum of their values and that of the squares.
struct Sums
{
    std::uint64_t sum = 0, squares = 0;
    std::int64_t pixels = 0;

    Sums(RunSpan runs, const Image& src)
    {
        EachClipped(runs, src.Width, src.Height, [&](int x, std::size_t n, int y) {
            kernels::MomentsRow(src.Row(y) + x, n, sum, squares);
            pixels += static_cast<std::int64_t>(n);
        });
    }

    int Area() const { return static_cast<int>(Min<std::int64_t>(pixels, INT32_MAX)); }
    double Mean() const { return static_cast<double>(sum / static_cast<std::uint64_t>(pixels)); }
};

int CheckGray(const Image& src)
{
    if (const int code = CheckImage(src)) return code;
    return src.Type == Gray ? NoError : RefuseType(src.Type, L"Gray");
}

constexpr const wchar_t* isOutside = L"The Region is out of the image";

} // namespace

void Region::Fill(int Value, Image& Dst) const
{
    const Entry entry("Tesk::Region::Fill");
    if (entry.Refuses(CheckImage(Dst))) return;
    if (Dst.Type == Gray)
        Put(Runs(), static_cast<GrayPixel>(Value), Dst.Width, Dst);
    else if (Dst.Type == Gray16)
        Put(Runs(), static_cast<Gray16Pixel>(Value), Dst.Width, Dst);
    else
        entry.Refuses(RefuseType(Dst.Type, L"Gray"));
}

void Region::Fill(RgbPixel Value, Image& Dst) const
{
    const Entry entry("Tesk::Region::Fill");
    if (entry.Refuses(CheckImage(Dst))) return;
    if (Dst.Type == Rgb)
        // Programs rely on the last column, which this form has never filled.
        Put(Runs(), Value, Dst.Width - 1, Dst);
    else
        entry.Refuses(RefuseType(Dst.Type, L"Rgb"));
}

void Region::Fill(const Image& Src, Image& Dst, int SrcX, int SrcY) const
{
    const Entry entry("Tesk::Region::Fill");
    if (entry.Refuses(CheckCopy(Src, Dst))) return;
    Image held;
    held.ShallowCopy(Src, true);
    Dst.DetachIfShared(true);
    if (entry.Refuses(images::KeepApart(held, Dst, images::InPlace::Copied))) return;
    const auto size = static_cast<std::size_t>(ElementSize(Dst.Type));
    EachClipped(Runs(), Dst.Width, Dst.Height, [&](int x, std::size_t n, int y) {
        const std::int64_t from = Max<std::int64_t>(x, SrcX),
                           to = Min(x + static_cast<std::int64_t>(n), std::int64_t{SrcX} + held.Width),
                           row = std::int64_t{y} - SrcY;
        if (row < 0 || row >= held.Height || from >= to) return;
        std::memcpy(Dst.Row(y) + static_cast<std::size_t>(from) * size,
                    held.Row(static_cast<int>(row)) + static_cast<std::size_t>(from - SrcX) * size,
                    static_cast<std::size_t>(to - from) * size);
    });
}

void Region::ToImage(int Value, Image& Dst) const
{
    const Entry entry("Tesk::Region::ToImage");
    if (!entry.Refuses(CheckImage(Dst))) entry.Refuses(PutRuns(Runs(), Value, Dst));
}

int regions::PutRuns(RunSpan runs, int value, Image& dst)
{
    switch (dst.Type) {
    case Gray:
        Put(runs, static_cast<GrayPixel>(value), dst.Width, dst);
        break;
    case Gray16:
        Put(runs, static_cast<Gray16Pixel>(value), dst.Width, dst);
        break;
    case Gray32:
        Put(runs, Gray32Pixel{value}, dst.Width, dst);
        break;
    case Rgb:
        Put(runs, ColorOf(value), dst.Width, dst);
        break;
    case Rgba:
        Put(runs, OpaqueColorOf(value), dst.Width, dst);
        break;
    default:
        return Status::Format(UnsupportedType,
                              L"The source image type (%ls) is not supported for this operation, use Gray... or Rgb...",
                              PixelTypeName(dst.Type));
    }
    return NoError;
}

double Region::Mean(const Image& Src, int& Area) const
{
    const Entry entry("Tesk::Region::Mean");
    if (entry.Refuses(CheckGray(Src))) return 0;
    if (NumRuns < 1 && entry.Refuse(VoidObject, L"The Region is empty")) return 0;
    const Sums sums(Runs(), Src);
    if (sums.pixels == 0 && entry.Refuse(VoidObject, isOutside)) return 0;
    Area = sums.Area();
    return sums.Mean();
}

double Region::Variance(const Image& Src, double& Mean, int& Area) const
{
    const Entry entry("Tesk::Region::Variance");
    if (entry.Refuses(CheckGray(Src))) return 0;
    const Sums sums(Runs(), Src);
    if (sums.pixels == 0 && entry.Refuse(VoidObject, isOutside)) return 0;
    Area = sums.Area();
    Mean = sums.Mean();
    return static_cast<double>(sums.squares) / static_cast<double>(sums.pixels) - Mean * Mean;
}

} // namespace Tesk
