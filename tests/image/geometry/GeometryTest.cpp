#include "image/Geometry.h"

#include "image/Samples.h"

#include <algorithm>
#include <cmath>
#include <functional>
#include <limits>
#include <numbers>
#include <utility>

using namespace Tesk;

namespace {

constexpr PixelTypes sampledTypes[] = {Gray, Gray16, Rgb};
constexpr int widths[] = {1, 2, 3, 7, 8, 16, 17, 33, 67}, heights[] = {1, 2, 3, 5, 9};

/// A random window inside a larger store.
void MakeWindow(Image& image, int width, int height, PixelTypes type)
{
    image.Set(width + 5, height + 3, type);
    Fill(image, static_cast<std::uint32_t>(width * 10 + height));
    image.Window(2, 1, width, height);
}

/// An image over rows that end where the memory ends, so that the sanitizer sees a read behind the last pixel.
struct Tight
{
    std::vector<std::uint8_t> bytes;
    Image image;
    Tight(int width, int height, PixelTypes type)
        : bytes(static_cast<std::size_t>(RowBytes(width, type)) * static_cast<std::size_t>(height))
    {
        image.Set(width, height, type, bytes.data(), RowBytes(width, type));
        Fill(image, static_cast<std::uint32_t>(width + 3 * height));
    }
};

/// What the window of an image must be after `run(source, destination)`, in both ways of sharing a store.
template <typename F>
void ExpectTheSameInPlace(const Image& src, const Samples& wanted, F run)
{
    Image own, alias;
    own.Set(src);
    for (int y = 0; y < src.Height; y++)
        std::copy_n(src.Row(y), RowBytes(src.Width, src.Type), own.Row(y));
    alias.ShallowCopy(own, true);
    run(alias, own);
    ASSERT_EQ(SamplesOf(own), wanted);
}

/// One coordinate of a position in 65,536ths, as the two neighbours and the weight of the second.
struct Neighbours
{
    int first, second;
    std::int64_t weight;
};

Neighbours NeighboursAt(std::int64_t position, int extent)
{
    if (position < 0 || extent == 1) return {0, 0, 0};
    if ((position >> 16) >= extent - 1) return {extent - 2, extent - 1, 65536};
    return {static_cast<int>(position >> 16), static_cast<int>(position >> 16) + 1, position & 65535};
}

/// The sample of a position, inside or outside.
int SampleAt(const Samples& s, std::int64_t x, std::int64_t y, int c, bool interpolate)
{
    if (!interpolate)
        return s.At(static_cast<int>(std::clamp<std::int64_t>(x >> 16, 0, s.width - 1)),
                    static_cast<int>(std::clamp<std::int64_t>(y >> 16, 0, s.height - 1)), c);
    const Neighbours u = NeighboursAt(x, s.width), v = NeighboursAt(y, s.height);
    const auto mix = [](std::int64_t a, std::int64_t b, std::int64_t w) { return (a * (65536 - w) + b * w) / 65536; };
    return static_cast<int>(mix(mix(s.At(u.first, v.first, c), s.At(u.second, v.first, c), u.weight),
                                mix(s.At(u.first, v.second, c), s.At(u.second, v.second, c), u.weight), v.weight));
}

std::int64_t Fixed(double v)
{
    return static_cast<std::int64_t>(std::trunc(v * 65536 + 32768)) - 32768;
}

struct Coefficients
{
    double xx, xy, x, yx, yy, y;
};

/// The affine warp pixel by pixel, and whether any position lies outside.
std::pair<Samples, bool> Warped(const Samples& s, int width, int height, const Coefficients& t, bool interpolate)
{
    const double half = interpolate ? 0 : 0.5;
    const int past = interpolate ? 1 : 0;
    bool outside = false;
    const Samples result = Made(width, height, s.channels, [&](int i, int j, int c) {
        const std::int64_t x = Fixed(t.xx) * i + Fixed(t.xy) * j + Fixed(t.x + half),
                           y = Fixed(t.yx) * i + Fixed(t.yy) * j + Fixed(t.y + half);
        outside = outside || x < 0 || y < 0 || x >> 16 >= s.width - past || y >> 16 >= s.height - past;
        return SampleAt(s, x, y, c, interpolate);
    });
    return {result, outside};
}

constexpr Coefficients maps[] = {{1, 0, 0, 0, 1, 0},
                                 {0.3, 0.01, 0.2, 0.02, 0.4, 0.1},
                                 {0.866, -0.5, 3.25, 0.5, 0.866, -2.5},
                                 {-1, 0, 66, 0, -1, 8},
                                 {0, 0, 1.5, 0, 0, 0.75},
                                 {2.7, -9.1, -20, -7.3, 3.9, 40},
                                 {30000, 1, -30000, 1, -30000, 70000},
                                 {1, 0, -2e9, 0, 1, 2e9}};

class GeometryLevels : public checks::AtEachLevel
{};

template <typename F>
int CodeOf(F call)
{
    call();
    return Status::Error().Code;
}

} // namespace

