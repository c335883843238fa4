// Colours on a line: projections, and the two colours that an image consists of.
#pragma once

#include "image/Image.h"

namespace Tesk::blobs {

/// Divides colours by the plane half way between two, in fixed point with 10 fractional bits. Of two equal colours no
/// pixel is nearer to the second.
class ColorPlane
{
public:
    ColorPlane(RgbPixel back, RgbPixel fore);

    bool IsAbove(RgbPixel p) const { return blue_ * p.Blue + green_ * p.Green + red_ * p.Red >= limit_; }

private:
    int blue_, green_, red_, limit_;
};

/// The means of the pixels of an `Rgb` image on either side of their mean, along the axis on which they vary most. The
/// first is that of the side with less of the three channels; black and white stand for sides without a pixel.
struct DominantColors
{
    RgbPixel back, fore;

    explicit DominantColors(const Image& src);
};

} // namespace Tesk::blobs
