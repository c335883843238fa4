// Writes what the engine knows of each data type: its name, its row in the table of types, its settings in programs.
#include "Catalogue.h"

#include <algorithm>
#include <ostream>

namespace TeskGenerator {

namespace {

/// How a setting of an object is read in C++: as its property is, else as the field of its name.
std::string Access(const Node& owner, const std::string& name, const std::string& object)
{
    std::string access = "Object." + name;
    for (const auto& page : owner.children) {
        if (page->kind != Kind::Page) continue;
        for (const auto& property : page->children)
            if (property->identifier == name) access = property->Key("get", access);
    }
    for (std::size_t at = access.find("Object"); at != std::string::npos;
         at = access.find("Object", at + object.size()))
        access.replace(at, 6, object);
    return access;
}

void WriteStatement(const Node& owner, const SettingLine& line, std::ostream& out)
{
    std::string all, differs, values;
    for (std::size_t k = 0; k < line.names.size(); k++) {
        const std::string own = Access(owner, line.names[k], "Object"), other = Access(owner, line.names[k], "Other");
        all += (k ? ", " : "") + own;
        differs += (k ? " || " : "") + ("SettingDiffers(" + own + ", " + other + ")");
        // Whole numbers print as such, all else as reals.
        std::size_t at = 0;
        for (std::size_t n = 0; n <= k; n++)
            at = line.form.find('%', at) + 1;
        values += std::string(", static_cast<") + (line.form[at] == 'd' ? "int" : "double") + ">(" + own + ")";
    }
    out << "    if constexpr (requires { " << all << "; }) {\n        if (" << differs << ")\n            ";
    if (line.isWindow) {
        const std::string brief = line.form.substr(0, line.form.find('('));
        out << "{\n            if (Object.HasWindow())\n                Sink.Statement(Formatted(L\"" << line.form
            << '"' << values << "));\n            else if (IsShadow)\n                Sink.Statement(L\"" << brief
            << "()\");\n            }\n";
    } else {
        out << "Sink.Statement(Formatted(L\"" << line.form << '"' << values << "));\n";
    }
    out << "    } else {\n        Sink.Missing(L\"" << line.form << "\");\n    }\n";
}

void WriteSetting(const Catalogue& catalogue, const Node& owner, const SettingLine& line, std::ostream& out)
{
    const std::string& name = line.names.front();
    const auto access = [&](const std::string& object) {
        return line.field.empty() ? Access(owner, name, object) : object + '.' + line.field;
    };
    const std::string own = access("Object"), other = access("Other");
    std::string text;
    if (line.form == "bool") {
        text = "Sink.Bool(static_cast<bool>(" + own + "))";
    } else if (line.form == "XY") {
        text = "SettingText(L\"\", " + own + ")";
    } else if (line.form.starts_with('%')) {
        text = "SettingText(L\"" + line.form + "\", " + own + ")";
    } else {
        const Node* enumeration = catalogue.Enumeration(line.form);
        if (!enumeration) throw CatalogueError(line.place + ": no enumeration " + line.form);
        text = "Sink.Enumerator(" + std::to_string(enumeration->index) + ", static_cast<int>(" + own + "))";
    }
    out << "    if constexpr (requires { " << own << "; }) {\n        if (SettingDiffers(" << own << ", " << other
        << ")) Sink.Setting(L\"" << name << "\", " << text << ");\n    } else {\n        Sink.Missing(L\"" << name
        << "\");\n    }\n";
}

/// The expression that makes a type's row.
std::string RowMaker(const Type& type)
{
    static constexpr const char* nodes[] = {"",     "Bool",     "Char",      "Wchar", "Int",    "Float",
                                            "Dble", "RgbPixel", "RgbaPixel", "Enum",  "String", "Wstring"};
    switch (type.kind) {
    case TypeKind::Object:
    case TypeKind::Record:
        return std::string(type.isShared ? "SharedRow<" : "ObjectRow<") + type.cpp + ">()";
    case TypeKind::Enumeration:
        return "IntegerRow<" + type.cpp + ", EnumArgumentNode>()";
    case TypeKind::Integer:
        return "IntegerRow<" + type.cpp + ", IntArgumentNode>()";
    case TypeKind::Value:
        return "ValueRow<" + type.cpp + ", " + nodes[static_cast<int>(type.variant)] + "ArgumentNode>()";
    default:
        return "{}";
    }
}

} // namespace

void WriteTypeTable(const Catalogue& catalogue, std::ostream& out)
{
    static constexpr const char* kinds[] = {"None", "Object", "Record", "Enumeration", "Integer", "Value"};
    const auto& types = catalogue.Types();
    out << "// Made by the catalogue's generator; edit the catalogue instead. The names of the data types, what they "
           "are,\n"
           "// and the types in whose place they serve, by their codes.\n#pragma once\n\nnamespace Tesk {\n\n"
           "/// What a data type is, for whoever shows or makes its variables.\nenum class typeKind\n{\n";
    for (const char* kind : kinds)
        out << "    " << kind << ",\n";
    out << "};\n\ninline constexpr int typeCount = " << types.size()
        << ";\n/// The first code of the language types; those below are the library's.\n"
           "inline constexpr int FirstLanguageType = "
        << catalogue.FirstLanguageType() << ";\n\ninline constexpr const wchar_t* typeString[typeCount] = {\n";
    for (const Type& type : types)
        out << "    L\"" << type.name << "\",\n";
    out << "};\n\ninline constexpr typeKind typeKinds[typeCount] = {\n";
    for (const Type& type : types)
        out << "    typeKind::" << kinds[static_cast<int>(type.kind)] << ",\n";
    out << "};\n\ninline constexpr int servedTypes[typeCount] = {\n";
    for (const Type& type : types)
        out << "    " << catalogue.TypeCode(type.servedName) << ",\n";
    out << "};\n\n} // namespace Tesk\n";
}

void WriteClasses(const Catalogue& catalogue, std::ostream& out)
{
    std::vector<const Node*> classes;
    for (const Node* node : catalogue.Nodes())
        if (node->kind == Kind::Class && !node->pending) classes.push_back(node);
    const auto& types = catalogue.Types();
    out << "// Made by the catalogue's generator; edit the catalogue instead.\n#include \"Tesk.h\"\n"
           "#include \"engine/types/Settings.h\"\n#include \"engine/types/TypeRows.h\"\n\nnamespace Tesk {\n\n"
           "// A class that is still to come has no variable.\n";
    for (const Type& type : types)
        if (type.kind == TypeKind::Object) out << type.keyword << ' ' << type.cpp << ";\n";
    out << '\n';
    for (std::size_t code = 1; code < types.size(); code++) {
        const Type& type = types[code];
        if (type.servedName.empty()) continue;
        out << "template <>\nconst " << type.servedName << "& ObjectOf<" << type.servedName
            << ">(const AnyVariable& Variable)\n{\n    return ObjectOfEither<" << type.servedName << ", " << type.cpp
            << ">(Variable, " << code << ");\n}\n\n";
    }
    out << "namespace {\n\n";
    for (const Node* owner : classes) {
        const auto& lines = catalogue.Settings(owner->identifier);
        if (lines.empty()) continue;
        out << "template <typename T>\nvoid Settings" << owner->type
            << "(SettingsSink& Sink, const T& Object, const T& Other, [[maybe_unused]] bool IsShadow)\n{\n";
        for (const SettingLine& line : lines) {
            if (line.isStatement)
                WriteStatement(*owner, line, out);
            else
                WriteSetting(catalogue, *owner, line, out);
        }
        out << "}\n\n";
    }
    out << "constexpr TypeRow rows[typeCount] = {\n    {},\n";
    for (std::size_t code = 1; code < types.size(); code++)
        out << "    " << RowMaker(types[code]) << ", // " << types[code].name << '\n';
    out << "};\n\n} // namespace\n\nconst TypeRow* FindType(int Code)\n{\n"
           "    return Code > 0 && Code < typeCount && rows[Code].Make ? &rows[Code] : nullptr;\n}\n\n"
        << "bool WriteSettings(int Type, SettingsSink& Sink, const AnyVariable& Object, const AnyVariable* Other)\n{\n"
           "    switch (Type) {\n";
    for (const Node* owner : classes) {
        if (catalogue.Settings(owner->identifier).empty()) continue;
        const std::string& name = owner->identifier;
        out << "    case " << owner->type << ": {\n        static const " << name << " made{};\n        Settings"
            << owner->type << "(Sink, ObjectOf<" << name << ">(Object), Other ? ObjectOf<" << name
            << ">(*Other) : made, Other != nullptr);\n        return true;\n    }\n";
    }
    out << "    default:\n        return false;\n    }\n}\n\n} // namespace Tesk\n";
}

} // namespace TeskGenerator
