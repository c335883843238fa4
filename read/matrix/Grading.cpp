// Grades the print of a symbol: numbers, their letters, and the worst of these.
#include "read/matrix/Grading.h"

#include "read/codewords/CellGrid.h"
#include "read/codewords/DataMatrixText.h"
#include "read/codewords/DotCodeText.h"
#include "read/codewords/QRText.h"
#include "read/matrix/CellReflectance.h"
#include "read/matrix/Contrast.h"
#include "read/matrix/FixedPatterns.h"
#include "read/matrix/ReflectanceGrades.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <cstddef>
#include <cstdint>
#include <memory>
#include <span>
#include <vector>

namespace Tesk::matrix {

namespace {

constexpr GradeLimits contrastLimits = {0.70f, 0.55f, 0.40f, 0.20f};
constexpr GradeLimits growthLimits = {0.50f, 0.70f, 0.85f, 1.00f};
constexpr GradeLimits axialLimits = {0.06f, 0.08f, 0.10f, 0.12f};
constexpr GradeLimits gridLimits = {0.38f, 0.50f, 0.63f, 0.75f};
/// Of the aperture: a share of a cell's side.
constexpr double apertureShare = 0.8, apertureShareOfQR = 0.85;

/// The letters in their order; 4 stands for A.
struct SymbolLetters
{
    int contrast = 0, growth = 0, axial = 0, grid = 0, unusedError = 0, modulation = 0, margin = 0, patterns = 0;
    int format = gradeA, version = gradeA; ///< of what has no such information, A

    /// Growth is told, and left out of the overall grade.
    int Overall() const
    {
        return std::min({contrast, axial, grid, unusedError, modulation, margin, patterns, format, version});
    }
    void Write(bool withInformation, std::array<char, 16>& letters) const
    {
        const std::array grades{contrast,   growth, growth,   axial,  grid,   unusedError,
                                modulation, margin, patterns, format, version};
        const std::size_t count = withInformation ? grades.size() : grades.size() - 2;
        letters.fill(0);
        letters[0] = LetterOf(Overall());
        letters[1] = ' ';
        for (std::size_t i = 0; i < count; ++i)
            letters[2 + i] = LetterOf(grades[i]);
    }
};

double Distance(XY a, XY b)
{
    return std::hypot(b.X - a.X, b.Y - a.Y);
}

/// The mean sides of a cell, by the corners of the symbol.
struct CellSides
{
    double width = 1, height = 1;
};

CellSides SidesOf(const SampledSymbol& s)
{
    const XY first = s.Node(0, 0), right = s.Node(0, s.columns), down = s.Node(s.rows, 0);
    const XY last = s.Node(s.rows, s.columns);
    return {(Distance(first, right) + Distance(down, last)) / (2 * s.columns),
            (Distance(first, down) + Distance(right, last)) / (2 * s.rows)};
}

double AxialNonUniformity(CellSides sides)
{
    const double sum = sides.width + sides.height;
    return sum > 0 ? 2 * std::abs(sides.width - sides.height) / sum : 0;
}

/// How far a node is at most from where it would be if the cells were all alike between the corners.
double GridNonUniformity(const SampledSymbol& s, CellSides sides)
{
    const XY first = s.Node(0, 0), right = s.Node(0, s.columns), down = s.Node(s.rows, 0);
    const XY last = s.Node(s.rows, s.columns);
    double farthest = 0;
    for (int row = 0; row <= s.rows; ++row)
        for (int column = 0; column <= s.columns; ++column) {
            const double v = static_cast<double>(row) / s.rows, u = static_cast<double>(column) / s.columns;
            const XY ideal = (1 - v) * ((1 - u) * first + u * right) + v * ((1 - u) * down + u * last);
            farthest = std::max(farthest, Distance(ideal, s.Node(row, column)));
        }
    const double diagonal = std::hypot(sides.width, sides.height);
    return diagonal > 0 ? farthest / diagonal : 0;
}

double AreaOf(std::span<const XY> outline)
{
    double area = 0;
    for (std::size_t i = 0; i < outline.size(); ++i) {
        const XY a = outline[i], b = outline[(i + 1) % outline.size()];
        area += a.X * b.Y - a.Y * b.X;
    }
    return std::abs(area) / 2;
}

/// The steps that are the same for all families.
class Grader
{
public:
    /// The diameter of the aperture as a share of a cell's side, and the cells around that are looked at.
    Grader(const GradedSymbol& symbol, double aperture, int margin)
        : symbol_(symbol), outline_(OutlineOf(symbol.sampled)),
          tones_(ReadTones(symbol.source, symbol.sampled, symbol.polarity, Aperture(aperture), margin))
    {
        const SampledSymbol& sampled = symbol.sampled;
        const ContrastMeasure contrast = MeasureContrast(CountInside(symbol.source, outline_));
        scale_.contrast = contrast.Span();
        scale_.threshold = tones_.BestThreshold();
        const CellSides sides = SidesOf(sampled);
        grades_.symbolContrast = static_cast<float>(contrast.Span() / 255);
        grades_.axialNonUniformity = static_cast<float>(AxialNonUniformity(sides));
        grades_.gridNonUniformity = static_cast<float>(GridNonUniformity(sampled, sides));
        grades_.printGrowth = static_cast<float>(PrintGrowth(contrast, sampled, symbol.polarity));
        letters_.contrast = GradeAtLeast(contrastLimits, grades_.symbolContrast);
        letters_.axial = GradeAtMost(axialLimits, grades_.axialNonUniformity);
        letters_.grid = GradeAtMost(gridLimits, grades_.gridNonUniformity);
    }

