// Readers of characters on their picture: boxes and what was read, the table of the characters, and the view of the
// font.
#include "tests/views/ObjectTest.h"

#include "foundation/Graph.h"
#include "image/Operator.h"
#include "read/CharReader.h"
#include "workbench/views/objects/GenericFeaturesController.h"
#include "workbench/views/picture/GraphSurface.h"

#include <QLineEdit>
#include <QPushButton>

#include <stdexcept>
#include <string>
#include <vector>

namespace TeskPlus {

namespace {

constexpr QRgb green = 0x00ff00, red = 0xff0000, blue = 0x0000ff, magenta = 0xff00ff;
constexpr const char* printed = "48A3 7";
constexpr int pitch = 26, left = 30, middle = 50;

class CharViews : public ObjectTest
{
protected:
    /// Dark characters in a grid on white, shown at 4:1.
    CharViews()
    {
        Image image;
        image.Set(190, 100, Gray);
        Operator::Copy(255, image);
        {
            const GraphSettings kept;
            Graph::BeginImageTarget(image);
            Graph::Zoom = 1;
            Graph::TextColor = Black;
            Graph::FillColor = NoColor;
            Graph::TextAlignX = Graph::TextAlignY = 0;
            Graph::FontName = L"DejaVu Sans Mono";
            Graph::FontSize = 44;
            for (int i = 0; printed[i]; i++)
                if (printed[i] != ' ')
                    Graph::Text(left + pitch * i, middle, std::wstring(1, static_cast<wchar_t>(printed[i])).c_str());
            Graph::EndImageTarget(image);
        }
        Open(image, "text.bmp");
    }

    /// Segmented, and trained by the text that is typed.
    void Train()
    {
        ASSERT_TRUE(Add(L"CharReader", L"Segment Characters")) << StatusText().toStdString();
        ASSERT_EQ(Reader().NumChars, 5) << StatusText().toStdString();
        ASSERT_TRUE(Add(L"CharReader", L"Train Font"));
        Type("48A37");
        Apply();
        ASSERT_EQ(StatusText(), "");
        ASSERT_EQ(Reader().NumFontChars, 5);
    }
    void TrainAndRead()
    {
        Train();
        ASSERT_TRUE(Add(L"CharReader", L"Read Characters"));
        ASSERT_EQ(StatusText(), "");
        ASSERT_EQ(std::string(Reader().AsciiString), "48A3 7");
    }

    CharReader& Reader() { return Value<CharReader>(L"CharReader0"); }
    OperationForm& Panel()
    {
        for (auto* window : form_.findChildren<OperationForm*>("OperationForm"))
            if (window->isVisible()) return *window;
        throw std::runtime_error("no operation is selected");
    }
    void Type(const QString& text)
    {
        auto* row = Panel().findChild<QWidget*>("Codes");
        ASSERT_TRUE(row);
        TypeInto(row->findChild<QLineEdit*>(), text);
    }
    static void TypeInto(QLineEdit* edit, const QString& text)
    {
        ASSERT_TRUE(edit);
        edit->selectAll();
        QTest::keyClicks(edit, text);
        QApplication::processEvents();
    }
    /// The value that a row of the sheet shows, without an input.
    QString Output(const char* row)
    {
        QString shown;
        for (auto* label : Part<QWidget>("CharReader0", row)->findChildren<QLabel*>())
            shown = label->text();
        return shown;
    }
    void Apply()
    {
        for (auto* button : Panel().findChildren<QAbstractButton*>())
            if (button->text().contains("Apply") || button->objectName().contains("Apply")) {
                button->click();
                QApplication::processEvents();
                return;
            }
        ADD_FAILURE() << "no button to apply";
    }
    /// On the screen, with its surroundings.
    static QRect AreaOf(int place) { return {4 * (left + pitch * place) - 52, 4 * middle - 80, 104, 160}; }
    static QPoint MiddleOf(int place) { return {4 * (left + pitch * place), 4 * middle}; }

