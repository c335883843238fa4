// What the tests of resizing and warping operations share: pixels as plain numbers.
#pragma once

#include "Noise.h"
#include "image/Image.h"
#include "image/Levels.h"

#include <vector>

namespace Tesk {

/// Pixels as plain numbers, channel by channel, so that the expected values are computed without the library.
struct Samples
{
    int width = 0, height = 0, channels = 1;
    std::vector<int> values;
    int At(int x, int y, int c) const { return values[static_cast<std::size_t>((y * width + x) * channels + c)]; }
    bool operator==(const Samples&) const = default;
};

inline int Channels(PixelTypes type)
{
    return type == Rgb ? 3 : type == Rgba ? 4 : 1;
}

inline void Fill(Image& image, std::uint32_t seed)
{
    checks::Noise noise{seed};
    for (int y = 0; y < image.StoreHeight; y++)
        for (int i = 0; i < RowBytes(image.StoreWidth, image.Type); i++)
            image.Row(y)[i] = noise.Byte();
}

inline Samples SamplesOf(const Image& image)
{
    Samples samples{image.Width, image.Height, Channels(image.Type), {}};
    for (int y = 0; y < image.Height; y++)
        for (int i = 0; i < image.Width * samples.channels; i++)
            samples.values.push_back(image.Type == Gray16 ? image.Row<std::uint16_t>(y)[i] : image.Row(y)[i]);
    return samples;
}

/// The samples f(x, y, channel).
template <typename F>
Samples Made(int width, int height, int channels, F f)
{
    Samples samples{width, height, channels, {}};
    for (int y = 0; y < height; y++)
        for (int x = 0; x < width; x++)
            for (int c = 0; c < channels; c++)
                samples.values.push_back(static_cast<int>(f(x, y, c)));
    return samples;
}

} // namespace Tesk
