// What the methods of paths share: the lack of memory, products of differences of sites.
#pragma once

#include "foundation/Entry.h"
#include "image/Image.h"
#include "image/core/Saturation.h"
#include "measure/Path.h"

#include <cmath>

namespace Tesk::paths {

using images::Saturated;

/// Runs `work`, in which containers may be without memory. The code of what was refused.
template <typename F>
int Allocating(F work)
{
    return WithMemory(L"Cannot (re)allocate the path Buffer", work);
}

inline bool Same(Site a, Site b)
{
    return a.X == b.X && a.Y == b.Y;
}

/// The cross product of `p - a` and `q - a`: positive where the turn from one to the other is clockwise on the screen.
inline std::int64_t Cross(Site a, Site p, Site q)
{
    return std::int64_t{p.X - a.X} * (q.Y - a.Y) - std::int64_t{p.Y - a.Y} * (q.X - a.X);
}

inline std::int64_t SquaredDistance(Site a, Site b)
{
    return std::int64_t{b.X - a.X} * (b.X - a.X) + std::int64_t{b.Y - a.Y} * (b.Y - a.Y);
}

} // namespace Tesk::paths
