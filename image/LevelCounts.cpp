#include "image/LevelCounts.h"

#include "image/OperatorFrame.h"

namespace Tesk::levels {

namespace {

constexpr std::size_t copies = 8;
using Tables = std::array<std::array<std::uint32_t, byteLevels>, copies>;

std::uint64_t Word(const std::uint8_t* bytes)
{
    std::uint64_t word;
    std::memcpy(&word, bytes, sizeof word);
    return word;
}

/// Eight bytes of a word, each into a table of its own.
void CountWord(std::uint64_t word, Tables& tables)
{
    for (std::size_t k = 0; k < copies; k++)
        tables[k][word >> 8 * k & 255]++;
}

template <typename Sum, typename T>
void AddTables(const T& tables, Sum& sum)
{
    for (const auto& table : tables)
        for (std::size_t v = 0; v < table.size(); v++)
            sum[v] += table[v];
}

} // namespace

std::array<std::uint32_t, byteLevels> CountGray(const Image& src)
{
    Tables tables{};
    const auto [rows, n] = points::RunOver(src.Width, {&src});
    for (int y = 0; y < rows; y++) {
        const std::uint8_t* row = src.Row(y);
        std::size_t i = 0;
        for (; i + 16 <= n; i += 16) {
            const std::uint64_t first = Word(row + i), second = Word(row + i + 8);
            CountWord(first, tables);
            CountWord(second, tables);
        }
        for (; i < n; i++)
            tables[i % copies][row[i]]++;
    }
    std::array<std::uint32_t, byteLevels> counts{};
    AddTables(tables, counts);
    return counts;
}

std::array<std::array<std::uint32_t, byteLevels>, 3> CountRgb(const Image& src)
{
    // Eight pixels are three words; a byte's place in them tells its channel, and by turns its table.
    std::array<std::array<std::array<std::uint32_t, byteLevels>, 4>, 3> tables{};
    const auto [rows, n] = points::RunOver(src.Width, {&src});
    for (int y = 0; y < rows; y++) {
        const std::uint8_t* row = src.Row(y);
        std::size_t i = 0;
        for (; i + 8 <= n; i += 8) {
            const std::uint64_t words[] = {Word(row + 3 * i), Word(row + 3 * i + 8), Word(row + 3 * i + 16)};
            for (std::size_t k = 0; k < 24; k++)
                tables[2 - k % 3][k / 3 % 4][words[k / 8] >> 8 * (k % 8) & 255]++;
        }
        for (; i < n; i++)
            for (std::size_t c = 0; c < 3; c++)
                tables[2 - c][i % 4][row[3 * i + c]]++;
    }
    std::array<std::array<std::uint32_t, byteLevels>, 3> counts{};
    for (std::size_t c = 0; c < 3; c++)
        AddTables(tables[c], counts[c]);
    return counts;
}

std::vector<std::uint32_t> CountGray16(const Image& src, int entries)
{
    const auto size = static_cast<std::size_t>(entries);
    // Tables that fit into the first cache together are worth four; larger ones, two.
    constexpr std::size_t smallTable = 4096;
    const std::size_t tables = size <= smallTable ? 4 : 2;
    std::vector<std::uint32_t> counts(tables * size);
    const auto last = static_cast<std::uint16_t>(entries - 1);
    const auto [rows, n] = points::RunOver(src.Width, {&src});
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
