// Comparisons, bit operations and complements.
#include "image/Operator.h"

#include "image/operator/OperatorFrame.h"

#include <functional>

namespace Tesk {

namespace {

using namespace points;

/// A test against a constant, made by `test(pixel)` in plain integers, so that a constant outside the range of a pixel
/// decides alike for all.
template <typename Test>
void TestConstant(const char* context, const Image& src, Image& dst, int black, int white, Test test)
{
    const Entry entry(context);
    Sources held;
    if (Prepare(entry, src, bytePixels, dst, held)) return;
    ThroughTable(held.a, dst, [=](int s) { return test(s) ? white : black; });
}

template <typename Test>
void TestImages(const char* context, const Image& src, const Image& srcB, Image& dst, int black, int white, Test test)
{
    const Entry entry(context);
    Sources held;
    if (Prepare(entry, src, srcB, bytePixels, dst, held)) return;
    const auto b = static_cast<std::uint8_t>(black), w = static_cast<std::uint8_t>(white);
    EachBytePair(held.a, held.b, dst, [=](int s, int t) { return test(s, t) ? w : b; });
}

template <typename Bits>
void BitsConstant(const char* context, int constant, const Image& src, Image& dst, Bits bits)
{
    const Entry entry(context);
    Sources held;
    if (Prepare(entry, src, bytePixels, dst, held)) return;
    const int c = constant & 255;
    EachByte(held.a, dst, [=](std::uint8_t s) { return bits(int{s}, c); });
}

void BitsImages(const char* context, const Image& src, const Image& srcB, Image& dst, kernels::BytePair bits)
{
    const Entry entry(context);
    Sources held;
    if (!Prepare(entry, src, srcB, {Gray, Rgb, Gray1}, dst, held)) EachBytePair(held.a, held.b, dst, bits);
}

} // namespace

void Operator::Invert(const Image& Src, Image& Dst)
{
    const Entry entry("Tesk::Operator::Invert");
    Sources held;
    if (Prepare(entry, Src, {Gray, Gray16, Rgb, Gray1}, Dst, held)) return;
    EachByte(held.a, Dst, [](std::uint8_t s) { return ~s; });
}

void Operator::EqualTest(int Const, const Image& Src, Image& Dst, int Black, int White)
{
    const Entry entry("Tesk::Operator::EqualTest");
    if (entry.Refuses(CheckImage(Src))) return;
    if (Src.Type == Gray16 && Src.FirstPixel == Dst.FirstPixel) {
        entry.Refuse(IncompatibleMode, L"This operation can't be done in-place");
        return;
    }
    Sources held;
    if (Prepare(entry, Src, Dst, Gray, held)) return;
    const auto b = static_cast<std::uint8_t>(Black), w = static_cast<std::uint8_t>(White);
    switch (held.a.Type) {
    case Gray:
        EachByte(held.a, Dst, [=](std::uint8_t s) { return s == Const ? w : b; });
        break;
    case Gray16:
        EachPixel<Gray16Pixel, GrayPixel>(held.a, Dst,
                                          [=, c = Const & 0xffff](Gray16Pixel s) { return s == c ? w : b; });
        break;
    case Rgb:
        EachPixel<RgbPixel, GrayPixel>(
            held.a, Dst, [=](RgbPixel s) { return s.Red == Const && s.Green == Const && s.Blue == Const ? w : b; });
        break;
    default:
        entry.Refuses(RefuseType(held.a.Type));
    }
}

void Operator::EqualTest(const Image& Src, const Image& SrcB, Image& Dst, int Black, int White)
{
    const Entry entry("Tesk::Operator::EqualTest");
    Sources held;
    if (Prepare(entry, Src, SrcB, Dst, Gray, held)) return;
    const auto b = static_cast<std::uint8_t>(Black), w = static_cast<std::uint8_t>(White);
    if (held.a.Type == Gray) {
        EachBytePair(held.a, held.b, Dst, [=](int s, int t) { return s == t ? w : b; });
    } else if (held.a.Type == Rgb) {
        for (int y = 0; y < Dst.Height; y++)
            for (int x = 0; x < Dst.Width; x++)
                Dst.Row(y)[x] = held.a.Row<RgbPixel>(y)[x] == held.b.Row<RgbPixel>(y)[x] ? w : b;
    } else {
        entry.Refuses(RefuseType(held.a.Type));
    }
}

void Operator::GreaterTest(int Const, const Image& Src, Image& Dst, int Black, int White)
{
    TestConstant("Tesk::Operator::GreaterTest", Src, Dst, Black, White, [=](int s) { return Const > s; });
}

void Operator::GreaterTest(const Image& Src, int Const, Image& Dst, int Black, int White)
{
    TestConstant("Tesk::Operator::GreaterTest", Src, Dst, Black, White, [=](int s) { return s > Const; });
}

void Operator::GreaterTest(const Image& Src, const Image& SrcB, Image& Dst, int Black, int White)
{
    TestImages("Tesk::Operator::GreaterTest", Src, SrcB, Dst, Black, White, std::greater<int>());
}

void Operator::GreaterEqualTest(int Const, const Image& Src, Image& Dst, int Black, int White)
{
    TestConstant("Tesk::Operator::GreaterEqualTest", Src, Dst, Black, White, [=](int s) { return Const >= s; });
}

void Operator::GreaterEqualTest(const Image& Src, int Const, Image& Dst, int Black, int White)
{
    TestConstant("Tesk::Operator::GreaterEqualTest", Src, Dst, Black, White, [=](int s) { return s >= Const; });
}

void Operator::GreaterEqualTest(const Image& Src, const Image& SrcB, Image& Dst, int Black, int White)
{
    TestImages("Tesk::Operator::GreaterEqualTest", Src, SrcB, Dst, Black, White, std::greater_equal<int>());
}

void Operator::And(int Const, const Image& Src, Image& Dst)
{
    BitsConstant("Tesk::Operator::And", Const, Src, Dst, std::bit_and<int>());
}

void Operator::And(const Image& Src, const Image& SrcB, Image& Dst)
{
    BitsImages("Tesk::Operator::And", Src, SrcB, Dst, kernels::BytePair::And);
}

void Operator::Or(int Const, const Image& Src, Image& Dst)
{
    BitsConstant("Tesk::Operator::Or", Const, Src, Dst, std::bit_or<int>());
}

void Operator::Or(const Image& Src, const Image& SrcB, Image& Dst)
{
    BitsImages("Tesk::Operator::Or", Src, SrcB, Dst, kernels::BytePair::Or);
}

void Operator::Xor(int Const, const Image& Src, Image& Dst)
{
    BitsConstant("Tesk::Operator::Xor", Const, Src, Dst, std::bit_xor<int>());
}

void Operator::Xor(const Image& Src, const Image& SrcB, Image& Dst)
{
    BitsImages("Tesk::Operator::Xor", Src, SrcB, Dst, kernels::BytePair::Xor);
}

} // namespace Tesk
