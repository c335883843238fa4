// What the engine and the workbench take for granted of the catalogue, and its form does not enforce.
#include "engine/Engine.h"
#include "engine/Types.h"

#include <gtest/gtest.h>

#include <cwchar>
#include <string>

using namespace Tesk;
using namespace attributeValue;

namespace {

std::string Narrow(const wchar_t* text)
{
    std::string narrow;
    for (; *text; text++)
        narrow += static_cast<char>(*text);
    return narrow;
}

/// Calls a function with every argument of every method, or of every page.
template <typename Function>
void ForEachArgument(int parentKind, Function function)
{
    for (int parent = 0; parent < Engine::NumNodes; parent++) {
        if (Engine::Tree[parent]->Kind() != parentKind) continue;
        for (int i = Engine::Tree[parent]->FirstChild; i >= 0; i = Engine::Tree[i]->NextSibling) {
            const auto& argument = static_cast<const ArgumentNode&>(*Engine::Tree[i]);
            SCOPED_TRACE(Narrow(Engine::Tree[parent]->Identifier) + " " + std::to_string(i) + " " +
                         Narrow(argument.Label));
            function(*Engine::Tree[parent], argument);
        }
    }
}

} // namespace

TEST(CatalogueRules, EveryInputCanBeBound)
{
    // An input that is no value is bound to a shadow of an earlier variable; what is always fresh must be an output
    // too, or else nothing makes its variable.
    ForEachArgument(MethodKind, [&](const TreeNode&, const ArgumentNode& argument) {
        if (!(argument.Flags & In) || argument.Flags & Value) return;
        if (argument.Flags & Fresh) {
            EXPECT_TRUE(argument.Flags & Out);
        } else {
            // A class that is still to come has no row yet.
            const TypeRow* row = FindType(argument.Type);
            EXPECT_TRUE(!row || row->ShallowCopy) << Narrow(typeString[argument.Type]);
        }
    });
}

TEST(CatalogueRules, OnlyMethodsOnProfilesAreLabelledAsSuch)
{
    // By these endings the workbench knows the methods whose place is dragged as a profile.
    for (int i = 0; i < Engine::NumNodes; i++) {
        if (Engine::Tree[i]->Kind() != MethodKind) continue;
        const std::string label = Narrow(Engine::Tree[i]->Label);
        bool named = false, takesProfile = false;
        for (const char* ending : {"Line", "Row", "Rows", "Column", "Columns"})
            named |= label.ends_with(ending);
        for (int child = Engine::Tree[i]->FirstChild; child >= 0; child = Engine::Tree[child]->NextSibling) {
            const int type = static_cast<const ArgumentNode*>(Engine::Tree[child])->Type;
            takesProfile |= TypeServes(CodeOf(L"Profile"), type);
        }
        EXPECT_TRUE(!named || takesProfile) << i << ' ' << label;
    }
}

TEST(CatalogueRules, APageBearsTheNameOfItsClass)
{
    const TreeNode* owner = nullptr;
    for (int i = 0; i < Engine::NumNodes; i++) {
        if (Engine::Tree[i]->Kind() == ClassKind) owner = Engine::Tree[i];
        if (Engine::Tree[i]->Kind() != PageKind) continue;
        ASSERT_NE(owner, nullptr);
        EXPECT_STREQ(Engine::Tree[i]->Identifier, owner->Identifier) << i;
    }
}

TEST(CatalogueRules, AGrayPixelStartsAtItsDefault)
{
    Engine::Trace = nullptr;
    Engine engine;
    int found = 0;
    for (int i = 0; i < Engine::NumNodes; i++) {
        if (Engine::Tree[i]->Kind() != ArgumentKind || std::wcscmp(Engine::Tree[i]->Identifier, L"Foreground") ||
            static_cast<const ArgumentNode*>(Engine::Tree[i])->Type != CodeOf(L"GrayPixel"))
            continue;
        found++;
        const AnyVariable* variable = engine.CreateVariable(i, -1);
        ASSERT_NE(variable, nullptr);
        EXPECT_EQ(static_cast<const Var<GrayPixel>*>(variable)->Value, 255);
    }
    EXPECT_GT(found, 0);
}
