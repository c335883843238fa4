#include "foundation/Graph.h"
#include "foundation/RecordingTarget.h"
#include "image/Image.h"

#include <algorithm>
#include <cstdint>
#include <string>
#include <vector>

#include <gtest/gtest.h>

using namespace Tesk;

namespace {

class ImageDrawTest : public ::testing::Test
{
protected:
    void SetUp() override
    {
        Graph::Zoom = 2;
        image_.Set(100, 80, Gray);
        image_.Window(10, 20, 40, 30); // on the screen from (21, 41) to (102, 102)
    }
    void TearDown() override
    {
        Graph::Zoom = 1;
        Graph::DrawTo(nullptr);
    }

    Image image_;
};

} // namespace

TEST_F(ImageDrawTest, HandlesAreHitInsideSixPixels)
{
    const struct
    {
        int x, y;
        DraggingHandles handle;
    } cases[] = {{21, 41, NWHandle},   {26, 36, NWHandle}, {27, 41, NHandle}, {102, 41, NEHandle}, {21, 102, SWHandle},
                 {102, 102, SEHandle}, {60, 41, NHandle},  {21, 70, WHandle}, {102, 70, EHandle},  {60, 102, SHandle},
                 {60, 70, AllHandle},  {60, 30, NoHandle}, {0, 0, NoHandle}};
    for (const auto& c : cases) {
        EXPECT_EQ(image_.HitHandle(c.x, c.y), c.handle) << c.x << ' ' << c.y;
        EXPECT_EQ(static_cast<DraggingHandles>(Image::Handle), c.handle);
    }
}

TEST_F(ImageDrawTest, DragsKeepTheOppositeEdgeAndAtLeastOnePixel)
{
    const struct
    {
        int hitX, hitY, toX, toY;
        int x, y, width, height;
    } cases[] = {{21, 70, 30, 0, 15, 20, 35, 30},    // left edge
                 {21, 70, -50, 0, 0, 20, 50, 30},    // beyond the image
                 {21, 70, 300, 0, 49, 20, 1, 30},    // beyond the right edge
                 {102, 102, 500, 20, 10, 20, 90, 1}, // the corner, far out and back over the top
                 {102, 70, 40, 0, 10, 20, 11, 30},   // right edge
                 {60, 41, 0, 10, 10, 5, 40, 45},     // top edge
                 {60, 70, 64, 72, 12, 21, 40, 30},   // all of it
                 {60, 70, 1000, -1000, 60, 0, 40, 30}};
    for (const auto& c : cases) {
        image_.Window(10, 20, 40, 30);
        image_.HitHandle(c.hitX, c.hitY);
        image_.Drag(c.toX, c.toY);
        EXPECT_EQ(image_.X, c.x) << c.toX;
        EXPECT_EQ(image_.Y, c.y) << c.toX;
        EXPECT_EQ(image_.Width, c.width) << c.toX;
        EXPECT_EQ(image_.Height, c.height) << c.toX;
        EXPECT_EQ(image_.FirstPixel, image_.Buffer + image_.AlignOffset + image_.Pitch * c.y + c.x);
    }
}

TEST_F(ImageDrawTest, TheWindowAndItsHandlesAreDrawn)
{
    RecordingTarget target;
    Graph::DrawTo(&target);
    image_.DrawWindow(true);
    std::vector<std::string> drawn;
    for (const auto& call : target.Calls)
        if (call.compare(0, 3, "Set") != 0) drawn.push_back(call);
    EXPECT_EQ(drawn, (std::vector<std::string>{"Rectangle 21 41 101 101", "Ellipse 96 96 106 106",
                                               "Ellipse 16 96 26 106", "Ellipse 96 36 106 46", "Ellipse 16 36 26 46"}));
    target.Calls.clear();
    image_.Draw(true);
    EXPECT_EQ(target.Calls, (std::vector<std::string>{"Blit 40 30 8 0 0 80 60"}));
    Image nothing;
    target.Calls.clear();
    nothing.Draw(false);
    EXPECT_TRUE(target.Calls.empty());
}

TEST_F(ImageDrawTest, TheWindowMayBeCrossedAndOfAColorThatIsForThisOnce)
{
    RecordingTarget target;
    Graph::DrawTo(&target);
    Graph::LineColor = Blue;
    image_.DrawWindow(false, Yellow, true);
    EXPECT_EQ(target.Calls, (std::vector<std::string>{"SetLine 255 255 0 1", "SetFill none", "Rectangle 21 41 101 101",
                                                      "Move 21 41", "Line 101 101", "Move 21 101", "Line 101 41"}));
    EXPECT_EQ(Graph::LineColor, Blue);
}

