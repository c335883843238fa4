#include "image/kernels/RowKernels.h"

#include "Noise.h"
#include "image/Levels.h"

#include <vector>

using namespace Tesk;
using namespace Tesk::kernels;

namespace {

std::vector<std::uint8_t> Random(std::size_t n, std::uint32_t seed)
{
    checks::Noise noise{seed};
    std::vector<std::uint8_t> bytes(n);
    for (auto& byte : bytes)
        byte = noise.Byte();
    return bytes;
}

class RowKernels : public checks::AtEachLevel
{};

} // namespace

TEST_P(RowKernels, EqualThePlainLoopsAtEveryLengthAndAlignmentInPlaceToo)
{
    for (std::size_t n = 0; n <= 133; n++)
        for (const std::size_t offset : {0u, 1u, 7u}) {
            const auto a = Random(n + 16, static_cast<std::uint32_t>(n)),
                       b = Random(n + 16, static_cast<std::uint32_t>(n + 99));
            const auto check = [&](auto kernel, auto plain) {
                auto got = a, wanted = a;
                kernel(got.data() + offset, b.data() + 3, got.data() + offset);
                plain(wanted.data() + offset, b.data() + 3, wanted.data() + offset);
                ASSERT_EQ(got, wanted) << n << ' ' << offset;
            };
            for (int op = 0; op <= static_cast<int>(BytePair::SubtractHalved); op++) {
                const auto pair = static_cast<BytePair>(op);
                check([&](auto* s, auto* t, auto* d) { BytePairRow(pair, s, t, d, n); },
                      [&](auto* s, auto* t, auto* d) { BytePairRowPlain(pair, s, t, d, n); });
            }
            for (const int alpha : {0, 1, 77, 128, 255, 256})
                check([&](auto* s, auto* t, auto* d) { BlendRow(s, t, d, n, alpha); },
                      [&](auto* s, auto* t, auto* d) { BlendRowPlain(s, t, d, n, alpha); });
            for (const int threshold : {0, 100, 254, 255})
                check(
                    [&](auto* s, auto*, auto* d) { ThresholdRow(s, d, n, static_cast<std::uint8_t>(threshold), 9, 5); },
                    [&](auto* s, auto*, auto* d) {
                        ThresholdRowPlain(s, d, n, static_cast<std::uint8_t>(threshold), 9, 5);
                    });
        }
}

TEST_P(RowKernels, ResultsOfManyMegabytesEqualThePlainLoopWhereverTheyBegin)
{
    constexpr std::size_t n = (std::size_t{8} << 20) + 77;
    const auto a = Random(n, 3), b = Random(n, 4);
    std::vector<std::uint8_t> got(n + 66), wanted(n + 66);
    for (const std::size_t offset : {0u, 1u, 65u}) {
        BytePairRow(BytePair::SubtractHalved, a.data(), b.data(), got.data() + offset, n);
        BytePairRowPlain(BytePair::SubtractHalved, a.data(), b.data(), wanted.data() + offset, n);
        ASSERT_TRUE(got == wanted) << offset;
    }
}

TEST_P(RowKernels, LookUpsWidthsAndLargestChannelsEqualThePlainLoops)
{
    const auto table = Random(256, 5);
    for (std::size_t n = 0; n <= 133; n++) {
        const auto s = Random(3 * n + 1, static_cast<std::uint32_t>(n + 7));
        // One more byte behind each row tells whether it was touched.
        std::vector<std::uint8_t> got(n + 1, 77), wanted(n + 1, 77);
        LookupRow(s.data() + 1, got.data(), n, table.data());
        LookupRowPlain(s.data() + 1, wanted.data(), n, table.data());
        ASSERT_EQ(got, wanted) << n;
        LargestOfThreeRow(s.data() + 1, got.data(), n);
        LargestOfThreeRowPlain(s.data() + 1, wanted.data(), n);
        ASSERT_EQ(got, wanted) << n;
        std::vector<std::uint16_t> wide(n + 1, 777), wantedWide(n + 1, 777);
        for (const int shift : {1, 4, 8}) {
            WidenRow(s.data() + 1, wide.data(), n, shift);
            WidenRowPlain(s.data() + 1, wantedWide.data(), n, shift);
            ASSERT_EQ(wide, wantedWide) << n;
        }
    }
    // Every byte finds its own entry.
    std::vector<std::uint8_t> all(256), got(256);
    for (std::size_t v = 0; v < 256; v++)
        all[v] = static_cast<std::uint8_t>(v);
    LookupRow(all.data(), got.data(), 256, table.data());
    EXPECT_EQ(got, table);
}

TEST_P(RowKernels, MomentsAddUpExactly)
{
    const auto check = [](const std::vector<std::uint8_t>& bytes, std::size_t from, std::size_t n) {
        std::uint64_t sum = 3, squares = 5, wantedSum = 3, wantedSquares = 5;
        MomentsRow(bytes.data() + from, n, sum, squares);
        MomentsRowPlain(bytes.data() + from, n, wantedSum, wantedSquares);
        ASSERT_EQ(sum, wantedSum) << n;
        ASSERT_EQ(squares, wantedSquares) << n;
    };
    for (std::size_t n = 0; n <= 133; n++)
        check(Random(n + 1, static_cast<std::uint32_t>(n + 3)), 1, n);
    // More than the lanes of 32 bits hold without being emptied on the way.
    check(std::vector<std::uint8_t>(2000003, 255), 0, 2000003);
}

TEST_P(RowKernels, MomentsOfWordsAddUpExactly)
{
    const auto check = [](const std::vector<std::uint16_t>& words, std::uint16_t largest) {
        std::uint64_t sum = 3, squares = 5, wantedSum = 3, wantedSquares = 5;
        MomentsRow(words.data(), words.size(), largest, sum, squares);
        for (const std::uint64_t word : words) {
            const std::uint64_t v = word > largest ? largest : word;
            wantedSum += v;
            wantedSquares += v * v;
        }
        ASSERT_EQ(sum, wantedSum) << words.size();
        ASSERT_EQ(squares, wantedSquares) << words.size();
    };
    for (std::size_t n = 0; n <= 133; n++) {
        const auto bytes = Random(2 * n, static_cast<std::uint32_t>(n + 5));
        std::vector<std::uint16_t> words(n);
        for (std::size_t i = 0; i < n; i++)
            words[i] = static_cast<std::uint16_t>(bytes[2 * i] << 8 | bytes[2 * i + 1]);
        for (const std::uint16_t largest : {511, 4095, 65535})
            check(words, largest);
    }
    // The ends of the scale, more of them than the lanes of 32 bits hold without being emptied on the way.
    check(std::vector<std::uint16_t>(1200003, 0), 65535);
    check(std::vector<std::uint16_t>(1200003, 65535), 65535);
}

INSTANTIATE_TEST_SUITE_P(Levels, RowKernels, ::testing::ValuesIn(checks::allLevels));
