// The snake gauge: an edge, or the two edges of a ribbon, checked along a curve of lines, arcs and splines.
#pragma once

#include "foundation/Handles.h"
#include "foundation/ReadOnly.h"
#include "foundation/ReadOnlyArray.h"
#include "foundation/Records.h"
#include "gauge/EdgePoint.h"

#include <cstddef>
#include <cstdint>
#include <span>
#include <vector>

namespace Tesk {

class Archive;
class Entry;
class Image;

namespace snakes {
struct EdgeLimits;
} // namespace snakes

/// What a node is: `HCorner` or `SCorner` at the ends of a section, which a spline passes smoothly at an `SCorner`;
/// `Circular`, `Spline` or `Elliptic` inside of one.
using SectionType = CornerHandles;

/// A node of a `Snake`. `In` and `Out` are the directions, of length 1, in which the axis comes and leaves.
struct SnakeNode
{
    XY Position{0, 0}, In{0, 0}, Out{0, 0};
    std::int32_t Sample = 0; ///< index of its axis sample
    SectionType Type = HCorner;
};

/// A point of the axis, about one pixel from the last, and what was found on the profile across it.
struct AxisSample
{
    double X = 0, Y = 0, TangentX = 1, TangentY = 0;
    /// Of the edge, and of the second edge of a ribbon: pixels from the axis, positive on the side that x turns to
    /// towards y, as seen along the axis; and their places.
    double Deviation = 0, Deviation2 = 0, EdgeX = 0, EdgeY = 0, Edge2X = 0, Edge2Y = 0;
    std::int32_t State = 0; ///< 0 missing, or not probed; 1 conforming; 2 intrusion; 3 protrusion
};

/// A part of the axis from one corner to the next.
struct SnakeSection
{
    SectionType Type = HCorner; ///< `HCorner` for a line, `Circular`, `Spline`, `Elliptic`; `Corner` closes the list
    std::int32_t FirstNode = 0, NumNodes = 0, FirstSample = 0, NumSamples = 0;
    std::int32_t NumPoints = 0; ///< edge points found
    std::int32_t NumIntrusions = 0, NumProtrusions = 0;
    double Deviation = 0;                      ///< sum of the deviations, squared with `RMS`
    double MinDeviation = 0, MaxDeviation = 0; ///< extremes among intrusions, and among protrusions
    XY FittedBeg{0, 0}, FittedEnd{0, 0}, FittedCenter{0, 0};
    double FittedRadius = 0;
};

/// A chain of nodes that describes a curve, the axis. A closed one has its first node again as its last.
///
///     Snake snake;
///     snake.Append({20, 80}, HCorner);
///     snake.Append({60, 40}, Circular); // an arc through three nodes
///     snake.Append({100, 80}, HCorner);
///
/// Places are in pixels of the image's window. Refused by all that add nodes: places that are not finite
/// (`OutOfRange`), no memory (`CannotAllocate`).
class Snake
{
    template <typename T>
    using Field = ReadOnly<T, Snake>;
    template <typename T>
    using Array = ReadOnlyArray<T, Snake>;

public:
    Field<int> Length; ///< number of nodes
    bool Closed = false;
    Array<SnakeNode> Nodes;
    Field<int> NumAxisSamples = -1; ///< -1 while the axis is not sampled
    Array<AxisSample> Samples;
    Array<SnakeSection> Sections; ///< and a closing record
    Field<int> NumSections;       ///< without the closing record
    GaugeWindow Window;
    Field<DraggingHandles> Handle = NoHandle; ///< last hit: `ToHandle` for a node, `AllHandle` for the axis

    /// Adds a node, at a position of the screen under `Graph::Zoom`, as the last one, or in a closed snake before the
    /// last one. Refused: a node in a wrong place or of no kind (`IncompatibleType`).
    void Append(XY Position, SectionType Type);
    /// Make a whole figure of an empty snake (`IncompatibleSize`) in units of the screen; sizes must be positive
    /// (`OutOfRange`). `Angle` in degrees, from the x axis towards the y axis.
    void CircleAppend(XY Center, double Radius);
    void EllipseAppend(XY Center, double FirstAxis, double SecondAxis, double Angle = 0);
    void RectangleAppend(XY Center, XY Sides, double Angle = 0);
    /// Makes the first node the last one, too, and the snake closed.
    void Close();
    void Clear();

