#include "engine/Engine.h"
#include "engine/TypeNames.h"
#include "foundation/Status.h"
#include "gauge/Comparator.h"
#include "gauge/EdgeArc.h"
#include "gauge/EdgeEllipse.h"
#include "gauge/EdgeLine.h"
#include "gauge/EdgePoint.h"
#include "gauge/EdgeRectangle.h"
#include "gauge/SnakeGauge.h"
#include "image/Geometry.h"
#include "image/Operator.h"
#include "match/Locator.h"
#include "match/ShapeMatcher.h"
#include "measure/Path.h"
#include "measure/Profile.h"
#include "measure/Region.h"
#include "read/CharReader.h"
#include "read/Code1DReader.h"
#include "read/Code2DReader.h"

#include <gtest/gtest.h>

#include <cwchar>
#include <filesystem>
#include <string>
#include <unistd.h>
#include <utility>

using namespace Tesk;
namespace fs = std::filesystem;

namespace {

constexpr int readNode = 87, writeNode = 91, invertNode = 203;

class EngineTest : public ::testing::Test
{
protected:
    void SetUp() override
    {
        Status::ErrorBehavior(IgnoreIt);
        Status::Shallow = true;
        Engine::Trace = nullptr;
        folder_ = fs::temp_directory_path() / ("tesk_engine_" + std::to_string(getpid()));
        fs::create_directories(folder_);
        Save("a.png", 10);
        Save("b.png", 20);
    }
    void TearDown() override
    {
        Status::Shallow = false;
        fs::remove_all(folder_);
    }

    std::string Path(const std::string& name) const { return (folder_ / name).string(); }

    void Save(const std::string& name, int value, int width = 8, int height = 6) const
    {
        Image image;
        image.Set(width, height, Gray);
        Operator::Copy(value, image);
        image.Write(Path(name).c_str());
    }

    int Load(const std::string& name) const
    {
        Image image;
        image.Read(Path(name).c_str());
        return Status::Error().Code == NoError ? image.PixelGray(0, 0) : -1;
    }

    Operation& Append(int node, const std::string& path = {})
    {
        auto made = std::make_unique<Operation>();
        engine_.UnreserveVariables();
        made->Set(engine_, node, false);
        Operation& operation = engine_.InsertOperation(std::move(made));
        missing_ = engine_.FillOperation(engine_.NumOperations() - 1);
        if (!path.empty()) SetText(PathOf(operation), Path(path));
        return operation;
    }

    static Var<const char*>& PathOf(Operation& operation)
    {
        return static_cast<Var<const char*>&>(*operation.Args.at(1).Variable);
    }

    void ReadInvertWrite()
    {
        Append(readNode, "a.png");
        Append(invertNode);
        Append(writeNode, "out.png");
    }

    /// A trained locator, a matcher with a shape, a reader and a snake, as variables and as files.
    void PrepareMatchersAndReaders()
    {
        Image pattern;
        pattern.Set(16, 16, Gray);
        for (int i = 0; i < 256; i++)
            pattern.Row(i / 16)[i % 16] = static_cast<std::uint8_t>(i);
        Locator locator;
        locator.Train(pattern);
        locator.Write(Path("a.Locator").c_str());
        Tesk::Path square;
        for (int i = 0; i < 40; i++)
            square.Append(i < 10   ? i
                          : i < 20 ? 10
                          : i < 30 ? 30 - i
                                   : 0,
                          i < 10   ? 0
                          : i < 20 ? i - 10
                          : i < 30 ? 10
                                   : 40 - i);
        square.Closed = true;
        ShapeMatcher matcher;
        matcher.Train(square, 3);
        matcher.Write(Path("a.ShapeMatcher").c_str());
        SnakeGauge snake;
        snake.RectangleAppend({60, 18}, {40, 10});
        snake.Write(Path("a.SnakeGauge").c_str());
        Code1DReader().Write(Path("a.Code1DReader").c_str());
        Code2DReader().Write(Path("a.Code2DReader").c_str());
        for (const wchar_t* name : {L"Locator", L"ShapeMatcher", L"SnakeGauge", L"Code1DReader", L"Code2DReader"}) {
            Append(Engine::FindMethod(name, L"Read", nullptr), "a." + Narrow(name));
            for (Arg& each : engine_.Operations.back()->Args)
                each.Visible = true;
        }
    }

    fs::path folder_;
    Engine engine_;
    int missing_ = -1;
};

std::wstring NameOf(const Arg& argument)
{
    return argument.Variable ? argument.Variable->NameText : L"";
}

int FindMethod(const wchar_t* identifier, const wchar_t* label)
{
    return Engine::FindMethod(nullptr, identifier, label);
}

} // namespace

