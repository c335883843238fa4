// Writing the header of a bitmap, and the numbers in it.
#include "image/files/BitmapHeader.h"

namespace Tesk::files {

namespace {

/// The dots per metre of one dot per inch, as the headers of bitmaps count them.
constexpr double dotsPerMetre = 39.370079040527344;

} // namespace

std::uint32_t GetLittle(const std::uint8_t* p, int bytes)
{
    std::uint32_t value = 0;
    for (int i = 0; i < bytes; i++)
        value |= static_cast<std::uint32_t>(p[i]) << 8 * i;
    return value;
}

void PutLittle(std::uint8_t* p, std::uint32_t value, int bytes)
{
    for (int i = 0; i < bytes; i++)
        p[i] = static_cast<std::uint8_t>(value >> 8 * i);
}

void PutBitmapHeader(std::uint8_t* header, int width, int height, int bitCount, int colorsUsed)
{
    constexpr auto density = static_cast<std::uint32_t>(dotsPerInch * dotsPerMetre + 0.5);
    PutLittle(&header[0], bitmapHeaderSize, 4);
    PutLittle(&header[4], static_cast<std::uint32_t>(width), 4);
    PutLittle(&header[8], static_cast<std::uint32_t>(height), 4);
    PutLittle(&header[12], 1, 2);
    PutLittle(&header[14], static_cast<std::uint32_t>(bitCount), 2);
    PutLittle(&header[24], density, 4);
    PutLittle(&header[28], density, 4);
    PutLittle(&header[32], static_cast<std::uint32_t>(colorsUsed), 4);
}

} // namespace Tesk::files
