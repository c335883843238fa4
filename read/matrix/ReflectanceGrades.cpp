// Grades of blocks and words, after ISO/IEC 15415.
#include "read/matrix/ReflectanceGrades.h"

namespace Tesk::matrix {

int GradeOfBlock(const LevelHistogram& words, int capacity)
{
    int best = 0;
    for (int level = gradeA; level > 0; --level) {
        const auto lost = static_cast<float>(words.Below(level));
        const float unused = capacity > 0 ? 1 - lost / static_cast<float>(capacity) : lost > 0 ? 0.0f : 1.0f;
        best = std::max(best, std::min(level, GradeAtLeast(unusedErrorLimits, unused)));
    }
    return best;
}

void WordLevels::Add(int word, int tone, bool dark)
{
    const auto i = static_cast<std::size_t>(word);
    if (i >= seen_.size()) return;
    const auto lower = [](std::uint8_t& level, int other) {
        level = static_cast<std::uint8_t>(std::min<int>(level, other));
    };
    lower(seen_[i], scale_.LevelOf(tone));
    lower(right_[i], scale_.LevelOf(tone, dark));
    const double modulation = scale_.Modulation(tone);
    least_ = any_ ? std::min(least_, modulation) : modulation;
    any_ = true;
}

} // namespace Tesk::matrix