TEST_F(EngineTest, AMethodIsFoundInItsOwnClass)
{
    const int inOperator = Engine::FindMethod(L"Operator", L"Normalize", nullptr),
              inHistogram = Engine::FindMethod(L"Histogram", L"Normalize", nullptr);
    ASSERT_GE(inOperator, 0);
    ASSERT_GE(inHistogram, 0);
    EXPECT_NE(inOperator, inHistogram);
    EXPECT_EQ(Engine::FindMethod(L"Kernel", L"Normalize", L"Invert"), -1);
    EXPECT_EQ(Engine::FindMethod(L"Invert", nullptr, nullptr), -1) << "a method's name, not a class's";
}

TEST_F(EngineTest, ASequenceReadsInvertsAndWrites)
{
    ReadInvertWrite();
    EXPECT_EQ(NameOf(engine_.Operations[0]->Args[0]), L"Image0");
    EXPECT_EQ(NameOf(engine_.Operations[0]->Args[1]), L"PathName0");
    EXPECT_EQ(NameOf(engine_.Operations[1]->Args[0]), L"Image0");
    EXPECT_EQ(NameOf(engine_.Operations[1]->Args[1]), L"Inverted0");
    EXPECT_EQ(NameOf(engine_.Operations[2]->Args[0]), L"Inverted0");
    EXPECT_EQ(engine_.Operations[1]->Args[0].Variable->Source, engine_.Operations[0]->Args[0].Variable);
    engine_.Execute();
    EXPECT_EQ(Status::Error().Code, NoError) << Status::AsciiError();
    EXPECT_EQ(Load("out.png"), 245);
    SetText(PathOf(*engine_.Operations[0]), Path("b.png"));
    engine_.ChangeVariable(&PathOf(*engine_.Operations[0]));
    engine_.Execute();
    EXPECT_EQ(Load("out.png"), 235);
}

TEST_F(EngineTest, OnlyWhatIsOutOfDateAndVisibleRuns)
{
    Append(readNode, "a.png");
    Append(invertNode);
    engine_.Operations[1]->Args[1].Visible = true;
    engine_.Execute();
    const auto changed = [&](std::size_t operation, std::size_t argument) {
        return engine_.Operations[operation]->Args[argument].Variable->Changed;
    };
    EXPECT_TRUE(changed(1, 1));
    engine_.Execute();
    EXPECT_FALSE(changed(0, 0));
    EXPECT_FALSE(changed(1, 1));
    // Nothing on the screen depends on the change: it waits.
    engine_.Operations[1]->Args[1].Visible = false;
    SetText(PathOf(*engine_.Operations[0]), Path("b.png"));
    engine_.ChangeVariable(&PathOf(*engine_.Operations[0]));
    engine_.Execute();
    EXPECT_FALSE(changed(0, 0));
    engine_.Operations[1]->Args[1].Visible = true;
    engine_.Execute();
    EXPECT_TRUE(changed(0, 0));
    EXPECT_TRUE(changed(1, 1));
    EXPECT_EQ(static_cast<Var<Image>*>(engine_.Operations[1]->Args[1].Variable)->Value.PixelGray(0, 0), 235);
}

TEST_F(EngineTest, AFailureStopsTheRunAndIsTriedAgain)
{
    Append(readNode, "missing.png");
    Append(invertNode);
    Append(writeNode, "out.png");
    engine_.Execute();
    EXPECT_EQ(Status::Error().Code, CannotOpen);
    EXPECT_EQ(Load("out.png"), -1);
    Save("missing.png", 1);
    engine_.Execute();
    EXPECT_EQ(Status::Error().Code, NoError) << Status::AsciiError();
    EXPECT_EQ(Load("out.png"), 254);

    Status::ErrorBehavior(ThrowIt);
    SetText(PathOf(*engine_.Operations[0]), Path("gone.png"));
    engine_.ChangeVariable(&PathOf(*engine_.Operations[0]));
    engine_.ChangeOperation(0);
    EXPECT_THROW(engine_.Execute(), Status);
    EXPECT_TRUE(engine_.Operations[0]->Dirty);
    Status::ErrorBehavior(IgnoreIt);
}

