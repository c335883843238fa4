// Distance maps: city-block and chessboard by sweeps, Euclidean by the lower envelope of parabolas.
#include "image/Morpho.h"

#include "image/morpho/DistanceKernels.h"
#include "image/morpho/MorphoFrame.h"
#include "image/morpho/MorphoKernels.h"

#include <algorithm>
#include <cmath>
#include <cstring>
#include <limits>
#include <utility>
#include <vector>

namespace Tesk {

namespace {

using namespace morpho;

/// Beyond every distance that an image can hold, and still a number to count with.
constexpr std::int64_t unreachable = std::int64_t{1} << 33;

template <typename T>
constexpr int farthest = std::numeric_limits<T>::max();

/// Two raster sweeps: from what is above and to the left, then from what is below and to the right.
template <typename T>
void Sweep(const Image& src, Image& dst, GrayPixel feature, bool connexity8)
{
    const int width = dst.Width, height = dst.Height;
    const auto closer = [&](int& d, int x, int y) {
        if (x >= 0 && x < width && y >= 0 && y < height) d = Min(d, dst.Row<T>(y)[x] + 1);
    };
    const auto visit = [&](int x, int y, int back) {
        int d = dst.Row<T>(y)[x];
        closer(d, x + back, y);
        closer(d, x, y + back);
        if (connexity8) {
            closer(d, x - 1, y + back);
            closer(d, x + 1, y + back);
        }
        dst.Row<T>(y)[x] = static_cast<T>(d);
    };
    for (int y = 0; y < height; y++)
        for (int x = 0; x < width; x++) {
            dst.Row<T>(y)[x] = src.Row(y)[x] == feature ? T{0} : static_cast<T>(farthest<T>);
            visit(x, y, -1);
        }
    for (int y = height - 1; y >= 0; y--)
        for (int x = width - 1; x >= 0; x--)
            visit(x, y, 1);
}

/// A row with the farthest distance on either side, for kernels that look `reach` pixels away and run over its end.
template <typename T>
class Line
{
public:
    Line(std::size_t width, std::size_t reach)
        : width_(width), pixels_(width + 2 * reach + 2 * kernels::rowStep, std::numeric_limits<T>::max()),
          first_(pixels_.data() + reach)
    {}

    T* First() { return first_; }
    /// What kernels wrote behind the row belongs to the row that they wrote.
    void ClearEnd() { std::fill_n(first_ + width_, kernels::rowStep, std::numeric_limits<T>::max()); }

    void SetFeatures(const std::uint8_t* s, GrayPixel feature)
    {
        for (std::size_t x = 0; x < width_; x++)
            first_[x] = s[x] == feature ? T{0} : std::numeric_limits<T>::max();
        ClearEnd();
    }
    void Read(const T* d)
    {
        std::copy_n(d, width_, first_);
        ClearEnd();
    }
    void Write(T* d) const { std::copy_n(first_, width_, d); }

private:
    std::size_t width_;
    std::vector<T> pixels_;
    T* first_;
};

/// The same distances by whole rows: along each row by doubled steps, then down and up.
template <typename T>
void SweepRows(const Image& src, Image& dst, GrayPixel feature, bool connexity8)
{
    const auto width = static_cast<std::size_t>(int(dst.Width));
    // Steps of 1, 2, 4 and so on to either side make every distance below twice the last one.
    std::size_t lastStep = 1;
    while (2 * lastStep < width && 4 * lastStep <= static_cast<std::size_t>(farthest<T>) + 1)
        lastStep *= 2;
    Line<T> line(width, lastStep), spread(width, lastStep), former(width, lastStep);
    for (int y = 0; y < dst.Height; y++) {
        line.SetFeatures(src.Row(y), feature);
        for (std::size_t step = 1; step <= lastStep; step *= 2) {
            kernels::SpreadRow(line.First(), spread.First(), width, step);
            std::swap(line, spread);
        }
        if (y > 0) kernels::SweepRow(former.First(), line.First(), width, connexity8);
        line.Write(dst.Row<T>(y));
        std::swap(line, former);
    }
    for (int y = dst.Height - 2; y >= 0; y--) {
        line.Read(dst.Row<T>(y));
        kernels::SweepRow(former.First(), line.First(), width, connexity8);
        line.Write(dst.Row<T>(y));
        std::swap(line, former);
    }
}

/// The squares of the distances along a row, from those down its columns: block by block, steps to either side are
/// tried as long as the blocks that they reach hold a square from which they can lower one. Squares beyond 16 bits
/// stand for distances beyond 255.
class NearSquares
{
public:
    explicit NearSquares(std::size_t width)
        : width_(width), columns_(width, reach), squares_(width, reach),
          least_(width / block + 1 + 2 * around, std::numeric_limits<std::uint16_t>::max())
    {}

