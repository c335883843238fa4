// QR symbols are found and read in all sizes, directions and polarities, and with parts destroyed.
#include "read/matrix/QRSearch.h"

#include "read/matrix/EncodedSymbols.h"

#include <gtest/gtest.h>

#include <cmath>
#include <memory>
#include <numbers>

namespace Tesk::matrix {

namespace {

class QRSearchTest : public testing::Test
{
protected:
    /// Draws a symbol with a margin of 4 cells, its middle in that of the image, and searches there.
    bool Read(const SymbolCells& cells, double cell, double degrees = 0, const Print& print = {})
    {
        const double radians = degrees * std::numbers::pi / 180, half = cells.columns * cell / 2;
        const double turn = std::abs(std::cos(radians)) + std::abs(std::sin(radians));
        const int side = static_cast<int>((cells.columns + 8) * cell * turn) + 1;
        const double middle = (side - 1) / 2.0, c = std::cos(radians) * half, s = std::sin(radians) * half;
        Blank(image_, side, side, print.paper);
        Paint(cells, Homography::Turned({middle - c + s, middle - s - c}, cell, degrees), image_, print);
        return Search();
    }
    /// The corners are those of the symbol in the image.
    bool Read(const SymbolCells& cells, int width, int height, const std::array<XY, 4>& corners)
    {
        Blank(image_, width, height);
        Paint(cells, Homography::Between(corners, cells.columns, cells.rows), image_);
        return Search();
    }
    bool Search()
    {
        search_->symbols.clear();
        search_->failure.Clear();
        search_->source = &image_;
        return qr_->Search({image_, 0, 1}, *search_);
    }
    const SymbolRecord& Symbol() const { return search_->symbols.front(); }
    std::string Text() const { return search_->symbols.empty() ? "" : Symbol().text; }

