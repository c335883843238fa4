// The maps of a trained outline, and the match of another one with them.
#include "match/shape/ShapeModel.h"

#include "image/core/Destination.h"
#include "measure/path/PathMoments.h"

#include <array>
#include <cmath>
#include <numbers>

namespace Tesk::shapes {

namespace {

/// Points of an outline that are looked at.
constexpr std::size_t samples = 25;
constexpr int leastHits = samples / 2;
/// Angles of a full turn that are tried, and closest-point steps from the best of them.
constexpr int rotations = 24, iterations = 4;
/// No map of a real outline comes near.
constexpr double mostMapPixels = 1 << 24, mostMapSide = 32767;

constexpr Gradient none{-1, -1};

double Nearest(double v)
{
    return std::floor(v + 0.5);
}

/// A pixel of the maps nearest to a position, if it is in them and close to the outline.
struct Probe
{
    int distance;
    Gradient target;
};

bool Look(const ShapeModel& shape, const XY& at, Probe& probe)
{
    const double x = Nearest(at.X), y = Nearest(at.Y);
    if (!(x >= 0 && x < shape.distances.Width && y >= 0 && y < shape.distances.Height)) return false;
    const int u = static_cast<int>(x), v = static_cast<int>(y);
    probe = {shape.distances.Row(v)[u], shape.nearest.Row<Gradient>(v)[u]};
    return probe.distance < farthest;
}

XY Apply(const models::Coefficients& t, double x, double y)
{
    return {t[0] * x + t[1] * y + t[2], t[3] * x + t[4] * y + t[5]};
}

} // namespace

int ShapeModel::Size(double width, double height)
{
    if (!(width >= 1 && height >= 1 && width <= mostMapSide && height <= mostMapSide &&
          width * height <= mostMapPixels))
        return Status::Format(CannotAllocate, L"Cannot allocate the maps of the outline");
    const int w = static_cast<int>(width), h = static_cast<int>(height);
    if (const int code = distances.TrySet(w, h, Gray)) return code;
    if (const int code = nearest.TrySet(w, h, Grad)) return code;
    images::FillRows(distances, 255);
    return NoError;
}

int ShapeModel::Build()
{
    if (!Measure(outline, area, center)) return NoError;
    int left = outline[0].X, right = left, top = outline[0].Y, bottom = top;
    for (const Site p : outline) {
        left = Min<int>(left, p.X);
        right = Max<int>(right, p.X);
        top = Min<int>(top, p.Y);
        bottom = Max<int>(bottom, p.Y);
    }
    box = {left, top, right - left + 1, bottom - top + 1};
    scale = std::sqrt(normalArea / area);
    if (const int code = Size(Nearest(box.Width * scale) + mapMargin, Nearest(box.Height * scale) + mapMargin))
        return code;
    const XY middle = MapCenter();
    for (const Site p : outline) {
        const double x = Nearest(p.X * scale + middle.X - scale * center.X),
                     y = Nearest(p.Y * scale + middle.Y - scale * center.Y);
        if (x >= 0 && x < distances.Width && y >= 0 && y < distances.Height)
            distances.Row(static_cast<int>(y))[static_cast<int>(x)] = 0;
    }
    return Spread();
}

int ShapeModel::Build(const Image& edges)
{
    const int width = edges.Width, height = edges.Height;
    area = static_cast<int>(Min<std::int64_t>(std::int64_t{width} * height, MaxInt));
    box = {0, 0, width, height};
    center = {(width - 1) / 2.0, (height - 1) / 2.0};
    scale = std::sqrt(normalArea / area);
    if (const int code = Size(Nearest(width * scale) + mapMargin, Nearest(height * scale) + mapMargin)) return code;
    const int x0 = (distances.Width - width) / 2, y0 = (distances.Height - height) / 2;
    for (int y = Max(0, -y0); y < height && y + y0 < distances.Height; y++)
        for (int x = Max(0, -x0); x < width && x + x0 < distances.Width; x++)
            if (edges.Row(y)[x] < 128) distances.Row(y + y0)[x + x0] = 0;
    return Spread();
}

/// The distance transform in two passes (Rosenfeld and Pfaltz 1966), with the pixel that each distance is from.
int ShapeModel::Spread()
{
    const int width = distances.Width, height = distances.Height;
    struct Step
    {
        int x, y;
    };
    const auto take = [&](int x, int y, int& best, Gradient& from, const Step& step) {
        const int u = x + step.x, v = y + step.y;
        if (u < 0 || u >= width || v < 0 || v >= height || distances.Row(v)[u] >= best) return;
        best = distances.Row(v)[u];
        from = nearest.Row<Gradient>(v)[u];
    };
    for (int y = 0; y < height; y++)
        for (int x = 0; x < width; x++) {
            std::uint8_t& distance = distances.Row(y)[x];
            Gradient& target = nearest.Row<Gradient>(y)[x];
            if (distance == 0) {
                target = {static_cast<std::int16_t>(x), static_cast<std::int16_t>(y)};
                continue;
            }
            int best = farthest;
            target = none;
            for (const Step& step : {Step{0, -1}, Step{-1, -1}, Step{1, -1}, Step{-1, 0}})
                take(x, y, best, target, step);
            distance = static_cast<std::uint8_t>(Min(best + 1, farthest));
            if (distance == farthest) target = none;
        }
    for (int y = height - 1; y >= 0; y--)
        for (int x = width - 1; x >= 0; x--) {
            // A neighbour is nearer if it is by more than the step to it.
            int best = distances.Row(y)[x] - 1;
            Gradient target = nearest.Row<Gradient>(y)[x];
            const int before = best;
            for (const Step& step : {Step{1, 0}, Step{1, 1}, Step{0, 1}, Step{-1, 1}})
                take(x, y, best, target, step);
            if (best == before) continue;
            distances.Row(y)[x] = static_cast<std::uint8_t>(best + 1);
            nearest.Row<Gradient>(y)[x] = target;
        }
    return NoError;
}

bool Measure(std::span<const Site> outline, int& area, XY& center)
{
    if (outline.empty()) return false;
    const paths::PolygonMoments moments = paths::MomentsOf(outline);
    area = paths::Saturated(std::abs(moments.Twice) / 2);
    if (area < 1) return false;
    center = moments.Center();
    return true;
}

XY Match::Place() const
{
    const models::Coefficients& t = transform;
    const XY middle = shape->MapCenter();
    const double u = middle.X - t[2], v = middle.Y - t[5], d = t[0] * t[0] + t[1] * t[1];
    return {(u * t[0] + v * t[3]) / d, (u * t[1] + v * t[4]) / d};
}

double Match::Scale() const
{
    return std::sqrt(transform[0] * transform[0] + transform[1] * transform[1]) / shape->scale;
}

double Match::Radians() const
{
    return std::atan2(transform[1], transform[0]);
}

bool MatchOutline(std::span<const Site> outline, const XY& center, double scale, const ShapeModel& shape, Match& match)
{
    if (shape.distances.Type == Undefined || shape.symmetry < 1) return false;
    const std::size_t stride = Max<std::size_t>(outline.size() / samples, 1);
    const XY middle = shape.MapCenter();
    double least = 0;
    bool found = false;
    models::Fit fit;
    Probe probe{};
    for (int i = 0; i < rotations / shape.symmetry; i++) {
        const double theta = i * 2 * std::numbers::pi / rotations, a = scale * std::cos(theta),
                     b = scale * std::sin(theta);
        const models::Coefficients t = {a,  b, middle.X - a * center.X - b * center.Y,
                                        -b, a, middle.Y + b * center.X - a * center.Y};
        int hits = 0, sum = 0;
        for (std::size_t k = 0; k < outline.size(); k += stride)
            if (Look(shape, Apply(t, outline[k].X, outline[k].Y), probe)) {
                hits++;
                sum += probe.distance;
            }
        if (hits < leastHits) continue;
        const double mean = static_cast<double>(sum) / hits;
        if (found && !(mean < least)) continue;
        found = true;
        least = mean;
        fit.forward = t;
    }
    if (!found) return false;
    // An outline shorter than two strides of samples has fewer of them.
    std::array<AnchorPair, 2 * samples> pairs;
    std::size_t count = 0;
    for (int i = 0; i < iterations; i++) {
        count = 0;
        for (std::size_t k = 0; k < outline.size() && count < pairs.size(); k += stride)
            if (Look(shape, Apply(fit.forward, outline[k].X, outline[k].Y), probe))
                pairs[count++] = {XY(outline[k].X, outline[k].Y), XY(probe.target.X, probe.target.Y)};
        if (count < static_cast<std::size_t>(leastHits)) return false;
        if (models::FitModel(Similarity, {pairs.data(), count}, XY(0, 0), fit) != NoError) return false;
    }
    double sum = 0;
    for (std::size_t k = 0; k < count; k++) {
        const XY at = Apply(fit.forward, pairs[k].Src.X, pairs[k].Src.Y);
        const double dx = pairs[k].Dst.X - at.X, dy = pairs[k].Dst.Y - at.Y;
        sum += dx * dx + dy * dy;
    }
    match.error = std::sqrt(sum / static_cast<double>(count));
    match.transform = fit.forward;
    match.shape = &shape;
    // A fit onto one point has no direction.
    const double d = fit.forward[0] * fit.forward[0] + fit.forward[1] * fit.forward[1];
    return std::isfinite(match.error) && std::isnormal(d);
}

} // namespace Tesk::shapes
