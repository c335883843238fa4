// The small plain records that pass between all classes: points, rectangles, poses, pixels, the palette.
#pragma once

#include "foundation/Enumerations.h"
#include "foundation/ReadOnly.h"

#include <cmath>
#include <cstdint>
#include <limits>

namespace Tesk {

class Archive;

/// Asks a method to work the value out itself. It lies one below `MinInt`, so a range test lets it through first.
inline constexpr int Auto = static_cast<int>(0x80000000u);
inline constexpr int MinInt = static_cast<int>(0x80000001u);
inline constexpr int MaxInt = 0x7fffffff;
inline constexpr float MinFloat = std::numeric_limits<float>::lowest(), MaxFloat = std::numeric_limits<float>::max();
/// An argument that was not given, where `Auto` would be a choice.
inline constexpr int NotInitialized = MinInt;

/// A point in image coordinates, sub-pixel.
struct XY
{
    double X, Y;

    XY() = default;
    XY(double x, double y) : X(x), Y(y) {}

    /// Draws the point; with `Handles` also the mark by which it is dragged.
    void Draw(bool Handles) const;
    /// The handle under a point of the screen; kept in `Handle` for `Drag`.
    DraggingHandles HitHandle(int x, int y) const;
    /// Moves the handle last hit to the pixel at a point of the screen: to whole coordinates.
    void Drag(int x, int y);

    static ReadOnly<DraggingHandles, XY> Handle;
};

inline XY operator+(XY a, XY b)
{
    return {a.X + b.X, a.Y + b.Y};
}

inline XY operator-(XY a, XY b)
{
    return {a.X - b.X, a.Y - b.Y};
}

inline XY operator*(double f, XY p)
{
    return {f * p.X, f * p.Y};
}

/// A pixel position.
struct Site
{
    std::int16_t X, Y;

    Site() = default;
    Site(int x, int y) : X(static_cast<std::int16_t>(x)), Y(static_cast<std::int16_t>(y)) {}

    void Draw(bool Handles) const;
    DraggingHandles HitHandle(int x, int y) const;
    void Drag(int x, int y);

    static ReadOnly<DraggingHandles, Site> Handle;
};

/// A vertex of a path of lines and arcs, and the curvature (one over the radius, in pixels) of the segment that leaves
/// it: 0 for a line, positive where the arc turns clockwise on the screen.
struct ArcSite
{
    std::int16_t X, Y;
    double Bulge;

    ArcSite() = default;
    ArcSite(int x, int y, double bulge = 0)
        : X(static_cast<std::int16_t>(x)), Y(static_cast<std::int16_t>(y)), Bulge(bulge)
    {}
};

/// A rectangle of pixels.
///
///     Limits box(10, 20, 100, 50);
///     box.Unite(Limits(80, 0, 60, 40)); // 10, 0, 130 x 70
///     box.Write("part.win");
struct Limits
{
    std::int16_t X, Y, Width, Height;

    Limits() = default;
    Limits(int x, int y, int width, int height)
        : X(static_cast<std::int16_t>(x)), Y(static_cast<std::int16_t>(y)), Width(static_cast<std::int16_t>(width)),
          Height(static_cast<std::int16_t>(height))
    {}

    std::int32_t Area() const { return std::int32_t{Width} * Height; }
    bool operator==(const Limits&) const = default;

    /// Grows to the smallest rectangle that holds both.
    void Unite(const Limits& Other);
    /// Extends the far edges to a point, or moves the near edges.
    void Stretch(int x, int y);
    /// Cuts to the overlap; false, and partly changed, if there is none.
    bool Intersect(const Limits& Other);

