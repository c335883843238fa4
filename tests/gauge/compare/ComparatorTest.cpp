// Comparators: phases, the places of aligners and detectors, alignment, overrun, measured motion.
#include "gauge/Comparator.h"

#include "../../Failures.h"
#include "foundation/Graph.h"
#include "gauge/compare/ComparedPictures.h"
#include "image/Histogram.h"
#include "measure/Blobs.h"

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <cstdlib>
#include <string>
#include <utility>
#include <vector>

namespace Tesk {
namespace {

using checks::areaHeight;
using checks::areaWidth;
using checks::areaX;
using checks::areaY;
using checks::Message;
using checks::Paint;

class ComparatorTest : public checks::IgnoringFailures
{
protected:
    void TearDown() override
    {
        Graph::Zoom = 1;
        IgnoringFailures::TearDown();
    }
};

int Code()
{
    return Status::Error().Code;
}

void ExpectBox(const Limits& box, int x, int y, int width, int height)
{
    EXPECT_EQ(box.X, x);
    EXPECT_EQ(box.Y, y);
    EXPECT_EQ(box.Width, width);
    EXPECT_EQ(box.Height, height);
}

/// The largest difference of an aligned image from the reference's working area, `border` pixels from its border.
int WorstError(const Image& aligned, const Comparator& comparator, int border)
{
    int worst = 0;
    for (int y = border; y < areaHeight - border; y++)
        for (int x = border; x < areaWidth - border; x++)
            worst = std::max(worst, std::abs(aligned.Row(y)[x] - comparator.Reference.Row(areaY + y)[areaX + x]));
    return worst;
}

TEST_F(ComparatorTest, NothingWorksWithoutAReference)
{
    const std::wstring idle = L"This Comparator has not been initialized - Use SetReference";
    Comparator comparator;
    Image image, dst;
    Histogram dark, light;
    Blobs blobs;
    Paint(image);
    const auto expectIdle = [&](auto call) {
        Status::Error().Code = NoError;
        call();
        EXPECT_EQ(Code(), CannotPerform);
        EXPECT_NE(Message().find(idle), std::wstring::npos) << std::string(Message().begin(), Message().end());
    };
    expectIdle([&] { comparator.Align(image, dst); });
    expectIdle([&] { comparator.Differences(image, dst); });
    expectIdle([&] { comparator.Differences(image, dark, light); });
    expectIdle([&] { comparator.Differences(image, blobs); });
    expectIdle([&] { comparator.TrainAligners(); });
    expectIdle([&] { comparator.StraightTolerancing(5, 0); });
    expectIdle([&] { comparator.StartTolerancing(false); });
    expectIdle([&] { comparator.NextTolerancing(image); });
    expectIdle([&] { comparator.EndTolerancing(1); });
    expectIdle([&] { comparator.ResetRanges(); });
    expectIdle([&] { comparator.UpdateRanges(); });
    expectIdle([&] { comparator.AppendDetectorROI(Limits(0, 0, 5, 5)); });
    expectIdle([&] { comparator.RemoveDetectorROI(); });
    expectIdle([&] { comparator.AlignerTrainROI(); });
    expectIdle([&] { comparator.AlignerSearchRange(-1, -1, 1, 1, 0, 0, 1, 1); });
    expectIdle([&] { comparator.Write("idle.cmp"); });
    expectIdle([&] { comparator.Clip(); });
    // A mode that was merely set teaches nothing.
    comparator.Mode = Inspected;
    expectIdle([&] { comparator.Differences(image, dst); });
    EXPECT_EQ(double(comparator.MinScaling), 1);
    EXPECT_EQ(double(comparator.MaxShiftX), 0);
}

TEST_F(ComparatorTest, PhasesFollowEachOther)
{
    Comparator comparator;
    Image image, aligned, painted;
    checks::Teach(comparator);
    EXPECT_EQ(comparator.Mode, EditingAligners);
    Paint(image);
    comparator.Differences(image, painted);
    EXPECT_EQ(Code(), CannotPerform);
    EXPECT_NE(Message().find(L"This Comparator has not been aligned to the Reference - Use Align"), std::wstring::npos);
    comparator.NextTolerancing(image);
    EXPECT_EQ(Code(), CannotPerform);
    comparator.StraightTolerancing(3, 0);
    EXPECT_EQ(comparator.Mode, Trained);
    comparator.Differences(image, painted);
    EXPECT_EQ(Code(), CannotPerform);
    comparator.Align(image, aligned);
    EXPECT_EQ(Code(), NoError);
    EXPECT_EQ(comparator.Mode, Aligned);
    comparator.DrawDifferences(aligned);
    EXPECT_EQ(Code(), CannotPerform);
    EXPECT_NE(Message().find(L"This Comparator has not been compared to the reference - Use Difference"),
              std::wstring::npos);
    comparator.Differences(aligned, painted);
    EXPECT_EQ(comparator.Mode, Inspected);
    comparator.Align(image, aligned);
    EXPECT_EQ(comparator.Mode, Aligned);
    EXPECT_EQ(comparator.AppendDetectorROI(Limits(0, 0, 10, 10)), 1);
    EXPECT_EQ(comparator.Mode, EditingDetectors);
    comparator.Differences(aligned, painted);
    EXPECT_EQ(Code(), CannotPerform);
    // What cannot be aligned is not compared by how the last image lay.
    comparator.Align(image, aligned);
    Image flat;
    flat.Set(image);
    for (int y = 0; y < flat.Height; y++)
        for (int x = 0; x < flat.Width; x++)
            flat.Row(y)[x] = 100;
    comparator.Align(flat, aligned);
    EXPECT_EQ(Code(), CannotPerform);
    EXPECT_NE(Message().find(L"The aligner 0 found no match, alignment is not possible"), std::wstring::npos);
    EXPECT_EQ(comparator.Mode, Trained);
}

TEST_F(ComparatorTest, ReferencesAreRefusedByTypeModelAndSize)
{
    Comparator comparator;
    Image image, wide;
    comparator.SetReference(image, 1, 1, Translation);
    EXPECT_EQ(Code(), VoidObject);
    wide.Set(300, 300, Gray16);
    comparator.SetReference(wide, 1, 1, Translation);
    EXPECT_EQ(Code(), UnsupportedType);
    EXPECT_NE(Message().find(L"The image type (Gray16) must be one of Gray or Rgb"), std::wstring::npos);
    Paint(image);
    comparator.SetReference(image, 1, 1, Similarity);
    EXPECT_EQ(Code(), UnsupportedType);
    EXPECT_NE(Message().find(L"This geometric model (Similarity) requires at least 2 aligners"), std::wstring::npos);
    comparator.SetReference(image, -2, -2, Translation);
    EXPECT_EQ(Code(), UnsupportedType);
    comparator.SetReference(image, 3, 2, Quadratic);
    EXPECT_EQ(Code(), NotImplemented);
    EXPECT_NE(Message().find(L"Sorry, the multi-match feature is not implemented yet"), std::wstring::npos);
    comparator.SetReference(image, 70000, 70000, Translation);
    EXPECT_EQ(Code(), NotImplemented);
    comparator.SetReference(image, 2, 2, Perspective);
    EXPECT_EQ(Code(), OutOfRange);
    EXPECT_NE(Message().find(L"The Search margins 64, 64 are too large for this Image size 200 x 160"),
              std::wstring::npos);
    EXPECT_EQ(comparator.Mode, CompareIdle);
    // One pixel of the train ROI is left at 130 pixels, none at 129.
    image.Set(130, 130, Gray);
    comparator.SetReference(image, 1, 1, Translation);
    EXPECT_EQ(Code(), NoError);
    image.Set(129, 130, Gray);
    comparator.SetReference(image, 1, 1, Translation);
    EXPECT_EQ(Code(), OutOfRange);
}

TEST_F(ComparatorTest, AlignersFormAGrid)
{
    Comparator comparator;
    Image image;
    image.Set(603, 402, Gray);
    comparator.SetReference(image, 2, 2, Perspective);
    ASSERT_EQ(Code(), NoError);
    EXPECT_EQ(int(comparator.NumAligners), 4);
    comparator.AlignerTrainROI();
    EXPECT_EQ(Code(), OutOfRange) << "no single one is selected";
    comparator.AlignerIndex = 1;
    ExpectBox(comparator.AlignerSearchROI(), 376, 50, 150, 100);
    ExpectBox(comparator.AlignerTrainROI(), 408, 82, 86, 36);
    comparator.AlignerIndex = 2;
    ExpectBox(comparator.AlignerSearchROI(), 75, 251, 150, 100);
    comparator.AlignerIndex = 4;
    comparator.TrainAligners();
    EXPECT_EQ(Code(), OutOfRange);
    EXPECT_NE(Message().find(L"The aligner index (4) must be in range [0..3]"), std::wstring::npos);
    comparator.AlignerIndex = 0;
    comparator.AlignerTrainROI(Limits(590, 10, 20, 20));
    EXPECT_EQ(Code(), OutOfRange);
    ExpectBox(comparator.DetectorROI(), 32, 32, 539, 338);
}

TEST_F(ComparatorTest, SearchMarginsWidenByWhatTheTrainROISweeps)
{
    Comparator comparator;
    checks::Teach(comparator);
    ExpectBox(comparator.AlignerTrainROI(), 82, 72, 36, 16);
    comparator.AlignerSearchRange(-20, -10, 25, 15, 0, 0, 1, 1);
    ExpectBox(comparator.AlignerSearchROI(), 62, 62, 81, 41);
    EXPECT_EQ(comparator.SearchMargins[2], 25);
    // The diagonal is 39.4 pixels long: over half a turn it sweeps 39 - 36 aside and 39 - 16 above.
    comparator.AlignerSearchRange(-20, -10, 25, 15, -90, 90, 1, 1);
    EXPECT_EQ(comparator.SearchMargins[0], -23);
    EXPECT_EQ(comparator.SearchMargins[1], -33);
    EXPECT_EQ(comparator.SearchMargins[3], 38);
    ExpectBox(comparator.AlignerSearchROI(), 59, 39, 87, 87);
    // A small turn lifts the corners by half of 36 sin 10 - 16 (1 - cos 10): 3.004 pixels, and never makes the search
    // narrower.
    comparator.AlignerSearchRange(-20, -10, 25, 15, -10, 10, 1, 1);
    EXPECT_EQ(comparator.SearchMargins[0], -23);
    EXPECT_EQ(comparator.SearchMargins[1], -14);
    comparator.AlignerSearchRange(-20, -10, 25, 15, 0, std::nan(""), 1, 1);
    EXPECT_EQ(Code(), OutOfRange);
    comparator.AlignerSearchRange(-20, -10, 25, 15, 0, 0, 0, 1);
    EXPECT_EQ(Code(), OutOfRange);
}

TEST_F(ComparatorTest, ShiftedImagesComeBackExactly)
{
    Comparator comparator;
    Image image, aligned;
    checks::Teach(comparator);
    for (const auto& [dx, dy] : {std::pair(0, 0), std::pair(7, -5), std::pair(-30, 30)}) {
        Paint(image, dx, dy);
        comparator.Align(image, aligned);
        ASSERT_EQ(Code(), NoError);
        EXPECT_EQ(int(aligned.Width), areaWidth);
        EXPECT_EQ(int(aligned.Height), areaHeight);
        EXPECT_EQ(WorstError(aligned, comparator, 0), 0) << dx;
        EXPECT_FALSE(comparator.Overrun);
        EXPECT_EQ(comparator.Clip().Area(), areaWidth * areaHeight);
        comparator.UpdateRanges();
    }
    EXPECT_NEAR(comparator.MinShiftX, -30, 0.1);
    EXPECT_NEAR(comparator.MaxShiftX, 7, 0.1);
    EXPECT_NEAR(comparator.MinShiftY, -5, 0.1);
    EXPECT_NEAR(comparator.MaxShiftY, 30, 0.1);
    EXPECT_EQ(double(comparator.MaxScaling), 1);
    comparator.UpdateRanges(1);
    EXPECT_EQ(Code(), OutOfRange);
    comparator.ResetRanges();
    EXPECT_EQ(double(comparator.MinShiftX), 0);
    EXPECT_EQ(double(comparator.MinScaling), 0);

    // In place, and from a window of a larger store.
    Paint(image, 7, -5);
    comparator.Align(image, image);
    EXPECT_EQ(WorstError(image, comparator, 0), 0);
    Image store;
    store.Set(checks::pictureWidth + 60, checks::pictureHeight + 40, Gray);
    store.Window(60, 40, checks::pictureWidth, checks::pictureHeight);
    Paint(image, 3, 4);
    for (int y = 0; y < image.Height; y++)
        std::copy_n(image.Row(y), checks::pictureWidth, store.Row(y));
    comparator.Align(store, aligned);
    EXPECT_EQ(WorstError(aligned, comparator, 0), 0);
    comparator.UpdateRanges();
    EXPECT_NEAR(comparator.MaxShiftX, 3, 0.1);
    comparator.InstanceIndex = 2;
    comparator.Align(image, aligned);
    EXPECT_EQ(Code(), OutOfRange);
    EXPECT_NE(Message().find(L"The Instance index (2) must be All or in range [0..0]"), std::wstring::npos);
}

TEST_F(ComparatorTest, WhatLiesOutsideOfTheSourceIsGrayAndNotCompared)
{
    Comparator comparator;
    Image image, aligned, painted;
    checks::Teach(comparator);
    comparator.AlignerSearchRange(-50, -50, 50, 50, 0, 0, 1, 1);
    comparator.StraightTolerancing(0, 0);
    Paint(image, 40, -35);
    comparator.Align(image, aligned);
    ASSERT_EQ(Code(), NoError);
    EXPECT_TRUE(comparator.Overrun);
    // Eight columns at the right and three rows at the top.
    EXPECT_EQ(comparator.Clip().Area(), (areaWidth - 8) * (areaHeight - 3));
    EXPECT_EQ(int(comparator.Clip().NumRuns), areaHeight - 3);
    for (int y = 0; y < areaHeight; y++)
        for (int x = 0; x < areaWidth; x++) {
            const bool covered = x < areaWidth - 8 && y >= 3;
            const int wanted = covered ? comparator.Reference.Row(areaY + y)[areaX + x] : 128;
            ASSERT_EQ(aligned.Row(y)[x], wanted) << x << ' ' << y;
        }
    Blobs blobs;
    comparator.Differences(aligned, blobs, 1);
    EXPECT_EQ(int(blobs.NumBlobs), 0);
    Histogram dark, light;
    comparator.Differences(aligned, dark, light);
    EXPECT_EQ(Code(), NoError) << "a shift may overrun";
    Paint(image);
    comparator.Align(image, aligned);
    EXPECT_FALSE(comparator.Overrun);
}

TEST_F(ComparatorTest, TurnedImagesAreTurnedBack)
{
    Comparator comparator;
    Image image, aligned;
    checks::Teach(comparator);
    comparator.AlignerTrainROI(Limits(60, 50, 80, 60));
    comparator.AlignerSearchRange(-16, -16, 16, 16, -12, 12, 1, 1);
    comparator.TrainAligners();
    Paint(image, 4, -3, 8);
    comparator.Align(image, aligned);
    ASSERT_EQ(Code(), NoError);
    // Angles lie on the grid of the search, whose step moves a point by a pixel on the average.
    EXPECT_LE(WorstError(aligned, comparator, 12), 16);
    comparator.UpdateRanges();
    EXPECT_NEAR(std::abs(comparator.MinRotation + comparator.MaxRotation), 8, 0.5);
    EXPECT_NEAR(comparator.MaxShiftX, 4, 0.2);

    // Without gain compensation the error is that of the light.
    Paint(image, 4, -3, 8, Gray, 0.8, 15);
    comparator.Align(image, aligned);
    const int plain = WorstError(aligned, comparator, 12);
    comparator.GainCompensation = true;
    comparator.Align(image, aligned);
    EXPECT_GT(plain, 22);
    EXPECT_LE(WorstError(aligned, comparator, 12), 18);

    // So far aside that a part is missing; histograms are refused then.
    comparator.AlignerSearchRange(-45, -45, 45, 45, -12, 12, 1, 1);
    comparator.StraightTolerancing(255, 0);
    Paint(image, 38, 0, 5);
    comparator.Align(image, aligned);
    ASSERT_EQ(Code(), NoError);
    EXPECT_TRUE(comparator.Overrun);
    EXPECT_LT(comparator.Clip().Area(), areaWidth * areaHeight);
    EXPECT_EQ(aligned.Row(50)[areaWidth - 1], 128);
    Histogram dark, light;
    comparator.Differences(aligned, dark, light);
    EXPECT_EQ(Code(), CannotPerform);
    EXPECT_NE(Message().find(L"When overrun occurs, you must pas the overrun mask to this function"),
              std::wstring::npos);
}

TEST_F(ComparatorTest, SeveralAlignersTellTheModelTogether)
{
    Comparator comparator;
    Image image, aligned;
    image.Set(520, 320, Gray);
    const auto paint = [&](double dx, double dy, double degrees) {
        const double c = std::cos(degrees * 0.017453292519943295), s = std::sin(degrees * 0.017453292519943295);
        for (int y = 0; y < 320; y++)
            for (int x = 0; x < 520; x++) {
                const double u = x - 260 - dx, v = y - 160 - dy;
                image.Row(y)[x] =
                    static_cast<std::uint8_t>(checks::Shade(70 + 0.6 * (c * u - s * v), 80 + 0.6 * (s * u + c * v)));
            }
    };
    paint(0, 0, 0);
    comparator.SetReference(image, 2, 1, Similarity);
    ASSERT_EQ(Code(), NoError);
    comparator.AlignerSearchRange(-20, -20, 20, 20, -5, 5, 1, 1);
    comparator.TrainAligners();
    paint(6, 9, 3);
    comparator.Align(image, aligned);
    ASSERT_EQ(Code(), NoError) << std::string(Message().begin(), Message().end());
    int worst = 0;
    for (int y = 20; y < aligned.Height - 20; y++)
        for (int x = 20; x < aligned.Width - 20; x++)
            worst = std::max(worst, std::abs(aligned.Row(y)[x] - comparator.Reference.Row(32 + y)[32 + x]));
    EXPECT_LE(worst, 6);
    comparator.UpdateRanges(2);
    EXPECT_EQ(Code(), OutOfRange);
    EXPECT_NE(Message().find(L"For composite alignment, the Instance index 2 must be 0 or All"), std::wstring::npos);
    comparator.UpdateRanges(-1);
    EXPECT_EQ(Code(), NoError);
    EXPECT_GT(comparator.MaxShiftY, 5);

    // Half of the picture without any contrast: one aligner of two finds nothing.
    for (int y = 0; y < 320; y++)
        std::fill_n(image.Row(y) + 260, 260, std::uint8_t{90});
    comparator.Align(image, aligned);
    EXPECT_EQ(Code(), CannotPerform);
    EXPECT_NE(Message().find(L"The Similarity alignment model requires at least 2 aligners and 1 found a match"),
              std::wstring::npos);
    comparator.InstanceIndex = 1;
    comparator.Align(image, aligned);
    EXPECT_NE(Message().find(L"Not all 2 aligners found an instance, composite alignment is not possible"),
              std::wstring::npos);
}

TEST_F(ComparatorTest, DetectorsLimitWhatIsCompared)
{
    Comparator comparator;
    Image image, aligned;
    Blobs blobs;
    checks::Teach(comparator);
    comparator.StraightTolerancing(2, 0);
    comparator.RemoveDetectorROI();
    EXPECT_EQ(Code(), OutOfRange);
    EXPECT_NE(Message().find(L"No inspect has been defined - Use AddDetectorROI"), std::wstring::npos);
    EXPECT_EQ(comparator.AppendDetectorROI(Limits(10, 20, 30, 10)), 1);
    EXPECT_EQ(comparator.AppendDetectorROI(Limits(30, 25, 30, 10)), 2);
    EXPECT_EQ(comparator.AppendDetectorROI(Limits(30, 25, 0, 10)), -1);
    EXPECT_EQ(Code(), OutOfRange);
    EXPECT_EQ(int(comparator.NumDetectors), 3);
    Paint(image);
    comparator.Align(image, aligned);
    EXPECT_EQ(comparator.Clip().Area(), 300 + 300 - 50);
    for (const auto& [x, y] : {std::pair(15, 22), std::pair(100, 50)})
        for (int j = 0; j < 3; j++)
            for (int i = 0; i < 3; i++)
                aligned.Row(y + j)[x + i] = 0;
    comparator.Differences(aligned, blobs);
    ASSERT_EQ(int(blobs.NumBlobs), 1);
    EXPECT_EQ(blobs.FirstPixel(0).X, 15);
    comparator.DetectorIndex = 3;
    comparator.RemoveDetectorROI();
    EXPECT_NE(Message().find(L"The detector index (3) must be in range [0..2]"), std::wstring::npos);
    comparator.DetectorIndex = 0;
    comparator.RemoveDetectorROI();
    EXPECT_EQ(Code(), OutOfRange);
    comparator.DetectorIndex = 1;
    comparator.RemoveDetectorROI();
    EXPECT_EQ(int(comparator.NumDetectors), 2);
    comparator.Align(image, aligned);
    EXPECT_EQ(comparator.Clip().Area(), 300);
}

TEST_F(ComparatorTest, ROIsAreHitAndDragged)
{
    Comparator comparator;
    checks::Teach(comparator);
    comparator.AppendDetectorROI(Limits(10, 10, 40, 20)); // at 42, 42 of the reference
    Graph::Zoom = 2;
    EXPECT_EQ(comparator.HitROI(2 * 60, 2 * 50, 7), AllHandle);
    EXPECT_EQ(comparator.HitType, Detect);
    EXPECT_EQ(int(comparator.HitIndex), 1);
    comparator.DragROI(2 * 65, 2 * 53);
    comparator.DetectorIndex = 1;
    ExpectBox(comparator.DetectorROI(), 15, 13, 40, 20);
    comparator.DragROI(2 * 300, 2 * 53);
    ExpectBox(comparator.DetectorROI(), areaWidth - 40, 13, 40, 20);
    EXPECT_EQ(comparator.HitROI(2 * 82 + 1, 2 * 72 + 1, Train), NWHandle);
    comparator.DragROI(2 * 70, 2 * 60);
    ExpectBox(comparator.AlignerTrainROI(), 70, 60, 48, 28);
    // The search ROI is behind the train ROI, the working area behind all.
    EXPECT_EQ(comparator.HitROI(2 * 55, 2 * 80, 7), AllHandle);
    EXPECT_EQ(comparator.HitType, Search);
    EXPECT_EQ(comparator.HitROI(2 * 168, 2 * 120, 7), EHandle);
    EXPECT_EQ(comparator.HitType, Detect);
    EXPECT_EQ(int(comparator.HitIndex), 0);
    comparator.DragROI(2 * 150, 2 * 120);
    comparator.DetectorIndex = 0;
    ExpectBox(comparator.DetectorROI(), areaX, areaY, 150 - areaX + 1, areaHeight);
    EXPECT_EQ(comparator.HitROI(2 * 190, 2 * 150, 7), NoHandle);
    comparator.DragROI(0, 0);
    ExpectBox(comparator.DetectorROI(), areaX, areaY, 150 - areaX + 1, areaHeight);
}

} // namespace
} // namespace Tesk
