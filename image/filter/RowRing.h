// A window of rows that moves down an image, replicated beyond its edges.
#pragma once

#include "image/Image.h"

#include <cstdint>
#include <cstring>
#include <vector>

namespace Tesk::filters {

/// Copies of the rows around the current one, each extended to the left and right by its end pixels and then by spare
/// room for the last step of a vector loop. The copies let a filter write over its source.
template <typename T>
class RowRing
{
public:
    /// `radiusX` in elements of T, of which `step` make a pixel; `radiusY` in rows.
    RowRing(const Image& src, int radiusX, int radiusY, int step = 1)
        : src_(src), radiusX_(radiusX), radiusY_(radiusY), step_(step), count_(2 * radiusY + 1),
          width_(src.Width * step)
    {
        left_ = (static_cast<std::size_t>(radiusX) + lead - 1) / lead * lead;
        pitch_ = left_ + static_cast<std::size_t>(width_) + static_cast<std::size_t>(radiusX) + spare;
        pitch_ = (pitch_ + lead - 1) / lead * lead;
        store_.resize(pitch_ * static_cast<std::size_t>(count_) + lead);
        // The rows begin at whole lines, so that loads at the pixel itself are aligned.
        const auto address = reinterpret_cast<std::uintptr_t>(store_.data());
        first_ = store_.data() + (64 - address % 64) % 64 / sizeof(T);
        // Any row is present while radiusY rows below and above the current one are.
        for (int y = 0; y < Min(radiusY, int(src.Height)); y++)
            Take(y);
    }

    /// Makes `y` the current row; rows go upward by one.
    void MoveTo(int y)
    {
        if (y + radiusY_ < src_.Height) Take(y + radiusY_);
    }

    /// A row within the radius of the current one, replicated beyond the window.
    const T* Row(int y) const { return Slot(Clamp(y, 0, src_.Height - 1)); }

private:
    static constexpr std::size_t lead = 64 / sizeof(T), spare = 128 / sizeof(T);

    T* Slot(int y) const { return first_ + pitch_ * static_cast<std::size_t>(y % count_) + left_; }

    void Take(int y)
    {
        T* row = Slot(y);
        std::memcpy(row, src_.Row<T>(y), static_cast<std::size_t>(width_) * sizeof(T));
        for (int i = 0; i < radiusX_; i++) {
            row[-1 - i] = row[step_ - 1 - i % step_];
            row[width_ + i] = row[width_ - step_ + i % step_];
        }
    }

    const Image& src_;
    int radiusX_, radiusY_, step_, count_, width_;
    std::size_t left_ = 0, pitch_ = 0;
    std::vector<T> store_;
    T* first_ = nullptr;
};

} // namespace Tesk::filters
