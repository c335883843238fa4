// A workbench with recording views and controllers, for the tests of the logic.
#pragma once

#include "foundation/Status.h"
#include "image/Operator.h"
#include "workbench/logic/ControllerBase.h"
#include "workbench/logic/OperationList.h"
#include "workbench/logic/SilentViews.h"

#include <gtest/gtest.h>

#include <cwchar>
#include <filesystem>
#include <set>
#include <string>
#include <unistd.h>

namespace TeskPlus {

inline int FindMethod(const wchar_t* className, const wchar_t* label)
{
    return Engine::FindMethod(className, nullptr, label);
}

/// An object's controller: a window that is on the screen or not, with the properties of its class.
class FakeObject final : public ControllerBase, public IPropertySheet, public IPlacedWindow
{
public:
    explicit FakeObject(const ControllerRequest& request) : ControllerBase(request, true)
    {
        for (int child = 0; child < Engine::NumNodes; child++)
            if (Engine::Tree[child]->Kind() == PageKind && ClassType(child) == argumentType_) pages_.push_back(child);
        Alive++;
    }
    ~FakeObject() override { Alive--; }
    const std::vector<int>& PageNodes() const override { return pages_; }
    void ShowCtrl(bool) override { isShown = true; }
    bool HideCtrl(bool) override
    {
        if (argumentState_ >= controllerState::Shown) return false;
        isShown = false;
        return true;
    }
    void UpdateControl(bool, bool) override { pushes++; }
    void SetWindowPossiblity(bool possible) override { windowPossible = possible; }

    bool isShown = false, windowPossible = true;
    int pushes = 0;
    static inline int Alive = 0;

private:
    static int ClassType(int node)
    {
        const int owner = ClassOfNode(node);
        return owner < 0 ? 0 : static_cast<const ClassNode*>(Engine::Tree[owner])->Type;
    }
    std::vector<int> pages_;
};

/// The controller of an integer: its control holds a number of its own until it is pulled.
class FakeInt final : public ControllerBase
{
public:
    explicit FakeInt(const ControllerRequest& request) : ControllerBase(request, false) { UpdateControl(false, false); }
    void UpdateProperty() override
    {
        if (!isProperty_) static_cast<Var<int>*>(currentVariable_)->Value = shown;
    }
    void UpdateControl(bool, bool) override
    {
        if (!isProperty_ && argumentType_ == 97) shown = static_cast<Var<int>*>(currentVariable_)->Value;
    }
    /// The user moves the slider.
    void Move(int value)
    {
        shown = value;
        Notify(false, false, false);
    }

    int shown = 0;
};

class FakeViews : public SilentViews
{
public:
    void ShowOperationForm(const WindowPoint* location) override
    {
        isFormShown = true;
        if (location) place = *location;
    }
    void HideOperationForm() override { isFormShown = false; }
    void CloseOperationForm() override
    {
        SilentViews::CloseOperationForm();
        isFormShown = false;
    }
    void CheckRadioButton(int method) override { checkedMethod = method; }
    void EnableDeleteButton(bool enabled) override { isDeleteEnabled = enabled; }
    int ShowMessage(const MessageInfo& message) override
    {
        messages.push_back(message.Text);
        return SilentViews::ShowMessage(message);
    }
    void ShowParametersForm(bool shown) override { areParametersShown = shown; }
    WindowSize WorkAreaSize() const override { return {1000, 800}; }
    WindowSize OperationFormSize() const override { return {250, 63}; }
    WindowSize ControlSize(const IController&) const override { return {300, 200}; }
    void MoveControl(IController&, WindowPoint location) override { windowPlaces.push_back(location); }
    WindowPoint OperationFormLocation() const override { return place; }

    bool isFormShown = false, isDeleteEnabled = false, areParametersShown = false;
    int checkedMethod = -1;
    WindowPoint place;
    std::vector<std::wstring> messages;
    std::vector<WindowPoint> windowPlaces;
};

class WorkbenchTest : public ::testing::Test
{
protected:
    WorkbenchTest()
    {
        Status::ErrorBehavior(IgnoreIt);
        Status::Shallow = true;
        Engine::Trace = nullptr;
        RegisterSilentControllers(factory_, views_);
        factory_.Register(CodeOf(L"Image"), [](const ControllerRequest& r) { return std::make_unique<FakeObject>(r); });
        factory_.Register(CodeOf(L"int"), [](const ControllerRequest& r) { return std::make_unique<FakeInt>(r); });
        folder_ = std::filesystem::temp_directory_path() / ("tesk_workbench_" + std::to_string(getpid()));
        std::filesystem::create_directories(folder_);
        Save("a.png", 10);
        Save("b.png", 20);
    }
    ~WorkbenchTest() override
    {
        Status::Shallow = false;
        std::filesystem::remove_all(folder_);
    }

    std::string Path(const std::string& name) const { return (folder_ / name).string(); }
    void Save(const std::string& name, int value) const
    {
        Image image;
        image.Set(8, 6, Gray);
        Operator::Copy(value, image);
        image.Write(Path(name).c_str());
    }

    bool Add(const wchar_t* className, const wchar_t* label)
    {
        return handler_.MenuItemClicked(ItemOfMethod(FindMethod(className, label)));
    }
    bool Read(const std::string& name)
    {
        views_.Paths.push_back(Path(name));
        return Add(L"Image", L"Read  from File");
    }
    void Swap(const wchar_t* label) { handler_.SubstituteOperation(ItemOfMethod(FindMethod(L"Operator", label))); }
    void Select(int id)
    {
        const operationItemInfo item = handler_.ItemOf(id);
        handler_.SelectOperation(id, item.ClassNode, item.ChoiceNode);
    }

    const Arg& ArgOf(std::size_t operation, std::size_t argument) const
    {
        return engine_.Operations.at(operation)->Args.at(argument);
    }
    std::wstring NameOf(std::size_t operation, std::size_t argument) const
    {
        const AnyVariable* variable = ArgOf(operation, argument).Variable;
        return variable ? variable->NameText : L"";
    }
    int PixelOf(std::size_t operation, std::size_t argument) const
    {
        return static_cast<Var<Image>*>(ArgOf(operation, argument).Variable)->Value.PixelGray(0, 0);
    }
    FakeObject& Window(const std::wstring& name) const
    {
        return dynamic_cast<FakeObject&>(*handler_.GetController(name));
    }
    std::vector<std::wstring> Labels() const
    {
        std::vector<std::wstring> labels;
        for (const auto& operation : engine_.Operations)
            labels.push_back(Engine::Tree[operation->Node]->Label);
        return labels;
    }

    std::filesystem::path folder_;
    Engine engine_;
    FakeViews views_;
    ControllerFactory factory_;
    OperationHandler handler_{engine_, views_, factory_};
    OperationList list_{handler_};
};

} // namespace TeskPlus
