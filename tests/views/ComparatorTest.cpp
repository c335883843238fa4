// Comparators in the workbench: their ROIs on the picture that is aligned, and what differs on the aligned one.
#include "tests/views/ObjectTest.h"

#include "gauge/Comparator.h"
#include "samples/Labels.h"
#include "workbench/views/FileDialogs.h"

#include <QComboBox>
#include <QPushButton>

namespace TeskPlus {

namespace {

class ComparatorViews : public ObjectTest
{
protected:
    /// A label on which a dot is missing, shown at 1:1, and a comparator that was taught good ones.
    void OpenLabel()
    {
        scene::Noise noise;
        Comparator comparator;
        labels::Teach(6, noise, comparator);
        const QString model = folder_.filePath("label.cmp"), path = folder_.filePath("label.bmp");
        comparator.Write(model.toStdString().c_str());
        labels::Label label;
        labels::Print(labels::Defect::MissingDot, 4, noise, label, 6, 1);
        label.picture.Write(path.toStdString().c_str());
        form_.OpenImage(path);
        QApplication::processEvents();
        FileDialogs::Pending() = QStringList{model};
        ASSERT_TRUE(Add(L"Comparator", L"Read  from File"));
        ASSERT_TRUE(Add(L"Comparator", L"Align")) << StatusText().toStdString();
        ASSERT_EQ(StatusText(), "");
    }
    Comparator& Shown() { return Value<Comparator>(L"Comparator0"); }
    Limits SearchROI(int aligner)
    {
        Comparator& comparator = Shown();
        comparator.AlignerIndex = aligner;
        const Limits roi = comparator.AlignerSearchROI();
        comparator.AlignerIndex = -1;
        return roi;
    }
    Limits DetectorROI(int detector)
    {
        Comparator& comparator = Shown();
        comparator.DetectorIndex = detector;
        return comparator.DetectorROI();
    }
    void Press(const char* button)
    {
        auto* found = Part<QPushButton>("Comparator0", button);
        ASSERT_TRUE(found) << button;
        found->click();
        QApplication::processEvents();
        EXPECT_EQ(StatusText(), "");
    }
    QString Phase()
    {
        const auto* box = Part<QWidget>("Comparator0", "Mode")->findChild<QComboBox*>();
        return box ? box->currentText() : QString();
    }
};

constexpr QRgb blue = 0x0000ff, green = 0x00ff00, yellow = 0xffff00, cyan = 0x00ffff, red = 0xff0000;

TEST_F(ComparatorViews, ROIsAreDrawnAndDraggedAndTheImageIsAlignedAnew)
{
    OpenLabel();
    EXPECT_GT(ColorOf(green, "Image0"), 800) << "two patterns";
    EXPECT_GT(ColorOf(yellow, "Image0"), 1000) << "where they are searched";
    EXPECT_GT(ColorOf(blue, "Image0"), 1000) << "the working area";
    EXPECT_EQ(ColorOf(cyan, "Image0"), 0);
    EXPECT_EQ(Phase(), "Aligned");
    ASSERT_TRUE(Picture("Aligned0"));

    const Limits before = SearchROI(0);
    const auto corner = [&] {
        const Limits roi = SearchROI(0);
        return QPoint(roi.X + roi.Width - 1, roi.Y + roi.Height - 1);
    };
    const QPoint start = corner();
    Drag(Picture("Image0"), start, start - QPoint(6, 4));
    EXPECT_EQ(SearchROI(0).Width, before.Width - 6);
    EXPECT_EQ(SearchROI(0).Height, before.Height - 4);
    EXPECT_EQ(SearchROI(0).X, before.X) << "the other corner stays";
    EXPECT_EQ(StatusText(), "");
    EXPECT_EQ(Phase(), "Aligned");

    // Narrower than the pattern, it is told; and dragged back. Its corner stays below the pattern, which goes first.
    Drag(Picture("Image0"), corner(), QPoint(before.X + 100, corner().y()));
    EXPECT_NE(StatusText(), "");
    EXPECT_NE(Phase(), "Aligned");
    Drag(Picture("Image0"), corner(), start);
    EXPECT_EQ(StatusText(), "");
    EXPECT_EQ(Phase(), "Aligned");
}

TEST_F(ComparatorViews, DetectorsAreAddedDraggedAndRemovedAndDifferencesStandOnTheAlignedPicture)
{
    OpenLabel();
    Press("Add Detector");
    ASSERT_EQ(Shown().NumDetectors, 2);
    EXPECT_GT(ColorOf(cyan, "Image0"), 400);
    const Limits area = DetectorROI(0), detector = DetectorROI(1);
    EXPECT_EQ(detector.Width, area.Width / 2);
    // Held in its middle.
    const QPoint middle(area.X + detector.X + detector.Width / 2, area.Y + detector.Y + detector.Height / 2);
    Drag(Picture("Image0"), middle, middle + QPoint(-8, 12));
    EXPECT_EQ(DetectorROI(1).X, detector.X - 8);
    EXPECT_EQ(DetectorROI(1).Y, detector.Y + 12);
    EXPECT_EQ(DetectorROI(1).Width, detector.Width);

    ASSERT_TRUE(Add(L"Comparator", L"Show Differences")) << StatusText().toStdString();
    EXPECT_EQ(StatusText(), "");
    EXPECT_EQ(Phase(), "Inspected");
    EXPECT_EQ(Shown().NumDetectors, 2);
    EXPECT_GT(ColorOf(red, "Aligned0"), 60) << "a dot of radius 6 is missing";
    EXPECT_GT(ColorOf(cyan, "Aligned0"), 400);
    EXPECT_GT(ColorOf(red, "Differences0"), 60);

    Press("Remove Detector");
    EXPECT_EQ(Shown().NumDetectors, 1);
    EXPECT_EQ(ColorOf(cyan, "Aligned0"), 0);
    EXPECT_GT(ColorOf(red, "Aligned0"), 60);
}

TEST_F(ComparatorViews, APatternThatIsDraggedIsLearnedWhenTold)
{
    OpenLabel();
    Comparator& comparator = Shown();
    comparator.AlignerIndex = 0;
    const Limits before = comparator.AlignerTrainROI();
    comparator.AlignerTrainROI(Limits(before.X, before.Y, before.Width - 20, before.Height));
    comparator.AlignerIndex = -1;
    const auto learned = [&] { return int{Shown().Aligner(0).TemplateImage().Width}; };
    EXPECT_EQ(learned(), before.Width);
    Press("Train Aligners");
    EXPECT_EQ(learned(), before.Width - 20);
    EXPECT_EQ(Phase(), "Aligned");
    form_.Handler().DoRun(nullptr, nullptr, true, false, false, false);
    EXPECT_EQ(learned(), before.Width - 20) << "after each run";
}

} // namespace

} // namespace TeskPlus
