// DotCode symbols are found and read at all angles and sizes, with dots missing and clutter beside them.
#include "read/matrix/DotCodeSearch.h"

#include "read/matrix/EncodedSymbols.h"

#include <gtest/gtest.h>

#include <cmath>
#include <memory>
#include <numbers>
#include <random>

namespace Tesk::matrix {

namespace {

constexpr Print dots{.ink = 40, .paper = 200, .dot = 0.8};
constexpr double radian = std::numbers::pi / 180;

class DotCodeSearchTest : public testing::Test
{
protected:
    void Draw(const SymbolCells& cells, double cell, double degrees = 0, const Print& print = dots)
    {
        const double c = std::cos(degrees * radian), s = std::sin(degrees * radian);
        const double width = cell * cells.columns, height = cell * cells.rows;
        const int side = static_cast<int>(std::hypot(width + 8 * cell, height + 8 * cell));
        const double middle = side / 2.0;
        Blank(image_, side, side, print.paper);
        corner_ = XY(middle - (c * width - s * height) / 2, middle - (s * width + c * height) / 2);
        Paint(cells, Homography::Turned(corner_, cell, degrees), image_, print);
    }
    bool Search(CodePolarities polarity = BlackOnWhite)
    {
        search_->symbols.clear();
        search_->failure.Clear();
        search_->source = &image_;
        return dotCode_->Search({image_, 0, 1}, polarity, *search_);
    }
    bool Read(const SymbolCells& cells, double cell, double degrees = 0, const Print& print = dots)
    {
        Draw(cells, cell, degrees, print);
        return Search(print.ink > print.paper ? WhiteOnBlack : BlackOnWhite);
    }
    const SymbolRecord& Symbol() const { return search_->symbols.front(); }
    std::string Text() const { return search_->symbols.empty() ? "" : Symbol().text; }
    static SymbolCells Made(const char* name) { return SymbolCells(MadeNamed(name)); }

