// The correlation of thumbnails, of the part that both have.
#include "read/chars/Compare.h"

#include "image/Image.h"

#include <algorithm>
#include <cstdlib>

namespace Tesk::chars {

namespace {

Moments MomentsOf(const std::int16_t* pixels, std::size_t stride, int width, int height)
{
    std::int64_t sum = 0, squares = 0;
    for (int y = 0; y < height; y++, pixels += stride) {
        std::int32_t rowSum = 0, rowSquares = 0;
        for (int x = 0; x < width; x++) {
            rowSum += pixels[x];
            rowSquares += pixels[x] * pixels[x];
        }
        sum += rowSum;
        squares += rowSquares;
    }
    return Moments(std::int64_t{width} * height, sum, squares);
}

} // namespace

Moments::Moments(std::int64_t count, std::int64_t sumOfAll, std::int64_t squares)
    : sum(sumOfAll), variance(count * squares - sum * sum),
      inverseNorm(variance > 0 ? 1 / std::sqrt(static_cast<double>(variance)) : 0)
{}

void Packed::Take(const std::uint8_t* pixels, std::ptrdiff_t pitch, int width, int height)
{
    width_ = width;
    height_ = height;
    stride_ = kernels::PaddedWidth(width);
    pixels_.assign(stride_ * static_cast<std::size_t>(height) + kernels::thumbnailStep, 0);
    for (int y = 0; y < height; y++, pixels += pitch)
        std::copy(pixels, pixels + width, pixels_.data() + static_cast<std::size_t>(y) * stride_);
    all_ = Part(0, width, height);
}

void Packed::Take(const Image& thumbnail)
{
    Take(thumbnail.Row(0), thumbnail.Pitch, thumbnail.Width, thumbnail.Height);
}

Moments Packed::Part(int first, int width, int height) const
{
    return MomentsOf(Row(0) + first, stride_, width, height);
}

Match Comparison::Exact(std::size_t k) const
{
    if (!Compared() || !HasScore(k)) return {};
    const auto covariance = static_cast<double>(Covariance(k));
    const auto varianceI = static_cast<double>(images_[k].variance);
    // The root of a product of equal numbers is exact, so that a perfect fit scores 1 and not nearly so.
    const double norm = std::sqrt(static_cast<double>(font_.variance) * varianceI);
    return {norm > 0 ? std::clamp(covariance / norm, -1.0, 1.0) : 0, covariance / varianceI};
}

void Probe::Crop::Size(int newWidth, int newHeight, std::size_t count)
{
    width = newWidth;
    height = newHeight;
    stride = kernels::PaddedWidth(width);
    pixels.assign(stride * static_cast<std::size_t>(height) * count, 0);
    moments.resize(count);
}

void Probe::Crop::Sum(std::size_t k)
{
    moments[k] = MomentsOf(pixels.data() + k * stride * static_cast<std::size_t>(height), stride, width, height);
}

void Probe::Crop::Put(std::size_t k, const std::uint8_t* src, std::ptrdiff_t pitch)
{
    std::int16_t* d = pixels.data() + k * stride * static_cast<std::size_t>(height);
    for (int y = 0; y < height; y++, src += pitch, d += stride)
        std::copy(src, src + width, d);
    Sum(k);
}

void Probe::Crop::Take(std::size_t k, const Crop& whole)
{
    const std::int16_t* s = whole.pixels.data() + k * whole.stride * static_cast<std::size_t>(whole.height);
    s += (whole.width - width) / 2;
    std::int16_t* d = pixels.data() + k * stride * static_cast<std::size_t>(height);
    for (int y = 0; y < height; y++, s += whole.stride, d += stride)
        std::copy(s, s + width, d);
    Sum(k);
}

void Probe::Begin(int width, int height, std::size_t count)
{
    width_ = width;
    height_ = height;
    count_ = count;
    crops_ = 1;
    if (kept_.empty()) kept_.resize(1);
    kept_[0].Size(width, height, count);
    if (products_.size() < count) products_.resize(count);
}

void Probe::Put(std::size_t k, const std::uint8_t* pixels, std::ptrdiff_t pitch)
{
    kept_[0].Put(k, pixels, pitch);
}

const Probe::Crop& Probe::Cropped(int width, int height)
{
    for (std::size_t i = 0; i < crops_; i++)
        if (kept_[i].width == width && kept_[i].height == height) return kept_[i];
    if (kept_.size() == crops_) kept_.resize(crops_ + 1);
    Crop& crop = kept_[crops_++];
    crop.Size(width, height, count_);
    for (std::size_t k = 0; k < count_; k++)
        crop.Take(k, kept_[0]);
    return crop;
}

Comparison Probe::Against(const Packed& font)
{
    if (std::abs(font.Height() - height_) > highestDifference) return {};
    const int width = std::min(font.Width(), width_), height = std::min(font.Height(), height_);
    const int first = (font.Width() - width) / 2;
    const bool whole = font.Width() == width && font.Height() == height;
    const Crop& crop = Cropped(width, height);
    const auto rows = static_cast<std::size_t>(height);
    kernels::SumProducts(font.Row(0) + first, font.Stride(),
                         {crop.pixels.data(), crop.stride, crop.stride * rows, count_, crop.stride, rows},
                         products_.data());
    return Comparison(std::int64_t{width} * height, whole ? font.All() : font.Part(first, width, height),
                      crop.moments.data(), products_.data());
}

void BestMatch::Try(const Packed& font, bool opposite, bool variableWidth, int index, std::size_t first, Probe& probe)
{
    const int width = probe.Width();
    if (variableWidth && (font.Width() > 2 * width || 2 * font.Width() < width)) return;
    const Comparison comparison = probe.Against(font);
    if (!comparison.Compared()) return;
    // Far above what rounding does to an estimate, and far below what tells characters apart.
    constexpr double margin = 1e-12;
    const double sign = opposite ? -1 : 1;
    for (std::size_t k = 0; k < probe.Count(); k++) {
        if (sign * comparison.Estimate(k) < score - margin || !comparison.HasScore(k)) continue;
        const Match match = comparison.Exact(k);
        const double signedScore = sign * match.score;
        // Among equal scores an earlier position goes first, whose characters may be compared later.
        const bool earlier = signedScore == score && fontChar >= 0 && first + k < position;
        if (signedScore > score || earlier) *this = {index, signedScore, sign * match.contrast, first + k};
    }
}

Match Compare(const Packed& font, Probe& image)
{
    return image.Against(font).Exact(0);
}

} // namespace Tesk::chars
