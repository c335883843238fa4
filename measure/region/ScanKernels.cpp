// The kernels that scan rows: comparisons into bits, and bits into the columns at which they change.
#include "measure/region/ScanKernels.h"

#include "image/kernels/ByLevel.h"

#include <algorithm>
#include <array>
#include <bit>
#include <cstring>

#ifndef TESK_SCAN_KERNELS_ONCE
#define TESK_SCAN_KERNELS_ONCE
namespace Tesk::kernels {

/// For each byte the places of its set bits, from the lowest on.
inline constexpr auto setBits = [] {
    std::array<std::array<std::uint8_t, 8>, 256> places{};
    for (std::size_t byte = 0; byte < places.size(); byte++)
        for (std::size_t bit = 0, count = 0; bit < 8; bit++)
            if (byte >> bit & 1) places[byte][count++] = static_cast<std::uint8_t>(bit);
    return places;
}();

} // namespace Tesk::kernels
#endif

#undef HWY_TARGET_INCLUDE
#define HWY_TARGET_INCLUDE "measure/region/ScanKernels.cpp"
#include <hwy/foreach_target.h>

#include <hwy/highway.h>

HWY_BEFORE_NAMESPACE();
namespace Tesk::kernels {
namespace HWY_NAMESPACE {

namespace hn = hwy::HWY_NAMESPACE;

constexpr std::size_t wordBits = 64;
/// Words between making bits and reading them: read at once, they would wait for the narrower stores that make them.
constexpr std::size_t blockWords = 64, blockBits = blockWords * wordBits;

/// Turns words of bits, the first pixel in the lowest one, into the columns at which they change.
class Edges
{
public:
    explicit Edges(std::int32_t* edges) : begin_(edges), end_(edges) {}

    void Add(std::uint64_t word)
    {
        std::uint64_t changes = word ^ (word << 1 | open_);
        open_ = word >> (wordBits - 1);
        if (changes != 0) AddChanges(changes);
        column_ += static_cast<std::int32_t>(wordBits);
    }

    std::size_t Finish(std::size_t n)
    {
        if (open_ != 0) *end_++ = static_cast<std::int32_t>(n);
        return static_cast<std::size_t>(end_ - begin_);
    }

private:
    // More columns are written than there are, and overwritten later: fewer branches that cannot be foreseen.
    void AddChanges(std::uint64_t changes)
    {
        const int count = std::popcount(changes);
#if HWY_TARGET != HWY_SCALAR
        constexpr int many = 12; // from here on, whole bytes at a time are faster than bit by bit
        if (count > many) {
            std::int32_t* end = end_;
            const hn::CappedTag<std::int32_t, 8> d;
            const hn::Rebind<std::uint8_t, decltype(d)> bytes;
            for (std::int32_t column = column_; changes != 0; column += 8, changes >>= 8) {
                const std::size_t byte = changes & 0xff;
                for (std::size_t i = 0; i < 8; i += hn::Lanes(d))
                    hn::StoreU(hn::Add(hn::PromoteTo(d, hn::LoadU(bytes, &setBits[byte][i])), hn::Set(d, column)), d,
                               end + i);
                end += std::popcount(byte);
            }
            end_ = end;
            return;
        }
#endif
        for (int i = 0; i < count; i += 4)
            for (int k = 0; k < 4; k++) {
                end_[i + k] = column_ + std::countr_zero(changes);
                changes &= changes - 1;
            }
        end_ += count;
    }

