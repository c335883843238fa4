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

/// Two neighbours are counted as one number: half the increments, into 256 KB instead of 1. On 2048 x 2048 pixels that
/// takes 0.8 of the time of byte by byte for noise and 0.6 for smooth images; taking the numbers apart again costs as
/// much as counting some hundred thousand pixels. The six bytes of two colour pixels make three such numbers, with
/// a table each: 0.75 of the time for noise, half of it for flat images.
constexpr std::size_t pairValues = 65536, channels = 3;
constexpr std::int64_t worthPairing = 500000;

/// Counts of pairs, `size` numbers that are zero between two uses; null where they are not worth it, or without memory.
template <std::size_t size>
std::uint32_t* PairTable(const Image& src)
{
    thread_local std::unique_ptr<std::uint32_t[]> table;
    if (std::int64_t{src.Width} * src.Height < worthPairing) return nullptr;
    if (!table) table.reset(new (std::nothrow) std::uint32_t[size]());
    return table.get();
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
std::size_t CountPairs(const std::uint8_t* row, std::size_t n, std::uint32_t* pairs)
{
    std::size_t i = 0;
    for (; i + 8 <= n; i += 8) {
        std::array<std::uint16_t, 4> numbers;
        std::memcpy(numbers.data(), row + i, sizeof numbers);
        pairs[numbers[0]]++;
        pairs[numbers[1]]++;
        pairs[numbers[2]]++;
        pairs[numbers[3]]++;
    }
    return i;
}

/// The same for colour pixels: blue with green, red with the next one's blue, then its green with its red.
std::size_t CountColorPairs(const std::uint8_t* row, std::size_t n, std::uint32_t* pairs)
{
    std::uint32_t *first = pairs, *second = first + pairValues, *third = second + pairValues;
    std::size_t i = 0;
    for (; i + 4 <= n; i += 4) {
        const std::uint8_t* p = row + channels * i;
        const auto pair = [p](std::size_t k) { return static_cast<std::size_t>(p[k] | p[k + 1] << 8); };
        first[pair(0)]++;
        second[pair(2)]++;
        third[pair(4)]++;
        first[pair(6)]++;
        second[pair(8)]++;
        third[pair(10)]++;
    }
    return i;
}

/// Takes pairs apart into the counts of their first and of their second bytes, and leaves their table empty.
void AddPairs(std::uint32_t* pairs, Levels& first, Levels& second)
{
    for (std::size_t upper = 0; upper < byteLevels; upper++) {
        std::uint32_t* line = pairs + upper * byteLevels;
        std::uint32_t sum = 0;
        for (std::size_t lower = 0; lower < byteLevels; lower++) {
            sum += line[lower];
            first[lower] += line[lower];
            line[lower] = 0;
        }
        second[upper] += sum;
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
    const auto [rows, n] = images::RunOver(src.Width, {&src});
    std::uint32_t* pairs = PairTable<pairValues>(src);
    for (int y = 0; y < rows; y++) {
        const std::uint8_t* row = src.Row(y);
        const std::size_t counted = pairs ? CountPairs(row, n, pairs) : 0;
        CountBytes(row + counted, n - counted, tables);
    }
    Levels counts{};
    AddTables(tables, counts);
    if (pairs) AddPairs(pairs, counts, counts);
    return counts;
}

std::array<std::array<std::uint32_t, byteLevels>, 3> CountRgb(const Image& src)
{
    Tables red{}, green{}, blue{};
    const auto [rows, n] = images::RunOver(src.Width, {&src});
    const auto count = [&](const std::uint8_t* pixel, std::size_t table) {
        blue[table][pixel[0]]++;
        green[table][pixel[1]]++;
        red[table][pixel[2]]++;
    };
    std::uint32_t* pairs = PairTable<channels * pairValues>(src);
    for (int y = 0; y < rows; y++) {
        std::size_t i = pairs ? CountColorPairs(src.Row(y), n, pairs) : 0;
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
    std::array<Levels, channels> counts{};
    AddTables(red, counts[0]);
    AddTables(green, counts[1]);
    AddTables(blue, counts[2]);
    if (!pairs) return counts;
    AddPairs(pairs, counts[2], counts[1]);
    AddPairs(pairs + pairValues, counts[0], counts[2]);
    AddPairs(pairs + 2 * pairValues, counts[1], counts[0]);
    return counts;
}

ByteSums SumGray(const Image& src)
{
    ByteSums sums{};
    const auto [rows, n] = images::RunOver(src.Width, {&src});
    for (int y = 0; y < rows; y++)
        kernels::MomentsRow(src.Row(y), n, sums.sum, sums.squares);
    return sums;
}

std::array<ByteSums, 3> SumRgb(const Image& src)
{
    // Lanes are added up side by side, so that the compiler can do many at once; their number is a whole one of pixels.
    constexpr std::size_t lanes = 48, blocks = 65536; // squares of so many bytes fit into 32 bits
    std::array<ByteSums, 3> sums{};
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
