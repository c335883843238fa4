// Reductions of chains of sites, for paths and for the classes that have chains of their own.
#pragma once

#include "foundation/Records.h"

#include <span>
#include <vector>

namespace Tesk::paths {

/// The vertices of an open polygon: from each one the chord is drawn out as long as the middle site under it is near.
/// Both ends stay. Throws `std::bad_alloc`, as the next.
void ChordVertices(std::span<const Site> sites, double deviation, std::vector<Site>& vertices);

/// The vertices of lines and arcs; of an open chain both ends stay. None for fewer than 4 sites.
std::vector<ArcSite> LinesAndArcs(std::span<const Site> sites, bool closed, double deviation);

} // namespace Tesk::paths
