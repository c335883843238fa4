// Grades from 0 (F) to 4 (A), after ISO/IEC 15415: of numbers, of damaged cells, and of the words of blocks.
#pragma once

#include "read/matrix/CellReflectance.h"

#include <algorithm>
#include <array>
#include <cstddef>
#include <cstdint>
#include <span>
#include <vector>

namespace Tesk::matrix {

constexpr int gradeA = 4;

constexpr char LetterOf(int grade)
{
    return "FDCBA"[grade];
}

/// The least, or the most, that a number may be for A, B, C and D.
using GradeLimits = std::array<float, 4>;
constexpr int GradeAtLeast(const GradeLimits& limits, float value)
{
    for (std::size_t i = 0; i < limits.size(); ++i)
        if (value >= limits[i]) return gradeA - static_cast<int>(i);
    return 0;
}
constexpr int GradeAtMost(const GradeLimits& limits, float value)
{
    for (std::size_t i = 0; i < limits.size(); ++i)
        if (value <= limits[i]) return gradeA - static_cast<int>(i);
    return 0;
}
/// The same of a share of damaged ones.
inline int GradeOfShare(const GradeLimits& limits, int damaged, int all)
{
    return all > 0 ? GradeAtMost(limits, static_cast<float>(damaged) / static_cast<float>(all)) : gradeA;
}

constexpr GradeLimits unusedErrorLimits = {0.62f, 0.50f, 0.37f, 0.25f};

/// How many of some cells or words have each level.
class LevelHistogram
{
public:
    LevelHistogram() = default;
    explicit LevelHistogram(std::span<const int> levels)
    {
        for (const int level : levels)
            Add(level);
    }

    void Add(int level) { ++counts_[static_cast<std::size_t>(level)]; }
    int Total() const { return Below(gradeA + 1); }
    int Below(int level) const
    {
        int count = 0;
        for (int i = 0; i < level; ++i)
            count += counts_[static_cast<std::size_t>(i)];
        return count;
    }

private:
    std::array<int, gradeA + 1> counts_{};
};

/// What a block loses where only what reaches a level counts as right, with the grade of the unused correction that is
/// left, at the best of the levels.
int GradeOfBlock(const LevelHistogram& words, int capacity);

/// The levels of the words of a symbol: each has that of its worst cell.
class WordLevels
{
public:
    WordLevels(int words, const ToneScale& scale)
        : scale_(scale), seen_(static_cast<std::size_t>(words), gradeA), right_(seen_)
    {}

    /// A cell of a word, and whether it should be dark.
    void Add(int word, int tone, bool dark);

    double LeastModulation() const { return any_ ? least_ : 0; }
    /// The grades of the worst block: by what the cells show, and with cells that are wrong counted as 0.
    /// `blockOf(word)` is negative for a word of none; `capacityOf(block)` words can be corrected.
    struct Grades
    {
        int modulation = gradeA, margin = gradeA;
    };
    template <typename BlockOf, typename CapacityOf>
    Grades OfBlocks(int blocks, BlockOf blockOf, CapacityOf capacityOf) const
    {
        std::vector<LevelHistogram> seen(static_cast<std::size_t>(blocks)), right(seen);
        for (std::size_t word = 0; word < seen_.size(); ++word) {
            const int block = blockOf(static_cast<int>(word));
            if (block < 0) continue;
            seen[static_cast<std::size_t>(block)].Add(seen_[word]);
            right[static_cast<std::size_t>(block)].Add(right_[word]);
        }
        Grades grades;
        for (int block = 0; block < blocks; ++block) {
            const auto i = static_cast<std::size_t>(block);
            grades.modulation = std::min(grades.modulation, GradeOfBlock(seen[i], capacityOf(block)));
            grades.margin = std::min(grades.margin, GradeOfBlock(right[i], capacityOf(block)));
        }
        return grades;
    }

private:
    ToneScale scale_;
    std::vector<std::uint8_t> seen_, right_;
    double least_ = 0;
    bool any_ = false;
};

} // namespace Tesk::matrix
