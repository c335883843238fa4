// What the catalogue's generator makes, beside the table of nodes itself.
#pragma once

#include <cstdint>

namespace Tesk {

struct Arg;
struct AnyVariable;

/// Makes the one library call of a method on the values of the arguments; a number without a case does nothing.
/// False for such a number.
bool DispatchMethod(std::int32_t MethodId, const Arg* Args);

/// Copies one property of the object's value to the other variable's value, or back. False for an unknown number, and
/// for a write to a read-only property.
bool GetPropertyValue(std::int32_t PropertyId, AnyVariable& Out, AnyVariable& Object);
bool SetPropertyValue(std::int32_t PropertyId, AnyVariable& In, AnyVariable& Object);

} // namespace Tesk
