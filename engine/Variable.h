// The named, typed boxes in which the values of a sequence live.
#pragma once

#include "foundation/ReadOnly.h"
#include "foundation/Records.h"

#include <string>
#include <utility>

namespace Tesk {

class Engine;

/// What the engine knows of every variable.
struct AnyVariable
{
    AnyVariable() = default;
    explicit AnyVariable(const wchar_t* name) : NameText(name), Name(NameText.c_str()) {}
    AnyVariable(const AnyVariable&) = delete;
    AnyVariable& operator=(const AnyVariable&) = delete;
    virtual ~AnyVariable() = default;

    std::wstring NameText;                 ///< what `Name` points to
    ReadOnly<const wchar_t*, Engine> Name; ///< null on a temporary that a property is fetched into
    bool AutoNamed = false;                ///< the name was made by the engine, which may change it
    bool Reserved = false;                 ///< taken by an argument of the operation being bound
    bool Changed = false;                  ///< refreshed or recomputed by the latest run
    std::int32_t Stamp = 0;                ///< the engine's clock at the last change
    std::int32_t Scratch = 0;              ///< the look-ahead's copy of `Stamp`
    AnyVariable* Source = nullptr;         ///< the earlier variable of which this one is a shadow
    AnyVariable* Read = nullptr;           ///< where the latest run refreshed it from
    bool Bound = false;                    ///< an argument of an operation, by `Engine::MarkBound`
    std::int32_t Uses = 0;                 ///< how many arguments hold the variable

    int TypeCode = 0; ///< what `Value` is; 0 on a temporary
    /// What a `Value` that is a pointer to text points to.
    std::wstring WideText;
    std::string NarrowText;
};

template <typename T>
struct Var final : AnyVariable
{
    Var() = default;
    explicit Var(const wchar_t* name) : AnyVariable(name) {}

    T Value{};
};

/// Gives a text variable a text of its own.
inline void SetText(Var<const char*>& Variable, std::string Text)
{
    Variable.NarrowText = std::move(Text);
    Variable.Value = Variable.NarrowText.c_str();
}
inline void SetText(Var<const wchar_t*>& Variable, std::wstring Text)
{
    Variable.WideText = std::move(Text);
    Variable.Value = Variable.WideText.c_str();
}

} // namespace Tesk
