// Cutting of a line into a known number of characters, where the picture changes least between them.
#include "measure/Blobs.h"
#include "measure/fit/PointHull.h"
#include "read/chars/Segmentation.h"

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <limits>
#include <optional>

namespace Tesk::chars {

namespace {

/// Lines of characters lower than this, in heights of a character, are none.
constexpr double leastPitch = 0.2;

/// A line of text as a turned rectangle, from the middle of its left side.
struct Axis
{
    XY left{0, 0}, along{1, 0};
    double length = 0, height = 0;

    XY At(double x, double y) const { return {left.X + along.X * x - along.Y * y, left.Y + along.Y * x + along.X * y}; }
};

/// The rectangle around a hull that has a side in a direction.
Axis AxisAlong(std::span<const XY> hull, XY along)
{
    constexpr double far = std::numeric_limits<double>::max();
    double x0 = far, x1 = -far, y0 = far, y1 = -far;
    for (const XY& p : hull) {
        const double x = p.X * along.X + p.Y * along.Y, y = p.Y * along.X - p.X * along.Y;
        x0 = std::min(x0, x);
        x1 = std::max(x1, x);
        y0 = std::min(y0, y);
        y1 = std::max(y1, y);
    }
    const double y = (y0 + y1) / 2;
    return {{x0 * along.X - y * along.Y, x0 * along.Y + y * along.X}, along, x1 - x0, y1 - y0};
}

/// The lowest rectangle around the pixels of a line, of those with a side on the hull that is nearer to a row than to a
/// column, by rotating calipers.
Axis FindAxis(const TextLine& line, const Blobs& blobs)
{
    std::vector<XY> corners;
    for (const Piece& piece : line.pieces)
        for (const LabeledRun& run : blobs.RunsOf(piece.blob))
            for (const int x : {int{run.Start}, int{run.End}})
                for (const int y : {int{run.Y}, run.Y + 1})
                    corners.emplace_back(x, y);
    const std::vector<XY> hull = hulls::HullOfAny<XY>(corners);
    Axis lowest = AxisAlong(hull, {1, 0});
    for (std::size_t i = 0; i < hull.size(); i++) {
        const XY a = hull[i], b = hull[(i + 1) % hull.size()];
        const double dx = b.X - a.X, dy = b.Y - a.Y, length = std::copysign(std::hypot(dx, dy), dx);
        if (length == 0 || std::fabs(dy) > std::fabs(dx)) continue;
        const Axis axis = AxisAlong(hull, {dx / length, dy / length});
        if (axis.height < lowest.height) lowest = axis;
    }
    return lowest;
}

/// For each place along the axis the variance of the pixels just before and just behind a character that begins there.
std::vector<double> EdgeVariances(const Axis& axis, const Image& image, int charWidth, int charHeight)
{
    constexpr int before = 2, behind = 3;
    const int places = std::max(static_cast<int>(axis.length) - charWidth, 0) + 1;
    const int columns = places + charWidth + before + behind;
    std::vector<double> sums(static_cast<std::size_t>(columns)), squares(sums.size());
    for (int c = 0; c < columns; c++)
        for (int row = 0; row < charHeight; row++) {
            const XY at = axis.At(c - before + 0.5, row + 0.5 - charHeight / 2.0);
            const int x = Clamp(static_cast<int>(std::floor(at.X)), 0, image.Width - 1);
            const int y = Clamp(static_cast<int>(std::floor(at.Y)), 0, image.Height - 1);
            const int value = image.Row(y)[x];
            sums[static_cast<std::size_t>(c)] += value;
            squares[static_cast<std::size_t>(c)] += value * value;
        }
    std::vector<double> variances;
    const double count = 6.0 * charHeight;
    for (int x = 0; x < places; x++) {
        double sum = 0, square = 0;
        for (const int c : {x, x + 1, x + 2, x + charWidth + 2, x + charWidth + 3, x + charWidth + 4}) {
            sum += sums[static_cast<std::size_t>(c)];
            square += squares[static_cast<std::size_t>(c)];
        }
        variances.push_back(square / count - (sum / count) * (sum / count));
    }
    return variances;
}

struct Start
{
    int x;
    double variance;
};

/// Where the variance is least, and the ends, which count double.
std::vector<Start> FindStarts(const std::vector<double>& variances)
{
    std::vector<Start> starts;
    const std::size_t last = variances.size() - 1;
    for (std::size_t x = 0; x <= last; x++) {
        const double v = variances[x];
        if (x == 0 || x == last)
            starts.push_back({static_cast<int>(x), 2 * v});
        else if (v <= variances[x - 1] && v <= variances[x + 1])
            starts.push_back({static_cast<int>(x), v});
    }
    return starts;
}

/// Chooses starts a character or up to a third more apart, with the least sum of variances; of equal ones those that
/// come first. Worked out from the last character back, so that each start is looked at once for each character. Empty
/// if there is no such choice.
std::vector<int> ChooseStarts(const std::vector<Start>& starts, int count, int charWidth)
{
    constexpr double impossible = std::numeric_limits<double>::infinity();
    const std::size_t n = starts.size(), steps = static_cast<std::size_t>(count);
    std::vector<double> cost(n), next(n);
    std::vector<std::vector<std::size_t>> follower(steps, std::vector<std::size_t>(n, n));
    for (std::size_t i = 0; i < n; i++)
        cost[i] = starts[i].variance;
    for (std::size_t step = steps - 1; step-- > 0;) {
        for (std::size_t i = 0, j = 0; i < n; i++) {
            const int from = starts[i].x + charWidth, to = from + charWidth / 3;
            while (j < n && starts[j].x < from)
                j++;
            next[i] = impossible;
            for (std::size_t k = j; k < n && starts[k].x < to; k++)
                if (cost[k] + starts[i].variance < next[i]) {
                    next[i] = cost[k] + starts[i].variance;
                    follower[step][i] = k;
                }
        }
        cost.swap(next);
    }
    std::optional<std::size_t> first;
    for (std::size_t i = 0; i < n && starts[i].x < std::max(charWidth / 2, 1); i++)
        if (cost[i] < (first ? cost[*first] : impossible)) first = i;
    std::vector<int> chosen;
    if (!first) return chosen;
    for (std::size_t step = 0, i = *first; step < steps; i = follower[step++][i])
        chosen.push_back(starts[i].x);
    return chosen;
}

} // namespace

void CutLineByCount(const TextLine& line, const Blobs& blobs, const Image& image, SegmentSettings& settings,
                    std::vector<CharBox>& boxes)
{
    const int count = -settings.maxTouching;
    const Axis axis = FindAxis(line, blobs);
    const double pitch = axis.length / ((count - 1) * settings.gapFraction + count);
    if (pitch < leastPitch * settings.charHeight) return;
    if (settings.guessSize) {
        settings.charHeight = std::max(static_cast<int>(std::lround(axis.height)), 1);
        settings.charWidth = std::max(static_cast<int>(pitch), 1);
    }
    const std::vector<Start> starts = FindStarts(EdgeVariances(axis, image, settings.charWidth, settings.charHeight));
    std::vector<int> chosen = ChooseStarts(starts, count, settings.charWidth);
    if (chosen.empty())
        for (int i = 0; i < count; i++)
            chosen.push_back(static_cast<int>(i * pitch * (1 + settings.gapFraction)));
    for (const int x : chosen) {
        const XY center = axis.At(x + pitch / 2, 0);
        boxes.push_back({static_cast<int>(std::lround(center.X - pitch / 2)),
                         static_cast<int>(std::lround(center.Y - axis.height / 2)), static_cast<int>(pitch),
                         static_cast<int>(std::lround(axis.height))});
    }
}

} // namespace Tesk::chars
