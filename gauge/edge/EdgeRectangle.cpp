// The rectangle gauge: its probes, the joint fit of its sides, and the smallest rectangle around its points.
#include "gauge/EdgeRectangle.h"

#include "foundation/Angles.h"
#include "foundation/Archive.h"
#include "foundation/Entry.h"
#include "foundation/Handles.h"
#include "gauge/edge/ProbeRow.h"
#include "gauge/edge/RobustFit.h"
#include "gauge/edge/WorldMap.h"
#include "measure/fit/PointFit.h"
#include "measure/fit/PointHull.h"
#include "measure/fit/PointShape.h"

#include <cmath>
#include <numbers>
#include <utility>
#include <vector>

namespace Tesk {

using namespace edges;

namespace {

constexpr double quarter = std::numbers::pi / 2, half = std::numbers::pi;
constexpr double firstSize = 64;

constexpr ArchiveFormat format = {"TEDR", 3, L"File \"%ls\" is not an EdgeRectangle file",
                                  L"The version number \"%d\" of this EdgeRectangle file is too high"};
constexpr int firstWithFourSides = 2, firstWithFitting = 3;

/// Lines through the mean points of the sides, all at one angle or square to it. The sides of the points are given by
/// how many each has.
class Sides
{
public:
    static constexpr int leastOrder = 8;

    Sides(std::span<const XY> points, const std::array<int, 4>& counts) : points_(points), counts_(counts) {}

    /// Double angles, so that neither the sense of a side nor its quarter turn matters but by a sign.
    template <typename Keep>
    bool Fit(Keep keep)
    {
        double x = 0, y = 0;
        std::size_t first = 0;
        for (std::size_t side = 0; side < 4; side++) {
            const std::size_t end = first + static_cast<std::size_t>(counts_[side]);
            if (first == end) continue;
            const XY origin = points_[first];
            double n = 0, sx = 0, sy = 0, difference = 0, product = 0;
            for (std::size_t i = first; i < end; i++) {
                if (!keep(i)) continue;
                const double u = points_[i].X - origin.X, v = points_[i].Y - origin.Y;
                n++;
                sx += u;
                sy += v;
                difference += u * u - v * v;
                product += u * v;
            }
            if (n == 0) return false;
            means_[side] = {origin.X + sx / n, origin.Y + sy / n};
            const double sign = side % 2 == 0 ? 1 : -1;
            x += sign * (n * difference - (sx * sx - sy * sy));
            y += sign * (n * product - sx * sy);
            first = end;
        }
        radians_ = std::atan2(2 * y, x) / 2;
        for (std::size_t side = 0; side < 4; side++) {
            const double angle = radians_ + static_cast<double>(side) * quarter;
            directions_[side] = {std::cos(angle), std::sin(angle)};
        }
        return true;
    }

    double Residual(std::size_t i) const
    {
        const std::size_t side = SideOf(i);
        const XY mean = means_[side], u = directions_[side];
        return std::abs(u.X * (points_[i].Y - mean.Y) - u.Y * (points_[i].X - mean.X));
    }

    std::size_t SideOf(std::size_t i) const
    {
        std::size_t side = 0;
        for (std::size_t end = static_cast<std::size_t>(counts_[0]); i >= end && side < 3;)
            end += static_cast<std::size_t>(counts_[++side]);
        return side;
    }

