// The workbench with a picture in it, for the tests of pictures and sheets.
#pragma once

#include "image/Image.h"
#include "workbench/views/MainForm.h"
#include "workbench/views/OperationForm.h"
#include "workbench/views/ToolWindow.h"
#include "workbench/views/picture/CustomImageForm.h"
#include "workbench/views/picture/Overlay.h"

#include <QApplication>
#include <QCheckBox>
#include <QLabel>
#include <QMenu>
#include <QRadioButton>
#include <QSpinBox>
#include <QTabBar>
#include <QTemporaryDir>
#include <QtTest>

#include <gtest/gtest.h>

#include <cwchar>

namespace TeskPlus {

class ObjectTest : public testing::Test
{
protected:
    ObjectTest() : form_(false)
    {
        form_.SetIsHelp(false);
        form_.resize(1600, 1100);
        form_.show();
        QApplication::processEvents();
    }

    static int Method(const wchar_t* className, const wchar_t* label)
    {
        return Engine::FindMethod(className, nullptr, label);
    }

    /// A gray image of a file, whose pixels tell their places: x + 2 y.
    QString WriteSlope(int width, int height, const char* name = "slope.bmp")
    {
        Image image;
        image.Set(width, height, Gray);
        for (int y = 0; y < height; y++)
            for (int x = 0; x < width; x++)
                image.Row(y)[x] = static_cast<std::uint8_t>(x + 2 * y);
        const QString path = folder_.filePath(name);
        image.Write(path.toStdString().c_str());
        return path;
    }

    void Open(int width, int height)
    {
        form_.OpenImage(WriteSlope(width, height));
        QApplication::processEvents();
    }

    /// By the road of the menus.
    bool Add(const wchar_t* className, const wchar_t* label)
    {
        const int method = Method(className, label);
        if (method < 0) return false;
        const bool added = form_.Handler().MenuItemClicked(ItemOfMethod(method));
        QApplication::processEvents();
        return added;
    }

    ToolWindow* Window(const char* title, const char* name = "PropertySheetController")
    {
        for (ToolWindow* window : form_.findChildren<ToolWindow*>(name))
            if (window->windowTitle() == title) return window;
        return nullptr;
    }

    template <typename T>
    T* Part(const char* title, const char* name)
    {
        ToolWindow* window = Window(title);
        return window ? window->findChild<T*>(name) : nullptr;
    }

    QWidget* Picture(const char* title) { return Part<QWidget>(title, "panelImage"); }

    QString StatusText() { return form_.findChild<QLabel*>("toolStripStatusLabel1")->text(); }
    /// Where a point is marked on a picture at 4:1.
    static QPoint AtPoint(int x, int y) { return {4 * (x + 1), 4 * (y + 1)}; }

    QRgb PixelOf(QWidget* widget, QPoint at) { return widget->grab().toImage().pixel(at) & 0xffffff; }

    /// How many pixels of a picture, or of a part of the first one, have a colour.
    int ColorOf(QRgb color, const char* picture = "Image0") { return CountColor(Shown(picture), {}, color); }
    int ColorIn(const QRect& part, QRgb color) { return CountColor(Shown("Image0"), part, color); }
    /// Opens an image that is written to a file first.
    void Open(const Image& image, const char* name)
    {
        const QString path = folder_.filePath(name);
        image.Write(path.toStdString().c_str());
        form_.OpenImage(path);
        QApplication::processEvents();
    }

    static void Drag(QWidget* widget, QPoint from, QPoint to)
    {
        QTest::mouseMove(widget, from);
        QTest::mousePress(widget, Qt::LeftButton, {}, from);
        // A mouse reports moves with the button that is down; the test library leaves it out.
        for (int step = 1; step <= 4; step++) {
            const QPoint at = from + (to - from) * step / 4;
            QMouseEvent move(QEvent::MouseMove, at, widget->mapToGlobal(at), Qt::NoButton, Qt::LeftButton, {});
            QApplication::sendEvent(widget, &move);
        }
        QTest::mouseRelease(widget, Qt::LeftButton, {}, to);
        QApplication::processEvents();
    }

    template <typename T>
    T& Value(const wchar_t* name)
    {
        T* found = nullptr;
        for (AnyVariable* variable : form_.GetEngine().GetVariables(-1, 0, true))
            if (variable->NameText == name) found = &dynamic_cast<Var<T>&>(*variable).Value;
        EXPECT_NE(found, nullptr) << "no such variable";
        return *found;
    }

    IController& Controller(const wchar_t* name)
    {
        IController* found = form_.Handler().GetController(std::wstring(name));
        EXPECT_NE(found, nullptr) << "no such controller";
        return *found;
    }

    /// The row of a sheet that bears a name.
    QSpinBox* SpinBox(const char* title, const char* row)
    {
        QWidget* widget = Part<QWidget>(title, row);
        return widget ? widget->findChild<QSpinBox*>() : nullptr;
    }

    static QMenu* OpenMenu(const char* name)
    {
        QMenu* found = nullptr;
        for (QWidget* widget : QApplication::topLevelWidgets())
            if (auto* menu = qobject_cast<QMenu*>(widget); menu && menu->isVisible() && menu->objectName() == name)
                found = menu;
        return found;
    }

    QTemporaryDir folder_;
    MainForm form_;

private:
    QImage Shown(const char* picture) { return Picture(picture)->grab().toImage(); }
    static int CountColor(const QImage& image, const QRect& part, QRgb color)
    {
        const QRect all = part.isNull() ? image.rect() : part;
        int count = 0;
        for (int y = all.top(); y <= all.bottom(); y++)
            for (int x = all.left(); x <= all.right(); x++)
                count += (image.pixel(x, y) & 0xffffff) == color;
        return count;
    }
};

} // namespace TeskPlus
