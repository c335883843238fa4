// The surface of the raster target and what is drawn with; for its sources only.
#pragma once

#include "foundation/CairoTarget.h"

#include <cstddef>

#include <cairo.h>

namespace Tesk {

struct CairoTarget::State
{
    struct Destroy
    {
        void operator()(cairo_surface_t* surface) const { cairo_surface_destroy(surface); }
        void operator()(cairo_t* context) const { cairo_destroy(context); }
    };

    std::unique_ptr<cairo_surface_t, Destroy> surface;
    std::unique_ptr<cairo_t, Destroy> context;
    std::uint8_t* pixels = nullptr;
    int width = 0, height = 0, stride = 0;

    RgbPixel line{0, 0, 255}, fill{0, 0, 0}, text{0, 0, 255}, background{0, 0, 0};
    bool hasLine = true, hasFill = false, hasBackground = false;
    int lineWidth = 1;
    std::string fontName = "sans";
    int fontSize = 16;
    bool fontChosen = false;

    TargetPoint position{0, 0}, origin{0, 0}, center{0, 0}, corner{0, 0};
    double cosine = 1, sine = 0;

    void Make(int newWidth, int newHeight);
    void Renew();
    /// A context that has failed once refuses all later drawing.
    void RenewIfBroken();
    std::uint32_t* Row(int y) const
    {
        return reinterpret_cast<std::uint32_t*>(pixels + static_cast<std::ptrdiff_t>(stride) * y);
    }
    void Color(RgbPixel color) const;
    /// Makes the path through the centres of pixels.
    void Path(const std::vector<Position>& points, bool closed, double farthest) const;
    /// The font is looked for when text is first measured or drawn: that takes longer than most drawings.
    void Font(const std::string& name, int size);
    void ChooseFont();
    int FontAscent() const;
    int FontHeight() const;
};

} // namespace Tesk
