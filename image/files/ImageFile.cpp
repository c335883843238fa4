// Reading and writing image files: the choice of format, and what all formats share.
#include "image/files/ImageFile.h"

#include "foundation/Entry.h"
#include "image/core/GrayDepth.h"

#include <cerrno>
#include <cstring>
#include <cwchar>
#include <cwctype>
#include <new>
#include <stdexcept>
#include <sys/stat.h>

namespace Tesk {

namespace files {

int Allocate(const ImageFile& file, Image& dst, std::int64_t width, std::int64_t height, PixelTypes type, int bits,
             std::int64_t ratio)
{
    constexpr std::int64_t alwaysAllowed = 1 << 20;
    const bool sizesFit = width > 0 && height > 0 && width <= MaxInt && height <= MaxInt;
    const int growth = Max(1, (8 * ElementSize(type) + bits - 1) / bits);
    const std::int64_t limit = file.size * ratio * growth + alwaysAllowed;
    if (sizesFit && WideRowBytes(width, type) <= limit / height) {
        if (dst.TrySet(static_cast<int>(width), static_cast<int>(height), type) == NoError) return NoError;
    }
    return RefuseAllocation();
}

int RefuseAllocation()
{
    return Status::Format(CannotAllocate, L"Cannot allocate the image Buffer");
}

int RefuseConversion(PixelTypes native, PixelTypes wanted)
{
    return Status::Format(IncompatibleType, L"Implicit type conversion from %ls to %ls is not supported (use Copy)",
                          PixelTypeName(native), PixelTypeName(wanted));
}

void SwapRedBlue(const std::uint8_t* src, std::uint8_t* dst, int width)
{
    for (int x = 0; x < width; x++, src += 3, dst += 3) {
        const std::uint8_t first = src[0];
        dst[0] = src[2];
        dst[1] = src[1];
        dst[2] = first;
    }
}

void ReverseBytesOfFour(const std::uint8_t* src, std::uint8_t* dst, int width)
{
    for (int x = 0; x < width; x++, src += 4, dst += 4) {
        const std::uint8_t pixel[4] = {src[3], src[2], src[1], src[0]};
        std::memcpy(dst, pixel, 4);
    }
}

void BgrToGray(const std::uint8_t* src, std::uint8_t* dst, int width)
{
    for (int x = 0; x < width; x++, src += 3)
        dst[x] = Max(src[0], Max(src[1], src[2]));
}

void BgraToGray(const std::uint8_t* src, std::uint8_t* dst, int width)
{
    for (int x = 0; x < width; x++, src += 4)
        dst[x] = static_cast<std::uint8_t>((src[0] + src[1] + src[2]) * 85 >> 8);
}

void GrayToBgr(const std::uint8_t* src, std::uint8_t* dst, int width)
{
    for (int x = 0; x < width; x++, dst += 3)
        dst[0] = dst[1] = dst[2] = src[x];
}

void BitsToGray(const std::uint8_t* src, std::uint8_t* dst, int width)
{
    for (int x = width - 1; x >= 0; x--)
        dst[x] = src[x >> 3] & 0x80 >> (x & 7) ? 255 : 0;
}

void Gray16ToGray(const std::uint16_t* src, std::uint8_t* dst, int width)
{
    const int shift = levels::GrayShift();
    for (int x = 0; x < width; x++)
        dst[x] = static_cast<std::uint8_t>(src[x] >> shift);
}

} // namespace files

namespace {

using namespace files;

bool EndsWith(const std::wstring& name, const wchar_t* ending)
{
    const std::size_t length = std::wcslen(ending);
    if (name.size() < length) return false;
    for (std::size_t i = 0; i < length; i++)
        if (static_cast<wchar_t>(std::towlower(static_cast<std::wint_t>(name[name.size() - length + i]))) != ending[i])
            return false;
    return true;
}

// A format is a row here and a source that defines it. The first one is written where the ending of a name tells none.
#define TESK_IMAGE_FORMATS(Row) Row(bmp) Row(jpeg) Row(png) Row(tiff) Row(pbm) Row(pgm) Row(ppm)

} // namespace

namespace files {
#define TESK_DECLARE(name) extern const Format name;
TESK_IMAGE_FORMATS(TESK_DECLARE)
#undef TESK_DECLARE
} // namespace files

namespace {

#define TESK_LIST(name) &files::name,
constexpr const Format* formats[] = {TESK_IMAGE_FORMATS(TESK_LIST)};
#undef TESK_LIST

const Format* FormatOf(const std::wstring& name)
{
    for (const Format* format : formats)
        for (const wchar_t* ending : format->endings)
            if (ending && EndsWith(name, ending)) return format;
    return nullptr;
}

int Open(ImageFile& file, const char* mode)
{
    errno = 0;
    file.stream = std::fopen(file.path.c_str(), mode);
    struct stat about = {};
    if (file.stream && fstat(fileno(file.stream), &about) == 0) {
        if (!S_ISDIR(about.st_mode)) {
            file.size = about.st_size;
            return NoError;
        }
        std::fclose(file.stream);
        file.stream = nullptr;
        errno = EISDIR;
    }
    return Status::Format(CannotOpen, L"Cannot open file \"%ls\" (%ls)", file.Name(),
                          Widen(std::strerror(errno)).c_str());
}

/// Runs a reader or a writer, and closes the stream where it did not come to that itself.
template <typename F>
int WithFile(ImageFile& file, F run)
{
    int code = NoError;
    try {
        code = run();
    } catch (const std::bad_alloc&) {
        code = RefuseAllocation();
    } catch (const std::length_error&) {
        code = RefuseAllocation();
    }
    if (file.stream) std::fclose(file.stream);
    file.stream = nullptr;
    return code;
}

int ReadFile(ImageFile& file, Image& dst, PixelTypes wanted)
{
    const Format* format = FormatOf(file.name);
    if (format && format->opensItself) {
        struct stat about = {};
        if (stat(file.path.c_str(), &about) == 0) file.size = about.st_size;
        return format->read(file, dst, wanted);
    }
    if (const int code = Open(file, "rb")) return code;
    return format ? format->read(file, dst, wanted)
                  : Status::Format(UnsupportedFormat, L"Unsupported file extension \"%ls\"", file.Name());
}

int WriteFile(ImageFile& file, const Image& src)
{
    const Format* format = FormatOf(file.name);
    if (!format) format = formats[0];
    if (const int code = format->check(src.Type)) return code;
    if (format->opensItself) return format->write(file, src);
    if (const int code = Open(file, "wb")) return code;
    if (const int code = format->write(file, src)) return code;
    // What the buffer held may fail only here.
    const bool closed = std::fclose(file.stream) == 0;
    file.stream = nullptr;
    return closed ? NoError : Status::Format(CannotWrite, L"Cannot write to file \"%ls\"", file.Name());
}

} // namespace

void Image::Read(const Entry& entry, files::ImageFile& file, PixelTypes type)
{
    if (type != Undefined && type != Gray && type != Gray16 && type != Rgb && type != Gray1)
        entry.Refuse(UnsupportedType, L"The image type (%ls) is not supported for this operation", PixelTypeName(type));
    Image read;
    if (entry.Refuses(WithFile(file, [&] { return ReadFile(file, read, type); }))) return;
    Status::Error().Code = NoError;
    ShallowCopy(read, true);
    OwnsBuffer = true;
}

void Image::Write(const Entry& entry, files::ImageFile& file) const
{
    if (entry.Refuses(CheckImage(*this))) return;
    entry.Refuses(WithFile(file, [&] { return WriteFile(file, *this); }));
}

void Image::Read(const char* PathName, PixelTypes Type)
{
    const Entry entry("Tesk::Image::Read");
    ImageFile file{nullptr, PathName ? PathName : "", WidenPath(PathName)};
    Read(entry, file, Type);
}

void Image::Read(const wchar_t* PathName, PixelTypes Type)
{
    const Entry entry("Tesk::Image::Read");
    ImageFile file{nullptr, Narrow(PathName), PathName ? PathName : L""};
    Read(entry, file, Type);
}

void Image::Write(const char* PathName) const
{
    const Entry entry("Tesk::Image::Write");
    ImageFile file{nullptr, PathName ? PathName : "", WidenPath(PathName)};
    Write(entry, file);
}

void Image::Write(const wchar_t* PathName) const
{
    const Entry entry("Tesk::Image::Write");
    ImageFile file{nullptr, Narrow(PathName), PathName ? PathName : L""};
    Write(entry, file);
}

} // namespace Tesk
