// The data types by their names and codes, which are also the vocabulary of messages and of the list of operations.
#pragma once

#include "engine/TypeTable.h"

#include <string_view>
#include <vector>

namespace Tesk {

/// The code of a type; a name that no type has does not compile.
consteval int CodeOf(std::wstring_view Name)
{
    int code = 1;
    while (typeString[code] != Name)
        code++;
    return code;
}

/// What the type of a code is; `None` for a number that is no code.
constexpr typeKind KindOf(int Code)
{
    return Code > 0 && Code < typeCount ? typeKinds[Code] : typeKind::None;
}

/// The codes of all types of a kind, in their order.
inline std::vector<int> TypesOfKind(typeKind Kind)
{
    std::vector<int> codes;
    for (int code = 1; code < typeCount; code++)
        if (typeKinds[code] == Kind) codes.push_back(code);
    return codes;
}

/// Whether a variable of one type can stand where another is wanted, such as a histogram for a profile; any type serves
/// where 0 is wanted.
constexpr bool TypeServes(int Wanted, int Offered)
{
    return Wanted == 0 || Wanted == Offered || (Offered > 0 && Offered < typeCount && servedTypes[Offered] == Wanted);
}

} // namespace Tesk
