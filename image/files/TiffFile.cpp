// TIFF through libtiff.
#include "image/files/TiffRows.h"

#include "foundation/Entry.h"
#include "image/core/GrayDepth.h"

#include <cstring>
#include <memory>
#include <tiffio.h>
#include <vector>

namespace Tesk::files {

namespace {

struct Closer
{
    void operator()(TIFF* tiff) const { TIFFClose(tiff); }
};
using Tiff = std::unique_ptr<TIFF, Closer>;

void SilenceLibrary()
{
    TIFFSetErrorHandler(nullptr);
    TIFFSetWarningHandler(nullptr);
}

using RowConverter = void (*)(const TiffLayout&, const std::uint8_t*, std::uint8_t*, int);

const std::uint16_t* Wide(const std::uint8_t* row)
{
    return reinterpret_cast<const std::uint16_t*>(row);
}

RowConverter ConverterOf(PixelTypes native, PixelTypes wanted)
{
    using Bytes = const std::uint8_t*;
    if (wanted == Gray) {
        switch (native) {
        case Gray:
            return [](const TiffLayout& l, Bytes src, std::uint8_t* dst, int width) {
                const int flip = l.WhiteIsZero() ? 255 : 0;
                for (int x = 0; x < width; x++)
                    dst[x] = static_cast<std::uint8_t>(src[x] ^ flip);
            };
        case Gray16:
            return [](const TiffLayout& l, Bytes src, std::uint8_t* dst, int width) {
                Gray16ToGray(Wide(src), dst, width);
                if (l.WhiteIsZero())
                    for (int x = 0; x < width; x++)
                        dst[x] = static_cast<std::uint8_t>(255 - dst[x]);
            };
        case Rgb:
            return [](const TiffLayout&, Bytes src, std::uint8_t* dst, int width) { BgrToGray(src, dst, width); };
        case Rgba:
            // The samples stand alpha first.
            return [](const TiffLayout&, Bytes src, std::uint8_t* dst, int width) {
                for (int x = 0; x < width; x++, src += 4)
                    dst[x] = static_cast<std::uint8_t>((src[1] + src[2] + src[3]) * 85 >> 8);
            };
        case Gray1:
            return [](const TiffLayout& l, Bytes src, std::uint8_t* dst, int width) {
                BitsToGray(src, dst, width);
                if (l.WhiteIsZero())
                    for (int x = 0; x < width; x++)
                        dst[x] = static_cast<std::uint8_t>(~dst[x]);
            };
        default:
            return nullptr;
        }
    }
    if (wanted == Gray16 && native == Gray)
        return [](const TiffLayout& l, Bytes src, std::uint8_t* dst, int width) {
            const int shift = levels::GrayShift();
            for (int x = 0; x < width; x++)
                reinterpret_cast<std::uint16_t*>(dst)[x] =
                    static_cast<std::uint16_t>((l.WhiteIsZero() ? 255 - src[x] : src[x]) << shift);
        };
    if (wanted == Gray16 && native == Gray16)
        return [](const TiffLayout& l, Bytes src, std::uint8_t* dst, int width) {
            for (int x = 0; x < width; x++)
                reinterpret_cast<std::uint16_t*>(dst)[x] = static_cast<std::uint16_t>(
                    l.WhiteIsZero() ? (256 << levels::GrayShift()) - Wide(src)[x] - 1 : Wide(src)[x]);
        };
    if (wanted == Rgb && native == Gray)
        return [](const TiffLayout&, Bytes src, std::uint8_t* dst, int width) { GrayToBgr(src, dst, width); };
    if (wanted == Rgb && native == Rgb)
        return [](const TiffLayout&, Bytes src, std::uint8_t* dst, int width) { SwapRedBlue(src, dst, width); };
    if (wanted == Rgba && native == Rgba)
        return [](const TiffLayout&, Bytes src, std::uint8_t* dst, int width) { ReverseBytesOfFour(src, dst, width); };
    if (wanted == Gray1 && native == Gray1)
        return [](const TiffLayout& l, Bytes src, std::uint8_t* dst, int width) {
            for (int x = 0; x < (width + 7) >> 3; x++)
                dst[x] = static_cast<std::uint8_t>(l.WhiteIsZero() ? ~src[x] : src[x]);
        };
    return nullptr;
}

/// Each plane goes to its byte of the pixels.
int ReadPlanes(TiffRows& rows, const TiffLayout& layout, const Image& dst)
{
    const int last = layout.samples - 1;
    for (int sample = 0; sample <= last; sample++)
        for (int y = 0; y < dst.Height; y++) {
            const std::uint8_t* row = nullptr;
            if (const int code = rows.Get(y, sample, row)) return code;
            for (int x = 0; x < dst.Width; x++)
                dst.Row(y)[layout.samples * x + last - sample] = row[x];
        }
    return NoError;
}

int ReadRows(TiffRows& rows, const TiffLayout& layout, RowConverter convert, const Image& dst)
{
    if (layout.Planes() && !layout.Derived()) return ReadPlanes(rows, layout, dst);
    for (int y = 0; y < dst.Height; y++) {
        const std::uint8_t* row = nullptr;
        if (const int code = rows.Get(y, 0, row)) return code;
        convert(layout, row, dst.Row(y), dst.Width);
    }
    return NoError;
}

int ReadTiff(ImageFile& file, Image& dst, PixelTypes wanted)
{
    SilenceLibrary();
    const Tiff tiff(TIFFOpen(file.path.c_str(), "r"));
    if (!tiff) return TiffLibraryError(file);
    TiffLayout layout;
    if (const int code = ReadTiffLayout(tiff.get(), layout)) return code;
    if (wanted == Undefined) wanted = layout.native;
    if (layout.Planes() && wanted != layout.native)
        return Status::Format(
            IncompatibleType,
            L"Implicit type conversion from %ls to %ls is not supported (use Copy) for separate planar Tiff",
            PixelTypeName(layout.native), PixelTypeName(wanted));
    const RowConverter convert = ConverterOf(layout.native, wanted);
    if (!convert) return RefuseConversion(layout.native, wanted);
    const int bits = layout.samples * layout.bits;
    Image stored;
    if (const int code = Allocate(file, stored, layout.width, layout.height, wanted, bits, largestTiffRatio))
        return code;
    TiffRows rows(tiff.get(), file, layout);
    if (const int code = rows.Open()) return code;
    if (const int code = ReadRows(rows, layout, convert, stored)) return code;
    if (layout.orientation == ORIENTATION_TOPLEFT) {
        dst.ShallowCopy(stored, true);
        return NoError;
    }
    const bool turned = layout.Transposed();
    if (const int code = Allocate(file, dst, turned ? layout.height : layout.width,
                                  turned ? layout.width : layout.height, wanted, bits, largestTiffRatio))
        return code;
    TurnUpright(stored, layout, dst);
    return NoError;
}

int CheckTiffType(PixelTypes type)
{
    if (type == Gray || type == Gray16 || type == Gray1 || type == Rgb || type == Rgba) return NoError;
    return Status::Format(UnsupportedType, L"The image type (%ls) is not supported for this operation",
                          PixelTypeName(type));
}

int WriteTiff(ImageFile& file, const Image& src)
{
    SilenceLibrary();
    const int bits = src.Type == Gray16 ? 16 : src.Type == Gray1 ? 1 : 8;
    const int samples = src.Type == Rgb ? 3 : src.Type == Rgba ? 4 : 1;
    const auto failed = [&] {
        return Status::Format(CannotWrite, L"Cannot write to file \"%ls\", internal TiffLib error", file.Name());
    };
    const Tiff tiff(TIFFOpen(file.path.c_str(), "w"));
    if (!tiff) return failed();
    TIFFSetField(tiff.get(), TIFFTAG_IMAGEWIDTH, static_cast<std::uint32_t>(int(src.Width)));
    TIFFSetField(tiff.get(), TIFFTAG_IMAGELENGTH, static_cast<std::uint32_t>(int(src.Height)));
    TIFFSetField(tiff.get(), TIFFTAG_SAMPLESPERPIXEL, samples);
    TIFFSetField(tiff.get(), TIFFTAG_BITSPERSAMPLE, bits);
    TIFFSetField(tiff.get(), TIFFTAG_PLANARCONFIG, PLANARCONFIG_CONTIG);
    TIFFSetField(tiff.get(), TIFFTAG_COMPRESSION, COMPRESSION_NONE);
    TIFFSetField(tiff.get(), TIFFTAG_PHOTOMETRIC, samples > 1 ? PHOTOMETRIC_RGB : PHOTOMETRIC_MINISBLACK);
    TIFFSetField(tiff.get(), TIFFTAG_RESOLUTIONUNIT, RESUNIT_INCH);
    TIFFSetField(tiff.get(), TIFFTAG_XRESOLUTION, dotsPerInch);
    TIFFSetField(tiff.get(), TIFFTAG_YRESOLUTION, dotsPerInch);
    std::vector<std::uint8_t> row(static_cast<std::size_t>(RowBytes(src.Width, src.Type)));
    for (int y = 0; y < src.Height; y++) {
        std::memcpy(row.data(), src.Row(y), row.size());
        if (src.Type == Rgb) SwapRedBlue(row.data(), row.data(), src.Width);
        if (src.Type == Rgba) ReverseBytesOfFour(row.data(), row.data(), src.Width);
        if (TIFFWriteScanline(tiff.get(), row.data(), static_cast<std::uint32_t>(y), 0) != 1) return failed();
    }
    // The last rows and the directory are written here: closing the file would do it too, and tell nobody of a failure.
    if (!TIFFFlush(tiff.get())) return failed();
    return NoError;
}

} // namespace

extern const Format tiff;
const Format tiff = {{L".tif", L".tiff"}, ReadTiff, CheckTiffType, WriteTiff, true};

} // namespace Tesk::files
