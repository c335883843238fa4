#include "Catalogue.h"

#include "engine/TreeNode.h"

#include <algorithm>
#include <iomanip>
#include <ostream>
#include <sstream>

namespace TeskGenerator {

namespace {

namespace flag = Tesk::attributeValue;

std::string Literal(const std::string& text, const char* prefix = "L")
{
    std::string literal = std::string(prefix) + '"';
    for (const char c : text) {
        if (c == '\n')
            literal += "\\n";
        else if (c == '"' || c == '\\' || c == '?')
            literal += std::string("\\") + c;
        else
            literal += c;
    }
    return literal + '"';
}

/// The texts of a number's default, minimum, maximum and step, as C++ literals.
struct NumberTexts
{
    std::string value, minimum, maximum, step;
};

std::string IntText(double value)
{
    const auto number = static_cast<std::int64_t>(value);
    return number == -2147483648LL ? "Auto" : std::to_string(number);
}

std::string RealText(double value, bool single)
{
    std::ostringstream text;
    text << std::setprecision(17) << value;
    std::string result = text.str();
    if (result.find_first_of(".e") == std::string::npos) result += ".0";
    return single ? result + "f" : result;
}

NumberTexts Numbers(const Node& node)
{
    const bool whole = node.variant == Variant::Int;
    const bool pixel = node.variant == Variant::RgbPixel || node.variant == Variant::RgbaPixel;
    const std::string range = node.Key("range", whole || pixel ? "0..255" : "0..1");
    const std::size_t dots = range.find("..");
    const auto number = [&](const std::string& text, double fallback) {
        const double value = Catalogue::Number(text).value_or(fallback);
        return whole || pixel ? IntText(value) : RealText(value, node.variant == Variant::Float);
    };
    NumberTexts texts;
    texts.value = pixel ? "" : number(node.Key("default", "0"), 0);
    texts.minimum = number(range.substr(0, dots), 0);
    texts.maximum = node.countNode >= 0 ? std::to_string(node.countNode)
                                        : number(dots == std::string::npos ? "" : range.substr(dots + 2), 255);
    texts.step = number(node.Key("step", whole || pixel ? "1" : "0.01"), 1);
    return texts;
}

std::string PixelText(const Node& node)
{
    std::string text = node.Key("default", node.variant == Variant::RgbaPixel ? "0,0,0,255" : "0,0,0");
    text.erase(std::remove(text.begin(), text.end(), ' '), text.end());
    return (node.variant == Variant::RgbaPixel ? "RgbaPixel(" : "RgbPixel(") + text + ")";
}

std::string CharText(const Node& node, const char* prefix)
{
    const std::string text = node.Key("default");
    return text.size() == 1 && text[0] != '\'' && text[0] != '\\' ? std::string(prefix) + "'" + text + "'" : "0";
}

const char* NodeClass(const Node& node)
{
    switch (node.kind) {
    case Kind::Enum:
        return "EnumNode";
    case Kind::EnumCase:
        return "EnumCaseNode";
    case Kind::Choice:
        return "ChoiceNode";
    case Kind::Class:
        return "ClassNode";
    case Kind::Page:
        return "PageNode";
    case Kind::Method:
        return "MethodNode";
    case Kind::Argument:
        break;
    }
    static constexpr const char* names[] = {"ArgumentNode",      "BoolArgumentNode",     "CharArgumentNode",
                                            "WcharArgumentNode", "IntArgumentNode",      "FloatArgumentNode",
                                            "DbleArgumentNode",  "RgbPixelArgumentNode", "RgbaPixelArgumentNode",
                                            "EnumArgumentNode",  "StringArgumentNode",   "WstringArgumentNode"};
    return names[static_cast<int>(node.variant)];
}

std::string Mask(std::uint64_t low, std::uint64_t high)
{
    std::ostringstream text;
    text << "{0x" << std::hex << low << "u, 0x" << high << "u}";
    return text.str();
}

std::string Base(const Node& node)
{
    std::ostringstream text;
    text << node.firstChild << ", " << node.nextSibling << ", " << Literal(node.label) << ", " << Literal(node.help)
         << ", " << Literal(node.identifier) << ", " << (node.alias.empty() ? "nullptr" : Literal(node.alias)) << ", 0x"
         << std::hex << node.flags << "u";
    return text.str();
}

std::string Fields(const Node& node)
{
    if (node.kind != Kind::Argument) {
        std::string text = Base(node);
        if (node.kind == Kind::EnumCase) text += ", " + IntText(node.value);
        if (node.kind == Kind::Class) text += ", " + std::to_string(node.type);
        if (node.kind == Kind::Method)
            text += ", " + std::to_string(node.number) + ", " + Literal(node.signature) + ", methodRole::" + node.role;
        return text;
    }
    const std::string own = Base(node) + ", " + std::to_string(node.type) + ", " + std::to_string(node.mother) + ", " +
                            std::to_string(node.number) + ", " + Mask(node.Has("accepted") ? 0x3ffff : 0, 0) +
                            ", argumentRole::" + node.role + ", " + std::to_string(node.namesNode);
    if (node.variant == Variant::Object) return own;
    std::string text = "ArgumentNode(" + own + "), ";
    switch (node.variant) {
    case Variant::Bool:
        return text + (node.Key("default") == "true" ? "true" : "false");
    case Variant::Char:
        return text + CharText(node, "");
    case Variant::Wchar:
        return text + CharText(node, "L");
    case Variant::String:
        return text + Literal(node.Key("default"), "");
    case Variant::Wstring:
        return text + Literal(node.Key("default"));
    case Variant::Enum:
        return text + IntText(node.value) + ", " + Mask(node.casesLow, node.casesHigh) + ", " +
               std::to_string(node.enumIndex) + ", " + std::to_string(node.countNode);
    default:
        break;
    }
    const NumberTexts numbers = Numbers(node);
    const bool pixel = node.variant == Variant::RgbPixel || node.variant == Variant::RgbaPixel;
    return text + (pixel ? PixelText(node) : numbers.value) + ", " + numbers.minimum + ", " + numbers.maximum + ", " +
           numbers.step;
}

/// The C++ type of an argument's value.
std::string CppType(const Catalogue& catalogue, const Node& node)
{
    if (node.Has("enumeration")) return node.Key("enumeration");
    return catalogue.Types()[static_cast<std::size_t>(node.type)].cpp;
}

std::string Value(const Catalogue& catalogue, const Node& node, std::size_t position)
{
    return "Value<" + CppType(catalogue, node) + ">(Args, " + std::to_string(position) + ")";
}

/// A text that a method writes into the room that it is given; the argument behind it says how much that is.
bool IsWrittenText(const Node& argument)
{
    return argument.variant == Variant::String && (argument.flags & flag::Out) && !(argument.flags & flag::In);
}

void WriteMethod(const Catalogue& catalogue, const Node& method, std::ostream& out)
{
    std::vector<std::string> parameters;
    std::string instance, result, dst, width;
    std::vector<std::string> presets;
    const Node* resultNode = nullptr;
    std::string presetType = method.Key("preset", "Gray");
    for (std::size_t k = 0; k < method.children.size(); k++) {
        const std::string value = Value(catalogue, *method.children[k], k);
        if (method.children[k]->identifier == "Dst") dst = value;
        if (method.children[k]->identifier == method.Key("preset")) presetType = value + ".Type";
    }
    for (std::size_t k = 0; k < method.children.size(); k++) {
        const Node& argument = *method.children[k];
        const std::string value = Value(catalogue, argument, k);
        if (argument.flags & flag::Instance) {
            instance = value;
        } else if (argument.flags & flag::Preset) {
            const std::string& target = dst.empty() ? instance : dst;
            if (argument.identifier == "Width")
                width = value;
            else if (argument.identifier == "Height")
                presets.push_back(target + ".Set(" + width + ", " + value + ", " + presetType +
                                  ");\n    if (Status::Error().Code != NoError) return;");
            else
                presets.push_back(target + "." + argument.identifier + " = " + value + ";");
        } else if (argument.flags & flag::Result) {
            result = value;
            resultNode = &argument;
        } else if (IsWrittenText(argument)) {
            const std::string room = "room" + std::to_string(k);
            presets.push_back("TextRoom " + room + "(Args, " + std::to_string(k) + ");");
            parameters.push_back(room + ".Text()");
            parameters.push_back(room + ".Length()");
            k++;
        } else {
            parameters.push_back(value);
        }
    }
    out << "// " << Catalogue::ClassOf(method)->identifier << "::" << method.identifier << ", " << method.label << "\n"
        << "void Method" << method.number << "([[maybe_unused]] const Arg* Args)\n{\n";
    for (const auto& preset : presets)
        out << "    " << preset << "\n";
    std::string call =
        (method.flags & Tesk::StaticMethod) ? Catalogue::ClassOf(method)->identifier + "::" : instance + ".";
    call += method.identifier + "(";
    for (std::size_t k = 0; k < parameters.size(); k++)
        call += (k ? ", " : "") + parameters[k];
    call += ")";
    if (resultNode && resultNode->Key("type") == "Image")
        out << "    const Image& view = " << call << ";\n    if (Status::Error().Code == NoError) " << result
            << ".ShallowCopy(view, true);\n";
    else
        out << "    " << (resultNode ? result + " = " : "") << call << ";\n";
    out << "}\n\n";
}

void WriteProperty(const Catalogue& catalogue, const Node& property, std::ostream& out)
{
    const std::string type = CppType(catalogue, property), owner = Catalogue::ClassOf(property)->identifier;
    const bool isStatic = (property.flags & flag::Static) != 0;
    const std::string field = isStatic ? owner + "::" + property.identifier : "Object." + property.identifier;
    const std::string object =
        "    [[maybe_unused]] " + owner + "& Object = static_cast<Var<" + owner + ">&>(Holder).Value;\n";
    const std::string value = "static_cast<" + type + ">(" + property.Key("get", field) + ")",
                      taker = "static_cast<Var<" + type + ">&>(Out)";
    // A variable outlives the object whose text it has been given.
    const bool isText = property.Key("type").ends_with('*');
    out << "void Get" << property.number << "(AnyVariable& Out, [[maybe_unused]] AnyVariable& Holder)\n{\n"
        << (isStatic ? "" : object) << "    "
        << (isText ? "SetText(" + taker + ", " + value + ")" : taker + ".Value = " + value) << ";\n}\n\n";
    if (!(property.flags & flag::In) || property.Key("set") == "none") return;
    out << "void Set" << property.number << "(AnyVariable& In_, [[maybe_unused]] AnyVariable& Holder)\n{\n"
        << (isStatic ? "" : object) << "    const auto In = static_cast<Var<" << type << ">&>(In_).Value;\n"
        << (isText ? "    if (!In) return;\n" : "") << "    " << property.Key("set", field + " = In") << ";\n}\n\n";
}

/// Whether nothing that a node describes can be called: itself, or every method under it.
bool IsPending(const Node& node)
{
    if (node.pending || (node.kind != Kind::Class && node.kind != Kind::Choice)) return node.pending;
    bool holdsMethods = false;
    for (const auto& child : node.children) {
        const bool group = child->kind == Kind::Class || child->kind == Kind::Choice;
        if (!group && child->kind != Kind::Method) continue;
        if (!IsPending(*child)) return false;
        holdsMethods = true;
    }
    return holdsMethods;
}

} // namespace

void WriteTree(const Catalogue& catalogue, std::ostream& out)
{
    out << "// Made by the catalogue's generator; edit the catalogue instead.\n#include \"engine/Engine.h\"\n"
           "#include \"engine/TreeNode.h\"\n\n#include <algorithm>\n#include <iterator>\n\nnamespace Tesk {\n\n"
           "namespace {\n\n";
    for (const Node* node : catalogue.Nodes())
        out << "constinit const " << NodeClass(*node) << " node" << node->index << "{" << Fields(*node) << "};\n";
    out << "\n} // namespace\n\nconst int Engine::NumNodes = " << catalogue.Nodes().size()
        << ";\n\nconst TreeNode* const Engine::Tree[] = {\n";
    for (const Node* node : catalogue.Nodes())
        out << "    &node" << node->index << ",\n";
    out << "};\n\nbool Engine::IsPending(int Node)\n{\n    // In order, and closed by an index that no node has.\n"
           "    static constexpr int pending[] = {";
    for (const Node* node : catalogue.Nodes())
        if (IsPending(*node)) out << node->index << ", ";
    out << "0x7fffffff};\n    return std::binary_search(std::begin(pending), std::end(pending) - 1, Node);\n}\n\n"
           "} // namespace Tesk\n";
}

void WriteDispatch(const Catalogue& catalogue, std::ostream& out)
{
    std::vector<const Node*> methods, properties;
    std::vector<std::string> classes;
    for (const Node* node : catalogue.Nodes()) {
        if (node->pending) continue;
        if (node->kind == Kind::Method) methods.push_back(node);
        if (node->kind == Kind::Argument && node->parent->kind == Kind::Page) properties.push_back(node);
    }
    out << "// Made by the catalogue's generator; edit the catalogue instead.\n#include \"Tesk.h\"\n"
           "#include \"engine/dispatch/Dispatch.h\"\n#include \"engine/Operation.h\"\n#include "
           "\"engine/Variable.h\"\n\n"
           "#include <algorithm>\n#include <iterator>\n#include <string>\n\nnamespace Tesk {\n\nnamespace {\n\n"
           "template <typename T>\nT& Value(const Arg* Args, int Position)\n{\n"
           "    return static_cast<Var<T>*>(static_cast<AnyVariable*>(Args[Position].Variable))->Value;\n}\n\n"
           "/// What a method writes here becomes the text of the argument; its length is what the next one asks for.\n"
           "class TextRoom\n{\npublic:\n    TextRoom(const Arg* Args, int Position)\n"
           "        : variable_(static_cast<Var<const char*>&>(*Args[Position].Variable)),\n"
           "          length_(std::clamp(Value<int>(Args, Position + 1), 0, 1 << 20)), text_(length_ + 1u, char())\n   "
           " {}\n"
           "    ~TextRoom() { SetText(variable_, text_.c_str()); }\n"
           "    TextRoom(const TextRoom&) = delete;\n    TextRoom& operator=(const TextRoom&) = delete;\n"
           "    char* Text() { return text_.data(); }\n    int Length() const { return length_; }\n\n"
           "private:\n    Var<const char*>& variable_;\n    int length_;\n    std::string text_;\n};\n\n";
    for (const Node* method : methods)
        WriteMethod(catalogue, *method, out);
    for (const Node* property : properties)
        WriteProperty(catalogue, *property, out);
    const auto byNumber = [](const Node* a, const Node* b) { return a->number < b->number; };
    std::sort(methods.begin(), methods.end(), byNumber);
    std::sort(properties.begin(), properties.end(), byNumber);
    out << "struct MethodRow\n{\n    int Number, NumArgs;\n    void (*Call)(const Arg*);\n};\n\n"
           "struct PropertyRow\n{\n    int Number;\n    void (*Get)(AnyVariable&, AnyVariable&);\n"
           "    void (*Set)(AnyVariable&, AnyVariable&);\n};\n\nconstexpr MethodRow methods[] = {\n";
    for (const Node* method : methods)
        out << "    {" << method->number << ", " << method->children.size() << ", Method" << method->number << "},\n";
    out << "};\n\nconstexpr PropertyRow properties[] = {\n";
    for (const Node* property : properties) {
        const bool writable = (property->flags & flag::In) && property->Key("set") != "none";
        out << "    {" << property->number << ", Get" << property->number << ", "
            << (writable ? "Set" + std::to_string(property->number) : "nullptr") << "},\n";
    }
    out << "};\n\ntemplate <typename Rows>\nauto Find(const Rows& rows, int Number)\n{\n"
           "    const auto row = std::lower_bound(std::begin(rows), std::end(rows), Number,\n"
           "                                      [](const auto& a, int b) { return a.Number < b; });\n"
           "    return row != std::end(rows) && row->Number == Number ? row : nullptr;\n}\n\n} // namespace\n\n"
           "bool DispatchMethod(std::int32_t MethodId, const Arg* Args)\n{\n"
           "    const auto* row = Find(methods, MethodId);\n    if (!row) return false;\n"
           "    for (int i = 0; i < row->NumArgs; i++)\n        if (!Args[i].Variable) return false;\n"
           "    row->Call(Args);\n    return true;\n}\n\n"
           "bool GetPropertyValue(std::int32_t PropertyId, AnyVariable& Out, AnyVariable& Object)\n{\n"
           "    const auto* row = Find(properties, PropertyId);\n    if (!row) return false;\n"
           "    row->Get(Out, Object);\n    return true;\n}\n\n"
           "bool SetPropertyValue(std::int32_t PropertyId, AnyVariable& In, AnyVariable& Object)\n{\n"
           "    const auto* row = Find(properties, PropertyId);\n    if (!row || !row->Set) return false;\n"
           "    row->Set(In, Object);\n    return true;\n}\n\n} // namespace Tesk\n";
}

void WriteEnumChecks(const Catalogue& catalogue, std::ostream& out)
{
    out << "// Made by the catalogue's generator: every enumerator has the value that the catalogue gives it.\n"
           "#include \"foundation/Enumerations.h\"\n\nnamespace Tesk {\n\n";
    for (const Node* node : catalogue.Nodes()) {
        if (node->kind != Kind::EnumCase) continue;
        out << "static_assert(static_cast<int>(" << node->parent->Key("cpp", node->parent->identifier)
            << "::" << node->identifier
            << ") == " << (node->value == INT32_MIN ? "-2147483647 - 1" : std::to_string(node->value)) << ");\n";
    }
    out << "\n} // namespace Tesk\n";
}

} // namespace TeskGenerator
