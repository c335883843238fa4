// Copies: constants, windows, and the conversions between pixel types.
#include "image/Operator.h"

#include "image/core/GrayDepth.h"
#include "image/operator/OperatorFrame.h"
#include "image/operator/PixelSteps.h"

#include <cstring>

namespace Tesk {

namespace {

using namespace points;

template <typename T>
void FillWindow(Image& dst, T value)
{
    for (int y = 0; y < dst.Height; y++) {
        T* row = dst.Row<T>(y);
        for (int x = 0; x < dst.Width; x++)
            row[x] = value;
    }
}

int RefuseSource(PixelTypes type)
{
    return Status::Format(UnsupportedType, L"Source image type (%ls) not supported for this operation",
                          PixelTypeName(type));
}

int RefuseDestination(PixelTypes type)
{
    return Status::Format(UnsupportedType, L"Destination image type (%ls) not supported for this operation",
                          PixelTypeName(type));
}

/// A gradient's strength as a gray value; other gains leave the destination as it stands.
void GradToGray(const Image& src, Image& dst)
{
    // The gain is known to the compiler in each loop.
    const auto scaled = [&](auto gain) {
        EachPixel<GradPixel, GrayPixel>(src, dst, [=](GradPixel p) { return GradientGray(p, gain); });
    };
    switch (src.GradGain) {
    case 1:
    case 5:
    case 35:
        scaled(std::integral_constant<int, 1>());
        break;
    case 3:
        scaled(std::integral_constant<int, 3>());
        break;
    case 4:
        scaled(std::integral_constant<int, 4>());
        break;
    case 6:
        scaled(std::integral_constant<int, 6>());
        break;
    case 8:
        scaled(std::integral_constant<int, 8>());
        break;
    case 15:
        scaled(std::integral_constant<int, 15>());
        break;
    default:
        break;
    }
}

bool HasConversion(PixelTypes from, PixelTypes to)
{
    switch (to) {
    case Gray:
        return from == Gray16 || from == Gray32 || from == Rgb || from == Rgba || from == Grad || from == Gray1;
    case Gray16:
    case Gray32:
        return from == Gray;
    case Rgb:
        return from == Gray || from == Rgba;
    case Rgba:
        return from == Gray || from == Rgb;
    case Gray1:
        return from == Gray || from == Gray16;
    default:
        return false;
    }
}

int CheckConversion(PixelTypes from, PixelTypes to)
{
    if (HasConversion(from, to)) return NoError;
    bool known = false;
    for (int type = Gray; type <= Short; type++)
        known = known || HasConversion(from, static_cast<PixelTypes>(type));
    return known ? RefuseDestination(to) : RefuseSource(from);
}

void ConvertPixels(const Image& src, Image& dst)
{
    const int shift = levels::GrayShift();
    const RowRun run = RunOver(dst.Width, {&src, &dst});
    switch (dst.Type) {
    case Gray:
        switch (src.Type) {
        case Gray16:
            EachPixel<Gray16Pixel, GrayPixel>(src, dst, [=](Gray16Pixel v) { return Min(255, v >> shift); });
            break;
        case Gray32:
            EachPixel<Gray32Pixel, GrayPixel>(src, dst, [=](Gray32Pixel v) { return Clamp(v >> shift, 0, 255); });
            break;
        case Rgb:
            for (int y = 0; y < run.rows; y++)
                kernels::LargestOfThreeRow(src.Row(y), dst.Row(y), run.count);
            break;
        case Rgba:
            EachPixel<RgbaPixel, GrayPixel>(src, dst, [](RgbaPixel p) { return (p.Blue + p.Green + p.Red) * 85 >> 8; });
            break;
        case Grad:
            GradToGray(src, dst);
            break;
        default:
            for (int y = 0; y < dst.Height; y++)
                for (int x = 0; x < dst.Width; x++)
                    dst.Row(y)[x] = src.Row(y)[x >> 3] & 0x80 >> (x & 7) ? 255 : 0;
        }
        break;
    case Gray16:
        for (int y = 0; y < run.rows; y++)
            kernels::WidenRow(src.Row(y), dst.Row<Gray16Pixel>(y), run.count, shift);
        break;
    case Gray32:
        EachPixel<GrayPixel, Gray32Pixel>(src, dst, [=](GrayPixel v) { return v << shift; });
        break;
    case Rgb:
        if (src.Type == Gray)
            EachPixel<GrayPixel, RgbPixel>(src, dst, [](GrayPixel v) { return RgbPixel(v, v, v); });
        else
            EachPixel<RgbaPixel, RgbPixel>(src, dst, [](RgbaPixel p) { return RgbPixel(p.Red, p.Green, p.Blue); });
        break;
    case Rgba:
        if (src.Type == Gray)
            EachPixel<GrayPixel, RgbaPixel>(src, dst, [](GrayPixel v) { return RgbaPixel(v, v, v, 255); });
        else
            EachPixel<RgbPixel, RgbaPixel>(src, dst, [](RgbPixel p) { return RgbaPixel(p.Red, p.Green, p.Blue, 255); });
        break;
    case Gray1:
        if (src.Type == Gray)
            ToBits<GrayPixel>(src, dst, [](GrayPixel v) { return v >= 128; });
        else
            ToBits<Gray16Pixel>(src, dst, [middle = levels::Gray16Levels() / 2](Gray16Pixel v) { return v >= middle; });
        break;
    default:
        break;
    }
}

/// Checks and detaches the destination of a constant. True, and reported, if it takes none.
/// An image that has no more than a size becomes one of the first type.
bool RefusesConstant(const Entry& entry, Image& dst, std::initializer_list<PixelTypes> types)
{
    if (entry.Refuses(dst.Settle(*types.begin()))) return true;
    if (entry.Refuses(CheckImage(dst))) return true;
    if (!Types(types).Has(dst.Type)) return entry.Refuses(RefuseDestination(dst.Type));
    dst.DetachIfShared(false);
    return false;
}

} // namespace

void Operator::Copy(int Const, Image& Dst)
{
    const Entry entry("Tesk::Operator::Copy");
    if (RefusesConstant(entry, Dst, {Gray, Gray16, Gray32, Rgb, Float})) return;
    const auto byte = static_cast<std::uint8_t>(Const);
    switch (Dst.Type) {
    case Gray:
        FillWindow<GrayPixel>(Dst, byte);
        break;
    case Gray16:
        FillWindow<Gray16Pixel>(Dst, static_cast<Gray16Pixel>(Const));
        break;
    case Rgb:
        FillWindow<RgbPixel>(Dst, RgbPixel(byte, byte, byte));
        break;
    default:
        FillWindow<std::int32_t>(Dst, Const);
    }
}

void Operator::Copy(RgbPixel Const, Image& Dst)
{
    const Entry entry("Tesk::Operator::Copy");
    if (!RefusesConstant(entry, Dst, {Rgb})) FillWindow(Dst, Const);
}

void Operator::Copy(RgbaPixel Const, Image& Dst)
{
    const Entry entry("Tesk::Operator::Copy");
    if (!RefusesConstant(entry, Dst, {Rgba})) FillWindow(Dst, Const);
}

bool points::CopyPixels(const Entry& entry, const Image& src, Image& dst, PixelTypes type)
{
    if (entry.Refuses(CheckImage(src))) return true;
    if (type == Undefined) type = src.Type;
    const bool same = type == src.Type;
    if (!same && entry.Refuses(CheckConversion(src.Type, type))) return true;
    const bool samePixels = src.FirstPixel == dst.FirstPixel && src.Pitch == dst.Pitch && src.Type == dst.Type;
    if (same && samePixels && src.Width == dst.Width && src.Height == dst.Height) return false;
    Sources held;
    if (Prepare(entry, src, dst, type, held)) return true;
    if (!same) {
        ConvertPixels(held.a, dst);
        return false;
    }
    const RowEnd end(dst);
    for (int y = 0; y < dst.Height; y++) {
        std::memcpy(dst.Row(y), held.a.Row(y), end.whole);
        if (end.Shared()) end.Put(dst.Row(y), held.a.Row(y)[end.whole]);
    }
    return false;
}

void Operator::Copy(const Image& Src, Image& Dst, PixelTypes DstType)
{
    points::CopyPixels(Entry("Tesk::Operator::Copy"), Src, Dst, DstType);
}

void Operator::RedBlueSwap(const Image& Src, Image& Dst)
{
    const Entry entry("Tesk::Operator::RedBlueSwap");
    Sources held;
    if (Prepare(entry, Src, {Rgb}, Dst, held)) return;
    EachPixel<RgbPixel, RgbPixel>(held.a, Dst, [](RgbPixel p) { return RgbPixel(p.Blue, p.Green, p.Red); });
}

} // namespace Tesk
