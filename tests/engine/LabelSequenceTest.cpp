// A whole job as a sequence: a comparator that has been taught good labels is read, and tells the defects of others.
#include "engine/Sequence.h"
#include "gauge/Comparator.h"
#include "image/Histogram.h"
#include "measure/Blobs.h"
#include "samples/Labels.h"

#include <cstddef>
#include <string>

using namespace TeskTests;

namespace {

class LabelSequence : public SequenceWithFiles
{
protected:
    static Comparator& ComparatorOf(const Operation& operation) { return Value<Comparator>(operation, L"Comparator"); }
    /// Reading, alignment and what tells the differences, for a comparator that was taught few labels.
    void Build()
    {
        constexpr int samples = 12;
        Comparator taught;
        labels::Teach(samples, noise_, taught);
        taught.Write(File("label.cmp").c_str());
        ASSERT_EQ(Status::Error().Code, NoError) << Status::AsciiError();
        image_ = &Append(L"Image", L"Read  from File");
        read_ = &Append(L"Comparator", L"Read  from File");
        SetPath(*read_, File("label.cmp"));
        align_ = &Append(L"Comparator", L"Align");
        segment_ = &Append(L"Comparator", L"Segment Differences");
        Value<int>(*segment_, L"MinimumArea") = labels::leastDefect;
        boxes_ = &Append(L"Blobs", L"Evaluate");
        Value<Features>(*boxes_, L"Feature") = BlobBox;
    }
    void Show(labels::Label& label)
    {
        label.picture.Write(File("label.png").c_str());
        SetPath(*image_, File("label.png"));
        Run();
    }
    labels::Verdict Verdict(const labels::Label& label)
    {
        Comparator& comparator = ComparatorOf(*align_);
        comparator.DetectorIndex = 0;
        return labels::Judge(label, comparator.DetectorROI(), Value<Blobs>(*boxes_, L"Blobs"));
    }

    scene::Noise noise_;
    Operation *image_ = nullptr, *read_ = nullptr, *align_ = nullptr, *segment_ = nullptr, *boxes_ = nullptr;
};

TEST_F(LabelSequence, TellsTheDefectsOfLabelsAndNothingElse)
{
    Build();
    unsigned place = 11;
    for (const labels::Defect defect : {labels::Defect::None, labels::Defect::MissingDot, labels::Defect::Smear,
                                        labels::Defect::None, labels::Defect::WrongLetter, labels::Defect::Scratch}) {
        labels::Label label;
        labels::Print(defect, place += 37, noise_, label);
        Show(label);
        const labels::Verdict verdict = Verdict(label);
        const char* name = labels::names[static_cast<std::size_t>(defect)];
        EXPECT_EQ(verdict.isFound, defect != labels::Defect::None) << name;
        EXPECT_EQ(verdict.elsewhere, 0) << name;
        EXPECT_EQ(ComparatorOf(*read_).Mode, Trained);
        EXPECT_EQ(ComparatorOf(*align_).Mode, Aligned);
        EXPECT_EQ(ComparatorOf(*segment_).Mode, Inspected);
        EXPECT_TRUE(ComparatorOf(*align_).GainCompensation) << "as the file says, though it was read later";
    }
}

TEST_F(LabelSequence, PaintsCountsAndKeepsCountOfTheMotion)
{
    Build();
    Operation &paint = Append(L"Comparator", L"Show Differences"), &count = Append(L"Comparator", L"Count Differences");
    for (Operation* operation : {&paint, &count})
        engine_.ReplaceOperationArgument(IndexOf(*operation), 1, align_->Args.back().Variable);
    labels::Label label;
    labels::Print(labels::Defect::MissingDot, 4, noise_, label, 4, 1);
    Show(label);
    const Image& painted = Value<Image>(paint, L"Dst");
    ASSERT_EQ(PixelTypes(painted.Type), Rgb);
    int light = 0;
    for (int y = 0; y < painted.Height; y++)
        for (int x = 0; x < painted.Width; x++)
            light += painted.PixelRgb(x, y) == Comparator::TooLightColor;
    EXPECT_GT(light, 60) << "most of a disk of radius 6 that is not there";
    const Histogram& excess = Value<Histogram>(count, L"Light");
    int counted = 0;
    for (int level = 1; level < 256; level++)
        counted += excess.Sample(level);
    EXPECT_EQ(counted, light);

    Operation& update = Append(L"Comparator", L"Update Ranges");
    Run();
    const Comparator& moved = ComparatorOf(update);
    EXPECT_GT(moved.MaxShiftX - moved.MinShiftX, 0.1);
    EXPECT_LT(moved.MaxShiftX - moved.MinShiftX, 10);
}

TEST_F(LabelSequence, DetectorsOfOneUseStayUntilTheComparatorIsReadAnew)
{
    Build();
    labels::Label label;
    labels::Print(labels::Defect::MissingDot, 4, noise_, label);
    Show(label);
    ASSERT_TRUE(Verdict(label).isFound);
    // Inspected is the bar alone, far from the dots.
    Comparator& comparator = ComparatorOf(*align_);
    comparator.DetectorIndex = 0;
    const Limits area = comparator.DetectorROI();
    comparator.AppendDetectorROI(Limits(labels::barX - area.X, labels::barY - area.Y, labels::barWidth, 16));
    for (int i = 0; i < 2; i++) {
        engine_.ChangeVariable(align_->Args[0].Variable);
        Run();
        EXPECT_EQ(comparator.NumDetectors, 2);
        EXPECT_EQ(Value<Blobs>(*boxes_, L"Blobs").NumBlobs, 0);
    }
    EXPECT_EQ(ComparatorOf(*read_).NumDetectors, 1);
    EXPECT_EQ(ComparatorOf(*segment_).NumDetectors, 2) << "what follows goes on from there";
    labels::Label scratched;
    labels::Print(labels::Defect::Scratch, 4, noise_, scratched);
    Show(scratched);
    EXPECT_TRUE(Verdict(scratched).isFound);

    // A detector is dragged while the sequence runs after each move.
    const int x = labels::barX + labels::barWidth / 2, y = labels::barY + 8;
    ASSERT_EQ(comparator.HitROI(x, y, Detect), AllHandle);
    ASSERT_EQ(comparator.HitIndex, 1);
    for (int i = 1; i <= 3; i++) {
        comparator.DragROI(x, y - 2 * i);
        engine_.ChangeVariable(align_->Args[0].Variable);
        Run();
    }
    comparator.DetectorIndex = 1;
    EXPECT_EQ(comparator.DetectorROI().Y, labels::barY - area.Y - 6);

    Comparator other(ComparatorOf(*read_));
    other.AppendDetectorROI(Limits(0, 0, 30, 30));
    other.AppendDetectorROI(Limits(40, 0, 30, 30));
    other.Write(File("label.cmp").c_str());
    engine_.ChangeOperation(IndexOf(*read_));
    Run();
    EXPECT_EQ(comparator.NumDetectors, 3);
}

} // namespace
