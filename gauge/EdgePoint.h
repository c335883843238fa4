// The point gauge: edges that cross a short straight probe, each to a fraction of a pixel.
#pragma once

#include "foundation/Handles.h"
#include "foundation/ReadOnly.h"
#include "foundation/ReadOnlyArray.h"
#include "foundation/Records.h"

#include <cstdint>
#include <vector>

namespace Tesk {

class Archive;
class Geometry;
class Image;

namespace edges {
class WorldMap;
struct Lobe;
} // namespace edges

/// An edge on a probe.
struct Edge
{
    std::int32_t Slope; ///< extreme of the derivative, in gray levels for two samples; its sign is the polarity
    std::int32_t Span;  ///< width of the transition, in samples
    std::int32_t Step;  ///< change of the signal across the transition, in gray levels
    std::int32_t Start; ///< index of the sample at which the transition begins
    double Position;    ///< samples from the beginning of the probe; after `EdgeArc::DetectAlong`, degrees
    double X, Y;        ///< in pixels, or in the units of the detection
};

/// The rectangle of a picture in which a gauge is drawn and dragged, and from whose corner its places count.
struct GaugeWindow
{
    int X = 0, Y = 0, Width = 512, Height = 512;
};

/// Samples a picture along the probe from `Beg` to `End`, every pixel, and finds the edges that cross it. The other
/// gauges derive from this one and place its probe again and again.
///
/// Detections take `Gray` and `Rgb` images. Refused, with no edge: a void image (`VoidObject`), other types
/// (`UnsupportedType`), no memory (`CannotAllocate`). A probe that is shorter than its smoothing needs, one whose
/// places are no numbers or that takes more than 2^22 samples or 2^27 pixels, and one in an `Rgb` image that leaves it
/// find no edge, which is no failure.
///
///     EdgePoint gauge;
///     gauge.Locate({320, 240}, 60, 0); // a horizontal probe of 60 pixels
///     gauge.Breadth = 5;
///     gauge.MinimumStep = 20;
///     if (gauge.Detect(image)) {
///         const Edge edge = gauge.FittedEdge(BestStep, Both); // edge.X is 327.42
///     }
class EdgePoint
{
    template <typename T>
    using Field = ReadOnly<T, EdgePoint>;
    template <typename T>
    using Array = ReadOnlyArray<T, EdgePoint>;

public:
    /// The ends of the probe, in pixels; programs that are exported write them under their second names.
    /// @{
    union {
        XY Beg{0, 0};
        XY From;
    };
    union {
        XY End{0, 0};
        XY To;
    };
    /// @}
    int Breadth = 1;      ///< pixels across the probe that are added up, 1 to 1024
    int Smoothing = 1;    ///< samples along the probe that are added up, 1 to 63; made odd by a detection
    int Noise = 5;        ///< changes weaker than this are ignored, in gray levels for two samples, 0 to 255
    int MinimumSlope = 0; ///< of an edge, in gray levels for two samples, 0 to 255
    int MinimumStep = 50; ///< of an edge, in gray levels, 0 to 255
    int MinimumSpan = 0;  ///< of an edge, in samples, 0 to 64
    Polarities Polarity = Both;
    bool SplitPeaks = false; ///< separates edges of the same polarity that touch
    /// Places each edge by a blurred step that is fitted to its samples, instead of by the vertex of a parabola through
    /// three values of the derivative: less bias and less scatter, for edges that are alone within their blur.
    bool StepModel = false;

    Array<std::int32_t> Signal;     ///< the sums of pixels along the probe
    Array<std::int32_t> Derivative; ///< differences of the samples on both sides of each
    Array<Edge> Edges;              ///< of the last detection, in the order of the probe
    Field<int> SignalLength, NumEdges;
    Field<int> Scale = 1; ///< pixels and channels in each value of `Signal`
    GaugeWindow Window;
    Field<DraggingHandles> Handle = NoHandle; ///< last hit: `FromHandle`, `ToHandle`, or `AllHandle` for the body

    /// Places the probe about a point; `Angle` in degrees, from the x axis towards the y axis.
    void Locate(XY Center, double Length, double Angle);

