#include "image/kernels/ResampleKernels.h"

namespace Tesk::kernels {

namespace {

template <std::size_t Size>
void Pick(const std::uint8_t* s, const std::size_t* places, std::uint8_t* d, std::size_t n)
{
    for (std::size_t i = 0; i < n; i++)
        std::memcpy(d + i * Size, s + places[i] * Size, Size);
}

} // namespace

void PickRow(const std::uint8_t* s, const std::size_t* Places, std::uint8_t* d, std::size_t n, std::size_t ElementSize)
{
    if (ElementSize == 1)
        Pick<1>(s, Places, d, n);
    else if (ElementSize == 2)
        Pick<2>(s, Places, d, n);
    else if (ElementSize == 3)
        Pick<3>(s, Places, d, n);
    else
        Pick<4>(s, Places, d, n);
}

void MixRows(const std::uint8_t* a, const std::uint8_t* b, std::uint8_t* d, std::size_t n, std::uint32_t Weight)
{
    MixRowsPlain(a, b, d, n, Weight);
}

} // namespace Tesk::kernels
