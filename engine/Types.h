// What the engine can do with a variable of each data type.
#pragma once

#include "engine/TreeNode.h"
#include "engine/TypeNames.h"
#include "engine/Variable.h"

#include <memory>

namespace Tesk {

/// One row of the table of types. The classes of the catalogue have theirs made for them.
struct TypeRow
{
    int Code;
    std::unique_ptr<AnyVariable> (*Make)();
    /// Gives a value its node's default; null for objects.
    void (*SetDefault)(AnyVariable& Variable, const ArgumentNode& Node);
    /// Makes the first a view of the second; null where a type has no shadow.
    void (*ShallowCopy)(AnyVariable& Variable, const AnyVariable& Source, bool Keep);
    /// The value of an integer or an enumeration, whatever its width; null for the other types.
    int (*ReadInteger)(const AnyVariable& Variable) = nullptr;
    void (*WriteInteger)(AnyVariable& Variable, int Value) = nullptr;
};

/// The rows of the classes of the catalogue that exist, made by its generator, in the order of their codes.
extern const TypeRow classTypes[];
extern const int numClassTypes;

/// The row of a type code; null for a code without a variable, or whose class does not exist yet.
const TypeRow* FindType(int Code);

} // namespace Tesk
