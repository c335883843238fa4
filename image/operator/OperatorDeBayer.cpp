// Colours from the mosaic of a single-sensor camera.
#include "image/Operator.h"
#include "image/filter/RowRing.h"
#include "image/filter/SquareFilters.h"
#include "image/operator/OperatorFrame.h"

namespace Tesk {

namespace {

using namespace points;
using namespace filters;
using kernels::Square3;

/// Where a mosaic that begins red, green and green, blue is entered: on odd columns, on odd rows.
struct Phase
{
    bool oddColumn, oddRow;
};

/// The rows around a place of the mosaic. At an edge the row on the other side stands in for the one that is missing,
/// so that its colours are the right ones.
struct Rows
{
    const GrayPixel *above, *here, *below;

    Rows(const Image& mosaic, int y)
        : above(mosaic.Row(Beside(y, -1, mosaic.Height))), here(mosaic.Row(y)),
          below(mosaic.Row(Beside(y, 1, mosaic.Height)))
    {}

    static int Beside(int place, int step, int count)
    {
        if (place + step >= 0 && place + step < count) return place + step;
        return place - step >= 0 && place - step < count ? place - step : place;
    }
};

/// Colours between the nearest samples, by the means of two or of four.
RgbPixel Interpolated(const Rows& r, int left, int x, int right, bool oddColumn, bool oddRow)
{
    const int here = r.here[x], across = (r.here[left] + r.here[right]) >> 1, down = (r.above[x] + r.below[x]) >> 1;
    // At a green pixel, the colour of its row lies left and right, the other one above and below.
    if (oddColumn != oddRow) return oddRow ? RgbPixel(down, here, across) : RgbPixel(across, here, down);
    const int green = (r.here[left] + r.here[right] + r.above[x] + r.below[x]) >> 2;
    const int far = (r.above[left] + r.above[right] + r.below[left] + r.below[right]) >> 2;
    return oddRow ? RgbPixel(far, green, here) : RgbPixel(here, green, far);
}

void Demosaic(const Image& mosaic, Phase phase, Image& dst)
{
    const int width = mosaic.Width;
    for (int y = 0; y < mosaic.Height; y++) {
        const Rows rows(mosaic, y);
        RgbPixel* d = dst.Row<RgbPixel>(y);
        const bool oddRow = phase.oddRow != ((y & 1) != 0);
        const auto fill = [&](int x, int left, int right) {
            d[x] = Interpolated(rows, left, x, right, phase.oddColumn != ((x & 1) != 0), oddRow);
        };
        fill(0, Rows::Beside(0, -1, width), Rows::Beside(0, 1, width));
        for (int x = 1; x + 1 < width; x++)
            fill(x, x - 1, x + 1);
        if (width > 1) fill(width - 1, width - 2, width - 2);
    }
}

/// The mosaic relative to its brightness, 64 for equality, so that colours are interpolated apart from it.
void Ratios(const Image& mosaic, const Image& brightness, Image& ratios)
{
    int reciprocals[256] = {};
    for (int v = 1; v < 256; v++)
        reciprocals[v] = 65536 / v;
    for (int y = 0; y < mosaic.Height; y++) {
        const GrayPixel *s = mosaic.Row(y), *l = brightness.Row(y);
        GrayPixel* d = ratios.Row(y);
        for (int x = 0; x < mosaic.Width; x++)
            d[x] = static_cast<GrayPixel>(Min(255, (reciprocals[l[x]] * s[x]) >> 10));
    }
}

/// The binomial mask of 3 x 3 on each channel, in place.
void SmoothChannels(Image& image)
{
    RowRing<std::uint8_t> ring(image, 3, 1, 3);
    const int n = image.Width * 3;
    for (int y = 0; y < image.Height; y++) {
        ring.MoveTo(y);
        const std::uint8_t *above = ring.Row(y - 1), *here = ring.Row(y), *below = ring.Row(y + 1);
        std::uint8_t* d = image.Row(y);
        for (int i = 0; i < n; i++) {
            const auto column = [&](int at) { return above[at] + 2 * here[at] + below[at]; };
            d[i] = static_cast<std::uint8_t>((column(i - 3) + 2 * column(i) + column(i + 3)) >> 4);
        }
    }
}

void MultiplyBack(const Image& brightness, Image& dst)
{
    for (int y = 0; y < dst.Height; y++) {
        const GrayPixel* l = brightness.Row(y);
        std::uint8_t* d = dst.Row(y);
        for (int x = 0; x < dst.Width; x++)
            for (int channel = 0; channel < 3; channel++, d++)
                *d = static_cast<std::uint8_t>(Min(255, (*d * l[x]) >> 6));
    }
}

void FromRatios(const Image& mosaic, Phase phase, bool sharp, Image& dst)
{
    Image brightness, ratios;
    MakeLike(mosaic, Gray, brightness);
    MakeLike(mosaic, Gray, ratios);
    FilterSquares(Square3::Binomial, mosaic, brightness);
    Ratios(mosaic, brightness, ratios);
    Demosaic(ratios, phase, dst);
    SmoothChannels(dst);
    if (sharp) FilterSquares(Square3::Sharpen4, brightness, brightness);
    MultiplyBack(brightness, dst);
}

} // namespace

void Operator::DeBayer(const Image& Src, Image& Dst, BayerAlignments TopLeft, BayerQualities Quality)
{
    const Entry entry("Tesk::Operator::DeBayer");
    if (entry.Refuses(CheckImage(Src))) return;
    if (Src.Type != Gray) {
        entry.Refuse(UnsupportedType, L"The source image type (%ls) is not supported for this operation, use Gray",
                     PixelTypeName(Src.Type));
        return;
    }
    if (Quality < FastRgb || Quality > SharpGray) {
        entry.Refuse(OutOfRange, L"The Bayer quality (%d) is not in the enum range", static_cast<int>(Quality));
        return;
    }
    const bool gray = Quality == SmoothGray || Quality == SharpGray;
    // A window keeps the phase of the whole mosaic.
    const Phase phase{((TopLeft ^ Src.X) & 1) != 0, ((TopLeft >> 1 ^ Src.Y) & 1) != 0};
    Sources held;
    if (Prepare(entry, Src, Dst, gray ? Gray : Rgb, held)) return;
    entry.Guards(noFilterBuffers, [&] {
        if (gray) {
            FilterSquares(Square3::Binomial, held.a, Dst);
            if (Quality == SharpGray) FilterSquares(Square3::Sharpen4, Dst, Dst);
        } else if (Quality == FastRgb) {
            Demosaic(held.a, phase, Dst);
        } else {
            FromRatios(held.a, phase, Quality == SharpRgb, Dst);
        }
    });
}

} // namespace Tesk
