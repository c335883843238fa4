// What labels and names mean to those who show a method, found in one place.
#include "Catalogue.h"

namespace TeskGenerator {

/// What the label of a method or an argument, or its name, means to those who show it. Methods stand before their
/// arguments.
void Catalogue::FindRole(Node& node)
{
    struct Meaning
    {
        const char *text, *role;
    };
    static constexpr Meaning endings[] = {
        {"Line", "Line"}, {"Row", "Row"}, {"Rows", "Row"}, {"Column", "Column"}, {"Columns", "Column"}};
    static constexpr Meaning methods[] = {{"Follow", "Follow"}, {"Seed Fill", "SeedFill"}};
    static constexpr Meaning files[] = {{"Read", "Read"}, {"Write", "Write"}};
    static constexpr Meaning names[] = {{"X", "Position"}, {"Y", "Position"}, {"Beg", "Beginning"}, {"End", "End"}};
    static constexpr Meaning labels[] = {{"Above", "Above"},
                                         {"Width", "Width"},
                                         {"Height", "Height"},
                                         {"Edge Index", "EdgeIndex"},
                                         {"Src Anchor", "MiddleAnchor"},
                                         {"Src Anchor0", "MiddleAnchor"},
                                         {"Dst Anchor", "MiddleAnchor"},
                                         {"Dst Anchor0", "MiddleAnchor"},
                                         {"Center", "MiddleAnchor"},
                                         {"Src Anchor1", "RightAnchor"},
                                         {"Dst Anchor1", "RightAnchor"},
                                         {"Src Anchor2", "TopAnchor"},
                                         {"Dst Anchor2", "TopAnchor"}};
    const auto find = [&](const auto& meanings, const std::string& text) {
        for (const Meaning& meaning : meanings)
            if (text == meaning.text) node.role = meaning.role;
    };
    if (node.kind == Kind::Method) {
        find(files, node.identifier);
        find(methods, node.label);
        for (const Meaning& ending : endings)
            if (node.label.ends_with(ending.text)) node.role = ending.role;
    } else if (node.kind == Kind::Argument) {
        const std::string& method = node.parent->role;
        const bool movesProfile = method == "Row" || method == "Column" || method == "Line";
        find(names, node.identifier);
        find(labels, node.label);
        if (movesProfile && node.label == "Breadth") node.role = "Breadth";
        if (method == "Follow" && node.label == "Threshold") node.role = "Threshold";
    }
}

} // namespace TeskGenerator
