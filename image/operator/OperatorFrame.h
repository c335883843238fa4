// The one frame of point operations: check, size, detach, refuse types, loop over rows.
#pragma once

#include "image/core/Destination.h"
#include "image/core/PixelLoops.h"
#include "image/core/PixelTypes.h"
#include "image/core/Refusals.h"

#include <cstring>

namespace Tesk::points {

using namespace images;

inline constexpr Types bytePixels = {Gray, Rgb};

/// For a destination of the sources' type. Another one than those listed is refused once the destination is sized.
bool Prepare(const Entry& entry, const Image& src, Types types, Image& dst, Sources& held);
bool Prepare(const Entry& entry, const Image& src, const Image& srcB, Types types, Image& dst, Sources& held);

} // namespace Tesk::points
