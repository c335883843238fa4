// Drawing into an image: its pixels go to a raster target and back.
#include "foundation/CairoTarget.h"
#include "foundation/Entry.h"
#include "foundation/Graph.h"
#include "image/Image.h"

#include <cstring>
#include <memory>
#include <new>
#include <utility>
#include <vector>

namespace Tesk {

namespace {

/// The targets that images took the place of, and the surfaces that stand for the images.
struct Drawing
{
    GraphTarget* before;
    std::unique_ptr<CairoTarget> surface;
};

std::vector<Drawing>& Drawings()
{
    static std::vector<Drawing> drawings;
    return drawings;
}

bool CanBeDrawnOn(const Image& image)
{
    return (image.Type == Gray || image.Type == Rgb || image.Type == Rgba || image.Type == Gray1) &&
           image.Width <= CairoTarget::LargestSide && image.Height <= CairoTarget::LargestSide;
}

/// One row onto the surface, or back from it.
void ToSurface(const Image& image, int y, std::uint8_t* dst)
{
    const std::uint8_t* src = image.Row(y);
    const int step = ElementSize(image.Type);
    for (int x = 0; x < image.Width; x++, dst += 4) {
        if (image.Type == Gray1)
            std::memset(dst, src[x >> 3] & 0x80 >> (x & 7) ? 255 : 0, 3);
        else if (image.Type == Gray)
            std::memset(dst, src[x], 3);
        else
            std::memcpy(dst, src + step * x, 3);
    }
}

void FromSurface(const std::uint8_t* src, Image& image, int y)
{
    std::uint8_t* dst = image.Row(y);
    const int step = ElementSize(image.Type);
    for (int x = 0; x < image.Width; x++, src += 4) {
        const std::uint8_t gray = Max(src[0], Max(src[1], src[2]));
        if (image.Type == Gray) {
            dst[x] = gray;
        } else if (image.Type == Gray1) {
            const int bit = 0x80 >> (x & 7), byte = dst[x >> 3];
            dst[x >> 3] = static_cast<std::uint8_t>(gray >= 128 ? byte | bit : byte & ~bit);
        } else {
            std::memcpy(dst + step * x, src, 3);
        }
    }
}

} // namespace

void Graph::BeginImageTarget(Image& Target)
{
    const Entry entry("Tesk::Graph::BeginImageTarget");
    bool hasMemory = true;
    try {
        Drawings().push_back({DrawTo(), nullptr});
        DrawTo(nullptr);
        if (CanBeDrawnOn(Target)) {
            auto surface = std::make_unique<CairoTarget>(Target.Width, Target.Height);
            hasMemory = surface->Height() == Target.Height;
            std::uint8_t* pixels = surface->Pixels();
            for (int y = 0; y < surface->Height(); y++)
                ToSurface(Target, y, pixels + static_cast<std::ptrdiff_t>(surface->Stride()) * y);
            DrawTo(surface.get());
            Drawings().back().surface = std::move(surface);
        }
    } catch (const std::bad_alloc&) {
        hasMemory = false;
    }
    if (!hasMemory) entry.Refuse(CannotAllocate, L"Cannot allocate the image buffer");
}

void Graph::EndImageTarget(Image& Target)
{
    if (Drawings().empty()) return;
    const Drawing drawing = std::move(Drawings().back());
    Drawings().pop_back();
    DrawTo(drawing.before);
    if (!drawing.surface || !CanBeDrawnOn(Target) || drawing.surface->Width() != Target.Width ||
        drawing.surface->Height() != Target.Height)
        return;
    Target.DetachIfShared(true);
    const std::uint8_t* pixels = drawing.surface->Pixels();
    for (int y = 0; y < Target.Height; y++)
        FromSurface(pixels + static_cast<std::ptrdiff_t>(drawing.surface->Stride()) * y, Target, y);
}

} // namespace Tesk
