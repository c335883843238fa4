// The formulas of point operations on all values.
#include "image/operator/OperatorChecks.h"

#include <algorithm>
#include <cmath>
#include <functional>

using namespace Tesk;
using namespace Tesk::checks;

namespace {

using TwoImages = void (*)(const Image&, const Image&, Image&, GrayClipping);
using Formula = std::function<int(int, int)>;

struct TwoImageCase
{
    const char* name;
    TwoImages call;
    GrayClipping clip;
    Formula formula;
};

} // namespace

TEST_F(OperatorTest, TwoImageFormulasOnEveryPairOfBytes)
{
    const TwoImageCase cases[] = {
        {"add", Operator::Add, Saturate, [](int a, int b) { return a + b > 255 ? 255 : a + b; }},
        {"add rescaled", Operator::Add, Rescale, [](int a, int b) { return (a + b) / 2; }},
        {"subtract", Operator::Subtract, Saturate, [](int a, int b) { return a > b ? a - b : 0; }},
        {"difference", Operator::Subtract, Absolute, [](int a, int b) { return a > b ? a - b : b - a; }},
        {"negative", Operator::Subtract, Negative, [](int a, int b) { return a > b ? 0 : b - a; }},
        {"subtract rescaled", Operator::Subtract, Rescale, [](int a, int b) { return (a - b + 255) / 2; }},
        {"multiply", Operator::Multiply, Saturate, [](int a, int b) { return a * b > 255 ? 255 : a * b; }},
        {"multiply rescaled", Operator::Multiply, Rescale, [](int a, int b) { return a * b / 256; }},
        {"divide", Operator::Divide, Saturate, [](int a, int b) { return b ? a / b : 255; }},
        {"divide rescaled", Operator::Divide, Rescale, [](int a, int b) { return b ? Min(255, a * 256 / b) : 255; }},
        {"maximum", [](auto& a, auto& b, auto& d, auto) { Operator::Maximize(a, b, d); }, Saturate,
         [](int a, int b) { return a > b ? a : b; }},
        {"minimum", [](auto& a, auto& b, auto& d, auto) { Operator::Minimize(a, b, d); }, Saturate,
         [](int a, int b) { return a > b ? b : a; }},
        {"and", [](auto& a, auto& b, auto& d, auto) { Operator::And(a, b, d); }, Saturate,
         [](int a, int b) { return a & b; }},
        {"or", [](auto& a, auto& b, auto& d, auto) { Operator::Or(a, b, d); }, Saturate,
         [](int a, int b) { return a | b; }},
        {"xor", [](auto& a, auto& b, auto& d, auto) { Operator::Xor(a, b, d); }, Saturate,
         [](int a, int b) { return a ^ b; }},
        {"greater", [](auto& a, auto& b, auto& d, auto) { Operator::GreaterTest(a, b, d, 3, 200); }, Saturate,
         [](int a, int b) { return a > b ? 200 : 3; }},
        {"greater or equal", [](auto& a, auto& b, auto& d, auto) { Operator::GreaterEqualTest(a, b, d, 3, 200); },
         Saturate, [](int a, int b) { return a >= b ? 200 : 3; }}};
    for (const PixelTypes type : {Gray, Rgb}) {
        Image a, b, dst;
        AllPairs(a, b, type);
        for (const auto& c : cases) {
            c.call(a, b, dst, c.clip);
            ASSERT_EQ(Status::Error().Code, NoError) << c.name;
            ASSERT_EQ(dst.Type, type) << c.name;
            for (int y = 0; y < 256; y++)
                for (int x = 0; x < RowBytes(a.Width, type); x++)
                    ASSERT_EQ(dst.Row(y)[x], c.formula(x, y)) << c.name << ' ' << x << ' ' << y;
        }
    }
}

