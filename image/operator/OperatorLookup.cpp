// Sending every pixel through a lookup table that is a profile.
#include "image/Operator.h"

#include "image/core/GrayDepth.h"
#include "image/operator/OperatorFrame.h"
#include "measure/Profile.h"

#include <array>
#include <vector>

namespace Tesk {

namespace {

using namespace points;

constexpr int byteEntries = 256;

int CheckTable(const Profile& table, const Image& src)
{
    if (const int code = CheckProfile(table)) return code;
    const bool bytes = (src.Type == Gray || src.Type == Rgb) && (table.Type == Gray || table.Type == Rgb);
    const bool words = src.Type == Gray16 && table.Type == Gray16;
    if (!bytes && !words)
        return Status::Format(UnsupportedType, L"The profile Type (%ls) is not supported for this image type (%ls)",
                              PixelTypeName(table.Type), PixelTypeName(src.Type));
    const int entries = words ? levels::Gray16Levels() : byteEntries;
    if (table.Length != entries)
        return Status::Format(IncompatibleSize, L"This profile has %d entries instead of %d", int(table.Length),
                              entries);
    return NoError;
}

std::array<RgbPixel, byteEntries> Colors(const Profile& table)
{
    std::array<RgbPixel, byteEntries> colors;
    const std::int32_t* samples = table.Samples();
    for (auto& color : colors) {
        color = RgbPixel(samples[0], samples[1], samples[2]);
        samples += 3;
    }
    return colors;
}

void LookUpGray16(const Profile& table, const Image& src, Image& dst)
{
    const auto last = static_cast<Gray16Pixel>(table.Length - 1);
    std::vector<Gray16Pixel> values(table.Samples(), table.Samples() + table.Length);
    EachPixel<Gray16Pixel, Gray16Pixel>(src, dst, [&](Gray16Pixel v) { return values[Min(v, last)]; });
}

} // namespace

void Operator::Transform(Profile& LookupTable, const Image& Src, Image& Dst)
{
    const Entry entry("Tesk::Operator::Transform");
    if (entry.Refuses(CheckImage(Src)) || entry.Refuses(CheckTable(LookupTable, Src))) return;
    Sources held;
    const PixelTypes type = LookupTable.Type == Rgb ? Rgb : PixelTypes(Src.Type);
    if (Prepare(entry, Src, Dst, type, held)) return;
    if (held.a.Type == Gray16) {
        entry.Guards(noInternalBuffer, [&] { LookUpGray16(LookupTable, held.a, Dst); });
    } else if (LookupTable.Type == Gray) {
        // An entry is cut to its low byte, so that ~0 is white.
        const std::int32_t* samples = LookupTable.Samples();
        ThroughTable(held.a, Dst, [=](int v) { return samples[v]; });
    } else {
        const auto colors = Colors(LookupTable);
        if (held.a.Type == Gray)
            EachPixel<GrayPixel, RgbPixel>(held.a, Dst, [&](GrayPixel v) { return colors[v]; });
        else
            EachPixel<RgbPixel, RgbPixel>(held.a, Dst, [&](RgbPixel p) {
                return RgbPixel(colors[p.Red].Red, colors[p.Green].Green, colors[p.Blue].Blue);
            });
    }
}

} // namespace Tesk
