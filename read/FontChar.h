// One trained sample of a character.
#pragma once

#include "image/Image.h"

#include <cstdint>

namespace Tesk {

/// A character of the font of a `CharReader`: the window that it was trained from, and that window resampled to the
/// size in which characters are compared.
struct FontChar
{
    std::uint16_t Code = 0;
    int Class = 0;             ///< the user's own
    bool WhiteOnBlack = false; ///< polarity at training time
    double SampleCount = 0;    ///< N, the pixels of the thumbnail
    double Sum = 0;            ///< of the thumbnail's pixels
    double Spread = 0;         ///< N * (sum of squares) - `Sum` * `Sum`
    double InverseNorm = 0;    ///< 1 / sqrt(`Spread`), 0 for a flat thumbnail
    double SafeScore = -1;     ///< the best score against a character of another code, -1 if there is none
    Image Sample;              ///< `Gray`, as trained
    Image Thumbnail;           ///< `Gray`, normalised

    FontChar() = default;
    FontChar(const FontChar& Other) { *this = Other; }
    FontChar& operator=(const FontChar& Other) = default;
};

/// The name of the record in scripts.
using FontCharImage = FontChar;

} // namespace Tesk
