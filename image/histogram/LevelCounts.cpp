// The loops that count levels, by several tables and by pairs of pixels, and those that add pixels and squares up.
#include "image/histogram/LevelCounts.h"

#include "image/core/PixelLoops.h"
#include "image/kernels/RowKernels.h"

#include <cstring>
#include <memory>
#include <new>
#include <utility>

namespace Tesk::levels {

namespace {

/// Tables that are counted into by turns, pixel by pixel. With four of them the increments of equal neighbours no
/// longer wait for each other; eight gain nothing more.
constexpr std::size_t copies = 4;
using Levels = std::array<std::uint32_t, byteLevels>;
using Tables = std::array<Levels, copies>;

/// Two neighbours are counted as one number: half the increments. The counts of pairs are bytes, so that all of them
/// take 64 KB, which the nearest caches hold; a count that comes round has its 256 added to the levels at once. The six
/// bytes of two colour pixels make three such numbers, with counts each. Setting up and taking apart costs as much as
/// counting some 25 000 pixels, three times that is where it pays.
constexpr std::size_t pairValues = 65536, channels = 3;
constexpr std::int64_t worthPairing = 100000;
constexpr std::uint32_t pairRound = 256;

/// Counts of pairs, for three channels `size` is three times as large; null where they are not worth it, or without
/// memory.
std::unique_ptr<std::uint8_t[]> PairTable(const Image& src, std::size_t size)
{
    if (std::int64_t{src.Width} * src.Height < worthPairing) return nullptr;
    return std::unique_ptr<std::uint8_t[]>(new (std::nothrow) std::uint8_t[size]());
}

/// Counts a number of two bytes, at `lower` and `upper` what no longer fits there.
inline void CountPair(std::uint8_t* pairs, std::uint16_t number, Levels& lower, Levels& upper)
{
    if (++pairs[number] != 0) [[likely]]
        return;
    lower[number & 255] += pairRound;
    upper[number >> 8] += pairRound;
}

void CountBytes(const std::uint8_t* row, std::size_t n, Tables& tables)
{
    std::size_t i = 0;
    for (; i + 8 <= n; i += 8) {
        tables[0][row[i]]++;
        tables[1][row[i + 1]]++;
        tables[2][row[i + 2]]++;
        tables[3][row[i + 3]]++;
        tables[0][row[i + 4]]++;
        tables[1][row[i + 5]]++;
        tables[2][row[i + 6]]++;
        tables[3][row[i + 7]]++;
    }
    for (; i < n; i++)
        tables[i % copies][row[i]]++;
}

/// The result is the number of pixels counted.
std::size_t CountPairs(const std::uint8_t* row, std::size_t n, std::uint8_t* pairs, Levels& counts)
{
    std::size_t i = 0;
    for (; i + 8 <= n; i += 8) {
        // All are read before any is counted: for the compiler counts may overlap the row.
        std::array<std::uint16_t, 4> numbers;
        std::memcpy(numbers.data(), row + i, sizeof numbers);
        for (const std::uint16_t number : numbers)
            CountPair(pairs, number, counts, counts);
    }
    return i;
}

using ColorLevels = std::array<Levels, channels>;

/// The same for colour pixels: blue with green, red with the next one's blue, then its green with its red.
std::size_t CountColorPairs(const std::uint8_t* row, std::size_t n, std::uint8_t* pairs, ColorLevels& counts)
{
    std::uint8_t *first = pairs, *second = first + pairValues, *third = second + pairValues;
    auto& [red, green, blue] = counts;
    std::size_t i = 0;
    for (; i + 4 <= n; i += 4) {
        const std::uint8_t* p = row + channels * i;
        const auto pair = [p](std::size_t k) { return static_cast<std::uint16_t>(p[k] | p[k + 1] << 8); };
        const std::array<std::uint16_t, 6> numbers{pair(0), pair(2), pair(4), pair(6), pair(8), pair(10)};
        CountPair(first, numbers[0], blue, green);
        CountPair(second, numbers[1], red, blue);
        CountPair(third, numbers[2], green, red);
        CountPair(first, numbers[3], blue, green);
        CountPair(second, numbers[4], red, blue);
        CountPair(third, numbers[5], green, red);
    }
    return i;
}

/// Takes pairs apart into the counts of their lower and of their upper bytes.
void AddPairs(const std::uint8_t* pairs, Levels& lower, Levels& upper)
{
    for (std::size_t high = 0; high < byteLevels; high++) {
        const std::uint8_t* line = pairs + high * byteLevels;
        std::uint32_t sum = 0;
        for (std::size_t low = 0; low < byteLevels; low++) {
            sum += line[low];
            lower[low] += line[low];
        }
        upper[high] += sum;
    }
}

void AddTables(const Tables& tables, Levels& counts)
{
    for (const auto& table : tables)
        for (std::size_t v = 0; v < byteLevels; v++)
            counts[v] += table[v];
}

} // namespace

std::array<std::uint32_t, byteLevels> CountGray(const Image& src)
{
    Tables tables{};
    Levels counts{};
    const auto [rows, n] = images::RunOver(src.Width, {&src});
    const auto pairs = PairTable(src, pairValues);
    for (int y = 0; y < rows; y++) {
        const std::uint8_t* row = src.Row(y);
        const std::size_t counted = pairs ? CountPairs(row, n, pairs.get(), counts) : 0;
        CountBytes(row + counted, n - counted, tables);
    }
    AddTables(tables, counts);
    if (pairs) AddPairs(pairs.get(), counts, counts);
    return counts;
}

std::array<std::array<std::uint32_t, byteLevels>, 3> CountRgb(const Image& src)
{
    Tables red{}, green{}, blue{};
    ColorLevels counts{};
    const auto [rows, n] = images::RunOver(src.Width, {&src});
    const auto count = [&](const std::uint8_t* pixel, std::size_t table) {
        blue[table][pixel[0]]++;
        green[table][pixel[1]]++;
        red[table][pixel[2]]++;
    };
    const auto pairs = PairTable(src, channels * pairValues);
    for (int y = 0; y < rows; y++) {
        std::size_t i = pairs ? CountColorPairs(src.Row(y), n, pairs.get(), counts) : 0;
        const std::uint8_t* row = src.Row(y) + channels * i;
        for (; i + 4 <= n; i += 4, row += 12) {
            count(row, 0);
            count(row + 3, 1);
            count(row + 6, 2);
            count(row + 9, 3);
        }
        for (; i < n; i++, row += 3)
            count(row, 0);
    }
    AddTables(red, counts[0]);
    AddTables(green, counts[1]);
    AddTables(blue, counts[2]);
    if (!pairs) return counts;
    AddPairs(pairs.get(), counts[2], counts[1]);
    AddPairs(pairs.get() + pairValues, counts[0], counts[2]);
    AddPairs(pairs.get() + 2 * pairValues, counts[1], counts[0]);
    return counts;
}

PixelSums SumGray(const Image& src)
{
    PixelSums sums{};
    const auto [rows, n] = images::RunOver(src.Width, {&src});
    for (int y = 0; y < rows; y++)
        kernels::MomentsRow(src.Row(y), n, sums.sum, sums.squares);
    return sums;
}

PixelSums SumGray16(const Image& src, int entries)
{
    PixelSums sums{};
    const auto [rows, n] = images::RunOver(images::ByteCount(src), {&src});
    for (int y = 0; y < rows; y++)
        kernels::MomentsRow(src.Row<std::uint16_t>(y), n / sizeof(std::uint16_t),
                            static_cast<std::uint16_t>(entries - 1), sums.sum, sums.squares);
    return sums;
}

std::array<PixelSums, 3> SumRgb(const Image& src)
{
    // Lanes are added up side by side, so that the compiler can do many at once; their number is a whole one of pixels.
    constexpr std::size_t lanes = 48, blocks = 65536; // squares of so many bytes fit into 32 bits
    std::array<PixelSums, 3> sums{};
    const auto [rows, n] = images::RunOver(images::ByteCount(src), {&src});
    for (int y = 0; y < rows; y++) {
        const std::uint8_t* row = src.Row(y);
        std::size_t i = 0;
        while (i + lanes <= n) {
            std::array<std::uint32_t, lanes> sum{}, squares{};
            for (std::size_t block = 0; block < blocks && i + lanes <= n; block++, i += lanes)
                for (std::size_t k = 0; k < lanes; k++) {
                    const std::uint32_t v = row[i + k];
                    sum[k] += v;
                    squares[k] += v * v;
                }
            for (std::size_t k = 0; k < lanes; k++) {
                sums[k % channels].sum += sum[k];
                sums[k % channels].squares += squares[k];
            }
        }
        for (; i < n; i++) {
            const std::uint32_t v = row[i];
            sums[i % channels].sum += v;
            sums[i % channels].squares += v * v;
        }
    }
    std::swap(sums[0], sums[2]);
    return sums;
}

std::vector<std::uint32_t> CountGray16(const Image& src, int entries)
{
    const auto size = static_cast<std::size_t>(entries);
    // Tables that fit into the first cache together are worth four; larger ones, two.
    constexpr std::size_t smallTable = 4096;
    const std::size_t tables = size <= smallTable ? 4 : 2;
    std::vector<std::uint32_t> counts(tables * size);
    const auto last = static_cast<std::uint16_t>(entries - 1);
    const auto [rows, n] = images::RunOver(src.Width, {&src});
    for (int y = 0; y < rows; y++) {
        const auto* row = src.Row<std::uint16_t>(y);
        std::uint32_t* table[] = {counts.data(), counts.data() + size, counts.data() + (tables == 4 ? 2 * size : 0),
                                  counts.data() + (tables == 4 ? 3 * size : size)};
        std::size_t i = 0;
        for (; i + 4 <= n; i += 4) {
            table[0][Min(row[i], last)]++;
            table[1][Min(row[i + 1], last)]++;
            table[2][Min(row[i + 2], last)]++;
            table[3][Min(row[i + 3], last)]++;
        }
        for (; i < n; i++)
            counts[Min(row[i], last)]++;
    }
    for (std::size_t k = 1; k < tables; k++)
        for (std::size_t v = 0; v < size; v++)
            counts[v] += counts[k * size + v];
    counts.resize(size);
    return counts;
}

} // namespace Tesk::levels
