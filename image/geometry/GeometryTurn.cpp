// Exact transforms: flip, mirror, quarter turns.
#include "foundation/Entry.h"
#include "image/Geometry.h"
#include "image/core/Destination.h"
#include "image/geometry/QuarterTurn.h"
#include "image/geometry/TurnKernels.h"
#include "image/geometry/WarpFrame.h"

#include <cstring>
#include <vector>

namespace Tesk {

namespace {

std::size_t RowSize(const Image& image)
{
    return static_cast<std::size_t>(images::ByteCount(image));
}

/// Rows from the last to the first; source and destination may be one.
void FlipRows(const Image& src, Image& dst)
{
    const std::size_t size = RowSize(dst);
    const int last = dst.Height - 1;
    if (src.FirstPixel != dst.FirstPixel) {
        for (int y = 0; y <= last; y++)
            std::memcpy(dst.Row(y), src.Row(last - y), size);
        return;
    }
    std::vector<std::uint8_t> kept(size);
    for (int y = 0; y < last - y; y++) {
        std::memcpy(kept.data(), dst.Row(y), size);
        std::memcpy(dst.Row(y), dst.Row(last - y), size);
        std::memcpy(dst.Row(last - y), kept.data(), size);
    }
}

/// Pixels of each row from the last to the first, `rowOf(y)` the row that goes to row `y`; source and destination may
/// be one where the rows stay in place.
void MirrorRows(const Image& src, Image& dst, bool flipped)
{
    const std::size_t size = RowSize(dst), elementSize = static_cast<std::size_t>(ElementSize(dst.Type));
    const bool inPlace = src.FirstPixel == dst.FirstPixel;
    std::vector<std::uint8_t> kept(inPlace ? size : 0);
    for (int y = 0; y < dst.Height; y++) {
        const std::uint8_t* s = src.Row(flipped ? dst.Height - 1 - y : y);
        if (inPlace) {
            std::memcpy(kept.data(), s, size);
            s = kept.data();
        }
        kernels::ReverseRow(s, dst.Row(y), static_cast<std::size_t>(int(dst.Width)), elementSize);
    }
}

/// The frame of the two that keep the size.
template <typename F>
void KeepSize(const char* context, const Image& Src, Image& Dst, F f)
{
    const Entry entry(context);
    if (entry.Refuses(images::CheckType(Src, warps::sampledTypes))) return;
    images::Sources held;
    if (Prepare(entry, Src, Dst, Undefined, held)) return;
    entry.Guards(images::noImage, [&] { f(held.a, Dst); });
}

} // namespace

void Geometry::Flip(const Image& Src, Image& Dst)
{
    KeepSize("Tesk::Geometry::Flip", Src, Dst, FlipRows);
}

void Geometry::Mirror(const Image& Src, Image& Dst)
{
    KeepSize("Tesk::Geometry::Mirror", Src, Dst, [](const Image& s, Image& d) { MirrorRows(s, d, false); });
}

void Geometry::Turn(int Quadrant, const Image& Src, Image& Dst)
{
    turns::TurnPixels(Entry("Tesk::Geometry::Turn"), Quadrant, Src, Dst);
}

namespace turns {

bool TurnPixels(const Entry& entry, int quadrant, const Image& src, Image& dst)
{
    if (entry.Refuses(images::CheckType(src, warps::sampledTypes))) return true;
    const int quarters = quadrant & 3;
    const bool swaps = quarters & 1;
    images::Sources held;
    if (Prepare(entry, src, dst, swaps ? src.Height : src.Width, swaps ? src.Width : src.Height, held)) return true;
    const Image& s = held.a;
    const auto elementSize = static_cast<std::size_t>(ElementSize(s.Type));
    const auto width = static_cast<std::size_t>(int(s.Width)), height = static_cast<std::size_t>(int(s.Height));
    if (quarters == 0)
        images::CopyRows(s, dst);
    else if (quarters == 2)
        return !entry.Guards(images::noImage, [&] { MirrorRows(s, dst, true); });
    else if (quarters == 1)
        // Column x from the bottom up becomes row x.
        kernels::Transpose(s.Row(s.Height - 1), -s.Pitch, width, height, dst.FirstPixel, dst.Pitch, elementSize);
    else
        kernels::Transpose(s.FirstPixel, s.Pitch, width, height, dst.Row(dst.Height - 1), -dst.Pitch, elementSize);
    return false;
}

XY TurnedBack(int quadrant, const XY& point, int width, int height)
{
    switch (quadrant & 3) {
    case 1:
        return {point.Y, height - point.X};
    case 2:
        return {width - point.X, height - point.Y};
    case 3:
        return {width - point.Y, point.X};
    default:
        return point;
    }
}

SourceRectangle TurnedBack(int quadrant, const SourceRectangle& box, int width, int height)
{
    switch (quadrant & 3) {
    case 1:
        return {box.Y, height - box.X - box.Width, box.Height, box.Width};
    case 2:
        return {width - box.X - box.Width, height - box.Y - box.Height, box.Width, box.Height};
    case 3:
        return {width - box.Y - box.Height, box.X, box.Height, box.Width};
    default:
        return box;
    }
}

} // namespace turns

} // namespace Tesk