TEST_F(OperatorTest, TwoImageFormulasOfWidePixelsEndAtTheGrayDepth)
{
    for (const int depth : {9, 12, 16}) {
        Operator::GrayDepth = depth;
        const int largest = (1 << depth) - 1;
        const TwoImageCase cases[] = {
            {"add", Operator::Add, Saturate, [=](int a, int b) { return a + b > largest ? largest : a + b; }},
            {"add rescaled", Operator::Add, Rescale, [](int a, int b) { return (a + b) / 2; }},
            {"subtract", Operator::Subtract, Saturate, [](int a, int b) { return a > b ? a - b : 0; }},
            {"difference", Operator::Subtract, Absolute, [](int a, int b) { return a > b ? a - b : b - a; }},
            {"subtract rescaled", Operator::Subtract, Rescale, [=](int a, int b) { return (a - b + largest) / 2; }},
            {"maximum", [](auto& a, auto& b, auto& d, auto) { Operator::Maximize(a, b, d); }, Saturate,
             [](int a, int b) { return a > b ? a : b; }},
            {"minimum", [](auto& a, auto& b, auto& d, auto) { Operator::Minimize(a, b, d); }, Saturate,
             [](int a, int b) { return a > b ? b : a; }}};
        Ints some;
        for (int v = 0; v <= largest; v += largest / 37)
            some.push_back(v);
        some.push_back(largest);
        Ints first, second;
        for (const int a : some)
            for (const int b : some) {
                first.push_back(a);
                second.push_back(b);
            }
        Image a, b, dst;
        Row(a, Gray16, first);
        Row(b, Gray16, second);
        for (const auto& c : cases) {
            c.call(a, b, dst, c.clip);
            ASSERT_EQ(Status::Error().Code, NoError) << c.name;
            const Ints got = Values(dst);
            for (std::size_t i = 0; i < got.size(); i++)
                ASSERT_EQ(got[i], c.formula(first[i], second[i])) << c.name << ' ' << first[i] << ' ' << second[i];
        }
        Operator::Subtract(a, b, dst, Negative);
        EXPECT_EQ(Message(), L"The clipping mode (Negative) is not supported for this operation");
        EXPECT_EQ(Status::Error().Code, OutOfRange);
    }
}

TEST_F(OperatorTest, ConstantFormulasAtAndBeyondTheEnds)
{
    Image a, b, dst;
    AllPairs(a, b);
    for (const int k : {MinInt - 1, -300, -255, -100, -1, 0, 1, 100, 255, 300, 511, MaxInt}) {
        const double c = k;
        const auto expect = [&](const char* name, auto formula) {
            ASSERT_EQ(Status::Error().Code, NoError) << name;
            for (int v = 0; v < 256; v++)
                ASSERT_EQ(dst.Row(7)[v], formula(v)) << name << ' ' << k << ' ' << v;
        };
        Operator::Add(k, a, dst, Saturate);
        expect("add", [&](int v) { return Clip(v + c); });
        Operator::Add(k, a, dst, Absolute);
        expect("add absolute", [&](int v) { return k < 0 ? Clip(std::abs(v + std::max(c, -255.0))) : Clip(v + c); });
        Operator::Add(k, a, dst, Rescale);
        expect("add rescaled", [&](int v) { return Clip(std::floor((v + c) / 2)); });
        Operator::Subtract(k, a, dst, Saturate);
        expect("constant less image", [&](int v) { return k < 0 ? 0 : Clip(std::min(c, 255.0) - v); });
        Operator::Subtract(k, a, dst, Absolute);
        expect("distance", [&](int v) { return k >= 0 ? Clip(std::abs(std::min(c, 255.0) - v)) : Clip(v - c); });
        Operator::Subtract(k, a, dst, Rescale);
        expect("constant less image, rescaled", [&](int v) { return Clip(std::floor((255 - v + c) / 2)); });
        Operator::Subtract(a, k, dst, Saturate);
        expect("image less constant", [&](int v) { return Clip(v - c); });
        Operator::Subtract(a, k, dst, Absolute);
        expect("image less constant, absolute",
               [&](int v) { return k > 0 ? Clip(std::abs(v - std::min(c, 255.0))) : Clip(v - c); });
        Operator::Subtract(a, k, dst, Rescale);
        expect("image less constant, rescaled", [&](int v) { return Clip(std::floor((v - c) / 2)); });
        Operator::Maximize(k, a, dst);
        expect("maximum", [&](int v) { return Clip(std::max<double>(v, c)); });
        Operator::Minimize(k, a, dst);
        expect("minimum", [&](int v) { return Clip(std::min<double>(v, c)); });
        Operator::And(k, a, dst);
        expect("and", [&](int v) { return k & v; });
        Operator::Or(k, a, dst);
        expect("or", [&](int v) { return (k | v) & 255; });
        Operator::Xor(k, a, dst);
        expect("xor", [&](int v) { return (k ^ v) & 255; });
        Operator::GreaterTest(k, a, dst, 3, 200);
        expect("greater", [&](int v) { return c > v ? 200 : 3; });
        Operator::GreaterTest(a, k, dst, 3, 200);
        expect("image greater", [&](int v) { return v > c ? 200 : 3; });
        Operator::GreaterEqualTest(k, a, dst, 3, 200);
        expect("constant greater or equal", [&](int v) { return c >= v ? 200 : 3; });
        Operator::GreaterEqualTest(a, k, dst, 3, 200);
        expect("greater or equal", [&](int v) { return v >= c ? 200 : 3; });
        Operator::EqualTest(k, a, dst);
        expect("equal", [&](int v) { return v == c ? 255 : 0; });
        Operator::Multiply(c / 64, a, dst, Saturate);
        expect("times", [&](int v) { return Clip(v * (c / 64)); });
        Operator::Multiply(c, a, dst, Rescale);
        expect("times, rescaled", [&](int v) { return Clip(v * c / 256); });
        Operator::Divide(c, a, dst, Saturate);
        expect("by image", [&](int v) { return v == 0 ? 255 : Clip(c / v); });
        Operator::Divide(c / 16, a, dst, Rescale);
        expect("by image, rescaled", [&](int v) { return v == 0 ? 255 : Clip(c * 16 / v); });
        if (k == 0) continue;
        Operator::Divide(a, c / 64, dst, Saturate);
        expect("by constant", [&](int v) { return Clip(v * (64 / c)); });
        Operator::Divide(a, c, dst, Rescale);
        expect("by constant, rescaled", [&](int v) { return Clip(v * (256 / c)); });
    }
    Operator::Multiply(std::nan(""), a, dst);
    EXPECT_EQ(dst.Row(0)[200], 0);
    Operator::Divide(a, 0.0, dst);
    EXPECT_EQ(Message(), L"Division by zero");
    EXPECT_EQ(Status::Error().Code, OutOfRange);
}

