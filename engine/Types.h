// What the engine can do with a variable of each data type.
#pragma once

#include "engine/TreeNode.h"
#include "engine/TypeNames.h"
#include "engine/Variable.h"

#include <memory>

namespace Tesk {

/// One row of the table of types, which the generator of the catalogue makes. What a type cannot do is null.
struct TypeRow
{
    std::unique_ptr<AnyVariable> (*Make)() = nullptr;
    /// Gives a value its node's default.
    void (*SetDefault)(AnyVariable& Variable, const ArgumentNode& Node) = nullptr;
    /// Makes the first a view of the second.
    void (*ShallowCopy)(AnyVariable& Variable, const AnyVariable& Source, bool Keep) = nullptr;
    /// The value of an integer or an enumeration, whatever its width.
    int (*ReadInteger)(const AnyVariable& Variable) = nullptr;
    void (*WriteInteger)(AnyVariable& Variable, int Value) = nullptr;
};

/// The row of a type code; null for a code without a variable, or whose class does not exist yet.
const TypeRow* FindType(int Code);

} // namespace Tesk
