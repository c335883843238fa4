#include "match/Locator.h"

#include "Failures.h"
#include "Noise.h"
#include "foundation/Archive.h"
#include "image/Geometry.h"
#include "image/Image.h"

#include <gtest/gtest.h>

#include <cmath>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <span>
#include <utility>
#include <vector>

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

TEST_F(LocatorTest, FindsTheSameAtEverySIMDLevel)
{
    locator.MinAngle = -20;
    locator.MaxAngle = 20;
    locator.MaxLocations = 8;
    locator.MinContrast = -1;
    for (const bool edges : {false, true}) {
        locator.Edges = edges;
        std::vector<_LocatorPose> plain;
        for (int level = NoSIMD; level <= Status::BestSIMDLevel(); level++) {
            Status::SIMDLevel(static_cast<SIMDLevels>(level));
            locator.Find(image);
            if (level == NoSIMD)
                for (int i = 0; i < locator.NumLocations; i++)
                    plain.push_back(locator.Location(i));
            ASSERT_EQ(std::size_t(int(locator.NumLocations)), plain.size());
            for (std::size_t i = 0; i < plain.size(); i++) {
                const _LocatorPose pose = locator.Location(static_cast<int>(i));
                EXPECT_EQ(std::memcmp(&pose, &plain[i], sizeof pose), 0) << level << ' ' << i;
            }
        }
        EXPECT_GT(plain.size(), 1u);
    }
}

TEST_F(LocatorTest, RanksFlatImagesAndPatternsWithoutANumberThatIsNone)
{
    Image flat;
    flat.Set(60, 60, Gray);
    std::memset(flat.Buffer, 90, flat.BufferSize);
    locator.MinContrast = -1;
    for (const auto& [width, height] : {std::pair(64, 1), {1, 64}, {8, 8}, {48, 41}}) {
        for (const Image* source : {&flat, &image}) {
            Locator other;
            other.MinContrast = -1;
            other.MaxLocations = 5;
            Image part;
            part.Set(width, height, Gray);
            for (int y = 0; y < height; y++)
                std::memcpy(part.Row(y), source->Row(source == &flat ? 0 : y),
                            static_cast<std::size_t>(width < 60 ? width : 60));
            other.Train(part);
            for (const bool edges : {false, true}) {
                other.Edges = edges;
                for (const Image* searched : {&flat, &image}) {
                    other.Find(*searched);
                    for (int i = 0; i < other.NumLocations; i++) {
                        const _LocatorPose& pose = other.Location(i);
                        EXPECT_TRUE(std::isfinite(pose.Score + pose.Contrast + pose.X + pose.Y + pose.Angle));
                    }
                }
            }
        }
    }
}

TEST_F(LocatorTest, RefusesWhatItCannotSearch)
{
    const auto expect = [&](int code, const wchar_t* message) {
        locator.Find(image);
        EXPECT_EQ(Status::Error().Code, code);
        EXPECT_EQ(checks::Message(), message);
    };
    locator.StopDepth = 3;
    expect(OutOfRange, L"The stop depth value (3) must be in range [0..2]");
    locator.MaxDepths = 0;
    expect(OutOfRange, L"The pyramid height (0) must be positive, use a larger template");
    locator.MaxDepths = 16;
    locator.StopDepth = 0;
    Image small;
    small.Set(47, 40, Gray);
    locator.Find(small);
    EXPECT_EQ(checks::Message(),
              L"The search image (47 x 40) is smaller than the pattern (47 x 41), reduce the pattern");
    small.Set(9, 7, Gray);
    locator.Train(small);
    EXPECT_EQ(checks::Message(), L"The pattern is only 63 pixels large, at least 64 are required");
    locator.Location(0);
    EXPECT_EQ(checks::Message(), L"No location has been found yet");
    locator.Find(image);
    locator.Location(-1);
    EXPECT_EQ(checks::Message(), L"The location index (-1) is out of the range [0..0]");
    locator = Locator();
    expect(VoidObject, L"No model has been defined, train first");
    small.Set(64, 64, Gray);
    std::memset(small.Buffer, 7, small.BufferSize);
    locator.Train(small);
    locator.Edges = true;
    expect(OutOfRange, L"The stop depth value (0) must be in range [0..0]");
}

