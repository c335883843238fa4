#include "workbench/views/objects/ObjectSheetController.h"

#include "workbench/logic/Refusal.h"
#include "workbench/views/Text.h"

#include <QCheckBox>
#include <QHBoxLayout>
#include <QPushButton>

#include <algorithm>

namespace TeskPlus {

ObjectSheetController::ObjectSheetController(const ControllerRequest& Request, ViewContext& Context,
                                             const ObjectView& View)
    : PropertySheetController(Request, Context, View.Sheet->Menu), sheet_(*View.Sheet)
{
    int first = sheet_.FirstPage;
    if (sheet_.PlotPage && View.Plot) {
        auto plot = std::make_unique<GenericPlotController>(Request, *View.Plot, nullptr);
        plot_ = plot.get();
        InsertExternalController(std::move(plot));
        const auto page = std::find_if(Pages().begin(), Pages().end(),
                                       [&](const Page& candidate) { return candidate.Title == sheet_.PlotPage; });
        first = static_cast<int>(page - Pages().begin());
        if (page == Pages().end()) AddPage(sheet_.PlotPage);
    }
    if (View.Features) {
        auto features = std::make_unique<GenericFeaturesController>(Request, *View.Features);
        features_ = features.get();
        InsertExternalController(std::move(features));
    }
    for (const SheetButton& button : sheet_.Buttons) {
        auto* widget = new QPushButton(Qt16(button.Label));
        widget->setObjectName(Qt16(button.Label));
        QObject::connect(widget, &QPushButton::clicked, &Window(), [this, &button] { Press(button); });
        buttons_.emplace_back(widget);
    }
    AddOptions();
    BuildPropertySheet(first);
}

ObjectSheetController::~ObjectSheetController()
{
    for (const auto& button : buttons_)
        delete button;
}

void ObjectSheetController::AddOptions()
{
    for (const SheetOption& option : sheet_.Options) {
        auto* box = new QCheckBox(Qt16(option.Label));
        box->setObjectName(Qt16(option.Label));
        box->setChecked(option.IsChecked);
        QObject::connect(box, &QCheckBox::toggled, &Window(), [this] { RepaintOverlays(); });
        Window().Bar().addWidget(box);
        options_.push_back(box);
    }
    if (!options_.empty()) Window().Bar().addStretch(1);
}

bool ObjectSheetController::Option(std::size_t Which) const
{
    return Which < options_.size() && options_[Which]->isChecked();
}

void ObjectSheetController::RepaintOverlays()
{
    if (!container_) return;
    for (IController* sister : *container_)
        if (dynamic_cast<IOverlay*>(sister)) sister->UpdateControl(false, false);
}

void ObjectSheetController::Press(const SheetButton& button)
{
    if (!currentVariable_ || SelectedPage() < 0) return;
    button.Press(*currentVariable_, Pages()[static_cast<std::size_t>(SelectedPage())].Node);
    Refusal::Note();
    // The rows are those of the object now, so that the pull takes nothing back.
    UpdateControl(false, false);
    DispatchEvent(false, false, false);
}

void ObjectSheetController::AddExtras(int page)
{
    const Page& shown = Pages()[static_cast<std::size_t>(page)];
    if (page == 0)
        for (const auto& button : buttons_)
            AddControlFromExternalController(button);
    if (plot_ && shown.Title == sheet_.PlotPage) {
        for (const auto& box : plot_->Boxes())
            AddControlFromExternalController(box);
        AddControlFromExternalController(plot_->Picture(), true);
    }
    if (features_ && shown.Node >= 0) AddControlFromExternalController(features_->Grid(), true);
}

} // namespace TeskPlus
