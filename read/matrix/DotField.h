// The dots of an image that can be those of DotCode symbols, and what lies near to a place.
#pragma once

#include "foundation/DisjointSets.h"
#include "foundation/Enumerations.h"
#include "foundation/Records.h"
#include "read/matrix/BinaryImage.h"

#include <array>
#include <cstddef>
#include <cstdint>
#include <span>
#include <vector>

namespace Tesk::matrix {

/// A linear map of the plane and its inverse.
class Deformation
{
public:
    /// The vectors that the axes become. A map without an inverse is taken for none.
    void Set(XY x, XY y);
    XY Apply(XY p) const { return {x_.X * p.X + y_.X * p.Y, x_.Y * p.X + y_.Y * p.Y}; }
    XY Undo(XY p) const { return 1 / Determinant() * XY(y_.Y * p.X - y_.X * p.Y, x_.X * p.Y - x_.Y * p.X); }

private:
    double Determinant() const { return x_.X * y_.Y - y_.X * x_.Y; }

    XY x_{1, 0}, y_{0, 1};
};

struct Dot
{
    XY center{0, 0}; ///< the deformation undone
    int area = 0, boxWidth = 0, boxHeight = 0;
    double nearest = 0; ///< squared distance to the nearest other dot
    int next = -1;      ///< in the same place of the hash table
    int failures = 0;   ///< lattices with it that were not read
    bool used = false;  ///< by a symbol read

    int Box() const { return boxWidth * boxHeight; }
};

/// What is taken for a dot.
struct DotRules
{
    int boxSize = 35;       ///< of the square whose mean a dot is compared with
    int leastContrast = 15; ///< to that mean
    int leastArea = 6;
    double smallestShare = 0.6, largestShare = 1.7; ///< of the usual area, and box
};

class DotField
{
public:
    static constexpr std::size_t mostDots = 16384;
    static constexpr std::size_t fewestDots = 12;

    /// Finds round spots, darker than what is around or with `WhiteOnBlack` lighter, that have the size of most and a
    /// common distance. False if there are fewer than `fewestDots`, or too many to tell. Throws `std::bad_alloc`.
    bool Find(const Image& gray, CodePolarities polarity, const Deformation& deformation, const DotRules& rules);

    std::vector<Dot>& Dots() { return dots_; }
    const std::vector<Dot>& Dots() const { return dots_; }
    const Dot& operator[](int i) const { return dots_[static_cast<std::size_t>(i)]; }
    /// The square of the distance between neighbours, along a diagonal of the cells.
    double SquaredPitch() const { return squaredPitch_; }

    /// The free dot nearest to a place, within a squared distance; -1 for none.
    int Nearest(XY place, double squaredReach) const;
    /// Free dots within a squared distance, at most so many as `found` takes. How many.
    std::size_t Around(XY place, double squaredReach, std::span<int> found) const;

private:
    struct Run
    {
        int first, end, label;
    };
    struct Spot
    {
        int area = 0, left = 0, right = 0, top = 0, bottom = 0;
        std::int64_t sumX = 0, sumY = 0;
    };

    bool FindSpots(const Image& gray, CodePolarities polarity, const Deformation& deformation);
    void LabelRow(const std::uint8_t* dark, int width, int y);
    void Join(int a, int b);
    bool TakeSpots(int width, int height, const Deformation& deformation);
    bool KeepTypical();
    bool IsUsual(double value, double usual) const;
    bool FindPitch();
    void Hash(double cell);
    std::size_t Bucket(std::int64_t column, std::int64_t row) const;
    template <typename F>
    void EachNear(XY place, double squaredReach, F f) const;

    WorkImage means_;
    std::vector<std::uint8_t> dark_;
    std::vector<Run> above_, row_;
    DisjointSets labels_;
    std::vector<Spot> spots_;
    std::vector<Dot> dots_;
    std::vector<double> sorted_;
    std::vector<int> buckets_;
    DotRules rules_;
    double cell_ = 1, squaredPitch_ = 1;
};

} // namespace Tesk::matrix
