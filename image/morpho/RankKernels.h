// Kernels of rank filters: medians and ranks of small squares by sorting networks across vectors, ranks of any box by
// histograms of columns. Compiled for every SIMD target; what they give is defined by sorting the values under the box.
#pragma once

#include <cstddef>
#include <cstdint>

namespace Tesk::kernels {

/// The largest square that `MedianRowPair` takes.
inline constexpr int largestMedian = 9;

/// Lines that `MedianRowPair` works in.
constexpr std::size_t MedianWorkLines(int Size)
{
    return 3 * static_cast<std::size_t>(Size - 1);
}

/// The medians of squares of `Size` (3, 5, 7 or 9) pixels in two rows at once: d0[i] of rows[0] to rows[Size - 1],
/// d1[i] of rows[1] to rows[Size], in the columns i to i + Size - 1. Rows and the lines of `work` are padded by 2
/// `rowStep` pixels. If `n` is below `rowStep`, so are d0 and d1; else nothing beyond `n` pixels is written there.
void MedianRowPair(int Size, const std::uint8_t* const* rows, std::uint8_t* const* work, std::uint8_t* d0,
                   std::uint8_t* d1, std::size_t n);
void MedianRowPair(int Size, const std::uint16_t* const* rows, std::uint16_t* const* work, std::uint16_t* d0,
                   std::uint16_t* d1, std::size_t n);

/// The largest square that `RankRowPair` takes.
inline constexpr int largestRanked = 5;

/// As above for squares of 3 or 5 pixels and the values of any rank from 0, as their order counts them.
void RankRowPair(int Size, int Rank, const std::uint8_t* const* rows, std::uint8_t* const* work, std::uint8_t* d0,
                 std::uint8_t* d1, std::size_t n);
void RankRowPair(int Size, int Rank, const std::uint16_t* const* rows, std::uint16_t* const* work, std::uint16_t* d0,
                 std::uint16_t* d1, std::size_t n);

/// A rank filter over a strip of columns.
struct ColumnRanks
{
    const std::uint8_t* src; ///< first pixel of the image
    std::ptrdiff_t srcPitch;
    std::uint8_t* dst; ///< first pixel of the strip in the result
    std::ptrdiff_t dstPitch;
    int width, height;    ///< of the strip
    int radiusX, radiusY; ///< at most `largestRadius`
    int rank;
    const int*
        columns; ///< which columns of `src` stand around the strip, `width + 2 radiusX + 1` from one before its boxes
};

inline constexpr int largestRadius = 90;

/// Bytes that `RankStrip` works in.
constexpr std::size_t ColumnRankBytes(const ColumnRanks& Strip)
{
    return 17 * 16 * static_cast<std::size_t>(Strip.width + 2 * Strip.radiusX + 1);
}

/// Writes the value of the given rank under the box of each pixel, in a time that does not depend on the box (Perreault
/// and Hebert 2007).
void RankStrip(const ColumnRanks& Strip, std::uint8_t* work);

} // namespace Tesk::kernels
