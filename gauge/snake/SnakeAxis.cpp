// The axis of snakes: from nodes to sections, tangents and samples.
#include "foundation/Entry.h"
#include "gauge/SnakeGauge.h"
#include "gauge/snake/SnakeArc.h"
#include "gauge/snake/SnakeSpline.h"
#include "image/core/Refusals.h"

#include <cmath>
#include <numbers>

namespace Tesk {

using namespace snakes;

namespace {

constexpr int mostSamples = 1 << 20;
constexpr double quarter = std::numbers::pi / 2;

XY Unit(XY d)
{
    const double length = std::hypot(d.X, d.Y);
    return length > 0 && std::isfinite(length) ? XY(d.X / length, d.Y / length) : XY(0, 0);
}

XY UnitOr(XY d, XY other)
{
    const XY unit = Unit(d);
    return unit.X == 0 && unit.Y == 0 ? other : unit;
}

XY Between(XY a, XY b)
{
    return {b.X - a.X, b.Y - a.Y};
}

bool Coincide(XY a, XY b)
{
    return a.X == b.X && a.Y == b.Y;
}

/// The ellipse through two pairs of opposite nodes, by conjugate half diameters.
struct Diameters
{
    XY center, first, second;

    explicit Diameters(const SnakeNode* nodes)
        : center((nodes[0].Position.X + nodes[2].Position.X) / 2, (nodes[0].Position.Y + nodes[2].Position.Y) / 2),
          first((nodes[0].Position.X - nodes[2].Position.X) / 2, (nodes[0].Position.Y - nodes[2].Position.Y) / 2),
          second((nodes[1].Position.X - nodes[3].Position.X) / 2, (nodes[1].Position.Y - nodes[3].Position.Y) / 2)
    {}
    XY At(double t) const
    {
        const double c = std::cos(t), s = std::sin(t);
        return {center.X + c * first.X + s * second.X, center.Y + c * first.Y + s * second.Y};
    }
    XY Derivative(double t) const
    {
        const double c = std::cos(t), s = std::sin(t);
        return {c * second.X - s * first.X, c * second.Y - s * first.Y};
    }
};

/// Puts samples one after the other, about one pixel apart, and stops where there are too many.
class AxisWriter
{
public:
    explicit AxisWriter(std::vector<AxisSample>& samples) : samples_(samples) {}

    bool IsFull() const { return full_; }
    std::int32_t Count() const { return static_cast<std::int32_t>(samples_.size()); }

    void Add(XY p, XY tangent)
    {
        AxisSample sample;
        sample.X = p.X;
        sample.Y = p.Y;
        last_ = UnitOr(tangent, last_);
        sample.TangentX = last_.X;
        sample.TangentY = last_.Y;
        samples_.push_back(sample);
    }

    /// The number of steps over a length; 0 where there is none, and where it is too long.
    int Steps(double length)
    {
        if (!(length <= mostSamples - Count())) full_ = true;
        return full_ || !(length > 0) ? 0 : Max(1, static_cast<int>(length + 0.5));
    }

    void Line(XY from, XY to)
    {
        const XY d = Between(from, to);
        const int n = Steps(std::hypot(d.X, d.Y));
        for (int i = 0; i < n; i++)
            Add({from.X + d.X * i / n, from.Y + d.Y * i / n}, d);
    }

    void Curve(const Arc& arc)
    {
        const int n = Steps(std::abs(arc.sweep) * arc.circle.Radius);
        for (int i = 0; i < n; i++) {
            const double angle = arc.start + arc.sweep * i / n;
            Add(arc.At(angle), arc.Tangent(angle));
        }
    }

