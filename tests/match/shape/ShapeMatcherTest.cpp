#include "match/ShapeMatcher.h"

#include "Failures.h"
#include "foundation/Archive.h"
#include "image/Image.h"
#include "measure/Blobs.h"
#include "measure/Path.h"

#include <gtest/gtest.h>

#include <cmath>
#include <cstddef>
#include <cstdint>
#include <filesystem>
#include <numbers>
#include <span>
#include <string>
#include <vector>

namespace Tesk {
namespace {

/// A closed curve whose radius swings `lobes` times about 40, and once more strongly, so that it has one direction.
void Curve(int lobes, double degrees, double scale, XY center, Path& path)
{
    path.Clear();
    path.Closed = true;
    for (int i = 0; i < 360; i++) {
        const double t = i * std::numbers::pi / 180, r = scale * (40 + 6 * std::cos(lobes * t) + 8 * std::cos(t)),
                     turned = t - degrees * std::numbers::pi / 180;
        path.Append(static_cast<int>(std::lround(center.X + r * std::cos(turned))),
                    static_cast<int>(std::lround(center.Y + r * std::sin(turned))));
    }
}

class ShapeMatcherTest : public checks::IgnoringFailures
{
protected:
    ShapeMatcherTest()
    {
        for (int lobes = 2; lobes < 7; lobes++) {
            Curve(lobes, 0, 1, {100, 100}, path);
            matcher.Train(path, 10 + lobes);
        }
    }
    Path path;
    ShapeMatcher matcher;
};

TEST_F(ShapeMatcherTest, KnowsATurnedAndScaledOutlineAndHowItLies)
{
    ASSERT_EQ(matcher.NumTrained, 5);
    for (int lobes = 2; lobes < 7; lobes++)
        for (const double angle : {0.0, 50.0, -135.0, 178.0}) {
            Curve(lobes, angle, 1.2, {200, 150}, path);
            ASSERT_EQ(matcher.Recognize(path), lobes - 2) << angle;
            EXPECT_EQ(matcher.Class, 10 + lobes);
            EXPECT_NEAR(matcher.Scale, 1 / 1.2, 0.05); // that of the shape against the outline
            EXPECT_LT(matcher.Similarity, 1.5);
            EXPECT_NEAR(std::remainder(std::abs(matcher.Angle) - std::abs(angle), 360), 0, 5);
        }
}

TEST_F(ShapeMatcherTest, LeavesTheFormerMatchWhereNothingIsAlike)
{
    Curve(4, 0, 1, {100, 100}, path);
    ASSERT_EQ(matcher.Recognize(path), 2);
    const double x = matcher.X, similarity = matcher.Similarity;
    matcher.MaxSimilarity = -1;
    Curve(3, 20, 1, {150, 100}, path);
    EXPECT_EQ(matcher.Recognize(path), -1);
    EXPECT_EQ(matcher.Matched, -1);
    EXPECT_EQ(matcher.Class, 14);
    EXPECT_EQ(matcher.X, x);
    EXPECT_EQ(matcher.Similarity, similarity);
    matcher.MaxSimilarity = 50;
    Curve(4, 0, 1.5, {150, 150}, path); // beyond the scales allowed
    EXPECT_EQ(matcher.Recognize(path), -1);
}

TEST_F(ShapeMatcherTest, RefusesSmallOutlinesAndLeavesTheCount)
{
    path.Clear();
    for (const auto [x, y] : {Site(0, 0), Site(3, 0), Site(3, 5), Site(0, 5)})
        path.Append(x, y);
    matcher.Train(path, 1);
    EXPECT_EQ(Status::Error().Code, OutOfRange);
    EXPECT_EQ(checks::Message(), L"This outline has too small an area for training (15 < 16 pixels)");
    path.Clear();
    for (const auto [x, y] : {Site(0, 0), Site(5, 0), Site(5, 5), Site(0, 5)})
        path.Append(x, y);
    matcher.Train(path, 1);
    EXPECT_EQ(checks::Message(), L"This outline is too short for training (20.0 < 25 perimeter length)");
    EXPECT_EQ(matcher.NumTrained, 5);
    EXPECT_EQ(ShapeMatcher().Recognize(path), -1);
    EXPECT_EQ(Status::Error().Code, VoidObject);
}

TEST_F(ShapeMatcherTest, WritesClassesAndFeaturesIntoBlobs)
{
    Image image;
    image.Set(300, 120, Gray);
    for (int y = 0; y < 120; y++)
        for (int x = 0; x < 300; x++)
            image.Row(y)[x] = (x >= 10 && x < 70 && y >= 20 && y < 50) || std::hypot(x - 150, y - 60) < 30 ? 255 : 0;
    Blobs blobs;
    blobs.Segment(128, image);
    ASSERT_EQ(blobs.NumBlobs, 2);
    ShapeMatcher other;
    other.TrainBlob(blobs, 0, 7, 2);
    other.TrainBlob(blobs, 1, 8, 4);
    ASSERT_EQ(other.NumTrained, 2);
    other.RecognizeBlobs(blobs);
    ASSERT_EQ(Status::Error().Code, NoError);
    EXPECT_EQ(blobs.IntFeature(0, BlobClass), 7);
    EXPECT_EQ(blobs.IntFeature(1, BlobClass), 8);
    EXPECT_LT(blobs.FloatFeature(0, BlobMatchingScore), 1);
    EXPECT_NEAR(blobs.FloatFeature(1, BlobMatchingX), 150, 1);
    EXPECT_NEAR(blobs.FloatFeature(1, BlobMatchingScale), 1, 0.05);
    other.RecognizeBlobs(blobs, 2);
    EXPECT_EQ(checks::Message(), L"The blob index (2) must be in range [0..1]");
}

TEST_F(ShapeMatcherTest, ReadsWhatItWroteAndForgetsItsShapesOnBrokenFiles)
{
    std::vector<std::uint8_t> bytes;
    Archive writer = Archive::IntoMemory(bytes);
    matcher.Transfer(writer);
    ASSERT_EQ(bytes.size(), 4 + 4 + 5 * 8 + 8 + 5 * 16 + 5 * 360 * 4u);
    ShapeMatcher read;
    Archive reader = Archive::FromMemory(bytes);
    read.Transfer(reader);
    ASSERT_TRUE(reader.Good());
    EXPECT_NEAR(read.MaxAngle, std::numbers::pi, 1e-12);
    Curve(5, 80, 1, {90, 90}, path);
    EXPECT_EQ(read.Recognize(path), matcher.Recognize(path));
    EXPECT_EQ(read.Similarity, matcher.Similarity);

    const std::string name = (std::filesystem::temp_directory_path() / "shapes.shm").string();
    matcher.Write(name.c_str());
    std::filesystem::resize_file(name, 200);
    read.Read(name.c_str());
    EXPECT_EQ(Status::Error().Code, CannotRead);
    EXPECT_EQ(read.NumTrained, 0);
    EXPECT_EQ(matcher.NumTrained, 5);
    std::filesystem::remove(name);
    matcher.Read(name.c_str());
    EXPECT_EQ(Status::Error().Code, CannotOpen);
}

} // namespace
} // namespace Tesk
