#include "workbench/views/objects/GenericPlotController.h"

#include "foundation/Status.h"
#include "workbench/views/Text.h"
#include "workbench/views/picture/CopyText.h"
#include "workbench/views/picture/OverlayTable.h"

#include <QMenu>
#include <QVBoxLayout>

namespace TeskPlus {

namespace {

/// The picture asks for the size of its row, and takes what it is given.
class PlotWidget final : public GraphWidget
{
public:
    PlotWidget(int width, int height) : size_(width, height)
    {
        setMinimumSize(smallest);
        setSizePolicy(QSizePolicy::Expanding, QSizePolicy::Expanding);
        setContextMenuPolicy(Qt::CustomContextMenu);
    }
    QSize sizeHint() const override { return size_; }

private:
    static constexpr QSize smallest{125, 60};
    QSize size_;
};

} // namespace

GenericPlotController::GenericPlotController(const ControllerRequest& Request, const PlotRow& Row,
                                             ViewContext* OwnWindow)
    : ControllerBase(Request, true), row_(Row)
{
    picture_ = new PlotWidget(Row.Width, Row.Height);
    picture_->setObjectName("Plot");
    picture_->Draw = [this](int width, int height) {
        Graph::LineColor = Graph::PointColor = row_.Color;
        if (currentVariable_) row_.Plot(*currentVariable_, width, height);
    };
    if (Row.CopyText)
        QObject::connect(picture_, &QWidget::customContextMenuRequested, picture_,
                         [this](QPoint at) { MenuAsked(at); });
    if (!OwnWindow) return;
    window_ = new ToolWindow(*OwnWindow->workArea, "ImageForm");
    window_->setWindowTitle(Qt16(variableIdentifier_));
    window_->Content().addWidget(picture_);
    window_->Bar().addStretch(1);
    window_->FitContent();
}

GenericPlotController::~GenericPlotController()
{
    delete picture_;
    delete window_;
}

ControlHandle GenericPlotController::Control() const
{
    return window_ ? static_cast<QWidget*>(window_) : static_cast<QWidget*>(picture_);
}

void GenericPlotController::UpdateControl(bool, bool)
{
    picture_->Redraw();
}

void GenericPlotController::ShowCtrl(bool BringToFront)
{
    picture_->Redraw();
    if (!window_) return;
    window_->SetPinned(IsPinned(argumentState_));
    if (!window_->isVisible()) window_->ShowQuietly();
    if (BringToFront) window_->BringToFront();
}

bool GenericPlotController::HideCtrl(bool)
{
    const bool hides = argumentState_ < controllerState::Shown;
    if (window_) {
        window_->SetPinned(IsPinned(argumentState_));
        if (hides) window_->hide();
    }
    return hides;
}

void GenericPlotController::SetVariableIdentifier(const std::wstring& Name)
{
    ControllerBase::SetVariableIdentifier(Name);
    if (window_) window_->setWindowTitle(Qt16(Name));
}

void GenericPlotController::MenuAsked(QPoint at)
{
    auto* menu = new QMenu(picture_);
    menu->setObjectName("PlotMenu");
    menu->setAttribute(Qt::WA_DeleteOnClose);
    menu->addAction(Qt16(row_.CopyLabel), [this] {
        if (currentVariable_) CopyText(Widen(row_.CopyText(*currentVariable_).c_str()));
    });
    menu->popup(picture_->mapToGlobal(at));
}

} // namespace TeskPlus
