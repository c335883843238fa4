// The contrast of a symbol and the growth of its print, from all pixels inside its outline.
#pragma once

#include "foundation/Enumerations.h"
#include "foundation/Records.h"
#include "image/Image.h"
#include "read/matrix/SymbolSearch.h"

#include <array>
#include <cstdint>
#include <span>
#include <vector>

namespace Tesk::matrix {

/// How many pixels have each level.
using GrayCounts = std::array<std::int64_t, 256>;

/// The pixels of a symbol, parted where the variance within the parts is least. Without two parts all is 0.
struct ContrastMeasure
{
    int threshold = 0;          ///< the first level of the light part
    double dark = 0, light = 0; ///< means of the parts
    std::int64_t darkPixels = 0, lightPixels = 0;

    double Span() const { return light - dark; } ///< in gray levels
};

/// The outer nodes of a symbol's grid, once around. Throws `std::bad_alloc`, as the others.
std::vector<XY> OutlineOf(const SampledSymbol& symbol);

/// Counts the pixels of a `Gray` image of which the middle lies inside a polygon, by scan lines and the even-odd rule.
/// What lies outside the image isn't counted.
GrayCounts CountInside(const Image& gray, std::span<const XY> polygon);

ContrastMeasure MeasureContrast(const GrayCounts& counts);

/// The side of a light cell over that of a light and a dark one, both by their areas: scaled so that 1 is the largest
/// that is tolerated, 0 the nominal one, and -1 the smallest. Positive where the symbol is too thin.
double PrintGrowth(const ContrastMeasure& contrast, const SampledSymbol& symbol, CodePolarities polarity);

} // namespace Tesk::matrix
