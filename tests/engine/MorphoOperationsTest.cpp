#include "engine/Engine.h"
#include "engine/Types.h"
#include "foundation/Status.h"
#include "image/Morpho.h"
#include "image/Operator.h"
#include "measure/Path.h"

#include <gtest/gtest.h>

#include <cwchar>
#include <filesystem>
#include <string>
#include <unistd.h>
#include <utility>

using namespace Tesk;

namespace {

constexpr int firstMethod = 240, lastMethod = 263, morphoType = CodeOf(L"Morpho"), imageType = CodeOf(L"Image"),
              readNode = 87;

int FindMethod(int methodId)
{
    for (int i = 0; i < Engine::NumNodes; i++)
        if (Engine::Tree[i]->Kind() == MethodKind && Engine::OpNode(i)->MethodId == methodId) return i;
    return -1;
}

int FindProperty(int propertyId)
{
    for (int i = 0; i < Engine::NumNodes; i++)
        if (Engine::Tree[i]->Kind() == ArgumentKind && Engine::VarNode(i)->PropertyId == propertyId) return i;
    return -1;
}

class MorphoOperations : public ::testing::Test
{
protected:
    void SetUp() override
    {
        Status::ErrorBehavior(IgnoreIt);
        Status::Shallow = true;
        Engine::Trace = nullptr;
        path_ =
            (std::filesystem::temp_directory_path() / ("tesk_morpho_" + std::to_string(getpid()) + ".png")).string();
        Image image;
        image.Set(12, 10, Gray);
        Operator::Copy(0, image);
        image.Window(3, 3, 5, 4);
        Operator::Copy(255, image);
        image.Window();
        image.Write(path_.c_str());
    }
    void TearDown() override
    {
        Status::Shallow = false;
        std::filesystem::remove(path_);
    }

    std::string path_;
};

} // namespace

TEST_F(MorphoOperations, RunThroughTheDispatchAndSizeTheirResults)
{
    for (int id = firstMethod; id <= lastMethod; id++) {
        const int node = FindMethod(id);
        ASSERT_GE(node, 0) << id;
        if (Engine::IsPending(node)) continue;
        Engine engine;
        const auto append = [&](int index) -> Operation& {
            auto made = std::make_unique<Operation>();
            engine.UnreserveVariables();
            made->Set(engine, index, false);
            Operation& operation = engine.InsertOperation(std::move(made));
            EXPECT_EQ(engine.FillOperation(engine.NumOperations() - 1), -1) << id;
            return operation;
        };
        for (int read = 0; read < 2; read++)
            SetText(static_cast<Var<const char*>&>(*append(readNode).Args.at(1).Variable), path_);
        Operation& operation = append(node);
        for (Arg& argument : operation.Args) {
            argument.Visible = true;
            // The list of places that takes the place of an outline is open.
            if (auto* path = dynamic_cast<Var<Path>*>(argument.Variable)) path->Value.Closed = true;
        }
        engine.Execute();
        ASSERT_EQ(Status::Error().Code, NoError) << id << ' ' << Narrow(Status::UnicodeError());
        for (const Arg& argument : operation.Args) {
            const ArgumentNode& described = *Engine::VarNode(argument.Node);
            ASSERT_NE(argument.Variable, nullptr) << id << ' ' << Narrow(described.Identifier);
            if (const auto* path = dynamic_cast<const Var<Path>*>(argument.Variable)) {
                EXPECT_GT(path->Value.Length, 0) << id;
                EXPECT_FALSE(path->Value.Closed) << id;
            }
            if (described.Type != imageType || (described.Flags & attributeValue::In)) continue;
            const auto& image = static_cast<Var<Image>&>(*argument.Variable).Value;
            EXPECT_EQ(image.Width, 12) << id;
            EXPECT_EQ(image.Height, 10) << id;
        }
    }
}

TEST_F(MorphoOperations, PropertiesGoThroughTheSettersOfTheirPage)
{
    const auto object = FindType(morphoType)->Make();
    Morpho& morpho = static_cast<Var<Morpho>&>(*object).Value;
    Var<int> value;
    Engine engine;
    const struct
    {
        int property, set, width, height, diagonal;
    } cases[] = {{210, 9, 9, 3, 1}, {211, 7, 9, 7, 1}, {212, 5, 9, 7, 5}, {213, 11, 11, 7, 1}, {214, 13, 11, 13, 1},
                 {215, 5, 5, 5, 1}, {216, 9, 9, 9, 5}, {217, 7, 7, 7, 7}, {218, 15, 15, 1, 1}, {219, 17, 1, 17, 1},
                 {215, 5, 5, 5, 1}, {216, 4, 5, 5, 1}, {210, -3, 5, 5, 1}};
    for (const auto& c : cases) {
        value.Value = c.set;
        ASSERT_TRUE(engine.SetProperty(&value, FindProperty(c.property), object.get()));
        EXPECT_EQ(Status::Error().Code, c.set % 2 == 1 ? NoError : OutOfRange) << c.property;
        EXPECT_EQ(morpho.Width, c.width) << c.property;
        EXPECT_EQ(morpho.Height, c.height) << c.property;
        EXPECT_EQ(morpho.Diagonal, c.diagonal) << c.property;
        ASSERT_TRUE(engine.GetProperty(&value, FindProperty(c.property), object.get()));
        if (c.set % 2 == 1) {
            EXPECT_EQ(value.Value, c.set) << c.property;
        }
    }
}
