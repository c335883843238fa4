#include "engine/Engine.h"
#include "engine/TreeNode.h"
#include "engine/Types.h"

#include <gtest/gtest.h>

#include <cwctype>
#include <map>
#include <set>
#include <string>
#include <vector>

using namespace Tesk;

namespace {

constexpr std::uint32_t instanceFlag = attributeValue::Instance, presetFlag = attributeValue::Preset,
                        resultFlag = attributeValue::Result, propertyFlag = attributeValue::Property;

const TreeNode& At(int index)
{
    return *Engine::Tree[index];
}

const ArgumentNode& Argument(int index)
{
    return static_cast<const ArgumentNode&>(At(index));
}

std::vector<int> Children(int index)
{
    std::vector<int> children;
    for (int child = At(index).FirstChild; child >= 0; child = At(child).NextSibling)
        children.push_back(child);
    return children;
}

/// The parent of every node, -1 for the root and for nodes that no list reaches.
std::vector<int> Parents()
{
    std::vector<int> parents(static_cast<std::size_t>(Engine::NumNodes), -1);
    for (int i = 0; i < Engine::NumNodes; i++)
        for (const int child : Children(i))
            parents[static_cast<std::size_t>(child)] = i;
    return parents;
}

int Owner(const std::vector<int>& parents, int index, int kind)
{
    while (index >= 0 && At(index).Kind() != kind)
        index = parents[static_cast<std::size_t>(index)];
    return index;
}

std::vector<int> NodesOf(int kind)
{
    std::vector<int> nodes;
    for (int i = 0; i < Engine::NumNodes; i++)
        if (At(i).Kind() == kind) nodes.push_back(i);
    return nodes;
}

template <typename Node>
int Variants()
{
    int count = 0;
    for (const int i : NodesOf(ArgumentKind))
        count += dynamic_cast<const Node*>(Engine::Tree[i]) != nullptr;
    return count;
}

/// The parameter names of a declaration, in order.
std::vector<std::wstring> ParameterNames(const std::wstring& declaration)
{
    std::vector<std::wstring> names;
    std::wstring word, last;
    bool inDefault = false;
    const std::size_t open = declaration.find(L'('), close = declaration.rfind(L')');
    for (std::size_t i = open + 1; i <= close; i++) {
        const wchar_t c = declaration[i];
        if (std::iswalnum(static_cast<wint_t>(c)) || c == L'_') {
            if (!inDefault) word += c;
            continue;
        }
        if (!word.empty()) last = word;
        word.clear();
        if (c == L'=') inDefault = true;
        if ((c == L',' || i == close) && !last.empty()) {
            names.push_back(last);
            last.clear();
            inDefault = false;
        }
    }
    return names;
}

TEST(Catalogue, HasTheNodesOfEachKind)
{
    EXPECT_EQ(Engine::NumNodes, 3007);
    const std::map<int, std::size_t> expected = {{EnumKind, 33},  {EnumCaseKind, 386}, {ChoiceKind, 81},
                                                 {ClassKind, 24}, {PageKind, 40},      {MethodKind, 435}};
    for (const auto& [kind, count] : expected)
        EXPECT_EQ(NodesOf(kind).size(), count) << "kind " << kind;
    int groups = 0;
    for (const int i : NodesOf(ChoiceKind))
        groups += (At(i).Flags & GroupFlag) != 0;
    EXPECT_EQ(groups, 66);
}

TEST(Catalogue, HasTheArgumentsOfEachVariant)
{
    EXPECT_EQ(Variants<BoolArgumentNode>(), 220);
    EXPECT_EQ(Variants<CharArgumentNode>(), 1);
    EXPECT_EQ(Variants<WcharArgumentNode>(), 2);
    EXPECT_EQ(Variants<IntArgumentNode>(), 471);
    EXPECT_EQ(Variants<FloatArgumentNode>(), 10);
    EXPECT_EQ(Variants<DbleArgumentNode>(), 230);
    EXPECT_EQ(Variants<RgbPixelArgumentNode>(), 18);
    EXPECT_EQ(Variants<RgbaPixelArgumentNode>(), 1);
    EXPECT_EQ(Variants<EnumArgumentNode>(), 128);
    EXPECT_EQ(Variants<StringArgumentNode>(), 47);
    EXPECT_EQ(Variants<WstringArgumentNode>(), 1);
}

TEST(Catalogue, HasTheMethodsOfEachClass)
{
    struct ClassRow
    {
        const wchar_t* name;
        int methods, pages;
    };
    static constexpr ClassRow rows[] = {
        {L"Image", 2, 1},         {L"Operator", 72, 1},    {L"Kernel", 32, 1},      {L"Morpho", 24, 7},
        {L"Geometry", 17, 1},     {L"Pyramid", 9, 1},      {L"Profile", 43, 1},     {L"Path", 24, 1},
        {L"Histogram", 59, 1},    {L"Region", 33, 1},      {L"Blobs", 35, 1},       {L"EdgeMap", 7, 1},
        {L"EdgePoint", 4, 1},     {L"EdgeLine", 5, 2},     {L"EdgeArc", 6, 2},      {L"EdgeEllipse", 5, 2},
        {L"EdgeRectangle", 5, 2}, {L"Locator", 12, 1},     {L"ShapeMatcher", 7, 1}, {L"CharReader", 5, 3},
        {L"Code1DReader", 6, 3},  {L"Code2DReader", 8, 3}, {L"Comparator", 8, 1},   {L"SnakeGauge", 7, 1},
    };
    const auto parents = Parents();
    std::map<int, int> methods, pages;
    for (const int i : NodesOf(MethodKind))
        methods[Owner(parents, i, ClassKind)]++;
    for (const int i : NodesOf(PageKind))
        pages[Owner(parents, i, ClassKind)]++;
    const auto classes = NodesOf(ClassKind);
    ASSERT_EQ(classes.size(), std::size(rows));
    for (std::size_t k = 0; k < classes.size(); k++) {
        const auto& node = static_cast<const ClassNode&>(At(classes[k]));
        EXPECT_STREQ(node.Identifier, rows[k].name);
        EXPECT_STREQ(typeString[node.Type], rows[k].name);
        EXPECT_EQ(methods[classes[k]], rows[k].methods) << k;
        EXPECT_EQ(pages[classes[k]], rows[k].pages) << k;
    }
}

TEST(Catalogue, MarksMethodsByTheirFlags)
{
    std::map<std::uint32_t, int> counts;
    for (const int i : NodesOf(MethodKind)) {
        EXPECT_EQ(At(i).Flags & 3, 3u) << i;
        for (const std::uint32_t bit : {0x4u, 0x8u, 0x40u, 0x4000u, 0x40000u})
            counts[bit] += (At(i).Flags & bit) != 0;
    }
    const std::map<std::uint32_t, int> expected = {
        {StaticMethod, 185}, {ReturnsObjectMethod, 3}, {0x40, 6}, {EntryMethod, 78}, {DeferredMethod, 3}};
    EXPECT_EQ(counts, expected);
}

TEST(Catalogue, KeepsThePlacesOfItsFirstNodes)
{
    struct PlaceRow
    {
        int index, kind;
        const wchar_t *identifier, *label;
        std::uint32_t flags;
    };
    static constexpr PlaceRow rows[] = {
        {1, ChoiceKind, L"", L"File", 0},
        {2, EnumKind, L"PixelTypes", L"Pixel Types", 0},
        {20, EnumKind, L"ErrorCodes", L"Error Codes", 0},
        {37, EnumKind, L"DraggingHandles", L"Dragging Handles", 0},
        {71, EnumKind, L"PredefinedColors", L"Predefined Colors", 0},
        {85, ClassKind, L"Image", L"Image", 0},
        {87, MethodKind, L"Read", L"Read  from File", 0x4003},
        {88, ArgumentKind, L"Image", L"Read (Image)", 0x12},
        {89, ArgumentKind, L"PathName", L"Path Name", 0x408009},
        {90, ArgumentKind, L"Type", L"Type", 0x8001},
        {91, MethodKind, L"Write", L"Write  to File", 0x3},
        {94, PageKind, L"Image", L"Properties", 0},
        {95, ArgumentKind, L"X", L"X", 0x2a},
        {103, EnumKind, L"SourceMode", L"Source Mode", 0},
        {139, ChoiceKind, L"", L"Process", 0},
        {140, EnumKind, L"GrayClipping", L"Gray Clipping", 0},
        {181, ClassKind, L"Operator", L"Point to point", 0},
        {182, ChoiceKind, L"", L"Copy...", GroupFlag},
        {184, ArgumentKind, L"Width", L"Width", 0x408401},
        {203, MethodKind, L"Invert", L"Invert", 0x7},
        {378, ArgumentKind, L"Threshold", L"Threshold", 0x418001},
        {1931, ArgumentKind, L"MaximumArea", L"Maximum Area", 0x409001},
    };
    ASSERT_EQ(Engine::NumNodes, 3007);
    for (const PlaceRow& row : rows) {
        EXPECT_EQ(At(row.index).Kind(), row.kind) << row.index;
        EXPECT_STREQ(At(row.index).Identifier, row.identifier) << row.index;
        EXPECT_STREQ(At(row.index).Label, row.label) << row.index;
        EXPECT_EQ(At(row.index).Flags, row.flags) << row.index;
    }
    const auto& type = dynamic_cast<const EnumArgumentNode&>(At(90));
    EXPECT_EQ(type.Cases, (Mask128{32819, 0}));
    EXPECT_EQ(type.EnumIndex, 2);
    EXPECT_EQ(type.Default, 1);
    const auto& area = dynamic_cast<const IntArgumentNode&>(At(1931));
    EXPECT_EQ(area.Default, 16000000);
    EXPECT_EQ(area.Step, 2500000);
}

TEST(Catalogue, ReachesEveryNodeOnceInTableOrder)
{
    std::vector<int> visited;
    const auto visit = [&](const auto& self, int index) -> void {
        visited.push_back(index);
        for (const int child : Children(index))
            self(self, child);
    };
    visit(visit, 0);
    ASSERT_EQ(visited.size(), static_cast<std::size_t>(Engine::NumNodes));
    for (int i = 0; i < Engine::NumNodes; i++)
        ASSERT_EQ(visited[static_cast<std::size_t>(i)], i);
}

TEST(Catalogue, TellsEveryNodeInWords)
{
    for (int i = 0; i < Engine::NumNodes; i++) {
        EXPECT_NE(At(i).Label[0], 0) << i;
        if (i > 0) {
            EXPECT_NE(At(i).Documentation[0], 0) << i;
        }
        if (At(i).Kind() != ChoiceKind) {
            EXPECT_NE(At(i).Identifier[0], 0) << i;
        }
    }
}

TEST(Catalogue, TellsSiblingsApartByTheirLabels)
{
    for (int i = 0; i < Engine::NumNodes; i++) {
        std::set<std::wstring> labels;
        for (const int child : Children(i)) {
            const int kind = At(child).Kind();
            // Two enumerations of the handles stand side by side under one label.
            if (kind == EnumKind || kind == ArgumentKind) continue;
            EXPECT_TRUE(labels.insert(At(child).Label).second) << child;
        }
    }
}

TEST(Catalogue, GivesEveryMethodAndPropertyANumberOfItsOwn)
{
    const auto parents = Parents();
    std::set<int> methods, properties;
    for (const int i : NodesOf(MethodKind)) {
        const int id = static_cast<const MethodNode&>(At(i)).MethodId;
        EXPECT_TRUE(methods.insert(id).second) << i;
        EXPECT_TRUE(id >= 128 && id <= 1833) << i;
    }
    for (const int i : NodesOf(ArgumentKind)) {
        const bool onPage = At(parents[static_cast<std::size_t>(i)]).Kind() == PageKind;
        EXPECT_EQ((At(i).Flags & propertyFlag) != 0, onPage) << i;
        const int id = Argument(i).PropertyId;
        if (!onPage) {
            EXPECT_EQ(id, -1) << i;
            continue;
        }
        EXPECT_TRUE(properties.insert(id).second) << i;
        EXPECT_TRUE(id >= 137 && id <= 1816) << i;
    }
}

TEST(Catalogue, RefersToNodesOfTheRightKind)
{
    // An overlay lies on a picture, or on the overlay of an object that does.
    const std::set<std::wstring> pictures = {L"Image", L"Path", L"Region"};
    const auto parents = Parents();
    for (const int i : NodesOf(ArgumentKind)) {
        const ArgumentNode& node = Argument(i);
        EXPECT_TRUE(node.Type >= 1 && node.Type < typeCount) << i;
        if (node.Mother >= 0) {
            ASSERT_LT(node.Mother, Engine::NumNodes) << i;
            EXPECT_EQ(parents[static_cast<std::size_t>(node.Mother)], parents[static_cast<std::size_t>(i)]) << i;
            EXPECT_NE(node.Mother, i);
            EXPECT_TRUE(pictures.count(typeString[Argument(node.Mother).Type])) << i;
        }
        int bound = -1;
        if (const auto* number = dynamic_cast<const IntArgumentNode*>(&node)) {
            if (node.Flags & attributeValue::LinkedMaximum)
                bound = number->Maximum;
            else
                EXPECT_LE(number->Minimum, number->Maximum) << i;
            EXPECT_GT(number->Step, 0) << i;
        }
        if (const auto* choice = dynamic_cast<const EnumArgumentNode*>(&node)) {
            bound = choice->CountNode;
            ASSERT_TRUE(choice->EnumIndex > 0 && choice->EnumIndex < Engine::NumNodes) << i;
            ASSERT_EQ(At(choice->EnumIndex).Kind(), EnumKind) << i;
            const auto cases = Children(choice->EnumIndex);
            bool offered = (node.Flags & attributeValue::Mixed) != 0;
            for (int bit = 0; bit < 128; bit++) {
                if (!choice->Cases.Bit(bit)) continue;
                ASSERT_LT(static_cast<std::size_t>(bit), cases.size()) << i;
                offered |=
                    static_cast<const EnumCaseNode&>(At(cases[static_cast<std::size_t>(bit)])).Value == choice->Default;
            }
            EXPECT_TRUE(offered) << i << ": the default is not among the cases";
        }
        if (bound >= 0) {
            ASSERT_LT(bound, Engine::NumNodes) << i;
            EXPECT_EQ(At(bound).Kind(), ArgumentKind) << i;
            EXPECT_EQ(At(parents[static_cast<std::size_t>(bound)]).Kind(), PageKind) << i;
            EXPECT_EQ(Owner(parents, bound, ClassKind), Owner(parents, i, ClassKind)) << i;
        }
    }
}

TEST(Catalogue, DeclaresTheArgumentsThatItLists)
{
    for (const int i : NodesOf(MethodKind)) {
        const auto& method = static_cast<const MethodNode&>(At(i));
        std::vector<std::wstring> listed;
        int results = 0, instances = 0;
        for (const int child : Children(i)) {
            const std::uint32_t flags = At(child).Flags;
            EXPECT_EQ(results, 0) << i << ": the result stands last";
            results += (flags & resultFlag) != 0;
            instances += (flags & instanceFlag) != 0;
            EXPECT_TRUE(flags & (attributeValue::In | attributeValue::Out)) << child;
            if (!(flags & (instanceFlag | presetFlag | resultFlag))) listed.push_back(At(child).Identifier);
        }
        EXPECT_EQ(ParameterNames(method.Signature), listed) << i;
        EXPECT_EQ(instances, method.Flags & StaticMethod ? 0 : 1) << i;
        if (instances) {
            EXPECT_TRUE(At(method.FirstChild).Flags & instanceFlag) << i;
        }
        const std::wstring declaration = method.Signature;
        EXPECT_NE(declaration.find(L" " + std::wstring(method.Identifier) + L"("), std::wstring::npos) << i;
        EXPECT_EQ(results == 0, declaration.starts_with(L"void ")) << i;
    }
}

TEST(Types, AreWhatTheirListSays)
{
    EXPECT_EQ(FirstLanguageType, CodeOf(L"bool"));
    EXPECT_LT(CodeOf(L"XY*"), FirstLanguageType);
    EXPECT_TRUE(TypeServes(0, CodeOf(L"int")));
    EXPECT_TRUE(TypeServes(CodeOf(L"Profile"), CodeOf(L"Histogram")));
    EXPECT_FALSE(TypeServes(CodeOf(L"Histogram"), CodeOf(L"Profile")));
    std::set<std::wstring> names;
    for (int code = 1; code < typeCount; code++) {
        EXPECT_TRUE(names.insert(typeString[code]).second) << code;
        const TypeRow* row = FindType(code);
        const typeKind kind = KindOf(code);
        // Objects may be still to come; all others have a variable.
        if (kind != typeKind::Object) {
            EXPECT_EQ(row != nullptr, kind != typeKind::None) << code;
        }
        if (!row) continue;
        EXPECT_EQ(row->SetDefault != nullptr, kind >= typeKind::Enumeration) << code;
        const bool isInteger = kind == typeKind::Enumeration || kind == typeKind::Integer;
        EXPECT_EQ(row->ReadInteger && row->WriteInteger, isInteger) << code;
        if (!isInteger) continue;
        const auto variable = row->Make();
        row->WriteInteger(*variable, 7);
        EXPECT_EQ(row->ReadInteger(*variable), 7) << code;
    }
    EXPECT_EQ(FindType(0), nullptr);
    EXPECT_EQ(FindType(typeCount), nullptr);
    EXPECT_TRUE(FindType(CodeOf(L"XY"))->ShallowCopy);
    EXPECT_FALSE(FindType(CodeOf(L"Site"))->ShallowCopy);
}

} // namespace