TEST_F(ImageDrawTest, DrawingIntoAnImageChangesOnlyWhatWasDrawnOn)
{
    Graph::Zoom = 1;
    RecordingTarget before;
    Graph::DrawTo(&before);
    Graph::LineColor = Yellow;
    for (const PixelTypes type : {Gray, Rgb, Rgba, Gray1}) {
        Image image;
        image.Set(20, 12, type);
        for (int y = 0; y < 12; y++)
            for (int i = 0; i < RowBytes(20, type); i++)
                image.Row(y)[i] = static_cast<std::uint8_t>(17 * y + 31 * i);
        Image original;
        original.Set(20, 12, type);
        for (int y = 0; y < 12; y++)
            std::copy_n(image.Row(y), RowBytes(20, type), original.Row(y));
        if (type != Gray1) image.Window(4, 2, 8, 6);
        Graph::BeginImageTarget(image);
        Graph::Line(0, 3, 100, 3); // over the window's end, where it is clipped
        Graph::EndImageTarget(image);
        image.Window();
        const int left = type == Gray1 ? 0 : 4, right = type == Gray1 ? 20 : 12, row = type == Gray1 ? 3 : 5;
        for (int y = 0; y < 12; y++)
            for (int x = 0; x < 20; x++) {
                const bool drawn = y == row && x >= left && x < right;
                switch (type) {
                case Gray:
                    EXPECT_EQ(image.PixelGray(x, y), drawn ? 255 : original.PixelGray(x, y));
                    break;
                case Rgb:
                    EXPECT_EQ(image.PixelRgb(x, y), drawn ? RgbPixel(255, 255, 0) : original.PixelRgb(x, y));
                    break;
                case Rgba: {
                    const RgbaPixel was = original.PixelRgba(x, y);
                    EXPECT_EQ(image.PixelRgba(x, y), drawn ? RgbaPixel(255, 255, 0, was.Alpha) : was);
                    break;
                }
                default:
                    EXPECT_EQ(image.PixelGray1(x, y), drawn || original.PixelGray1(x, y));
                }
            }
    }
    EXPECT_EQ(Graph::DrawTo(), &before);
    EXPECT_TRUE(before.Calls.empty());
    Graph::LineColor = Blue;
}

TEST_F(ImageDrawTest, ImagesThatCannotBeDrawnOnStayAsTheyAre)
{
    RecordingTarget before;
    Graph::DrawTo(&before);
    Image wide, nothing;
    wide.Set(4, 4, Gray16);
    Graph::BeginImageTarget(wide);
    Graph::BeginImageTarget(nothing);
    Graph::Line(0, 0, 3, 3);
    Graph::EndImageTarget(nothing);
    Graph::EndImageTarget(wide);
    Graph::EndImageTarget(wide);
    EXPECT_TRUE(before.Calls.empty());
    EXPECT_EQ(Graph::DrawTo(), &before);
}

TEST_F(ImageDrawTest, AnImageLargerThanARectangleRecordCanTellIsDrawn)
{
    Graph::Zoom = 1.0 / 1024;
    RecordingTarget target;
    Graph::DrawTo(&target);
    Image strip;
    strip.Set(70000, 2048, Gray1);
    strip.Draw(false);
    EXPECT_EQ(target.Calls, (std::vector<std::string>{"Blit 70000 2048 1 0 0 68 2"}));
}

TEST_F(ImageDrawTest, AnImageWiderOrHigherThanASurfaceIsDrawnOverItsSeams)
{
    // The same scene stands alone in a small image, and over the place where two tiles meet.
    Graph::Zoom = 1;
    const auto scene = [] {
        const GraphSettings settings;
        Graph::LineColor = Graph::PointColor = Graph::TextColor = Yellow;
        Graph::FillColor = Red;
        Graph::Line(3, 5, 90, 62);
        Graph::Circle(50, 40, 20);
        Graph::FillRectangle(Limits(35, 60, 30, 9));
        Graph::Text(30, 45, "seam");
        Graph::LineWidth = 5;
        Graph::Line(60, 8, 40, 90);
        Image stamp;
        stamp.Set(20, 20, Gray16);
        for (int y = 0; y < 20; y++)
            for (int x = 0; x < 20; x++)
                stamp.PixelGray16(x, y) = static_cast<std::uint16_t>(3000 * y + 150 * x);
        Graph::Zoom = 2;
        stamp.Draw(false);
    };
    constexpr int side = 100, seam = 32767, corner = seam - side / 2;
    Image alone;
    alone.Set(side, side, Rgb);
    for (int y = 0; y < side; y++)
        std::fill_n(alone.Row(y), 3 * side, std::uint8_t{9});
    Image wide, high;
    wide.Set(seam + 5000, side, Rgb);
    high.Set(side, seam + 5000, Rgb);
    for (Image* image : {&wide, &high})
        for (int y = 0; y < image->Height; y++)
            std::fill_n(image->Row(y), 3 * image->Width, std::uint8_t{9});
    Graph::BeginImageTarget(alone);
    scene();
    Graph::EndImageTarget(alone);
    Graph::BeginImageTarget(wide);
    Graph::SetOrigin(corner, 0);
    scene();
    Graph::EndImageTarget(wide);
    Graph::BeginImageTarget(high);
    Graph::SetOrigin(0, corner);
    scene();
    Graph::EndImageTarget(high);
    int drawn = 0;
    for (int y = 0; y < side; y++)
        for (int x = 0; x < side; x++) {
            const RgbPixel expected = alone.PixelRgb(x, y);
            drawn += expected != RgbPixel(9, 9, 9);
            ASSERT_EQ(wide.PixelRgb(corner + x, y), expected) << x << ' ' << y;
            ASSERT_EQ(high.PixelRgb(x, corner + y), expected) << x << ' ' << y;
        }
    EXPECT_GT(drawn, 2000);
    // And the last pixels, far beyond.
    Graph::BeginImageTarget(wide);
    Graph::LineColor = Yellow;
    Graph::Line(0, 7, 40000, 7);
    Graph::EndImageTarget(wide);
    for (const int x : {0, seam - 1, seam, seam + 1, seam + 4999})
        EXPECT_EQ(wide.PixelRgb(x, 7), RgbPixel(255, 255, 0)) << x;
    Graph::LineColor = Blue;
}
