// The surface itself, its font, and bitmaps on it.
#include "foundation/drawing/AreaDivider.h"
#include "foundation/cairo/CairoState.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <optional>
#include <string>
#include <vector>

namespace Tesk {

namespace {

constexpr std::uint32_t opaque = 0xff000000u;

/// The columns of a bitmap that are seen, row by row: its own bytes, or words of alpha, red, green, blue.
class SeenRows
{
public:
    SeenRows(const TargetBitmap& bitmap, const BitmapRows* rows, int first, int count)
        : bitmap_(bitmap), rows_(rows), begin_(bitmap.BitCount == 1 ? first & ~7 : first), skipped_(first - begin_),
          count_(count)
    {
        const int colors = bitmap.BitCount == 1 ? 2 : bitmap.BitCount == 8 ? 256 : 0;
        grays_ = colors == 256;
        for (int i = 0; i < colors; i++) {
            const RgbPixel c = bitmap.Palette[i];
            palette_[static_cast<std::size_t>(i)] =
                opaque | static_cast<std::uint32_t>(c.Red << 16 | c.Green << 8 | c.Blue);
            grays_ = grays_ && c == RgbPixel(i, i, i);
        }
        if (rows) made_.resize((static_cast<std::size_t>(skipped_ + count) * bitmap.BitCount + 7) / 8);
    }

    const TargetBitmap& Bitmap() const { return bitmap_; }
    int Count() const { return count_; }
    /// Bytes are the gray values themselves.
    bool Grays() const { return grays_; }

    /// For pixels of whole bytes the first is the first that is seen.
    const std::uint8_t* Bytes(int y)
    {
        if (rows_) {
            rows_->Get(y, begin_, begin_ + skipped_ + count_, made_.data());
            return made_.data();
        }
        return bitmap_.Pixels + static_cast<std::ptrdiff_t>(bitmap_.Pitch) * y +
               std::ptrdiff_t{begin_} * bitmap_.BitCount / 8;
    }

    void Words(int y, std::uint32_t* dst)
    {
        const std::uint8_t* row = Bytes(y);
        switch (bitmap_.BitCount) {
        case 1:
            for (int x = skipped_; x < skipped_ + count_; x++)
                *dst++ = palette_[row[x >> 3] >> (7 - (x & 7)) & 1];
            break;
        case 8:
            for (int x = 0; x < count_; x++)
                *dst++ = palette_[row[x]];
            break;
        case 24:
            for (int x = 0; x < count_; x++)
                *dst++ = opaque | static_cast<std::uint32_t>(row[3 * x + 2] << 16 | row[3 * x + 1] << 8 | row[3 * x]);
            break;
        default:
            for (int x = 0; x < count_; x++)
                *dst++ = static_cast<std::uint32_t>(row[4 * x + 2] << 16 | row[4 * x + 1] << 8 | row[4 * x]) |
                         (bitmap_.Blend ? static_cast<std::uint32_t>(row[4 * x + 3]) << 24 : opaque);
        }
    }

private:
    const TargetBitmap& bitmap_;
    const BitmapRows* rows_;
    int begin_, skipped_, count_;
    bool grays_ = false;
    std::array<std::uint32_t, 256> palette_{};
    std::vector<std::uint8_t> made_;
};

/// A premultiplied pixel over an opaque one.
std::uint32_t Blended(std::uint32_t src, std::uint32_t dst)
{
    const std::uint32_t rest = 255 - (src >> 24);
    std::uint32_t result = opaque;
    for (int shift = 0; shift < 24; shift += 8) {
        const std::uint32_t sum = (src >> shift & 255) + (dst >> shift & 255) * rest / 255;
        result |= Min<std::uint32_t>(sum, 255) << shift;
    }
    return result;
}

/// Sums of the rows of a bitmap that fall on one row of a smaller picture, channel by channel: colours and gray values
/// are added up as they stand, bits and what has a palette of colours as words.
class RowSums
{
public:
    explicit RowSums(SeenRows& rows)
        : rows_(rows), raw_(rows.Bitmap().BitCount > 8 || rows.Grays()),
          channels_(raw_ ? static_cast<std::size_t>(rows.Bitmap().BitCount) / 8 : 4),
          row_(raw_ ? 0 : static_cast<std::size_t>(rows.Count())),
          sums_(channels_ * static_cast<std::size_t>(rows.Count()))
    {}

    /// Takes the rows from `top` up to but not including `bottom`.
    void Take(int top, int bottom)
    {
        std::fill(sums_.begin(), sums_.end(), 0u);
        for (int y = top; y < bottom; y++) {
            const std::uint8_t* bytes = nullptr;
            if (raw_) {
                bytes = rows_.Bytes(y);
            } else {
                rows_.Words(y, row_.data());
                bytes = reinterpret_cast<const std::uint8_t*>(row_.data());
            }
            for (std::size_t i = 0; i < sums_.size(); i++)
                sums_[i] += bytes[i];
        }
    }

