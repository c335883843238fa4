// Maxima of the gradient's magnitude.
#pragma once

#include "image/Image.h"

namespace Tesk::edgemaps {

/// Refuses an image that is not `Gray`, and a gradient without a vector. An `ErrorCodes` value with its message stored.
int CheckGradient(const Image& src, GradientTypes type);

/// The gradient of a `Gray` image, and the noise as a magnitude of it. Throws `std::bad_alloc`, as the next.
int GradientOf(const Image& src, GradientTypes type, int noise, Image& gradient);

/// The magnitude, in gray levels up to 255, where it is a maximum along its larger component, within limits in the
/// units of the gradient. `maxima`, of type `Gray`, has the size of the gradient.
void Maxima(const Image& gradient, int noise, std::int64_t upperLimit, Image& maxima);

} // namespace Tesk::edgemaps
