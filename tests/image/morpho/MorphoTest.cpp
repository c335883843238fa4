#include "image/Morpho.h"
#include "MorphoSupport.h"

#include <algorithm>
#include <functional>
#include <set>
#include <utility>

using namespace MorphoSupport;

namespace {

struct Sizes3
{
    int width, height, diagonal;
};

const Sizes3 elements[] = {{1, 1, 1},    {3, 3, 1},  {3, 3, 3},  {5, 5, 3},   {5, 5, 5},    {7, 1, 1},
                           {1, 9, 1},    {3, 5, 1},  {9, 5, 3},  {15, 15, 1}, {15, 15, 15}, {13, 13, 7},
                           {17, 3, 1},   {33, 7, 5}, {7, 7, 1},  {1, 1, 9},   {5, 3, 9},    {49, 49, 1},
                           {49, 49, 25}, {3, 49, 1}, {35, 1, 1}, {11, 11, 5}, {67, 9, 1},   {101, 5, 5}};

/// The definition: 3-point and 3 by 3 passes, one after the other, pixels outside taking no part.
Picture SlowExtremum(Sizes3 e, bool maximum, Picture picture)
{
    int w = e.width, h = e.height, d = e.diagonal;
    while (w >= 2 || h >= 2) {
        const bool vertical = w < 2, horizontal = !vertical && h < 2, cross = !vertical && !horizontal && d > 1;
        if (!vertical) w -= 2;
        if (!horizontal) h -= 2;
        if (cross) d -= 2;
        picture = Make(picture.width, picture.height, [&](int x, int y) {
            int best = picture(x, y);
            for (int j = -1; j <= 1; j++)
                for (int i = -1; i <= 1; i++) {
                    if (!picture.Has(x + i, y + j) || (vertical && i != 0) || (horizontal && j != 0) ||
                        (cross && i != 0 && j != 0))
                        continue;
                    const int v = picture(x + i, y + j);
                    best = maximum ? std::max(best, v) : std::min(best, v);
                }
            return best;
        });
    }
    return picture;
}

template <typename F>
Picture Pairwise(const Picture& a, const Picture& b, F f)
{
    return Make(a.width, a.height, [&](int x, int y) { return f(a(x, y), b(x, y)); });
}

struct Operation
{
    const char* name;
    std::function<void(const Morpho&, const Image&, Image&)> run;
    /// From the source, its dilation, erosion, opening and closing.
    std::function<int(int s, int dilated, int eroded, int opened, int closed, int most)> formula;
};

int Less(int a, int b, int most)
{
    return std::clamp(a - b, 0, most);
}

const Operation operations[] = {
    {"Dilate", [](auto& m, auto& s, auto& d) { m.Dilate(s, d); },
     [](int, int dilated, int, int, int, int) { return dilated; }},
    {"Erode", [](auto& m, auto& s, auto& d) { m.Erode(s, d); },
     [](int, int, int eroded, int, int, int) { return eroded; }},
    {"Open", [](auto& m, auto& s, auto& d) { m.Open(s, d); },
     [](int, int, int, int opened, int, int) { return opened; }},
    {"Close", [](auto& m, auto& s, auto& d) { m.Close(s, d); },
     [](int, int, int, int, int closed, int) { return closed; }},
    {"WhiteHat", [](auto& m, auto& s, auto& d) { m.WhiteHat(s, d); },
     [](int s, int, int, int opened, int, int most) { return Less(s, opened, most); }},
    {"BlackHat", [](auto& m, auto& s, auto& d) { m.BlackHat(s, d); },
     [](int s, int, int, int, int closed, int most) { return Less(closed, s, most); }},
    {"Gradient", [](auto& m, auto& s, auto& d) { m.Gradient(s, d); },
     [](int, int dilated, int eroded, int, int, int most) { return Less(dilated, eroded, most); }},
    {"External", [](auto& m, auto& s, auto& d) { m.Gradient(s, d, ExternalGradient); },
     [](int s, int dilated, int, int, int, int most) { return Less(dilated, s, most); }},
    {"Internal", [](auto& m, auto& s, auto& d) { m.Gradient(s, d, InternalGradient); },
     [](int s, int, int eroded, int, int, int most) { return Less(s, eroded, most); }},
    {"MidRange", [](auto& m, auto& s, auto& d) { m.MidRange(s, d); },
     [](int, int dilated, int eroded, int, int, int) { return (dilated + eroded) / 2; }},
    {"PseudoMedian", [](auto& m, auto& s, auto& d) { m.PseudoMedian(s, d); },
     [](int, int, int, int opened, int closed, int) { return (opened + closed) / 2; }},
    {"Contrast", [](auto& m, auto& s, auto& d) { m.Contrast(s, d); },
     [](int, int, int, int opened, int closed, int most) { return Less(closed, opened, most); }}};

} // namespace

