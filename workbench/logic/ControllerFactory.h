// Which controller shows an argument: a table keyed by the type code, in which the views register their makers.
#pragma once

#include "engine/TypeNames.h"
#include "workbench/logic/IController.h"

#include <initializer_list>
#include <map>
#include <memory>
#include <vector>

namespace TeskPlus {

/// What a maker is told.
struct ControllerRequest
{
    Tesk::Engine& Engine;
    ControllerEventDelegate Delegate;      ///< `OperationHandler::DoRun`, or a sheet's own
    int Method = -1;                       ///< index of the method's node; -1 for a property
    AnyVariable* Variable = nullptr;       ///< what is shown; the object of a property
    int Node = -1;                         ///< index of the argument's node
    int Index = -1;                        ///< position among the arguments; -1 for a property
    int OperationId = -1;                  ///< -1 for a property on a sheet
    bool FromDefault = false;              ///< start from the node's `Default`
    bool IsProperty = false;               ///<
    ControlHandle Parent = nullptr;        ///< the window in which the control is made
    Operation* CurrentOperation = nullptr; ///< the operation that owns the argument
};

/// Makes a controller; null where it cannot be made (a cancelled file dialog).
using ControllerMaker = std::function<std::unique_ptr<IController>(const ControllerRequest&)>;

class ControllerFactory
{
public:
    virtual ~ControllerFactory() = default;

    /// Names the maker for a type code; a later one takes the place of the former.
    void Register(int Type, ControllerMaker Maker);
    void Register(const std::vector<int>& Types, const ControllerMaker& Maker);
    bool Supports(int Type) const { return makers_.count(Type) != 0; }

    /// Makes the controller for an argument or a property, by its type; null, traced "Unsupported data type", for a
    /// type without a maker.
    virtual std::unique_ptr<IController> CreateController(const ControllerRequest& Request) const;

private:
    std::map<int, ControllerMaker> makers_;
};

/// Whether arguments of a type hold the path of a file, narrow or wide.
inline bool IsPathType(int Type)
{
    return Type == CodeOf(L"char*") || Type == CodeOf(L"wchar_t*");
}

/// Which of its sisters shows an integer: it may move a profile, its breadth, or the threshold of a path.
enum class integerKind
{
    Plain,
    Profile,
    ProfileThickness,
    PathThreshold
};
integerKind IntegerKind(int Method, int Node);

/// The role of a method; `Plain` for a node that is none.
methodRole RoleOfMethod(int Method);

} // namespace TeskPlus
