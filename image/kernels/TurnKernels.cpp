#include "image/kernels/TurnKernels.h"

#include <cstring>

namespace Tesk::kernels {

namespace {

template <std::size_t Size>
void ReversePlain(const std::uint8_t* s, std::uint8_t* d, std::size_t n)
{
    for (std::size_t i = 0; i < n; i++)
        std::memcpy(d + i * Size, s + (n - 1 - i) * Size, Size);
}

template <std::size_t Size>
void TransposePlain(const std::uint8_t* s, std::ptrdiff_t sp, std::size_t width, std::size_t height, std::uint8_t* d,
                    std::ptrdiff_t dp)
{
    for (std::size_t y = 0; y < height; y++)
        for (std::size_t x = 0; x < width; x++)
            std::memcpy(d + static_cast<std::ptrdiff_t>(x) * dp + y * Size,
                        s + static_cast<std::ptrdiff_t>(y) * sp + x * Size, Size);
}

} // namespace

void ReverseRow(const std::uint8_t* s, std::uint8_t* d, std::size_t n, std::size_t ElementSize)
{
    if (ElementSize == 1)
        ReversePlain<1>(s, d, n);
    else if (ElementSize == 2)
        ReversePlain<2>(s, d, n);
    else
        ReversePlain<3>(s, d, n);
}

void Transpose(const std::uint8_t* s, std::ptrdiff_t SourcePitch, std::size_t Width, std::size_t Height,
               std::uint8_t* d, std::ptrdiff_t DestinationPitch, std::size_t ElementSize)
{
    if (ElementSize == 1)
        TransposePlain<1>(s, SourcePitch, Width, Height, d, DestinationPitch);
    else if (ElementSize == 2)
        TransposePlain<2>(s, SourcePitch, Width, Height, d, DestinationPitch);
    else
        TransposePlain<3>(s, SourcePitch, Width, Height, d, DestinationPitch);
}

} // namespace Tesk::kernels
