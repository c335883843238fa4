#include "workbench/views/OperationViews.h"

#include "image/Image.h"
#include "workbench/logic/MultiController.h"
#include "workbench/views/FileDialogs.h"
#include "workbench/views/OperationForm.h"
#include "workbench/views/Text.h"
#include "workbench/views/values/HelpWidget.h"
#include "workbench/views/values/SelectorWidget.h"
#include "workbench/views/values/ValueWidgets.h"

#include <QApplication>
#include <QGraphicsOpacityEffect>
#include <QGridLayout>
#include <QLabel>
#include <QMainWindow>
#include <QMdiArea>
#include <QMessageBox>
#include <QPushButton>
#include <QTimer>
#include <QVBoxLayout>

#include <algorithm>

namespace TeskPlus {

namespace {

/// A run that takes longer than this, in microseconds, shows that it is at work.
constexpr qint64 longRun = 500000;
/// An operation that never ran may be long on an image of so many pixels.
constexpr std::int64_t manyPixels = 4000000;

/// The order of the windows above all others.
constexpr int parametersRank = 1, helpRank = 2;
/// How much worse it is to cover controls than a picture: for a new window, which may not hide a whole picture for the
/// sake of a strip of controls, and for the help, which must leave all of them free.
constexpr int controlsWeight = 4, controlsWeightForHelp = 10000;
/// Of a value that is out of date.
constexpr double staleOpacity = 0.4;

/// The parameters remember where the program has put them; anywhere else the user has.
constexpr const char* placedProperty = "Placed";

/// To the first of the places at which the panel covers nothing, or where it covers least.
void PlaceParameters(ToolWindow& panel, const QMdiArea& area, const std::vector<WindowPoint>& places,
                     const std::vector<WindowRect>& others)
{
    const QSize room = area.viewport()->size();
    panel.Place(FreePlace({room.width(), room.height()}, {panel.width(), panel.height()}, places, others));
    panel.StayInside();
    panel.setProperty(placedProperty, panel.pos());
}

/// How long an operation is expected to take, in microseconds: as long as it took before.
qint64 ExpectedTime(const Operation& operation)
{
    if (operation.Duration > 0) return operation.Duration;
    for (const Arg& argument : operation.Args)
        if (const auto* image = dynamic_cast<const Var<Image>*>(argument.Variable))
            if (std::int64_t{image->Value.Width} * image->Value.Height >= manyPixels) return longRun;
    return 0;
}

} // namespace

OperationViews::OperationViews(QMainWindow& window, QMdiArea& workArea, QLabel& status)
    : window_(window), workArea_(workArea), status_(status)
{
    connect(&workArea_, &QMdiArea::subWindowActivated, this, [this](QMdiSubWindow* active) {
        // Behind the activation, which raises its window last.
        QTimer::singleShot(0, this, [this] { ToolWindow::RaiseTopmost(workArea_); });
        if (active && active == parameters_ && parametersShown_ && form_ && form_->isVisible() && handler_)
            handler_->ParametersFormActivated();
    });
}

OperationViews::~OperationViews()
{
    if (parameterRows_) TakeControlsOut(*parameterRows_);
    delete form_;
    delete parameters_;
}

void OperationViews::CreateOperationForm(const OperationFormInfo& Info)
{
    CloseOperationForm();
    form_ = new OperationForm(workArea_, Info);
    if (Info.Item.ClassNode >= 0) form_->setWindowTitle(Qt16(Engine::Tree[Info.Item.ClassNode]->Label));
    form_->cancelOperationDelegate_ = [this] { handler_->DeleteButton_Click(); };
    form_->applyOperationDelegate_ = [this] { handler_->ApplyOperation(); };
    form_->resetDelegate_ = [this] { handler_->ResetButton_Click(); };
    form_->tabDelegate_ = [this](const operationItemInfo& item) { return handler_->ChangeTab(item); };
    form_->radioDelegate_ = [this](const operationItemInfo& item) {
        if (!handler_->OperationSelectMode()) handler_->SubstituteOperation(item);
    };
}

void OperationViews::CloseOperationForm()
{
    if (!form_) return;
    // The window may be in the middle of an event of one of its buttons.
    form_->ClearPanel();
    form_->hide();
    form_->setObjectName(QString());
    form_->deleteLater();
    form_ = nullptr;
}

void OperationViews::HideOperationForm()
{
    if (form_) form_->hide();
}

void OperationViews::ShowOperationForm(const WindowPoint* Location)
{
    if (!form_) return;
    if (Location) form_->Place(*Location);
    form_->show();
    form_->FitContent();
}

bool OperationViews::HasOperationForm() const
{
    return form_ != nullptr;
}

WindowPoint OperationViews::OperationFormLocation() const
{
    return form_ ? WindowPoint{form_->x(), form_->y()} : WindowPoint{};
}

WindowSize OperationViews::OperationFormSize() const
{
    return form_ ? WindowSize{form_->width(), form_->height()} : WindowSize{};
}

void OperationViews::SelectTab(int Tab)
{
    if (form_) form_->SelectTab(Tab);
}

void OperationViews::ShowRadioGroup(const RadioGroupInfo& Group)
{
    if (form_) form_->ShowRadioGroup(Group);
}

void OperationViews::CheckRadioButton(int Method)
{
    if (form_) form_->CheckRadioButton(Method);
}

void OperationViews::LayOutPanel(CommandPanel& Panel)
{
    if (!form_) return;
    form_->LayOutPanel(Panel);
    form_->setWindowTitle(Qt16(Engine::OpNode(Panel.PanelOperation().Node)->Label).simplified());
}

void OperationViews::ClearPanel()
{
    if (form_) form_->ClearPanel();
}

void OperationViews::EnableDeleteButton(bool Enabled)
{
    if (form_) form_->EnableDeleteButton(Enabled);
}

void OperationViews::ShowApplyButton(bool Shown)
{
    if (form_) form_->ShowApplyButton(Shown);
}

void OperationViews::CreateSelectorControl(VariableSelector& Selector)
{
    Selector.Control = static_cast<QWidget*>(new SelectorWidget(Selector));
}

WindowSize OperationViews::ControlSize(const IController& Controller) const
{
    const auto* control = static_cast<const QWidget*>(Controller.Control());
    return control ? WindowSize{control->width(), control->height()} : WindowSize{};
}

void OperationViews::MoveControl(IController& Controller, WindowPoint Location)
{
    if (auto* window = qobject_cast<ToolWindow*>(static_cast<QWidget*>(Controller.Control()))) window->Place(Location);
}

std::vector<ToolWindow*> OperationViews::Windows() const
{
    std::vector<ToolWindow*> windows;
    for (QMdiSubWindow* sub : workArea_.subWindowList())
        if (auto* window = qobject_cast<ToolWindow*>(sub)) windows.push_back(window);
    return windows;
}

WindowRect OperationViews::RectOf(const ToolWindow& window) const
{
    const bool hasControls = &window == form_ || window.findChild<ValueWidget*>();
    return {window.x(), window.y(), window.width(), window.height(), hasControls ? controlsWeight : 1};
}

std::vector<WindowRect> OperationViews::OccupiedPlaces(const std::vector<IController*>& Coming) const
{
    std::vector<WindowRect> places;
    for (const ToolWindow* window : Windows()) {
        const bool isComing = std::any_of(Coming.begin(), Coming.end(), [&](const IController* controller) {
            return static_cast<QWidget*>(controller->Control()) == window;
        });
        if (window->isVisible() || isComing) places.push_back(RectOf(*window));
    }
    return places;
}

void OperationViews::ShowStale(IController& Controller, bool IsStale)
{
    if (const auto* several = dynamic_cast<const MultiController*>(&Controller)) {
        for (IController* member : several->Members())
            ShowStale(*member, IsStale);
        return;
    }
    auto* control = static_cast<QWidget*>(Controller.Control());
    if (auto* window = qobject_cast<ToolWindow*>(control)) {
        window->SetStale(IsStale);
    } else if (auto* value = qobject_cast<ValueWidget*>(control)) {
        if (!IsStale)
            value->setGraphicsEffect(nullptr);
        else if (!value->graphicsEffect()) {
            auto* faint = new QGraphicsOpacityEffect(value);
            faint->setOpacity(staleOpacity);
            value->setGraphicsEffect(faint);
        }
    }
}

void OperationViews::KeepWindowsInside()
{
    if (contextualHelp_) RememberHelpPlace();
    for (ToolWindow* window : Windows())
        window->StayInside();
    if (contextualHelp_) helpPlace_ = {contextualHelp_->x(), contextualHelp_->y()};
}

WindowSize OperationViews::WorkAreaSize() const
{
    return {workArea_.viewport()->width(), workArea_.viewport()->height()};
}

void OperationViews::SetFormOrder(const Operation* Current)
{
    // Raising does not activate. From the bottom to the top, so that the first argument ends above the others: what the
    // operation shows for itself, its own window, what is pinned.
    const auto raiseThose = [&](bool pinned) {
        if (!Current) return;
        const QList<QMdiSubWindow*> windows = workArea_.subWindowList(QMdiArea::StackingOrder);
        for (auto argument = Current->Args.rbegin(); argument != Current->Args.rend(); ++argument)
            for (QMdiSubWindow* sub : windows) {
                auto* window = qobject_cast<ToolWindow*>(sub);
                if (window && window->Topmost() == 0 && window->isVisible() && window->IsPinned() == pinned &&
                    argument->Variable && argument->Variable->Name &&
                    window->windowTitle() == Qt16(argument->Variable->Name))
                    window->raise();
            }
    };
    raiseThose(false);
    if (form_) form_->raise();
    raiseThose(true);
    ToolWindow::RaiseTopmost(workArea_);
}

ControlHandle OperationViews::ParentWindow() const
{
    return static_cast<QWidget*>(&workArea_);
}

int OperationViews::ShowMessage(const MessageInfo& Message)
{
    QMessageBox box(&window_);
    box.setObjectName("Message");
    box.setWindowTitle(Qt16(Message.Title));
    box.setText(Qt16(Message.Text));
    box.setTextFormat(Qt::PlainText);
    box.setIcon(Message.Icon == messageIcon::Warning    ? QMessageBox::Warning
                : Message.Icon == messageIcon::Question ? QMessageBox::Question
                                                        : QMessageBox::NoIcon);
    std::vector<QPushButton*> buttons;
    for (std::size_t i = 0; i < Message.Buttons.size(); i++) {
        // The first button accepts, and Escape presses the one that the message names.
        auto* button = box.addButton(Qt16(Message.Buttons[i]), QMessageBox::ActionRole);
        if (static_cast<int>(i) == Message.CancelButton) box.setEscapeButton(button);
        if (i == 0) box.setDefaultButton(button);
        buttons.push_back(button);
    }
    QApplication::setOverrideCursor(Qt::ArrowCursor);
    box.exec();
    QApplication::restoreOverrideCursor();
    for (std::size_t i = 0; i < buttons.size(); i++)
        if (box.clickedButton() == buttons[i]) return static_cast<int>(i);
    return Message.CancelButton;
}

std::optional<std::string> OperationViews::ChooseFile(const FileDialogInfo& Dialog)
{
    const QStringList paths = FileDialogs::Ask(&window_, Dialog);
    if (paths.isEmpty()) return std::nullopt;
    return paths.front().toStdString();
}

void OperationViews::SetStatusText(const std::wstring& Text)
{
    status_.setText(Qt16(Text));
}

void OperationViews::SetBusy(const Operation* Running)
{
    if (!Running) {
        if (isBusy_) QApplication::restoreOverrideCursor();
        isBusy_ = false;
        runTime_.invalidate();
        return;
    }
    if (!runTime_.isValid()) runTime_.start();
    if (runTime_.nsecsElapsed() / 1000 + ExpectedTime(*Running) < longRun) return;
    if (!isBusy_) QApplication::setOverrideCursor(Qt::BusyCursor);
    isBusy_ = true;
    status_.setText(Qt16(Engine::OpNode(Running->Node)->Label).simplified() + " ...");
    status_.repaint();
}

bool OperationViews::IsHelp() const
{
    return HelpWidget::IsHelp();
}

void OperationViews::ShowContextualHelp(const std::vector<HelpParagraph>& Paragraphs)
{
    if (!HelpWidget::IsHelp()) {
        HideContextualHelp();
        return;
    }
    if (contextualHelp_) {
        RememberHelpPlace();
        contextualHelp_->hide();
        contextualHelp_->setObjectName(QString());
        contextualHelp_->deleteLater();
    }
    contextualHelp_ = new ToolWindow(workArea_, "OperationContextualHelpForm", false);
    contextualHelp_->setWindowTitle("Tesk+");
    for (const HelpParagraph& paragraph : Paragraphs)
        contextualHelp_->Content().addWidget(
            new HelpWidget(Qt16(paragraph.Text), paragraph.IsTitle ? helpStyle::Title : helpStyle::Regular));
    contextualHelp_->FitContent();
    PlaceHelp();
    contextualHelp_->ShowQuietly();
    contextualHelp_->FitContent();
    helpPlace_ = {contextualHelp_->x(), contextualHelp_->y()};
    ToolWindow::RaiseTopmost(workArea_);
}

/// At the help's own place, unless it would cover something there: then where it covers least, and no controls.
void OperationViews::PlaceHelp()
{
    const WindowSize size{contextualHelp_->width(), contextualHelp_->height()};
    std::vector<WindowRect> others, controls;
    for (const ToolWindow* window : Windows()) {
        if (window == contextualHelp_ || !window->isVisible()) continue;
        others.push_back(RectOf(*window));
        if (others.back().Weight == 1) continue;
        others.back().Weight = controlsWeightForHelp;
        controls.push_back(others.back());
    }
    const auto coversControls = [&](WindowPoint place) {
        return Covered({place.X, place.Y, size.Width, size.Height}, controls) > 0;
    };
    contextualHelp_->Place(FreePlace(WorkAreaSize(), size, {contextualHelpPanelLocation}, others));
    contextualHelp_->StayInside();
    helpPlace_ = {contextualHelp_->x(), contextualHelp_->y()};
    // Where the controls leave no place at all, they come before the help.
    contextualHelp_->SetTopmost(coversControls(helpPlace_) ? 0 : helpRank);
    if (contextualHelp_->Topmost() == 0) contextualHelp_->lower();
}

/// The place to which the user has moved the help is its own from then on; one at which it had to yield is not.
void OperationViews::RememberHelpPlace()
{
    const WindowPoint place{contextualHelp_->x(), contextualHelp_->y()};
    if (place != helpPlace_) contextualHelpPanelLocation = place;
}

void OperationViews::HideContextualHelp()
{
    if (!contextualHelp_) return;
    RememberHelpPlace();
    contextualHelp_->hide();
}

void OperationViews::FillParameters(const ParametersPanel& panel)
{
    if (!parameters_) {
        parameters_ = new ToolWindow(workArea_, "ParametersForm", false);
        parameters_->setWindowTitle(tr("Parameters"));
        parameters_->SetTopmost(parametersRank);
    }
    if (parameterRows_) {
        TakeControlsOut(*parameterRows_);
        parameterRows_->hide();
        parameterRows_->deleteLater();
    }
    parameterRows_ = new QWidget;
    auto* grid = new QGridLayout(parameterRows_);
    grid->setContentsMargins(0, 0, 0, 0);
    int row = 0;
    for (const ParameterRow& line : panel.Rows()) {
        if (line.Controller->Control()) PutControl(*grid, static_cast<QWidget*>(line.Controller->Control()), row, 0);
        // Two rows of one label are told apart by their variables.
        auto* help = new HelpWidget(Qt16(line.Help), helpStyle::Row);
        grid->addWidget(help, row, 1);
        row++;
    }
    grid->setColumnStretch(1, 1);
    parameters_->Content().addWidget(parameterRows_);
}

void OperationViews::LayOutParameters(const ParametersPanel& Panel)
{
    FillParameters(Panel);
    if (!parameters_->isVisible()) return;
    const QPoint former = parameters_->pos();
    parameters_->FitContent();
    // With more rows it may cover what it left free before.
    if (parameters_->property(placedProperty).toPoint() != former) return;
    std::vector<WindowRect> others;
    for (const ToolWindow* window : Windows())
        if (window != parameters_ && window->isVisible()) others.push_back(RectOf(*window));
    PlaceParameters(*parameters_, workArea_, {{former.x(), former.y()}}, others);
}

void OperationViews::ShowParametersForm(bool Shown)
{
    if (!parameters_) return;
    if (!Shown) {
        parameters_->hide();
        parametersShown_ = false;
        return;
    }
    if (parameters_->isVisible()) return;
    parametersShown_ = false;
    const QSize room = workArea_.viewport()->size();
    parameters_->FitContent();
    const WindowPoint corner{room.width() - parameters_->width() - 15, room.height() - parameters_->height() - 15};
    PlaceParameters(*parameters_, workArea_, {corner}, OccupiedPlaces({}));
    parameters_->ShowQuietly();
    parametersShown_ = true;
}

void OperationViews::PassBlobSelection()
{
    if (blobSelection_) blobSelection_();
}

void OperationViews::ToggleHelp()
{
    for (QMdiSubWindow* sub : workArea_.subWindowList())
        if (auto* window = qobject_cast<ToolWindow*>(sub)) {
            HelpWidget::ToggleHelp(*window);
            // A picture's window keeps its size: its help is on a page that is not shown.
            const QList<HelpWidget*> helps = window->findChildren<HelpWidget*>();
            const bool isOnPage = std::any_of(helps.begin(), helps.end(), [window](const HelpWidget* help) {
                return help->parentWidget() && help->parentWidget()->isVisibleTo(window);
            });
            if (window->isVisible() && isOnPage) window->FitContent();
        }
}

} // namespace TeskPlus
