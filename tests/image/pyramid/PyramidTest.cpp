#include "image/Pyramid.h"

#include "foundation/Graph.h"
#include "foundation/RecordingTarget.h"
#include "image/Samples.h"

#include <algorithm>
#include <cmath>
#include <utility>

using namespace Tesk;

namespace {

Samples Halved(const Samples& s)
{
    return Made(s.width / 2, s.height / 2, s.channels, [&](int x, int y, int c) {
        return (s.At(2 * x, 2 * y, c) + s.At(2 * x + 1, 2 * y, c) + s.At(2 * x, 2 * y + 1, c) +
                s.At(2 * x + 1, 2 * y + 1, c)) /
               4;
    });
}

Samples TwoThirds(const Samples& s)
{
    return Made(s.width / 3 * 2, s.height / 3 * 2, s.channels, [&](int x, int y, int c) {
        const int bx = x / 2 * 3, by = y / 2 * 3, cx = bx + x % 2 * 2, cy = by + y % 2 * 2;
        return (4 * s.At(cx, cy, c) + 2 * s.At(bx + 1, cy, c) + 2 * s.At(cx, by + 1, c) + s.At(bx + 1, by + 1, c)) / 9;
    });
}

/// Each output lies a quarter of a pixel from its nearest source; beyond the border there is nothing to mix in.
Samples Doubled(const Samples& s)
{
    return Made(2 * s.width, 2 * s.height, s.channels, [&](int x, int y, int c) {
        const int x0 = x / 2, y0 = y / 2, x1 = x % 2 ? x0 + 1 : x0 - 1, y1 = y % 2 ? y0 + 1 : y0 - 1;
        const bool mixX = x1 >= 0 && x1 < s.width, mixY = y1 >= 0 && y1 < s.height;
        if (mixX && mixY)
            return (9 * s.At(x0, y0, c) + 3 * s.At(x1, y0, c) + 3 * s.At(x0, y1, c) + s.At(x1, y1, c)) >> 4;
        if (mixX) return (3 * s.At(x0, y0, c) + s.At(x1, y0, c)) >> 2;
        if (mixY) return (3 * s.At(x0, y0, c) + s.At(x0, y1, c)) >> 2;
        return s.At(x0, y0, c);
    });
}

using PyramidLevels = checks::AtEachLevel;

} // namespace

TEST_P(PyramidLevels, RescalingEqualsItsDefinitionOnAllSizesAndWindows)
{
    for (const PixelTypes type : {Gray, Gray16, Rgb})
        for (int width = 1; width <= 67; width += width < 9 ? 1 : 5)
            for (const int height : {1, 2, 3, 5, 9}) {
                Image src, dst;
                src.Set(width + 5, height + 3, type);
                Fill(src, static_cast<std::uint32_t>(width * 10 + height));
                src.Window(2, 1, width, height);
                const Samples s = SamplesOf(src);
                Pyramid::Double(src, dst);
                ASSERT_EQ(SamplesOf(dst), Doubled(s)) << type << ' ' << width << ' ' << height;
                if (width >= 2 && height >= 2) {
                    Pyramid::Halve(src, dst);
                    ASSERT_EQ(SamplesOf(dst), Halved(s)) << type << ' ' << width << ' ' << height;
                }
                if (width >= 3 && height >= 3) {
                    Pyramid::Halve(src, dst, false);
                    ASSERT_EQ(SamplesOf(dst), TwoThirds(s)) << type << ' ' << width << ' ' << height;
                }
            }
}

INSTANTIATE_TEST_SUITE_P(Levels, PyramidLevels, ::testing::ValuesIn(checks::allLevels));

TEST(Pyramid, LevelsEndAtTheSmallestSideAndAtTheGreatestNumber)
{
    Image src;
    src.Set(110, 70, Gray);
    Fill(src, 7);
    src.Window(3, 4, 100, 60);
    Pyramid pyramid;
    const auto sizes = [&] {
        std::vector<std::pair<int, int>> found;
        for (int l = 0; l < pyramid.NumLevels; l++) {
            const Image& level = pyramid.Bitmap(src, l);
            found.emplace_back(level.Width, level.Height);
        }
        return found;
    };
    using Sizes = std::vector<std::pair<int, int>>;
    pyramid.Build(src, 16);
    EXPECT_EQ(sizes(), (Sizes{{100, 60}, {50, 30}}));
    EXPECT_EQ(SamplesOf(pyramid.Bitmap(0)), SamplesOf(src));
    EXPECT_EQ(SamplesOf(pyramid.Bitmap(1)), Halved(SamplesOf(src)));
    pyramid.Build(src, 16, 0, false, false);
    EXPECT_EQ(sizes(), (Sizes{{100, 60}, {66, 40}, {44, 26}, {28, 16}}));
    EXPECT_EQ(SamplesOf(pyramid.Bitmap(2)), TwoThirds(TwoThirds(SamplesOf(src))));
    pyramid.Build(src, 1, 3, true);
    EXPECT_EQ(sizes(), (Sizes{{100, 60}, {50, 30}, {25, 15}}));
    pyramid.Build(src);
    EXPECT_EQ(pyramid.NumLevels, 20);
    EXPECT_EQ(Status::Error().Code, NoError);
    EXPECT_EQ(pyramid.Bitmap(5).Height, 1);
    EXPECT_EQ(pyramid.Bitmap(6).Type, Undefined);
}

