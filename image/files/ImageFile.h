// What the readers and writers of the image formats share.
#pragma once

#include "image/Image.h"
#include "image/files/BitmapHeader.h"

#include <cstdio>
#include <string>

namespace Tesk::files {

/// A file under way: the stream (null for TIFF, whose library opens its own), both forms of the name, and its size.
struct ImageFile
{
    std::FILE* stream = nullptr;
    std::string path;
    std::wstring name;
    std::int64_t size = 0;

    const wchar_t* Name() const { return name.c_str(); }
    std::int64_t Left() const { return size - std::ftell(stream); }
};

/// A format of image files. All three functions return an `ErrorCodes` value with its message stored.
struct Format
{
    /// The endings of its names, in small letters; null for none.
    const wchar_t* endings[2];
    /// Fills a void image with what the file holds, in the type wanted or its own for `Undefined`.
    int (*read)(ImageFile& file, Image& dst, PixelTypes wanted);
    /// Whether the format holds images of this type: the refusal comes before the file is opened, so that it stays.
    int (*check)(PixelTypes type);
    /// Writes the window.
    int (*write)(ImageFile& file, const Image& src);
    /// Whether its library opens the file by its name.
    bool opensItself = false;
};

/// Sizes the destination, for pixels that take `bits` in the file once they are decompressed. `ratio` is how far the
/// format can compress them at the most: a header that promises more than the file can hold is refused before memory is
/// asked for.
int Allocate(const ImageFile& file, Image& dst, std::int64_t width, std::int64_t height, PixelTypes type, int bits,
             std::int64_t ratio = 1);
int RefuseAllocation();
int RefuseConversion(PixelTypes native, PixelTypes wanted);

// Row conversions that several formats share.
void SwapRedBlue(const std::uint8_t* src, std::uint8_t* dst, int width);
void ReverseBytesOfFour(const std::uint8_t* src, std::uint8_t* dst, int width);
void BgrToGray(const std::uint8_t* src, std::uint8_t* dst, int width);
void BgraToGray(const std::uint8_t* src, std::uint8_t* dst, int width);
void GrayToBgr(const std::uint8_t* src, std::uint8_t* dst, int width);
/// May run in place: it works from the right.
void BitsToGray(const std::uint8_t* src, std::uint8_t* dst, int width);
/// May run in place.
void Gray16ToGray(const std::uint16_t* src, std::uint8_t* dst, int width);

} // namespace Tesk::files