TEST_F(OperatorTest, BlendsOfEveryPairOfBytesSaturateOutsideTheirRange)
{
    for (const PixelTypes type : {Gray, Rgb, Rgba}) {
        Image a, b, dst;
        AllPairs(a, b, type);
        for (const double alpha : {-2.0, -0.3, 0.0, 0.29, 0.5, 1.0, 1.75, 1e9}) {
            Operator::Blend(alpha, a, b, dst);
            ASSERT_EQ(Status::Error().Code, NoError);
            const double weight = std::trunc(std::min(alpha, 1e4) * 256);
            for (int y = 0; y < 256; y++)
                for (int x = 0; x < RowBytes(a.Width, type); x++)
                    ASSERT_EQ(dst.Row(y)[x], Clip((x * weight + y * (256 - weight)) / 256))
                        << alpha << ' ' << x << ' ' << y;
        }
    }
}

TEST_F(OperatorTest, EqualityIsToldInGray)
{
    Image src, srcB, dst;
    for (const PixelTypes type : {Gray, Rgb}) {
        AllPairs(src, srcB, type);
        Operator::EqualTest(src, srcB, dst, 3, 200);
        ASSERT_EQ(Status::Error().Code, NoError);
        ASSERT_EQ(dst.Type, Gray);
        for (int y = 0; y < 256; y++)
            for (int x = 0; x < src.Width; x++)
                ASSERT_EQ(dst.Row(y)[x], type == Gray && x == y ? 200 : 3) << x << ' ' << y;
    }
    Row(src, Rgb, {7, 7, 7, 7, 7, 8, 7, 8, 7, 8, 7, 7, 255, 255, 255});
    Row(srcB, Rgb, {7, 7, 7, 7, 7, 8, 7, 9, 7, 9, 7, 7, 255, 255, 254});
    Operator::EqualTest(src, srcB, dst, 3, 200);
    EXPECT_EQ(Values(dst), (Ints{200, 200, 3, 3, 3}));
    Operator::EqualTest(7, src, dst, 3, 200);
    EXPECT_EQ(Values(dst), (Ints{200, 3, 3, 3, 3}));
    Operator::EqualTest(-1, src, dst, 3, 200);
    EXPECT_EQ(Values(dst), (Ints{3, 3, 3, 3, 3})) << "outside the range nothing is equal";
    // Wide pixels compare as 16-bit numbers.
    Row(src, Gray16, {0, 255, 4464, 65535});
    Operator::EqualTest(70000, src, dst, 3, 200);
    EXPECT_EQ(Values(dst), (Ints{3, 3, 200, 3}));
    Operator::EqualTest(-1, src, dst);
    EXPECT_EQ(Values(dst), (Ints{0, 0, 0, 255}));
    Operator::EqualTest(255, src, src);
    EXPECT_EQ(Message(), L"This operation can't be done in-place");
    EXPECT_EQ(Status::Error().Code, IncompatibleMode);
    EXPECT_EQ(Values(src), (Ints{0, 255, 4464, 65535}));
    Operator::EqualTest(src, src, dst);
    EXPECT_EQ(Status::Error().Code, UnsupportedType);
}
