// What reads what: shadows after a swap or a rebinding, settings of their own, and calls that cannot be made.
#include "engine/Sequence.h"

#include "engine/Types.h"
#include "image/Kernel.h"
#include "image/Morpho.h"
#include "image/Operator.h"

#include <algorithm>
#include <cwchar>
#include <utility>

using namespace TeskTests;

TEST_F(SequenceTest, AfterARebindingLaterReadersFollowWhatIsStillThere)
{
    AppendImage(10);
    Operation& second = AppendImage(20);
    Operation& histogram = Append(L"Compute from Image");
    Operation& last = Append(L"Invert");
    ASSERT_EQ(last.Args[0].Variable->Source, histogram.Args[1].Variable);
    engine_.Execute();
    EXPECT_EQ(Pixel(last, 1), 235);
    AnyVariable* const former = histogram.Args[1].Variable;
    EXPECT_TRUE(engine_.ReplaceOperationArgument(2, 1, At(0).Args[3].Variable));
    EXPECT_EQ(Name(histogram.Args[1]), L"Copied0");
    EXPECT_EQ(histogram.Args[1].Variable->Source, At(0).Args[3].Variable);
    EXPECT_EQ(histogram.Args[1].Variable->Uses, 1);
    EXPECT_EQ(former->Uses, 0);
    EXPECT_FALSE(former->Reserved);
    Change(second, 2, 30);
    engine_.ReclaimVariables();
    engine_.Execute();
    EXPECT_EQ(Pixel(last, 1), 225);
    EXPECT_FALSE(engine_.ReplaceOperationArgument(2, 1, histogram.Args[0].Variable)) << "a histogram is no image";
    EXPECT_FALSE(engine_.ReplaceOperationArgument(2, 1, nullptr));
    EXPECT_FALSE(engine_.ReplaceOperationArgument(2, 9, At(0).Args[3].Variable));
    EXPECT_FALSE(engine_.ReplaceOperationArgument(9, 0, At(0).Args[3].Variable));
}

TEST_F(SequenceTest, AfterASwapLaterReadersFollowWhatIsStillThereAndReturnWithIt)
{
    AppendImage(10);
    Operation& second = AppendImage(20);
    Operation& copy = Append(L"Image");
    Operation& sum = Append(L"Image + Image");
    ASSERT_EQ(sum.Args[1].Variable->Source, copy.Args[0].Variable);
    engine_.Execute();
    EXPECT_EQ(Pixel(sum, 2), 40);
    const int image = copy.Node;
    copy.Set(engine_, FindMethod(constantCopy), true);
    engine_.FillOperation(2);
    ValueOf<int>(copy, 0) = ValueOf<int>(copy, 1) = 64;
    ValueOf<int>(copy, 2) = 100;
    Change(second, 2, 30);
    engine_.ChangeOperation(2);
    engine_.Execute();
    EXPECT_EQ(Status::Error().Code, NoError) << Status::AsciiError();
    EXPECT_EQ(Pixel(sum, 2), 130);
    copy.Set(engine_, image, true);
    Change(second, 2, 35);
    engine_.ChangeOperation(2);
    engine_.Execute();
    EXPECT_EQ(Pixel(sum, 2), 70);
}

TEST_F(SequenceTest, ASwapRenamesOnlyWhatItsOwnOperationMade)
{
    AppendImage(1);
    Append(L"Get Row");
    Append(L"Get Row");
    Operation& operation = Append(L"Constant");
    ASSERT_EQ(Name(operation.Args[1]), L"Profile1");
    operation.Set(engine_, FindMethod(L"Const + Profile"), true);
    engine_.FillOperation(3);
    operation.RenameTargets(engine_);
    EXPECT_EQ(Name(operation.Args[2]), L"Profile1");
    EXPECT_EQ(Name(At(2).Args[0]), L"Profile1") << "what an earlier operation made keeps its name";
}

TEST_F(SequenceTest, AMaskAndAnElementAreChangedForOneUseOnly)
{
    AppendImage(10);
    Append(L"Dilate");
    Operation& erode = Append(L"Erode");
    Append(L"Convolve");
    Operation& convolve = Append(L"Convolve");
    engine_.Execute();
    ValueOf<Morpho>(erode, 0).Set(9, 9, 1);
    engine_.ChangeVariable(erode.Args[0].Variable);
    ValueOf<Kernel>(convolve, 0).Offset = 7;
    engine_.ChangeVariable(convolve.Args[0].Variable);
    engine_.Execute();
    EXPECT_EQ(Status::Error().Code, NoError) << Status::AsciiError();
    EXPECT_EQ(ValueOf<Morpho>(erode, 0).Width, 9);
    EXPECT_EQ(ValueOf<Morpho>(At(1), 0).Width, 3);
    EXPECT_EQ(Pixel(At(3), 2), 0);
    EXPECT_EQ(Pixel(convolve, 2), 7);
    const auto settings = [&](int which) {
        const std::wstring text = ScriptText(engine_, 0, which);
        const std::size_t from = text.find(L")\n") + 2;
        return text.substr(from, text.rfind(L'\t') - from);
    };
    EXPECT_EQ(settings(1), L"");
    EXPECT_EQ(settings(2), L"\tMorpho0.Set(9, 9, 1);\n");
    EXPECT_EQ(settings(3), L"");
    EXPECT_EQ(settings(4), L"\tKernel0.Offset= 7.000000;\n");
}

