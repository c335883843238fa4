// Regions as sets of pixels: algebra, erosion and dilation.
#include "foundation/Entry.h"
#include "image/Morpho.h"
#include "measure/Region.h"
#include "measure/region/RegionFrame.h"
#include "measure/region/RunSets.h"

namespace Tesk {

using namespace regions;

namespace {

Element ElementOf(const Morpho& structel)
{
    return {structel.Width, structel.Height, structel.Diagonal};
}

} // namespace

void Region::Invert(int X, int Y, int Width, int Height, Region& Src)
{
    const Entry entry("Tesk::Region::Invert");
    Become(entry, [&] {
        Src.Sort();
        return Inverted(X, Y, Width, Height, Src.Runs());
    });
}

void Region::Unite(Region& SrcA, Region& SrcB)
{
    const Entry entry("Tesk::Region::Unite");
    Become(entry, [&] {
        SrcA.Sort();
        SrcB.Sort();
        return United(SrcA.Runs(), SrcB.Runs());
    });
}

void Region::Intersect(Region& SrcA, Region& SrcB)
{
    const Entry entry("Tesk::Region::Intersect");
    Become(entry, [&] {
        SrcA.Sort();
        SrcB.Sort();
        return Intersected(SrcA.Runs(), SrcB.Runs());
    });
}

void Region::Subtract(Region& SrcA, Region& SrcB)
{
    const Entry entry("Tesk::Region::Subtract");
    Become(entry, [&] {
        SrcA.Sort();
        SrcB.Sort();
        return Subtracted(SrcA.Runs(), SrcB.Runs());
    });
}

RangeMode Region::Containment(const Region& Src)
{
    const Entry entry("Tesk::Region::Containment");
    RangeMode mode = Outside;
    entry.Guards(noRuns, [&] {
        Sort();
        Region src(Src);
        src.Sort();
        mode = ContainmentOf(Runs(), src.Runs());
    });
    return mode;
}

void Region::Erode(Region& Src, const Morpho& Structel)
{
    const Entry entry("Tesk::Region::Erode");
    if (Src.NumRuns < 1 && entry.Refuse(OutOfRange, voidSource)) return;
    Become(entry, [&] {
        Src.Sort();
        return Eroded(Src.Runs(), ElementOf(Structel));
    });
}

void Region::Dilate(Region& Src, const Morpho& Structel)
{
    const Entry entry("Tesk::Region::Dilate");
    if (Src.NumRuns < 1 && entry.Refuse(OutOfRange, voidSource)) return;
    Become(entry, [&] {
        Src.Sort();
        return Dilated(Src.Runs(), ElementOf(Structel));
    });
}

void Region::Gradient(Region& Src, const Morpho& Structel, GradientTypes Type)
{
    const Entry entry("Tesk::Region::Gradient");
    if (Src.NumRuns < 1 && entry.Refuse(OutOfRange, voidSource)) return;
    if (Type != StandardGradient && Type != ExternalGradient && Type != InternalGradient) {
        entry.Refuse(OutOfRange, L"Only Standard/Internal/External Gradients are supported");
        return;
    }
    Become(entry, [&] {
        Src.Sort();
        const Element element = ElementOf(Structel);
        if (Type == ExternalGradient) return Subtracted(Dilated(Src.Runs(), element), Src.Runs());
        const RunList eroded = Eroded(Src.Runs(), element);
        if (Type == InternalGradient) return Subtracted(Src.Runs(), eroded);
        return Subtracted(Dilated(Src.Runs(), element), eroded);
    });
}

} // namespace Tesk
