// JPEG through libjpeg. Its errors arrive by longjmp, so no frame between holds an object with a destructor.
#include "image/files/ImageFile.h"

#include "foundation/Entry.h"

#include <csetjmp>
#include <cstddef>
#include <cstring>
#include <vector>

#include <jpeglib.h>

#include <jerror.h>

namespace Tesk::files {

namespace {

/// A progressive file of one colour shrinks this far at the most that matters.
constexpr std::int64_t largestRatio = 2000;

constexpr int jpegQuality = 85;

struct ErrorManager
{
    jpeg_error_mgr base;
    std::jmp_buf jump;
};

[[noreturn]] void LeaveByJump(j_common_ptr info)
{
    std::longjmp(reinterpret_cast<ErrorManager*>(info->err)->jump, 1);
}

/// The library fills a file that ends too early with gray and warns; here that is a failure.
void StopAtEarlyEnd(j_common_ptr info, int level)
{
    if (level < 0 && info->err->msg_code == JWRN_JPEG_EOF) LeaveByJump(info);
}

void InstallErrors(jpeg_error_mgr*& slot, ErrorManager& errors)
{
    slot = jpeg_std_error(&errors.base);
    errors.base.error_exit = LeaveByJump;
    errors.base.emit_message = StopAtEarlyEnd;
    errors.base.output_message = [](j_common_ptr) {};
}

struct ReadState
{
    jpeg_decompress_struct info{};
    ErrorManager errors{};
    PixelTypes native = Undefined;

    ReadState() { InstallErrors(info.err, errors); }
    ReadState(const ReadState&) = delete;
    ReadState& operator=(const ReadState&) = delete;
    ~ReadState() { jpeg_destroy_decompress(&info); }
};

int LibraryReadError(const ImageFile& file)
{
    return Status::Format(CannotRead, L"Cannot read from file \"%ls\", internal jpeglib error", file.Name());
}

int Start(ReadState& s, const ImageFile& file)
{
    if (setjmp(s.errors.jump)) return LibraryReadError(file);
    jpeg_create_decompress(&s.info);
    std::rewind(file.stream);
    jpeg_stdio_src(&s.info, file.stream);
    jpeg_read_header(&s.info, TRUE);
    static constexpr const wchar_t* spaces[] = {L"UNKNOWN", L"GRAYSCALE", L"RGB", L"YCbCr", L"CMYK", L"YCCK"};
    if (s.info.num_components == 1 && s.info.out_color_space == JCS_GRAYSCALE)
        s.native = Gray;
    else if (s.info.num_components == 3 && s.info.out_color_space == JCS_RGB)
        s.native = Rgb;
    else {
        const int space = s.info.jpeg_color_space;
        return Status::Format(UnsupportedFormat,
                              L"Unsupported JPEG image format, number of components is %d, color space is %d (%ls)",
                              s.info.num_components, space, space >= 0 && space < 6 ? spaces[space] : spaces[0]);
    }
    return NoError;
}

int ReadRows(ReadState& s, const ImageFile& file, const Image& dst, std::uint8_t* buffer)
{
    if (setjmp(s.errors.jump)) return LibraryReadError(file);
    jpeg_start_decompress(&s.info);
    for (int y = 0; y < dst.Height; y++) {
        const bool direct = s.native == Gray && dst.Type == Gray;
        std::uint8_t* row = direct ? dst.Row(y) : buffer;
        if (jpeg_read_scanlines(&s.info, &row, 1) != 1)
            return Status::Format(CannotRead, L"Cannot read image row from file \"%ls\"", file.Name());
        if (direct) continue;
        // A row arrives red first; the largest of the three does not mind the order.
        if (s.native == Gray)
            GrayToBgr(row, dst.Row(y), dst.Width);
        else if (dst.Type == Rgb)
            SwapRedBlue(row, dst.Row(y), dst.Width);
        else
            BgrToGray(row, dst.Row(y), dst.Width);
    }
    jpeg_finish_decompress(&s.info);
    return NoError;
}

struct WriteState
{
    jpeg_compress_struct info{};
    ErrorManager errors{};

    WriteState() { InstallErrors(info.err, errors); }
    WriteState(const WriteState&) = delete;
    WriteState& operator=(const WriteState&) = delete;
    ~WriteState() { jpeg_destroy_compress(&info); }
};

/// The format has no place for opacity: red, green, blue are left.
void DropAlpha(const std::uint8_t* src, std::uint8_t* dst, int width)
{
    for (int x = 0; x < width; x++, src += 4, dst += 3) {
        dst[0] = src[2];
        dst[1] = src[1];
        dst[2] = src[0];
    }
}

int WriteRows(WriteState& s, const ImageFile& file, const Image& src, std::uint8_t* buffer)
{
    if (setjmp(s.errors.jump))
        return Status::Format(CannotWrite, L"Cannot write to file \"%ls\", internal jpeglib error", file.Name());
    jpeg_create_compress(&s.info);
    jpeg_stdio_dest(&s.info, file.stream);
    s.info.image_width = static_cast<JDIMENSION>(int(src.Width));
    s.info.image_height = static_cast<JDIMENSION>(int(src.Height));
    s.info.input_components = src.Type == Gray ? 1 : 3;
    s.info.in_color_space = src.Type == Gray ? JCS_GRAYSCALE : JCS_RGB;
    jpeg_set_defaults(&s.info);
    s.info.density_unit = 1;
    s.info.X_density = s.info.Y_density = static_cast<UINT16>(dotsPerInch);
    jpeg_set_quality(&s.info, jpegQuality, TRUE);
    jpeg_start_compress(&s.info, TRUE);
    for (int y = 0; y < src.Height; y++) {
        std::uint8_t* row = src.Row(y);
        if (src.Type == Rgb)
            SwapRedBlue(row, buffer, src.Width);
        else if (src.Type == Rgba)
            DropAlpha(row, buffer, src.Width);
        if (src.Type != Gray) row = buffer;
        if (jpeg_write_scanlines(&s.info, &row, 1) != 1)
            return Status::Format(CannotWrite, L"Cannot write image row to file \"%ls\"", file.Name());
    }
    jpeg_finish_compress(&s.info);
    return NoError;
}

int ReadJpeg(ImageFile& file, Image& dst, PixelTypes wanted)
{
    ReadState state;
    if (const int code = Start(state, file)) return code;
    if (wanted == Undefined) wanted = state.native;
    if (wanted != Gray && wanted != Rgb) return RefuseConversion(state.native, wanted);
    if (const int code = Allocate(file, dst, state.info.image_width, state.info.image_height, wanted,
                                  8 * state.info.num_components, largestRatio))
        return code;
    std::vector<std::uint8_t> buffer((3 * static_cast<std::size_t>(state.info.image_width) + 3) & ~std::size_t{3});
    return ReadRows(state, file, dst, buffer.data());
}

int CheckJpegType(PixelTypes type)
{
    if (type == Gray || type == Rgb || type == Rgba) return NoError;
    return Status::Format(UnsupportedType,
                          L"The image type (%ls) is not supported for saving under the JPEG image format",
                          PixelTypeName(type));
}

int WriteJpeg(ImageFile& file, const Image& src)
{
    WriteState state;
    std::vector<std::uint8_t> buffer(static_cast<std::size_t>(RowBytes(src.Width, src.Type)));
    return WriteRows(state, file, src, buffer.data());
}

} // namespace

extern const Format jpeg;
const Format jpeg = {{L".jpg", L".jpeg"}, ReadJpeg, CheckJpegType, WriteJpeg};

} // namespace Tesk::files
