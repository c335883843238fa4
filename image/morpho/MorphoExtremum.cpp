// The extremum under a diamond, by doubling its radius, and under a box: down the columns by the running extrema of
// blocks (van Herk 1992), along the rows by windows that grow fourfold.
#include "image/morpho/MorphoExtremum.h"

#include "image/morpho/MorphoFrame.h"

#include <algorithm>
#include <limits>
#include <vector>

namespace Tesk::morpho {

namespace {

/// A value that never wins: pixels outside the window hold it.
template <typename T>
T Neutral(Extremum extremum)
{
    return extremum == Extremum::Maximum ? T{0} : std::numeric_limits<T>::max();
}

/// A row of a window with neutral pixels on either side, and room for kernels to run over its end.
template <typename T>
struct PaddedRow
{
    PaddedRow(Extremum extremum, std::size_t width, std::size_t pad)
        : pixels(width + 2 * pad + 4 * kernels::rowStep, Neutral<T>(extremum)), first(pixels.data() + pad)
    {}

    std::vector<T> pixels;
    T* first;
};

/// Along a row: d[x] becomes the extremum of 2 radius + 1 pixels, of which the first is `padded[x - radius]`.
template <typename T>
class RowWindows
{
public:
    RowWindows(Extremum extremum, std::size_t width, std::size_t radius)
        : extremum_(extremum), width_(width), radius_(radius), length_(2 * radius + 1),
          work_(length_ > kernels::mostRows ? width + length_ + 4 * kernels::rowStep : 0)
    {}

    void operator()(const T* padded, T* d)
    {
        const T* s = padded - radius_;
        std::size_t reached = 1;
        if (length_ > kernels::mostRows) {
            const T* rows[4] = {s, s + 1, s + 2, s + 3};
            kernels::ExtremumRow(extremum_, rows, 4, work_.data(), width_ + length_ - 4);
            for (reached = 4; 4 * reached < length_; reached *= 4)
                kernels::WidenExtremumRow(extremum_, work_.data(), width_ + length_ - 4 * reached, reached);
            s = work_.data();
        }
        // The last windows overlap.
        const T* rows[kernels::mostRows];
        int count = 0;
        for (std::size_t at = 0; at + reached < length_; at += reached)
            rows[count++] = s + at;
        rows[count++] = s + length_ - reached;
        kernels::ExtremumRow(extremum_, rows, count, d, width_);
    }

private:
    Extremum extremum_;
    std::size_t width_, radius_, length_;
    std::vector<T> work_;
};

/// Down the columns: the extremum of the rows y - radius to y + radius, two rows at a time. Few rows are taken as they
/// are, those that both results need only once. Of more, a block is seen from its end upwards, the next one from its
/// start downwards; the window is what lies between.
template <typename T>
class ColumnWindows
{
public:
    ColumnWindows(Extremum extremum, const Image& src, int radius)
        : extremum_(extremum), src_(src), width_(static_cast<std::size_t>(int(src.Width))), radius_(radius),
          length_(2 * radius + 1)
    {
        if (radius > mostDirect) {
            upwards_.resize(static_cast<std::size_t>(length_) * width_);
            downwards_.resize(width_);
        }
    }

    /// Writes the rows `y` and `y + 1`, which may be one behind the window; rows are asked for in order from 0.
    void Write(int y, T* d0, T* d1)
    {
        if (radius_ <= mostDirect) {
            const T* rows[kernels::mostPairedRows];
            for (int k = 0; k <= length_; k++)
                rows[k] = RowOf(Clamp(y - radius_ + k, 0, src_.Height - 1));
            kernels::ExtremumRowPair(extremum_, rows, length_ + 1, d0, d1, width_);
            return;
        }
        WriteNext(y, d0);
        if (y + 1 < src_.Height) WriteNext(y + 1, d1);
    }

private:
    /// Up to here the rows themselves are as fast.
    static constexpr int mostDirect = kernels::mostPairedRows / 2 - 1;

    const T* RowOf(int y) const { return src_.Row<T>(y); }
    T* Upwards(int k) { return upwards_.data() + static_cast<std::size_t>(k) * width_; }