TEST_F(EngineTest, TwoInputsTakeTheTwoNewestAndAMissingOneIsNamed)
{
    const int add = FindMethod(L"Add", L"Image + Image");
    ASSERT_GE(add, 0);
    Append(readNode, "a.png");
    Append(add);
    EXPECT_EQ(missing_, engine_.Operations[1]->Args[1].Node);
    EXPECT_EQ(engine_.Operations[1]->Args[1].Variable, nullptr);
    int argument = 0, consumer = -1;
    EXPECT_FALSE(engine_.RemoveOperation(0, argument, consumer, false)) << "its image is read by the second";
    EXPECT_EQ(argument, 0);
    EXPECT_EQ(consumer, 1);
    EXPECT_TRUE(engine_.RemoveOperation(1, argument, consumer, false));
    Append(readNode, "b.png");
    Append(add);
    EXPECT_EQ(missing_, -1);
    EXPECT_EQ(NameOf(engine_.Operations[2]->Args[0]), L"Image1");
    EXPECT_EQ(NameOf(engine_.Operations[2]->Args[1]), L"Image0");
    engine_.Operations[2]->Args[2].Visible = true;
    engine_.Execute();
    EXPECT_EQ(static_cast<Var<Image>*>(engine_.Operations[2]->Args[2].Variable)->Value.PixelGray(0, 0), 30);
}

TEST_F(EngineTest, ASwapKeepsWhatFitsAndRenamesWhatTheEngineNamed)
{
    const int add = FindMethod(L"Add", L"Const + Image"), subtract = FindMethod(L"Subtract", L"Image - Const");
    Append(readNode, "a.png");
    Operation& operation = Append(add);
    static_cast<Var<int>&>(*operation.Args[0].Variable).Value = 77;
    AnyVariable* source = operation.Args[1].Variable;
    operation.Set(engine_, subtract, true);
    engine_.FillOperation(1);
    operation.RenameTargets(engine_);
    EXPECT_EQ(operation.Args[0].Variable, source);
    EXPECT_EQ(static_cast<Var<int>&>(*operation.Args[1].Variable).Value, 77);
    EXPECT_EQ(NameOf(operation.Args[2]), L"Subtracted0");
    EXPECT_FALSE(engine_.RenameVariable(operation.Args[2].Variable, L"Image0", true));
    EXPECT_TRUE(engine_.RenameVariable(operation.Args[2].Variable, L"Mine", false));
    operation.Set(engine_, add, true);
    operation.RenameTargets(engine_);
    EXPECT_EQ(NameOf(operation.Args[2]), L"Mine");
}

TEST_F(EngineTest, PropertiesAreReadByNumberAndReadOnlyOnesRefuse)
{
    Append(readNode, "a.png");
    engine_.Execute();
    Var<int> width;
    AnyVariable* image = engine_.Operations[0]->Args[0].Variable;
    EXPECT_TRUE(engine_.GetProperty(&width, 97, image));
    EXPECT_EQ(width.Value, 8);
    EXPECT_FALSE(engine_.SetProperty(&width, 97, image));
    EXPECT_FALSE(engine_.GetProperty(&width, 88, image)) << "an argument of a method is no property";
}

TEST_F(EngineTest, AnEmptySequenceOnlyAdvancesTheClock)
{
    engine_.Execute();
    EXPECT_EQ(engine_.Clock, 1);
    EXPECT_EQ(engine_.FillOperation(0), -1);
}

TEST_F(EngineTest, AWindowOnOneUseLeavesTheOtherUsesAlone)
{
    ReadInvertWrite();
    engine_.Execute();
    auto& window = static_cast<Var<Image>&>(*engine_.Operations[1]->Args[0].Variable);
    window.Value.Window(1, 2, 3, 2);
    engine_.ChangeVariable(&window);
    engine_.Execute();
    EXPECT_EQ(window.Value.Width, 3);
    EXPECT_EQ(static_cast<Var<Image>&>(*engine_.Operations[0]->Args[0].Variable).Value.Width, 8);
    EXPECT_NE(ScriptText(engine_, 0).find(L"\tImage0.Window(1, 2, 3, 2);\n\tOperator::Invert(Image0, Inverted0);\n"),
              std::wstring::npos);
}

