// Storage, order, appending, files and drawing of regions.
#include "foundation/Archive.h"
#include "foundation/Graph.h"
#include "foundation/RecordingTarget.h"
#include "image/Image.h"
#include "measure/Path.h"
#include "measure/Quad.h"
#include "tests/measure/region/Regions.h"

#include <cmath>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <unistd.h>

using namespace Tesk;
using namespace Tesk::checks;
namespace fs = std::filesystem;

namespace {

class RegionStorage : public RegionMethods
{};
class RegionAppend : public RegionMethods
{};

TEST_F(RegionStorage, RunsAreReachedByIndexAndOthersRefused)
{
    Region region = RegionOf({{1, 4, 2}, {-3, 0, 7}});
    int start = 9, end = 9, y = 9;
    region.Run(1, start, end, y);
    EXPECT_EQ(std::tuple(start, end, y), std::tuple(-3, 0, 7));
    LabeledRun run{};
    region.Run(0, run);
    EXPECT_EQ(std::tuple(int{run.Start}, int{run.End}, int{run.Y}, run.Label), std::tuple(1, 4, 2, 0));
    for (const int index : {-1, 2}) {
        region.Run(index, start, end, y);
        EXPECT_EQ(Status::Error().Code, OutOfRange);
        EXPECT_EQ(Message(), L"The run index (" + std::to_wstring(index) + L") must be in range [0..1]");
        EXPECT_STREQ(Status::AsciiFunction(), "Tesk::Region::Run");
        EXPECT_EQ(start, -3);
    }
    region.Clear();
    EXPECT_EQ(region.NumRuns, 0);
    region.Run(0, run);
    EXPECT_EQ(Message(), L"No run is available");
}

TEST_F(RegionStorage, CopiesAreIndependentHoweverTheyWereMade)
{
    Region region = RegionOf({{5, 6, 1}, {0, 1, 0}}, false), copy(region), shallow, detached;
    shallow.ShallowCopy(region, false);
    detached.ShallowCopy(region, true);
    detached.Detach(true);
    shallow.AddRun(7, 8, 9);
    const RunTuples former = RunsOf(copy);
    // Sorting one that shares its runs leaves the others.
    Region other;
    other.Unite(region, region);
    EXPECT_TRUE(region.Sorted);
    EXPECT_FALSE(copy.Sorted);
    EXPECT_EQ(RunsOf(region), (RunTuples{{0, 1, 0}, {5, 6, 1}}));
    EXPECT_EQ(former, (RunTuples{{5, 6, 1}, {0, 1, 0}}));
    EXPECT_EQ(RunsOf(copy), former);
    EXPECT_EQ(RunsOf(detached), former);
    EXPECT_EQ(shallow.NumRuns, 3);
    const Region moved(std::move(shallow));
    EXPECT_EQ(moved.NumRuns, 3);
    shallow.AddRun(1, 2, 3);
    EXPECT_EQ(shallow.NumRuns, 1);
    detached.ShallowCopy(region, false);
    detached.Clear();
    EXPECT_EQ(region.NumRuns, 2);
    EXPECT_TRUE(detached.Sorted);
}

TEST_F(RegionAppend, TellsWhetherTheRunsAreStillInScanOrder)
{
    Region box, twice, region;
    box.BoxAppend(Limits(-2, 3, 4, 2), 5);
    EXPECT_TRUE(box.Sorted);
    EXPECT_EQ(RunsOf(box), (RunTuples{{-2, 2, 3}, {-2, 2, 4}}));
    EXPECT_EQ(box.Runs()[1].Label, 5);
    region.RegionAppend(box);
    EXPECT_TRUE(region.Sorted);
    EXPECT_EQ(region.Runs()[0].Label, 5);
    region.RegionAppend(region);
    EXPECT_FALSE(region.Sorted);
    EXPECT_EQ(region.Area(), 16);
    twice.RegionAppend(region);
    EXPECT_FALSE(twice.Sorted);
    box.BoxAppend(Limits(0, 0, 1, 1));
    EXPECT_FALSE(box.Sorted);
    Image image, empty;
    image.Set(10, 8, Gray);
    image.Window(2, 3, 5, 2);
    Region window;
    window.ImageAppend(empty);
    EXPECT_EQ(Status::Error().Code, VoidObject);
    window.ImageAppend(image, 7);
    EXPECT_EQ(RunsOf(window), (RunTuples{{2, 7, 3}, {2, 7, 4}}));
    EXPECT_TRUE(window.Sorted);
    Path path;
    window.Clear();
    window.PathAppend(path);
    EXPECT_EQ(window.NumRuns, 0);
    EXPECT_FALSE(window.Sorted);
}

TEST_F(RegionAppend, BoxesBeyondTheCoordinatesAreCut)
{
    Region region;
    region.BoxAppend(Limits(32760, 32766, 100, 10));
    EXPECT_EQ(RunsOf(region), (RunTuples{{32760, 32767, 32766}, {32760, 32767, 32767}}));
    region.Clear();
    region.BoxAppend(Limits(0, 0, -3, 2));
    EXPECT_EQ(region.NumRuns, 0);
}

Region Polygon(const std::vector<std::pair<int, int>>& vertices)
{
    Path path;
    for (const auto& [x, y] : vertices)
        path.Append(x, y);
    Region region;
    region.PathAppend(path, 3);
    return region;
}

TEST_F(RegionAppend, PolygonLeavesOutItsLowestRowAndItsRightEnds)
{
    EXPECT_EQ(RunsOf(Polygon({{2, 1}, {5, 1}, {5, 3}, {2, 3}})), (RunTuples{{2, 5, 1}, {2, 5, 2}}));
    EXPECT_EQ(RunsOf(Polygon({{2, 3}, {5, 3}, {5, 1}, {2, 1}})), (RunTuples{{2, 5, 1}, {2, 5, 2}}));
    EXPECT_EQ(Polygon({{2, 1}, {5, 1}, {5, 3}, {2, 3}}).Runs()[1].Label, 3);
    EXPECT_EQ(Polygon({{2, 1}, {5, 1}}).NumRuns, 0);
    // A side of a single row has the column of its upper end.
    EXPECT_EQ(RunsOf(Polygon({{0, 0}, {9, 1}, {9, 0}})), (RunTuples{{0, 9, 0}}));
    // Left of 0 columns are rounded up: -1.5 and -4.5 become -1 and -4.
    EXPECT_EQ(RunsOf(Polygon({{0, 0}, {-3, 2}, {-9, 2}})), (RunTuples{{0, 0, 0}, {-4, -1, 1}}));
}

/// A pixel is inside if an odd number of sides cross its row at or left of it.
TEST_F(RegionAppend, PolygonIsTheEvenOddInsideWhateverItsShape)
{
    Noise noise{17};
    for (int turn = 0; turn < 30; turn++) {
        std::vector<std::pair<int, int>> vertices;
        for (int i = 3 + noise.Byte() % 6; i > 0; i--)
            vertices.emplace_back(noise.Byte() % 40, noise.Byte() % 40);
        Pixels inside;
        for (int y = 0; y < 40; y++)
            for (int x = 0; x < 40; x++) {
                bool odd = false;
                for (std::size_t i = 0; i < vertices.size(); i++) {
                    auto [x0, y0] = vertices[i];
                    auto [x1, y1] = vertices[(i + 1) % vertices.size()];
                    if (y0 > y1) std::swap(x0, x1), std::swap(y0, y1);
                    if (y >= y0 && y < y1 && x0 + std::floor((y - y0) * (x1 - x0) / double(y1 - y0)) <= x) odd = !odd;
                }
                if (odd) inside.emplace(y, x);
            }
        ASSERT_EQ(PixelsOf(Polygon(vertices)), inside) << turn;
    }
}

TEST_F(RegionAppend, EllipseIsRowByRowWhatItsEquationSays)
{
    Region circle;
    circle.EllipseAppend(XY(10, 10), XY(3, 3), 0);
    EXPECT_EQ(RunsOf(circle), (RunTuples{{8, 13, 8}, {7, 14, 9}, {7, 14, 10}, {7, 14, 11}, {8, 13, 12}}));
    EXPECT_FALSE(circle.Sorted);
    // A quarter turn exchanges the axes; half a turn changes nothing.
    Region upright, turned, back;
    upright.EllipseAppend(XY(50, 40), XY(9, 21), 0);
    turned.EllipseAppend(XY(50, 40), XY(21, 9), 90);
    EXPECT_EQ(RunsOf(upright), RunsOf(turned));
    back.EllipseAppend(XY(50, 40), XY(9, 21), -180);
    EXPECT_EQ(RunsOf(upright), RunsOf(back));
    Region slanted;
    slanted.EllipseAppend(XY(0, 0), XY(40, 15), 30);
    EXPECT_NEAR(slanted.Area(), 3.14159265 * 40 * 15, 60);
    int area = 0;
    EXPECT_NEAR(slanted.Center(area).X, 0, 0.1);
    // Below the center, where y grows, the long axis lies to the right.
    EXPECT_GT(slanted.Runs()[static_cast<std::size_t>(slanted.NumRuns * 3 / 4)].Start, -15);
}

TEST_F(RegionAppend, EllipsesOfNoSizeOrTooFarAwayAddNothing)
{
    Region region;
    region.EllipseAppend(XY(0, 0), XY(0, 0), 0);
    region.EllipseAppend(XY(0, 0), XY(0, 7), 0);
    region.EllipseAppend(XY(-40000, 0), XY(9, 9), 45);
    EXPECT_EQ(Status::Error().Code, NoError);
    EXPECT_EQ(region.NumRuns, 0);
    const double bad[] = {NAN, INFINITY, 1e300};
    for (const double number : bad) {
        region.EllipseAppend(XY(number, 0), XY(5, 5), 0);
        EXPECT_EQ(Status::Error().Code, OutOfRange);
        region.EllipseAppend(XY(0, 0), XY(5, number), 0);
        EXPECT_EQ(Status::Error().Code, OutOfRange);
    }
    EXPECT_EQ(region.NumRuns, 0);
    region.EllipseAppend(XY(32766, 32766), XY(9, 9), 0);
    for (const auto& [start, end, y] : RunsOf(region))
        EXPECT_TRUE(start < end && y > 32700);
}

/// A pixel of a quad, as seen in the frame of the quad, with a margin for the rounding of the ends of runs.
bool IsInSector(const Quad& quad, double x, double y, double from, double sweep, double margin)
{
    const double radius = std::hypot(x - quad.X, y - quad.Y), inner = quad.Width - quad.Height;
    if (radius > quad.Width + margin || (inner >= 1 && radius < inner - margin)) return false;
    if (std::abs(sweep) >= 360) return true;
    double turned = std::fmod((std::atan2(y - quad.Y, x - quad.X) * 180 / std::acos(-1) - from) + 720, 360);
    const double slack = margin / radius * 180 / std::acos(-1);
    if (turned > 360 - slack) turned -= 360;
    return turned >= -slack && turned <= sweep + slack;
}

TEST_F(RegionAppend, QuadIsTheInsideOfATurnedRectangle)
{
    Quad quad;
    Region region;
    quad.Set(3, 4, 5, 2);
    region.QuadAppend(quad, 8);
    EXPECT_EQ(RunsOf(region), (RunTuples{{3, 9, 4}, {3, 9, 5}}));
    EXPECT_EQ(region.Runs()[0].Label, 8);
    EXPECT_FALSE(region.Sorted);
    region.Clear();
    quad.SetCenter(50.5, 40.25, 40, 20, 30, 0);
    region.QuadAppend(quad);
    int area = 0;
    const XY center = region.Center(area);
    EXPECT_NEAR(area, 800 + 25, 25); // half a pixel more at either end of a row
    EXPECT_NEAR(center.X, 50, 0.3);  // both ends are rounded down
    EXPECT_NEAR(center.Y, 40.25, 0.6);
    // A diamond: rows widen and narrow by a pixel at each side.
    region.Clear();
    quad.SetCenter(10, 10, 8 * std::sqrt(0.5), 8 * std::sqrt(0.5), 45, 0);
    region.QuadAppend(quad);
    for (const auto& [start, end, y] : RunsOf(region))
        EXPECT_NEAR(end - start, 9 - 2 * std::abs(y - 10), 1);
}

TEST_F(RegionAppend, QuadIsTheInsideOfASectorOfARing)
{
    const struct
    {
        double inner, outer, from, to;
    } cases[] = {{20, 40, 0, 90},  {20, 40, 100, 350}, {0, 30, 30, 60}, {10, 30, 350, 370},
                 {25, 31, 0, 359}, {5, 20, 200, 520},  {0, 40, 0, 180}, {12, 36, 45, 315}};
    for (const auto& c : cases) {
        Quad quad;
        quad.SetArc(3.3, -4.6, c.inner, c.outer, c.from, c.to);
        ASSERT_EQ(Status::Error().Code, NoError);
        Region region;
        region.QuadAppend(quad);
        const Pixels pixels = PixelsOf(region);
        const double from = quad.StartAngle() * 180 / std::acos(-1);
        for (int y = -60; y < 60; y++)
            for (int x = -60; x < 60; x++) {
                if (pixels.contains({y, x}))
                    ASSERT_TRUE(IsInSector(quad, x, y, from, c.to - c.from, 1.5)) << x << " " << y << " " << c.from;
                else
                    ASSERT_FALSE(IsInSector(quad, x, y, from, c.to - c.from, -1.5)) << x << " " << y << " " << c.from;
            }
    }
    Quad disc;
    disc.SetCircle(0, 0, 20, 0);
    Region region;
    region.QuadAppend(disc);
    EXPECT_NEAR(region.Area(), 400 * std::acos(-1) + 20, 30);
}

class RegionFile : public RegionMethods
{
protected:
    RegionFile() : name_((fs::temp_directory_path() / ("tesk_region_" + std::to_string(getpid()) + ".rgn")).string()) {}
    ~RegionFile() override { fs::remove(name_); }

