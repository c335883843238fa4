// Sequences of tools: locating, gauging along a curve, training shapes, reading linear and matrix codes.
#include "engine/Sequence.h"
#include "engine/TypeNames.h"
#include "engine/types/Settings.h"

#include "gauge/SnakeGauge.h"
#include "match/Locator.h"
#include "match/ShapeMatcher.h"
#include "measure/Path.h"
#include "read/Code1DReader.h"
#include "read/Code2DReader.h"
#include "read/matrix/Rendered.h"

#include <cmath>
#include <string>

using namespace TeskTests;

namespace {

class ToolSequence : public SequenceWithFiles
{
protected:
    Operation& AppendRead(const wchar_t* className, const std::string& path)
    {
        Operation& operation = Append(className, L"Read  from File");
        SetPath(operation, path);
        return operation;
    }
    void ExpectRun()
    {
        engine_.Execute();
        EXPECT_EQ(Status::Error().Code, NoError) << Status::AsciiError();
    }
};

/// Bright on a dark ground; a bar makes its direction plain.
void PaintMark(Image& image, int x, int y)
{
    for (int dy = 0; dy < 24; dy++)
        for (int dx = 0; dx < 24; dx++)
            if (dx < 6 || dy > 17) image.Row(y + dy)[x + dx] = 200;
}

void Fill(Image& image, int width, int height, int value)
{
    image.Set(width, height, Gray);
    for (int y = 0; y < height; y++)
        for (int x = 0; x < width; x++)
            image.Row(y)[x] = static_cast<std::uint8_t>(value);
}

Path SquareOf(int side)
{
    Path path;
    for (int i = 0; i < side; i++)
        path.Append(i, 0);
    for (int i = 0; i < side; i++)
        path.Append(side, i);
    for (int i = side; i > 0; i--)
        path.Append(i, side);
    for (int i = side; i > 0; i--)
        path.Append(0, i);
    path.Closed = true;
    return path;
}

} // namespace

TEST_F(ToolSequence, ALocatorIsTrainedOnAWindowAndFindsInTheWholeImageWithItsOwnSettings)
{
    Image image;
    Fill(image, 160, 120, 30);
    PaintMark(image, 20, 30);
    PaintMark(image, 100, 70);
    image.Write(File("marks.bmp").c_str());
    AppendRead(L"Image", File("marks.bmp"));
    Operation& train = Append(L"Locator", L"Train on Image");
    ExpectRun();
    ValueOf<Image>(train, 1).Window(16, 26, 33, 33);
    engine_.ChangeVariable(train.Args[1].Variable);
    ValueOf<Locator>(train, 0).MinScore = 0.5;
    Operation& find = Append(L"Locator", L"Find");
    EXPECT_EQ(ValueOf<Locator>(find, 0).MinScore, 0.5) << "it starts with the settings of the one that was trained";
    ValueOf<Image>(find, 1).Window();
    ValueOf<Locator>(find, 0).MaxLocations = 5;
    ExpectRun();
    const auto& locator = ValueOf<Locator>(find, 0);
    ASSERT_EQ(locator.NumLocations, 2);
    EXPECT_NEAR(locator.Location(0).X + locator.Location(1).X, 32 + 112, 0.1);
    EXPECT_NEAR(locator.Location(0).Y + locator.Location(1).Y, 42 + 82, 0.1);
    // What has been chosen and set stays when the sequence runs again.
    ValueOf<Locator>(find, 0).Select(1);
    ExpectRun();
    EXPECT_EQ(locator.MaxLocations, 5);
    EXPECT_EQ(locator.HitIndex, 1);
    EXPECT_EQ(ValueOf<Locator>(train, 0).MaxLocations, 1);
    EXPECT_NE(ScriptText(engine_, 0).find(L"Locator0.MaxLocations= 5;\n"), std::wstring::npos);
    ValueOf<Locator>(find, 0).MaxLocations = 1;
    ExpectRun();
    EXPECT_EQ(locator.NumLocations, 1);
    EXPECT_EQ(locator.Handle, NoHandle) << "the second one is gone";
}

