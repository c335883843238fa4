// Distance maps: city-block and chessboard by sweeps, Euclidean by the lower envelope of parabolas.
#include "image/Morpho.h"

#include "image/MorphoFrame.h"

#include <cmath>
#include <limits>
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

template <typename T>
void MeasureEuclidean(const Image& src, Image& dst, GrayPixel feature)
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
        envelope(both, [&](std::size_t x, std::int64_t square) {
            const double distance = square < 0 ? farthest<T> : std::sqrt(static_cast<double>(square));
            d[x] = static_cast<T>(Min<double>(distance, farthest<T>));
        });
    }
}

template <typename T>
void Measure(const Image& src, Image& dst, GrayPixel feature, bool euclidean, bool connexity8)
{
    if (euclidean)
        MeasureEuclidean<T>(src, dst, feature);
    else
        Sweep<T>(src, dst, feature, connexity8);
}

} // namespace

void Morpho::Distance(const Image& Src, Image& Dst, bool Above, bool Euclidean, bool Connexity8, bool Large)
{
    const Entry entry("Tesk::Morpho::Distance");
    Image held;
    if (Prepare(entry, Src, {Gray}, Dst, held, Large ? Gray16 : Gray, L", Gray required")) return;
    const GrayPixel feature = Above ? 0 : 255;
    WithMemory(entry, [&] {
        if (Large)
            Measure<Gray16Pixel>(held, Dst, feature, Euclidean, Connexity8);
        else
            Measure<GrayPixel>(held, Dst, feature, Euclidean, Connexity8);
    });
}

} // namespace Tesk
