// The numbers of a graded symbol and their letters: ISO/IEC 15415.
#include "read/matrix/SymbolGrader.h"

#include "read/matrix/Contrast.h"

#include <algorithm>
#include <cmath>
#include <cstddef>

namespace Tesk::matrix {

namespace {

constexpr GradeLimits contrastLimits = {0.70f, 0.55f, 0.40f, 0.20f};
constexpr GradeLimits growthLimits = {0.50f, 0.70f, 0.85f, 1.00f};
constexpr GradeLimits axialLimits = {0.06f, 0.08f, 0.10f, 0.12f};
constexpr GradeLimits gridLimits = {0.38f, 0.50f, 0.63f, 0.75f};

double AxialNonUniformity(CellSides sides)
{
    const double sum = sides.width + sides.height;
    return sum > 0 ? 2 * std::abs(sides.width - sides.height) / sum : 0;
}

/// The corner nodes from the lower left one on.
std::array<XY, 4> CornersOf(const SampledSymbol& s)
{
    return {s.Node(s.rows, 0), s.Node(s.rows, s.columns), s.Node(0, s.columns), s.Node(0, 0)};
}

/// How far a node is at most from where it would be if the cells were all alike between the corners, over the diagonal
/// of a cell.
double GridNonUniformity(const SampledSymbol& s, CellSides sides)
{
    const auto [down, last, right, first] = CornersOf(s);
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

/// The diameter of an aperture in pixels.
double Aperture(double share, std::span<const XY> outline, const SampledSymbol& symbol)
{
    return std::max(1.0, share * std::sqrt(AreaOf(outline) / (symbol.rows * symbol.columns)));
}

} // namespace

int SymbolLetters::Overall() const
{
    return std::min({contrast, axial, grid, unusedError, modulation, margin, patterns, format, version});
}

void SymbolLetters::Write(bool withInformation, std::array<char, 16>& letters) const
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

SymbolGrader::SymbolGrader(const GradedSymbol& symbol, double aperture, int margin)
    : outline_(OutlineOf(symbol.sampled)), tones_(ReadTones(symbol.source, symbol.sampled, symbol.polarity,
                                                            Aperture(aperture, outline_, symbol.sampled), margin))
{
    const SampledSymbol& sampled = symbol.sampled;
    const ContrastMeasure contrast = MeasureContrast(CountInside(symbol.source, outline_));
    scale_.contrast = contrast.Span();
    scale_.threshold = tones_.BestThreshold();
    const CellSides sides = SidesOf(CornersOf(sampled), sampled.rows, sampled.columns);
    grades_.symbolContrast = static_cast<float>(contrast.Span() / 255);
    grades_.axialNonUniformity = static_cast<float>(AxialNonUniformity(sides));
    grades_.gridNonUniformity = static_cast<float>(GridNonUniformity(sampled, sides));
    grades_.printGrowth = static_cast<float>(PrintGrowth(contrast, sampled, symbol.polarity));
    letters_.contrast = GradeAtLeast(contrastLimits, grades_.symbolContrast);
    letters_.axial = GradeAtMost(axialLimits, grades_.axialNonUniformity);
    letters_.grid = GradeAtMost(gridLimits, grades_.gridNonUniformity);
}

void SymbolGrader::TakeWords(const WordLevels& words, WordLevels::Grades grades)
{
    grades_.contrastUniformity = static_cast<float>(words.LeastModulation());
    letters_.modulation = grades.modulation;
    letters_.margin = grades.margin;
}

void SymbolGrader::TakeUnusedError(double unused, std::span<const std::uint16_t> words,
                                   std::span<const std::uint16_t> right)
{
    const bool same = words.size() <= right.size() && std::equal(words.begin(), words.end(), right.begin());
    grades_.unusedError = same ? static_cast<float>(unused) : 0.0f;
    letters_.unusedError = GradeAtLeast(unusedErrorLimits, grades_.unusedError);
}

void SymbolGrader::TakeGrowth(bool isSigned)
{
    letters_.growth = GradeAtMost(growthLimits, isSigned ? grades_.printGrowth : std::abs(grades_.printGrowth));
}

QualityGrades SymbolGrader::Finish(bool withInformation)
{
    letters_.Write(withInformation, grades_.letters);
    return grades_;
}

} // namespace Tesk::matrix
