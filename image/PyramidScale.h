// What the levels of a pyramid and the free-standing rescalings share.
#pragma once

#include "image/Image.h"

namespace Tesk::pyramid {

/// Refuses pixel types other than `Gray`, `Gray16` and `Rgb`.
int CheckScalable(const Image& src);
/// Gives a window its size, if it has another one; false without memory.
bool SizeWindow(Image& image, int width, int height, PixelTypes type);
void CopyWindow(const Image& src, Image& dst);
/// Fills `dst` with half (dyadic) or two thirds of `src`.
void Reduce(const Image& src, Image& dst, bool dyadic);

} // namespace Tesk::pyramid
