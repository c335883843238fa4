#include "foundation/Records.h"
#include "foundation/Graph.h"
#include "foundation/Status.h"

#include <gtest/gtest.h>

#include <cstdio>
#include <filesystem>
#include <set>
#include <string>
#include <tuple>
#include <unistd.h>

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

TEST(Records, PointsAreDraggedByTheirMark)
{
    Graph::Zoom = 4;
    XY point(10.5, 20);
    EXPECT_EQ(point.HitHandle(46 + 5, 84 - 5), PointHandle);
    point.Drag(100, 60);
    EXPECT_DOUBLE_EQ(point.X, 24);
    EXPECT_DOUBLE_EQ(point.Y, 14);
    EXPECT_EQ(point.HitHandle(100 + 6, 60), NoHandle);
    point.Drag(0, 0);
    EXPECT_DOUBLE_EQ(point.X, 24);
    Graph::Zoom = 1;
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
