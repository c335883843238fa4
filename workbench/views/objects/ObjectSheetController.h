// The sheet of a class that its description says in full: rows, options, buttons, the plot and the table of results.
#pragma once

#include "workbench/views/objects/ObjectView.h"

class QCheckBox;

namespace TeskPlus {

class ObjectSheetController final : public PropertySheetController
{
public:
    ObjectSheetController(const ControllerRequest& Request, ViewContext& Context, const ObjectView& View);
    ~ObjectSheetController() override;

    bool Option(std::size_t Which) const;

protected:
    void AddExtras(int page) override;

private:
    void AddOptions();
    void RepaintOverlays();
    void Press(const SheetButton& button);

    const SheetView& sheet_;
    std::vector<QCheckBox*> options_;
    std::vector<QPointer<QWidget>> buttons_;
    GenericPlotController* plot_ = nullptr;
    GenericFeaturesController* features_ = nullptr;
};

} // namespace TeskPlus
