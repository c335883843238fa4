// What the families refuse alike: types of pixels, clip modes, lack of memory.
#pragma once

#include "image/core/PixelTypes.h"

namespace Tesk::images {

/// What a method says that gets no memory, by what it needed it for.
inline constexpr const wchar_t *noImage = L"Cannot allocate an image buffer",
                               *noFilterBuffers = L"Cannot allocate the working buffers of the filter",
                               *noWorkingMemory = L"Cannot allocate the working memory",
                               *noInternalBuffer = L"Cannot allocate an internal buffer";

/// "Saturate" for `Saturate`; "?" outside the enumeration.
const wchar_t* ClippingName(GrayClipping clip);

// All of these are inner forms: an `ErrorCodes` value, with its message stored.

/// `required` ends the message, as in ", Gray required".
int RefuseType(PixelTypes type, const wchar_t* required = L"");
int RefuseClip(GrayClipping clip);
/// Refuses a void image, and a type that is not listed.
int CheckType(const Image& image, Types types, const wchar_t* required = L"");
/// The refusal of two windows that should have one size.
int RefuseSizes(const Image& src, const Image& dst);

} // namespace Tesk::images
