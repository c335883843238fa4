// Strips, tiles and derived colours of TIFF files, and how the picture stands in its rows.
#include "image/files/TiffRows.h"

#include "foundation/Entry.h"

#include <algorithm>
#include <cstring>

namespace Tesk::files {

namespace {

int Refuse(const char* reason)
{
    return Status::Format(UnsupportedFormat, L"Unsupported TIFF image format (%ls)", Widen(reason).c_str());
}

int RefuseBits(const TiffLayout& layout)
{
    return Status::Format(UnsupportedFormat, L"Unsupported number of bits per sample (%d)", int{layout.bits});
}

/// A strip or a tile is held in memory at once: what a header claims for it has the bounds of a whole picture.
bool MemoryAllows(const ImageFile& file, std::uint64_t bytes)
{
    constexpr std::int64_t alwaysAllowed = 1 << 20;
    return bytes <= static_cast<std::uint64_t>(file.size * largestTiffRatio + alwaysAllowed);
}

const char* SampleFormatName(int format)
{
    switch (format) {
    case SAMPLEFORMAT_INT:
        return "signed samples";
    case SAMPLEFORMAT_IEEEFP:
        return "floating-point samples";
    case SAMPLEFORMAT_COMPLEXINT:
    case SAMPLEFORMAT_COMPLEXIEEEFP:
        return "complex samples";
    default:
        return nullptr;
    }
}

} // namespace

int TiffLibraryError(const ImageFile& file)
{
    return Status::Format(CannotRead, L"Cannot read from file \"%ls\", internal TiffLib error", file.Name());
}

bool TiffLayout::Derived() const
{
    switch (photometric) {
    case PHOTOMETRIC_PALETTE:
    case PHOTOMETRIC_SEPARATED:
    case PHOTOMETRIC_YCBCR:
    case PHOTOMETRIC_CIELAB:
    case PHOTOMETRIC_ICCLAB:
    case PHOTOMETRIC_ITULAB:
    case PHOTOMETRIC_LOGL:
    case PHOTOMETRIC_LOGLUV:
        return true;
    default:
        return samples > 1 && bits == 16 && photometric == PHOTOMETRIC_RGB;
    }
}

int ReadTiffLayout(TIFF* tiff, TiffLayout& layout)
{
    if (!TIFFGetField(tiff, TIFFTAG_IMAGEWIDTH, &layout.width) ||
        !TIFFGetField(tiff, TIFFTAG_IMAGELENGTH, &layout.height) ||
        !TIFFGetField(tiff, TIFFTAG_PHOTOMETRIC, &layout.photometric))
        return Status::Format(CannotRead, L"Missing Image Width/Height or Photometric Interpretation tag");
    if (!TIFFGetField(tiff, TIFFTAG_SAMPLESPERPIXEL, &layout.samples)) layout.samples = 1;
    if (!TIFFGetField(tiff, TIFFTAG_BITSPERSAMPLE, &layout.bits)) layout.bits = 1;
    if (!TIFFGetField(tiff, TIFFTAG_PLANARCONFIG, &layout.planar)) layout.planar = 1;
    if (!TIFFGetField(tiff, TIFFTAG_SAMPLEFORMAT, &layout.sampleFormat)) layout.sampleFormat = SAMPLEFORMAT_UINT;
    if (!TIFFGetField(tiff, TIFFTAG_ORIENTATION, &layout.orientation) || layout.orientation < ORIENTATION_TOPLEFT ||
        layout.orientation > ORIENTATION_LEFTBOT)
        layout.orientation = ORIENTATION_TOPLEFT;
    if (layout.samples != 1 && layout.samples != 3 && layout.samples != 4)
        return Status::Format(UnsupportedFormat, L"Unsupported number of samples per pixel (%d)", int{layout.samples});
    if (layout.Derived())
        layout.native = layout.samples == 4 && layout.photometric == PHOTOMETRIC_RGB ? Rgba : Rgb;
    else if (layout.samples > 1 && layout.bits == 8)
        layout.native = layout.samples == 3 ? Rgb : Rgba;
    else if (layout.samples == 1)
        layout.native = layout.bits == 1 ? Gray1 : layout.bits == 8 ? Gray : layout.bits == 16 ? Gray16 : Undefined;
    if (layout.native == Undefined) return RefuseBits(layout);
    const char* format = SampleFormatName(layout.sampleFormat);
    return format ? Refuse(format) : NoError;
}

TiffRows::~TiffRows()
{
    if (begun_) TIFFRGBAImageEnd(&picture_);
}

int TiffRows::Open()
{
    const int height = static_cast<int>(layout_.height);
    tiled_ = TIFFIsTiled(tiff_) != 0;
    const std::uint64_t unit = tiled_ ? TIFFTileSize64(tiff_) : TIFFStripSize64(tiff_);
    if (layout_.Derived() || tiled_) {
        if (unit == 0) return TiffLibraryError(file_);
        if (!MemoryAllows(file_, unit)) return RefuseAllocation();
    }
    if (tiled_) {
        std::uint32_t rows = 0;
        if (!TIFFGetField(tiff_, TIFFTAG_TILELENGTH, &rows) || rows == 0) return TiffLibraryError(file_);
        bandRows_ = static_cast<int>(Min<std::uint32_t>(rows, layout_.height));
    }
    if (layout_.Derived()) return OpenDerived();
    const std::uint64_t samples = layout_.Planes() ? 1 : layout_.samples;
    const std::uint64_t need = (layout_.width * samples * layout_.bits + 7) / 8;
    if (tiled_) {
        pitch_ = static_cast<std::size_t>(need);
        band_.resize(pitch_ * static_cast<std::size_t>(Min(bandRows_, height)));
        tile_.resize(static_cast<std::size_t>(unit));
        return NoError;
    }
    // Where the library delivers shorter scan lines than the layout says, the file is not read over its rows.
    const std::uint64_t line = TIFFScanlineSize64(tiff_);
    if (line < need) return TiffLibraryError(file_);
    band_.resize(static_cast<std::size_t>(line));
    return NoError;
}

int TiffRows::OpenDerived()
{
    char reason[1024] = {};
    if (!TIFFRGBAImageOK(tiff_, reason) || !TIFFRGBAImageBegin(&picture_, tiff_, 1, reason)) return Refuse(reason);
    begun_ = true;
    if (!picture_.get || !picture_.put.any) return Refuse("no known way to colours");
    // The picture is turned afterwards, whatever way it was read.
    picture_.req_orientation = picture_.orientation;
    if (!tiled_) {
        std::uint32_t rows = 0;
        TIFFGetFieldDefaulted(tiff_, TIFFTAG_ROWSPERSTRIP, &rows);
        bandRows_ = static_cast<int>(Clamp<std::uint32_t>(rows, 1, layout_.height));
    }
    pitch_ = std::size_t{layout_.width} * (layout_.native == Rgba ? 4 : 3);
    if (!MemoryAllows(file_, std::uint64_t{layout_.width} * static_cast<std::uint64_t>(bandRows_) * 4))
        return RefuseAllocation();
    raster_.resize(std::size_t{layout_.width} * static_cast<std::size_t>(bandRows_));
    band_.resize(pitch_ * static_cast<std::size_t>(bandRows_));
    return NoError;
}

int TiffRows::Get(int y, int sample, const std::uint8_t*& row)
{
    if (!tiled_ && !begun_) return GetLine(y, sample, row);
    if (sample != sample_ || y < first_ || y >= first_ + count_) {
        if (const int code = begun_ ? FillDerived(y) : FillFromTiles(y, sample)) return code;
        first_ = y;
        sample_ = sample;
    }
    row = band_.data() + pitch_ * static_cast<std::size_t>(y - first_);
    return NoError;
}

int TiffRows::GetLine(int y, int sample, const std::uint8_t*& row)
{
    row = band_.data();
    return TIFFReadScanline(tiff_, band_.data(), static_cast<std::uint32_t>(y), static_cast<std::uint16_t>(sample)) < 0
               ? TiffLibraryError(file_)
               : NoError;
}

int TiffRows::FillFromTiles(int y, int sample)
{
    std::uint32_t width = 0;
    TIFFGetField(tiff_, TIFFTAG_TILEWIDTH, &width);
    const auto tilePitch = static_cast<std::size_t>(TIFFTileRowSize(tiff_));
    if (width == 0 || tilePitch == 0 || tilePitch * static_cast<std::size_t>(bandRows_) > tile_.size())
        return TiffLibraryError(file_);
    count_ = Min(bandRows_, static_cast<int>(layout_.height) - y);
    std::size_t at = 0;
    for (std::uint32_t x = 0; x < layout_.width && at < pitch_; x += Min(width, layout_.width - x), at += tilePitch) {
        if (TIFFReadTile(tiff_, tile_.data(), x, static_cast<std::uint32_t>(y), 0, static_cast<std::uint16_t>(sample)) <
            0)
            return TiffLibraryError(file_);
        for (std::size_t i = 0; i < static_cast<std::size_t>(count_); i++)
            std::memcpy(band_.data() + pitch_ * i + at, tile_.data() + tilePitch * i, Min(tilePitch, pitch_ - at));
    }
    return NoError;
}

int TiffRows::FillDerived(int y)
{
    count_ = Min(bandRows_, static_cast<int>(layout_.height) - y);
    picture_.row_offset = y;
    if (!TIFFRGBAImageGet(&picture_, raster_.data(), layout_.width, static_cast<std::uint32_t>(count_)))
        return TiffLibraryError(file_);
    const std::size_t pixels = std::size_t{layout_.width} * static_cast<std::size_t>(count_);
    std::uint8_t* dst = band_.data();
    for (std::size_t i = 0; i < pixels; i++) {
        const std::uint32_t pixel = raster_[i];
        // Opacity goes first, as in the files written here.
        if (layout_.native == Rgba) *dst++ = static_cast<std::uint8_t>(TIFFGetA(pixel));
        *dst++ = static_cast<std::uint8_t>(TIFFGetR(pixel));
        *dst++ = static_cast<std::uint8_t>(TIFFGetG(pixel));
        *dst++ = static_cast<std::uint8_t>(TIFFGetB(pixel));
    }
    return NoError;
}

void TurnUpright(const Image& stored, const TiffLayout& layout, Image& dst)
{
    const int o = layout.orientation, size = ElementSize(stored.Type);
    const bool rightToLeft = o == ORIENTATION_TOPRIGHT || o == ORIENTATION_BOTRIGHT || o == ORIENTATION_RIGHTTOP ||
                             o == ORIENTATION_RIGHTBOT;
    const bool bottomUp =
        o == ORIENTATION_BOTRIGHT || o == ORIENTATION_BOTLEFT || o == ORIENTATION_RIGHTBOT || o == ORIENTATION_LEFTBOT;
    const bool bits = stored.Type == Gray1;
    for (int y = 0; y < dst.Height; y++) {
        std::uint8_t* row = dst.Row(y);
        if (bits) std::fill_n(row, RowBytes(dst.Width, Gray1), std::uint8_t{0});
        for (int x = 0; x < dst.Width; x++) {
            const int across = rightToLeft ? dst.Width - 1 - x : x, down = bottomUp ? dst.Height - 1 - y : y;
            const int sx = layout.Transposed() ? down : across;
            const std::uint8_t* src = stored.Row(layout.Transposed() ? across : down);
            if (!bits)
                std::memcpy(row + size * x, src + size * sx, static_cast<std::size_t>(size));
            else if (src[sx >> 3] & 0x80 >> (sx & 7))
                row[x >> 3] |= static_cast<std::uint8_t>(0x80 >> (x & 7));
        }
    }
}

} // namespace Tesk::files