    /// The mean of the columns from `from` up to but not including `to`, as a word.
    std::uint32_t Mean(int from, int to, const AreaDivider& divide) const
    {
        if (channels_ == 1) return opaque | Means<1>(from, to, divide) * 0x010101u;
        if (channels_ == 3) return opaque | Means<3>(from, to, divide);
        return Means<4>(from, to, divide) | (rows_.Bitmap().Blend ? 0 : opaque);
    }

private:
    template <std::size_t channels>
    std::uint32_t Means(int from, int to, const AreaDivider& divide) const
    {
        std::uint64_t sums[channels] = {};
        const std::uint32_t* end = sums_.data() + channels * static_cast<std::size_t>(to);
        for (const std::uint32_t* p = sums_.data() + channels * static_cast<std::size_t>(from); p < end; p += channels)
            for (std::size_t c = 0; c < channels; c++)
                sums[c] += p[c];
        std::uint32_t word = 0;
        for (std::size_t c = 0; c < channels; c++)
            word |= static_cast<std::uint32_t>(divide(sums[c])) << 8 * c;
        return word;
    }

    SeenRows& rows_;
    bool raw_;
    std::size_t channels_;
    std::vector<std::uint32_t> row_, sums_;
};

/// The part of a stretched extent that lies on the surface.
struct Visible
{
    int from, to;

