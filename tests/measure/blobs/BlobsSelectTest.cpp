#include "image/Image.h"
#include "measure/Blobs.h"
#include "tests/Failures.h"

#include <gtest/gtest.h>

#include <cmath>
#include <cstdio>
#include <string>

using namespace Tesk;
using checks::Message;

namespace {

class BlobsSelect : public checks::IgnoringFailures
{
protected:
    void SetUp() override
    {
        IgnoringFailures::SetUp();
        image_.Set(40, 40, Gray);
        // Bars of 5, 1, 9, 5 and 3 pixels, each on a row of its own.
        for (const int width : {5, 1, 9, 5, 3}) {
            Region region;
            region.AddRun(10, 10 + width, 10 + 4 * blobs_.NumBlobs);
            blobs_.AppendBlob(region, false);
        }
    }
    /// The areas in the order of the blobs.
    std::vector<int> Areas() const
    {
        std::vector<int> areas;
        for (int i = 0; i < blobs_.NumBlobs; i++)
            areas.push_back(blobs_.IntFeature(i, BlobArea));
        return areas;
    }

    Image image_;
    Blobs blobs_;
};

using List = std::vector<int>;

TEST_F(BlobsSelect, ModesPermuteTheOrderAsTold)
{
    blobs_.ByFeatureSelect(BlobArea, image_, 5, MaxInt, Select);
    EXPECT_EQ(Areas(), (List{5, 9, 5, 1, 3}));
    EXPECT_EQ(blobs_.NumSelectedBlobs, 3);
    blobs_.ByFeatureSelect(BlobArea, image_, 3, 3, Add);
    EXPECT_EQ(Areas(), (List{5, 9, 5, 3, 1}));
    blobs_.ByFeatureSelect(BlobArea, image_, 5, 5, Remove);
    EXPECT_EQ(Areas(), (List{3, 9, 5, 5, 1}));
    EXPECT_EQ(blobs_.NumSelectedBlobs, 2);
    blobs_.ByFeatureSelect(BlobArea, image_, 4, 9, Deselect);
    EXPECT_EQ(blobs_.NumSelectedBlobs, 2);
    EXPECT_EQ(blobs_.ByFeatureFirst(BlobArea, image_, true), blobs_.IntFeature(0, BlobArea) == 1 ? 0 : 1);
    blobs_.ByFeatureSelect(BlobArea, image_, 3, 5, Select, Outside);
    blobs_.ByFeatureSort(BlobArea, image_, false);
    EXPECT_EQ(blobs_.IntFeature(0, BlobArea), 9);
    EXPECT_EQ(blobs_.IntFeature(1, BlobArea), 1);
}

TEST_F(BlobsSelect, StatisticsOfASet)
{
    EXPECT_EQ(blobs_.FeatureAverage(BlobArea, image_, All, false), 23);
    EXPECT_DOUBLE_EQ(blobs_.FeatureAverage(BlobArea, image_), 4.6);
    EXPECT_DOUBLE_EQ(blobs_.FeatureDeviation(BlobArea, image_), std::sqrt(5 * 141.0 - 23 * 23) / 5);
    EXPECT_EQ(blobs_.FeatureMinimumIndex(BlobArea, image_), 1);
    EXPECT_EQ(blobs_.FeatureMaximum(BlobArea, image_), 9);
    EXPECT_EQ(blobs_.FeatureQuantile(BlobArea, image_, 0.5), 5);
    EXPECT_EQ(blobs_.FeatureQuantile(BlobArea, image_, 0), 1);
    EXPECT_EQ(blobs_.FeatureQuantile(BlobArea, image_, 1), 9);
    EXPECT_EQ(blobs_.FeatureMode(BlobArea, image_), 5); // 3 5 5, then 5 5
    double correlation = 0;
    EXPECT_DOUBLE_EQ(blobs_.FeatureCovariance(BlobArea, BlobBoxWidth, correlation, image_), 141 - 23 * 23 / 5.0);
    EXPECT_DOUBLE_EQ(correlation, 1);
    EXPECT_EQ(blobs_.FeatureCovariance(BlobArea, BlobBoxX, correlation, image_), 0);
    EXPECT_EQ(correlation, 0);
    EXPECT_EQ(blobs_.FeatureAverage(BlobArea, image_, AllDeselected), 0);
    EXPECT_EQ(Message(), L"No blob is available");
}

TEST_F(BlobsSelect, ByPlace)
{
    blobs_.BoxInWindowSelect(0, 0, 15, 40, Select, Inside);
    EXPECT_EQ(blobs_.NumSelectedBlobs, 4);
    blobs_.BlobInWindowSelect(12, 0, 4, 40, Select, Onside);
    EXPECT_EQ(blobs_.NumSelectedBlobs, 3); // 5, 5 and 3 end or begin across a side; 9 covers it
    blobs_.BlobInWindowSelect(12, 18, 4, 1, Select, Over);
    EXPECT_EQ(blobs_.NumSelectedBlobs, 1);
    Region region;
    region.AddRun(10, 15, 10);
    region.AddRun(11, 12, 18);
    blobs_.BlobInRegionSelect(region, Select, Inside);
    EXPECT_EQ(Areas()[0], 5);
    EXPECT_EQ(blobs_.NumSelectedBlobs, 1);
    blobs_.BlobInRegionSelect(region, Select, Onside);
    EXPECT_EQ(Areas()[0], 9);
    blobs_.BlobInRegionSelect(region, Select, Outside);
    EXPECT_EQ(blobs_.NumSelectedBlobs, 3);
    image_.Window(10, 0, 20, 40);
    blobs_.BorderSelect(image_, Select);
    EXPECT_EQ(blobs_.NumSelectedBlobs, 5);
}

TEST_F(BlobsSelect, AppendedRunsMergeIntoTheLastBlob)
{
    blobs_.Evaluate(BlobBox, image_);
    Region above;
    above.AddRun(3, 6, 2);
    blobs_.AppendBlob(above, true);
    EXPECT_EQ(blobs_.NumBlobs, 5);
    EXPECT_EQ(blobs_.NumRuns(4), 2);
    EXPECT_EQ(blobs_.IntFeature(4, BlobArea), 6);
    EXPECT_EQ(blobs_.FirstPixel(4).Y, 2);
    blobs_.Evaluate(BlobBox, image_);
    EXPECT_EQ(blobs_.IntFeature(4, BlobBoxX), 3);
    // A hull over rows without runs.
    blobs_.Convexify(All);
    EXPECT_EQ(blobs_.NumRuns(4), 25);
    EXPECT_EQ(blobs_.IntFeature(0, BlobArea), 5);
    EXPECT_EQ(blobs_.NumRuns(2), 1);
    Blobs other;
    other.AppendBlob(above, true);
    EXPECT_EQ(Message(), L"No blob is available to merge to");
    other.AppendBlob(blobs_, 4, false);
    EXPECT_EQ(other.NumRuns(0), 25);
    other.AppendBlob(blobs_, 5, false);
    EXPECT_EQ(Message(), L"The source blob index (5) must be in range [0..4]");
    const Blobs copy(other);
    other.Clear();
    EXPECT_EQ(other.NumBlobs, 0);
    EXPECT_EQ(copy.NumRuns(0), 25);
    EXPECT_EQ(copy.HitBlob(4, 2), 0);
    EXPECT_EQ(copy.HitBlob(0, 2), MinInt);
}

TEST_F(BlobsSelect, AMergedBlobTakesTheClassAndTheAreaOfItsRuns)
{
    Region row;
    row.AddRun(10, 14, 27);
    Blobs other;
    other.DefaultClass = 7;
    other.AppendBlob(row, false);
    other.IntFeature(0, BlobArea) = 100; // what a blob says of itself is added
    blobs_.AppendBlob(other, 0, true);
    EXPECT_EQ(blobs_.IntFeature(4, BlobClass), 7);
    EXPECT_EQ(blobs_.IntFeature(4, BlobArea), 3 + 100);
    blobs_.DefaultClass = 2;
    blobs_.AppendBlob(row, true);
    EXPECT_EQ(blobs_.IntFeature(4, BlobClass), 2);
    EXPECT_EQ(blobs_.IntFeature(4, BlobArea), 3 + 4 + 4);
    EXPECT_EQ(blobs_.NumRuns(4), 3);
}

TEST_F(BlobsSelect, RecordsNeverLeadBeyondTheRuns)
{
    blobs_.Evaluate(BlobBox, image_, All);
    ASSERT_EQ(blobs_.AppendFeature(Float), 60);
    for (const int bad : {MinInt, -1, 3, MaxInt}) {
        Blobs broken(blobs_);
        broken.FeatureTable::IntValue(0, 2, bad);
        broken.FeatureTable::IntValue(1, 1, bad);
        for (int i = 0; i < 5; i++)
            EXPECT_LE(broken.NumRuns(i), 5);
        broken.Evaluate(BlobPerimeter, image_, All);
        broken.Convexify(All);
    }
    Blobs bare(blobs_);
    bare.Region::Clear();
    EXPECT_EQ(bare.NumBlobs, 5);
    EXPECT_EQ(bare.NumRuns(3), 0);
    bare.Evaluate(BlobFeretBox, image_, All);
    bare.Convexify(All);
    bare.AppendBlob(static_cast<const Region&>(blobs_), false);
    EXPECT_EQ(bare.NumRuns(5), 5);
    EXPECT_EQ(bare.NumRuns(4), 0);

    const std::string path = ::testing::TempDir() + "blobs.tbl";
    // The columns of blobs come back; those of another table make none.
    blobs_.TableStore::Write(path.c_str());
    Blobs read;
    read.TableStore::Read(path.c_str());
    ASSERT_EQ(read.NumBlobs, 5);
    EXPECT_EQ(read.IntFeature(2, BlobBoxWidth), 9);
    EXPECT_TRUE(read.IsComputed(-1, 60));
    EXPECT_FALSE(read.IsComputed(-1, 61));
    EXPECT_EQ(read.NumRuns(2), 0);
    FeatureTable narrow;
    for (const wchar_t* name : {L"a", L"b", L"c", L"d", L"e"})
        narrow._AppendFeature(Gray, name);
    narrow.AppendSample();
    narrow.Write(path.c_str());
    Region row;
    row.AddRun(10, 14, 27);
    blobs_.TableStore::Read(path.c_str());
    std::remove(path.c_str());
    EXPECT_EQ(blobs_.NumBlobs, 1);
    EXPECT_EQ(blobs_.NumRuns(0), 0);
    EXPECT_FALSE(blobs_.IsComputed(-1, BlobBox));
    EXPECT_FALSE(blobs_.IsComputed(-1, 60));
    blobs_.ByFeatureSelect(BlobArea, image_, 1, 9);
    EXPECT_EQ(Message(), L"This feature (Area) has not been computed");
    EXPECT_STREQ(blobs_.Blobs::ToUnicodeString(), L"c\td\te\n\t\t\n");
    blobs_.Convexify(All);
    blobs_.Evaluate(BlobBox, image_, All);
    EXPECT_FALSE(blobs_.IsComputed(0, BlobBox));
    blobs_.AppendBlob(row, true);
    EXPECT_EQ(Message(), L"No blob is available to merge to");
    blobs_.AppendBlob(row, false);
    EXPECT_EQ(blobs_.NumBlobs, 1);
    EXPECT_EQ(blobs_.IntFeature(0, BlobArea), 4);
}

} // namespace
