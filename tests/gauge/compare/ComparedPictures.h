// A picture without any repetition, anywhere and in any place, and a comparator that knows it.
#pragma once

#include "foundation/Angles.h"
#include "gauge/Comparator.h"
#include "image/Image.h"

#include <cmath>
#include <cstdint>

namespace Tesk::checks {

inline constexpr int pictureWidth = 200, pictureHeight = 160;
/// That of the working area under the margins of a new comparator.
inline constexpr int areaX = 32, areaY = 32, areaWidth = 136, areaHeight = 96;

/// A gray value from 30 to 220 at a point of the plane: smooth between the nodes of a grid, at which it is random.
inline double Shade(double x, double y)
{
    constexpr double cell = 9;
    const auto node = [](double i, double j) {
        const auto seed = static_cast<std::uint32_t>(static_cast<int>(i) * 7919 + static_cast<int>(j) * 104729);
        std::uint32_t v = (seed ^ 0x9e3779b9u) * 2654435761u;
        v = (v ^ v >> 15) * 2246822519u;
        return 30 + 190 * ((v ^ v >> 13) & 0xffff) / 65535.0;
    };
    const double i = std::floor(x / cell), j = std::floor(y / cell);
    const auto ease = [](double t) { return t * t * (3 - 2 * t); };
    const double u = ease(x / cell - i), v = ease(y / cell - j);
    return (1 - v) * ((1 - u) * node(i, j) + u * node(i + 1, j)) +
           v * ((1 - u) * node(i, j + 1) + u * node(i + 1, j + 1));
}

/// Paints the plane, shifted, and turned about the middle by an angle in degrees as `Locator` counts it.
inline void Paint(Image& image, double dx = 0, double dy = 0, double degrees = 0, PixelTypes type = Gray,
                  double gain = 1, double offset = 0)
{
    image.Set(pictureWidth, pictureHeight, type);
    const double c = std::cos(ToRadians(degrees)), s = std::sin(ToRadians(degrees)), mx = pictureWidth / 2.0,
                 my = pictureHeight / 2.0;
    const int channels = type == Rgb ? 3 : 1;
    for (int y = 0; y < pictureHeight; y++)
        for (int x = 0; x < pictureWidth; x++) {
            const double u = x - mx - dx, v = y - my - dy;
            const double value = gain * Shade(mx + c * u - s * v, my + s * u + c * v) + offset;
            for (int k = 0; k < channels; k++)
                image.Row(y)[channels * x + k] = static_cast<std::uint8_t>(std::fmin(std::fmax(value, 0), 255));
        }
}

/// Taught the unmoved picture, with one aligner that only shifts.
inline void Teach(Comparator& comparator, PixelTypes type = Gray)
{
    Image reference;
    Paint(reference, 0, 0, 0, type);
    comparator.SetReference(reference, 1, 1, Translation);
    comparator.TrainAligners();
}

} // namespace Tesk::checks