TEST(Pyramid, ABaseApartIsTheCallersImage)
{
    Image src;
    src.Set(8, 8, Rgb);
    Pyramid pyramid;
    EXPECT_EQ(&pyramid.Bitmap(src, 0), &src);
    EXPECT_EQ(Status::Error().Code, VoidObject);
    pyramid.Build(src, 0, 1, true);
    EXPECT_EQ(pyramid.NumLevels, 1);
    EXPECT_EQ(&pyramid.Bitmap(src, 0), &src);
    EXPECT_EQ(Status::Error().Code, NoError);
    EXPECT_EQ(pyramid.Bitmap(0).Type, Undefined);
    EXPECT_EQ(Status::Error().Code, CannotAllocate);
    EXPECT_STREQ(Status::UnicodeError(), L"The source image is apart, pass it as an argument");
    EXPECT_EQ(&pyramid.Bitmap(src, -1), &src);
    EXPECT_EQ(Status::Error().Code, OutOfRange);
    EXPECT_STREQ(Status::UnicodeError(), L"The level index (-1) must be in range [0..0]");
}

TEST(Pyramid, RefusesWhatItCannotScale)
{
    Image none, rgba, gray, dst;
    rgba.Set(4, 4, Rgba);
    gray.Set(1, 1, Gray);
    Pyramid pyramid;
    const auto code = [](auto&& call) {
        call();
        return Status::Error().Code;
    };
    EXPECT_EQ(code([&] { pyramid.Build(none); }), VoidObject);
    EXPECT_EQ(code([&] { pyramid.Build(rgba); }), UnsupportedType);
    EXPECT_STREQ(Status::UnicodeError(),
                 L"The image type (Rgba) is not supported for this operation, use Gray, Gray16 or Rgb");
    EXPECT_EQ(code([&] { pyramid.Build(gray, 0, 21); }), OutOfRange);
    EXPECT_EQ(code([&] { Pyramid::Double(rgba, dst); }), UnsupportedType);
    EXPECT_EQ(code([&] { Pyramid::Halve(gray, dst); }), IncompatibleSize);
    EXPECT_EQ(code([&] { Pyramid::TileMean(0, gray, dst); }), OutOfRange);
    EXPECT_EQ(code([&] { Pyramid::TileMean(2, gray, dst); }), IncompatibleSize);
    EXPECT_EQ(code([&] { Pyramid::TileMean(2, rgba, dst); }), UnsupportedType);
    // Four times this would be larger than any image; nothing is read before that is found.
    std::uint8_t nothing[4];
    Image huge;
    huge.Set(32768, 32768, Gray, nothing);
    EXPECT_EQ(code([&] { Pyramid::Double(huge, dst); }), CannotAllocate);
    EXPECT_STREQ(Status::AsciiFunction(), "Tesk::Image::Set");
    EXPECT_EQ(dst.Type, Undefined);
    EXPECT_EQ(code([&] { Pyramid::TileMean(2147483647, gray, dst, true); }), NoError);
    EXPECT_EQ(dst.Width, 1);
}

TEST(Pyramid, WorksInPlaceAndIntoAWindowOfTheSameStore)
{
    Image image, copy, wanted;
    image.Set(21, 13, Gray);
    Fill(image, 3);
    Pyramid::Double(image, wanted);
    copy.ShallowCopy(image, true);
    Pyramid::Double(copy, copy);
    EXPECT_EQ(SamplesOf(copy), SamplesOf(wanted));

    Pyramid::Halve(image, wanted);
    copy.ShallowCopy(image, true);
    copy.Window(1, 1, 10, 6);
    Pyramid::Halve(image, copy);
    EXPECT_EQ(SamplesOf(copy), SamplesOf(wanted));

    const Samples before = SamplesOf(image);
    Pyramid::Halve(image, wanted);
    Status::Shallow = true;
    copy.ShallowCopy(image, true);
    copy.Window(1, 1, 10, 6);
    Pyramid::Halve(image, copy);
    Status::Shallow = false;
    EXPECT_EQ(SamplesOf(copy), SamplesOf(wanted));
    EXPECT_EQ(SamplesOf(image), before) << "a view keeps its pixels";
}

