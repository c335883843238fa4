#include "MorphoSupport.h"

#include <algorithm>
#include <cmath>
#include <functional>
#include <utility>

using namespace MorphoSupport;

namespace {

const int around[8][2] = {{1, 0}, {1, 1}, {0, 1}, {-1, 1}, {-1, 0}, {-1, -1}, {0, -1}, {1, -1}};

/// Whether thinning may remove a pixel: its foreground neighbours form one piece, 8-connected, of more than one pixel
/// where ends are kept.
bool IsRemovable(int neighbours, bool keepEnds)
{
    int pieces = 0, count = 0, left = neighbours;
    for (int k = 0; k < 8; k++)
        count += neighbours >> k & 1;
    for (int k = 0; k < 8; k++) {
        if (!(left >> k & 1)) continue;
        pieces++;
        int piece = 1 << k, former = 0;
        while (piece != former) {
            former = piece;
            for (int a = 0; a < 8; a++)
                for (int b = 0; b < 8; b++)
                    if ((piece >> a & 1) && (left >> b & 1) && std::abs(around[a][0] - around[b][0]) <= 1 &&
                        std::abs(around[a][1] - around[b][1]) <= 1)
                        piece |= 1 << b;
        }
        left &= ~piece;
    }
    return pieces == 1 && (!keepEnds || count > 1);
}

/// Layers of candidates, with 0 background, 1 foreground, 2 marked.
int SlowThin(Picture& p, int foreground, int maxLayers, bool keepEnds)
{
    const auto isBorder = [&](int x, int y) { return x == 0 || y == 0 || x == p.width - 1 || y == p.height - 1; };
    Picture state = Make(p.width, p.height, [&](int x, int y) { return p(x, y) == foreground && !isBorder(x, y); });
    const auto at = [&](int x, int y, int k) -> int& { return state(x + around[k][0], y + around[k][1]); };
    std::vector<std::pair<int, int>> candidates, removed;
    for (int y = 0; y < p.height; y++)
        for (int x = 0; x < p.width; x++)
            if (state(x, y) && (!at(x, y, 0) || !at(x, y, 2) || !at(x, y, 4) || !at(x, y, 6)))
                candidates.emplace_back(x, y);
    int layers = 0;
    while (maxLayers == Auto || layers < maxLayers) {
        layers++;
        removed.clear();
        for (const auto& [x, y] : candidates) {
            int neighbours = 0;
            for (int k = 0; k < 8; k++)
                neighbours |= (at(x, y, k) == 1) << k;
            if (!IsRemovable(neighbours, keepEnds)) continue;
            state(x, y) = 2;
            removed.emplace_back(x, y);
        }
        if (removed.empty()) break;
        candidates.clear();
        for (const auto& [x, y] : removed)
            for (const int k : {0, 2, 4, 6}) {
                const std::pair next(x + around[k][0], y + around[k][1]);
                if (at(x, y, k) == 1 && std::find(candidates.begin(), candidates.end(), next) == candidates.end())
                    candidates.push_back(next);
            }
        for (const auto& [x, y] : removed)
            state(x, y) = 0;
    }
    p = Make(p.width, p.height, [&](int x, int y) { return state(x, y) ? foreground : 255 - foreground; });
    return layers;
}

Picture BlackAndWhite(int width, int height, int percent, std::uint32_t seed)
{
    Picture p = Random(width, height, 100, seed);
    for (int& v : p.values)
        v = v < percent ? 255 : 0;
    return p;
}

/// The nearest feature by looking at all.
Picture SlowDistance(const Picture& s, int feature, int limit, const std::function<double(int, int)>& metric)
{
    std::vector<std::pair<int, int>> features;
    for (int v = 0; v < s.height; v++)
        for (int u = 0; u < s.width; u++)
            if (s(u, v) == feature) features.emplace_back(u, v);
    return Make(s.width, s.height, [&](int x, int y) {
        double best = limit;
        for (const auto& [u, v] : features)
            best = std::min(best, metric(std::abs(u - x), std::abs(v - y)));
        return static_cast<int>(best);
    });
}

const struct
{
    bool euclidean, connexity8;
    std::function<double(int, int)> metric;
} metrics[] = {{false, true, [](int dx, int dy) { return std::max(dx, dy); }},
               {false, false, [](int dx, int dy) { return dx + dy; }},
               {true, true, [](int dx, int dy) { return std::sqrt(dx * dx + dy * dy); }}};

} // namespace

