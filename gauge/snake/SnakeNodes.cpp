// The nodes of snakes: appended one by one or as whole figures, moved, transferred.
#include "foundation/Angles.h"
#include "foundation/Archive.h"
#include "foundation/Entry.h"
#include "foundation/Graph.h"
#include "gauge/SnakeGauge.h"
#include "image/Image.h"

#include <array>
#include <atomic>
#include <cmath>
#include <utility>

namespace Tesk {

namespace {

constexpr const wchar_t* noMemory = L"Cannot (re)allocate the nodes of the snake";
constexpr ArchiveFormat format = {"TSNK", 1, L"File \"%ls\" is not a Snake file",
                                  L"The version number \"%d\" of this Snake is too high"};
constexpr int nodeBytes = 4 + 4 + 3 * 16;

bool IsFinite(XY p)
{
    return std::isfinite(p.X) && std::isfinite(p.Y);
}

XY FromScreen(XY position)
{
    return {position.X / Graph::Zoom, position.Y / Graph::Zoom};
}

bool IsCorner(SectionType type)
{
    return type == HCorner || type == SCorner;
}

int CheckPlace(XY place)
{
    return IsFinite(place) ? NoError : Status::Format(OutOfRange, L"The position of a node must be finite");
}

int CheckSize(double size)
{
    if (size > 0 && std::isfinite(size)) return NoError;
    return Status::Format(OutOfRange, L"The size (%f) must be positive", size);
}

} // namespace

/// A node in its place behind others.
int Snake::CheckAppend(XY place, SectionType type) const
{
    if (const int code = CheckPlace(place)) return code;
    const int last = Length - (Closed && Length > 1 ? 2 : 1);
    const bool follows = last >= 0;
    const SectionType before = follows ? Nodes[static_cast<std::size_t>(last)].Type : HCorner;
    switch (type) {
    case HCorner:
    case SCorner:
        return NoError;
    case Circular:
        if (follows && IsCorner(before)) return NoError;
        return Status::Format(IncompatibleType, L"A Circular node must follow a HCorner/SCorner node");
    case Spline:
        if (follows && (IsCorner(before) || before == Spline)) return NoError;
        return Status::Format(IncompatibleType, L"A Spline node must follow a HCorner/SCorner or a Spline node");
    case Elliptic:
        if (follows && (IsCorner(before) || before == Elliptic)) return NoError;
        return Status::Format(IncompatibleType, L"An Elliptic node must follow a HCorner/SCorner or an Elliptic node");
    default:
        return Status::Format(IncompatibleType, L"A node cannot be of the type %d", int(type));
    }
}

void Snake::Forget()
{
    NumAxisSamples = -1;
    NumSections = 0;
    Samples.values_.clear();
    Sections.values_.clear();
}

void Snake::Change()
{
    static std::atomic<std::int64_t> lastEdition{0};
    edition_ = ++lastEdition;
    Forget();
}

void Snake::Empty()
{
    Change();
    Nodes.values_.clear();
    Length = 0;
    Closed = false;
    Handle = NoHandle;
    held_ = -1;
}

void Snake::Add(XY place, SectionType type)
{
    SnakeNode node;
    node.Position = place;
    node.Type = type;
    auto& nodes = Nodes.values_;
    nodes.reserve(nodes.size() + 2);
    if (Closed && nodes.size() == 1) nodes.push_back(nodes.front());
    nodes.insert(Closed && !nodes.empty() ? nodes.end() - 1 : nodes.end(), node);
    Length = static_cast<int>(nodes.size());
    Change();
}

void Snake::Append(XY Position, SectionType Type)
{
    const Entry entry("Tesk::Snake::Append");
    const XY place = FromScreen(Position);
    if (entry.Refuses(CheckAppend(place, Type))) return;
    entry.Guards(noMemory, [&] { Add(place, Type); });
}

void Snake::AddFigure(const Entry& entry, std::span<const XY> places, SectionType first, SectionType others)
{
    for (const XY place : places)
        if (entry.Refuses(CheckPlace(place))) return;
    entry.Guards(noMemory, [&] {
        std::vector<SnakeNode> nodes(places.size() + 1);
        for (std::size_t i = 0; i < nodes.size(); i++) {
            nodes[i].Position = places[i % places.size()];
            nodes[i].Type = i % places.size() == 0 ? first : others;
        }
        Empty();
        Nodes.values_ = std::move(nodes);
        Length = static_cast<int>(Nodes.size());
        Closed = true;
    });
}

void Snake::CircleAppend(XY Center, double Radius)
{
    const Entry entry("Tesk::Snake::CircleAppend");
    if (Length > 0) {
        entry.Refuse(IncompatibleSize, L"A full Circle may only be Appended to an empty Snake");
        return;
    }
    if (entry.Refuses(CheckSize(Radius))) return;
    const XY center = FromScreen(Center);
    const double radius = Radius / Graph::Zoom;
    const std::array<XY, 2> places = {XY(center.X + radius, center.Y), XY(center.X - radius, center.Y)};
    AddFigure(entry, places, SCorner, Circular);
}

void Snake::EllipseAppend(XY Center, double FirstAxis, double SecondAxis, double Angle)
{
    const Entry entry("Tesk::Snake::EllipseAppend");
    if (Length > 0) {
        entry.Refuse(IncompatibleSize, L"A full Ellipse may only be Appended to an empty Snake");
        return;
    }
    if (entry.Refuses(CheckSize(FirstAxis)) || entry.Refuses(CheckSize(SecondAxis))) return;
    const XY center = FromScreen(Center);
    const double a = FirstAxis / Graph::Zoom, b = SecondAxis / Graph::Zoom, turned = ToRadians(Angle);
    const std::array<XY, 4> places = {FromFrame({a, 0}, center, turned), FromFrame({0, b}, center, turned),
                                      FromFrame({-a, 0}, center, turned), FromFrame({0, -b}, center, turned)};
    AddFigure(entry, places, SCorner, Elliptic);
}

void Snake::RectangleAppend(XY Center, XY Sides, double Angle)
{
    const Entry entry("Tesk::Snake::RectangleAppend");
    if (Length > 0) {
        entry.Refuse(IncompatibleSize, L"A Rectangle may only be Appended to an empty Snake");
        return;
    }
    if (entry.Refuses(CheckSize(Sides.X)) || entry.Refuses(CheckSize(Sides.Y))) return;
    const XY center = FromScreen(Center);
    const double x = Sides.X / 2 / Graph::Zoom, y = Sides.Y / 2 / Graph::Zoom, turned = ToRadians(Angle);
    const std::array<XY, 4> places = {FromFrame({-x, -y}, center, turned), FromFrame({x, -y}, center, turned),
                                      FromFrame({x, y}, center, turned), FromFrame({-x, y}, center, turned)};
    AddFigure(entry, places, HCorner, HCorner);
}

void Snake::Close()
{
    const Entry entry("Tesk::Snake::Close");
    if (Closed) return;
    entry.Guards(noMemory, [&] {
        if (Length > 0) {
            const SnakeNode first = Nodes[0];
            Add(first.Position, first.Type);
        }
        Closed = true;
    });
}

void Snake::Clear()
{
    const Entry entry("Tesk::Snake::Clear");
    Empty();
}

/// Whether the nodes are those of one whole ellipse.
bool Snake::IsEllipse() const
{
    constexpr int nodesOfEllipse = 5;
    return Closed && Length == nodesOfEllipse && Nodes[1].Type == Elliptic && Nodes[2].Type == Elliptic &&
           Nodes[3].Type == Elliptic;
}

void Snake::MoveNode(int index, XY to)
{
    auto& nodes = Nodes.values_;
    const auto move = [&](int i, XY place) {
        nodes[static_cast<std::size_t>(i)].Position = place;
        if (!Closed) return;
        if (i == 0) nodes.back().Position = place;
        if (i == Length - 1) nodes.front().Position = place;
    };
    if (IsEllipse()) {
        // About a centre that stays, so that all four remain on one ellipse.
        const std::size_t at = static_cast<std::size_t>(index) % 4, opposite = (at + 2) % 4;
        const XY p = nodes[at].Position, q = nodes[opposite].Position;
        move(static_cast<int>(opposite), {p.X + q.X - to.X, p.Y + q.Y - to.Y});
    }
    move(index, to);
    Change();
}

void Snake::TransferNodes(Archive& block)
{
    int length = Length;
    bool closed = Closed;
    block(closed);
    block.Count(length, nodeBytes);
    if (!block.Good() || block.Ended()) return;
    std::vector<SnakeNode> read;
    if (block.Reading()) read.resize(static_cast<std::size_t>(length));
    bool finite = true;
    for (SnakeNode& node : block.Reading() ? read : Nodes.values_) {
        block(node.Type, node.Sample, node.Position.X, node.Position.Y, node.In.X, node.In.Y, node.Out.X, node.Out.Y);
        finite = finite && IsFinite(node.Position);
    }
    if (!finite) block.Refuse(CannotRead, L"File \"%ls\" has a node that is at no place", block.Name());
    if (!block.Reading() || !block.Good()) return;
    Empty();
    Nodes.values_ = std::move(read);
    Length = length;
    Closed = closed;
}

void Snake::Transfer(Archive& Block)
{
    Block.Header(format);
    TransferNodes(Block);
}

} // namespace Tesk
