// What shows the objects of a class: its mark on a picture, its sheet, its plot and its table of results, in one
// description. A class has one file of this folder with its description, and one line in ObjectList.inc.
#pragma once

#include "workbench/views/objects/GenericFeaturesController.h"
#include "workbench/views/objects/GenericPlotController.h"
#include "workbench/views/objects/PropertySheetController.h"
#include "workbench/views/picture/Overlay.h"

#include <span>

namespace TeskPlus {

/// A check box on the bar of a sheet, which says what the overlay of the same object draws; see `OptionOf`.
struct SheetOption
{
    const wchar_t* Label;
    bool IsChecked; ///< at the start
};

/// A button below the rows of the first page; the rows then show the object, and the sequence runs.
struct SheetButton
{
    const wchar_t* Label;
    void (*Press)(AnyVariable& Object, int PageNode);
};

/// The window of an object's properties. The pages and rows are those of the tree.
struct SheetView
{
    sheetMenu Menu = sheetMenu::RadioGroup;
    int FirstPage = 0;
    /// The page that holds the plot of the class, added where the tree has none of that name; it is shown first. Null:
    /// the plot has a window of its own.
    const wchar_t* PlotPage = nullptr;
    std::span<const SheetOption> Options = {};
    std::span<const SheetButton> Buttons = {};
    /// For a sheet that needs a class of its own; null for one that this describes.
    std::unique_ptr<IController> (*Make)(const ControllerRequest& Request, ViewContext& Context) = nullptr;
};

/// Of these the class has what is not null. The table of results is the last row of the sheet's pages.
struct ObjectView
{
    int Type;
    const OverlayRow* Overlay = nullptr;
    const SheetView* Sheet = nullptr;
    const PlotRow* Plot = nullptr;
    const FeaturesRow* Features = nullptr;
    /// Passes on what a press on a picture has left to be done once the run that it began is over.
    void (*AfterRun)() = nullptr;
};

/// The controllers that a description asks for, in one where there are several; the overlay stands first.
std::unique_ptr<IController> MakeObject(const ObjectView& View, const ControllerRequest& Request, ViewContext& Context);

/// Whether the box of an option is checked on the sheet of the object that an overlay draws; `Otherwise` without sheet.
bool OptionOf(const IController& Child, std::size_t Option, bool Otherwise);

/// Calls `f` for the objects that one goes on from, of the same class: with the next run it takes what they have.
template <typename T, typename F>
void EachSource(const AnyVariable& Object, F f)
{
    for (AnyVariable* source = Object.Source; source; source = source->Source)
        if (auto* variable = dynamic_cast<Var<T>*>(source)) f(variable->Value);
}

/// A sheet of its own class.
template <typename Sheet>
std::unique_ptr<IController> MakeSheet(const ControllerRequest& Request, ViewContext& Context)
{
    return std::make_unique<Sheet>(Request, Context);
}

} // namespace TeskPlus
