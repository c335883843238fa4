// The noise of an image by the answers to a mask that no smooth surface gives (Immerkaer 1996).
#pragma once

#include "image/Image.h"

namespace Tesk::levels {

/// The standard deviation of the noise of a `Gray`, `Gray16` or `Rgb` image, 0 where it has no pixels inside the
/// mask. Throws `std::bad_alloc`.
double NoiseOf(const Image& src, bool large);

} // namespace Tesk::levels
