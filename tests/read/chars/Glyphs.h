// Small pictures to be trained and read, and comparison by the plain formula.
#pragma once

#include "Noise.h"
#include "image/Image.h"
#include "read/chars/Thumbnail.h"

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <cstdlib>
#include <initializer_list>

namespace Tesk::checks {

/// Bytes without any order, below `limit`.
inline void Fill(Image& image, int width, int height, std::uint32_t seed, int limit = 256)
{
    Noise noise{seed};
    image.Set(width, height, Gray);
    for (int y = 0; y < height; y++)
        for (int x = 0; x < width; x++)
            image.Row(y)[x] = static_cast<std::uint8_t>(noise.Byte() * limit / 256);
}

inline void Fill(Image& image, int width, std::initializer_list<int> pixels)
{
    image.Set(width, static_cast<int>(pixels.size()) / width, Gray);
    int i = 0;
    for (const int pixel : pixels) {
        image.Row(i / width)[i % width] = static_cast<std::uint8_t>(pixel);
        i++;
    }
}

/// A window of one image, in place of a pixel of which it stands in another one.
inline void Paste(const Image& src, Image& dst, int x, int y)
{
    for (int v = 0; v < src.Height; v++)
        std::copy(src.Row(v), src.Row(v) + src.Width, dst.Row(y + v) + x);
}

inline void Crop(const Image& src, int x, int y, int width, int height, Image& dst)
{
    dst.Set(width, height, Gray);
    for (int v = 0; v < height; v++)
        std::copy(src.Row(y + v) + x, src.Row(y + v) + x + width, dst.Row(v));
}

/// Correlation by means and deviations.
inline double SlowScore(const Image& font, const Image& image, double* contrast = nullptr)
{
    if (contrast) *contrast = 0;
    if (std::abs(font.Height - image.Height) > 4) return -1;
    const int width = std::min(+font.Width, +image.Width), height = std::min(+font.Height, +image.Height);
    const auto each = [&](auto f) {
        for (int y = 0; y < height; y++)
            for (int x = 0; x < width; x++)
                f(static_cast<double>(font.Row(y)[(font.Width - width) / 2 + x]),
                  static_cast<double>(image.Row(y)[(image.Width - width) / 2 + x]));
    };
    double n = width * height, meanF = 0, meanI = 0, ff = 0, fi = 0, ii = 0;
    each([&](double f, double i) {
        meanF += f / n;
        meanI += i / n;
    });
    each([&](double f, double i) {
        ff += (f - meanF) * (f - meanF);
        fi += (f - meanF) * (i - meanI);
        ii += (i - meanI) * (i - meanI);
    });
    if (ii < 1e-6) return -1;
    if (contrast) *contrast = fi / ii;
    return ff < 1e-6 ? 0 : fi / std::sqrt(ff * ii);
}

} // namespace Tesk::checks
