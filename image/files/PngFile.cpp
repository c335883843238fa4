// PNG through libpng. Its errors arrive by longjmp, so no frame between holds an object with a destructor.
#include "image/files/ImageFile.h"

#include "foundation/Entry.h"
#include "image/core/GrayDepth.h"

#include <cmath>
#include <csetjmp>
#include <cstring>
#include <png.h>
#include <vector>

namespace Tesk::files {

namespace {

/// Deflate shrinks a thousandfold at the most.
constexpr std::int64_t largestRatio = 1100;

[[noreturn]] void LeaveByJump(png_structp png, png_const_charp)
{
    std::longjmp(*static_cast<std::jmp_buf*>(png_get_error_ptr(png)), 1);
}

void IgnoreWarning(png_structp, png_const_charp) {}

struct ReadState
{
    png_structp png = nullptr;
    png_infop info = nullptr;
    std::jmp_buf jump;
    int colorType = 0, bitDepth = 0, pixelBits = 0;
    PixelTypes native = Undefined, rows = Undefined, wanted = Undefined;

    ReadState()
    {
        png = png_create_read_struct(PNG_LIBPNG_VER_STRING, &jump, LeaveByJump, IgnoreWarning);
        if (png) info = png_create_info_struct(png);
    }
    ReadState(const ReadState&) = delete;
    ReadState& operator=(const ReadState&) = delete;
    ~ReadState() { png_destroy_read_struct(&png, &info, nullptr); }
};

int LibraryReadError(const ImageFile& file)
{
    return Status::Format(CannotRead, L"Cannot read from file \"%ls\", internal libPNG error", file.Name());
}

/// Chooses native type, transformations, and the type of the rows that libpng will deliver.
int ChooseTransformations(ReadState& s)
{
    if (s.bitDepth != 1 && s.bitDepth != 4 && s.bitDepth != 8 && s.bitDepth != 16 &&
        s.colorType != PNG_COLOR_TYPE_PALETTE)
        return Status::Format(UnsupportedFormat, L"Unsupported PNG image format, color type is %d, bit depth is %d",
                              s.colorType, s.bitDepth);
    switch (s.colorType) {
    case PNG_COLOR_TYPE_GRAY:
    case PNG_COLOR_TYPE_GRAY_ALPHA:
        // Four bits a pixel fit no store: they widen to eight.
        if (s.bitDepth == 4) png_set_expand_gray_1_2_4_to_8(s.png);
        s.native = s.bitDepth == 16 ? Gray16 : s.bitDepth == 1 ? Gray1 : Gray;
        if (s.wanted == Undefined) s.wanted = s.native;
        if (s.wanted != s.native && s.wanted != Gray && s.wanted != Rgb) return RefuseConversion(s.native, s.wanted);
        png_set_strip_alpha(s.png);
        if (s.bitDepth == 16) png_set_swap(s.png);
        s.rows = s.native;
        if (s.wanted == Rgb && s.bitDepth <= 8) {
            if (s.bitDepth < 8) png_set_expand_gray_1_2_4_to_8(s.png);
            png_set_gray_to_rgb(s.png);
            s.rows = Rgb;
        }
        return NoError;
    case PNG_COLOR_TYPE_RGB:
    case PNG_COLOR_TYPE_PALETTE:
        s.native = Rgb;
        break;
    case PNG_COLOR_TYPE_RGB_ALPHA:
        s.native = Rgba;
        break;
    default:
        return Status::Format(UnsupportedFormat, L"Unsupported PNG image format, color type is %d", s.colorType);
    }
    if (s.wanted == Undefined) s.wanted = s.native;
    if (s.wanted != s.native && s.wanted != Gray && s.wanted != Rgb) return RefuseConversion(s.native, s.wanted);
    s.rows = s.wanted;
    // Sixteen-bit colour fits no store: it narrows to eight.
    if (s.bitDepth == 16) png_set_strip_16(s.png);
    if (s.colorType == PNG_COLOR_TYPE_PALETTE) png_set_palette_to_rgb(s.png);
    if (s.wanted == Rgba) {
        png_set_alpha_mode(s.png, PNG_ALPHA_PREMULTIPLIED, 1.0);
        // Whatever gamma the file tells: values are multiplied as they stand, not turned into amounts of light first.
        png_set_gamma(s.png, 1.0, 1.0);
    } else
        png_set_strip_alpha(s.png);
    if (s.wanted == Gray)
        png_set_rgb_to_gray(s.png, PNG_ERROR_ACTION_NONE, PNG_RGB_TO_GRAY_DEFAULT, PNG_RGB_TO_GRAY_DEFAULT);
    else
        png_set_bgr(s.png);
    return NoError;
}

/// From the header up to the choice of the row type.
int ReadInfo(ReadState& s, const ImageFile& file, std::int64_t& width, std::int64_t& height)
{
    if (setjmp(s.jump)) return LibraryReadError(file);
    png_init_io(s.png, file.stream);
    png_set_sig_bytes(s.png, 8);
    png_set_user_limits(s.png, 0x7fffffff, 0x7fffffff);
    png_read_info(s.png, s.info);
    width = png_get_image_width(s.png, s.info);
    height = png_get_image_height(s.png, s.info);
    s.colorType = png_get_color_type(s.png, s.info);
    s.bitDepth = png_get_bit_depth(s.png, s.info);
    s.pixelBits = s.bitDepth * png_get_channels(s.png, s.info);
    return ChooseTransformations(s);
}

int ReadRows(ReadState& s, const ImageFile& file, const Image& image, png_bytep* rows)
{
    if (setjmp(s.jump)) return LibraryReadError(file);
    png_set_interlace_handling(s.png);
    png_read_update_info(s.png, s.info);
    if (png_get_rowbytes(s.png, s.info) != static_cast<std::size_t>(RowBytes(image.Width, image.Type)))
        return Status::Format(UnsupportedFormat, L"Unsupported PNG image format, color type is %d, bit depth is %d",
                              s.colorType, s.bitDepth);
    png_read_image(s.png, rows);
    png_read_end(s.png, nullptr);
    return NoError;
}

/// What libpng cannot do: widen bits, narrow sixteen bits by the gray depth in force.
void ConvertRow(const std::uint8_t* src, PixelTypes from, std::uint8_t* dst, PixelTypes to, int width)
{
    if (from == Gray1)
        BitsToGray(src, dst, width);
    else if (to == Gray)
        Gray16ToGray(reinterpret_cast<const std::uint16_t*>(src), dst, width);
    else {
        const int shift = levels::GrayShift();
        for (int x = 0; x < width; x++)
            std::memset(dst + 3 * x, reinterpret_cast<const std::uint16_t*>(src)[x] >> shift & 255, 3);
    }
}

struct WriteState
{
    png_structp png = nullptr;
    png_infop info = nullptr;
    std::jmp_buf jump;

