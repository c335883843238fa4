// The nodes of the prototype tree, in which the library describes itself. All nodes are constant data made by the
// catalogue's generator; an index into `Engine::Tree` is a node's identity.
#pragma once

#include "foundation/Records.h"

#include <cstdint>

namespace Tesk {

/// 128 flags in two words, low word first.
struct Mask128
{
    std::uint64_t Low = 0, High = 0;

    constexpr bool Bit(int n) const { return n < 64 ? Low >> n & 1 : High >> (n - 64) & 1; }
    bool operator==(const Mask128&) const = default;
};

enum nodeKind
{
    EnumKind = 0,
    EnumCaseKind = 1,
    ChoiceKind = 2,
    ClassKind = 3,
    PageKind = 4,
    MethodKind = 6,
    ArgumentKind = 8
};

/// Flags of a `ChoiceNode`, a `PageNode` and a `MethodNode`.
inline constexpr std::uint32_t GroupFlag = 512;
inline constexpr std::uint32_t BehindFlag = 1;
enum methodFlag : std::uint32_t
{
    StaticMethod = 0x4,
    ReturnsObjectMethod = 0x8,
    EntryMethod = 0x4000,
    DeferredMethod = 0x40000
};

/// Flags of an `ArgumentNode`.
namespace attributeValue {
enum : std::uint32_t
{
    In = 0x1,
    Out = 0x2,
    Static = 0x4,
    Const = 0x8,
    Instance = 0x10,
    Property = 0x20,
    Preset = 0x400,
    Result = 0x800,
    DynamicRange = 0x1000,
    Value = 0x8000,
    Mixed = 0x10000,
    LinkedMaximum = 0x20000,
    TextOnly = 0x100000,
    SpinBox = 0x200000,
    Slider = 0x400000,
    Fresh = 0x800000
};
}

/// What a method does beside its call, for those who show it. The generator finds it by the label, once.
enum class methodRole : std::uint8_t
{
    Plain,
    Row,      ///< its values move a horizontal profile
    Column,   ///< a vertical one
    Line,     ///< one of any direction
    Follow,   ///< a pixel of the picture tells where it starts, and at which threshold
    SeedFill, ///< a pixel of the picture tells where it starts
    Read,     ///< its path is asked for before it first runs
    Write
};

/// The same of an argument.
enum class argumentRole : std::uint8_t
{
    Plain,
    Position,  ///< a coordinate
    Beginning, ///< of a line
    End,
    Breadth,   ///< of a profile that the method moves
    Threshold, ///< of an outline that the method follows
    Above,
    Width, ///< of an image
    Height,
    EdgeIndex,    ///< counts from both ends
    MiddleAnchor, ///< a point that starts in the middle of its picture
    RightAnchor,  ///< half way to the right from there
    TopAnchor     ///< half way up
};

struct TreeNode
{
    std::int32_t FirstChild, NextSibling;
    const wchar_t* Label;
    const wchar_t* Documentation;
    const wchar_t* Identifier;
    const wchar_t* Alias;
    std::uint32_t Flags;

    constexpr TreeNode(std::int32_t firstChild, std::int32_t nextSibling, const wchar_t* label,
                       const wchar_t* documentation, const wchar_t* identifier, const wchar_t* alias,
                       std::uint32_t flags)
        : FirstChild(firstChild), NextSibling(nextSibling), Label(label), Documentation(documentation),
          Identifier(identifier), Alias(alias), Flags(flags)
    {}
    virtual int Kind() const = 0;

protected:
    ~TreeNode() = default;
};

struct EnumNode final : TreeNode
{
    using TreeNode::TreeNode;
    int Kind() const override { return EnumKind; }
};

struct EnumCaseNode final : TreeNode
{
    std::int32_t Value;

    constexpr EnumCaseNode(std::int32_t firstChild, std::int32_t nextSibling, const wchar_t* label,
                           const wchar_t* documentation, const wchar_t* identifier, const wchar_t* alias,
                           std::uint32_t flags, std::int32_t value)
        : TreeNode(firstChild, nextSibling, label, documentation, identifier, alias, flags), Value(value)
    {}
    int Kind() const override { return EnumCaseKind; }
};

struct ChoiceNode final : TreeNode
{
    using TreeNode::TreeNode;
    int Kind() const override { return ChoiceKind; }
};

struct ClassNode final : TreeNode
{
    std::int32_t Type;