TEST_F(LocatorTest, HalvesLevelsAsLongAsSixtyFourPixelsStay)
{
    const auto depths = [&](int width, int height) {
        Image pattern;
        pattern.Set(width, height, Gray);
        Patches(3, pattern, 2);
        locator.Train(pattern);
        return int(locator.MaxAreaDepths);
    };
    EXPECT_EQ(depths(8, 8), 1);
    EXPECT_EQ(depths(12, 12), 2); // two thirds: 8 x 8
    EXPECT_EQ(depths(16, 16), 2);
    EXPECT_EQ(depths(64, 64), 4);
}

TEST_F(LocatorTest, SearchesUnderAMaskAlone)
{
    Image mask;
    mask.Set(320, 240, Gray);
    std::memset(mask.Buffer, 255, mask.BufferSize);
    mask.Row(60)[130] = 0;
    locator.MinScore = 0.9;
    locator.SearchMask(mask);
    locator.Find(image);
    EXPECT_EQ(locator.NumLocations, 0);
    locator.SearchMask();
    locator.Find(image);
    EXPECT_EQ(locator.NumLocations, 1);
    // A level one pixel wide still has its mask.
    image.Window(11, 7, 2, 128);
    locator.Train(image);
    mask.Set(2, 128, Gray);
    std::memset(mask.Buffer, 255, mask.BufferSize);
    locator.SearchMask(mask);
    locator.Find(image);
    EXPECT_EQ(locator.NumLocations, 1);
    image.Window();
}

TEST_F(LocatorTest, MapsPointsAndImagesBetweenPatternAndLocation)
{
    locator.Find(image);
    const XY there = locator.TransformPoint({5, 9}, 0, true, true),
             back = locator.TransformPoint(there, 0, false, true);
    EXPECT_NEAR(there.X, 106, 0.05);
    EXPECT_NEAR(there.Y, 66, 0.05);
    EXPECT_NEAR(back.X, 5, 1e-9);
    EXPECT_NEAR(back.Y, 9, 1e-9);
    Image part;
    locator.Register(0, image, part, false);
    ASSERT_EQ(part.Width, 47);
    for (int y = 1; y < 40; y++)
        EXPECT_EQ(std::memcmp(part.Row(y) + 1, image.Row(57 + y) + 102, 45), 0);
}

/// A file of an older version is a new one without the fields that came later.
TEST_F(LocatorTest, ReadsFilesOfEveryVersion)
{
    locator.MaxOverlap = 0.5;
    locator.Edges = true;
    std::vector<std::uint8_t> bytes;
    Archive writer = Archive::IntoMemory(bytes);
    locator.Transfer(writer);
    const std::size_t rows = bytes.size() - 73 - 12 - 12 - 4 - 8 - 1;
    ASSERT_EQ(rows, 41u * 48); // the pitch of 47 pixels
    const auto part = [&](std::size_t from, std::size_t count) {
        return std::vector<std::uint8_t>(bytes.begin() + static_cast<std::ptrdiff_t>(from),
                                         bytes.begin() + static_cast<std::ptrdiff_t>(from + count));
    };
    struct Field
    {
        int since;
        std::vector<std::uint8_t> bytes;
    };
    const Field fields[] = {{1, part(0, 56)},         {2, part(56, 1)},        {3, part(57, 4)},
                            {6, part(61, 4)},         {7, part(65, 8)},        {1, part(73, 12 + rows)},
                            {4, part(85 + rows, 12)}, {5, part(97 + rows, 4)}, {8, part(101 + rows, 8)},
                            {9, part(109 + rows, 1)}};
    for (int version = 1; version <= 9; version++) {
        std::vector<std::uint8_t> file;
        for (const Field& field : fields)
            if (field.since <= version) file.insert(file.end(), field.bytes.begin(), field.bytes.end());
        file[4] = static_cast<std::uint8_t>(version);
        for (std::size_t size = 0; size <= file.size(); size += size < 160 || size + 60 > file.size() ? 1 : 97) {
            Archive reader = Archive::FromMemory(std::span(file).first(size));
            Locator read;
            read.Transfer(reader);
            ASSERT_EQ(reader.Good(), size == file.size()) << version << ' ' << size;
            if (size < file.size()) continue;
            EXPECT_EQ(read.MaxAreaDepths, 3);
            EXPECT_EQ(read.Edges, version >= 2);
            EXPECT_EQ(read.MaxOverlap, version >= 8 ? 0.5 : 0);
            read.Find(image);
            EXPECT_EQ(read.NumLocations, 1);
        }
    }
}

} // namespace
} // namespace Tesk
