// The levels of a locator's model: reductions of the pattern, and the edges of each.
#include "match/locator/LocatorModel.h"

#include "image/core/Destination.h"
#include "image/filter/GradientVector.h"
#include "image/histogram/LevelCounts.h"
#include "image/morpho/MorphoExtremum.h"
#include "image/pyramid/PyramidScale.h"

#include <cmath>

namespace Tesk::locator {

namespace {

constexpr int magnitudes = 768;

/// The size of the next level; false at the end.
bool Shrink(int& width, int& height, bool& halved)
{
    const auto enough = [](int w, int h) { return std::int64_t{w} * h >= leastPixels; };
    halved = enough(width >> 1, height >> 1);
    if (halved) {
        width >>= 1;
        height >>= 1;
        return true;
    }
    if (!enough(2 * (width / 3), 2 * (height / 3))) return false;
    width = 2 * (width / 3);
    height = 2 * (height / 3);
    return true;
}

/// The rotation that moves a point of a rectangle by one pixel, on the average.
double RotationStep(int width, int height)
{
    const double w = width - 1, h = height - 1, d = std::sqrt(w * w + h * h);
    // Towards a rectangle without height, ln((D + W) / (D - W)) H H / W vanishes and the other term becomes 2 W.
    const auto term = [d](double side, double other) {
        if (other == 0) return 0.0;
        if (side == 0) return 2 * other;
        return std::log((d + side) / (d - side)) * other * other / side;
    };
    return 12 / (term(w, h) + 4 * d + term(h, w));
}

/// Dilates by the square of three.
void Dilate(Image& mask)
{
    Image dilated;
    images::MakeLike(mask, Gray, dilated);
    morpho::Apply(morpho::Extremum::Maximum, morpho::Element(3, 3, 1, mask), mask, dilated);
    images::CopyRows(dilated, mask);
}

/// Left minus right and top minus bottom in each square of three; 0 along the border.
int MakeGradient(const Image& pattern, Image& gradient)
{
    if (const int code = gradient.Fit(pattern.Width, pattern.Height, Grad)) return code;
    gradients::Compute(pattern, PrewittGradient, gradient);
    for (int y = 0; y < gradient.Height; y++) {
        auto* row = gradient.Row<Gradient>(y);
        const bool border = y == 0 || y == gradient.Height - 1;
        for (int x = 0; x < gradient.Width; x++)
            row[x] = border || x == 0 || x == gradient.Width - 1
                         ? Gradient{0, 0}
                         : Gradient{static_cast<std::int16_t>(-row[x].X), static_cast<std::int16_t>(-row[x].Y)};
    }
    return NoError;
}

/// Whether a pixel belongs to the pattern.
bool IsUsed(const Level& level, Modes mode, int x, int y)
{
    if (mode == Modes::Mask) return level.mask.Row(y)[x] >= 128;
    if (mode != Modes::Disk) return true;
    const std::int64_t w = level.pattern.Width, h = level.pattern.Height, dx = 2 * std::int64_t{x} - w,
                       dy = 2 * std::int64_t{y} - h, r = Min(w, h);
    return dx * dx + dy * dy <= r * r;
}

int FindEdges(Modes mode, Level& level)
{
    Image gradient;
    if (const int code = MakeGradient(level.pattern, gradient)) return code;
    const int width = gradient.Width, height = gradient.Height;
    std::array<std::int64_t, magnitudes> counts{};
    for (int y = 0; y < height; y++)
        for (int x = 0; x < width; x++)
            if (IsUsed(level, mode, x, y)) {
                const Gradient g = gradient.Row<Gradient>(y)[x];
                counts[static_cast<std::size_t>(Max(Abs<int>(g.X), Abs<int>(g.Y)))]++;
            }
    level.gradientThreshold = levels::BestSplit(counts.data(), magnitudes).threshold;
    // Without two strengths to tell apart there is no edge.
    const int threshold = Max(level.gradientThreshold, 1);
    level.edges.clear();
    for (int y = 0; y < height; y++) {
        const auto* row = gradient.Row<Gradient>(y);
        const auto vertical = [&](int v, int x) {
            return v < 0 || v >= height ? -1 : Abs<int>(gradient.Row<Gradient>(v)[x].Y);
        };
        const auto horizontal = [&](int u) { return u < 0 || u >= width ? -1 : Abs<int>(row[u].X); };
        for (int x = 0; x < width; x++) {
            const int gx = Abs<int>(row[x].X), gy = Abs<int>(row[x].Y), m = Max(gx, gy);
            if (m < threshold || !IsUsed(level, mode, x, y)) continue;
            const int before = gx <= gy ? vertical(y - 1, x) : horizontal(x - 1),
                      behind = gx <= gy ? vertical(y + 1, x) : horizontal(x + 1);
            if (before <= m && behind < m) level.edges.push_back({x, y, row[x].X, row[x].Y});
        }
    }
    return NoError;
}

} // namespace

int ReduceTo(const Level& level, const Image& src, Image& dst)
{
    const int width = src.Width, height = src.Height;
    const int code =
        level.halved ? dst.Fit(width >> 1, height >> 1, Gray) : dst.Fit(2 * (width / 3), 2 * (height / 3), Gray);
    if (code == NoError) pyramid::Reduce(src, dst, level.halved);
    return code;
}

int Model::Build(bool edgeMask)
{
    int width = levels[0].pattern.Width, height = levels[0].pattern.Height;
    levels[0].step = RotationStep(width, height);
    if (mode == Modes::Mask && edgeMask) {
        Image& mask = levels[0].mask;
        for (int y = 0; y < mask.Height; y++)
            for (int x = 0; x < mask.Width; x++)
                mask.Row(y)[x] = mask.Row(y)[x] > 0 ? 255 : 0;
        Dilate(mask);
    }
    for (int depth = 0; depth < mostLevels; depth++) {
        Level& level = levels[static_cast<std::size_t>(depth)];
        if (depth > 0) {
            const Level& finer = levels[static_cast<std::size_t>(depth - 1)];
            if (!Shrink(width, height, level.halved)) break;
            const double ratio = level.halved ? 2 : 1.5;
            level.factor = finer.factor * ratio;
            level.step = finer.step * ratio;
            if (const int code = ReduceTo(level, finer.pattern, level.pattern)) return code;
            if (mode == Modes::Mask) {
                if (const int code = ReduceTo(level, finer.mask, level.mask)) return code;
                if (edgeMask) Dilate(level.mask);
            }
        }
        areaDepths = depth + 1;
        if (const int code = FindEdges(mode, level)) return code;
        if (level.edges.size() >= leastEdges) edgesDepths = depth + 1;
    }
    return NoError;
}

int Masks::Build(const Model& model, int depths)
{
    for (int depth = 1; depth < depths; depth++) {
        const auto i = static_cast<std::size_t>(depth);
        // A mask that is smaller than the pattern fits no image that could be searched.
        const int least = model.levels[i].halved ? 2 : 3;
        if (levels[i - 1].Width < least || levels[i - 1].Height < least) break;
        if (const int code = ReduceTo(model.levels[i], levels[i - 1], levels[i])) return code;
    }
    return NoError;
}

} // namespace Tesk::locator
