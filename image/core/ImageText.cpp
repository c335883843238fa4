// Images as text for debugging, and as blocks inside model files.
#include "foundation/Archive.h"
#include "image/Image.h"

namespace Tesk {

namespace {

void PrintPixel(const Image& image, int x, int y, std::FILE* out)
{
    switch (image.Type) {
    case Gray:
        std::fprintf(out, "%3d ", image.Row(y)[x]);
        break;
    case Gray16:
        std::fprintf(out, "%5d ", image.Row<Gray16Pixel>(y)[x]);
        break;
    case Rgb: {
        const RgbPixel p = image.Row<RgbPixel>(y)[x];
        std::fprintf(out, "(%3d,%3d,%3d) ", p.Red, p.Green, p.Blue);
        break;
    }
    case Rgba: {
        const RgbaPixel p = image.Row<RgbaPixel>(y)[x];
        std::fprintf(out, "(%3d,%3d,%3d,%3d) ", p.Red, p.Green, p.Blue, p.Alpha);
        break;
    }
    case Gray1:
        std::fputc(image.Row(y)[x >> 3] & 0x80 >> (x & 7) ? '#' : '.', out);
        break;
    default:
        break;
    }
}

/// Calls `each` on the first and last `shown / 2` indexes, and `gap` where some were left out.
template <typename Each, typename Gap>
void ForEnds(int count, int shown, Each each, Gap gap)
{
    const int half = Max(shown, 0) / 2;
    for (int i = 0; i < Min(half, count); i++)
        each(i);
    if (count > 2 * half) gap();
    for (int i = Max(half, count - half); i < count; i++)
        each(i);
}

} // namespace

void Image::Print(int Rows, int Columns) const
{
    Status::Error().Code = NoError;
    std::FILE* out = TextOutput();
    if (!out) return;
    std::fprintf(out, "Type: %s, Size %d x %d pixels\n", Narrow(PixelTypeName(Type)).c_str(), int(Width), int(Height));
    if (Type == Undefined) return;
    ForEnds(
        Height, Rows,
        [&](int y) {
            ForEnds(
                Width, Columns, [&](int x) { PrintPixel(*this, x, y, out); }, [&] { std::fputs("... ", out); });
            std::fputc('\n', out);
        },
        [&] { std::fputs("...\n", out); });
}

void Image::Transfer(Archive& Block, bool MayBeVoid)
{
    PixelTypes type = Type;
    std::int32_t width = Width, height = Height, gain = GradGain;
    Block(type, width, height, gain);
    if (!Block.Good() || Block.Ended()) return;
    if (Block.Reading()) {
        if (type == Undefined && MayBeVoid) {
            *this = Image();
            return;
        }
        // A block cannot be larger than what is left of its file, so a broken header allocates nothing.
        if (width > 0 && height > 0 && WideRowBytes(width, type) > Block.BytesLeft() / height)
            return Block.Refuse(CannotRead);
        if (type == Undefined) return Block.Refuse(VoidObject, L"Void source or destination image");
        // Those who share the former store keep it.
        if (!Allocate(width, height, type, 0)) return Block.Refuse(CannotAllocate, L"Cannot allocate the image buffer");
        GradGain = gain;
    }
    const auto bytes = static_cast<std::size_t>(RowBytes(width, type));
    for (int y = 0; y < height; y++)
        Block.Bytes(Row(y), bytes);
}

} // namespace Tesk