    const std::uint16_t* operator()(const std::uint8_t* distances)
    {
        std::uint16_t *columns = columns_.First(), *squares = squares_.First();
        for (std::size_t x = 0; x < width_; x++)
            columns[x] = squares[x] = static_cast<std::uint16_t>(distances[x] * distances[x]);
        // Nothing behind the row asks for more steps.
        std::fill_n(squares + width_, kernels::rowStep, std::uint16_t{0});
        const std::size_t blocks = (width_ + block - 1) / block;
        for (std::size_t b = 0; b < blocks; b++) {
            std::uint16_t least = std::numeric_limits<std::uint16_t>::max();
            for (std::size_t x = 0; x < block; x++)
                least = Min(least, columns[b * block + x]);
            least_[b + around] = least;
        }
        for (std::size_t b = 0; b < blocks; b++) {
            std::uint16_t largest = 0;
            for (std::size_t x = 0; x < block; x++)
                largest = Max(largest, squares[b * block + x]);
            for (std::size_t j = 0; j < around; j++) {
                const std::size_t first = j * block + 1;
                if (largest <= first * first) break;
                const std::uint16_t* at = least_.data() + b + around;
                const std::size_t least = Min(Min(*(at - j - 1), *(at - j)), Min(at[j], at[j + 1]));
                if (least + first * first < largest)
                    largest = kernels::NearSquaresBlock(columns + b * block, squares + b * block, first);
            }
        }
        return squares;
    }

private:
    static constexpr std::size_t reach = 256, block = kernels::rowStep, around = reach / block;

    std::size_t width_;
    Line<std::uint16_t> columns_, squares_;
    std::vector<std::uint16_t> least_; ///< of the columns of each block
};

/// Exact Euclidean distances up to 255.
void MeasureNear(const Image& src, Image& dst, GrayPixel feature)
{
    const auto width = static_cast<std::size_t>(int(dst.Width));
    Line<std::uint8_t> line(width, 1), former(width, 1);
    NearSquares squares(width);
    for (int y = 0; y < dst.Height; y++) {
        line.SetFeatures(src.Row(y), feature);
        if (y > 0) kernels::SweepRow(former.First(), line.First(), width, false);
        line.Write(dst.Row(y));
        std::swap(line, former);
    }
    for (int y = dst.Height - 1; y >= 0; y--) {
        line.Read(dst.Row(y));
        if (y < dst.Height - 1) kernels::SweepRow(former.First(), line.First(), width, false);
        const std::uint16_t* nearest = squares(line.First());
        std::swap(line, former);
        kernels::RootRow(nearest, line.First(), width);
        line.Write(dst.Row(y));
    }
}

/// Squared distances along a row from squared distances down the columns, as the lower envelope of one parabola a
/// column (Felzenszwalb and Huttenlocher 2012), in integers.
class Envelope
{
public:
    explicit Envelope(std::size_t width) : apexes_(width), starts_(width) {}

    /// `columns[x]` is the distance to the nearest feature of the column, or `unreachable`; calls `put(x, squared)`.
    template <typename F>
    void operator()(const std::vector<std::int64_t>& columns, F put)
    {
        const auto width = static_cast<std::int64_t>(columns.size());
        std::size_t count = 0;
        for (std::int64_t x = 0; x < width; x++) {
            if (columns[static_cast<std::size_t>(x)] >= unreachable) continue;
            std::int64_t start = 0;
            // From `start` on the new parabola lies lower; those that would begin behind it never show.
            while (count > 0) {
                start = Crossing(columns, apexes_[count - 1], x);
                if (start > starts_[count - 1]) break;
                count--;
            }
            if (count == 0) start = 0;
            if (start >= width) continue;
            apexes_[count] = x;
            starts_[count++] = start;
        }
        std::size_t k = 0;
        for (std::int64_t x = 0; x < width; x++) {
            while (k + 1 < count && starts_[k + 1] <= x)
                k++;
            put(static_cast<std::size_t>(x), count == 0 ? -1 : Square(columns, apexes_[k], x));
        }
    }

private:
    static std::int64_t Square(const std::vector<std::int64_t>& columns, std::int64_t apex, std::int64_t x)
    {
        return Sqr(columns[static_cast<std::size_t>(apex)]) + Sqr(x - apex);
    }

