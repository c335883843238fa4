// The controllers of objects in windows, made known to the factory: which ones show a type.
#include "workbench/views/objects/GenericPlotController.h"
#include "workbench/views/objects/ImagePropertyPageController.h"
#include "workbench/views/objects/KernelController.h"
#include "workbench/views/objects/MorphoPropertyPageController.h"
#include "workbench/views/objects/ProfilePropertyPageController.h"
#include "workbench/views/picture/GenericChildController.h"

#include "engine/Types.h"
#include "workbench/logic/MultiController.h"
#include "workbench/logic/TypeCodes.h"

namespace TeskPlus {

namespace {

using Made = std::unique_ptr<IController>;

/// A sheet of its own class.
template <typename Sheet>
Made MakeSheet(const ControllerRequest& Request, ViewContext& Context)
{
    return std::make_unique<Sheet>(Request, Context);
}

/// A sheet without anything of its class's own.
Made MakePlainSheet(const ControllerRequest& Request, ViewContext& Context)
{
    auto sheet = std::make_unique<PropertySheetController>(Request, Context, sheetMenu::RadioGroup);
    sheet->BuildPropertySheet();
    return sheet;
}

/// A plot in a window of its own.
Made MakePlot(const ControllerRequest& Request, ViewContext& Context)
{
    const PlotRow* row = FindPlot(Engine::VarNode(Request.Node)->Type);
    return row ? std::make_unique<PlotWindowController>(Request, *row, Context) : nullptr;
}

/// The overlay, and then what else shows the object.
template <Made (*... Others)(const ControllerRequest&, ViewContext&)>
Made MakeOverlay(const ControllerRequest& Request, ViewContext& Context)
{
    auto several = std::make_unique<MultiController>(Request);
    several->Add(std::make_unique<GenericChildController>(Request));
    (several->Add(Others(Request, Context)), ...);
    return several;
}

struct ObjectRow
{
    int Type;
    Made (*Make)(const ControllerRequest& Request, ViewContext& Context);
};

constexpr ObjectRow rows[] = {
    {geometryType, MakeOverlay<>},
    {histogramType, MakePlot},
    {imageType, MakeSheet<ImagePropertyPageController>},
    {kernelType, MakeSheet<KernelPropertyPageController>},
    {morphoType, MakeSheet<MorphoPropertyPageController>},
    {pathType, MakeOverlay<MakePlainSheet>},
    {profileType, MakeSheet<ProfilePropertyPageController>},
    {pyramidType, MakeOverlay<MakePlainSheet>},
};

} // namespace

void RegisterObjectControllers(ControllerFactory& factory, ViewContext& context)
{
    for (const ObjectRow& row : rows)
        if (FindType(row.Type))
            factory.Register(row.Type,
                             [&context, &row](const ControllerRequest& request) { return row.Make(request, context); });
}

} // namespace TeskPlus