    std::unique_ptr<QRSearch> qr_ = std::make_unique<QRSearch>();
    std::unique_ptr<SymbolSearch> search_ = std::make_unique<SymbolSearch>();
    Image image_;
};

} // namespace

TEST_F(QRSearchTest, ReadsEveryVersion)
{
    for (int version = 1; version <= codewords::maximumQRVersion; ++version) {
        const int level = version % 4;
        const std::string text = LongText(static_cast<std::size_t>(codewords::BlocksOfQR(version, level).Data() - 3));
        ASSERT_TRUE(Read(EncodedQR(version, level, version % 8, text), 2.7, 3)) << version;
        EXPECT_EQ(Text(), text) << version;
        EXPECT_EQ(Symbol().size, Version1 + version - 1);
        EXPECT_EQ(Symbol().symbology, CodeQR);
        EXPECT_NEAR(Symbol().cellSize, 2.7, 0.05) << version;
        EXPECT_EQ(search_->failure.state, 0);
    }
}

TEST_F(QRSearchTest, ReadsInEveryDirectionAndTellsIt)
{
    for (const int version : {1, 3, 10, 25}) {
        const std::string text = LongText(13);
        const SymbolCells cells = EncodedQR(version, codewords::LevelM, 2, text);
        for (int degrees = -175; degrees <= 180; degrees += version < 10 ? 5 : 45) {
            ASSERT_TRUE(Read(cells, 4, degrees)) << version << " at " << degrees;
            EXPECT_EQ(Text(), text);
            const double off = std::remainder(Symbol().angle - degrees, 360);
            EXPECT_NEAR(off, 0, 1) << version;
            EXPECT_NEAR(Symbol().width, 4 * cells.columns, 3);
        }
    }
}

TEST_F(QRSearchTest, CornersAreThoseOfTheSymbol)
{
    const SymbolCells cells = EncodedQR(5, codewords::LevelL, 0, "corners");
    const std::array<XY, 4> corners{XY(40, 50), XY(230, 60), XY(250, 240), XY(30, 220)};
    ASSERT_TRUE(Read(cells, 290, 290, corners));
    for (std::size_t i = 0; i < 4; ++i) {
        EXPECT_NEAR(Symbol().corners[i].X, corners[i].X, 2.5) << i;
        EXPECT_NEAR(Symbol().corners[i].Y, corners[i].Y, 2.5) << i;
    }
    EXPECT_EQ(Symbol().x, Symbol().corners[0].X);
    EXPECT_EQ(Symbol().y, Symbol().corners[0].Y);
}

TEST_F(QRSearchTest, FollowsPerspective)
{
    for (const int version : {1, 2, 6, 7, 14}) {
        const SymbolCells cells = EncodedQR(version, codewords::LevelM, 5, "perspective");
        for (const double narrow : {0.05, 0.1, 0.15}) {
            const double side = 5 * cells.columns, d = narrow * side;
            const int size = static_cast<int>(side + 60);
            EXPECT_TRUE(Read(cells, size, size,
                             {XY(30 + d, 30), XY(30 + side - d, 30), XY(30 + side, 30 + side), XY(30, 30 + side)}))
                << version << " narrower by " << narrow;
            EXPECT_EQ(Text(), "perspective");
        }
    }
}

TEST_F(QRSearchTest, MirroredAndInvertedSymbolsAreReadIfTheyAreEnabled)
{
    const SymbolCells cells = EncodedQR(4, codewords::LevelQ, 1, "seen otherwise"), mirrored = cells.Mirrored();
    EXPECT_FALSE(Read(mirrored, 5));
    search_->settings.views = Mirrored;
    EXPECT_FALSE(Read(cells, 5));
    ASSERT_TRUE(Read(mirrored, 5, 30));
    EXPECT_EQ(Text(), "seen otherwise");
    EXPECT_EQ(Symbol().view, Mirrored);

    search_->settings.views = Straight;
    const Print light{.ink = 220, .paper = 30};
    EXPECT_FALSE(Read(cells, 5, 0, light));
    search_->settings.polarities = WhiteOnBlack;
    EXPECT_FALSE(Read(cells, 5));
    ASSERT_TRUE(Read(cells, 5, 70, light));
    EXPECT_EQ(Symbol().polarity, WhiteOnBlack);
    EXPECT_EQ(Text(), "seen otherwise");
}

TEST_F(QRSearchTest, OneFinderPatternMayBeDestroyedButNotTwo)
{
    const SymbolCells whole = EncodedQR(3, codewords::LevelH, 3, "two are enough");
    const auto destroy = [](SymbolCells& cells, int row, int column) {
        for (int i = 0; i < 7; ++i)
            for (int j = 0; j < 7; ++j)
                if (cells(row + i, column + j) != ((i + j) % 2 == 0)) cells.Flip(row + i, column + j);
    };
    const int last = whole.columns - 7;
    for (const auto& [row, column] : {std::pair{0, 0}, {0, last}, {last, 0}}) {
        SymbolCells cells = whole;
        destroy(cells, row, column);
        EXPECT_TRUE(Read(cells, 5)) << row << " " << column;
        EXPECT_EQ(Text(), "two are enough");
    }
    SymbolCells cells = whole;
    destroy(cells, 0, 0);
    destroy(cells, 0, last);
    EXPECT_FALSE(Read(cells, 5));
    EXPECT_EQ(search_->failure.state, 100); // no pair
}

TEST_F(QRSearchTest, TheOtherTimingLineDecides)
{
    SymbolCells cells = EncodedQR(8, codewords::LevelH, 3, "timing");
    for (int i = 8; i < cells.columns - 8; ++i)
        if (cells(6, i) != ((i / 3) % 2 == 0)) cells.Flip(6, i);
    EXPECT_TRUE(Read(cells, 4));
    EXPECT_EQ(Text(), "timing");
}

TEST_F(QRSearchTest, AnAlignmentPatternMayBeMissing)
{
    const SymbolCells whole = EncodedQR(7, codewords::LevelQ, 6, "alignment");
    for (const auto& [row, column] : {std::pair{22, 22}, {38, 38}, {22, 38}, {6, 22}}) {
        SymbolCells cells = whole;
        for (int i = -2; i <= 2; ++i)
            for (int j = -2; j <= 2; ++j)
                if (cells(row + i, column + j)) cells.Flip(row + i, column + j);
        EXPECT_TRUE(Read(cells, 5, 8)) << row << " " << column;
        EXPECT_EQ(Text(), "alignment");
    }
}

TEST_F(QRSearchTest, FindsAnAlignmentPatternThatIsOffItsPlace)
{
    // A bend that no perspective has: the last quarter of the symbol moved by one and a half cells.
    const SymbolCells cells = EncodedQR(14, codewords::LevelH, 0, LongText(194));
    ASSERT_TRUE(Read(cells, 6));
    const std::string text = Text();
    Image straight;
    straight = image_;
    const double bend = 9, top = 4 * 6, side = 6 * cells.columns;
    for (int y = 0; y < image_.Height; ++y) {
        const double at = (y - top) / side, shift = bend * 4 * at * (1 - at);
        for (int x = 0; x < image_.Width; ++x) {
            const int from = std::clamp(static_cast<int>(std::lround(x - shift)), 0, straight.Width - 1);
            image_.Row(y)[x] = straight.Row(y)[from];
        }
    }
    ASSERT_TRUE(Search());
    EXPECT_EQ(Text(), text);
}

TEST_F(QRSearchTest, ReadsSeveralUntilItIsFull)
{
    const SymbolCells a = EncodedQR(1, codewords::LevelL, 0, "left"), b = EncodedQR(2, codewords::LevelL, 4, "right");
    Blank(image_, 320, 160);
    Paint(a, Homography::Turned({30, 30}, 4), image_);
    Paint(b, Homography::Turned({170, 30}, 4), image_);
    search_->settings.maxDecoded = 5;
    ASSERT_TRUE(Search());
    ASSERT_EQ(search_->symbols.size(), 2u);
    EXPECT_NE(search_->symbols[0].text, search_->symbols[1].text);
    search_->settings.maxDecoded = 1;
    ASSERT_TRUE(Search());
    EXPECT_EQ(search_->symbols.size(), 1u);
}

TEST_F(QRSearchTest, FinderPatternsToldAreTaken)
{
    const SymbolCells cells = EncodedQR(2, codewords::LevelM, 2, "preset");
    const double rung = 1.5; // the image is two thirds of the source
    Blank(image_, 220, 220);
    Paint(cells, Homography::Turned({40, 40}, 4), image_);
    const auto place = [&](int row, int column) {
        return Site(static_cast<int>(rung * (40 + 4 * column + 14)), static_cast<int>(rung * (40 + 4 * row + 14)));
    };
    qr_->Preset({place(0, 0), place(0, 18), place(18, 0)}, static_cast<int>(rung * 28));
    const auto search = [&] {
        search_->symbols.clear();
        return qr_->Search({image_, 1, rung}, *search_);
    };
    ASSERT_TRUE(search());
    EXPECT_EQ(Text(), "preset");
    EXPECT_NEAR(Symbol().x, rung * 40, 4);
    qr_->Preset({place(0, 0), place(0, 10), place(10, 0)}, static_cast<int>(rung * 28));
    EXPECT_FALSE(search());
    qr_->EndPreset();
    EXPECT_TRUE(search());
}

TEST_F(QRSearchTest, TellsHowItWasSampled)
{
    const SymbolCells cells = EncodedQR(2, codewords::LevelM, 2, "graded");
    search_->settings.checkQuality = true;
    ASSERT_TRUE(Read(cells, 5));
    const SampledSymbol& sampled = qr_->Sampled();
    ASSERT_EQ(sampled.rows, 25);
    ASSERT_EQ(sampled.columns, 25);
    int dark = 0;
    for (int row = 0; row < 25; ++row)
        for (int column = 0; column < 25; ++column) {
            const XY center = sampled.Center(row, column);
            EXPECT_LT(std::hypot(center.X - 19.5 - 5 * column - 2.5, center.Y - 19.5 - 5 * row - 2.5), 1.5);
            EXPECT_EQ(qr_->Cells().IsDark(row, column), cells(row, column));
            dark += cells(row, column);
        }
    EXPECT_EQ(sampled.darkCells, dark);
    EXPECT_EQ(sampled.lightCells, 625 - dark);
    EXPECT_EQ(sampled.nodes.size(), 26u * 26u);
    EXPECT_EQ(qr_->Version(), 2);
    EXPECT_EQ(qr_->Format().level, codewords::LevelM);
    EXPECT_FALSE(qr_->Cells().IsDark(-4, -4));
}

TEST_F(QRSearchTest, ReadsByAThreshold)
{
    const SymbolCells cells = EncodedQR(2, codewords::LevelM, 2, "threshold");
    search_->settings.adaptiveThreshold = false;
    EXPECT_TRUE(Read(cells, 4, 0, {.ink = 100, .paper = 140}));
    search_->settings.threshold = 120;
    EXPECT_TRUE(Read(cells, 4, 0, {.ink = 100, .paper = 140}));
    search_->settings.threshold = 90;
    EXPECT_FALSE(Read(cells, 4, 0, {.ink = 100, .paper = 140}));
}

TEST_F(QRSearchTest, FindsNoMoreFinderPatternsThanItsListHolds)
{
    const SymbolCells whole = EncodedQR(1, codewords::LevelL, 0, "");
    SymbolCells finder(7, 7);
    for (int row = 0; row < 7; ++row)
        for (int column = 0; column < 7; ++column)
            if (whole(row, column)) finder.Flip(row, column);
    Blank(image_, 640, 640);
    for (int row = 0; row < 15; ++row)
        for (int column = 0; column < 15; ++column)
            for (int y = 0; y < 28; ++y)
                for (int x = 0; x < 28; ++x)
                    if (finder(y / 4, x / 4)) image_.Row(8 + 42 * row + y)[8 + 42 * column + x] = 20;
    FinderPatterns patterns;
    BinaryImage binary;
    binary.BinarizeBelow(image_, 128);
    patterns.Search(binary);
    EXPECT_EQ(patterns.List().size(), FinderPatterns::mostFinders);
    EXPECT_FALSE(Search());
}

TEST_F(QRSearchTest, ImagesWithoutASymbolHaveNone)
{
    Blank(image_, 36, 36);
    EXPECT_FALSE(Search());
    EXPECT_EQ(search_->failure.state, 100);
    for (unsigned seed = 1; seed <= 4; ++seed) {
        Blank(image_, 200, 150, 128);
        AddNoise(image_, 60, seed);
        EXPECT_FALSE(Search());
    }
    // The smallest symbol that an image of 36 x 36 holds with its margin, a pixel a cell, is too fine.
    Blank(image_, 36, 36);
    Paint(EncodedQR(1, codewords::LevelL, 0, "x"), Homography::Turned({7.5, 7.5}, 1), image_);
    Search();
    for (const int size : {1, 2, 7}) {
        Blank(image_, size, size, 0);
        EXPECT_FALSE(Search());
    }
}

TEST_F(QRSearchTest, TooManyErrorsAreToldAndNotRead)
{
    SymbolCells cells = EncodedQR(2, codewords::LevelL, 0, "damaged beyond");
    for (int row = 9; row < 17; ++row)
        for (int column = 0; column < 25; ++column)
            if (column != 6) cells.Flip(row, column);
    EXPECT_FALSE(Read(cells, 5));
    EXPECT_EQ(search_->failure.state, 103);
}

} // namespace Tesk::matrix
