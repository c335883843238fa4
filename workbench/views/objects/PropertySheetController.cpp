#include "workbench/views/objects/PropertySheetController.h"

#include "workbench/logic/OperationHandler.h"
#include "workbench/views/OperationForm.h"
#include "workbench/views/Text.h"

#include <QButtonGroup>
#include <QGridLayout>
#include <QGroupBox>
#include <QRadioButton>
#include <QSignalBlocker>
#include <QTabBar>
#include <QVBoxLayout>

#include <algorithm>

namespace TeskPlus {

namespace {

/// Radio buttons of pages stand in rows of this many.
constexpr int buttonsToRow = 4;

} // namespace

std::vector<int> PagesOfType(int Type)
{
    std::vector<int> pages;
    for (int node = 0; node < Engine::NumNodes; node++) {
        if (Engine::Tree[node]->Kind() != ClassKind) continue;
        if (static_cast<const ClassNode*>(Engine::Tree[node])->Type != Type) continue;
        for (int child = Engine::Tree[node]->FirstChild; child != -1; child = Engine::Tree[child]->NextSibling)
            if (Engine::Tree[child]->Kind() == PageKind) pages.push_back(child);
    }
    return pages;
}

PropertySheetController::PropertySheetController(const ControllerRequest& Request, ViewContext& Context, sheetMenu Menu,
                                                 const wchar_t* Caption)
    : ControllerBase(Request, true), context_(Context), menuType_(Menu), caption_(Caption),
      pageNodes_(PagesOfType(argumentType_))
{
    for (const int node : pageNodes_)
        pages_.push_back({node, Engine::Tree[node]->Label});
    window_ = new ToolWindow(*Context.workArea, "PropertySheetController");
    window_->setWindowTitle(Qt16(variableIdentifier_));
}

PropertySheetController::~PropertySheetController()
{
    // Controls go with their controllers, and before the window that shows them.
    rows_.Clear();
    externals_.Clear();
    delete window_;
}

void PropertySheetController::InsertExternalController(std::unique_ptr<IController> Controller)
{
    externals_.Add(std::move(Controller)).SetControllerContainer(&Externals());
}

void PropertySheetController::AddPage(const std::wstring& Title)
{
    pages_.push_back({-1, Title});
}

void PropertySheetController::CreateSubMenu()
{
    if (pages_.size() < 2) return;
    if (menuType_ == sheetMenu::Tabs) {
        subTabMenu_ = new QTabBar;
        subTabMenu_->setObjectName("PageTabs");
        subTabMenu_->setElideMode(Qt::ElideNone);
        for (const Page& page : pages_)
            subTabMenu_->addTab(Qt16(page.Title));
        QObject::connect(subTabMenu_, &QTabBar::currentChanged, window_, [this](int page) { ChangePage(page); });
        Window().Content().addWidget(subTabMenu_);
        return;
    }
    auto* group = new QGroupBox(Qt16(caption_));
    group->setObjectName("PageGroup");
    auto* grid = new QGridLayout(group);
    grid->setVerticalSpacing(2);
    subRadioButtonMenu_ = new QButtonGroup(group);
    for (int i = 0; i < NumPages(); i++) {
        auto* button = new QRadioButton(Qt16(pages_[static_cast<std::size_t>(i)].Title));
        subRadioButtonMenu_->addButton(button, i);
        grid->addWidget(button, i / buttonsToRow, i % buttonsToRow);
    }
    QObject::connect(subRadioButtonMenu_, &QButtonGroup::idToggled, window_, [this](int page, bool checked) {
        if (checked) ChangePage(page);
    });
    Window().Content().addWidget(group);
}

void PropertySheetController::BuildPropertySheet(int Page)
{
    CreateSubMenu();
    pageArea_ = new QWidget;
    pageArea_->setObjectName("Page");
    auto* column = new QVBoxLayout(pageArea_);
    column->setContentsMargins(0, 0, 0, 0);
    Window().Content().addWidget(pageArea_, 1);
    if (Page >= 0 && Page < NumPages()) ChangePage(Page);
    isBuilt_ = true;
    Fit();
}

std::wstring PropertySheetController::GetSelectedPageName() const
{
    return page_ >= 0 ? pages_[static_cast<std::size_t>(page_)].Title : std::wstring();
}

void PropertySheetController::ChangePage(int Page)
{
    if (Page == page_ || Page < 0 || Page >= NumPages()) return;
    ResetPage();
    page_ = Page;
    if (subTabMenu_) {
        const QSignalBlocker quiet(subTabMenu_);
        subTabMenu_->setCurrentIndex(Page);
    }
    if (subRadioButtonMenu_) {
        const QSignalBlocker quiet(subRadioButtonMenu_);
        subRadioButtonMenu_->button(Page)->setChecked(true);
    }
    BuildPage(Page);
    if (!isBuilt_) return;
    Fit();
    DispatchEvent(false, false, false);
}

void PropertySheetController::ResetPage()
{
    if (grid_) TakeControlsOut(*grid_);
    rows_.Clear();
    delete grid_;
    grid_ = nullptr;
}

void PropertySheetController::BuildPage(int page)
{
    grid_ = new QWidget;
    auto* grid = new QGridLayout(grid_);
    grid->setContentsMargins(0, 0, 0, 0);
    grid->setColumnStretch(1, 1);
    pageArea_->layout()->addWidget(grid_);
    const int node = pages_[static_cast<std::size_t>(page)].Node;
    if (node >= 0) {
        auto* title = new HelpWidget(Qt16(Engine::Tree[node]->Documentation), helpStyle::Title);
        title->setObjectName("helpPageNodeWidget");
        grid->addWidget(title, 0, 0, 1, 2);
        AddProperties(node);
    }
    AddExtras(page);
    // A layout of a window on the screen shows what is added to it only with the next events.
    grid_->show();
}

void PropertySheetController::AddProperties(int node)
{
    auto* grid = static_cast<QGridLayout*>(grid_->layout());
    int index = 0;
    for (int child = Engine::Tree[node]->FirstChild; child != -1; child = Engine::Tree[child]->NextSibling, index++) {
        if (Engine::Tree[child]->Kind() != ArgumentKind) continue;
        auto controller = MakeRowController(child, index, rowsFromDefault_);
        if (!controller) continue;
        const int line = grid->rowCount();
        if (controller->Control()) PutControl(*grid, static_cast<QWidget*>(controller->Control()), line, 0);
        grid->addWidget(new HelpWidget(Qt16(Engine::Tree[child]->Documentation), helpStyle::Row), line, 1);
        rows_.Add(std::move(controller));
    }
}

void PropertySheetController::AddControlFromExternalController(QWidget* control, bool grows)
{
    auto* grid = static_cast<QGridLayout*>(grid_->layout());
    const int line = grid->rowCount();
    PutControl(*grid, control, line, 0, 2);
    if (grows) grid->setRowStretch(line, 1);
}

std::unique_ptr<IController> PropertySheetController::MakeRowController(int node, int index, bool fromDefault)
{
    ControllerRequest request{engine_, [this](Operation*, AnyVariable*, bool taken, bool mothers, bool dragging, bool) {
                                  DispatchEvent(taken, mothers, dragging);
                              }};
    request.Variable = currentVariable_;
    request.Node = node;
    request.Index = index;
    request.FromDefault = fromDefault;
    request.IsProperty = true;
    request.Parent = static_cast<QWidget*>(pageArea_);
    request.CurrentOperation = currentOperation_;
    return context_.handler->Factory().CreateController(request);
}

void PropertySheetController::DispatchEvent(bool taken, bool mothers, bool dragging)
{
    Notify(taken, mothers, dragging);
}

void PropertySheetController::PullRow(IController& row)
{
    row.UpdateProperty();
}

void PropertySheetController::UpdateProperty()
{
    for (IController* row : Rows())
        PullRow(*row);
    externals_.Tell(&IController::UpdateProperty);
}

void PropertySheetController::UpdateControl(bool Mode, bool Dragging)
{
    TellParts(&IController::UpdateControl, Mode, Dragging);
}

void PropertySheetController::ShowCtrl(bool BringToFront)
{
    externals_.Tell(&IController::ShowCtrl, BringToFront);
    Window().SetPinned(ShowsPinned());
    if (!isDisplayed_) {
        isDisplayed_ = true;
        Fit();
    }
    if (!Window().isVisible()) Window().ShowQuietly();
    if (BringToFront) Window().BringToFront();
}

bool PropertySheetController::HideCtrl(bool Keep)
{
    bool hides = true;
    for (IController* external : Externals())
        hides = external->HideCtrl(Keep) && hides;
    hides = hides && argumentState_ < controllerState::Shown;
    if (hides) Window().hide();
    Window().SetPinned(ShowsPinned());
    return hides;
}

void PropertySheetController::Fit()
{
    // A change deep inside reaches the layouts above it only with the next events.
    for (QWidget* widget : {grid_, pageArea_})
        if (widget) {
            widget->layout()->invalidate();
            widget->updateGeometry();
        }
    Window().FitContent();
}

void PropertySheetController::SetWindowPossiblity(bool Possible)
{
    externals_.Tell(&IController::SetWindowPossiblity, Possible);
}

void PropertySheetController::SetIsExternalWidget(bool External)
{
    ControllerBase::SetIsExternalWidget(External);
    TellParts(&IController::SetIsExternalWidget, External);
}

void PropertySheetController::SetCurrentOperation(Operation* Current)
{
    ControllerBase::SetCurrentOperation(Current);
    TellParts(&IController::SetCurrentOperation, Current);
}

void PropertySheetController::SetCurrentVariable(AnyVariable* Variable)
{
    ControllerBase::SetCurrentVariable(Variable);
    TellParts(&IController::SetCurrentVariable, Variable);
}

void PropertySheetController::SetVariableIdentifier(const std::wstring& Name)
{
    ControllerBase::SetVariableIdentifier(Name);
    Window().setWindowTitle(Qt16(Name));
    TellParts(&IController::SetVariableIdentifier, Name);
}

void PropertySheetController::SetControllerState(controllerState State)
{
    ControllerBase::SetControllerState(State);
    externals_.Tell(&IController::SetControllerState, State);
}

ControlHandle PropertySheetController::Control() const
{
    return static_cast<QWidget*>(window_.data());
}

} // namespace TeskPlus
