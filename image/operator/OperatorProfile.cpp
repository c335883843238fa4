// Arithmetic on profiles: a constant or a second profile, sample by sample, in the arithmetic of the element type.
#include "image/Operator.h"

#include "foundation/Entry.h"
#include "image/core/PixelTypes.h"
#include "image/core/Saturation.h"
#include "measure/Profile.h"

#include <algorithm>

namespace Tesk {

namespace {

using images::IsGray;
using images::Truncated;

int CheckType(const Profile& profile)
{
    const PixelTypes type = profile.Type;
    if (IsGray(type) || type == Int || type == Float || type == Dble) return NoError;
    return Status::Format(UnsupportedType, L"Profile Type (%ls) not supported for this operation", PixelTypeName(type));
}

/// Calls `f` with a null pointer to the samples' type.
template <typename F>
void BySample(PixelTypes type, F f)
{
    if (type == Float)
        f(static_cast<float*>(nullptr));
    else if (type == Dble)
        f(static_cast<double*>(nullptr));
    else
        f(static_cast<std::int32_t*>(nullptr));
}

/// A result as a sample holds it. Whole numbers of two profiles wrap, as their type does; those of a real constant are
/// truncated, and held at the ends.
template <typename T>
T As(double value)
{
    if constexpr (std::is_integral_v<T>)
        return Truncated(value);
    else
        return static_cast<T>(value);
}

template <typename T>
T As(std::int64_t value)
{
    return static_cast<T>(static_cast<std::uint32_t>(value));
}

/// What two samples are combined in.
template <typename T>
using Wide = std::conditional_t<std::is_integral_v<T>, std::int64_t, double>;

template <typename T>
bool HasZero(const T* samples, int count)
{
    return std::find(samples, samples + count, T{0}) != samples + count;
}

bool HasZero(const Profile& profile)
{
    bool zero = false;
    BySample(profile.Type, [&]<typename T>(T*) { zero = HasZero(profile.Samples<T>(), profile.Length); });
    return zero;
}

bool RefuseZero(const Entry& entry)
{
    return entry.Refuse(OutOfRange, L"Cannot divide by zero");
}

} // namespace

/// `Dst` from each sample of `Src`, by `f(sample)` on real numbers.
template <typename F>
void Operator::EachSample(const char* context, const Profile& Src, Profile& Dst, bool divisor, F f)
{
    const Entry entry(context);
    if (entry.Refuses(CheckProfile(Src)) || entry.Refuses(CheckType(Src))) return;
    if (divisor && HasZero(Src) && RefuseZero(entry)) return;
    Profile held;
    if (!Profile::Prepare(Src, Dst, Src.Type, held)) {
        entry.Refuse(CannotAllocate, L"Cannot allocate the profile Buffer");
        return;
    }
    BySample(held.Type, [&]<typename T>(T*) {
        for (int i = 0; i < Dst.Length; i++)
            Dst.Samples<T>()[i] = As<T>(static_cast<double>(f(static_cast<double>(held.Samples<T>()[i]))));
    });
}

/// `Dst` from the samples of two profiles, by `f(a, b)` on wide whole numbers or on real ones.
template <typename F>
void Operator::EachSamplePair(const char* context, const Profile& Src, const Profile& SrcB, Profile& Dst, bool divisor,
                              F f)
{
    const Entry entry(context);
    if (entry.Refuses(CheckProfiles(Src, SrcB)) || entry.Refuses(CheckType(Src))) return;
    if (divisor && HasZero(SrcB) && RefuseZero(entry)) return;
    Profile a, b;
    b.ShallowCopy(SrcB, true);
    // Another window of the destination's samples would change under the walk.
    if (SrcB.First != Dst.First) b.Detach(true);
    if (!Profile::Prepare(Src, Dst, Src.Type, a)) {
        entry.Refuse(CannotAllocate, L"Cannot allocate the profile Buffer");
        return;
    }
    BySample(a.Type, [&]<typename T>(T*) {
        for (int i = 0; i < Dst.Length; i++)
            Dst.Samples<T>()[i] = As<T>(f(Wide<T>{a.Samples<T>()[i]}, Wide<T>{b.Samples<T>()[i]}));
    });
}

void Operator::Copy(double Const, Profile& Dst)
{
    EachSample("Tesk::Operator::Copy", Dst, Dst, false, [=](double) { return Const; });
}

void Operator::Add(double Const, const Profile& Src, Profile& Dst)
{
    EachSample("Tesk::Operator::Add", Src, Dst, false, [=](double v) { return Const + v; });
}

void Operator::Add(const Profile& Src, const Profile& SrcB, Profile& Dst)
{
    EachSamplePair("Tesk::Operator::Add", Src, SrcB, Dst, false, [](auto a, auto b) { return a + b; });
}

void Operator::Subtract(double Const, const Profile& Src, Profile& Dst)
{
    EachSample("Tesk::Operator::Subtract", Src, Dst, false, [=](double v) { return Const - v; });
}

void Operator::Subtract(const Profile& Src, double Const, Profile& Dst)
{
    EachSample("Tesk::Operator::Subtract", Src, Dst, false, [=](double v) { return v - Const; });
}

void Operator::Subtract(const Profile& Src, const Profile& SrcB, Profile& Dst)
{
    EachSamplePair("Tesk::Operator::Subtract", Src, SrcB, Dst, false, [](auto a, auto b) { return a - b; });
}

void Operator::Multiply(double Const, const Profile& Src, Profile& Dst)
{
    EachSample("Tesk::Operator::Multiply", Src, Dst, false, [=](double v) { return Const * v; });
}

void Operator::Multiply(const Profile& Src, const Profile& SrcB, Profile& Dst)
{
    EachSamplePair("Tesk::Operator::Multiply", Src, SrcB, Dst, false, [](auto a, auto b) { return a * b; });
}

void Operator::Divide(double Const, const Profile& Src, Profile& Dst)
{
    EachSample("Tesk::Operator::Divide", Src, Dst, true, [=](double v) { return Const / v; });
}

void Operator::Divide(const Profile& Src, double Const, Profile& Dst)
{
    if (Const == 0) {
        const Entry entry("Tesk::Operator::Divide");
        if (!entry.Refuses(CheckProfile(Src))) RefuseZero(entry);
        return;
    }
    EachSample("Tesk::Operator::Divide", Src, Dst, false, [=](double v) { return v / Const; });
}

void Operator::Divide(const Profile& Src, const Profile& SrcB, Profile& Dst)
{
    EachSamplePair("Tesk::Operator::Divide", Src, SrcB, Dst, true, [](auto a, auto b) { return a / b; });
}

void Operator::Maximize(double Const, const Profile& Src, Profile& Dst)
{
    EachSample("Tesk::Operator::Maximize", Src, Dst, false, [=](double v) { return Max(Const, v); });
}

void Operator::Maximize(const Profile& Src, const Profile& SrcB, Profile& Dst)
{
    EachSamplePair("Tesk::Operator::Maximize", Src, SrcB, Dst, false, [](auto a, auto b) { return Max(a, b); });
}

void Operator::Minimize(double Const, const Profile& Src, Profile& Dst)
{
    EachSample("Tesk::Operator::Minimize", Src, Dst, false, [=](double v) { return Min(Const, v); });
}

void Operator::Minimize(const Profile& Src, const Profile& SrcB, Profile& Dst)
{
    EachSamplePair("Tesk::Operator::Minimize", Src, SrcB, Dst, false, [](auto a, auto b) { return Min(a, b); });
}

} // namespace Tesk
