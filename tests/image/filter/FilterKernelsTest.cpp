#include "image/filter/FilterKernels.h"
#include "image/filter/BoxKernels.h"

#include "image/filter/FilterChecks.h"

using namespace Tesk;
using namespace Tesk::kernels;

namespace {

std::vector<std::uint32_t> Random(std::size_t n, std::uint32_t seed)
{
    checks::Noise noise{seed};
    std::vector<std::uint32_t> values(n);
    for (auto& value : values) {
        const std::uint32_t random = noise();
        value = random ^ random >> 16;
    }
    return values;
}

template <typename T>
std::vector<T> RandomOf(std::size_t n, std::uint32_t state)
{
    const auto values = Random(n, state);
    std::vector<T> result(n);
    for (std::size_t i = 0; i < n; i++)
        result[i] = static_cast<T>(values[i]);
    return result;
}

class FilterKernels : public checks::AtEachLevel
{};

} // namespace

TEST_P(FilterKernels, EverySumIsDividedRightByEveryOddCount)
{
    // Sums 0 to 255 N as differences of two values.
    for (std::uint32_t N = 1; N <= 255; N += 2) {
        const std::size_t n = 255 * N + 1;
        std::vector<std::uint16_t> p(2 * n + 64);
        for (std::size_t i = 0; i < n; i++)
            p[i + n] = static_cast<std::uint16_t>(i);
        std::vector<std::uint8_t> d(n);
        QuotientRow(p.data(), n, d.data(), n, N);
        for (std::size_t i = 0; i < n; i++)
            ASSERT_EQ(d[i], i / N) << i << " / " << N;
    }
    // For 32 bits, those next to every multiple.
    for (const std::uint32_t N : {257u, 561u, 1023u, 10201u, 32769u, 63495u, 65023u, 65025u}) {
        const auto check = [&](auto largest) {
            using T = decltype(largest);
            std::vector<std::uint32_t> sums;
            for (std::uint32_t q = 0; q <= largest; q++)
                for (const int by : {-1, 0, 1})
                    if (const auto sum = std::int64_t{q} * N + by; sum >= 0 && sum <= std::int64_t{largest} * N)
                        sums.push_back(static_cast<std::uint32_t>(sum));
            const std::size_t n = sums.size();
            std::vector<std::uint32_t> p(n, 12345);
            for (const std::uint32_t sum : sums)
                p.push_back(sum + 12345);
            p.resize(2 * n + 64);
            std::vector<T> d(n);
            QuotientRow(p.data(), n, d.data(), n, N);
            for (std::size_t i = 0; i < n; i++)
                ASSERT_EQ(d[i], sums[i] / N) << sums[i] << " / " << N;
        };
        check(std::uint8_t{255});
        check(std::uint16_t{65535});
    }
}

TEST_P(FilterKernels, SumsAndDeviationsEqualThePlainLoopsAtEveryLength)
{
    for (std::size_t n = 1; n <= 70; n++) {
        const auto seed = static_cast<std::uint32_t>(n);
        const auto a = RandomOf<std::uint8_t>(n, seed), b = RandomOf<std::uint8_t>(n, seed + 9);
        const auto wa = RandomOf<std::uint16_t>(n + 64, seed), wb = RandomOf<std::uint16_t>(n, seed + 9);
        const auto ints = Random(n + 64, seed + 3);
        const auto same = [&](auto sums, auto kernel, auto plain) {
            auto wanted = sums;
            kernel(sums.data());
            plain(wanted.data());
            sums.resize(n + 1);
            wanted.resize(n + 1);
            ASSERT_EQ(sums, wanted) << n;
        };
        // One more value tells whether what stands behind was touched.
        const auto words = RandomOf<std::uint16_t>(n + 1, seed + 4);
        const auto wide = Random(n + 1, seed + 5);
        same(
            words, [&](auto* s) { MoveSums(a.data(), b.data(), s, n); },
            [&](auto* s) { MoveSumsPlain(a.data(), b.data(), s, n); });
        same(
            wide, [&](auto* s) { MoveSums(wa.data(), wb.data(), s, n); },
            [&](auto* s) { MoveSumsPlain(wa.data(), wb.data(), s, n); });
        same(
            wide, [&](auto* s) { MoveSquares(a.data(), b.data(), s, n); },
            [&](auto* s) { MoveSquaresPlain(a.data(), b.data(), s, n); });
        const std::vector<std::uint16_t> shorts(n + 64);
        const std::vector<std::uint32_t> longs(n + 64);
        same(
            shorts, [&](auto* p) { PrefixSums(wa.data(), p, n); }, [&](auto* p) { PrefixSumsPlain(wa.data(), p, n); });
        same(
            longs, [&](auto* p) { PrefixSums(wa.data(), p, n); }, [&](auto* p) { PrefixSumsPlain(wa.data(), p, n); });
        same(
            longs, [&](auto* p) { PrefixSums(ints.data(), p, n); },
            [&](auto* p) { PrefixSumsPlain(ints.data(), p, n); });
    }
}

TEST_P(FilterKernels, DeviationsAreRightNextToEveryWholeOne)
{
    // Values 0 and 2 k in equal parts, but one, deviate by a little less than k; whatever the number of pixels.
    for (const std::uint32_t N : {1u, 3u, 9u, 225u, 10201u, 65025u})
        for (std::uint32_t k = 0; k <= 127; k++) {
            std::vector<std::uint32_t> s(2 + 64), q(2 + 64);
            const std::uint32_t count = N / 2;
            s[1] = count * 2 * k;
            q[1] = count * 4 * k * k;
            std::uint8_t got = 0, wanted = 0;
            DeviationRow(s.data(), q.data(), 1, &got, 1, N);
            DeviationRowPlain(s.data(), q.data(), 1, &wanted, 1, N);
            ASSERT_EQ(got, wanted) << N << ' ' << k;
            // Exact deviations: one value apart from N - 1 others cannot be whole, but N Q - S S = (k N)^2 can be.
            s[1] = 0;
            q[1] = k * k * N;
            DeviationRow(s.data(), q.data(), 1, &got, 1, N);
            ASSERT_EQ(got, k) << N;
            if (q[1] > 0) {
                q[1]--;
                DeviationRow(s.data(), q.data(), 1, &got, 1, N);
                ASSERT_EQ(got, k - 1) << N;
            }
        }
}

INSTANTIATE_TEST_SUITE_P(Levels, FilterKernels, ::testing::ValuesIn(checks::allLevels));