    CellTones& Tones() { return tones_; }
    const ToneScale& Scale() const { return scale_; }
    bool IsDark(int row, int column) const { return scale_.IsDark(tones_.At(row, column)); }
    SymbolLetters& Letters() { return letters_; }

    void TakeWords(const WordLevels& words, WordLevels::Grades grades)
    {
        grades_.contrastUniformity = static_cast<float>(words.LeastModulation());
        letters_.modulation = grades.modulation;
        letters_.margin = grades.margin;
    }
    /// Of words that were corrected once more: none is left if they became others than the right ones.
    void TakeUnusedError(double unused, std::span<const std::uint16_t> words, std::span<const std::uint16_t> right)
    {
        const bool same = std::equal(words.begin(), words.end(), right.begin(), right.begin() + std::ssize(words));
        grades_.unusedError = same ? static_cast<float>(unused) : 0.0f;
        letters_.unusedError = GradeAtLeast(unusedErrorLimits, grades_.unusedError);
    }
    /// Where thick print is well, a negative growth is.
    void TakeGrowth(bool isSigned)
    {
        letters_.growth = GradeAtMost(growthLimits, isSigned ? grades_.printGrowth : std::abs(grades_.printGrowth));
    }
    QualityGrades Finish(bool withInformation)
    {
        letters_.Write(withInformation, grades_.letters);
        return grades_;
    }

private:
    double Aperture(double share) const
    {
        const int cells = symbol_.sampled.rows * symbol_.sampled.columns;
        return std::max(1.0, share * std::sqrt(AreaOf(outline_) / cells));
    }

