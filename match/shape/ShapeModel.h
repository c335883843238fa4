// A trained outline, its maps, and the match of another outline with it.
#pragma once

#include "image/Image.h"
#include "image/geometry/GeometryModel.h"

#include <cstdint>
#include <memory>
#include <span>
#include <vector>

namespace Tesk::shapes {

/// The area in pixels that all shapes are brought to, and the pixels about them in their maps.
inline constexpr double normalArea = 4096;
inline constexpr int mapMargin = 50;
/// Distances from here on are not told apart.
inline constexpr int farthest = 20;
inline constexpr int leastArea = 16, leastLength = 25;

struct ShapeModel
{
    int classIndex = 0, symmetry = 1;
    Limits box{0, 0, 0, 0};
    int area = 0;
    XY center{0, 0};
    double scale = 0; ///< brings the shape to the normal area
    std::vector<Site> outline;
    Image distances; ///< chessboard distance to the outline, up to `farthest`
    Image nearest;   ///< the closest pixel of the outline, `Grad`; -1, -1 if that is farther

    XY MapCenter() const { return {(distances.Width - 1) / 2.0, (distances.Height - 1) / 2.0}; }

    /// Makes the maps of the outline and what goes with it. An `ErrorCodes` value; may throw `std::bad_alloc`.
    int Build();
    /// Makes the maps of the pixels below 128 of a `Gray` image.
    int Build(const Image& edges);

private:
    int Size(double width, double height);
    int Spread();
};

/// How an outline lies on the maps of a shape.
struct Match
{
    const ShapeModel* shape = nullptr;
    int index = -1;
    double error = 0;
    models::Coefficients transform{}; ///< from the outline to the maps

    XY Place() const; ///< the shape's centre, in the coordinates of the outline
    double Scale() const;
    double Radians() const;
};

/// Area (without its fraction) and centroid; false for an outline without area.
bool Measure(std::span<const Site> outline, int& area, XY& center);

/// Matches an outline with a shape; false if they have too little in common.
bool MatchOutline(std::span<const Site> outline, const XY& center, double scale, const ShapeModel& shape, Match& match);

} // namespace Tesk::shapes
