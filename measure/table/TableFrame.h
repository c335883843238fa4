// What the methods of tables share.
#pragma once

#include "foundation/Enumerations.h"

namespace Tesk::tables {

inline constexpr const wchar_t* noMemory = L"Cannot allocate the array buffer";

/// Whether a table, and its file, hold cells of a type that is no raw field.
constexpr bool HasCells(int type)
{
    return type == Gray || type == Gray16 || type == Rgb || type == Int || type == Float || type == Dble ||
           type == Bool;
}

/// In messages.
const wchar_t* TypeName(int type);

} // namespace Tesk::tables
