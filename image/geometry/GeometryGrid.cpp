// The smooth warp through a grid of anchor points, by natural cubic splines.
#include "foundation/Entry.h"
#include "image/Geometry.h"
#include "image/geometry/WarpFrame.h"

#include <vector>

namespace Tesk {

namespace {

/// A natural cubic spline through values at unit distance: `V` and `D` of each knot.
class Spline
{
public:
    explicit Spline(std::size_t knots) : V_(knots), D_(knots), sweep_(knots) {}

    /// Takes the values `value(0)`, `value(1)` and so on.
    template <typename F>
    void Set(F value)
    {
        const std::size_t n = V_.size();
        for (std::size_t i = 0; i < n; i++)
            V_[i] = value(i);
        // The tridiagonal system of m = 6 D at the inner knots, with 0 at both ends, swept forward and back.
        D_[0] = D_[n - 1] = sweep_[0] = 0;
        for (std::size_t i = 1; i + 1 < n; i++) {
            const double pivot = 4 - sweep_[i - 1];
            sweep_[i] = 1 / pivot;
            D_[i] = (6 * (V_[i + 1] - 2 * V_[i] + V_[i - 1]) - D_[i - 1]) / pivot;
        }
        for (std::size_t i = n - 1; i-- > 1;)
            D_[i] -= sweep_[i] * D_[i + 1];
        for (std::size_t i = 1; i + 1 < n; i++) {
            D_[i] /= 6;
            V_[i] -= D_[i];
        }
    }

    /// The value `t` (0 to 1) behind knot `i`.
    double At(std::size_t i, double t) const
    {
        const double s = 1 - t;
        return s * (V_[i] + s * s * D_[i]) + t * (V_[i + 1] + t * t * D_[i + 1]);
    }

private:
    std::vector<double> V_, D_, sweep_;
};

struct Curve
{
    explicit Curve(std::size_t knots) : x(knots), y(knots) {}
    Spline x, y;
};

/// The cell between two nodes in which a row or column of the result lies, and how far in.
struct Cell
{
    std::size_t node;
    double t;
};

/// The rows or columns of the result between the first node, at `origin`, and the last one, `step` apart.
struct Axis
{
    std::int64_t origin, step, nodes;

