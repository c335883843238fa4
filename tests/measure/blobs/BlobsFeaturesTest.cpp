#include "image/Image.h"
#include "measure/Blobs.h"
#include "tests/Failures.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <string>
#include <vector>

using namespace Tesk;
using checks::Message;

namespace {

constexpr int size = 24;

class BlobsFeatures : public checks::IgnoringFailures
{
protected:
    void SetUp() override
    {
        IgnoringFailures::SetUp();
        image_.Set(size, size, Gray);
        for (int y = 0; y < size; y++)
            for (int x = 0; x < size; x++)
                image_.Row(y)[x] = static_cast<std::uint8_t>(x * 37 + y * 11 + x * y);
    }

    double Value(Blobs& blobs, int feature)
    {
        blobs.Evaluate(static_cast<Features>(feature), image_, 0);
        EXPECT_EQ(Status::Error().Code, NoError) << feature;
        EXPECT_TRUE(blobs.IsComputed(0, feature)) << feature;
        return blobs.Type(feature) == Int ? blobs.IntFeature(0, feature) : double{blobs.FloatFeature(0, feature)};
    }

    static Blobs Single(const std::vector<LabeledRun>& runs)
    {
        Region region;
        for (const LabeledRun& run : runs)
            region.AddRun(run.Start, run.End, run.Y);
        Blobs blobs;
        blobs.AppendBlob(region, false);
        return blobs;
    }

