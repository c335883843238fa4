// A row of probes: where they stand, and how their edges become points.
#pragma once

#include "foundation/Entry.h"
#include "gauge/EdgeRow.h"
#include "image/core/Refusals.h"

#include <cmath>

namespace Tesk {

namespace edges {

/// Beyond it a row of probes would take longer than anybody waits.
inline constexpr double mostPixelsOfRow = 1 << 28;

/// Under which the failures of a probe are reported.
inline constexpr const char* probeContext = "Tesk::EdgePoint::_Detect";

/// Between two values, of `count` at equal distances the one of an index; the middle where there is only one.
inline double Spaced(double first, double last, int index, int count)
{
    if (count < 2) return (first + last) / 2;
    return (static_cast<double>(index) * last + static_cast<double>(count - 1 - index) * first) / (count - 1);
}

inline XY Spaced(XY first, XY last, int index, int count)
{
    return {Spaced(first.X, last.X, index, count), Spaced(first.Y, last.Y, index, count)};
}

inline double LengthOf(XY from, XY to)
{
    return std::hypot(to.X - from.X, to.Y - from.Y);
}

/// A way from the middle of a circle outwards.
inline XY Radially(double radius, double radians)
{
    return {radius * std::cos(radians), radius * std::sin(radians)};
}

/// The ends of a segment without a part of it at each of them.
struct Stretch
{
    XY from, to;

    Stretch(XY beg, XY end, double part)
        : from((1 - part) * beg.X + part * end.X, (1 - part) * beg.Y + part * end.Y),
          to((1 - part) * end.X + part * beg.X, (1 - part) * end.Y + part * beg.Y)
    {}
};

/// Half a probe across a segment: square to it, or upright the way it is nearer to.
inline XY HalfProbe(XY beg, XY end, double length, double probeLength, bool oblique)
{
    const double half = probeLength / 2, dx = end.X - beg.X, dy = end.Y - beg.Y;
    if (oblique) return {-dy * half / length, dx * half / length};
    if (std::abs(dx) >= std::abs(dy)) return {0, beg.X > end.X ? -half : half};
    return {beg.Y > end.Y ? half : -half, 0};
}

} // namespace edges

template <typename F>
bool EdgeRow::RunProbes(const Image& src, int edgeIndex, int first, int last, F place)
{
    const int code = WithMemory(images::noWorkingMemory, [&]() -> int {
        double read = 0;
        for (int i = first; i <= last; i++) {
            place(i);
            if (const int failure = Probe(src)) return failure;
            if (const Edge* edge = Selected(edgeIndex, Polarity)) SamplePoints.values_.emplace_back(edge->X, edge->Y);
            read += static_cast<double>(SignalLength + Smoothing) * Max(Breadth, 1);
            if (read > edges::mostPixelsOfRow) {
                SamplePoints.values_.clear();
                break;
            }
        }
        return NoError;
    });
    NumDetectedPoints = static_cast<int>(SamplePoints.size());
    return !Status::Raise(code, edges::probeContext);
}

template <typename F>
bool EdgeRow::RunProbes(const Image& src, int edgeIndex, F place)
{
    if (SampleIndex != All) return RunProbes(src, edgeIndex, SampleIndex, SampleIndex, place);
    return RunProbes(src, edgeIndex, 0, NumSamples - 1, place);
}

} // namespace Tesk
