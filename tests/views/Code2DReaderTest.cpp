// Readers of matrix codes in the workbench: what is drawn on the picture and told on the pages of the sheet.
#include "tests/views/ObjectTest.h"

#include "read/Code2DReader.h"
#include "read/matrix/Rendered.h"

#include <QComboBox>
#include <QLineEdit>

#include <string>

namespace TeskPlus {

namespace {

using Tesk::matrix::MadeNamed;

class Code2DReaderViews : public ObjectTest
{
protected:
    /// A dark code on the left, and a light one on the right; the picture is shown at 2:1.
    void OpenCodes()
    {
        using namespace Tesk::matrix;
        Image image;
        Blank(image, 320, 160);
        Paint(SymbolCells(dark), Homography::Turned({30, 50}, 5), image);
        Paint(SymbolCells(light), Homography::Turned({180, 30}, 4), image, {220, 30, 0}, 3);
        Open(image, "codes.bmp");
    }
    /// What a row of the sheet tells, whatever shows it.
    QString Told(const char* row)
    {
        QWidget* widget = Part<QWidget>("Code2DReader0", row);
        EXPECT_TRUE(widget) << row;
        QString text;
        if (!widget) return text;
        for (const auto* label : widget->findChildren<QLabel*>())
            text += label->text() + ' ';
        for (const auto* line : widget->findChildren<QLineEdit*>())
            text += line->text() + ' ';
        for (const auto* box : widget->findChildren<QComboBox*>())
            text += box->currentText() + ' ';
        return text;
    }

    const Tesk::codewords::MadeSymbol &dark = MadeNamed("digits"), &light = MadeNamed("Text, Structured Append");
    const QString darkText = QString::fromLatin1(std::string(dark.text.substr(3)).c_str()),
                  lightText = QString::fromLatin1(std::string(light.text.substr(3)).c_str());
    const QRect left{2 * 20, 2 * 40, 2 * 80, 2 * 80}, right{2 * 170, 2 * 20, 2 * 110, 2 * 110};
};

constexpr QRgb green = 0x00ff00, yellow = 0xffff00;

TEST_F(Code2DReaderViews, ACodeIsOutlinedWithItsTextAndToldOnThePagesOfTheSheet)
{
    OpenCodes();
    ASSERT_TRUE(Add(L"Code2DReader", L"Decode")) << StatusText().toStdString();
    EXPECT_EQ(StatusText(), "");
    EXPECT_GT(ColorIn(left, green), 4 * 90) << "four sides of a code of 50 pixels at 2:1";
    EXPECT_EQ(ColorIn(right, green), 0);
    EXPECT_GT(ColorIn({2 * 20, 2 * 30, 2 * 100, 2 * 19}, green), 15) << "its text, with smooth edges, stands above it";
    EXPECT_TRUE(Told("AsciiString").contains(darkText));
    EXPECT_TRUE(Told("Symbology").contains("Data Matrix"));
    EXPECT_TRUE(Told("Size").contains("10 x 10"));

    auto* tabs = Part<QTabBar>("Code2DReader0", "PageTabs");
    ASSERT_TRUE(tabs);
    ASSERT_EQ(tabs->count(), 3);
    tabs->setCurrentIndex(1);
    QApplication::processEvents();
    EXPECT_EQ(Told("AsciiGrades").trimmed().right(1), "F") << "not graded yet";
    auto* row = Part<QWidget>("Code2DReader0", "CheckQuality");
    ASSERT_TRUE(row);
    auto* check = qobject_cast<QCheckBox*>(row) ? qobject_cast<QCheckBox*>(row) : row->findChild<QCheckBox*>();
    ASSERT_TRUE(check);
    check->click();
    QApplication::processEvents();
    EXPECT_TRUE(Value<Code2DReader>(L"Code2DReader0").CheckQuality);
    const char* grades = Value<Code2DReader>(L"Code2DReader0").AsciiGrades;
    EXPECT_EQ(std::string(grades).size(), 11u);
    EXPECT_TRUE(Told("AsciiGrades").contains(grades));
    tabs->setCurrentIndex(2);
    QApplication::processEvents();
    EXPECT_TRUE(Part<QWidget>("Code2DReader0", "SymbolTotal"));
    EXPECT_EQ(StatusText(), "");
}

TEST_F(Code2DReaderViews, SeveralCodesAreReadWhenAskedForAndOneIsChosen)
{
    OpenCodes();
    ASSERT_TRUE(Add(L"Code2DReader", L"Decode"));
    auto* most = SpinBox("Code2DReader0", "MaxDecoded");
    ASSERT_TRUE(most);
    most->setValue(2);
    QApplication::processEvents();
    EXPECT_EQ(Value<Code2DReader>(L"Code2DReader0").NumDecoded, 1) << "the other one is light";
    auto* polarity = Part<QWidget>("Code2DReader0", "EnabledPolarities")->findChild<QComboBox*>();
    ASSERT_TRUE(polarity);
    const int any = polarity->findText("Auto");
    ASSERT_GE(any, 0);
    polarity->setCurrentIndex(any);
    emit polarity->activated(any);
    QApplication::processEvents();
    ASSERT_EQ(Value<Code2DReader>(L"Code2DReader0").NumDecoded, 2);
    EXPECT_TRUE(Told("AsciiString").contains(lightText)) << "the last one that was read";
    EXPECT_GT(ColorIn(right, green), 4 * 140);
    EXPECT_GT(ColorIn(left, yellow), 4 * 90);

    ASSERT_TRUE(Add(L"Code2DReader", L"Choose"));
    EXPECT_EQ(StatusText(), "");
    EXPECT_TRUE(Told("AsciiString").contains(darkText));
    EXPECT_GT(ColorIn(left, green), 4 * 90);
    EXPECT_GT(ColorIn(right, yellow), 4 * 140);
}

} // namespace

} // namespace TeskPlus
