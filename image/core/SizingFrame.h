// The frame of operations whose result has a size of its own: hold the source, size and detach the destination, work
// apart where both lie in one store.
#pragma once

#include "foundation/Entry.h"
#include "image/operator/OperatorFrame.h"

#include <cstdint>

namespace Tesk::sizing {

/// Gives an image that window size and type; a window that fits stays where it is.
bool SizeWindow(Image& image, int width, int height, PixelTypes type);

/// Whether writes into a destination may reach a source: in its window as it stands, or as its size will make it.
inline bool Reaches(const Image& dst, const Image& src)
{
    return src.Buffer == dst.Buffer || points::Overlap(src, dst);
}

/// Sizes an image, and refuses what no image can have, or memory has no room for, as `Image::Set` does; true if it was
/// refused.
bool RefuseSize(Image& image, std::int64_t width, std::int64_t height, PixelTypes type);

/// Gives the destination a size and the source's type, and fills it by `compute(source, destination)`; through a
/// working image where both lie in one store or share memory. Memory that `compute` cannot get is refused
/// (`CannotAllocate`).
template <typename F>
void FillSized(const Entry& entry, const Image& Src, Image& Dst, std::int64_t width, std::int64_t height, F compute)
{
    Image src;
    src.ShallowCopy(Src, true);
    const PixelTypes type = src.Type;
    try {
        if (!Reaches(Dst, src)) {
            if (RefuseSize(Dst, width, height, type)) return;
            Dst.DetachIfShared(false);
            compute(src, Dst);
        } else {
            Image work;
            if (RefuseSize(work, width, height, type)) return;
            compute(src, work);
            if (RefuseSize(Dst, width, height, type)) return;
            Dst.DetachIfShared(false);
            points::CopyRows(work, Dst);
        }
    } catch (const std::bad_alloc&) {
        entry.Refuse(CannotAllocate, L"Cannot allocate an image buffer");
        return;
    }
    Dst.GradGain = 1;
    Status::Error().Code = NoError;
}

} // namespace Tesk::sizing
