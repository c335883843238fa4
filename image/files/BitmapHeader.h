// The header of device-independent bitmaps, in files and on the clipboard.
#pragma once

#include <cstddef>
#include <cstdint>

namespace Tesk::files {

inline constexpr double dotsPerInch = 72.0;
/// Bytes of the header.
inline constexpr std::size_t bitmapHeaderSize = 40;

// Little-endian numbers.
std::uint32_t GetLittle(const std::uint8_t* p, int bytes);
void PutLittle(std::uint8_t* p, std::uint32_t value, int bytes);

/// Writes the header, whose bytes are 0, of a bitmap whose rows stand bottom first.
void PutBitmapHeader(std::uint8_t* header, int width, int height, int bitCount, int colorsUsed);

/// Bytes of a row of a bitmap, which fills four at a time.
constexpr std::int64_t BitmapRowBytes(std::int64_t width, int bitCount)
{
    return (width * bitCount + 31) / 32 * 4;
}

} // namespace Tesk::files
