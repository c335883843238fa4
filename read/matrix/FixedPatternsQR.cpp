// The fixed patterns of a QR symbol, its format and its version: ISO/IEC 18004, annex G.
#include "read/matrix/FixedPatterns.h"

#include "read/codewords/QRTables.h"

#include <algorithm>
#include <array>
#include <cstddef>

namespace Tesk::matrix {

namespace {

using codewords::SymbolModule;

constexpr int finderSide = 8; // with the separator
constexpr int timingLine = 6;
constexpr GradeLimits timingLimits = {0, 0.07f, 0.11f, 0.14f}, alignmentLimits = {0, 0.10f, 0.20f, 0.30f};
constexpr int informationCapacity = 3; // bits

/// Looks at the cells that are the same in all symbols of a version.
class FixedCells
{
public:
    FixedCells(const CellTones& tones, const ToneScale& scale, const codewords::QRCells& cells)
        : tones_(tones), scale_(scale), cells_(cells)
    {}

    bool IsWrong(int row, int column) const
    {
        const SymbolModule module = cells_.At(row, column);
        return module.IsFixed() && module.Is(SymbolModule::FixedDark) != scale_.IsDark(tones_.At(row, column));
    }
    int WrongOf(int top, int left, int side) const
    {
        int count = 0;
        for (int row = top; row < top + side; ++row)
            for (int column = left; column < left + side; ++column)
                count += IsWrong(row, column);
        return count;
    }

private:
    const CellTones& tones_;
    ToneScale scale_;
    const codewords::QRCells& cells_;
};

int GradeOfFinders(const FixedCells& fixed, int side)
{
    const int far = side - finderSide;
    const int worst = std::max(
        {fixed.WrongOf(0, 0, finderSide), fixed.WrongOf(0, far, finderSide), fixed.WrongOf(far, 0, finderSide)});
    return std::max(0, gradeA - worst);
}

int GradeOfTiming(const FixedCells& fixed, int side, bool down)
{
    std::vector<bool> wrong;
    for (int i = finderSide; i < side - finderSide; ++i)
        wrong.push_back(down ? fixed.IsWrong(i, timingLine) : fixed.IsWrong(timingLine, i));
    if (HasDamagedWindow(wrong)) return 0;
    return GradeOfShare(timingLimits, static_cast<int>(std::count(wrong.begin(), wrong.end(), true)),
                        static_cast<int>(wrong.size()));
}

int GradeOfAlignment(const FixedCells& fixed, int version)
{
    const codewords::QRAlignment lines = codewords::AlignmentOfQR(version);
    int damaged = 0, count = 0;
    for (int i = 0; i < lines.count; ++i)
        for (int j = 0; j < lines.count; ++j) {
            if (!lines.Has(i, j)) continue;
            const int row = lines.centres[static_cast<std::size_t>(i)];
            const int column = lines.centres[static_cast<std::size_t>(j)];
            damaged += fixed.WrongOf(row - 2, column - 2, 5) > 0;
            ++count;
        }
    return GradeOfShare(alignmentLimits, damaged, count);
}

/// `cellOf(copy, bit)` tells where the bits of a word stand.
template <typename CellOf>
int GradeOfCopies(const CellTones& tones, const ToneScale& scale, int word, int bits, CellOf cellOf)
{
    std::array<int, 2> grades{};
    for (int copy = 0; copy < 2; ++copy) {
        LevelHistogram levels;
        for (int bit = 0; bit < bits; ++bit) {
            const codewords::QRCell cell = cellOf(copy, bit);
            levels.Add(scale.LevelOf(tones.At(cell.row, cell.column), (word >> bit & 1) != 0));
        }
        grades[static_cast<std::size_t>(copy)] = GradeOfBlock(levels, informationCapacity);
    }
    return (grades[0] + grades[1] + 1) / 2; // a half counts for the symbol
}

} // namespace

int GradeQRPatterns(const CellTones& tones, const ToneScale& scale, const codewords::QRCells& cells)
{
    const FixedCells fixed(tones, scale, cells);
    const int side = cells.Side();
    return std::min({GradeOfFinders(fixed, side), GradeOfTiming(fixed, side, false), GradeOfTiming(fixed, side, true),
                     GradeOfAlignment(fixed, cells.Version())});
}

QRInformationGrades GradeQRInformation(const CellTones& tones, const ToneScale& scale, int version,
                                       const codewords::QRFormat& format)
{
    const int side = codewords::QRSide(version);
    QRInformationGrades grades;
    grades.format = GradeOfCopies(tones, scale, format.word, 15,
                                  [&](int copy, int bit) { return codewords::QRFormatCell(side, copy, bit); });
    if (version >= 7)
        grades.version = GradeOfCopies(tones, scale, codewords::QRVersionWord(version), 18,
                                       [&](int copy, int bit) { return codewords::QRVersionCell(side, copy, bit); });
    return grades;
}

} // namespace Tesk::matrix
