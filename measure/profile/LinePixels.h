// The pixels along an oblique line, nearest or between: for profiles, and for what takes many of them.
#pragma once

#include "image/Image.h"
#include "image/core/PixelTypes.h"

#include <cmath>
#include <cstdint>

namespace Tesk::profiles {

using images::Channels;

/// The numbers of a pixel, red first.
inline void Put(GrayPixel pixel, std::int32_t* out)
{
    *out = pixel;
}
inline void Put(Gray16Pixel pixel, std::int32_t* out)
{
    *out = pixel;
}
inline void Put(RgbPixel pixel, std::int32_t* out)
{
    out[0] = pixel.Red;
    out[1] = pixel.Green;
    out[2] = pixel.Blue;
}

/// Calls `f` with a null pointer to the image's pixel type: `Gray`, `Gray16` or else `Rgb`.
template <typename F>
void ByPixel(PixelTypes type, F f)
{
    if (type == Gray)
        f(static_cast<GrayPixel*>(nullptr));
    else if (type == Gray16)
        f(static_cast<Gray16Pixel*>(nullptr));
    else
        f(static_cast<RgbPixel*>(nullptr));
}

/// An index into `count` pixels from a coordinate, held to the ends; not a number counts as 0.
inline int Held(double v, int count)
{
    return v >= count ? count - 1 : v > 0 ? static_cast<int>(v) : 0;
}

/// Two neighbours and how far the place lies from the first to the second.
struct Between
{
    int first, second;
    double fraction;
};

inline Between Neighbours(double v, int count)
{
    const double floor = std::floor(v);
    if (floor >= count - 1 && count > 1) return {count - 2, count - 1, 1.0};
    if (!(floor >= 0) || count == 1) return {0, count > 1 ? 1 : 0, 0.0};
    const int first = static_cast<int>(floor);
    return {first, first + 1, v - floor};
}

struct Direction
{
    double x, y, length;
};

inline Direction DirectionOf(const XY& beg, const XY& end)
{
    const double dx = end.X - beg.X, dy = end.Y - beg.Y, length = std::hypot(dx, dy);
    return {dx / length, dy / length, length};
}

/// Pixels at `count` places, one step of `u` from one to the next.
template <typename T>
void FetchNearest(const Image& src, XY from, const Direction& u, int count, std::int32_t* out)
{
    for (int i = 0; i < count; i++, out += Channels(src.Type))
        Put(src.Row<T>(Held(from.Y + i * u.y + 0.5, src.Height))[Held(from.X + i * u.x + 0.5, src.Width)], out);
}

template <typename T>
void FetchBetween(const Image& src, XY from, const Direction& u, int count, std::int32_t* out)
{
    constexpr int channels = sizeof(T) == sizeof(RgbPixel) ? 3 : 1;
    for (int i = 0; i < count; i++, out += channels) {
        const Between x = Neighbours(from.X + i * u.x, src.Width), y = Neighbours(from.Y + i * u.y, src.Height);
        const T *upper = src.Row<T>(y.first), *lower = src.Row<T>(y.second);
        std::int32_t corners[4][channels];
        Put(upper[x.first], corners[0]);
        Put(upper[x.second], corners[1]);
        Put(lower[x.first], corners[2]);
        Put(lower[x.second], corners[3]);
        for (int c = 0; c < channels; c++) {
            // In this form equal neighbours give their value exactly, whatever the fraction.
            const double above = corners[0][c] + x.fraction * (corners[1][c] - corners[0][c]);
            const double below = corners[2][c] + x.fraction * (corners[3][c] - corners[2][c]);
            out[c] = static_cast<std::int32_t>(above + y.fraction * (below - above));
        }
    }
}

/// For `Gray`, `Gray16` and `Rgb` images: `count` samples from a place on, each one number or three.
inline void FetchLine(const Image& src, XY from, const Direction& u, int count, bool interpolate, std::int32_t* out)
{
    ByPixel(src.Type, [&]<typename T>(T*) {
        if (interpolate)
            FetchBetween<T>(src, from, u, count, out);
        else
            FetchNearest<T>(src, from, u, count, out);
    });
}

} // namespace Tesk::profiles
