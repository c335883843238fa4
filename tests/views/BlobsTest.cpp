// Blobs and regions on their picture, and the table of what is measured of blobs.
#include "tests/views/ObjectTest.h"

#include "measure/Blobs.h"
#include "measure/Quad.h"
#include "workbench/views/objects/GenericFeaturesController.h"

#include <QClipboard>
#include <QHeaderView>
#include <QSignalSpy>

#include <algorithm>
#include <iterator>

namespace TeskPlus {

namespace {

/// What the colors of the library are on the screen: two bits each of red, green and blue, red lowest.
constexpr QRgb ScreenColor(int code)
{
    return static_cast<QRgb>((code & 3) * 85 << 16 | (code >> 2 & 3) * 85 << 8 | (code >> 4 & 3) * 85);
}
constexpr QRgb hitColor = ScreenColor(48), selectedColor = ScreenColor(12), otherColor = ScreenColor(3);

class BlobViews : public ObjectTest
{
protected:
    /// Three bright rectangles, of 100, 200 and 25 pixels, on a dark picture shown at 4:1.
    BlobViews()
    {
        Image image;
        image.Set(100, 80, Gray);
        for (int y = 0; y < image.Height; y++)
            std::fill_n(image.Row(y), int{image.Width}, std::uint8_t{20});
        for (const QRect& box : boxes)
            for (int y = box.top(); y <= box.bottom(); y++)
                std::fill_n(image.Row(y) + box.left(), box.width(), std::uint8_t{200});
        Open(image, "parts.bmp");
        Blobs::HitBlobIndex = MinInt;
    }

    void Segment()
    {
        ASSERT_TRUE(Add(L"Blobs", L"Automatic"));
        ASSERT_EQ(Objects().NumBlobs, 3) << StatusText().toStdString();
    }

    Blobs& Objects() { return Value<Blobs>(L"Blobs0"); }
    void Push() { Controller(L"Blobs0").UpdateControl(false, false); }
    FeaturesGrid& Table() { return *Part<FeaturesGrid>("Blobs0", "FeaturesGrid"); }
    QStringList Row(int place)
    {
        QStringList cells;
        for (int column = 0; column < Table().model()->columnCount(); column++)
            cells << Table().model()->index(place, column).data().toString();
        return cells;
    }
    /// The places of the selected rows.
    std::vector<int> SelectedRows()
    {
        std::vector<int> rows;
        for (const QModelIndex& row : Table().selectionModel()->selectedRows())
            rows.push_back(row.row());
        return rows;
    }
    void Check(const char* option, bool checked) { Part<QCheckBox>("Blobs0", option)->setChecked(checked); }

    /// How many pixels on and next to a blob have a color, with `Inside` only those well within it.
    int CountOf(int blob, QRgb color, bool inside = false)
    {
        const QImage image = Picture("Image0")->grab().toImage();
        const QRect& box = boxes[blob];
        const int margin = inside ? -6 : 4;
        const QRect area = QRect(box.topLeft() * 4, box.size() * 4).adjusted(-margin, -margin, margin, margin);
        int count = 0;
        for (int y = area.top(); y <= area.bottom(); y++)
            for (int x = area.left(); x <= area.right(); x++)
                count += (image.pixel(x, y) & 0xffffff) == color;
        return count;
    }
    static QPoint MiddleOf(int blob) { return boxes[blob].center() * 4 + QPoint(2, 2); }

    /// A part of the row of an argument of the selected operation.
    template <typename T>
    T* Argument(const char* row, const char* part)
    {
        for (auto* window : form_.findChildren<OperationForm*>("OperationForm"))
            if (window->isVisible())
                if (auto* widget = window->findChild<QWidget*>(row)) return widget->findChild<T*>(part);
        return nullptr;
    }

