// Polygons with straight sides and circular arcs, and their inside as runs.
#pragma once

#include "measure/region/RunSets.h"

namespace Tesk {

class Quad;

namespace regions {

/// A corner, and how it is joined to the one before: by a straight side, or by an arc of that radius. Positive radii
/// turn clockwise on the screen. An arc keeps to one side of its circle's upright axis.
struct CurvedVertex
{
    double x, y;
    double radius = 0;
};

/// The outline of a quad, from its first corner on; bent, from where the outer arc starts.
std::vector<CurvedVertex> OutlineOf(const Quad& quad);

/// Appends the runs between the sides, row by row; both ends are rounded down and belong to the inside. Of the rows
/// the lowest one is left out.
void AppendCurved(std::span<const CurvedVertex> vertices, int label, RunList& runs);

} // namespace regions

} // namespace Tesk
