// The inside of a quad as an image.
#include "measure/Quad.h"

#include "foundation/Angles.h"
#include "foundation/Entry.h"
#include "image/geometry/Warps.h"

namespace Tesk {

void Quad::Sample(const Image& Src, Image& Dst, bool Bilinear) const
{
    const Entry entry("Tesk::Quad::Sample");
    if (Bent) {
        const double start = Bend > 0 ? StartAngle() : double(Angle), length = std::abs((Width - Height / 2) * Bend);
        const warps::Ring ring{{X, Y}, ToDegrees(start), ToDegrees(start + Bend), Width - Height, Width};
        entry.Refuses(warps::SampleRing(ring, Src, Dst, static_cast<std::int64_t>(length),
                                        static_cast<std::int64_t>(double(Height)), Bilinear));
        return;
    }
    const double c = std::cos(Angle), s = std::sin(Angle);
    entry.Refuses(
        warps::SampleAffine({c, -s, X, s, c, Y}, Src, Dst, std::llround(Width), std::llround(Height), Bilinear));
}

} // namespace Tesk
