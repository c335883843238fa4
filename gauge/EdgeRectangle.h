// The rectangle gauge: four straight edges, or two parallel ones, near the sides of a given rectangle.
#pragma once

#include "gauge/EdgeRow.h"
#include "measure/Quad.h"

#include <array>
#include <cstddef>
#include <functional>
#include <span>

namespace Tesk {

/// Places probes across the sides of a rectangle and fits to the edges that they find, without outliers, four lines
/// square to each other; or without `FourSides` two parallel lines, which measures a thickness. With `Fitting` other
/// than `FitOver` it is the smallest rectangle around them. Sides are numbered 0 to 3 in the order of a walk from the
/// first corner along the width. There is no fit if a side finds no edge, or all find fewer than 6, or than 4 without
/// `FourSides`.
///
///     EdgeRectangle gauge;
///     gauge.Locate({320, 240}, {200, 120}, 15, 40);
///     if (gauge.Detect(image)) std::printf("%.2f x %.2f\n", XY(gauge.FittedSize).X, XY(gauge.FittedSize).Y);
class EdgeRectangle : public EdgeRow
{
    template <typename T>
    using Field = ReadOnly<T, EdgeRectangle>;

public:
    Quad Rectangle;          ///< the reference, 64 x 64 pixels at first
    double AngleDegrees = 0; ///< its angle, as given to `Locate` or by a drag
    bool FourSides = true; ///< all sides are fitted; else sides 0 and 2, and the reference tells the extent along them
    Field<XY> FittedMiddle = XY(0, 0);
    Field<XY> FittedSize = XY(0, 0); ///< along sides 0 and 2, and across them
    Field<double> FittedAngle;       ///< in degrees, from the x axis towards the y axis
    Field<double> FittedAngleRadians;
    ReadOnlyArray<XY, EdgeRectangle> FittedCorners; ///< four, in the order of the sides

    EdgeRectangle();

    /// Places the reference about a point; `Angle` in degrees.
    void Locate(XY Center, XY Size, double Angle, double ProbeLength);

    /// The edges of a side, and those of them that are no outliers; `Side` is taken modulo 4.
    int NumDetectedPoints(int Side) const;
    int NumFittedPoints(int Side) const;

    /// Moves the reference onto the fitted rectangle, by the scale of `Geometry::SimpleCalibration`. Only in
    /// `FitState` 1.
    void Realign();

    /// ".edr" files. Refused as for `EdgePoint`.
    void Read(const char* PathName);
    void Read(const wchar_t* PathName);
    void Write(const char* PathName) const;
    void Write(const wchar_t* PathName) const;
    void Transfer(Archive& Block);

    /// The handle under a point of the screen, kept in `Handle`: corners and sides as those of `Quad`, `LengthHandle`
    /// for the length of the probes, `AllHandle` for the body.
    DraggingHandles HitHandle(int X, int Y);
    /// The way in which the handle moves, in eighths of a turn.
    int HandleOctant() const;
    void Drag(int X, int Y);

private:
    bool Measure(const Image& src, int edgeIndex, const edges::WorldMap& world) override;
    void DrawOutline() const override;
    void DrawHandles() const override;
    void DrawFitted(const edges::WorldMap& world) const override;

    /// The probes across a side: the middles of the outermost, and half of one.
    struct Side
    {
        XY first, last, half;
        int samples;
    };

    Side SideOf(int index) const;
    bool SampleSides(const Image& src, int edgeIndex);
    void CountMapped(const edges::WorldMap& world);
    bool HasEnough() const;
    std::span<const XY> PointsOf(int side) const;
    std::array<XY, 2> FirstSide(const edges::WorldMap& world) const;
    double ReferenceAngle() const;
    std::function<bool(std::size_t)> InliersOfSides(const edges::WorldMap& world) const;
    bool FitSides(const edges::WorldMap& world);
    bool FitAround(const edges::WorldMap& world);
    void Conclude(XY middle, XY size, double radians);
    XY LengthMark(int direction) const;

    std::array<int, 4> detected_{}, fitted_{};
};

} // namespace Tesk
