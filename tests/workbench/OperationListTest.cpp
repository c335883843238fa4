#include "FakeWorkbench.h"

#include "foundation/Services.h"
#include "workbench/logic/ScriptExport.h"

#include <fstream>
#include <sstream>
#include <utility>

namespace TeskPlus {

using OperationListTest = WorkbenchTest;

namespace {

std::vector<std::wstring> TextsOf(const std::vector<ListLine>& lines)
{
    std::vector<std::wstring> texts;
    for (const ListLine& line : lines)
        texts.push_back(line.Text);
    return texts;
}

} // namespace

TEST_F(OperationListTest, LinesNameVariablesAndProperties)
{
    Read("a.png");
    ASSERT_EQ(list_.Lines().size(), 1u);
    const ListLine& entry = list_.Lines()[0];
    EXPECT_TRUE(entry.Text.starts_with(L"Read  from File (Image.Read) | "));
    EXPECT_TRUE(entry.IsExpanded);
    EXPECT_EQ(TextsOf(entry.Lines),
              (std::vector<std::wstring>{L"Image0 (Image)", L"PathName0 (char*)", L"Type0 (PixelTypes)"}));
    ASSERT_EQ(entry.Lines[0].Lines.size(), 8u);
    EXPECT_EQ(entry.Lines[0].Lines[0].Text, L"X (int)");
    EXPECT_EQ(entry.Lines[0].ImageIndex, lineImage::CanBePinned);
}

TEST_F(OperationListTest, TheTimeReplacesTheFormerOne)
{
    Read("a.png");
    for (const auto& [microseconds, time] :
         {std::pair{1234, L" | 1.234 ms"}, {5, L" | 0.005 ms"}, {12345000, L" | 12345 ms"}}) {
        engine_.Operations[0]->Duration = microseconds;
        list_.UpdateTimings();
        EXPECT_EQ(list_.Lines()[0].Text, std::wstring(L"Read  from File (Image.Read)") + time);
    }
}

TEST_F(OperationListTest, AnEntryThatIsLeftKeepsItsPinnedLinesOnly)
{
    Read("a.png");
    list_.NodeMouseClick({0, 0, 2});
    EXPECT_EQ(list_.LineAt({0, 0, 2})->ImageIndex, lineImage::Pinned);
    list_.NodeMouseClick({0, 2});
    EXPECT_EQ(handler_.Parameters().Rows().size(), 2u);
    Add(L"Operator", L"Invert");
    // The line of the image stays for its pinned property; the pinned value stays; the path goes.
    EXPECT_EQ(TextsOf(list_.Lines()[0].Lines), (std::vector<std::wstring>{L"Image0 (Image)", L"Type0 (PixelTypes)"}));
    EXPECT_EQ(TextsOf(list_.Lines()[0].Lines[0].Lines), (std::vector<std::wstring>{L"Width (int)"}));
    // On an entry that is not selected, clicks and expanders do nothing.
    list_.NodeMouseClick({0, 0, 0});
    EXPECT_EQ(handler_.Parameters().Rows().size(), 2u);
    EXPECT_FALSE(list_.BeforeExpand({0, 0}));
    EXPECT_FALSE(list_.BeforeCollapse({0, 0}));
    list_.NodeMouseClick({0});
    EXPECT_EQ(handler_.CurrentOperationId(), 0);
    EXPECT_EQ(list_.Lines()[0].Lines.size(), 3u) << "the lines are brought back";
    EXPECT_EQ(list_.Lines()[0].Lines[0].Lines.size(), 8u);
    list_.NodeMouseClick({0, 0, 2});
    list_.NodeMouseClick({0, 2});
    EXPECT_TRUE(handler_.Parameters().Rows().empty());
    EXPECT_FALSE(views_.areParametersShown);
}

TEST_F(OperationListTest, ACollapseStopsAtThePinnedLinesFirst)
{
    Read("a.png");
    EXPECT_TRUE(list_.BeforeCollapse({0, 0})) << "nothing is pinned";
    list_.BeforeExpand({0, 0});
    list_.NodeMouseClick({0, 0, 2});
    EXPECT_FALSE(list_.BeforeCollapse({0, 0}));
    EXPECT_EQ(list_.LineAt({0, 0})->Lines.size(), 1u);
    EXPECT_TRUE(list_.LineAt({0, 0})->Checked);
    EXPECT_FALSE(list_.BeforeCollapse({0, 0}));
    EXPECT_EQ(list_.LineAt({0, 0})->Lines.size(), 8u);
}

TEST_F(OperationListTest, PinningAndUnpinningAWindow)
{
    Read("a.png");
    Add(L"Operator", L"Invert");
    list_.NodeMouseClick({1, 0});
    EXPECT_EQ(list_.LineAt({1, 0})->ImageIndex, lineImage::Pinned);
    EXPECT_EQ(Window(L"Image0").ControllerState(), controllerState::PinnedAndShown);
    list_.NodeMouseClick({1, 0});
    EXPECT_EQ(list_.LineAt({1, 0})->ImageIndex, lineImage::CanBePinned);
    EXPECT_EQ(Window(L"Image0").ControllerState(), controllerState::Shown);
    EXPECT_TRUE(ArgOf(1, 0).Visible);
    EXPECT_EQ(TextsOf(list_.Lines()[1].Lines), (std::vector<std::wstring>{L"Image0 (Image)", L"Inverted0 (Image)"}));
}

TEST_F(OperationListTest, AGlanceShowsAHiddenWindowForTheMoment)
{
    Read("a.png");
    list_.NodeMouseClick({0, 1});
    Add(L"Operator", L"Invert");
    list_.NodeMouseClick({0});
    EXPECT_FALSE(Window(L"Inverted0").isShown);
    list_.NodeMouseClick({1});
    list_.NodeMouseClick({1, 1});
    list_.NodeMouseClick({0});
    ASSERT_EQ(list_.Lines()[1].Lines.size(), 1u);
    Window(L"Inverted0").SetControllerState(controllerState::Hidden);
    Window(L"Inverted0").isShown = false;
    list_.NodeMouseHover({1, 0});
    EXPECT_TRUE(Window(L"Inverted0").isShown);
    EXPECT_EQ(Window(L"Inverted0").ControllerState(), controllerState::Glanced);
    list_.NodeMouseHover({});
    EXPECT_FALSE(Window(L"Inverted0").isShown);
    EXPECT_EQ(Window(L"Inverted0").ControllerState(), controllerState::Hidden);
}

TEST_F(OperationListTest, MenusByLevel)
{
    Read("a.png");
    Add(L"Operator", L"Invert");
    const auto texts = [&](const ListPath& path) {
        std::vector<std::wstring> entries;
        for (const ListMenuEntry& entry : list_.ContextMenu(path))
            entries.push_back(entry.Text + (entry.Enabled ? L"" : L" (disabled)"));
        return entries;
    };
    using Texts = std::vector<std::wstring>;
    EXPECT_EQ(texts({}), (Texts{L"Copy Script to Clipboard", L"Export Script to File"}));
    EXPECT_EQ(texts({0}), (Texts{L"&Copy to Clipboard", L"&Delete (disabled)", L"&Delete to End"}));
    EXPECT_EQ(texts({1}), (Texts{L"&Copy to Clipboard", L"&Delete"}));
    EXPECT_EQ(texts({1, 0}), (Texts{L"&Rename"}));
    EXPECT_EQ(texts({0, 0, 0}), (Texts{}));

    views_.Answers = {1, 0};
    list_.Run(listAction::DeleteToEnd, {0});
    EXPECT_EQ(engine_.NumOperations(), 2);
    list_.Run(listAction::DeleteToEnd, {0});
    EXPECT_EQ(engine_.NumOperations(), 0);
    EXPECT_EQ(views_.messages.back(), L"Do you want to delete this operation and the following one(s)?");
}

TEST_F(OperationListTest, ANameIsALetterThenLettersAndDigitsAndIsTakenOnce)
{
    Read("a.png");
    Add(L"Operator", L"Invert");
    int edits = 0;
    list_.StartLabelEdit = [&](const ListPath&) { edits++; };
    const auto rename = [&](const wchar_t* name, std::deque<int> answers) {
        views_.messages.clear();
        views_.Answers = std::move(answers);
        list_.RenameItem({1, 0});
        const std::wstring text = name ? name : L"";
        list_.AfterLabelEdit(name ? &text : nullptr);
    };
    const std::wstring invalid = L"Invalid variable name, must be a letter followed by letters/digits";
    const std::wstring taken = L"This variable name is already in use. \nPress Change to try another. \n"
                               L"Press Auto to add a suitable suffix.";
    rename(nullptr, {});
    EXPECT_FALSE(list_.IsRenaming());
    EXPECT_TRUE(views_.messages.empty());
    for (const wchar_t* name : {L"", L"1st", L"a b", L"a_b", L"ä"}) {
        edits = 0;
        rename(name, {});
        EXPECT_EQ(views_.messages, std::vector<std::wstring>{invalid}) << Narrow(name);
        EXPECT_EQ(edits, 2) << "editing goes on";
        list_.AfterLabelEdit(nullptr);
    }
    rename(L"Image0", {2});
    EXPECT_EQ(views_.messages, std::vector<std::wstring>{taken}) << "also by itself";
    EXPECT_EQ(list_.LineAt({1, 0})->Text, L"Image0 (Image)");
    rename(L"Inverted0", {1});
    EXPECT_EQ(NameOf(1, 0), L"Inverted00");
    rename(L"image", {});
    EXPECT_TRUE(views_.messages.empty());
    EXPECT_EQ(NameOf(0, 0), L"image") << "the same data everywhere";
    EXPECT_EQ(NameOf(1, 0), L"image");
    EXPECT_FALSE(ArgOf(0, 0).Variable->AutoNamed);
    EXPECT_NE(handler_.GetController(L"image"), nullptr);
    EXPECT_EQ(list_.LineAt({1, 0})->Text, L"image (Image)");
    EXPECT_EQ(handler_.CurrentCommandPanel()->Rows()[0].Selector->Items()[0]->NameText, L"image");
    edits = 0;
    rename(L"Inverted0", {0});
    EXPECT_EQ(edits, 2);
    EXPECT_TRUE(list_.IsRenaming());
    list_.NodeMouseClick({0});
    EXPECT_EQ(handler_.CurrentOperationId(), 1) << "clicks wait for the end of the edit";
}

TEST_F(OperationListTest, ARenamedResultKeepsItsNameInASwap)
{
    Read("a.png");
    Add(L"Operator", L"Const + Image");
    list_.RenameItem({1, 2});
    const std::wstring name = L"Brighter";
    list_.AfterLabelEdit(&name);
    Swap(L"Image - Const");
    EXPECT_EQ(NameOf(1, 2), L"Brighter");
    EXPECT_NE(handler_.GetController(L"Brighter"), nullptr);
}

TEST_F(OperationListTest, AnEditThatIsOvertakenByAChangeTouchesNoOtherLine)
{
    Read("a.png");
    Add(L"Operator", L"Const + Image");
    list_.RenameItem({1, 2});
    Swap(L"Image - Const");
    list_.AfterLabelEdit(nullptr);
    EXPECT_FALSE(list_.IsRenaming());
    EXPECT_EQ(list_.LineAt({1, 2})->Text, L"Subtracted0 (Image)") << "the former name does not come back";

    list_.NodeMouseClick({1, 2});
    list_.RenameItem({1, 0});
    Add(L"Operator", L"Invert");
    ASSERT_EQ(list_.Lines()[1].Lines.size(), 1u) << "the line of the edit has gone";
    const std::wstring name = L"Other";
    list_.AfterLabelEdit(&name);
    EXPECT_FALSE(list_.IsRenaming());
    EXPECT_EQ(NameOf(1, 2), L"Subtracted0");
    EXPECT_EQ(list_.LineAt({1, 0})->Text, L"Subtracted0 (Image)");
}

TEST_F(OperationListTest, ScriptsGoToAFileOrToTheClipboard)
{
    Read("a.png");
    Add(L"Operator", L"Invert");
    EXPECT_FALSE(ExportToFile(engine_, views_, 0)) << "the dialog was cancelled";
    views_.Paths.push_back(Path("p.cs"));
    ASSERT_TRUE(ExportToFile(engine_, views_, 1));
    std::ifstream file(Path("p.cs"));
    std::ostringstream text;
    text << file.rdbuf();
    EXPECT_EQ(text.str(), Narrow(ScriptText(engine_, 1).c_str()));
    EXPECT_STREQ(ScriptFilter(2), L"Visual Basic Files (*.vb)|*.vb");
    EXPECT_STREQ(ScriptFilter(7), ScriptFilter(0));

    list_.CopyScript = [&](int which) { CopyToClipboard(engine_, 0, which); };
    list_.Run(listAction::CopyToClipboard, {1});
    std::vector<std::uint8_t> block;
    ASSERT_TRUE(Services::Clipboard().Get(IClipboard::Text, block));
    EXPECT_STREQ(reinterpret_cast<const char*>(block.data()),
                 "\n\t// Invert (Operator)\n\tOperator::Invert(Image0, Inverted0);\n");
}

} // namespace TeskPlus
