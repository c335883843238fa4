// The tree for people: a listing, its counts, and the API reference.
#include "Catalogue.h"

#include "engine/TreeNode.h"

#include <iomanip>
#include <ostream>

namespace TeskGenerator {

namespace {

const char* KindName(Kind kind)
{
    static constexpr const char* names[] = {"enum", "case", "choice", "class", "page", "method", "arg"};
    return names[static_cast<int>(kind)];
}

const char* VariantName(Variant variant)
{
    static constexpr const char* names[] = {"object", "bool",     "char",      "wchar_t", "int",   "float",
                                            "double", "RgbPixel", "RgbaPixel", "enum",    "char*", "wchar_t*"};
    return names[static_cast<int>(variant)];
}

int Depth(const Node& node)
{
    int depth = 0;
    for (const Node* at = node.parent; at; at = at->parent)
        depth++;
    return depth;
}

void PrintNode(const Node& node, std::ostream& out, bool full)
{
    out << std::string(full ? 0 : static_cast<std::size_t>(2 * Depth(node)), ' ') << node.index << ' '
        << KindName(node.kind) << ' ' << (node.identifier.empty() ? "-" : node.identifier) << " \"" << node.label
        << "\" 0x" << std::hex << node.flags << std::dec;
    if (node.kind == Kind::Argument) out << ' ' << node.Key("type");
    if (node.kind == Kind::EnumCase) out << " = " << node.value;
    if (node.number >= 0) out << " #" << node.number;
    for (const char* key : {"default", "range", "step", "cases"})
        if (node.Has(key)) out << ' ' << key << '=' << node.Key(key);
    if (!node.alias.empty()) out << " alias=" << node.alias;
    if (node.mother >= 0) out << " mother=" << node.mother;
    if (node.countNode >= 0) out << " bound=" << node.countNode;
    if (node.role != "Plain") out << " role=" << node.role;
    if (node.pending && node.kind == Kind::Method) out << " pending";
    out << '\n';
    if (!full) return;
    out << node.help << '\n'
        << "first child " << node.firstChild << ", next sibling " << node.nextSibling << ", at " << node.place << '\n';
    if (!node.signature.empty()) out << node.signature << '\n';
    if (node.enumIndex >= 0)
        out << "enumeration " << node.enumIndex << ", cases 0x" << std::hex << node.casesHigh << ':' << node.casesLow
            << std::dec << ", default " << node.value << '\n';
}

std::string Html(const std::string& text)
{
    std::string html;
    for (const char c : text) {
        if (c == '<')
            html += "&lt;";
        else if (c == '>')
            html += "&gt;";
        else if (c == '&')
            html += "&amp;";
        else
            html += c;
    }
    return html;
}

void WriteReferenceNode(const Node& node, std::ostream& out)
{
    switch (node.kind) {
    case Kind::Class:
        out << "<h2 id=\"" << node.identifier << "\">" << Html(node.identifier) << "</h2>\n<p>" << Html(node.help)
            << "</p>\n";
        break;
    case Kind::Enum:
        out << "<h3>" << Html(node.identifier) << "</h3>\n<p>" << Html(node.help) << "</p>\n<dl>\n";
        break;
    case Kind::Choice:
        out << "<h3>" << Html(node.label) << "</h3>\n<p>" << Html(node.help) << "</p>\n";
        break;
    case Kind::Page:
        out << "<h3>" << Html(node.label) << "</h3>\n<p>" << Html(node.help) << "</p>\n<dl>\n";
        break;
    case Kind::Method:
        out << "<h4>" << Html(node.label) << (node.pending ? " (not available yet)" : "") << "</h4>\n<pre>"
            << Html(node.signature) << "</pre>\n<p>" << Html(node.help) << "</p>\n<dl>\n";
        break;
    case Kind::Argument:
    case Kind::EnumCase:
        out << "<dt><code>" << Html(node.identifier) << "</code> "
            << (node.kind == Kind::EnumCase ? std::to_string(node.value) : Html(node.Key("type"))) << "</dt><dd>"
            << Html(node.help) << "</dd>\n";
        break;
    }
    for (const auto& child : node.children)
        WriteReferenceNode(*child, out);
    if (node.kind == Kind::Enum || node.kind == Kind::Page || node.kind == Kind::Method) out << "</dl>\n";
}

} // namespace

void PrintTree(const Catalogue& catalogue, std::ostream& out, int only)
{
    for (const Node* node : catalogue.Nodes())
        if (only < 0 || node->index == only) PrintNode(*node, out, only >= 0);
}

void PrintCounts(const Catalogue& catalogue, std::ostream& out)
{
    std::map<std::string, int> kinds, variants, methods;
    std::map<std::uint32_t, int> flags;
    std::map<std::string, int> ofClass;
    for (const Node* node : catalogue.Nodes()) {
        kinds[KindName(node->kind)]++;
        if (node->kind == Kind::Choice && (node->flags & Tesk::GroupFlag)) kinds["choice group"]++;
        if (node->kind == Kind::Method) {
            ofClass[Catalogue::ClassOf(*node)->identifier]++;
            for (const std::uint32_t bit : {0x4u, 0x8u, 0x40u, 0x4000u, 0x40000u})
                if (node->flags & bit)
                    methods["0x" + [&] {
                        std::string s;
                        for (auto b = bit; b; b /= 16)
                            s.insert(0, 1, "0123456789abcdef"[b % 16]);
                        return s;
                    }()]++;
        }
        if (node->kind != Kind::Argument) continue;
        variants[VariantName(node->variant)]++;
        flags[node->flags]++;
    }
    out << "nodes " << catalogue.Nodes().size() << '\n';
    for (const auto* counts : {&kinds, &variants, &methods, &ofClass}) {
        for (const auto& [name, count] : *counts)
            out << "  " << name << ' ' << count;
        out << '\n';
    }
    for (const auto& [bits, count] : flags)
        out << "  0x" << std::hex << bits << std::dec << ' ' << count;
    out << '\n';
}

void WriteReference(const Catalogue& catalogue, std::ostream& out)
{
    out << "<!DOCTYPE html>\n<html lang=\"en\"><head><meta charset=\"utf-8\"><title>Tesk reference</title><style>"
           "body{font-family:sans-serif;max-width:60em;margin:2em "
           "auto;line-height:1.4}pre{background:#eee;padding:.5em}"
           "dt{font-weight:bold}</style></head><body>\n<h1>Tesk reference</h1>\n";
    WriteReferenceNode(*catalogue.Nodes().front(), out);
    out << "</body></html>\n";
}

} // namespace TeskGenerator
