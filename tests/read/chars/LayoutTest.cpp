// Layouts, laid over characters that are shifted, turned or missing, and boxes set by hand.
#include "Failures.h"
#include "foundation/Angles.h"
#include "read/CharReader.h"
#include "read/chars/Boxes.h"

#include <cmath>
#include <cstdlib>
#include <vector>

using namespace Tesk;
using namespace Tesk::checks;

namespace {

class Layout : public IgnoringFailures
{
protected:
    Layout()
    {
        FixSize(reader);
        Blocks(image, 400, 300, Row(0, 0, -1));
        reader.CharsSegment(image);
        reader.FontStringInsert(image, "ABCDEF");
        reader.TakeLayout();
    }

    /// Six blocks, all but one, turned about the middle by degrees and shifted.
    static std::vector<Box> Row(int dx, int dy, int missing, double degrees = 0)
    {
        std::vector<Box> blocks;
        const double c = std::cos(ToRadians(degrees)), s = std::sin(ToRadians(degrees));
        for (int i = 0; i < 6; i++) {
            if (i == missing) continue;
            const double x = 44 * i - 110, y = i == 2 ? 3 : 0;
            blocks.push_back({static_cast<int>(std::lround(190 + c * x - s * y)) + dx,
                              static_cast<int>(std::lround(120 + s * x + c * y)) + dy, 24, 40});
        }
        return blocks;
    }
    void Segment(const std::vector<Box>& blocks)
    {
        Blocks(image, 400, 300, blocks);
        reader.CharsSegment(image);
    }

    CharReader reader;
    Image image;
};

TEST_F(Layout, CountsItsCharactersAndStrings)
{
    EXPECT_EQ(reader.NumLayoutChars, 6);
    EXPECT_EQ(reader.NumLayoutStrings, 1);
    reader.DropLayout();
    EXPECT_EQ(reader.NumLayoutChars, 0);
    EXPECT_EQ(reader.NumLayoutStrings, 0);
}

TEST_F(Layout, AMissingCharacterKeepsItsPlaceInTheText)
{
    for (const LayoutModes mode : {RigidLayout, FlexibleLayout})
        for (int missing = 0; missing < 6; missing++) {
            reader.LayoutMode = mode;
            Segment(Row(9, -6, missing));
            EXPECT_EQ(reader.NumChars, 6);
            reader.CharsDecode(image);
            const std::string text = static_cast<const char*>(reader.AsciiString);
            ASSERT_EQ(text.size(), 6u) << mode << ' ' << missing;
            for (int i = 0; i < 6; i++) {
                EXPECT_EQ(text[static_cast<std::size_t>(i)] == '?', i == missing) << mode << ' ' << missing << ' ' << i;
                EXPECT_EQ(reader.MatchingFontChar(i) == -1, i == missing);
            }
            EXPECT_EQ(reader.CharTrueWidth(missing), 32);
            Image thumbnail;
            reader.CharThumbnail(image, missing, thumbnail, false);
            EXPECT_EQ(thumbnail.Width, 32);
            EXPECT_EQ(thumbnail.Row(20)[16], 128);
        }
}

TEST_F(Layout, ARigidOneFollowsShiftsAndTurns)
{
    reader.LayoutMode = RigidLayout;
    for (const double degrees : {-4.0, 0.0, 4.0}) {
        const std::vector<Box> blocks = Row(11, 8, -1, degrees);
        Segment(blocks);
        const std::vector<Box> found = BoxesOf(reader);
        ASSERT_EQ(found.size(), 6u);
        for (std::size_t i = 0; i < 6; i++) {
            EXPECT_LE(std::abs(found[i].x + 4 - blocks[i].x), 1) << degrees << ' ' << i;
            EXPECT_LE(std::abs(found[i].y - blocks[i].y), 1) << degrees << ' ' << i;
        }
    }
}

TEST_F(Layout, AFlexibleOneLeavesBoxesWhereTheyAreFound)
{
    reader.LayoutMode = FlexibleLayout;
    std::vector<Box> blocks = Row(0, 0, -1);
    blocks[1].y += 9;
    Segment(blocks);
    EXPECT_EQ(reader.NumChars, 6);
    EXPECT_EQ(BoxesOf(reader)[1], (Box{blocks[1].x - 4, blocks[1].y, 32, 40}));
}

TEST_F(Layout, WithoutBoxesIsRefused)
{
    reader.DropLayout();
    reader.LayoutMode = RigidLayout;
    reader.CharsRead(image);
    EXPECT_EQ(Status::Error().Code, OutOfRange);
    EXPECT_EQ(Message(), L"Void Layout model");
    EXPECT_EQ(reader.LayoutMode, RigidLayout);
    reader.CharsSegment(image);
    EXPECT_EQ(Status::Error().Code, OutOfRange);
    EXPECT_EQ(Message(), L"Void Layout model");
    EXPECT_EQ(reader.LayoutMode, NoLayout);
}

TEST_F(Layout, PresetBoxesStandInForFoundOnes)
{
    CharReader hand;
    hand.PresetBox(0, 1, 2, 3, 4);
    EXPECT_EQ(Message(), L"No preset character box is available");
    hand.PresetBoxes(3);
    EXPECT_EQ(BoxesOf(hand), (std::vector<Box>{{0, 10, 30, 20}, {40, 10, 30, 20}, {80, 10, 30, 20}}));
    hand.PresetBox(3, 1, 2, 3, 4);
    EXPECT_EQ(Status::Error().Code, OutOfRange);
    EXPECT_EQ(Message(), L"The box index (3) must be in range [0..2]");
    hand.PresetBox(1, 50, 60, 7, 8);
    EXPECT_EQ(hand.NumChars, 3);
    EXPECT_EQ(BoxesOf(hand)[1], (Box{50, 60, 7, 8}));
    EXPECT_EQ(hand.CharTrueWidth(1), 7);
}

} // namespace
