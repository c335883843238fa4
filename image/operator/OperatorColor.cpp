// Colour components and colour corrections.
#include "image/Operator.h"

#include "image/operator/OperatorFrame.h"

#include <cstring>

namespace Tesk {

namespace {

using namespace points;

const wchar_t* ComponentName(ColorComponents component)
{
    static constexpr const wchar_t* names[] = {
        L"Red (RGB)",        L"Green (RGB)",   L"Blue (RGB)",       L"Hue (HLS)",   L"Lightness (HLS)",
        L"Saturation (HLS)", L"Hue (HSV)",     L"Saturation (HSV)", L"Value (HSV)", L"Luma (YUV)",
        L"ChromaU (YUV)",    L"ChromaV (YUV)", L"X (XYZ)",          L"Y (XYZ)",     L"Z (XYZ)",
        L"xx (XYZ)",         L"yy (XYZ)",      L"zz (XYZ)",         L"Alpha"};
    return component >= Red_RGB && component <= Alpha ? names[component] : L"?";
}

int RefuseComponent(ColorComponents component, PixelTypes type)
{
    return Status::Format(UnsupportedType, L"The Color Component (%ls) is not supported for a %ls source image",
                          ComponentName(component), PixelTypeName(type));
}

struct Color
{
    int R, G, B;
    int Largest() const { return Max(R, Max(G, B)); }
    int Smallest() const { return Min(R, Min(G, B)); }
};

int Hue(const Color& c)
{
    const int M = c.Largest(), d = M - c.Smallest();
    if (d == 0) return 0;
    int hue = 0;
    if (c.R == M)
        hue = (c.G - c.B) * 255 / (6 * d);
    else if (c.G == M)
        hue = (c.B - c.R) * 255 / (6 * d) + 86;
    else
        hue = (c.R - c.G) * 255 / (6 * d) - 85;
    return hue & 255;
}

int SaturationHls(const Color& c)
{
    const int M = c.Largest(), m = c.Smallest();
    if (M == m) return 0;
    return M + m < 256 ? (M - m) * 255 / (M + m) : (M - m) * 255 / (510 - M - m);
}

int Xyz(const Color& c, int which)
{
    switch (which) {
    case 0:
        return (317 * c.R + 501 * c.G + 204 * c.B) >> 10;
    case 1:
        return (181 * c.R + 831 * c.G + 10 * c.B) >> 10;
    default:
        return (10 * c.G + 1013 * c.B) >> 10;
    }
}

/// A chromaticity: the share of one of X, Y, Z in their sum, which comes from the channels at full precision.
int Chromaticity(const Color& c, int which)
{
    const int sum = 1159 * c.G + 1229 * c.R + 682 * c.B;
    return sum < 1024 ? 0 : Min(255, Xyz(c, which) * 255 / (sum >> 10));
}

int ComponentOf(const Color& c, ColorComponents component)
{
    switch (component) {
    case Red_RGB:
        return c.R;
    case Green_RGB:
        return c.G;
    case Blue_RGB:
        return c.B;
    case Hue_HLS:
    case Hue_HSV:
        return Hue(c);
    case Lightness_HLS:
        return (c.Largest() + c.Smallest()) >> 1;
    case Saturation_HLS:
        return SaturationHls(c);
    case Saturation_HSV:
        return c.Largest() == 0 ? 0 : (c.Largest() - c.Smallest()) * 255 / c.Largest();
    case Value_HSV:
        return c.Largest();
    case Luma_YUV:
        return (306 * c.R + 601 * c.G + 117 * c.B) >> 10;
    case ChromaU_YUV:
        return Clamp(((446 * c.B - 296 * c.G - 151 * c.R) >> 10) + 128, 0, 255);
    case ChromaV_YUV:
        return Clamp(((629 * c.R - 528 * c.G - 102 * c.B) >> 10) + 128, 0, 255);
    case X_XYZ:
    case Y_XYZ:
    case Z_XYZ:
        return Min(255, Xyz(c, component - X_XYZ));
    default:
        return Chromaticity(c, component - xx_XYZ);
    }
}

/// The byte of a colour pixel that a channel stands in.
int ByteOf(ColorComponents channel)
{
    return channel == Alpha ? 3 : 2 - channel;
}

void TakeByte(const Image& src, Image& dst, int byte)
{
    const int step = ElementSize(src.Type);
    for (int y = 0; y < dst.Height; y++) {
        const std::uint8_t* s = src.Row(y) + byte;
        for (int x = 0; x < dst.Width; x++, s += step)
            dst.Row(y)[x] = *s;
    }
}

/// The frame of a colour correction: `Rgb` to `Rgb`.
template <typename F>
void Correction(const char* context, const Image& src, Image& dst, F f)
{
    const Entry entry(context);
    Sources held;
    if (Prepare(entry, src, dst, Undefined, held)) return;
    if (held.a.Type != Rgb) {
        entry.Refuse(UnsupportedType, L"The source image type (%ls) is not supported for this operation, use Rgb only",
                     PixelTypeName(held.a.Type));
        return;
    }
    EachPixel<RgbPixel, RgbPixel>(held.a, dst, [=](RgbPixel p) { return f(Color{p.Red, p.Green, p.Blue}); });
}

} // namespace

void Operator::Convert(const Image& Src, Image& Dst, ColorComponents Component)
{
    const Entry entry("Tesk::Operator::Convert");
    if (entry.Refuses(CheckImage(Src))) return;
    const bool channel = Component == Red_RGB || Component == Green_RGB || Component == Blue_RGB;
    const PixelTypes from = Src.Type;
    if (from != Gray && from != Rgb && from != Rgba) {
        entry.Refuse(UnsupportedType, L"The source image type (%ls) is not supported for this operation",
                     PixelTypeName(from));
        return;
    }
    const bool served =
        channel || (from == Rgb && Component >= Red_RGB && Component < Alpha) || (from == Rgba && Component == Alpha);
    if (!served) {
        entry.Refuses(RefuseComponent(Component, from));
        return;
    }
    Sources held;
    if (from != Gray) {
        if (Prepare(entry, Src, Dst, Gray, held)) return;
        if (channel || Component == Alpha)
            TakeByte(held.a, Dst, ByteOf(Component));
        else
            EachPixel<RgbPixel, GrayPixel>(held.a, Dst, [=](RgbPixel p) {
                return ComponentOf(Color{p.Red, p.Green, p.Blue}, Component);
            });
        return;
    }
    // Into one channel of a colour image, whose other channels stay: its pixels are kept when it is detached. A new
    // block, which is taken before the former is let go and so never at the same place, begins as black.
    held.a.ShallowCopy(Src, true);
    const std::uint8_t* former = Dst.Buffer;
    if (RefusesSize(Dst, held.a.Width, held.a.Height, Rgb)) return;
    const bool fresh = Dst.Buffer != former;
    Dst.DetachIfShared(true);
    if (entry.Refuses(KeepApart(held.a, Dst))) return;
    if (fresh)
        for (int y = 0; y < Dst.Height; y++)
            std::memset(Dst.Row(y), 0, static_cast<std::size_t>(ByteCount(Dst)));
    for (int y = 0; y < Dst.Height; y++) {
        std::uint8_t* d = Dst.Row(y) + ByteOf(Component);
        for (int x = 0; x < Dst.Width; x++, d += 3)
            *d = held.a.Row(y)[x];
    }
}

void Operator::ColorsLighten(const Image& Src, Image& Dst, int Black)
{
    Correction("Tesk::Operator::ColorsLighten", Src, Dst, [=](const Color& c) {
        const int k = 65535 / Max(Black, Max(c.Largest(), 1));
        return RgbPixel((c.R * k) >> 8, (c.G * k) >> 8, (c.B * k) >> 8);
    });
}

void Operator::ColorsSaturate(const Image& Src, Image& Dst, int Black)
{
    Correction("Tesk::Operator::ColorsSaturate", Src, Dst, [=](const Color& c) {
        const int M = c.Largest(), m = c.Smallest(), d = Max(Black, Max(M - m, 1));
        // The largest keeps its value and the smallest becomes 0; equal channels follow the first of them in the order
        // red, green, blue.
        bool kept = false, dropped = false;
        const auto stretch = [&](int v) {
            if (v == M && !kept) {
                kept = true;
                return M;
            }
            if (v == m && !dropped) {
                dropped = true;
                return 0;
            }
            return static_cast<int>(std::int64_t{v - m} * M / d);
        };
        const int r = stretch(c.R), g = stretch(c.G), b = stretch(c.B);
        return RgbPixel(r, g, b);
    });
}

void Operator::ColorsHueSet(int Hue, const Image& Src, Image& Dst)
{
    const int position = (Hue & 255) * 6, sector = position >> 8, fraction = position & 255;
    Correction("Tesk::Operator::ColorsHueSet", Src, Dst, [=](const Color& c) {
        const int M = c.Largest(), m = c.Smallest(), d = ((M - m) * fraction) >> 8;
        switch (sector) {
        case 0:
            return RgbPixel(M, m + d, m);
        case 1:
            return RgbPixel(M - d, M, m);
        case 2:
            return RgbPixel(m, M, m + d);
        case 3:
            return RgbPixel(m, M - d, M);
        case 4:
            return RgbPixel(m + d, m, M);
        default:
            return RgbPixel(M, m, M - d);
        }
    });
}

} // namespace Tesk
