// The menus of the list, and the renaming of variables.
#include "workbench/logic/OperationList.h"

#include <algorithm>

namespace TeskPlus {

using namespace attributeValue;

namespace {

/// A letter, then letters and digits: what every language of the scripts takes.
bool IsIdentifier(const std::wstring& name)
{
    const auto isLetter = [](wchar_t c) { return (c >= L'A' && c <= L'Z') || (c >= L'a' && c <= L'z'); };
    const auto isDigit = [](wchar_t c) { return c >= L'0' && c <= L'9'; };
    return !name.empty() && isLetter(name.front()) &&
           std::all_of(name.begin(), name.end(), [&](wchar_t c) { return isLetter(c) || isDigit(c); });
}

/// The text of a line with another name in front.
std::wstring Renamed(const std::wstring& text, const std::wstring& name)
{
    const std::size_t blank = text.find(L' ');
    return name + (blank == std::wstring::npos ? L"" : text.substr(blank));
}

} // namespace

std::vector<ListMenuEntry> OperationList::ContextMenu(const ListPath& Path) const
{
    switch (Path.Level()) {
    case -1:
        return {{L"Copy Script to Clipboard", listAction::CopyScript},
                {L"Export Script to File", listAction::ExportScript}};
    case 0: {
        std::vector<ListMenuEntry> entries = {
            {L"&Copy to Clipboard", listAction::CopyToClipboard},
            {L"&Delete", listAction::Delete, handler_.CheckOperationDeletion(Path.Operation)}};
        if (!handler_.IsLastOperation(Path.Operation)) entries.push_back({L"&Delete to End", listAction::DeleteToEnd});
        return entries;
    }
    case 1:
        if (Path.Operation != handler_.CurrentOperationId()) return {};
        return {{L"&Rename", listAction::Rename}};
    default:
        return {};
    }
}

bool OperationList::Confirm(const wchar_t* question) const
{
    MessageInfo message;
    message.Text = question;
    message.Title = OperationHandler::Title;
    message.Icon = messageIcon::Question;
    message.Buttons = {L"Yes", L"No"};
    message.CancelButton = 1;
    return handler_.Views().ShowMessage(message) == 0;
}

void OperationList::Run(listAction Action, const ListPath& Path)
{
    switch (Action) {
    case listAction::CopyToClipboard:
        if (CopyScript) CopyScript(Path.Operation);
        break;
    case listAction::CopyScript:
        if (CopyScript) CopyScript(Auto);
        break;
    case listAction::ExportScript:
        if (ExportScript) ExportScript();
        break;
    case listAction::Delete:
        if (handler_.CheckOperationDeletion(Path.Operation) && Confirm(L"Do you want to delete this operation ?"))
            handler_.DeleteOperation(Path.Operation, false);
        break;
    case listAction::DeleteToEnd:
        if (Confirm(L"Do you want to delete this operation and the following one(s)?"))
            handler_.DeleteToEnd(Path.Operation);
        break;
    case listAction::Rename:
        RenameItem(Path);
        break;
    }
}

void OperationList::RenameItem(const ListPath& Path)
{
    const ListLine* line = LineAt(Path);
    if (!line || Path.Level() != 1) return;
    const std::size_t blank = line->Text.find(L' ');
    isRenaming_ = true;
    renamedOperation_ = line->Variable.Op;
    renamedArgument_ = line->Argument;
    renamedName_ = line->Text.substr(0, blank);
    saveType_ = blank == std::wstring::npos ? L"" : line->Text.substr(blank);
    StartEdit();
}

/// While a name is edited, a menu may change the sequence and with it the lines.
ListLine* OperationList::RenamedLine(ListPath& path)
{
    for (std::size_t i = 0; i < lines_.size(); i++)
        for (std::size_t k = 0; k < lines_[i].Lines.size(); k++) {
            ListLine& line = lines_[i].Lines[k];
            if (line.Variable.Op != renamedOperation_ || line.Argument != renamedArgument_ ||
                line.Variable.VariableIdentifier != renamedName_)
                continue;
            path = {static_cast<int>(i), static_cast<int>(k), -1};
            return &line;
        }
    return nullptr;
}

void OperationList::StartEdit()
{
    ListPath path;
    if (!RenamedLine(path))
        EndRename(renamedName_);
    else if (StartLabelEdit)
        StartLabelEdit(path);
}

/// The edit is over: the line bears a name.
void OperationList::EndRename(const std::wstring& name)
{
    ListPath path;
    if (ListLine* line = RenamedLine(path)) line->Text = name + saveType_;
    isRenaming_ = false;
    Tell();
}

void OperationList::AfterLabelEdit(const std::wstring* Text)
{
    if (!isRenaming_) return;
    ListPath path;
    ListLine* line = RenamedLine(path);
    Arg* argument = line ? ArgumentOf(*line) : nullptr;
    if (!Text || !argument) {
        EndRename(renamedName_);
        return;
    }
    MessageInfo message;
    if (!IsIdentifier(*Text)) {
        message.Text = L"Invalid variable name, must be a letter followed by letters/digits";
        message.Title = L"Node Label Edit";
        handler_.Views().ShowMessage(message);
        StartEdit();
        return;
    }
    if (!engine_.RenameVariable(argument->Variable, Text->c_str(), true)) {
        line->Text = *Text + saveType_;
        Tell();
        message.Text = L"This variable name is already in use. \nPress Change to try another. \n"
                       L"Press Auto to add a suitable suffix.";
        message.Title = OperationHandler::Title;
        message.Icon = messageIcon::Question;
        message.Buttons = {L"Change", L"Auto", L"Cancel"};
        message.CancelButton = 2;
        const int answer = handler_.Views().ShowMessage(message);
        if (answer != 1) line->Text = renamedName_ + saveType_;
        if (answer == 0) {
            StartEdit();
            return;
        }
        if (answer != 1) {
            EndRename(renamedName_);
            return;
        }
    }
    Rename(*argument, *Text);
}

void OperationList::Rename(Arg& argument, const std::wstring& name)
{
    const std::wstring before = argument.Variable->NameText;
    IController* controller = handler_.GetController(before);
    engine_.RenameVariable(argument.Variable, name.c_str(), false);
    const std::wstring after = argument.Variable->NameText;
    if (controller) controller->SetVariableIdentifier(after);
    EndRename(after);
    handler_.UpdateControllerIdentifier((Engine::VarNode(argument.Node)->Flags & Value) != 0, before, after);
    RenameChildNodes(before, after);
}

/// The lines that read the old name take the new one.
void OperationList::RenameChildNodes(const std::wstring& before, const std::wstring& after)
{
    for (ListLine& entry : lines_)
        for (ListLine& line : entry.Lines) {
            if (line.Variable.VariableIdentifier != before) continue;
            line.Text = Renamed(line.Text, after);
            line.Variable.VariableIdentifier = after;
            for (ListLine& property : line.Lines)
                property.Variable.VariableIdentifier = after;
        }
    Tell();
}

Arg* OperationList::ArgumentOf(const ListLine& line) const
{
    for (const auto& operation : engine_.Operations)
        if (operation.get() == line.Variable.Op && line.Argument >= 0 && line.Argument < operation->NumArgs()) {
            Arg& argument = operation->Args[static_cast<std::size_t>(line.Argument)];
            return argument.Variable ? &argument : nullptr;
        }
    return nullptr;
}

void OperationList::RefreshNames()
{
    for (ListLine& entry : lines_)
        for (ListLine& line : entry.Lines) {
            const Arg* argument = ArgumentOf(line);
            if (!argument || argument->Variable->NameText == line.Variable.VariableIdentifier) continue;
            line.Variable.VariableIdentifier = argument->Variable->NameText;
            line.Text = Renamed(line.Text, argument->Variable->NameText);
            for (ListLine& property : line.Lines)
                property.Variable.VariableIdentifier = argument->Variable->NameText;
        }
}

} // namespace TeskPlus
