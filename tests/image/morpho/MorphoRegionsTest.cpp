#include "MorphoSupport.h"
#include "measure/Path.h"

#include <algorithm>
#include <cmath>
#include <functional>
#include <set>
#include <utility>

using namespace MorphoSupport;

namespace {

template <typename F>
void EachNeighbour(const Picture& p, int x, int y, bool connexity8, F f)
{
    for (int j = -1; j <= 1; j++)
        for (int i = -1; i <= 1; i++)
            if ((i != 0 || j != 0) && (connexity8 || i == 0 || j == 0) && p.Has(x + i, y + j)) f(x + i, y + j);
}

/// Numbers connected patches of equal values from 0, by spreading the smallest number.
Picture Patches(const Picture& p, bool connexity8)
{
    Picture numbers = Make(p.width, p.height, [&](int x, int y) { return y * p.width + x; });
    for (bool changed = true; changed;) {
        changed = false;
        for (int y = 0; y < p.height; y++)
            for (int x = 0; x < p.width; x++)
                EachNeighbour(p, x, y, connexity8, [&](int u, int v) {
                    if (p(u, v) != p(x, y) || numbers(u, v) >= numbers(x, y)) return;
                    numbers(x, y) = numbers(u, v);
                    changed = true;
                });
    }
    return numbers;
}

/// Patches that no neighbour undercuts, by their first pixel in row order.
std::set<int> Minima(const Picture& p, bool connexity8)
{
    const Picture patches = Patches(p, connexity8);
    std::set<int> minima(patches.values.begin(), patches.values.end());
    for (int y = 0; y < p.height; y++)
        for (int x = 0; x < p.width; x++)
            EachNeighbour(p, x, y, connexity8, [&](int u, int v) {
                if (p(u, v) < p(x, y)) minima.erase(patches(x, y));
            });
    return minima;
}

constexpr int dam = 2, firstBasin = 3;

} // namespace

TEST_F(MorphoTest, WatershedHasABasinForEachMinimumAndDamsBetweenThem)
{
    Image src, map;
    for (const bool connexity8 : {true, false})
        for (const int range : {2, 4, 10, 256})
            for (const auto& [w, h] : {std::pair{1, 1}, {1, 9}, {20, 1}, {33, 9}, {25, 25}}) {
                RandomWindow(src, w, h, Gray, range, static_cast<std::uint32_t>(w + range));
                ASSERT_EQ(Morpho::_WatershedMap(connexity8, src, map, 0), 0);
                ASSERT_EQ(map.Type, Gray32);
                const Picture relief(src), labels(map);
                const std::set<int> minima = Minima(relief, connexity8);
                std::set<int> seeds, basins;
                for (int k = 0; k < w * h; k++) {
                    const int label = labels.values[static_cast<std::size_t>(k)];
                    ASSERT_GE(label, dam);
                    if (label >= firstBasin) basins.insert(label);
                    if (minima.count(k)) seeds.insert(label);
                }
                ASSERT_EQ(basins.size(), minima.size()) << w << ' ' << range;
                ASSERT_EQ(seeds, basins);
                ASSERT_EQ(*basins.rbegin(), firstBasin + static_cast<int>(basins.size()) - 1);
                for (int y = 0; y < h; y++)
                    for (int x = 0; x < w; x++)
                        EachNeighbour(labels, x, y, connexity8, [&](int u, int v) {
                            ASSERT_TRUE(labels(x, y) == dam || labels(u, v) == dam || labels(x, y) == labels(u, v));
                        });
            }
}

TEST_F(MorphoTest, WatershedFormsShowDamsLabelsAndMeans)
{
    Image grd, src, dst;
    const Picture relief(std::vector<std::string>{"1139311", "1139311", "2249422"});
    Load(relief, grd);
    Load(Make(7, 3, [](int x, int y) { return 10 * x + y; }), src);
    EXPECT_EQ(Morpho::Watershed(true, grd, dst, 0), 0);
    const Picture line(std::vector<std::string>{"...#...", "...#...", "...#..."});
    EXPECT_EQ(Picture(dst), line);
    Morpho::Watershed(true, grd, dst, 0, false);
    const Picture labels(std::vector<std::string>{"3332444", "3332444", "3332444"});
    EXPECT_EQ(Picture(dst), labels);
    Morpho::Watershed(false, grd, src, dst, 0, false);
    EXPECT_EQ(Picture(dst), labels);
    Morpho::Watershed(false, grd, src, dst, 0, true);
    EXPECT_EQ(Picture(dst), Make(7, 3, [](int x, int) { return x < 3 ? 11 : x > 3 ? 51 : 255; }));
    Morpho::Watershed(true, grd, src, src, 0, true);
    EXPECT_EQ(Picture(src), Picture(dst));
    Morpho::Watershed(true, grd, grd, 0);
    EXPECT_EQ(Picture(grd), line);
}

