// Row kernels of the neighbourhood filters: each written once with Highway, compiled for every SIMD target, beside the
// plain loop that defines its result. Rows of working buffers have room for 128 bytes behind them, which may be read;
// the rows of images, and all that is written, end where they end.
#pragma once

#include <cstddef>
#include <cstdint>

namespace Tesk::kernels {

/// Filters of 3 x 3 bytes. g is a gradient component by the masks of the name, halves and quotients truncate, and all
/// results are clamped to a byte.
enum class Square3
{
    Smooth,           ///< (S - (7 S >> 6)) >> 3, with S the sum of all nine
    Smooth8,          ///< the sum of the eight neighbours >> 3
    Binomial,         ///< 1 2 1 by 1 2 1, >> 4
    Sharpen4,         ///< 5 times the centre less its four neighbours
    Sharpen8,         ///< 9 times the centre less its eight neighbours
    Sharpen4Absolute, ///< the absolute values of those
    Sharpen8Absolute,
    GradientLarger, ///< the larger of |left - right| and |above - below|
    GradientX,      ///< |left - right|
    GradientY,      ///< |above - below|
    GradientSum,    ///< their sum
    GradientHalfSum,
    SobelLarger,       ///< the larger of |gx| and |gy|
    SobelSum,          ///< |gx| + |gy|
    SobelX,            ///< |gx|
    SobelY,            ///< |gy|
    SobelLargerScaled, ///< >> 2
    SobelSumScaled,    ///< >> 3
    SobelXScaled,      ///< >> 2
    SobelYScaled,
    PrewittLarger,
    PrewittSum,
    PrewittX,
    PrewittY,
    PrewittLargerScaled, ///< times 42 >> 7
    PrewittSumScaled,    ///< times 42 >> 8
    PrewittXScaled,      ///< times 85 >> 8
    PrewittYScaled
};

/// `n` pixels from three rows of working buffers, which are also read at -1 and `n`.
void Square3Row(Square3 Filter, const std::uint8_t* above, const std::uint8_t* here, const std::uint8_t* below,
                std::uint8_t* d, std::size_t n);

/// As above: d[i] = clamp(s + ((s - (S8 >> 3)) * K >> 10)) with S8 the sum of the eight neighbours, which are `step`
/// bytes away to the left and right; K from -524288 to 524288.
void UnsharpRow(const std::uint8_t* above, const std::uint8_t* here, const std::uint8_t* below, std::uint8_t* d,
                std::size_t n, std::ptrdiff_t step, int K);

/// Binomial weights of order 4, 6 or 8 along a row of a working buffer, also read `Order / 2` bytes before and after.
void BinomialWordsRow(int Order, const std::uint8_t* s, std::uint16_t* d, std::size_t n);
/// The same weights down `Order + 1` rows, shifted right by 2 * Order - 8 bits, so that the result of both stands at
/// 256 times the gray scale.
void BinomialColumnsRow(int Order, const std::uint16_t* const* rows, std::uint16_t* d, std::size_t n);
/// d[i] = (a[i] - b[i]) >> Shift, for Shift 6 or 7.
void ShiftedDifferenceRow(const std::uint16_t* a, const std::uint16_t* b, std::int16_t* d, std::size_t n, int Shift);
/// d[i] = min(255, trunc(sqrt(x[i] * x[i] + y[i] * y[i]))), for components of at most 2047.
void MagnitudeRow(const std::int16_t* x, const std::int16_t* y, std::uint8_t* d, std::size_t n);

// The definitions of the above.
void Square3RowPlain(Square3 Filter, const std::uint8_t* above, const std::uint8_t* here, const std::uint8_t* below,
                     std::uint8_t* d, std::size_t n);
void UnsharpRowPlain(const std::uint8_t* above, const std::uint8_t* here, const std::uint8_t* below, std::uint8_t* d,
                     std::size_t n, std::ptrdiff_t step, int K);
void BinomialWordsRowPlain(int Order, const std::uint8_t* s, std::uint16_t* d, std::size_t n);
void BinomialColumnsRowPlain(int Order, const std::uint16_t* const* rows, std::uint16_t* d, std::size_t n);
void ShiftedDifferenceRowPlain(const std::uint16_t* a, const std::uint16_t* b, std::int16_t* d, std::size_t n,
                               int Shift);
void MagnitudeRowPlain(const std::int16_t* x, const std::int16_t* y, std::uint8_t* d, std::size_t n);

} // namespace Tesk::kernels
