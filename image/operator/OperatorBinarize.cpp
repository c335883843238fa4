// Thresholds: given, automatic, adaptive, and by colour.
#include "image/Operator.h"

#include "image/filter/LocalMeans.h"
#include "image/histogram/LevelCounts.h"
#include "image/operator/OperatorFrame.h"
#include "image/operator/PixelSteps.h"

#include <array>
#include <cmath>
#include <cstring>
#include <utility>

namespace Tesk {

namespace {

using namespace points;

using levels::BestSplit;
using levels::CountGray;
using levels::Split;
using Counts = std::array<std::uint32_t, levels::byteLevels>;

/// The means of the parts [0, t) and [t, 256); the ends of the scale for empty parts.
Split SplitAt(const Counts& counts, int t)
{
    Split split;
    split.threshold = t;
    double n[2] = {}, s[2] = {};
    for (int v = 0; v < 256; v++) {
        const int part = v >= t;
        n[part] += static_cast<double>(counts[static_cast<std::size_t>(v)]);
        s[part] += static_cast<double>(counts[static_cast<std::size_t>(v)]) * v;
    }
    if (n[0] > 0) split.below = s[0] / n[0];
    if (n[1] > 0) split.above = s[1] / n[1];
    return split;
}

double Ramp(double v, double from, double to, bool above)
{
    const double low = above ? 0 : 255, high = above ? 255 : 0;
    if (from == to) return v > from ? high : low;
    return low + (high - low) * (v - from) / (to - from);
}

/// Writes a gray source through a split, in any of the modes.
void WriteSplit(const Image& src, Image& dst, const Split& split, bool above, Binarization mode)
{
    switch (mode) {
    case Means:
        ThroughTable(src, dst,
                     [&](int v) { return static_cast<int>(v > split.threshold ? split.above : split.below); });
        break;
    case Soft:
        ThroughTable(src, dst, [&](int v) { return TruncatedByte(Ramp(v, split.below, split.above, above)); });
        break;
    case ToGray1:
        ToBits<GrayPixel>(src, dst, [&](GrayPixel v) { return (v > split.threshold) == above; });
        break;
    default: {
        const std::uint8_t high = above ? 255 : 0, low = above ? 0 : 255;
        // Beyond the range of a byte every pixel lies on one side.
        const int t = Clamp(split.threshold, -1, 255);
        const auto [rows, n] = RunOver(dst.Width, {&src, &dst});
        for (int y = 0; y < rows; y++) {
            if (t < 0)
                std::memset(dst.Row(y), high, n);
            else
                kernels::ThresholdRow(src.Row(y), dst.Row(y), n, static_cast<std::uint8_t>(t), high, low);
        }
    }
    }
}

PixelTypes ResultType(Binarization mode)
{
    return mode == ToGray1 ? Gray1 : Gray;
}

int RefuseMode(PixelTypes type)
{
    return Status::Format(IncompatibleMode, L"The operation mode is not supported for this image type (%ls)",
                          PixelTypeName(type));
}

/// What the thresholds by given colours take.
int CheckColors(const Image& src, Binarization mode)
{
    if (const int code = CheckType(src, {Rgb}, L", Rgb required")) return code;
    return mode == Binary || mode == Soft ? NoError : RefuseMode(src.Type);
}

/// Fixed-point weights of a projection on a colour axis, red, green, blue.
struct Weights
{
    std::int64_t r, g, b;
    std::int64_t operator()(RgbPixel p) const { return r * p.Red + g * p.Green + b * p.Blue; }
};

std::int64_t RoundedWeight(double weight)
{
    return static_cast<std::int64_t>(weight * 1024 + 32768) - 32768;
}

/// Projects each pixel on the axis between two colours: 0 at the back colour, 256 at the fore colour.
void WriteProjection(const Image& src, Image& dst, RgbPixel back, RgbPixel fore, bool above, Binarization mode)
{
    const int dr = fore.Red - back.Red, dg = fore.Green - back.Green, db = fore.Blue - back.Blue;
    const double square = Max(dr * dr + dg * dg + db * db, 1);
    const Weights w{RoundedWeight(dr * 256 / square), RoundedWeight(dg * 256 / square),
                    RoundedWeight(db * 256 / square)};
    const std::int64_t origin = w(back);
    const std::uint8_t high = above ? 255 : 0, low = above ? 0 : 255;
    if (mode == Soft)
        EachPixel<RgbPixel, GrayPixel>(src, dst, [=](RgbPixel p) {
            const auto ramp = static_cast<int>(Clamp<std::int64_t>((w(p) - origin) >> 10, 0, 255));
            return above ? ramp : 255 - ramp;
        });
    else
        EachPixel<RgbPixel, GrayPixel>(src, dst, [=](RgbPixel p) { return (w(p) - origin) >> 10 >= 128 ? high : low; });
}

/// The two mean colours on either side of the plane through the mean across the principal axis of the colours.
void PrincipalColors(const Image& src, RgbPixel& back, RgbPixel& fore)
{
    double sum[3] = {}, products[3][3] = {};
    const double n = static_cast<double>(src.Width) * src.Height;
    for (int y = 0; y < src.Height; y++)
        for (int x = 0; x < src.Width; x++) {
            const RgbPixel p = src.Row<RgbPixel>(y)[x];
            const double c[3] = {double(p.Red), double(p.Green), double(p.Blue)};
            for (int a = 0; a < 3; a++) {
                sum[a] += c[a];
                for (int b = 0; b < 3; b++)
                    products[a][b] += c[a] * c[b];
            }
        }
    double axis[3] = {1, 1, 1};
    constexpr int powerSteps = 10;
    for (int step = 0; step < powerSteps; step++) {
        double next[3] = {}, length = 0;
        for (int a = 0; a < 3; a++) {
            for (int b = 0; b < 3; b++)
                next[a] += (n * products[a][b] - sum[a] * sum[b]) * axis[b];
            length += next[a] * next[a];
        }
        length = std::sqrt(length);
        if (!(length > 0)) break;
        for (int a = 0; a < 3; a++)
            axis[a] = next[a] / length;
    }
    const Weights w{RoundedWeight(axis[0]), RoundedWeight(axis[1]), RoundedWeight(axis[2])};
    const std::int64_t limit = RoundedWeight((axis[0] * sum[0] + axis[1] * sum[1] + axis[2] * sum[2]) / n);
    std::int64_t count[2] = {}, parts[2][3] = {};
    for (int y = 0; y < src.Height; y++)
        for (int x = 0; x < src.Width; x++) {
            const RgbPixel p = src.Row<RgbPixel>(y)[x];
            const int part = w(p) >= limit;
            count[part]++;
            parts[part][0] += p.Red;
            parts[part][1] += p.Green;
            parts[part][2] += p.Blue;
        }
    const auto mean = [&](int part, RgbPixel none) {
        const auto of = [&](int c) { return static_cast<int>(parts[part][c] / count[part]); };
        return count[part] == 0 ? none : RgbPixel(of(0), of(1), of(2));
    };
    back = mean(0, RgbPixel(0, 0, 0));
    fore = mean(1, RgbPixel(255, 255, 255));
}

/// The adaptive threshold on one type.
template <typename T>
void WriteAdaptive(const Image& src, Image& dst, int size, int noise, bool above)
{
    const std::int64_t area = std::int64_t{size} * size;
    const std::uint8_t high = above ? 255 : 0, low = above ? 0 : 255;
    filters::EachBoxSum<T>(
        src, size, size, [](T value) { return std::int64_t{value}; },
        [&](int x, int y, std::int64_t sum) {
            dst.Row(y)[x] = src.Row<T>(y)[x] * area >= sum + area * noise ? high : low;
        });
}

} // namespace

int points::BinarizeAdaptively(int size, int noise, const Image& src, Image& dst)
{
    if (const int code = filters::CheckSize(L"size", size)) return code;
    if (const int code = dst.TrySet(src.Width, src.Height, Gray)) return code;
    VisitPixels<Gray, Gray16>(src.Type, [&]<typename T>() { WriteAdaptive<T>(src, dst, size, noise, true); });
    return NoError;
}

int Operator::Binarize(int Threshold, const Image& Src, Image& Dst, bool Above, Binarization Mode)
{
    if (Threshold == Auto) return Binarize(Src, Dst, Above, Mode);
    const Entry entry("Tesk::Operator::Binarize");
    if (entry.Refuses(CheckType(Src, {Gray}))) return 0;
    Sources held;
    if (Prepare(entry, Src, Dst, ResultType(Mode), held)) return 0;
    Split split;
    if (Mode == Means || Mode == Soft) split = SplitAt(CountGray(held.a), Threshold);
    split.threshold = Threshold;
    WriteSplit(held.a, Dst, split, Above, Mode);
    return Threshold;
}

int Operator::Binarize(const Image& Src, Image& Dst, bool Above, Binarization Mode)
{
    const Entry entry("Tesk::Operator::Binarize");
    if (entry.Refuses(CheckType(Src, {Gray, Rgb}))) return 0;
    if (Src.Type == Rgb && Mode != Binary && Mode != Soft) {
        entry.Refuses(RefuseMode(Src.Type));
        return 0;
    }
    Sources held;
    if (Prepare(entry, Src, Dst, ResultType(Mode), held)) return 0;
    if (held.a.Type == Rgb) {
        RgbPixel back, fore;
        PrincipalColors(held.a, back, fore);
        WriteProjection(held.a, Dst, back, fore, Above, Mode);
        return 0;
    }
    const Split split = BestSplit(held.a);
    WriteSplit(held.a, Dst, split, Above, Mode);
    return split.threshold;
}

void Operator::Binarize(int Size, int Noise, const Image& Src, Image& Dst, bool Above)
{
    const Entry entry("Tesk::Operator::Binarize");
    if (entry.Refuses(CheckImage(Src)) || entry.Refuses(filters::CheckSize(L"size", Size)) ||
        entry.Refuses(CheckType(Src, {Gray, Gray16})))
        return;
    Sources held;
    if (Prepare(entry, Src, Dst, Gray, held, InPlace::Copied)) return;
    entry.Guards(noFilterBuffers, [&] {
        VisitPixels<Gray, Gray16>(held.a.Type,
                                  [&]<typename T>() { WriteAdaptive<T>(held.a, Dst, Size, Noise, Above); });
    });
}

void Operator::Binarize(GrayPixel Background, GrayPixel Foreground, const Image& Src, Image& Dst, bool Above,
                        Binarization Mode)
{
    const Entry entry("Tesk::Operator::Binarize");
    if (entry.Refuses(CheckType(Src, {Gray}))) return;
    Sources held;
    if (Prepare(entry, Src, Dst, ResultType(Mode), held)) return;
    Split split;
    split.threshold = (Background + Foreground) >> 1;
    split.below = Background;
    split.above = Foreground;
    // A foreground darker than the background reverses the sides, except of a ramp, which has its direction by itself.
    const bool reversed = Foreground < Background && Mode != Soft;
    if (reversed) std::swap(split.below, split.above);
    WriteSplit(held.a, Dst, split, Above != reversed, Mode);
}

void Operator::Binarize(RgbPixel BackColor, RgbPixel ForeColor, const Image& Src, Image& Dst, bool Above,
                        Binarization Mode)
{
    const Entry entry("Tesk::Operator::Binarize");
    if (entry.Refuses(CheckColors(Src, Mode))) return;
    Sources held;
    if (!Prepare(entry, Src, Dst, Gray, held)) WriteProjection(held.a, Dst, BackColor, ForeColor, Above, Mode);
}

void Operator::Binarize(RgbPixel ForeColor, RgbPixel Tolerance, const Image& Src, Image& Dst, Binarization Mode,
                        bool Isotropic)
{
    const Entry entry("Tesk::Operator::Binarize");
    if (entry.Refuses(CheckColors(Src, Mode))) return;
    Sources held;
    if (Prepare(entry, Src, Dst, Gray, held)) return;
    const int color[3] = {ForeColor.Red, ForeColor.Green, ForeColor.Blue};
    const int tolerance[3] = {Tolerance.Red, Tolerance.Green, Tolerance.Blue};
    EachPixel<RgbPixel, GrayPixel>(held.a, Dst, [=](RgbPixel p) {
        const int channels[3] = {p.Red, p.Green, p.Blue};
        bool within = true;
        int largest = 0;
        double squares = 0, softSquares = 0;
        for (int c = 0; c < 3; c++) {
            const int d = Abs(channels[c] - color[c]), t = Max(tolerance[c], 1);
            within = within && d <= tolerance[c];
            largest = Max(largest, d * 255 / t);
            squares += static_cast<double>(d * d) / (t * t);
            softSquares += static_cast<double>(d * d) * 255 / (t * t);
        }
        if (Mode == Binary) return (Isotropic ? squares <= 1 : within) ? 255 : 0;
        return 255 - Min(255, Isotropic ? static_cast<int>(Min(std::sqrt(softSquares), 255.0)) : largest);
    });
}

} // namespace Tesk
