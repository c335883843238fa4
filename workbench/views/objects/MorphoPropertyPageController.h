// The sheet of a structuring element: a page for each family of shapes, and a picture of the element.
#pragma once

#include "workbench/views/objects/PropertySheetController.h"

namespace Tesk {
class Morpho;
}

namespace TeskPlus {

class GraphWidget;

class MorphoPropertyPageController final : public PropertySheetController
{
public:
    MorphoPropertyPageController(const ControllerRequest& Request, ViewContext& Context);
    ~MorphoPropertyPageController() override;

    /// Makes the element of the page's family that the rows describe.
    void UpdateProperty() override;
    void UpdateControl(bool Mode, bool Dragging) override;

    /// The page on which an element of these sizes is edited; null for none.
    static const wchar_t* PageOf(int Width, int Height, int Diagonal);

protected:
    void AddExtras(int page) override;

private:
    int ReadRow(IController& row, Morpho& element);

    QPointer<GraphWidget> picture_;
    IController* refused_ = nullptr; ///< a row whose value the element did not take, in this pull
};

} // namespace TeskPlus
