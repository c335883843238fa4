// Values that move another object as they change: the row, column, breadth and ends of a profile, and the threshold of
// a followed outline.
#pragma once

#include "workbench/views/values/ValueController.h"

namespace Tesk {
class Profile;
}

namespace TeskPlus {

/// The profile that a value moves: its `Manipulator`'s; null for none. For the drags of the picture, too.
Tesk::Profile* ManipulatedProfile(const IController& controller);

std::unique_ptr<IController> MakeProfilePosition(const ControllerRequest& request);
std::unique_ptr<IController> MakeProfileBreadth(const ControllerRequest& request);
std::unique_ptr<IController> MakeProfileEnd(const ControllerRequest& request);
std::unique_ptr<IController> MakePathThreshold(const ControllerRequest& request);

} // namespace TeskPlus
