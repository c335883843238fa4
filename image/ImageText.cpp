// Images as text for debugging, and as blocks inside model files.
#include "foundation/Entry.h"
#include "image/Image.h"

#include <array>
#include <cstring>
#include <vector>

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

void PutInt(std::uint8_t* bytes, int value)
{
    for (int i = 0; i < 4; i++)
        bytes[i] = static_cast<std::uint8_t>(static_cast<std::uint32_t>(value) >> 8 * i);
}

int GetInt(const std::uint8_t* bytes)
{
    return static_cast<int>(bytes[0] | bytes[1] << 8 | bytes[2] << 16 | static_cast<std::uint32_t>(bytes[3]) << 24);
}

/// What is left of a file from here, or -1 where that cannot be told.
long BytesLeft(std::FILE* file)
{
    const long here = std::ftell(file);
    if (here < 0 || std::fseek(file, 0, SEEK_END) != 0) return -1;
    const long end = std::ftell(file);
    std::fseek(file, here, SEEK_SET);
    return end - here;
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

int Image::ReadBlock(std::FILE* File)
{
    std::array<std::uint8_t, 16> header{};
    if (std::fread(header.data(), 1, header.size(), File) != header.size()) return CannotRead;
    const auto type = static_cast<PixelTypes>(GetInt(&header[0]));
    const int width = GetInt(&header[4]), height = GetInt(&header[8]);
    if (type <= Undefined || type > Short || width < 1 || height < 1) return CannotRead;
    // A block cannot be larger than what is left of its file, so a broken header allocates nothing.
    const std::int64_t need = std::int64_t{RowBytes(Min(width, 1 << 24), type)} * height;
    const long left = BytesLeft(File);
    if (width > 1 << 24 || need == 0 || (left >= 0 && need > left)) return CannotRead;
    Set(width, height, type);
    if (const int code = Status::Error().Code) return code;
    GradGain = GetInt(&header[12]);
    const auto bytes = static_cast<std::size_t>(RowBytes(width, type));
    for (int y = 0; y < height; y++)
        if (std::fread(Row(y), 1, bytes, File) != bytes) return CannotRead;
    return NoError;
}

int Image::WriteBlock(std::FILE* File) const
{
    std::array<std::uint8_t, 16> header{};
    PutInt(&header[0], Type);
    PutInt(&header[4], Width);
    PutInt(&header[8], Height);
    PutInt(&header[12], GradGain);
    if (std::fwrite(header.data(), 1, header.size(), File) != header.size()) return CannotWrite;
    const auto bytes = static_cast<std::size_t>(RowBytes(Width, Type));
    for (int y = 0; y < Height; y++)
        if (std::fwrite(Row(y), 1, bytes, File) != bytes) return CannotWrite;
    return NoError;
}

} // namespace Tesk
