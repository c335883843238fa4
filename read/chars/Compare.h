// Comparison of thumbnails: the correlation of their pixels, whatever their brightness and gain.
#pragma once

#include "read/chars/CompareKernels.h"

#include <cmath>
#include <cstddef>
#include <cstdint>
#include <vector>

namespace Tesk {
class Image;
}

namespace Tesk::chars {

/// Thumbnails whose heights differ by more than this are not compared.
inline constexpr int highestDifference = 4;

/// What comparison needs to know of the pixels of one side.
struct Moments
{
    std::int64_t sum = 0;
    std::int64_t variance = 0; ///< N * (sum of squares) - sum * sum
    double inverseNorm = 0;    ///< 1 / sqrt(variance), 0 for flat pixels

    Moments() = default;
    Moments(std::int64_t count, std::int64_t sum, std::int64_t squares);
};

/// A thumbnail in 16-bit rows padded by zeros, with its moments.
class Packed
{
public:
    /// Takes `height` rows of bytes, `pitch` bytes from one to the next.
    void Take(const std::uint8_t* pixels, std::ptrdiff_t pitch, int width, int height);
    void Take(const Image& thumbnail);

    int Width() const { return width_; }
    int Height() const { return height_; }
    std::size_t Stride() const { return stride_; }
    /// A row; as much as a padded row may be read from any of its pixels on.
    const std::int16_t* Row(int y) const { return pixels_.data() + static_cast<std::size_t>(y) * stride_; }
    const Moments& All() const { return all_; }
    /// Of the first rows of some columns.
    Moments Part(int first, int width, int height) const;

private:
    int width_ = 0, height_ = 0;
    std::size_t stride_ = 0;
    std::vector<std::int16_t> pixels_;
    Moments all_;
};

struct Match
{
    double score = -1, contrast = 0;
};

/// How one character of the font compares with the thumbnails of a probe.
class Comparison
{
public:
    /// Sizes that differ too much are not compared: all scores are -1.
    Comparison() = default;
    Comparison(std::int64_t count, const Moments& font, const Moments* images, const std::int64_t* products)
        : count_(count), font_(font), images_(images), products_(products)
    {}

    bool Compared() const { return images_ != nullptr; }
    /// A flat thumbnail of the image has no score.
    bool HasScore(std::size_t k) const { return images_[k].variance > 0; }
    /// The score of thumbnail k but for rounding, by products alone; 0 for a flat one.
    double Estimate(std::size_t k) const
    {
        return static_cast<double>(Covariance(k)) * font_.inverseNorm * images_[k].inverseNorm;
    }
    Match Exact(std::size_t k) const;

private:
    std::int64_t Covariance(std::size_t k) const { return count_ * products_[k] - font_.sum * images_[k].sum; }

    std::int64_t count_ = 0;
    Moments font_;
    const Moments* images_ = nullptr;
    const std::int64_t* products_ = nullptr;
};

/// Thumbnails of one size taken from an image, to be compared with characters of the font. Uses keep their memory for
/// the next ones.
class Probe
{
public:
    void Begin(int width, int height, std::size_t count);
    void Put(std::size_t k, const std::uint8_t* pixels, std::ptrdiff_t pitch);

    int Width() const { return width_; }
    std::size_t Count() const { return count_; }
    /// The result holds until the next comparison. The middle columns that both have are compared, from the top row on.
    Comparison Against(const Packed& font);

private:
    /// The middle of the thumbnails for characters that are smaller.
    struct Crop
    {
        int width = 0, height = 0;
        std::size_t stride = 0;
        std::vector<std::int16_t> pixels;
        std::vector<Moments> moments;

        void Size(int newWidth, int newHeight, std::size_t count);
        void Put(std::size_t k, const std::uint8_t* src, std::ptrdiff_t pitch);
        void Take(std::size_t k, const Crop& whole);
        void Sum(std::size_t k);
    };
    const Crop& Cropped(int width, int height);

    int width_ = 0, height_ = 0;
    std::size_t count_ = 0, crops_ = 0;
    std::vector<Crop> kept_; ///< the first is whole; `crops_` of them are those of these thumbnails
    std::vector<std::int64_t> products_;
};

/// The best score found so far. The first of equal ones stays: by positions, then by characters of the font.
struct BestMatch
{
    int fontChar = -1;
    double score = -1, contrast = -1;
    std::size_t position = 0;

    /// Compares a character of the font with the thumbnails of a probe, which stand at positions from `first` on; of
    /// the `opposite` polarity it scores by the reverse image. With `variableWidth`, one that is over twice or less
    /// than half as wide does not score. Characters must come in the order of their indices.
    void Try(const Packed& font, bool opposite, bool variableWidth, int index, std::size_t first, Probe& probe);
};

/// Compares one with one.
Match Compare(const Packed& font, Probe& image);

} // namespace Tesk::chars