    FeaturesGrid& Table() { return *Part<FeaturesGrid>("CharReader0", "FeaturesGrid"); }
    QString Cell(int row, int column) { return Table().model()->index(row, column).data().toString(); }
    std::vector<int> SelectedRows()
    {
        std::vector<int> rows;
        for (const QModelIndex& row : Table().selectionModel()->selectedRows())
            rows.push_back(row.row());
        return rows;
    }
    void Show(const char* page)
    {
        auto* tabs = Part<QTabBar>("CharReader0", "PageTabs");
        ASSERT_TRUE(tabs);
        for (int i = 0; i < tabs->count(); i++)
            if (tabs->tabText(i) == page) tabs->setCurrentIndex(i);
        QApplication::processEvents();
    }
    GraphWidget& FontView() { return *Part<GraphWidget>("CharReader0", "Plot"); }
    static int ColorOf(QWidget& widget, QRgb color)
    {
        const QImage image = widget.grab().toImage();
        int count = 0;
        for (int y = 0; y < image.height(); y++)
            for (int x = 0; x < image.width(); x++)
                count += (image.pixel(x, y) & 0xffffff) == color;
        return count;
    }
};

TEST_F(CharViews, BoxesAreDrawnBeforeTheFontIsTaughtAndWhatIsReadAfterwards)
{
    ASSERT_TRUE(Add(L"CharReader", L"Segment Characters"));
    EXPECT_EQ(StatusText(), "");
    for (const int place : {0, 1, 2, 3, 5})
        EXPECT_GT(ColorIn(AreaOf(place), green), 200) << place;
    EXPECT_EQ(Table().model()->rowCount(), 5);
    EXPECT_EQ(Cell(0, 1), "") << "nothing is read yet";

    ASSERT_TRUE(Add(L"CharReader", L"Train Font"));
    Type("48A");
    Apply();
    EXPECT_TRUE(StatusText().contains("The string length (3) differs from the number of segmented characters (5)"))
        << StatusText().toStdString();
    EXPECT_EQ(Reader().NumFontChars, 0);
    Type("48A37");
    EXPECT_EQ(Reader().NumFontChars, 0) << "training waits to be told";
    Apply();
    EXPECT_EQ(StatusText(), "");
    EXPECT_EQ(Reader().NumFontChars, 5);

    ASSERT_TRUE(Add(L"CharReader", L"Read Characters"));
    EXPECT_EQ(std::string(Reader().AsciiString), "48A3 7");
    for (int row = 0; row < 5; row++) {
        EXPECT_EQ(Cell(row, 1), QString(QChar("48A37"[row])));
        EXPECT_NEAR(Cell(row, 2).toDouble(), 1, 0.001);
        EXPECT_NEAR(Cell(row, 3).toDouble(), 1, 0.001);
        // By code: 3, 4, 7, 8, A.
        EXPECT_EQ(Cell(row, 4).toInt(), (std::vector<int>{1, 3, 4, 0, 2})[static_cast<std::size_t>(row)]);
    }
}

TEST_F(CharViews, TheReadingFollowsTheSettings)
{
    TrainAndRead();
    Show("Reading");
    EXPECT_EQ(Output("AsciiString"), "48A3 7");
    auto* filter = Part<QWidget>("CharReader0", "AsciiFilter")->findChild<QLineEdit*>();
    EXPECT_EQ(filter->text(), "%*");
    // Digits alone: what stands for the letter scores badly, and is drawn in red.
    const int redBefore = ColorIn(AreaOf(2), red);
    TypeInto(filter, "%9");
    EXPECT_EQ(Reader().AsciiFilter, "%9");
    EXPECT_NE(std::string(Reader().AsciiString), "48A3 7");
    EXPECT_LT(Reader().CharScore(2), 0.9);
    EXPECT_GT(ColorIn(AreaOf(2), red), redBefore);
    EXPECT_LT(Cell(2, 2).toDouble(), 0.9) << "the table has followed";
    auto* discard = Part<QWidget>("CharReader0", "DiscardBadScores")->findChild<QCheckBox*>();
    ASSERT_TRUE(discard);
    discard->setChecked(true);
    QApplication::processEvents();
    EXPECT_EQ(std::string(Reader().AsciiString), "48?3 7");
    EXPECT_EQ(Output("AsciiString"), "48?3 7");
    EXPECT_EQ(Reader().AsciiFilter, "%9") << "it stays when the sequence runs again";
}

TEST_F(CharViews, ACharacterIsChosenOnThePictureOrInTheTable)
{
    TrainAndRead();
    QWidget* picture = Picture("Image0");
    EXPECT_TRUE(SelectedRows().empty());
    QTest::mouseMove(picture, MiddleOf(2));
    EXPECT_EQ(picture->cursor().shape(), Qt::CrossCursor);
    EXPECT_TRUE(SelectedRows().empty()) << "hovering selects nothing";
    QTest::mouseClick(picture, Qt::LeftButton, {}, MiddleOf(2));
    QApplication::processEvents();
    EXPECT_EQ(SelectedRows(), std::vector<int>{2});
    EXPECT_GT(ColorIn(AreaOf(2), blue), 200);
    EXPECT_LT(ColorIn(AreaOf(0), blue), 40);

    QTest::mouseClick(Table().viewport(), Qt::LeftButton, {},
                      Table().visualRect(Table().model()->index(0, 1)).center());
    QApplication::processEvents();
    EXPECT_EQ(SelectedRows(), std::vector<int>{0});
    EXPECT_GT(ColorIn(AreaOf(0), blue), 200);
    EXPECT_LT(ColorIn(AreaOf(2), blue), 40);
    // Beside the characters nothing is pressed.
    QTest::mouseMove(picture, {8, 8});
    EXPECT_EQ(picture->cursor().shape(), Qt::ArrowCursor);
}

TEST_F(CharViews, ACharacterOfTheFontIsChosenAndDeleted)
{
    TrainAndRead();
    Show("Font");
    GraphWidget& view = FontView();
    EXPECT_GT(ColorOf(view, green), 200) << "the outlines of the characters";
    EXPECT_EQ(ColorOf(view, red), 0);
    // The second one, of code 4, begins a width and a gap behind the first.
    const FontChar& first = Reader().FontCharAt(0);
    const QPoint second(5 + first.Sample.Width + 5 + 6, 5 + 6);
    QTest::mouseMove(&view, second);
    EXPECT_EQ(view.cursor().shape(), Qt::SizeAllCursor);
    EXPECT_EQ(ColorOf(view, red), 0) << "hovering chooses nothing";
    QTest::mouseClick(&view, Qt::LeftButton, {}, second);
    EXPECT_GT(ColorOf(view, red), 50);
    QTest::mouseClick(&view, Qt::LeftButton, {}, second);
    EXPECT_EQ(ColorOf(view, red), 0) << "a second press lets it go";
    QTest::keyClick(&view, Qt::Key_Delete);
    EXPECT_EQ(Reader().NumFontChars, 5) << "none is chosen";
    QTest::mouseClick(&view, Qt::LeftButton, {}, second);
    const QImage five = view.grab().toImage();

    emit view.customContextMenuRequested({5, 5});
    QMenu* menu = OpenMenu("PlotMenu");
    ASSERT_TRUE(menu);
    menu->actions().front()->trigger();
    menu->close();
    QApplication::processEvents();
    ASSERT_EQ(Reader().NumFontChars, 4);
    EXPECT_EQ(Reader().FontCharAt(1).Code, '7') << "4 is gone";
    EXPECT_NE(view.grab().toImage(), five);
    EXPECT_EQ(ColorOf(view, red), 0);
    EXPECT_NE(std::string(Reader().AsciiString).front(), '4') << "it can no longer be read";

    const QImage samples = view.grab().toImage();
    Part<QCheckBox>("CharReader0", "Raw")->setChecked(false);
    EXPECT_NE(view.grab().toImage(), samples) << "what is compared is smaller";
}

TEST_F(CharViews, ALayoutIsTakenAndDropped)
{
    Train();
    Show("Properties");
    auto* take = Part<QPushButton>("CharReader0", "Take Layout");
    ASSERT_TRUE(take);
    take->click();
    QApplication::processEvents();
    EXPECT_EQ(StatusText(), "");
    EXPECT_EQ(Reader().NumLayoutChars, 5);
    EXPECT_EQ(Reader().NumLayoutStrings, 2);
    EXPECT_GT(ColorIn(AreaOf(0), magenta), 0);
    Part<QPushButton>("CharReader0", "Drop Layout")->click();
    QApplication::processEvents();
    EXPECT_EQ(Reader().NumLayoutChars, 0);
    EXPECT_EQ(ColorIn(AreaOf(0), magenta), 0);
}

} // namespace

} // namespace TeskPlus
