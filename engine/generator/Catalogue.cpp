#include "Catalogue.h"

#include "engine/TreeNode.h"

#include <algorithm>
#include <cctype>
#include <fstream>
#include <set>
#include <utility>

namespace TeskGenerator {

namespace {

namespace flag = Tesk::attributeValue;

const std::map<std::string, std::uint32_t> argumentFlags = {{"In", flag::In},
                                                            {"Out", flag::Out},
                                                            {"StaticProperty", flag::Static},
                                                            {"Const", flag::Const},
                                                            {"Instance", flag::Instance},
                                                            {"Property", flag::Property},
                                                            {"Preset", flag::Preset},
                                                            {"Result", flag::Result},
                                                            {"DynamicRange", flag::DynamicRange},
                                                            {"Value", flag::Value},
                                                            {"Mixed", flag::Mixed},
                                                            {"LinkedMaximum", flag::LinkedMaximum},
                                                            {"TextOnly", flag::TextOnly},
                                                            {"SpinBox", flag::SpinBox},
                                                            {"Slider", flag::Slider},
                                                            {"Fresh", flag::Fresh}};
const std::map<std::string, std::uint32_t> methodFlags = {{"Static", Tesk::StaticMethod},
                                                          {"ReturnsObject", Tesk::ReturnsObjectMethod},
                                                          {"Entry", Tesk::EntryMethod},
                                                          {"Deferred", Tesk::DeferredMethod}};
const std::set<std::string> argumentKeys = {"alias", "default",     "range", "step",     "cases", "mother", "linked",
                                            "count", "enumeration", "names", "property", "get",   "set"};

[[noreturn]] void Fail(const std::string& place, const std::string& what)
{
    throw CatalogueError(place + ": " + what);
}

/// Words of a line; a quoted part keeps its blanks, and a word that was quoted as a whole begins with a quote mark.
std::vector<std::string> Split(const std::string& line, const std::string& place)
{
    std::vector<std::string> words;
    std::size_t i = 0;
    while (i < line.size()) {
        if (line[i] == ' ') {
            i++;
            continue;
        }
        if (line[i] == '|') {
            words.push_back("|" + (i + 2 <= line.size() ? line.substr(std::min(i + 2, line.size())) : std::string()));
            break;
        }
        std::string word;
        if (line[i] == '"') word = "\"";
        bool quoted = false;
        for (; i < line.size() && (quoted || line[i] != ' '); i++) {
            if (line[i] == '"') {
                quoted = !quoted;
            } else if (quoted && line[i] == '\\' && i + 1 < line.size()) {
                i++;
                word += line[i] == 'n' ? '\n' : line[i];
            } else {
                word += line[i];
            }
        }
        if (quoted) Fail(place, "a quote is not closed");
        words.push_back(word);
    }
    return words;
}

std::string SpacedWords(const std::string& identifier)
{
    std::string text;
    for (std::size_t i = 0; i < identifier.size(); i++) {
        const bool upper = std::isupper(static_cast<unsigned char>(identifier[i])) != 0;
        const bool afterLower = i > 0 && !std::isupper(static_cast<unsigned char>(identifier[i - 1]));
        if (upper && afterLower) text += ' ';
        text += identifier[i];
    }
    return text;
}

Variant VariantOf(const std::string& type, bool enumeration)
{
    static const std::map<std::string, Variant> variants = {
        {"bool", Variant::Bool},     {"char", Variant::Char},         {"wchar_t", Variant::Wchar},
        {"int", Variant::Int},       {"float", Variant::Float},       {"double", Variant::Dble},
        {"GrayPixel", Variant::Int}, {"RgbPixel", Variant::RgbPixel}, {"RgbaPixel", Variant::RgbaPixel},
        {"char*", Variant::String},  {"wchar_t*", Variant::Wstring}};
    if (enumeration) return Variant::Enum;
    const auto found = variants.find(type);
    return found == variants.end() ? Variant::Object : found->second;
}

/// A list of enumerators in which "First..Last" stands for all from one to the other.
std::vector<std::string> ExpandCases(const std::vector<std::string>& items, const Node& enumeration,
                                     const std::string& place)
{
    std::vector<std::string> names;
    for (const std::string& item : items) {
        const std::size_t dots = item.find("..");
        if (dots == std::string::npos) {
            names.push_back(item);
            continue;
        }
        const auto at = [&](const std::string& name) {
            return std::find_if(enumeration.children.begin(), enumeration.children.end(),
                                [&](const auto& child) { return child->identifier == name; });
        };
        const auto first = at(item.substr(0, dots)), last = at(item.substr(dots + 2));
        if (first == enumeration.children.end() || last == enumeration.children.end() || last < first)
            Fail(place, "a bad range of cases");
        for (auto child = first; child <= last; child++)
            names.push_back((*child)->identifier);
    }
    return names;
}

} // namespace

std::vector<std::string> SplitList(const std::string& text)
{
    std::vector<std::string> items;
    std::size_t from = 0;
    while (from <= text.size()) {
        const std::size_t comma = std::min(text.find(',', from), text.size());
        items.push_back(text.substr(from, comma - from));
        from = comma + 1;
    }
    return items;
}

std::string Node::Key(const std::string& key, const std::string& fallback) const
{
    const auto found = keys.find(key);
    return found == keys.end() ? fallback : found->second;
}

std::optional<double> Catalogue::Number(const std::string& text)
{
    if (text == "Auto") return -2147483648.0;
    if (text == "MinInt" || text == "NotInitialized") return -2147483647.0;
    if (text == "MaxInt") return 2147483647.0;
    if (text == "true") return 1;
    if (text == "false") return 0;
    try {
        std::size_t used = 0;
        if (text.starts_with("0x")) {
            const unsigned long value = std::stoul(text, &used, 16);
            if (used == text.size()) return static_cast<std::int32_t>(static_cast<std::uint32_t>(value));
            return {};
        }
        const double value = std::stod(text, &used);
        if (used == text.size()) return value;
    } catch (const std::exception&) {
    }
    return {};
}

const Node* Catalogue::ClassOf(const Node& node)
{
    const Node* at = &node;
    while (at && at->kind != Kind::Class)
        at = at->parent;
    return at;
}

Catalogue::Catalogue(const std::filesystem::path& folder) : folder_(folder), root_(std::make_unique<Node>())
{
    ParseTypes(folder_ / "Types.txt");
    root_->kind = Kind::Choice;
    Parse(folder_ / "Tesk.tree", *root_, 0);
    ParseSettings(folder_ / "Settings.txt");
    NumberNodes(*root_);
    Resolve();
}

void Catalogue::Parse(const std::filesystem::path& path, Node& parent, int baseLevel)
{
    std::ifstream file(path);
    if (!file) throw CatalogueError("cannot open " + path.string());
    std::vector<Node*> open(1, &parent);
    std::string line;
    for (int number = 1; std::getline(file, line); number++) {
        const std::string place = path.filename().string() + ":" + std::to_string(number);
        while (!line.empty() && (line.back() == ' ' || line.back() == '\r'))
            line.pop_back();
        const std::size_t blanks = line.find_first_not_of(' ');
        if (blanks == std::string::npos || line[blanks] == '#') continue;
        if (blanks % 2) Fail(place, "the indentation is odd");
        const std::size_t level = blanks / 2;
        const std::string text = line.substr(blanks);
        if (text.starts_with("root ")) {
            const auto words = Split(text, place);
            parent.label = words.at(1).substr(1);
            parent.identifier = "Root";
            continue;
        }
        if (text[0] == '|') {
            Node& owner = *open[std::min(level, open.size() - 1)];
            if (owner.helpIsWhole) Fail(place, "the node has its help text already");
            if (!owner.help.empty()) owner.help += ' ';
            owner.help += text.size() > 2 ? text.substr(2) : "";
            continue;
        }
        if (level >= open.size()) Fail(place, "this line is too deep");
        open.resize(level + 1);
        Node& owner = *open.back();
        const auto words = Split(text, place);
        if (words[0] == "include") {
            Parse(folder_ / (words.at(1) + ".txt"), owner, baseLevel + static_cast<int>(level));
            continue;
        }
        if (words[0] == "signature") {
            owner.signature = text.substr(10);
            continue;
        }
        auto node = std::make_unique<Node>();
        node->place = place;
        node->parent = &owner;
        ParseNode(words, *node);
        open.push_back(node.get());
        owner.children.push_back(std::move(node));
    }
}

void Catalogue::ParseTypes(const std::filesystem::path& path)
{
    static const std::map<std::string, TypeKind> kinds = {
        {"enum", TypeKind::Enumeration}, {"integer", TypeKind::Integer}, {"value", TypeKind::Value},
        {"class", TypeKind::Object},     {"struct", TypeKind::Object},   {"record", TypeKind::Record},
        {"none", TypeKind::None}};
    std::ifstream file(path);
    if (!file) throw CatalogueError("cannot open " + path.string());
    types_.emplace_back();
    std::string line;
    for (int number = 1; std::getline(file, line); number++) {
        const std::string place = path.filename().string() + ":" + std::to_string(number);
        const auto words = Split(line, place);
        if (words.empty() || words[0].starts_with('#')) continue;
        if (words[0] == "language") {
            firstLanguageType_ = static_cast<int>(types_.size());
            continue;
        }
        const auto kind = kinds.find(words[0]);
        if (kind == kinds.end() || words.size() < 2) Fail(place, "no type is described");
        Type type;
        type.kind = kind->second;
        type.keyword = words[0];
        type.name = type.cpp = words[1].substr(words[1].starts_with('"') ? 1 : 0);
        type.variant = VariantOf(type.name, type.kind == TypeKind::Enumeration);
        for (std::size_t k = 2; k < words.size(); k++) {
            if (words[k] == "shared")
                type.isShared = true;
            else if (words[k].starts_with("serves="))
                type.servedName = words[k].substr(7);
            else if (words[k].starts_with("cpp="))
                type.cpp = words[k].substr(4);
            else
                Fail(place, "unknown word \"" + words[k] + "\"");
        }
        if (!typeCodes_.emplace(type.name, static_cast<int>(types_.size())).second) Fail(place, "the type is there");
        types_.push_back(type);
    }
    for (const Type& type : types_)
        if (!type.servedName.empty() && !typeCodes_.count(type.servedName))
            throw CatalogueError("no type " + type.servedName);
}

int Catalogue::TypeCode(const std::string& name) const
{
    const auto found = typeCodes_.find(name);
    return found == typeCodes_.end() ? 0 : found->second;
}

/// Classes and groups stand at the margin, their lines below them; a file that is missing leaves all without settings.
void Catalogue::ParseSettings(const std::filesystem::path& path)
{
    std::ifstream file(path);
    std::string line;
    std::vector<SettingLine>* owner = nullptr;
    for (int number = 1; std::getline(file, line); number++) {
        const std::string place = path.filename().string() + ":" + std::to_string(number);
        const auto words = Split(line, place);
        if (words.empty() || words[0].starts_with('#')) continue;
        if (words.size() < 2) Fail(place, "words are missing");
        if (line[0] != ' ') {
            if (words[0] != "class" && words[0] != "group") Fail(place, "neither a class nor a group");
            owner = &settings_[words[1]];
            continue;
        }
        if (!owner) Fail(place, "a setting without a class");
        if (words[0] == "use") {
            const auto group = settings_.find(words[1]);
            if (group == settings_.end()) Fail(place, "no group " + words[1]);
            const auto lines = group->second;
            owner->insert(owner->end(), lines.begin(), lines.end());
        } else if (words[0] == "line" || words[0] == "window") {
            owner->push_back(
                {place, {words.begin() + 2, words.end()}, {}, words[1].substr(1), true, words[0] == "window"});
        } else {
            for (std::size_t k = 0; k + 1 < words.size(); k++) {
                const std::string word = words[k].substr(0, words[k].find(','));
                const std::size_t equals = std::min(word.find('='), word.size());
                const std::string field = equals < word.size() ? word.substr(equals + 1) : std::string();
                owner->push_back({place, {word.substr(0, equals)}, field, words.back()});
            }
        }
    }
}

const std::vector<SettingLine>& Catalogue::Settings(const std::string& className) const
{
    static const std::vector<SettingLine> none;
    const auto found = settings_.find(className);
    return found == settings_.end() ? none : found->second;
}

const Node* Catalogue::Enumeration(const std::string& identifier) const
{
    const auto found = enums_.find(identifier);
    return found == enums_.end() ? nullptr : found->second;
}

void Catalogue::ParseNode(const std::vector<std::string>& words, Node& node) const
{
    const auto need = [&](std::size_t count) {
        if (words.size() < count) Fail(node.place, "words are missing");
    };
    const std::string& kind = words[0];
    need(2);
    if (kind == "choice") {
        node.kind = Kind::Choice;
        node.label = words[1].substr(words[1].starts_with('"') ? 1 : 0);
        for (std::size_t i = 2; i < words.size(); i++) {
            if (words[i] == "group")
                node.flags |= Tesk::GroupFlag;
            else
                node.identifier = words[i].substr(words[i].starts_with('"') ? 1 : 0);
        }
    } else if (kind == "page") {
        node.kind = Kind::Page;
        node.label = words[1].substr(words[1].starts_with('"') ? 1 : 0);
        if (words.size() > 2 && words[2] == "behind") node.flags |= Tesk::BehindFlag;
    } else if (kind == "enum") {
        node.kind = Kind::Enum;
        node.identifier = words[1];
        ApplyWords(words, 2, node);
    } else if (kind == "case") {
        need(3);
        node.kind = Kind::EnumCase;
        node.identifier = words[1];
        const auto value = Number(words[2]);
        if (!value) Fail(node.place, "the value is no number");
        node.value = static_cast<std::int32_t>(*value);
        node.flags = 512;
        ApplyWords(words, 3, node);
    } else if (kind == "class") {
        node.kind = Kind::Class;
        node.identifier = words[1];
        node.type = TypeCode(node.identifier);
        if (node.type == 0) Fail(node.place, "no type " + node.identifier);
        ApplyWords(words, 2, node);
    } else if (kind == "method") {
        need(3);
        node.kind = Kind::Method;
        node.identifier = words[1];
        node.number = std::stoi(words[2]);
        node.flags = 3;
        ApplyWords(words, 3, node);
    } else if (kind == "arg") {
        need(3);
        node.kind = Kind::Argument;
        node.identifier = words[1];
        const auto type = typeCodes_.find(words[2]);
        if (type == typeCodes_.end()) Fail(node.place, "unknown type " + words[2]);
        node.type = type->second;
        node.keys["type"] = words[2];
        if (node.parent->kind == Kind::Page) node.flags |= flag::Property;
        ApplyWords(words, 3, node);
    } else {
        Fail(node.place, "unknown kind of line \"" + kind + "\"");
    }
}

void Catalogue::ApplyWords(const std::vector<std::string>& words, std::size_t from, Node& node) const
{
    const auto& flags = node.kind == Kind::Method ? methodFlags : argumentFlags;
    for (std::size_t i = from; i < words.size(); i++) {
        const std::string& word = words[i];
        if (word.starts_with('"')) {
            node.label = word.substr(1);
        } else if (word.starts_with('|')) {
            node.help = word.substr(1);
            node.helpIsWhole = true;
        } else if (word == "pending") {
            node.pending = true;
        } else if (word == "accepted") {
            node.keys["accepted"] = "1";
        } else if (const std::size_t equals = word.find('='); equals != std::string::npos) {
            const std::string key = word.substr(0, equals);
            if (node.kind == Kind::Argument && !argumentKeys.count(key)) Fail(node.place, "unknown key " + key);
            node.keys[key] = word.substr(equals + 1);
        } else if (const auto flag = flags.find(word); flag != flags.end()) {
            node.flags |= flag->second;
        } else if (word.starts_with("0x")) {
            node.flags |= static_cast<std::uint32_t>(std::stoul(word, nullptr, 16));
        } else {
            Fail(node.place, "unknown word \"" + word + "\"");
        }
    }
}

void Catalogue::NumberNodes(Node& node)
{
    node.index = static_cast<int>(nodes_.size());
    nodes_.push_back(&node);
    if (node.parent && node.parent->pending) node.pending = true;
    if (node.kind == Kind::Enum) enums_.try_emplace(node.identifier, &node);
    Node* previous = nullptr;
    for (const auto& child : node.children) {
        NumberNodes(*child);
        if (previous)
            previous->nextSibling = child->index;
        else
            node.firstChild = child->index;
        previous = child.get();
    }
}

void Catalogue::Resolve()
{
    for (Node* node : nodes_) {
        node->alias = node->Key("alias");
        if (node->kind == Kind::Argument) ResolveArgument(*node);
        // The workbench finds a page's sheet by the name of its class.
        if (node->kind == Kind::Page && ClassOf(*node)) node->identifier = ClassOf(*node)->identifier;
        MakeLabel(*node);
        FindRole(*node);
    }
}

void Catalogue::ResolveArgument(Node& node)
{
    const std::string type = node.Key("type");
    const auto enumeration = enums_.find(type);
    // Twin enumerations share a type name; the key tells which is meant.
    Node* cases = enumeration == enums_.end() ? nullptr : enumeration->second;
    if (node.Has("enumeration")) {
        for (Node* candidate : nodes_)
            if (candidate->kind == Kind::Enum &&
                (candidate->Key("cpp") == node.Key("enumeration") || candidate->label == node.Key("enumeration")))
                cases = candidate;
    }
    node.variant = VariantOf(type, cases != nullptr);
    if (node.Has("property")) node.number = std::stoi(node.Key("property"));
    if (node.Has("mother")) {
        for (const auto& sibling : node.parent->children)
            if (sibling->identifier == node.Key("mother") && sibling.get() != &node) node.mother = sibling->index;
        if (node.mother < 0) Fail(node.place, "no sibling " + node.Key("mother"));
    }
    for (const char* key : {"linked", "count"}) {
        if (!node.Has(key)) continue;
        const Node* owner = ClassOf(node);
        const Node* target = nullptr;
        for (const Node* candidate : nodes_)
            if (candidate->kind == Kind::Argument && candidate->parent->kind == Kind::Page &&
                ClassOf(*candidate) == owner && candidate->identifier == node.Key(key))
                target = candidate;
        if (!target) Fail(node.place, "no property " + node.Key(key));
        node.countNode = target->index;
    }
    if (cases) ResolveCases(*cases, node);
    if (node.Has("names")) ResolveNames(node);
}

/// A whole number whose values have names: its default may be one of them.
void Catalogue::ResolveNames(Node& node) const
{
    const Node* names = Enumeration(node.Key("names"));
    if (!names || node.variant != Variant::Int) Fail(node.place, "no names for this argument");
    node.namesNode = names->index;
    for (const auto& name : names->children)
        if (name->identifier == node.Key("default")) node.keys["default"] = std::to_string(name->value);
}

void Catalogue::ResolveCases(const Node& cases, Node& node) const
{
    node.enumIndex = cases.index;
    const std::vector<std::string> offered = node.Key("cases").empty()
                                                 ? std::vector<std::string>()
                                                 : ExpandCases(SplitList(node.Key("cases")), cases, node.place);
    std::size_t found = 0;
    for (std::size_t k = 0; k < cases.children.size() && k < 128; k++) {
        if (node.Has("cases") &&
            std::find(offered.begin(), offered.end(), cases.children[k]->identifier) == offered.end())
            continue;
        found++;
        (k < 64 ? node.casesLow : node.casesHigh) |= std::uint64_t{1} << (k & 63);
    }
    if (node.Has("cases") && found != offered.size()) Fail(node.place, "an unknown or doubled case");
    const std::string value = node.Key("default");
    node.value = cases.children.empty() ? 0 : cases.children.front()->value;
    if (value.empty()) {
        if (!offered.empty())
            for (const auto& child : cases.children)
                if (child->identifier == offered.front()) node.value = child->value;
    } else {
        const auto match = std::find_if(cases.children.begin(), cases.children.end(),
                                        [&](const auto& child) { return child->identifier == value; });
        if (match != cases.children.end())
            node.value = (*match)->value;
        else if (const auto number = Number(value))
            node.value = static_cast<std::int32_t>(*number);
        else
            Fail(node.place, "unknown default " + value);
    }
}

void Catalogue::MakeLabel(Node& node) const
{
    if (!node.label.empty()) return;
    if (node.kind == Kind::Argument && node.parent->kind == Kind::Method) {
        const Node* owner = ClassOf(node);
        if (node.flags & flag::Instance) {
            node.label = node.parent->identifier + " (" + (owner ? owner->identifier : "") + ")";
            return;
        }
        if (node.variant == Variant::Object) {
            node.label = node.identifier + " (" + node.Key("type") + ")";
            return;
        }
    }
    node.label = SpacedWords(node.identifier);
}

} // namespace TeskGenerator
