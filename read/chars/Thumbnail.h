// Resampling of windows to the size in which characters are compared.
#pragma once

#include <cstddef>
#include <cstdint>
#include <vector>

namespace Tesk {
class Image;
}

namespace Tesk::chars {

/// Larger samples are not trained: far beyond what a character may be, and as much as exact sums hold.
inline constexpr int largestSample = 65535;
/// Largest width and height of a thumbnail of the plain size; a wide sample may give a multiple of this.
inline constexpr int largestThumbnail = 256, widestThumbnail = 1024;

/// What gives the thumbnail of a window its size: that of the font, or with `variableWidth` a width in proportion to
/// the window's one.
struct ThumbnailSize
{
    int fontWidth = 16, fontHeight = 20;
    int charWidth = 32;
    bool variableWidth = false;

    int WidthOf(int windowWidth) const;
    int Height() const;
};

/// Resamples first the columns, then the rows of windows. A reduction takes the mean of what a sample covers, by exact
/// fractions; an enlargement interpolates linearly between the centres of neighbours. Divisions truncate. Uses keep
/// their memory for the next ones.
class Resampler
{
public:
    /// Gives the weights for windows and results of those sizes, all at least 1.
    void Prepare(int width, int height, int thumbnailWidth, int thumbnailHeight);

    /// The columns of a band of `count` pixels in width to the height of a thumbnail.
    void Columns(const std::uint8_t* src, std::ptrdiff_t pitch, int count);
    /// The rows of the window that begins at that column of the band, as a thumbnail of `pitch` bytes a row.
    void Rows(int column, std::uint8_t* dst, std::ptrdiff_t pitch) const;

private:
    /// Divides by a number below 2^16 what is less than 2^8 times as much, by a product.
    class Divider
    {
    public:
        Divider() = default;
        explicit Divider(std::uint32_t divisor);
        std::uint8_t operator()(std::uint32_t sum) const { return static_cast<std::uint8_t>(sum * factor_ >> shift); }

    private:
        // floor(2^40 / d) + 1 exceeds 2^40 / d by at most 1; times 2^8 d, that stays below 2^40 / d.
        static constexpr int shift = 40;
        std::uint64_t factor_ = 0;
    };
    /// The source samples that one result takes, and where their weights begin, which add up to the divisor.
    struct Tap
    {
        std::uint32_t first, count, weight;
    };
    struct Axis
    {
        int from = 0, to = 0;
        Divider divide;
        std::vector<Tap> taps;
        std::vector<std::uint32_t> weights;

        void Prepare(int from, int to);
    };

    Axis across_, down_;
    int bandWidth_ = 0;
    std::vector<std::uint8_t> band_;
    std::vector<std::uint32_t> sums_;
};

/// The window of a `Gray` image as a thumbnail of the size of `dst`, a `Gray` image.
void MakeThumbnail(const Image& src, Image& dst, Resampler& resampler);

} // namespace Tesk::chars
