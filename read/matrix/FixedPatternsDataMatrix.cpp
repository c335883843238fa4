// The fixed patterns of a Data Matrix: ISO/IEC 16022, annex M.
#include "read/matrix/FixedPatterns.h"

#include <algorithm>
#include <cstddef>

namespace Tesk::matrix {

namespace {

constexpr GradeLimits damageLimits = {0, 0.09f, 0.13f, 0.17f};
/// Gaps of so many cells, or so few cells between two gaps, break a solid side.
constexpr std::size_t longGap = 4, longRun = 4;
constexpr std::size_t window = 5;
constexpr int mostWrongInWindow = 2;

/// Cells in a row.
struct CellLine
{
    int row, column, downStep, acrossStep, length;
};

class Pattern
{
public:
    Pattern(const CellTones& tones, const ToneScale& scale) : tones_(tones), scale_(scale) {}

    /// `isDark(row, column)` tells what the cells should be.
    template <typename IsDark>
    void Take(const CellLine& line, IsDark isDark)
    {
        levels_.clear();
        wrong_.clear();
        for (int i = 0; i < line.length; ++i) {
            const int row = line.row + i * line.downStep, column = line.column + i * line.acrossStep;
            const int tone = tones_.At(row, column);
            const bool dark = isDark(row, column);
            levels_.push_back(scale_.LevelOf(tone, dark));
            wrong_.push_back(scale_.IsDark(tone) != dark);
        }
    }
    int AsCells() const { return GradeOfCells(LevelHistogram(levels_)); }
    int AsSide() const { return GradeOfSide(levels_); }
    int AsTrack() const { return GradeOfTrack(levels_, wrong_); }

private:
    const CellTones& tones_;
    ToneScale scale_;
    std::vector<int> levels_;
    std::vector<bool> wrong_;
};

/// Whether a gap is long, or two of them are near to each other.
bool IsBroken(std::span<const int> levels)
{
    std::size_t gap = 0, run = 0;
    bool afterGap = false;
    for (const int level : levels) {
        if (level > 0) {
            gap = 0;
            ++run;
            continue;
        }
        if (gap == 0 && afterGap && run < longRun) return true;
        afterGap = true;
        run = 0;
        if (++gap >= longGap) return true;
    }
    return false;
}

} // namespace

int GradeOfCells(const LevelHistogram& cells)
{
    int best = 0;
    for (int level = gradeA; level > 0; --level)
        best = std::max(best, std::min(level, GradeOfShare(damageLimits, cells.Below(level), cells.Total())));
    return best;
}

int GradeOfSide(std::span<const int> levels)
{
    return IsBroken(levels) ? 0 : GradeOfCells(LevelHistogram(levels));
}

bool HasDamagedWindow(const std::vector<bool>& wrong)
{
    int count = 0;
    for (std::size_t i = 0; i < wrong.size(); ++i) {
        count += wrong[i];
        if (i >= window) count -= wrong[i - window];
        if (count > mostWrongInWindow) return true;
    }
    return false;
}

int GradeOfTrack(std::span<const int> levels, const std::vector<bool>& wrong)
{
    if (wrong.empty()) return gradeA;
    if (HasDamagedWindow(wrong)) return 0;
    const int length = static_cast<int>(wrong.size());
    const int count = static_cast<int>(std::count(wrong.begin(), wrong.end(), true));
    // 5 - 20 * count / length, rounded down.
    const int byCount = std::clamp((5 * length - 20 * count) / length, 0, gradeA);
    return std::min(byCount, GradeOfCells(LevelHistogram(levels)));
}

int GradeDataMatrixPatterns(const CellTones& tones, const ToneScale& scale, const codewords::DataMatrixCells& cells)
{
    const codewords::DataMatrixSize& size = cells.Size();
    const int rows = size.rows, columns = size.columns;
    const auto always = [](bool dark) { return [dark](int, int) { return dark; }; };
    Pattern pattern(tones, scale);
    int grade = gradeA;
    pattern.Take({0, 0, 1, 0, rows}, always(true));
    grade = std::min(grade, pattern.AsSide());
    pattern.Take({rows - 1, 0, 0, 1, columns}, always(true));
    grade = std::min(grade, pattern.AsSide());
    // The quiet zones reach around the corner between them.
    pattern.Take({0, -1, 1, 0, rows + 1}, always(false));
    grade = std::min(grade, pattern.AsCells());
    pattern.Take({rows, -1, 0, 1, columns + 1}, always(false));
    grade = std::min(grade, pattern.AsCells());

    const int height = rows / size.regionsDown, width = columns / size.regionsAcross;
    const auto asPlaced = [&](int row, int column) {
        return cells.At(row, column).Is(codewords::SymbolModule::FixedDark);
    };
    for (int top = 0; top < rows; top += height)
        for (int left = 0; left < columns; left += width) {
            pattern.Take({top, left, 0, 1, width}, asPlaced);
            grade = std::min(grade, pattern.AsTrack());
            pattern.Take({top, left + width - 1, 1, 0, height}, asPlaced);
            grade = std::min(grade, pattern.AsTrack());
            // Solid lines inside the symbol are alignment patterns.
            pattern.Take({top, left, 1, 0, left > 0 ? height : 0}, always(true));
            grade = std::min(grade, pattern.AsCells());
            pattern.Take({top + height - 1, left, 0, 1, top + height < rows ? width : 0}, always(true));
            grade = std::min(grade, pattern.AsCells());
        }
    // The mean of the five is never below the worst.
    return grade;
}

} // namespace Tesk::matrix
