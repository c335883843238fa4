// The inside of polygons and ellipses as runs.
#pragma once

#include "measure/region/RunSets.h"

namespace Tesk::regions {

/// Appends the runs between the sides of a closed polygon, taken in pairs along each row. A side crosses all rows that
/// it meets but that of its lower end.
void AppendPolygon(std::span<const Site> vertices, int label, RunList& runs);

/// Appends the runs of an ellipse, half axes `axis`, the first turned by an angle in radians. Coordinates beyond those
/// of runs are cut off.
void AppendEllipse(XY center, XY axis, double angle, RunList& runs);

} // namespace Tesk::regions