    std::string Bytes() const
    {
        std::ifstream file(name_, std::ios::binary);
        return {std::istreambuf_iterator<char>(file), {}};
    }
    void Put(const std::string& bytes) const { std::ofstream(name_, std::ios::binary | std::ios::trunc) << bytes; }

    std::string name_;
};

TEST_F(RegionFile, HoldsRunsWithLabelsAndTheOrder)
{
    Region region;
    region.BoxAppend(Limits(-2, 0x123, 5, 1), 0x12345678);
    region.Sorted = false;
    region.Write(name_.c_str());
    EXPECT_EQ(Status::Error().Code, NoError);
    const std::string expected("TRGN\2\0\0\0\1\0\0\0\xfe\xff\3\0\x23\1\0\0\x78\x56\x34\x12\0", 25);
    EXPECT_EQ(Bytes(), expected);
    // The gap of another writer does not matter; the first version has two more words.
    std::string other = expected + "12345678";
    other[4] = 1;
    other[18] = other[19] = 'x';
    other[24] = 1;
    Put(other);
    Region read = RegionOf({{7, 8, 9}, {1, 2, 3}});
    read.Read(fs::path(name_).wstring().c_str());
    EXPECT_EQ(Status::Error().Code, NoError);
    EXPECT_EQ(RunsOf(read), (RunTuples{{-2, 3, 0x123}}));
    EXPECT_EQ(read.Runs()[0].Label, 0x12345678);
    EXPECT_TRUE(read.Sorted);
    // Bytes of a longer file stay.
    Region().Write(name_.c_str());
    EXPECT_EQ(Bytes().size(), other.size());
    read.Read(name_.c_str());
    EXPECT_EQ(read.NumRuns, 0);
}

TEST_F(RegionFile, BrokenOnesAreRefusedAndLeaveTheRegion)
{
    Region region = RegionOf({{1, 2, 3}, {4, 5, 6}});
    region.Write(name_.c_str());
    const std::string whole = Bytes();
    for (std::size_t length = 0; length < whole.size(); length++) {
        Put(whole.substr(0, length));
        region.Read(name_.c_str());
        EXPECT_NE(Status::Error().Code, NoError) << length;
    }
    const std::wstring name = fs::path(name_).wstring();
    const struct
    {
        std::size_t at;
        std::string bytes;
        int code;
        std::wstring message;
    } cases[] = {{0, "TPTH", UnsupportedFormat, L"File \"" + name + L"\" is not a Region file"},
                 {4, "\3", OutOfRange, L"The version number \"3\" of this Region is too high"},
                 {8, std::string("\xff\xff\xff\x7f", 4), CannotRead, L""},
                 {8, std::string("\xff\xff\xff\xff", 4), CannotRead, L""}};
    for (const auto& c : cases) {
        std::string bytes = whole;
        Put(bytes.replace(c.at, c.bytes.size(), c.bytes));
        region.Read(name_.c_str());
        EXPECT_EQ(Status::Error().Code, c.code);
        EXPECT_EQ(Message(), c.message);
        EXPECT_STREQ(Status::AsciiFunction(), "Tesk::Region::Read");
    }
    region.Read("/nowhere/at all.rgn");
    EXPECT_EQ(Status::Error().Code, CannotOpen);
    EXPECT_EQ(Message().rfind(L"Cannot open file \"/nowhere/at all.rgn\" (", 0), 0u);
    region.Write("/nowhere/at all.rgn");
    EXPECT_EQ(Status::Error().Code, CannotOpen);
    EXPECT_EQ(RunsOf(region), (RunTuples{{1, 2, 3}, {4, 5, 6}}));
}

class RegionDrawing : public RegionMethods
{
protected:
    RegionDrawing() { Graph::DrawTo(&target_); }
    ~RegionDrawing() override { Graph::DrawTo(nullptr); }

