#include "match/Locator.h"

#include "Failures.h"
#include "Noise.h"
#include "image/Geometry.h"
#include "image/Image.h"

#include <gtest/gtest.h>

#include <cmath>
#include <cstdint>

namespace Tesk {
namespace {

/// Bright and dark patches of a few pixels, the same for the same seed.
void Patches(std::uint32_t seed, Image& image, int size = 7)
{
    checks::Noise noise{seed};
    for (int y = 0; y < image.Height; y += size)
        for (int x = 0; x < image.Width; x += size) {
            const std::uint8_t value = noise.Byte();
            for (int v = y; v < y + size && v < image.Height; v++)
                for (int u = x; u < x + size && u < image.Width; u++)
                    image.Row(v)[u] = value;
        }
}

class LocatorTest : public checks::IgnoringFailures
{
protected:
    LocatorTest()
    {
        image.Set(320, 240, Gray);
        Patches(1, image);
        image.Window(101, 57, 47, 41);
        locator.Train(image);
        image.Window();
    }
    ~LocatorTest() override { Status::SIMDLevel(before); }

    Image image;
    Locator locator;
    SIMDLevels before = Status::SIMDLevel();
};

TEST_F(LocatorTest, FindsAWindowOfItsImageInBothModes)
{
    EXPECT_EQ(locator.MaxAreaDepths, 3);
    for (const bool edges : {false, true}) {
        locator.Edges = edges;
        locator.Find(image);
        ASSERT_EQ(locator.NumLocations, 1) << edges;
        const _LocatorPose pose = locator.Location(0);
        // The two sides of a sharp step are alike strong, and the model takes one of them.
        EXPECT_NEAR(pose.X, 101 + 23, edges ? 0.5 : 0.05);
        EXPECT_NEAR(pose.Y, 57 + 20, edges ? 0.5 : 0.05);
        EXPECT_NEAR(pose.Score, 1, 1e-9);
        EXPECT_NEAR(pose.Contrast, 1, 1e-9);
    }
}

TEST_F(LocatorTest, FindsATurnedAndScaledPatternWithinAStepOfItsGrid)
{
    locator.MinAngle = -180;
    locator.MaxAngle = 180;
    locator.MinScale = 0.9;
    locator.MaxScale = 1.2;
    Image turned;
    for (const double angle : {0.0, 33.0, 90.0, -120.0, 179.0}) {
        turned.Set(320, 240, Gray);
        Geometry::Rotate({124, 77}, {160.25, 120.75}, angle, 1.1, image, turned);
        for (const bool edges : {false, true}) {
            locator.Edges = edges;
            locator.Find(turned);
            ASSERT_EQ(locator.NumLocations, 1) << angle << edges;
            const _LocatorPose pose = locator.Location(0);
            EXPECT_NEAR(pose.X, 160.25, 0.5) << angle << edges;
            EXPECT_NEAR(pose.Y, 120.75, 0.5) << angle << edges;
            EXPECT_NEAR(std::remainder(pose.Angle + angle, 360), 0, 3) << angle << edges;
            EXPECT_NEAR(pose.Scale, 1.1, 0.04) << angle << edges;
            EXPECT_GT(pose.Score, 0.7) << angle << edges;
        }
    }
}

} // namespace
} // namespace Tesk
