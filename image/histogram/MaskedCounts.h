// Counting the pixels of each level under the runs of a region.
#pragma once

#include "foundation/Records.h"

#include <cstdint>
#include <span>
#include <vector>

namespace Tesk {

class Image;

namespace levels {

/// How often each level occurs among the pixels of the runs, cut to the window, from whose corner they count; a pixel
/// as often as runs cover it. For `Gray`, `Gray16` and `Rgb`: `entries` levels of one or three channels, red first,
/// those of a level side by side. Values beyond the last level count there. May throw `std::bad_alloc`.
std::vector<std::uint64_t> CountMasked(const Image& src, std::span<const LabeledRun> mask, int entries);

} // namespace levels

} // namespace Tesk
