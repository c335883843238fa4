// The portable bitmap, graymap and pixmap formats, in their text and binary forms.
#include "image/files/ImageFile.h"

#include "foundation/Entry.h"
#include "image/core/GrayDepth.h"

#include <algorithm>
#include <cctype>
#include <cstring>
#include <vector>

namespace Tesk::files {

namespace {

/// One of the three formats: its name in messages, its digits in the signature, and how many numbers its header has.
struct Pnm
{
    const wchar_t* name;
    char text, binary;
    int numbers;
};

constexpr Pnm pbmKind{L"PBM", '1', '4', 2}, pgmKind{L"PGM", '2', '5', 3}, ppmKind{L"PPM", '3', '6', 3};

struct Header
{
    bool binary = false;
    int values[3] = {};
    int Width() const { return values[0]; }
    int Height() const { return values[1]; }
    int Maximum() const { return values[2]; }
};

/// The bytes of a row in the binary form.
std::int64_t RowSize(const Pnm& format, const Header& header)
{
    if (format.text == pbmKind.text) return WideRowBytes(header.Width(), Gray1);
    return std::int64_t{header.Width()} * (format.text == ppmKind.text ? 3 : 1) * (header.Maximum() > 255 ? 2 : 1);
}

/// Goes to the samples, when the header's last number ends at `rest` in the line and at `end` in the file.
void SeekSamples(const ImageFile& file, const Pnm& format, const Header& header, const char* rest, long end)
{
    // In the binary forms one white space ends the header, and anything may follow. Still many a header ends in a blank
    // or a carriage return before its line feed: unless the length of the file speaks against it, a line that is white
    // to its end is such a one. A zero may be a sample, so the line itself does not tell its length.
    const char* const lineEnd = rest + (std::ftell(file.stream) - end);
    while (rest < lineEnd && std::isspace(static_cast<unsigned char>(*rest)))
        rest++;
    const bool white = rest == lineEnd;
    if (!header.binary) {
        if (!white && *rest != '#') std::fseek(file.stream, end, SEEK_SET);
        return;
    }
    const bool fits = file.size - (end + 1) == RowSize(format, header) * header.Height();
    if (fits || !white) std::fseek(file.stream, end + 1, SEEK_SET);
}

int ReadHeader(ImageFile& file, const Pnm& format, Header& header)
{
    char line[1024];
    bool signedOff = false;
    int found = 0;
    while (found < format.numbers) {
        const long start = std::ftell(file.stream);
        if (!std::fgets(line, sizeof line, file.stream))
            return Status::Format(CannotRead, L"Cannot read the header from the %ls file \"%ls\"", format.name,
                                  file.Name());
        if (line[0] == '#') continue;
        const char* at = line;
        if (!signedOff) {
            if ((line[0] != 'P' && line[0] != 'p') || (line[1] != format.text && line[1] != format.binary))
                return Status::Format(UnsupportedFormat, L"File \"%ls\" is not a %ls image (unrecognized signature)",
                                      file.Name(), format.name);
            header.binary = line[1] == format.binary;
            signedOff = true;
            at += 2;
        }
        int used = 0;
        while (found < format.numbers && std::sscanf(at, "%9d%n", &header.values[found], &used) == 1) {
            at += used;
            found++;
        }
        if (found == format.numbers) SeekSamples(file, format, header, at, start + (at - line));
    }
    if (header.Width() < 1 || header.Height() < 1 || header.Maximum() < 0)
        return Status::Format(CannotRead, L"Cannot read the header from the %ls file \"%ls\"", format.name,
                              file.Name());
    return NoError;
}

int ShortPixel(const ImageFile& file, const Pnm& format)
{
    if (format.text == ppmKind.text)
        return Status::Format(CannotRead, L"Cannot read a pixel value from the file \"%ls\"", file.Name());
    return Status::Format(CannotRead, L"Cannot read a pixel value from the %ls file \"%ls\"", format.name, file.Name());
}

/// Refuses a file that is too short for its rows before any memory is asked for.
int CheckRows(ImageFile& file, const Pnm& format, const Header& header)
{
    const std::int64_t rowBytes = RowSize(format, header);
    const std::int64_t left = file.Left();
    if (!header.binary) {
        // A text sample takes a character at least.
        const std::int64_t samples = std::int64_t{header.Width()} * (format.text == ppmKind.text ? 3 : 1);
        return samples > left / header.Height() ? ShortPixel(file, format) : NoError;
    }
    if (rowBytes <= left / header.Height()) return NoError;
    if (format.text == ppmKind.text)
        return Status::Format(CannotRead, L"Cannot read an image row from the file \"%ls\"", file.Name());
    if (std::FILE* out = TextOutput())
        std::fprintf(out, "%d/%d bytes @%d\n", static_cast<int>(left % rowBytes), static_cast<int>(rowBytes),
                     static_cast<int>(left / rowBytes));
    return Status::Format(CannotRead, L"Cannot read an image row from the %ls file \"%ls\"", format.name, file.Name());
}

int ReadRow(ImageFile& file, const Pnm& format, void* row, std::size_t bytes)
{
    if (std::fread(row, 1, bytes, file.stream) == bytes) return NoError;
    return Status::Format(CannotRead, L"Cannot read an image row from the %ls file \"%ls\"", format.name, file.Name());
}

bool ReadNumber(ImageFile& file, int& value)
{
    return std::fscanf(file.stream, "%9d", &value) == 1;
}

int ReadTextBit(ImageFile& file, bool& black)
{
    int c = std::fgetc(file.stream);
    while (c == ' ' || c == '\t' || c == '\n' || c == '\r')
        c = std::fgetc(file.stream);
    black = c == '1';
    return c == '0' || c == '1' ? NoError : ShortPixel(file, pbmKind);
}

int WriteHeader(ImageFile& file, const Image& src, char digit, int maximum)
{
    const int written =
        maximum ? std::fprintf(file.stream, "P%c\n%d %d %d\n", digit, int(src.Width), int(src.Height), maximum)
                : std::fprintf(file.stream, "P%c\n%d %d\n", digit, int(src.Width), int(src.Height));
    return written > 0 ? NoError : Status::Format(CannotWrite, L"Cannot write to file \"%ls\"", file.Name());
}

int WriteRow(ImageFile& file, const void* row, std::size_t bytes, const wchar_t* what)
{
    if (std::fwrite(row, 1, bytes, file.stream) == bytes) return NoError;
    return Status::Format(CannotWrite, L"Cannot write image %ls to file \"%ls\"", what, file.Name());
}

int RefuseGrayType(PixelTypes type)
{
    return Status::Format(UnsupportedType,
                          L"The image type (%ls) is not supported for this operation, use one of Gray or Gray16",
                          PixelTypeName(type));
}

void SwapBytes(std::uint16_t* row, int width)
{
    for (int x = 0; x < width; x++)
        row[x] = static_cast<std::uint16_t>(row[x] << 8 | row[x] >> 8);
}

int ReadPbm(ImageFile& file, Image& dst, PixelTypes wanted)
{
    Header header;
    if (const int code = ReadHeader(file, pbmKind, header)) return code;
    if (wanted == Undefined) wanted = Gray1;
    if (wanted != Gray1 && wanted != Gray && wanted != Gray16) return RefuseConversion(Gray1, wanted);
    const int width = header.Width(), rowBytes = (width + 7) >> 3;
    if (const int code = CheckRows(file, pbmKind, header)) return code;
    if (const int code = Allocate(file, dst, width, header.Height(), wanted, 1)) return code;
    std::vector<std::uint8_t> bits(static_cast<std::size_t>(rowBytes));
    const auto white = static_cast<std::uint16_t>((256 << levels::GrayShift()) - 1);
    for (int y = 0; y < header.Height(); y++) {
        if (header.binary) {
            if (const int code = ReadRow(file, pbmKind, bits.data(), bits.size())) return code;
        } else {
            std::fill(bits.begin(), bits.end(), std::uint8_t{0});
            for (int x = 0; x < width; x++) {
                bool black = false;
                if (const int code = ReadTextBit(file, black)) return code;
                if (black) bits[static_cast<std::size_t>(x >> 3)] |= static_cast<std::uint8_t>(0x80 >> (x & 7));
            }
        }
        // In the file a set bit is black, in the image white.
        for (auto& byte : bits)
            byte = static_cast<std::uint8_t>(~byte);
        if (wanted == Gray1)
            std::memcpy(dst.Row(y), bits.data(), bits.size());
        else if (wanted == Gray)
            BitsToGray(bits.data(), dst.Row(y), width);
        else
            for (int x = 0; x < width; x++)
                dst.Row<std::uint16_t>(y)[x] = bits[static_cast<std::size_t>(x >> 3)] & 0x80 >> (x & 7) ? white : 0;
    }
    return NoError;
}

int ReadPgm(ImageFile& file, Image& dst, PixelTypes)
{
    Header header;
    if (const int code = ReadHeader(file, pgmKind, header)) return code;
    if (header.Maximum() > 65535)
        return Status::Format(UnsupportedFormat,
                              L"Unsupported PGM image format, the maximum gray value (%d) is larger than 65535",
                              header.Maximum());
    const bool wide = header.Maximum() > 255;
    const int width = header.Width(), rowBytes = wide ? 2 * width : width;
    if (const int code = CheckRows(file, pgmKind, header)) return code;
    if (const int code = Allocate(file, dst, width, header.Height(), wide ? Gray16 : Gray, wide ? 16 : 8)) return code;
    for (int y = 0; y < header.Height(); y++) {
        if (header.binary) {
            if (const int code = ReadRow(file, pgmKind, dst.Row(y), static_cast<std::size_t>(rowBytes))) return code;
            if (wide) SwapBytes(dst.Row<std::uint16_t>(y), width);
            continue;
        }
        for (int x = 0; x < width; x++) {
            int value = 0;
            if (!ReadNumber(file, value)) return ShortPixel(file, pgmKind);
            if (wide)
                dst.Row<std::uint16_t>(y)[x] = static_cast<std::uint16_t>(value);
            else
                dst.Row(y)[x] = static_cast<std::uint8_t>(value);
        }
    }
    return NoError;
}

int ReadPpm(ImageFile& file, Image& dst, PixelTypes)
{
    Header header;
    if (const int code = ReadHeader(file, ppmKind, header)) return code;
    if (header.Maximum() >= 256)
        return Status::Format(UnsupportedFormat,
                              L"Unsupported PPM image format, the maximum gray value (%d) is larger than 255",
                              header.Maximum());
    const int width = header.Width();
    if (const int code = CheckRows(file, ppmKind, header)) return code;
    if (const int code = Allocate(file, dst, width, header.Height(), Rgb, 24)) return code;
    for (int y = 0; y < header.Height(); y++) {
        std::uint8_t* row = dst.Row(y);
        if (header.binary) {
            if (std::fread(row, 1, static_cast<std::size_t>(3 * width), file.stream) !=
                static_cast<std::size_t>(3 * width))
                return Status::Format(CannotRead, L"Cannot read an image row from the file \"%ls\"", file.Name());
        } else {
            for (int x = 0; x < 3 * width; x++) {
                int value = 0;
                if (!ReadNumber(file, value)) return ShortPixel(file, ppmKind);
                row[x] = static_cast<std::uint8_t>(value);
            }
        }
        SwapRedBlue(row, row, width);
    }
    return NoError;
}

int CheckPbmType(PixelTypes type)
{
    return type == Gray || type == Gray16 || type == Gray1 ? NoError : RefuseGrayType(type);
}

int CheckPgmType(PixelTypes type)
{
    return type == Gray || type == Gray16 ? NoError : RefuseGrayType(type);
}

int CheckPpmType(PixelTypes type)
{
    if (type == Rgb || type == Rgba) return NoError;
    return Status::Format(UnsupportedType, L"The image type (%ls) is not supported for this operation, use Rgb*",
                          PixelTypeName(type));
}

int WritePbm(ImageFile& file, const Image& src)
{
    if (const int code = WriteHeader(file, src, '4', 0)) return code;
    std::vector<std::uint8_t> bits(static_cast<std::size_t>((src.Width + 7) >> 3));
    const int middle = 128 << levels::GrayShift();
    for (int y = 0; y < src.Height; y++) {
        std::fill(bits.begin(), bits.end(), std::uint8_t{0});
        for (int x = 0; x < src.Width; x++) {
            bool black = false;
            if (src.Type == Gray)
                black = src.Row(y)[x] < 128;
            else if (src.Type == Gray16)
                black = src.Row<std::uint16_t>(y)[x] < middle;
            else
                black = !(src.Row(y)[x >> 3] & 0x80 >> (x & 7));
            if (black) bits[static_cast<std::size_t>(x >> 3)] |= static_cast<std::uint8_t>(0x80 >> (x & 7));
        }
        if (const int code = WriteRow(file, bits.data(), bits.size(), src.Type == Gray1 ? L"row" : L"pixels"))
            return code;
    }
    return NoError;
}

int WritePgm(ImageFile& file, const Image& src)
{
    if (const int code = WriteHeader(file, src, '5', src.Type == Gray ? 255 : 65535)) return code;
    std::vector<std::uint16_t> swapped(static_cast<std::size_t>(int(src.Width)));
    for (int y = 0; y < src.Height; y++) {
        const void* row = src.Row(y);
        const auto bytes = static_cast<std::size_t>(RowBytes(src.Width, src.Type));
        if (src.Type == Gray16) {
            std::memcpy(swapped.data(), row, bytes);
            SwapBytes(swapped.data(), src.Width);
            row = swapped.data();
        }
        if (const int code = WriteRow(file, row, bytes, L"row")) return code;
    }
    return NoError;
}

int WritePpm(ImageFile& file, const Image& src)
{
    if (const int code = WriteHeader(file, src, '6', 255)) return code;
    const int step = ElementSize(src.Type);
    std::vector<std::uint8_t> row(3 * static_cast<std::size_t>(int(src.Width)));
    for (int y = 0; y < src.Height; y++) {
        const std::uint8_t* pixel = src.Row(y);
        for (std::size_t x = 0; x < row.size(); x += 3, pixel += step) {
            row[x] = pixel[2];
            row[x + 1] = pixel[1];
            row[x + 2] = pixel[0];
        }
        if (const int code = WriteRow(file, row.data(), row.size(), L"row")) return code;
    }
    return NoError;
}

} // namespace

extern const Format pbm;
const Format pbm = {{L".pbm"}, ReadPbm, CheckPbmType, WritePbm};
extern const Format pgm;
const Format pgm = {{L".pgm"}, ReadPgm, CheckPgmType, WritePgm};
extern const Format ppm;
const Format ppm = {{L".ppm"}, ReadPpm, CheckPpmType, WritePpm};

} // namespace Tesk::files