TEST_F(MorphoTest, WatershedMergesDetailBelowTheNoise)
{
    Image src, dst;
    Load(Picture(9, 9, 200), src);
    EXPECT_EQ(Morpho::Watershed(true, src, dst), 0);
    EXPECT_EQ(Picture(dst), Picture(9, 9, 0));
    // Two basins of depth 2 at 1, and a wall of 9: the low wall of 3 vanishes at 3.
    Load(Picture(std::vector<std::string>{"131191"}), src);
    EXPECT_EQ(Morpho::Watershed(false, src, dst, 2), 2);
    EXPECT_EQ(Picture(dst), Picture(std::vector<std::string>{".#..#."}));
    EXPECT_EQ(Morpho::Watershed(false, src, dst, 3), 3);
    EXPECT_EQ(Picture(dst), Picture(std::vector<std::string>{"....#."}));
    EXPECT_EQ(Morpho::Watershed(false, src, dst, -7), 0);
    EXPECT_EQ(Morpho::Watershed(false, src, dst, 1000), 255);
    EXPECT_EQ(Picture(dst), Picture(6, 1, 0));
    // One pixel of 96 answers the noise mask with 96 (1 + 2 + 4 + 2 + 1 + 2 + 1 + 2 + 1) over 25 inner pixels.
    Picture speck(7, 7, 0);
    speck(3, 3) = 96;
    Load(speck, src);
    EXPECT_EQ(Morpho::Watershed(true, src, dst), static_cast<int>(1.3 * 96 * 16 / 25 * 0.20833333333333334));
}

TEST_F(MorphoTest, WatershedTakesGradientsAndRefusesTheRest)
{
    Image grad, gray, dst, small, rgb;
    grad.Set(7, 1, Grad);
    for (int x = 0; x < 7; x++)
        grad.Row<GradPixel>(0)[x] = {static_cast<std::int16_t>(x == 3 ? -90 : 5), 0};
    Morpho::Watershed(true, grad, dst, 0);
    EXPECT_EQ(Picture(dst), Picture(std::vector<std::string>{"...#..."}));
    rgb.Set(7, 1, Rgb);
    EXPECT_EQ(Morpho::Watershed(true, rgb, dst), 0);
    EXPECT_EQ(Status::Error().Code, UnsupportedType);
    EXPECT_EQ(Message(), L"The image type (Rgb) is not supported for this operation, Gray or Grad required");
    Load(Picture(7, 1, 4), gray);
    Load(Picture(6, 1, 4), small);
    Morpho::Watershed(true, gray, small, dst);
    EXPECT_EQ(Status::Error().Code, IncompatibleSize);
    Morpho::AverageRegions(gray, small, dst);
    EXPECT_EQ(Status::Error().Code, IncompatibleSize);
    Morpho::AverageRegions(gray, rgb, dst);
    EXPECT_EQ(Status::Error().Code, UnsupportedType);
    Image nothing;
    Morpho::_WatershedMap(true, nothing, dst);
    EXPECT_EQ(Status::Error().Code, VoidObject);
}

TEST_F(MorphoTest, AverageRegionsFillsFourConnectedAreasWithTheirMeans)
{
    Image msk, src, dst;
    for (const auto& [w, h] : {std::pair{1, 1}, {30, 9}, {9, 30}}) {
        RandomWindow(msk, w, h, Gray, 3, static_cast<std::uint32_t>(w));
        RandomWindow(src, w, h, Gray, 5, static_cast<std::uint32_t>(h));
        const Picture m(msk), s(src), patches = Patches(m, false);
        const Picture expected = Make(w, h, [&](int x, int y) {
            if (m(x, y) != 0) return m(x, y);
            int sum = 0, count = 0;
            for (std::size_t k = 0; k < s.values.size(); k++)
                if (patches.values[k] == patches(x, y)) {
                    sum += s.values[k];
                    count++;
                }
            return sum / count == 1 ? 0 : sum / count;
        });
        Morpho::AverageRegions(msk, src, dst);
        EXPECT_EQ(Picture(dst), expected);
        Morpho::AverageRegions(msk, src, src);
        EXPECT_EQ(Picture(src), expected);
    }
}

