// Drawing of trained and of matched shapes.
#include "match/ShapeMatcher.h"

#include "foundation/Entry.h"
#include "foundation/Graph.h"
#include "image/core/Refusals.h"
#include "match/shape/ShapeModel.h"

#include <cwchar>
#include <vector>

namespace Tesk {

using namespace shapes;

namespace {

constexpr int cellGap = 20, crossRadius = 5;
constexpr double textPlace = 0.4;

/// A place for a shape, in image coordinates.
struct Cell
{
    double x, y, width, height;
};

} // namespace

/// Calls `f(index, shape, cell)` for the shapes that the area can hold, row by row; false if it cannot hold all.
template <typename F>
bool ShapeMatcher::EachCell(const Limits& area, int shapeIndex, bool scaled, F f) const
{
    const double right = static_cast<double>(area.X) + area.Width, bottom = static_cast<double>(area.Y) + area.Height;
    double x = area.X, y = area.Y, tallest = 0;
    for (int i = 0; i < NumTrained; i++) {
        if (shapeIndex >= 0 && shapeIndex != i) continue;
        const ShapeModel& shape = *shapes_[static_cast<std::size_t>(i)];
        const double ratio = scaled && shape.scale > 0 ? shape.scale : 1, width = shape.box.Width * ratio,
                     height = shape.box.Height * ratio;
        if (x > area.X && x + width > right) {
            x = area.X;
            y += tallest + cellGap;
            tallest = 0;
        }
        if (x + width > right || y + height > bottom) return false;
        f(i, shape, Cell{x, y, width, height}, ratio);
        x += width + cellGap;
        tallest = Max(tallest, height);
    }
    return true;
}

void ShapeMatcher::DrawTrained(Limits Area, int ShapeIndex, bool ViewClasses, bool Scaled) const
{
    const Entry entry("Tesk::ShapeMatcher::DrawTrained");
    if (RefusesUntrained(entry)) return;
    if (ShapeIndex < -1 || ShapeIndex >= NumTrained) {
        entry.Refuse(OutOfRange, L"The shape index (%d) must be in range [0..%d]", ShapeIndex, NumTrained - 1);
        return;
    }
    bool all = false;
    const bool done = entry.Guards(images::noWorkingMemory, [&] {
        std::vector<XY> points;
        all = EachCell(Area, ShapeIndex, Scaled, [&](int i, const ShapeModel& shape, const Cell& cell, double ratio) {
            const GraphSettings settings(Graph::Zoom * ratio);
            if (Graph::AutoColors) Graph::LineColor = i == Selected ? Blue : Green;
            const double left = cell.x / ratio - shape.box.X, top = cell.y / ratio - shape.box.Y;
            points.clear();
            for (const Site p : shape.outline)
                points.emplace_back(p.X + left, p.Y + top);
            Graph::Polyline(points, true);
            Graph::Cross(shape.center.X + left, shape.center.Y + top, crossRadius);
            if (!ViewClasses) return;
            wchar_t text[16];
            std::swprintf(text, 16, L"%d", shape.classIndex);
            Graph::Text((cell.x + textPlace * cell.width) / ratio, (cell.y + textPlace * cell.height) / ratio, text);
        });
    });
    if (done && !all) entry.Refuse(CannotPerform, L"Not enough room to draw the shapes, enlarge the plotting area");
}

void ShapeMatcher::DrawMatched(bool ViewClass, bool ViewSimilarity) const
{
    const Entry entry("Tesk::ShapeMatcher::DrawMatched");
    if (Matched < 0 || !matched_) return;
    const double* t = transform_;
    const double d = t[0] * t[4] - t[1] * t[3];
    const ShapeModel& shape = *matched_;
    const XY middle = shape.MapCenter();
    entry.Guards(images::noWorkingMemory, [&] {
        std::vector<XY> points;
        points.reserve(shape.outline.size());
        for (const Site p : shape.outline) {
            const double u = p.X * shape.scale + middle.X - shape.scale * shape.center.X - t[2],
                         v = p.Y * shape.scale + middle.Y - shape.scale * shape.center.Y - t[5];
            points.emplace_back((u * t[4] - v * t[1]) / d, (v * t[0] - u * t[3]) / d);
        }
        Graph::Polyline(points, true);
    });
    if (!ViewClass) return;
    wchar_t text[64];
    if (ViewSimilarity)
        std::swprintf(text, 64, L"%d (%.1f)", int(Class), double(Similarity));
    else
        std::swprintf(text, 64, L"%d", int(Class));
    Graph::Text(X, Y, text);
}

int ShapeMatcher::HitShape(Limits Area, int X, int Y, bool Scaled) const
{
    const Entry entry("Tesk::ShapeMatcher::HitShape");
    const double x = X / Graph::Zoom, y = Y / Graph::Zoom;
    int hit = -1;
    EachCell(Area, -1, Scaled, [&](int i, const ShapeModel&, const Cell& cell, double) {
        if (x >= cell.x && x < cell.x + cell.width && y >= cell.y && y < cell.y + cell.height) hit = i;
    });
    Selected = hit;
    return hit;
}

} // namespace Tesk
