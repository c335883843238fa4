// The ellipse gauge: a curved edge near a given ellipse or a part of one.
#pragma once

#include "gauge/EdgeRow.h"

#include <array>

namespace Tesk {

/// The five points of a reference ellipse; programs that are exported write them one by one.
struct EllipsePoints
{
    std::array<XY, 5> RefPoints{XY(0, 0), XY(0, 0), XY(0, 0), XY(0, 0), XY(0, 0)}; ///< in pixels
    XY &Beg = RefPoints[0], &Mid0 = RefPoints[1], &Mid1 = RefPoints[2], &Mid2 = RefPoints[3], &End = RefPoints[4];

    EllipsePoints() = default;
    EllipsePoints(const EllipsePoints& Other) : RefPoints(Other.RefPoints) {}
    EllipsePoints& operator=(const EllipsePoints& Other)
    {
        RefPoints = Other.RefPoints;
        return *this;
    }
};

/// Places probes across an ellipse and fits one to the edges that they find: a consensus search over the ellipses
/// through five of them, then the direct fit of Fitzgibbon, Pilu and Fisher (1999), as computed by Halir and Flusser
/// (1998), to those that agree. There is no fit if fewer than 5 are found or agree; a `Fitting` other than `FitOver` is
/// refused (`OutOfRange`). `Deviation` and `RobustDeviation` are root mean squares.
///
///     EdgeEllipse gauge;
///     gauge.Locate({320, 240}, 120, 80, 30, 40);
///     if (gauge.Detect(image)) std::printf("%.2f x %.2f\n", 2 * gauge.FittedFirstAxis, 2 * gauge.FittedSecondAxis);
class EdgeEllipse : public EdgeRow, public EllipsePoints
{
    template <typename T>
    using Field = ReadOnly<T, EdgeEllipse>;

public:
    XY Center{128, 0};                       ///< of the reference ellipse, in pixels
    double FirstAxis = 128, SecondAxis = 64; ///< its half axes
    double Angle = 0;                        ///< of the first one, in radians
    double StartParameter = 0;               ///< where the arc begins, in radians: (cos, sin) times the half axes
    double EndParameter = 6.283185307179586; ///< where it ends
    bool Closed = true;                      ///< the whole ellipse
    int RefState = 2; ///< what is out of date: 0 nothing, 1 the ellipse, 2 `RefPoints`, unless these were set
    Field<XY> FittedCenter = XY(128, 0);
    Field<double> FittedFirstAxis = 128.0, FittedSecondAxis = 64.0; ///< half axes, the longer one first as a rule
    Field<double> FittedAngle;                                      ///< of the first one, in degrees

    /// Places a whole ellipse; `Angle` in degrees.
    void Locate(XY Center, double FirstAxis, double SecondAxis, double Angle, double ProbeLength);
    /// Places the part of one between two parameters, in degrees.
    void Locate(XY Center, double FirstAxis, double SecondAxis, double Angle, double StartAngle, double EndAngle,
                double ProbeLength);

    /// Moves the reference onto the fitted ellipse, by the scale of `Geometry::SimpleCalibration`. Only in
    /// `FitState` 1.
    void Realign();

    /// ".ede" files. Refused as for `EdgePoint`.
    void Read(const char* PathName);
    void Read(const wchar_t* PathName);
    void Write(const char* PathName) const;
    void Write(const wchar_t* PathName) const;
    void Transfer(Archive& Block);

    /// The handle under a point of the screen, kept in `Handle`: `FromHandle`, `MiddleHandle0` to `MiddleHandle2` and
    /// `ToHandle` for the five points, `LengthHandle` for the length of the probes, `AllHandle` for the body.
    DraggingHandles HitHandle(int X, int Y);
    /// The way in which the handle moves, in eighths of a turn.
    int HandleOctant() const;
    /// Moves the handle last hit. A point stays where it is if there is no ellipse through the five, or a first half
    /// axis would reach 2,048 pixels.
    void Drag(int X, int Y);

private:
    bool Measure(const Image& src, int edgeIndex, const edges::WorldMap& world) override;
    void DrawOutline() const override;
    void DrawHandles() const override;
    void DrawFitted(const edges::WorldMap& world) const override;

    /// The reference ellipse, with its axes along (`cosine`, `sine`) and across.
    struct Reference
    {
        XY center;
        double first, second, cosine, sine, start, end;

        /// A point of the ellipse whose half axes are longer by `beyond`.
        XY At(double parameter, double beyond = 0) const;
        double ParameterOf(XY point) const;
        /// How far a point lies from the centre where the ellipse is a circle of its first half axis.
        double RadiusOf(XY point) const;
    };

    void Place(XY center, double firstAxis, double secondAxis, double degrees, double probeLength);
    Reference Ref() const;
    int Stale() const;
    bool RefThrough(const std::array<XY, 5>& points, Reference& reference) const;
    std::array<XY, 5> Points() const;
    void Refresh();
    bool FitPoints(const edges::WorldMap& world);
    XY LengthMark(const Reference& reference, int direction) const;

    std::array<XY, 5> known_ = RefPoints; ///< as they were when they agreed with the ellipse
    Grab grab_;                           ///< of the centre
};

} // namespace Tesk