TEST_P(GeometryLevels, TurnsMovePixelsToTheirPlaces)
{
    for (const PixelTypes type : sampledTypes)
        for (const int width : widths)
            for (const int height : {1, 2, 5, 9, 35}) {
                Image src, dst;
                MakeWindow(src, width, height, type);
                const Samples s = SamplesOf(src);
                const auto check = [&](auto run, int w, int h, auto place) {
                    const Samples wanted = Made(w, h, s.channels, [&](int x, int y, int c) {
                        const auto [sx, sy] = place(x, y);
                        return s.At(sx, sy, c);
                    });
                    run(src, dst);
                    ASSERT_EQ(SamplesOf(dst), wanted) << type << ' ' << width << ' ' << height;
                    ExpectTheSameInPlace(src, wanted, run);
                };
                using Place = std::pair<int, int>;
                check(Geometry::Flip, width, height, [&](int x, int y) { return Place(x, height - 1 - y); });
                check(Geometry::Mirror, width, height, [&](int x, int y) { return Place(width - 1 - x, y); });
                const auto turn = [](int q) { return [q](const Image& a, Image& b) { Geometry::Turn(q, a, b); }; };
                check(turn(0), width, height, [](int x, int y) { return Place(x, y); });
                check(turn(5), height, width, [&](int x, int y) { return Place(y, height - 1 - x); });
                check(turn(2), width, height, [&](int x, int y) { return Place(width - 1 - x, height - 1 - y); });
                check(turn(-1), height, width, [&](int x, int y) { return Place(width - 1 - y, x); });
            }
}

TEST_P(GeometryLevels, DownSampleTakesMeansOfBlocksOrSinglePixels)
{
    for (const PixelTypes type : {Gray, Gray16, Rgb, Rgba})
        for (const int width : widths)
            for (const int height : heights) {
                Image src, dst;
                MakeWindow(src, width, height, type);
                const Samples s = SamplesOf(src);
                for (const auto& [w, h] : {std::pair{1, 1},
                                           {2, 2},
                                           {(width + 1) / 2, (height + 1) / 2},
                                           {width, height},
                                           {width / 2 + 1, 4},
                                           {40, 12},
                                           {75, 1}}) {
                    const Samples mean = Made(w, h, s.channels, [&, w = w, h = h](int x, int y, int c) {
                        long sum = 0, count = 0;
                        for (int v = y * height / h; v < (y + 1) * height / h; v++)
                            for (int u = x * width / w; u < (x + 1) * width / w; u++)
                                sum += s.At(u, v, c), count++;
                        return count ? sum / count : 0;
                    });
                    Geometry::DownSample(w, h, src, dst);
                    ASSERT_EQ(SamplesOf(dst), mean) << type << ' ' << width << 'x' << height << " to " << w << 'x' << h;
                    Geometry::DownSample(w, h, src, dst, false);
                    ASSERT_EQ(SamplesOf(dst), Made(w, h, s.channels, [&, w = w, h = h](int x, int y, int c) {
                                  return s.At(w > 1 ? x * (width - 1) / (w - 1) : 0,
                                              h > 1 ? y * (height - 1) / (h - 1) : 0, c);
                              }));
                }
                ExpectTheSameInPlace(src, Made(1, 1, s.channels, [&](int, int, int c) { return s.At(0, 0, c); }),
                                     [](const Image& a, Image& b) { Geometry::DownSample(1, 1, a, b, false); });
            }
}

TEST_P(GeometryLevels, UpSampleInterpolatesBetweenTheCorners)
{
    for (const PixelTypes type : sampledTypes)
        for (const int width : widths)
            for (const int height : heights) {
                Tight src(width, height, type);
                Image dst;
                const Samples s = SamplesOf(src.image);
                for (const auto& [w, h] : {std::pair{1, 1},
                                           {2 * width, 2 * height},
                                           {2 * width - 1, 3 * height - 2},
                                           {width, height},
                                           {70, 13},
                                           {200, 2}}) {
                    const auto position = [](int i, int from, int to) {
                        return to > 1 ? (std::int64_t{i} * (from - 1) << 16) / (to - 1) : 0;
                    };
                    for (const bool interpolate : {true, false}) {
                        Geometry::UpSample(w, h, src.image, dst, interpolate);
                        const int half = interpolate ? 0 : 32768;
                        ASSERT_EQ(SamplesOf(dst), Made(w, h, s.channels,
                                                       [&, w = w, h = h](int x, int y, int c) {
                                                           return SampleAt(s, position(x, width, w) + half,
                                                                           position(y, height, h) + half, c,
                                                                           interpolate);
                                                       }))
                            << type << ' ' << width << 'x' << height << " to " << w << 'x' << h << interpolate;
                    }
                    EXPECT_EQ(SamplesOf(dst).At(w - 1, h - 1, 0),
                              s.At(w > 1 ? width - 1 : 0, h > 1 ? height - 1 : 0, 0));
                }
            }
}

