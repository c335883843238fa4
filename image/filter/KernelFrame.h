// The one frame of the neighbourhood filters: check, size and detach, keep the source apart from the destination, and
// walk over rows that are replicated beyond the window.
#pragma once

#include "image/core/Destination.h"
#include "image/core/PixelLoops.h"
#include "image/core/PixelTypes.h"
#include "image/core/Refusals.h"
#include "image/filter/LocalMeans.h"
#include "image/filter/RowRing.h"

#include <algorithm>
#include <vector>

namespace Tesk::filters {

using namespace images;

inline int CheckSizes(int width, int height)
{
    if (const int code = CheckSize(L"Width", width)) return code;
    return CheckSize(L"Height", height);
}

inline int CheckClip(GrayClipping clip, std::initializer_list<GrayClipping> served)
{
    for (const GrayClipping mode : served)
        if (clip == mode) return NoError;
    return RefuseClip(clip);
}

/// Runs the working part of a method; what it allocates beyond the memory there is becomes a refusal.
template <typename F>
void Guarded(const Entry& entry, F work)
{
    entry.Guards(noFilterBuffers, work);
}

} // namespace Tesk::filters