TEST_F(MorphoTest, ThinningEqualsItsRulesOnRandomAndSolidShapes)
{
    Image src, dst;
    for (const int percent : {50, 80, 92, 100})
        for (const auto& [w, h] : {std::pair{1, 1}, {2, 9}, {3, 3}, {31, 9}, {40, 27}})
            for (const int maxLayers : {Auto, 0, 1, 2, -5})
                for (const bool keepEnds : {false, true})
                    for (const int foreground : {255, 0}) {
                        Picture expected = BlackAndWhite(w, h, percent, static_cast<std::uint32_t>(w + percent));
                        Load(expected, src);
                        const int layers = SlowThin(expected, foreground, maxLayers, keepEnds);
                        const auto thin = foreground == 255 ? Morpho::BinaryThin : Morpho::BinaryThick;
                        ASSERT_EQ(thin(src, dst, maxLayers, keepEnds), layers) << w << ' ' << percent;
                        ASSERT_EQ(Picture(dst), expected) << w << ' ' << percent << ' ' << maxLayers;
                    }
}

TEST_F(MorphoTest, ThinningEndsWhereNothingIsLeftToRemove)
{
    Image src, dst;
    Load(Picture(std::vector<std::string>{".......", ".......", ".#####.", ".......", "......."}), src);
    EXPECT_EQ(Morpho::BinaryThin(src, dst, Auto, true), 1);
    EXPECT_EQ(Picture(dst), Picture(src));
    Load(Picture(40, 30, 255), src);
    Morpho::BinaryThin(src, src);
    const Picture once(src);
    EXPECT_EQ(std::count(once.values.begin(), once.values.end(), 255), 1);
    EXPECT_EQ(Morpho::BinaryThin(src, src), 1);
    EXPECT_EQ(Picture(src), once);
}

TEST_F(MorphoTest, DistancesEqualThoseToTheNearestFeature)
{
    Image src, dst;
    for (const auto& m : metrics)
        for (const bool above : {true, false})
            for (const bool large : {false, true})
                for (const int percent : {0, 1, 10, 60, 100})
                    for (const auto& [w, h] : {std::pair{1, 1}, {1, 9}, {67, 1}, {2, 2}, {33, 9}, {67, 8}}) {
                        Picture s = BlackAndWhite(w, h, above ? 100 - percent : percent, static_cast<std::uint32_t>(w));
                        // Other values are no feature either way.
                        for (std::size_t k = 0; k < s.values.size(); k += 3)
                            if (s.values[k] == (above ? 255 : 0)) s.values[k] = 100;
                        Load(s, src);
                        const Picture expected = SlowDistance(s, above ? 0 : 255, large ? 65535 : 255, m.metric);
                        for (const SIMDLevels level : allLevels) {
                            const AtLevel at(level);
                            Morpho::Distance(src, dst, above, m.euclidean, m.connexity8, large);
                            ASSERT_EQ(dst.Type, large ? Gray16 : Gray);
                            ASSERT_EQ(Picture(dst), expected) << w << ' ' << h << ' ' << percent << ' ' << m.euclidean
                                                              << m.connexity8 << large << level;
                        }
                    }
}

TEST_F(MorphoTest, FewFeaturesAreFoundFromFarAway)
{
    Image src, dst;
    for (const std::vector<std::pair<int, int>>& features : {std::vector<std::pair<int, int>>{{0, 0}},
                                                             {{340, 139}},
                                                             {{100, 20}, {101, 139}, {300, 70}},
                                                             {{5, 5}, {339, 2}}}) {
        Picture s(341, 140, 7);
        for (const auto& [x, y] : features)
            s(x, y) = 0;
        Load(s, src);
        for (const auto& m : metrics) {
            const Picture expected = SlowDistance(s, 0, 255, m.metric);
            for (const SIMDLevels level : allLevels) {
                const AtLevel at(level);
                Morpho::Distance(src, dst, true, m.euclidean, m.connexity8);
                ASSERT_EQ(Picture(dst), expected) << features[0].first << m.euclidean << m.connexity8 << level;
            }
        }
    }
}

TEST_F(MorphoTest, DistancesSaturate)
{
    Image src, dst;
    for (const bool upright : {false, true})
        for (const auto& m : metrics) {
            Picture s = upright ? Picture(1, 700, 9) : Picture(700, 1, 9);
            s.values[20] = 0;
            Load(s, src);
            for (const SIMDLevels level : allLevels)
                for (const bool large : {false, true}) {
                    const AtLevel at(level);
                    Morpho::Distance(src, dst, true, m.euclidean, m.connexity8, large);
                    const Picture d(dst);
                    for (int k = 0; k < 700; k++)
                        ASSERT_EQ(d.values[static_cast<std::size_t>(k)],
                                  std::min(std::abs(k - 20), large ? 65535 : 255));
                }
        }
    Load(Picture(66000, 2, 1), src);
    src.Row(1)[0] = 0;
    for (const auto& m : metrics) {
        Morpho::Distance(src, dst, true, m.euclidean, m.connexity8, true);
        EXPECT_EQ(dst.Row<std::uint16_t>(1)[65534], 65534);
        EXPECT_EQ(dst.Row<std::uint16_t>(1)[65999], 65535);
        EXPECT_EQ(dst.Row<std::uint16_t>(0)[3], m.euclidean || m.connexity8 ? 3 : 4);
    }
}

