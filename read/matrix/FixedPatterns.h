// Grades of what is the same in all symbols of a size: borders, finder, timing and alignment patterns, quiet zones.
#pragma once

#include "read/codewords/DataMatrixCells.h"
#include "read/codewords/QRCells.h"
#include "read/matrix/CellReflectance.h"
#include "read/matrix/ReflectanceGrades.h"

#include <span>
#include <vector>

namespace Tesk::matrix {

/// The solid sides of a Data Matrix, the quiet zones beside them, and the clock tracks and alignment patterns (ISO/IEC
/// 16022, annex M): the worst of the five. The tones have a margin of at least 1, and stand as the symbol does.
int GradeDataMatrixPatterns(const CellTones& tones, const ToneScale& scale, const codewords::DataMatrixCells& cells);

/// The share of damaged cells at each level as a grade, at the best of the levels.
int GradeOfCells(const LevelHistogram& cells);
/// The same of a solid side. Gaps that are long or near to each other damage all of it.
int GradeOfSide(std::span<const int> levels);
/// The same of a clock track, and by the share of wrong cells. Three of five neighbours wrong damage all of it.
int GradeOfTrack(std::span<const int> levels, const std::vector<bool>& wrong);
/// Whether three of five neighbours are wrong.
bool HasDamagedWindow(const std::vector<bool>& wrong);

/// The finder patterns of a QR symbol with their separators, the timing patterns, and the alignment patterns (ISO/IEC
/// 18004, annex G): the worst of all.
int GradeQRPatterns(const CellTones& tones, const ToneScale& scale, const codewords::QRCells& cells);

/// Format information and version information.
struct QRInformationGrades
{
    int format = gradeA, version = gradeA;
};
/// The bits of both copies are graded as a block each, of which 3 bits can be corrected, and averaged.
QRInformationGrades GradeQRInformation(const CellTones& tones, const ToneScale& scale, int version,
                                       const codewords::QRFormat& format);

/// Marks beside a DotCode, in a quiet zone of three cells, and wrong dots among the outermost ones: the worse of the
/// two. The tones have that margin.
constexpr int dotCodeQuietZone = 3;
int GradeDotCodePatterns(const CellTones& tones, const ToneScale& scale, int wrongBorderDots, int borderDots);

} // namespace Tesk::matrix