TEST_F(ToolSequence, ASnakeKeepsItsOwnNodesUntilThoseThatItWasMadeOfChange)
{
    // A bright disk of radius 40 about (80, 60).
    Image image;
    Fill(image, 160, 120, 30);
    for (int y = 0; y < 120; y++)
        for (int x = 0; x < 160; x++)
            if (std::hypot(x - 80, y - 60) < 40) image.Row(y)[x] = 200;
    image.Write(File("disk.bmp").c_str());
    SnakeGauge circle;
    circle.CircleAppend({80, 60}, 42);
    circle.MaxDeviation = 3;
    circle.Breadth = 12;
    circle.Write(File("circle.sng").c_str());
    AppendRead(L"Image", File("disk.bmp"));
    Operation& read = AppendRead(L"SnakeGauge", File("circle.sng"));
    ExpectRun();
    Operation& inspect = Append(L"SnakeGauge", L"Inspect Edge");
    ExpectRun();
    auto& gauge = ValueOf<SnakeGauge>(inspect, 0);
    EXPECT_EQ(gauge.MaxDeviation, 3);
    ASSERT_EQ(gauge.NumSections, 1);
    EXPECT_NEAR(gauge.Sections[0].FittedRadius, 40, 0.7);
    // Dragged here, the snake of the file stays.
    gauge.ClosestTo({122, 60});
    gauge.Drag({126, 60});
    const double dragged = gauge.Nodes[0].Position.X;
    EXPECT_NEAR(dragged, 126, 1e-9);
    ExpectRun();
    EXPECT_EQ(gauge.Nodes[0].Position.X, dragged);
    EXPECT_EQ(ValueOf<SnakeGauge>(read, 0).Nodes[0].Position.X, 122);
    // Another file replaces the nodes, and leaves the parameters of this use.
    SnakeGauge other;
    other.CircleAppend({80, 60}, 37);
    other.Write(File("circle.sng").c_str());
    gauge.Density = 2;
    engine_.ChangeOperation(1);
    ExpectRun();
    EXPECT_EQ(gauge.Nodes[0].Position.X, 117);
    EXPECT_EQ(gauge.Density, 2);
    EXPECT_NEAR(gauge.Sections[0].FittedRadius, 40, 0.7);
}

TEST_F(ToolSequence, ShapesTrainedOneAfterTheOtherAddUpAndAreTrainedOnceEach)
{
    SquareOf(40).Write(File("square.path").c_str());
    AppendRead(L"Path", File("square.path"));
    Operation& first = Append(L"ShapeMatcher", L"Train Outline");
    ValueOf<int>(first, 2) = 7;
    ExpectRun();
    Operation& second = Append(L"ShapeMatcher", L"Train Outline");
    ValueOf<int>(second, 2) = 8;
    ExpectRun();
    for (int i = 0; i < 3; i++)
        ExpectRun();
    EXPECT_EQ(ValueOf<ShapeMatcher>(first, 0).NumTrained, 1);
    EXPECT_EQ(ValueOf<ShapeMatcher>(second, 0).NumTrained, 2);
    Operation& recognize = Append(L"ShapeMatcher", L"Recognize Outline");
    ExpectRun();
    EXPECT_EQ(ValueOf<ShapeMatcher>(recognize, 0).NumTrained, 2);
    EXPECT_EQ(ValueOf<int>(recognize, 2), 0);
    EXPECT_EQ(ValueOf<ShapeMatcher>(recognize, 0).Class, 7);
    EXPECT_LT(ValueOf<ShapeMatcher>(recognize, 0).Similarity, 1);
    // Told once more, the first adds a shape, and the second adds its own behind that.
    engine_.ChangeOperation(1);
    ExpectRun();
    EXPECT_EQ(ValueOf<ShapeMatcher>(first, 0).NumTrained, 2);
    EXPECT_EQ(ValueOf<ShapeMatcher>(second, 0).NumTrained, 3);
}

TEST_F(ToolSequence, AReaderOfAnotherUseHasItsOwnSettingsAndTextsComeOut)
{
    // EAN-8 "96385074" in bars of 3 pixels, with its quiet zones.
    const std::string bars = "101"
                             "0001011"
                             "0101111"
                             "0111101"
                             "0110111"
                             "01010"
                             "1001110"
                             "1110010"
                             "1000100"
                             "1011100"
                             "101";
    Image image;
    Fill(image, 300, 80, 255);
    for (std::size_t i = 0; i < bars.size(); i++)
        for (int y = 10; y < 70; y++)
            for (int x = 0; x < 3; x++)
                if (bars[i] == '1') image.Row(y)[45 + 3 * static_cast<int>(i) + x] = 0;
    image.Write(File("code.bmp").c_str());
    AppendRead(L"Image", File("code.bmp"));
    Operation& decode = Append(L"Code1DReader", L"Decode");
    ExpectRun();
    EXPECT_TRUE(ValueOf<bool>(decode, 2));
    EXPECT_STREQ(ValueOf<Code1DReader>(decode, 0).AsciiString, "96385074");
    Operation& choose = Append(L"Code1DReader", L"Choose");
    ValueOf<Code1DReader>(choose, 0).CheckQuality = true;
    ExpectRun();
    auto& chosen = ValueOf<Code1DReader>(choose, 0);
    EXPECT_STREQ(chosen.AsciiString, "96385074");
    EXPECT_TRUE(chosen.CheckQuality) << "its own";
    EXPECT_NE(chosen.AsciiGrade, '\0');
    EXPECT_FALSE(ValueOf<Code1DReader>(decode, 0).CheckQuality);

    Operation& expand = Append(L"Code1DReader", L"Expand GS1");
    SetText(static_cast<Var<const char*>&>(*expand.Args[0].Variable), "0109501101530003");
    ExpectRun();
    EXPECT_STREQ(ValueOf<const char*>(expand, 1), "(01)09501101530003");
    EXPECT_EQ(ValueOf<int>(expand, 4), 19);
    Change(expand, 2, 5);
    ExpectRun();
    EXPECT_LT(std::string(ValueOf<const char*>(expand, 1)).size(), 5u) << "no more than there is room";
    Change(expand, 2, -1);
    engine_.Execute();
    EXPECT_STREQ(ValueOf<const char*>(expand, 1), "");
}

