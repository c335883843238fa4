#include "foundation/Graph.h"
#include "foundation/RecordingTarget.h"
#include "image/Image.h"

#include <algorithm>

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
