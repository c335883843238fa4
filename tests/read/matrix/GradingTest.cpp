// What each damage of a printed symbol lowers, and what it leaves alone.
#include "read/matrix/Grading.h"

#include "read/codewords/QRTables.h"
#include "read/matrix/EncodedSymbols.h"
#include "read/matrix/Rendered.h"

#include <gtest/gtest.h>

#include <array>
#include <cmath>
#include <cstddef>
#include <initializer_list>
#include <memory>
#include <string>
#include <string_view>

namespace Tesk::matrix {

namespace {

/// The letters by their places.
enum Letter : std::size_t
{
    Overall = 0,
    Contrast = 2,
    GrowthH,
    GrowthV,
    Axial,
    Grid,
    Unused,
    Modulation,
    Margin,
    Patterns,
    Format,
    Version
};

/// A symbol printed on whole pixels, with the places of its cells as they are.
class GradingTest : public testing::Test
{
protected:
    static constexpr int cell = 10, quiet = 4;

    /// Prints cells as they are told and takes `sent` for what the reader made of them.
    void Print(const SymbolCells& cells, int ink = 0, int paper = 255, double dot = 0)
    {
        const int width = (cells.columns + 2 * quiet) * cell, height = (cells.rows + 2 * quiet) * cell;
        Blank(image_, width, height, paper);
        const double corner = quiet * cell - 0.5;
        Paint(cells, Homography::Turned({corner, corner}, cell), image_, {ink, paper, dot});
        Place(cells, corner, corner, cell, cell);
    }
    void Place(const SymbolCells& cells, double left, double top, double width, double height)
    {
        sampled_ = {};
        sampled_.rows = cells.rows;
        sampled_.columns = cells.columns;
        for (int row = 0; row <= cells.rows; ++row)
            for (int column = 0; column <= cells.columns; ++column) {
                sampled_.nodes.emplace_back(left + width * column, top + height * row);
                if (row == cells.rows || column == cells.columns) continue;
                sampled_.centers.emplace_back(left + width * (column + 0.5), top + height * (row + 0.5));
                ++(cells(row, column) ? sampled_.darkCells : sampled_.lightCells);
            }
    }
    /// Paints over one cell, or over one beside the symbol.
    void Stain(int row, int column, int level)
    {
        for (int y = 0; y < cell; ++y)
            for (int x = 0; x < cell; ++x)
                image_.Row((row + quiet) * cell + y)[(column + quiet) * cell + x] = static_cast<std::uint8_t>(level);
    }

    void ReadDataMatrix(const SymbolCells& cells, Sizes size)
    {
        const auto grid = std::make_unique<codewords::DataMatrixGrid>();
        for (int row = 0; row < cells.rows; ++row)
            for (int column = 0; column < cells.columns; ++column)
                grid->At(row, column) = cells(row, column) ? 0 : codewords::LightCell;
        ASSERT_EQ(reader_->ReadDataMatrix(*grid, size, AutoView, false), codewords::SymbolRead);
    }
    QualityGrades OfDataMatrix(CodePolarities polarity = BlackOnWhite)
    {
        return GradeDataMatrix({image_, sampled_, polarity, *reader_});
    }

    void ReadQR(const SymbolCells& cells, int version, int level, int mask)
    {
        const auto grid = std::make_unique<codewords::QRGrid>();
        for (int row = 0; row < cells.rows; ++row)
            for (int column = 0; column < cells.columns; ++column)
                grid->At(row, column) = cells(row, column) ? 0 : codewords::LightCell;
        format_ = {level, mask, codewords::QRFormatWord(level, mask)};
        ASSERT_EQ(reader_->ReadQR(*grid, version, format_, false), codewords::SymbolRead);
    }
    QualityGrades OfQR() { return GradeQR({image_, sampled_, BlackOnWhite, *reader_}, format_); }

    void ReadDotCode(const SymbolCells& cells, bool firstCell)
    {
        const auto hasDot = [&](int row, int column) { return cells(row, column); };
        ASSERT_EQ(reader_->ReadDotCode(cells.columns, cells.rows, firstCell, hasDot, false), codewords::SymbolRead);
    }
    QualityGrades OfDotCode(CodeViews view = Straight)
    {
        return GradeDotCode({image_, sampled_, BlackOnWhite, *reader_}, view);
    }

