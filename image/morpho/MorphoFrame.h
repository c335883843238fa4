// The frame of operations that read the neighbours of a pixel: check, hold the source apart from the destination, size.
#pragma once

#include "foundation/Entry.h"
#include "image/operator/OperatorFrame.h"

namespace Tesk::morpho {

using points::CopyRows;
using points::Types;

inline constexpr Types grayTypes = {Gray, Gray16};

/// A void image, or a type that is not listed; `required` ends the message, as in ", Gray required".
int CheckType(const Image& image, Types types, const wchar_t* required = L"");

/// Holds a view of the source, or a copy of its window where the destination's writes would reach it. True, and
/// reported, if there is no memory.
bool Hold(const Entry& entry, const Image& src, const Image& dst, Image& held);

/// Sizes and detaches the destination. True if that failed.
bool Size(const Image& src, Image& dst, PixelTypes type);

/// The three steps for an operation with one source.
bool Prepare(const Entry& entry, const Image& src, Types types, Image& dst, Image& held, PixelTypes dstType = Undefined,
             const wchar_t* required = L"");

/// A working image; true, and reported, if there is no memory.
bool MakeWork(const Entry& entry, const Image& like, PixelTypes type, Image& work);

/// Runs the part of an operation that allocates working memory; false, and reported, if there is none.
template <typename F>
bool WithMemory(const Entry& entry, F work)
{
    return entry.Guards(L"Cannot allocate the working memory", work);
}

} // namespace Tesk::morpho
