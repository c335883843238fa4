// The frame of operations that read the neighbours of a pixel: check, size and detach the destination, hold the source
// apart from it.
#pragma once

#include "image/core/Destination.h"
#include "image/core/PixelTypes.h"
#include "image/core/Refusals.h"

namespace Tesk::morpho {

using namespace images;

inline constexpr Types grayTypes = {Gray, Gray16};

/// Checks the source, and holds it apart from the destination that is sized and detached. True, and reported, if the
/// operation must end.
inline bool Prepare(const Entry& entry, const Image& src, Types types, Image& dst, Sources& held,
                    PixelTypes dstType = Undefined, const wchar_t* required = L"")
{
    return entry.Refuses(CheckType(src, types, required)) ||
           images::Prepare(entry, src, dst, dstType, held, InPlace::Copied);
}

/// Runs the part of an operation that allocates working memory; false, and reported, if there is none.
template <typename F>
bool Guarded(const Entry& entry, F work)
{
    return entry.Guards(noWorkingMemory, work);
}

} // namespace Tesk::morpho
