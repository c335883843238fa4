// What a DotCode has instead of fixed patterns: a clean quiet zone, and outermost dots that tell its extent.
#include "read/matrix/FixedPatterns.h"

#include <algorithm>

namespace Tesk::matrix {

namespace {

constexpr GradeLimits clutterLimits = {0, 0.03f, 0.05f, 0.07f}, borderLimits = {0, 0.01f, 0.02f, 0.03f};

} // namespace

int GradeDotCodePatterns(const CellTones& tones, const ToneScale& scale, int wrongBorderDots, int borderDots)
{
    int marks = 0, places = 0;
    for (int row = -tones.Margin(); row < tones.Rows() + tones.Margin(); ++row)
        for (int column = -tones.Margin(); column < tones.Columns() + tones.Margin(); ++column) {
            if (row >= 0 && column >= 0 && row < tones.Rows() && column < tones.Columns()) continue;
            ++places;
            marks += scale.IsDark(tones.At(row, column));
        }
    return std::min(GradeOfShare(clutterLimits, marks, places),
                    GradeOfShare(borderLimits, wrongBorderDots, borderDots));
}

} // namespace Tesk::matrix