TEST_P(GeometryLevels, AffineEqualsTheMapPixelByPixel)
{
    for (const PixelTypes type : sampledTypes)
        for (const int width : widths)
            for (const int height : heights) {
                Tight src(width, height, type);
                Image dst, window;
                MakeWindow(window, width, height, type);
                const Samples s = SamplesOf(src.image), inWindow = SamplesOf(window);
                for (const Coefficients& t : maps)
                    for (const bool interpolate : {true, false}) {
                        dst.Set(width + 9, 13, type);
                        Fill(dst, 1);
                        dst.Window(3, 2, width + 2, 10);
                        const Samples around = [&] {
                            const auto [inside, outside] = Warped(s, width + 2, 10, t, interpolate);
                            const bool result =
                                Geometry::Affine(t.xx, t.xy, t.x, t.yx, t.yy, t.y, src.image, dst, interpolate);
                            EXPECT_EQ(Status::Error().Code, NoError);
                            EXPECT_EQ(result, outside) << t.xx << ' ' << width << 'x' << height << ' ' << interpolate;
                            EXPECT_EQ(SamplesOf(dst), inside) << t.xx << ' ' << type << ' ' << width << 'x' << height;
                            dst.Window();
                            return SamplesOf(dst);
                        }();
                        Image untouched;
                        untouched.Set(width + 9, 13, type);
                        Fill(untouched, 1);
                        const Samples before = SamplesOf(untouched);
                        for (int x = 0; x < width + 9; x++)
                            ASSERT_EQ(around.At(x, 1, 0), before.At(x, 1, 0));
                        for (int y = 0; y < 13; y++)
                            ASSERT_EQ(around.At(width + 5, y, 0), before.At(width + 5, y, 0));
                        const auto [wanted, outside] = Warped(inWindow, width, height, t, interpolate);
                        ExpectTheSameInPlace(window, wanted, [&, i = interpolate](const Image& a, Image& b) {
                            Geometry::Affine(t.xx, t.xy, t.x, t.yx, t.yy, t.y, a, b, i);
                        });
                        if (HasFailure()) return;
                    }
            }
}

TEST_P(GeometryLevels, AffineFillsLargeResultsFromLongSources)
{
    for (const PixelTypes type : sampledTypes)
        for (const auto& [width, height] : {std::pair{300, 280}, {40000, 2}, {3, 33000}}) {
            Image src, dst;
            src.Set(width, height, type);
            Fill(src, 17);
            dst.Set(600, 70, type);
            const Samples s = SamplesOf(src);
            for (const Coefficients& t : {Coefficients{0.4, 0.3, 5, -0.3, 3.5, 190},
                                          {66, 0.5, 0, 0.001, 0, 0.2},
                                          {0.001, 0.02, 0.1, 55, 0.9, 0},
                                          {-0.5, -0.1, 310, 0.1, 1.2, -3}})
                for (const bool interpolate : {true, false}) {
                    const bool result = Geometry::Affine(t.xx, t.xy, t.x, t.yx, t.yy, t.y, src, dst, interpolate);
                    const auto [wanted, outside] = Warped(s, 600, 70, t, interpolate);
                    ASSERT_EQ(result, outside);
                    ASSERT_EQ(SamplesOf(dst), wanted) << type << ' ' << width << ' ' << t.xx << ' ' << interpolate;
                }
        }
}

TEST_P(GeometryLevels, ARecordedMapGivesWhatTheWarpGives)
{
    for (const PixelTypes type : sampledTypes)
        for (const int width : widths)
            for (const int height : heights) {
                Tight src(width, height, type);
                Image direct, mapped, map;
                direct.Set(19, 7, type);
                map.Set(19, 7, GeoMap);
                for (const Coefficients& t : maps)
                    for (const bool interpolate : {true, false}) {
                        const auto affine = [&](Image& dst) {
                            return Geometry::Affine(t.xx, t.xy, t.x, t.yx, t.yy, t.y, src.image, dst, interpolate);
                        };
                        ASSERT_EQ(affine(map), affine(direct));
                        Geometry::Transform(map, src.image, mapped, interpolate);
                        ASSERT_EQ(SamplesOf(mapped), SamplesOf(direct))
                            << t.xx << ' ' << type << ' ' << width << ' ' << height << ' ' << interpolate;
                        // A map of nearest pixels gives these pixels in both ways.
                        Geometry::Transform(map, src.image, mapped, true);
                        ASSERT_EQ(SamplesOf(mapped), SamplesOf(direct));
                    }
            }
}

TEST_P(GeometryLevels, UnwindTakesRadiiDownTheRowsAndAnglesAlongThem)
{
    for (const PixelTypes type : sampledTypes) {
        Tight src(61, 47, type);
        const Samples s = SamplesOf(src.image);
        XY center(31.3, 22.1);
        for (const auto& [w, h] : {std::pair{90, 20}, {1, 5}, {33, 1}})
            for (const bool interpolate : {true, false}) {
                Image dst, map, mapped;
                dst.Set(w, h, type);
                map.Set(w, h, GeoMap);
                Geometry::Unwind(center, -30, 290, 4, 25.5, src.image, dst, interpolate);
                const double half = interpolate ? 0 : 0.5;
                ASSERT_EQ(SamplesOf(dst),
                          Made(w, h, s.channels,
                               [&, w = w, h = h](int i, int j, int c) {
                                   const double degrees = w > 1 ? ((w - 1 - i) * -30.0 + i * 290.0) / (w - 1) : -30;
                                   const double a = degrees * (std::numbers::pi / 180),
                                                r = h > 1 ? 25.5 + j * (4 - 25.5) / (h - 1) : 25.5;
                                   return SampleAt(s, Fixed(31.3 + r * std::cos(a) + half),
                                                   Fixed(22.1 + r * std::sin(a) + half), c, interpolate);
                               }))
                    << type << ' ' << w << ' ' << interpolate;
                Geometry::Unwind(center, -30, 290, 4, 25.5, src.image, map, interpolate);
                Geometry::Transform(map, src.image, mapped, interpolate);
                ASSERT_EQ(SamplesOf(mapped), SamplesOf(dst));
            }
    }
}

INSTANTIATE_TEST_SUITE_P(Levels, GeometryLevels, ::testing::ValuesIn(checks::allLevels));

