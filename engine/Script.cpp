// The sequence as a program in one of four languages.
#include "engine/Engine.h"

#include "engine/TypeNames.h"
#include "engine/types/Settings.h"
#include "foundation/Status.h"

#include <algorithm>
#include <array>
#include <cstdarg>
#include <cstring>
#include <cwchar>
#include <type_traits>

namespace Tesk {

using namespace attributeValue;

std::wstring Formatted(const wchar_t* Format, ...)
{
    std::array<wchar_t, 512> text{};
    va_list arguments;
    va_start(arguments, Format);
    FormatArguments(text.data(), text.size(), Format, arguments);
    va_end(arguments);
    return text.data();
}

namespace {

enum Language
{
    NativeCpp = 0,
    CSharp = 1,
    VisualBasic = 2,
    CppNet = 3
};

/// The words that differ from language to language.
struct Words
{
    const wchar_t *prefix, *scope, *member, *end, *comment, *handle, *create, *brackets, *yes, *no;
    const wchar_t *opening, *middle, *closing;
};

constexpr Words allWords[] = {
    {L"", L"::", L".", L";", L"//", L"", L"", L"", L"true", L"false", L"\n#include \"Tesk.h\"\n\nvoid Process()\n{",
     L"\n\t// Choose among drawing statements here... (output to the console)\n", L"}\n"},
    {L"TeskNET.", L".", L".", L";", L"//", L"", L"new", L"()", L"true", L"false", L"\nprivate void Process()\n{",
     L"}\n\nprivate void panel1_Paint(object sender, PaintEventArgs e)\n{\n\tTeskNET.Graph.UseGraphics(e.Graphics);\n\n"
     L"\t// Choose among drawing statements here...\n",
     L"\n\tTeskNET.Graph.ReleaseGraphics(e.Graphics);\n}\n"},
    {L"TeskNET.", L".", L".", L"", L"'", L"", L"New", L"", L"True", L"False", L"Public Sub Process()",
     L"End Sub\n\nPrivate Sub Panel1_Paint(ByVal sender As System.Object, ByVal e As "
     L"System.Windows.Forms.PaintEventArgs) "
     L"Handles Panel1.Paint\n\tTeskNET.Graph.UseGraphics(e.Graphics)\n\n\t' Choose among the drawing statements "
     L"here...\n",
     L"\n\tTeskNET.Graph.ReleaseGraphics(e.Graphics)\nEnd Sub\n"},
    {L"TeskNET::", L"::", L"->", L";", L"//", L"^", L"gcnew", L"()", L"true", L"false",
     L"\nusing namespace TeskNET;\n\nprivate: void Process()\n{",
     L"}\n\nprivate: System::Void panel1_Paint(System::Object^  sender, System::Windows::Forms::PaintEventArgs^  "
     L"e)\n{\n"
     L"\tTeskNET::Graph::UseGraphics(e->Graphics);\n\n\t// Choose among the drawing statements here...\n",
     L"\n\tTeskNET::Graph::ReleaseGraphics(e->Graphics);\n}\n"}};

/// Visual Basic's names of the language types, from the first on.
constexpr const wchar_t* visualBasicTypes[] = {
    L"Boolean", L"Boolean?", L"Byte",  L"Byte?",    L"SByte",  L"SByte?", L"dXYZ", L"Double", L"Double?", L"Single",
    L"Integer", L"Integer?", L"Short", L"UInteger", L"UShort", L"",       L"?",    L"Char",   L"Char?"};

std::wstring Escaped(std::uint32_t c)
{
    constexpr const wchar_t* letters = L"abtnvfr";
    if (c <= 6) return Formatted(L"\\%u", c);
    if (c <= 13) return {L'\\', letters[c - 7]};
    if (c <= 31 || c == 127) return Formatted(L"\\%o", c);
    if (c >= 128) return L"?";
    if (c == '"' || c == '\'' || c == '?' || c == '\\') return {L'\\', static_cast<wchar_t>(c)};
    return {static_cast<wchar_t>(c)};
}

template <typename Text>
std::wstring Quoted(const Text* text)
{
    std::wstring quoted = L"\"";
    for (; text && *text; text++)
        quoted += Escaped(static_cast<std::uint32_t>(static_cast<std::make_unsigned_t<Text>>(*text)));
    return quoted + L'"';
}

std::wstring FloatText(float value)
{
    std::wstring text = Formatted(L"%#g", static_cast<double>(value));
    const std::size_t point = text.find(L'.'), exponent = std::min(text.find(L'e'), text.size());
    if (point != std::wstring::npos && std::min(text.find_first_not_of(L'0', point + 1), text.size()) == exponent)
        text.erase(point + 1, exponent - point - 1);
    return text + L'f';
}

/// Whether an argument is a pure input value, which stands in the call as a literal.
bool IsLiteral(const ArgumentNode& node)
{
    return (node.Flags & (Value | Out)) == Value;
}

template <typename T>
const T& ValueOf(const AnyVariable& variable)
{
    return static_cast<const Var<T>&>(variable).Value;
}

/// The value of any enumeration: all are held in 32 bits, which need not be those of an enumerator.
int EnumeratorOf(const AnyVariable& variable)
{
    std::int32_t value;
    static_assert(sizeof value == sizeof(PixelTypes));
    std::memcpy(&value, &ValueOf<PixelTypes>(variable), sizeof value);
    return value;
}

class Writer final : SettingsSink
{
public:
    Writer(const Engine& engine, int language)
        : engine_(engine), language_(language >= NativeCpp && language <= CppNet ? language : NativeCpp),
          words_(allWords[language_])
    {}

