// The window of an object's properties: pages, chosen by tabs or by radio buttons, of rows with a help text each.
#pragma once

#include "workbench/logic/ControllerBase.h"
#include "workbench/logic/ControllerGroup.h"
#include "workbench/views/ToolWindow.h"
#include "workbench/views/ViewContext.h"
#include "workbench/views/values/HelpWidget.h"

#include <QPointer>

class QButtonGroup;
class QGroupBox;
class QTabBar;

namespace TeskPlus {

/// How the pages of a sheet are chosen, where there are several.
enum class sheetMenu
{
    RadioGroup = 1,
    Tabs = 2
};

/// The `PageNode`s of the class of a type, in tree order.
std::vector<int> PagesOfType(int Type);

class PropertySheetController : public ControllerBase, public IPropertySheet, public IPlacedWindow
{
public:
    PropertySheetController(const ControllerRequest& Request, ViewContext& Context, sheetMenu Menu,
                            const wchar_t* Caption = L"Properties");
    ~PropertySheetController() override;

    /// Takes over a controller that the sheet shows beside its rows.
    void InsertExternalController(std::unique_ptr<IController> Controller);
    /// A page of the class's own, behind those of the tree.
    void AddPage(const std::wstring& Title);
    /// Completes the window and opens a page: an index, or -1 for none.
    void BuildPropertySheet(int Page = 0);
    /// Shows another page; the sequence then runs.
    void ChangePage(int Page);
    int SelectedPage() const { return page_; }
    int NumPages() const { return static_cast<int>(pages_.size()); }
    std::wstring GetSelectedPageName() const;

    const std::vector<int>& PageNodes() const override { return pageNodes_; }
    void UpdateProperty() override;
    void UpdateControl(bool Mode, bool Dragging) override;
    /// Objects are no pictures: nothing is drawn on them.
    void AddChild(IController&) override {}
    void RemoveChild(IController&) override {}
    void ShowCtrl(bool BringToFront) override;
    bool HideCtrl(bool Keep) override;
    void SetWindowPossiblity(bool Possible) override;
    void SetIsExternalWidget(bool External) override;
    void SetCurrentOperation(Operation* Current) override;
    void SetCurrentVariable(AnyVariable* Variable) override;
    void SetVariableIdentifier(const std::wstring& Name) override;
    void SetControllerState(controllerState State) override;
    ControlHandle Control() const override;

protected:
    struct Page
    {
        int Node; ///< -1 for a page of the class's own
        std::wstring Title;
    };

    /// What a class adds below the rows of a page, by `AddControlFromExternalController`.
    virtual void AddExtras(int) {}
    /// Puts a control in a row of its own across both columns; it stays its controller's. One that `grows` takes the
    /// room that is left.
    void AddControlFromExternalController(QWidget* control, bool grows = false);
    /// The pull and push of one row.
    virtual void PullRow(IController& row);
    /// Whether the window shows that it stays.
    virtual bool ShowsPinned() const { return IsPinned(argumentState_); }

    /// What follows a change of a row: the event goes on as one of the sheet's own.
    void DispatchEvent(bool taken, bool mothers, bool dragging);
    std::unique_ptr<IController> MakeRowController(int node, int index, bool fromDefault);
    ToolWindow& Window() const { return *window_; }
    /// What the sheet shows beside its rows, and the rows of the page, each a controller of its property's node.
    const std::vector<IController*>& Externals() const { return externals_.Members(); }
    const std::vector<IController*>& Rows() const { return rows_.Members(); }
    const std::vector<Page>& Pages() const { return pages_; }
    /// Makes the window as large as the page asks for.
    virtual void Fit();

    ViewContext& context_;
    bool rowsFromDefault_ = true;

private:
    void CreateSubMenu();
    void ResetPage();
    void BuildPage(int page);
    void AddProperties(int node);
    /// Tells the rows, and then the externals.
    template <typename Call, typename... Values>
    void TellParts(Call function, Values&&... arguments)
    {
        rows_.Tell(function, arguments...);
        externals_.Tell(function, arguments...);
    }

    sheetMenu menuType_;
    std::wstring caption_;
    std::vector<Page> pages_;
    std::vector<int> pageNodes_;
    int page_ = -1;
    bool isDisplayed_ = false, isBuilt_ = false;
    QPointer<ToolWindow> window_;
    QTabBar* subTabMenu_ = nullptr;
    QButtonGroup* subRadioButtonMenu_ = nullptr;
    QWidget* pageArea_ = nullptr;
    QWidget* grid_ = nullptr;
    ControllerGroup rows_, externals_;
};

} // namespace TeskPlus