TEST(Geometry, AnIdentityCopiesAndTellsWhetherTheLastRowHasANeighbour)
{
    Image src, dst;
    src.Set(9, 6, Gray);
    Fill(src, 3);
    dst.Set(9, 6, Gray);
    EXPECT_FALSE(Geometry::Affine(1, 0, 0, 0, 1, 0, src, dst, false));
    EXPECT_EQ(SamplesOf(dst), SamplesOf(src));
    Fill(dst, 4);
    EXPECT_TRUE(Geometry::Affine(1, 0, 0, 0, 1, 0, src, dst));
    EXPECT_EQ(SamplesOf(dst), SamplesOf(src));
    dst.Window(0, 0, 8, 5);
    EXPECT_FALSE(Geometry::Affine(1, 0, 0, 0, 1, 0, src, dst));
    Geometry::DownSample(3, 1, src, dst);
    int sum = 0;
    for (int y = 0; y < 6; y++)
        for (int x = 3; x < 6; x++)
            sum += SamplesOf(src).At(x, y, 0);
    EXPECT_EQ(dst.Row(0)[1], sum / 18);
}

TEST(Geometry, RotationsAndSkewsMeetTheirAnchors)
{
    Image src, dst, other;
    src.Set(21, 21, Gray);
    Fill(src, 5);
    const Samples s = SamplesOf(src);
    for (Image* image : {&dst, &other})
        image->Set(21, 21, Gray);
    const XY middle(10, 10);
    // Quarter turns on the screen, without the noise of the cosine of a right angle.
    for (const auto& [angle, quarters] : {std::pair{0, 0}, {90, 1}, {180, 2}, {270, 3}, {-90, 3}, {720, 0}}) {
        Geometry::Rotate(middle, middle, angle, 1, src, dst);
        Geometry::Turn(quarters, src, other);
        EXPECT_EQ(SamplesOf(dst), SamplesOf(other)) << angle;
    }
    EXPECT_FALSE(Geometry::Rotate({5, 5}, {2, 2}, 0, 2, src, dst, false));
    for (int y = 0; y < 21; y++)
        for (int x = 0; x < 21; x++)
            ASSERT_EQ(dst.Row(y)[x], s.At((x + 9) / 2, (y + 9) / 2, 0));

    // A turn by the angle of 3, 4, 5, told in each way.
    const double angle = -std::atan2(4.0, 3.0) * 180 / std::numbers::pi;
    const Coefficients turn{0.6, -0.8, 10 - (0.6 * 9 - 0.8 * 8), 0.8, 0.6, 10 - (0.8 * 9 + 0.6 * 8)};
    const Samples wanted = Warped(s, 21, 21, turn, true).first;
    EXPECT_TRUE(Geometry::Rotate(middle, {9, 8}, angle, 1, src, dst));
    EXPECT_EQ(SamplesOf(dst), wanted);
    EXPECT_TRUE(Geometry::Rotate(middle, {10 + 3.0, 10 + 4.0}, {9, 8}, {9 + 5.0, 8}, src, dst, true));
    EXPECT_EQ(SamplesOf(dst), wanted);
    EXPECT_TRUE(Geometry::Rotate(middle, {10 + 6.0, 10 + 8.0}, {9, 8}, {9 + 5.0, 8}, src, dst, false));
    EXPECT_EQ(SamplesOf(dst), wanted);
    EXPECT_TRUE(
        Geometry::Skew(middle, {10 + 3.0, 10 + 4.0}, {10 - 4.0, 10 + 3.0}, {9, 8}, {9 + 5.0, 8}, {9, 13}, src, dst));
    EXPECT_EQ(SamplesOf(dst), wanted);
    // Three anchors stretch each axis on its own.
    Geometry::Skew({0, 0}, {10, 0}, {0, 10}, {0, 0}, {20, 0}, {10, 10}, src, dst, false);
    EXPECT_EQ(SamplesOf(dst), Warped(s, 21, 21, {0.5, -0.5, 0, 0, 1, 0}, false).first);
}

TEST(Geometry, AMapHoldsOffsetsAndWeights)
{
    Image src, map, dst;
    src.Set(5, 4, Rgb);
    Fill(src, 9);
    map.Set(3, 2, GeoMap);
    EXPECT_FALSE(Geometry::Affine(1, 0, 0.25, 0, 1, 1.5, src, map));
    EXPECT_EQ(map.Row<GeoMapPixel>(0)[2], (GeoMapPixel{16 + 2 * 3, 0xc000, 0x8000}));
    EXPECT_EQ(map.Row<GeoMapPixel>(1)[0], (GeoMapPixel{2 * 16, 0xc000, 0x8000}));
    Image rgba, wide;
    rgba.Set(5, 4, Rgba);
    wide.Set(3, 2, GeoMap);
    XY center(2, 2);
    EXPECT_EQ(CodeOf([&] { Geometry::Affine(1, 0, 0.25, 0, 1, 1.5, rgba, wide); }), NoError);
    EXPECT_EQ(wide.Row<GeoMapPixel>(1)[2].Offset, 2u * 20 + 2 * 4);
    EXPECT_EQ(CodeOf([&] { Geometry::Unwind(center, 0, 90, 1, 2, rgba, wide); }), NoError);

    map.Row<GeoMapPixel>(0)[0] = {16, 0x4000, 0};
    Geometry::Transform(map, src, dst, true);
    EXPECT_EQ(CodeOf([&] { Geometry::Transform(map, src, map); }), NoError);
    EXPECT_EQ(map.Row<RgbPixel>(0)[0].Red, (src.Row(1)[2] + 3 * src.Row(1)[5]) / 4);
}

