#include "workbench/views/objects/ObjectView.h"

#include "engine/Types.h"
#include "workbench/logic/MultiController.h"
#include "workbench/views/OperationViews.h"
#include "workbench/views/objects/ObjectSheetController.h"
#include "workbench/views/picture/GenericChildController.h"

namespace TeskPlus {

#define TESK_OBJECT(Name) extern const ObjectView view##Name;
#include "workbench/views/objects/ObjectList.inc"
#undef TESK_OBJECT

namespace {

#define TESK_OBJECT(Name) &view##Name,
constexpr const ObjectView* views[] = {
#include "workbench/views/objects/ObjectList.inc"
};
#undef TESK_OBJECT

} // namespace

std::unique_ptr<IController> MakeObject(const ObjectView& View, const ControllerRequest& Request, ViewContext& Context)
{
    std::vector<std::unique_ptr<IController>> parts;
    if (View.Overlay) parts.push_back(std::make_unique<GenericChildController>(Request, View.Overlay));
    if (View.Plot && !(View.Sheet && View.Sheet->PlotPage))
        parts.push_back(std::make_unique<PlotWindowController>(Request, *View.Plot, Context));
    if (View.Sheet && View.Sheet->Make)
        parts.push_back(View.Sheet->Make(Request, Context));
    else if (View.Sheet)
        parts.push_back(std::make_unique<ObjectSheetController>(Request, Context, View));
    if (parts.size() == 1 && !View.Overlay) return std::move(parts.front());
    auto several = std::make_unique<MultiController>(Request);
    for (auto& part : parts)
        several->Add(std::move(part));
    return several;
}

bool OptionOf(const IController& Child, std::size_t Option, bool Otherwise)
{
    if (const auto* sisters = Child.ControllerContainer())
        for (const IController* sister : *sisters)
            if (const auto* sheet = dynamic_cast<const ObjectSheetController*>(sister)) return sheet->Option(Option);
    return Otherwise;
}

void RegisterObjectControllers(ControllerFactory& factory, ViewContext& context)
{
    for (const ObjectView* view : views)
        if (FindType(view->Type))
            factory.Register(view->Type, [&context, view](const ControllerRequest& request) {
                return MakeObject(*view, request, context);
            });
    if (context.views)
        context.views->blobSelection_ = [] {
            for (const ObjectView* view : views)
                if (view->AfterRun) view->AfterRun();
        };
}

} // namespace TeskPlus
