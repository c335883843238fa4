// What the levels of a pyramid and the free-standing rescalings share.
#pragma once

#include "image/Image.h"

namespace Tesk::pyramid {

/// Refuses void images, and pixel types other than `Gray`, `Gray16` and `Rgb`.
int CheckScalable(const Image& src);
/// Fills `dst` with half (dyadic) or two thirds of `src`.
void Reduce(const Image& src, Image& dst, bool dyadic);

} // namespace Tesk::pyramid