    static constexpr QRect boxes[] = {{10, 5, 10, 10}, {40, 20, 20, 10}, {70, 60, 5, 5}};
};

TEST_F(BlobViews, ShapesAreDrawnWhereTheBlobsAreByTheirState)
{
    Segment();
    for (int blob = 0; blob < 3; blob++) {
        EXPECT_GT(CountOf(blob, selectedColor), 40) << blob;
        EXPECT_EQ(CountOf(blob, selectedColor, true), 0) << "an outline " << blob;
    }
    Check("View filled", true);
    EXPECT_EQ(CountOf(0, selectedColor), 40 * 40) << "its pixels, and no others";
    EXPECT_EQ(CountOf(2, selectedColor), 20 * 20);

    const Image& picture = Value<Image>(L"Image0");
    Objects().ByFeatureSelect(BlobArea, picture, 0, 50, Remove);
    EXPECT_EQ(CountOf(0, selectedColor), 40 * 40);
    EXPECT_EQ(CountOf(2, otherColor), 20 * 20);
    Check("View all", false);
    EXPECT_EQ(CountOf(2, otherColor), 0);
    EXPECT_EQ(CountOf(0, selectedColor), 40 * 40);
}

TEST_F(BlobViews, FeaturesAreMarkedOnceTheyAreWorkedOut)
{
    Segment();
    const Image& picture = Value<Image>(L"Image0");
    Objects().ByFeatureSelect(BlobArea, picture, 0, 50, Remove);
    const struct
    {
        Features feature;
        int selected, other;
    } cases[] = {{BlobBox, 14, 11},     {BlobCentroid, 44, 35}, {BlobFeretBox, 28, 19},  {BlobDiametralBox, 28, 19},
                 {BlobCenter, 30, 27},  {BlobEllipse, 46, 43},  {BlobEllipsoid, 60, 51}, {BlobConvexArea, 62, 59},
                 {BlobOutline, 44, 35}, {BlobPerimeter, 46, 43}};
    const Blobs bare = Objects();
    for (const auto& c : cases) {
        Objects() = bare;
        EXPECT_EQ(CountOf(0, ScreenColor(c.selected)) + CountOf(2, ScreenColor(c.other)), 0) << c.feature;
        Objects().Evaluate(c.feature, picture);
        Check("View all", true);
        EXPECT_GT(CountOf(0, ScreenColor(c.selected)), 0) << c.feature;
        EXPECT_GT(CountOf(2, ScreenColor(c.other)), 0) << c.feature;
        Check("View all", false);
        EXPECT_GT(CountOf(2, ScreenColor(c.other)), 0) << "marks stay without the shapes, " << c.feature;
    }
    EXPECT_TRUE(Graph::AutoColors);
}

TEST_F(BlobViews, APressOnABlobSelectsItsRow)
{
    Segment();
    QWidget* picture = Picture("Image0");
    QTest::mouseMove(picture, MiddleOf(1));
    EXPECT_EQ(picture->cursor().shape(), Qt::CrossCursor);
    EXPECT_EQ(Blobs::HitBlobIndex, MinInt) << "hovering selects nothing";
    QTest::mouseMove(picture, {4, 4});
    EXPECT_EQ(picture->cursor().shape(), Qt::ArrowCursor);
    EXPECT_TRUE(SelectedRows().empty());

    QTest::mouseClick(picture, Qt::LeftButton, {}, MiddleOf(1));
    QApplication::processEvents();
    EXPECT_EQ(Blobs::HitBlobIndex, 1);
    EXPECT_EQ(SelectedRows(), std::vector<int>{1});
    EXPECT_GT(CountOf(1, hitColor), 40);
    EXPECT_EQ(CountOf(0, hitColor), 0);

    // Beside the blobs nothing is pressed, and the selection stays.
    QTest::mouseClick(picture, Qt::LeftButton, {}, {4, 4});
    QApplication::processEvents();
    EXPECT_EQ(SelectedRows(), std::vector<int>{1});
}

TEST_F(BlobViews, ARowMarksItsBlobWithoutRebuildingTheTable)
{
    Segment();
    Objects().Evaluate(BlobPerimeter, Value<Image>(L"Image0"));
    Push();
    QSignalSpy rebuilt(Table().model(), &QAbstractItemModel::modelReset);
    QTest::mouseClick(Table().viewport(), Qt::LeftButton, {},
                      Table().visualRect(Table().model()->index(2, 1)).center());
    QApplication::processEvents();
    EXPECT_EQ(rebuilt.count(), 0);
    EXPECT_EQ(Blobs::HitBlobIndex, 2);
    EXPECT_EQ(SelectedRows(), std::vector<int>{2});
    EXPECT_GT(CountOf(2, hitColor), 20) << "whatever has been drawn over its outline";
}

TEST_F(BlobViews, TheTableHasAColumnForEachFeatureAndIsCopied)
{
    Segment();
    const Image& picture = Value<Image>(L"Image0");
    Objects().ByFeatureSelect(BlobArea, picture, 0, 50, Remove);
    Objects().Evaluate(BlobCenter, picture);
    Push();
    QStringList heads;
    for (int column = 0; column < Table().model()->columnCount(); column++)
        heads << Table().model()->headerData(column, Qt::Horizontal).toString();
    const QStringList expected{"Index", "Class", "Area", QString::fromWCharArray(Objects().UnicodeName(BlobCenterX)),
                               QString::fromWCharArray(Objects().UnicodeName(BlobCenterY))};
    EXPECT_EQ(heads, expected);
    EXPECT_EQ(Row(0), QStringList({"0", "0", "100", "14.5", "9.5"}));
    EXPECT_EQ(Row(1), QStringList({"1", "0", "200", "49.5", "24.5"}));
    // The marks of its center have had that of the deselected one worked out, or it is empty.
    EXPECT_EQ(Row(2).mid(0, 3), QStringList({"2", "0", "25"}));

    emit Table().customContextMenuRequested({5, 5});
    QMenu* menu = OpenMenu("FeaturesMenu");
    ASSERT_TRUE(menu);
    EXPECT_EQ(menu->actions().front()->text(), "&Copy to Clipboard");
    menu->actions().front()->trigger();
    menu->close();
    const QStringList lines = QApplication::clipboard()->text().split("\r\n");
    ASSERT_EQ(lines.size(), 5);
    EXPECT_EQ(lines[0], expected.join('\t'));
    EXPECT_EQ(lines[2], "1\t0\t200\t49.5\t24.5");
}

TEST_F(BlobViews, AHeadSortsAndTheSelectionFollowsItsBlob)
{
    Segment();
    Blobs::HitBlobIndex = 0;
    Push();
    EXPECT_EQ(SelectedRows(), std::vector<int>{0});
    Table().sortByColumn(2, Qt::DescendingOrder);
    EXPECT_EQ(Row(0)[2], "200");
    EXPECT_EQ(Row(2)[2], "25");
    EXPECT_EQ(SelectedRows(), std::vector<int>{1}) << "the blob of 100 pixels";
    emit Table().clicked(Table().model()->index(2, 0));
    EXPECT_EQ(Blobs::HitBlobIndex, 2);
    Table().sortByColumn(2, Qt::AscendingOrder);
    EXPECT_EQ(SelectedRows(), std::vector<int>{0});
    // A press on a head sorts, and a third one brings back the order of the blobs.
    QHeaderView& head = *Table().horizontalHeader();
    const QPoint area(head.sectionViewportPosition(2) + 10, head.height() / 2);
    QTest::mouseClick(head.viewport(), Qt::LeftButton, {}, area);
    EXPECT_EQ(Row(0)[2], "200");
    QTest::mouseClick(head.viewport(), Qt::LeftButton, {}, area);
    EXPECT_EQ(Row(0)[0], "0");
    EXPECT_EQ(SelectedRows(), std::vector<int>{2});
}

TEST_F(BlobViews, AnIndexGoesUpToTheLastBlob)
{
    Segment();
    ASSERT_TRUE(Add(L"Blobs", L"Convexify"));
    auto* last = Argument<QSpinBox>("BlobIndex", "Nth");
    ASSERT_TRUE(last);
    EXPECT_EQ(last->maximum(), 2);
    EXPECT_FALSE(last->isEnabled()) << "a group is chosen";
    // An object of another class reaches those of its argument.
    ASSERT_TRUE(Add(L"Region", L"Automatic"));
    ASSERT_TRUE(Add(L"Region", L"Blobs")) << StatusText().toStdString();
    last = Argument<QSpinBox>("BlobIndex", "Nth");
    ASSERT_TRUE(last);
    EXPECT_EQ(last->maximum(), 2);
    EXPECT_EQ(StatusText(), "");
}

TEST_F(BlobViews, BoundsThatAreLeftAloneExcludeNothing)
{
    Segment();
    for (const wchar_t* method : {L"Fractional Feature", L"Whole-Number Feature"}) {
        ASSERT_TRUE(Add(L"Blobs", method));
        EXPECT_EQ(StatusText(), "");
        EXPECT_EQ(Objects().NumSelectedBlobs, 3);
    }
}

TEST_F(BlobViews, RegionsTakeColorsInTurn)
{
    ASSERT_TRUE(Add(L"Region", L"Automatic"));
    QWidget* picture = Picture("Image0");
    const std::vector<QRgb> cycle{ScreenColor(3),  ScreenColor(12), ScreenColor(48),
                                  ScreenColor(60), ScreenColor(51), ScreenColor(15)};
    const auto colorOf = [&](QPoint at) {
        const QRgb color = PixelOf(picture, at);
        return std::find(cycle.begin(), cycle.end(), color) - cycle.begin();
    };
    const auto first = colorOf(MiddleOf(0));
    ASSERT_LT(first, 6) << "the blob is painted";
    for (int i = 1; i <= 6; i++)
        EXPECT_EQ(colorOf(MiddleOf(i % 3)), (first + i) % 6);
    EXPECT_EQ(colorOf({4, 4}), 6) << "what lies outside is not";
    EXPECT_TRUE(Part<QWidget>("Region0", "NumRuns")) << "its sheet";
}

TEST_F(BlobViews, AQuadStartsInTheMiddleOfThePictureOfItsRegion)
{
    ASSERT_TRUE(Add(L"Region", L"Automatic"));
    ASSERT_TRUE(Add(L"Region", L"Quad")) << StatusText().toStdString();
    EXPECT_EQ(StatusText(), "");
    const Quad* quad = nullptr;
    for (AnyVariable* variable : form_.GetEngine().GetVariables(-1, 0, true))
        if (auto* found = dynamic_cast<Var<Quad>*>(variable)) quad = &found->Value;
    ASSERT_TRUE(quad);
    EXPECT_EQ(quad->X, 25);
    EXPECT_EQ(quad->Y, 20);
    EXPECT_EQ(quad->Width, 50);
    EXPECT_EQ(quad->Height, 40);
}

} // namespace

} // namespace TeskPlus
