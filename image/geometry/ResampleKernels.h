// Row kernels of resampling: picking pixels, and linear interpolation along and between rows.
#pragma once

#include <cstddef>
#include <cstdint>
#include <cstring>
#include <vector>

namespace Tesk::kernels {

/// A position between two pixels: the index of the first one, and the weight of the second one in 65,536ths. Where that
/// is 0 there may be no second one.
struct Tap
{
    std::uint32_t first, fraction;
};

/// Pixel i of `d` is pixel Places[i] of `s`, for pixels of `ElementSize` 1 to 4 bytes.
void PickRow(const std::uint8_t* s, const std::size_t* Places, std::uint8_t* d, std::size_t n, std::size_t ElementSize);

/// d[i] = (a[i] (65536 - Weight) + b[i] Weight) >> 16.
void MixRows(const std::uint8_t* a, const std::uint8_t* b, std::uint8_t* d, std::size_t n, std::uint32_t Weight);

template <typename T>
void MixRowsPlain(const T* a, const T* b, T* d, std::size_t n, std::uint32_t weight)
{
    for (std::size_t i = 0; i < n; i++)
        d[i] = static_cast<T>((a[i] * (0x10000 - weight) + b[i] * weight) >> 16);
}

inline void MixRows(const std::uint16_t* a, const std::uint16_t* b, std::uint16_t* d, std::size_t n,
                    std::uint32_t Weight)
{
    MixRowsPlain(a, b, d, n, Weight);
}

/// `n` pixels of `d` by the same mean of neighbours in `s`, each at its tap.
template <int Channels, typename T>
void SpreadRowPlain(const T* s, const Tap* taps, T* d, std::size_t n)
{
    for (std::size_t i = 0; i < n; i++) {
        const T* p = s + std::size_t{taps[i].first} * Channels;
        const std::uint32_t u = taps[i].fraction;
        const std::size_t next = u ? Channels : 0;
        for (std::size_t c = 0; c < Channels; c++)
            *d++ = static_cast<T>((p[c] * (0x10000 - u) + p[c + next] * u) >> 16);
    }
}

/// The taps of a row of bytes, made ready to be looked up in vectors: for each eight samples of the result 16 source
/// bytes from `from` on, the places of the pairs of neighbours among them, and the weights of the second ones.
class ByteSpread
{
public:
    /// For sources of `Width` pixels of `Channels` bytes. A source that is too short, and taps that lie too far apart,
    /// leave it empty.
    ByteSpread(const std::vector<Tap>& taps, std::size_t Width, std::size_t Channels);

    /// Fills the samples of whole groups of eight; how many these are.
    std::size_t Row(const std::uint8_t* s, std::uint8_t* d) const;

    struct Group
    {
        std::uint8_t pairs[16];
        std::int16_t weights[8];
        std::size_t from;
    };

private:
    std::vector<Group> groups_;
};

} // namespace Tesk::kernels
