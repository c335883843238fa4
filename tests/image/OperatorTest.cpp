#include "image/Operator.h"
#include "foundation/Status.h"

#include <gtest/gtest.h>

#include <cmath>
#include <cstring>
#include <functional>
#include <string>
#include <vector>

using namespace Tesk;

namespace {

class OperatorTest : public ::testing::Test
{
protected:
    void SetUp() override
    {
        Status::ErrorBehavior(IgnoreIt);
        Operator::GrayDepth = 16;
    }
    void TearDown() override
    {
        Status::Shallow = false;
        Operator::GrayDepth = 16;
    }
};

/// Every pair of bytes: `a` counts along the rows, `b` down the columns.
void AllPairs(Image& a, Image& b)
{
    a.Set(256, 256, Gray);
    b.Set(256, 256, Gray);
    for (int y = 0; y < 256; y++)
        for (int x = 0; x < 256; x++) {
            a.Row(y)[x] = static_cast<std::uint8_t>(x);
            b.Row(y)[x] = static_cast<std::uint8_t>(y);
        }
}

void Row(Image& image, PixelTypes type, std::initializer_list<int> values)
{
    const int channels = type == Rgb ? 3 : 1;
    image.Set(static_cast<int>(values.size()) / channels, 1, type);
    int i = 0;
    for (const int v : values) {
        if (type == Gray16)
            image.Row<std::uint16_t>(0)[i++] = static_cast<std::uint16_t>(v);
        else if (type == Gray32)
            image.Row<std::int32_t>(0)[i++] = v;
        else
            image.Row(0)[i++] = static_cast<std::uint8_t>(v);
    }
}

std::vector<int> Values(const Image& image)
{
    std::vector<int> values;
    const int n = image.Type == Gray16 ? int(image.Width) : RowBytes(image.Width, image.Type);
    for (int y = 0; y < image.Height; y++)
        for (int i = 0; i < n; i++)
            values.push_back(image.Type == Gray16 ? image.Row<std::uint16_t>(y)[i] : image.Row(y)[i]);
    return values;
}

using Ints = std::vector<int>;

std::wstring Message()
{
    return Status::UnicodeError();
}

int Clip(double v)
{
    return v < 0 ? 0 : v > 255 ? 255 : static_cast<int>(v);
}

} // namespace

TEST_F(OperatorTest, TwoImageFormulasOnEveryPairOfBytes)
{
    using Call = void (*)(const Image&, const Image&, Image&, GrayClipping);
    using Formula = std::function<int(int, int)>;
    const struct
    {
        const char* name;
        Call call;
        GrayClipping clip;
        Formula formula;
    } cases[] = {
        {"add", Operator::Add, Saturate, [](int a, int b) { return a + b > 255 ? 255 : a + b; }},
        {"add rescaled", Operator::Add, Rescale, [](int a, int b) { return (a + b) / 2; }},
        {"subtract", Operator::Subtract, Saturate, [](int a, int b) { return a > b ? a - b : 0; }},
        {"difference", Operator::Subtract, Absolute, [](int a, int b) { return a > b ? a - b : b - a; }},
        {"negative", Operator::Subtract, Negative, [](int a, int b) { return a > b ? 0 : b - a; }},
        {"subtract rescaled", Operator::Subtract, Rescale, [](int a, int b) { return (a - b + 255) / 2; }},
        {"multiply", Operator::Multiply, Saturate, [](int a, int b) { return a * b > 255 ? 255 : a * b; }},
        {"multiply rescaled", Operator::Multiply, Rescale, [](int a, int b) { return a * b / 256; }},
        {"divide", Operator::Divide, Saturate, [](int a, int b) { return b ? a / b : 255; }},
        {"divide rescaled", Operator::Divide, Rescale, [](int a, int b) { return b ? Min(255, a * 256 / b) : 255; }}};
    Image a, b, dst;
    AllPairs(a, b);
    for (const auto& c : cases) {
        c.call(a, b, dst, c.clip);
        ASSERT_EQ(Status::Error().Code, NoError) << c.name;
        for (int y = 0; y < 256; y++)
            for (int x = 0; x < 256; x++)
                ASSERT_EQ(dst.Row(y)[x], c.formula(x, y)) << c.name << ' ' << x << ' ' << y;
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
        Operator::Maximize(k, a, dst);
        expect("maximum", [&](int v) { return Clip(std::max<double>(v, c)); });
        Operator::And(k, a, dst);
        expect("and", [&](int v) { return static_cast<int>(static_cast<unsigned>(k) & static_cast<unsigned>(v)); });
        Operator::GreaterTest(k, a, dst, 3, 200);
        expect("greater", [&](int v) { return c > v ? 200 : 3; });
        Operator::GreaterEqualTest(a, k, dst, 3, 200);
        expect("greater or equal", [&](int v) { return v >= c ? 200 : 3; });
        Operator::EqualTest(k, a, dst);
        expect("equal", [&](int v) { return v == c ? 255 : 0; });
        Operator::Multiply(c / 64, a, dst, Saturate);
        expect("times", [&](int v) { return Clip(v * (c / 64)); });
        Operator::Divide(c, a, dst, Saturate);
        expect("by image", [&](int v) { return v == 0 ? 255 : Clip(c / v); });
    }
    Operator::Multiply(std::nan(""), a, dst);
    EXPECT_EQ(dst.Row(0)[200], 0);
    Operator::Divide(a, 0.0, dst);
    EXPECT_EQ(Message(), L"Division by zero");
    EXPECT_EQ(Status::Error().Code, OutOfRange);
}

