// The rules of a sequence: bindings, names, failures, what is held, what is told, and what is printed.
#include "engine/Sequence.h"
#include "engine/TypeNames.h"
#include "engine/types/Settings.h"
#include "foundation/Status.h"
#include "image/Operator.h"

#include <gtest/gtest.h>

#include <cstring>
#include <cwchar>
#include <set>
#include <string>
#include <utility>
#include <vector>

using namespace TeskTests;

TEST_F(SequenceTest, AFailureInTheMiddleLeavesTheRestUntilItsCauseIsGone)
{
    Operation& source = AppendImage(10);
    Operation& second = AppendImage(20);
    Operation& sum = Append(L"Image + Image");
    Operation& last = Append(L"Invert");
    engine_.Execute();
    EXPECT_EQ(Pixel(last, 1), 225);
    std::vector<const Operation*> run;
    engine_.BeforeRun = [&](const Operation& operation) { run.push_back(&operation); };
    Change(second, 0, 80);
    for (int tries = 0; tries < 2; tries++) {
        engine_.Execute();
        EXPECT_EQ(Status::Error().Code, IncompatibleSize) << tries;
        EXPECT_EQ(Pixel(last, 1), 225) << "what stands behind keeps its result";
    }
    EXPECT_EQ(run, (std::vector<const Operation*>{&second, &sum, &sum}));
    run.clear();
    Change(source, 0, 80);
    Change(source, 2, 40);
    engine_.Execute();
    EXPECT_EQ(Status::Error().Code, NoError);
    EXPECT_EQ(run, (std::vector<const Operation*>{&source, &sum, &last}));
    EXPECT_EQ(Pixel(last, 1), 195);
    run.clear();
    engine_.Execute();
    EXPECT_TRUE(run.empty());
    EXPECT_FALSE(Remove(2));
    EXPECT_TRUE(Remove(3));
    EXPECT_TRUE(Remove(2));
}

TEST_F(SequenceTest, AnInputOutlivesTheReaderInBetween)
{
    Operation& source = AppendImage(10);
    Append(L"Write  to File");
    Operation& last = Append(L"Invert");
    ASSERT_EQ(last.Args[0].Variable->Source, At(1).Args[0].Variable);
    ASSERT_TRUE(Remove(1));
    engine_.ReclaimVariables();
    Change(source, 2, 30);
    engine_.Execute();
    EXPECT_EQ(Pixel(last, 1), 225);
}

TEST_F(SequenceTest, OnlyVariablesThatNobodyReadsAreReclaimed)
{
    AppendImage(10);
    Append(L"Invert");
    EXPECT_EQ(engine_.ReclaimVariables(), 0);
    const int before = engine_.NumVariables();
    for (int i = 0; i < 5; i++) {
        Append(L"Invert");
        ASSERT_TRUE(Remove(2));
    }
    EXPECT_EQ(engine_.ReclaimVariables(), 10);
    EXPECT_EQ(engine_.NumVariables(), before);
}

TEST_F(SequenceTest, NamesAreUniqueUpToTheirBuffer)
{
    Operation& operation = AppendImage(1);
    AnyVariable* image = operation.Args[3].Variable;
    const std::wstring longName(100, L'a');
    EXPECT_TRUE(engine_.RenameVariable(image, longName.c_str(), false));
    EXPECT_EQ(image->NameText, longName.substr(0, 79));
    Operation& other = AppendImage(2);
    EXPECT_FALSE(engine_.RenameVariable(other.Args[3].Variable, longName.c_str(), false));
    EXPECT_EQ(Name(other.Args[3]), longName.substr(0, 78) + L"0");
    EXPECT_TRUE(engine_.RenameVariable(image, L"picture", true));
    EXPECT_EQ(image->NameText, longName.substr(0, 79)) << "a test changes nothing";
    EXPECT_TRUE(engine_.RenameVariable(image, L"picture", false));
    EXPECT_TRUE(engine_.RenameVariable(other.Args[3].Variable, L"Picture", false)) << "case tells names apart";
    EXPECT_FALSE(engine_.RenameVariable(image, L"picture", false)) << "its own name is taken as well";
    EXPECT_EQ(image->NameText, L"picture0");
    EXPECT_FALSE(image->AutoNamed);
}

