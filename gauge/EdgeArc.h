// The arc gauge: a round edge near a given arc or circle.
#pragma once

#include "gauge/EdgeRow.h"

namespace Tesk {

/// Places probes across an arc and fits a circle to the edges that they find, without outliers, or lays the smallest
/// circle around them; with a calibrator, `Fitting` is taken as `FitOver`. There is no fit if fewer than 3 are found or
/// they lie on a line.
///
///     EdgeArc gauge;
///     gauge.Locate({320, 240}, 80, 40); // a circle of radius 80, probes of 40 pixels
///     if (gauge.Detect(image)) std::printf("radius %.3f\n", double(gauge.FittedRadius));
class EdgeArc : public EdgeRow
{
    template <typename T>
    using Field = ReadOnly<T, EdgeArc>;

public:
    /// The three points through which the reference arc runs, in pixels; programs that are exported write them under
    /// their second names, so that the ends of the current probe are `From` and `To` here.
    /// @{
    union {
        XY ArcBeg{0, 0};
        XY Beg;
    };
    union {
        XY ArcMid{0, 0};
        XY Mid;
    };
    union {
        XY ArcEnd{0, 0};
        XY End;
    };
    /// @}
    /// \name What follows from them
    /// As of the latest placing, drag or detection; three points on a line leave it as it was.
    /// @{
    Field<XY> Center = XY(0, 0);
    Field<double> Radius;
    Field<double> StartAngle, EndAngle; ///< in radians, `EndAngle` not below `StartAngle`
    /// @}
    bool Closed = false; ///< a full circle
    Field<XY> FittedCenter = XY(0, 0);
    Field<double> FittedRadius;

    /// A full circle; `ProbeLength` is truncated.
    void Locate(XY Center, double Radius, double ProbeLength);
    /// An arc between two directions in degrees.
    void Locate(XY Center, double Radius, double StartAngle, double EndAngle, double ProbeLength);

    /// Finds the edges that cross the arc, in the mean over the length of the probes, to be asked for as those of an
    /// `EdgePoint`, in pixels and degrees. Leaves `Breadth` at that length, and `FitState` at 2. Refused: a void image
    /// (`VoidObject`), other types than `Gray` (`UnsupportedType`), a ring beyond all measure (`OutOfRange`), no memory
    /// (`CannotAllocate`).
    void DetectAlong(const Image& Src);

    /// Moves the arc onto the fitted circle, by the scale of `Geometry::SimpleCalibration`. Only in `FitState` 1.
    void Realign();

    /// ".eda" files. Refused as for `EdgePoint`.
    void Read(const char* PathName);
    void Read(const wchar_t* PathName);
    void Write(const char* PathName) const;
    void Write(const wchar_t* PathName) const;
    void Transfer(Archive& Block);

    /// The handle under a point of the screen, kept in `Handle`: one of the three points, `LengthHandle` for the length
    /// of the probes, `AllHandle` for the ring.
    DraggingHandles HitHandle(int X, int Y);
    /// The way in which the handle moves, in eighths of a turn.
    int HandleOctant() const;
    void Drag(int X, int Y);

private:
    bool Measure(const Image& src, int edgeIndex, const edges::WorldMap& world) override;
    void DrawOutline() const override;
    void DrawHandles() const override;
    void DrawFitted(const edges::WorldMap& world) const override;

    bool Refresh();
    void PlaceCircle(XY center, double radius, double probeLength);
    void PlaceArc(XY center, double radius, double startRadians, double endRadians, double probeLength);
    void Take(XY center, double radius, double startRadians, double endRadians);
    /// Where the probes end, in radians.
    double SweepEnd() const;
    XY OnArc(double radians, double radius) const;
    bool FitOverPoints(XY& center, double& radius);
    int Along(const Image& src);
    XY PointAtHand() const;

    Grab grab_;
};

} // namespace Tesk
