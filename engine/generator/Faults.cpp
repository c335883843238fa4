// Whatever in the catalogue contradicts itself.
#include "Catalogue.h"

#include "engine/TreeNode.h"

#include <cctype>

namespace TeskGenerator {

namespace {

namespace flag = Tesk::attributeValue;

/// The names of a signature's parameters, in order.
std::vector<std::string> SignatureNames(const std::string& signature)
{
    std::vector<std::string> names;
    const std::size_t open = signature.find('('), close = signature.rfind(')');
    if (open == std::string::npos || close == std::string::npos || close < open) return {"?"};
    for (std::string part : SplitList(signature.substr(open + 1, close - open - 1))) {
        part = part.substr(0, part.find('='));
        while (!part.empty() && (part.back() == ' ' || part.back() == '[' || part.back() == ']'))
            part.pop_back();
        std::size_t at = part.size();
        while (at > 0 && (std::isalnum(static_cast<unsigned char>(part[at - 1])) || part[at - 1] == '_'))
            at--;
        if (!part.empty() && part != "void") names.push_back(part.substr(at));
    }
    return names;
}

} // namespace

std::vector<std::string> Catalogue::Faults() const
{
    std::vector<std::string> faults;
    const auto fault = [&](const Node& node, const std::string& what) { faults.push_back(node.place + ": " + what); };
    std::map<int, const Node*> methods, properties;
    for (const Node* node : nodes_) {
        if (node->help.empty() && node->index > 0) fault(*node, "no help text for " + node->identifier + node->label);
        if (node->kind == Kind::Method) {
            if (!methods.emplace(node->number, node).second) fault(*node, "the method number is taken");
            std::vector<std::string> arguments;
            for (const auto& child : node->children)
                if (!(child->flags & (flag::Instance | flag::Preset | flag::Result)))
                    arguments.push_back(child->identifier);
            if (arguments != SignatureNames(node->signature)) fault(*node, "the signature and the arguments differ");
            const bool instance = !node->children.empty() && (node->children.front()->flags & flag::Instance);
            if (instance == ((node->flags & Tesk::StaticMethod) != 0))
                fault(*node, "static methods have no instance, others have one");
        }
        if (node->kind != Kind::Argument) continue;
        if ((node->parent->kind == Kind::Page) != (node->number >= 0))
            fault(*node, "a property needs a number, others have none");
        if (node->number >= 0 && !properties.emplace(node->number, node).second)
            fault(*node, "the property number is taken");
        const bool number =
            node->variant == Variant::Int || node->variant == Variant::Float || node->variant == Variant::Dble;
        if (number && node->countNode < 0 && node->Has("range") && node->Has("default") &&
            node->Key("default") != "Auto") {
            const std::string range = node->Key("range");
            const std::size_t dots = range.find("..");
            const auto low = Number(range.substr(0, dots)), value = Number(node->Key("default"));
            const auto high = dots == std::string::npos ? std::nullopt : Number(range.substr(dots + 2));
            if (!low || !high || !value)
                fault(*node, "a bad number");
            else if (node->Key("default") != "MaxInt" && node->Key("default") != "MinInt" &&
                     (*value < *low || (*value > *high && !(node->flags & flag::DynamicRange))))
                fault(*node, "the default is outside the range");
        }
    }
    return faults;
}

} // namespace TeskGenerator
