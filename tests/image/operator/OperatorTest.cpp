#include "image/Kernel.h"

#include "image/operator/OperatorChecks.h"

#include <algorithm>
#include <cmath>
#include <cstring>
#include <functional>
#include <utility>

using namespace Tesk;
using namespace Tesk::checks;

namespace {

/// Bytes that differ from their neighbours, in the whole store.
void Mix(Image& image, int seed)
{
    const int bytes = RowBytes(image.StoreWidth, image.Type);
    for (int y = 0; y < image.Height; y++)
        for (int i = 0; i < bytes; i++)
            image.Row(y)[i] = static_cast<std::uint8_t>((i * 7 + y * 31 + i * y + seed) * 157 >> 2);
}

/// Lays an image over rows of `pitch` bytes, with `reversed` the first of them last in memory.
void Lay(Image& image, std::uint8_t* memory, int width, int height, int pitch, bool reversed)
{
    image.Set(width, height, Gray, memory + (reversed ? pitch * (height - 1) : 0), reversed ? -pitch : pitch);
}

} // namespace

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

TEST_F(OperatorTest, StoresLaidOverOneAnotherAreKeptApart)
{
    const auto inverted = [](const Image& s, Image& other) { Operator::Invert(s, other); };
    const std::pair<const char*, std::function<void(const Image&, Image&)>> operations[] = {
        {"point", [](auto& s, auto& d) { Operator::Invert(s, d); }},
        {"pair",
         [&](auto& s, auto& d) {
             Image other;
             inverted(s, other);
             Operator::Subtract(other, s, d, Rescale);
         }},
        {"reference",
         [&](auto& s, auto& d) {
             Image other;
             inverted(s, other);
             Operator::AddCorrect(other, s, d, 99);
         }},
        {"copy", [](auto& s, auto& d) { Operator::Copy(s, d); }},
        {"adaptive threshold", [](auto& s, auto& d) { Operator::Binarize(3, 2, s, d); }},
        {"adaptive equalisation", [](auto& s, auto& d) { Operator::Equalize(3, s, d); }},
        {"square", [](auto& s, auto& d) { Kernel::Binomial(s, d); }},
        {"box", [](auto& s, auto& d) { Kernel::BoxLowPass(5, 3, s, d); }}};
    constexpr int width = 21, height = 6, pitch = 24;
    const struct
    {
        int offset, pitch; ///< of the destination, from the source's memory
        bool reversedSource, reversed;
    } layouts[] = {{0, 24, true, true},    {0, 24, false, true}, {0, 24, true, false}, {1, 24, false, false},
                   {24, 24, false, false}, {24, 24, true, true}, {0, 28, false, false}};
    for (const auto& [name, operation] : operations)
        for (const auto& layout : layouts) {
            std::vector<std::uint8_t> memory(pitch * 2 * height);
            for (std::size_t i = 0; i < memory.size(); i++)
                memory[i] = static_cast<std::uint8_t>((i * i * 5 + i / 7 * 91) >> 1);
            Image src, dst, copy, expected;
            Lay(src, memory.data(), width, height, pitch, layout.reversedSource);
            Operator::Copy(src, copy);
            operation(copy, expected);
            Lay(dst, memory.data() + layout.offset, width, height, layout.pitch, layout.reversed);
            operation(src, dst);
            ASSERT_EQ(Status::Error().Code, NoError) << name;
            EXPECT_EQ(Values(dst), Values(expected)) << name << ' ' << layout.offset << ' ' << layout.pitch << ' '
                                                     << layout.reversedSource << layout.reversed;
        }
    // Two types over the same memory: the copy takes that of the source, elsewhere.
    std::vector<std::uint8_t> memory(2 * width);
    Image bytes, words;
    bytes.Set(width, 1, Gray, memory.data());
    words.Set(width, 1, Gray16, memory.data());
    Operator::Copy(bytes, words);
    EXPECT_EQ(words.Type, Gray);
}