    GradedSymbol symbol_;
    std::vector<XY> outline_;
    CellTones tones_;
    ToneScale scale_;
    QualityGrades grades_;
    SymbolLetters letters_;
};

/// The cells as a grid for the reader.
template <typename Grid>
void FillGrid(const Grader& grader, int rows, int columns, Grid& grid)
{
    for (int row = 0; row < rows; ++row)
        for (int column = 0; column < columns; ++column)
            grid.At(row, column) = grader.IsDark(row, column) ? 0 : codewords::LightCell;
}

bool BitOf(std::span<const std::uint16_t> words, codewords::SymbolModule module)
{
    return (words[static_cast<std::size_t>(module.Word())] >> module.Bit() & 1) != 0;
}

bool CanGrade(const SampledSymbol& s)
{
    const auto rows = static_cast<std::size_t>(std::max(s.rows, 0)),
               columns = static_cast<std::size_t>(std::max(s.columns, 0));
    return rows > 0 && columns > 0 && s.centers.size() == rows * columns &&
           s.nodes.size() == (rows + 1) * (columns + 1);
}

} // namespace

QualityGrades GradeDataMatrix(const GradedSymbol& symbol)
{
    const codewords::DataMatrixCells& cells = symbol.reader.DataMatrix();
    const codewords::DataMatrixSize& size = cells.Size();
    const int side = size.rows;
    if (!CanGrade(symbol.sampled) || size.columns != side || symbol.sampled.rows != side ||
        symbol.sampled.columns != side)
        return {};
    Grader grader(symbol, apertureShare, 1);
    if (symbol.reader.View() == Mirrored) {
        const CellTones seen = grader.Tones();
        grader.Tones().Fill([&](int row, int column) { return seen.At(side - 1 - column, side - 1 - row); });
    }

    const auto right = symbol.reader.Words();
    WordLevels levels(size.Words(), grader.Scale());
    for (int row = 0; row < side; ++row)
        for (int column = 0; column < side; ++column) {
            const codewords::SymbolModule module = cells.At(row, column);
            if (module.IsData()) levels.Add(module.Word(), grader.Tones().At(row, column), BitOf(right, module));
        }
    grader.TakeWords(levels, levels.OfBlocks(
                                 size.blocks, [&](int word) { return word % size.blocks; },
                                 [&](int) { return size.BlockCheck() / 2; }));

    const auto grid = std::make_unique<codewords::DataMatrixGrid>();
    FillGrid(grader, side, side, *grid);
    std::vector<std::uint16_t> words(static_cast<std::size_t>(size.Words()));
    cells.Read(*grid, words);
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
    if (!CanGrade(symbol.sampled) || symbol.sampled.rows != side || symbol.sampled.columns != side) return {};
    Grader grader(symbol, apertureShareOfQR, 0);

    const codewords::QRBlocks blocks = codewords::BlocksOfQR(cells.Version(), format.level);
    const auto right = symbol.reader.Words();
    WordLevels levels(blocks.words, grader.Scale());
    for (int row = 0; row < side; ++row)
        for (int column = 0; column < side; ++column) {
            const codewords::SymbolModule module = cells.At(row, column);
            if (module.IsData())
                levels.Add(module.Word(), grader.Tones().At(row, column),
                           BitOf(right, module) != codewords::QRMaskInverts(format.mask, row, column));
        }
    grader.TakeWords(levels, levels.OfBlocks(
                                 blocks.blocks, [&](int word) { return blocks.BlockOf(word); },
                                 [&](int) { return blocks.check / 2; }));

    const auto grid = std::make_unique<codewords::QRGrid>();
    FillGrid(grader, side, side, *grid);
    std::vector<std::uint16_t> words(static_cast<std::size_t>(blocks.words));
    std::vector<std::uint16_t> data(static_cast<std::size_t>(blocks.Data()));
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
    if (!CanGrade(symbol.sampled)) return {};
    const codewords::DotCodeCells& cells = symbol.reader.DotCode();
    Grader grader(symbol, apertureShare, dotCodeQuietZone);
    if (view == Mirrored) {
        const CellTones seen = grader.Tones();
        const bool flipsColumns = columns % 2 != 0;
        grader.Tones().Fill([&](int row, int column) {
            return flipsColumns ? seen.At(row, columns - 1 - column) : seen.At(rows - 1 - row, column);
        });
    }

    const codewords::DotCodeBlocks blocks = codewords::DotCodeBlocks::Of(cells.Words());
    const auto right = symbol.reader.Words();
    WordLevels levels(blocks.words, grader.Scale());
    int wrongBorderDots = 0, borderDots = 0;
    for (int word = 0; word < blocks.words; ++word) {
        const int first = codewords::DotCodeCells::FirstDot(word), dots = codewords::DotCodeCells::DotsOf(word);
        const int pattern = codewords::DotCodeCells::PatternOf(word, right[static_cast<std::size_t>(word)]);
        for (int i = 0; i < dots; ++i) {
            const codewords::DotPlace place = cells.Dot(first + i);
            const bool dark = (pattern >> (dots - 1 - i) & 1) != 0;
            levels.Add(word, grader.Tones().At(place.row, place.column), dark);
            if (place.row != 0 && place.column != 0 && place.row != rows - 1 && place.column != columns - 1) continue;
            ++borderDots;
            wrongBorderDots += grader.IsDark(place.row, place.column) != dark;
        }
    }
    WordLevels::Grades grades = levels.OfBlocks(
        blocks.blocks, [&](int word) { return word % blocks.blocks; },
        [&](int block) { return (blocks.BlockWords(block) - blocks.BlockData(block)) / 2; });
    grades.modulation = grades.margin; // one for both
    grader.TakeWords(levels, grades);

    std::vector<std::uint16_t> words(static_cast<std::size_t>(cells.Words()));
    cells.Read([&](int row, int column) { return grader.IsDark(row, column); }, words);
    double unused = 0;
    codewords::CorrectDotCode(words, unused);
    words.resize(static_cast<std::size_t>(blocks.words)); // the one left over is not corrected
    grader.TakeUnusedError(unused, words, right);

    grader.Letters().patterns = GradeDotCodePatterns(grader.Tones(), grader.Scale(), wrongBorderDots, borderDots);
    grader.TakeGrowth(false);
    return grader.Finish(true);
}

} // namespace Tesk::matrix
