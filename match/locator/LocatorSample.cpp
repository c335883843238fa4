// Turned and scaled patterns of a locator: their pixels as runs, or their edges.
#include "match/locator/LocatorModel.h"

#include <algorithm>
#include <cmath>

namespace Tesk::locator {

namespace {

/// Corners and intervals that end on a pixel but for rounding end on it.
constexpr double slack = 1e-9;

XY CenterOf(const Image& pattern)
{
    return {(pattern.Width - 1) / 2.0, (pattern.Height - 1) / 2.0};
}

/// The numbers t between which p + t q lies in [0, last]; empty intervals end before they begin.
void Cut(double p, double q, double last, double& from, double& to)
{
    constexpr double parallel = 1e-12;
    if (std::abs(q) < parallel) {
        if (p < -slack || p > last + slack) to = from - 1;
        return;
    }
    const double u = -p / q, v = (last - p) / q;
    from = Max(from, Min(u, v));
    to = Min(to, Max(u, v));
}

/// Bilinear samples of a `Gray` image, its border pixels beyond it.
class Bilinear
{
public:
    explicit Bilinear(const Image& src) : src_(src), lastX_(src.Width - 1), lastY_(src.Height - 1) {}

    double operator()(const XY& at) const
    {
        const double x = Clamp(at.X, 0.0, static_cast<double>(lastX_)),
                     y = Clamp(at.Y, 0.0, static_cast<double>(lastY_));
        const int u = static_cast<int>(x), v = static_cast<int>(y);
        const double fx = x - u, fy = y - v;
        const std::uint8_t *upper = src_.Row(v) + u, *lower = src_.Row(v < lastY_ ? v + 1 : v) + u;
        const int right = u < lastX_ ? 1 : 0;
        const double above = upper[0] + fx * (upper[right] - upper[0]),
                     below = lower[0] + fx * (lower[right] - lower[0]);
        return above + fy * (below - above);
    }

private:
    const Image& src_;
    int lastX_, lastY_;
};

/// How far a position belongs to the pattern.
class Weight
{
public:
    Weight(Modes mode, const Level& level)
        : mode_(mode), center_(CenterOf(level.pattern)), mask_(mode == Modes::Mask ? level.mask : level.pattern),
          radius_(Min(level.pattern.Width - 1, level.pattern.Height - 1) / 2.0)
    {}

    bool Keeps(const XY& at) const
    {
        if (mode_ == Modes::Rectangle) return true;
        if (mode_ == Modes::Mask) return mask_(at) / 256 >= 0.5;
        const double x = at.X - center_.X, y = at.Y - center_.Y, t = x * x + y * y - radius_ * radius_,
                     u = 2 * radius_ + 1;
        return (t > u ? 0 : t > 0 ? 1 - t / u : 1) >= 0.5;
    }

private:
    Modes mode_;
    XY center_;
    Bilinear mask_;
    double radius_;
};

/// To the nearest whole number, within what 16 bits hold.
int Rounded(double value)
{
    return static_cast<int>(Clamp(value, -32767.0, 32767.0) + 65536.5) - 65536;
}

/// The rows and columns that a set of pixels covers.
struct Extent
{
    int left = MaxInt, top = MaxInt, right = MinInt, bottom = MinInt; ///< the last two inclusive