TEST_F(OperatorTest, PackedWindowsKeepThePixelsBeyondThem)
{
    const std::pair<const char*, std::function<void(const Image&, const Image&, Image&)>> operations[] = {
        {"invert", [](auto& a, auto&, auto& d) { Operator::Invert(a, d); }},
        {"copy", [](auto& a, auto&, auto& d) { Operator::Copy(a, d); }},
        {"and", [](auto& a, auto& b, auto& d) { Operator::And(a, b, d); }},
        {"or", [](auto& a, auto& b, auto& d) { Operator::Or(a, b, d); }},
        {"xor", [](auto& a, auto& b, auto& d) { Operator::Xor(a, b, d); }},
        {"packed from gray",
         [](auto& a, auto&, auto& d) {
             Image gray;
             Operator::Copy(a, gray, Gray);
             Operator::Copy(gray, d, Gray1);
         }},
        {"threshold", [](auto& a, auto&, auto& d) {
             Image gray;
             Operator::Copy(a, gray, Gray);
             Operator::Binarize(100, gray, d, false, ToGray1);
         }}};
    // Rows of 32 pixels have no gaps between them.
    for (const int storeWidth : {21, 32})
        for (int width = 1; width < storeWidth; width++)
            for (const auto& [name, operation] : operations) {
                Image a, b, dst, whole, expected;
                a.Set(storeWidth, 3, Gray1);
                b.Set(storeWidth, 3, Gray1);
                dst.Set(storeWidth, 3, Gray1);
                Mix(a, 3);
                Mix(b, 66);
                Mix(dst, 29);
                operation(a, b, expected);
                Operator::Copy(dst, whole);
                for (Image* image : {&a, &b, &dst})
                    image->Window(0, 1, width, 2);
                operation(a, b, dst);
                ASSERT_EQ(Status::Error().Code, NoError) << name;
                dst.Window();
                for (int y = 0; y < 3; y++)
                    for (int x = 0; x < storeWidth; x++) {
                        const bool inside = y >= 1 && x < width;
                        ASSERT_EQ(dst.PixelGray1(x, y), (inside ? expected : whole).PixelGray1(x, y))
                            << name << ' ' << width << ' ' << x << ' ' << y;
                    }
            }
}