TEST_F(SequenceTest, VariablesAreListedOnceByNameTheLatestOfEach)
{
    AppendImage(1);
    AppendImage(2);
    Append(L"Invert");
    const auto names = [](const std::vector<AnyVariable*>& variables) {
        std::wstring text;
        for (const AnyVariable* variable : variables)
            text += variable->NameText + L' ';
        return text;
    };
    EXPECT_EQ(names(engine_.GetVariables(-1, CodeOf(L"Image"), false)), L"Copied0 Copied1 Inverted0 ");
    EXPECT_EQ(names(engine_.GetVariables(0, CodeOf(L"Image"), false)), L"Copied0 ");
    EXPECT_EQ(names(engine_.GetVariables(1, 97, false)), L"Width0 Height0 Const0 Width1 Height1 Const1 ");
    EXPECT_EQ(engine_.GetVariables(-1, CodeOf(L"Image"), false)[1], At(2).Args[0].Variable)
        << "the shadow is the latest";
    EXPECT_EQ(engine_.GetVariables(1, CodeOf(L"Image"), false)[1], At(1).Args[3].Variable);
    // Swapped away, the constants are held: listed only for those who ask.
    At(1).Set(engine_, FindMethod(L"Image"), true);
    EXPECT_EQ(names(engine_.GetVariables(-1, 97, false)), L"Width0 Height0 Const0 ");
    EXPECT_EQ(names(engine_.GetVariables(-1, 97, true)), L"Width0 Height0 Const0 Width1 Height1 Const1 ");
}

TEST_F(SequenceTest, ASwapAndASwapBackRestoreWhatWasHeld)
{
    AppendImage(1);
    Operation& operation = AppendImage(2);
    std::vector<AnyVariable*> before;
    for (const Arg& argument : operation.Args)
        before.push_back(argument.Variable);
    const int node = operation.Node;
    operation.Set(engine_, FindMethod(L"Image"), true);
    engine_.FillOperation(1);
    AnyVariable* const input = operation.Args[0].Variable;
    EXPECT_EQ(Name(operation.Args[0]), L"Copied0");
    EXPECT_EQ(operation.Args[1].Variable, before[3]) << "the result fits both";
    operation.Set(engine_, node, true);
    for (std::size_t k = 0; k < before.size(); k++)
        EXPECT_EQ(operation.Args[k].Variable, before[k]) << k;
    EXPECT_EQ(before[3]->Uses, 2) << "once as an argument, once held";
    const Operation::Memo memo = operation.Save();
    operation.Set(engine_, FindMethod(L"Image"), true);
    EXPECT_EQ(operation.Args[0].Variable, input);
    operation.Restore(memo);
    EXPECT_EQ(operation.Node, node);
    EXPECT_EQ(before[3]->Uses, 2);
    operation.Reset();
    EXPECT_EQ(operation.NumHeld(), 0);
    EXPECT_EQ(before[3]->Uses, 1);
    EXPECT_EQ(input->Uses, 0);
}

TEST_F(SequenceTest, TheTraceTellsOfBindingAndEndsWithTheProgram)
{
    std::FILE* trace = std::tmpfile();
    ASSERT_NE(trace, nullptr);
    Engine::Trace = trace;
    AppendImage(1);
    Append(L"Image + Image");
    engine_.Compatible(At(0).Args[0].Node, At(0).Args[1].Node);
    Remove(1);
    engine_.Execute();
    Engine::Trace = nullptr;
    std::string text(static_cast<std::size_t>(std::ftell(trace)), ' ');
    std::rewind(trace);
    ASSERT_EQ(std::fread(text.data(), 1, text.size(), trace), text.size());
    std::fclose(trace);
    for (const char* part :
         {"Tesk::Engine::HonorArguments noname noname noname noname\n", " (no need to honor, Out)",
          "Tesk::Engine::CreateArguments noname noname noname noname\n",
          "\tCreateArguments int Width (created Width0)\n", "Copied0, ", " (honored as Copied0)", "reserved Copied0, ",
          " SrcB (could not honor, failure)\n", "\nprivate void Process()\n{", "no"})
        EXPECT_NE(text.find(part), std::string::npos) << part;
}

