// The lattice of a calibration target, found among the centres of its dots.
#pragma once

#include "image/geometry/GeometryModel.h"

#include <span>
#include <vector>

namespace Tesk::targets {

/// A dot of a target and its place: columns grow along image x and rows along image y, both from 1.
struct Dot
{
    XY centre;
    int column, row;
};

/// The areas of dots of one kind.
struct AreaRange
{
    int smallest = 0, largest = 0;
};

/// The longest run of areas, in the order of size, none of which reaches 2.5 times the first one.
AreaRange CommonAreas(std::vector<int> areas);

/// Numbers the dots whose lattice may be distorted, from the first one on that stands in a cross with its neighbours;
/// dots that the lattice does not reach are left out. The squares of one colour of a chessboard stand on diagonals.
/// `centres` are finite. An `ErrorCodes` value; may throw `std::bad_alloc`.
int NumberDots(std::span<const XY> centres, bool chessboard, std::vector<Dot>& dots);

/// What is known of a target: the distance of its dots or squares, and the column and row of its origin, from 0.
struct Target
{
    double gridStep;
    bool chessboard;
    XY origin;
};

/// What a target tells of a camera.
struct Calibration
{
    std::vector<AnchorPair> anchors;
    models::Fit fit;
    const char* refusedBy = nullptr; ///< under which name a model that does not fit the anchors is reported
    double trueLength = 0;           ///< of `lengthInPixels` in the middle of the image
};
inline constexpr double lengthInPixels = 20;

/// Fits a model from an image of that size to the coordinates of a target whose dots have these centres. An unknown
/// model is not fitted. An `ErrorCodes` value, as of `NumberDots` and `FitModel`, of which the latter leaves the
/// anchors that were found; may throw `std::bad_alloc`.
int Calibrate(std::span<const XY> centres, const Target& target, RegistrationModels model, int width, int height,
              Calibration& calibration);

} // namespace Tesk::targets
