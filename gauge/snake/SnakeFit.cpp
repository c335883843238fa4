// The sections of a snake fitted to what was found along them, and what conforms to them.
#include "gauge/SnakeGauge.h"
#include "gauge/snake/SnakeArc.h"
#include "gauge/snake/SnakeProbe.h"
#include "measure/fit/PointFit.h"

#include <cmath>
#include <cstddef>
#include <cstdint>
#include <vector>

namespace Tesk {

using namespace snakes;

namespace {

/// Of the spread of the points.
constexpr double toleranceOfSpread = 0.03;
constexpr std::size_t fewestOnLine = 3, fewestOnArc = 4;

double Tolerance(const std::vector<XY>& points)
{
    return toleranceOfSpread * fits::Spread<XY>(points);
}

/// Along the normal of a node from it to a line; 0 where they do not meet.
double ToLine(XY node, XY tangent, const fits::Line& line)
{
    const double slant = tangent.X * line.Direction.X + tangent.Y * line.Direction.Y;
    const double cross = (node.X - line.Center.X) * line.Direction.Y - (node.Y - line.Center.Y) * line.Direction.X;
    const double way = cross / slant;
    return std::isfinite(way) ? way : 0;
}

/// Along the normal of a node from it to a circle: to the crossing before the centre where the normal leads to the
/// centre, else to the one behind it. Where they do not meet, to the place nearest to the centre.
double ToCircle(XY node, XY tangent, const fits::Circle& circle, double sense)
{
    const XY to(circle.Center.X - node.X, circle.Center.Y - node.Y);
    const double middle = to.Y * tangent.X - to.X * tangent.Y, aside = to.X * tangent.X + to.Y * tangent.Y;
    return middle - sense * std::sqrt(Max(0.0, circle.Radius * circle.Radius - aside * aside));
}

XY Along(XY node, XY tangent, double way)
{
    return {node.X - way * tangent.Y, node.Y + way * tangent.X};
}

} // namespace

template <typename F>
void SnakeGauge::VisitFound(const SnakeSection& section, F visit)
{
    auto& samples = WritableSamples();
    const int step = inspectedStep_, end = section.FirstSample + section.NumSamples;
    const int rest = section.FirstSample % step;
    for (std::int64_t i = section.FirstSample + (rest > 0 ? std::int64_t{step} - rest : 0); i < end; i += step)
        if (AxisSample& sample = samples[static_cast<std::size_t>(i)]; sample.State != Missing)
            visit(static_cast<int>(i), sample);
}

/// The edges of a section, or the middles of its ribbon.
void SnakeGauge::CollectPoints(const SnakeSection& section, bool ribbon)
{
    points_.clear();
    VisitFound(section, [&](int, const AxisSample& sample) {
        points_.push_back(ribbon ? Aside(sample, (sample.Deviation + sample.Deviation2) / 2)
                                 : XY(sample.EdgeX, sample.EdgeY));
    });
}

void SnakeGauge::Judge(SnakeSection& section, AxisSample& sample, double deviation) const
{
    section.Deviation += RMS ? deviation * deviation : std::abs(deviation);
    if (deviation < -MaxDeviation) {
        sample.State = Intrusion;
        section.NumIntrusions++;
        section.MinDeviation = Min(section.MinDeviation, deviation);
    } else if (deviation > MaxDeviation) {
        sample.State = Protrusion;
        section.NumProtrusions++;
        section.MaxDeviation = Max(section.MaxDeviation, deviation);
    }
}

void SnakeGauge::FitLine(SnakeSection& section, bool fit, bool ribbon)
{
    const SnakeNode &first = Nodes[static_cast<std::size_t>(section.FirstNode)],
                    &last = Nodes[static_cast<std::size_t>(section.FirstNode + section.NumNodes - 1)];
    fits::Line line{first.Position, first.Out};
    if (fit && points_.size() >= fewestOnLine && fits::FitLineRobust<XY>(points_, Tolerance(points_), line) &&
        line.Direction.X * first.Out.X + line.Direction.Y * first.Out.Y < 0)
        line.Direction = {-line.Direction.X, -line.Direction.Y};
    section.FittedBeg = Along(first.Position, first.Out, ToLine(first.Position, first.Out, line));
    section.FittedEnd = Along(last.Position, last.In, ToLine(last.Position, last.In, line));
    if (ribbon) return;
    VisitFound(section, [&](int, AxisSample& sample) {
        Judge(section, sample,
              (sample.EdgeY - line.Center.Y) * line.Direction.X - (sample.EdgeX - line.Center.X) * line.Direction.Y);
    });
}

void SnakeGauge::FitArc(SnakeSection& section, bool fit, bool ribbon)
{
    const SnakeNode* nodes = Nodes.data() + section.FirstNode;
    Arc arc;
    ArcThrough(nodes[0].Position, nodes[1].Position, nodes[2].Position, arc);
    fits::Circle circle = arc.circle;
    if (fit && points_.size() >= fewestOnArc) fits::FitCircleRobust<XY>(points_, Tolerance(points_), circle);
    const double sense = arc.Sense();
    section.FittedCenter = circle.Center;
    section.FittedRadius = circle.Radius;
    section.FittedBeg =
        Along(nodes[0].Position, nodes[0].Out, ToCircle(nodes[0].Position, nodes[0].Out, circle, sense));
    section.FittedEnd = Along(nodes[2].Position, nodes[2].In, ToCircle(nodes[2].Position, nodes[2].In, circle, sense));
    if (ribbon) return;
    // The normals of an arc that turns from x towards y lead to its centre.
    VisitFound(section, [&](int, AxisSample& sample) {
        const double radius = std::hypot(sample.EdgeX - circle.Center.X, sample.EdgeY - circle.Center.Y);
        Judge(section, sample, sense * (circle.Radius - radius));
    });
}

/// Takes the line that most deviations follow off all of them.
void SnakeGauge::RemoveTrend(const SnakeSection& section)
{
    points_.clear();
    VisitFound(section, [&](int i, const AxisSample& sample) { points_.emplace_back(i, sample.Deviation); });
    fits::Line line;
    if (points_.size() < fewestOnLine || !fits::FitLineRobust<XY>(points_, Tolerance(points_), line)) return;
    const double slope = line.Direction.Y / line.Direction.X;
    if (!std::isfinite(slope)) return;
    VisitFound(section,
               [&](int i, AxisSample& sample) { sample.Deviation -= line.Center.Y + slope * (i - line.Center.X); });
}

void SnakeGauge::JudgeWidths(SnakeSection& section)
{
    VisitFound(section, [&](int, AxisSample& sample) {
        Judge(section, sample, sample.Deviation2 - sample.Deviation - NominalWidth);
    });
}

void SnakeGauge::JudgeSection(SnakeSection& section, bool fit, bool ribbon)
{
    section.NumPoints = section.NumIntrusions = section.NumProtrusions = 0;
    section.Deviation = section.MinDeviation = section.MaxDeviation = 0;
    CollectPoints(section, ribbon);
    section.NumPoints = static_cast<std::int32_t>(points_.size());
    if (section.Type == HCorner) {
        FitLine(section, fit, ribbon);
    } else if (section.Type == Circular) {
        FitArc(section, fit, ribbon);
    } else if (!ribbon) {
        if (section.Type == Spline && fit) RemoveTrend(section);
        VisitFound(section, [&](int, AxisSample& sample) { Judge(section, sample, sample.Deviation); });
    }
    if (ribbon) JudgeWidths(section);
}

} // namespace Tesk