    std::int32_t *begin_, *end_, column_ = 0;
    std::uint64_t open_ = 0; ///< whether the latest pixel belongs to a run
};

std::uint64_t LowBits(std::size_t count)
{
    return count < wordBits ? (std::uint64_t{1} << count) - 1 : ~std::uint64_t{0};
}

#if HWY_TARGET != HWY_SCALAR
const hn::CappedTag<std::uint8_t, wordBits> bytes;

/// The columns at which the bits that `compare` makes of 64 pixels of the rows change; it gets a place in each row.
template <std::size_t rows, typename Compare>
HWY_INLINE std::size_t EdgesOf(std::array<const std::uint8_t*, rows> row, std::size_t n, std::uint64_t flip,
                               std::int32_t* columns, Compare compare)
{
    HWY_ALIGN std::uint8_t bits[blockBits / 8], tail[rows][wordBits] = {};
    Edges edges(columns);
    for (std::size_t x = 0; x < n; x += blockBits) {
        const std::size_t count = std::min(blockBits, n - x), whole = count / wordBits, rest = count % wordBits;
        for (std::size_t i = 0; i < whole; i++) {
            compare(row, bits + 8 * i);
            for (const std::uint8_t*& at : row)
                at += wordBits;
        }
        if (rest != 0) {
            for (std::size_t k = 0; k < rows; k++) {
                std::memcpy(tail[k], row[k], rest);
                row[k] = tail[k];
            }
            compare(row, bits + 8 * whole);
        }
        std::uint64_t word;
        for (std::size_t i = 0; i < whole; i++) {
            std::memcpy(&word, bits + 8 * i, sizeof word);
            edges.Add(word ^ flip);
        }
        if (rest != 0) {
            std::memcpy(&word, bits + 8 * whole, sizeof word);
            edges.Add((word ^ flip) & LowBits(rest));
        }
    }
    return edges.Finish(n);
}
#endif

std::size_t OfBand(const std::uint8_t* s, std::size_t n, Band band, std::int32_t* columns)
{
#if HWY_TARGET == HWY_SCALAR
    return BandEdgesPlain(s, n, band, columns);
#else
    const std::size_t lanes = hn::Lanes(bytes);
    const auto low = hn::Set(bytes, band.low), span = hn::Set(bytes, static_cast<std::uint8_t>(band.high - band.low));
    // Values below the band wrap to large ones.
    const auto compare = [&](const std::array<const std::uint8_t*, 1>& row, std::uint8_t* bits) HWY_ATTR {
        for (std::size_t i = 0; i < wordBits; i += lanes) {
            const auto above = hn::Sub(hn::LoadU(bytes, row[0] + i), low);
            hn::StoreMaskBits(bytes, hn::Eq(hn::Min(above, span), above), bits + i / 8);
        }
    };
    return EdgesOf<1>({s}, n, band.inside ? 0 : ~std::uint64_t{0}, columns, compare);
#endif
}

std::size_t OfLimits(const std::uint8_t* s, const std::uint8_t* low, const std::uint8_t* high, std::size_t n,
                     std::int32_t* columns)
{
#if HWY_TARGET == HWY_SCALAR
    return LimitEdgesPlain(s, low, high, n, columns);
#else
    const std::size_t lanes = hn::Lanes(bytes);
    // What is within its limits is its own larger with the lower and its own smaller with the upper one.
    const auto compare = [lanes](const std::array<const std::uint8_t*, 3>& row, std::uint8_t* bits) HWY_ATTR {
        for (std::size_t i = 0; i < wordBits; i += lanes) {
            const auto v = hn::LoadU(bytes, row[0] + i);
            const auto notBelow = hn::Eq(hn::Max(v, hn::LoadU(bytes, row[1] + i)), v);
            const auto notAbove = hn::Eq(hn::Min(v, hn::LoadU(bytes, row[2] + i)), v);
            hn::StoreMaskBits(bytes, hn::And(notBelow, notAbove), bits + i / 8);
        }
    };
    return EdgesOf<3>({s, low, high}, n, ~std::uint64_t{0}, columns, compare);
#endif
}

/// Reverses the bits of each byte.
std::uint64_t Mirrored(std::uint64_t word)
{
    constexpr std::uint64_t nibbles = 0x0f0f0f0f0f0f0f0f, pairs = 0x3333333333333333, singles = 0x5555555555555555;
    word = (word >> 4 & nibbles) | (word & nibbles) << 4;
    word = (word >> 2 & pairs) | (word & pairs) << 2;
    return (word >> 1 & singles) | (word & singles) << 1;
}

std::size_t OfBits(const std::uint8_t* s, std::size_t n, std::int32_t* columns)
{
    Edges edges(columns);
    for (std::size_t x = 0; x < n; x += wordBits) {
        const std::size_t count = std::min(wordBits, n - x);
        std::uint64_t word = 0;
        std::memcpy(&word, s + x / 8, (count + 7) / 8);
        if constexpr (std::endian::native == std::endian::big) word = __builtin_bswap64(word);
        edges.Add(Mirrored(word) & LowBits(count));
    }
    return edges.Finish(n);
}

std::size_t OfWords(const std::uint64_t* s, std::size_t n, std::int32_t* columns)
{
    Edges edges(columns);
    for (std::size_t x = 0; x < n; x += wordBits)
        edges.Add(s[x / wordBits] & LowBits(std::min(wordBits, n - x)));
    return edges.Finish(n);
}

} // namespace HWY_NAMESPACE
} // namespace Tesk::kernels
HWY_AFTER_NAMESPACE();

#if HWY_ONCE
namespace Tesk::kernels {

HWY_EXPORT(OfBand);
HWY_EXPORT(OfLimits);
HWY_EXPORT(OfBits);
HWY_EXPORT(OfWords);

std::size_t BandEdges(const std::uint8_t* s, std::size_t n, Band band, std::int32_t* edges)
{
    return ByLevel(BandEdgesPlain, HWY_DYNAMIC_DISPATCH(OfBand))(s, n, band, edges);
}

std::size_t LimitEdges(const std::uint8_t* s, const std::uint8_t* low, const std::uint8_t* high, std::size_t n,
                       std::int32_t* edges)
{
    return ByLevel(LimitEdgesPlain, HWY_DYNAMIC_DISPATCH(OfLimits))(s, low, high, n, edges);
}

std::size_t BitEdges(const std::uint8_t* s, std::size_t n, std::int32_t* edges)
{
    return ByLevel(BitEdgesPlain, HWY_DYNAMIC_DISPATCH(OfBits))(s, n, edges);
}

std::size_t WordEdges(const std::uint64_t* s, std::size_t n, std::int32_t* edges)
{
    return ByLevel(WordEdgesPlain, HWY_DYNAMIC_DISPATCH(OfWords))(s, n, edges);
}

} // namespace Tesk::kernels
#endif
