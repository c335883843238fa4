#include "engine/TreeNode.h"
#include "foundation/Records.h"
#include "workbench/views/values/ChoiceWidgets.h"

#include <vector>

#include <QAbstractButton>
#include <QLabel>
#include <QLineEdit>
#include <QSlider>
#include <QSpinBox>
#include <QTest>

#include <gtest/gtest.h>

using namespace TeskPlus;
using namespace Tesk;
namespace flags = Tesk::attributeValue;

namespace {

/// Types into a box as a user does: what stands there is replaced.
void Type(QLineEdit* box, const QString& text)
{
    box->setFocus();
    box->selectAll();
    QTest::keyClicks(box, text);
}

TEST(IntWidget, SpeaksTheSpecialValuesAndHoldsItsRange)
{
    IntWidget widget("Threshold");
    widget.SetRange(0, 255, 1);
    widget.SetState(true, flags::Slider);
    widget.show();
    auto* text = widget.findChild<QLineEdit*>("Text");
    auto* slider = widget.findChild<QSlider*>("Slider");
    std::vector<int> told;
    widget.Changed = [&](bool) { told.push_back(widget.Value()); };
    Type(text, "Auto");
    EXPECT_EQ(widget.Value(), Auto);
    EXPECT_EQ(told.back(), Auto);
    Type(text, "300");
    EXPECT_EQ(widget.Value(), 255);
    QTest::keyClick(text, Qt::Key_Return);
    EXPECT_EQ(text->text(), "255") << "put right when the box is left";
    EXPECT_EQ(slider->value(), 255);
    Type(text, "x");
    EXPECT_EQ(widget.Value(), 0) << "no number is the minimum";
    // The program's own changes tell nobody, and do not disturb what is typed.
    told.clear();
    widget.SetValue(77);
    EXPECT_TRUE(told.empty());
    EXPECT_EQ(slider->value(), 77);
    slider->setValue(100);
    EXPECT_EQ(told, std::vector<int>{100});
}

TEST(IntWidget, ADynamicRangeGrowsWithItsValue)
{
    IntWidget widget("Length");
    widget.SetRange(0, 100, 1);
    widget.SetState(true, flags::Slider | flags::DynamicRange);
    widget.show();
    auto* slider = widget.findChild<QSlider*>("Slider");
    widget.SetValue(700);
    EXPECT_EQ(slider->maximum(), 1400);
    EXPECT_EQ(slider->value(), 700);
    slider->setValue(1400);
    EXPECT_EQ(widget.Value(), 1400);
    Type(widget.findChild<QLineEdit*>("Text"), "99999");
    EXPECT_EQ(widget.Value(), 99999);
}

TEST(FloatWidget, TakesNumbersOnly)
{
    FloatWidget widget("Gain");
    widget.SetRange(-2, 2, 0.25);
    widget.SetState(true, flags::Slider);
    widget.show();
    auto* text = widget.findChild<QLineEdit*>("Text");
    Type(text, "-1.5e,0-3");
    EXPECT_EQ(text->text(), "-1.503") << "the keys that no number has are dropped";
    EXPECT_DOUBLE_EQ(widget.Value(), -1.503);
    Type(text, "-");
    EXPECT_DOUBLE_EQ(widget.Value(), -2) << "the minimum, until there is a number";
    QTest::keyClick(text, Qt::Key_Return);
    EXPECT_EQ(text->text(), "-2");
    widget.findChild<QSlider*>("Slider")->setValue(9);
    EXPECT_DOUBLE_EQ(widget.Value(), 0.25);
    const struct
    {
        double value;
        const char* text;
    } cases[] = {{0.1234567, "0.123"}, {2, "2"}, {-0.0001, "0"}, {1e6, "1000000"}, {double(Auto), "Auto"}};
    for (const auto& c : cases)
        EXPECT_EQ(FloatWidget::TextOf(c.value), c.text);
}

TEST(RgbWidget, PastesWhatAPictureCopied)
{
    const struct
    {
        const char* text;
        bool taken;
        int red, green, blue;
    } cases[] = {{"RGB 001:020:255", true, 1, 20, 255},
                 {"RGBA 001:002:003:044", true, 1, 2, 3},
                 {"Gray 128", true, 128, 128, 128},
                 {"RGB 001:020:256", false, 9, 8, 7},
                 {"Gray 01234", false, 9, 8, 7},
                 {"RGB 1:2", false, 9, 8, 7},
                 {"", false, 9, 8, 7},
                 {"RGB a:b:c", false, 9, 8, 7}};
    for (const auto& c : cases) {
        RgbWidget widget("Color", true, flags::Slider);
        widget.SetValue(RgbPixel(9, 8, 7));
        int told = 0;
        widget.Changed = [&](bool) { told++; };
        EXPECT_EQ(widget.Paste(c.text), c.taken) << c.text;
        EXPECT_EQ(widget.Value(), RgbPixel(c.red, c.green, c.blue)) << c.text;
        EXPECT_EQ(told, c.taken ? 1 : 0);
    }
    RgbWidget widget("Color", true, flags::Slider);
    widget.show();
    auto* green = widget.findChild<QLineEdit*>("TextGreen");
    Type(green, "12x");
    QTest::keyClick(green, Qt::Key_Return);
    EXPECT_EQ(green->text(), "0");
    widget.findChild<QSlider*>("SliderBlue")->setValue(200);
    EXPECT_EQ(widget.Value(), RgbPixel(0, 0, 200));
}

TEST(XYWidget, ATextThatIsNoNumberIsTheMinimum)
{
    XYWidget widget("Place", true, 0);
    widget.SetRange(3, 50, 4, 60);
    widget.show();
    auto* x = widget.findChild<QLineEdit*>("TextX");
    ASSERT_TRUE(x);
    Type(x, "7.25");
    Type(widget.findChild<QLineEdit*>("TextY"), "8");
    EXPECT_EQ(widget.Value().X, 7.25);
    EXPECT_EQ(widget.Value().Y, 8);
    Type(x, "q");
    EXPECT_EQ(widget.Value().X, 3);
    EXPECT_EQ(widget.Value().Y, 4);
    QTest::keyClick(x, Qt::Key_Return);
    EXPECT_EQ(x->text(), "3");
}

TEST(Choice, ANumberThatNoCaseHasGoesToTheBoxOrChoosesNone)
{
    const std::vector<ChoiceItem> items = {{"All", -1}, {"Selected", -2}};
    RadioButtonGroupWidget mixed("Blobs", true, flags::Mixed, items);
    auto* box = mixed.findChild<QSpinBox*>();
    ASSERT_TRUE(box);
    mixed.SetCustomRange(0, 9);
    mixed.SetValue(-2);
    EXPECT_EQ(mixed.Value(), -2);
    EXPECT_FALSE(box->isEnabled());
    mixed.SetValue(4);
    EXPECT_TRUE(mixed.IsCustom());
    EXPECT_TRUE(box->isEnabled());
    EXPECT_EQ(box->value(), 4);
    EXPECT_EQ(mixed.Value(), 4);
    int told = 0;
    mixed.Changed = [&](bool) { told++; };
    box->setValue(6);
    EXPECT_EQ(mixed.Value(), 6);
    EXPECT_EQ(told, 1);

    RadioButtonGroupWidget plain("Mode", true, flags::SpinBox, items);
    plain.SetValue(-2);
    EXPECT_EQ(plain.Value(), -2);
    plain.SetValue(17);
    EXPECT_EQ(plain.Value(), 17) << "a value from elsewhere is not changed by being shown";
}

TEST(StringInput, LongTextsShowTheirEndsAndFilesKeepTheirFolder)
{
    StringInputWidget output("Text", false, 0);
    const QString text = QString(40, 'a') + QString(20, 'b') + QString(40, 'c');
    output.SetValue(text);
    const auto labels = output.findChildren<QLabel*>();
    EXPECT_EQ(labels.back()->text(), QString(32, 'a') + "..." + QString(32, 'c'));
    EXPECT_EQ(output.Value(), text);

    StringInputWidget file("Path", true, flags::TextOnly);
    file.ShowFileButton("save");
    file.SetValue("/pictures/part.png");
    file.show();
    auto* box = file.findChild<QLineEdit*>("Text");
    EXPECT_EQ(box->text(), "part.png");
    Type(box, "b.png");
    EXPECT_EQ(file.Value(), "/pictures/b.png");
    Type(box, "/other/c.png");
    EXPECT_EQ(file.Value(), "/other/c.png");
}

} // namespace
