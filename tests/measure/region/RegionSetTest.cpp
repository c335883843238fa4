// Algebra, erosion and dilation of regions, beside the same on sets of pixels.
#include "image/Image.h"
#include "image/Morpho.h"
#include "tests/measure/region/Regions.h"

#include <algorithm>
#include <functional>
#include <iterator>
#include <tuple>

using namespace Tesk;
using namespace Tesk::checks;

namespace {

class RegionSets : public RegionMethods
{
protected:
    Image over_;
};

constexpr int size = 14;

using SetOperation = std::function<Pixels(const Pixels&, const Pixels&)>;

template <typename F>
SetOperation Standard(F f)
{
    return [f](const Pixels& a, const Pixels& b) {
        Pixels result;
        f(a.begin(), a.end(), b.begin(), b.end(), std::inserter(result, result.end()));
        return result;
    };
}

TEST_F(RegionSets, AlgebraIsThatOfSetsForAnySourcesAndInPlace)
{
    const auto unite = Standard([](auto... p) { std::set_union(p...); }),
               intersect = Standard([](auto... p) { std::set_intersection(p...); }),
               subtract = Standard([](auto... p) { std::set_difference(p...); });
    const struct
    {
        void (Region::*method)(Region&, Region&, const Image&);
        SetOperation expected;
    } cases[] = {{&Region::Unite, unite}, {&Region::Intersect, intersect}, {&Region::Subtract, subtract}};
    Noise noise{5};
    for (int turn = 0; turn < 12; turn++) {
        Region a = RandomRegion(noise, size), b = RandomRegion(noise, size);
        if (turn % 3 == 1) a = Shuffled(a, noise);
        if (turn % 3 == 2) b = Shuffled(b, noise);
        if (turn == 9) a.Clear();
        if (turn == 10) b.Clear();
        for (const auto& c : cases) {
            const Pixels expected = c.expected(PixelsOf(a), PixelsOf(b));
            Region apart, first(a), second(b), both(a);
            Region p(a), q(b);
            (apart.*c.method)(p, q, over_);
            EXPECT_EQ(PixelsOf(apart), expected);
            EXPECT_TRUE(IsInScanOrder(apart));
            (first.*c.method)(first, q, over_);
            EXPECT_EQ(RunsOf(first), RunsOf(apart));
            (second.*c.method)(p, second, over_);
            EXPECT_EQ(RunsOf(second), RunsOf(apart));
            (both.*c.method)(both, both, over_);
            EXPECT_EQ(PixelsOf(both), c.expected(PixelsOf(a), PixelsOf(a)));
        }
    }
}

TEST_F(RegionSets, UnionJoinsRunsThatTouchAndOthersKeepThemApart)
{
    Region a = RegionOf({{0, 5, 1}, {5, 9, 1}, {4, 4, 2}}), b = RegionOf({{9, 12, 1}, {14, 15, 1}}), result;
    result.Unite(a, b);
    EXPECT_EQ(RunsOf(result), (RunTuples{{0, 12, 1}, {14, 15, 1}}));
    Region c = RegionOf({{3, 8, 1}});
    result.Intersect(a, c);
    EXPECT_EQ(RunsOf(result), (RunTuples{{3, 5, 1}, {5, 8, 1}}));
}

TEST_F(RegionSets, InversionLeavesTheRestOfARectangle)
{
    Noise noise{8};
    for (int turn = 0; turn < 6; turn++) {
        Region src = RandomRegion(noise, size);
        if (turn % 2 == 1) src = Shuffled(src, noise);
        const Pixels taken = PixelsOf(src);
        Pixels expected;
        for (int y = -20; y < 10; y++)
            for (int x = -5; x < 40; x++)
                if (!taken.contains({y, x})) expected.emplace(y, x);
        Region inverted;
        inverted.Invert(-5, -20, 45, 30, src, over_);
        EXPECT_EQ(PixelsOf(inverted), expected);
        EXPECT_TRUE(IsInScanOrder(inverted));
        src.Invert(-5, -20, 45, 30, src, over_);
        EXPECT_EQ(RunsOf(src), RunsOf(inverted));
    }
    Region nothing, result;
    result.Invert(3, 4, 0, 5, nothing);
    EXPECT_EQ(result.NumRuns, 0);
    // A rectangle reaches only as far as runs do.
    result.Invert(32760, 32766, MaxInt, MaxInt, nothing);
    EXPECT_EQ(RunsOf(result), (RunTuples{{32760, 32767, 32766}, {32760, 32767, 32767}}));
}

TEST_F(RegionSets, ContainmentComparesRunsWithTheCommonPart)
{
    const Region empty, big = RegionOf({{0, 9, 0}, {0, 9, 1}}), small = RegionOf({{2, 4, 1}}),
                        crossing = RegionOf({{5, 12, 1}}), far = RegionOf({{20, 22, 1}});
    const struct
    {
        const Region &a, &b;
        RangeMode expected;
    } cases[] = {{small, big, Inside}, {big, small, Over},     {crossing, big, Onside},
                 {far, big, Outside},  {big, big, Inside},     {big, empty, Over},
                 {empty, big, Inside}, {empty, empty, Inside}, {small, far, Outside}};
    for (const auto& c : cases) {
        Region a(c.a);
        EXPECT_EQ(a.Containment(c.b), c.expected);
    }
    Region mixed = RegionOf({{0, 9, 1}, {0, 9, 0}}, false);
    EXPECT_EQ(mixed.Containment(big), Inside);
    EXPECT_EQ(RegionOf({{2, 4, 1}}).Containment(RegionOf({{0, 9, 1}, {0, 9, 0}}, false)), Inside);
}

/// The steps of an element: rows of the box, and rows that the diagonal narrows.
Pixels StepsOf(const Morpho& element)
{
    const int half = element.Width / 2, diagonal = element.Diagonal / 2, box = element.Height / 2 - diagonal;
    Pixels steps;
    const auto add = [&](int dy, int reach) {
        for (int dx = -reach; dx <= reach; dx++)
            steps.emplace(dy, dx);
    };
    add(0, half);
    for (int k = 1; k <= diagonal; k++)
        add(k, half - k), add(-k, half - k);
    for (int k = 1; k <= box; k++)
        add(k, half), add(-k, half);
    return steps;
}

Pixels Dilation(const Pixels& pixels, const Pixels& steps)
{
    Pixels result;
    for (const auto& [y, x] : pixels)
        for (const auto& [dy, dx] : steps)
            result.emplace(y + dy, x + dx);
    return result;
}

Pixels Erosion(const Pixels& pixels, const Pixels& steps)
{
    Pixels result;
    for (const auto& [y, x] : pixels)
        if (std::all_of(steps.begin(), steps.end(), [&](const auto& step) {
                return pixels.contains({y + step.first, x + step.second});
            }))
            result.emplace(y, x);
    return result;
}

Pixels Less(const Pixels& a, const Pixels& b)
{
    return Standard([](auto... p) { std::set_difference(p...); })(a, b);
}

Region Grown(const Region& src, int size)
{
    Region result, from(src);
    Morpho square;
    square.Square(size);
    result.Dilate(from, square);
    return result;
}

TEST_F(RegionSets, MorphologyIsThatOfPixelsUnderTheElement)
{
    const int sizes[][3] = {{1, 1, 1}, {3, 3, 1}, {3, 3, 3}, {5, 5, 3}, {7, 5, 3}, {9, 1, 1}, {1, 7, 1}, {5, 9, 5}};
    Noise noise{3};
    for (const auto& [width, height, diagonal] : sizes) {
        Morpho element;
        element.Set(width, height, diagonal);
        const Pixels steps = StepsOf(element);
        // Erosion has something to leave.
        Region src = Grown(RandomRegion(noise, size), width);
        if (width != 9) src = Shuffled(src, noise);
        Region joined;
        joined.Unite(src, src);
        const Pixels pixels = PixelsOf(joined);
        Region eroded, dilated, gradient, in(joined), out(joined);
        eroded.Erode(joined, element, over_);
        EXPECT_EQ(PixelsOf(eroded), Erosion(pixels, steps)) << width << height << diagonal;
        dilated.Dilate(src, element, over_);
        EXPECT_EQ(PixelsOf(dilated), Dilation(pixels, steps)) << width << height << diagonal;
        EXPECT_TRUE(IsInScanOrder(eroded) && IsInScanOrder(dilated));
        in.Erode(in, element);
        EXPECT_EQ(RunsOf(in), RunsOf(eroded));
        out.Dilate(out, element);
        EXPECT_EQ(PixelsOf(out), PixelsOf(dilated));
        gradient.Gradient(joined, element, StandardGradient, over_);
        EXPECT_EQ(PixelsOf(gradient), Less(PixelsOf(dilated), PixelsOf(eroded)));
        gradient.Gradient(joined, element, ExternalGradient, over_);
        EXPECT_EQ(PixelsOf(gradient), Less(PixelsOf(dilated), pixels));
        joined.Gradient(joined, element, InternalGradient, over_);
        EXPECT_EQ(PixelsOf(joined), Less(pixels, PixelsOf(eroded)));
    }
}

TEST_F(RegionSets, MorphologyIsTheSameForManyRunsAndForFew)
{
    const int sizes[][3] = {{3, 3, 1}, {3, 3, 3}, {5, 5, 3}, {7, 5, 3}, {1, 7, 1}, {5, 9, 5}, {61, 3, 1}, {3, 131, 1}};
    Noise noise{17};
    for (const auto& [width, height, diagonal] : sizes)
        for (const int columns : {40, 63, 64, 65, 200}) {
            Morpho element;
            element.Set(width, height, diagonal);
            Region noisy, sparse;
            for (int y = 0; y < 50; y++)
                for (int x = noise.Byte() % 5 - 2; x < columns;) {
                    const int end = x + 1 + noise.Byte() % (width + 12);
                    noisy.AddRun(x, end, y);
                    x = end + 1 + noise.Byte() % 3;
                }
            // A run far away: too few of them for so large a frame.
            sparse.RegionAppend(noisy);
            sparse.AddRun(20000, 20001, 20000);
            Region few, many;
            many.Dilate(noisy, element);
            few.Dilate(sparse, element);
            RunTuples runs = RunsOf(few);
            std::erase_if(runs, [](const auto& run) { return std::get<2>(run) > 10000; });
            EXPECT_EQ(RunsOf(many), runs) << width << ' ' << height << ' ' << diagonal << ' ' << columns;
            many.Erode(noisy, element);
            few.Erode(sparse, element);
            runs = RunsOf(few);
            std::erase_if(runs, [](const auto& run) { return std::get<2>(run) > 10000; });
            EXPECT_EQ(RunsOf(many), runs) << width << ' ' << height << ' ' << diagonal << ' ' << columns;
        }
}

TEST_F(RegionSets, ErosionByARowKeepsLabelsAndRunsThatItEmpties)
{
    Region region;
    region.BoxAppend(Limits(3, 1, 4, 1), 7);
    Morpho row;
    row.Horizontal(5);
    region.Erode(region, row);
    EXPECT_EQ(RunsOf(region), (RunTuples{{5, 5, 1}}));
    EXPECT_EQ(region.Runs()[0].Label, 7);
    EXPECT_EQ(region.Area(), 0);
    Region other;
    other.Unite(region, region);
    EXPECT_EQ(other.NumRuns, 0);
    Region box;
    box.BoxAppend(Limits(3, 1, 4, 1));
    other.Subtract(box, region);
    EXPECT_EQ(RunsOf(other), RunsOf(box)) << "a run without a pixel parts nothing";
    other.Invert(3, 1, 4, 1, region);
    EXPECT_EQ(RunsOf(other), RunsOf(box));
    row.Horizontal(3);
    region.Clear();
    region.BoxAppend(Limits(3, 1, 1, 1));
    region.Erode(region, row);
    EXPECT_EQ(region.NumRuns, 0);
}

TEST_F(RegionSets, DilationStaysWithinTheCoordinatesOfRuns)
{
    Region corner = RegionOf({{-32768, -32767, -32768}, {32760, 32767, 32767}});
    Morpho square;
    square.Square(5);
    corner.Dilate(corner, square);
    EXPECT_EQ(corner.NumRuns, 6);
    EXPECT_EQ(corner.Area(), 3 * 3 + 3 * 9);
    EXPECT_TRUE(IsInScanOrder(corner));
}

TEST_F(RegionSets, EmptySourcesAndOtherGradientsAreRefused)
{
    Region empty, kept = RegionOf({{1, 2, 3}});
    Morpho square;
    const auto expect = [&](const wchar_t* message, const char* context) {
        EXPECT_EQ(Status::Error().Code, OutOfRange);
        EXPECT_EQ(Message(), message);
        EXPECT_STREQ(Status::AsciiFunction(), context);
        EXPECT_EQ(kept.NumRuns, 1);
    };
    kept.Erode(empty, square, over_);
    expect(L"This region is void", "Tesk::Region::Erode");
    kept.Dilate(empty, square, over_);
    expect(L"This region is void", "Tesk::Region::Dilate");
    kept.Gradient(empty, square, InternalGradient, over_);
    expect(L"This region is void", "Tesk::Region::Gradient");
    kept.Gradient(kept, square, SobelGradient, over_);
    expect(L"Only Standard/Internal/External Gradients are supported", "Tesk::Region::Gradient");
}

} // namespace
