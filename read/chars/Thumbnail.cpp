// The separable resampling of windows to thumbnails.
#include "read/chars/Thumbnail.h"

#include "image/Image.h"

#include <algorithm>
#include <initializer_list>

namespace Tesk::chars {

int ThumbnailSize::WidthOf(int windowWidth) const
{
    if (!variableWidth) return std::clamp(fontWidth, 1, largestThumbnail);
    const std::int64_t whole = std::max(charWidth, 1);
    const std::int64_t width = (std::int64_t{fontWidth} * windowWidth + whole / 2) / whole;
    return static_cast<int>(std::clamp<std::int64_t>(width, 1, widestThumbnail));
}

int ThumbnailSize::Height() const
{
    return std::clamp(fontHeight, 1, largestThumbnail);
}

Resampler::Divider::Divider(std::uint32_t divisor) : factor_((std::uint64_t{1} << shift) / divisor + 1) {}

void Resampler::Axis::Prepare(int fromLength, int toLength)
{
    if (from == fromLength && to == toLength) return;
    from = std::clamp(fromLength, 1, largestSample);
    to = toLength;
    taps.clear();
    weights.clear();
    const std::int64_t n = from, m = to;
    const auto add = [&](std::int64_t first, std::initializer_list<std::int64_t> parts) {
        taps.push_back({static_cast<std::uint32_t>(first), static_cast<std::uint32_t>(parts.size()),
                        static_cast<std::uint32_t>(weights.size())});
        for (const std::int64_t part : parts)
            weights.push_back(static_cast<std::uint32_t>(part));
    };
    if (n > m) {
        divide = Divider(static_cast<std::uint32_t>(n));
        for (std::int64_t j = 0; j < m; j++) {
            // In m-ths of a source sample, of which the result covers n.
            add(j * n / m, {});
            for (std::int64_t i = j * n / m; i * m < (j + 1) * n; i++, taps.back().count++)
                weights.push_back(
                    static_cast<std::uint32_t>(std::min((i + 1) * m, (j + 1) * n) - std::max(i * m, j * n)));
        }
        return;
    }
    divide = Divider(static_cast<std::uint32_t>(2 * m));
    for (std::int64_t j = 0; j < m; j++) {
        // In halves of an m-th of a source sample, from the centre of the first one.
        const std::int64_t place = std::max<std::int64_t>((2 * j + 1) * n - m, 0);
        const std::int64_t first = place / (2 * m), second = place % (2 * m);
        if (second == 0 || first + 1 >= n)
            add(std::min(first, n - 1), {2 * m});
        else
            add(first, {2 * m - second, second});
    }
}

void Resampler::Prepare(int width, int height, int thumbnailWidth, int thumbnailHeight)
{
    across_.Prepare(width, thumbnailWidth);
    down_.Prepare(height, thumbnailHeight);
}

void Resampler::Columns(const std::uint8_t* src, std::ptrdiff_t pitch, int count)
{
    const auto n = static_cast<std::size_t>(count);
    bandWidth_ = count;
    band_.resize(n * down_.taps.size());
    sums_.resize(n);
    std::uint8_t* d = band_.data();
    for (const Tap& tap : down_.taps) {
        std::fill(sums_.begin(), sums_.end(), 0);
        for (std::uint32_t k = 0; k < tap.count; k++) {
            const std::uint8_t* s = src + pitch * static_cast<std::ptrdiff_t>(tap.first + k);
            const std::uint32_t weight = down_.weights[tap.weight + k];
            for (std::size_t x = 0; x < n; x++)
                sums_[x] += weight * s[x];
        }
        for (std::size_t x = 0; x < n; x++)
            d[x] = down_.divide(sums_[x]);
        d += n;
    }
}

void Resampler::Rows(int column, std::uint8_t* dst, std::ptrdiff_t pitch) const
{
    const std::uint8_t* s = band_.data() + column;
    for (std::size_t y = 0; y < down_.taps.size(); y++) {
        std::uint8_t* d = dst;
        for (const Tap& tap : across_.taps) {
            const std::uint8_t* p = s + tap.first;
            const std::uint32_t* weight = across_.weights.data() + tap.weight;
            std::uint32_t sum = 0;
            for (std::uint32_t k = 0; k < tap.count; k++)
                sum += weight[k] * p[k];
            *d++ = across_.divide(sum);
        }
        s += bandWidth_;
        dst += pitch;
    }
}

void MakeThumbnail(const Image& src, Image& dst, Resampler& resampler)
{
    resampler.Prepare(src.Width, src.Height, dst.Width, dst.Height);
    resampler.Columns(src.Row(0), src.Pitch, src.Width);
    resampler.Rows(0, dst.Row(0), dst.Pitch);
}

} // namespace Tesk::chars
