// Several controllers that are told the same, in order.
#pragma once

#include "workbench/logic/IController.h"

#include <functional>
#include <memory>
#include <utility>

namespace TeskPlus {

class ControllerGroup
{
public:
    /// Takes a member over.
    IController& Add(std::unique_ptr<IController> Member)
    {
        owned_.push_back(std::move(Member));
        members_.push_back(owned_.back().get());
        return *members_.back();
    }
    void Clear()
    {
        members_.clear();
        owned_.clear();
    }
    const std::vector<IController*>& Members() const { return members_; }

    /// Calls a function of the interface on each member.
    template <typename Call, typename... Values>
    void Tell(Call Function, Values&&... Arguments) const
    {
        for (IController* member : members_)
            std::invoke(Function, *member, Arguments...);
    }

private:
    std::vector<std::unique_ptr<IController>> owned_;
    std::vector<IController*> members_;
};

} // namespace TeskPlus