    /// Reads an Image Window file; an empty one changes nothing. Refused: `CannotOpen`, `UnsupportedFormat` (another
    /// file), `OutOfRange` (a later version), `CannotRead`.
    void Read(const char* PathName);
    void Read(const wchar_t* PathName);
    /// Writes an Image Window file; a longer existing file is not cut. Refused: `CannotOpen`, `CannotWrite`.
    void Write(const char* PathName) const;
    void Write(const wchar_t* PathName) const;
    /// The block form inside model files, with its own magic and version.
    void Transfer(Archive& Block);
};

/// Where a template lies: position in pixels, angle in degrees, scale as a factor.
struct Pose
{
    double X, Y, Angle, Scale, Score, Contrast;
};

/// A pose in space: position, and rotation in degrees about the three axes.
struct Pose3
{
    double X, Y, Z, AngleX, AngleY, AngleZ;
};

struct dXYZ
{
    double X, Y, Z;
};

using GrayPixel = std::uint8_t;
using Gray16Pixel = std::uint16_t;
using Gray32Pixel = std::int32_t;

/// A colour pixel, in memory blue first; constructed red first.
struct RgbPixel
{
    std::uint8_t Blue, Green, Red;

    RgbPixel() = default;
    constexpr RgbPixel(int red, int green, int blue)
        : Blue(static_cast<std::uint8_t>(blue)), Green(static_cast<std::uint8_t>(green)),
          Red(static_cast<std::uint8_t>(red))
    {}
    bool operator==(const RgbPixel&) const = default;
};
static_assert(sizeof(RgbPixel) == 3, "an image row is an array of these");

struct RgbaPixel
{
    std::uint8_t Blue, Green, Red, Alpha;

    RgbaPixel() = default;
    constexpr RgbaPixel(int red, int green, int blue, int alpha)
        : Blue(static_cast<std::uint8_t>(blue)), Green(static_cast<std::uint8_t>(green)),
          Red(static_cast<std::uint8_t>(red)), Alpha(static_cast<std::uint8_t>(alpha))
    {}
    bool operator==(const RgbaPixel&) const = default;
};
static_assert(sizeof(RgbaPixel) == 4, "an image row is an array of these");

/// One pixel of a gradient image.
struct Gradient
{
    std::int16_t X, Y;
    bool operator==(const Gradient&) const = default;
};
using GradPixel = Gradient;

/// The gray value for the strength of a gradient, the larger of its components without their signs: the gain tells by
/// how much its filter multiplies. Gains of 5 and 35 take no division.
constexpr int GradientGray(Gradient Value, int Gain)
{
    const int x = Value.X < 0 ? -Value.X : Value.X, y = Value.Y < 0 ? -Value.Y : Value.Y, strength = x > y ? x : y;
    const auto held = [](int gray) { return gray < 255 ? gray : 255; };
    switch (Gain) {
    case 3:
        return held(strength * 85 >> 8);
    case 4:
        return held(strength >> 2);
    case 6:
        return held(strength * 85 >> 9);
    case 8:
        return held(strength >> 3);
    case 15:
        return strength * 17 >> 8;
    default:
        return held(strength);
    }
}

/// One horizontal run of a region; `End` is exclusive.
struct LabeledRun
{
    std::int16_t Start, End, Y;
    std::int32_t Label;
};

/// One of the 64 palette colours: 0, 85, 170, 255 in each channel, red varying fastest.
constexpr RgbPixel PaletteColor(int Index)
{
    return {(Index & 3) * 85, (Index >> 2 & 3) * 85, (Index >> 4 & 3) * 85};
}

template <typename T>
constexpr T Abs(T Value)
{
    // The lowest whole number has no opposite: it gives the highest.
    if constexpr (std::numeric_limits<T>::is_integer)
        return static_cast<T>(
            Value < 0 ? -(Value < -std::numeric_limits<T>::max() ? -std::numeric_limits<T>::max() : Value) : Value);
    else
        return Value < 0 ? -Value : Value;
}
template <typename T>
constexpr T Min(T A, T B)
{
    return B < A ? B : A;
}
template <typename T>
constexpr T Max(T A, T B)
{
    return A < B ? B : A;
}
template <typename T>
constexpr T Sqr(T Value)
{
    return Value * Value;
}
template <typename T>
T Sqrt(T Value)
{
    return static_cast<T>(std::sqrt(Value));
}
template <typename T>
constexpr T Clamp(T Value, T Low, T High)
{
    return Value < Low ? Low : High < Value ? High : Value;
}

} // namespace Tesk
