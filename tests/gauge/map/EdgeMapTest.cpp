// Edge maps: maxima of gradients, hysteresis, steps, chains, polygons, outlines of dark parts.
#include "gauge/EdgeMap.h"

#include "../../Failures.h"
#include "image/Image.h"
#include "image/Kernel.h"
#include "measure/Path.h"

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <cstdlib>
#include <random>
#include <string>
#include <tuple>
#include <vector>

namespace Tesk {
namespace {

using checks::Message;

class EdgeMapTest : public checks::IgnoringFailures
{
protected:
    static void Paint(Image& image, int width, int height, int value)
    {
        image.Set(width, height, Gray);
        for (int y = 0; y < height; y++)
            std::fill_n(image.Row(y), width, static_cast<std::uint8_t>(value));
    }
    static void Box(Image& image, int x, int y, int width, int height, int value)
    {
        for (int j = y; j < y + height; j++)
            std::fill_n(image.Row(j) + x, width, static_cast<std::uint8_t>(value));
    }
    /// Smooth noise, so that there are ties and gentle slopes.
    static void Clouds(Image& image, int width, int height, unsigned seed)
    {
        std::mt19937 random(seed);
        Image noise;
        Paint(noise, width, height, 0);
        for (int y = 0; y < height; y++)
            for (int x = 0; x < width; x++)
                noise.Row(y)[x] = static_cast<std::uint8_t>(random() % 256);
        Kernel::Binomial5(noise, image);
    }
};

/// A pixel of the maxima by the definition.
int MaximumAt(const Image& gradient, int x, int y, int noise, int limit, int gain)
{
    if (x == 0 || y == 0 || x == gradient.Width - 1 || y == gradient.Height - 1) return 0;
    const GradPixel g = gradient.Row<GradPixel>(y)[x];
    const bool along = std::abs(g.X) >= std::abs(g.Y);
    const auto component = [&](int i, int j) {
        const GradPixel p = gradient.Row<GradPixel>(y + j)[x + i];
        return along ? p.X : p.Y;
    };
    const int v = component(0, 0), before = along ? component(-1, 0) : component(0, -1),
              after = along ? component(1, 0) : component(0, 1);
    if (std::abs(v) < noise || std::abs(v) > limit) return 0;
    const bool extreme = v > 0 ? v >= before && v > after : v < 0 && v < before && v <= after;
    return extreme ? std::min(std::abs(v) / gain, 255) : 0;
}

TEST_F(EdgeMapTest, MaximaAreThoseOfTheDefinition)
{
    constexpr int gains[] = {1, 3, 4, 1, 1, 5, 35};
    Image image, gradient, maxima, binary;
    Clouds(image, 37, 29, 5);
    for (int type = StandardGradient; type <= Canny2Gradient; type++) {
        const int gain = gains[type - StandardGradient];
        const auto kind = static_cast<GradientTypes>(type);
        EdgeMap::GradientVector(image, gradient, kind);
        ASSERT_EQ(gradient.Type, Grad);
        EXPECT_EQ(gradient.GradGain, gain);
        std::int64_t sum = 0;
        for (int y = 0; y < gradient.Height; y++)
            for (int x = 0; x < gradient.Width; x++) {
                const GradPixel g = gradient.Row<GradPixel>(y)[x];
                sum += std::max(std::abs(g.X), std::abs(g.Y));
            }
        const int automatic = static_cast<int>(1.3 * static_cast<double>(sum) / (37 * 29));
        for (const int noise : {int{Auto}, 0, 4, -3, MaxInt})
            for (const int limit : {MaxInt, 9, -1}) {
                const int used = EdgeMap::GradientMaxima(noise, image, maxima, false, kind, limit);
                const std::int64_t least = noise == Auto ? automatic : std::int64_t{noise} * gain,
                                   most = std::int64_t{limit} * gain;
                if (noise != MaxInt) {
                    EXPECT_EQ(used, least / gain) << type << noise;
                }
                EdgeMap::GradientMaxima(noise, image, binary, true, kind, limit);
                for (int y = 0; y < 29; y++)
                    for (int x = 0; x < 37; x++) {
                        const int expected =
                            MaximumAt(gradient, x, y, static_cast<int>(std::min<std::int64_t>(least, MaxInt)),
                                      static_cast<int>(std::min<std::int64_t>(most, MaxInt)), gain);
                        ASSERT_EQ(maxima.Row(y)[x], expected) << type << ' ' << noise << ' ' << x << ' ' << y;
                        ASSERT_EQ(binary.Row(y)[x], expected > 0 ? 255 : 0);
                    }
            }
    }
    Paint(image, 20, 20, 77);
    EXPECT_EQ(EdgeMap::GradientMaxima(Auto, image, image), 0);
    EXPECT_EQ(*std::max_element(image.Row(10), image.Row(10) + 20), 0);
}

TEST_F(EdgeMapTest, WeakMaximaStayWhereTheyMeetStrongOnes)
{
    Image image, edges;
    Paint(image, 40, 30, 100);
    // A border that grows weaker downwards, and a weak one apart from it.
    for (int y = 0; y < 30; y++)
        std::fill_n(image.Row(y) + 10, 10, static_cast<std::uint8_t>(200 - 3 * y));
    for (int y = 0; y < 30; y++)
        std::fill_n(image.Row(y) + 30, 10, std::uint8_t{120});
    EdgeMap::StrongEdges(5, 60, image, edges);
    for (int y = 1; y < 28; y++) {
        EXPECT_EQ(edges.Row(y)[9] | edges.Row(y)[10], 255) << y;
        EXPECT_EQ(edges.Row(y)[29] | edges.Row(y)[30], 0) << y;
    }
    EXPECT_EQ(edges.Row(0)[10], 0);
    EdgeMap::StrongEdges(5, 255, image, edges);
    EXPECT_EQ(edges.Row(2)[9] | edges.Row(2)[10], 0);
}

TEST_F(EdgeMapTest, StepsStandInTheirMiddle)
{
    Image ramp, steps;
    Paint(ramp, 20, 3, 10);
    for (int y = 0; y < 3; y++)
        for (int x = 5; x < 15; x++)
            ramp.Row(y)[x] = static_cast<std::uint8_t>(x < 10 ? 10 + 20 * (x - 4) : 110 - 20 * (x - 10));
    EdgeMap::StepEdges(32, 8, ramp, steps, Both, HorizontalDirection, true);
    const std::vector<int> row(steps.Row(1), steps.Row(1) + 20);
    EXPECT_EQ(std::count(row.begin(), row.end(), 255), 1);
    EXPECT_EQ(std::count(row.begin(), row.end(), 0), 1);
    EXPECT_EQ(row[7], 255); // the first at 60 or above, from 10 to 110
    EXPECT_EQ(row[13], 0);  // the first at 60 or below
    EdgeMap::StepEdges(32, 8, ramp, ramp, Falling, BothDirections);
    EXPECT_EQ(ramp.Row(1)[7], 0);
    EXPECT_EQ(ramp.Row(1)[13], 255);
}

TEST_F(EdgeMapTest, ChainsRunRoundASquareAndBecomeItsPolygon)
{
    Image image;
    Paint(image, 60, 50, 40);
    Box(image, 15, 12, 30, 24, 200);
    EdgeMap map;
    EXPECT_EQ(map.Follow(10, 10, 5, image), 10);
    ASSERT_GE(map.NumPaths, 1);
    int sites = 0;
    for (const EdgePath& path : map.Paths) {
        EXPECT_GT(path.End - path.First, 5);
        sites += path.End - path.First;
        for (int i = path.First + 1; i < path.End; i++) {
            const Site a = map.Sites[static_cast<std::size_t>(i - 1)], b = map.Sites[static_cast<std::size_t>(i)];
            EXPECT_LE(std::max(std::abs(a.X - b.X), std::abs(a.Y - b.Y)), 1);
        }
    }
    EXPECT_GT(sites, 2 * (30 + 24) - 12);
    Path path;
    map.GetPath(0, path);
    EXPECT_EQ(path.Length, map.Paths[0].End - map.Paths[0].First);
    EXPECT_EQ(map.NumVertexes(0), 0);
    EXPECT_EQ(Message(), L"This edge map has not been vectorized");

    map.Vectorize(10, 10, 5, image, false, 1.5);
    EXPECT_LE(map.NumVertexes(0), 8);
    EXPECT_EQ(map.Vertex(0, 0).X, map.Sites[static_cast<std::size_t>(map.Paths[0].First)].X);
    map.Vertex(0, 99);
    EXPECT_EQ(Message(), L"Invalid vertex index (99) for this path (0), must be in range [0.." +
                             std::to_wstring(map.NumVertexes(0) - 1) + L"]");
    EXPECT_STREQ(Status::AsciiFunction(), "Tesk::EdgeMap::Vertex");
    map.NumArcs(0);
    EXPECT_EQ(Message(), L"This edge map has not been vectorized");
    map.Vectorize(10, 10, 5, image, true, 1.5);
    EXPECT_GT(map.NumArcs(0), 1);
    map.NumVertexes(0);
    EXPECT_EQ(Message(), L"This edge map has been vectorized to arcs");
    map.GetPath(7000, path);
    EXPECT_EQ(Message(),
              L"Invalid path index (7000), must be in range [0.." + std::to_wstring(map.NumPaths - 1) + L"]");
    map.Draw(true);

    // Chains in a window count in pixels of the whole image; a chain of the least length is dropped.
    Image window;
    window.ShallowCopy(image, true);
    window.Window(10, 5, 45, 40);
    EdgeMap part;
    part.Follow(10, 10, 5, window);
    ASSERT_GE(part.NumPaths, 1);
    EXPECT_EQ(part.Sites[0].X >= 10 && part.Sites[0].Y >= 5, true);
    const int longest = part.Paths[0].End - part.Paths[0].First;
    part.Follow(10, 10, longest, window);
    for (const EdgePath& chain : part.Paths)
        EXPECT_GT(chain.End - chain.First, longest);
    EdgeMap none;
    none.GetPath(0, path);
    EXPECT_EQ(Message(), L"No path is available");
    Image deep;
    deep.Set(5, 5, Gray16);
    none.Follow(10, 10, 5, deep);
    EXPECT_EQ(Message(), L"The image type (Gray16) is not supported for this operation");
    EdgeMap::GradientVector(deep, deep);
    EXPECT_EQ(Message(), L"The source image type (Gray16) is not supported for this operation");
    EdgeMap::GradientMaxima(3, image, deep, false, InternalGradient);
    EXPECT_EQ(Message(), L"The gradient Type (InternalGradient) is not supported for this operation; use one of "
                         L"Standard/Sobel/Prewitt/Correlated/Canny");
}

TEST_F(EdgeMapTest, IsoCurvesSurroundDarkParts)
{
    Image image;
    Paint(image, 40, 40, 200);
    Box(image, 20, 20, 1, 1, 20);
    EdgeMap map;
    map.IsoCurves(image, 15, 0, 7, 7, 32);
    EXPECT_EQ(map.NumPaths, 0) << "a pixel alone has no outline";
    // Of a sharp border the dark pixels are the darkest there are, and have no strength.
    Paint(image, 40, 40, 200);
    Box(image, 10, 12, 9, 6, 20);
    map.IsoCurves(image, 31, 0, 7, 7, 1);
    EXPECT_EQ(map.NumPaths, 0);
    // With a border of one level more the outline is its pixels once each, from the first of the raster, clockwise.
    Box(image, 11, 13, 7, 4, 10);
    map.IsoCurves(image, 31, 0, 7, 7, 1);
    ASSERT_EQ(map.NumPaths, 1);
    const int length = 2 * (9 + 6) - 4;
    EXPECT_EQ(map.Paths[0].End - map.Paths[0].First, length);
    EXPECT_EQ(map.Sites[0].X, 10);
    EXPECT_EQ(map.Sites[0].Y, 12);
    EXPECT_EQ(map.Sites[1].X, 11);
    // Each site has a strength of 10. A window is held to the strength, an outline shorter than it to its multiple.
    for (const auto& [integration, strength, paths] :
         {std::tuple{7, 70, 1}, {7, 71, 0}, {length, 10 * length, 1}, {100, 2, 1}, {100, 3, 0}}) {
        map.IsoCurves(image, 31, 0, integration, 7, strength);
        EXPECT_EQ(map.NumPaths, paths) << integration << ' ' << strength;
    }
    map.IsoCurves(image, 31, 0, 7, length + 1, 1);
    EXPECT_EQ(map.NumPaths, 0);

    for (unsigned seed = 0; seed < 20; seed++) {
        Clouds(image, 30, 30, seed);
        map.IsoCurves(image, 9, static_cast<int>(seed) - 10, 1 + static_cast<int>(seed), 3, 20);
        for (const EdgePath& path : map.Paths)
            EXPECT_TRUE(path.First >= 0 && path.First < path.End && path.End <= static_cast<int>(map.Sites.size()));
    }
    for (const int size : {1, 2, 3}) {
        Paint(image, size, size, 3);
        map.IsoCurves(image, 1000000, -MaxInt, -5, -5, -5);
        map.Vectorize(Auto, -1, -1, image);
        EXPECT_EQ(Status::Error().Code, NoError);
    }
}

} // namespace
} // namespace Tesk
