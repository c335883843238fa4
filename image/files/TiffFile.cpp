// TIFF through libtiff.
#include "image/files/ImageFile.h"

#include "foundation/Entry.h"
#include "image/core/GrayDepth.h"

#include <cstring>
#include <memory>
#include <tiffio.h>
#include <vector>

namespace Tesk::files {

namespace {

/// A blank page under fax coding shrinks further than under any other.
constexpr std::int64_t largestRatio = 20000;

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

int LibraryError(const ImageFile& file)
{
    return Status::Format(CannotRead, L"Cannot read from file \"%ls\", internal TiffLib error", file.Name());
}

struct Layout
{
    std::uint32_t width = 0, height = 0;
    std::uint16_t photometric = 0, samples = 1, bits = 1, planar = 1;
    PixelTypes native = Undefined;

    bool WhiteIsZero() const { return photometric == PHOTOMETRIC_MINISWHITE; }
};

int ReadLayout(TIFF* tiff, Layout& layout)
{
    if (!TIFFGetField(tiff, TIFFTAG_IMAGEWIDTH, &layout.width) ||
        !TIFFGetField(tiff, TIFFTAG_IMAGELENGTH, &layout.height) ||
        !TIFFGetField(tiff, TIFFTAG_PHOTOMETRIC, &layout.photometric))
        return Status::Format(CannotRead, L"Missing Image Width/Height or Photometric Interpretation tag");
    if (!TIFFGetField(tiff, TIFFTAG_SAMPLESPERPIXEL, &layout.samples)) layout.samples = 1;
    if (!TIFFGetField(tiff, TIFFTAG_BITSPERSAMPLE, &layout.bits)) layout.bits = 1;
    if (!TIFFGetField(tiff, TIFFTAG_PLANARCONFIG, &layout.planar)) layout.planar = 1;
    const bool color = layout.samples == 3 || layout.samples == 4;
    if (!color && layout.samples != 1)
        return Status::Format(UnsupportedFormat, L"Unsupported number of samples per pixel (%d)", int{layout.samples});
    if (color)
        layout.native = layout.samples == 3 ? Rgb : Rgba;
    else if (layout.bits == 1)
        layout.native = Gray1;
    else if (layout.bits == 8)
        layout.native = Gray;
    else if (layout.bits == 16)
        layout.native = Gray16;
    if (layout.native == Undefined || (color && layout.bits != 8))
        return Status::Format(UnsupportedFormat, L"Unsupported number of bits per sample (%d)", int{layout.bits});
    return NoError;
}

using RowConverter = void (*)(const Layout&, const std::uint8_t*, std::uint8_t*, int);

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
            return [](const Layout& l, Bytes src, std::uint8_t* dst, int width) {
                const int flip = l.WhiteIsZero() ? 255 : 0;
                for (int x = 0; x < width; x++)
                    dst[x] = static_cast<std::uint8_t>(src[x] ^ flip);
            };
        case Gray16:
            return [](const Layout& l, Bytes src, std::uint8_t* dst, int width) {
                Gray16ToGray(Wide(src), dst, width);
                if (l.WhiteIsZero())
                    for (int x = 0; x < width; x++)
                        dst[x] = static_cast<std::uint8_t>(255 - dst[x]);
            };
        case Rgb:
            return [](const Layout&, Bytes src, std::uint8_t* dst, int width) { BgrToGray(src, dst, width); };
        case Rgba:
            // The samples stand alpha first.
            return [](const Layout&, Bytes src, std::uint8_t* dst, int width) {
                for (int x = 0; x < width; x++, src += 4)
                    dst[x] = static_cast<std::uint8_t>((src[1] + src[2] + src[3]) * 85 >> 8);
            };
        case Gray1:
            return [](const Layout& l, Bytes src, std::uint8_t* dst, int width) {
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
        return [](const Layout& l, Bytes src, std::uint8_t* dst, int width) {
            const int shift = levels::GrayShift();
            for (int x = 0; x < width; x++)
                reinterpret_cast<std::uint16_t*>(dst)[x] =
                    static_cast<std::uint16_t>((l.WhiteIsZero() ? 255 - src[x] : src[x]) << shift);
        };
    if (wanted == Gray16 && native == Gray16)
        return [](const Layout& l, Bytes src, std::uint8_t* dst, int width) {
            for (int x = 0; x < width; x++)
                reinterpret_cast<std::uint16_t*>(dst)[x] = static_cast<std::uint16_t>(
                    l.WhiteIsZero() ? (256 << levels::GrayShift()) - Wide(src)[x] - 1 : Wide(src)[x]);
        };
    if (wanted == Rgb && native == Gray)
        return [](const Layout&, Bytes src, std::uint8_t* dst, int width) { GrayToBgr(src, dst, width); };
    if (wanted == Rgb && native == Rgb)
        return [](const Layout&, Bytes src, std::uint8_t* dst, int width) { SwapRedBlue(src, dst, width); };
    if (wanted == Rgba && native == Rgba)
        return [](const Layout&, Bytes src, std::uint8_t* dst, int width) { ReverseBytesOfFour(src, dst, width); };
    if (wanted == Gray1 && native == Gray1)
        return [](const Layout& l, Bytes src, std::uint8_t* dst, int width) {
            for (int x = 0; x < (width + 7) >> 3; x++)
                dst[x] = static_cast<std::uint8_t>(l.WhiteIsZero() ? ~src[x] : src[x]);
        };
    return nullptr;
}

int ReadPlanes(TIFF* tiff, const ImageFile& file, const Layout& layout, const Image& dst,
               std::vector<std::uint8_t>& row)
{
    const int last = layout.samples - 1;
    for (std::uint16_t sample = 0; sample < layout.samples; sample++)
        for (int y = 0; y < dst.Height; y++) {
            if (TIFFReadScanline(tiff, row.data(), static_cast<std::uint32_t>(y), sample) < 0)
                return LibraryError(file);
            for (int x = 0; x < dst.Width; x++)
                dst.Row(y)[layout.samples * x + last - sample] = row[static_cast<std::size_t>(x)];
        }
    return NoError;
}

} // namespace

int ReadTiff(ImageFile& file, Image& dst, PixelTypes wanted)
{
    SilenceLibrary();
    const Tiff tiff(TIFFOpen(file.path.c_str(), "r"));
    if (!tiff) return LibraryError(file);
    Layout layout;
    if (const int code = ReadLayout(tiff.get(), layout)) return code;
    if (wanted == Undefined) wanted = layout.native;
    const bool planes = layout.samples > 1 && layout.planar == PLANARCONFIG_SEPARATE;
    if (planes && wanted != layout.native)
        return Status::Format(
            IncompatibleType,
            L"Implicit type conversion from %ls to %ls is not supported (use Copy) for separate planar Tiff",
            PixelTypeName(layout.native), PixelTypeName(wanted));
    const RowConverter convert = ConverterOf(layout.native, wanted);
    if (!convert) return RefuseConversion(layout.native, wanted);
    if (const int code =
            Allocate(file, dst, layout.width, layout.height, wanted, layout.samples * layout.bits, largestRatio))
        return code;
    // Subsampled colour delivers shorter scan lines than the layout says: such a file is not read over its rows.
    const std::int64_t scanline = TIFFScanlineSize(tiff.get());
    const std::int64_t need =
        planes ? std::int64_t{dst.Width} : (std::int64_t{dst.Width} * layout.samples * layout.bits + 7) / 8;
    if (scanline < need) return LibraryError(file);
    std::vector<std::uint8_t> row(static_cast<std::size_t>(scanline));
    if (planes) return ReadPlanes(tiff.get(), file, layout, dst, row);
    for (int y = 0; y < dst.Height; y++) {
        if (TIFFReadScanline(tiff.get(), row.data(), static_cast<std::uint32_t>(y), 0) < 0) return LibraryError(file);
        convert(layout, row.data(), dst.Row(y), dst.Width);
    }
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

} // namespace Tesk::files
