// Isophotes, and the pruning of binary pixels by the number of their neighbours.
#include "image/Morpho.h"

#include "image/kernels/RowKernels.h"
#include "image/morpho/MorphoExtremum.h"
#include "image/morpho/MorphoFrame.h"

#include <vector>

namespace Tesk {

using namespace morpho;

void Morpho::Isophotes(int Level, int Step, bool Connexity8, const Image& Src, Image& Dst)
{
    const Entry entry("Tesk::Morpho::Isophotes");
    if (entry.Refuses(CheckType(Src, {Gray}, L", Gray required"))) return;
    if (Step < 1) {
        entry.Refuse(OutOfRange, L"The Step (%d) must be a positive number", Step);
        return;
    }
    Image eroded;
    if (entry.Refuses(eroded.TrySet(Src.Width, Src.Height, Gray))) return;
    Sources held;
    if (Prepare(entry, Src, {Gray}, Dst, held)) return;
    // The value of the series at or below each gray level; only those inside the range of a pixel can be crossed.
    std::uint8_t below[256];
    for (int v = 0; v < 256; v++) {
        const std::int64_t d = std::int64_t{v} - Level, steps = d / Step - (d % Step < 0);
        below[v] = static_cast<std::uint8_t>(Max<std::int64_t>(Level + steps * Step, 0));
    }
    const Element element(3, 3, Connexity8 ? 1 : 3, held.a);
    if (!Guarded(entry, [&] { Apply(Extremum::Minimum, element, held.a, eroded); })) return;
    for (int y = 0; y < Dst.Height; y++) {
        std::uint8_t* line = Dst.Row(y);
        kernels::LookupRow(held.a.Row(y), line, static_cast<std::size_t>(int(Dst.Width)), below);
        const std::uint8_t* e = eroded.Row(y);
        for (int x = 0; x < Dst.Width; x++)
            line[x] = e[x] < line[x] ? 255 : 0;
    }
}

void Morpho::KillConnect(int MinNeighbors, int MaxNeighbors, const Image& Src, Image& Dst)
{
    const Entry entry("Tesk::Morpho::KillConnect");
    Sources held;
    if (Prepare(entry, Src, {Gray}, Dst, held, Undefined, L", Gray required")) return;
    CopyRows(held.a, Dst);
    const int width = Dst.Width, least = Clamp(MinNeighbors, 0, 9), most = Clamp(MaxNeighbors, -1, 8);
    std::vector<std::uint8_t> columns;
    if (!Guarded(entry, [&] { columns.resize(static_cast<std::size_t>(width)); })) return;
    for (int y = 1; y < Dst.Height - 1; y++) {
        const std::uint8_t *above = held.a.Row(y - 1), *here = held.a.Row(y), *under = held.a.Row(y + 1);
        for (int x = 0; x < width; x++)
            columns[static_cast<std::size_t>(x)] =
                static_cast<std::uint8_t>((above[x] != 0) + (here[x] != 0) + (under[x] != 0));
        std::uint8_t* d = Dst.Row(y);
        for (int x = 1; x < width - 1; x++) {
            // A pixel that is not 0 counts itself.
            const std::uint8_t* c = columns.data() + x;
            const int neighbours = c[-1] + c[0] + c[1] - 1;
            d[x] = neighbours >= least && neighbours <= most ? here[x] : std::uint8_t{0};
        }
    }
}

} // namespace Tesk
