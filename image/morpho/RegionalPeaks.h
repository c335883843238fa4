// The highest places of an image, for what searches by scores.
#pragma once

#include "image/Image.h"

#include <vector>

namespace Tesk::morpho {

struct Peak
{
    int x, y;
    int height; ///< gray level, or its complement for minima
};

/// The regional maxima of a `Gray` image that are at least `least` high, by falling height, `most` at the most if that
/// is positive; else in row order. May throw `std::bad_alloc`.
std::vector<Peak> FindMaxima(int least, int most, const Image& src, bool connexity8);

} // namespace Tesk::morpho
