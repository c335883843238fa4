// What the tests of Morpho share: random windows in larger stores, images as vectors.
#pragma once

#include "Failures.h"
#include "Noise.h"
#include "image/Image.h"
#include "image/Levels.h"
#include "image/Morpho.h"

#include <cstdint>
#include <string>
#include <vector>

namespace MorphoSupport {

using namespace Tesk;

using checks::allLevels;
using checks::AtLevel;
using checks::Message;

/// A plain picture: what the slow formulas work on.
struct Picture
{
    int width = 0, height = 0;
    std::vector<int> values;

    Picture(int w, int h, int fill = 0) : width(w), height(h), values(static_cast<std::size_t>(w * h), fill) {}
    explicit Picture(const Image& image) : Picture(image.Width, image.Height)
    {
        for (int y = 0; y < height; y++)
            for (int x = 0; x < width; x++)
                (*this)(x, y) = image.Type == Gray     ? image.Row(y)[x]
                                : image.Type == Gray16 ? image.Row<std::uint16_t>(y)[x]
                                                       : image.Row<std::int32_t>(y)[x];
    }
    /// Rows of characters: '.' for 0, a digit for itself, '#' for 255.
    explicit Picture(const std::vector<std::string>& rows)
        : Picture(static_cast<int>(rows.at(0).size()), static_cast<int>(rows.size()))
    {
        for (int y = 0; y < height; y++)
            for (int x = 0; x < width; x++) {
                const char c = rows[static_cast<std::size_t>(y)][static_cast<std::size_t>(x)];
                (*this)(x, y) = c == '.' ? 0 : c == '#' ? 255 : c - '0';
            }
    }

    int& operator()(int x, int y) { return values[static_cast<std::size_t>(y * width + x)]; }
    int operator()(int x, int y) const { return values[static_cast<std::size_t>(y * width + x)]; }
    bool Has(int x, int y) const { return x >= 0 && x < width && y >= 0 && y < height; }
    int Clamped(int x, int y) const { return (*this)(Clamp(x, 0, width - 1), Clamp(y, 0, height - 1)); }
    bool operator==(const Picture&) const = default;
};

inline std::ostream& operator<<(std::ostream& out, const Picture& picture)
{
    for (int y = 0; y < picture.height; y++) {
        for (int x = 0; x < picture.width; x++)
            out << picture(x, y) << ' ';
        out << '\n';
    }
    return out;
}

/// Each pixel of a picture of that size by `f(x, y)`.
template <typename F>
Picture Make(int width, int height, F f)
{
    Picture made(width, height);
    for (int y = 0; y < height; y++)
        for (int x = 0; x < width; x++)
            made(x, y) = f(x, y);
    return made;
}

inline void Load(const Picture& picture, Image& image, PixelTypes type = Gray)
{
    image.Set(picture.width, picture.height, type);
    for (int y = 0; y < picture.height; y++)
        for (int x = 0; x < picture.width; x++)
            if (type == Gray)
                image.Row(y)[x] = static_cast<std::uint8_t>(picture(x, y));
            else
                image.Row<std::uint16_t>(y)[x] = static_cast<std::uint16_t>(picture(x, y));
}

/// Values below `range`, the same for the same seed. A small range makes plateaus.
inline Picture Random(int width, int height, int range, std::uint32_t seed)
{
    checks::Noise noise{seed};
    Picture picture(width, height);
    for (int& value : picture.values)
        value = static_cast<int>((noise() >> 8) % static_cast<std::uint32_t>(range));
    return picture;
}

/// Random pixels in a window inside a larger store, whose other pixels are random too.
inline void RandomWindow(Image& image, int width, int height, PixelTypes type, int range, std::uint32_t seed)
{
    Load(Random(width + 7, height + 4, range, seed), image, type);
    image.Window(3, 1, width, height);
}

class MorphoTest : public checks::IgnoringFailures
{};

} // namespace MorphoSupport
