// What the readers and writers of the image formats share.
#pragma once

#include "image/Image.h"

#include <cstdio>
#include <string>

namespace Tesk::files {

inline constexpr double dotsPerInch = 72.0;
/// The dots per metre of one dot per inch, as the headers of bitmaps count them.
inline constexpr double dotsPerMetre = 39.370079040527344;
inline constexpr int jpegQuality = 85;

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

/// Each reader fills a void image with what the file holds, in the type wanted or its own for `Undefined`; each writer
/// writes the window. Both return an `ErrorCodes` value with its message stored.
int ReadBmp(ImageFile& file, Image& dst, PixelTypes wanted);
int ReadPbm(ImageFile& file, Image& dst, PixelTypes wanted);
int ReadPgm(ImageFile& file, Image& dst, PixelTypes wanted);
int ReadPpm(ImageFile& file, Image& dst, PixelTypes wanted);
int ReadPng(ImageFile& file, Image& dst, PixelTypes wanted);
int ReadJpeg(ImageFile& file, Image& dst, PixelTypes wanted);
int ReadTiff(ImageFile& file, Image& dst, PixelTypes wanted);

/// Whether a format holds images of this type: the refusal comes before the file is opened, so that it stays.
int CheckBmpType(PixelTypes type);
int CheckPbmType(PixelTypes type);
int CheckPgmType(PixelTypes type);
int CheckPpmType(PixelTypes type);
int CheckPngType(PixelTypes type);
int CheckJpegType(PixelTypes type);
int CheckTiffType(PixelTypes type);

int WriteBmp(ImageFile& file, const Image& src);
int WritePbm(ImageFile& file, const Image& src);
int WritePgm(ImageFile& file, const Image& src);
int WritePpm(ImageFile& file, const Image& src);
int WritePng(ImageFile& file, const Image& src);
int WriteJpeg(ImageFile& file, const Image& src);
int WriteTiff(ImageFile& file, const Image& src);

/// Sizes the destination, for pixels that take `bits` in the file once they are decompressed. `ratio` is how far the
/// format can compress them at the most: a header that promises more than the file can hold is refused before memory is
/// asked for.
int Allocate(const ImageFile& file, Image& dst, std::int64_t width, std::int64_t height, PixelTypes type, int bits,
             std::int64_t ratio = 1);
int RefuseAllocation();
int RefuseConversion(PixelTypes native, PixelTypes wanted);

// Little-endian numbers in headers.
std::uint32_t GetLittle(const std::uint8_t* p, int bytes);
void PutLittle(std::uint8_t* p, std::uint32_t value, int bytes);

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
