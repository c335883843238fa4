// The ellipse gauge: its reference by points or by axes, its probes, its fit.
#include "gauge/EdgeEllipse.h"

#include "foundation/Angles.h"
#include "foundation/Archive.h"
#include "gauge/edge/ProbeRow.h"
#include "gauge/edge/WorldMap.h"
#include "measure/fit/PointFit.h"

#include <algorithm>
#include <cmath>
#include <numbers>

namespace Tesk {

using namespace edges;

namespace {

constexpr double turn = 2 * std::numbers::pi;
constexpr std::size_t fewestPoints = 5;
/// Of the length of the probes: the squared distance up to which points agree with an ellipse.
constexpr double toleranceOfProbe = 0.03;

constexpr ArchiveFormat format = {"TEDE", 1, L"File \"%ls\" is not an EdgeEllipse file",
                                  L"The version number \"%d\" of this EdgeEllipse file is too high"};

/// The second approximation of Ramanujan, over the arc between two parameters or the whole ellipse.
double ArcLength(double a, double b, double from, double to, bool closed)
{
    const double r = (a - b) / (a + b), q = 3 * r * r, f = 1 + q / (10 + std::sqrt(4 - q));
    const double sweep = closed ? turn : std::abs((std::sin(2 * to) - std::sin(2 * from)) * r / 2 + (to - from));
    return (a + b) / 2 * f * sweep;
}

/// The cross product of the ways from the second point to the first and to the third.
double Turn(XY a, XY b, XY c)
{
    return (b.X - a.X) * (c.Y - b.Y) - (b.Y - a.Y) * (c.X - b.X);
}

} // namespace

XY EdgeEllipse::Reference::At(double parameter, double beyond) const
{
    const double u = (first + beyond) * std::cos(parameter), v = (second + beyond) * std::sin(parameter);
    return {center.X + cosine * u - sine * v, center.Y + sine * u + cosine * v};
}

double EdgeEllipse::Reference::ParameterOf(XY point) const
{
    const double x = point.X - center.X, y = point.Y - center.Y;
    return std::atan2(first * (cosine * y - sine * x), second * (cosine * x + sine * y));
}

double EdgeEllipse::Reference::RadiusOf(XY point) const
{
    const double x = point.X - center.X, y = point.Y - center.Y;
    return std::hypot(cosine * x + sine * y, (cosine * y - sine * x) * first / second);
}

/// The ellipse through the five points: it runs from the first one to the last, the way round on which the third lies.
bool EdgeEllipse::RefThrough(const std::array<XY, 5>& points, Reference& reference) const
{
    fits::Ellipse ellipse;
    if (!fits::EllipseThrough<XY>(points, ellipse)) return false;
    reference = {
        ellipse.Center, ellipse.FirstAxis, ellipse.SecondAxis, std::cos(ellipse.Angle), std::sin(ellipse.Angle), 0, 0};
    const double sign = Turn(points[0], points[2], points[4]) < 0 ? -1 : 1;
    reference.start = reference.ParameterOf(points[0]);
    reference.end = reference.ParameterOf(points[4]);
    if (Closed)
        reference.end = reference.start + sign * turn;
    else if (sign * (reference.end - reference.start) < 0)
        reference.end += sign * turn;
    return true;
}

/// `RefState`, but for points that a program has set.
int EdgeEllipse::Stale() const
{
    const auto same = [](XY a, XY b) { return a.X == b.X && a.Y == b.Y; };
    return std::equal(RefPoints.begin(), RefPoints.end(), known_.begin(), same) ? RefState : 1;
}

EdgeEllipse::Reference EdgeEllipse::Ref() const
{
    Reference reference{Center, FirstAxis, SecondAxis, std::cos(Angle), std::sin(Angle), StartParameter, EndParameter};
    if (Stale() == 1) RefThrough(RefPoints, reference);
    return reference;
}

std::array<XY, 5> EdgeEllipse::Points() const
{
    if (Stale() != 2) return RefPoints;
    const Reference reference = Ref();
    std::array<XY, 5> points;
    for (int i = 0; i < 5; i++) {
        // The first one stands at the start, the others follow from the end.
        const double part = i == 0 ? 0 : (5 - i) / 5.0;
        points[static_cast<std::size_t>(i)] = reference.At((1 - part) * reference.start + part * reference.end);
    }
    return points;
}

/// Brings the points and the ellipse up to date with each other.
void EdgeEllipse::Refresh()
{
    const int stale = Stale();
    if (stale == 2) {
        RefPoints = Points();
    } else if (stale == 1) {
        const Reference reference = Ref();
        Center = reference.center;
        FirstAxis = reference.first;
        SecondAxis = reference.second;
        Angle = std::atan2(reference.sine, reference.cosine);
        StartParameter = reference.start;
        EndParameter = reference.end;
    }
    RefState = 0;
    known_ = RefPoints;
}

void EdgeEllipse::Place(XY center, double firstAxis, double secondAxis, double degrees, double probeLength)
{
    Center = center;
    FirstAxis = firstAxis;
    SecondAxis = secondAxis;
    Angle = ToRadians(degrees);
    ProbeLength = probeLength;
}

void EdgeEllipse::Locate(XY Center, double FirstAxis, double SecondAxis, double Angle, double ProbeLength)
{
    const Entry entry("Tesk::EdgeEllipse::Locate");
    Place(Center, FirstAxis, SecondAxis, Angle, ProbeLength);
    EndParameter = StartParameter + turn;
    Closed = true;
    RefState = 2;
    known_ = RefPoints;
}

void EdgeEllipse::Locate(XY Center, double FirstAxis, double SecondAxis, double Angle, double StartAngle,
                         double EndAngle, double ProbeLength)
{
    const Entry entry("Tesk::EdgeEllipse::Locate");
    Place(Center, FirstAxis, SecondAxis, Angle, ProbeLength);
    StartParameter = ToRadians(StartAngle);
    EndParameter = ToRadians(EndAngle);
    Closed = false;
    RefState = 0;
    known_ = RefPoints;
    const Reference reference = Ref();
    for (std::size_t i = 0; i < 5; i++)
        RefPoints[i] = reference.At(StartParameter + static_cast<double>(i) / 5 * (EndParameter - StartParameter));
    known_ = RefPoints;
}

bool EdgeEllipse::Measure(const Image& src, int edgeIndex, const WorldMap& world)
{
    const Entry entry("Tesk::EdgeEllipse::_Detect");
    Refresh();
    const Reference reference = Ref();
    const double end = !Closed                           ? reference.end
                       : reference.end < reference.start ? reference.start - turn
                                                         : reference.start + turn;
    const double length = ArcLength(reference.first, reference.second, reference.start, end, Closed);
    const int samples = SamplesOver(length);
    if (Refuses(entry, src, samples)) return false;
    Restart();
    const double part = Clearance / length, first = (1 - part) * end + part * reference.start,
                 last = (1 - part) * reference.start + part * end, half = ProbeLength / 2;
    const bool ran = RunProbes(src, edgeIndex, [&](int i) {
        const double parameter = Spaced(first, last, i, samples);
        if (Oblique) {
            From = reference.At(parameter, -half);
            To = reference.At(parameter, half);
            return;
        }
        const XY at = reference.At(parameter);
        const bool across = std::abs(at.X - reference.center.X) > std::abs(at.Y - reference.center.Y);
        PlaceProbe(at, across ? XY(half, 0) : XY(0, half));
    });
    if (!ran || SamplePoints.size() < fewestPoints) return false;
    Transform(world);
    if (Fitting != FitOver) {
        Status::Raise(Status::Format(OutOfRange, L"Unsupported Fitting mode"), "Tesk::EdgeEllipse::Detect");
        return false;
    }
    bool fitted = false;
    entry.Guards(images::noWorkingMemory, [&] { fitted = FitPoints(world); });
    if (fitted) SetFitState(1);
    return fitted;
}

bool EdgeEllipse::FitPoints(const WorldMap& world)
{
    const double tolerance = toleranceOfProbe * ProbeLength * (world.HasCalibrator() ? 1 : world.Scale());
    fits::Ellipse ellipse;
    fits::Agreement agreement;
    if (!fits::FitEllipseRobust<XY>(SamplePoints, tolerance, ellipse, &agreement)) return false;
    SetQuality(agreement.Count, std::sqrt(agreement.Whole), std::sqrt(agreement.Inner));
    FittedCenter = ellipse.Center;
    FittedFirstAxis = ellipse.FirstAxis;
    FittedSecondAxis = ellipse.SecondAxis;
    FittedAngle = ToDegrees(ellipse.Angle);
    return true;
}

void EdgeEllipse::Realign()
{
    const Entry entry("Tesk::EdgeEllipse::Realign");
    if (FitState != 1) return;
    const WorldMap world;
    XY center = FittedCenter;
    if (!world.Reverse(center)) return;
    Refresh();
    Center = center;
    FirstAxis = FittedFirstAxis / world.Scale();
    SecondAxis = FittedSecondAxis / world.Scale();
    Angle = ToRadians(FittedAngle);
    RefState = 2;
}

void EdgeEllipse::Transfer(Archive& Block)
{
    if (!Block.Reading()) Refresh();
    Block.Header(format);
    Block(Center.X, Center.Y, FirstAxis, SecondAxis, Angle, StartParameter, EndParameter);
    TransferSampling(Block);
    Block(Closed, Fitting);
    TransferAnalysis(Block);
    if (!Block.Reading()) return;
    RefState = 2;
    known_ = RefPoints;
    Refresh();
}

void EdgeEllipse::Read(const char* PathName)
{
    ReadModel("Tesk::EdgeEllipse::Read", PathName, *this, ShortFile::KeepsFields);
}

void EdgeEllipse::Read(const wchar_t* PathName)
{
    ReadModel("Tesk::EdgeEllipse::Read", PathName, *this, ShortFile::KeepsFields);
}

void EdgeEllipse::Write(const char* PathName) const
{
    WriteModel("Tesk::EdgeEllipse::Write", PathName, *this);
}

void EdgeEllipse::Write(const wchar_t* PathName) const
{
    WriteModel("Tesk::EdgeEllipse::Write", PathName, *this);
}

} // namespace Tesk
