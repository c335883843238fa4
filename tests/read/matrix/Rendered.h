// Matrix symbols as a camera sees them: cells laid on a plane by a homography and sampled by area, then blurred and
// noised.
#pragma once

#include "foundation/Records.h"
#include "image/Image.h"
#include "image/Kernel.h"
#include "image/Operator.h"
#include "read/codewords/MadeSymbols.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <cstddef>
#include <cstdint>
#include <iterator>
#include <numbers>
#include <random>
#include <string_view>
#include <vector>

namespace Tesk::matrix {

/// The cells of a symbol, row by row.
struct SymbolCells
{
    int rows = 0, columns = 0;
    std::vector<bool> dark;

    SymbolCells(int r, int c) : rows(r), columns(c), dark(static_cast<std::size_t>(r) * static_cast<std::size_t>(c)) {}
    explicit SymbolCells(const codewords::MadeSymbol& made) : SymbolCells(made.rows, made.columns)
    {
        for (std::size_t i = 0; i < dark.size(); ++i) {
            const char digit = made.cells[i / 4];
            dark[i] = ((digit <= '9' ? digit - '0' : digit - 'a' + 10) >> (3 - i % 4) & 1) != 0;
        }
    }

    /// False outside, where the quiet zone is.
    bool operator()(int row, int column) const
    {
        return row >= 0 && column >= 0 && row < rows && column < columns && dark[Index(row, column)];
    }
    void Flip(int row, int column) { dark[Index(row, column)] = !dark[Index(row, column)]; }
    /// Seen from behind.
    SymbolCells Mirrored() const
    {
        SymbolCells seen(rows, columns);
        for (int row = 0; row < rows; ++row)
            for (int column = 0; column < columns; ++column)
                seen.dark[Index(row, column)] = (*this)(row, columns - 1 - column);
        return seen;
    }

private:
    std::size_t Index(int row, int column) const { return static_cast<std::size_t>(row * columns + column); }
};

/// The symbol of that name.
inline const codewords::MadeSymbol& MadeNamed(std::string_view name)
{
    return *std::find_if(std::begin(codewords::madeSymbols), std::end(codewords::madeSymbols),
                         [&](const codewords::MadeSymbol& made) { return name == made.name; });
}

/// From pixels, whose middles have whole coordinates, to cells, where the cell of row r and column c covers c to c + 1
/// and r to r + 1.
struct Homography
{
    std::array<double, 9> m{1, 0, 0, 0, 1, 0, 0, 0, 1};

    XY operator()(XY p) const
    {
        const double w = m[6] * p.X + m[7] * p.Y + m[8];
        return {(m[0] * p.X + m[1] * p.Y + m[2]) / w, (m[3] * p.X + m[4] * p.Y + m[5]) / w};
    }
    Homography Inverse() const
    {
        const auto [a, b, c, d, e, f, g, h, i] = m;
        return {{e * i - f * h, c * h - b * i, b * f - c * e, f * g - d * i, a * i - c * g, c * d - a * f,
                 d * h - e * g, b * g - a * h, a * e - b * d}};
    }
    /// The corner of the first cell, the side of a cell in pixels, and the direction of the rows, clockwise.
    static Homography Turned(XY corner, double cell, double degrees = 0)
    {
        const double c = cell * std::cos(degrees * std::numbers::pi / 180);
        const double s = cell * std::sin(degrees * std::numbers::pi / 180);
        return Homography{{c, -s, corner.X, s, c, corner.Y, 0, 0, 1}}.Inverse();
    }
    /// The places of the corners of `columns` x `rows` cells, from that of the first cell along the first row on
    /// around.
    static Homography Between(std::array<XY, 4> p, int columns, int rows)
    {
        // The unit square to four places (Heckbert 1989), after the scale to the unit square.
        const XY s = p[0] - p[1] + p[2] - p[3], u = p[1] - p[2], v = p[3] - p[2];
        const double det = u.X * v.Y - v.X * u.Y;
        const double g = (s.X * v.Y - v.X * s.Y) / det, h = (u.X * s.Y - s.X * u.Y) / det;
        const double w = columns, t = rows;
        return Homography{{(p[1].X - p[0].X + g * p[1].X) / w, (p[3].X - p[0].X + h * p[3].X) / t, p[0].X,
                           (p[1].Y - p[0].Y + g * p[1].Y) / w, (p[3].Y - p[0].Y + h * p[3].Y) / t, p[0].Y, g / w, h / t,
                           1}}
            .Inverse();
    }
};

/// How a symbol is printed and seen.
struct Print
{
    int ink = 30, paper = 220;
    double dot = 0; ///< the diameter of round dots in cells; 0 for square cells
};

/// A `Gray` image of one level.
inline void Blank(Image& image, int width, int height, int level = 220)
{
    image.Set(width, height, Gray);
    Operator::Copy(level, image);
}

/// Paints the symbol over an image; what lies `quiet` cells beside it becomes paper, the rest stays.
inline void Paint(const SymbolCells& cells, const Homography& place, Image& image, const Print& print = {},
                  double quiet = 1)
{
    constexpr int fine = 4;
    for (int y = 0; y < image.Height; ++y)
        for (int x = 0; x < image.Width; ++x) {
            int ink = 0, inside = 0;
            for (int i = 0; i < fine * fine; ++i) {
                const XY at = place({x + (i % fine + 0.5) / fine - 0.5, y + (i / fine + 0.5) / fine - 0.5});
                if (at.X < -quiet || at.Y < -quiet || at.X > cells.columns + quiet || at.Y > cells.rows + quiet)
                    continue;
                inside++;
                const double column = std::floor(at.X), row = std::floor(at.Y);
                const bool covered =
                    print.dot == 0 || std::hypot(at.X - column - 0.5, at.Y - row - 0.5) < print.dot / 2;
                ink += covered && cells(static_cast<int>(row), static_cast<int>(column));
            }
            auto& pixel = image.Row(y)[x];
            const int outside = fine * fine - inside;
            pixel = static_cast<std::uint8_t>(
                (outside * pixel + ink * print.ink + (inside - ink) * print.paper + fine * fine / 2) / (fine * fine));
        }
}

/// Adds normal noise of that deviation, from a fixed generator.
inline void AddNoise(Image& image, double deviation, unsigned seed = 1)
{
    std::mt19937 generator(seed);
    std::normal_distribution<double> noise(0, deviation);
    for (int y = 0; y < image.Height; ++y)
        for (int x = 0; x < image.Width; ++x) {
            auto& pixel = image.Row(y)[x];
            pixel = static_cast<std::uint8_t>(std::clamp(std::lround(pixel + noise(generator)), 0L, 255L));
        }
}

/// Blurs so many times by the mask 1 2 1.
inline void Blur(Image& image, int times)
{
    for (int i = 0; i < times; ++i)
        Kernel::Binomial(image, image);
}

} // namespace Tesk::matrix
