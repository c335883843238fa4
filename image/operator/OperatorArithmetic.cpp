// Image arithmetic with clipping: sums, differences, products, quotients, extremes, blends.
#include "image/Operator.h"

#include "image/core/GrayDepth.h"
#include "image/operator/OperatorFrame.h"

namespace Tesk {

namespace {

using namespace points;
using kernels::BytePair;

int LargestGray16()
{
    return levels::Gray16Levels() - 1;
}

constexpr int ClampByte(int value)
{
    return Clamp(value, 0, 255);
}

/// A constant of any size as a difference of bytes: beyond 255 in magnitude nothing changes any more.
constexpr int ClipConstant(int value)
{
    return Clamp(value, -255, 255);
}

/// The frame of a byte operation on one source.
template <typename F>
void ByConstant(const char* context, const Image& src, Image& dst, bool clipServed, GrayClipping clip, F f)
{
    const Entry entry(context);
    Sources held;
    if (Prepare(entry, src, bytePixels, dst, held)) return;
    if (clipServed)
        ThroughTable(held.a, dst, f);
    else
        entry.Refuses(RefuseClip(clip));
}

/// The frame of an operation on two sources, of bytes or, with a formula of its own, of 16-bit values.
template <typename Bytes, typename Wide>
void ByImage(const char* context, const Image& src, const Image& srcB, Image& dst, bool gray16, Bytes bytes, Wide wide)
{
    const Entry entry(context);
    Sources held;
    if (Prepare(entry, src, srcB, dst, Undefined, held)) return;
    if (bytePixels.Has(held.a.Type)) {
        if (const int code = bytes(held.a, held.b)) entry.Refuses(code);
    } else if (gray16 && held.a.Type == Gray16) {
        if (const int code = wide(held.a, held.b)) entry.Refuses(code);
    } else {
        entry.Refuses(RefuseType(held.a.Type));
    }
}

int NoWide(const Image&, const Image&)
{
    return NoError;
}

/// Also serves the subtraction of a constant, which is the addition of its opposite.
void AddConstant(const char* context, int Const, const Image& Src, Image& Dst, GrayClipping Clip)
{
    const int c = ClipConstant(Const);
    const bool served = Clip == Saturate || Clip == Absolute || Clip == Rescale;
    ByConstant(context, Src, Dst, served, Clip, [=](int s) {
        switch (Clip) {
        case Absolute:
            return c < 0 ? Abs(s + c) : ClampByte(s + c);
        case Rescale:
            return static_cast<int>(Clamp<std::int64_t>((std::int64_t{s} + Const) >> 1, 0, 255));
        default:
            return ClampByte(s + c);
        }
    });
}

} // namespace

void Operator::Add(int Const, const Image& Src, Image& Dst, GrayClipping Clip)
{
    AddConstant("Tesk::Operator::Add", Const, Src, Dst, Clip);
}

void Operator::Add(const Image& Src, const Image& SrcB, Image& Dst, GrayClipping Clip)
{
    const auto add = [&](auto each, int largest) {
        switch (Clip) {
        case Saturate:
            each(BytePair::AddSaturated, [=](int a, int b) { return Min(a + b, largest); });
            return int{NoError};
        case Rescale:
            each(BytePair::AddHalved, [](int a, int b) { return (a + b) >> 1; });
            return int{NoError};
        default:
            return RefuseClip(Clip);
        }
    };
    ByImage(
        "Tesk::Operator::Add", Src, SrcB, Dst, true,
        [&](const Image& a, const Image& b) {
            return add([&](BytePair bytes, auto) { EachBytePair(a, b, Dst, bytes); }, 255);
        },
        [&](const Image& a, const Image& b) {
            return add([&](BytePair, auto f) { EachPixelPair<Gray16Pixel>(a, b, Dst, f); }, LargestGray16());
        });
}

void Operator::Subtract(int Const, const Image& Src, Image& Dst, GrayClipping Clip)
{
    const int c = ClipConstant(Const);
    const bool served = Clip == Saturate || Clip == Absolute || Clip == Rescale;
    ByConstant("Tesk::Operator::Subtract", Src, Dst, served, Clip, [=](int s) {
        switch (Clip) {
        case Absolute:
            return Const >= 0 ? Abs(c - s) : Min(255, s - c);
        case Rescale:
            return static_cast<int>(Clamp<std::int64_t>((255 - std::int64_t{s} + Const) >> 1, 0, 255));
        default:
            return Const < 0 ? 0 : Max(0, c - s);
        }
    });
}

void Operator::Subtract(const Image& Src, int Const, Image& Dst, GrayClipping Clip)
{
    // The most negative integer has no opposite; any constant of that size saturates all the same.
    AddConstant("Tesk::Operator::Subtract", Const < -MaxInt ? MaxInt : -Const, Src, Dst, Clip);
}

void Operator::Subtract(const Image& Src, const Image& SrcB, Image& Dst, GrayClipping Clip)
{
    const auto subtract = [&](auto each, auto reversed, int largest, bool negative) {
        switch (Clip) {
        case Saturate:
            each(BytePair::SubtractSaturated, [](int a, int b) { return Max(0, a - b); });
            return int{NoError};
        case Absolute:
            each(BytePair::Difference, [](int a, int b) { return Abs(a - b); });
            return int{NoError};
        case Negative:
            if (!negative) return RefuseClip(Clip);
            reversed();
            return int{NoError};
        case Rescale:
            each(BytePair::SubtractHalved, [=](int a, int b) { return (a - b + largest) >> 1; });
            return int{NoError};
        default:
            return RefuseClip(Clip);
        }
    };
    ByImage(
        "Tesk::Operator::Subtract", Src, SrcB, Dst, true,
        [&](const Image& a, const Image& b) {
            return subtract([&](BytePair bytes, auto) { EachBytePair(a, b, Dst, bytes); },
                            [&] { EachBytePair(b, a, Dst, BytePair::SubtractSaturated); }, 255, true);
        },
        [&](const Image& a, const Image& b) {
            return subtract([&](BytePair, auto f) { EachPixelPair<Gray16Pixel>(a, b, Dst, f); }, [] {}, LargestGray16(),
                            false);
        });
}

void Operator::Multiply(double Const, const Image& Src, Image& Dst, GrayClipping Clip)
{
    const double k = Clip == Rescale ? Const / 256 : Const;
    ByConstant("Tesk::Operator::Multiply", Src, Dst, Clip == Saturate || Clip == Rescale, Clip,
               [=](int v) { return int{TruncatedByte(v * k)}; });
}

void Operator::Multiply(const Image& Src, const Image& SrcB, Image& Dst, GrayClipping Clip)
{
    ByImage(
        "Tesk::Operator::Multiply", Src, SrcB, Dst, false,
        [&](const Image& a, const Image& b) {
            if (Clip == Saturate)
                EachBytePair(a, b, Dst, [](int s, int t) { return Min(255, s * t); });
            else if (Clip == Rescale)
                EachBytePair(a, b, Dst, [](int s, int t) { return Min(255, (s * t) >> 8); });
            else
                return RefuseClip(Clip);
            return int{NoError};
        },
        NoWide);
}

void Operator::Divide(double Const, const Image& Src, Image& Dst, GrayClipping Clip)
{
    const double k = Clip == Rescale ? Const * 256 : Const;
    ByConstant("Tesk::Operator::Divide", Src, Dst, Clip == Saturate || Clip == Rescale, Clip,
               [=](int v) { return v == 0 ? 255 : int{TruncatedByte(k / v)}; });
}

void Operator::Divide(const Image& Src, double Const, Image& Dst, GrayClipping Clip)
{
    {
        const Entry entry("Tesk::Operator::Divide");
        if (entry.Refuses(CheckImage(Src))) return;
        if (Const == 0) {
            entry.Refuse(OutOfRange, L"Division by zero");
            return;
        }
    }
    const double k = (Clip == Rescale ? 256 : 1) / Const;
    ByConstant("Tesk::Operator::Divide", Src, Dst, Clip == Saturate || Clip == Rescale, Clip,
               [=](int v) { return int{TruncatedByte(v * k)}; });
}

void Operator::Divide(const Image& Src, const Image& SrcB, Image& Dst, GrayClipping Clip)
{
    ByImage(
        "Tesk::Operator::Divide", Src, SrcB, Dst, false,
        [&](const Image& a, const Image& b) {
            if (Clip == Saturate)
                EachBytePair(a, b, Dst, [](int s, int t) { return t == 0 ? 255 : s / t; });
            else if (Clip == Rescale)
                EachBytePair(a, b, Dst, [](int s, int t) { return t == 0 ? 255 : Min(255, (s << 8) / t); });
            else
                return RefuseClip(Clip);
            return int{NoError};
        },
        NoWide);
}

void Operator::Maximize(int Const, const Image& Src, Image& Dst)
{
    const int c = ClampByte(Const);
    ByConstant("Tesk::Operator::Maximize", Src, Dst, true, Saturate, [=](int s) { return Max(s, c); });
}

void Operator::Minimize(int Const, const Image& Src, Image& Dst)
{
    const int c = ClampByte(Const);
    ByConstant("Tesk::Operator::Minimize", Src, Dst, true, Saturate, [=](int s) { return Min(s, c); });
}

void Operator::Maximize(const Image& Src, const Image& SrcB, Image& Dst)
{
    const auto larger = [](int a, int b) { return Max(a, b); };
    ByImage(
        "Tesk::Operator::Maximize", Src, SrcB, Dst, true,
        [&](const Image& a, const Image& b) {
            EachBytePair(a, b, Dst, BytePair::Maximum);
            return int{NoError};
        },
        [&](const Image& a, const Image& b) {
            EachPixelPair<Gray16Pixel>(a, b, Dst, larger);
            return int{NoError};
        });
}

void Operator::Minimize(const Image& Src, const Image& SrcB, Image& Dst)
{
    const auto smaller = [](int a, int b) { return Min(a, b); };
    ByImage(
        "Tesk::Operator::Minimize", Src, SrcB, Dst, true,
        [&](const Image& a, const Image& b) {
            EachBytePair(a, b, Dst, BytePair::Minimum);
            return int{NoError};
        },
        [&](const Image& a, const Image& b) {
            EachPixelPair<Gray16Pixel>(a, b, Dst, smaller);
            return int{NoError};
        });
}

void Operator::Blend(double Alpha, const Image& Src, const Image& SrcB, Image& Dst)
{
    const Entry entry("Tesk::Operator::Blend");
    Sources held;
    if (Prepare(entry, Src, SrcB, Dst, Undefined, held)) return;
    // Outside 0 to 1 the sums are saturated; a factor that is no number blends nothing in.
    const double alpha = Alpha >= -1e4 && Alpha <= 1e4 ? Alpha : Alpha > 0 ? 1e4 : Alpha < 0 ? -1e4 : 0;
    if (held.a.Type == Gray || held.a.Type == Rgb || held.a.Type == Rgba) {
        const int a = static_cast<int>(alpha * 256);
        if (a >= 0 && a <= 256) {
            const auto [rows, n] = RunOver(ByteCount(Dst), {&held.a, &held.b, &Dst});
            for (int y = 0; y < rows; y++)
                kernels::BlendRow(held.a.Row(y), held.b.Row(y), Dst.Row(y), n, a);
        } else {
            EachBytePair(held.a, held.b, Dst,
                         [=](int s, int b) { return Clamp(s * a + b * (256 - a), 0, 65535) >> 8; });
        }
    } else if (held.a.Type == Gray16) {
        const std::int64_t a = static_cast<int>(alpha * 1024);
        EachPixelPair<Gray16Pixel>(held.a, held.b, Dst, [=](int s, int b) {
            return Clamp<std::int64_t>((s * a + b * (1024 - a)) >> 10, 0, 65535);
        });
    } else {
        entry.Refuses(RefuseType(held.a.Type));
    }
}

} // namespace Tesk
