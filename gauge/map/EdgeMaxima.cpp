// Rasters of edges: maxima of the gradient, hysteresis, and steps along rows and columns.
#include "gauge/map/EdgeMaxima.h"

#include "foundation/Entry.h"
#include "gauge/EdgeMap.h"
#include "image/core/Destination.h"
#include "image/core/PixelLoops.h"
#include "image/core/Refusals.h"
#include "image/filter/GradientVector.h"
#include "measure/fit/EdgeWalk.h"

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <vector>

namespace Tesk {

namespace edgemaps {

using namespace images;

namespace {

constexpr int white = 255;

/// Whether a component is an extreme of its own sign between the neighbours; of two equal ones it is one alone.
bool IsExtreme(int g, int before, int after)
{
    return g > 0 ? g >= before && g > after : g < 0 && g < before && g <= after;
}

/// The row of maxima for a gain that is known when it is compiled, so that the division costs little.
template <int gain>
void MaximaRow(const GradPixel* above, const GradPixel* row, const GradPixel* below, int width, int noise, int limit,
               std::uint8_t* maxima)
{
    for (int x = 1; x < width - 1; x++) {
        const int gx = row[x].X, gy = row[x].Y;
        const bool along = std::abs(gx) >= std::abs(gy);
        const int g = along ? gx : gy, magnitude = std::abs(g);
        if (magnitude < noise || magnitude > limit) continue;
        if (along ? IsExtreme(g, row[x - 1].X, row[x + 1].X) : IsExtreme(g, above[x].Y, below[x].Y))
            maxima[x] = static_cast<std::uint8_t>(Min(magnitude / gain, white));
    }
}

template <int gain>
void MaximaOf(const Image& gradient, int noise, int limit, Image& maxima)
{
    for (int y = 1; y < gradient.Height - 1; y++)
        MaximaRow<gain>(gradient.Row<GradPixel>(y - 1), gradient.Row<GradPixel>(y), gradient.Row<GradPixel>(y + 1),
                        gradient.Width, noise, limit, maxima.Row(y));
}

/// The mean of the larger component, times 1.3.
int AutomaticNoise(const Image& gradient)
{
    std::int64_t sum = 0;
    for (int y = 0; y < gradient.Height; y++) {
        const GradPixel* row = gradient.Row<GradPixel>(y);
        for (int x = 0; x < gradient.Width; x++)
            sum += Max(std::abs(row[x].X), std::abs(row[x].Y));
    }
    const double count = static_cast<double>(gradient.Width) * gradient.Height;
    return static_cast<int>(1.3 * (static_cast<double>(sum) / count));
}

} // namespace

int CheckGradient(const Image& src, GradientTypes type)
{
    if (const int code = CheckImage(src)) return code;
    if (src.Type != Gray)
        return Status::Format(UnsupportedType, L"The source image type (%ls) is not supported for this operation",
                              PixelTypeName(src.Type));
    if (gradients::Gain(type) == 0)
        return Status::Format(UnsupportedType,
                              L"The gradient Type (%ls) is not supported for this operation; use one of "
                              L"Standard/Sobel/Prewitt/Correlated/Canny",
                              gradients::TypeName(type));
    return NoError;
}

int GradientOf(const Image& src, GradientTypes type, int noise, Image& gradient)
{
    MakeLike(src, Grad, gradient);
    gradients::Compute(src, type, gradient);
    if (noise == Auto) return AutomaticNoise(gradient);
    return static_cast<int>(Clamp<std::int64_t>(std::int64_t{noise} * gradients::Gain(type), INT32_MIN, INT32_MAX));
}

void Maxima(const Image& gradient, int noise, std::int64_t upperLimit, Image& maxima)
{
    FillRows(maxima, 0);
    const int limit = static_cast<int>(Clamp<std::int64_t>(upperLimit, -1, INT32_MAX));
    switch (static_cast<int>(gradient.GradGain)) {
    case 1:
        return MaximaOf<1>(gradient, noise, limit, maxima);
    case 3:
        return MaximaOf<3>(gradient, noise, limit, maxima);
    case 4:
        return MaximaOf<4>(gradient, noise, limit, maxima);
    case 5:
        return MaximaOf<5>(gradient, noise, limit, maxima);
    case 35:
        return MaximaOf<35>(gradient, noise, limit, maxima);
    default:
        return;
    }
}

} // namespace edgemaps

using namespace edgemaps;

namespace {

/// The frame of a filter: check, make the gradient, size the destination, and let `work(gradient, noise)` fill it with
/// what is made of the maxima.
template <typename F>
int FromMaxima(const Entry& entry, int noise, const Image& src, Image& dst, GradientTypes type, int upperLimit, F work)
{
    if (entry.Refuses(CheckGradient(src, type))) return 0;
    Image gradient, maxima;
    int inUse = 0;
    const int gain = gradients::Gain(type);
    if (!entry.Guards(images::noWorkingMemory, [&] {
            inUse = GradientOf(src, type, noise, gradient);
            images::MakeLike(src, Gray, maxima);
            Maxima(gradient, inUse, std::int64_t{upperLimit} * gain, maxima);
        }))
        return 0;
    images::Sources held;
    if (images::Prepare(entry, src, dst, Gray, held)) return 0;
    if (!entry.Guards(images::noWorkingMemory, [&] { work(maxima, dst); })) return 0;
    return inUse / gain;
}

/// Sets all that is connected to a strong maximum.
void FloodStrong(const Image& maxima, int strength, Image& dst)
{
    images::FillRows(dst, 0);
    const int width = maxima.Width, height = maxima.Height;
    std::vector<std::int64_t> stack;
    const auto visit = [&](int x, int y) {
        dst.Row(y)[x] = white;
        stack.push_back(std::int64_t{y} * width + x);
    };
    for (int y = 1; y < height - 1; y++)
        for (int x = 1; x < width - 1; x++) {
            if (maxima.Row(y)[x] <= strength || dst.Row(y)[x] != 0) continue;
            visit(x, y);
            while (!stack.empty()) {
                const std::int64_t at = stack.back();
                stack.pop_back();
                // The border holds no maximum, so that no neighbour lies outside.
                const int px = static_cast<int>(at % width), py = static_cast<int>(at / width);
                for (int j = Max(py - 1, 0); j <= Min(py + 1, height - 1); j++)
                    for (int i = Max(px - 1, 0); i <= Min(px + 1, width - 1); i++)
                        if (maxima.Row(j)[i] > 0 && dst.Row(j)[i] == 0) visit(i, j);
            }
        }
}

} // namespace

void EdgeMap::GradientVector(const Image& Src, Image& Dst, enum GradientTypes Type)
{
    const Entry entry("Tesk::EdgeMap::GradientVector");
    if (entry.Refuses(CheckGradient(Src, Type))) return;
    images::Sources held;
    if (images::Prepare(entry, Src, Dst, Grad, held, images::InPlace::Copied)) return;
    entry.Guards(images::noWorkingMemory, [&] { gradients::Compute(held.a, Type, Dst); });
}

int EdgeMap::GradientMaxima(int Noise, const Image& Src, Image& Dst, bool Binarize, enum GradientTypes Type,
                            int UpperLimit)
{
    const Entry entry("Tesk::EdgeMap::GradientMaxima");
    return FromMaxima(entry, Noise, Src, Dst, Type, UpperLimit, [Binarize](const Image& maxima, Image& dst) {
        images::CopyRows(maxima, dst);
        for (int y = 0; Binarize && y < dst.Height; y++)
            std::transform(dst.Row(y), dst.Row(y) + dst.Width, dst.Row(y),
                           [](std::uint8_t v) { return static_cast<std::uint8_t>(v > 0 ? white : 0); });
    });
}

int EdgeMap::StrongEdges(int Noise, int EdgeStrength, const Image& Src, Image& Dst, enum GradientTypes Type,
                         int UpperLimit)
{
    const Entry entry("Tesk::EdgeMap::StrongEdges");
    return FromMaxima(entry, Noise, Src, Dst, Type, UpperLimit, [EdgeStrength](const Image& maxima, Image& dst) {
        FloodStrong(maxima, Max(EdgeStrength, 0), dst);
    });
}

void EdgeMap::StepEdges(int MinimumStep, int Noise, const Image& Src, Image& Dst, Polarities Polarity,
                        Directions Directions, bool ShowPolarity)
{
    const Entry entry("Tesk::EdgeMap::StepEdges");
    images::Sources held;
    if (entry.Refuses(images::CheckType(Src, {Gray})) ||
        images::Prepare(entry, Src, Dst, Gray, held, images::InPlace::Copied))
        return;
    constexpr int ground = 128;
    const Image& src = held.a;
    images::FillRows(Dst, ShowPolarity ? ground : 0);
    const auto walk = [&](const std::uint8_t* signal, int count, auto pixelAt) {
        profiles::WalkEdges(signal, count, MinimumStep, Noise, Polarity, [&](const profiles::EdgeStep& edge) {
            *pixelAt(edge.Crossing(signal)) = ShowPolarity && !edge.Rising ? 0 : white;
        });
    };
    entry.Guards(images::noWorkingMemory, [&] {
        if (Directions & HorizontalDirection)
            for (int y = 0; y < src.Height; y++)
                walk(src.Row(y), src.Width, [row = Dst.Row(y)](int x) { return row + x; });
        std::vector<std::uint8_t> column(static_cast<std::size_t>(int(src.Height)));
        if (Directions & VerticalDirection)
            for (int x = 0; x < src.Width; x++) {
                for (int y = 0; y < src.Height; y++)
                    column[static_cast<std::size_t>(y)] = src.Row(y)[x];
                walk(column.data(), src.Height, [&Dst, x](int y) { return Dst.Row(y) + x; });
            }
    });
}

} // namespace Tesk
