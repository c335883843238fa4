// The parts of a scan: edges of a line, the table of texts, groups of bars, the fit of a read, grades of print.
#include "read/linear/ScanState.h"

#include "read/linear/Misfit.h"
#include "read/linear/Symbols.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstring>
#include <string>
#include <vector>

namespace Tesk::linear {
namespace {

using namespace checks;

std::vector<int> EdgesOf(const std::vector<int>& line, EdgeRule rule, bool& rising)
{
    std::vector<Turn> turns(line.size() + 2);
    turns.resize(static_cast<std::size_t>(FindTurns(line, rule.noise, turns.data())));
    std::vector<int> edges(turns.size());
    edges.resize(static_cast<std::size_t>(EdgesBetween(line, turns, rule.step, edges.data(), rising)));
    return edges;
}

TEST(LineEdges, LieWhereTheMiddleLevelIsCrossed)
{
    bool rising = true;
    // The middle of 100 and 20 is 60: from 80 to 40, half way behind pixel 2; told from the pixel that it leads to.
    EXPECT_EQ(EdgesOf({100, 100, 80, 40, 20, 20}, {10, 32}, rising), std::vector<int>{256 * 3 + 128});
    EXPECT_FALSE(rising);
    // The middle of 0 and 90 is 45, three quarters of the way from 0 to 60.
    EXPECT_EQ(EdgesOf({0, 0, 60, 90, 90}, {10, 32}, rising), std::vector<int>{256 * 2 + 192});
    EXPECT_TRUE(rising);
    // A swing of the noise does not end the climb; one of more than that does, without being an edge.
    EXPECT_EQ(EdgesOf({0, 0, 50, 40, 100, 100}, {10, 32}, rising).size(), 1u);
    EXPECT_EQ(EdgesOf({0, 0, 50, 39, 100, 100}, {10, 32}, rising).size(), 1u);
    EXPECT_EQ(EdgesOf({0, 0, 100, 60, 100, 100}, {10, 32}, rising).size(), 3u);
    EXPECT_TRUE(EdgesOf({70}, {10, 32}, rising).empty());
    EXPECT_TRUE(EdgesOf({70, 70, 70}, EdgeRule::Of(MinInt, MinInt), rising).empty());
}

SymbolRead ReadOf(const std::string& text, int start, int end)
{
    SymbolRead read;
    std::memcpy(read.text.data(), text.data(), text.size());
    read.textLength = static_cast<int>(text.size());
    read.symbology = CodeEAN128;
    read.flags = ForwardRead;
    read.start = start * 256;
    read.end = end * 256;
    return read;
}

TEST(Votes, TheLeastVotedSlotIsReplacedAndTheFirstOfThese)
{
    Ballot ballot;
    LinePlace place;
    for (int i = 0; i < slotCount; i++) {
        ballot.Vote(ReadOf("T" + std::to_string(i), 0, 100), place, VoteRule::SameWay);
        if (i != 5 && i != 9) ballot.Vote(ReadOf("T" + std::to_string(i), 0, 100), place, VoteRule::SameWay);
    }
    ballot.Vote(ReadOf("new", 0, 100), place, VoteRule::SameWay);
    EXPECT_EQ(ballot[5].Text(), "new");
    EXPECT_EQ(ballot[5].votes, 1);
    EXPECT_EQ(ballot[9].Text(), "T9");
}

TEST(Votes, CornersFollowTheOuterLinesAndBecomeSquare)
{
    // Lines across bars that lean: each begins and ends half a pixel further to the right.
    Ballot ballot;
    LinePlace place;
    for (const int y : {20, 10, 40, 30}) {
        place.start = XY(0, y);
        place.offset = y;
        ballot.Vote(ReadOf("A", 100 + y / 2, 200 + y / 2), place, VoteRule::SameWay);
    }
    ASSERT_EQ(ballot.Count(4), 1);
    EXPECT_EQ(ballot[0].firstLine, 20);
    EXPECT_EQ(ballot[0].lastLine, 30);
    const auto [a, b, c, d] = ballot[0].corners;
    // The right end of the first line lies further down along the bars than its left one: it moves up to be level.
    EXPECT_EQ(std::pair(int(a.X), int(a.Y)), std::pair(105, 10));
    EXPECT_EQ(std::pair(int(b.X), int(b.Y)), std::pair(185, -30));
    EXPECT_EQ((b.X - a.X) * (c.X - b.X) + (b.Y - a.Y) * (c.Y - b.Y), 0);
    EXPECT_EQ(std::pair(int(c.X), int(c.Y)), std::pair(220, 40));
    EXPECT_EQ(std::pair(int(d.X), int(d.Y)), std::pair(140, 80));
    EXPECT_EQ(ballot.Count(5), 0);
    // Of no width.
    Ballot narrow;
    for (int i = 0; i < 3; i++)
        narrow.Vote(ReadOf("A", 50, 52), place, VoteRule::SameWay);
    EXPECT_EQ(narrow.Count(3), 0);
}

TEST(Votes, OthersInItsPlaceOutvoteAText)
{
    Ballot ballot;
    LinePlace place;
    for (int i = 0; i < 5; i++)
        ballot.Vote(ReadOf("A", 50, 100), place, VoteRule::AnyWay);
    ballot.Vote(ReadOf("B", 52, 99), place, VoteRule::AnyWay);
    EXPECT_TRUE(ballot.HasClearWinner(5, 5));
    ballot.Vote(ReadOf("B", 52, 99), place, VoteRule::AnyWay);
    EXPECT_FALSE(ballot.HasClearWinner(5, 3));
    EXPECT_EQ(ballot.Count(3, 3), 0);
    EXPECT_EQ(ballot.Count(3), 1);
}

TEST(BarGroups, AreFoundWhereverTheBarsLean)
{
    BarFinder finder;
    for (const int angle : {-40, -20, 0, 10, 35}) {
        Print print;
        print.angle = angle;
        Image image;
        Picture(image, 260, 260, EAN13Modules("4006381333931"), print);
        const auto groups = finder.Find(Raster(image), true, 5, {10, 32});
        ASSERT_EQ(groups.size(), 1u) << angle;
        const BarGroup& group = groups[0];
        EXPECT_NEAR(std::atan2(-group.along.X, group.along.Y), ToRadians(angle), 0.03);
        EXPECT_NEAR(std::hypot(group.last.X - group.first.X, group.last.Y - group.first.Y), 190, 10);
        EXPECT_NEAR(group.length, 58, 10) << angle;
    }
}

TEST(Fit, OfAReadIsFarFromThatOfAMistakenOne)
{
    const std::vector<std::uint8_t> modules = {2, 1, 2, 2, 2, 2, 1, 1, 2, 3, 2, 1, 1, 3, 1, 2, 3, 2};
    SymbolRead read;
    read.modules = modules;
    read.elementCount = static_cast<int>(modules.size());
    read.end = 1;
    std::vector<int> edges = {0};
    for (std::size_t i = 0; i < modules.size(); i++) // bars grow, and the line recedes
        edges.push_back(edges.back() + modules[i] * (512 + 6 * static_cast<int>(i)) + (i % 2 == 0 ? 60 : -60));
    EXPECT_LT(Misfit(edges, read), 0.15);
    std::vector<std::uint8_t> mistaken = modules;
    std::swap(mistaken[8], mistaken[9]);
    std::swap(mistaken[11], mistaken[13]);
    read.modules = mistaken;
    EXPECT_GT(Misfit(edges, read), 0.25);
}

/// A symbol of bars and spaces, upright, whose corners are given.
ScanVote SymbolAt(const std::vector<std::uint8_t>& modules, int left, int right)
{
    ScanVote symbol;
    symbol.symbology = CodeEAN13;
    symbol.elementCount = static_cast<int>(modules.size());
    std::copy(modules.begin(), modules.end(), symbol.modules.begin());
    symbol.corners = {Site(left, 10), Site(right, 10), Site(right, 40), Site(left, 40)};
    return symbol;
}

TEST(Quality, IndicatorsFollowTheirFormulas)
{
    const std::string code = EAN13Modules("4006381333931");
    std::vector<std::uint8_t> modules;
    for (std::size_t i = 0; i < code.size(); i++)
        if (i > 0 && code[i] == code[i - 1])
            modules.back()++;
        else
            modules.push_back(1);
    ASSERT_EQ(modules.size(), 59u);
    const int module = 4, left = 40, right = left + module * 95;
    const auto grade = [&](int dark, int bright, int valley, int peak) {
        Image image;
        Blank(image, 480, 50, bright);
        for (int y = 0; y < 50; y++) {
            for (int x = left; x < right; x++)
                if (code[static_cast<std::size_t>((x - left) / module)] == '1')
                    image.Row(y)[x] = static_cast<std::uint8_t>(dark);
            // The first bar, of one module, is less dark, and a space has a stain.
            for (int x = left; x < left + module; x++)
                image.Row(y)[x] = static_cast<std::uint8_t>(valley);
            image.Row(y)[left - 6] = static_cast<std::uint8_t>(peak);
        }
        std::vector<int> line;
        const PrintQuality quality = GradePrint(Raster(image), SymbolAt(modules, left, right), XY(0, 0), line);
        std::string letters;
        for (const int value : quality.values[4])
            letters += value == 0 ? 'F' : static_cast<char>('E' - value);
        return letters;
    };
    // Scan, minimum reflectance, edge determination, symbol contrast, edge contrast, modulation, defects, decode,
    // decodability, quiet zone.
    EXPECT_EQ(grade(10, 250, 10, 250), "AAAAAAAAAA");
    EXPECT_EQ(grade(90, 220, 90, 220), "AAACAAAAAA");   // 130 / 255 = 0.51
    EXPECT_EQ(grade(130, 220, 130, 220), "AFADAAAAAA"); // 2 * 130 > 220; 90 / 255 = 0.35
    EXPECT_EQ(grade(200, 230, 200, 230), "AFAFFAAAAA"); // 30 of 255, and 30 < 38.4
    EXPECT_EQ(grade(10, 250, 100, 250), "AAAAABAAAA");  // (250 - 100) / 240 = 0.625
    EXPECT_EQ(grade(10, 250, 10, 205), "AAAAAABAAA");   // (250 - 205) / 240 = 0.1875
    EXPECT_EQ(grade(10, 250, 240, 250), "AFFFFFFFFF");  // the first bar is none, and the rest is left out
}

} // namespace
} // namespace Tesk::linear
