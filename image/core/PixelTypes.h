// The types of pixels as values of C++: sets of them, their samples, and the call of a template by the type at hand.
#pragma once

#include "image/Image.h"

#include <cstdint>
#include <initializer_list>

namespace Tesk::images {

/// A set of pixel types, as a bit for each.
struct Types
{
    std::uint32_t bits = 0;
    constexpr Types(std::initializer_list<PixelTypes> types)
    {
        for (const PixelTypes type : types)
            bits |= 1u << type;
    }
    bool Has(PixelTypes type) const { return bits >> type & 1; }
};

/// Types whose pixels are single gray values.
constexpr bool IsGray(PixelTypes type)
{
    return type == Gray || type == Gray16 || type == Gray32;
}

/// Numbers in a pixel.
constexpr int Channels(PixelTypes type)
{
    return type == Rgb ? 3 : type == Rgba ? 4 : 1;
}

/// How an image holds pixels of a type: as one `Pixel`, of `channels` numbers of type `Sample`.
template <PixelTypes type>
struct PixelTraits;

template <typename P, typename S, int count>
struct PixelOfSamples
{
    using Pixel = P;
    using Sample = S;
    static constexpr int channels = count;
};

template <>
struct PixelTraits<Gray> : PixelOfSamples<GrayPixel, std::uint8_t, 1>
{};
template <>
struct PixelTraits<Gray16> : PixelOfSamples<Gray16Pixel, std::uint16_t, 1>
{};
template <>
struct PixelTraits<Rgb> : PixelOfSamples<RgbPixel, std::uint8_t, 3>
{};
template <>
struct PixelTraits<Rgba> : PixelOfSamples<RgbaPixel, std::uint8_t, 4>
{};

/// Calls `f` with the pixel of an image's type; false, without a call, if that is none of those listed.
///
///     VisitPixels<Gray, Gray16>(src.Type, [&]<typename T>() { Smooth<T>(src, dst); });
template <PixelTypes... accepted, typename F>
bool VisitPixels(PixelTypes type, F f)
{
    return ((type == accepted && (f.template operator()<typename PixelTraits<accepted>::Pixel>(), true)) || ...);
}

/// The same with the number of channels and the type of a sample.
///
///     VisitSamples<Gray, Gray16, Rgb>(src.Type, [&]<int Channels, typename T>() { Double<Channels, T>(src, dst); });
template <PixelTypes... accepted, typename F>
bool VisitSamples(PixelTypes type, F f)
{
    return (
        (type == accepted &&
         (f.template operator()<PixelTraits<accepted>::channels, typename PixelTraits<accepted>::Sample>(), true)) ||
        ...);
}

} // namespace Tesk::images
