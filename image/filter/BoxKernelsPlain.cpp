// The plain loops that define what the row kernels of boxes give.
#include "image/filter/BoxKernels.h"

#include <cmath>

namespace Tesk::kernels {

namespace {

template <typename S, typename T>
void Move(const S* enter, const S* leave, T* sums, std::size_t n)
{
    for (std::size_t i = 0; i < n; i++)
        sums[i] = static_cast<T>(sums[i] + enter[i] - leave[i]);
}

template <typename S, typename T>
void Prefix(const S* s, T* p, std::size_t n)
{
    T sum = 0;
    for (std::size_t i = 0; i < n; i++) {
        p[i] = sum;
        sum = static_cast<T>(sum + s[i]);
    }
    p[n] = sum;
}

template <typename S, typename T>
void Quotients(const S* p, std::size_t width, T* d, std::size_t n, std::uint32_t N)
{
    for (std::size_t i = 0; i < n; i++)
        d[i] = static_cast<T>(static_cast<S>(p[i + width] - p[i]) / N);
}

} // namespace

void MoveSumsPlain(const std::uint8_t* enter, const std::uint8_t* leave, std::uint16_t* sums, std::size_t n)
{
    Move(enter, leave, sums, n);
}

void MoveSumsPlain(const std::uint16_t* enter, const std::uint16_t* leave, std::uint32_t* sums, std::size_t n)
{
    Move(enter, leave, sums, n);
}

void MoveSquaresPlain(const std::uint8_t* enter, const std::uint8_t* leave, std::uint32_t* sums, std::size_t n)
{
    for (std::size_t i = 0; i < n; i++)
        sums[i] += static_cast<std::uint32_t>((enter[i] + leave[i]) * (enter[i] - leave[i]));
}

void PrefixSumsPlain(const std::uint16_t* s, std::uint16_t* p, std::size_t n)
{
    Prefix(s, p, n);
}

void PrefixSumsPlain(const std::uint16_t* s, std::uint32_t* p, std::size_t n)
{
    Prefix(s, p, n);
}

void PrefixSumsPlain(const std::uint32_t* s, std::uint32_t* p, std::size_t n)
{
    Prefix(s, p, n);
}

void QuotientRowPlain(const std::uint16_t* p, std::size_t width, std::uint8_t* d, std::size_t n, std::uint32_t N)
{
    Quotients(p, width, d, n, N);
}

void QuotientRowPlain(const std::uint32_t* p, std::size_t width, std::uint8_t* d, std::size_t n, std::uint32_t N)
{
    Quotients(p, width, d, n, N);
}

void QuotientRowPlain(const std::uint32_t* p, std::size_t width, std::uint16_t* d, std::size_t n, std::uint32_t N)
{
    Quotients(p, width, d, n, N);
}

void DeviationRowPlain(const std::uint32_t* s, const std::uint32_t* q, std::size_t width, std::uint8_t* d,
                       std::size_t n, std::uint32_t N)
{
    // Both products are below 2^53, and so is their difference exact.
    for (std::size_t i = 0; i < n; i++) {
        const double S = s[i + width] - s[i], Q = q[i + width] - q[i];
        d[i] = static_cast<std::uint8_t>(std::sqrt(N * Q - S * S) / N);
    }
}

} // namespace Tesk::kernels
