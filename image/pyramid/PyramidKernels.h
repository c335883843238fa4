// Row kernels of the pyramid: halving and doubling of rows of bytes, with the plain loops that define them.
#pragma once

#include <cstddef>
#include <cstdint>

namespace Tesk::kernels {

/// d[i] = (top[2 i] + top[2 i + 1] + bottom[2 i] + bottom[2 i + 1]) >> 2 for `n` outputs.
void HalveRow(const std::uint8_t* top, const std::uint8_t* bottom, std::uint8_t* d, std::size_t n);

/// With v[i] = WeightTop top[i] + WeightBottom bottom[i] of `n` >= 1 sources, 2 n outputs: v[0] >> Shift - 2, then
/// (3 v[i] + v[i + 1]) >> Shift and (v[i] + 3 v[i + 1]) >> Shift for each pair, v[n - 1] >> Shift - 2.
void DoubleRow(const std::uint8_t* top, const std::uint8_t* bottom, std::uint8_t* d, std::size_t n, int WeightTop,
               int WeightBottom, int Shift);

/// The same for `n` pixels of three bytes, channel by channel.
void HalveColorRow(const std::uint8_t* top, const std::uint8_t* bottom, std::uint8_t* d, std::size_t n);
void DoubleColorRow(const std::uint8_t* top, const std::uint8_t* bottom, std::uint8_t* d, std::size_t n, int WeightTop,
                    int WeightBottom, int Shift);

/// The definition of the halving, for pixels of `Channels` samples.
template <int Channels, typename T>
void HalveRowPlain(const T* top, const T* bottom, T* d, std::size_t n)
{
    for (std::size_t i = 0; i < n; i++)
        for (int c = 0; c < Channels; c++) {
            const std::size_t s = 2 * i * Channels + static_cast<std::size_t>(c);
            d[i * Channels + static_cast<std::size_t>(c)] =
                static_cast<T>((top[s] + top[s + Channels] + bottom[s] + bottom[s + Channels]) >> 2);
        }
}

/// The definition of the doubling, for pixels of `Channels` samples.
template <int Channels, typename T>
void DoubleRowPlain(const T* top, const T* bottom, T* d, std::size_t n, int weightTop, int weightBottom, int shift)
{
    for (std::size_t c = 0; c < Channels; c++) {
        const auto v = [&](std::size_t i) {
            return weightTop * top[i * Channels + c] + weightBottom * bottom[i * Channels + c];
        };
        d[c] = static_cast<T>(v(0) >> (shift - 2));
        for (std::size_t i = 0; i + 1 < n; i++) {
            d[(2 * i + 1) * Channels + c] = static_cast<T>((3 * v(i) + v(i + 1)) >> shift);
            d[(2 * i + 2) * Channels + c] = static_cast<T>((v(i) + 3 * v(i + 1)) >> shift);
        }
        d[(2 * n - 1) * Channels + c] = static_cast<T>(v(n - 1) >> (shift - 2));
    }
}

} // namespace Tesk::kernels
