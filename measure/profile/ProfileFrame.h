// What the methods of profiles share: the checks of a source, and the refusal of a lack of memory.
#pragma once

#include "foundation/Entry.h"
#include "image/Image.h"
#include "image/core/PixelTypes.h"
#include "image/core/Saturation.h"
#include "measure/Profile.h"

namespace Tesk::profiles {

using images::Channels;
using images::IsGray;
using images::Saturated;
using images::Truncated;

/// Types whose samples are single 32-bit numbers.
constexpr bool IsWhole(PixelTypes type)
{
    return IsGray(type) || type == Int;
}

inline int RefuseType(PixelTypes type)
{
    return Status::Format(UnsupportedType, L"Profile Type (%ls) not supported for this operation", PixelTypeName(type));
}

inline int RefuseEmpty()
{
    return Status::Format(VoidObject, L"The profile is empty");
}

/// A profile that has samples, of a type for which `supports(type)` holds.
template <typename F>
int CheckSamples(const Profile& profile, F supports)
{
    if (profile.Length < 1) return RefuseEmpty();
    return supports(profile.Type) ? NoError : RefuseType(profile.Type);
}

inline int RefuseMemory()
{
    return Status::Format(CannotAllocate, L"Cannot allocate the profile Buffer");
}

/// Runs `work`, in which containers may be without memory. The code of what was refused.
template <typename F>
int Allocating(F work)
{
    return WithMemory(L"Cannot allocate an internal buffer", work);
}

/// The same for a public method.
template <typename F>
void Guarded(const Entry& entry, F f)
{
    entry.Guards(L"Cannot allocate an internal buffer", f);
}

} // namespace Tesk::profiles
