// Windows and pages that draw what an object holds: curves, histograms, gauges.
#pragma once

#include "workbench/logic/ControllerBase.h"
#include "workbench/views/ToolWindow.h"
#include "workbench/views/ViewContext.h"
#include "workbench/views/picture/GraphSurface.h"

#include <QCheckBox>
#include <QLabel>
#include <QPointer>

#include <optional>
#include <span>
#include <vector>

namespace TeskPlus {

/// What the pointer takes hold of on a plot, such as lines that stand for thresholds. Each plot has one of its own,
/// which keeps what it needs between the events. Positions are those of the drawing.
class PlotHandles
{
public:
    virtual ~PlotHandles() = default;
    virtual void Draw(AnyVariable& Object, int Width, int Height) = 0;
    /// The cursor over what the button, being up, would take hold of; nothing where there is nothing.
    virtual std::optional<Qt::CursorShape> Hit(AnyVariable& Object, int X, int Y) = 0;
    /// A press on what was hit last.
    virtual void Press(AnyVariable&) {}
    /// Moves what was hit last; false if nothing of the object can be moved.
    virtual bool Drag(AnyVariable&, int, int) { return false; }
    /// A key, by its `Qt::Key`; whether it has changed the object.
    virtual bool KeyPressed(AnyVariable&, int) { return false; }
    /// A box without a setting has been checked or unchecked.
    virtual void Switch(std::size_t, bool) {}
};

/// A check box beside a plot. With a setting it switches that to 0, and back to what it was; without one it starts
/// checked, and tells the handles.
struct PlotBox
{
    const wchar_t* Label;
    int (*Get)(const AnyVariable& Object) = nullptr;
    void (*Set)(AnyVariable& Object, int Value) = nullptr;
};

/// An entry of the context menu that does what a key, by its `Qt::Key`, does on the plot.
struct PlotCommand
{
    const wchar_t* Label;
    int Key;
};

/// The values that stand at the ends of a stretch of a plot, which is given in parts of its extent.
struct PlotScale
{
    double First, Last;
    double From = 0, To = 1;
};

/// The numbers beside a plot: below it, from left to right, and left of it, where `First` stands at the bottom of each
/// stretch.
struct PlotAxes
{
    PlotScale Across;
    std::vector<PlotScale> Up;
};

/// Round values over a scale, at most that many and one more, no closer than whole numbers: those with a number.
std::vector<double> PlotTicks(const PlotScale& Scale, int Most);
/// A number beside an axis, in at most seven characters.
QString TickText(double Value);

/// What is plotted for a class.
struct PlotRow
{
    int Width, Height;
    PredefinedColors Color;
    /// Draws the object into a box of target pixels at 0, 0; null where the handles draw it.
    void (*Plot)(AnyVariable& Object, int Width, int Height) = nullptr;
    /// The entry of the context menu, and the text that it copies; null for no menu.
    const wchar_t* CopyLabel = nullptr;
    std::string (*CopyText)(const AnyVariable& Object) = nullptr;
    /// Null for a plot that takes no pointer.
    std::unique_ptr<PlotHandles> (*MakeHandles)() = nullptr;
    std::span<const PlotBox> Boxes = {};
    std::span<const PlotCommand> Commands = {};
    /// Whether the object has something to plot now, without which the window stays hidden; null for always.
    bool (*IsShown)(const AnyVariable& Object) = nullptr;
    /// Null for a plot without numbers.
    PlotAxes (*Axes)(const AnyVariable& Object) = nullptr;
    /// What the plot holds at a value of the axis across, for the line that shows what is under the pointer.
    QString (*ReadOut)(const AnyVariable& Object, double Across) = nullptr;
};

/// A plot in a window of its own, named "ImageForm", or embedded in a sheet.
class GenericPlotController : public ControllerBase
{
public:
    GenericPlotController(const ControllerRequest& Request, const PlotRow& Row, ViewContext* OwnWindow);
    ~GenericPlotController() override;

    void UpdateControl(bool Mode, bool Dragging) override;
    /// Nothing is drawn on a plot.
    void AddChild(IController&) override {}
    void RemoveChild(IController&) override {}
    void ShowCtrl(bool BringToFront) override;
    bool HideCtrl(bool Keep) override;
    void SetVariableIdentifier(const std::wstring& Name) override;
    /// The window, or where it is embedded the plot.
    ControlHandle Control() const override;

    GraphWidget* Picture() const { return picture_; }
    /// The boxes of an embedded plot; those of a window stand on its bar.
    const std::vector<QPointer<QCheckBox>>& Boxes() const { return boxes_; }

protected:
    const PlotRow& row_;

private:
    void MenuAsked(QPoint at);
    void TakePointer();
    void TakeHandles();
    void ShowReadOut();
    void PointerMoved(QPoint at, bool isPressed);
    void Pressed(QPoint at);
    void KeyPressed(int key);
    void Released(QPoint at);
    void AddBoxes();
    void Switched(std::size_t box, bool isChecked);
    bool HasPlot() const;

    std::unique_ptr<PlotHandles> handles_;
    std::optional<QPoint> pointer_; ///< on the plot, while it is there
    bool isHeld_ = false;           ///< the button went down on something
    std::vector<QPointer<QCheckBox>> boxes_;
    std::vector<int> remembered_; ///< the settings that boxes have switched off
    QPointer<ToolWindow> window_;
    QPointer<GraphWidget> picture_;
};

/// A plot in a window of its own takes a place on the spiral.
class PlotWindowController final : public GenericPlotController, public IPlacedWindow
{
public:
    PlotWindowController(const ControllerRequest& Request, const PlotRow& Row, ViewContext& Context)
        : GenericPlotController(Request, Row, &Context)
    {}
};

} // namespace TeskPlus
