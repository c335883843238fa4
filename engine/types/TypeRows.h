// Rows of the table of types, made from what a C++ type can do.
#pragma once

#include "engine/Types.h"

#include <type_traits>

namespace Tesk {

/// The value of a variable as a `T`, where it may be held as a type that serves as one.
template <typename T, typename Other>
const T& ObjectOfEither(const AnyVariable& Variable, int OtherCode)
{
    if constexpr (requires { sizeof(Other); })
        if (Variable.TypeCode == OtherCode) return static_cast<const Var<Other>&>(Variable).Value;
    return static_cast<const Var<T>&>(Variable).Value;
}

template <typename T>
const T& ObjectOf(const AnyVariable& Variable)
{
    return static_cast<const Var<T>&>(Variable).Value;
}

template <typename T>
std::unique_ptr<AnyVariable> MakeVar()
{
    return std::make_unique<Var<T>>();
}

template <typename T>
concept Shareable = requires(T& to, const T& from)
{
    to.ShallowCopy(from, true);
};

template <typename T>
void Share(AnyVariable& Variable, const AnyVariable& Source, bool Keep)
{
    T& to = static_cast<Var<T>&>(Variable).Value;
    if constexpr (Shareable<T>)
        to.ShallowCopy(ObjectOf<T>(Source), Keep);
    else
        to = ObjectOf<T>(Source);
}

template <typename T, typename Node>
void SetDefault(AnyVariable& Variable, const ArgumentNode& Argument)
{
    auto& variable = static_cast<Var<T>&>(Variable);
    const auto* node = dynamic_cast<const Node*>(&Argument);
    if (!node) return;
    if constexpr (requires { SetText(variable, node->Default); })
        SetText(variable, node->Default);
    else
        variable.Value = static_cast<T>(node->Default);
}

template <typename T>
int ReadInteger(const AnyVariable& Variable)
{
    return static_cast<int>(static_cast<const Var<T>&>(Variable).Value);
}

template <typename T>
void WriteInteger(AnyVariable& Variable, int Value)
{
    static_cast<Var<T>&>(Variable).Value = static_cast<T>(Value);
}

/// An object or a record; empty until the public header defines it.
template <typename T>
constexpr TypeRow ObjectRow()
{
    TypeRow row;
    if constexpr (requires { T(); }) row.Make = MakeVar<T>;
    return row;
}

/// One whose inputs are shadows. A class without state has nothing to share.
template <typename T>
constexpr TypeRow SharedRow()
{
    TypeRow row = ObjectRow<T>();
    if constexpr (requires { T(); })
        if constexpr (Shareable<T> || !std::is_empty_v<T>) row.ShallowCopy = Share<T>;
    return row;
}

/// An integer of any width, or an enumeration.
template <typename T, typename Node>
constexpr TypeRow IntegerRow()
{
    return {MakeVar<T>, SetDefault<T, Node>, nullptr, ReadInteger<T>, WriteInteger<T>};
}

template <typename T, typename Node>
constexpr TypeRow ValueRow()
{
    return {MakeVar<T>, SetDefault<T, Node>};
}

} // namespace Tesk