    std::unique_ptr<DotCodeSearch> dotCode_ = std::make_unique<DotCodeSearch>();
    std::unique_ptr<SymbolSearch> search_ = std::make_unique<SymbolSearch>();
    Image image_;
    XY corner_{0, 0};
};

} // namespace

TEST_F(DotCodeSearchTest, ReadsMadeSymbolsAtEveryAngle)
{
    search_->settings.identifier = true;
    for (const codewords::MadeSymbol& made : codewords::madeSymbols) {
        if (made.family != codewords::MadeFamily::DotCode) continue;
        for (int degrees = 0; degrees < 360; degrees += 15) {
            ASSERT_TRUE(Read(SymbolCells(made), 6, degrees)) << made.name << " at " << degrees;
            EXPECT_EQ(Text(), made.text);
        }
    }
}

TEST_F(DotCodeSearchTest, ReadsEverySize)
{
    std::string digits;
    for (int i = 0; i < 2000; ++i)
        digits.push_back(static_cast<char>('0' + i * i * 7 / 3 % 10));
    for (const auto& [rows, columns] :
         {std::pair{14, 9}, {9, 14}, {7, 20}, {30, 21}, {48, 67}, {20, 119}, {98, 99}, {120, 121}}) {
        ASSERT_TRUE(Read(EncodedDotCode(rows, columns, 1, digits), 5, 11)) << rows << " x " << columns;
        EXPECT_EQ(Text(), digits.substr(0, Text().size())) << rows << " x " << columns;
        EXPECT_EQ(Symbol().size, DotCode);
        EXPECT_EQ(Symbol().symbology, CodeDotCode);
    }
}

TEST_F(DotCodeSearchTest, ReadsDotsOfAllPitches)
{
    const SymbolCells cells = Made("two blocks");
    for (const double cell : {4.0, 5.0, 7.0, 10.0, 14.0}) // 5.7 to 20 pixels along the diagonal
        for (const int degrees : {3, 20, 45, 66}) {
            EXPECT_TRUE(Read(cells, cell, degrees)) << cell << " at " << degrees;
            EXPECT_NEAR(Symbol().cellSize, cell, 0.1);
        }
}

TEST_F(DotCodeSearchTest, ACloserLookReadsTinyFaintAndJoinedDots)
{
    const SymbolCells cells = Made("two blocks");
    dotCode_->SetEffort(1);
    for (const int degrees : {0, 18, 45, 72}) {
        EXPECT_TRUE(Read(cells, 3, degrees)) << degrees;
        EXPECT_TRUE(Read(cells, 6, degrees, {.ink = 170, .paper = 200, .dot = 0.8})) << degrees;
        EXPECT_TRUE(Read(cells, 6, degrees, {.ink = 40, .paper = 200, .dot = 1.2})) << degrees;
    }
}

TEST_F(DotCodeSearchTest, CornersAndPlaceAreThoseOfTheSymbol)
{
    const SymbolCells cells = Made("upright");
    ASSERT_TRUE(Read(cells, 8));
    const double right = corner_.X + 8 * cells.columns, bottom = corner_.Y + 8 * cells.rows;
    EXPECT_NEAR(Symbol().x, corner_.X, 1.5);
    EXPECT_NEAR(Symbol().y, corner_.Y, 1.5);
    EXPECT_NEAR(Symbol().width, 8 * cells.columns, 2);
    EXPECT_NEAR(Symbol().height, 8 * cells.rows, 2);
    EXPECT_NEAR(Symbol().angle, 0, 1);
    for (const XY wanted : {corner_, XY(right, corner_.Y), XY(right, bottom), XY(corner_.X, bottom)})
        EXPECT_TRUE(std::any_of(Symbol().corners.begin(), Symbol().corners.end(),
                                [&](XY p) { return std::hypot(p.X - wanted.X, p.Y - wanted.Y) < 2; }));
}

TEST_F(DotCodeSearchTest, MirroredAndLightSymbolsAreReadIfTheyAreEnabled)
{
    for (const char* name : {"upright", "lying, bytes"}) {
        const SymbolCells mirrored = Made(name).Mirrored();
        search_->settings.views = Straight;
        EXPECT_FALSE(Read(mirrored, 7, 25)) << name;
        search_->settings.views = AutoView;
        ASSERT_TRUE(Read(mirrored, 7, 25)) << name;
        EXPECT_EQ(Symbol().view, Mirrored);
    }
    ASSERT_TRUE(Read(Made("upright"), 7, 25, {.ink = 200, .paper = 40, .dot = 0.8}));
    EXPECT_EQ(Symbol().polarity, WhiteOnBlack);
    EXPECT_FALSE(Search(BlackOnWhite));
}

TEST_F(DotCodeSearchTest, ReadsWithHolesAndNoise)
{
    SymbolCells cells = Made("two blocks");
    std::mt19937 generator(3);
    for (int row = 1; row + 1 < cells.rows; ++row)
        for (int column = 1; column + 1 < cells.columns; ++column)
            if (cells(row, column) && generator() % 100 < 3) cells.Flip(row, column);
    Draw(cells, 6, 33);
    AddNoise(image_, 6);
    ASSERT_TRUE(Search());
    EXPECT_EQ(Text(), MadeNamed("two blocks").text.substr(3));
}

TEST_F(DotCodeSearchTest, ClutterInTheQuietZoneIsTrimmed)
{
    const SymbolCells symbol = Made("lying, bytes");
    SymbolCells cells(symbol.rows + 4, symbol.columns + 4);
    for (int row = 0; row < symbol.rows; ++row)
        for (int column = 0; column < symbol.columns; ++column)
            if (symbol(row, column)) cells.Flip(row + 2, column + 2);
    cells.Flip(10, 0);
    cells.Flip(0, 12);
    EXPECT_TRUE(Read(cells, 7, 10));
    search_->settings.clutteredQuietZone = false;
    EXPECT_FALSE(Read(cells, 7, 10));
    EXPECT_TRUE(Read(symbol, 7, 10));
}

TEST_F(DotCodeSearchTest, AnEmptyBorderIsReadOfObsoleteSymbols)
{
    // Digits that leave the last row without dots, the corners included.
    const int rows = 14, columns = 9;
    SymbolCells cells(rows, columns);
    std::string digits;
    const auto isEmpty = [&] {
        bool any = false;
        for (int column = 0; column < columns; ++column)
            any = any || cells(rows - 1, column);
        return !any;
    };
    int number = 0;
    do {
        digits = std::to_string(10000 + number++ % 10000).substr(1);
        cells = EncodedDotCode(rows, columns, number / 10000, digits, false);
    } while (!isEmpty() && number < 40000);
    ASSERT_LT(number, 40000);
    EXPECT_FALSE(Read(cells, 8));
    search_->settings.obsoleteDotCode = true;
    ASSERT_TRUE(Read(cells, 8));
    EXPECT_EQ(Text(), digits);
}

TEST_F(DotCodeSearchTest, ADeformationIsTakenOut)
{
    // Rows one and a half times as long as columns, and a shear that no square lattice has.
    const SymbolCells cells = Made("two blocks");
    const double longer = 1.6, shear = 75 * radian;
    const double cell = 6, along = cell * longer, x = cell * std::cos(shear), y = cell * std::sin(shear);
    Blank(image_, 700, 400, dots.paper);
    Paint(cells, Homography{{along, x, 40, 0, y, 40, 0, 0, 1}}.Inverse(), image_, dots);
    EXPECT_FALSE(Search());
    dotCode_->Correct(longer, 0, 1, shear);
    ASSERT_TRUE(Search());
    EXPECT_NEAR(Symbol().x, 40, 2);
    EXPECT_NEAR(Symbol().y, 40, 2);
    dotCode_->Correct(0, 0, 1, shear); // no deformation at all
    EXPECT_FALSE(Search());
    EXPECT_TRUE(Read(cells, 6));
}

TEST_F(DotCodeSearchTest, ReadsSeveralUntilItIsFull)
{
    const SymbolCells a = Made("upright"), b = EncodedDotCode(30, 21, 2, "13579");
    Blank(image_, 420, 260, dots.paper);
    Paint(a, Homography::Turned({30, 30}, 6), image_, dots);
    Paint(b, Homography::Turned({220, 30}, 6), image_, dots);
    search_->settings.maxDecoded = 4;
    ASSERT_TRUE(Search());
    ASSERT_EQ(search_->symbols.size(), 2u);
    EXPECT_NE(search_->symbols[0].text, search_->symbols[1].text);
    EXPECT_EQ(search_->failure.state, 0);
}

TEST_F(DotCodeSearchTest, TellsHowItWasSampled)
{
    const SymbolCells cells = Made("upright");
    search_->settings.checkQuality = true;
    ASSERT_TRUE(Read(cells, 8));
    const SampledSymbol& sampled = dotCode_->Sampled();
    EXPECT_EQ(sampled.rows * sampled.columns, cells.rows * cells.columns);
    int dark = 0;
    for (int row = 0; row < cells.rows; ++row)
        for (int column = 0; column < cells.columns; ++column)
            dark += cells(row, column);
    EXPECT_EQ(sampled.darkCells, dark);
    EXPECT_EQ(sampled.lightCells, cells.rows * cells.columns - dark);
    EXPECT_EQ(sampled.nodes.size(), static_cast<std::size_t>((sampled.rows + 1) * (sampled.columns + 1)));
    for (const XY center : sampled.centers) { // each in the middle of a cell
        const double x = (center.X - corner_.X) / 8 - 0.5, y = (center.Y - corner_.Y) / 8 - 0.5;
        EXPECT_LT(std::hypot(x - std::round(x), y - std::round(y)), 0.25);
    }
}

TEST_F(DotCodeSearchTest, ImagesWithoutASymbolHaveNone)
{
    Blank(image_, 36, 36);
    EXPECT_FALSE(Search());
    EXPECT_LT(search_->failure.state, 101);
    for (const int effort : {0, 1}) {
        dotCode_->SetEffort(effort);
        Blank(image_, 240, 180, 128);
        AddNoise(image_, 50, 5);
        EXPECT_FALSE(Search());
        // A lattice that is full is none.
        Blank(image_, 300, 300, 200);
        for (int y = 10; y < 290; ++y)
            for (int x = 10; x < 290; ++x)
                if (x % 8 < 4 && y % 8 < 4) image_.Row(y)[x] = 40;
        EXPECT_FALSE(Search());
    }
    for (const int size : {1, 2, 7}) {
        Blank(image_, size, size, 0);
        EXPECT_FALSE(Search());
    }
}

TEST_F(DotCodeSearchTest, MoreDotsThanAreKeptEndTheSearch)
{
    Blank(image_, 800, 800, 200);
    for (int y = 3; y < 797; ++y)
        for (int x = 3; x < 797; ++x)
            if (x % 6 < 3 && y % 6 < 3) image_.Row(y)[x] = 40;
    EXPECT_FALSE(Search());
    EXPECT_LT(search_->failure.state, 101);
    DotField field;
    EXPECT_FALSE(field.Find(image_, BlackOnWhite, Deformation(), DotRules()));
    EXPECT_EQ(field.Dots().size(), DotField::mostDots);
}

} // namespace Tesk::matrix