    /// Finds the edges and gives their places in the units of `Geometry::SimpleCalibration`, or of a calibrator, whose
    /// infinite places are left out. Whether there are any.
    bool Detect(const Image& Src);
    bool Detect(const Image& Src, const Geometry& Calibrator);

    /// The number of edges that rise, that fall, or of all.
    int NumPoints(Polarities Polarity) const;
    /// The edge of a rank, from the end where it is negative, or of an `EdgeSelection`, among those of a polarity.
    /// Refused, with all zero: a selection that finds none (`OutOfRange`).
    Edge FittedEdge(int Index, Polarities Polarity) const;
    /// Its place in the edge's own units times the scale of `Geometry::SimpleCalibration`, or mapped by a calibrator.
    /// Refused as above.
    XY FittedPoint(int Index, Polarities Polarity) const;
    XY FittedPoint(const Geometry& Calibrator, int Index, Polarities Polarity) const;

    /// ".edp" files: ends and parameters. Refused: `CannotOpen`, `CannotRead`, `CannotWrite`, `UnsupportedFormat`
    /// (another file), `OutOfRange` (a later version). What a short file lacks stays as it is; a longer existing file
    /// is not cut.
    void Read(const char* PathName);
    void Read(const wchar_t* PathName);
    void Write(const char* PathName) const;
    void Write(const wchar_t* PathName) const;
    /// The content of such a file.
    void Transfer(Archive& Block);

    void SetWindow(const Image& Mother);
    void SetWindow(const Limits& Window);
    void SetWindow(int X, int Y, int Width, int Height);

    /// Outlines the probe in `Graph::LineColor`; with `Handles` marks its ends, with `Points` strokes across its edges.
    void Draw(bool Handles, bool Points) const;
    /// The handle under a point of the screen; kept in `Handle` for `Drag`.
    DraggingHandles HitHandle(int X, int Y);
    /// The direction of the gauge in eighths of a turn.
    int HandleOctant() const;
    /// Moves the handle last hit to a point of the screen.
    void Drag(int X, int Y);

protected:
    /// Places the probe about its middle.
    void PlaceProbe(XY middle, XY half);
    /// The detection in pixels, from `Beg` to `End`. An `ErrorCodes` value, with its message stored and not reported.
    int Probe(const Image& src);
    /// The edge that a selection means among those of the last detection; null if there is none.
    const Edge* Selected(int index, Polarities polarity) const;
    /// Gives each edge another place; edges for which `place(edge)` is false are left out.
    template <typename F>
    void Replace(F place)
    {
        std::erase_if(Edges.values_, [&](Edge& edge) { return !place(edge); });
        NumEdges = static_cast<int>(Edges.size());
    }
    /// The parameters of the detection, as all files of gauges hold them.
    void TransferAnalysis(Archive& block);
    /// Outlines the probe, and strokes across its edges if asked.
    void DrawProbe(bool points) const;
    ScreenPointer PointerAt(int x, int y) const;
    /// The handle of a segment under the pointer: an end, or what extends along it, `breadth` image pixels wide.
    DraggingHandles HitSegment(const ScreenPointer& pointer, XY from, XY to, double breadth);
    /// Moves what was hit of a segment.
    void DragSegment(const ScreenPointer& pointer, XY& from, XY& to) const;
    DraggingHandles SetHandle(DraggingHandles handle) { return Handle = handle; }
    /// A place in the picture, for drawing.
    XY InWindow(XY place) const { return {place.X + Window.X, place.Y + Window.Y}; }

private:
    bool Sample(const Image& src, int& code);
    void FindEdges();
    double Refined(const edges::Lobe& lobe, int noise, double position) const;
    double SkewAt(double position) const;
    bool Rescale(const edges::WorldMap& world);
    int Count(Polarities polarity) const;
    int Missing(int index, Polarities polarity) const;
    XY PointOf(int index, Polarities polarity, const edges::WorldMap& world) const;

    XY direction_{1, 0};            ///< of the probe last sampled
    std::vector<std::int32_t> raw_; ///< its samples before they are smoothed, for `StepModel`
    Grab grabBeg_, grabEnd_;
};

} // namespace Tesk