    /// A curve given by a parameter from 0 to 1, at equal distances along it.
    template <typename At, typename Derivative>
    void Curve(double chord, At at, Derivative derivative)
    {
        constexpr int finer = 4, least = 16;
        if (Steps(chord) == 0) return;
        const int m = Max(least, finer * static_cast<int>(std::ceil(chord)));
        lengths_.assign(1, 0);
        XY last = at(0.0);
        for (int i = 1; i <= m; i++) {
            const XY d = at(static_cast<double>(i) / m), step = Between(last, d);
            lengths_.push_back(lengths_.back() + std::hypot(step.X, step.Y));
            last = d;
        }
        const double total = lengths_.back();
        const int n = Steps(total);
        std::size_t j = 0;
        for (int i = 0; i < n; i++) {
            const double length = total * i / n;
            while (j + 2 < lengths_.size() && lengths_[j + 1] < length)
                j++;
            const double width = lengths_[j + 1] - lengths_[j];
            const double t = (static_cast<double>(j) + (width > 0 ? (length - lengths_[j]) / width : 0)) / m;
            Add(at(t), derivative(t));
        }
    }

private:
    std::vector<AxisSample>& samples_;
    std::vector<double> lengths_;
    XY last_{1, 0};
    bool full_ = false;
};

/// The kind of a section, by its nodes.
SectionType KindOf(const SnakeNode* nodes, int count)
{
    constexpr int nodesOfEllipse = 5;
    if (count == 2) return HCorner;
    const SectionType inner = nodes[1].Type;
    Arc arc;
    if (count == 3 && (inner == Circular || inner == Elliptic))
        return ArcThrough(nodes[0].Position, nodes[1].Position, nodes[2].Position, arc) ? Circular : HCorner;
    if (count == nodesOfEllipse && inner == Elliptic && Coincide(nodes[0].Position, nodes[4].Position)) return Elliptic;
    return Spline;
}

/// Tangents at the nodes of a section that its nodes alone determine.
void SetTangentsOf(SectionType kind, SnakeNode* nodes, int count)
{
    if (kind == HCorner) {
        for (int i = 0; i + 1 < count; i++)
            nodes[i].Out = nodes[i + 1].In = UnitOr(Between(nodes[i].Position, nodes[i + 1].Position), {1, 0});
    } else if (kind == Circular) {
        Arc arc;
        ArcThrough(nodes[0].Position, nodes[1].Position, nodes[2].Position, arc);
        nodes[0].Out = arc.Tangent(arc.start);
        nodes[1].In = nodes[1].Out = arc.Tangent(arc.start + arc.toMiddle);
        nodes[2].In = arc.Tangent(arc.start + arc.sweep);
    } else if (kind == Elliptic) {
        const Diameters ellipse(nodes);
        for (int i = 0; i < count; i++) {
            const XY tangent = UnitOr(ellipse.Derivative(i * quarter), {1, 0});
            if (i > 0) nodes[i].In = tangent;
            if (i + 1 < count) nodes[i].Out = tangent;
        }
    }
}

// The samples of a section, but for its end, and where its nodes stand among them.

void WalkLines(AxisWriter& writer, SnakeNode* nodes, int count)
{
    for (int i = 0; i + 1 < count; i++) {
        nodes[i].Sample = writer.Count();
        writer.Line(nodes[i].Position, nodes[i + 1].Position);
    }
}

void WalkArc(AxisWriter& writer, SnakeNode* nodes)
{
    Arc arc;
    ArcThrough(nodes[0].Position, nodes[1].Position, nodes[2].Position, arc);
    nodes[0].Sample = writer.Count();
    writer.Curve(arc);
    const int count = writer.Count() - nodes[0].Sample;
    nodes[1].Sample = nodes[0].Sample + static_cast<std::int32_t>(std::lround(count * (arc.toMiddle / arc.sweep)));
}

void WalkEllipse(AxisWriter& writer, SnakeNode* nodes)
{
    const Diameters ellipse(nodes);
    for (int i = 0; i < 4; i++) {
        nodes[i].Sample = writer.Count();
        const XY d = Between(ellipse.At(i * quarter), ellipse.At((i + 1) * quarter));
        writer.Curve(
            std::hypot(d.X, d.Y), [&](double t) { return ellipse.At((i + t) * quarter); },
            [&](double t) { return ellipse.Derivative((i + t) * quarter); });
    }
}

void WalkSpline(AxisWriter& writer, SnakeNode* nodes, int count, const SplineEnds& ends)
{
    std::vector<XY> places;
    for (int i = 0; i < count; i++)
        places.push_back(nodes[i].Position);
    const CubicSpline spline(places, ends);
    for (int i = 0; i < spline.Pieces(); i++) {
        nodes[i].Sample = writer.Count();
        nodes[i].Out = UnitOr(spline.Derivative(i, 0), {1, 0});
        nodes[i + 1].In = UnitOr(spline.Derivative(i, 1), {1, 0});
        writer.Curve(
            spline.Chord(i), [&](double t) { return spline.At(i, t); },
            [&](double t) { return spline.Derivative(i, t); });
    }
}

} // namespace

void Snake::CollectSections()
{
    const auto isCorner = [&](int i) {
        const SectionType type = Nodes[static_cast<std::size_t>(i)].Type;
        return i == Length - 1 || (type != Circular && type != Spline && type != Elliptic);
    };
    auto& sections = Sections.values_;
    for (int from = 0, to = 1; from < Length - 1; from = to, to++) {
        while (!isCorner(to))
            to++;
        const SnakeNode* nodes = Nodes.data() + from;
        SnakeSection section;
        section.FirstNode = from;
        section.NumNodes = to - from + 1;
        section.Type = KindOf(nodes, section.NumNodes);
        section.FittedBeg = nodes[0].Position;
        section.FittedEnd = nodes[to - from].Position;
        if (Arc arc;
            section.Type == Circular && ArcThrough(nodes[0].Position, nodes[1].Position, nodes[2].Position, arc)) {
            section.FittedCenter = arc.circle.Center;
            section.FittedRadius = arc.circle.Radius;
        }
        sections.push_back(section);
    }
    NumSections = static_cast<int>(sections.size());
}

void Snake::SetTangents()
{
    for (const SnakeSection& section : Sections)
        SetTangentsOf(section.Type, Nodes.values_.data() + section.FirstNode, section.NumNodes);
}

/// The direction of a spline section at one of its ends: at a smooth corner that of its neighbour, or where that is a
/// spline, too, from the node before to the node behind.
XY Snake::SplineEnd(std::size_t section, bool first) const
{
    const SnakeSection& own = Sections[section];
    const auto corner = static_cast<std::size_t>(first ? own.FirstNode : own.FirstNode + own.NumNodes - 1);
    if (Nodes[corner].Type != SCorner) return {0, 0};
    const auto count = static_cast<std::size_t>(int(NumSections));
    const bool wraps = Closed && Coincide(Nodes[0].Position, Nodes[Nodes.size() - 1].Position);
    if ((first ? section == 0 : section + 1 == count) && !wraps) return {0, 0};
    const SnakeSection& other = Sections[(section + (first ? count - 1 : 1)) % count];
    const auto otherFirst = static_cast<std::size_t>(other.FirstNode),
               otherLast = otherFirst + static_cast<std::size_t>(other.NumNodes) - 1;
    if (other.Type != Spline) return first ? Nodes[otherLast].In : Nodes[otherFirst].Out;
    return first ? Unit(Between(Nodes[otherLast - 1].Position, Nodes[corner + 1].Position))
                 : Unit(Between(Nodes[corner - 1].Position, Nodes[otherFirst + 1].Position));
}

/// False if there would be too many samples.
bool Snake::SampleSections()
{
    AxisWriter writer(Samples.values_);
    for (std::size_t s = 0; s < Sections.size(); s++) {
        SnakeSection& section = Sections.values_[s];
        SnakeNode* nodes = Nodes.values_.data() + section.FirstNode;
        section.FirstSample = writer.Count();
        if (section.Type == Circular)
            WalkArc(writer, nodes);
        else if (section.Type == Elliptic)
            WalkEllipse(writer, nodes);
        else if (section.Type == Spline)
            WalkSpline(writer, nodes, section.NumNodes, {SplineEnd(s, true), SplineEnd(s, false)});
        else
            WalkLines(writer, nodes, section.NumNodes);
        if (writer.IsFull()) return false;
        section.NumSamples = writer.Count() - section.FirstSample;
    }
    return true;
}

int Snake::Refresh()
{
    if (Length < 2) return Status::Format(VoidObject, L"No shape has been defined");
    if (NumAxisSamples >= 0) return NoError;
    const int code = WithMemory(images::noWorkingMemory, [&]() -> int {
        Forget();
        CollectSections();
        SetTangents();
        if (!SampleSections()) return Status::Format(OutOfRange, L"The axis is longer than %d pixels", mostSamples);
        auto& nodes = Nodes.values_;
        SnakeNode &first = nodes.front(), &last = nodes.back();
        const bool closed = Closed && Coincide(first.Position, last.Position);
        first.In = closed ? last.In : first.Out;
        last.Out = closed ? first.Out : last.In;
        if (!closed || Samples.empty()) {
            AxisWriter(Samples.values_).Add(last.Position, last.In);
            Sections.values_.back().NumSamples++;
        }
        const auto count = static_cast<std::int32_t>(Samples.size());
        last.Sample = closed ? 0 : count - 1;
        for (SnakeNode& node : nodes)
            node.Sample = Min(node.Sample, count - 1);
        SnakeSection end;
        end.Type = Corner;
        end.FirstNode = Length - 1;
        end.FirstSample = count;
        Sections.values_.push_back(end);
        NumAxisSamples = count;
        sampling_++;
        return NoError;
    });
    if (code != NoError) Forget();
    return code;
}

int Snake::Sampled(Snake& own, const Snake*& axis) const
{
    axis = this;
    if (NumAxisSamples >= 0) return NoError;
    axis = &own;
    if (const int code = WithMemory(images::noWorkingMemory, [&] { own = *this; })) return code;
    return own.Refresh();
}

} // namespace Tesk