    std::wstring Whole()
    {
        text_ = words_.opening;
        const auto entries = engine_.GetArguments(-1, 0, false);
        Add(L"\n\t%ls Declarations\n", words_.comment);
        for (const Arg* entry : entries)
            if (!IsLiteral(*Engine::VarNode(entry->Node))) Declare(*entry);
        if (language_ != NativeCpp) {
            Add(L"\n\t%ls Constructions\n", words_.comment);
            for (const Arg* entry : entries)
                if (!(Engine::VarNode(entry->Node)->Flags & Value)) Construct(*entry);
        }
        for (const auto& operation : engine_.Operations)
            Call(*operation);
        text_ += words_.middle;
        for (const Arg* entry : entries)
            if (!(Engine::VarNode(entry->Node)->Flags & Value)) Draw(*entry);
        text_ += words_.closing;
        return text_;
    }

    std::wstring Section(int which)
    {
        if (which >= 0 && which < engine_.NumOperations()) Call(*engine_.Operations[static_cast<std::size_t>(which)]);
        return text_;
    }

private:
    template <typename... Values>
    void Add(const wchar_t* format, Values... values)
    {
        text_ += Formatted(format, values...);
    }

    const wchar_t* PrefixOf(int type) const { return type < FirstLanguageType ? words_.prefix : L""; }

    /// What is declared for a name: what the first variable of the name is, however a later operation reads it.
    static int TypeOf(const Arg& entry)
    {
        const AnyVariable* variable = entry.Variable;
        while (variable->Source)
            variable = variable->Source;
        return variable->TypeCode;
    }

    void Declare(const Arg& entry)
    {
        const int type = TypeOf(entry);
        const wchar_t* name = entry.Variable->Name;
        if (language_ != VisualBasic) {
            Add(L"\t%ls%ls%ls %ls%ls\n", PrefixOf(type), typeString[type], words_.handle, name, words_.end);
        } else {
            const bool own = type < FirstLanguageType;
            Add(L"\tDim %ls as %ls%ls%ls\n", name, own ? L"TeskNET." : L"",
                own ? typeString[type] : visualBasicTypes[type - FirstLanguageType], words_.end);
        }
    }