    RecordingTarget target_;
    GraphSettings kept_;
};

TEST_F(RegionDrawing, RunsCoverAllPixelsOfTheScreenThatTheyMapTo)
{
    Graph::Zoom = 1.5;
    Graph::FillColor = Red;
    RegionOf({{1, 3, 2}, {5, 6, -1}}).Draw();
    ASSERT_EQ(target_.Calls.size(), 2u);
    // trunc(1.5 * 1.5), trunc(2.5 * 1.5), trunc(3.5 * 1.5), trunc(3.5 * 1.5)
    EXPECT_EQ(target_.Calls[0].rfind("FillRectangle 2 3 5 5", 0), 0u) << target_.Calls[0];
    EXPECT_EQ(target_.Calls[1].rfind("FillRectangle 8 0 9 0", 0), 0u) << target_.Calls[1];
    Graph::FillColor = NoColor;
    RegionOf({{1, 3, 2}}).Draw();
    EXPECT_EQ(Status::Error().Code, OutOfRange);
    EXPECT_EQ(Message(), L"Can't draw the Region, the filling color is set to NoColor");
    EXPECT_STREQ(Status::AsciiFunction(), "Tesk::Region::Draw");
    EXPECT_EQ(target_.Calls.size(), 2u);
}

TEST_F(RegionDrawing, OutlineIsTheRimOfTheRegion)
{
    Graph::Zoom = 1;
    Graph::FillColor = Red;
    Region().DrawOutline(true);
    EXPECT_TRUE(target_.Calls.empty());
    // The middle of a square of 3 x 3 has all its neighbours.
    Region square;
    square.BoxAppend(Limits(0, 0, 3, 3));
    square.DrawOutline(false);
    EXPECT_EQ(target_.Calls.size(), 4u);
    target_.Calls.clear();
    // A plus of five pixels: only the cross finds its middle inside.
    const Region plus = RegionOf({{1, 2, 0}, {0, 3, 1}, {1, 2, 2}});
    plus.DrawOutline(false);
    EXPECT_EQ(target_.Calls.size(), 3u);
    target_.Calls.clear();
    plus.DrawOutline(true);
    EXPECT_EQ(target_.Calls.size(), 4u);
}

} // namespace