TEST_F(MorphoTest, GraphSegmentEqualsTheRulesOnPlainSets)
{
    struct Edge
    {
        double weight;
        int a, b;
    };
    Image src, dst;
    for (const bool grad : {false, true})
        for (const bool connexity8 : {true, false})
            for (const auto& [step, minArea] :
                 {std::pair{0.0, 0}, {20.0, 1}, {300.0, 5}, {40.0, 9}, {1e9, 0}, {-1.0, 30}})
                for (const auto& [w, h] : {std::pair{1, 1}, {1, 7}, {21, 9}}) {
                    RandomWindow(src, w, h, Gray, 40, static_cast<std::uint32_t>(w));
                    const Picture s(src);
                    if (grad) {
                        src.Set(w, h, Grad);
                        src.GradGain = 3;
                        for (int y = 0; y < h; y++)
                            for (int x = 0; x < w; x++)
                                src.Row<GradPixel>(y)[x] = {static_cast<std::int16_t>(s(x, y) - 20),
                                                            static_cast<std::int16_t>(s(x, y) % 7 - 3)};
                    }
                    std::vector<Edge> edges;
                    const int steps[4][2] = {{1, 0}, {1, 1}, {0, 1}, {-1, 1}};
                    for (int y = 0; y < h; y++)
                        for (int x = 0; x < w; x++)
                            for (int k = 0; k < 4; k += connexity8 ? 1 : 2) {
                                const int u = x + steps[k][0], v = y + steps[k][1];
                                if (!s.Has(u, v)) continue;
                                const int p = s(x, y), q = s(u, v);
                                const int dot = (p - 20) * (q - 20) + (p % 7 - 3) * (q % 7 - 3);
                                edges.push_back({grad ? dot / 3 + 256.0 : std::abs(p - q), y * w + x, v * w + u});
                            }
                    std::stable_sort(edges.begin(), edges.end(), [](auto& a, auto& b) { return a.weight < b.weight; });
                    // root[k] is the root of pixel k's set, spelled out for every pixel.
                    std::vector<int> root, rank(static_cast<std::size_t>(w * h)), size(rank.size(), 1);
                    std::vector<float> threshold(rank.size(), static_cast<float>(step));
                    for (int k = 0; k < w * h; k++)
                        root.push_back(k);
                    for (const int pass : {0, 1})
                        for (const Edge& e : edges) {
                            auto a = static_cast<std::size_t>(root[static_cast<std::size_t>(e.a)]),
                                 b = static_cast<std::size_t>(root[static_cast<std::size_t>(e.b)]);
                            const bool unite = pass == 0 ? threshold[a] >= e.weight && threshold[b] >= e.weight
                                                         : size[a] < minArea || size[b] < minArea;
                            if (a == b || !unite) continue;
                            if (rank[a] > rank[b]) std::swap(a, b);
                            if (rank[a] == rank[b]) rank[b]++;
                            size[b] += size[a];
                            threshold[b] = static_cast<float>(step / size[b] + e.weight);
                            std::replace(root.begin(), root.end(), static_cast<int>(a), static_cast<int>(b));
                        }
                    Morpho::GraphSegment(src, dst, grad ? 9 : 0, step, minArea, connexity8);
                    ASSERT_EQ(Status::Error().Code, NoError);
                    ASSERT_EQ(Picture(dst),
                              Make(w, h, [&](int x, int y) { return root[static_cast<std::size_t>(y * w + x)] & 255; }))
                        << grad << connexity8 << ' ' << step << ' ' << w;
                }
}

TEST_F(MorphoTest, GraphSegmentSmoothsBySoManyBinomialPasses)
{
    Image src, smooth, filtered, plain;
    for (int filter = 1; filter <= 4; filter++) {
        RandomWindow(src, 19, 9, Gray, 256, 3);
        Picture s(src);
        for (int pass = 0; pass < filter; pass++)
            s = Make(19, 9, [&](int x, int y) {
                int sum = 0;
                for (int j = -1; j <= 1; j++)
                    for (int i = -1; i <= 1; i++)
                        sum += s.Clamped(x + i, y + j) * (i == 0 ? 2 : 1) * (j == 0 ? 2 : 1);
                return sum / 16;
            });
        Load(s, smooth);
        Morpho::GraphSegment(smooth, plain, 0, 50, 4);
        Morpho::GraphSegment(src, filtered, filter, 50, 4);
        EXPECT_EQ(Picture(filtered), Picture(plain)) << filter;
        Morpho::GraphSegment(src, src, filter, 50, 4);
        EXPECT_EQ(Picture(src), Picture(plain)) << filter;
    }
    for (const int filter : {-1, 5, MaxInt}) {
        Morpho::GraphSegment(src, plain, filter, 50, 4);
        EXPECT_EQ(Status::Error().Code, OutOfRange);
        EXPECT_EQ(Message(), L"The Filter value (" + std::to_wstring(filter) + L") must be in range [0..4]");
    }
    src.Set(3, 3, Gray16);
    Morpho::GraphSegment(src, plain, 0, 50, 4);
    EXPECT_EQ(Message(), L"The image type (Gray16) is not supported for this operation");
}

