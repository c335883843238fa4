// Drawing into an image: its pixels go to a raster target and back.
#include "foundation/Entry.h"
#include "foundation/Graph.h"
#include "image/Image.h"
#include "image/core/TiledTarget.h"

#include <cstddef>
#include <cstdint>
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
    std::unique_ptr<TiledTarget> surface;
};

std::vector<Drawing>& Drawings()
{
    static std::vector<Drawing> drawings;
    return drawings;
}

bool CanBeDrawnOn(const Image& image)
{
    return image.Type == Gray || image.Type == Rgb || image.Type == Rgba || image.Type == Gray1;
}

/// The pixels from `from` up to but not including `to` of one row onto the surface, or back from it.
void ToSurface(const Image& image, int y, int from, int to, std::uint8_t* dst)
{
    const std::uint8_t* src = image.Row(y);
    const int step = ElementSize(image.Type);
    for (int x = from; x < to; x++, dst += 4) {
        if (image.Type == Gray1)
            std::memset(dst, src[x >> 3] & 0x80 >> (x & 7) ? 255 : 0, 3);
        else if (image.Type == Gray)
            std::memset(dst, src[x], 3);
        else
            std::memcpy(dst, src + step * x, 3);
    }
}

void FromSurface(const std::uint8_t* src, Image& image, int y, int from, int to)
{
    std::uint8_t* dst = image.Row(y);
    const int step = ElementSize(image.Type);
    for (int x = from; x < to; x++, src += 4) {
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

/// For each row of each tile: its first pixel on the surface, and where in the image it lies.
template <typename F>
void ForTileRows(const TiledTarget& surface, F work)
{
    for (const TiledTarget::Tile& tile : surface.Tiles()) {
        std::uint8_t* pixels = tile.Surface->Pixels();
        for (int y = 0; y < tile.Surface->Height(); y++)
            work(pixels + static_cast<std::ptrdiff_t>(tile.Surface->Stride()) * y, tile.Y + y, tile.X,
                 tile.X + tile.Surface->Width());
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
            auto surface = std::make_unique<TiledTarget>(Target.Width, Target.Height);
            hasMemory = surface->IsWhole();
            ForTileRows(*surface,
                        [&](std::uint8_t* pixels, int y, int from, int to) { ToSurface(Target, y, from, to, pixels); });
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
        drawing.surface->Height() != Target.Height || !drawing.surface->IsWhole())
        return;
    Target.DetachIfShared(true);
    ForTileRows(*drawing.surface,
                [&](const std::uint8_t* pixels, int y, int from, int to) { FromSurface(pixels, Target, y, from, to); });
}

} // namespace Tesk
