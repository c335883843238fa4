// What the methods of paths share: the lack of memory, products of differences of sites, the unit of angles.
#pragma once

#include "foundation/Entry.h"
#include "image/Image.h"
#include "image/core/Saturation.h"
#include "measure/Path.h"

#include <cmath>
#include <new>
#include <numbers>
#include <stdexcept>

namespace Tesk::paths {

using images::Saturated;

inline constexpr double degreesPerRadian = 180 / std::numbers::pi;

/// Runs `f`, in which containers may be without memory; false without it.
template <typename F>
bool Guarded(const Entry& entry, F f)
{
    try {
        f();
        return true;
    } catch (const std::bad_alloc&) {
    } catch (const std::length_error&) {
    }
    return !entry.Refuse(CannotAllocate, L"Cannot (re)allocate the path Buffer");
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
