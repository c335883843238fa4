// Kernels of the exact transforms: rows reversed, blocks transposed.
#pragma once

#include <cstddef>
#include <cstdint>

namespace Tesk::kernels {

/// Pixel i of `d` is pixel n - 1 - i of `s`, for pixels of `ElementSize` 1, 2 or 3 bytes. The rows don't overlap.
void ReverseRow(const std::uint8_t* s, std::uint8_t* d, std::size_t n, std::size_t ElementSize);

/// Pixel (y, x) of `d` is pixel (x, y) of `s`, whose window is `Width` x `Height`, for pixels of `ElementSize` 1, 2 or
/// 3 bytes. Pitches may be negative. The windows don't overlap.
void Transpose(const std::uint8_t* s, std::ptrdiff_t SourcePitch, std::size_t Width, std::size_t Height,
               std::uint8_t* d, std::ptrdiff_t DestinationPitch, std::size_t ElementSize);

/// One block of it: d[dPitch x + y] = s[pitch y + x] for 16 x 16 bytes.
void Transpose16(const std::uint8_t* s, std::ptrdiff_t pitch, std::uint8_t* d, std::ptrdiff_t dPitch);
void Transpose16Plain(const std::uint8_t* s, std::ptrdiff_t pitch, std::uint8_t* d, std::ptrdiff_t dPitch);

} // namespace Tesk::kernels
