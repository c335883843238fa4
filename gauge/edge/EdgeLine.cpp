// The line gauge: its probes, and the line through their edges or against them.
#include "gauge/EdgeLine.h"

#include "foundation/Angles.h"
#include "foundation/Archive.h"
#include "gauge/edge/ProbeRow.h"
#include "gauge/edge/RobustFit.h"
#include "gauge/edge/WorldMap.h"
#include "measure/fit/PointFit.h"

#include <cmath>
#include <numbers>

namespace Tesk {

using namespace edges;

namespace {

constexpr std::size_t fewestPoints = 2;

constexpr ArchiveFormat format = {"TEDL", 2, L"File \"%ls\" is not an EdgeLine file",
                                  L"The version number \"%d\" of this EdgeLine file is too high"};
constexpr int firstWithFitting = 2;

/// For the robust scheme.
struct LineModel
{
    static constexpr int leastOrder = 2;
    std::span<const XY> points;
    FitScratch& scratch;
    fits::Line line;

    template <typename Keep>
    bool Fit(Keep keep)
    {
        return fits::FitLine(Gather(points, keep, scratch), line);
    }
    double Residual(std::size_t i) const
    {
        const XY u = line.Direction, c = line.Center;
        return std::abs(-u.Y * (points[i].X - c.X) + u.X * (points[i].Y - c.Y));
    }
};

/// The points of one side that a line laid against them may touch, in their order.
void ChainOf(std::span<const XY> points, bool after, std::vector<XY>& chain)
{
    chain.clear();
    for (const XY c : points) {
        while (chain.size() >= 2) {
            const XY a = chain[chain.size() - 2], b = chain.back();
            const double left = (a.X - b.X) * (b.Y - c.Y), right = (a.Y - b.Y) * (b.X - c.X);
            if (after ? right < left : left < right) break;
            chain.pop_back();
        }
        chain.push_back(c);
    }
}

} // namespace

void EdgeLine::Locate(XY Center, double Length, double Angle, double ProbeLength)
{
    const Entry entry("Tesk::EdgeLine::Locate");
    const XY half = Radially(Length / 2, ToRadians(Angle));
    RefBeg = Center - half;
    RefEnd = Center + half;
    this->ProbeLength = ProbeLength;
}

bool EdgeLine::Measure(const Image& src, int edgeIndex, const WorldMap& world)
{
    const Entry entry("Tesk::EdgeLine::_Detect");
    const double length = LengthOf(RefBeg, RefEnd);
    const int samples = SamplesOver(length);
    if (Refuses(entry, src, samples)) return false;
    Restart();
    const Stretch stretch(RefBeg, RefEnd, Clearance / length);
    const XY half = HalfProbe(RefBeg, RefEnd, length, ProbeLength, Oblique);
    const bool ran =
        RunProbes(src, edgeIndex, [&](int i) { PlaceProbe(Spaced(stretch.to, stretch.from, i, samples), half); });
    if (!ran || SamplePoints.size() < fewestPoints) return false;
    Transform(world);

    XY center, direction;
    bool fitted = false;
    const bool beside = Fitting == FitBefore || Fitting == FitAfter;
    entry.Guards(images::noWorkingMemory,
                 [&] { fitted = beside ? FitBeside(center, direction) : FitOverPoints(center, direction); });
    if (!fitted || !Conclude(center, direction, world)) return false;
    SetFitState(beside && !world.HasCalibrator() ? 2 : 1);
    return true;
}

bool EdgeLine::FitOverPoints(XY& center, XY& direction)
{
    LineModel model{SamplePoints, scratch_, {}};
    FitQuality quality;
    if (!FitRobust(SamplePoints, scratch_, model, quality)) return false;
    SetQuality(quality.kept, quality.deviation, quality.robust);
    center = model.line.Center;
    direction = model.line.Direction;
    return true;
}

/// The edge of the chain to which the points are nearest in the mean.
bool EdgeLine::FitBeside(XY& center, XY& direction)
{
    const bool after = Fitting == FitAfter;
    std::vector<XY>& chain = scratch_.points;
    ChainOf(SamplePoints, after, chain);
    const auto n = static_cast<double>(SamplePoints.size());
    double sumX = 0, sumY = 0, least = MaxFloat;
    for (const XY p : SamplePoints) {
        sumX += p.X;
        sumY += p.Y;
    }
    bool found = false;
    for (std::size_t i = 1; i < chain.size(); i++) {
        const XY p = chain[i - 1], d(chain[i].X - p.X, chain[i].Y - p.Y);
        const double length = std::hypot(d.X, d.Y);
        const double sum = (d.Y * sumX - d.X * sumY - n * (d.Y * p.X - d.X * p.Y)) / (after ? -length : length);
        if (!(sum < least)) continue;
        least = sum;
        center = p;
        direction = {d.X / length, d.Y / length};
        found = true;
    }
    if (found) SetQuality(2, least / n, 0);
    return found;
}

/// Takes the fitted line, the way round in which the segment runs.
bool EdgeLine::Conclude(XY center, XY direction, const WorldMap& world)
{
    XY beg = RefBeg, end = RefEnd;
    if (!world.Apply(beg) || !world.Apply(end)) return false;
    const double half = LengthOf(beg, end) / 2;
    if (!std::isfinite(half)) return false;
    double angle = std::atan2(direction.Y, direction.X);
    const bool alongX = std::abs(RefEnd.X - RefBeg.X) > std::abs(RefEnd.Y - RefBeg.Y);
    if (alongX ? (direction.X > 0) != (RefEnd.X > RefBeg.X) : (direction.Y > 0) != (RefEnd.Y > RefBeg.Y)) {
        angle += std::numbers::pi;
        if (angle > std::numbers::pi) angle -= 2 * std::numbers::pi;
        direction = {-direction.X, -direction.Y};
    }
    FittedCenter = center;
    FittedBeg = center - half * direction;
    FittedEnd = center + half * direction;
    FittedAngleRadians = angle;
    FittedAngle = ToDegrees(angle);
    return true;
}

void EdgeLine::Realign()
{
    const Entry entry("Tesk::EdgeLine::Realign");
    if (FitState != 1) return;
    XY beg = FittedBeg, end = FittedEnd;
    const WorldMap world;
    if (!world.Reverse(beg) || !world.Reverse(end)) return;
    RefBeg = beg;
    RefEnd = end;
}

void EdgeLine::Transfer(Archive& Block)
{
    const int version = Block.Header(format);
    Block(RefBeg.X, RefBeg.Y, RefEnd.X, RefEnd.Y);
    TransferSampling(Block);
    TransferFitting(Block, version >= firstWithFitting);
    TransferAnalysis(Block);
}

void EdgeLine::Read(const char* PathName)
{
    ReadModel("Tesk::EdgeLine::Read", PathName, *this, ShortFile::KeepsFields);
}

void EdgeLine::Read(const wchar_t* PathName)
{
    ReadModel("Tesk::EdgeLine::Read", PathName, *this, ShortFile::KeepsFields);
}

void EdgeLine::Write(const char* PathName) const
{
    WriteModel("Tesk::EdgeLine::Write", PathName, *this);
}

void EdgeLine::Write(const wchar_t* PathName) const
{
    WriteModel("Tesk::EdgeLine::Write", PathName, *this);
}

} // namespace Tesk