    void WriteNext(int y, T* d)
    {
        // Row k of block b lies at y = b length + k - radius.
        const int k = y % length_;
        if (k == 0) StartBlock(y - radius_);
        const int entering = y + radius_;
        if (k == 0)
            std::copy_n(Upwards(0), width_, d);
        else if (entering < src_.Height)
            kernels::RunExtremumRow(extremum_, RowOf(entering), downwards_.data(), Upwards(k), d, width_);
        else
            Of(Upwards(k), downwards_.data(), d);
    }

    void Of(const T* a, const T* b, T* d)
    {
        const T* rows[2] = {a, b};
        kernels::ExtremumRow(extremum_, rows, 2, d, width_);
    }

    void StartBlock(int top)
    {
        std::fill(downwards_.begin(), downwards_.end(), Neutral<T>(extremum_));
        const T* below = downwards_.data();
        for (int k = length_ - 1; k >= 0; k--) {
            const int y = top + k;
            if (y >= 0 && y < src_.Height)
                Of(RowOf(y), below, Upwards(k));
            else
                std::copy_n(below, width_, Upwards(k));
            below = Upwards(k);
        }
    }

    Extremum extremum_;
    const Image& src_;
    std::size_t width_;
    int radius_, length_;
    std::vector<T> upwards_, downwards_;
};

template <typename T>
void ApplyBox(Extremum extremum, int radiusX, int radiusY, const Image& src, Image& dst)
{
    const auto width = static_cast<std::size_t>(int(src.Width)), pad = static_cast<std::size_t>(radiusX);
    ColumnWindows<T> columns(extremum, src, radiusY);
    RowWindows<T> windows(extremum, width, pad);
    PaddedRow<T> line(extremum, width, pad), next(extremum, width, pad);
    for (int y = 0; y < src.Height; y += 2) {
        const bool two = y + 1 < src.Height;
        if (radiusX == 0) {
            columns.Write(y, dst.Row<T>(y), two ? dst.Row<T>(y + 1) : next.first);
            continue;
        }
        if (radiusY == 0) {
            std::copy_n(src.Row<T>(y), width, line.first);
            if (two) std::copy_n(src.Row<T>(y + 1), width, next.first);
        } else {
            columns.Write(y, line.first, next.first);
        }
        windows(line.first, dst.Row<T>(y));
        if (two) windows(next.first, dst.Row<T>(y + 1));
    }
}

/// A diamond of radius r spread to the four points at distance s fills that of radius r + s if s is at most r. So rows
/// go through a chain of spreads of doubled distances, each of which keeps the rows that it still looks at. The points
/// in between may lie outside the window, so the rows have a margin as wide as the radius, and as many come before and
/// behind them.
template <typename T>
class DiamondChain
{
public:
    DiamondChain(Extremum extremum, std::size_t width, std::size_t radius)
        : extremum_(extremum), radius_(radius), length_(width + 2 * radius)
    {
        for (std::size_t reached = 0; reached < radius;) {
            const std::size_t step = reached == 0 ? 1 : Min(reached, radius - reached);
            reached += step;
            stages_.push_back({step, reached, 0, std::vector<T>((2 * step + 1) * length_, Neutral<T>(extremum))});
        }
    }

    /// Takes the next row of the window, or null for one outside it, and calls `put` with a row of the result as soon
    /// as one is complete: `radius` rows must come before the window and as many behind it.
    template <typename F>
    void Take(const T* s, F put)
    {
        T* d = Place(stages_.front());
        if (s)
            std::copy_n(s, length_ - 2 * radius_, d + radius_);
        else
            std::fill_n(d, length_, Neutral<T>(extremum_));
        for (std::size_t k = 0;; k++) {
            Stage& stage = stages_[k];
            if (++stage.taken < 2 * stage.step + 1) return;
            const T* rows[kernels::mostRows];
            const int count = Around(stage, rows);
            // As far outside the window as later stages look.
            const std::size_t n = length_ - 2 * stage.reached;
            if (k + 1 == stages_.size()) {
                put([&](T* out) { kernels::ExtremumRow(extremum_, rows, count, out, n); });
                return;
            }
            kernels::ExtremumRow(extremum_, rows, count, Place(stages_[k + 1]) + stage.reached, n);
        }
    }

private:
    struct Stage
    {
        std::size_t step, reached, taken;
        std::vector<T> rows; ///< the last 2 step + 1 rows, in turn

