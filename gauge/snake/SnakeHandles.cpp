// Snakes on the screen: drawn, hit and dragged.
#include "foundation/Entry.h"
#include "foundation/Graph.h"
#include "gauge/SnakeGauge.h"
#include "gauge/snake/SnakeArc.h"
#include "gauge/snake/SnakeProbe.h"
#include "image/Image.h"
#include "image/core/Refusals.h"

#include <cstddef>
#include <vector>

namespace Tesk {

using namespace snakes;

namespace {

constexpr int markArms = 3;

int WholePixel(double v)
{
    constexpr double farthest = 1e9;
    return v == v ? static_cast<int>(Clamp(v, -farthest, farthest)) : 0;
}

ScreenPointer PointerAt(XY position, const GaugeWindow& window)
{
    return {WholePixel(position.X), WholePixel(position.Y), XY(window.X, window.Y)};
}

void DrawStroke(XY from, XY to)
{
    Graph::Line(from.X, from.Y, to.X, to.Y);
}

} // namespace

void Snake::SetWindow(const Image& Mother)
{
    SetWindow(Mother.X, Mother.Y, Mother.Width, Mother.Height);
}

void Snake::SetWindow(int X, int Y, int Width, int Height)
{
    const Entry entry("Tesk::Snake::SetWindow");
    Window = {X, Y, Width, Height};
}

int Snake::ClosestTo(XY Position)
{
    const Entry entry("Tesk::Snake::ClosestTo");
    const ScreenPointer pointer = PointerAt(Position, Window);
    held_ = pointer.Nearest(Length, [&](int i) { return Nodes[static_cast<std::size_t>(i)].Position; });
    Handle = held_ < 0 ? NoHandle : ToHandle;
    if (held_ < 0) return -1;
    const XY node = Nodes[static_cast<std::size_t>(held_)].Position;
    grab_.Take(pointer.Pixel(), node);
    // An axis that cannot be sampled is not hit.
    if (pointer.IsOn(node) || Refresh() != NoError) return held_;
    const auto at = [&](int i) {
        const AxisSample& sample = Samples[static_cast<std::size_t>(i)];
        return XY(sample.X, sample.Y);
    };
    if (pointer.FirstOn(NumAxisSamples, at) >= 0) Handle = AllHandle;
    return held_;
}

void Snake::Drag(XY Position)
{
    const Entry entry("Tesk::Snake::Drag");
    if (held_ < 0 || held_ >= Length) return;
    const XY to = grab_.Moved(PointerAt(Position, Window).Pixel());
    if (Handle != AllHandle) {
        MoveNode(held_, to);
        return;
    }
    const XY from = Nodes[static_cast<std::size_t>(held_)].Position;
    for (SnakeNode& node : Nodes.values_)
        node.Position = {node.Position.X + to.X - from.X, node.Position.Y + to.Y - from.Y};
    Change();
}

void Snake::Draw(bool Handles, bool Axis) const
{
    const Entry entry("Tesk::Snake::Draw");
    Snake own;
    const Snake* axis = this;
    if (Axis && Length >= 2 && Sampled(own, axis) == NoError)
        entry.Guards(images::noWorkingMemory, [&] {
            std::vector<XY> places;
            for (const AxisSample& sample : axis->Samples)
                places.push_back(InWindow({sample.X, sample.Y}));
            Graph::Polyline(places, Closed);
        });
    for (std::size_t i = 0; Handles && i < Nodes.size(); i++)
        DrawHandle(InWindow(Nodes[i].Position), Nodes[i].Type != HCorner);
}

void SnakeGauge::Draw(bool Handles, bool Axis, bool Probes) const
{
    Snake own;
    const Snake* axis = this;
    if (Probes && Length >= 2 && Sampled(own, axis) == NoError)
        for (std::size_t i = 0; i < axis->Samples.size(); i += static_cast<std::size_t>(Step())) {
            const AxisSample& sample = axis->Samples[i];
            const double breadth = HeldBreadth(Breadth);
            DrawStroke(InWindow(Aside(sample, -breadth)), InWindow(Aside(sample, breadth)));
        }
    Snake::Draw(Handles, Axis);
}

/// Strokes between the edges of probes that follow each other, in red where one of them does not conform.
void SnakeGauge::DrawEdge(bool Points, bool Fitted) const
{
    const Entry entry("Tesk::SnakeGauge::DrawEdge");
    if (CheckInspected(false) != NoError) return;
    const GraphSettings kept;
    const PredefinedColors line = Graph::LineColor, point = Graph::PointColor;
    const auto color = [&](bool conforms) {
        const bool marked = Graph::AutoColors && !conforms;
        Graph::LineColor = marked ? Red : line;
        Graph::PointColor = marked ? Red : point;
    };
    const auto step = static_cast<std::size_t>(inspectedStep_), count = (Samples.size() + step - 1) / step;
    const int edges = inspected_ == RibbonInspection ? 2 : 1;
    for (std::size_t i = 0; i < count; i++) {
        const AxisSample &sample = Samples[i * step], &next = Samples[(i + 1) % count * step];
        const bool joined = sample.State != Missing && next.State != Missing && (i + 1 < count || Closed);
        for (int k = 0; k < edges && sample.State != Missing; k++) {
            const auto edge = [&](const AxisSample& s) {
                return InWindow(k == 0 ? XY(s.EdgeX, s.EdgeY) : XY(s.Edge2X, s.Edge2Y));
            };
            color(sample.State == Conforming && (!joined || next.State == Conforming));
            if (joined) DrawStroke(edge(sample), edge(next));
            color(sample.State == Conforming);
            if (Points) Graph::Cross(edge(sample).X, edge(sample).Y, markArms);
        }
        if (sample.State != Missing || !Points) continue;
        color(false);
        const XY place = InWindow({sample.X, sample.Y});
        Graph::Cross(place.X, place.Y, markArms);
    }
    color(true);
    if (Fitted)
        for (int i = 0; i < NumSections; i++)
            DrawFitted(Sections[static_cast<std::size_t>(i)]);
}

void SnakeGauge::DrawFitted(const SnakeSection& section) const
{
    if (section.Type == HCorner) DrawStroke(InWindow(section.FittedBeg), InWindow(section.FittedEnd));
    if (section.Type != Circular) return;
    const SnakeNode* nodes = Nodes.data() + section.FirstNode;
    Arc arc;
    if (!ArcThrough(nodes[0].Position, nodes[1].Position, nodes[2].Position, arc)) return;
    const XY center = InWindow(section.FittedCenter);
    const double from = Min(arc.start, arc.start + arc.sweep), to = Max(arc.start, arc.start + arc.sweep);
    Graph::EllipseArcRadians(center.X, center.Y, section.FittedRadius, section.FittedRadius, 0, from, to);
}

} // namespace Tesk