TEST_F(OperatorTest, WindowsInPlaceAndOverlapGiveTheSameAsACopy)
{
    for (const PixelTypes type : {Gray, Rgb})
        for (int width = 1; width <= 40; width += 3) {
            Image store, a, b, expected;
            const int channels = type == Rgb ? 3 : 1;
            store.Set(60, 12, type);
            for (int y = 0; y < 12; y++)
                for (int i = 0; i < 60 * channels; i++)
                    store.Row(y)[i] = static_cast<std::uint8_t>(i * 7 + y * 31 + i * y);
            Image original;
            Operator::Copy(store, original);
            store.Window(5, 2, width, 7);
            Operator::Copy(store, a);
            Operator::Invert(a, expected);
            // Shifted by one pixel within one store: written where the source is still to be read.
            Image shifted;
            shifted.ShallowCopy(store, true);
            shifted.Window(6, 3, width, 7);
            Operator::Invert(store, shifted);
            EXPECT_EQ(Values(shifted), Values(expected)) << width;
            // Outside the window nothing is touched.
            store.Window();
            for (int y = 0; y < 12; y++)
                for (int x = 0; x < 60; x++)
                    if (x < 6 || x >= 6 + width || y < 3 || y >= 10) {
                        ASSERT_EQ(std::memcmp(store.Row(y) + x * channels, original.Row(y) + x * channels,
                                              static_cast<std::size_t>(channels)),
                                  0);
                    }
            Operator::Copy(original, b);
            b.Window(5, 2, width, 7);
            Operator::Add(b, b, b, Saturate);
            Operator::Add(a, a, expected, Saturate);
            EXPECT_EQ(Values(b), Values(expected));
        }
}

TEST_F(OperatorTest, UnderSharingRecordedValuesStay)
{
    Status::Shallow = true;
    Image image, recorded;
    Row(image, Gray, {1, 2, 3});
    recorded.ShallowCopy(image, true);
    Operator::Invert(image, image);
    EXPECT_EQ(Values(image), (Ints{254, 253, 252}));
    EXPECT_EQ(Values(recorded), (Ints{1, 2, 3}));
    Operator::Copy(image, image, Rgb);
    EXPECT_EQ(Values(image), (Ints{254, 254, 254, 253, 253, 253, 252, 252, 252}));
}

TEST_F(OperatorTest, BlendGivesItsSourcesAtTheEnds)
{
    Image a, b, dst;
    Row(a, Gray, {0, 100, 255});
    Row(b, Gray, {255, 50, 0});
    Operator::Blend(1.0, a, b, dst);
    EXPECT_EQ(Values(dst), Values(a));
    Operator::Blend(0.0, a, b, dst);
    EXPECT_EQ(Values(dst), Values(b));
    Operator::Blend(0.25, a, b, dst);
    EXPECT_EQ(Values(dst), (Ints{191, 62, 63}));
    Row(a, Gray16, {65535, 1000});
    Row(b, Gray16, {0, 2000});
    Operator::Blend(0.5, a, b, dst);
    EXPECT_EQ(Values(dst), (Ints{32767, 1500}));
}

