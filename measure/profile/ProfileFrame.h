// What the methods of profiles share: the checks of a source, and the refusal of a lack of memory.
#pragma once

#include "foundation/Entry.h"
#include "image/Image.h"
#include "measure/Profile.h"

namespace Tesk::profiles {

/// Types whose samples statistics and edges are taken of.
constexpr bool IsGray(PixelTypes type)
{
    return type == Gray || type == Gray16 || type == Gray32;
}

/// Types whose samples are single 32-bit numbers.
constexpr bool IsWhole(PixelTypes type)
{
    return IsGray(type) || type == Int;
}

/// Numbers in a sample of those types that hold 32-bit numbers.
constexpr int Channels(PixelTypes type)
{
    return type == Rgb ? 3 : type == Rgba ? 4 : 1;
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

/// Runs `f`, in which containers may be without memory.
template <typename F>
void Guarded(const Entry& entry, F f)
{
    entry.Guards(L"Cannot allocate an internal buffer", f);
}

inline int Saturated(std::int64_t value)
{
    return static_cast<int>(Clamp<std::int64_t>(value, INT32_MIN, INT32_MAX));
}

/// Truncates, with what an `int` cannot hold held at its ends; not a number counts as 0.
inline int Truncated(double value)
{
    return value >= 2147483647.0    ? INT32_MAX
           : value <= -2147483648.0 ? INT32_MIN
           : value == value         ? static_cast<int>(value)
                                    : 0;
}

} // namespace Tesk::profiles