TEST_F(MorphoTest, ExtremaEqualThePassesThatDefineThem)
{
    Image src, dst;
    for (const PixelTypes type : {Gray, Gray16})
        for (const Sizes3 e : elements)
            for (const auto& [w, h] : {std::pair{1, 1}, {1, 9}, {2, 2}, {5, 3}, {16, 1}, {33, 9}, {64, 2}, {67, 7}}) {
                RandomWindow(src, w, h, type, type == Gray ? 256 : 65536, 7u * static_cast<std::uint32_t>(w + e.width));
                Morpho morpho;
                morpho.Set(e.width, e.height, e.diagonal);
                for (const bool maximum : {true, false}) {
                    const Picture expected = SlowExtremum(e, maximum, Picture(src));
                    for (const SIMDLevels level : allLevels) {
                        const AtLevel at(level);
                        maximum ? morpho.Dilate(src, dst) : morpho.Erode(src, dst);
                        ASSERT_EQ(Picture(dst), expected)
                            << e.width << ' ' << e.height << ' ' << e.diagonal << ": " << w << ' ' << h << ' ' << level;
                    }
                }
            }
}

TEST_F(MorphoTest, EveryWidthAndHeightIsExact)
{
    Image src, dst;
    Morpho morpho;
    morpho.Set(9, 5, 3);
    for (int w = 1; w <= 67; w++)
        for (int h = 1; h <= 9; h++) {
            RandomWindow(src, w, h, Gray, 256, static_cast<std::uint32_t>(100 * w + h));
            morpho.Dilate(src, dst);
            ASSERT_EQ(Picture(dst), SlowExtremum({9, 5, 3}, true, Picture(src))) << w << ' ' << h;
        }
}

TEST_F(MorphoTest, CompositesFollowTheirFormulas)
{
    const Sizes3 e{5, 3, 3};
    Morpho morpho;
    morpho.Set(e.width, e.height, e.diagonal);
    for (const PixelTypes type : {Gray, Gray16}) {
        Image src, dst;
        RandomWindow(src, 41, 9, type, type == Gray ? 256 : 65536, 5);
        const Picture s(src), dilated = SlowExtremum(e, true, s), eroded = SlowExtremum(e, false, s),
                              opened = SlowExtremum(e, true, eroded), closed = SlowExtremum(e, false, dilated);
        for (const Operation& o : operations) {
            o.run(morpho, src, dst);
            ASSERT_EQ(Status::Error().Code, NoError) << o.name;
            ASSERT_EQ(Picture(dst), Make(s.width, s.height,
                                         [&](int x, int y) {
                                             return o.formula(s(x, y), dilated(x, y), eroded(x, y), opened(x, y),
                                                              closed(x, y), type == Gray ? 255 : 32767);
                                         }))
                << o.name;
        }
    }
}