    Image image_;
};

TEST_F(BlobsFeatures, OfShapesWorkedOutByHand)
{
    Blobs bar = Single({{3, 10, 5, 0}});
    EXPECT_EQ(Value(bar, BlobPerimeter), 12);
    EXPECT_EQ(Value(bar, BlobFilledArea), 0);
    EXPECT_EQ(Value(bar, BlobEllipseAngle), 0); // and computed, though it is a negative zero
    EXPECT_EQ(Value(bar, BlobFeretWidth), 6);
    EXPECT_EQ(Value(bar, BlobFeretHeight), 0);
    Blobs dot = Single({{4, 5, 6, 0}});
    EXPECT_EQ(Value(dot, BlobPerimeter), 0);
    EXPECT_EQ(Value(dot, BlobPerimetricRatio), 1);
    EXPECT_EQ(Value(dot, BlobConvexPerimeterRatio), 0);
    EXPECT_EQ(Value(dot, BlobFeretCenterX), 4);
    EXPECT_EQ(Value(dot, BlobDiametralCenterY), 6);
    std::vector<LabeledRun> runs;
    for (std::int16_t y = 0; y < 10; y++)
        runs.push_back({0, 10, y, 0});
    Blobs square = Single(runs);
    EXPECT_EQ(Value(square, BlobFilledArea), 81);
    EXPECT_EQ(Value(square, BlobPerimeter), 36);
    EXPECT_EQ(Value(square, BlobFullPerimeter), 36);
    EXPECT_EQ(Value(square, BlobConvexArea), 81);
    EXPECT_EQ(Value(square, BlobFillingRatio), 0.81f);
    EXPECT_EQ(Value(square, BlobPerimetricRatio), 12.566371f * 100 / (36.0f * 36.0f));
    EXPECT_EQ(Value(square, BlobOutlineEnd) - Value(square, BlobOutlineBeg), 36);
    EXPECT_GE(Value(square, BlobVectorEnd) - Value(square, BlobVectorBeg), 4);
    EXPECT_LT(Value(square, BlobVectorEnd) - Value(square, BlobVectorBeg), 8);
    // A ring: the hole does not count.
    Blobs ring = Single({{0, 3, 0, 0}, {0, 1, 1, 0}, {2, 3, 1, 0}, {0, 3, 2, 0}});
    EXPECT_EQ(Value(ring, BlobPerimeter), 8);
    EXPECT_EQ(Value(ring, BlobFullPerimeter), 8);
    EXPECT_EQ(Value(ring, BlobFilledArea), 4);
    // A U: 2 down, 4 across and 2 up outside, 1 down, 4 across and 1 up inside.
    Blobs cup = Single({{0, 1, 0, 0}, {4, 5, 0, 0}, {0, 1, 1, 0}, {4, 5, 1, 0}, {0, 5, 2, 0}});
    EXPECT_EQ(Value(cup, BlobPerimeter), 14);
}

TEST_F(BlobsFeatures, AreWorkedOutOnceAndForTheBlobsNamed)
{
    Blobs blobs;
    for (int i = 0; i < 4; i++) {
        Region region;
        region.AddRun(2 * i, 2 * i + 1 + i, 2 * i);
        blobs.AppendBlob(region, false);
    }
    blobs.Evaluate(BlobMass, image_, 1);
    EXPECT_TRUE(blobs.IsComputed(-1, BlobMass));
    EXPECT_TRUE(blobs.IsComputed(1, BlobMass));
    EXPECT_FALSE(blobs.IsComputed(0, BlobMass));
    const int mass = blobs.IntFeature(1, BlobMass);
    Image dark;
    dark.Set(size, size, Gray);
    std::fill(dark.Row(0), dark.Row(0) + dark.Pitch * (size - 1) + size, std::uint8_t{0});
    blobs.Evaluate(BlobMass, dark);
    EXPECT_EQ(blobs.IntFeature(1, BlobMass), mass);
    EXPECT_EQ(blobs.IntFeature(2, BlobMass), 0);
    blobs.Evaluate(BlobCentroid, dark);
    EXPECT_FALSE(blobs.IsComputed(2, BlobCentroidX));
    EXPECT_EQ(std::wstring(blobs.ToUnicodeString(BlobMass, 1)), L"Mass\n" + std::to_wstring(mass) + L"\n");
}

TEST_F(BlobsFeatures, RefusalsSayWhy)
{
    Blobs blobs = Single({{1, 4, 2, 0}});
    Image color;
    color.Set(4, 4, Rgb);
    blobs.Evaluate(BlobMass, color);
    EXPECT_EQ(Message(), L"The image type (Rgb) is not supported for the BlobMass feature; use Gray or Gray16");
    EXPECT_EQ(Status::Error().Code, UnsupportedType);
    EXPECT_FALSE(blobs.IsComputed(-1, BlobMass));
    blobs.Evaluate(BlobMedian, color);
    EXPECT_EQ(Status::Error().Code, IncompatibleType);
    blobs.Evaluate(BlobMatchingX, image_);
    EXPECT_EQ(Message(), L"This feature (Matching X) cannot be computed");
    blobs.IntFeature(0, BlobPerimeter);
    EXPECT_EQ(Message(), L"This feature (Perimeter) has not been computed");
    blobs.FloatFeature(0, BlobArea);
    EXPECT_EQ(Message(), L"Area is a Int feature, not Float !");
    blobs.Evaluate(BlobBox, image_, 1);
    EXPECT_EQ(Message(), L"The blob index (1) must be in range [0..0]");
    EXPECT_STREQ(Status::AsciiFunction(), "");
    blobs.ByFeatureSelect(BlobCenterX, image_, 0, 1, Select);
    EXPECT_EQ(Message(), L"Center X is a Float feature, use float bounds");
    blobs.FeatureMode(BlobArea, image_, 0);
    EXPECT_EQ(Message(), L"Use one of All, AllSelected or AllDeselected");
    EXPECT_EQ(blobs.WhichFeature(9), 60);
    EXPECT_EQ(Message(), L"The index (9) must be in range [2..3]");
    for (int i = 0; i < 16; i++)
        EXPECT_EQ(blobs.AppendFeature(i % 2 ? Int : Float), 60 + i);
    EXPECT_EQ(blobs.AppendFeature(Int), 60);
    EXPECT_EQ(Message(), L"The maximum number of user features (16) has been reached");
}

} // namespace
