// The one frame of the neighbourhood filters: check, size, detach, keep the source apart from the destination, and walk
// over rows that are replicated beyond the window.
#pragma once

#include "image/operator/OperatorFrame.h"

#include <algorithm>
#include <vector>

namespace Tesk::filters {

using points::InPlace;
using points::Types;

/// Beyond this size sums of 16-bit pixels over a square would not fit in 64 bits.
inline constexpr int largestSize = 32767;

int RefuseSize(const wchar_t* name, int size);

inline int CheckSource(const Image& src, Types types)
{
    if (const int code = CheckImage(src)) return code;
    return types.Has(src.Type) ? int{NoError} : points::RefuseType(src.Type);
}

/// `name` is "Width", "Height", "Size" or "size", as the message has it.
inline int CheckSize(const wchar_t* name, int size)
{
    return size > 0 && size <= largestSize && size % 2 == 1 ? int{NoError} : RefuseSize(name, size);
}

inline int CheckSizes(int width, int height)
{
    if (const int code = CheckSize(L"Width", width)) return code;
    return CheckSize(L"Height", height);
}

inline int CheckClip(GrayClipping clip, std::initializer_list<GrayClipping> served)
{
    for (const GrayClipping mode : served)
        if (clip == mode) return NoError;
    return points::RefuseClip(clip);
}

/// The source during an operation: a view, or a copy of the window where the filter's writes would reach pixels that
/// are still to be read. A filter that keeps the source rows that it still needs can write over them at the same place.
class Source
{
public:
    /// Sizes and detaches the destination, once all else is checked. True if the operation must end.
    bool Hold(const Entry& entry, const Image& src, Image& dst, PixelTypes type, InPlace inPlace);

    const Image& operator*() const { return image_; }
    const Image* operator->() const { return &image_; }

private:
    Image image_;
};

/// Runs the working part of a method; what it allocates beyond the memory there is becomes a refusal.
template <typename F>
void Guarded(const Entry& entry, F work)
{
    entry.Guards(L"Cannot allocate the working buffers of the filter", work);
}

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