TEST_F(MorphoTest, ResultsAreTheSameInPlaceAndBesideOthersInOneStore)
{
    Morpho morpho;
    morpho.Set(5, 7, 3);
    for (const bool shallow : {false, true})
        for (const Operation& o : operations) {
            Image src, expected;
            RandomWindow(src, 37, 8, Gray, 256, 9);
            o.run(morpho, src, expected);
            // The destination is the source moved by one pixel, over the same memory.
            Image store, view, moved;
            Load(Random(60, 20, 256, 3), store);
            view.Set(60, 20, Gray, store.FirstPixel, store.Pitch);
            view.Window(10, 5, 37, 8);
            moved.Set(60, 20, Gray, store.FirstPixel, store.Pitch);
            moved.Window(11, 6, 37, 8);
            for (int y = 0; y < 8; y++)
                std::copy_n(src.Row(y), 37, view.Row(y));
            Status::Shallow = shallow;
            o.run(morpho, view, moved);
            EXPECT_EQ(Picture(moved), Picture(expected)) << o.name << " shifted";
            o.run(morpho, src, src);
            Status::Shallow = false;
            EXPECT_EQ(Picture(src), Picture(expected)) << o.name << " in place";
            EXPECT_EQ(src.X, 3);
        }
}

TEST_F(MorphoTest, RowsMayRunFromTheBottomUp)
{
    Morpho morpho;
    morpho.Set(5, 3, 1);
    constexpr int width = 24, height = 9;
    std::vector<std::uint8_t> bytes(width * height);
    for (const Operation& o : operations) {
        Image src, expected, upward;
        Load(Random(width, height, 256, 21), src);
        o.run(morpho, src, expected);
        upward.Set(width, height, Gray, bytes.data(), -width, width * (height - 1));
        for (int y = 0; y < height; y++)
            std::copy_n(src.Row(y), width, upward.Row(y));
        o.run(morpho, upward, upward);
        EXPECT_EQ(Picture(upward), Picture(expected)) << o.name;
    }
}

TEST_F(MorphoTest, ViewsKeepTheirPixelsUnderSharing)
{
    Image image, kept, expected;
    RandomWindow(image, 20, 6, Gray, 256, 8);
    const Picture before(image);
    Morpho().Dilate(image, expected);
    Status::Shallow = true;
    kept.ShallowCopy(image, true);
    Morpho().Dilate(image, image);
    EXPECT_EQ(Picture(kept), before);
    EXPECT_EQ(Picture(image), Picture(expected));
}

TEST_F(MorphoTest, PixelsOutsideTheDestinationWindowStay)
{
    Image src, dst;
    RandomWindow(src, 20, 6, Gray, 256, 4);
    Load(Picture(40, 20, 77), dst);
    dst.Window(9, 9, 20, 6);
    Morpho().Dilate(src, dst);
    const Picture window(dst);
    dst.Window();
    EXPECT_EQ(Picture(dst),
              Make(40, 20, [&](int x, int y) { return window.Has(x - 9, y - 9) ? window(x - 9, y - 9) : 77; }));
}

TEST_F(MorphoTest, SettersSetOddSizesAndRefuseOthersUnchanged)
{
    Morpho m;
    const auto is = [&](int w, int h, int d) { return m.Width == w && m.Height == h && m.Diagonal == d; };
    EXPECT_TRUE(is(3, 3, 1));
    m.Box(3, 5);
    EXPECT_TRUE(is(3, 5, 1));
    m.Square(7);
    EXPECT_TRUE(is(7, 7, 1));
    m.Diamond(9);
    EXPECT_TRUE(is(9, 9, 9));
    m.Horizontal(11);
    EXPECT_TRUE(is(11, 1, 1));
    m.Vertical(13);
    EXPECT_TRUE(is(1, 13, 1));
    for (const auto& [size, diagonal] : {std::pair{3, 3}, {5, 3}, {7, 5}, {9, 5}, {15, 9}}) {
        m.Octagon(size);
        EXPECT_TRUE(is(size, size, diagonal)) << size;
    }
    m.Set(5, 7, 3);
    const struct
    {
        std::function<void()> call;
        const wchar_t* message;
    } cases[] = {{[&] { m.Square(4); }, L"The filter Width (4) must be a positive odd number"},
                 {[&] { m.Box(5, 0); }, L"The filter Height (0) must be a positive odd number"},
                 {[&] { m.Set(5, 5, 2); }, L"The filter Diagonal (2) must be a positive odd number"},
                 {[&] { m.Horizontal(-3); }, L"The filter Width (-3) must be a positive odd number"},
                 {[&] { m.Octagon(MinInt - 1); }, L"The filter Width (-2147483648) must be a positive odd number"}};
    for (const auto& c : cases) {
        c.call();
        EXPECT_EQ(Status::Error().Code, OutOfRange);
        EXPECT_EQ(Message(), c.message);
        EXPECT_STREQ(Status::AsciiFunction(), "Tesk::Morpho::Set");
        EXPECT_TRUE(is(5, 7, 3));
    }
}