TEST_F(MorphoTest, IsophotesMarkPixelsWhoseNeighbourhoodReachesBelowTheirLevel)
{
    Image src, dst;
    for (const auto& [level, step] :
         {std::pair{128, 255}, {128, 16}, {100, 1}, {-40, 77}, {300, 33}, {MaxInt, MaxInt}, {MinInt, 7}})
        for (const bool connexity8 : {true, false}) {
            RandomWindow(src, 23, 9, Gray, 256, static_cast<std::uint32_t>(step));
            const Picture s(src);
            Morpho::Isophotes(level, step, connexity8, src, dst);
            ASSERT_EQ(Picture(dst), Make(23, 9,
                                         [&, l = double(level), p = double(step)](int x, int y) {
                                             int lowest = s(x, y);
                                             for (int j = -1; j <= 1; j++)
                                                 for (int i = -1; i <= 1; i++)
                                                     if (connexity8 || i == 0 || j == 0)
                                                         lowest = std::min(lowest, s.Clamped(x + i, y + j));
                                             return lowest < l + std::floor((s(x, y) - l) / p) * p ? 255 : 0;
                                         }))
                << level << ' ' << step;
        }
    Morpho::Isophotes(128, 0, true, src, dst);
    EXPECT_EQ(Status::Error().Code, OutOfRange);
}

TEST_F(MorphoTest, KillConnectCountsNeighboursInsideTheBorder)
{
    Image src, dst;
    for (const auto& [least, most] :
         {std::pair{1, 8}, {0, 8}, {3, 5}, {0, 0}, {9, 20}, {MinInt, MaxInt}, {5, 2}, {0, -1}})
        for (const auto& [w, h] : {std::pair{1, 1}, {2, 5}, {3, 3}, {37, 9}}) {
            RandomWindow(src, w, h, Gray, 3, static_cast<std::uint32_t>(w));
            const Picture s(src);
            const Picture expected = Make(w, h, [&, low = least, high = most](int x, int y) {
                if (x == 0 || y == 0 || x == s.width - 1 || y == s.height - 1 || s(x, y) == 0) return s(x, y);
                int count = 0;
                for (const auto& k : around)
                    count += s(x + k[0], y + k[1]) != 0;
                return count >= low && count <= high ? s(x, y) : 0;
            });
            Morpho::KillConnect(least, most, src, dst);
            ASSERT_EQ(Picture(dst), expected) << least << ' ' << most << ' ' << w;
            Morpho::KillConnect(least, most, src, src);
            ASSERT_EQ(Picture(src), expected) << least << ' ' << most << ' ' << w;
        }
}

TEST_F(MorphoTest, BinaryOperationsRefuseOtherTypes)
{
    Image gray16, nothing, dst;
    Load(Picture(4, 4, 300), gray16, Gray16);
    const struct
    {
        const char* context;
        std::function<void(const Image&)> call;
        const wchar_t* message;
    } cases[] = {{"Tesk::Morpho::BinaryThin", [&](const Image& s) { EXPECT_EQ(Morpho::BinaryThin(s, dst), 0); },
                  L"The image type (Gray16) is not supported for this operation"},
                 {"Tesk::Morpho::BinaryThick", [&](const Image& s) { EXPECT_EQ(Morpho::BinaryThick(s, dst), 0); },
                  L"The image type (Gray16) is not supported for this operation"},
                 {"Tesk::Morpho::Isophotes", [&](const Image& s) { Morpho::Isophotes(128, 255, true, s, dst); },
                  L"The image type (Gray16) is not supported for this operation, Gray required"},
                 {"Tesk::Morpho::KillConnect", [&](const Image& s) { Morpho::KillConnect(1, 8, s, dst); },
                  L"The image type (Gray16) is not supported for this operation, Gray required"},
                 {"Tesk::Morpho::Distance", [&](const Image& s) { Morpho::Distance(s, dst); },
                  L"The image type (Gray16) is not supported for this operation, Gray required"}};
    for (const auto& c : cases) {
        c.call(gray16);
        EXPECT_EQ(Status::Error().Code, UnsupportedType) << c.context;
        EXPECT_EQ(Message(), c.message);
        EXPECT_STREQ(Status::AsciiFunction(), c.context);
        c.call(nothing);
        EXPECT_EQ(Status::Error().Code, VoidObject) << c.context;
        EXPECT_EQ(dst.Type, Undefined);
    }
}
