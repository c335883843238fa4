// The signal of a probe as a plot, on which its thresholds are dragged.
#pragma once

#include "foundation/ReadOnly.h"
#include "foundation/Records.h"

namespace Tesk {

class EdgePoint;

/// Plots the signal of a gauge's probe in the upper half of a frame and its derivative in the lower one, in gray
/// levels, with the lines of the gauge's thresholds and a stroke at each edge.
///
///     EdgePlot plot;
///     plot.SetFrame(0, 0, 512, 512);
///     plot.Draw(gauge);
///     if (plot.HitHandle(x, y, gauge) != NoHandle) plot.Drag(x, y + 10, gauge); // moves a threshold of the gauge
class EdgePlot
{
    template <typename T>
    using Field = ReadOnly<T, EdgePlot>;

public:
    Field<int> X, Y, Width = 512, Height = 240;            ///< the frame
    int MinimumSignal = 0, MaximumSignal = 255;            ///< the levels at the ends of the upper half
    int MinimumDerivative = -128, MaximumDerivative = 128; ///< and of the lower half
    Field<double> StepCenter = 127;                        ///< the middle of the band as wide as `MinimumStep`
    Field<DraggingHandles> Handle = NoHandle;              ///< last hit
    Field<int> PointIndex = -1;                            ///< the edge whose mark was hit, for `PointHandle`

    void SetFrame(int X, int Y, int Width, int Height);

    /// Draws the curves in `Graph::LineColor`, thresholds and edges with `Graph::AutoColors` in colors of their own.
    /// Refused: no memory (`CannotAllocate`).
    void Draw(const EdgePoint& Gauge) const;
    /// The handle under a point of the screen, kept in `Handle`: `HighMinimumStepHandle` and `LowMinimumStepHandle` for
    /// the lines of the band, `HighMinimumSlopeHandle` and `LowMinimumSlopeHandle` for those of the slope where its
    /// polarity counts, `PointHandle` for the mark of an edge.
    DraggingHandles HitHandle(int X, int Y, const EdgePoint& Gauge);
    /// Moves the line last hit, and with it the threshold of the gauge.
    void Drag(int X, int Y, EdgePoint& Gauge);

private:
    struct Pane
    {
        double top, height, low, high;

        double PlaceOf(double value) const;
        double ValueAt(double y) const;
    };
    Pane SignalPane() const;
    Pane DerivativePane() const;
    double ColumnOf(double sample, int length) const;
    void DrawLevel(const Pane& pane, double value) const;
    void DrawThresholds(const EdgePoint& gauge) const;
};

} // namespace Tesk
