// Runs a neighbourhood filter over windows of all small sizes, at every SIMD level, in place and not, and compares each
// pixel with a formula on the window's pixels, of which those outside are the nearest ones inside.
#pragma once

#include "Failures.h"
#include "Noise.h"
#include "image/Image.h"
#include "image/Levels.h"

#include <algorithm>
#include <functional>
#include <string>
#include <vector>

namespace Tesk::checks {

/// Pixels of a window with coordinates of any size.
class Pixels
{
public:
    explicit Pixels(const Image& image) : width_(image.Width), height_(image.Height)
    {
        for (int y = 0; y < height_; y++)
            for (int x = 0; x < width_; x++)
                values_.push_back(image.Type == Gray16 ? image.Row<std::uint16_t>(y)[x] : image.Row(y)[x]);
    }

    int operator()(int x, int y) const
    {
        return values_[static_cast<std::size_t>(std::clamp(y, 0, height_ - 1) * width_ + std::clamp(x, 0, width_ - 1))];
    }
    int Width() const { return width_; }
    int Height() const { return height_; }

private:
    int width_, height_;
    std::vector<int> values_;
};

/// A window of `width` x `height` random pixels inside a larger store, which is random as well. Every third is made of
/// extremes, every third is smooth.
inline void Fill(Image& image, PixelTypes type, int width, int height, unsigned seed)
{
    image.Set(width + 9, height + 5, type);
    Noise noise{seed * 2654435761u + 1};
    const int bytes = RowBytes(width + 9, type);
    for (int y = 0; y < height + 5; y++)
        for (int i = 0; i < bytes; i++) {
            const unsigned random = noise.Byte();
            const unsigned value = seed % 3 == 0   ? random
                                   : seed % 3 == 1 ? (random & 1 ? 255u : 0u)
                                                   : 100u + static_cast<unsigned>(i + 3 * y) % 100u + (random & 3);
            image.Row(y)[i] = static_cast<std::uint8_t>(value);
        }
    image.Window(5, 3, width, height);
}

inline std::vector<std::uint8_t> Store(Image& image)
{
    const int x = image.X, y = image.Y, width = image.Width, height = image.Height;
    image.Window();
    std::vector<std::uint8_t> bytes;
    const auto n = static_cast<std::size_t>(RowBytes(image.Width, image.Type));
    for (int row = 0; row < image.Height; row++)
        bytes.insert(bytes.end(), image.Row(row), image.Row(row) + n);
    image.Window(x, y, width, height);
    return bytes;
}

using Filter = std::function<void(const Image&, Image&)>;
using Formula = std::function<int(const Pixels&, int, int)>;

inline void Expect(const std::string& name, const Image& result, const std::vector<int>& wanted)
{
    const Pixels got(result);
    for (int y = 0; y < got.Height(); y++)
        for (int x = 0; x < got.Width(); x++)
            ASSERT_EQ(got(x, y), wanted[static_cast<std::size_t>(y * got.Width() + x)])
                << name << " at " << x << ", " << y << " of " << got.Width() << " x " << got.Height() << ", level "
                << int{Status::SIMDLevel()};
}

inline void CheckWindow(const std::string& name, PixelTypes type, int width, int height, const Filter& filter,
                        const Formula& formula)
{
    const auto seed = static_cast<unsigned>(width * 10 + height);
    Image src;
    Fill(src, type, width, height, seed);
    std::vector<int> wanted;
    const Pixels pixels(src);
    for (int y = 0; y < height; y++)
        for (int x = 0; x < width; x++)
            wanted.push_back(formula(pixels, x, y));
    const auto before = Store(src);
    for (const SIMDLevels level : allLevels) {
        const AtLevel at(level);
        Image dst, same;
        Fill(dst, type, width, height, seed + 1);
        dst.Window(1, 2, width, height);
        auto around = Store(dst);
        filter(src, dst);
        ASSERT_EQ(Status::Error().Code, NoError) << name;
        ASSERT_NO_FATAL_FAILURE(Expect(name, dst, wanted));
        ASSERT_EQ(Store(src), before) << name;
        // Around the window nothing has changed.
        const auto after = Store(dst);
        const int pixel = ElementSize(type);
        const std::size_t row = static_cast<std::size_t>(RowBytes(width + 9, type));
        for (int y = 0; y < height; y++)
            std::copy_n(after.begin() + static_cast<std::ptrdiff_t>(row) * (y + 2) + pixel, RowBytes(width, type),
                        around.begin() + static_cast<std::ptrdiff_t>(row) * (y + 2) + pixel);
        ASSERT_EQ(after, around) << name << ' ' << width << ' ' << height;
        Fill(same, type, width, height, seed);
        filter(same, same);
        ASSERT_NO_FATAL_FAILURE(Expect(name + " in place", same, wanted));
    }
}

/// Widths from 1 to 67, and some heights from 1 to 9.
inline void CheckSmallWindows(const std::string& name, PixelTypes type, const Filter& filter, const Formula& formula)
{
    static constexpr int heights[] = {1, 2, 3, 5, 9, 4};
    for (int width = 1; width <= 67; width++)
        ASSERT_NO_FATAL_FAILURE(CheckWindow(name, type, width, heights[width % 6], filter, formula));
    for (int height = 1; height <= 9; height++)
        ASSERT_NO_FATAL_FAILURE(CheckWindow(name, type, 2 * height + 1, height, filter, formula));
}

inline int Byte(double value)
{
    return value >= 255 ? 255 : value > 0 ? static_cast<int>(value) : 0;
}

} // namespace Tesk::checks
