// What a locator learned, what it found, and the buffers of a search.
#pragma once

#include "image/Image.h"
#include "match/Locator.h"
#include "match/locator/LocatorKernels.h"

#include <array>
#include <cstddef>
#include <cstdint>
#include <vector>

namespace Tesk::locator {

inline constexpr int mostLevels = 16, leastPixels = 64;
/// A level with fewer edge points is not searched by edges.
inline constexpr int leastEdges = 16;
/// Points of a model beyond this are thinned out.
inline constexpr int mostEdges = 3640;
inline constexpr double dead = -2.848e18, rejected = -1;

enum class Modes
{
    None,
    Rectangle,
    Disk,
    Mask
};

/// A pixel of an outline and the gradient there: left minus right, top minus bottom.
struct EdgeSample
{
    int x, y;
    std::int16_t gx, gy;
};

struct Level
{
    bool halved = true;  ///< made of the level before by halving, not as two thirds
    double factor = 1;   ///< reduction against level 0
    double step = 0;     ///< of the angle, in radians, and of the scale
    Image pattern, mask; ///< the mask in mode `Mask`
    int gradientThreshold = 0;
    std::vector<EdgeSample> edges;
};

struct Model
{
    Modes mode = Modes::None;
    int x = 0, y = 0; ///< the corner of the window that was learned
    int areaDepths = 0, edgesDepths = 0;
    std::array<Level, mostLevels> levels;

    /// The size of a level, limited to those that there are.
    const Level& At(int depth) const
    {
        return levels[static_cast<std::size_t>(depth < 0 ? 0 : depth < areaDepths ? depth : areaDepths - 1)];
    }

    /// Makes the other levels from level 0, of a known mode. An `ErrorCodes` value; may throw `std::bad_alloc`.
    int Build(bool edgeMask);
};

struct Masks
{
    std::array<Image, mostLevels> levels;

    /// Makes the other levels from level 0.
    int Build(const Model& model, int depths);
};

/// Reduces an image as a level of a model is made of the one before.
int ReduceTo(const Level& level, const Image& src, Image& dst);

struct Pixel
{
    int x, y;
};

/// A rectangle of pixels about an origin.
struct Box
{
    int x = 0, y = 0, width = 0, height = 0;
};

struct Candidate
{
    double score = 0, contrast = 0;
    int ix = 0, iy = 0, ia = 0, is = 0;
    double x = 0, y = 0, angle = 0, scale = 1;
    Box box;
    double area = 0;
    std::array<double, mostLevels> history{};
};

struct Locations
{
    std::vector<Candidate> list;
};

/// Turns by an angle and scales, between a pattern and an image.
struct Turn
{
    Turn(double angle, double scale, XY center, XY target);

    XY Forward(double x, double y) const { return {a * x + b * y + tx, a * y - b * x + ty}; }
    XY Inverse(double x, double y) const { return {ia * x + ib * y + itx, ia * y - ib * x + ity}; }

    double a, b, tx, ty, ia, ib, itx, ity;
};

/// Where a pattern lies whose origin is on a pixel.
XY TargetOf(const Image& pattern);

/// From the pixel of a candidate to the place that is reported of it, for a pattern of that width or height.
inline double PlaceOffset(int size)
{
    return (1 - (size & 1)) / 2.0;
}

/// The pixels of a turned pattern.
struct Area
{
    Box box;
    std::int64_t count = 0, sum = 0;
    double spread = 0; ///< count * sum of squares - sum * sum
    std::vector<kernels::PatternRun> runs;
    std::vector<std::uint8_t> pixels;

    /// Fills it for images whose rows are that many bytes apart; false if the pattern is larger than `limit` either
    /// way.
    bool Sample(const Model& model, const Level& level, double angle, double scale, std::ptrdiff_t pitch,
                const Box& limit);
};

/// The edges of a turned pattern.
struct Outline
{
    Box box;
    double inverseEnergy = 0;
    std::vector<Pixel> points;
    std::vector<std::int32_t> offsets, vectors;

    /// Fills points, box and vectors; false if they lie beyond `limit`.
    bool Sample(const Level& level, double angle, double scale, XY target, const Box& limit);
    /// The offsets of the points in a gradient image whose rows are that many pixels apart.
    void Place(std::ptrdiff_t pitch);
};

struct Score
{
    double score = rejected, contrast = 0;
};

/// The grid of angles and scales of a level.
struct Grid
{
    double angleOffset = 0, angleStep = 0, scaleOffset = 1, scaleStep = 0;
    int numAngles = 0, numScales = 0;
    bool fullTurn = false;

    double Angle(int i) const { return i * angleStep + angleOffset; }
    double Scale(int i) const { return i * scaleStep + scaleOffset; }
};

struct Settings
{
    double minAngle, maxAngle, minScale, maxScale, minScore, minContrast, maxOverlap;
    int maxLocations, stop, top;
    bool edges;
};

} // namespace Tesk::locator