    /// The node nearest to a position of the screen, the first of equals; -1 if there is none. Takes hold of it, or of
    /// the whole snake where the position is on the axis and on no node.
    int ClosestTo(XY Position);
    /// Moves what `ClosestTo` took hold of by as much as the position has moved.
    void Drag(XY Position);
    /// The axis in `Graph::LineColor`, its nodes with `Handles`.
    void Draw(bool Handles, bool Axis) const;

    void SetWindow(const Image& Mother);
    void SetWindow(int X, int Y, int Width, int Height);

    /// The nodes as a block of other files.
    void Transfer(Archive& Block);

protected:
    /// Samples the axis if that is out of date. An `ErrorCodes` value, with its message stored: `VoidObject` with fewer
    /// than 2 nodes, `OutOfRange` for an axis of more than 2^20 pixels, `CannotAllocate`.
    int Refresh();
    /// The same for one that must not change: `axis` is this snake, or `own`, sampled in its place.
    int Sampled(Snake& own, const Snake*& axis) const;
    /// Changes whenever the axis is sampled anew.
    std::int64_t Sampling() const { return sampling_; }
    void TransferNodes(Archive& block);
    void Empty();
    /// The number of the last change of the nodes, of which no other change of any snake has the same.
    std::int64_t Edition() const { return edition_; }

    std::vector<AxisSample>& WritableSamples() { return Samples.values_; }
    std::vector<SnakeSection>& WritableSections() { return Sections.values_; }
    XY InWindow(XY place) const { return {place.X + Window.X, place.Y + Window.Y}; }

private:
    int CheckAppend(XY place, SectionType type) const;
    void Add(XY place, SectionType type);
    void AddFigure(const Entry& entry, std::span<const XY> places, SectionType first, SectionType others);
    void Forget(); ///< the samples
    void Change(); ///< of the nodes
    void CollectSections();
    void SetTangents();
    bool SampleSections();
    XY SplineEnd(std::size_t section, bool first) const;
    bool IsEllipse() const;
    void MoveNode(int index, XY to);

    std::int64_t sampling_ = 0, edition_ = 0;
    int held_ = -1;
    Grab grab_;
};

/// Probes an image across the axis of a snake, every `Density` samples and `Breadth` pixels to both sides, and tells
/// for each probe whether the edge there, or the pair of edges of a ribbon, keeps to the curve.
///
///     SnakeGauge gauge;
///     gauge.RectangleAppend({320, 240}, {300, 200});
///     gauge.MaxDeviation = 2;
///     gauge.InspectEdge(image);
///     int intrusions, protrusions, missing;
///     gauge.NumAnomalies(10, intrusions, protrusions, missing);
///
/// Inspections take `Gray` and `Gray16` images, `Sample` `Rgb` ones, too (`UnsupportedType`, `VoidObject`). Refused
/// with all results as before, too: a snake of fewer than 2 nodes (`VoidObject`), an axis of more than 2^20 pixels, or
/// with more than 2^30 pixels in all probes (`OutOfRange`), no memory (`CannotAllocate`). Without a positive `Breadth`
/// there is no edge.
class SnakeGauge : public Snake
{
public:
    double Breadth = 32; ///< pixels that probes reach to each side, used up to 4096
    int Density = 3;     ///< axis samples from one probe to the next; below 1 it counts as 1
    int Thickness = 1;   ///< pixels over which a probe is averaged, used from 1 to 1024
    /// Of an edge, from one extreme of the profile to the next: the change of gray value, that change by sample, and
    /// the number of samples, which includes what is flat behind the first extreme; and changes that are ignored.
    int MinimumStep = 32, MinimumSlope = 0, MaximumSpan = 32, Noise = 10;
    int MinimumStep2 = Auto, MinimumSlope2 = Auto, MaximumSpan2 = Auto, Noise2 = Auto; ///< `Auto` as the first edge
    Polarities Polarity = Both, Polarity2 = Both;
    int Selection = BestStep, Selection2 = Auto; ///< a rank, from the end if negative, or an `EdgeSelection`
    double NominalWidth = 32;                    ///< of a ribbon, in pixels
    double MaxDeviation = 5;                     ///< pixels that an edge or a width may be off
    bool RMS = false;                            ///< sums squares of deviations

    /// Leaves no node and no measurement; the parameters stay.
    void Clear();

