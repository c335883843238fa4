// The images of a scale ladder.
#include "read/matrix/ScaleLadder.h"

#include "image/filter/SquareFilters.h"

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <new>
#include <vector>

namespace Tesk::matrix {

namespace {

void Size(Image& image, int width, int height)
{
    if (image.Type == Gray && image.Width == width && image.Height == height) return;
    if (image.TrySet(width, height, Gray) != NoError) throw std::bad_alloc();
}

std::uint8_t Nearer(int a, int b)
{
    return static_cast<std::uint8_t>((3 * a + b) >> 2);
}

void DoubleRow(const std::uint8_t* s, int n, std::uint8_t* d)
{
    d[0] = s[0];
    for (int i = 0; i + 1 < n; ++i) {
        d[2 * i + 1] = Nearer(s[i], s[i + 1]);
        d[2 * i + 2] = Nearer(s[i + 1], s[i]);
    }
    d[2 * n - 1] = s[n - 1];
}

} // namespace

void Double(const Image& src, Image& dst)
{
    const int width = src.Width, height = src.Height;
    Size(dst, 2 * width, 2 * height);
    const auto n = static_cast<std::size_t>(2 * width);
    std::vector<std::uint8_t> above(n), below(n);
    DoubleRow(src.Row(0), width, above.data());
    std::copy(above.begin(), above.end(), dst.Row(0));
    for (int y = 0; y + 1 < height; ++y) {
        DoubleRow(src.Row(y + 1), width, below.data());
        std::uint8_t *upper = dst.Row(2 * y + 1), *lower = dst.Row(2 * y + 2);
        for (std::size_t x = 0; x < n; ++x) {
            upper[x] = Nearer(above[x], below[x]);
            lower[x] = Nearer(below[x], above[x]);
        }
        above.swap(below);
    }
    std::copy(above.begin(), above.end(), dst.Row(2 * height - 1));
}

void ShrinkByThird(const Image& src, Image& dst)
{
    const int across = src.Width / 3, down = src.Height / 3;
    Size(dst, 2 * across, 2 * down);
    for (int v = 0; v < down; ++v)
        for (const int corner : {0, 2}) {
            const std::uint8_t *outer = src.Row(3 * v + corner), *middle = src.Row(3 * v + 1);
            std::uint8_t* d = dst.Row(2 * v + corner / 2);
            for (int u = 0; u < across; ++u, outer += 3, middle += 3, d += 2) {
                d[0] = static_cast<std::uint8_t>((4 * outer[0] + 2 * (outer[1] + middle[0]) + middle[1]) / 9);
                d[1] = static_cast<std::uint8_t>((4 * outer[2] + 2 * (outer[1] + middle[2]) + middle[1]) / 9);
            }
        }
}

void ScaleLadder::Start(const Image& source, int level)
{
    source_ = &source;
    level_ = level < 0 ? level : 0;
    Enlarge(level_);
}

void ScaleLadder::Enlarge(int level)
{
    scale_ = 1;
    const Image* from = source_;
    for (int i = level; i < 0; ++i) {
        current_ ^= 1;
        Image& enlarged = buffers_[static_cast<std::size_t>(current_)];
        Double(*from, enlarged);
        from = &enlarged;
        scale_ /= 2;
    }
    if (level < 0) {
        Image& enlarged = buffers_[static_cast<std::size_t>(current_)];
        filters::FilterSquares(kernels::Square3::Sharpen4, enlarged, enlarged);
    }
}

void ScaleLadder::Descend()
{
    if (++level_ <= 0) {
        Enlarge(level_);
        return;
    }
    const Image& from = level_ == 1 ? *source_ : buffers_[static_cast<std::size_t>(current_)];
    current_ ^= 1;
    ShrinkByThird(from, buffers_[static_cast<std::size_t>(current_)]);
    scale_ *= 1.5;
}

} // namespace Tesk::matrix