TEST(Pyramid, TileStatisticsEqualTheirFormulas)
{
    Image src, dst;
    src.Set(31, 23, Gray);
    Fill(src, 11);
    src.Window(1, 2, 29, 19);
    const Samples s = SamplesOf(src);
    for (const int tile : {1, 2, 3, 4, 8, 19, 40})
        for (const bool partial : {false, true}) {
            const int rest = partial ? tile - 1 : 0, width = (s.width + rest) / tile, height = (s.height + rest) / tile;
            if (width < 1 || height < 1) continue;
            const auto expected = [&](auto f) {
                return Made(width, height, 1, [&](int tx, int ty, int) {
                    long n = 0, sum = 0, squares = 0;
                    int low = 255, high = 0;
                    for (int y = ty * tile; y < std::min((ty + 1) * tile, s.height); y++)
                        for (int x = tx * tile; x < std::min((tx + 1) * tile, s.width); x++) {
                            const int v = s.At(x, y, 0);
                            n++, sum += v, squares += v * v, low = std::min(low, v), high = std::max(high, v);
                        }
                    return static_cast<int>(f(n, sum, squares, low, high));
                });
            };
            Pyramid::TileMean(tile, src, dst, partial);
            ASSERT_EQ(SamplesOf(dst), expected([](long n, long sum, long, int, int) { return sum / n; })) << tile;
            Pyramid::TileMidRange(tile, src, dst, partial);
            ASSERT_EQ(SamplesOf(dst), expected([](long, long, long, int l, int h) { return (l + h) / 2; })) << tile;
            Pyramid::TileRange(tile, src, dst, partial);
            ASSERT_EQ(SamplesOf(dst), expected([](long, long, long, int l, int h) { return h - l; })) << tile;
            Pyramid::TileDeviation(tile, src, dst, partial);
            ASSERT_EQ(SamplesOf(dst), expected([](long n, long sum, long squares, int, int) {
                          return long(std::sqrt(n * squares - sum * sum)) / n;
                      }))
                << tile;
        }
}

TEST(Pyramid, LevelsAreDrawnInARowBeneathTheBase)
{
    Image src;
    src.Set(40, 20, Gray);
    Fill(src, 5);
    Pyramid pyramid;
    EXPECT_EQ(pyramid.DrawingOffset(1).Y, 0);
    EXPECT_EQ(Status::Error().Code, VoidObject);
    pyramid.Build(src, 4, 3);
    EXPECT_EQ(pyramid.DrawingOffset(0).Y, 0);
    EXPECT_EQ(pyramid.DrawingOffset(2).X, 20);
    EXPECT_EQ(pyramid.DrawingOffset(2).Y, 20);
    pyramid.Build(src, 4, 3, true);
    EXPECT_EQ(pyramid.DrawingOffset(src, 1).Y, 20);
    EXPECT_EQ(pyramid.DrawingOffset(0).X, 0);
    EXPECT_EQ(Status::Error().Code, CannotAllocate);

    RecordingTarget target;
    Graph::DrawTo(&target);
    const auto blits = [&](auto&& draw) {
        target.Calls.clear();
        draw();
        std::size_t count = 0;
        for (const auto& call : target.Calls)
            count += call.find("Blit") != std::string::npos;
        return count;
    };
    EXPECT_EQ(blits([&] { pyramid.Draw(src, false); }), 3u);
    EXPECT_EQ(blits([&] { pyramid.Draw(true); }), 2u);

    // Each level is drawn where its offset says, with the base in the pyramid, at hand, or left out.
    using Places = std::vector<std::string>;
    const auto origins = [&](auto&& draw) {
        target.Calls.clear();
        draw();
        Places places;
        std::string origin;
        for (const auto& call : target.Calls) {
            if (call.find("Origin") != std::string::npos) origin = call;
            if (call.find("Blit") != std::string::npos) places.push_back(origin);
        }
        return places;
    };
    for (const bool apart : {false, true})
        for (const bool atHand : {false, true}) {
            pyramid.Build(src, 4, 3, apart);
            Places wanted;
            for (int level = apart && !atHand ? 1 : 0; level < 3; level++) {
                const Site offset = atHand ? pyramid.DrawingOffset(src, level) : pyramid.DrawingOffset(level);
                const auto calls = origins([&] { Graph::SetOrigin(offset.X, offset.Y), src.Draw(true); });
                wanted.push_back(calls.at(0));
            }
            EXPECT_EQ(origins([&] { atHand ? pyramid.Draw(src, false) : pyramid.Draw(false); }), wanted)
                << apart << atHand;
        }
    pyramid.Build(src, 4, 3, true);
    EXPECT_EQ(pyramid.DrawingOffset(2).Y, 0) << "a base that is left out takes no room";
    Graph::ResetOrigin();
    Graph::DrawTo(nullptr);
}