TEST_F(EngineTest, ScriptsInFourLanguages)
{
    Append(readNode);
    Append(invertNode);
    SetText(PathOf(*engine_.Operations[0]), "a\"b\t.png");
    EXPECT_EQ(ScriptText(engine_, 0),
              L"\n#include \"Tesk.h\"\n\nvoid Process()\n{\n\t// Declarations\n\tImage Image0;\n\tImage Inverted0;\n"
              L"\n\t// Read  from File (Image)\n\tImage0.Read(\"a\\\"b\\t.png\", Gray);\n"
              L"\n\t// Invert (Operator)\n\tOperator::Invert(Image0, Inverted0);\n"
              L"\n\t// Choose among drawing statements here... (output to the console)\n"
              L"\tImage0.Draw(false);\n\tInverted0.Draw(false);\n}\n");
    EXPECT_EQ(ScriptText(engine_, 1, 1), L"\n\t// Invert (Operator)\n\tTeskNET.Operator.Invert(Image0, Inverted0);\n");
    EXPECT_EQ(
        ScriptText(engine_, 2),
        L"Public Sub Process()\n\t' Declarations\n\tDim Image0 as TeskNET.Image\n\tDim Inverted0 as TeskNET.Image\n"
        L"\n\t' Constructions\n\tImage0= New TeskNET.Image\n\tInverted0= New TeskNET.Image\n"
        L"\n\t' Read  from File (Image)\n\tImage0.Read(\"a\\\"b\\t.png\", TeskNET.PixelTypes.Gray)\n"
        L"\n\t' Invert (Operator)\n\tTeskNET.Operator.Invert(Image0, Inverted0)\n"
        L"End Sub\n\nPrivate Sub Panel1_Paint(ByVal sender As System.Object, ByVal e As "
        L"System.Windows.Forms.PaintEventArgs) Handles Panel1.Paint\n\tTeskNET.Graph.UseGraphics(e.Graphics)\n\n"
        L"\t' Choose among the drawing statements here...\n\tImage0.Draw(False)\n\tInverted0.Draw(False)\n"
        L"\n\tTeskNET.Graph.ReleaseGraphics(e.Graphics)\nEnd Sub\n");
    const std::wstring net = ScriptText(engine_, 3);
    EXPECT_NE(net.find(L"\tTeskNET::Image^ Image0;\n"), std::wstring::npos);
    EXPECT_NE(net.find(L"\tImage0= gcnew TeskNET::Image();\n"), std::wstring::npos);
    EXPECT_NE(net.find(L"\tImage0->Read(\"a\\\"b\\t.png\", TeskNET::PixelTypes::Gray);\n"), std::wstring::npos);
}

TEST_F(EngineTest, AHistogramServesWhereAProfileIsRead)
{
    Append(readNode, "a.png");
    Append(FindMethod(L"Compute", L"Compute from Image"));
    const int integrate = FindMethod(L"Integrate", L"Integrate");
    ASSERT_GE(integrate, 0);
    Operation& operation = Append(integrate);
    ASSERT_NE(operation.Args[0].Variable, nullptr);
    EXPECT_EQ(NameOf(operation.Args[0]), L"Histogram0");
    operation.Args[1].Visible = true;
    engine_.Execute();
    const auto& sums = static_cast<Var<Profile>*>(operation.Args[1].Variable)->Value;
    EXPECT_EQ(sums.Sample(9), 0);
    EXPECT_EQ(sums.Sample(255), 48);
    // The window of one use is its own, and printed.
    auto& shadow = static_cast<Var<Profile>&>(*operation.Args[0].Variable);
    shadow.Value.Window(5, 10);
    engine_.ChangeVariable(&shadow);
    engine_.Execute();
    EXPECT_EQ(sums.Length, 10);
    EXPECT_EQ(sums.Sample(9), 48);
    EXPECT_NE(ScriptText(engine_, 0).find(L"\tHistogram0.Window(5, 10);\n"), std::wstring::npos);
}

