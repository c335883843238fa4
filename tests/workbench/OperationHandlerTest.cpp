#include "FakeWorkbench.h"

namespace TeskPlus {

using OperationHandlerTest = WorkbenchTest;
using Names = std::vector<std::wstring>;

TEST_F(OperationHandlerTest, AReadInvertAndWriteLeaveTheInvertedFile)
{
    ASSERT_TRUE(Read("a.png"));
    ASSERT_TRUE(Add(L"Operator", L"Invert"));
    views_.Paths.push_back(Path("out.png"));
    ASSERT_TRUE(Add(L"Image", L"Write  to File"));
    EXPECT_EQ(views_.StatusText, L"");
    Image written;
    written.Read(Path("out.png").c_str());
    EXPECT_EQ(written.PixelGray(0, 0), 245);
    EXPECT_TRUE(views_.isFormShown);
    EXPECT_EQ(handler_.CurrentOperationId(), 2);
}

TEST_F(OperationHandlerTest, AnOperationTakesTheNewestImage)
{
    Read("a.png");
    Read("b.png");
    Add(L"Operator", L"Invert");
    EXPECT_EQ(NameOf(2, 0), L"Image1");
    EXPECT_EQ(PixelOf(2, 1), 235);
}

TEST_F(OperationHandlerTest, WhatCannotBeFinishedIsTakenBack)
{
    // With nothing to work on, without a path, and with a method that is not there.
    EXPECT_FALSE(Add(L"Operator", L"Invert"));
    EXPECT_EQ(views_.messages, (Names{L"Cannot find a suitable Image input variable, please create it"}));
    EXPECT_EQ(handler_.CurrentMenuNode(), -2);
    EXPECT_FALSE(Add(L"Image", L"Read  from File"));
    EXPECT_EQ(views_.messages.size(), 1u) << "a cancelled dialog needs no message";
    EXPECT_EQ(engine_.NumOperations(), 0);
    EXPECT_EQ(handler_.CurrentOperationId(), -1);
    EXPECT_FALSE(views_.isFormShown);
    EXPECT_TRUE(list_.Lines().empty());
    EXPECT_TRUE(handler_.Controllers().empty());

    Read("a.png");
    const int pending = FindMethod(L"Morpho", L"Basins as Blobs");
    if (Engine::IsPending(pending)) {
        EXPECT_FALSE(handler_.MenuItemClicked(ItemOfMethod(pending)));
        EXPECT_EQ(views_.messages.back(), L"This feature is not integrated yet. Thank you for your understanding.");
        EXPECT_EQ(engine_.NumOperations(), 1);
        EXPECT_EQ(handler_.CurrentOperationId(), 0) << "the one before it is selected";
        EXPECT_TRUE(Window(L"Image0").isShown);
    }
    factory_.Register(CodeOf(L"int"), nullptr);
    EXPECT_FALSE(Add(L"Operator", L"Const + Image"));
    EXPECT_EQ(engine_.NumOperations(), 1);
    EXPECT_EQ(FakeObject::Alive, 1);
    EXPECT_EQ(list_.Lines().size(), 1u);
}

TEST_F(OperationHandlerTest, WhatCannotBeFinishedBeforeAReaderOfItsDestinationIsTakenBack)
{
    Read("a.png");
    Read("b.png");
    Add(L"Operator", L"Image + Image");
    handler_.SelectOperation(1, -1, -1);
    views_.Answers = {0};
    EXPECT_FALSE(Add(L"Geometry", L"By a Grid"));
    EXPECT_EQ(engine_.NumOperations(), 3);
    EXPECT_EQ(list_.Lines().size(), 3u);
    EXPECT_EQ(handler_.CurrentOperationId(), 1);
    EXPECT_EQ(NameOf(2, 0), L"Image1");
    EXPECT_EQ(NameOf(2, 1), L"Image0");
    EXPECT_EQ(PixelOf(2, 2), 30);
}

TEST_F(OperationHandlerTest, AnOperationInTheMiddleBindsToWhatStandsBeforeIt)
{
    Read("a.png");
    Add(L"Operator", L"Invert");
    Select(0);
    views_.Answers = {0};
    ASSERT_TRUE(Add(L"Operator", L"Const + Image"));
    EXPECT_EQ(Labels(), (Names{L"Read  from File", L"Const + Image", L"Invert"}));
    EXPECT_EQ(NameOf(1, 1), L"Image0");
    EXPECT_EQ(NameOf(2, 0), L"Image0") << "the later one keeps what it has";
    Select(0);
    views_.Answers = {1};
    ASSERT_TRUE(Add(L"Operator", L"Invert"));
    EXPECT_EQ(Labels().back(), L"Invert");
    EXPECT_EQ(handler_.CurrentOperationId(), 3);
    EXPECT_EQ(NameOf(3, 0), L"Inverted0");
    ASSERT_EQ(list_.Lines().size(), 4u);
    EXPECT_TRUE(list_.Lines()[1].Text.starts_with(L"Const + Image (Operator.Add) | "));
}

TEST_F(OperationHandlerTest, DeletingGoesToTheOneBeforeAndRefusesWhatIsStillRead)
{
    Read("a.png");
    Add(L"Operator", L"Invert");
    EXPECT_FALSE(handler_.CheckOperationDeletion(0));
    handler_.DeleteOperation(0, false);
    EXPECT_EQ(engine_.NumOperations(), 2);
    handler_.DeleteButton_Click();
    EXPECT_TRUE(views_.messages.empty()) << "a new operation goes without a question";
    EXPECT_EQ(handler_.CurrentOperationId(), 0);
    EXPECT_TRUE(Window(L"Image0").isShown);
    EXPECT_EQ(Window(L"Image0").CurrentOperation(), engine_.Operations[0].get());
    views_.Answers = {1};
    handler_.DeleteButton_Click();
    EXPECT_EQ(engine_.NumOperations(), 1);
    views_.Answers = {0};
    handler_.DeleteButton_Click();
    EXPECT_EQ(views_.messages.back(), L"Do you want to delete the current operation?");
    EXPECT_EQ(engine_.NumOperations(), 0);
    EXPECT_EQ(handler_.CurrentOperationId(), -1);
    EXPECT_FALSE(views_.isFormShown);
    EXPECT_EQ(FakeObject::Alive, 0);
    EXPECT_EQ(engine_.NumVariables(), 0);
}

TEST_F(OperationHandlerTest, DeletingToTheEndMeetsNoRefusal)
{
    Read("a.png");
    for (int i = 0; i < 4; i++)
        Add(L"Operator", L"Invert");
    Select(3);
    handler_.DeleteToEnd(1);
    EXPECT_EQ(engine_.NumOperations(), 1);
    EXPECT_EQ(handler_.CurrentOperationId(), 0);
    EXPECT_EQ(list_.Lines().size(), 1u);
    EXPECT_EQ(handler_.Controllers().size(), 3u) << "image, path and type of the read";
}

TEST_F(OperationHandlerTest, ASwapKeepsTheBindingsAndTheEntryAndRenamesTheResult)
{
    Read("a.png");
    Add(L"Operator", L"Const + Image");
    dynamic_cast<FakeInt&>(*handler_.GetController(ArgOf(1, 0).Variable)).Move(7);
    EXPECT_EQ(PixelOf(1, 2), 17);
    Add(L"Operator", L"Invert");
    Select(1);
    const AnyVariable* source = ArgOf(1, 1).Variable;
    Swap(L"Image - Const");
    EXPECT_EQ(ArgOf(1, 0).Variable, source);
    EXPECT_EQ(PixelOf(1, 2), 3);
    EXPECT_EQ(NameOf(1, 2), L"Subtracted0");
    EXPECT_EQ(NameOf(2, 0), L"Subtracted0") << "shadows bear their source's name";
    EXPECT_NE(handler_.GetController(L"Subtracted0"), nullptr);
    EXPECT_EQ(handler_.GetController(L"Added0"), nullptr);
    ASSERT_EQ(list_.Lines().size(), 3u);
    EXPECT_TRUE(list_.Lines()[1].Text.starts_with(L"Image - Const (Operator.Subtract) | "));
    EXPECT_EQ(list_.Lines()[1].ImageIndex, lineImage::CurrentOperation);
    EXPECT_EQ(handler_.CurrentMenuNode(), handler_.ItemOf(1).ChoiceNode);
}

TEST_F(OperationHandlerTest, ASwapWithoutItsInputIsTakenBack)
{
    Read("a.png");
    Add(L"Operator", L"Const + Image");
    Operation& operation = *engine_.Operations[1];
    std::vector<AnyVariable*> before;
    for (const Arg& argument : operation.Args)
        before.push_back(argument.Variable);
    const int node = operation.Node, variables = engine_.NumVariables();
    Swap(L"Image + Image");
    EXPECT_EQ(views_.messages, (Names{L"Cannot find a suitable Image input variable, please create it"}));
    EXPECT_EQ(operation.Node, node);
    EXPECT_EQ(views_.checkedMethod, node);
    EXPECT_EQ(handler_.CurrentMenuNode(), -2);
    ASSERT_EQ(operation.Args.size(), before.size());
    for (std::size_t k = 0; k < before.size(); k++)
        EXPECT_EQ(operation.Args[k].Variable, before[k]) << k;
    EXPECT_EQ(operation.NumHeld(), 0);
    EXPECT_TRUE(Window(L"Added0").isShown);
    EXPECT_TRUE(ArgOf(1, 2).Visible);
    // The operation goes on as if nothing had been.
    dynamic_cast<FakeInt&>(*handler_.GetController(ArgOf(1, 0).Variable)).Move(5);
    EXPECT_EQ(PixelOf(1, 2), 15);
    Select(0);
    EXPECT_EQ(engine_.NumVariables(), variables);
}

TEST_F(OperationHandlerTest, ASwapTakesASecondInputThatIsNotTheFirst)
{
    Read("a.png");
    Read("b.png");
    Add(L"Operator", L"Const + Image");
    Select(1);
    Select(2);
    Swap(L"Image + Image");
    EXPECT_EQ((std::set<std::wstring>{NameOf(2, 0), NameOf(2, 1)}), (std::set<std::wstring>{L"Image0", L"Image1"}));
    EXPECT_EQ(PixelOf(2, 2), 30);
}

TEST_F(OperationHandlerTest, ASwapToAMethodThatIsNotThereGoesBack)
{
    const int pending = FindMethod(L"Morpho", L"Basins as Blobs");
    if (!Engine::IsPending(pending)) GTEST_SKIP() << "every method of the group is there";
    Read("a.png");
    ASSERT_TRUE(Add(L"Morpho", L"Watershed Lines"));
    handler_.SubstituteOperation(ItemOfMethod(pending));
    EXPECT_EQ(views_.messages,
              (Names{L"This Tesk feature is not integrated in Tesk+ yet. Thank you for your understanding."}));
    EXPECT_EQ(views_.checkedMethod, engine_.Operations[1]->Node);
    EXPECT_EQ(Labels().back(), L"Watershed Lines");
    EXPECT_EQ(NameOf(1, 1), L"Image0");
}

TEST_F(OperationHandlerTest, AnotherTabKeepsDeletesOrStays)
{
    Read("a.png");
    Add(L"Operator", L"Invert");
    const auto item = ItemOfMethod(FindMethod(L"Operator", L"Const + Image"));
    views_.Answers = {2};
    EXPECT_FALSE(handler_.ChangeTab(item));
    EXPECT_EQ(engine_.NumOperations(), 2);
    EXPECT_EQ(handler_.CurrentOperationId(), 1);
    views_.Answers = {0};
    EXPECT_TRUE(handler_.ChangeTab(item));
    EXPECT_EQ(Labels(), (Names{L"Read  from File", L"Invert", L"Const + Image"}));
    views_.Answers = {1};
    EXPECT_TRUE(handler_.ChangeTab(ItemOfMethod(FindMethod(L"Operator", L"Invert"))));
    EXPECT_EQ(Labels(), (Names{L"Read  from File", L"Invert", L"Invert"}));
    EXPECT_EQ(views_.messages.front(), L"Press Keep to retain the current operation or Delete to discard it\n"
                                       L"before moving to other tab");
    // What a later operation reads cannot be thrown away from its tab.
    Select(1);
    views_.Answers = {1};
    EXPECT_FALSE(handler_.ChangeTab(item));
    EXPECT_EQ(handler_.CurrentOperationId(), 1);
    EXPECT_EQ(engine_.NumOperations(), 3);
}

TEST_F(OperationHandlerTest, AFailedRunTellsWhyStopsThereAndIsTriedAgain)
{
    Read("a.png");
    Add(L"Operator", L"Invert");
    Add(L"Operator", L"Const + Image");
    auto& path = static_cast<Var<const char*>&>(*ArgOf(0, 1).Variable);
    SetText(path, Path("missing.png"));
    handler_.DoRun(engine_.Operations[0].get(), &path, true, false, false, false);
    EXPECT_NE(views_.StatusText, L"");
    EXPECT_EQ(PixelOf(1, 1), 245) << "what stands behind keeps its result";
    Save("missing.png", 30);
    handler_.DoRun(nullptr, nullptr, true, false, false, false);
    EXPECT_EQ(views_.StatusText, L"");
    EXPECT_EQ(PixelOf(1, 1), 225);
}

TEST_F(OperationHandlerTest, ARunNeedsTheOperationOfItsVariable)
{
    Read("a.png");
    const int clock = engine_.Clock;
    handler_.DoRun(nullptr, ArgOf(0, 1).Variable, true, false, false, false);
    EXPECT_EQ(engine_.Clock, clock);
}

TEST_F(OperationHandlerTest, OneWindowServesAllWhoUseTheImage)
{
    Read("a.png");
    Add(L"Operator", L"Invert");
    EXPECT_EQ(FakeObject::Alive, 2);
    EXPECT_TRUE(Window(L"Image0").isShown);
    EXPECT_FALSE(ArgOf(0, 0).Visible);
    EXPECT_TRUE(ArgOf(1, 0).Visible);
    EXPECT_TRUE(Window(L"Image0").windowPossible);
    EXPECT_FALSE(Window(L"Inverted0").windowPossible) << "a result takes no window";
    Add(L"Operator", L"Const + Image");
    EXPECT_FALSE(Window(L"Image0").isShown) << "the third does not use it";
    handler_.DeleteOperation(false);
    EXPECT_TRUE(Window(L"Image0").isShown);
    EXPECT_EQ(views_.windowPlaces.size(), 3u) << "a window is placed once";
}

TEST_F(OperationHandlerTest, APinnedWindowStaysWhenItsOperationIsLeft)
{
    Read("a.png");
    Add(L"Operator", L"Invert");
    Add(L"Operator", L"Invert");
    Select(0);
    list_.NodeMouseClick({0, 0});
    EXPECT_EQ(Window(L"Image0").ControllerState(), controllerState::PinnedAndShown);
    Select(2);
    EXPECT_EQ(Window(L"Image0").ControllerState(), controllerState::Pinned);
    EXPECT_TRUE(Window(L"Image0").isShown);
    // It stays with the operation that pinned it, also where another one shows the variable.
    Select(1);
    EXPECT_EQ(Window(L"Image0").ControllerState(), controllerState::PinnedAndShown);
    EXPECT_EQ(Window(L"Image0").CurrentOperation(), engine_.Operations[0].get());
    EXPECT_FALSE(ArgOf(1, 0).Visible);
    EXPECT_TRUE(ArgOf(0, 0).Visible);
}

TEST_F(OperationHandlerTest, ASelectorRebindsItsInput)
{
    Read("a.png");
    Read("b.png");
    Add(L"Operator", L"Invert");
    VariableSelector& selector = *handler_.CurrentCommandPanel()->Rows()[0].Selector;
    ASSERT_EQ(selector.Items().size(), 2u);
    EXPECT_EQ(selector.Items()[0]->NameText, L"Image1") << "newest first";
    EXPECT_EQ(selector.SelectedIndex(), 0);
    const int clock = engine_.Clock;
    selector.Choose(0);
    selector.Click();
    EXPECT_EQ(engine_.Clock, clock) << "what stands already runs nothing";
    selector.Choose(1);
    EXPECT_EQ(NameOf(2, 0), L"Image0");
    EXPECT_EQ(PixelOf(2, 1), 245);
    EXPECT_TRUE(Window(L"Image0").isShown);
    EXPECT_FALSE(Window(L"Image1").isShown);
    EXPECT_TRUE(handler_.CheckOperationDeletion(1));
    EXPECT_FALSE(handler_.CheckOperationDeletion(0));
    // A result may also go where an operation at its own place has put one, and is computed there.
    VariableSelector& result = *handler_.CurrentCommandPanel()->Rows()[1].Selector;
    ASSERT_EQ(result.Items().size(), 3u);
    for (int i = 0; i < 3; i++)
        if (result.Items()[static_cast<std::size_t>(i)]->NameText == L"Image1") {
            result.Choose(i);
            break;
        }
    EXPECT_EQ(NameOf(2, 1), L"Image1");
    EXPECT_EQ(PixelOf(2, 1), 245);
}

TEST_F(OperationHandlerTest, ARebindingTakesThePinnedPropertiesOfTheFormerInputAlong)
{
    Read("a.png");
    Read("b.png");
    Add(L"Operator", L"Invert");
    IController& former = *handler_.GetController(L"Image1");
    int width = -1;
    for (const int page : dynamic_cast<FakeObject&>(former).PageNodes())
        for (int child = Engine::Tree[page]->FirstChild; child >= 0; child = Engine::Tree[child]->NextSibling)
            if (!std::wcscmp(Engine::Tree[child]->Label, L"Width")) width = child;
    ASSERT_GE(width, 0);
    ASSERT_TRUE(handler_.AddControllerToParametersPanel(*engine_.Operations[2], former, width, true));
    ASSERT_EQ(handler_.Parameters().Rows().size(), 1u);
    handler_.CurrentCommandPanel()->Rows()[0].Selector->Choose(1);
    EXPECT_TRUE(handler_.Parameters().Rows().empty()) << "nobody shows that image here any more";
    Select(0);
    Select(2);
    EXPECT_EQ(PixelOf(2, 1), 245);
}

TEST_F(OperationHandlerTest, WhatAFailedOperationLeavesBehindIsNotOnTheScreen)
{
    Read("a.png");
    Read("b.png");
    Add(L"Operator", L"Invert");
    Select(0);
    views_.Answers = {1}; // at the end
    factory_.Register(CodeOf(L"GrayClipping"), nullptr);
    EXPECT_FALSE(Add(L"Operator", L"Image + Image"));
    EXPECT_EQ(handler_.CurrentOperationId(), 2);
    EXPECT_FALSE(Window(L"Image0").isShown) << "the operation that is selected now does not use it";
    EXPECT_TRUE(Window(L"Image1").isShown);
}

TEST_F(OperationHandlerTest, ASwapKeepsWhatIsReadFromBeingDeleted)
{
    Read("a.png");
    Add(L"Operator", L"Invert");
    Add(L"Operator", L"Const + Image");
    Select(1);
    EXPECT_FALSE(views_.isDeleteEnabled);
    Swap(L"Swap Red and Blue");
    EXPECT_FALSE(views_.isDeleteEnabled) << "the last operation still reads the result";
}

TEST_F(OperationHandlerTest, AMissingInputHasARedSelectorWithoutEffect)
{
    const int invert = FindMethod(L"Operator", L"Invert");
    VariableSelector selector(engine_, nullptr, Engine::Tree[invert]->FirstChild, 0, 0,
                              [](int, int, AnyVariable*, bool) { FAIL(); });
    EXPECT_TRUE(selector.IsMissing());
    EXPECT_TRUE(selector.Items().empty());
    selector.Choose(0);
    selector.Click();
}

TEST_F(OperationHandlerTest, ADeletedOperationLeavesNothingBehind)
{
    Read("a.png");
    Add(L"Operator", L"Invert");
    const int variables = engine_.NumVariables();
    for (int i = 0; i < 20; i++) {
        Add(L"Operator", L"Const + Image");
        Swap(L"Image - Const");
        handler_.DeleteOperation(false);
    }
    EXPECT_EQ(engine_.NumVariables(), variables);
    EXPECT_EQ(FakeObject::Alive, 2);
    EXPECT_EQ(PixelOf(1, 1), 245);
}

TEST(WindowSpiral, GoesRoundTheCornersAndFurtherIn)
{
    WindowSpiral spiral;
    const WindowSize area{1000, 800}, window{300, 200};
    const WindowPoint first[] = {{15, 15}, {685, 15}, {685, 585}, {15, 585}, {38, 38}, {662, 38}};
    for (const WindowPoint& place : first)
        EXPECT_EQ(spiral.Next(area, window, false), place);
    for (int i = 6; i < 36; i++)
        spiral.Next(area, window, false);
    EXPECT_EQ(spiral.Next(area, window, false), first[0]) << "after the eighth turn inwards";
    // The help keeps its corner.
    WindowSpiral beside;
    const WindowPoint others[] = {{685, 15}, {685, 585}, {15, 585}, {662, 38}};
    for (const WindowPoint& place : others)
        EXPECT_EQ(beside.Next(area, window, true), place);
}

TEST(WindowSpiral, PassesThePlacesThatAreTaken)
{
    const WindowSize area{1000, 800}, window{300, 200};
    // A picture stands in the second corner, so that the third is the first free one; the round goes on as if not.
    const WindowRect picture{685, 15, 300, 200};
    WindowSpiral spiral;
    EXPECT_EQ(spiral.Next(area, window, true, {picture}), (WindowPoint{685, 585}));
    EXPECT_EQ(spiral.Next(area, window, true), (WindowPoint{685, 585}));
    // All corners are taken and the middle is not: beside another window.
    const std::vector<WindowRect> corners = {
        {0, 0, 400, 300}, {600, 0, 400, 300}, {600, 500, 400, 300}, {0, 500, 400, 300}};
    const WindowPoint between = WindowSpiral().Next(area, {180, 200}, false, corners);
    EXPECT_EQ(Covered({between.X, between.Y, 180, 200}, corners), 0);
    // Nothing is free: where least is covered, and controls weigh more than pictures.
    const std::vector<WindowRect> halves = {{0, 0, 500, 800, 1000}, {500, 0, 500, 800, 1}};
    EXPECT_EQ(WindowSpiral().Next(area, window, false, halves), (WindowPoint{685, 15}));
    EXPECT_EQ(Covered({400, 100, 200, 10}, halves), 100 * 10 * 1000 + 100 * 10);
    // A window larger than the work area has no place but the corner.
    EXPECT_EQ(FreePlace(area, {1200, 900}, {{15, 15}}, halves), (WindowPoint{15, 15}));
}

TEST_F(OperationHandlerTest, PinnedValuesRunWhileAnotherOperationIsSelected)
{
    Read("a.png");
    Add(L"Operator", L"Const + Image");
    Add(L"Operator", L"Invert");
    Select(1);
    list_.NodeMouseClick({1, 0});
    ASSERT_TRUE(views_.areParametersShown);
    Select(2);
    handler_.ParametersFormActivated();
    EXPECT_EQ(handler_.CurrentOperationId(), -1);
    auto& copy = dynamic_cast<FakeInt&>(*handler_.Parameters().Rows().at(0).Controller);
    EXPECT_TRUE(copy.IsExternalWidget());
    copy.Move(40);
    EXPECT_EQ(PixelOf(1, 2), 50);
    EXPECT_EQ(PixelOf(2, 1), 205);
    // The row goes with its operation, and the window with its last row.
    handler_.DeleteToEnd(1);
    EXPECT_FALSE(views_.areParametersShown);
}

} // namespace TeskPlus
