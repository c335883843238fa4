#include "foundation/Records.h"
#include "foundation/Graph.h"
#include "foundation/RecordingTarget.h"
#include "foundation/Status.h"

#include <gtest/gtest.h>

#include <cmath>
#include <cstdio>
#include <filesystem>
#include <set>
#include <string>
#include <tuple>
#include <unistd.h>
#include <vector>

using namespace Tesk;
namespace fs = std::filesystem;

namespace {

std::tuple<int, int, int, int> Fields(const Limits& limits)
{
    return {limits.X, limits.Y, limits.Width, limits.Height};
}

class LimitsFile : public ::testing::Test
{
protected:
    void SetUp() override
    {
        Status::ErrorBehavior(IgnoreIt);
        path_ = (fs::temp_directory_path() / ("tesk_limits_" + std::to_string(getpid()))).string();
    }
    void TearDown() override { fs::remove(path_); }

    void Put(const std::string& bytes) const
    {
        std::FILE* file = std::fopen(path_.c_str(), "wb");
        std::fputs("", file);
        std::fwrite(bytes.data(), 1, bytes.size(), file);
        std::fclose(file);
    }

    std::string path_;
};

} // namespace

TEST(Records, ThePaletteHoldsSixtyFourColorsAndTheNamesPointAtTheirs)
{
    std::set<std::tuple<int, int, int>> colors;
    for (int i = 0; i < 64; i++)
        colors.insert({PaletteColor(i).Red, PaletteColor(i).Green, PaletteColor(i).Blue});
    EXPECT_EQ(colors.size(), 64u);
    EXPECT_EQ(PaletteColor(Red), RgbPixel(255, 0, 0));
    EXPECT_EQ(PaletteColor(Magenta), RgbPixel(255, 0, 255));
    EXPECT_EQ(PaletteColor(DarkGray), RgbPixel(85, 85, 85));
    EXPECT_EQ(PaletteColor(Yellow), RgbPixel(255, 255, 0));
}

TEST(Records, RectanglesCombine)
{
    Limits limits(10, 20, 30, 40);
    limits.Unite(Limits(0, 30, 5, 100));
    EXPECT_EQ(Fields(limits), std::make_tuple(0, 20, 40, 110));
    limits.Stretch(-5, 200);
    EXPECT_EQ(Fields(limits), std::make_tuple(-5, 20, 45, 181));
    EXPECT_TRUE(limits.Intersect(Limits(0, 0, 10, 25)));
    EXPECT_EQ(Fields(limits), std::make_tuple(0, 20, 10, 5));
    EXPECT_FALSE(limits.Intersect(Limits(50, 50, 10, 10)));
    EXPECT_EQ(Limits(0, 0, 30000, 30000).Area(), 900000000);
}

TEST(Records, PointsAreDraggedToThePixelUnderThePointer)
{
    const struct
    {
        double zoom;
        int x, y, column, row;
    } cases[] = {{1, 10, 7, 10, 7},    {8, 80, 63, 10, 7}, {8, 87, 56, 10, 7},           {0.25, 10, 7, 40, 28},
                 {4, 101, 60, 25, 15}, {3, -7, -1, -2, 0}, {1e-9, 30, 0, 1000000000, 0}, {std::nan(""), 5, 5, 0, 0}};
    for (const auto& c : cases) {
        Graph::Zoom = 4;
        XY point(10.5, 20);
        Site site(10, 20);
        ASSERT_EQ(point.HitHandle(44 + 5, 82 - 5), PointHandle);
        ASSERT_EQ(site.HitHandle(42 - 5, 82 + 5), PointHandle);
        Graph::Zoom = c.zoom;
        point.Drag(c.x, c.y);
        EXPECT_EQ(point.X, c.column) << c.zoom;
        EXPECT_EQ(point.Y, c.row) << c.zoom;
        site.Drag(c.x, c.y);
        EXPECT_EQ(site.X, Min(c.column, 32767)) << c.zoom;
        EXPECT_EQ(site.Y, c.row) << c.zoom;
        // What has been put somewhere is found there again.
        if (c.zoom >= 0.25) {
            EXPECT_EQ(point.HitHandle(c.x, c.y), PointHandle) << c.zoom;
            EXPECT_EQ(site.HitHandle(c.x, c.y), PointHandle) << c.zoom;
        }
    }
    Graph::Zoom = 4;
    XY point(25, 15);
    EXPECT_EQ(point.HitHandle(102 + 6, 62), NoHandle);
    EXPECT_EQ(point.HitHandle(102, 62 - 6), NoHandle);
    point.Drag(0, 0);
    EXPECT_EQ(point.X, 25) << "no handle was hit";
    Graph::Zoom = 1;
}

TEST(Records, PointsAreDrawnOnTheMiddleOfTheirPixel)
{
    RecordingTarget target;
    Graph::DrawTo(&target);
    Graph::Zoom = 8;
    Graph::PointColor = Graph::LineColor = Blue;
    Graph::FillColor = NoColor;
    XY(10, 7).Draw(true);
    Site(10, 7).Draw(false);
    const std::vector<std::string> cross = {"Move 79 60", "Line 89 60", "Move 84 55", "Line 84 65"};
    std::vector<std::string> expected = {"SetLine 0 0 255 1", "SetFill none"};
    expected.insert(expected.end(), cross.begin(), cross.end());
    expected.push_back("Ellipse 79 55 89 65");
    expected.insert(expected.end(), cross.begin(), cross.end());
    EXPECT_EQ(target.Calls, expected);
    Graph::Zoom = 1;
    Graph::DrawTo(nullptr);
}

TEST(Records, TheLowestWholeNumberHasADefinedMagnitude)
{
    EXPECT_EQ(Abs(Auto), MaxInt);
    EXPECT_EQ(Abs(MinInt), MaxInt);
    EXPECT_EQ(Abs(-5), 5);
    EXPECT_EQ(Abs(-5.5), 5.5);
}

TEST_F(LimitsFile, RoundTripsAndKeepsWhatIsLonger)
{
    Put(std::string(20, 'z'));
    Limits(-3, 5, 700, 30000).Write(path_.c_str());
    EXPECT_EQ(Status::Error().Code, NoError);
    EXPECT_EQ(fs::file_size(path_), 20u);
    Limits limits(1, 1, 1, 1);
    limits.Read(Widen(path_.c_str()).c_str());
    EXPECT_EQ(Fields(limits), std::make_tuple(-3, 5, 700, 30000));
}

TEST_F(LimitsFile, BadFilesAreRefusedAndAnEmptyOneChangesNothing)
{
    const struct
    {
        std::string bytes;
        int code;
    } cases[] = {{"", NoError},
                 {"TL", UnsupportedFormat},
                 {"TLIX\1\0\0\0", UnsupportedFormat},
                 {std::string("TLIM\2\0\0\0\0\0\0\0\0\0\0\0", 16), OutOfRange},
                 {std::string("TLIM\1\0\0\0\1\0", 10), CannotRead}};
    for (const auto& c : cases) {
        Put(c.bytes);
        Limits limits(1, 2, 3, 4);
        limits.Read(path_.c_str());
        EXPECT_EQ(Status::Error().Code, c.code);
        EXPECT_EQ(Fields(limits), std::make_tuple(1, 2, 3, 4));
    }
    Limits limits(1, 2, 3, 4);
    limits.Read((path_ + "missing").c_str());
    EXPECT_EQ(Status::Error().Code, CannotOpen);
    EXPECT_STREQ(Status::AsciiFunction(), "Tesk::Limits::Read");
}
