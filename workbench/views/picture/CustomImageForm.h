// The parts of a picture's window: a tool bar with the zoom, the "Window" box and the pixel under the pointer, and a
// panel in which the picture scrolls.
#pragma once

#include "foundation/CairoTarget.h"

#include <QPointer>
#include <QScrollArea>

#include <functional>

class QCheckBox;
class QLabel;
class QSpinBox;

namespace TeskPlus {

/// What a picture asks of its controller. Positions are pixels of the screen, from the corner of the picture.
class IPictureOwner
{
public:
    virtual ~IPictureOwner() = default;
    /// Draws the part of the picture that begins at a point of it, both in pixels of the surface, of which there are
    /// `PixelRatio` to one of the screen.
    virtual void DrawPicture(Tesk::CairoTarget& Surface, Tesk::TargetPoint Corner, double PixelRatio) = 0;
    virtual void PointerMoved(QPoint At) = 0;
    virtual void LeftPressed(QPoint At) = 0;
    virtual void LeftReleased(QPoint At) = 0;
    virtual void PointerLeft() = 0;
    virtual void MenuAsked(QPoint At) = 0;
};

/// The picture: exactly as large as the image at its zoom. Only what is in sight is drawn.
class PictureWidget final : public QWidget
{
    Q_OBJECT

public:
    explicit PictureWidget(IPictureOwner& owner);
    /// The wheel with Ctrl, in steps, about a point.
    std::function<void(int Steps, QPoint At)> ZoomAsked;

protected:
    void paintEvent(QPaintEvent* event) override;
    void mouseMoveEvent(QMouseEvent* event) override;
    void mousePressEvent(QMouseEvent* event) override;
    void mouseReleaseEvent(QMouseEvent* event) override;
    void leaveEvent(QEvent* event) override;
    void contextMenuEvent(QContextMenuEvent* event) override;
    void wheelEvent(QWheelEvent* event) override;

private:
    IPictureOwner& owner_;
    Tesk::CairoTarget surface_;
    int wheel_ = 0;
};

/// The panel, which asks for the room that its picture needs.
class PicturePanel final : public QScrollArea
{
    Q_OBJECT

public:
    explicit PicturePanel(QWidget* picture);
    void SetWanted(QSize size);
    QSize sizeHint() const override { return wanted_; }

private:
    QSize wanted_;
};

class CustomImageForm
{
public:
    static constexpr int minImageWidth_ = 100;
    static constexpr int smallestZoom = -3, largestZoom = 3;

    explicit CustomImageForm(IPictureOwner& owner);
    CustomImageForm(const CustomImageForm&) = delete;
    CustomImageForm& operator=(const CustomImageForm&) = delete;
    ~CustomImageForm();

    /// `panel3`: what goes into the bar of the window.
    QWidget* ToolBar() const { return panel3_; }
    /// `panel2`: what the window shows.
    QWidget* Panel() const { return panel2_; }
    /// `panelImage`.
    QWidget* Picture() const { return panelImage_; }

    /// The user's changes, not the program's.
    std::function<void(int Exponent)> ZoomChanged;
    std::function<void(bool HasWindow)> WindowChanged;
    /// The window should take the size that its content asks for.
    std::function<void()> SizeChanged;

    int Zoom() const;
    /// Without a call of `ZoomChanged`.
    void SetZoom(int exponent);
    /// The size of the picture; with `automatic` the window follows it.
    void SetSize(int width, int height, bool automatic);
    void SetWindowBox(bool possible, bool checked);
    void SetCursorText(const QString& text);
    void SetCursor(Qt::CursorShape shape);
    void Refresh();

private:
    void ShowRatio();
    void ZoomAbout(int steps, QPoint at);

    QPointer<QWidget> panel3_;
    QPointer<PicturePanel> panel2_;
    QPointer<PictureWidget> panelImage_;
    QSpinBox* numericUpDown1_;
    QLabel *label2_, *cursorLabel_;
    QCheckBox* window_;
    int currentWidth_ = -1, currentHeight_ = -1;
};

} // namespace TeskPlus