        std::size_t Turns() const { return 2 * step + 1; }
    };

    /// Where a stage takes its next row.
    T* Place(Stage& stage) const { return stage.rows.data() + stage.taken % stage.Turns() * length_; }

    /// The rows `step` above and below, and the row between shifted by `step` to either side; in the first stage itself
    /// too.
    int Around(const Stage& stage, const T** rows) const
    {
        const auto row = [&](std::size_t back) {
            return stage.rows.data() + (stage.taken - 1 - back) % stage.Turns() * length_ + stage.reached;
        };
        const T* here = row(stage.step);
        rows[0] = row(0);
        rows[1] = row(2 * stage.step);
        rows[2] = here - stage.step;
        rows[3] = here + stage.step;
        rows[4] = here;
        return stage.reached == 1 ? 5 : 4;
    }

    Extremum extremum_;
    std::size_t radius_, length_;
    std::vector<Stage> stages_;
};

template <typename T>
void ApplyDiamond(Extremum extremum, int radius, const Image& src, Image& dst)
{
    DiamondChain<T> chain(extremum, static_cast<std::size_t>(int(src.Width)), static_cast<std::size_t>(radius));
    int out = 0;
    for (int y = -radius; y < src.Height + radius; y++)
        chain.Take(y >= 0 && y < src.Height ? src.Row<T>(y) : nullptr, [&](auto write) { write(dst.Row<T>(out++)); });
}

/// The cross, without a margin.
template <typename T>
void ApplyCross(Extremum extremum, const Image& src, Image& dst)
{
    const auto width = static_cast<std::size_t>(int(src.Width));
    PaddedRow<T> line(extremum, width, 1);
    for (int y = 0; y < src.Height; y++) {
        std::copy_n(src.Row<T>(y), width, line.first);
        const T* rows[kernels::mostRows] = {line.first - 1, line.first, line.first + 1, src.Row<T>(Max(y - 1, 0)),
                                            src.Row<T>(Min(y + 1, src.Height - 1))};
        kernels::ExtremumRow(extremum, rows, 5, dst.Row<T>(y), width);
    }
}

template <typename T>
void ApplyTo(Extremum extremum, const Element& element, const Image& src, Image& dst)
{
    if (element.diamond == 0 && element.boxX == 0 && element.boxY == 0) {
        CopyRows(src, dst);
        return;
    }
    if (element.diamond == 0) {
        ApplyBox<T>(extremum, element.boxX, element.boxY, src, dst);
        return;
    }
    const bool box = element.boxX > 0 || element.boxY > 0;
    Image work;
    if (box) MakeLike(src, src.Type, work);
    Image& out = box ? work : dst;
    if (element.diamond == 1)
        ApplyCross<T>(extremum, src, out);
    else
        ApplyDiamond<T>(extremum, element.diamond, src, out);
    if (box) ApplyBox<T>(extremum, element.boxX, element.boxY, work, dst);
}

} // namespace

Element::Element(int width, int height, int diagonal, const Image& window)
{
    const std::int64_t x = width / 2, y = height / 2, r = Min<std::int64_t>(diagonal / 2, Min(x, y));
    // The steps (dx, dy) of the element: |dx| <= x, |dy| <= y, |dx| + |dy| <= x + y - r. No step in a window is longer
    // than the window, and every step of the element that ends in it may be taken inside it.
    const std::int64_t shortX = Min<std::int64_t>(x, window.Width - 1),
                       shortY = Min<std::int64_t>(y, window.Height - 1), sum = Min(x + y - r, shortX + shortY);
    diamond = static_cast<int>(shortX + shortY - sum);
    boxX = static_cast<int>(shortX) - diamond;
    boxY = static_cast<int>(shortY) - diamond;
}

void Apply(Extremum extremum, const Element& element, const Image& src, Image& dst)
{
    VisitPixels<Gray, Gray16>(src.Type, [&]<typename T>() { ApplyTo<T>(extremum, element, src, dst); });
}

} // namespace Tesk::morpho
