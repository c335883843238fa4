// The steps of grading that are the same for all families of symbols: numbers, letters, and the worst of these.
#pragma once

#include "foundation/Records.h"
#include "read/matrix/CellReflectance.h"
#include "read/matrix/Grading.h"
#include "read/matrix/ReflectanceGrades.h"
#include "read/matrix/SymbolSearch.h"

#include <array>
#include <cstdint>
#include <span>
#include <vector>

namespace Tesk::matrix {

/// The letters in their order; 4 stands for A.
struct SymbolLetters
{
    int contrast = 0, growth = 0, axial = 0, grid = 0, unusedError = 0, modulation = 0, margin = 0, patterns = 0;
    int format = gradeA, version = gradeA; ///< of what has no such information, A

    /// Growth is told, and left out of the overall grade.
    int Overall() const;
    /// The overall grade, a blank, the letters, and a zero.
    void Write(bool withInformation, std::array<char, 16>& letters) const;
};

class SymbolGrader
{
public:
    /// The diameter of the aperture as a share of a cell's side, and the cells around that are looked at. The sample
    /// must have its nodes and centers. Throws `std::bad_alloc`.
    SymbolGrader(const GradedSymbol& symbol, double aperture, int margin);

    const CellTones& Tones() const { return tones_; }
    const ToneScale& Scale() const { return scale_; }
    int ToneOf(int row, int column) const { return tones_.At(row, column); }
    bool IsDark(int row, int column) const { return scale_.IsDark(tones_.At(row, column)); }
    SymbolLetters& Letters() { return letters_; }
    /// Turns the cells as the symbol stands: `seen(tones, row, column)` tells that of each one.
    template <typename Seen>
    void Turn(Seen seen)
    {
        const CellTones tones = tones_;
        tones_.Fill([&](int row, int column) { return seen(tones, row, column); });
    }

    void TakeWords(const WordLevels& words, WordLevels::Grades grades);
    /// Of words that were corrected once more: none is left if they became others than the right ones.
    void TakeUnusedError(double unused, std::span<const std::uint16_t> words, std::span<const std::uint16_t> right);
    /// Signed, thick print is well.
    void TakeGrowth(bool isSigned);
    QualityGrades Finish(bool withInformation);

private:
    std::vector<XY> outline_;
    CellTones tones_;
    ToneScale scale_;
    QualityGrades grades_;
    SymbolLetters letters_;
};

} // namespace Tesk::matrix