TEST_F(OperatorTest, CopiesConvertByTheGrayDepth)
{
    Operator::GrayDepth = 12;
    Image src, dst;
    Row(src, Gray, {0, 127, 128, 255});
    Operator::Copy(src, dst, Gray16);
    EXPECT_EQ(Values(dst), (Ints{0, 127 << 4, 128 << 4, 255 << 4}));
    Operator::Copy(src, dst, Gray1);
    EXPECT_EQ(dst.Row(0)[0], 0x30);
    Row(src, Gray16, {0, 2047, 2048, 5000});
    Operator::Copy(src, dst, Gray);
    EXPECT_EQ(Values(dst), (Ints{0, 127, 128, 255}));
    Row(src, Gray32, {-5000, 4095, 100000});
    Operator::Copy(src, dst, Gray);
    EXPECT_EQ(Values(dst), (Ints{0, 255, 255}));
    Row(src, Rgb, {10, 20, 30, 90, 5, 7});
    Operator::Copy(src, dst, Gray);
    EXPECT_EQ(Values(dst), (Ints{30, 90}));
    Operator::Copy(src, dst, Rgba);
    EXPECT_EQ(Values(dst), (Ints{10, 20, 30, 255, 90, 5, 7, 255}));
    Operator::Copy(src, dst, Gray16);
    EXPECT_EQ(Message(), L"Destination image type (Gray16) not supported for this operation");
    Image grad;
    grad.Set(2, 1, Grad);
    grad.Row<GradPixel>(0)[0] = {-100, 40};
    grad.Row<GradPixel>(0)[1] = {3, 900};
    const struct
    {
        int gain, first, second;
    } gains[] = {{1, 100, 255}, {3, 33, 255}, {4, 25, 225}, {6, 16, 149}, {8, 12, 112}, {15, 6, 59}};
    for (const auto& g : gains) {
        grad.GradGain = g.gain;
        Operator::Copy(grad, dst, Gray);
        EXPECT_EQ(Values(dst), (Ints{g.first, g.second})) << g.gain;
    }
}

TEST_F(OperatorTest, ConstantsFillByTheTypeOfTheDestination)
{
    Image dst;
    Operator::Copy(5, dst);
    EXPECT_EQ(Status::Error().Code, VoidObject);
    dst.Set(2, 1, Gray16);
    Operator::Copy(0x12345, dst);
    EXPECT_EQ(Values(dst), (Ints{0x2345, 0x2345}));
    dst.Set(1, 1, Rgb);
    Operator::Copy(RgbPixel(1, 2, 3), dst);
    EXPECT_EQ(Values(dst), (Ints{3, 2, 1}));
    Operator::Copy(RgbaPixel(1, 2, 3, 4), dst);
    EXPECT_EQ(Message(), L"Destination image type (Rgb) not supported for this operation");
}

TEST_F(OperatorTest, ColorComponentsOfKnownColors)
{
    Image src, dst;
    Row(src, Rgb, {0, 0, 255, 0, 255, 0, 255, 0, 0, 40, 80, 120}); // red, green, blue, a brown
    const struct
    {
        ColorComponents component;
        Ints values;
    } cases[] = {{Red_RGB, {255, 0, 0, 120}},
                 {Blue_RGB, {0, 0, 255, 40}},
                 {Hue_HLS, {0, 86, 171, 21}},
                 {Lightness_HLS, {127, 127, 127, 80}},
                 {Saturation_HSV, {255, 255, 255, 170}},
                 {Value_HSV, {255, 255, 255, 120}},
                 {Luma_YUV, {76, 149, 29, 87}},
                 {Saturation_HLS, {255, 255, 255, 127}}};
    for (const auto& c : cases) {
        Operator::Convert(src, dst, c.component);
        EXPECT_EQ(Values(dst), c.values) << c.component;
    }
    Operator::Convert(src, dst, Alpha);
    EXPECT_EQ(Message(), L"The Color Component (Alpha) is not supported for a Rgb source image");
    Image gray, rgb;
    Row(gray, Gray, {9});
    Row(rgb, Rgb, {1, 2, 3});
    Operator::Convert(gray, rgb, Blue_RGB);
    EXPECT_EQ(Values(rgb), (Ints{9, 2, 3}));
    Operator::Convert(gray, rgb, Hue_HLS);
    EXPECT_EQ(Message(), L"The Color Component (Hue (HLS)) is not supported for a Gray source image");
    Row(rgb, Rgb, {10, 20, 40});
    Operator::ColorsLighten(rgb, dst, 10);
    EXPECT_EQ(Values(dst), (Ints{63, 127, 255}));
    Operator::ColorsSaturate(rgb, dst, 10);
    EXPECT_EQ(Values(dst), (Ints{0, 13, 40}));
    Operator::ColorsHueSet(0, rgb, dst);
    EXPECT_EQ(Values(dst), (Ints{10, 10, 40}));
    Operator::RedBlueSwap(rgb, rgb);
    EXPECT_EQ(Values(rgb), (Ints{40, 20, 10}));
}

