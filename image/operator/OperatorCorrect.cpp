// Shading correction against reference images.
#include "image/Operator.h"

#include "image/operator/OperatorFrame.h"

#include <array>

namespace Tesk {

namespace {

using namespace points;

/// The largest result of a correction on 16-bit pixels.
constexpr int largestGray16 = 32767;

/// A level for each byte of a pixel, in memory order.
using Levels = std::array<int, 3>;

Levels SameLevel(int level)
{
    return {level, level, level};
}

Levels ColorLevels(RgbPixel level)
{
    return {level.Blue, level.Green, level.Red};
}

int CheckReference(const Image& src, const Image& reference, const wchar_t* which)
{
    if (reference.Type == Undefined) return CheckImage(reference);
    const PixelTypes wanted = src.Type == Gray16 ? Gray16 : Gray;
    if (reference.Type != wanted)
        return Status::Format(IncompatibleType, L"The %ls must be of type %ls", which, PixelTypeName(wanted));
    return reference.Width == src.Width && reference.Height == src.Height ? NoError : RefuseSizes(src, reference);
}

int CheckSource(const Image& src)
{
    if (const int code = CheckImage(src)) return code;
    if (src.Type == Gray || src.Type == Gray16 || src.Type == Rgb) return NoError;
    return Status::Format(UnsupportedType, L"The source image type (%ls) is not supported for this operation",
                          PixelTypeName(src.Type));
}

/// Each value with the values of its references at the same place: `f(value, black, white, channel)`.
template <typename T, typename F>
void EachValue(const Image& src, const Image& black, const Image& white, Image& dst, int channels, int largest, F f)
{
    for (int y = 0; y < dst.Height; y++) {
        const T *s = src.Row<T>(y), *b = black.Row<T>(y), *w = white.Row<T>(y);
        T* d = dst.Row<T>(y);
        for (int x = 0, i = 0; x < dst.Width; x++)
            for (int c = 0; c < channels; c++, i++)
                d[i] = static_cast<T>(Clamp<std::int64_t>(
                    f(std::int64_t{s[i]}, std::int64_t{b[x]}, std::int64_t{w[x]}, static_cast<std::size_t>(c)), 0,
                    largest));
    }
}

template <typename F>
void Apply(const Entry& entry, const Image& Src, const Image& SrcBlack, const Image& SrcWhite, Image& Dst, F f)
{
    // The references keep their pixels even where the destination is one of them.
    Image black, white;
    black.ShallowCopy(SrcBlack, true);
    white.ShallowCopy(SrcWhite, true);
    Sources held;
    if (Prepare(entry, Src, Dst, Undefined, held) || entry.Refuses(KeepApart(black, Dst)) ||
        entry.Refuses(KeepApart(white, Dst)))
        return;
    if (held.a.Type == Gray16)
        EachValue<Gray16Pixel>(held.a, black, white, Dst, 1, largestGray16, f);
    else
        EachValue<GrayPixel>(held.a, black, white, Dst, held.a.Type == Rgb ? 3 : 1, 255, f);
}

void AddLevels(const Image& src, const Image& white, Image& dst, const Levels& level)
{
    const Entry entry("Tesk::Operator::AddCorrect");
    if (entry.Refuses(CheckSource(src)) || entry.Refuses(CheckReference(src, white, L"black reference image"))) return;
    Apply(entry, src, white, white, dst,
          [=](std::int64_t s, std::int64_t, std::int64_t r, std::size_t c) { return s - r + level[c]; });
}

void MultiplyLevels(const Image& src, const Image& white, Image& dst, const Levels& level)
{
    const Entry entry("Tesk::Operator::MultiplyCorrect");
    if (entry.Refuses(CheckSource(src)) || entry.Refuses(CheckReference(src, white, L"black reference image"))) return;
    Apply(entry, src, white, white, dst, [=](std::int64_t s, std::int64_t, std::int64_t r, std::size_t c) {
        return r == 0 ? level[c] : s * level[c] / r;
    });
}

void CorrectLevels(const Image& src, const Image& black, const Image& white, Image& dst, const Levels& low,
                   const Levels& high)
{
    const Entry entry("Tesk::Operator::Correct");
    if (entry.Refuses(CheckSource(src)) ||
        entry.Refuses(CheckReference(src, black, L"black and white reference images")) ||
        entry.Refuses(CheckReference(src, white, L"black and white reference images")))
        return;
    Apply(entry, src, black, white, dst, [=](std::int64_t s, std::int64_t b, std::int64_t w, std::size_t c) {
        const std::int64_t span = std::int64_t{high[c]} - low[c];
        return w == b ? span : (s - b) * span / (w - b) + low[c];
    });
}

} // namespace

void Operator::AddCorrect(const Image& Src, const Image& SrcWhite, Image& Dst, int White)
{
    AddLevels(Src, SrcWhite, Dst, SameLevel(White));
}

void Operator::AddCorrect(const Image& Src, const Image& SrcWhite, Image& Dst, RgbPixel White)
{
    AddLevels(Src, SrcWhite, Dst, ColorLevels(White));
}

void Operator::MultiplyCorrect(const Image& Src, const Image& SrcWhite, Image& Dst, int White)
{
    MultiplyLevels(Src, SrcWhite, Dst, SameLevel(White));
}

void Operator::MultiplyCorrect(const Image& Src, const Image& SrcWhite, Image& Dst, RgbPixel White)
{
    MultiplyLevels(Src, SrcWhite, Dst, ColorLevels(White));
}

void Operator::Correct(const Image& Src, const Image& SrcBlack, const Image& SrcWhite, Image& Dst, int Black, int White)
{
    CorrectLevels(Src, SrcBlack, SrcWhite, Dst, SameLevel(Black), SameLevel(White));
}

void Operator::Correct(const Image& Src, const Image& SrcBlack, const Image& SrcWhite, Image& Dst, RgbPixel Black,
                       RgbPixel White)
{
    CorrectLevels(Src, SrcBlack, SrcWhite, Dst, ColorLevels(Black), ColorLevels(White));
}

} // namespace Tesk