TEST_F(SequenceTest, LiteralsAndPresetsInPrograms)
{
    Operation& copy = AppendImage(7, 100, 50);
    Operation& threshold = Append(L"Threshold");
    Operation& gain = Append(L"Gain and Offset");
    const auto section = [&](int language, int which) { return ScriptText(engine_, language, which); };
    EXPECT_EQ(section(0, 0),
              L"\n\t// Constant - Gray (Operator)\n\tCopied0.Set(100, 50);\n\tOperator::Copy(7, Copied0);\n");
    EXPECT_EQ(section(2, 0), L"\n\t' Constant - Gray (Operator)\n\tCopied0.Set(100, 50);\n"
                             L"\tTeskNET.Operator.Copy(7, Copied0)\n");
    const std::pair<int, const wchar_t*> integers[] = {
        {Auto, L"Auto"}, {MaxInt, L"MaxInt"}, {MinInt, L"MinInt"}, {-5, L"-5"}};
    for (const auto& [value, text] : integers) {
        ValueOf<int>(threshold, 0) = value;
        EXPECT_EQ(section(3, 1), std::wstring(L"\n\t// Threshold (Operator)\n\t") + Name(threshold.Args[5]) +
                                     L"= TeskNET::Operator::Binarize(" + text +
                                     L", Copied0, Binarized0, true, TeskNET::Binarization::Binary);\n");
    }
    // An enumerator that is none prints as its number.
    const std::int32_t none = 123456789;
    std::memcpy(&ValueOf<Binarization>(threshold, 4), &none, sizeof none);
    EXPECT_NE(section(1, 1).find(L", true, 1234567);"), std::wstring::npos);
    const std::pair<double, const wchar_t*> reals[] = {{0.5, L"0.5"}, {2, L"2"}, {1e-7, L"1e-07"}};
    for (const auto& [value, text] : reals) {
        ValueOf<double>(gain, 0) = value;
        EXPECT_NE(section(0, 2).find(std::wstring(L"(") + text + L", "), std::wstring::npos) << value;
    }
    // Declared: what is computed, not what only goes in.
    const std::wstring whole = ScriptText(engine_, 2);
    EXPECT_NE(whole.find(L"\tDim " + Name(threshold.Args[5]) + L" as Integer\n"), std::wstring::npos);
    EXPECT_EQ(whole.find(L"Dim " + Name(copy.Args[0])), std::wstring::npos);
    EXPECT_EQ(ScriptText(Engine(), 0), L"\n#include \"Tesk.h\"\n\nvoid Process()\n{\n\t// Declarations\n"
                                       L"\n\t// Choose among drawing statements here... (output to the console)\n}\n");
}

TEST_F(SequenceTest, AWindowIsPrintedWhereItDiffersFromItsSource)
{
    AppendImage(7);
    Append(L"Invert");
    engine_.Execute();
    auto& source = ValueOf<Image>(At(0), 3);
    auto& input = ValueOf<Image>(At(1), 0);
    const auto settings = [&] {
        const std::wstring text = ScriptText(engine_, 0, 1);
        const std::size_t from = text.find(L")\n") + 2, to = text.find(L"\tOperator::");
        return text.substr(from, to - from);
    };
    EXPECT_EQ(settings(), L"");
    input.Window(4, 5, 20, 10);
    EXPECT_EQ(settings(), L"\tCopied0.Window(4, 5, 20, 10);\n");
    source.Window(4, 5, 20, 10);
    EXPECT_EQ(settings(), L"") << "a window that is only inherited prints nothing";
    input.Window();
    EXPECT_EQ(settings(), L"\tCopied0.Window();\n");
}

