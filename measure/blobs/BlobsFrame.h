// What the methods of blobs share.
#pragma once

#include "foundation/Entry.h"
#include "image/Image.h"
#include "measure/Blobs.h"

namespace Tesk::blobs {

inline constexpr const wchar_t *noTable = L"Cannot allocate the array buffer",
                               *noRuns = L"Cannot allocate the runs buffer";

/// What the cell of a feature that was not worked out holds.
inline constexpr std::uint32_t notComputed = 0x80000000u;

/// Reports an index that is out of range, which goes under no method's name.
inline bool RefusesIndex(int code)
{
    return Status::Raise(code, "");
}

/// `Int` or `Float`, and the name, of a predefined feature.
int FeatureType(int feature);
const wchar_t* FeatureName(int feature);

} // namespace Tesk::blobs