    XY Mean(std::size_t side) const { return means_[side]; }
    double Radians() const { return radians_; }

private:
    std::span<const XY> points_;
    std::array<int, 4> counts_;
    std::array<XY, 4> means_{}, directions_{};
    double radians_ = 0;
};

} // namespace

EdgeRectangle::EdgeRectangle()
{
    Rectangle.SetTurned(0, 0, firstSize, firstSize, 0);
    FittedCorners.values_.assign(4, XY(0, 0));
}

void EdgeRectangle::Locate(XY Center, XY Size, double Angle, double ProbeLength)
{
    const Entry entry("Tesk::EdgeRectangle::Locate");
    Rectangle.SetCenter(Center.X, Center.Y, Size.X, Size.Y, Angle, 0);
    AngleDegrees = Angle;
    this->ProbeLength = ProbeLength;
}

int EdgeRectangle::NumDetectedPoints(int Side) const
{
    return detected_[static_cast<unsigned>(Side) % 4];
}

int EdgeRectangle::NumFittedPoints(int Side) const
{
    return fitted_[static_cast<unsigned>(Side) % 4];
}

/// Without `FourSides` no probes stand across every second one.
EdgeRectangle::Side EdgeRectangle::SideOf(int index) const
{
    const XY from = Rectangle.Corner(index), to = Rectangle.Corner(index + 1);
    const double length = LengthOf(from, to);
    const bool used = FourSides || index % 2 == 0;
    const Stretch stretch(from, to, Clearance / length);
    return {stretch.from, stretch.to, HalfProbe(from, to, length, ProbeLength, Oblique),
            used ? SamplesOver(index % 2 == 0 ? Rectangle.Width : Rectangle.Height) : 0};
}

/// Runs the probes of all sides, or the one of `SampleIndex`.
bool EdgeRectangle::SampleSides(const Image& src, int edgeIndex)
{
    int selected = SampleIndex;
    for (int index = 0; index < 4; index++) {
        const Side side = SideOf(index);
        const auto place = [&](int i) { PlaceProbe(Spaced(side.first, side.last, i, side.samples), side.half); };
        const int before = static_cast<int>(SamplePoints.size());
        if (SampleIndex == All) {
            if (!RunProbes(src, edgeIndex, 0, side.samples - 1, place)) return false;
        } else if (selected >= 0 && selected < side.samples) {
            if (!RunProbes(src, edgeIndex, selected, selected, place)) return false;
        }
        if (SampleIndex != All) selected -= side.samples;
        detected_[static_cast<unsigned>(index)] = static_cast<int>(SamplePoints.size()) - before;
    }
    return true;
}

std::span<const XY> EdgeRectangle::PointsOf(int side) const
{
    std::size_t first = 0;
    for (int i = 0; i < side; i++)
        first += static_cast<std::size_t>(detected_[static_cast<unsigned>(i)]);
    return {SamplePoints.data() + first, static_cast<std::size_t>(detected_[static_cast<unsigned>(side)])};
}

/// Brings the points to the units of the result, and takes those out of the counts that lie at a horizon.
void EdgeRectangle::CountMapped(const WorldMap& world)
{
    std::array<int, 4> mapped{};
    for (int side = 0; side < 4; side++)
        for (XY point : PointsOf(side))
            mapped[static_cast<unsigned>(side)] += world.Apply(point);
    detected_ = mapped;
    Transform(world);
}

bool EdgeRectangle::HasEnough() const
{
    constexpr std::size_t fewestOfFour = 6, fewestOfTwo = 4;
    for (unsigned side = 0; side < 4; side += FourSides ? 1 : 2)
        if (detected_[side] == 0) return false;
    return SamplePoints.size() >= (FourSides ? fewestOfFour : fewestOfTwo);
}

bool EdgeRectangle::Measure(const Image& src, int edgeIndex, const WorldMap& world)
{
    const Entry entry("Tesk::EdgeRectangle::_Detect");
    if (Refuses(entry, src, 2 * (SideOf(0).samples + SideOf(1).samples))) return false;
    Restart();
    detected_ = fitted_ = {};
    if (!SampleSides(src, edgeIndex) || !HasEnough()) return false;
    CountMapped(world);
    if (!HasEnough()) return false;
    bool fitted = false;
    const bool around = Fitting == FitBefore || Fitting == FitAfter;
    entry.Guards(images::noWorkingMemory, [&] { fitted = around ? FitAround(world) : FitSides(world); });
    if (fitted) SetFitState(1);
    return fitted;
}

/// The quad's angle, by as many turns as the degrees tell.
double EdgeRectangle::ReferenceAngle() const
{
    const double told = ToRadians(AngleDegrees), exact = Rectangle.Angle;
    return std::isfinite(told) ? told + std::remainder(exact - told, 2 * half) : exact;
}

/// From the first corner to the second one, in the units of the result; what a calibration cannot show stays as it is.
std::array<XY, 2> EdgeRectangle::FirstSide(const WorldMap& world) const
{
    std::array<XY, 2> ends = {Rectangle.Corner(0), Rectangle.Corner(1)};
    for (XY& end : ends)
        world.Apply(end);
    return ends;
}

/// Tells the points that lie on the line of most points of their side.
std::function<bool(std::size_t)> EdgeRectangle::InliersOfSides(const WorldMap& world) const
{
    constexpr double part = 0.03; // of the probes
    const auto [first, second] = FirstSide(world);
    const double tolerance = part * ProbeLength * LengthOf(first, second) / Rectangle.Width;
    std::vector<bool> inlier(SamplePoints.size(), true);
    std::size_t at = 0;
    for (int side = 0; side < 4; side++) {
        fits::Line line;
        const bool fitted = fits::FitLineRobust(PointsOf(side), tolerance, line);
        for (const XY p : PointsOf(side)) {
            const double distance = line.Direction.X * (p.Y - line.Center.Y) - line.Direction.Y * (p.X - line.Center.X);
            inlier[at++] = !fitted || std::abs(distance) <= tolerance;
        }
    }
    return [inlier = std::move(inlier)](std::size_t i) { return inlier[i]; };
}

bool EdgeRectangle::FitSides(const WorldMap& world)
{
    Sides sides(SamplePoints, detected_);
    FitQuality quality;
    // What is displaced on one side may shift its mean so much that the threshold of all sides takes it whole.
    if (!FitRobust(SamplePoints, scratch_, sides, quality) &&
        !FitRobust(SamplePoints, scratch_, sides, quality, InliersOfSides(world)))
        return false;
    for (std::size_t i = 0; i < SamplePoints.size(); i++)
        fitted_[sides.SideOf(i)] += scratch_.residuals[i] <= quality.threshold;

    const double reference = ReferenceAngle(), radians = reference + std::remainder(sides.Radians() - reference, half);
    const double c = std::cos(radians), s = std::sin(radians);
    const auto along = [&](XY p) { return c * p.X + s * p.Y; };
    const auto across = [&](XY p) { return c * p.Y - s * p.X; };
    // A half turn of the angle leaves the sides where they are.
    const double top = across(sides.Mean(0)), bottom = across(sides.Mean(2));
    double left, right;
    if (FourSides) {
        right = along(sides.Mean(1));
        left = along(sides.Mean(3));
    } else {
        const auto [first, second] = FirstSide(world);
        left = along(first);
        right = left + LengthOf(first, second);
    }
    const double p = (left + right) / 2, q = (top + bottom) / 2;
    const XY middle(p * c - q * s, p * s + q * c), size(right - left, bottom - top);
    if (!std::isfinite(middle.X + middle.Y + size.X + size.Y + radians)) return false;
    SetQuality(quality.kept, quality.deviation, quality.robust);
    Conclude(middle, size, radians);
    return true;
}

/// The smallest rectangle, turned so that its width lies as the reference's does.
bool EdgeRectangle::FitAround(const WorldMap& world)
{
    const std::vector<XY> hull = hulls::HullOfAny<XY>(SamplePoints);
    const shapes::Rectangle smallest = shapes::SmallestRectangle(hull);
    double radians = smallest.Angle;
    XY size(smallest.Width, smallest.Height);
    if (!world.HasCalibrator() && std::fmod(std::round((Rectangle.Angle - radians) / quarter), 2) != 0) {
        radians -= quarter;
        std::swap(size.X, size.Y);
    }
    Conclude(smallest.Center, size, radians);
    return true;
}

void EdgeRectangle::Conclude(XY middle, XY size, double radians)
{
    FittedMiddle = middle;
    FittedSize = size;
    FittedAngleRadians = radians;
    FittedAngle = ToDegrees(radians);
    const double u = size.X / 2, v = size.Y / 2;
    const XY corners[] = {{-u, -v}, {u, -v}, {u, v}, {-u, v}};
    for (std::size_t i = 0; i < 4; i++)
        FittedCorners.values_[i] = FromFrame(corners[i], middle, radians);
}

void EdgeRectangle::Realign()
{
    const Entry entry("Tesk::EdgeRectangle::Realign");
    if (FitState != 1) return;
    const double scale = WorldMap().Scale();
    const XY middle = FittedMiddle, size = FittedSize;
    const XY corner =
        FromFrame({-size.X / 2 / scale, -size.Y / 2 / scale}, {middle.X / scale, middle.Y / scale}, FittedAngleRadians);
    Rectangle.SetTurned(corner.X, corner.Y, size.X / scale, size.Y / scale, FittedAngleRadians);
    AngleDegrees = FittedAngle;
}

void EdgeRectangle::Transfer(Archive& Block)
{
    const int version = Block.Header(format);
    double x = Rectangle.X, y = Rectangle.Y, width = Rectangle.Width, height = Rectangle.Height,
           angle = Rectangle.Angle;
    Block(x, y, width, height, angle);
    if (Block.Reading()) {
        // Numbers that are none of a picture leave the reference as it was.
        Rectangle.SetTurned(x, y, width, height, angle);
        AngleDegrees = ToDegrees(Rectangle.Angle);
    }
    TransferSampling(Block);
    if (version >= firstWithFourSides)
        Block(FourSides);
    else
        FourSides = true;
    TransferFitting(Block, version >= firstWithFitting);
    TransferAnalysis(Block);
}

void EdgeRectangle::Read(const char* PathName)
{
    ReadModel("Tesk::EdgeRectangle::Read", PathName, *this, ShortFile::KeepsFields);
}

void EdgeRectangle::Read(const wchar_t* PathName)
{
    ReadModel("Tesk::EdgeRectangle::Read", PathName, *this, ShortFile::KeepsFields);
}

void EdgeRectangle::Write(const char* PathName) const
{
    WriteModel("Tesk::EdgeRectangle::Write", PathName, *this);
}

void EdgeRectangle::Write(const wchar_t* PathName) const
{
    WriteModel("Tesk::EdgeRectangle::Write", PathName, *this);
}

} // namespace Tesk