    void Construct(const Arg& entry)
    {
        const int type = TypeOf(entry);
        Add(L"\t%ls= %ls %ls%ls%ls%ls\n", static_cast<const wchar_t*>(entry.Variable->Name), words_.create,
            words_.prefix, typeString[type], words_.brackets, words_.end);
    }

    /// What stands in front of an enumerator.
    std::wstring EnumPrefix(const wchar_t* enumeration) const
    {
        if (language_ == NativeCpp) return L"";
        return std::wstring(L"TeskNET") + words_.scope + enumeration + words_.scope;
    }

    std::wstring Literal(const Arg& argument) const
    {
        const ArgumentNode& node = *Engine::VarNode(argument.Node);
        if (!argument.Variable) return L"?";
        const AnyVariable& variable = *argument.Variable;
        if (!IsLiteral(node)) return variable.NameText;
        if (const auto* cases = dynamic_cast<const EnumArgumentNode*>(&node))
            return Enumerator(cases->EnumIndex, EnumeratorOf(variable));
        switch (node.Type) {
        case CodeOf(L"RgbPixel"): {
            const RgbPixel p = ValueOf<RgbPixel>(variable);
            return Formatted(L"%lsRgbPixel(%d, %d, %d)", words_.prefix, p.Red, p.Green, p.Blue);
        }
        case CodeOf(L"RgbaPixel"): {
            const RgbaPixel p = ValueOf<RgbaPixel>(variable);
            return Formatted(L"%lsRgbaPixel(%d, %d, %d, %d)", words_.prefix, p.Red, p.Green, p.Blue, p.Alpha);
        }
        case CodeOf(L"Site"): {
            const Site s = ValueOf<Site>(variable);
            return Formatted(L"%lsSite(%d, %d)", words_.prefix, s.X, s.Y);
        }
        case CodeOf(L"XY"): {
            const XY p = ValueOf<XY>(variable);
            return Formatted(L"%lsXY(%g, %g)", words_.prefix, p.X, p.Y);
        }
        case CodeOf(L"bool"):
            return ValueOf<bool>(variable) ? words_.yes : words_.no;
        case CodeOf(L"byte*"):
        case CodeOf(L"int*"):
        case CodeOf(L"void*"):
            return Formatted(
                L"0x%llx", static_cast<unsigned long long>(reinterpret_cast<std::uintptr_t>(ValueOf<void*>(variable))));
        case CodeOf(L"char"):
            return L"'" + Escaped(static_cast<unsigned char>(ValueOf<char>(variable))) + L"'";
        case CodeOf(L"wchar_t"):
            return CharacterText(static_cast<std::uint32_t>(ValueOf<wchar_t>(variable)));
        case CodeOf(L"char*"):
            return Quoted(ValueOf<const char*>(variable));
        case CodeOf(L"wchar_t*"):
            return L"L" + Quoted(ValueOf<const wchar_t*>(variable));
        case CodeOf(L"double"):
            return Formatted(L"%g", ValueOf<double>(variable));
        case CodeOf(L"float"):
            return FloatText(ValueOf<float>(variable));
        case CodeOf(L"int"): {
            const int value = ValueOf<int>(variable);
            if (node.NamesNode >= 0) return Enumerator(node.NamesNode, value);
            return value == Auto     ? L"Auto"
                   : value == MaxInt ? L"MaxInt"
                   : value == MinInt ? L"MinInt"
                                     : std::to_wstring(value);
        }
        case CodeOf(L"short"):
            return std::to_wstring(ValueOf<short>(variable));
        default:
            return L"?";
        }
    }

    /// The settings in which an object differs from the one that it shadows, or from a new one.
    void Settings(const Arg& argument)
    {
        const int type = Engine::VarNode(argument.Node)->Type;
        if (!argument.Variable) return;
        object_ = argument.Variable->NameText;
        WriteSettings(type, *this, *argument.Variable, Engine::SourceOf(*argument.Variable));
    }