    /// All letters are A, save these, in their order; and the overall one is the worst that goes into it.
    struct Lowered
    {
        Letter letter;
        char to;
    };
    static void ExpectLetters(const QualityGrades& grades, std::string expected,
                              std::initializer_list<Lowered> lowered = {})
    {
        for (const Lowered& change : lowered) {
            expected[change.letter] = change.to;
            if (change.letter != GrowthH && change.letter != GrowthV)
                expected[Overall] = std::max(expected[Overall], change.to);
        }
        EXPECT_EQ(std::string(grades.letters.data()), expected);
    }
    static inline const std::string nine = "A AAAAAAAAA", eleven = "A AAAAAAAAAAA";

    Image image_;
    SampledSymbol sampled_;
    std::unique_ptr<codewords::SymbolReader> reader_ = std::make_unique<codewords::SymbolReader>();
    codewords::QRFormat format_;
    const SymbolCells small_{MadeNamed("digits")}, medium_{MadeNamed("Text, Structured Append")};
};

TEST_F(GradingTest, PerfectPrintsAreAllA)
{
    ReadDataMatrix(medium_, Size22);
    Print(medium_);
    const QualityGrades grades = OfDataMatrix();
    ExpectLetters(grades, nine);
    EXPECT_EQ(grades.symbolContrast, 1);
    EXPECT_EQ(grades.axialNonUniformity, 0);
    EXPECT_NEAR(grades.gridNonUniformity, 0, 1e-6);
    EXPECT_NEAR(grades.printGrowth, 0, 1e-6);
    EXPECT_EQ(grades.unusedError, 1);
    EXPECT_NEAR(grades.contrastUniformity, 2 * 127 / 255.0, 1e-6);
    Print(medium_, 255, 0);
    ExpectLetters(OfDataMatrix(WhiteOnBlack), nine);
    EXPECT_EQ(OfDataMatrix().letters[Unused], 'F'); // of the other polarity all is wrong
    EXPECT_EQ(OfDataMatrix().letters[Modulation], 'A');
    EXPECT_EQ(OfDataMatrix().letters[Margin], 'F');

    const SymbolCells regions(MadeNamed("two blocks, four regions"));
    ReadDataMatrix(regions, Size52);
    Print(regions);
    ExpectLetters(OfDataMatrix(), nine);

    const SymbolCells qr = EncodedQR(7, codewords::LevelQ, 3, "perfect");
    ReadQR(qr, 7, codewords::LevelQ, 3);
    Print(qr);
    ExpectLetters(OfQR(), eleven);

    const SymbolCells dots = EncodedDotCode(18, 17, 1, "0123456789");
    ReadDotCode(dots, true);
    Print(dots, 0, 255, 0.95);
    ExpectLetters(OfDotCode(), eleven);
}

TEST_F(GradingTest, AMirroredSymbolIsGradedAsItStands)
{
    // The diagonal through the corner of the solid sides is that of the mirror.
    SymbolCells seen(22, 22);
    for (int row = 0; row < 22; ++row)
        for (int column = 0; column < 22; ++column)
            if (medium_(21 - column, 21 - row)) seen.Flip(row, column);
    ReadDataMatrix(seen, Size22);
    ASSERT_EQ(reader_->View(), Mirrored);
    Print(seen);
    ExpectLetters(OfDataMatrix(), nine);

    for (const bool isWide : {false, true}) {
        const SymbolCells dots = isWide ? EncodedDotCode(17, 18, 2, "42") : EncodedDotCode(18, 17, 2, "42");
        SymbolCells flipped(dots.rows, dots.columns);
        for (int row = 0; row < dots.rows; ++row)
            for (int column = 0; column < dots.columns; ++column)
                if (dots(isWide ? dots.rows - 1 - row : row, isWide ? column : dots.columns - 1 - column))
                    flipped.Flip(row, column);
        ReadDotCode(dots, true);
        Print(flipped, 0, 255, 0.95);
        ExpectLetters(OfDotCode(Mirrored), eleven);
        EXPECT_EQ(OfDotCode().letters[Margin], 'F');
    }
}

TEST_F(GradingTest, ContrastHasItsEdges)
{
    struct Case
    {
        int contrast;
        char letter;
    };
    ReadDataMatrix(small_, Size10);
    for (const auto [contrast, letter] :
         {Case{179, 'A'}, {178, 'B'}, {141, 'B'}, {140, 'C'}, {102, 'C'}, {101, 'D'}, {51, 'D'}, {50, 'F'}}) {
        SCOPED_TRACE(contrast);
        Print(small_, 40, 40 + contrast);
        const QualityGrades grades = OfDataMatrix();
        ExpectLetters(grades, nine, {{Contrast, letter}});
        EXPECT_FLOAT_EQ(grades.symbolContrast, static_cast<float>(contrast) / 255);
    }
    // One level has no cells.
    Print(small_, 100, 100);
    ExpectLetters(OfDataMatrix(), nine,
                  {{Contrast, 'F'}, {Unused, 'F'}, {Modulation, 'F'}, {Margin, 'F'}, {Patterns, 'F'}});
}

TEST_F(GradingTest, ThinPrintLowersItsLettersAndThickPrintOnlyThoseOfQR)
{
    const auto shave = [&](const SymbolCells& cells, int pixels, bool thin) {
        Print(cells);
        for (int row = 0; row < cells.rows; ++row)
            for (int column = 0; column < cells.columns; ++column) {
                if (cells(row, column) != thin) continue;
                for (int i = 0; i < cell; ++i)
                    for (int j = 0; j < pixels; ++j)
                        image_.Row((row + quiet) * cell + i)[(column + quiet) * cell + j] = thin ? 255 : 0;
            }
    };
    const auto expected = [&](const SymbolCells& cells, int pixels, bool thin) {
        const double left = 10.0 * (10 - pixels);
        int dark = 0;
        for (int i = 0; i < cells.rows * cells.columns; ++i)
            dark += cells.dark[static_cast<std::size_t>(i)];
        const int light = cells.rows * cells.columns - dark;
        const double ink = thin ? dark * left : 100.0 * dark + light * (100 - left);
        const double inkSide = std::sqrt(ink / dark);
        const double paperSide = std::sqrt((100.0 * (dark + light) - ink) / light);
        return (paperSide / (inkSide + paperSide) - 0.5) / 0.15;
    };
    ReadDataMatrix(medium_, Size22);
    shave(medium_, 3, true);
    QualityGrades grades = OfDataMatrix();
    EXPECT_NEAR(grades.printGrowth, expected(medium_, 3, true), 1e-5);
    EXPECT_EQ(grades.letters[GrowthH], grades.printGrowth <= 0.5 ? 'A' : grades.printGrowth <= 0.7 ? 'B' : 'C');
    EXPECT_GT(grades.printGrowth, 0.5);
    EXPECT_EQ(grades.letters[GrowthH], grades.letters[GrowthV]);
    EXPECT_EQ(grades.letters[Contrast], 'A');
    EXPECT_EQ(grades.letters[Unused], 'A');
    EXPECT_EQ(grades.letters[Overall], 'A');

    shave(medium_, 4, false);
    grades = OfDataMatrix();
    EXPECT_NEAR(grades.printGrowth, expected(medium_, 4, false), 1e-5);
    EXPECT_LT(grades.printGrowth, -0.5);
    EXPECT_EQ(grades.letters[GrowthH], 'A');
    EXPECT_EQ(grades.letters[Unused], 'A');

    const SymbolCells qr = EncodedQR(2, codewords::LevelM, 5, "growth");
    ReadQR(qr, 2, codewords::LevelM, 5);
    shave(qr, 3, false);
    grades = OfQR();
    EXPECT_NEAR(grades.printGrowth, expected(qr, 3, false), 1e-5);
    EXPECT_NE(grades.letters[GrowthH], 'A');
    EXPECT_EQ(grades.letters[Overall], 'A');
}

TEST_F(GradingTest, StretchedAndBentGridsLowerTheirLettersAlone)
{
    struct Case
    {
        double width, height;
        char letter;
    };
    ReadDataMatrix(small_, Size10);
    // Cells of 48.5 and 51.5 pixels are 0.06 apart, the edge itself.
    for (const auto [width, height, letter] : {Case{48.5, 51.5, 'A'},
                                               {51.5, 48.5, 'A'},
                                               {48.45, 51.5, 'B'},
                                               {48, 52, 'B'},
                                               {47.95, 52, 'C'},
                                               {47.5, 52.5, 'C'},
                                               {47.45, 52.5, 'D'},
                                               {47, 53, 'D'},
                                               {46.95, 53, 'F'}}) {
        SCOPED_TRACE(width);
        Blank(image_, 640, 640, 255);
        const double right = 49.5 + 10 * width, bottom = 49.5 + 10 * height;
        Paint(small_,
              Homography::Between({XY(49.5, 49.5), XY(right, 49.5), XY(right, bottom), XY(49.5, bottom)}, 10, 10),
              image_, {0, 255});
        Place(small_, 49.5, 49.5, width, height);
        const QualityGrades grades = OfDataMatrix();
        ExpectLetters(grades, nine, {{Axial, letter}});
        EXPECT_NEAR(grades.axialNonUniformity, 2 * std::abs(width - height) / (width + height), 1e-6);
    }

    Print(small_);
    const XY straight = sampled_.Node(4, 7);
    for (const auto [dx, dy, letter] : {Case{3, -4, 'A'}, {0, 5.5, 'B'}, {-6, 6, 'C'}, {6, 8, 'D'}, {9, 6, 'F'}}) {
        SCOPED_TRACE(dx);
        sampled_.nodes[4 * 11 + 7] = straight + XY(dx, dy);
        const QualityGrades grades = OfDataMatrix();
        ExpectLetters(grades, nine, {{Grid, letter}});
        EXPECT_NEAR(grades.gridNonUniformity, std::hypot(dx, dy) / std::sqrt(200), 1e-6);
    }
}

TEST_F(GradingTest, DamagedBordersLowerTheFixedPatternsOfADataMatrix)
{
    ReadDataMatrix(medium_, Size22);
    Print(medium_);
    const auto expect = [&](std::initializer_list<std::array<int, 2>> wrong, char letter) {
        SCOPED_TRACE(testing::Message() << (*wrong.begin())[0] << ", " << (*wrong.begin())[1]);
        for (const auto [row, column] : wrong)
            Stain(row, column, medium_(row, column) ? 255 : 0);
        ExpectLetters(OfDataMatrix(), nine, {{Patterns, letter}});
        for (const auto [row, column] : wrong)
            Stain(row, column, medium_(row, column) ? 0 : 255);
    };
    expect({{9, 0}}, 'B'); // 1 of 22: at most 9%
    expect({{21, 9}}, 'B');
    expect({{9, 0}, {10, 0}}, 'C');                       // 2 of 22 are 9.09%
    expect({{9, 0}, {10, 0}, {11, 0}}, 'D');              // 13.6%
    expect({{9, 0}, {14, 0}}, 'C');                       // 4 good cells between
    expect({{9, 0}, {13, 0}}, 'F');                       // 3
    expect({{21, 9}, {21, 10}, {21, 11}, {21, 12}}, 'F'); // a long gap
    expect({{5, -1}}, 'B');                               // the quiet zones
    expect({{22, 5}, {22, 6}, {22, 7}}, 'D');             // 3 of 23
    expect({{22, 5}, {22, 6}, {22, 7}, {22, 8}}, 'F');    // 17.4%
    expect({{5, 21}}, 'B');                               // the clock tracks
    expect({{0, 3}, {0, 9}}, 'C');
    expect({{0, 3}, {0, 5}, {0, 7}}, 'F'); // three of five neighbours
    expect({{-1, 5}, {5, 22}}, 'A');       // what lies beside a clock track is no pattern

    const SymbolCells regions(MadeNamed("two blocks, four regions"));
    ReadDataMatrix(regions, Size52);
    Print(regions);
    for (const auto& [row, column] : {std::array{10, 26}, {25, 40}, {40, 25}, {26, 10}}) {
        Stain(row, column, regions(row, column) ? 255 : 0);
        ExpectLetters(OfDataMatrix(), nine, {{Patterns, 'B'}}); // 1 of 26
        Stain(row, column, regions(row, column) ? 0 : 255);
    }
}

TEST_F(GradingTest, PaleCellsLowerModulationAndWrongOnesTheMarginAndTheCorrection)
{
    // The 5 check words of the smallest size correct 2 words.
    ReadDataMatrix(small_, Size10);
    const auto places = std::make_unique<codewords::DataMatrixCells>();
    places->Prepare(Size10);
    const auto cellOf = [&](int word, bool dark = true) {
        for (int row = 0; row < 10; ++row)
            for (int column = 0; column < 10; ++column)
                if (places->At(row, column).IsData() && places->At(row, column).Word() == word &&
                    small_(row, column) == dark)
                    return std::array{row, column};
        return std::array{0, 0};
    };
    const auto [row, column] = cellOf(2);
    const auto [otherRow, otherColumn] = cellOf(4);

    Print(small_, 0, 200);
    Stain(row, column, 60); // the threshold stays between 61 and 200, at 130
    QualityGrades grades = OfDataMatrix();
    EXPECT_NEAR(grades.contrastUniformity, 2 * (130 - 60) / (grades.symbolContrast * 255), 1e-5);
    EXPECT_GE(grades.contrastUniformity, 0.5);
    ExpectLetters(grades, nine);

    Stain(row, column, 155); // light for dark: the threshold is at 78
    grades = OfDataMatrix();
    ExpectLetters(grades, nine, {{Unused, 'B'}, {Margin, 'B'}});
    EXPECT_FLOAT_EQ(grades.unusedError, 0.5f);
    Stain(otherRow, otherColumn, 200);
    grades = OfDataMatrix();
    ExpectLetters(grades, nine, {{Unused, 'F'}, {Margin, 'F'}});
    EXPECT_EQ(grades.unusedError, 0);

    // A dark cell at 90 and a light one of another word at 160, with the threshold between them at 125: both words
    // have level 2, which no correction makes better.
    const auto [paleRow, paleColumn] = cellOf(4, false);
    Print(small_, 0, 200);
    Stain(row, column, 90);
    Stain(paleRow, paleColumn, 160);
    grades = OfDataMatrix();
    ExpectLetters(grades, nine, {{Modulation, 'C'}, {Margin, 'C'}});
    EXPECT_NEAR(grades.contrastUniformity, 2 * 35 / (grades.symbolContrast * 255), 1e-5);
    EXPECT_EQ(grades.unusedError, 1);
}

TEST_F(GradingTest, DamagedPatternsOfQRHaveTheirLetters)
{
    const SymbolCells cells = EncodedQR(7, codewords::LevelQ, 3, "patterns");
    ReadQR(cells, 7, codewords::LevelQ, 3);
    Print(cells);
    const auto expect = [&](std::initializer_list<std::array<int, 2>> wrong, Letter which, char letter) {
        SCOPED_TRACE(testing::Message() << wrong.size() << ": " << (*wrong.begin())[0] << ", " << (*wrong.begin())[1]);
        for (const auto [row, column] : wrong)
            Stain(row, column, cells(row, column) ? 255 : 0);
        ExpectLetters(OfQR(), eleven, {{which, letter}});
        for (const auto [row, column] : wrong)
            Stain(row, column, cells(row, column) ? 0 : 255);
    };
    expect({{3, 3}}, Patterns, 'B'); // the finder patterns
    expect({{7, 7}, {0, 0}}, Patterns, 'C');
    expect({{2, 40}, {3, 41}, {4, 42}}, Patterns, 'D');
    expect({{40, 2}, {41, 3}, {42, 4}, {37, 7}}, Patterns, 'F');
    expect({{3, 3}, {2, 40}, {40, 2}}, Patterns, 'B'); // the worst of them, not all
    expect({{6, 10}}, Patterns, 'B');                  // the timing patterns have 29 cells
    expect({{10, 6}, {16, 6}}, Patterns, 'B');
    expect({{10, 6}, {16, 6}, {30, 6}}, Patterns, 'C');
    expect({{6, 10}, {6, 15}, {6, 28}, {6, 33}}, Patterns, 'D');
    expect({{6, 10}, {6, 12}, {6, 14}}, Patterns, 'F');
    expect({{22, 22}}, Patterns, 'C'); // 1 of 6 alignment patterns
    expect({{22, 22}, {37, 38}}, Patterns, 'F');

    const int side = cells.rows;
    const auto format = [&](int copy, int bit) {
        const codewords::QRCell cell = codewords::QRFormatCell(side, copy, bit);
        return std::array{cell.row, cell.column};
    };
    const auto version = [&](int copy, int bit) {
        const codewords::QRCell cell = codewords::QRVersionCell(side, copy, bit);
        return std::array{cell.row, cell.column};
    };
    expect({format(0, 3)}, Format, 'A');                               // 2 of 3 bits are left
    expect({format(0, 3), format(0, 14)}, Format, 'B');                // D and A
    expect({format(1, 3), format(1, 13), format(1, 14)}, Format, 'C'); // F and A
    expect({format(0, 0), format(0, 1), format(1, 0), format(1, 1)}, Format, 'D');
    expect({version(0, 0), version(0, 17)}, Version, 'B');
    expect({version(0, 0), version(0, 1), version(0, 2), version(1, 0), version(1, 1), version(1, 2)}, Version, 'F');
}

TEST_F(GradingTest, ClutterBesideADotCodeAndLostDotsOfItsBorderLowerItsPatterns)
{
    const SymbolCells cells = EncodedDotCode(18, 17, 1, "0123456789");
    ReadDotCode(cells, true);
    const auto print = [&] { Print(cells, 0, 255, 0.95); };
    // 3 cells around 18 x 17 are 246; 7 of them are 2.8%, 8 are 3.3%, 13 are 5.3%, 18 are 7.3%.
    struct Case
    {
        int marks;
        char letter;
    };
    for (const auto [marks, letter] : {Case{1, 'B'}, {7, 'B'}, {8, 'C'}, {13, 'D'}, {18, 'F'}}) {
        print();
        for (int i = 0; i < marks; ++i)
            Stain(i % 18, i < 18 ? -2 : 19, 0);
        ExpectLetters(OfDotCode(), eleven, {{Patterns, letter}});
    }
    print();
    for (int i = 0; i < 18; ++i)
        Stain(i, -4, 0); // farther than the quiet zone
    ExpectLetters(OfDotCode(), eleven);

    // A dot of words in the first row.
    const codewords::DotCodeCells& places = reader_->DotCode();
    const int dots = codewords::DotCodeCells::FirstDot(codewords::DotCodeBlocks::Of(places.Words()).words);
    int border = 0, lost = -1;
    for (int i = 0; i < dots; ++i) {
        const codewords::DotPlace place = places.Dot(i);
        border += place.row == 0 || place.column == 0 || place.row == 17 || place.column == 16;
        if (place.row == 0 && cells(0, place.column)) lost = i;
    }
    ASSERT_GE(lost, 0);
    print();
    Stain(0, places.Dot(lost).column, 255);
    const double share = 1.0 / border;
    EXPECT_EQ(OfDotCode().letters[Patterns], share <= 0.02 ? 'C' : share <= 0.03 ? 'D' : 'F');
    EXPECT_LT(OfDotCode().unusedError, 1);
}

TEST_F(GradingTest, DotCodesUseUpTheirCorrection)
{
    const SymbolCells cells = EncodedDotCode(18, 17, 1, "0123456789");
    ReadDotCode(cells, true);
    const codewords::DotCodeCells& places = reader_->DotCode();
    const int words = codewords::DotCodeBlocks::Of(places.Words()).words;
    const int check = words / 3 + 2;
    for (int lost = 0; lost <= check; ++lost) {
        Print(cells, 0, 255, 0.95);
        for (int word = 1; word <= lost; ++word)
            for (int i = 0; i < 9; ++i) {
                const codewords::DotPlace place = places.Dot(codewords::DotCodeCells::FirstDot(word) + i);
                Stain(place.row, place.column, 255); // no dot at all is no word: an erasure
            }
        EXPECT_FLOAT_EQ(OfDotCode().unusedError, std::max(0.0f, 1 - static_cast<float>(lost) / (check - 2))) << lost;
    }
}

TEST_F(GradingTest, SymbolsAtTheBorderOfTheImageAreGraded)
{
    // The pixels at the border stand for those outside: the quiet zones beside the solid sides become dark.
    ReadDataMatrix(small_, Size10);
    Blank(image_, 100, 100, 255);
    Paint(small_, Homography::Turned({-0.5, -0.5}, cell), image_, {0, 255});
    Place(small_, -0.5, -0.5, cell, cell);
    ExpectLetters(OfDataMatrix(), nine, {{Patterns, 'F'}});
    // A symbol that reaches out of the image, however far, is graded by what is there.
    Place(small_, -40.5, 60, cell, cell);
    EXPECT_EQ(std::string(OfDataMatrix().letters.data()).size(), 11u);
    Place(small_, 1e6, -1e6, cell, cell);
    EXPECT_EQ(OfDataMatrix().letters[Overall], 'F');
    sampled_.centers.clear();
    EXPECT_STREQ(OfDataMatrix().letters.data(), "F");
}

} // namespace

} // namespace Tesk::matrix
