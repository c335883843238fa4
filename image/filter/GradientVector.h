// The gradient of a `Gray` image as two components a pixel: a service for the edge filters and for the classes that
// follow or match edges.
#pragma once

#include "image/Image.h"

namespace Tesk::gradients {

/// "SobelGradient" for `SobelGradient`; "?" outside the enumeration.
const wchar_t* TypeName(GradientTypes type);

/// What a component of that gradient must be divided by to stand at the scale of gray differences: 1, 3, 4, 1, 1, 5, 35
/// from `StandardGradient` to `Canny2Gradient`; 0 for the types that have no vector.
int Gain(GradientTypes type);

/// Fills `grad`, of type `Grad` and of the window size of `src` (`Gray`, not void), with the components x and y, and
/// sets its `GradGain`. The images share no pixel. Components point from dark to bright, rightward and downward; at the
/// edge of the window the one-sided difference is doubled. `CorrelatedGradient` leaves 0 in the two outer rows and
/// columns. The type is one with a `Gain`. Throws `std::bad_alloc`.
void Compute(const Image& src, GradientTypes type, Image& grad);

} // namespace Tesk::gradients
