// Linear symbols as pictures: encoded by the standards, turned, blurred and noised.
#pragma once

#include "../../Noise.h"
#include "foundation/Angles.h"
#include "image/Image.h"

#include <algorithm>
#include <cmath>
#include <string>
#include <vector>

namespace Tesk::checks {

/// The modules of EAN-13 (ISO/IEC 15420), '1' for bars, of the 13 digits of `text`.
inline std::string EAN13Modules(const std::string& text)
{
    static const char* const odd[] = {"0001101", "0011001", "0010011", "0111101", "0100011",
                                      "0110001", "0101111", "0111011", "0110111", "0001011"};
    static const char* const parities[] = {"oooooo", "ooeoee", "ooeeoe", "ooeeeo", "oeooee",
                                           "oeeooe", "oeeeoo", "oeoeoe", "oeoeeo", "oeeoeo"};
    const auto digit = [&](std::size_t i) { return static_cast<std::size_t>(text[i] - '0'); };
    const auto inverted = [](std::string modules) {
        for (char& c : modules)
            c = c == '0' ? '1' : '0';
        return modules;
    };
    std::string modules = "101";
    for (std::size_t i = 1; i <= 6; i++) {
        std::string character = odd[digit(i)];
        if (parities[digit(0)][i - 1] == 'e') {
            character = inverted(character);
            std::reverse(character.begin(), character.end());
        }
        modules += character;
    }
    modules += "01010";
    for (std::size_t i = 7; i <= 12; i++)
        modules += inverted(odd[digit(i)]);
    return modules + "101";
}

/// Modules of widths, beginning with a bar.
inline std::string Modules(const std::vector<int>& widths)
{
    std::string modules;
    for (std::size_t i = 0; i < widths.size(); i++)
        modules.append(static_cast<std::size_t>(widths[i]), i % 2 == 0 ? '1' : '0');
    return modules;
}

/// How a symbol is printed and seen.
struct Print
{
    double module = 2, height = 60; ///< in pixels
    double angle = 0;               ///< in degrees, from the x axis towards the y axis
    double x = 0, y = 0;            ///< of its centre
    int dark = 30, bright = 220;
    int blur = 0;  ///< rounds of a mean over three by three pixels
    int noise = 0; ///< up to that much to both sides
};

template <typename T>
void Paint(Image& image, const std::string& modules, const Print& print)
{
    const double c = std::cos(ToRadians(print.angle)), s = std::sin(ToRadians(print.angle));
    const double width = print.module * static_cast<double>(modules.size());
    for (int y = 0; y < image.Height; y++)
        for (int x = 0; x < image.Width; x++) {
            int bars = 0;
            for (int sub = 0; sub < 16; sub++) {
                const double dx = x - print.x + (sub % 4 - 1.5) / 4, dy = y - print.y + (sub / 4 - 1.5) / 4;
                const double u = c * dx + s * dy + width / 2, v = -s * dx + c * dy;
                if (std::abs(v) > print.height / 2 || u < 0 || u >= width) continue;
                bars += modules[static_cast<std::size_t>(u / print.module)] == '1';
            }
            if (bars > 0) image.Row<T>(y)[x] = static_cast<T>(print.bright + (print.dark - print.bright) * bars / 16);
        }
}

inline void BlurAndNoise(Image& image, int rounds, int noise)
{
    const int width = image.Width, height = image.Height;
    for (int round = 0; round < rounds; round++) {
        std::vector<std::uint8_t> before;
        for (int y = 0; y < height; y++)
            before.insert(before.end(), image.Row(y), image.Row(y) + width);
        for (int y = 1; y + 1 < height; y++)
            for (int x = 1; x + 1 < width; x++) {
                int sum = 0;
                for (int k = 0; k < 9; k++)
                    sum += before[static_cast<std::size_t>((y + k / 3 - 1) * width + x + k % 3 - 1)];
                image.Row(y)[x] = static_cast<std::uint8_t>(sum / 9);
            }
    }
    Noise random{7};
    for (int y = 0; y < height && noise > 0; y++)
        for (int x = 0; x < width; x++) {
            const int shift = static_cast<int>(random.Byte()) % (2 * noise + 1) - noise;
            image.Row(y)[x] = static_cast<std::uint8_t>(std::clamp(image.Row(y)[x] + shift, 0, 255));
        }
}

inline void Blank(Image& image, int width, int height, int gray = 220)
{
    image.Set(width, height, Gray);
    for (int y = 0; y < height; y++)
        std::fill(image.Row(y), image.Row(y) + width, static_cast<std::uint8_t>(gray));
}

/// A picture of one symbol in its middle.
inline void Picture(Image& image, int width, int height, const std::string& modules, Print print)
{
    Blank(image, width, height, print.bright);
    print.x = (width - 1) / 2.0;
    print.y = (height - 1) / 2.0;
    Paint<GrayPixel>(image, modules, print);
    BlurAndNoise(image, print.blur, print.noise);
}

} // namespace Tesk::checks