TEST_F(EngineTest, EveryMethodThatIsThereRunsThroughTheTree)
{
    // Large enough for the breadths and sizes that methods have by default; a row of it can serve as a lookup table.
    Save("large.png", 10, 256, 37);
    for (int i = 0; i < 3; i++)
        Append(readNode, "large.png");
    Append(FindMethod(L"Compute", L"Compute from Image"));
    for (int i = 0; i < 2; i++)
        Append(FindMethod(L"RowGet", L"Get Row"));
    Profile profile;
    profile.Append(1);
    profile.Write(Path("a.Profile").c_str());
    Append(FindMethod(L"Follow", L"Follow"));
    Tesk::Path contour;
    contour.Append(1, 2);
    contour.Write(Path("a.Path").c_str());
    Geometry().Write(Path("a.Geometry").c_str());
    Append(FindMethod(L"ImageAppend", L"Image Window"));
    Region region;
    region.BoxAppend(Limits(1, 2, 4, 3));
    region.Write(Path("a.Region").c_str());
    // Pixels of one value are one blob.
    Append(FindMethod(L"Segment", L"Threshold"));
    for (const wchar_t* gauge : {L"EdgePoint", L"EdgeLine", L"EdgeArc", L"EdgeEllipse", L"EdgeRectangle"})
        Append(Engine::FindMethod(gauge, nullptr, L"Detect"));
    EdgePoint().Write(Path("a.EdgePoint").c_str());
    EdgeLine().Write(Path("a.EdgeLine").c_str());
    EdgeArc().Write(Path("a.EdgeArc").c_str());
    EdgeEllipse().Write(Path("a.EdgeEllipse").c_str());
    EdgeRectangle().Write(Path("a.EdgeRectangle").c_str());
    Image reference;
    reference.Set(160, 160, Gray);
    Operator::Copy(0, reference);
    Comparator comparator;
    comparator.SetReference(reference, 1, 1, Translation);
    comparator.Write(Path("a.Comparator").c_str());
    CharReader().Write(Path("a.CharReader").c_str());
    PrepareMatchersAndReaders();
    const int copyConstant = FindMethod(L"Copy", L"Constant"), prepared = engine_.NumOperations();
    int run = 0;
    for (int node = 181; node < Engine::NumNodes; node++) {
        if (Engine::Tree[node]->Kind() != MethodKind || Engine::IsPending(node)) continue;
        Operation& operation = Append(node);
        bool bound = true;
        for (const Arg& argument : operation.Args)
            bound = bound && argument.Variable != nullptr;
        int argument = 0, consumer = 0;
        if (bound) {
            for (Arg& each : operation.Args) {
                each.Visible = true;
                if (auto* point = dynamic_cast<Var<XY>*>(each.Variable); point && NameOf(each) == L"End0")
                    point->Value = XY(30, 20);
                // A file of the class, which its reader finds and its writer replaces.
                auto* path = dynamic_cast<Var<const char*>*>(each.Variable);
                if (path && !std::wcscmp(Engine::VarNode(each.Node)->Identifier, L"PathName"))
                    SetText(*path, Path("a.") + Narrow(typeString[Engine::VarNode(operation.Args[0].Node)->Type]));
            }
            engine_.Execute();
            // Colour methods refuse the gray pictures, nothing fills a profile of no length, warps lack anchors, a
            // grid or a map, a comparator takes more than these pictures to teach, and no characters are on them; all
            // others must succeed.
            const int code = Status::Error().Code;
            const std::string function = Status::AsciiFunction();
            const bool isWarp = function.starts_with("Tesk::Geometry::");
            const bool isComparator = function.starts_with("Tesk::Comparator::");
            // No code is in the picture, no Pharmacode to train with, and nothing to locate.
            const bool isReader =
                function.starts_with("Tesk::Code1DReader::") || function.starts_with("Tesk::Code2DReader::");
            const bool isCharReader = function.starts_with("Tesk::CharReader::Chars");
            const bool refused = code == UnsupportedType || (isCharReader && code == OutOfRange) ||
                                 (isComparator && code == CannotPerform) ||
                                 (node == copyConstant && code == VoidObject) ||
                                 (isReader && (code == CannotRead || code == OutOfRange)) ||
                                 (code == OutOfRange && function == "Tesk::Locator::Register") ||
                                 (isWarp && (code == OutOfRange || code == IncompatibleType));
            EXPECT_TRUE(refused || Status::Error().Code == NoError) << node << ' ' << Status::AsciiError();
            if (!refused) run++;
        }
        ASSERT_EQ(engine_.NumOperations(), prepared + 1);
        ASSERT_TRUE(engine_.RemoveOperation(prepared, argument, consumer, false));
    }
    EXPECT_GE(run, 190);
}

TEST_F(EngineTest, AWarpGetsTheSizeThatIsAskedForAndLeavesItsSource)
{
    constexpr int affine = 278;
    int node = 0;
    while (Engine::Tree[node]->Kind() != MethodKind ||
           static_cast<const MethodNode*>(Engine::Tree[node])->MethodId != affine)
        node++;
    Append(readNode, "a.png");
    Operation& warp = Append(node);
    const auto value = [&](std::size_t k) -> AnyVariable& { return *warp.Args.at(k).Variable; };
    for (Arg& argument : warp.Args)
        argument.Visible = true;
    static_cast<Var<int>&>(value(0)).Value = 20;
    static_cast<Var<int>&>(value(1)).Value = 18;
    engine_.Execute();
    EXPECT_EQ(Status::Error().Code, NoError);
    const Image &src = static_cast<Var<Image>&>(value(8)).Value, &dst = static_cast<Var<Image>&>(value(9)).Value;
    EXPECT_EQ(src.Width, 8);
    EXPECT_EQ(dst.Width, 20);
    EXPECT_EQ(dst.Height, 18);
    EXPECT_EQ(dst.PixelGray(19, 17), 10);
    EXPECT_TRUE(static_cast<Var<bool>&>(value(11)).Value);
}