TEST_F(SequenceTest, WhatCannotBeCalledSaysSoAndStopsTheRun)
{
    AppendImage(10);
    Append(L"Image + Image");
    Operation& last = Append(L"Invert");
    engine_.Execute();
    EXPECT_EQ(Status::Error().Code, CannotPerform);
    EXPECT_STREQ(Status::UnicodeError(), L"The operation (Add) has no variable for its argument (SrcB)");
    EXPECT_STREQ(Status::AsciiFunction(), "Tesk::Engine::Execute");
    EXPECT_EQ(ValueOf<Image>(last, 1).Type, Undefined) << "what stands behind is not run";
    EXPECT_TRUE(At(1).Dirty);
    EXPECT_TRUE(Remove(2));
    EXPECT_TRUE(Remove(1));
    for (int node = 0; node < Engine::NumNodes; node++) {
        if (Engine::Tree[node]->Kind() != MethodKind || !Engine::IsPending(node)) continue;
        auto made = std::make_unique<Operation>();
        made->Set(engine_, node, false);
        engine_.InsertOperation(std::move(made));
        engine_.FillOperation(1);
        engine_.Execute();
        EXPECT_EQ(Status::Error().Code, NotImplemented) << node;
        EXPECT_TRUE(Remove(1));
    }
}

TEST_F(SequenceTest, FailuresOfResultsAndOfPresetsAreReported)
{
    Operation& source = AppendImage(10);
    ValueOf<bool>(Append(L"Build"), 4) = false; // the largest level is the pyramid's own
    Operation& level = Append(L"Get Level");
    ASSERT_EQ(level.Args.size(), 3u);
    engine_.Execute();
    EXPECT_EQ(Status::Error().Code, NoError) << Status::AsciiError();
    EXPECT_EQ(ValueOf<Image>(level, 2).Width, 64);
    Change(level, 1, 99);
    engine_.Execute();
    EXPECT_EQ(Status::Error().Code, OutOfRange);
    EXPECT_STREQ(Status::AsciiFunction(), "Tesk::Pyramid::Bitmap");
    EXPECT_EQ(ValueOf<Image>(level, 2).Width, 64) << "the result is left as it was";
    Change(source, 0, -5);
    engine_.Execute();
    EXPECT_EQ(Status::Error().Code, CannotAllocate);
    EXPECT_STREQ(Status::AsciiFunction(), "Tesk::Image::Set");
}

TEST_F(SequenceTest, NumbersOfNoArgumentAreRefused)
{
    AppendImage(1);
    Var<int> value;
    AnyVariable* image = At(0).Args[3].Variable;
    for (const int node : {-1, 0, Engine::NumNodes}) {
        EXPECT_FALSE(engine_.GetProperty(&value, node, image));
        EXPECT_FALSE(engine_.SetProperty(&value, node, image));
        EXPECT_FALSE(engine_.Compatible(node, At(0).Args[0].Node));
        Operation operation;
        operation.Set(engine_, node, false);
        EXPECT_EQ(operation.Node, -1);
        EXPECT_EQ(engine_.CreateVariable(node, 0), nullptr);
    }
    Var<int> named(L"Length");
    EXPECT_STREQ(named.Name, L"Length");
    EXPECT_FALSE(named.AutoNamed);
    constexpr int grayDepthProperty = 145;
    int depthNode = 0;
    while (Engine::Tree[depthNode]->Kind() != ArgumentKind ||
           Engine::VarNode(depthNode)->PropertyId != grayDepthProperty)
        depthNode++;
    const int kept = Operator::GrayDepth;
    value.Value = 40;
    EXPECT_TRUE(engine_.SetProperty(&value, depthNode, image));
    EXPECT_EQ(Operator::GrayDepth, 16) << "shifts by it stay defined";
    Operator::GrayDepth = kept;
}

TEST_F(SequenceTest, AfterASwapInTheMiddleAllBehindItIsNew)
{
    AppendImage(100);
    Operation& middle = Append(L"Const + Image");
    ValueOf<int>(middle, 0) = 60;
    Operation& last = Append(L"Invert");
    engine_.Execute();
    ASSERT_EQ(Pixel(last, 1), 255 - 160);
    middle.Set(engine_, FindMethod(L"Image - Const"), true);
    engine_.FillOperation(1);
    for (Arg& argument : middle.Args)
        argument.Visible = true;
    const auto number = std::find_if(middle.Args.begin(), middle.Args.end(), [](const Arg& argument) {
        return !std::wcscmp(Engine::VarNode(argument.Node)->Identifier, L"Const");
    });
    ASSERT_NE(number, middle.Args.end());
    static_cast<Var<int>&>(*number->Variable).Value = 60;
    engine_.ChangeOperation(1);
    engine_.Execute();
    EXPECT_EQ(Status::Error().Code, NoError) << Status::AsciiError();
    EXPECT_EQ(Pixel(last, 1), 255 - 40);
    // The next run has nothing to do.
    last.Duration = -1;
    engine_.Execute();
    EXPECT_EQ(last.Duration, -1);
}

TEST_F(SequenceTest, TheSettingsOfTheProcessNeedNoObject)
{
    const int depthNode = [] {
        for (int i = 0; i < Engine::NumNodes; i++)
            if (!std::wcscmp(Engine::Tree[i]->Identifier, L"GrayDepth")) return i;
        return -1;
    }();
    ASSERT_GE(depthNode, 0);
    const int kept = Operator::GrayDepth;
    Var<int> value;
    value.Value = 12;
    EXPECT_TRUE(engine_.SetProperty(&value, depthNode, nullptr));
    EXPECT_EQ(Operator::GrayDepth, 12);
    value.Value = 0;
    EXPECT_TRUE(engine_.GetProperty(&value, depthNode, nullptr));
    EXPECT_EQ(value.Value, 12);
    EXPECT_FALSE(engine_.GetProperty(nullptr, depthNode, nullptr));
    Operator::GrayDepth = kept;
}