TEST(EngineSettings, EverySettingOfAClassThatExistsCanBeRead)
{
    struct Sink final : SettingsSink
    {
        void Setting(const wchar_t*, const std::wstring&) override {}
        void Statement(const std::wstring&) override {}
        void Missing(const wchar_t* name) override { missing += std::wstring(name) + L' '; }
        std::wstring Bool(bool) const override { return L""; }
        std::wstring Enumerator(int, int) const override { return L""; }
        std::wstring missing;
    };
    Engine engine;
    Engine::Trace = nullptr;
    for (int i = 0; i < Engine::NumNodes; i++) {
        if (Engine::Tree[i]->Kind() != ArgumentKind) continue;
        AnyVariable* object = engine.CreateVariable(i, 0);
        Sink sink;
        if (object && WriteSettings(object->TypeCode, sink, *object, nullptr)) {
            EXPECT_EQ(sink.missing, L"") << typeString[object->TypeCode];
        }
        engine.ReclaimVariables();
    }
}

TEST(EngineTree, AMethodWithoutACaseIsPendingAndAGroupOnlyIfAllOfItIs)
{
    for (int i = 0; i < Engine::NumNodes; i++) {
        const int kind = Engine::Tree[i]->Kind();
        if (kind != ChoiceKind && kind != ClassKind) continue;
        int methods = 0, pending = 0;
        for (int child = Engine::Tree[i]->FirstChild; child >= 0; child = Engine::Tree[child]->NextSibling)
            if (Engine::Tree[child]->Kind() == MethodKind || Engine::Tree[child]->Kind() == ChoiceKind ||
                Engine::Tree[child]->Kind() == ClassKind) {
                methods++;
                pending += Engine::IsPending(child);
            }
        EXPECT_EQ(Engine::IsPending(i), methods > 0 && methods == pending) << Engine::Tree[i]->Label;
    }
    EXPECT_FALSE(Engine::IsPending(0));
    EXPECT_FALSE(Engine::IsPending(-1));
}

TEST_F(SequenceTest, RunningAgainKeepsOneStoreForEachResult)
{
    AppendImage(10, 200, 150);
    for (int i = 0; i < 10; i++) {
        Append(L"Invert");
        Append(L"Const + Image");
    }
    engine_.Execute();
    const int variables = engine_.NumVariables();
    for (int i = 0; i < 50; i++) {
        Change(At(0), 2, i);
        engine_.Execute();
        ASSERT_EQ(Status::Error().Code, NoError);
        std::set<const std::uint8_t*> stores;
        for (const auto& operation : engine_.Operations)
            for (const Arg& argument : operation->Args)
                if (Engine::VarNode(argument.Node)->Type == CodeOf(L"Image"))
                    stores.insert(static_cast<Var<Image>*>(argument.Variable)->Value.FirstPixel);
        ASSERT_EQ(stores.size(), engine_.Operations.size()) << "a shadow holds on to what its source has left";
    }
    EXPECT_EQ(engine_.NumVariables(), variables);
}

TEST_F(SequenceTest, ADeferredMethodRunsOnlyWhenItIsTold)
{
    AppendImage(10, 20, 15);
    // It has no outline to train with, so that a run shows in the code.
    Append(L"Train Outline");
    const auto codeOfRun = [&] {
        engine_.Execute();
        return Status::Error().Code;
    };
    EXPECT_EQ(codeOfRun(), CannotPerform) << "a new operation is to run once";
    At(1).Dirty = false;
    Change(At(0), 2, 20);
    EXPECT_EQ(codeOfRun(), NoError) << "not by a change of what it reads";
    engine_.ChangeOperation(1);
    EXPECT_EQ(codeOfRun(), CannotPerform);
}