TEST(Geometry, MapsThatLeadOutsideTheSourceAreRefused)
{
    Image src, map, dst;
    src.Set(4, 3, Gray);
    Fill(src, 1);
    map.Set(1, 1, GeoMap);
    const struct
    {
        GeoMapPixel entry;
        bool nearest, bilinear;
    } cases[] = {{{11, 0, 0}, true, true},          {{11, 1, 0}, true, false},
                 {{10, 1, 0}, true, true},          {{8, 0, 1}, true, false},
                 {{6, 1, 1}, true, true},           {{7, 1, 1}, true, false},
                 {{12, 0, 0}, false, false},        {{0xffffffff, 0, 0}, false, false},
                 {{0xffffffff, 1, 1}, false, false}};
    for (const auto& row : cases) {
        map.Row<GeoMapPixel>(0)[0] = row.entry;
        dst.Set(1, 1, Gray);
        dst.Row(0)[0] = 99;
        EXPECT_EQ(CodeOf([&] { Geometry::Transform(map, src, dst); }), row.bilinear ? NoError : IncompatibleSize);
        if (!row.bilinear) {
            EXPECT_EQ(dst.Row(0)[0], 99);
        }
        EXPECT_EQ(CodeOf([&] { Geometry::Transform(map, src, dst, false); }), row.nearest ? NoError : IncompatibleSize);
    }
    EXPECT_STREQ(Status::UnicodeError(), L"The map leads outside the source image (4, 3)");
}

TEST_P(GeometryLevels, MapsThatLeadBetweenTheBytesOfAPixelAreRefused)
{
    Image src, words, map, dst;
    src.Set(40, 3, Gray);
    words.Set(40, 3, Gray16);
    Fill(words, 1);
    // At the first and at the last of the entries that are looked at together, and at one behind them.
    for (const int at : {0, 15, 32}) {
        map.Set(33, 1, GeoMap);
        Geometry::Affine(0, 0, 4, 0, 0, 1, src, map, false);
        EXPECT_EQ(CodeOf([&] { Geometry::Transform(map, words, dst); }), NoError);
        map.Row<GeoMapPixel>(0)[at].Offset++;
        for (const bool interpolate : {true, false})
            EXPECT_EQ(CodeOf([&] { Geometry::Transform(map, words, dst, interpolate); }), IncompatibleSize) << at;
        EXPECT_EQ(CodeOf([&] { Geometry::Transform(map, src, dst); }), NoError);
    }
}

namespace {

/// A natural spline through `y` at `t` behind knot `i`, by elimination on the full system.
double SplineAt(const std::vector<double>& y, std::size_t i, double t)
{
    const std::size_t n = y.size();
    std::vector<std::vector<double>> a(n, std::vector<double>(n + 1, 0));
    for (std::size_t k = 0; k < n; k++) {
        if (k == 0 || k == n - 1) {
            a[k][k] = 1;
            continue;
        }
        a[k][k - 1] = a[k][k + 1] = 1;
        a[k][k] = 4;
        a[k][n] = 6 * (y[k + 1] - 2 * y[k] + y[k - 1]);
    }
    for (std::size_t k = 0; k < n; k++)
        for (std::size_t r = 0; r < n; r++) {
            if (r == k) continue;
            const double f = a[r][k] / a[k][k];
            for (std::size_t c = k; c <= n; c++)
                a[r][c] -= f * a[k][c];
        }
    const double m0 = a[i][n] / a[i][i], m1 = a[i + 1][n] / a[i + 1][i + 1], s = 1 - t;
    // The cubic with the values and second derivatives of both knots.
    return s * y[i] + t * y[i + 1] + ((s * s * s - s) * m0 + (t * t * t - t) * m1) / 6;
}

} // namespace

TEST(Geometry, AGridDeformsThroughSplines)
{
    constexpr int nx = 5, ny = 4, stride = 6, tx = 7, ty = 5, x0 = -4, y0 = 3;
    for (const PixelTypes type : sampledTypes) {
        Tight src(33, 27, type);
        const Samples s = SamplesOf(src.image);
        XY nodes[stride * ny];
        for (int r = 0; r < ny; r++)
            for (int c = 0; c < stride; c++)
                nodes[r * stride + c] = {7.1 * c - 3 + 2 * std::sin(r + c), 8.3 * r + 1.5 * std::cos(2.0 * r - c)};
        Image dst, untouched, map, mapped;
        for (Image* image : {&dst, &untouched}) {
            image->Set(26, 20, type);
            Fill(*image, 2);
        }
        Geometry::GridDeform(nodes, stride, nx, ny, src.image, x0, tx, y0, ty, dst);
        ASSERT_EQ(Status::Error().Code, NoError);
        const Samples result = SamplesOf(dst), before = SamplesOf(untouched);
        for (int j = 0; j < 20; j++)
            for (int i = 0; i < 26; i++)
                for (int c = 0; c < s.channels; c++) {
                    if (i >= x0 + (nx - 1) * tx || j < y0 || j >= y0 + (ny - 1) * ty) {
                        ASSERT_EQ(result.At(i, j, c), before.At(i, j, c)) << i << ' ' << j;
                        continue;
                    }
                    const auto across = [&](auto coordinate) {
                        std::vector<double> row;
                        for (int k = 0; k < nx; k++) {
                            std::vector<double> column;
                            for (int r = 0; r < ny; r++)
                                column.push_back(coordinate(nodes[r * stride + k]));
                            row.push_back(SplineAt(column, static_cast<std::size_t>((j - y0) / ty),
                                                   (j - y0) % ty / static_cast<double>(ty)));
                        }
                        return SplineAt(row, static_cast<std::size_t>((i - x0) / tx),
                                        (i - x0) % tx / static_cast<double>(tx));
                    };
                    const double px = std::clamp(across([](const XY&p) { return p.X; }), 0.0, 32.0),
                                 py = std::clamp(across([](const XY&p) { return p.Y; }), 0.0, 26.0);
                    const int ix = std::min(static_cast<int>(px), 31), iy = std::min(static_cast<int>(py), 25);
                    const double fx = px - ix, fy = py - iy;
                    const double exact = (s.At(ix, iy, c) * (1 - fx) + s.At(ix + 1, iy, c) * fx) * (1 - fy) +
                                         (s.At(ix, iy + 1, c) * (1 - fx) + s.At(ix + 1, iy + 1, c) * fx) * fy;
                    ASSERT_GT(result.At(i, j, c), exact - 1 - 1e-6) << i << ' ' << j;
                    ASSERT_LT(result.At(i, j, c), exact + 1e-6) << i << ' ' << j;
                }
        map.Set(26, 20, GeoMap);
        for (int y = 0; y < 20; y++)
            std::fill_n(map.Row<GeoMapPixel>(y), 26, GeoMapPixel{0, 0, 0});
        Geometry::GridDeform(nodes, stride, nx, ny, src.image, x0, tx, y0, ty, map);
        Geometry::Transform(map, src.image, mapped);
        const Samples byMap = SamplesOf(mapped);
        // Both means are truncated, and weights have 16 bits.
        for (int c = 0; c < s.channels; c++)
            ASSERT_NEAR(byMap.At(9, 9, c), result.At(9, 9, c), type == Gray16 ? 5 : 2);
        ASSERT_EQ(byMap.At(25, 0, 0), s.At(0, 0, 0));
    }
}

