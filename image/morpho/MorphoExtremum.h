// Dilation and erosion of a window by a structuring element, in a cost that hardly grows with the element.
#pragma once

#include "image/Morpho.h"
#include "image/morpho/MorphoKernels.h"

namespace Tesk::morpho {

using kernels::Extremum;

/// The element as a diamond dilated by a box, cut to what a window can hold. Half sizes.
struct Element
{
    Element(int width, int height, int diagonal, const Image& window);

    int diamond, boxX, boxY;
};

/// Writes the extremum under the element; `src` is `Gray` or `Gray16`, `dst` the same in type and size, and apart.
/// May throw `std::bad_alloc`.
void Apply(Extremum extremum, const Element& element, const Image& src, Image& dst);

} // namespace Tesk::morpho