TEST_F(ToolSequence, MatrixCodesAreReadWithTheSettingsOfTheUseAndThoseOfTheFileThatItLeaves)
{
    using namespace matrix;
    const codewords::MadeSymbol &dark = MadeNamed("digits"), &light = MadeNamed("Text, Structured Append");
    Image image;
    Blank(image, 320, 160);
    Paint(SymbolCells(dark), Homography::Turned({30, 50}, 5), image);
    Paint(SymbolCells(light), Homography::Turned({180, 30}, 4), image, {220, 30, 0}, 3);
    image.Write(File("codes.bmp").c_str());
    Code2DReader settings;
    settings.SymbologyIdentifier = true;
    settings.Write(File("codes.c2r").c_str());
    AppendRead(L"Image", File("codes.bmp"));
    AppendRead(L"Code2DReader", File("codes.c2r"));
    Operation& decode = Append(L"Code2DReader", L"Decode");
    ExpectRun();
    auto& reader = ValueOf<Code2DReader>(decode, 0);
    EXPECT_TRUE(ValueOf<bool>(decode, 2));
    EXPECT_EQ(reader.NumDecoded, 1);
    const auto text = [&](Operation& operation) {
        constexpr int asciiString = 1377;
        Var<const char*> value;
        int node = 0;
        while (Engine::Tree[node]->Kind() != ArgumentKind || Engine::VarNode(node)->PropertyId != asciiString)
            node++;
        EXPECT_TRUE(engine_.GetProperty(&value, node, operation.Args[0].Variable));
        return std::string(value.Value);
    };
    EXPECT_EQ(text(decode), dark.text);

    // A change for this use alone: light symbols count, too, and two of them.
    reader.EnabledPolarities = AutoPolarity;
    reader.MaxDecoded = 2;
    engine_.ChangeVariable(decode.Args[0].Variable);
    ExpectRun();
    ASSERT_EQ(reader.NumDecoded, 2);
    EXPECT_EQ(text(decode), light.text);
    EXPECT_EQ(reader.Polarity, WhiteOnBlack);
    EXPECT_EQ(ValueOf<Code2DReader>(At(1), 0).MaxDecoded, 1);
    EXPECT_NE(ScriptText(engine_, 0).find(L"Code2DReader0.MaxDecoded= 2;\n"), std::wstring::npos);

    Operation& choose = Append(L"Code2DReader", L"Choose");
    ExpectRun();
    EXPECT_EQ(text(choose), dark.text);
    EXPECT_EQ(ValueOf<Code2DReader>(choose, 0).Polarity, BlackOnWhite);
    EXPECT_EQ(text(decode), light.text) << "its own choice";
    Change(choose, 1, 2);
    engine_.Execute();
    EXPECT_EQ(Status::Error().Code, OutOfRange);
    Change(choose, 1, 1);
    ExpectRun();
    EXPECT_EQ(text(choose), light.text);

    // Graded by the decoding, shown with each choice.
    reader.CheckQuality = true;
    engine_.ChangeVariable(decode.Args[0].Variable);
    ExpectRun();
    const std::string grades = static_cast<const char*>(ValueOf<Code2DReader>(choose, 0).AsciiGrades);
    EXPECT_EQ(grades.size(), 11u) << grades;
    EXPECT_GT(ValueOf<Code2DReader>(choose, 0).SymbolContrast, 0.5f);

    // Another file: what was not changed here follows it.
    settings.SymbologyIdentifier = false;
    settings.MaxDecoded = 5;
    settings.Write(File("codes.c2r").c_str());
    engine_.ChangeOperation(1);
    ExpectRun();
    EXPECT_EQ(text(choose), light.text.substr(3)) << "without the identifier";
    EXPECT_EQ(reader.NumDecoded, 2);
    EXPECT_EQ(reader.MaxDecoded, 2);
}
