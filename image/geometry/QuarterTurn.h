// Quarter turns of images for other classes, in their inner form, and the way back of places in them.
#pragma once

#include "foundation/Graph.h"
#include "image/Image.h"

namespace Tesk::turns {

/// `Geometry::Turn`. True, and reported, if it was refused.
bool TurnPixels(const Entry& entry, int quadrant, const Image& src, Image& dst);

/// Where a point or a box of a turned window stood before, in a window of `width` by `height` pixels.
XY TurnedBack(int quadrant, const XY& point, int width, int height);
SourceRectangle TurnedBack(int quadrant, const SourceRectangle& box, int width, int height);

} // namespace Tesk::turns
