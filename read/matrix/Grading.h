// Grades the print of a symbol that was read, after ISO/IEC 15415, 16022, 18004 and AIM DotCode.
#pragma once

#include "foundation/Enumerations.h"
#include "image/Image.h"
#include "read/codewords/QRTables.h"
#include "read/codewords/SymbolReader.h"
#include "read/matrix/SymbolSearch.h"

namespace Tesk::matrix {

/// What a search knows of the symbol that it has just read.
struct GradedSymbol
{
    const Image& source; ///< `Gray`, that the places of the sample are of
    const SampledSymbol& sampled;
    CodePolarities polarity;
    const codewords::SymbolReader& reader; ///< as it was left by the symbol
};

/// Of a square one; it is seen in the reader's view. Throws `std::bad_alloc`, as the others.
QualityGrades GradeDataMatrix(const GradedSymbol& symbol);
/// Sampled as it stands upright.
QualityGrades GradeQR(const GradedSymbol& symbol, const codewords::QRFormat& format);
/// A mirrored one was turned over the middle of its odd side before it was read.
QualityGrades GradeDotCode(const GradedSymbol& symbol, CodeViews view);

} // namespace Tesk::matrix
