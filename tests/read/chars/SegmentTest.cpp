// How pictures are cut into characters: sizes, bands, lines, gaps, polarity and preparation, worked out by hand.
#include "Failures.h"
#include "image/Geometry.h"
#include "image/Operator.h"
#include "read/CharReader.h"
#include "read/chars/Boxes.h"

#include <cstdlib>
#include <string>
#include <vector>

using namespace Tesk;
using namespace Tesk::checks;

namespace {

class Segment : public IgnoringFailures
{
protected:
    Segment() { FixSize(reader); }

    std::vector<Box> Found(const std::vector<Box>& blocks, int width = 300, int height = 200)
    {
        Blocks(image, width, height, blocks);
        reader.CharsSegment(image);
        return BoxesOf(reader);
    }
    std::string Separators()
    {
        std::string all;
        for (int i = 0; i < reader.NumChars; i++)
            all += reader.Separator(i) == 10 ? 'L' : reader.Separator(i) == 32 ? 'G' : '.';
        return all;
    }

    CharReader reader;
    Image image;
};

TEST_F(Segment, TouchingCharactersAreCutByTheirSize)
{
    // gap 3; (100 + 3) / 35 = 2 characters of pitch 51 and width 48, 16 more than they are made
    EXPECT_EQ(Found({{30, 30, 100, 40}}), (std::vector<Box>{{38, 30, 32, 40}, {89, 30, 32, 40}}));
    EXPECT_EQ(reader.CharTrueWidth(0), 48);
    EXPECT_EQ(reader.CharTrueWidth(1), 48);
    EXPECT_EQ(Separators(), "..");

    reader.VariableWidth = true;
    EXPECT_EQ(Found({{30, 30, 100, 36}}), (std::vector<Box>{{30, 28, 48, 40}, {81, 28, 48, 40}}));
    // a third of the common width is the least
    EXPECT_EQ(Found({{30, 30, 6, 40}}), (std::vector<Box>{{28, 30, 10, 40}}));
}

TEST_F(Segment, BandsWiderThanTouchingCharactersMakeAreDropped)
{
    reader.MaxTouching = 1;
    EXPECT_EQ(Found({{30, 30, 64, 40}}).size(), 1u);
    EXPECT_EQ(Found({{30, 30, 65, 40}}).size(), 0u);
    EXPECT_EQ(Status::Error().Code, OutOfRange);
    reader.MaxTouching = 2; // 64 + 35 pixels
    EXPECT_EQ(Found({{30, 30, 99, 40}}).size(), 2u);
    EXPECT_EQ(Found({{30, 30, 100, 40}}).size(), 0u);
}

TEST_F(Segment, DotsAndHighBlocksAreNoCharacters)
{
    EXPECT_EQ(Found({{30, 30, 7, 9}, {150, 30, 8, 9}, {30, 90, 7, 10}}).size(), 2u);
    EXPECT_EQ(Found({{30, 30, 20, 80}, {150, 30, 20, 81}}), (std::vector<Box>{{24, 50, 32, 40}}));
}

TEST_F(Segment, BlobsOnTheBorderAreNoCharacters)
{
    EXPECT_EQ(Found({{0, 30, 20, 40}, {100, 160, 20, 40}, {280, 30, 20, 40}, {100, 0, 20, 40}, {200, 1, 20, 40}}),
              (std::vector<Box>{{194, 1, 32, 40}}));
}

TEST_F(Segment, TheDotOfALetterBelongsToIt)
{
    EXPECT_EQ(Found({{60, 30, 6, 6}, {60, 42, 6, 28}}), (std::vector<Box>{{47, 30, 32, 40}}));
}

TEST_F(Segment, PiecesOfABrokenCharacterAreJoined)
{
    const std::vector<Box> pieces = {{30, 30, 10, 14}, {44, 55, 10, 14}};
    EXPECT_EQ(Found(pieces), (std::vector<Box>{{26, 30, 32, 40}}));
    reader.RepairBroken = false;
    EXPECT_EQ(Found(pieces).size(), 2u);
}

TEST_F(Segment, AGapBeginsBeyondSevenQuartersOfAWidth)
{
    Found({{30, 30, 20, 40}, {86, 30, 20, 40}});
    EXPECT_EQ(Separators(), "..");
    Found({{30, 30, 20, 40}, {87, 30, 20, 40}});
    EXPECT_EQ(Separators(), "G.");
}

TEST_F(Segment, LinesAreReadFromTheTopAndFromTheLeft)
{
    const std::vector<Box> found =
        Found({{120, 30, 20, 40}, {30, 33, 20, 40}, {75, 120, 20, 40}, {30, 118, 20, 40}, {75, 31, 20, 40}});
    EXPECT_EQ(found, (std::vector<Box>{
                         {24, 33, 32, 40}, {69, 31, 32, 40}, {114, 30, 32, 40}, {24, 118, 32, 40}, {69, 120, 32, 40}}));
    EXPECT_EQ(Separators(), "..L..");
    reader.AlignChars = true;
    reader.CharsSegment(image);
    std::vector<int> tops;
    for (const Box& box : BoxesOf(reader))
        tops.push_back(box.y);
    EXPECT_EQ(tops, (std::vector<int>{31, 31, 31, 120, 120}));
}

TEST_F(Segment, TheSizeIsFoundFromWhatIsThere)
{
    reader.GuessSize = true;
    // Heights 12, 30, 30, 30, 33: the one at 4 is 33. Widths count by two thirds of it, 22: the wide one holds two.
    Found({{20, 30, 18, 30}, {60, 30, 18, 30}, {100, 30, 41, 30}, {160, 48, 12, 12}, {200, 30, 19, 33}});
    EXPECT_EQ(reader.CharHeight, 33);
    EXPECT_EQ(reader.CharWidth, 20);

    reader.KeepRatio = true;
    reader.CharWidth = 10;
    reader.CharHeight = 50;
    Found({{20, 30, 18, 30}, {60, 30, 18, 30}});
    EXPECT_EQ(reader.CharHeight, 30);
    EXPECT_EQ(reader.CharWidth, 6);

    // not less than 8 high
    reader.KeepRatio = false;
    Found({{20, 30, 9, 5}});
    EXPECT_EQ(reader.CharHeight, 8);
}

TEST_F(Segment, ALineIsCutInAFixedNumberOfCharacters)
{
    DrawText(image, 300, 100, "H8B3M2");
    CharReader whole;
    whole.CharsSegment(image);
    const std::vector<Box> apart = BoxesOf(whole);
    ASSERT_EQ(apart.size(), 6u);
    const Box &first = apart.front(), &last = apart.back();
    Flood(image, {first.x + 4, first.y + first.height / 2, last.x + last.width - first.x - 8, 2}, 0); // now one piece
    reader.CharWidth = whole.CharWidth;
    reader.CharHeight = whole.CharHeight;
    reader.GuessSize = true;
    reader.MaxTouching = -6;
    reader.CharsSegment(image);
    const std::vector<Box> found = BoxesOf(reader);
    ASSERT_EQ(found.size(), 6u);
    for (std::size_t i = 0; i < 6; i++) {
        const int center = found[i].x + found[i].width / 2, wanted = apart[i].x + apart[i].width / 2;
        EXPECT_LE(std::abs(center - wanted), 4) << i;
    }

    // A block that is all alike has places for any number of characters.
    reader.GuessSize = false;
    reader.CharWidth = 20;
    reader.CharHeight = 30;
    reader.GapFraction = 0;
    for (const int count : {1, 2, 5, 9}) {
        reader.MaxTouching = -count;
        EXPECT_EQ(Found({{50, 40, 20 * count, 30}}).size(), static_cast<std::size_t>(count));
    }
}

TEST_F(Segment, PolarityAndQuarterTurnsChangeNothing)
{
    const std::vector<Box> upright = Found({{30, 30, 100, 40}, {30, 100, 22, 38}, {200, 101, 22, 38}});
    ASSERT_EQ(upright.size(), 4u);
    Image other;
    Operator::Invert(image, other);
    reader.WhiteOnBlack = true;
    reader.CharsSegment(other);
    EXPECT_EQ(BoxesOf(reader), upright);
    reader.WhiteOnBlack = false;
    for (int quadrant = 1; quadrant < 4; quadrant++) {
        Geometry::Turn(4 - quadrant, image, other);
        reader.Quadrant = quadrant;
        reader.CharsSegment(other);
        EXPECT_EQ(BoxesOf(reader), upright) << quadrant;
        // The hit test takes places of the picture.
        int hits = 0;
        for (int y = 0; y < other.Height; y += 3)
            for (int x = 0; x < other.Width; x += 3)
                if (other.Row(y)[x] == 0) {
                    reader.HitChar(x, y);
                    hits += reader.Handle == AllHandle;
                }
        EXPECT_GT(hits, 300) << quadrant;
        reader.HitChar(1, 1);
        EXPECT_EQ(reader.Handle, NoHandle);
    }
}

TEST_F(Segment, AWindowIsSeenAlone)
{
    Found({{30, 30, 22, 38}, {130, 60, 22, 38}, {230, 60, 22, 38}});
    image.Window(100, 50, 80, 80);
    reader.CharsSegment(image);
    EXPECT_EQ(BoxesOf(reader), (std::vector<Box>{{25, 9, 32, 40}}));
    reader.HitChar(140, 70);
    EXPECT_EQ(reader.Handle, AllHandle);
    EXPECT_EQ(reader.HitIndex, 0);
    reader.HitChar(40, 40);
    EXPECT_EQ(reader.HitIndex, -1);
}

TEST_F(Segment, DotsAreClosed)
{
    std::vector<Box> dots;
    for (int y = 0; y < 6; y++)
        for (int x = 0; x < 4; x++)
            dots.push_back({40 + 6 * x, 40 + 6 * y, 4, 4});
    for (const bool light : {false, true}) {
        Blocks(image, 200, 120, dots);
        if (light) Operator::Invert(image, image);
        reader.WhiteOnBlack = light;
        reader.Dotted = 1;
        reader.CharsSegment(image);
        EXPECT_EQ(BoxesOf(reader), (std::vector<Box>{{35, 37, 32, 40}}));
    }
}

TEST_F(Segment, InkingMakesStrokesThicker)
{
    reader.VariableWidth = true;
    for (const bool light : {false, true}) {
        Blocks(image, 200, 120, {{40, 40, 20, 30}});
        if (light) Operator::Invert(image, image);
        reader.WhiteOnBlack = light;
        for (const int ink : {-2, -1, 0, 1, 2}) {
            reader.InkingCorrection = ink;
            reader.CharsSegment(image);
            EXPECT_EQ(reader.CharTrueWidth(0), 20 + 2 * ink) << ink;
        }
    }
}

TEST_F(Segment, UnevenLightIsLevelled)
{
    for (const bool light : {false, true}) {
        image.Set(400, 120, Gray);
        for (int y = 0; y < 120; y++)
            for (int x = 0; x < 400; x++)
                image.Row(y)[x] = static_cast<std::uint8_t>(light ? x / 3 : 120 + x / 3);
        for (int i = 0; i < 8; i++)
            for (int y = 40; y < 80; y++)
                for (int x = 30 + 44 * i; x < 52 + 44 * i; x++)
                    image.Row(y)[x] = static_cast<std::uint8_t>(image.Row(y)[x] + (light ? 100 : -100));
        reader.WhiteOnBlack = light;
        reader.LocalThreshold = true;
        reader.CharsSegment(image);
        EXPECT_EQ(reader.NumChars, 8) << light;
    }
}

TEST_F(Segment, MasksCleanTheBackground)
{
    for (const bool light : {false, true}) {
        Blocks(image, 300, 120, {{40, 40, 22, 38}, {90, 40, 22, 38}});
        if (light) Operator::Invert(image, image);
        reader.WhiteOnBlack = light;
        reader.Masking = 3;
        reader.CharsSegment(image);
        EXPECT_EQ(BoxesOf(reader), (std::vector<Box>{{35, 39, 32, 40}, {85, 39, 32, 40}})) << light;
    }
}

TEST_F(Segment, TouchingRowsAreCutApart)
{
    for (const bool light : {false, true}) {
        std::vector<Box> blocks = {{44, 66, 4, 18}};
        for (int i = 0; i < 4; i++) {
            blocks.push_back({30 + 44 * i, 30, 22, 38});
            blocks.push_back({30 + 44 * i, 82, 22, 38});
        }
        Blocks(image, 260, 160, blocks);
        if (light) Operator::Invert(image, image);
        reader.WhiteOnBlack = light;
        reader.SplitRows = 0;
        reader.CharsSegment(image);
        EXPECT_EQ(reader.NumChars, 6) << "the two that hang together are too high";
        reader.SplitRows = 2;
        reader.CharsSegment(image);
        EXPECT_EQ(reader.NumChars, 8) << light;
        EXPECT_EQ(Separators(), "...L....");
        reader.SplitRows = 3; // two lines have four edges only
        reader.CharsSegment(image);
        EXPECT_EQ(reader.NumChars, 6);
    }
}

TEST_F(Segment, AnyPixelTypeIsRead)
{
    const std::vector<Box> found = Found({{30, 30, 100, 40}});
    for (const PixelTypes type : {Gray16, Rgb, Rgba}) {
        Image other;
        Operator::Copy(image, other, type);
        reader.CharsSegment(other);
        EXPECT_EQ(BoxesOf(reader), found) << type;
    }
}

TEST_F(Segment, HostileSettingsAreHarmless)
{
    Blocks(image, 60, 40, {{10, 10, 20, 20}});
    for (const int value : {MinInt, -1, 0, 1, MaxInt})
        for (const bool guess : {false, true}) {
            CharReader wild;
            wild.GuessSize = guess;
            wild.KeepRatio = value > 0;
            wild.CharWidth = wild.CharHeight = wild.Dotted = wild.Masking = wild.InkingCorrection = value;
            wild.Quadrant = wild.SplitRows = wild.MaxTouching = value;
            wild.GapFraction = wild.DotFraction = value / 0.0;
            wild.LocalThreshold = value < 0;
            wild.CharsSegment(image);
            EXPECT_GE(wild.NumChars, 0);
        }
}

} // namespace
