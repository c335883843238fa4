// Rows of the table of types, made from a C++ type.
#pragma once

#include "engine/TypeNames.h"
#include "engine/Types.h"

#include <algorithm>
#include <type_traits>

namespace Tesk {

/// The value of a variable as a `T`, where it may be held as a type that serves as one.
template <typename T, typename Other>
const T& ObjectOfEither(const AnyVariable& Variable, int OtherCode)
{
    if constexpr (std::is_base_of_v<T, Other>)
        if (Variable.TypeCode == OtherCode) return static_cast<const Var<Other>&>(Variable).Value;
    return static_cast<const Var<T>&>(Variable).Value;
}

template <typename T>
const T& ObjectOf(const AnyVariable& Variable)
{
    return static_cast<const Var<T>&>(Variable).Value;
}

/// The types whose objects can be seen through a shadow.
constexpr bool CanHaveShadow(int Code)
{
    constexpr int codes[] = {CodeOf(L"Blobs"),        CodeOf(L"CharReader"),    CodeOf(L"Code1DReader"),
                             CodeOf(L"Code2DReader"), CodeOf(L"Comparator"),    CodeOf(L"EdgeArc"),
                             CodeOf(L"EdgeEllipse"),  CodeOf(L"EdgeLine"),      CodeOf(L"EdgeMap"),
                             CodeOf(L"EdgePoint"),    CodeOf(L"EdgeRectangle"), CodeOf(L"FeatureTable"),
                             CodeOf(L"Geometry"),     CodeOf(L"Histogram"),     CodeOf(L"Image"),
                             CodeOf(L"Kernel"),       CodeOf(L"Locator"),       CodeOf(L"Morpho"),
                             CodeOf(L"Path"),         CodeOf(L"Poly"),          CodeOf(L"Profile"),
                             CodeOf(L"Pyramid"),      CodeOf(L"Region"),        CodeOf(L"ShapeMatcher"),
                             CodeOf(L"SnakeGauge"),   CodeOf(L"Source"),        CodeOf(L"XY")};
    return std::find(std::begin(codes), std::end(codes), Code) != std::end(codes);
}

template <typename T>
std::unique_ptr<AnyVariable> MakeVar()
{
    return std::make_unique<Var<T>>();
}

template <typename T>
void Share(AnyVariable& Variable, const AnyVariable& Source, bool Keep)
{
    static_cast<Var<T>&>(Variable).Value.ShallowCopy(ObjectOf<T>(Source), Keep);
}

/// A class of the library: its shadows share through the class's own `ShallowCopy`.
template <typename T, int Code>
constexpr TypeRow ObjectRow()
{
    TypeRow row{Code, MakeVar<T>, nullptr, nullptr};
    if constexpr (CanHaveShadow(Code)) {
        // A class without state has nothing to share.
        constexpr bool shares = requires(T & to, const T& from)
        {
            to.ShallowCopy(from, true);
        };
        static_assert(shares || std::is_empty_v<T>);
        if constexpr (shares) row.ShallowCopy = Share<T>;
    }
    return row;
}

} // namespace Tesk
