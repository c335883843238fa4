// The colours of the bars of a Pharmacode, between its first and its last scan line.
#include "read/linear/ScanState.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <cstdint>
#include <cstdlib>

namespace Tesk::linear {

namespace {

/// Keeps the sides of bars of that many pixels or more out of their colour.
constexpr double widthToInset = 4;
/// A line through the corners goes on beside them by that many pixels, for the quiet zones.
constexpr double beside = 16;
constexpr double shortestLine = 2;

/// Where the bars of a line begin and end, in the order of the text.
struct BarEnds
{
    int count = 0;
    std::array<std::array<XY, 2>, mostColorBars> ends{};
};

/// Takes the bars of the read that has the text looked for.
class BarReader final : public LineReader
{
public:
    BarReader(const Raster& raster, const LinearSettings& settings, EdgeRule edges, std::string_view text,
              ScanScratch& scratch)
        : LineReader(raster, settings, scratch), text_(text)
    {
        rule = edges;
    }

    /// Reads a line anew. Whether it has the bars.
    bool Read(XY origin, XY direction, double least, double most, BarEnds& bars)
    {
        bars_ = &bars;
        bars.count = 0;
        ReadSegment(*this, origin, direction, least, most, shortestLine);
        return bars.count > 0;
    }

    void Take(const SymbolRead& read) override
    {
        if (bars_->count > 0 || read.symbology != CodePharmacode || read.Text() != text_) return;
        const int count = (read.elementCount + 1) / 2;
        if (count > mostColorBars) return;
        bars_->count = count;
        for (int i = 0; i < count; i++) {
            const auto left = static_cast<std::size_t>(read.firstEdge + 2 * i);
            const bool inOrder = read.start <= read.end;
            bars_->ends[static_cast<std::size_t>(inOrder ? i : count - 1 - i)] =
                Inset(Edges()[left], Edges()[left + 1]);
        }
    }

private:
    /// The places of the outer pixels of a bar. An edge is told one pixel behind where it is: by the pixel it leads to.
    std::array<XY, 2> Inset(int left, int right) const
    {
        double from = left >> 8, to = (right >> 8) - 1;
        if (to - from + 1 >= widthToInset) {
            from++;
            to--;
        }
        return {place.start + from * place.step, place.start + std::max(from, to) * place.step};
    }

    std::string_view text_;
    BarEnds* bars_ = nullptr;
};

/// The mean colour of the pixels in a quadrilateral, row by row; of its first corner where it holds none.
template <typename T>
RgbPixel MeanColor(const Image& src, const std::array<XY, 4>& corners)
{
    const auto [top, bottom] =
        std::minmax_element(corners.begin(), corners.end(), [](XY a, XY b) { return a.Y < b.Y; });
    std::int64_t red = 0, green = 0, blue = 0, count = 0;
    const auto add = [&](int x, int y) {
        const T pixel = src.Row<T>(y)[x];
        red += pixel.Red;
        green += pixel.Green;
        blue += pixel.Blue;
        count++;
    };
    const int first = std::max(0, static_cast<int>(std::ceil(top->Y - 1e-6)));
    const int last = std::min(src.Height - 1, static_cast<int>(std::floor(bottom->Y + 1e-6)));
    for (int y = first; y <= last; y++) {
        double left = MaxFloat, right = MinFloat;
        for (std::size_t i = 0; i < 4; i++) {
            const XY p = corners[i], q = corners[(i + 1) % 4];
            if ((p.Y < y - 1e-6 && q.Y < y - 1e-6) || (p.Y > y + 1e-6 && q.Y > y + 1e-6)) continue;
            const double t = std::abs(q.Y - p.Y) < 1e-9 ? 0 : std::clamp((y - p.Y) / (q.Y - p.Y), 0.0, 1.0);
            const double x = p.X + t * (q.X - p.X), other = std::abs(q.Y - p.Y) < 1e-9 ? q.X : x;
            left = std::min({left, x, other});
            right = std::max({right, x, other});
        }
        const int end = std::min(src.Width - 1, static_cast<int>(std::floor(right + 1e-6)));
        for (int x = std::max(0, static_cast<int>(std::ceil(left - 1e-6))); x <= end; x++)
            add(x, y);
    }
    if (count == 0)
        add(std::clamp(static_cast<int>(std::lround(corners[0].X)), 0, src.Width - 1),
            std::clamp(static_cast<int>(std::lround(corners[0].Y)), 0, src.Height - 1));
    const auto mean = [&](std::int64_t sum) { return static_cast<int>((sum + count / 2) / count); };
    return {mean(red), mean(green), mean(blue)};
}

} // namespace

bool FindColorBars(const Image& src, const LinearSettings& settings, EdgeRule rule, const ScanVote& symbol,
                   bool parallel, ScanScratch& scratch, ColorBars& bars)
{
    bars.count = 0;
    const Raster raster(src);
    LinearSettings alone;
    alone.detectEAN128 = alone.detectEAN13 = alone.detectEAN8 = alone.detectUPCA = alone.detectUPCE = false;
    alone.detect2of5 = alone.detect39 = alone.detect39Extended = alone.detect93 = alone.detectCodabar = false;
    alone.detectDatabar = alone.detectDatabarLimited = false;
    alone.detectPharmacode = true;
    alone.reverse = settings.reverse;
    alone.checkQuietZone = settings.checkQuietZone;
    alone.minimumBars = settings.minimumBars;
    BarReader line(raster, alone, rule, symbol.Text(), scratch);

    BarEnds first, last;
    if (parallel && symbol.directionIndex >= 0) {
        const double norm = std::hypot(symbol.direction.X, symbol.direction.Y);
        if (norm < 1) return false;
        const XY direction(symbol.direction.X / norm, symbol.direction.Y / norm);
        const auto read = [&](int offset, BarEnds& ends) {
            return line.Read(XY(-direction.Y * offset, direction.X * offset), direction, MinFloat, MaxFloat, ends);
        };
        if (!read(symbol.firstLine, first) || !read(symbol.lastLine, last)) return false;
    } else {
        const auto read = [&](Site from, Site to, BarEnds& ends) {
            const double length = std::hypot(to.X - from.X, to.Y - from.Y);
            if (length < 1) return false;
            // The line runs as the scan did, whatever the order of the text.
            const double along = symbol.direction.X * (to.X - from.X) + symbol.direction.Y * (to.Y - from.Y);
            if (along < 0) std::swap(from, to);
            const XY direction((to.X - from.X) / length, (to.Y - from.Y) / length);
            return line.Read(XY(from.X - src.X, from.Y - src.Y), direction, -beside, length + beside, ends);
        };
        const auto [a, b, c, d] = symbol.corners;
        if (!read(a, b, first) || !read(d, c, last)) return false;
    }
    if (first.count != last.count) return false;
    bars.count = first.count;
    for (std::size_t i = 0; i < static_cast<std::size_t>(bars.count); i++) {
        ColorBar& bar = bars.bars[i];
        bar.corners = {first.ends[i][0], first.ends[i][1], last.ends[i][1], last.ends[i][0]};
        bar.color = src.Type == Rgba ? MeanColor<RgbaPixel>(src, bar.corners) : MeanColor<RgbPixel>(src, bar.corners);
        for (XY& corner : bar.corners)
            corner = XY(corner.X + src.X, corner.Y + src.Y);
    }
    return true;
}

} // namespace Tesk::linear