    Visible(std::int64_t position, int extent, int size)
        : from(static_cast<int>(Clamp<std::int64_t>(-position, 0, extent))),
          to(static_cast<int>(Clamp<std::int64_t>(size - position, 0, extent)))
    {}
};

/// The first source pixel that falls on a pixel of the stretched picture.
int SourceOf(int i, int extent, int sources)
{
    return static_cast<int>(std::int64_t{i} * sources / extent);
}

} // namespace

void CairoTarget::State::Make(int newWidth, int newHeight)
{
    context.reset();
    surface.reset(cairo_image_surface_create(CAIRO_FORMAT_ARGB32, newWidth, newHeight));
    pixels = cairo_image_surface_get_data(surface.get());
    const bool made = cairo_surface_status(surface.get()) == CAIRO_STATUS_SUCCESS && pixels;
    width = made ? newWidth : 0;
    height = made ? newHeight : 0;
    stride = made ? cairo_image_surface_get_stride(surface.get()) : 0;
    if (!made) {
        // A size that cannot be had leaves a surface on which all drawing is ignored, and text can still be measured.
        surface.reset(cairo_image_surface_create(CAIRO_FORMAT_ARGB32, 0, 0));
        pixels = nullptr;
    }
    Renew();
    for (int y = 0; y < height; y++)
        std::fill(Row(y), Row(y) + width, opaque);
    cairo_surface_mark_dirty(surface.get());
}

void CairoTarget::State::Renew()
{
    context.reset(cairo_create(surface.get()));
    cairo_set_line_join(context.get(), CAIRO_LINE_JOIN_ROUND);
    cairo_set_line_cap(context.get(), CAIRO_LINE_CAP_ROUND);
    fontChosen = false;
}

void CairoTarget::State::RenewIfBroken()
{
    if (cairo_status(context.get()) != CAIRO_STATUS_SUCCESS) Renew();
}

void CairoTarget::State::Color(RgbPixel color) const
{
    cairo_set_source_rgb(context.get(), color.Red / 255.0, color.Green / 255.0, color.Blue / 255.0);
}

void CairoTarget::State::Path(const std::vector<Position>& points, bool closed, double farthest) const
{
    cairo_new_path(context.get());
    for (const Position& point : points)
        cairo_line_to(context.get(), Clamp(point.X + 0.5, -farthest, farthest),
                      Clamp(point.Y + 0.5, -farthest, farthest));
    if (closed) cairo_close_path(context.get());
}

void CairoTarget::State::Font(const std::string& name, int size)
{
    fontName = name;
    fontSize = Clamp(size, 1, 1000);
    fontChosen = false;
}

void CairoTarget::State::ChooseFont()
{
    constexpr double trialSize = 64;
    if (fontChosen) return;
    fontChosen = true;
    const std::string& name = fontName;
    cairo_t* c = context.get();
    // "System" names whatever the desktop has.
    cairo_select_font_face(c, name.empty() || name == "System" ? "sans" : name.c_str(), CAIRO_FONT_SLANT_NORMAL,
                           CAIRO_FONT_WEIGHT_NORMAL);
    cairo_set_font_size(c, trialSize);
    cairo_font_extents_t extents;
    cairo_font_extents(c, &extents);
    // The size asked for is the height of a line, not that of the letters' square.
    const double lineHeight = extents.ascent + extents.descent;
    const double height = lineHeight > 0 ? trialSize * fontSize / lineHeight : fontSize;
    // And so is the mean width of its characters, as far as the letters keep their looks.
    constexpr const char* characters = "abcdefghijklmnopqrstuvwxyzABCDEFGHIJKLMNOPQRSTUVWXYZ0123456789";
    constexpr double wantedWidth = 7.0 / 16, narrowest = 0.8, widest = 1.25;
    cairo_text_extents_t letters;
    cairo_text_extents(c, characters, &letters);
    const double width = letters.x_advance / static_cast<double>(std::strlen(characters)) * height / trialSize;
    const double stretch = width > 0 ? Clamp(wantedWidth * fontSize / width, narrowest, widest) : 1;
    cairo_matrix_t matrix;
    cairo_matrix_init_scale(&matrix, height * stretch, height);
    cairo_set_font_matrix(c, &matrix);
}

int CairoTarget::State::FontAscent() const
{
    cairo_font_extents_t extents;
    cairo_font_extents(context.get(), &extents);
    return static_cast<int>(std::ceil(extents.ascent));
}

int CairoTarget::State::FontHeight() const
{
    cairo_font_extents_t extents;
    cairo_font_extents(context.get(), &extents);
    return static_cast<int>(std::ceil(extents.ascent) + std::ceil(extents.descent));
}

void CairoTarget::Blit(const TargetBitmap& Bitmap, int Left, int Top, int Width, int Height)
{
    Show(Bitmap, nullptr, Left, Top, Width, Height);
}

void CairoTarget::BlitRows(const TargetBitmap& Bitmap, const BitmapRows& Rows, int Left, int Top, int Width, int Height)
{
    Show(Bitmap, &Rows, Left, Top, Width, Height);
}

void CairoTarget::Show(const TargetBitmap& bitmap, const BitmapRows* rows, int boxLeft, int boxTop, int boxWidth,
                       int boxHeight)
{
    State& s = *state_;
    if (!s.pixels || bitmap.Width < 1 || bitmap.Height < 1 || boxWidth < 1 || boxHeight < 1) return;
    const std::int64_t left = std::int64_t{boxLeft} + s.origin.X, top = std::int64_t{boxTop} + s.origin.Y;
    const Visible across(left, boxWidth, s.width), down(top, boxHeight, s.height);
    if (across.from >= across.to || down.from >= down.to) return;
    Flush();
    const int count = across.to - across.from;
    // The source columns that are seen, and where each shown pixel begins among them.
    const int first = SourceOf(across.from, boxWidth, bitmap.Width);
    std::vector<int> begins;
    for (int x = across.from; x <= across.to; x++)
        begins.push_back(Min(SourceOf(x, boxWidth, bitmap.Width), bitmap.Width) - first);
    const int sources = Min(Max(begins.back(), begins[begins.size() - 2] + 1), bitmap.Width - first);
    const bool reduced = boxWidth < bitmap.Width || boxHeight < bitmap.Height;
    std::vector<std::uint32_t> words(static_cast<std::size_t>(sources)), shown(static_cast<std::size_t>(count));
    SeenRows seen(bitmap, rows, first, sources);
    std::optional<RowSums> sums;
    if (reduced) sums.emplace(seen);
    int shownFrom = -1;
    for (int y = down.from; y < down.to; y++) {
        const int sourceTop = SourceOf(y, boxHeight, bitmap.Height);
        const int sourceBottom = Max(SourceOf(y + 1, boxHeight, bitmap.Height), sourceTop + 1);
        if (!reduced && sourceTop != shownFrom) {
            seen.Words(sourceTop, words.data());
            for (std::size_t x = 0; x < shown.size(); x++)
                shown[x] = words[static_cast<std::size_t>(begins[x])];
            shownFrom = sourceTop;
        } else if (reduced) {
            sums->Take(sourceTop, sourceBottom);
            // Columns come in two widths.
            const auto height = static_cast<std::uint64_t>(sourceBottom - sourceTop);
            const int narrow = Max(bitmap.Width / boxWidth, 1);
            const AreaDivider mean[] = {AreaDivider(height * static_cast<std::uint64_t>(narrow)),
                                        AreaDivider(height * static_cast<std::uint64_t>(narrow + 1))};
            for (std::size_t x = 0; x < shown.size(); x++) {
                const int from = begins[x], to = Max(begins[x + 1], from + 1);
                shown[x] = sums->Mean(from, to, mean[to - from > narrow]);
            }
        }
        std::uint32_t* dst = s.Row(static_cast<int>(top + y)) + (left + across.from);
        if (!bitmap.Blend)
            std::copy(shown.begin(), shown.end(), dst);
        else
            for (std::size_t x = 0; x < shown.size(); x++)
                dst[x] = Blended(shown[x], dst[x]);
    }
    cairo_surface_mark_dirty(s.surface.get());
}

} // namespace Tesk