    constexpr ClassNode(std::int32_t firstChild, std::int32_t nextSibling, const wchar_t* label,
                        const wchar_t* documentation, const wchar_t* identifier, const wchar_t* alias,
                        std::uint32_t flags, std::int32_t type)
        : TreeNode(firstChild, nextSibling, label, documentation, identifier, alias, flags), Type(type)
    {}
    int Kind() const override { return ClassKind; }
};

struct PageNode final : TreeNode
{
    using TreeNode::TreeNode;
    int Kind() const override { return PageKind; }
};

struct MethodNode final : TreeNode
{
    std::int32_t MethodId;
    std::int32_t Spare = -1;
    const wchar_t* Signature;
    methodRole Role;

    constexpr MethodNode(std::int32_t firstChild, std::int32_t nextSibling, const wchar_t* label,
                         const wchar_t* documentation, const wchar_t* identifier, const wchar_t* alias,
                         std::uint32_t flags, std::int32_t methodId, const wchar_t* signature,
                         methodRole role = methodRole::Plain)
        : TreeNode(firstChild, nextSibling, label, documentation, identifier, alias, flags), MethodId(methodId),
          Signature(signature), Role(role)
    {}
    /// Whether its values move a profile on the picture, or a pixel.
    constexpr bool MovesProfile() const
    {
        return Role == methodRole::Row || Role == methodRole::Column || Role == methodRole::Line;
    }
    constexpr bool MovesSite() const { return Role == methodRole::Follow || Role == methodRole::SeedFill; }

    int Kind() const override { return MethodKind; }
};

struct ArgumentNode : TreeNode
{
    std::int32_t Type;
    std::int32_t Mother;
    std::int32_t Spare = -1;
    std::int32_t PropertyId;
    Mask128 Accepted;
    argumentRole Role;
    /// Index of the `EnumNode` whose cases name the values of a whole number; -1 where they are numbers.
    std::int32_t NamesNode;

    constexpr ArgumentNode(std::int32_t firstChild, std::int32_t nextSibling, const wchar_t* label,
                           const wchar_t* documentation, const wchar_t* identifier, const wchar_t* alias,
                           std::uint32_t flags, std::int32_t type, std::int32_t mother, std::int32_t propertyId,
                           Mask128 accepted, argumentRole role = argumentRole::Plain, std::int32_t namesNode = -1)
        : TreeNode(firstChild, nextSibling, label, documentation, identifier, alias, flags), Type(type), Mother(mother),
          PropertyId(propertyId), Accepted(accepted), Role(role), NamesNode(namesNode)
    {}
    int Kind() const override { return ArgumentKind; }
};

/// An argument of a value type with nothing but a default.
template <typename T>
struct DefaultArgumentNode final : ArgumentNode
{
    T Default;

    constexpr DefaultArgumentNode(const ArgumentNode& base, T value) : ArgumentNode(base), Default(value) {}
};

/// An argument of a number type; a colour has its range by component.
template <typename T, typename Bound = T>
struct NumberArgumentNode final : ArgumentNode
{
    T Default;
    Bound Minimum, Maximum, Step;

    constexpr NumberArgumentNode(const ArgumentNode& base, T value, Bound minimum, Bound maximum, Bound step)
        : ArgumentNode(base), Default(value), Minimum(minimum), Maximum(maximum), Step(step)
    {}
};

using BoolArgumentNode = DefaultArgumentNode<bool>;
using CharArgumentNode = DefaultArgumentNode<char>;
using WcharArgumentNode = DefaultArgumentNode<wchar_t>;
using IntArgumentNode = NumberArgumentNode<std::int32_t>;
using FloatArgumentNode = NumberArgumentNode<float>;
using DbleArgumentNode = NumberArgumentNode<double>;
using RgbPixelArgumentNode = NumberArgumentNode<RgbPixel, std::int32_t>;
using RgbaPixelArgumentNode = NumberArgumentNode<RgbaPixel, std::int32_t>;
using StringArgumentNode = DefaultArgumentNode<const char*>;
using WstringArgumentNode = DefaultArgumentNode<const wchar_t*>;

struct EnumArgumentNode final : ArgumentNode
{
    std::int32_t Default;
    Mask128 Cases;          ///< by position among the children of the `EnumNode`, not by value
    std::int32_t EnumIndex; ///< index of the `EnumNode`
    std::int32_t CountNode; ///< with `LinkedMaximum`: index of the property that bounds the cases, else -1

    constexpr EnumArgumentNode(const ArgumentNode& base, std::int32_t value, Mask128 cases, std::int32_t enumIndex,
                               std::int32_t countNode)
        : ArgumentNode(base), Default(value), Cases(cases), EnumIndex(enumIndex), CountNode(countNode)
    {}
};

} // namespace Tesk
