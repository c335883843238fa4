// Images resampled through the model of a geometry.
#include "image/geometry/GeometryModel.h"
#include "image/geometry/WarpFrame.h"
#include "measure/Region.h"

#include <array>
#include <utility>

namespace Tesk {

namespace {

/// A position in 65,536ths of a pixel. What is too far away for that, or nowhere, lies as far as can be.
std::int64_t FixedAt(double value)
{
    constexpr double farthest = 2147483648.0;
    return warps::Fixed(value < farthest ? Max(value, -farthest) : farthest);
}

/// Collects the runs of a row as its pixels come, one after the other.
class RowRuns
{
public:
    RowRuns(const warps::RunSink& sink, int row) : sink_(sink), row_(row) {}

    void Add(int column, bool inside)
    {
        if (inside == open_) return;
        if (open_ && sink_) sink_(first_, column, row_);
        first_ = column;
        open_ = inside;
    }

private:
    const warps::RunSink& sink_;
    int row_, first_ = 0;
    bool open_ = false;
};

/// Fills the destination through a map that is worked out for each pixel; true if some positions lie outside the
/// source.
template <typename Map>
bool Fill(Map map, const Image& src, Image& dst, bool interpolate, const warps::RunSink& valid)
{
    const kernels::Surface s = warps::SurfaceOf(src);
    const int elementSize = ElementSize(src.Type), width = dst.Width, past = interpolate ? 1 : 0;
    const double half = interpolate ? 0 : 0.5;
    const auto inside = [&s](std::int64_t x, std::int64_t y, int edge) {
        return x >= 0 && y >= 0 && (x >> warps::fractionBits) < s.width - edge &&
               (y >> warps::fractionBits) < s.height - edge;
    };
    constexpr int block = 256;
    std::array<GeoMapPixel, block> entries;
    bool outside = false;
    for (int j = 0; j < dst.Height; j++) {
        RowRuns runs(valid, j);
        for (int left = 0; left < width; left += block) {
            const int n = Min(block, width - left);
            GeoMapPixel* d = dst.Type == GeoMap ? dst.Row<GeoMapPixel>(j) + left : entries.data();
            for (int i = 0; i < n; i++) {
                const XY p = map(left + i, j);
                const std::int64_t x = FixedAt(p.X + half), y = FixedAt(p.Y + half);
                outside = outside || !inside(x, y, past);
                runs.Add(left + i, inside(x, y, 1));
                d[i] = kernels::EntryAt(s, elementSize, x, y, interpolate);
            }
            if (dst.Type != GeoMap)
                warps::SampleRow(s, d, dst.Row(j) + static_cast<std::ptrdiff_t>(left) * elementSize,
                                 static_cast<std::size_t>(n), interpolate);
        }
        runs.Add(width, false);
    }
    return outside;
}

} // namespace

bool Geometry::Resample(const Entry& entry, const Coefficients& c, const Image& src, Image& dst, bool interpolate,
                        bool& outside, const std::function<void(int, int, int)>& valid) const
{
    if (entry.Refuses(warps::RefuseImages(src, dst, false))) return false;
    const bool shift = Model == Translation, straight = shift || models::IsAffine(Model);
    const warps::AffineMap map{shift ? 1 : c[0], shift ? 0 : c[1], c[2], shift ? 0 : c[3], shift ? 1 : c[4], c[5]};
    if (straight && entry.Refuses(warps::RefuseFar(map, dst.Width, dst.Height))) return false;
    Image held;
    if (entry.Refuses(warps::HoldSource(src, dst, false, held))) return false;
    if (straight)
        outside = warps::FillAffine(map, held, dst, interpolate, valid);
    else
        outside = models::WithMap(Model, c, [&](auto bent) { return Fill(bent, held, dst, interpolate, valid); });
    return true;
}

void Geometry::Undistort(const Image& Src, Image& Dst, bool Interpolate) const
{
    const Entry entry("Tesk::Geometry::Register");
    bool outside = false;
    Resample(entry, inverse_, Src, Dst, Interpolate, outside);
}

bool Geometry::Register(const Image& Src, Image& Dst, Region& Valid, bool Interpolate) const
{
    const Entry entry("Tesk::Geometry::Register");
    Region valid;
    bool outside = false;
    if (!Resample(entry, inverse_, Src, Dst, Interpolate, outside,
                  [&valid](int from, int to, int row) { valid.AddRun(from, to, row); }))
        return false;
    Valid = std::move(valid);
    return outside;
}

void Geometry::ReverseRegister(const Image& Src, Image& Dst, bool Interpolate) const
{
    const Entry entry("Tesk::Geometry::ReverseRegister");
    bool outside = false;
    Resample(entry, forward_, Src, Dst, Interpolate, outside);
}

} // namespace Tesk
