// Pictures for gauges: blurred steps at places known exactly.
#pragma once

#include "image/Image.h"

#include <cmath>
#include <cstdint>

namespace Tesk::checks {

/// Gray values of a step from `low` to `high` where a signed distance passes zero, blurred by a normal distribution.
template <typename Distance>
void PaintStep(Image& image, int width, int height, double blur, Distance distance, double low = 50, double high = 200)
{
    image.Set(width, height, Gray);
    for (int y = 0; y < height; y++)
        for (int x = 0; x < width; x++)
            image.Row(y)[x] = static_cast<std::uint8_t>(
                std::lround(low + (high - low) * (1 + std::erf(distance(x, y) / (blur * std::sqrt(2.0)))) / 2));
}

} // namespace Tesk::checks