TEST_F(OperatorTest, ResultsOfAnotherTypeInPlaceEqualThoseApart)
{
    const struct
    {
        const char* name;
        PixelTypes type;
        std::function<void(const Image&, Image&)> call;
    } cases[] = {{"widened", Gray, [](auto& s, auto& d) { Operator::Copy(s, d, Gray16); }},
                 {"narrowed", Gray16, [](auto& s, auto& d) { Operator::Copy(s, d, Gray); }},
                 {"packed", Gray16, [](auto& s, auto& d) { Operator::Copy(s, d, Gray1); }},
                 {"unpacked", Gray1, [](auto& s, auto& d) { Operator::Copy(s, d, Gray); }},
                 {"coloured", Gray, [](auto& s, auto& d) { Operator::Convert(s, d, Green_RGB); }},
                 {"component", Rgb, [](auto& s, auto& d) { Operator::Convert(s, d, Luma_YUV); }},
                 {"equal", Rgb, [](auto& s, auto& d) { Operator::EqualTest(77, s, d); }},
                 {"bits", Gray, [](auto& s, auto& d) { Operator::Binarize(100, s, d, true, ToGray1); }},
                 {"adaptive", Gray16, [](auto& s, auto& d) { Operator::Binarize(3, 9, s, d); }},
                 {"colours", Rgb, [](auto& s, auto& d) { Operator::Binarize(s, d, true, Soft); }},
                 {"mosaic", Gray, [](auto& s, auto& d) { Operator::DeBayer(s, d); }}};
    for (const bool shallow : {false, true})
        for (const auto& c : cases) {
            Status::Shallow = false;
            Image image, recorded, before, expected;
            image.Set(19, 7, c.type);
            Mix(image, 5);
            Operator::Copy(image, before);
            c.call(before, expected);
            Status::Shallow = shallow;
            recorded.ShallowCopy(image, true);
            c.call(image, image);
            ASSERT_EQ(Status::Error().Code, NoError) << c.name;
            EXPECT_EQ(image.Type, expected.Type) << c.name;
            EXPECT_EQ(Values(image), Values(expected)) << c.name;
            EXPECT_EQ(Values(recorded), Values(before)) << c.name;
        }
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
    Row(src, Gray, {0, 3, 255});
    Operator::Copy(src, dst, Gray32);
    EXPECT_EQ(Values(dst), (Ints{0, 3 << 4, 255 << 4}));
    Operator::Copy(src, dst, Rgba);
    EXPECT_EQ(Values(dst), (Ints{0, 0, 0, 255, 3, 3, 3, 255, 255, 255, 255, 255}));
    Row(src, Gray16, {0, 2047, 2048, 5000, 16, 65535, 2048, 1, 2048});
    Operator::Copy(src, dst, Gray1);
    EXPECT_EQ(Values(dst), (Ints{0, 0, 1, 1, 0, 1, 1, 0, 1}));
    src.ShallowCopy(dst, true);
    Operator::Copy(src, dst, Gray);
    EXPECT_EQ(Values(dst), (Ints{0, 0, 255, 255, 0, 255, 255, 0, 255}));
    Row(src, Rgba, {10, 20, 31, 40, 255, 255, 255, 0, 0, 0, 3, 9});
    Operator::Copy(src, dst, Gray);
    EXPECT_EQ(Values(dst), (Ints{61 * 85 >> 8, 765 * 85 >> 8, 0}));
    Operator::Copy(src, dst, Rgb);
    EXPECT_EQ(Values(dst), (Ints{10, 20, 31, 255, 255, 255, 0, 0, 3}));
    Operator::Copy(src, dst, Gray1);
    EXPECT_EQ(Message(), L"Destination image type (Gray1) not supported for this operation");
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

TEST_F(OperatorTest, MeansAndRampsOfEveryGrayValue)
{
    // Each gray value once.
    Ints all;
    for (int v = 0; v < 256; v++)
        all.push_back(v);
    Image src, dst;
    Row(src, Gray, all);
    const auto expect = [&](const char* name, auto formula) {
        ASSERT_EQ(Status::Error().Code, NoError) << name;
        for (int v = 0; v < 256; v++)
            ASSERT_EQ(dst.Row(0)[v], formula(v)) << name << ' ' << v;
    };
    const auto ramp = [](double v, double from, double to, bool above) {
        const double part = (v - from) / (to - from);
        return Clip(above ? 255 * part : 255 - 255 * part);
    };
    for (const bool above : {true, false}) {
        // The parts are [0, 100) and [100, 256), while the pixel of the threshold itself counts as below.
        Operator::Binarize(100, src, dst, above, Means);
        expect("means", [](int v) { return v > 100 ? 177 : 49; });
        Operator::Binarize(100, src, dst, above, Soft);
        expect("soft", [&](int v) { return ramp(v, 49.5, 177.5, above); });
        EXPECT_EQ(Operator::Binarize(src, dst, above, Soft), 128);
        expect("soft, automatic", [&](int v) { return ramp(v, 63.5, 191.5, above); });
        for (const auto& [back, fore] : {std::pair{40, 201}, {201, 40}}) {
            const auto b = static_cast<GrayPixel>(back), f = static_cast<GrayPixel>(fore);
            const auto fromBack = [&, back = back, fore = fore](int v) { return fore > back ? v > 120 : v <= 120; };
            Operator::Binarize(b, f, src, dst, above);
            expect("two values", [&](int v) { return fromBack(v) == above ? 255 : 0; });
            Operator::Binarize(b, f, src, dst, above, Means);
            expect("two means", [](int v) { return v > 120 ? 201 : 40; });
            Operator::Binarize(b, f, src, dst, above, Soft);
            expect("two ends", [&, back = back, fore = fore](int v) { return ramp(v, back, fore, above); });
            Operator::Binarize(b, f, src, dst, above, ToGray1);
            const Ints bits = Values(dst);
            for (int v = 0; v < 256; v++)
                ASSERT_EQ(bits[static_cast<std::size_t>(v)], fromBack(v) == above) << v;
        }
    }
    for (const int threshold : {MinInt, -1, 255, MaxInt}) {
        Operator::Binarize(threshold, src, dst);
        expect("an end", [&](int v) { return v > threshold ? 255 : 0; });
    }
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
    Row(white, Gray, {100, 0});
    Row(black, Gray, {50, 0});
    Row(src, Rgb, {75, 25, 200, 1, 2, 3});
    Operator::MultiplyCorrect(src, white, dst, RgbPixel(30, 200, 80));
    EXPECT_EQ(Values(dst), (Ints{60, 50, 60, 80, 200, 30}));
    Operator::Correct(src, black, white, dst, RgbPixel(10, 20, 40), RgbPixel(20, 220, 140));
    EXPECT_EQ(Values(dst), (Ints{90, 0, 40, 100, 200, 10}));
    Row(src, Gray16, {40000, 10});
    Row(white, Gray16, {1000, 20});
    Row(black, Gray16, {0, 0});
    Operator::MultiplyCorrect(src, white, dst, 30000);
    EXPECT_EQ(Values(dst), (Ints{32767, 15000}));
    Operator::Correct(src, black, white, dst, 100, 30100);
    EXPECT_EQ(Values(dst), (Ints{32767, 15100}));
    Operator::Correct(src, black, white, white, 100, 30100);
    EXPECT_EQ(Values(white), (Ints{32767, 15100})) << "the reference may be the destination";
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
    Operator::GrayDepth = 12;
    // A value beyond the depth counts as the largest.
    Row(src, Gray16, {0, 4095, 300, 300, 65535});
    Operator::Equalize(src, dst);
    EXPECT_EQ(Values(dst), (Ints{0, 3 * 4095 / 5, 1 * 4095 / 5, 1 * 4095 / 5, 3 * 4095 / 5}));
    // Sums of 60, 300 and 600, of which 0, 1 and 3 out of 4 are darker: factors of 0, 3 / 4 and 9 / 4.
    Row(src, Rgb, {100, 110, 90, 200, 250, 150, 10, 20, 30, 90, 190, 20});
    Operator::Equalize(src, dst);
    EXPECT_EQ(Values(dst), (Ints{75, 82, 67, 255, 255, 255, 0, 0, 0, 67, 142, 15}));
}

TEST_F(OperatorTest, EqualisationOfOneLevelIsBlack)
{
    for (const PixelTypes type : {Gray, Gray16, Rgb})
        for (const bool last : {false, true}) {
            Image src, dst;
            src.Set(23, 6, type);
            Mix(src, 1);
            src.Window(2, 1, 19, 4);
            Operator::Copy(77 * 257, src);
            const int bytes = RowBytes(19, type);
            if (last) src.Row(3)[bytes - 1] = 200;
            Operator::Equalize(src, dst);
            ASSERT_EQ(Status::Error().Code, NoError);
            Ints expected(static_cast<std::size_t>(19 * 4 * (type == Rgb ? 3 : 1)));
            // 75 of 76 pixels are darker than the last one.
            if (last && type == Rgb)
                for (const int channel : {1, 2, 3})
                    expected[expected.size() - static_cast<std::size_t>(channel)] =
                        channel == 1 ? 255 : Clip(77 * 3 * 75 / 76.0);
            else if (last)
                expected.back() = 75 * (type == Gray ? 255 : 65535) / 76;
            EXPECT_EQ(Values(dst), expected) << type;
        }
}

TEST_F(OperatorTest, AdaptiveEqualisationIsTheRankInTheBox)
{
    constexpr int width = 13, height = 7;
    Image src, dst;
    src.Set(width, height, Gray);
    Mix(src, 8);
    for (const int size : {1, 3, 9, 31, 32767}) {
        Operator::Equalize(size, src, dst);
        ASSERT_EQ(Status::Error().Code, NoError);
        const int half = size / 2;
        for (int y = 0; y < height; y++)
            for (int x = 0; x < width; x++) {
                // A pixel of the edge stands for all beyond it.
                const auto times = [&](int at, int around, int count) {
                    const int before = at == 0 ? std::max(half - around, 0) : 0;
                    const int behind = at == count - 1 ? std::max(around + half - count + 1, 0) : 0;
                    return std::int64_t{(std::abs(at - around) <= half) + before + behind};
                };
                std::int64_t darker = 0;
                for (int v = 0; v < height; v++)
                    for (int u = 0; u < width; u++)
                        if (src.Row(v)[u] < src.Row(y)[x]) darker += times(u, x, width) * times(v, y, height);
                ASSERT_EQ(dst.Row(y)[x], darker * 255 / (std::int64_t{size} * size)) << size << ' ' << x << ' ' << y;
            }
    }
    for (const int size : {0, -3, 4, MaxInt}) {
        Operator::Equalize(size, src, dst);
        EXPECT_EQ(Status::Error().Code, OutOfRange);
    }
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
