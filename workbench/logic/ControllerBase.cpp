#include "workbench/logic/ControllerBase.h"

#include <algorithm>

namespace TeskPlus {

ControllerBase::ControllerBase(const ControllerRequest& Request, bool IsStructure)
    : engine_(Request.Engine), currentVariable_(Request.Variable), currentOperation_(Request.CurrentOperation),
      argumentNode_(Request.Node), argumentIndex_(Request.Index), argumentName_(Engine::VarNode(Request.Node)->Label),
      argumentType_(Engine::VarNode(Request.Node)->Type), argumentAttr_(Engine::VarNode(Request.Node)->Flags),
      argumentState_(IsStructure ? controllerState::NeverShown : controllerState::Shown),
      isProperty_(Request.IsProperty), isStructure_(IsStructure), controllerEventDelegate_(Request.Delegate)
{
    if (currentVariable_ && currentVariable_->Name) variableIdentifier_ = currentVariable_->NameText;
}

ControllerBase::~ControllerBase()
{
    if (motherController_) motherController_->RemoveChild(*this);
}

void ControllerBase::AddChild(IController& Child)
{
    if (std::find(children_.begin(), children_.end(), &Child) == children_.end()) children_.push_back(&Child);
}

void ControllerBase::RemoveChild(IController& Child)
{
    children_.erase(std::remove(children_.begin(), children_.end(), &Child), children_.end());
}

bool ControllerBase::HideCtrl(bool)
{
    return argumentState_ < controllerState::Shown;
}

void ControllerBase::Notify(bool taken, bool mothers, bool dragging)
{
    if (controllerEventDelegate_)
        controllerEventDelegate_(currentOperation_, currentVariable_, taken, mothers, dragging, isExternalWidget_);
}

} // namespace TeskPlus