    void Take(int x0, int x1, int y)
    {
        left = Min(left, x0);
        right = Max(right, x1);
        top = Min(top, y);
        bottom = Max(bottom, y);
    }
    Box Bounds() const { return left > right ? Box{} : Box{left, top, right - left + 1, bottom - top + 1}; }
};

} // namespace

Turn::Turn(double angle, double scale, XY center, XY target)
{
    const double c = std::cos(angle), s = std::sin(angle);
    a = c * scale;
    b = s * scale;
    tx = target.X - (b * center.Y + a * center.X);
    ty = target.Y - (a * center.Y - b * center.X);
    ia = c / scale;
    ib = -s / scale;
    itx = center.X - (ib * target.Y + ia * target.X);
    ity = center.Y - (ia * target.Y - ib * target.X);
}

XY TargetOf(const Image& pattern)
{
    return {((pattern.Width & 1) - 1) / 2.0, ((pattern.Height & 1) - 1) / 2.0};
}

bool Area::Sample(const Model& model, const Level& level, double angle, double scale, std::ptrdiff_t pitch,
                  const Box& limit)
{
    runs.clear();
    pixels.clear();
    count = sum = 0;
    spread = 0;
    box = {};
    if (!(scale > 0)) return false;
    const Image& pattern = level.pattern;
    const double lastX = pattern.Width - 1, lastY = pattern.Height - 1;
    const Turn turn(angle, scale, CenterOf(pattern), TargetOf(pattern));
    double top = 0, bottom = 0;
    for (int corner = 0; corner < 4; corner++) {
        const double y = turn.Forward(corner & 1 ? lastX : 0, corner & 2 ? lastY : 0).Y;
        top = corner == 0 ? y : Min(top, y);
        bottom = corner == 0 ? y : Max(bottom, y);
    }
    const double far = 2.0 * limit.width + 2.0 * limit.height + 4;
    if (!(bottom - top <= far) || !(lastX * scale <= far) || !(lastY * scale <= far)) return false;
    const Bilinear sample(pattern);
    const Weight weight(model.mode, level);
    Extent extent;
    std::int64_t squares = 0;
    for (int y = static_cast<int>(std::ceil(top - slack)), end = static_cast<int>(std::floor(bottom + slack)); y <= end;
         y++) {
        double from = -far, to = far;
        Cut(turn.ib * y + turn.itx, turn.ia, lastX, from, to);
        Cut(turn.ia * y + turn.ity, -turn.ib, lastY, from, to);
        if (!(from <= to + 2 * slack)) continue;
        const int x0 = static_cast<int>(std::ceil(from - slack)), x1 = static_cast<int>(std::floor(to + slack));
        int begin = x0;
        const auto close = [&](int x) {
            if (x <= begin) return;
            runs.push_back({y * pitch + begin, static_cast<std::size_t>(x - begin)});
            extent.Take(begin, x - 1, y);
            pixels.resize((pixels.size() + kernels::runStep - 1) / kernels::runStep * kernels::runStep, 0);
        };
        for (int x = x0; x <= x1; x++) {
            const XY at = turn.Inverse(x, y);
            if (!weight.Keeps(at)) {
                close(x);
                begin = x + 1;
                continue;
            }
            const auto value = static_cast<std::uint8_t>(sample(at));
            pixels.push_back(value);
            count++;
            sum += value;
            squares += value * value;
        }
        close(x1 + 1);
    }
    box = extent.Bounds();
    spread =
        static_cast<double>(count) * static_cast<double>(squares) - static_cast<double>(sum) * static_cast<double>(sum);
    return count > 0 && box.width <= limit.width && box.height <= limit.height;
}

bool Outline::Sample(const Level& level, double angle, double scale, XY target, const Box& limit)
{
    points.clear();
    vectors.clear();
    box = {};
    inverseEnergy = 0;
    if (!(scale > 0) || level.edges.empty()) return false;
    const Turn turn(angle, scale, CenterOf(level.pattern), target);
    const std::size_t n = level.edges.size(), stride = std::max<std::size_t>(n / mostEdges, 1);
    const double far = 2.0 * limit.width + 2.0 * limit.height + 4 + std::abs(target.X) + std::abs(target.Y);
    if (!(level.pattern.Width * scale <= far) || !(level.pattern.Height * scale <= far)) return false;
    Extent extent;
    std::int64_t energy = 0;
    const auto floor = [](double v) { return static_cast<int>(std::floor(v)); };
    for (std::size_t i = 0; i < n; i += stride) {
        const EdgeSample& e = level.edges[i];
        Pixel p;
        int gx = e.gx, gy = e.gy;
        if (turn.a == 1) {
            p = {static_cast<int>(e.x + turn.tx), static_cast<int>(e.y + turn.ty)};
        } else {
            const XY at = turn.Forward(e.x, e.y);
            p = {floor(at.X + 0.5), floor(at.Y + 0.5)};
            gx = Rounded(turn.a * e.gx + turn.b * e.gy);
            gy = Rounded(turn.a * e.gy - turn.b * e.gx);
        }
        points.push_back(p);
        extent.Take(p.x, p.x, p.y);
        // Gradients of images count from dark to bright, those of the model the other way.
        vectors.push_back(static_cast<std::int32_t>((static_cast<std::uint32_t>(-gx) & 0xffffu) |
                                                    static_cast<std::uint32_t>(-gy) << 16));
        energy += std::int64_t{gx} * gx + std::int64_t{gy} * gy;
    }
    box = extent.Bounds();
    if (energy < 1) return false;
    inverseEnergy = 1 / static_cast<double>(energy);
    return box.width <= limit.width && box.height <= limit.height;
}

void Outline::Place(std::ptrdiff_t pitch)
{
    offsets.clear();
    for (const Pixel& p : points)
        offsets.push_back(static_cast<std::int32_t>(p.y * pitch + p.x));
}

} // namespace Tesk::locator
