// The walk that finds the edges of a signal: up to a peak, down to a bottom, and so on, deaf to noise.
#pragma once

#include "foundation/Records.h"

namespace Tesk::profiles {

/// One edge: the two extrema between which the signal rises or falls.
struct EdgeStep
{
    int Start, End; ///< indexes of the extrema
    std::int64_t Low, High;
    bool Rising;

    std::int64_t Step() const { return High - Low; }
    int Span() const { return End - Start; }
    Polarities Polarity() const { return Rising ? Raising : Falling; }

    /// The first index at or beyond the middle level. It lies behind `Start`, since an edge has a step.
    template <typename T>
    int Crossing(const T* signal) const
    {
        const std::int64_t middle = Low + High;
        int i = Start + 1;
        while (Rising ? 2 * std::int64_t{signal[i]} < middle : 2 * std::int64_t{signal[i]} > middle)
            i++;
        return i;
    }

    /// Where the signal, taken as straight between its samples, crosses the middle level.
    template <typename T>
    double Position(const T* signal) const
    {
        const int i = Crossing(signal);
        const auto before = static_cast<double>(signal[i - 1]), after = static_cast<double>(signal[i]);
        return (static_cast<double>(Low + High) / 2 - before) / (after - before) + (i - 1);
    }
};

/// Calls `found(edge)` for every edge of the polarities asked for that steps at least by `minimumStep`, in their order.
/// A dip of up to `noise` does not end a rise, nor a bump a fall; of equal extrema the first one stands. A flat stretch
/// is no edge, whatever the minimum.
template <typename T, typename F>
void WalkEdges(const T* signal, int count, int minimumStep, int noise, Polarities polarity, F found)
{
    if (count < 1) return;
    const std::int64_t tolerance = Max(noise, 0), minimum = Max(minimumStep, 1);
    int valley = 0;
    for (;;) {
        int peak = valley, j = valley + 1;
        for (; j < count && std::int64_t{signal[j]} - signal[peak] >= -tolerance; j++)
            if (signal[j] > signal[peak]) peak = j;
        const EdgeStep rise{valley, peak, signal[valley], signal[peak], true};
        if ((polarity & Raising) && rise.Step() >= minimum) found(rise);
        if (j == count) return;

        int bottom = peak;
        for (j = peak + 1; j < count && std::int64_t{signal[j]} - signal[bottom] <= tolerance; j++)
            if (signal[j] < signal[bottom]) bottom = j;
        const EdgeStep fall{peak, bottom, signal[bottom], signal[peak], false};
        if ((polarity & Falling) && fall.Step() >= minimum) found(fall);
        if (j == count) return;
        valley = bottom;
    }
}

/// The edge that a selection means among those for which `accept(edge)` holds; false if there is none. `selection` is a
/// rank, one from the end where it is negative, or an `EdgeSelection`.
template <typename T, typename Accept>
bool SelectEdge(const T* signal, int count, int minimumStep, int noise, Polarities polarity, int selection,
                EdgeStep& selected, Accept accept)
{
    bool any = false;
    const auto take = [&](const EdgeStep& edge) {
        selected = edge;
        any = true;
    };
    const auto walk = [&](auto found) {
        WalkEdges(signal, count, minimumStep, noise, polarity, [&](const EdgeStep& edge) {
            if (accept(edge)) found(edge);
        });
    };
    switch (selection) {
    case BestSlope:
        walk([&](const EdgeStep& edge) {
            if (!any || edge.Step() * selected.Span() > selected.Step() * edge.Span()) take(edge);
        });
        return any;
    case BestStep:
        walk([&](const EdgeStep& edge) {
            if (!any || edge.Step() > selected.Step()) take(edge);
        });
        return any;
    case BestSpan:
        walk([&](const EdgeStep& edge) {
            if (!any || edge.Span() > selected.Span()) take(edge);
        });
        return any;
    case OverCenter:
        walk([&](const EdgeStep& edge) {
            if (2 * std::int64_t{edge.Start} <= count && count < 2 * std::int64_t{edge.End}) take(edge);
        });
        return any;
    default:
        break;
    }
    std::int64_t rank = selection, at = 0;
    if (rank < 0) {
        walk([&](const EdgeStep&) { rank++; });
        if (rank < 0) return false;
    }
    walk([&](const EdgeStep& edge) {
        if (at++ == rank) take(edge);
    });
    return any;
}

/// The same among all edges.
template <typename T>
bool SelectEdge(const T* signal, int count, int minimumStep, int noise, Polarities polarity, int selection,
                EdgeStep& selected)
{
    return SelectEdge(signal, count, minimumStep, noise, polarity, selection, selected,
                      [](const EdgeStep&) { return true; });
}

} // namespace Tesk::profiles
