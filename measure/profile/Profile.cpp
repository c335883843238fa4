// The store and the window of a profile: sizing, sharing, growing, access, entry checks.
#include "measure/Profile.h"

#include "measure/profile/ProfileFrame.h"

#include <cstring>
#include <utility>

namespace Tesk {

namespace {

/// A store is addressed with 32 bits.
constexpr std::int64_t largestStore = INT32_MAX;

int& Dummy()
{
    thread_local int dummy = 0;
    return dummy;
}

} // namespace

ReadOnly<DraggingHandles, Profile> Profile::Handle(NoHandle);

int SampleSize(PixelTypes Type)
{
    switch (Type) {
    case Gray:
    case Gray16:
    case Gray32:
    case Grad:
    case GeoMap:
    case Int:
    case Float:
    case IntXY:
        return 4;
    case Rgb:
        return 12;
    case Rgba:
    case FloatXY:
        return 16;
    case Dble:
        return 8;
    case Bool:
        return 1;
    default:
        return 0;
    }
}

int CheckProfile(const Profile& Src, PixelTypes Type)
{
    if (Src.Type == Undefined || Src.Length < 1) return Status::Format(VoidObject, L"Void source profile");
    if (Type != Undefined && Src.Type != Type)
        return Status::Format(IncompatibleType, L"Incompatible source profile Type, %ls instead of %ls",
                              PixelTypeName(Src.Type), PixelTypeName(Type));
    return NoError;
}

int CheckProfiles(const Profile& Src, const Profile& SrcB)
{
    if (const int code = CheckProfile(Src)) return code;
    if (const int code = CheckProfile(SrcB)) return code;
    if (Src.Type != SrcB.Type)
        return Status::Format(IncompatibleType, L"Incompatible source profile Types, %ls vs. %ls",
                              PixelTypeName(Src.Type), PixelTypeName(SrcB.Type));
    if (Src.Length != SrcB.Length)
        return Status::Format(IncompatibleSize, L"Incompatible source profile sizes, (%d) vs. (%d)", int(Src.Length),
                              int(SrcB.Length));
    return NoError;
}

Profile::Profile(const Profile& Other)
{
    *this = Other;
}

Profile& Profile::operator=(const Profile& Other)
{
    if (this == &Other) return *this;
    Share(Other, true);
    Detach(true);
    // Without memory for a copy the samples are shared still; a write then moves them first.
    return *this;
}

Profile::Profile(Profile&& Other) noexcept
{
    *this = std::move(Other);
}

Profile& Profile::operator=(Profile&& Other) noexcept
{
    if (this == &Other) return *this;
    block_ = std::move(Other.block_);
    Type = Other.Type;
    ElementSize = Other.ElementSize;
    Scale = Other.Scale;
    Source = std::move(Other.Source);
    StoreLength = Other.StoreLength;
    I = Other.I;
    Length = Other.Length;
    PlaceFirst();
    Other.StoreLength = 0;
    Other.ResetWindow();
    return *this;
}

void Profile::PlaceFirst()
{
    First = block_.Data() ? block_.Data() + static_cast<std::ptrdiff_t>(ElementSize) * I : nullptr;
}

void Profile::ResetWindow()
{
    I = 0;
    Length = StoreLength;
    PlaceFirst();
}

bool Profile::TrySet(int length, PixelTypes type)
{
    const std::int64_t bytes = std::int64_t{length} * SampleSize(type);
    if (length < 0 || SampleSize(type) == 0 || bytes > largestStore) return false;
    if (static_cast<std::size_t>(bytes) > block_.Size() || block_.IsShared())
        if (!block_.Allocate(static_cast<std::size_t>(bytes))) return false;
    Type = type;
    ElementSize = SampleSize(type);
    StoreLength = length;
    Scale = 1;
    ResetWindow();
    return true;
}

bool Profile::DetachIfShared()
{
    if (!Status::Shallow || !block_.IsShared()) return true;
    const std::uint8_t* before = First;
    Detach(true);
    return First != before;
}

bool Profile::Prepare(const Profile& src, Profile& dst, PixelTypes type, Profile& held)
{
    const bool inPlace = dst.block_.Data() == src.block_.Data() && dst.I == src.I && dst.Length == src.Length &&
                         dst.Type == src.Type && type == src.Type;
    if (inPlace) {
        const bool detached = dst.DetachIfShared();
        held.Share(src, true);
        return detached;
    }
    held.Share(src, true);
    if (!dst.TrySet(held.Length, type)) return false;
    dst.Scale = held.Scale;
    dst.Source = held.Source;
    return true;
}

int Profile::Size(int length, PixelTypes type)
{
    if (SampleSize(type) == 0) return profiles::RefuseType(type);
    if (length < 0) return Status::Format(OutOfRange, L"The profile length (%d) must not be negative", length);
    return TrySet(length, type) ? NoError : profiles::RefuseMemory();
}

void Profile::Set(const Profile& Src, PixelTypes Type)
{
    const Entry entry("Tesk::Profile::Set");
    const PixelTypes type = Type == Undefined ? PixelTypes(Src.Type) : Type;
    if (entry.Refuses(CheckProfile(Src))) return;
    entry.Refuses(Size(Src.Length, type));
}

void Profile::Set(int Length, PixelTypes Type)
{
    const Entry entry("Tesk::Profile::Set");
    entry.Refuses(Size(Length, Type));
}

void Profile::Clear()
{
    Status::Error().Code = NoError;
    if (block_.IsShared()) block_.Reset();
    StoreLength = 0;
    Scale = 1;
    ResetWindow();
}

int Profile::Grow()
{
    const std::size_t size = static_cast<std::size_t>(int(ElementSize));
    const std::size_t used = size * static_cast<std::size_t>(int(StoreLength)), needed = used + size;
    if (needed <= block_.Size() && !block_.IsShared()) return NoError;
    SharedBytes larger;
    if (needed > static_cast<std::size_t>(largestStore) ||
        !larger.Allocate(Max(2 * block_.Size(), Max(needed, 16 * size))))
        return Status::Format(CannotAllocate, L"Cannot (re)allocate the profile Buffer");
    if (used > 0) std::memcpy(larger.Data(), block_.Data(), used);
    block_ = std::move(larger);
    PlaceFirst();
    return NoError;
}

/// Adds a sample; a profile without a type takes the one of it.
int Profile::AppendSample(const std::int32_t* values, PixelTypes typeOfNew)
{
    if (Type == Undefined)
        if (const int code = Size(0, typeOfNew)) return code;
    if (const int code = Grow()) return code;
    const auto size = static_cast<std::size_t>(int(ElementSize));
    std::memcpy(block_.Data() + size * static_cast<std::size_t>(int(StoreLength)), values, size);
    // A window that ends with the store goes on to do so.
    if (I + Length == StoreLength) Length += 1;
    StoreLength += 1;
    return NoError;
}

void Profile::Append(int Value)
{
    const Entry entry("Tesk::Profile::Append");
    if (Type != Undefined && !profiles::IsWhole(Type)) {
        entry.Refuse(IncompatibleType, L"Cannot append a grayscale element to a %ls profile", PixelTypeName(Type));
        return;
    }
    const std::int32_t sample = Value;
    entry.Refuses(AppendSample(&sample, Gray));
}

void Profile::Append(int R, int G, int B)
{
    const Entry entry("Tesk::Profile::Append");
    if (Type != Undefined && Type != Rgb) {
        entry.Refuse(IncompatibleType, L"Cannot append a color element to a %ls profile", PixelTypeName(Type));
        return;
    }
    const std::int32_t values[] = {R, G, B};
    entry.Refuses(AppendSample(values, Rgb));
}

int& Profile::Sample(int Index) const
{
    const Entry entry("Tesk::Profile::Sample");
    if (Length < 1)
        entry.Refuses(profiles::RefuseEmpty());
    else if (!profiles::IsWhole(Type))
        entry.Refuse(IncompatibleType, L"The profile Type is %ls, grayscale was expected", PixelTypeName(Type));
    else if (Index < 0 || Index >= Length)
        entry.Refuse(OutOfRange, L"The element index (%d) is out of the profile range [0..%d]", Index, Length - 1);
    else
        return Samples()[Index];
    return Dummy();
}

int& Profile::Sample(int Index, int Component) const
{
    const Entry entry("Tesk::Profile::Sample");
    const int channels = profiles::Channels(Type);
    if (Length < 1)
        entry.Refuses(profiles::RefuseEmpty());
    else if (channels == 1 && !profiles::IsWhole(Type))
        entry.Refuses(profiles::RefuseType(Type));
    else if (Index < 0 || Index >= Length)
        entry.Refuse(OutOfRange, L"The element index (%d) is out of the profile range [0..%d]", Index, Length - 1);
    else if (Component >= 0 && Component < channels)
        return Samples()[static_cast<std::ptrdiff_t>(Index) * channels + Component];
    else if (channels == 1)
        entry.Refuse(OutOfRange, L"The component index (%d) must be 0 for a grayscale profile", Component);
    else
        entry.Refuse(OutOfRange, L"Sample component index (%d) must be in the range [0..%d] for an %ls profile",
                     Component, channels - 1, PixelTypeName(Type));
    return Dummy();
}

void Profile::Window()
{
    Status::Error().Code = NoError;
    ResetWindow();
}

bool Profile::Window(int I, int Length)
{
    Status::Error().Code = NoError;
    std::int64_t from = I, extent = Length;
    bool inside = true;
    if (from < 0) {
        extent += from;
        from = 0;
        inside = false;
    }
    if (from + extent > StoreLength) {
        extent = StoreLength - from;
        inside = false;
    }
    if (extent < 1) return inside;
    this->I = static_cast<int>(from);
    this->Length = static_cast<int>(extent);
    PlaceFirst();
    return inside;
}

void Profile::ShallowCopy(const Profile& Src, bool KeepWindow)
{
    Status::Error().Code = NoError;
    Share(Src, KeepWindow);
}

void Profile::Share(const Profile& src, bool keepWindow)
{
    if (&src == this) return;
    if (StoreLength > 0) {
        const auto scaled = [&](int value) {
            return static_cast<int>(std::int64_t{src.StoreLength} * value / StoreLength);
        };
        I = scaled(I);
        // A window scaled down to nothing would be no window: at least one sample stays.
        Length = Max(scaled(Length), src.StoreLength > 0 ? 1 : 0);
    } else {
        I = 0;
        Length = src.Length;
    }
    block_ = src.block_;
    Type = src.Type;
    ElementSize = src.ElementSize;
    Scale = src.Scale;
    StoreLength = src.StoreLength;
    Source = src.Source;
    if (keepWindow) {
        I = src.I;
        Length = src.Length;
    }
    PlaceFirst();
}

void Profile::Detach(bool CopySamples)
{
    SharedBytes own;
    if (!block_.Data() || !own.Allocate(block_.Size())) return;
    if (CopySamples)
        std::memcpy(own.Data(), block_.Data(),
                    static_cast<std::size_t>(int(ElementSize)) * static_cast<std::size_t>(int(StoreLength)));
    block_ = std::move(own);
    PlaceFirst();
}

} // namespace Tesk