    // The end of these lines is the same in all languages.
    void Setting(const wchar_t* name, const std::wstring& value) override
    {
        text_ += L'\t' + object_ + words_.member + name + L"= " + value + L";\n";
    }
    void Statement(const std::wstring& call) override { text_ += L'\t' + object_ + words_.member + call + L";\n"; }
    void Missing(const wchar_t*) override {}
    std::wstring Bool(bool value) const override { return value ? words_.yes : words_.no; }
    std::wstring Enumerator(int enumNode, int value) const override
    {
        for (int child = Engine::Tree[enumNode]->FirstChild; child >= 0; child = Engine::Tree[child]->NextSibling) {
            const auto* enumerator = static_cast<const EnumCaseNode*>(Engine::Tree[child]);
            if (enumerator->Value == value)
                return EnumPrefix(Engine::Tree[enumNode]->Identifier) + enumerator->Identifier;
        }
        return std::to_wstring(value).substr(0, 7);
    }

    void Presets(const Operation& operation)
    {
        const Arg* target = &operation.Args.back();
        for (const Arg& argument : operation.Args)
            if (std::wcscmp(Engine::VarNode(argument.Node)->Identifier, L"Dst") == 0) target = &argument;
        for (std::size_t k = 0; k < operation.Args.size(); k++) {
            const Arg& argument = operation.Args[k];
            const ArgumentNode& node = *Engine::VarNode(argument.Node);
            if ((node.Flags & (In | Preset)) != (In | Preset) || std::wcscmp(node.Identifier, L"Width") == 0) continue;
            if (std::wcscmp(node.Identifier, L"Height") == 0 && k > 0) {
                text_ += L'\t' + NameOf(*target) + words_.member + L"Set(" + Literal(operation.Args[k - 1]) + L", " +
                         Literal(argument) + L");\n";
            } else {
                text_ += L'\t' + NameOf(operation.Args.front()) + words_.member + node.Identifier + L"= " +
                         Literal(argument) + words_.end + L'\n';
            }
        }
    }

    static std::wstring NameOf(const Arg& argument) { return argument.Variable ? argument.Variable->NameText : L"?"; }

    /// The object on which a method is called. Where it serves as an object of another class, a method of that class
    /// that its own class hides is named with its class.
    std::wstring Instance(const Arg& argument, const wchar_t* className, const MethodNode& method) const
    {
        const std::wstring name = NameOf(argument);
        const int declared = argument.Variable ? TypeOf(argument) : 0;
        const bool isHidden = declared != 0 && declared != Engine::VarNode(argument.Node)->Type &&
                              Engine::FindMethod(typeString[declared], method.Identifier, nullptr) >= 0;
        if (!isHidden) return name + words_.member;
        const std::wstring scope = std::wstring(words_.prefix) + className;
        if (language_ == CSharp) return L"((" + scope + L")" + name + L")" + words_.member;
        if (language_ == VisualBasic) return L"DirectCast(" + name + L", " + scope + L")" + words_.member;
        return name + words_.member + scope + words_.scope;
    }

    void Call(const Operation& operation)
    {
        if (operation.Node < 0 || Engine::Tree[operation.Node]->Kind() != MethodKind) return;
        int owner = operation.Node;
        while (Engine::Tree[owner]->Kind() != ClassKind)
            owner--;
        const MethodNode& method = *Engine::OpNode(operation.Node);
        const wchar_t* className = Engine::Tree[owner]->Identifier;
        Add(L"\n\t%ls %ls (%ls)\n", words_.comment, method.Label, className);
        for (const Arg& argument : operation.Args)
            if (Engine::VarNode(argument.Node)->Flags & In) Settings(argument);
        if (!operation.Args.empty()) Presets(operation);
        text_ += L'\t';
        for (const Arg& argument : operation.Args)
            if (Engine::VarNode(argument.Node)->Flags & Result) text_ += NameOf(argument) + L"= ";
        const bool isStatic = (method.Flags & StaticMethod) != 0;
        if (isStatic)
            text_ += std::wstring(words_.prefix) + className + words_.scope;
        else if (!operation.Args.empty())
            text_ += Instance(operation.Args.front(), className, method);
        text_ += std::wstring(method.Identifier) + L'(';
        bool first = true;
        for (std::size_t k = isStatic ? 0 : 1; k < operation.Args.size(); k++) {
            if (Engine::VarNode(operation.Args[k].Node)->Flags & (Preset | Result)) continue;
            text_ += (first ? L"" : L", ") + Literal(operation.Args[k]);
            first = false;
        }
        text_ += std::wstring(L")") + words_.end + L'\n';
    }

