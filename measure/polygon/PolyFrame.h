// What the methods of polygons share.
#pragma once

#include "foundation/Entry.h"
#include "measure/Poly.h"

namespace Tesk::polygons {

inline constexpr const wchar_t* noMemory = L"Cannot (re)allocate the polygon Buffer";
/// What is said of a polygon without vertices.
inline constexpr const wchar_t *asPolygon = L"This polygon is void", *asPath = L"This path is void";

} // namespace Tesk::polygons
