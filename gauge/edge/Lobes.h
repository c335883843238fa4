// The lobes of a derivative, each of which may be an edge.
#pragma once

#include "foundation/Records.h"

#include <cstdint>

namespace Tesk::edges {

/// A run of samples of the derivative beyond the noise.
struct Lobe
{
    int start = 0, span = 0;         ///< samples `start` to `start + span`
    std::int32_t peak = 0, step = 0; ///< extreme of the derivative, change of the signal
    bool rising = false;
};

/// What samples belong to a lobe, and what lobes are edges, in the units of the derivative.
struct LobeLimits
{
    std::int32_t rising, falling; ///< a sample above the one or below the other belongs to a lobe
    std::int32_t slope, step;
    int span;

    bool IsAbove(std::int32_t d) const { return d > rising; }
    bool IsBelow(std::int32_t d) const { return d < falling; }
    bool Accept(const Lobe& lobe) const
    {
        const int sign = lobe.rising ? 1 : -1;
        return sign * lobe.peak >= slope && sign * lobe.step >= step && lobe.span >= span;
    }
};

/// Whether a number has the sign of a polarity; `Both` takes all, what is no polarity none.
inline bool IsOf(std::int32_t value, Polarities polarity)
{
    return polarity == Raising ? value > 0 : polarity == Falling ? value < 0 : polarity == Both;
}

/// Differences of the samples on both sides of each; twice the one-sided ones at the ends. For 2 samples at the least.
inline void Derive(const std::int32_t* p, int n, std::int32_t* d)
{
    d[0] = 2 * (p[1] - p[0]);
    for (int i = 1; i < n - 1; i++)
        d[i] = p[i + 1] - p[i - 1];
    d[n - 1] = 2 * (p[n - 1] - p[n - 2]);
}

/// Calls `found(lobe)` for each lobe: all samples beyond a limit that follow each other.
template <typename F>
void PlainLobes(const std::int32_t* p, const std::int32_t* d, int n, const LobeLimits& limits, F found)
{
    Lobe lobe;
    bool open = false;
    const auto close = [&](int i) {
        lobe.span = i - lobe.start - 1;
        lobe.step = p[i - 1] - p[lobe.start];
        found(lobe);
    };
    for (int i = 0; i < n; i++) {
        const bool above = limits.IsAbove(d[i]), below = limits.IsBelow(d[i]);
        if (open) {
            if (lobe.rising ? above : below) {
                lobe.peak = lobe.rising ? Max(lobe.peak, d[i]) : Min(lobe.peak, d[i]);
                continue;
            }
            close(i);
        }
        open = above || below;
        if (open) lobe = {i, 0, d[i], 0, !below};
    }
    if (open) close(n);
}

/// The same, with lobes cut where the derivative turns back towards its extreme. A lobe has two samples at the least.
template <typename F>
void SplitLobes(const std::int32_t* p, const std::int32_t* d, int n, const LobeLimits& limits, F found)
{
    enum Classes
    {
        Outside,
        Climbing,
        Descending,
        Deepening,
        Returning
    };
    const auto classify = [&](std::int32_t a, std::int32_t b) {
        if (limits.IsAbove(a) && limits.IsAbove(b)) return b > a ? Climbing : Descending;
        if (limits.IsBelow(a) && limits.IsBelow(b)) return b <= a ? Deepening : Returning;
        return Outside;
    };
    Lobe lobe;
    Classes state = Outside;
    const auto extend = [&](std::int32_t b) { lobe.peak = lobe.rising ? Max(lobe.peak, b) : Min(lobe.peak, b); };
    const auto close = [&](int i) {
        lobe.span = i - lobe.start - 1;
        lobe.step = p[i - 1] - p[lobe.start];
        found(lobe);
    };
    for (int i = 1; i < n; i++) {
        const Classes next = classify(d[i - 1], d[i]);
        const bool turns = (state == Climbing && next == Descending) || (state == Deepening && next == Returning);
        const bool parts = (state == Descending && next == Climbing) || (state == Returning && next == Deepening);
        if (turns || (next == state && state != Outside)) {
            extend(d[i]);
        } else if (parts) {
            close(i);
            lobe = {i, 0, d[i], 0, lobe.rising};
        } else if (next != state) {
            if (state != Outside) close(i);
            if (next != Outside) {
                lobe = {i - 1, 0, d[i - 1], 0, next == Climbing || next == Descending};
                extend(d[i]);
            }
        }
        state = next;
    }
    if (state != Outside) close(n);
}

/// The sample at which a lobe is steepest, to a fraction. False without a sample on each side of it.
inline bool PlaceOf(const Lobe& lobe, const std::int32_t* d, int n, double& position)
{
    const std::int32_t sign = lobe.step < 1 ? -1 : 1;
    int first = lobe.start, last = lobe.start;
    for (int i = lobe.start + 1; i <= lobe.start + lobe.span; i++) {
        if (sign * d[i] > sign * d[first]) first = i;
        if (sign * d[i] >= sign * d[last]) last = i;
    }
    if (first == 0 || last == n - 1) return false;
    position = first;
    if (first != last) {
        position = (first + last) / 2.0;
    } else {
        const double a = d[first - 1], b = d[first], c = d[first + 1], den = c - 2 * b + a;
        if (den != 0) position = first - 0.5 * (c - a) / den;
    }
    return true;
}

} // namespace Tesk::edges