TEST_F(OperatorTest, ThresholdsSeparate)
{
    Image src, dst;
    Row(src, Gray, {10, 12, 100, 101, 200, 202});
    EXPECT_EQ(Operator::Binarize(100, src, dst), 100);
    EXPECT_EQ(Values(dst), (Ints{0, 0, 0, 255, 255, 255}));
    Operator::Binarize(100, src, dst, false);
    EXPECT_EQ(Values(dst), (Ints{255, 255, 255, 0, 0, 0}));
    Operator::Binarize(100, src, dst, true, ToGray1);
    EXPECT_EQ(PixelTypes(dst.Type), Gray1);
    EXPECT_EQ(dst.Row(0)[0], 0x1c);
    Row(src, Gray, {10, 12, 200, 202});
    // Every split from 13 to 200 is equally good.
    EXPECT_EQ(Operator::Binarize(Auto, src, dst), (13 + 200) / 2);
    EXPECT_EQ(Values(dst), (Ints{0, 0, 255, 255}));
    Operator::Binarize(src, dst, true, Means);
    EXPECT_EQ(Values(dst), (Ints{11, 11, 201, 201}));
    Row(src, Gray, {7, 7, 7});
    EXPECT_EQ(Operator::Binarize(Auto, src, dst), 0);
    Row(src, Rgb, {0, 0, 200, 0, 0, 210, 200, 0, 0, 210, 0, 0});
    Operator::Binarize(RgbPixel(200, 0, 0), RgbPixel(0, 0, 200), src, dst);
    EXPECT_EQ(Values(dst), (Ints{0, 0, 255, 255}));
    Operator::Binarize(RgbPixel(205, 0, 0), RgbPixel(5, 0, 0), src, dst, Binary, false);
    EXPECT_EQ(Values(dst), (Ints{255, 255, 0, 0}));
    Row(src, Rgb, {10, 10, 10, 20, 15, 12, 200, 180, 190, 210, 200, 205});
    EXPECT_EQ(Operator::Binarize(src, dst), 0);
    EXPECT_EQ(Values(dst), (Ints{0, 0, 255, 255}));
    Operator::Binarize(src, dst, true, Means);
    EXPECT_EQ(Message(), L"The operation mode is not supported for this image type (Rgb)");
}

TEST_F(OperatorTest, TheAdaptiveThresholdAgreesWithTheDirectSum)
{
    for (const PixelTypes type : {Gray, Gray16})
        for (const int size : {1, 3, 9, 31}) {
            Image src, dst;
            src.Set(13, 7, type);
            for (int y = 0; y < 7; y++)
                for (int x = 0; x < 13; x++) {
                    const int v = (x * 57 + y * 91 + x * y * 13) % 251;
                    if (type == Gray)
                        src.Row(y)[x] = static_cast<std::uint8_t>(v);
                    else
                        src.Row<std::uint16_t>(y)[x] = static_cast<std::uint16_t>(v * 257);
                }
            Operator::Binarize(size, 4, src, dst);
            for (int y = 0; y < 7; y++)
                for (int x = 0; x < 13; x++) {
                    const auto at = [&](int px, int py) {
                        px = Clamp(px, 0, 12);
                        py = Clamp(py, 0, 6);
                        return type == Gray ? long{src.Row(py)[px]} : long{src.Row<std::uint16_t>(py)[px]};
                    };
                    long sum = 0;
                    for (int dy = -size / 2; dy <= size / 2; dy++)
                        for (int dx = -size / 2; dx <= size / 2; dx++)
                            sum += at(x + dx, y + dy);
                    const bool above = at(x, y) * size * size >= sum + 4L * size * size;
                    ASSERT_EQ(dst.Row(y)[x], above ? 255 : 0) << size << ' ' << x << ' ' << y;
                }
        }
    Image src, dst;
    Row(src, Gray, {1, 2});
    for (const int size : {0, -3, 4}) {
        Operator::Binarize(size, 0, src, dst);
        EXPECT_EQ(Status::Error().Code, OutOfRange);
    }
}