TEST_F(MorphoTest, RegionalExtremaListTheFirstPixelOfEachPlateau)
{
    Image src;
    Path path;
    for (const bool maxima : {true, false})
        for (const bool connexity8 : {true, false})
            for (const int range : {3, 256})
                for (const int limit : {MinInt, 0, 1, 100, 255, MaxInt})
                    for (const auto& [w, h] : {std::pair{1, 1}, {1, 9}, {33, 9}}) {
                        RandomWindow(src, w, h, Gray, range, static_cast<std::uint32_t>(w + range));
                        const Picture s(src);
                        const int bound = Clamp(limit, 0, 255);
                        const Picture peaks = Make(w, h, [&](int x, int y) {
                            bool peak = maxima ? s(x, y) >= bound : s(x, y) <= bound;
                            EachNeighbour(s, x, y, connexity8, [&](int u, int v) {
                                peak = peak && (maxima ? s(u, v) <= s(x, y) : s(u, v) >= s(x, y));
                            });
                            return int{peak};
                        });
                        const Picture patches = Patches(peaks, connexity8);
                        std::vector<std::pair<int, int>> expected;
                        for (int k = 0; k < w * h; k++)
                            if (peaks.values[static_cast<std::size_t>(k)] == 1 &&
                                patches.values[static_cast<std::size_t>(k)] == k)
                                expected.emplace_back(k % w, k / w);
                        const auto find = maxima ? Morpho::RegionalMaxima : Morpho::RegionalMinima;
                        find(limit, 0, src, path, connexity8);
                        ASSERT_EQ(path.Length, static_cast<int>(expected.size())) << limit << ' ' << w;
                        for (int k = 0; k < path.Length; k++)
                            ASSERT_EQ(std::pair(int{path.Vertex(k).X}, int{path.Vertex(k).Y}),
                                      expected[static_cast<std::size_t>(k)]);
                        EXPECT_EQ(path.OrgX, 3);
                        EXPECT_EQ(path.OrgY, 1);
                    }
}

TEST_F(MorphoTest, RegionalExtremaKeepTheMostExtremeInOrder)
{
    Image src;
    Path path;
    const auto xs = [&] {
        std::string text;
        for (int k = 0; k < path.Length; k++)
            text += std::to_string(path.Vertex(k).X) + ' ';
        return text;
    };
    // Peaks of 5 at 1, 7 at 3, 5 at 5, 9 at 7, 5 at 9.
    Load(Picture(std::vector<std::string>{".5.7.5.9.5."}), src);
    const std::pair<int, const char*> cases[] = {{-3, "1 3 5 7 9 "}, {9, "7 3 1 5 9 "}, {5, "7 3 1 5 9 "},
                                                 {4, "7 3 1 9 "},    {3, "7 3 9 "},     {2, "7 3 "},
                                                 {1, "7 "}};
    for (const auto& [count, expected] : cases) {
        Morpho::RegionalMaxima(1, count, src, path);
        EXPECT_EQ(xs(), expected) << count;
    }
    Load(Picture(std::vector<std::string>{"#5#7#5#9#5#"}), src);
    Morpho::RegionalMinima(254, 3, src, path);
    EXPECT_EQ(xs(), "1 5 9 ");
    Morpho::RegionalMinima(254, 4, src, path);
    EXPECT_EQ(xs(), "1 5 9 3 ");
    src.Set(3, 3, Gray16);
    Morpho::RegionalMaxima(1, 0, src, path);
    EXPECT_EQ(Status::Error().Code, UnsupportedType);
    EXPECT_EQ(xs(), "1 5 9 3 ");
    for (const auto& [width, height] : {std::pair{32769, 1}, {1, 32769}}) {
        src.Set(width, height, Gray);
        Morpho::RegionalMinima(255, 0, src, path);
        EXPECT_EQ(Status::Error().Code, OutOfRange);
        EXPECT_EQ(path.Length, 4) << "the coordinates of a path do not reach so far";
    }
    src.Set(32768, 1, Gray);
    std::fill_n(src.Row(0), 32768, std::uint8_t{1});
    src.Row(0)[32767] = 2;
    Morpho::RegionalMaxima(2, 0, src, path);
    EXPECT_EQ(xs(), "32767 ");
}
