// Uncompressed AVI files, made in memory.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string>

namespace avi {

using Bytes = std::string;

inline Bytes Number(std::uint32_t value, int bytes = 4)
{
    Bytes text;
    for (int i = 0; i < bytes; i++)
        text += static_cast<char>(value >> 8 * i);
    return text;
}

inline Bytes Chunk(const Bytes& id, const Bytes& content)
{
    return id + Number(static_cast<std::uint32_t>(content.size())) + content +
           (content.size() % 2 ? Bytes(1, '\0') : "");
}

/// Uncompressed frames of 24 bits; pixel x of row y (from the bottom) of frame k has blue 10 k + y, green x, red 200.
inline Bytes Avi(int width, int height, int frames, std::uint32_t rate = 30000, std::uint32_t scale = 1001,
                 const Bytes& compression = Bytes(4, '\0'))
{
    const int pitch = (3 * width + 3) / 4 * 4;
    const auto bytes = static_cast<std::uint32_t>(pitch * height), count = static_cast<std::uint32_t>(frames);
    const auto w = static_cast<std::uint32_t>(width), h = static_cast<std::uint32_t>(height);
    const Bytes none = Number(0);
    const Bytes main = Number(33333) + Number(bytes * 30) + none + Number(0x10) + Number(count) + none + Number(1) +
                       Number(bytes) + Number(w) + Number(h) + none + none + none + none;
    const Bytes stream = "vids" + compression + none + none + none + Number(scale) + Number(rate) + none +
                         Number(count) + Number(bytes) + none + none + Number(0, 2) + Number(0, 2) + Number(w, 2) +
                         Number(h, 2);
    const Bytes format = Number(40) + Number(w) + Number(h) + Number(1, 2) + Number(24, 2) + compression +
                         Number(bytes) + none + none + none + none;
    Bytes movie = "movi", index;
    for (int k = 0; k < frames; k++) {
        Bytes pixels;
        for (int y = 0; y < height; y++) {
            for (int x = 0; x < width; x++)
                pixels += {static_cast<char>(10 * k + y), static_cast<char>(x), static_cast<char>(200)};
            pixels += Bytes(static_cast<std::size_t>(pitch - 3 * width), '\0');
        }
        index += "00db" + Number(0x10) + Number(static_cast<std::uint32_t>(movie.size())) + Number(bytes);
        movie += Chunk("00db", pixels);
    }
    const Bytes headers =
        "hdrl" + Chunk("avih", main) + Chunk("LIST", "strl" + Chunk("strh", stream) + Chunk("strf", format));
    return Chunk("RIFF", "AVI " + Chunk("LIST", headers) + Chunk("LIST", movie) + Chunk("idx1", index));
}

} // namespace avi
