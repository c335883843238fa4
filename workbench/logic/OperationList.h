// The list of operations, as far as it needs no screen: its lines, their texts and states, and what a click, a hover, a
// menu entry or a rename does.
#pragma once

#include "workbench/logic/OperationHandler.h"

namespace TeskPlus {

/// The state of a line, shown as its image.
enum class lineImage
{
    CanBePinned = 0,      ///< "Ok16_White.bmp"
    Pinned = 1,           ///< "OkOk16.bmp"
    CurrentOperation = 2, ///< "Current.bmp"
    None = 10
};

/// What stands behind a line of a variable or of a property.
struct variableItemInfo
{
    Operation* Op = nullptr;
    int VariableNode = -1; ///< the argument's node, or the property's
    std::wstring VariableIdentifier;
};

/// A line of the list: an operation holds its variables, a variable its properties.
struct ListLine
{
    std::wstring Text;
    lineImage ImageIndex = lineImage::None;
    operationItemInfo Item;     ///< of an operation
    variableItemInfo Variable;  ///< of the others
    int Argument = -1;          ///< position among the operation's arguments
    std::wstring Failure;       ///< why the operation has stopped the latest run; empty if it has not
    std::int32_t Duration = -1; ///< of the operation, as the text tells it
    bool IsExpanded = false;
    bool Checked = false; ///< collapsed once, to its pinned lines
    std::vector<ListLine> Lines;
};

/// The place of a line; -1 where a level is not reached. Nothing at all is the empty space.
struct ListPath
{
    int Operation = -1, Variable = -1, Property = -1;

    int Level() const { return Property >= 0 ? 2 : Variable >= 0 ? 1 : Operation >= 0 ? 0 : -1; }
    bool operator==(const ListPath&) const = default;
};

enum class listAction
{
    CopyToClipboard,
    Delete,
    DeleteToEnd,
    Rename,
    CopyScript,
    ExportScript
};

struct ListMenuEntry
{
    std::wstring Text;
    listAction Action;
    bool Enabled = true;
};

class OperationList
{
public:
    /// Installs itself as the list of the handler.
    explicit OperationList(OperationHandler& Handler);
    OperationList(const OperationList&) = delete;
    OperationList& operator=(const OperationList&) = delete;

    // What the view installs.
    /// The lines have changed.
    std::function<void()> Changed;
    /// The texts or the states of some operations have changed, and nothing else.
    std::function<void(const std::vector<int>& Ids)> TextsChanged;
    /// Editing the text of a line is to start.
    std::function<void(const ListPath&)> StartLabelEdit;
    /// "Copy to Clipboard" of an operation's section, or of all with `Auto`; "Export Script to File".
    std::function<void(int)> CopyScript;
    std::function<void()> ExportScript;

    const std::vector<ListLine>& Lines() const { return lines_; }
    const ListLine* LineAt(const ListPath& Path) const;

    // Called by the handler.
    void AddOperation(int Id, const operationItemInfo& Item, bool IsNew);
    void RemoveOperation(int Id);
    void SelectOperation(int Previous, int Id, bool KeepItems);
    void CreateNewOperationItems(int Id);
    void UpdateTimings();

    // Called by the view.
    void NodeMouseClick(const ListPath& Path);
    /// The pointer rests on a line, or with an empty path has left the tree.
    void NodeMouseHover(const ListPath& Path);
    /// Whether the line may expand, or collapse; its lines are rebuilt as they are to be shown.
    bool BeforeExpand(const ListPath& Path);
    bool BeforeCollapse(const ListPath& Path);
    std::vector<ListMenuEntry> ContextMenu(const ListPath& Path) const;
    void Run(listAction Action, const ListPath& Path);

    // Renaming.
    void RenameItem(const ListPath& Path);
    bool IsRenaming() const { return isRenaming_; }
    /// The text that the editor starts with: the variable's name.
    const std::wstring& RenamedName() const { return renamedName_; }
    /// The edit ended, with a text or without one.
    void AfterLabelEdit(const std::wstring* Text);

private:
    ListLine* Find(const ListPath& path);
    ListLine VariableLine(Operation& operation, int argument) const;
    bool IsValueRow(const Operation& operation, int argument) const;
    void AddProperties(ListLine& line, bool pinnedOnly) const;
    void UpdateOperationItems(ListLine& entry, bool expand);
    void ClickVariable(ListLine& line);
    void ClickProperty(ListLine& line);
    void ShowVariable(int mode, IController& controller);
    void HideVariable(IController& controller);
    void HideHover();
    void Rename(Arg& argument, const std::wstring& name);
    void RenameChildNodes(const std::wstring& before, const std::wstring& after);
    Arg* ArgumentOf(const ListLine& line) const;
    /// Null if the line has gone, or shows another variable by now.
    ListLine* RenamedLine(ListPath& path);
    void StartEdit();
    void RefreshNames();
    void EndRename(const std::wstring& name);
    bool Confirm(const wchar_t* question) const;
    void Tell() const;

    OperationHandler& handler_;
    Engine& engine_;
    std::vector<ListLine> lines_;
    bool isRenaming_ = false;
    /// The variable being renamed, by whatever path its line is reached in the end.
    const Operation* renamedOperation_ = nullptr;
    int renamedArgument_ = -1;
    std::wstring renamedName_, saveType_;
};

} // namespace TeskPlus
