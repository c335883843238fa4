// The plain loops that define what the row kernels give.
#include "image/kernels/RowKernels.h"

namespace Tesk::kernels {

namespace {

template <typename F>
void EachByte(const std::uint8_t* a, const std::uint8_t* b, std::uint8_t* d, std::size_t n, F f)
{
    for (std::size_t i = 0; i < n; i++)
        d[i] = static_cast<std::uint8_t>(f(int{a[i]}, int{b[i]}));
}

} // namespace

void BytePairRowPlain(BytePair Operation, const std::uint8_t* a, const std::uint8_t* b, std::uint8_t* d, std::size_t n)
{
    switch (Operation) {
    case BytePair::AddSaturated:
        EachByte(a, b, d, n, [](int s, int t) { return s + t > 255 ? 255 : s + t; });
        break;
    case BytePair::SubtractSaturated:
        EachByte(a, b, d, n, [](int s, int t) { return s > t ? s - t : 0; });
        break;
    case BytePair::Difference:
        EachByte(a, b, d, n, [](int s, int t) { return s > t ? s - t : t - s; });
        break;
    case BytePair::Maximum:
        EachByte(a, b, d, n, [](int s, int t) { return s > t ? s : t; });
        break;
    case BytePair::Minimum:
        EachByte(a, b, d, n, [](int s, int t) { return s < t ? s : t; });
        break;
    case BytePair::And:
        EachByte(a, b, d, n, [](int s, int t) { return s & t; });
        break;
    case BytePair::Or:
        EachByte(a, b, d, n, [](int s, int t) { return s | t; });
        break;
    case BytePair::Xor:
        EachByte(a, b, d, n, [](int s, int t) { return s ^ t; });
        break;
    case BytePair::AddHalved:
        EachByte(a, b, d, n, [](int s, int t) { return (s + t) >> 1; });
        break;
    case BytePair::SubtractHalved:
        EachByte(a, b, d, n, [](int s, int t) { return (s - t + 255) >> 1; });
        break;
    }
}

void BlendRowPlain(const std::uint8_t* a, const std::uint8_t* b, std::uint8_t* d, std::size_t n, int A)
{
    EachByte(a, b, d, n, [A](int s, int t) { return (s * A + t * (256 - A)) >> 8; });
}

void ThresholdRowPlain(const std::uint8_t* s, std::uint8_t* d, std::size_t n, std::uint8_t Threshold, std::uint8_t High,
                       std::uint8_t Low)
{
    for (std::size_t i = 0; i < n; i++)
        d[i] = s[i] > Threshold ? High : Low;
}

void LookupRowPlain(const std::uint8_t* s, std::uint8_t* d, std::size_t n, const std::uint8_t Table[256])
{
    for (std::size_t i = 0; i < n; i++)
        d[i] = Table[s[i]];
}

void LargestOfThreeRowPlain(const std::uint8_t* s, std::uint8_t* d, std::size_t n)
{
    for (std::size_t i = 0; i < n; i++, s += 3) {
        const std::uint8_t larger = s[0] > s[1] ? s[0] : s[1];
        d[i] = larger > s[2] ? larger : s[2];
    }
}

void WidenRowPlain(const std::uint8_t* s, std::uint16_t* d, std::size_t n, int Shift)
{
    for (std::size_t i = 0; i < n; i++)
        d[i] = static_cast<std::uint16_t>(s[i] << Shift);
}

void MomentsRowPlain(const std::uint8_t* s, std::size_t n, std::uint64_t& Sum, std::uint64_t& Squares)
{
    for (std::size_t i = 0; i < n; i++) {
        Sum += s[i];
        Squares += std::uint64_t{s[i]} * s[i];
    }
}

void MomentsRowPlain(const std::uint16_t* s, std::size_t n, std::uint16_t Largest, std::uint64_t& Sum,
                     std::uint64_t& Squares)
{
    for (std::size_t i = 0; i < n; i++) {
        const std::uint64_t v = s[i] < Largest ? s[i] : Largest;
        Sum += v;
        Squares += v * v;
    }
}

} // namespace Tesk::kernels
