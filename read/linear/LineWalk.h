// Lines of an image as gray values, and the edges on them.
#pragma once

#include "image/Image.h"

#include <cstddef>
#include <cstdint>
#include <span>

namespace Tesk::linear {

struct Pixel
{
    int x = 0, y = 0;
};

/// The window of an image whose gray values are looked at: of colours, their largest component.
class Raster
{
public:
    explicit Raster(const Image& src)
        : first_(src.FirstPixel), pitch_(src.Pitch), type_(src.Type), width_(src.Width), height_(src.Height)
    {}

    int Width() const { return width_; }
    int Height() const { return height_; }
    PixelTypes Type() const { return type_; }

    /// The pixels of Bresenham's line, both ends included; `out` needs max(|dx|, |dy|) + 1. How many there are.
    int Walk(Pixel from, Pixel to, int* out) const;
    /// The sums of `lines` lines beside each other, `dx` and `dy` from one to the next, that run as the line from
    /// `from` to `to` does; what lies outside repeats the border.
    int WalkAdded(Pixel from, Pixel to, int lines, double dx, double dy, int* out) const;
    /// Bilinear samples of a line at `count` places, from `start` on, in steps of `dx`, `dy`.
    void Sample(XY start, double dx, double dy, int count, int* out) const;
    /// The sums of such lines, `shift` from one to the next, to both sides of the one told.
    void SampleAdded(XY start, XY step, int count, int lines, XY shift, int* out) const;
    int At(int x, int y) const;

private:
    template <typename F>
    decltype(auto) ByPixel(F f) const;

    const std::uint8_t* first_;
    std::ptrdiff_t pitch_;
    PixelTypes type_;
    int width_, height_;
};

/// What counts as an edge: swings over `noise` are looked at, those of at least `step` are edges.
struct EdgeRule
{
    int noise, step;

    /// Settings of any value, held to what no gray value exceeds.
    static EdgeRule Of(int noise, int step);
};

/// Where a line turns, by more than the noise.
struct Turn
{
    int index, value;
};

/// The ends of the alternately rising and falling swings of a line; the first one may have no height. `out` needs two
/// places more than the line has pixels.
int FindTurns(std::span<const int> line, int noise, Turn* out);
/// The edges between the turns of a line, alternately rising and falling, in 1/256 pixel; `out` needs a place for each
/// turn. A second swing in the same direction as the last edge, after one that was too small, is no edge: bars and
/// spaces alternate. How many there are.
int EdgesBetween(std::span<const int> line, std::span<const Turn> turns, int step, int* out, bool& rising);

} // namespace Tesk::linear
