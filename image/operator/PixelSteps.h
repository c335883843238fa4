// The operations on pixels that other classes are made of, in their inner form: refusals go under the name of the
// method that needs them.
#pragma once

#include "image/Image.h"

namespace Tesk::points {

/// `Operator::Copy` of an image. True, and reported, if it was refused.
bool CopyPixels(const Entry& entry, const Image& src, Image& dst, PixelTypes type = Undefined);

/// `Operator::GainOffset`. True, and reported, if it was refused.
bool ScalePixels(const Entry& entry, double gain, double offset, const Image& src, Image& dst);

/// `Operator::Binarize` by the mean of the square around each pixel, of a `Gray` or `Gray16` image: 255 for those at
/// least `noise` above it, into an image that shares no pixel with it. An `ErrorCodes` value; may throw
/// `std::bad_alloc`.
int BinarizeAdaptively(int size, int noise, const Image& src, Image& dst);

} // namespace Tesk::points