TEST_F(MorphoTest, RefusalsNameTheTypeAndLeaveTheDestination)
{
    Image rgb, gray16, dst, nothing;
    rgb.Set(4, 4, Rgb);
    Load(Picture(4, 4, 300), gray16, Gray16);
    for (const Operation& o : operations) {
        o.run(Morpho(), nothing, dst);
        EXPECT_EQ(Status::Error().Code, VoidObject) << o.name;
        o.run(Morpho(), rgb, dst);
        EXPECT_EQ(Status::Error().Code, UnsupportedType) << o.name;
        EXPECT_EQ(Message(), L"The image type (Rgb) is not supported for this operation");
    }
    Morpho().Gradient(gray16, dst, SobelGradient);
    EXPECT_EQ(Status::Error().Code, UnsupportedType);
    EXPECT_EQ(Message(), L"The gradient Type (SobelGradient) is not supported for this operation; use one of "
                         L"Standard/External/Internal");
    Morpho().WhiteHat(gray16, dst, true);
    EXPECT_EQ(Status::Error().Code, UnsupportedType);
    EXPECT_EQ(dst.Type, Undefined);
}

TEST_F(MorphoTest, ElementsLargerThanAnyImageTakeAllOfIt)
{
    Image src, dst;
    RandomWindow(src, 21, 5, Gray, 256, 8);
    const Picture s(src);
    Morpho m;
    m.Set(MaxInt, MaxInt, 1);
    m.Dilate(src, dst);
    EXPECT_EQ(Picture(dst), Picture(21, 5, *std::max_element(s.values.begin(), s.values.end())));
    m.Set(MaxInt, MaxInt, MaxInt);
    m.Erode(src, dst);
    EXPECT_EQ(Picture(dst), Picture(21, 5, *std::min_element(s.values.begin(), s.values.end())));
}

TEST_F(MorphoTest, HatsGoThroughTheAutomaticThreshold)
{
    Image src, dst;
    Picture specks(20, 10, 50);
    specks(5, 5) = 200;
    specks(12, 2) = 210;
    Load(specks, src);
    Morpho().WhiteHat(src, dst, true);
    EXPECT_EQ(Picture(dst), Make(20, 10, [&](int x, int y) { return specks(x, y) > 50 ? 255 : 0; }));
    Morpho().BlackHat(src, src);
    EXPECT_EQ(Picture(src), Picture(20, 10, 0));
    Morpho dot;
    dot.Square(1);
    Load(specks, src);
    dot.WhiteHat(src, dst);
    EXPECT_EQ(Picture(dst), Picture(20, 10, 0));
}

TEST_F(MorphoTest, RenderingShowsTheCellsOfTheElement)
{
    Morpho diamond;
    diamond.Diamond(3);
    Image dst;
    Load(Picture(10, 10, 7), dst);
    RenderMorpho(diamond, dst);
    // Three cells of three pixels, of which two are black, from a margin of one.
    EXPECT_EQ(Picture(dst),
              Picture(std::vector<std::string>{"##########", "####..####", "####..####", "##########", "#..#..#..#",
                                               "#..#..#..#", "##########", "####..####", "####..####", "##########"}));
    // A picture that is not as high as wide is cut; cells without an inside leave it white.
    Load(Picture(10, 6, 7), dst);
    RenderMorpho(diamond, dst);
    EXPECT_EQ(dst.Row(5)[4], 0);
    diamond.Set(MaxInt, 3, 1);
    RenderMorpho(diamond, dst);
    EXPECT_EQ(Picture(dst), Picture(10, 6, 255));
    dst.Set(4, 4, Rgb);
    RenderMorpho(diamond, dst);
    EXPECT_EQ(Status::Error().Code, IncompatibleType);
}
