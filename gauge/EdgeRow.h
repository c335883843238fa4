// What gauges have in common that place a row of probes and fit a shape to the edges that these find.
#pragma once

#include "gauge/EdgePoint.h"

#include <vector>

namespace Tesk {

class Entry;

namespace edges {

/// Memory that fits use again and again.
struct FitScratch
{
    std::vector<double> residuals, ordered;
    std::vector<XY> points;
};

} // namespace edges

/// The base of the gauges of a row of probes, of which `Beg` and `End` are the current one. Places count in pixels
/// before a fit, and in the units of the detection after it.
///
/// At most 65,536 probes are placed, and they do not read more than 2^28 pixels together: a gauge that would finds
/// nothing.
class EdgeRow : public EdgePoint
{
    template <typename T>
    using Field = ReadOnly<T, EdgeRow>;

public:
    /// Of each probe, which is centred on the reference shape; programs that are exported call it `Width`.
    union {
        double ProbeLength = 32;
        double Width;
    };
    double Density = 5;   ///< pixels from one probe to the next, 1 to 32
    double Clearance = 0; ///< pixels at the ends of the reference shape without a probe, 0 to 8
    bool Oblique = true;  ///< probes square to the reference shape; else only along rows and columns
    FittingSide Fitting = FitOver;
    Field<int> NumSamples;                   ///< probes of the last detection
    int SampleIndex = All;                   ///< `All`, or the index of the only probe that is looked at
    ReadOnlyArray<XY, EdgeRow> SamplePoints; ///< the edge of each probe that has the one selected
    Field<int> NumDetectedPoints;            ///< number of these
    Field<int> NumFittedPoints;              ///< number of those that are no outliers
    Field<double> Deviation;                 ///< mean distance of all points from the fitted shape
    Field<double> RobustDeviation;           ///< mean distance of those that are no outliers
    Field<int> FitState;                     ///< 0 without a fit, 1 with one

    EdgeRow() = default;
    EdgeRow(const EdgeRow& Other) = default;
    EdgeRow& operator=(const EdgeRow& Other) = default;
    EdgeRow(EdgeRow&& Other) = default;
    EdgeRow& operator=(EdgeRow&& Other) = default;
    virtual ~EdgeRow() = default;

    /// Finds the edge that `EdgeIndex` selects on each probe, a rank or an `EdgeSelection`, and fits the shape to them:
    /// in the units of `Geometry::SimpleCalibration`, or of a calibrator. Whether there is a fit. Refused: what
    /// `EdgePoint` refuses, and a `SampleIndex` beyond the probes (`OutOfRange`); what was fitted before then stays.
    bool Detect(const Image& Src, int EdgeIndex = BestStep);
    bool Detect(const Image& Src, const Geometry& Calibrator, int EdgeIndex = BestStep);

    /// Outlines where edges are looked for in `Graph::LineColor`, and the fitted shape; with `Handles` marks what can
    /// be dragged, with `Points` the points. The second form takes them back from the units of a calibrator.
    void Draw(bool Handles, bool Points) const;
    void Draw(bool Handles, bool Points, const Geometry& Calibrator) const;

protected:
    /// Takes a number of probes. True, with all results as before, if a `SampleIndex` beyond them, or an image that is
    /// not sampled was refused.
    bool Refuses(const Entry& entry, const Image& src, int samples);
    /// The number of probes over a length.
    int SamplesOver(double length) const;
    /// Forgets the points and the fit.
    void Restart();
    /// Runs the probes `first` to `last`, which `place(i)` sets, and adds their points. False after a failure, which
    /// is reported.
    template <typename F>
    bool RunProbes(const Image& src, int edgeIndex, int first, int last, F place);
    /// The same with all probes, or the one of `SampleIndex`.
    template <typename F>
    bool RunProbes(const Image& src, int edgeIndex, F place);
    /// Gives the points in the units of the result; those at a horizon are left out.
    void Transform(const edges::WorldMap& world);
    void SetQuality(int fitted, double deviation, double robust);
    void SetFitState(int state) { FitState = state; }
    void TransferSampling(Archive& block);
    void TransferFitting(Archive& block, bool present);

    edges::FitScratch scratch_;

private:
    /// The detection, with its results in the units of `world`.
    virtual bool Measure(const Image& src, int edgeIndex, const edges::WorldMap& world) = 0;
    virtual void DrawOutline() const = 0;
    virtual void DrawHandles() const = 0;
    /// In `FitState` 1.
    virtual void DrawFitted(const edges::WorldMap& world) const = 0;
    void DrawPoints(const edges::WorldMap& world) const;
    void DrawAll(bool handles, bool points, const edges::WorldMap& world) const;

    bool inPixels_ = true; ///< the points were not transformed
};

} // namespace Tesk