    WriteState()
    {
        png = png_create_write_struct(PNG_LIBPNG_VER_STRING, &jump, LeaveByJump, IgnoreWarning);
        if (png) info = png_create_info_struct(png);
    }
    WriteState(const WriteState&) = delete;
    WriteState& operator=(const WriteState&) = delete;
    ~WriteState() { png_destroy_write_struct(&png, &info); }
};

int LibraryWriteError(const ImageFile& file)
{
    return Status::Format(CannotWrite, L"Cannot write to file \"%ls\", internal libPNG error", file.Name());
}

int WriteRows(WriteState& s, const ImageFile& file, const Image& src)
{
    if (setjmp(s.jump)) return LibraryWriteError(file);
    png_init_io(s.png, file.stream);
    png_set_user_limits(s.png, 0x7fffffff, 0x7fffffff);
    const int depth = src.Type == Gray16 ? 16 : src.Type == Gray1 ? 1 : 8;
    const int color = src.Type == Rgba  ? PNG_COLOR_TYPE_RGB_ALPHA
                      : src.Type == Rgb ? PNG_COLOR_TYPE_RGB
                                        : PNG_COLOR_TYPE_GRAY;
    png_set_IHDR(s.png, s.info, static_cast<png_uint_32>(int(src.Width)), static_cast<png_uint_32>(int(src.Height)),
                 depth, color, PNG_INTERLACE_NONE, PNG_COMPRESSION_TYPE_DEFAULT, PNG_FILTER_TYPE_DEFAULT);
    const auto density = static_cast<png_uint_32>(std::lround(dotsPerInch / 0.0254));
    png_set_pHYs(s.png, s.info, density, density, PNG_RESOLUTION_METER);
    png_write_info(s.png, s.info);
    if (color != PNG_COLOR_TYPE_GRAY) png_set_bgr(s.png);
    if (depth == 16) png_set_swap(s.png);
    for (int y = 0; y < src.Height; y++)
        png_write_row(s.png, src.Row(y));
    png_write_end(s.png, nullptr);
    return NoError;
}

int ReadPng(ImageFile& file, Image& dst, PixelTypes wanted)
{
    png_byte signature[8] = {};
    if (std::fread(signature, 1, 8, file.stream) != 8 || png_sig_cmp(signature, 0, 8) != 0)
        return Status::Format(UnsupportedFormat, L"File \"%ls\" is not a PNG image file (unrecognized signature)",
                              file.Name());
    ReadState state;
    state.wanted = wanted;
    if (!state.info) return LibraryReadError(file);
    std::int64_t width = 0, height = 0;
    if (const int code = ReadInfo(state, file, width, height)) return code;
    Image raw;
    if (const int code = Allocate(file, raw, width, height, state.rows, state.pixelBits, largestRatio)) return code;
    std::vector<png_bytep> rows(static_cast<std::size_t>(height));
    for (int y = 0; y < raw.Height; y++)
        rows[static_cast<std::size_t>(y)] = raw.Row(y);
    // The library leaves the unused bits of a packed row as it finds them.
    for (int y = 0; y < raw.Height && raw.Type == Gray1; y++)
        raw.Row(y)[(raw.Width - 1) >> 3] = 0;
    if (const int code = ReadRows(state, file, raw, rows.data())) return code;
    if (state.rows == state.wanted) {
        dst.ShallowCopy(raw, true);
        return NoError;
    }
    if (const int code = Allocate(file, dst, width, height, state.wanted, state.pixelBits, largestRatio)) return code;
    for (int y = 0; y < dst.Height; y++)
        ConvertRow(raw.Row(y), state.rows, dst.Row(y), state.wanted, dst.Width);
    return NoError;
}

int CheckPngType(PixelTypes type)
{
    if (type == Gray || type == Gray16 || type == Gray1 || type == Rgb || type == Rgba) return NoError;
    return Status::Format(UnsupportedType, L"The image type (%ls) is not supported for this operation",
                          PixelTypeName(type));
}

int WritePng(ImageFile& file, const Image& src)
{
    WriteState state;
    return state.info ? WriteRows(state, file, src) : LibraryWriteError(file);
}

} // namespace

extern const Format png;
const Format png = {{L".png"}, ReadPng, CheckPngType, WritePng};

} // namespace Tesk::files
