// The sources and the destination of an operation: views that keep the sources alive, the size and the store of the
// destination, and copies where writes would reach pixels that are still to be read.
#pragma once

#include "foundation/Entry.h"
#include "image/Image.h"

#include <cstdint>

namespace Tesk::images {

/// Bytes of a window row.
inline int ByteCount(const Image& image)
{
    return RowBytes(image.Width, image.Type);
}

/// Copies the pixels of a window to one of the same size and type, the last byte of a packed row whole.
void CopyRows(const Image& src, Image& dst);

/// Sets every byte of the rows of a window.
void FillRows(Image& dst, int byte);

/// Whether the rows of two windows lie in overlapping ranges of memory, whichever blocks they belong to.
bool Overlap(const Image& a, const Image& b);

/// Whether an operation reads only what stands at the place that it writes, so that it can write over its source.
enum class InPlace
{
    Served,
    Copied
};

/// One or two sources for the time of an operation: views that keep their pixels alive where the destination takes
/// another store, or copies where it writes over them.
struct Sources
{
    Image a, b;
};

/// Checks the sources, holds views of them, gives the destination the window size of the first and that type
/// (`Undefined` for its own), and a store of its own under sharing; then makes copies of the sources that its writes
/// would reach. True, and reported, if the operation must end.
bool Prepare(const Entry& entry, const Image& src, Image& dst, PixelTypes type, Sources& held,
             InPlace inPlace = InPlace::Served);
bool Prepare(const Entry& entry, const Image& src, const Image& srcB, Image& dst, PixelTypes type, Sources& held,
             InPlace inPlace = InPlace::Served);
/// The same for a result of the source's type and a size of its own, which is never worked out in place.
bool Prepare(const Entry& entry, const Image& src, Image& dst, std::int64_t width, std::int64_t height, Sources& held);

// The steps of the above, for operations that go by another order.

/// Gives the destination a window of that size and type; one that fits stays where it is. True if there is no memory,
/// which is reported as by `Image::Set`, whoever needed the size.
bool RefusesSize(Image& dst, std::int64_t width, std::int64_t height, PixelTypes type);
/// Sizes and detaches a destination, with its former pixels where it is `read`. True, and reported, without memory.
bool RefusesLike(const Image& src, Image& dst, PixelTypes type, bool read = false);
/// Makes a view of a source a copy of its window where writes into a sized destination would reach what is still to be
/// read. An `ErrorCodes` value, as the next.
int KeepApart(Image& held, const Image& dst, InPlace inPlace = InPlace::Served);
/// Makes a view of a source a copy of its window.
int CopyWindow(Image& held);

/// Gives a working image the window size of another one. Throws `std::bad_alloc`.
void MakeLike(const Image& like, PixelTypes type, Image& work);

} // namespace Tesk::images