    int First() const { return static_cast<int>(Clamp<std::int64_t>(origin, 0, MaxInt)); }
    int Past(int extent) const { return static_cast<int>(Clamp<std::int64_t>(origin + step * (nodes - 1), 0, extent)); }
    Cell At(int i) const
    {
        const std::int64_t distance = i - origin;
        return {static_cast<std::size_t>(distance / step),
                static_cast<double>(distance % step) / static_cast<double>(step)};
    }
};

/// A source column or row with the fraction of the way to the next one; what is no number counts as 0.
struct Between
{
    int whole, next;
    double fraction;
};

Between Locate(double position, int extent)
{
    if (!(position > 0)) return {0, 0, 0};
    if (position >= extent - 1) return {extent - 1, extent - 1, 0};
    const int whole = static_cast<int>(position);
    return {whole, whole + 1, position - whole};
}

template <int Channels, typename T>
void Sample(const Image& src, double px, double py, T* d)
{
    const Between x = Locate(px, src.Width), y = Locate(py, src.Height);
    const T *upper = src.Row<T>(y.whole), *lower = src.Row<T>(y.next);
    for (int c = 0; c < Channels; c++) {
        const double p00 = upper[x.whole * Channels + c], p10 = upper[x.next * Channels + c];
        const double p01 = lower[x.whole * Channels + c], p11 = lower[x.next * Channels + c];
        d[c] = static_cast<T>((p10 * x.fraction + p00 * (1 - x.fraction)) * (1 - y.fraction) +
                              (p11 * x.fraction + p01 * (1 - x.fraction)) * y.fraction);
    }
}

/// A position as an entry of a map counts it.
std::int64_t MapPosition(double position, int extent)
{
    return position > 0 ? warps::Fixed(Min<double>(position, extent)) : 0;
}

struct Grid
{
    const XY* nodes;
    std::size_t stride;
    Axis columns, rows;
};

/// Calls `put(column, row, x, y)` with the source position of each pixel that the grid covers.
template <typename F>
void EachPosition(const Grid& grid, const Image& dst, F put)
{
    const auto nx = static_cast<std::size_t>(grid.columns.nodes), ny = static_cast<std::size_t>(grid.rows.nodes);
    std::vector<Curve> down(nx, Curve(ny));
    for (std::size_t c = 0; c < nx; c++) {
        down[c].x.Set([&](std::size_t r) { return grid.nodes[r * grid.stride + c].X; });
        down[c].y.Set([&](std::size_t r) { return grid.nodes[r * grid.stride + c].Y; });
    }
    Curve along(nx);
    const int pastColumn = grid.columns.Past(dst.Width), pastRow = grid.rows.Past(dst.Height);
    for (int row = grid.rows.First(); row < pastRow; row++) {
        const Cell cell = grid.rows.At(row);
        along.x.Set([&](std::size_t c) { return down[c].x.At(cell.node, cell.t); });
        along.y.Set([&](std::size_t c) { return down[c].y.At(cell.node, cell.t); });
        for (int column = grid.columns.First(); column < pastColumn; column++) {
            const Cell at = grid.columns.At(column);
            put(column, row, along.x.At(at.node, at.t), along.y.At(at.node, at.t));
        }
    }
}

template <int Channels, typename T>
void Deform(const Grid& grid, const Image& src, Image& dst)
{
    EachPosition(grid, dst, [&](int column, int row, double x, double y) {
        Sample<Channels>(src, x, y, dst.Row<T>(row) + column * Channels);
    });
}

void RecordDeformation(const Grid& grid, const Image& src, Image& dst)
{
    const kernels::Surface s = warps::SurfaceOf(src);
    const int elementSize = ElementSize(src.Type);
    EachPosition(grid, dst, [&](int column, int row, double x, double y) {
        dst.Row<GeoMapPixel>(row)[column] =
            kernels::EntryAt(s, elementSize, MapPosition(x, s.width), MapPosition(y, s.height), true);
    });
}

int RefuseGrid(const XY* f, int stride, int nx, int ny, int tx, int ty)
{
    if (!f) return Status::Format(OutOfRange, L"No anchor points were provided");
    if (nx < 2 || ny < 2 || stride < nx)
        return Status::Format(OutOfRange,
                              L"The grid (%d, %d) must have two nodes each way and rows no longer than %d nodes", nx,
                              ny, stride);
    if (tx < 1 || ty < 1) return Status::Format(OutOfRange, L"The steps (%d, %d) of the grid must be positive", tx, ty);
    return NoError;
}

} // namespace

void Geometry::GridDeform(XY* F, int N, int NX, int NY, Image& Src, int X0, int TX, int Y0, int TY, Image& Dst)
{
    const Entry entry("Tesk::Geometry::GridDeform");
    if (entry.Refuses(warps::RefuseImages(Src, Dst, false)) || entry.Refuses(RefuseGrid(F, N, NX, NY, TX, TY))) return;
    Image src;
    if (entry.Refuses(warps::HoldSource(Src, Dst, true, src))) return;
    const Grid grid{F, static_cast<std::size_t>(N), {X0, TX, NX}, {Y0, TY, NY}};
    entry.Guards(L"Cannot allocate the splines of the grid", [&] {
        if (Dst.Type == GeoMap)
            RecordDeformation(grid, src, Dst);
        else
            images::VisitSamples<Gray, Gray16, Rgb>(
                src.Type, [&]<int channels, typename T>() { Deform<channels, T>(grid, src, Dst); });
    });
}

} // namespace Tesk