TEST(Geometry, GridsOfWildPositionsStayInsideTheSource)
{
    constexpr double nan = std::numeric_limits<double>::quiet_NaN();
    XY nodes[4] = {{nan, 1e300}, {-1e300, 2}, {3, nan}, {1, 1}};
    for (const int size : {1, 2, 5}) {
        Tight src(size, size, Rgb);
        Image dst, map;
        dst.Set(9, 9, Rgb);
        map.Set(9, 9, GeoMap);
        EXPECT_EQ(CodeOf([&] { Geometry::GridDeform(nodes, 2, 2, 2, src.image, 0, 5, 0, 5, dst); }), NoError);
        EXPECT_EQ(CodeOf([&] { Geometry::GridDeform(nodes, 2, 2, 2, src.image, MinInt, MaxInt, -1, MaxInt, map); }),
                  NoError);
    }
}

TEST(Geometry, RefusesWhatCannotBeDone)
{
    constexpr double nan = std::numeric_limits<double>::quiet_NaN(), inf = std::numeric_limits<double>::infinity();
    Image none, gray, rgb, rgba, grad, dst, map;
    gray.Set(4, 4, Gray);
    Fill(gray, 1);
    rgb.Set(4, 4, Rgb);
    rgba.Set(4, 4, Rgba);
    grad.Set(4, 4, Grad);
    dst.Set(4, 4, Gray);
    Fill(dst, 7);
    map.Set(2, 2, GeoMap);
    const Samples before = SamplesOf(dst);
    XY p(1, 1);
    const XY a(0, 0), b(1, 1), c(2, 2), d(0, 3);
    XY nodes[4] = {};
    const struct
    {
        const char* what;
        std::function<void()> call;
        int code;
        const wchar_t* message;
    } rows[] = {
        {"flip", [&] { Geometry::Flip(none, dst); }, VoidObject, L"Void source or destination image"},
        {"mirror", [&] { Geometry::Mirror(rgba, dst); }, UnsupportedType,
         L"The image type (Rgba) is not supported for this operation"},
        {"turn", [&] { Geometry::Turn(1, grad, dst); }, UnsupportedType,
         L"The image type (Gradient) is not supported for this operation"},
        {"down", [&] { Geometry::DownSample(0, 3, gray, dst); }, OutOfRange,
         L"The size (0, 3) of the result must be positive"},
        {"down type", [&] { Geometry::DownSample(2, 3, grad, dst); }, UnsupportedType, nullptr},
        {"up", [&] { Geometry::UpSample(5, -1, gray, dst); }, OutOfRange, nullptr},
        {"up huge", [&] { Geometry::UpSample(MaxInt, MaxInt, gray, dst); }, CannotAllocate, nullptr},
        {"up type", [&] { Geometry::UpSample(5, 5, rgba, dst); }, UnsupportedType, nullptr},
        {"void destination", [&] { Geometry::Affine(1, 0, 0, 0, 1, 0, gray, none); }, VoidObject,
         L"Void destination image"},
        {"other destination", [&] { Geometry::Affine(1, 0, 0, 0, 1, 0, rgb, dst); }, IncompatibleType,
         L"Incompatible destination image type, Gray instead of Rgb"},
        {"map of gradients", [&] { Geometry::Affine(1, 0, 0, 0, 1, 0, grad, map); }, UnsupportedType, nullptr},
        {"affine nan", [&] { Geometry::Affine(1, 0, nan, 0, 1, 0, gray, dst); }, OutOfRange,
         L"The transformation is not finite or leads too far from the source image"},
        {"affine inf", [&] { Geometry::Affine(inf, 0, 0, 0, 1, 0, gray, dst); }, OutOfRange, nullptr},
        {"affine far", [&] { Geometry::Affine(1, 0, 0, 1e300, 1, 0, gray, dst); }, OutOfRange, nullptr},
        {"rotate scale 0", [&] { Geometry::Rotate(a, b, 10, 0, gray, dst); }, OutOfRange, nullptr},
        {"rotate same", [&] { Geometry::Rotate(a, b, c, c, gray, dst, true); }, OutOfRange,
         L"The given anchor points may not coincide"},
        {"rotate same source", [&] { Geometry::Rotate(a, a, b, c, gray, dst, false); }, OutOfRange, nullptr},
        {"skew aligned", [&] { Geometry::Skew(a, b, d, a, b, c, gray, dst); }, OutOfRange,
         L"The given anchor points may not be aligned"},
        {"unwind", [&] { Geometry::Unwind(p, 0, nan, 1, 2, gray, dst); }, OutOfRange,
         L"The ring is not finite or leads too far from the source image"},
        {"transform map", [&] { Geometry::Transform(gray, gray, dst); }, IncompatibleType,
         L"Incompatible source or destination image type, Gray instead of Map"},
        {"transform type", [&] { Geometry::Transform(map, rgba, dst); }, UnsupportedType, nullptr},
        {"grid void", [&] { Geometry::GridDeform(nodes, 2, 2, 2, gray, 0, 1, 0, 1, none); }, VoidObject, nullptr},
        {"grid null", [&] { Geometry::GridDeform(nullptr, 2, 2, 2, gray, 0, 1, 0, 1, dst); }, OutOfRange, nullptr},
        {"grid nodes", [&] { Geometry::GridDeform(nodes, 2, 2, 1, gray, 0, 1, 0, 1, dst); }, OutOfRange, nullptr},
        {"grid step", [&] { Geometry::GridDeform(nodes, 2, 2, 2, gray, 0, 0, 0, 1, dst); }, OutOfRange, nullptr},
        {"grid map", [&] { Geometry::GridDeform(nodes, 2, 2, 2, rgba, 0, 1, 0, 1, map); }, UnsupportedType, nullptr},
    };
    for (const auto& row : rows) {
        EXPECT_EQ(CodeOf(row.call), row.code) << row.what;
        if (row.message) {
            EXPECT_STREQ(Status::UnicodeError(), row.message) << row.what;
        }
        ASSERT_EQ(SamplesOf(dst), before) << row.what;
        EXPECT_EQ(none.Type, Undefined);
    }
}

