// The line gauge: a straight edge near a given segment.
#pragma once

#include "gauge/EdgeRow.h"

namespace Tesk {

/// Places probes across a segment and fits a line to the edges that they find, without outliers, or lays one against
/// them from one side. There is no fit if fewer than 2 are found or they coincide. `FitState` is 2 for a line laid from
/// one side without a calibrator.
///
///     EdgeLine gauge;
///     gauge.Locate({320, 240}, 200, 0, 40); // 200 pixels along the x axis, probes of 40 pixels
///     gauge.Breadth = 5;
///     if (gauge.Detect(image)) std::printf("%.3f degrees\n", double(gauge.FittedAngle));
class EdgeLine : public EdgeRow
{
    template <typename T>
    using Field = ReadOnly<T, EdgeLine>;

public:
    /// The ends of the reference segment, in pixels; programs that are exported write them under their second names,
    /// so that those of the current probe are `From` and `To` here.
    /// @{
    union {
        XY RefBeg{0, 0};
        XY Beg;
    };
    union {
        XY RefEnd{0, 0};
        XY End;
    };
    /// @}
    Field<XY> FittedCenter = XY(0, 0);
    Field<XY> FittedBeg = XY(0, 0), FittedEnd = XY(0, 0); ///< as long as the reference segment
    Field<double> FittedAngle;                            ///< in degrees, from the x axis towards the y axis
    Field<double> FittedAngleRadians;

    /// Places the segment about a point; `Angle` in degrees.
    void Locate(XY Center, double Length, double Angle, double ProbeLength);

    /// Moves the segment onto the fitted line, by the scale of `Geometry::SimpleCalibration`. Only in `FitState` 1.
    void Realign();

    /// ".edl" files. Refused as for `EdgePoint`.
    void Read(const char* PathName);
    void Read(const wchar_t* PathName);
    void Write(const char* PathName) const;
    void Write(const wchar_t* PathName) const;
    void Transfer(Archive& Block);

    /// The handle under a point of the screen, kept in `Handle`: an end, `LengthHandle` for the length of the probes,
    /// `AllHandle` for the body.
    DraggingHandles HitHandle(int X, int Y);
    /// The way in which the handle moves, in eighths of a turn.
    int HandleOctant() const;
    void Drag(int X, int Y);

private:
    bool Measure(const Image& src, int edgeIndex, const edges::WorldMap& world) override;
    void DrawOutline() const override;
    void DrawHandles() const override;
    void DrawFitted(const edges::WorldMap& world) const override;

    bool FitOverPoints(XY& center, XY& direction);
    bool FitBeside(XY& center, XY& direction);
    bool Conclude(XY center, XY direction, const edges::WorldMap& world);
};

} // namespace Tesk