    /// Finds an edge on each probe and compares it with the axis of its section, which `Fit` first fits to the edges
    /// that agree with it; a spline has its linear trend taken off instead. An elliptic section is not fitted.
    void InspectEdge(const Image& Src, bool Fit = true);
    /// Finds two edges on each probe and compares their distance with `NominalWidth`. `Fit` fits the sections to the
    /// middles.
    void InspectRibbon(const Image& Src, bool Fit = true);
    /// The step, slope and span that a `Fraction` (0 to 1) of the edges on the probes does not exceed, and how many
    /// rise and fall. `MinimumSlope` does not count. False, with thresholds as they were, for fewer than 2 edges.
    bool AssessEdge(const Image& Src, double Fraction, int& StepThreshold, int& SlopeThreshold, int& SpanThreshold,
                    int& NumRaising, int& NumFalling, int Selection = OverCenter) const;
    /// Straightens the stripe: column `i` is the profile across axis sample `i`, whose deviation is `Breadth` less than
    /// the row.
    void Sample(const Image& Src, Image& Dst, bool Interpolate = true) const;

    /// Counts the runs of probes that are no conforming ones, and at least `MinLength` axis samples long. Refused, as
    /// by the next two: before an inspection (`OutOfRange`).
    void NumAnomalies(int MinLength, int& NumIntrusions, int& NumProtrusions, int& NumMissing) const;
    /// The axis sample of an index (`OutOfRange`), with its edge, or its two edges after `InspectRibbon`.
    AxisSample EdgePoint(int Index) const;
    AxisSample RibbonPoint(int Index) const;
    /// A section that is a line, or an arc, as it was fitted. Refused: an index out of range, another kind, a snake
    /// that was not sampled (`OutOfRange`).
    void SectionSegment(int Index, XY& Beg, XY& End) const;
    void SectionArc(int Index, XY& Beg, XY& End, XY& Center, double& Radius) const;

    /// The axis and nodes; with `Probes` the lines along which the image is probed.
    void Draw(bool Handles, bool Axis, bool Probes = false) const;
    /// The edges that were found, joined, and marked with `Points`, anomalies in red with `Graph::AutoColors`; with
    /// `Fitted` the fitted sections.
    void DrawEdge(bool Points, bool Fitted = false) const;

    /// ".sng" files, of versions 1 to 3. Refused: `CannotOpen`, `CannotRead` (nodes that are not there or are no
    /// places), `CannotWrite`, `UnsupportedFormat` (another file), `OutOfRange` (another version). Parameters that a
    /// short file lacks stay as they are; a longer existing file is not cut.
    void Read(const char* PathName);
    void Read(const wchar_t* PathName);
    void Write(const char* PathName) const;
    void Write(const wchar_t* PathName) const;
    /// The content of such a file.
    void Transfer(Archive& Block);

    /// With `KeepView` a copy. Else the nodes of a snake that have changed since they were last taken from there
    /// replace those of this gauge, which has its parameters, its window and its own changes of nodes to itself.
    void ShallowCopy(const SnakeGauge& Src, bool KeepView);

private:
    enum Inspections
    {
        NoInspection,
        EdgeInspection,
        RibbonInspection
    };

    int CheckWork(int samples) const;
    int Step() const { return Density < 1 ? 1 : Density; }
    int Inspect(const Image& src, bool fit, bool ribbon);
    void Probe(const Image& src, AxisSample& sample, bool ribbon);
    void JudgeSection(SnakeSection& section, bool fit, bool ribbon);
    /// Calls `visit(index, sample)` for the probes of a section that found what they sought.
    template <typename F>
    void VisitFound(const SnakeSection& section, F visit);
    void CollectPoints(const SnakeSection& section, bool ribbon);
    void FitLine(SnakeSection& section, bool fit, bool ribbon);
    void FitArc(SnakeSection& section, bool fit, bool ribbon);
    void RemoveTrend(const SnakeSection& section);
    void Judge(SnakeSection& section, AxisSample& sample, double deviation) const;
    void JudgeWidths(SnakeSection& section);
    void DrawFitted(const SnakeSection& section) const;
    int CheckInspected(bool ribbon) const;
    int CheckLocation(int index, bool ribbon) const;
    int CheckSection(int index) const;
    snakes::EdgeLimits FirstLimits() const;
    snakes::EdgeLimits SecondLimits() const;

    Inspections inspected_ = NoInspection;
    std::int64_t inspectedSampling_ = 0, takenEdition_ = 0;
    int inspectedStep_ = 1;
    std::vector<XY> points_; ///< of the section at hand, for its fit
    std::vector<std::int32_t> profile_, line_;
};

} // namespace Tesk
