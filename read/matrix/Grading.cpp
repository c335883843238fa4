// Grades the print of symbols of each family: their words, their correction and their fixed patterns.
#include "read/matrix/Grading.h"

#include "read/codewords/CellGrid.h"
#include "read/codewords/DataMatrixText.h"
#include "read/codewords/DotCodeText.h"
#include "read/codewords/QRText.h"
#include "read/matrix/CellReflectance.h"
#include "read/matrix/FixedPatterns.h"
#include "read/matrix/ReflectanceGrades.h"
#include "read/matrix/SymbolGrader.h"

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <memory>
#include <span>
#include <vector>

namespace Tesk::matrix {

namespace {

/// Of the aperture: a share of a cell's side.
constexpr double apertureShare = 0.8, apertureShareOfQR = 0.85;

bool CanGrade(const SampledSymbol& s, int rows, int columns)
{
    const auto r = static_cast<std::size_t>(std::max(rows, 0)), c = static_cast<std::size_t>(std::max(columns, 0));
    return r > 0 && c > 0 && s.rows == rows && s.columns == columns && s.centers.size() == r * c &&
           s.nodes.size() == (r + 1) * (c + 1);
}

/// The cells of a square symbol as a grid for the reader.
template <typename Grid>
std::unique_ptr<Grid> GridOf(const SymbolGrader& grader, int side)
{
    auto grid = std::make_unique<Grid>();
    for (int row = 0; row < side; ++row)
        for (int column = 0; column < side; ++column)
            grid->At(row, column) = grader.IsDark(row, column) ? 0 : codewords::LightCell;
    return grid;
}

std::vector<std::uint16_t> WordsFor(int count)
{
    return std::vector<std::uint16_t>(static_cast<std::size_t>(count));
}

/// The levels of the words that lie in the modules of a square symbol; `inverts(row, column)` tells of its mask.
template <typename Cells, typename Inverts>
WordLevels LevelsOf(const SymbolGrader& grader, const Cells& cells, int side, std::span<const std::uint16_t> right,
                    Inverts inverts)
{
    WordLevels levels(static_cast<int>(right.size()), grader.Scale());
    for (int row = 0; row < side; ++row)
        for (int column = 0; column < side; ++column) {
            const codewords::SymbolModule module = cells.At(row, column);
            if (!module.IsData()) continue;
            const bool bit = (right[static_cast<std::size_t>(module.Word())] >> module.Bit() & 1) != 0;
            levels.Add(module.Word(), grader.ToneOf(row, column), bit != inverts(row, column));
        }
    return levels;
}

// DotCode.

/// What the dots of a DotCode show.
struct DotLevels
{
    WordLevels words;
    int borderDots = 0, wrongBorderDots = 0; ///< the outermost ones
};

DotLevels LevelsOf(const SymbolGrader& grader, const codewords::DotCodeCells& cells, int countedWords,
                   std::span<const std::uint16_t> right)
{
    const int lastRow = grader.Tones().Rows() - 1, lastColumn = grader.Tones().Columns() - 1;
    DotLevels levels{WordLevels(countedWords, grader.Scale())};
    for (int word = 0; word < countedWords; ++word) {
        const int first = codewords::DotCodeCells::FirstDot(word), dots = codewords::DotCodeCells::DotsOf(word);
        const int pattern = codewords::DotCodeCells::PatternOf(word, right[static_cast<std::size_t>(word)]);
        for (int i = 0; i < dots; ++i) {
            const auto [row, column] = cells.Dot(first + i);
            const bool dark = (pattern >> (dots - 1 - i) & 1) != 0;
            levels.words.Add(word, grader.ToneOf(row, column), dark);
            if (row != 0 && column != 0 && row != lastRow && column != lastColumn) continue;
            ++levels.borderDots;
            levels.wrongBorderDots += grader.IsDark(row, column) != dark;
        }
    }
    return levels;
}

} // namespace

QualityGrades GradeDataMatrix(const GradedSymbol& symbol)
{
    const codewords::DataMatrixCells& cells = symbol.reader.DataMatrix();
    const codewords::DataMatrixSize& size = cells.Size();
    const int side = size.rows;
    if (size.columns != side || !CanGrade(symbol.sampled, side, side)) return {};
    SymbolGrader grader(symbol, apertureShare, 1);
    if (symbol.reader.View() == Mirrored)
        grader.Turn(
            [side](const CellTones& seen, int row, int column) { return seen.At(side - 1 - column, side - 1 - row); });

    const auto right = symbol.reader.Words();
    const WordLevels levels = LevelsOf(grader, cells, side, right, [](int, int) { return false; });
    const auto blockOf = [&](int word) { return word % size.blocks; };
    grader.TakeWords(levels, levels.OfBlocks(size.blocks, blockOf, [&](int) { return size.BlockCheck() / 2; }));

    auto words = WordsFor(size.Words());
    cells.Read(*GridOf<codewords::DataMatrixGrid>(grader, side), words);
    double unused = 0;
    codewords::CorrectDataMatrix(words, size, unused);
    grader.TakeUnusedError(unused, words, right);

    grader.Letters().patterns = GradeDataMatrixPatterns(grader.Tones(), grader.Scale(), cells);
    grader.TakeGrowth(true);
    return grader.Finish(false);
}

QualityGrades GradeQR(const GradedSymbol& symbol, const codewords::QRFormat& format)
{
    const codewords::QRCells& cells = symbol.reader.QR();
    const int side = cells.Side();
    if (!codewords::IsQRVersion(cells.Version()) || !CanGrade(symbol.sampled, side, side)) return {};
    SymbolGrader grader(symbol, apertureShareOfQR, 0);

    const codewords::QRBlocks blocks = codewords::BlocksOfQR(cells.Version(), format.level);
    const auto right = symbol.reader.Words();
    const WordLevels levels = LevelsOf(grader, cells, side, right, [&](int row, int column) {
        return codewords::QRMaskInverts(format.mask, row, column);
    });
    const auto blockOf = [&](int word) { return blocks.BlockOf(word); };
    grader.TakeWords(levels, levels.OfBlocks(blocks.blocks, blockOf, [&](int) { return blocks.check / 2; }));

    auto words = WordsFor(blocks.words), data = WordsFor(blocks.Data());
    const auto grid = GridOf<codewords::QRGrid>(grader, side);
    cells.Mask(*grid, format.mask);
    cells.Read(*grid, words);
    double unused = 0;
    codewords::CorrectQR(words, cells.Version(), format.level, data, unused);
    grader.TakeUnusedError(unused, words, right);

    grader.Letters().patterns = GradeQRPatterns(grader.Tones(), grader.Scale(), cells);
    const QRInformationGrades information = GradeQRInformation(grader.Tones(), grader.Scale(), cells.Version(), format);
    grader.Letters().format = information.format;
    grader.Letters().version = information.version;
    grader.TakeGrowth(false);
    return grader.Finish(true);
}

QualityGrades GradeDotCode(const GradedSymbol& symbol, CodeViews view)
{
    const int rows = symbol.sampled.rows, columns = symbol.sampled.columns;
    if (!CanGrade(symbol.sampled, rows, columns)) return {};
    SymbolGrader grader(symbol, apertureShare, dotCodeQuietZone);
    if (view == Mirrored)
        grader.Turn([&](const CellTones& seen, int row, int column) {
            return columns % 2 != 0 ? seen.At(row, columns - 1 - column) : seen.At(rows - 1 - row, column);
        });

    const codewords::DotCodeCells& cells = symbol.reader.DotCode();
    const codewords::DotCodeBlocks blocks = codewords::DotCodeBlocks::Of(cells.Words());
    const auto right = symbol.reader.Words();
    const DotLevels levels = LevelsOf(grader, cells, blocks.words, right);
    WordLevels::Grades grades = levels.words.OfBlocks(
        blocks.blocks, [&](int word) { return word % blocks.blocks; },
        [&](int block) { return (blocks.BlockWords(block) - blocks.BlockData(block)) / 2; });
    grades.modulation = grades.margin; // one for both
    grader.TakeWords(levels.words, grades);

    auto words = WordsFor(cells.Words());
    cells.Read([&](int row, int column) { return grader.IsDark(row, column); }, words);
    double unused = 0;
    codewords::CorrectDotCode(words, unused);
    words.resize(static_cast<std::size_t>(blocks.words)); // one that is left over is not corrected
    grader.TakeUnusedError(unused, words, right);

    grader.Letters().patterns =
        GradeDotCodePatterns(grader.Tones(), grader.Scale(), levels.wrongBorderDots, levels.borderDots);
    grader.TakeGrowth(false);
    return grader.Finish(true);
}

} // namespace Tesk::matrix
