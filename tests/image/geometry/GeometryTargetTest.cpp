#include "image/geometry/GeometryTarget.h"

#include "Failures.h"
#include "Noise.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <functional>
#include <map>
#include <numbers>
#include <set>

using namespace Tesk;
using targets::Dot;

namespace {

/// A dot that was made, and where it stands in the image.
struct Made
{
    int column, row;
    XY centre;
};

using View = std::function<XY(double, double)>;

/// The dots of a grid seen by a camera, in a random order, without those that `missing` tells.
std::vector<Made> Seen(int columns, int rows, const View& view, const std::function<bool(int, int)>& missing = {})
{
    std::vector<Made> dots;
    for (int r = 1; r <= rows; r++)
        for (int c = 1; c <= columns; c++)
            if (!missing || !missing(c, r)) dots.push_back({c, r, view(c, r)});
    checks::Noise noise{11};
    for (std::size_t i = dots.size(); i > 1; i--)
        std::swap(dots[i - 1], dots[(noise() >> 8) % i]);
    return dots;
}

std::vector<XY> Centres(const std::vector<Made>& dots)
{
    std::vector<XY> centres;
    for (const Made& dot : dots)
        centres.push_back(dot.centre);
    return centres;
}

/// The dots numbered among those made, by their true numbers; each must have them, but for a shift of the whole
/// lattice.
std::set<std::pair<int, int>> Numbered(const std::vector<Made>& made, const std::vector<Dot>& dots)
{
    std::map<std::pair<double, double>, const Made*> byCentre;
    for (const Made& dot : made)
        byCentre[{dot.centre.X, dot.centre.Y}] = &dot;
    std::set<std::pair<int, int>> found;
    int smallestColumn = 1 << 20, smallestRow = 1 << 20;
    for (const Dot& dot : dots) {
        const Made& truth = *byCentre.at({dot.centre.X, dot.centre.Y});
        found.insert({truth.column, truth.row});
        smallestColumn = std::min(smallestColumn, truth.column);
        smallestRow = std::min(smallestRow, truth.row);
    }
    EXPECT_EQ(found.size(), dots.size());
    for (const Dot& dot : dots) {
        const Made& truth = *byCentre.at({dot.centre.X, dot.centre.Y});
        EXPECT_EQ(dot.column, truth.column - smallestColumn + 1);
        EXPECT_EQ(dot.row, truth.row - smallestRow + 1);
    }
    return found;
}

View Turned(double degrees, double pitch)
{
    const double a = degrees * std::numbers::pi / 180;
    return [=](double c, double r) {
        return XY(300 + pitch * (std::cos(a) * c - std::sin(a) * r), 200 + pitch * (std::sin(a) * c + std::cos(a) * r));
    };
}

/// What a tilted camera makes of a view, in which the far side is a good deal smaller.
View Tilted(const View& view)
{
    return [=](double c, double r) {
        const XY p = view(c, r);
        const double d = 1 + 4e-4 * p.X + 6e-4 * p.Y;
        return XY(1.6 * p.X / d, 1.6 * p.Y / d);
    };
}

/// What a lens with barrel distortion makes of it.
View Bulged(const View& view)
{
    return [=](double c, double r) {
        const XY p = view(c, r);
        const double u = p.X - 400, v = p.Y - 300, k = 1 - 4e-7 * (u * u + v * v);
        return XY(400 + k * u, 300 + k * v);
    };
}

class GeometryTarget : public checks::IgnoringFailures
{
protected:
    void TearDown() override
    {
        Geometry::SimpleCalibration(1, 1);
        IgnoringFailures::TearDown();
    }
};

TEST_F(GeometryTarget, IsNumberedFromTheUpperLeftInAnyView)
{
    std::vector<Dot> dots;
    for (double degrees = -33; degrees <= 33; degrees += 11)
        for (const auto& view : {Turned(degrees, 20), Tilted(Turned(degrees, 20)), Bulged(Turned(degrees, 20)),
                                 Bulged(Tilted(Turned(degrees, 20)))}) {
            const std::vector<Made> made = Seen(17, 12, view);
            ASSERT_EQ(targets::NumberDots(Centres(made), false, dots), NoError);
            // Corners have no neighbour with a complete cross.
            EXPECT_EQ(Numbered(made, dots).size(), 17u * 12 - 4) << degrees;
        }
}

TEST_F(GeometryTarget, TurnsWithTheImageByQuarters)
{
    // Turned by a quarter, what were rows are columns: the first column is the last row of the grid that was made.
    std::vector<Dot> dots;
    for (const int quarters : {1, 2, 3}) {
        std::vector<Made> made = Seen(7, 4, Turned(90 * quarters + 10, 15));
        for (Made& dot : made) {
            const int c = dot.column, r = dot.row;
            if (quarters == 1) dot.column = 5 - r, dot.row = c;
            if (quarters == 2) dot.column = 8 - c, dot.row = 5 - r;
            if (quarters == 3) dot.column = r, dot.row = 8 - c;
        }
        ASSERT_EQ(targets::NumberDots(Centres(made), false, dots), NoError);
        EXPECT_EQ(Numbered(made, dots).size(), 28u - 4) << quarters;
    }
}

TEST_F(GeometryTarget, GrowsThroughCompleteCrossesAlone)
{
    for (const std::uint32_t seed : {1u, 2u, 3u, 4u, 5u}) {
        checks::Noise noise{seed};
        std::set<std::pair<int, int>> missing, standing;
        for (int r = 1; r <= 30; r++)
            for (int c = 1; c <= 30; c++)
                (noise.Byte() < 51 ? missing : standing).insert({c, r});
        const std::vector<Made> made = Seen(30, 30, Bulged(Turned(9, 16)), [&](int c, int r) {
            return missing.count({c, r}) > 0;
        });
        std::vector<Dot> dots;
        ASSERT_EQ(targets::NumberDots(Centres(made), false, dots), NoError);
        const std::set<std::pair<int, int>> found = Numbered(made, dots);
        EXPECT_GE(found.size(), 5u);
        // The dots that were found are closed: a neighbour of one with all four neighbours is found too.
        const auto neighbours = [](std::pair<int, int> p) {
            const auto [c, r] = p;
            return std::array<std::pair<int, int>, 4>{{{c + 1, r}, {c - 1, r}, {c, r + 1}, {c, r - 1}}};
        };
        for (const auto& dot : found) {
            const auto around = neighbours(dot);
            if (!std::all_of(around.begin(), around.end(), [&](auto p) { return standing.count(p) > 0; })) continue;
            for (const auto& p : around)
                EXPECT_TRUE(found.count(p)) << p.first << ' ' << p.second;
        }
    }
}

TEST_F(GeometryTarget, OfAChessboardCountsTheSquaresOfBothColours)
{
    for (const double degrees : {-40.0, 0.0, 25.0}) {
        const std::vector<Made> made =
            Seen(11, 8, Bulged(Turned(degrees, 18)), [](int c, int r) { return (c + r) % 2 != 0; });
        std::vector<Dot> dots;
        ASSERT_EQ(targets::NumberDots(Centres(made), true, dots), NoError);
        const auto found = Numbered(made, dots);
        // Corners have one neighbour of their colour and are reached from it.
        EXPECT_EQ(found.size(), 44u) << degrees;
    }
}

TEST_F(GeometryTarget, IsRefusedWhereNothingStandsInACross)
{
    std::vector<Dot> dots = {{{1, 1}, 1, 1}};
    std::vector<XY> line, ring, same(9, XY(4, 4));
    for (int i = 0; i < 12; i++) {
        line.push_back(XY(7.0 * i, 3.0 * i));
        ring.push_back(XY(50 * std::cos(i * 0.5236), 50 * std::sin(i * 0.5236)));
    }
    for (const std::vector<XY>& centres : {std::vector<XY>(), {XY(1, 2)}, line, ring, same}) {
        EXPECT_EQ(targets::NumberDots(centres, false, dots), OutOfRange) << centres.size();
        EXPECT_EQ(checks::Message(), L"Cannot detect a grid pattern");
        EXPECT_EQ(dots.size(), 1u);
    }
}

TEST_F(GeometryTarget, HasDotsOfOneSize)
{
    const struct
    {
        std::vector<int> areas;
        int smallest, largest;
    } rows[] = {
        {{}, 0, 0},
        {{100}, 100, 100},
        {{100, 249, 250}, 100, 249},
        {{3, 4, 100, 120, 110, 5000}, 100, 120},
        {{4, 3, 20, 21}, 3, 4},
        {{3, 7, 8, 17, 20, 42}, 7, 8},
        {{3, 7, 8, 17, 20, 41}, 17, 41},
        {{3, 3, 3, 7, 7, 7, 7, 7}, 7, 7},
    };
    for (const auto& row : rows) {
        const targets::AreaRange range = targets::CommonAreas(row.areas);
        EXPECT_EQ(range.smallest, row.smallest) << row.areas.size();
        EXPECT_EQ(range.largest, row.largest) << row.areas.size();
    }
}

TEST_F(GeometryTarget, CalibratesTheMiddleOfThePicture)
{
    // Dots of 20 pixels stand for 10 units; the third of the second row is the origin.
    const std::vector<Made> made = Seen(17, 12, Turned(30, 20));
    targets::Calibration calibration;
    ASSERT_EQ(targets::Calibrate(Centres(made), {10, false, XY(2, 1)}, Similarity, 800, 600, calibration), NoError);
    ASSERT_EQ(calibration.anchors.size(), made.size() - 4);
    EXPECT_NEAR(calibration.trueLength, 10, 1e-9);
    auto anchor = calibration.anchors.begin();
    for (const Made& dot : made) {
        if ((dot.column == 1 || dot.column == 17) && (dot.row == 1 || dot.row == 12)) continue;
        EXPECT_EQ(anchor->Src.X, dot.centre.X);
        EXPECT_EQ(anchor->Dst.X, 10 * (dot.column - 3));
        EXPECT_EQ(anchor->Dst.Y, 10 * (dot.row - 2));
        ++anchor;
    }
    // A model number that is none leaves pixels as they are.
    ASSERT_EQ(targets::Calibrate(Centres(made), {10, false, XY(0, 0)}, static_cast<RegistrationModels>(50), 800, 600,
                                 calibration),
              NoError);
    EXPECT_EQ(calibration.trueLength, 20);
    // All dots on one point, by a step of nothing.
    EXPECT_EQ(targets::Calibrate(Centres(made), {0, false, XY(0, 0)}, Affinity, 800, 600, calibration), OutOfRange);
    EXPECT_EQ(checks::Message(), L"The destination anchor points are forming a degenerate configuration");
    EXPECT_EQ(calibration.trueLength, 20);
    EXPECT_STREQ(calibration.refusedBy, "Tesk::Geometry::ModelFit");
}

TEST_F(GeometryTarget, IsMetByTheModelOfItsView)
{
    const View lens = [](double c, double r) {
        const double u = c - 9, v = r - 6.5, k = 20 * (1 - 0.004 * std::hypot(u, v));
        return XY(399.5 + k * u, 299.5 + k * v);
    };
    const struct
    {
        RegistrationModels model;
        View view;
        double farthest; // mean distance, in pixels
    } rows[] = {{Similarity, Turned(12, 20), 1e-9},
                {Perspective, Tilted(Turned(12, 20)), 1e-9},
                {Rational, Tilted(Turned(12, 20)), 1e-9},
                {Quadratic, lens, 0.05},
                {General, lens, 0.05}};
    for (const auto& row : rows) {
        const std::vector<Made> made = Seen(17, 12, row.view);
        targets::Calibration calibration;
        ASSERT_EQ(targets::Calibrate(Centres(made), {1, false, XY(0, 0)}, row.model, 800, 600, calibration), NoError);
        double sum = 0;
        for (const AnchorPair& pair : calibration.anchors) {
            const XY p = models::Map(row.model, calibration.fit.inverse, pair.Dst);
            sum += std::hypot(p.X - pair.Src.X, p.Y - pair.Src.Y);
        }
        EXPECT_LT(sum / static_cast<double>(calibration.anchors.size()), row.farthest) << row.model;
    }
}

/// Dark dots, 16 pixels apart from (20, 20) on, those of the first three columns larger.
struct DotTarget : Image
{
    DotTarget(int columns, int rows)
    {
        Set(150, 120, Gray);
        for (int y = 0; y < Height; y++)
            std::fill_n(Row(y), int(Width), std::uint8_t{230});
        for (int r = 0; r < rows; r++)
            for (int c = 0; c < columns; c++) {
                const int reach = c < 3 ? 3 : 2;
                for (int y = -reach; y <= reach; y++)
                    std::fill_n(Row(20 + 16 * r + y) + 20 + 16 * c - reach, 2 * reach + 1, std::uint8_t{20});
            }
    }
};

TEST_F(GeometryTarget, OfDotsCalibratesFromAnImage)
{
    Geometry geometry;
    geometry.CalibrateTarget(Similarity, DotTarget(7, 5), 10, false, false, 1, 2);
    ASSERT_EQ(Status::Error().Code, NoError);
    ASSERT_EQ(geometry.NumAnchors, 7 * 5 - 4);
    EXPECT_NEAR(Geometry::ScaleFromPixel, 10.0 / 16, 1e-6);
    EXPECT_NEAR(geometry.MapPoint({20 + 16 * 4, 20}).X, 30, 1e-4);
    for (int i = 0; i < geometry.NumAnchors; i++) {
        EXPECT_NEAR(geometry.Dst(i).X, (geometry.Src(i).X - 36) * 10 / 16, 1e-4);
        EXPECT_NEAR(geometry.Dst(i).Y, (geometry.Src(i).Y - 52) * 10 / 16, 1e-4);
        // The small dots, at the right, come first.
        EXPECT_EQ(geometry.Src(i).X < 60, i >= 4 * 5 - 2) << i;
    }
}

TEST_F(GeometryTarget, OfAChessboardCalibratesFromAnImage)
{
    for (const bool white : {false, true}) {
        Image image;
        image.Set(150, 120, Gray);
        for (int y = 0; y < image.Height; y++)
            for (int x = 0; x < image.Width; x++) {
                const int c = (x - 20) / 12, r = (y - 20) / 12;
                const bool marked = x >= 20 && y >= 20 && c < 8 && r < 6 && (c + r) % 2 == 0;
                image.Row(y)[x] = marked == white ? 220 : 30;
            }
        Geometry geometry;
        geometry.CalibrateTarget(Affinity, image, 5, white, true);
        ASSERT_EQ(Status::Error().Code, NoError);
        ASSERT_EQ(geometry.NumAnchors, 24);
        EXPECT_NEAR(Geometry::ScaleToPixel, 12.0 / 5, 1e-6);
        const XY corner = geometry.MapPoint({25.5 + 12, 25.5 + 36});
        EXPECT_NEAR(corner.X, 5, 1e-4);
        EXPECT_NEAR(corner.Y, 15, 1e-4);
    }
}

TEST_F(GeometryTarget, ThatIsRefusedSaysWhyAndLeavesWhatWasFound)
{
    const struct
    {
        RegistrationModels model;
        int columns, rows;
        double step;
        const wchar_t* message;
        const char* context;
        int anchors;
    } rows[] = {
        {Similarity, 2, 2, 10, L"Not enough dots (4) were found in the target", "Tesk::Geometry::CalibrateTarget", 1},
        {Similarity, 7, 1, 10, L"Cannot detect a grid pattern", "Tesk::Geometry::CalibrateTarget", 1},
        {Rational, 3, 3, 10, L"The Rational model requires at least 7 anchor points and 5 were provided",
         "Tesk::Failure", 5},
        {Affinity, 4, 4, 0, L"The destination anchor points are forming a degenerate configuration",
         "Tesk::Geometry::ModelFit", 12},
    };
    for (const auto& row : rows) {
        Geometry::SimpleCalibration(7, 2);
        Geometry geometry;
        geometry.Append({1, 1}, {4, 1});
        geometry.ModelFit(Translation, Image());
        geometry.CalibrateTarget(row.model, DotTarget(row.columns, row.rows), row.step);
        EXPECT_EQ(Status::Error().Code, OutOfRange);
        EXPECT_EQ(checks::Message(), row.message);
        EXPECT_STREQ(Status::AsciiFunction(), row.context) << row.columns;
        EXPECT_EQ(geometry.NumAnchors, row.anchors);
        EXPECT_EQ(geometry.MapPoint({0, 0}).X, row.anchors > 1 ? 0 : 3);
        EXPECT_EQ(Geometry::ScaleToPixel, 1.0);
    }
}

} // namespace