TEST(Geometry, ViewsKeepTheirPixelsUnderSharing)
{
    Image image, view, wanted;
    image.Set(12, 8, Gray);
    Fill(image, 6);
    const Samples before = SamplesOf(image);
    wanted.Set(12, 8, Gray);
    Geometry::Affine(0.5, 0, 1, 0, 0.5, 1, image, wanted);
    Status::Shallow = true;
    view.ShallowCopy(image, true);
    Geometry::Affine(0.5, 0, 1, 0, 0.5, 1, image, image);
    Geometry::Mirror(view, view);
    Geometry::Mirror(view, view);
    Status::Shallow = false;
    EXPECT_EQ(SamplesOf(view), before);
    EXPECT_EQ(SamplesOf(image), SamplesOf(wanted));
}

TEST(Geometry, WarpsTakeRowsFromTheBottomUpAndMapsDoNot)
{
    constexpr int width = 16, height = 12;
    XY center(7, 6), nodes[4] = {{-2, 1}, {14, -1}, {1, 12}, {15, 9}};
    for (const PixelTypes type : sampledTypes) {
        Image src, upward, dst, wanted, map;
        src.Set(width, height, type);
        Fill(src, 17);
        const int pitch = src.Pitch;
        std::vector<std::uint8_t> bytes(static_cast<std::size_t>(pitch * height));
        upward.Set(width, height, type, bytes.data(), -pitch, pitch * (height - 1));
        for (int y = 0; y < height; y++)
            std::copy_n(src.Row(y), pitch, upward.Row(y));
        dst.Set(19, 11, type);
        wanted.Set(19, 11, type);
        map.Set(19, 11, GeoMap);
        const std::function<void(Image&, Image&)> warps[] = {
            [](Image& s, Image& d) { Geometry::Affine(0.8, 0.3, -1, -0.3, 0.8, 2, s, d); },
            [](Image& s, Image& d) { Geometry::Affine(0.5, 0.1, 1, 0.1, 0.5, 1, s, d, false); },
            [&](Image& s, Image& d) { Geometry::Unwind(center, 0, 270, 1, 9, s, d); },
            [&](Image& s, Image& d) { Geometry::GridDeform(nodes, 2, 2, 2, s, 0, 18, 0, 10, d); }};
        for (const auto& warp : warps) {
            Fill(dst, 1);
            Fill(wanted, 1);
            warp(src, wanted);
            warp(upward, dst);
            EXPECT_EQ(Status::Error().Code, NoError);
            EXPECT_EQ(SamplesOf(dst), SamplesOf(wanted)) << type;
            EXPECT_EQ(CodeOf([&] { warp(upward, map); }), UnsupportedType);
        }
        Geometry::Affine(1, 0, 0, 0, 1, 0, src, map);
        EXPECT_EQ(CodeOf([&] { Geometry::Transform(map, upward, dst); }), UnsupportedType);
    }
}