    void Draw(const Arg& entry)
    {
        const wchar_t *yes = words_.yes, *no = words_.no, *end = words_.end;
        const std::wstring all = EnumPrefix(L"BlobSelection");
        text_ += L'\t' + entry.Variable->NameText + words_.member;
        switch (TypeOf(entry)) {
        case CodeOf(L"Blobs"):
            Add(L"DrawBlob(%lsAll, %ls, %ls)%ls\n", all.c_str(), yes, no, end);
            break;
        case CodeOf(L"CharReader"):
            Add(L"Draw(%ls)%ls\n", yes, end);
            break;
        case CodeOf(L"Code1DReader"):
            Add(L"Draw(%ls, %ls)%ls\n", yes, yes, end);
            break;
        case CodeOf(L"Code2DReader"):
            Add(L"Draw(%ls, %ls, %ls)%ls\n", yes, yes, yes, end);
            break;
        case CodeOf(L"Comparator"):
            Add(L"DrawROI(%ls, %ls, %ls)%ls\n", yes, yes, no, end);
            break;
        case CodeOf(L"EdgeArc"):
        case CodeOf(L"EdgeEllipse"):
        case CodeOf(L"EdgeLine"):
        case CodeOf(L"EdgePoint"):
        case CodeOf(L"EdgeRectangle"):
        case CodeOf(L"Quad"):
            Add(L"Draw(%ls, %ls)%ls\n", no, no, end);
            break;
        case CodeOf(L"EdgeMap"):
        case CodeOf(L"Region"):
            Add(L"Draw()%ls\n", end);
            break;
        case CodeOf(L"Geometry"):
            Add(L"DrawAnchors()%ls\n", end);
            break;
        case CodeOf(L"Histogram"):
            Add(L"Plot(10, 10, 512, 256, %ls, 0, 0, 0, 1)%ls\n", no, end);
            break;
        case CodeOf(L"Image"):
        case CodeOf(L"Locator"):
        case CodeOf(L"Path"):
        case CodeOf(L"Poly"):
        case CodeOf(L"Profile"):
        case CodeOf(L"Pyramid"):
            Add(L"Draw(%ls)%ls\n", no, end);
            break;
        case CodeOf(L"ShapeMatcher"):
            Add(L"DrawTrained(Limits(0, 0, 512, 256), %lsAll, %ls, %ls)%ls\n", all.c_str(), yes, no, end);
            break;
        case CodeOf(L"SnakeGauge"):
            Add(L"Draw(%ls, %ls, %ls)%ls\n", yes, yes, no, end);
            break;
        // A variable of another type has no drawing: its line names it, for the reader to complete.
        default:
            text_ += L'\n';
            break;
        }
    }

    const Engine& engine_;
    int language_;
    const Words& words_;
    std::wstring text_;
    std::wstring object_; ///< whose settings are being printed
};

} // namespace

std::wstring CharacterText(std::uint32_t Code)
{
    return L"'" + Escaped(Code) + L"'";
}

std::wstring ScriptText(const Engine& Engine, int Language, int Which)
{
    Engine.MarkBound();
    Writer writer(Engine, Language);
    return Which == Auto ? writer.Whole() : writer.Section(Which);
}

void Engine::Write(std::FILE* File, int Language, int Which) const
{
    std::fputs(Narrow(ScriptText(*this, Language, Which).c_str()).c_str(), File);
}

} // namespace Tesk
