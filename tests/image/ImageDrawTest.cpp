#include "foundation/Graph.h"
#include "foundation/RecordingTarget.h"
#include "image/Image.h"

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
