// What the methods of regions share: the words of their refusals, taking a result.
#pragma once

#include "foundation/Entry.h"
#include "image/Image.h"
#include "measure/Region.h"
#include "measure/region/RunLists.h"
#include "measure/region/RunPixels.h"
#include "measure/region/RunSets.h"

namespace Tesk::regions {

inline constexpr const wchar_t* noRuns = L"Cannot allocate the runs buffer";

inline constexpr const wchar_t *voidSource = L"This region is void", *voidRegion = L"This Region is void",
                               *emptyRegion = L"This region is empty";

inline int RefuseType(PixelTypes type, const wchar_t* wanted)
{
    return Status::Format(UnsupportedType, L"The image type (%ls) is not supported for this operation, use %ls",
                          PixelTypeName(type), wanted);
}

} // namespace Tesk::regions

namespace Tesk {

/// Takes what `make` gives, a list in scan order; without memory everything stays.
template <typename F>
void Region::Become(const Entry& entry, F make)
{
    entry.Guards(regions::noRuns, [&] { TakeRuns(make(), true); });
}

} // namespace Tesk