TEST(Geometry, WarpsOverTheirSourcesGiveWhatTheyGiveElsewhere)
{
    constexpr int width = 24, height = 15;
    XY center(11, 6), nodes[4] = {{-2, 1}, {22, -1}, {1, 15}, {25, 11}};
    for (const PixelTypes type : sampledTypes) {
        Image map, original, start;
        MakeWindow(original, width, height, type);
        map.Set(width, height, GeoMap);
        Geometry::Affine(0.8, 0.3, -1, -0.3, 0.8, 2, original, map);
        const std::function<void(Image&, Image&)> warps[] = {
            [](Image& s, Image& d) { Geometry::UpSample(width, height, s, d); },
            [&](Image& s, Image& d) { Geometry::Unwind(center, 0, 270, 1, 9, s, d); },
            [&](Image& s, Image& d) { Geometry::Transform(map, s, d); },
            [&](Image& s, Image& d) { Geometry::GridDeform(nodes, 2, 2, 2, s, 4, 12, 3, 9, d); }};
        for (const auto& warp : warps)
            for (const bool shallow : {false, true}) {
                Image source, apart, own, view;
                MakeWindow(source, width, height, type);
                MakeWindow(apart, width, height, type);
                MakeWindow(own, width, height, type);
                warp(source, apart);
                Status::Shallow = shallow;
                view.ShallowCopy(own, true);
                warp(own, own);
                Status::Shallow = false;
                ASSERT_EQ(SamplesOf(own), SamplesOf(apart)) << type << shallow;
                if (!shallow) continue;
                ASSERT_EQ(SamplesOf(view), SamplesOf(source)) << type;
                // Under another image's name, as the steps of a list hold it.
                Status::Shallow = true;
                own.ShallowCopy(view, true);
                warp(view, own);
                Status::Shallow = false;
                ASSERT_EQ(SamplesOf(own), SamplesOf(apart)) << type;
                ASSERT_EQ(SamplesOf(view), SamplesOf(source)) << type;
            }
    }
}

TEST(Geometry, TwoImagesOverTheSameBytesAreKeptApart)
{
    constexpr int size = 20, moved = 3 * size + 2;
    const std::function<void(Image&, Image&)> warps[] = {
        [](Image& s, Image& d) { Geometry::Turn(1, s, d); }, [](Image& s, Image& d) { Geometry::Flip(s, d); },
        [](Image& s, Image& d) { Geometry::DownSample(size, size, s, d); },
        [](Image& s, Image& d) { Geometry::Affine(0.8, 0.3, 2, -0.3, 0.8, 5, s, d); }};
    for (const auto& warp : warps) {
        std::vector<std::uint8_t> bytes(size * size + moved);
        Image src, dst, wanted;
        src.Set(size, size, Gray, bytes.data(), size);
        dst.Set(size, size, Gray, bytes.data() + moved, size);
        Fill(src, 11);
        wanted.Set(size, size, Gray);
        warp(src, wanted);
        warp(src, dst);
        EXPECT_EQ(SamplesOf(dst), SamplesOf(wanted));
    }
}

TEST(Geometry, TurnsReadOverlappingWindowsBeforeTheyWrite)
{
    for (const PixelTypes type : sampledTypes)
        for (const bool flip : {true, false}) {
            Image store, src, dst, wanted;
            store.Set(30, 20, type);
            Fill(store, 4);
            src.ShallowCopy(store, true);
            dst.ShallowCopy(store, true);
            src.Window(3, 4, 21, 11);
            dst.Window(5, 7, 21, 11);
            const auto run = flip ? Geometry::Flip : Geometry::Mirror;
            run(src, wanted);
            run(src, dst);
            EXPECT_EQ(SamplesOf(dst), SamplesOf(wanted)) << type << flip;
        }
}

TEST(Geometry, AMapOfAWindowFitsAnyWindowOfThatPitch)
{
    for (const PixelTypes type : sampledTypes)
        for (const bool interpolate : {true, false}) {
            Image store, other, map, direct, mapped;
            store.Set(40, 30, type);
            Fill(store, 8);
            store.Window(7, 5, 20, 14);
            direct.Set(19, 11, type);
            map.Set(19, 11, GeoMap);
            other.ShallowCopy(store, true);
            other.Window(3, 12, 20, 14);
            Geometry::Affine(0.8, 0.3, -1, -0.3, 0.8, 2, store, map, interpolate);
            for (Image* source : {&store, &other}) {
                Geometry::Affine(0.8, 0.3, -1, -0.3, 0.8, 2, *source, direct, interpolate);
                Geometry::Transform(map, *source, mapped, interpolate);
                EXPECT_EQ(SamplesOf(mapped), SamplesOf(direct)) << type << interpolate;
            }
        }
}

TEST(Geometry, OneDistanceSetsBothScales)
{
    EXPECT_EQ(Geometry::ScaleToPixel, 1);
    Geometry::SimpleCalibration(100, 10);
    EXPECT_EQ(Geometry::ScaleToPixel, 10);
    EXPECT_EQ(Geometry::ScaleFromPixel, 0.1);
    EXPECT_EQ(CodeOf([] { Geometry::SimpleCalibration(0, 10); }), OutOfRange);
    EXPECT_STREQ(Status::UnicodeError(), L"Zero sizes are not allowed");
    EXPECT_EQ(CodeOf([] { Geometry::SimpleCalibration(1e300, 1e-300); }), OutOfRange);
    EXPECT_EQ(Geometry::ScaleToPixel, 10);
    Geometry::SimpleCalibration(1, 1);
    EXPECT_EQ(Geometry::ScaleFromPixel, 1);
}
