// Windows and pages that draw what an object holds: curves, histograms, gauges.
#pragma once

#include "workbench/logic/ControllerBase.h"
#include "workbench/views/ToolWindow.h"
#include "workbench/views/ViewContext.h"
#include "workbench/views/picture/GraphSurface.h"

#include <QPointer>

namespace TeskPlus {

/// What is plotted for a type. A class that has a plot adds its row.
struct PlotRow
{
    int Type; ///< of the controller
    int Width, Height;
    PredefinedColors Color;
    /// Draws the object into a box of target pixels at 0, 0.
    void (*Plot)(AnyVariable& Object, int Width, int Height);
    /// The entry of the context menu, and the text that it copies; null for no menu.
    const wchar_t* CopyLabel = nullptr;
    std::string (*CopyText)(const AnyVariable& Object) = nullptr;
};

/// The row of a type; null for a type without a plot.
const PlotRow* FindPlot(int Type);

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

protected:
    const PlotRow& row_;

private:
    void MenuAsked(QPoint at);

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