TEST_F(OperatorTest, ShadingCorrectionClampsAndKeepsItsLevels)
{
    Image src, white, black, dst;
    Row(src, Gray, {50, 100, 200, 30});
    Row(white, Gray, {100, 200, 250, 0});
    Row(black, Gray, {0, 0, 50, 0});
    Operator::AddCorrect(src, white, dst, 120);
    EXPECT_EQ(Values(dst), (Ints{70, 20, 70, 150}));
    Operator::MultiplyCorrect(src, white, dst, 200);
    EXPECT_EQ(Values(dst), (Ints{100, 100, 160, 200}));
    Operator::Correct(src, black, white, dst, 10, 210);
    EXPECT_EQ(Values(dst), (Ints{110, 110, 160, 200}));
    Row(src, Gray16, {40000, 10});
    Row(white, Gray16, {0, 20});
    Operator::AddCorrect(src, white, dst, 0);
    EXPECT_EQ(Values(dst), (Ints{32767, 0}));
    Row(src, Rgb, {1, 2, 3, 4, 5, 6});
    Operator::AddCorrect(src, white, dst, 0);
    EXPECT_EQ(Message(), L"The black reference image must be of type Gray");
    Row(white, Gray, {0, 0});
    Operator::AddCorrect(src, white, dst, RgbPixel(30, 20, 10));
    EXPECT_EQ(Values(dst), (Ints{11, 22, 33, 14, 25, 36}));
}

TEST_F(OperatorTest, GrayScaling)
{
    Image src, dst;
    Row(src, Gray, {0, 10, 100, 200});
    Operator::GainOffset(1.5, -10, src, dst);
    EXPECT_EQ(Values(dst), (Ints{0, 5, 140, 255}));
    Operator::Equalize(src, dst);
    EXPECT_EQ(Values(dst), (Ints{0, 63, 127, 191}));
    Row(src, Gray, {100, 120});
    Operator::Normalize(50, 400, src, dst);
    EXPECT_EQ(Values(dst), (Ints{30, 70}));
    Row(src, Gray, {5, 9, 5});
    Operator::Equalize(3, src, dst);
    // The box holds each column three times; at the ends the first or last column once more.
    EXPECT_EQ(Values(dst), (Ints{0, 6 * 255 / 9, 0}));
}

TEST_F(OperatorTest, RefusalsNameTheirReasonAndMethod)
{
    Image empty, gray, wide, rgb, dst;
    Row(gray, Gray, {1, 2});
    Row(wide, Gray, {1, 2, 3});
    Row(rgb, Rgb, {1, 2, 3, 4, 5, 6});
    Image gray32;
    Row(gray32, Gray32, {1, 2});
    const struct
    {
        std::function<void()> call;
        int code;
        const wchar_t* message;
        const char* context;
    } cases[] = {{[&] { Operator::Add(empty, gray, dst); }, VoidObject, L"Void source or destination image",
                  "Tesk::Operator::Add"},
                 {[&] { Operator::Subtract(gray, rgb, dst); }, IncompatibleType,
                  L"Incompatible source or destination image types, Rgb instead of Gray", "Tesk::Operator::Subtract"},
                 {[&] { Operator::Blend(0.5, gray, wide, dst); }, IncompatibleSize,
                  L"Incompatible source or destination image sizes, (2, 1) vs. (3, 1)", "Tesk::Operator::Blend"},
                 {[&] { Operator::Invert(gray32, dst); }, UnsupportedType,
                  L"The image type (Gray32) is not supported for this operation", "Tesk::Operator::Invert"},
                 {[&] { Operator::Add(gray, gray, dst, Absolute); }, OutOfRange,
                  L"The clipping mode (Absolute) is not supported for this operation", "Tesk::Operator::Add"},
                 {[&] { Operator::Multiply(2.0, gray, dst, Negative); }, OutOfRange,
                  L"The clipping mode (Negative) is not supported for this operation", "Tesk::Operator::Multiply"},
                 {[&] { Operator::ColorsLighten(gray, dst); }, UnsupportedType,
                  L"The source image type (Gray) is not supported for this operation, use Rgb only",
                  "Tesk::Operator::ColorsLighten"},
                 {[&] { Operator::Normalize(1, 1, rgb, dst); }, UnsupportedType,
                  L"The image type (Rgb) is not supported for this operation", "Tesk::Operator::Normalize"}};
    for (const auto& c : cases) {
        c.call();
        EXPECT_EQ(Status::Error().Code, c.code) << c.context;
        EXPECT_EQ(Message(), c.message);
        EXPECT_STREQ(Status::AsciiFunction(), c.context);
    }
}