    /// The first place at which the parabola of `b` lies at or below that of `a`, for a < b; not below 0.
    static std::int64_t Crossing(const std::vector<std::int64_t>& columns, std::int64_t a, std::int64_t b)
    {
        const std::int64_t over = Square(columns, b, 0) - Square(columns, a, 0), twice = 2 * (b - a);
        return over <= 0 ? 0 : (over + twice - 1) / twice;
    }

    std::vector<std::int64_t> apexes_, starts_;
};

/// Distances of any size. Rows that have only near ones are taken from `near`, if it is not null.
template <typename T>
void MeasureEuclidean(const Image& src, const Image* near, Image& dst, GrayPixel feature)
{
    const int width = dst.Width, height = dst.Height;
    const auto columns = static_cast<std::size_t>(width);
    // Downwards the distance from the feature above, kept for all rows; upwards the nearer of the two.
    std::vector<std::uint32_t> above(columns * static_cast<std::size_t>(height));
    constexpr std::uint32_t none = std::numeric_limits<std::uint32_t>::max();
    for (std::size_t y = 0; y < static_cast<std::size_t>(height); y++)
        for (std::size_t x = 0; x < columns; x++) {
            const std::uint32_t before = y == 0 ? none : above[(y - 1) * columns + x];
            above[y * columns + x] = src.Row(static_cast<int>(y))[x] == feature ? 0
                                     : before == none                           ? none
                                                                                : before + 1;
        }
    std::vector<std::int64_t> nearest(columns, unreachable), both(columns);
    Envelope envelope(columns);
    for (int y = height - 1; y >= 0; y--) {
        for (std::size_t x = 0; x < columns; x++) {
            const std::uint32_t up = above[static_cast<std::size_t>(y) * columns + x];
            const std::int64_t down = Min(nearest[x] + 1, unreachable);
            nearest[x] = up == 0 ? 0 : down;
            both[x] = up == none ? nearest[x] : Min(nearest[x], std::int64_t{up});
        }
        T* d = dst.Row<T>(y);
        if (near && !std::memchr(near->Row(y), farthest<GrayPixel>, columns)) {
            std::copy_n(near->Row(y), columns, d);
            continue;
        }
        envelope(both, [&](std::size_t x, std::int64_t square) {
            const double distance = square < 0 ? farthest<T> : std::sqrt(static_cast<double>(square));
            d[x] = static_cast<T>(Min<double>(distance, farthest<T>));
        });
    }
}

/// Most pictures have features everywhere, so that the near distances are all there are.
void MeasureAny(const Image& src, Image& dst, GrayPixel feature)
{
    Image near;
    MakeLike(src, Gray, near);
    MeasureNear(src, near, feature);
    const auto width = static_cast<std::size_t>(int(src.Width));
    int y = 0;
    for (; y < src.Height && !std::memchr(near.Row(y), farthest<GrayPixel>, width); y++)
        std::copy_n(near.Row(y), width, dst.Row<Gray16Pixel>(y));
    if (y < src.Height) MeasureEuclidean<Gray16Pixel>(src, &near, dst, feature);
}

template <typename T>
void Measure(const Image& src, Image& dst, GrayPixel feature, bool euclidean, bool connexity8)
{
    const bool vectors = Status::SIMDLevel() != NoSIMD;
    if (euclidean && vectors && sizeof(T) == 1)
        MeasureNear(src, dst, feature);
    else if (euclidean && vectors)
        MeasureAny(src, dst, feature);
    else if (euclidean)
        MeasureEuclidean<T>(src, nullptr, dst, feature);
    else if (vectors)
        SweepRows<T>(src, dst, feature, connexity8);
    else
        Sweep<T>(src, dst, feature, connexity8);
}

} // namespace

void Morpho::Distance(const Image& Src, Image& Dst, bool Above, bool Euclidean, bool Connexity8, bool Large)
{
    const Entry entry("Tesk::Morpho::Distance");
    Sources held;
    if (Prepare(entry, Src, {Gray}, Dst, held, Large ? Gray16 : Gray, L", Gray required")) return;
    const GrayPixel feature = Above ? 0 : 255;
    Guarded(entry, [&] {
        VisitPixels<Gray, Gray16>(Dst.Type,
                                  [&]<typename T>() { Measure<T>(held.a, Dst, feature, Euclidean, Connexity8); });
    });
}

} // namespace Tesk
