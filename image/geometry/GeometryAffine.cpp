// Affine warps, and the anchors by which they are told.
#include "foundation/Angles.h"
#include "foundation/Entry.h"
#include "image/Geometry.h"
#include "image/geometry/WarpFrame.h"

#include <array>

namespace Tesk {

using warps::AffineMap;

namespace {

/// An affine map in 65,536ths of a pixel.
struct FixedMap
{
    std::int64_t xx, xy, x0, yx, yy, y0;

    std::int64_t X(std::int64_t i, std::int64_t j) const { return xx * i + xy * j + x0; }
    std::int64_t Y(std::int64_t i, std::int64_t j) const { return yx * i + yy * j + y0; }
};

/// Pixels of a row, the last one exclusive.
struct Span
{
    int first, last;
};

/// Those of the first `n` terms `from`, `from + step`, ... that lie from 0 to below `limit`.
Span TermsInside(std::int64_t from, std::int64_t step, std::int64_t limit, int n)
{
    if (step == 0) return {0, from >= 0 && from < limit ? n : 0};
    if (step < 0) {
        const Span mirrored = TermsInside(from + step * (n - 1), -step, limit, n);
        return {n - mirrored.last, n - mirrored.first};
    }
    const auto termsBelow = [&](std::int64_t bound) {
        return bound <= from ? 0 : Min<std::int64_t>(n, (bound - from + step - 1) / step);
    };
    return {static_cast<int>(termsBelow(0)), static_cast<int>(termsBelow(limit))};
}

Span Common(Span a, Span b)
{
    const int first = Max(a.first, b.first), last = Min(a.last, b.last);
    return {first, Max(first, last)};
}

/// The pixels of row `j` whose positions need no clamping.
Span InsideOf(const FixedMap& map, const kernels::Surface& s, int j, int n, bool interpolate)
{
    const int past = interpolate ? 1 : 0;
    return Common(TermsInside(map.X(0, j), map.xx, (s.width - past) * warps::one, n),
                  TermsInside(map.Y(0, j), map.yx, (s.height - past) * warps::one, n));
}

/// Entries of some pixels of row `j`.
void FillEntries(const FixedMap& map, const kernels::Surface& s, int elementSize, int j, Span span, bool interpolate,
                 GeoMapPixel* entries)
{
    kernels::EntriesRow(s, elementSize, {map.X(span.first, j), map.Y(span.first, j), map.xx, map.yx}, entries,
                        static_cast<std::size_t>(span.last - span.first), interpolate);
}

/// The result is worked out in blocks, so that the source rows that one row of a block touches are still at hand for
/// the next.
constexpr int blockWidth = 256, blockHeight = 32;

/// Fills part of a row: positions that need clamping through entries of a map, the others along a line.
void FillPart(const FixedMap& map, const kernels::Surface& s, int elementSize, int j, Span part, Span inside,
              bool interpolate, std::uint8_t* row)
{
    const auto clamped = [&](Span span) {
        std::array<GeoMapPixel, blockWidth> entries;
        if (span.first >= span.last) return;
        FillEntries(map, s, elementSize, j, span, interpolate, entries.data());
        warps::SampleRow(s, entries.data(), row + static_cast<std::ptrdiff_t>(span.first) * elementSize,
                         static_cast<std::size_t>(span.last - span.first), interpolate);
    };
    const Span direct = Common(part, inside);
    if (direct.first >= direct.last) {
        clamped(part);
        return;
    }
    clamped({part.first, direct.first});
    const kernels::Line line{static_cast<std::int32_t>(map.X(direct.first, j)),
                             static_cast<std::int32_t>(map.Y(direct.first, j)), static_cast<std::int32_t>(map.xx),
                             static_cast<std::int32_t>(map.yx)};
    std::uint8_t* d = row + static_cast<std::ptrdiff_t>(direct.first) * elementSize;
    const auto n = static_cast<std::size_t>(direct.last - direct.first);
    if (interpolate)
        kernels::BilinearLineRow(s, line, d, n);
    else
        kernels::NearestLineRow(s, line, d, n);
    clamped({direct.last, part.last});
}

/// Fills the destination; true if some positions lie outside the source.
bool Fill(const FixedMap& map, const Image& src, Image& dst, bool interpolate, const warps::RunSink& valid)
{
    const kernels::Surface s = warps::SurfaceOf(src);
    const int elementSize = ElementSize(src.Type), width = dst.Width, height = dst.Height;
    // Whole columns and rows of larger sources don't fit in 32 bits with their fractions, and the kernels along lines
    // have no samples of 32 bits.
    const bool narrow = s.width < 1 << 15 && s.height < 1 << 15 && s.type != Gray32;
    bool outside = false;
    std::array<Span, blockHeight> inside;
    for (int top = 0; top < height; top += blockHeight) {
        const int bottom = Min(top + blockHeight, height);
        for (int j = top; j < bottom; j++) {
            const Span span = InsideOf(map, s, j, width, interpolate);
            outside = outside || span.last - span.first < width;
            if (valid) {
                const Span run = InsideOf(map, s, j, width, true);
                if (run.first < run.last) valid(run.first, run.last, j);
            }
            inside[static_cast<std::size_t>(j - top)] = narrow ? span : Span{0, 0};
        }
        if (dst.Type == GeoMap) {
            for (int j = top; j < bottom; j++)
                FillEntries(map, s, elementSize, j, {0, width}, interpolate, dst.Row<GeoMapPixel>(j));
            continue;
        }
        for (int left = 0; left < width; left += blockWidth)
            for (int j = top; j < bottom; j++)
                FillPart(map, s, elementSize, j, {left, Min(left + blockWidth, width)},
                         inside[static_cast<std::size_t>(j - top)], interpolate, dst.Row(j));
    }
    return outside;
}

/// Warps from a checked source to a checked destination.
bool Warp(const Entry& entry, const AffineMap& m, const Image& Src, Image& Dst, bool interpolate)
{
    if (entry.Refuses(warps::RefuseFar(m, Dst.Width, Dst.Height))) return false;
    Image src;
    if (entry.Refuses(warps::HoldSource(Src, Dst, false, src))) return false;
    return warps::FillAffine(m, src, Dst, interpolate);
}

/// Turns by the angle with cosine and sine `c`, `s` (divided by the scale) about an anchor.
AffineMap TurnAbout(const XY& source, const XY& destination, double c, double s)
{
    return {c,  s, source.X - (destination.X * c + destination.Y * s),
            -s, c, source.Y - (-destination.X * s + destination.Y * c)};
}

XY Difference(const XY& a, const XY& b)
{
    return {a.X - b.X, a.Y - b.Y};
}

} // namespace

int warps::RefuseFar(const AffineMap& m, std::int64_t width, std::int64_t height)
{
    constexpr double farthest = 2147483648.0;
    const double right = static_cast<double>(width - 1), bottom = static_cast<double>(height - 1);
    bool near = true;
    const auto check = [&near](double v) { near = near && std::abs(v) <= farthest; };
    for (const double v : {m.xx, m.xy, m.yx, m.yy})
        check(v);
    for (const double i : {0.0, right})
        for (const double j : {0.0, bottom}) {
            check(m.xx * i + m.xy * j + m.x0);
            check(m.yx * i + m.yy * j + m.y0);
        }
    if (near) return NoError;
    return Status::Format(OutOfRange, L"The transformation is not finite or leads too far from the source image");
}

bool warps::FillAffine(const AffineMap& m, const Image& src, Image& dst, bool interpolate, const RunSink& valid)
{
    const double half = interpolate ? 0 : 0.5;
    const FixedMap map{Fixed(m.xx), Fixed(m.xy), Fixed(m.x0 + half), Fixed(m.yx), Fixed(m.yy), Fixed(m.y0 + half)};
    return Fill(map, src, dst, interpolate, valid);
}

bool Geometry::Affine(double TXx, double TXy, double TX, double TYx, double TYy, double TY, const Image& Src,
                      Image& Dst, bool Interpolate)
{
    const Entry entry("Tesk::Geometry::Affine");
    if (entry.Refuses(warps::RefuseImages(Src, Dst, true))) return false;
    return Warp(entry, {TXx, TXy, TX, TYx, TYy, TY}, Src, Dst, Interpolate);
}

bool Geometry::Rotate(const XY& SrcAnchor, const XY& DstAnchor, double Angle, double Scale, const Image& Src,
                      Image& Dst, bool Interpolate)
{
    const Entry entry("Tesk::Geometry::Rotate");
    if (entry.Refuses(warps::RefuseImages(Src, Dst, true))) return false;
    const double a = ToRadians(Angle);
    return Warp(entry, TurnAbout(SrcAnchor, DstAnchor, std::cos(a) / Scale, std::sin(a) / Scale), Src, Dst,
                Interpolate);
}

bool Geometry::Rotate(const XY& SrcAnchor0, const XY& SrcAnchor1, const XY& DstAnchor0, const XY& DstAnchor1,
                      const Image& Src, Image& Dst, bool Scaling, bool Interpolate)
{
    const Entry entry("Tesk::Geometry::Rotate");
    if (entry.Refuses(warps::RefuseImages(Src, Dst, true))) return false;
    const XY d = Difference(DstAnchor1, DstAnchor0), e = Difference(SrcAnchor1, SrcAnchor0);
    const double q = d.X * d.X + d.Y * d.Y;
    double c = (d.Y * e.Y + d.X * e.X) / q, s = (d.Y * e.X - d.X * e.Y) / q;
    const double length = Scaling ? 1 : std::sqrt(c * c + s * s);
    if (q == 0 || length == 0) {
        entry.Refuse(OutOfRange, L"The given anchor points may not coincide");
        return false;
    }
    c /= length;
    s /= length;
    return Warp(entry, TurnAbout(SrcAnchor0, DstAnchor0, c, s), Src, Dst, Interpolate);
}

bool Geometry::Skew(const XY& SrcAnchor0, const XY& SrcAnchor1, const XY& SrcAnchor2, const XY& DstAnchor0,
                    const XY& DstAnchor1, const XY& DstAnchor2, const Image& Src, Image& Dst, bool Interpolate)
{
    const Entry entry("Tesk::Geometry::Skew");
    if (entry.Refuses(warps::RefuseImages(Src, Dst, true))) return false;
    const XY d1 = Difference(DstAnchor1, DstAnchor0), d2 = Difference(DstAnchor2, DstAnchor0);
    const XY s1 = Difference(SrcAnchor1, SrcAnchor0), s2 = Difference(SrcAnchor2, SrcAnchor0);
    const double area = d2.Y * d1.X - d2.X * d1.Y;
    if (area == 0) {
        entry.Refuse(OutOfRange, L"The given anchor points may not be aligned");
        return false;
    }
    AffineMap m{};
    m.xx = (d2.Y * s1.X - d1.Y * s2.X) / area;
    m.xy = (d1.X * s2.X - d2.X * s1.X) / area;
    m.yx = (d2.Y * s1.Y - d1.Y * s2.Y) / area;
    m.yy = (d1.X * s2.Y - d2.X * s1.Y) / area;
    m.x0 = SrcAnchor0.X - (DstAnchor0.X * m.xx + DstAnchor0.Y * m.xy);
    m.y0 = SrcAnchor0.Y - (DstAnchor0.X * m.yx + DstAnchor0.Y * m.yy);
    return Warp(entry, m, Src, Dst, Interpolate);
}

} // namespace Tesk
