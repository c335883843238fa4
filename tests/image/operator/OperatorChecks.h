// What the tests of point operations share: every pair of bytes, rows of given values, and their results.
#pragma once

#include "Failures.h"
#include "image/Operator.h"

#include <string>
#include <vector>

namespace Tesk::checks {

class OperatorTest : public IgnoringFailures
{
protected:
    void TearDown() override
    {
        IgnoringFailures::TearDown();
        Operator::GrayDepth = 16;
    }
};

using Ints = std::vector<int>;

/// Every pair of bytes, or for colours of three channels all but the last column: `a` counts along the rows, `b` down
/// the columns.
inline void AllPairs(Image& a, Image& b, PixelTypes type = Gray)
{
    const int width = 256 / ElementSize(type);
    a.Set(width, 256, type);
    b.Set(width, 256, type);
    for (int y = 0; y < 256; y++)
        for (int i = 0; i < RowBytes(width, type); i++) {
            a.Row(y)[i] = static_cast<std::uint8_t>(i);
            b.Row(y)[i] = static_cast<std::uint8_t>(y);
        }
}

/// One row of pixels; the values are those of its channels in memory order.
inline void Row(Image& image, PixelTypes type, const Ints& values)
{
    const int channels = type == Rgb ? 3 : type == Rgba ? 4 : 1;
    image.Set(static_cast<int>(values.size()) / channels, 1, type);
    int i = 0;
    for (const int v : values) {
        if (type == Gray16)
            image.Row<std::uint16_t>(0)[i++] = static_cast<std::uint16_t>(v);
        else if (type == Gray32)
            image.Row<std::int32_t>(0)[i++] = v;
        else
            image.Row(0)[i++] = static_cast<std::uint8_t>(v);
    }
}

/// What the window holds, in the order of the rows: the numbers of wide pixels, the bits of packed ones, else bytes.
inline Ints Values(const Image& image)
{
    Ints values;
    const PixelTypes type = image.Type;
    const int n = type == Gray16 || type == Gray32 || type == Gray1 ? int(image.Width) : RowBytes(image.Width, type);
    for (int y = 0; y < image.Height; y++)
        for (int i = 0; i < n; i++)
            values.push_back(type == Gray16   ? image.Row<std::uint16_t>(y)[i]
                             : type == Gray32 ? image.Row<std::int32_t>(y)[i]
                             : type == Gray1  ? image.Row(y)[i / 8] >> (7 - i % 8) & 1
                                              : image.Row(y)[i]);
    return values;
}

/// Truncated to the range of a byte.
inline int Clip(double v)
{
    return v < 0 ? 0 : v > 255 ? 255 : static_cast<int>(v);
}

} // namespace Tesk::checks
