// The search of a locator: the grids, the scan of the coarsest level, the descent.
#include "match/locator/LocatorSearch.h"

#include "foundation/Angles.h"
#include "image/core/Destination.h"
#include "image/filter/GradientVector.h"
#include "image/morpho/RegionalPeaks.h"

#include <algorithm>
#include <cmath>

namespace Tesk::locator {

namespace {

/// Indices of angles and scales are pixels of 16 and of 8 bits.
constexpr int mostAngles = 65536, mostScales = 256;
/// The largest component of a gradient.
constexpr int steepest = 767;

/// The steps of a grid that lie between two values, in steps.
void Span(double low, double high, int most, int& first, int& count)
{
    // Rounding is truncation of what is shifted by this.
    constexpr double shift = 65536;
    const auto held = [](double v) { return std::isfinite(v) ? Clamp(v, 1 - shift, shift - 1) : 0.0; };
    first = 65536 - static_cast<int>(shift - held(low));
    count = Clamp(static_cast<int>(held(high) + shift) - 65536 - first + 1, 0, most);
}

} // namespace

int Search::Run(const Model& model, const Masks* masks, const Image& image, const Settings& settings,
                std::vector<Candidate>& found)
{
    model_ = &model;
    masks_ = masks;
    image_ = &image;
    settings_ = settings;
    sampled_ = {};
    found.clear();
    if (const int code = MakePyramid(image)) return code;
    MakeGrids();
    if (const int code = Scan()) return code;
    TakePeaks(found);
    const int top = settings.top;
    for (int depth = top - 1; depth >= settings.stop; depth--) {
        if (settings.edges)
            if (const int code = MakeGradient(depth, false)) return code;
        for (Candidate& candidate : found)
            if (candidate.score != dead && !Climb(depth, candidate)) candidate.score = dead;
        if (depth != top - 1 || depth == settings.stop) {
            const double factor = model.levels[static_cast<std::size_t>(depth)].factor;
            Prune(found, model, depth, settings.maxOverlap,
                  std::floor(factor * factor * Max(settings.maxLocations, 0)));
        }
    }
    SortByScore(found);
    const double least = settings.minScore * std::abs(settings.minScore);
    std::size_t kept = 0;
    const auto most = static_cast<std::size_t>(Max(settings.maxLocations, 0));
    while (kept < found.size() && kept < most && found[kept].score >= least)
        kept++;
    found.resize(kept);
    for (Candidate& c : found)
        c.score = c.score < 0 ? -std::sqrt(-c.score) : std::sqrt(c.score);
    return NoError;
}

const Image& Search::Picture(int depth) const
{
    return depth == 0 ? *image_ : pyramid_[static_cast<std::size_t>(depth)];
}

const Image* Search::Mask(int depth) const
{
    return masks_ ? &masks_->levels[static_cast<std::size_t>(depth)] : nullptr;
}

int Search::MakePyramid(const Image& image)
{
    // The loops read as many bytes behind the last pixel as only the library's own stores have, and take the rows of a
    // mask to be as far apart as those of the image.
    if (!image.OwnsBuffer || (masks_ && masks_->levels[0].Pitch != image.Pitch)) {
        if (const int code = pyramid_[0].Fit(image.Width, image.Height, Gray)) return code;
        images::CopyRows(image, pyramid_[0]);
        image_ = &pyramid_[0];
    }
    for (int depth = 1; depth <= settings_.top; depth++) {
        const auto i = static_cast<std::size_t>(depth);
        if (const int code = ReduceTo(model_->levels[i], Picture(depth - 1), pyramid_[i])) return code;
    }
    return NoError;
}

void Search::MakeGrids()
{
    const double low = ToRadians(settings_.minAngle), high = ToRadians(settings_.maxAngle);
    for (int depth = 0; depth <= settings_.top; depth++) {
        const double step = model_->levels[static_cast<std::size_t>(depth)].step;
        Grid& grid = grids_[static_cast<std::size_t>(depth)];
        int first;
        Span(low / step, high / step, mostAngles, first, grid.numAngles);
        grid.angleStep = step;
        grid.angleOffset = first * step;
        Span((settings_.minScale - 1) / step, (settings_.maxScale - 1) / step, mostScales, first, grid.numScales);
        grid.scaleStep = step;
        grid.scaleOffset = first * step + 1;
        grid.fullTurn = std::abs(high - low - 2 * std::numbers::pi) < 1e-6;
    }
}

int Search::MakeGradient(int depth, bool zeroBorder)
{
    const Image& picture = Picture(depth);
    if (const int code = gradient_.Fit(picture.Width, picture.Height, Grad)) return code;
    gradients::Compute(picture, PrewittGradient, gradient_);
    const int width = gradient_.Width, height = gradient_.Height;
    const auto hold = [zeroBorder](Gradient& g) {
        const auto held = [](int v) { return static_cast<std::int16_t>(Clamp(v, -steepest, steepest)); };
        g = zeroBorder ? Gradient{0, 0} : Gradient{held(g.X), held(g.Y)};
    };
    for (int y = 0; y < height; y++) {
        auto* row = gradient_.Row<Gradient>(y);
        if (y == 0 || y == height - 1) {
            for (int x = 0; x < width; x++)
                hold(row[x]);
        } else {
            hold(row[0]);
            hold(row[width - 1]);
        }
    }
    return NoError;
}

const Box& Search::Sample(int depth, int ia, int is)
{
    const auto i = static_cast<std::size_t>(depth);
    const double angle = grids_[i].Angle(ia), scale = grids_[i].Scale(is);
    if (sampled_.depth != depth || sampled_.angle != angle || sampled_.scale != scale) {
        const Level& level = model_->levels[i];
        const Image& picture = Picture(depth);
        const Box limit{0, 0, picture.Width, picture.Height};
        if (settings_.edges) {
            sampled_.fits = outline_.Sample(level, angle, scale, TargetOf(level.pattern), limit);
            if (sampled_.fits) outline_.Place(int(gradient_.Pitch) / static_cast<std::ptrdiff_t>(sizeof(Gradient)));
        } else {
            sampled_.fits = area_.Sample(*model_, level, angle, scale, picture.Pitch, limit);
        }
        sampled_.depth = depth;
        sampled_.angle = angle;
        sampled_.scale = scale;
    }
    return settings_.edges ? outline_.box : area_.box;
}

Score Search::ScoreOf(const kernels::RunSums& sums) const
{
    const auto n = static_cast<double>(area_.count), s1 = static_cast<double>(sums.image);
    const double covariance = n * static_cast<double>(sums.products) - static_cast<double>(area_.sum) * s1;
    if (covariance < area_.spread * settings_.minContrast) return {};
    const double variance = n * static_cast<double>(sums.squares) - s1 * s1;
    // Flat pixels are like nothing.
    if (!(variance > 0)) return {};
    const double contrast = covariance / area_.spread;
    return {std::abs(covariance) * contrast / variance, contrast};
}

Score Search::ScoreOf(const kernels::VectorSums& sums) const
{
    const double contrast = static_cast<double>(sums.dot) * outline_.inverseEnergy;
    if (contrast < settings_.minContrast || sums.energy < 1) return {};
    return {std::abs(static_cast<double>(sums.dot)) * contrast / static_cast<double>(sums.energy), contrast};
}

void Search::Evaluate(int depth, int x, int y, int steps, Score* scores)
{
    const auto n = static_cast<std::size_t>(steps);
    const Image* mask = Mask(depth);
    std::fill_n(scores, n, Score());
    if (settings_.edges) {
        vectorSums_.resize(n);
        kernels::SumVectors(gradient_.Row<std::int32_t>(y) + x, outline_.offsets.data(), outline_.vectors.data(),
                            outline_.offsets.size(), vectorSums_.data(), n);
        const auto covered = [&](int u) {
            return std::all_of(outline_.points.begin(), outline_.points.end(),
                               [&](const Pixel& p) { return mask->Row(y + p.y)[u + p.x] != 0; });
        };
        for (int i = 0; i < steps; i++)
            if (!mask || covered(x + i)) scores[i] = ScoreOf(vectorSums_[static_cast<std::size_t>(i)]);
        return;
    }
    // A dark or a flat pattern has nothing to compare.
    if (area_.sum < 16 || !(area_.spread > 0)) return;
    const Image& picture = Picture(depth);
    runSums_.resize(n);
    kernels::SumRuns(picture.Row(y) + x, area_.runs.data(), area_.runs.size(), area_.pixels.data(), runSums_.data(), n);
    for (int i = 0; i < steps; i++) {
        if (mask && !kernels::CoversRuns(mask->Row(y) + x + i, area_.runs.data(), area_.runs.size())) continue;
        scores[i] = ScoreOf(runSums_[static_cast<std::size_t>(i)]);
    }
}

int Search::Scan()
{
    const int top = settings_.top;
    const Grid& grid = grids_[static_cast<std::size_t>(top)];
    const Image& picture = Picture(top);
    const int width = picture.Width, height = picture.Height;
    if (const int code = scores_.Fit(width, height, Gray)) return code;
    images::FillRows(scores_, 0);
    if (grid.numAngles > 1) {
        if (const int code = angles_.Fit(width, height, Gray16)) return code;
        images::FillRows(angles_, 0);
    }
    if (grid.numScales > 1) {
        if (const int code = scales_.Fit(width, height, Gray)) return code;
        images::FillRows(scales_, 0);
    }
    if (settings_.edges)
        if (const int code = MakeGradient(top, true)) return code;
    row_.resize(static_cast<std::size_t>(width));
    for (int is = 0; is < grid.numScales; is++)
        for (int ia = 0; ia < grid.numAngles; ia++)
            ScanPose(ia, is);
    return NoError;
}

void Search::ScanPose(int ia, int is)
{
    const int top = settings_.top;
    const Grid& grid = grids_[static_cast<std::size_t>(top)];
    const Box box = Sample(top, ia, is);
    if (!Fits()) return;
    const int width = scores_.Width, height = scores_.Height;
    const int x0 = Max(-box.x, 0), x1 = Min(width - box.width - box.x, width - 1), y0 = Max(-box.y, 0),
              y1 = Min(height - box.height - box.y, height - 1);
    if (x1 < x0) return;
    for (int y = y0; y <= y1; y++) {
        Evaluate(top, x0, y, x1 - x0 + 1, row_.data());
        std::uint8_t* row = scores_.Row(y);
        for (int x = x0; x <= x1; x++) {
            const double score = row_[static_cast<std::size_t>(x - x0)].score;
            const int value = Clamp(128 + static_cast<int>(127 * score), 0, 255);
            if (value <= row[x]) continue;
            row[x] = static_cast<std::uint8_t>(value);
            if (grid.numAngles > 1) angles_.Row<std::uint16_t>(y)[x] = static_cast<std::uint16_t>(ia);
            if (grid.numScales > 1) scales_.Row(y)[x] = static_cast<std::uint8_t>(is);
        }
    }
}

void Search::TakePeaks(std::vector<Candidate>& candidates) const
{
    const Grid& grid = grids_[static_cast<std::size_t>(settings_.top)];
    if (grid.numAngles < 1 || grid.numScales < 1) return;
    const Image& pattern = model_->levels[0].pattern;
    const std::int64_t most =
        std::int64_t{image_->Width} * image_->Height / (std::int64_t{pattern.Width} * pattern.Height);
    const std::vector<morpho::Peak> peaks =
        morpho::FindMaxima(0, static_cast<int>(Min<std::int64_t>(most, MaxInt)), scores_, true);
    const Image& coarse = model_->levels[static_cast<std::size_t>(settings_.top)].pattern;
    const int width = coarse.Width, height = coarse.Height;
    candidates.reserve(peaks.size());
    for (const morpho::Peak& peak : peaks) {
        Candidate c;
        c.score = peak.height / 255.0;
        c.ix = peak.x;
        c.iy = peak.y;
        c.ia = grid.numAngles > 1 ? angles_.Row<std::uint16_t>(peak.y)[peak.x] : 0;
        c.is = grid.numScales > 1 ? scales_.Row(peak.y)[peak.x] : 0;
        c.x = c.ix + PlaceOffset(width);
        c.y = c.iy + PlaceOffset(height);
        c.angle = grid.Angle(c.ia);
        c.scale = grid.Scale(c.is);
        c.area = (width - 1) / 2.0 * ((height - 1) / 2.0) * c.scale;
        candidates.push_back(c);
    }
}

} // namespace Tesk::locator
