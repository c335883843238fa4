// The catalogue in memory: parsed from its text form, numbered in tree order, resolved and checked.
#pragma once

#include <cstdint>
#include <filesystem>
#include <map>
#include <memory>
#include <optional>
#include <stdexcept>
#include <string>
#include <vector>

namespace TeskGenerator {

/// A fault in the catalogue, with its place.
class CatalogueError : public std::runtime_error
{
public:
    using std::runtime_error::runtime_error;
};

enum class Kind
{
    Enum,
    EnumCase,
    Choice,
    Class,
    Page,
    Method,
    Argument
};

/// What C++ class stands for an argument.
enum class Variant
{
    Object,
    Bool,
    Char,
    Wchar,
    Int,
    Float,
    Dble,
    RgbPixel,
    RgbaPixel,
    Enum,
    String,
    Wstring
};

struct Node
{
    Kind kind{};
    Variant variant = Variant::Object;
    std::string place; ///< file and line, for messages
    std::string identifier, label, help, alias;
    std::uint32_t flags = 0;
    bool pending = false, helpIsWhole = false; ///< whole: its help stands on its own line
    std::map<std::string, std::string> keys;

    Node* parent = nullptr;
    std::vector<std::unique_ptr<Node>> children;

    // Numbered and resolved.
    int index = -1, firstChild = -1, nextSibling = -1;
    int type = 0;           ///< of a class or an argument
    int number = -1;        ///< `MethodId` or `PropertyId`
    std::int32_t value = 0; ///< of an enumerator
    int mother = -1, enumIndex = -1, countNode = -1, namesNode = -1;
    std::uint64_t casesLow = 0, casesHigh = 0;
    std::string signature;
    std::string role = "Plain"; ///< an enumerator of `methodRole` or `argumentRole`

    bool Has(const std::string& key) const { return keys.count(key) != 0; }
    std::string Key(const std::string& key, const std::string& fallback = {}) const;
};

/// What a data type is; the word that opens its line.
enum class TypeKind
{
    None,
    Object,
    Record,
    Enumeration,
    Integer,
    Value
};

/// One data type. Its code is its place in the list.
struct Type
{
    std::string name, cpp;  ///< in programs and messages; in C++
    std::string keyword;    ///< `class` or `struct`, of an object
    std::string servedName; ///< the type in whose place it serves, too; empty for none
    TypeKind kind = TypeKind::None;
    Variant variant = Variant::Object;
    bool isShared = false; ///< an input is a shadow
};

/// One setting of a class that programs print, or one statement that prints several.
struct SettingLine
{
    std::string place;
    std::vector<std::string> names; ///< of one setting, or of the values of a statement
    std::string field;              ///< what holds one setting, where its name does not say it
    std::string form;               ///< of the setting, or the statement's text
    bool isStatement = false;
    bool isWindow = false; ///< a statement with a short form for an object that has no window
};

class Catalogue
{
public:
    /// Reads `Tesk.tree` in a folder and what it includes. Throws `CatalogueError`.
    explicit Catalogue(const std::filesystem::path& folder);

    const std::vector<Node*>& Nodes() const { return nodes_; }
    /// The data types by their codes; 0 is none.
    const std::vector<Type>& Types() const { return types_; }
    int TypeCode(const std::string& name) const;
    /// The code of the first type of the language, behind those of the library.
    int FirstLanguageType() const { return firstLanguageType_; }
    /// The settings of a class, in the order in which they are printed.
    const std::vector<SettingLine>& Settings(const std::string& className) const;
    /// An enumeration by its identifier; null for none.
    const Node* Enumeration(const std::string& identifier) const;
    /// Whatever contradicts itself, a line each; empty if the catalogue is sound.
    std::vector<std::string> Faults() const;

    /// The number that a text stands for, with `Auto`, `MinInt`, `MaxInt`, and enumerators.
    static std::optional<double> Number(const std::string& text);
    static const Node* ClassOf(const Node& node);

private:
    void Parse(const std::filesystem::path& path, Node& parent, int baseLevel);
    void ParseNode(const std::vector<std::string>& words, Node& node) const;
    void ApplyWords(const std::vector<std::string>& words, std::size_t from, Node& node) const;
    void ParseTypes(const std::filesystem::path& path);
    void ParseSettings(const std::filesystem::path& path);
    void NumberNodes(Node& node);
    void Resolve();
    void ResolveArgument(Node& node);
    void ResolveNames(Node& node) const;
    void ResolveCases(const Node& cases, Node& node) const;
    void MakeLabel(Node& node) const;
    static void FindRole(Node& node);

    std::filesystem::path folder_;
    std::unique_ptr<Node> root_;
    std::vector<Node*> nodes_;
    std::vector<Type> types_;
    std::map<std::string, int> typeCodes_;
    int firstLanguageType_ = 0;
    std::map<std::string, Node*> enums_;
    std::map<std::string, std::vector<SettingLine>> settings_;
};

/// The items of a list parted by commas.
std::vector<std::string> SplitList(const std::string& text);

// Writers, one for each product.
void WriteTree(const Catalogue& catalogue, std::ostream& out);
void WriteTypeTable(const Catalogue& catalogue, std::ostream& out);
void WriteDispatch(const Catalogue& catalogue, std::ostream& out);
void WriteClasses(const Catalogue& catalogue, std::ostream& out);
void WriteEnumChecks(const Catalogue& catalogue, std::ostream& out);
void WriteReference(const Catalogue& catalogue, std::ostream& out);
void PrintTree(const Catalogue& catalogue, std::ostream& out, int only);
void PrintCounts(const Catalogue& catalogue, std::ostream& out);

} // namespace TeskGenerator
