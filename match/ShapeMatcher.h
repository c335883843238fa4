// The shape matcher: tells which of some trained outlines another one looks like.
#pragma once

#include "foundation/ReadOnly.h"
#include "foundation/Records.h"

#include <memory>
#include <numbers>
#include <span>
#include <vector>

namespace Tesk {

class Archive;
class Blobs;
class Entry;
class Image;
class Path;

namespace shapes {
struct Match;
struct ShapeModel;
} // namespace shapes

/// Compares closed outlines, whatever their place and angle, with maps of the distance to trained ones: first at some
/// angles, then by fitting a similarity to the closest points (Besl and McKay 1992). Outlines are brought to an area of
/// 4096 pixels, in which distances are told: the smaller, the more alike.
///
/// Refused: recognition without training (`VoidObject`), no memory (`CannotAllocate`).
///
///     ShapeMatcher matcher;
///     matcher.Train(outline, 1);
///     if (matcher.Recognize(other) >= 0) std::printf("%.1f degrees\n", double(matcher.Angle));
class ShapeMatcher
{
    template <typename T>
    using Field = ReadOnly<T, ShapeMatcher>;

public:
    Field<int> NumTrained;     ///< shapes
    double MaxSimilarity = 50; ///< greatest distance at which an outline is recognized; blobs are not held to it
    double MinAngle = -std::numbers::pi, MaxAngle = std::numbers::pi; ///< kept with the model for its users; radians
    double MinScale = 0.7, MaxScale = 1.41;                           ///< of a trained shape against what is compared
    Field<int> Class;                                                 ///< of the shape last recognized
    Field<double> X, Y;                                               ///< the centre of that shape, in pixels
    Field<double> Angle;                                              ///< in degrees
    Field<double> Scale;                                              ///< of the shape against what was recognized
    Field<double> Similarity;                                         ///< distance from the shape
    Field<int> Matched = -1;                                          ///< index of that shape, -1 for none
    static int Selected; ///< the shape chosen in the display of any matcher, -1 for none

    /// Learns a closed outline. `Symmetry` is 1, 2 (half a turn) or 4 (a quarter turn). Refused: an area below 16 or a
    /// perimeter below 25 pixels (`OutOfRange`).
    void Train(const Path& Outline, int ClassIndex, int Symmetry = 1);
    /// Learns the pixels below 128 of a `Gray` image (`UnsupportedType`), of which there must be 25 (`OutOfRange`).
    void Train(const Image& Edges, int ClassIndex, int Symmetry);
    /// Learns the outline of a blob. Refused as an outline, and: no blob (`VoidObject`), a wrong index (`OutOfRange`).
    void TrainBlob(const Blobs& Src, int BlobIndex, int ClassIndex, int Symmetry = 1);
    /// Forgets all shapes.
    void Clear();
    /// Forgets the shape that is selected.
    void DeleteSelected();

    /// The index of the shape that an outline looks like most, whose place goes into the fields above; -1, and the
    /// fields stay, if none is like it.
    int Recognize(Path& Outline);
    /// Gives blobs the class, and as features the score and the place, of the shape that each looks like most. Blobs
    /// that look like none keep what they have. Refused, too: a wrong index (`OutOfRange`).
    void RecognizeBlobs(Blobs& Src, int BlobIndex = AllSelected);

    /// ".shm" files. Refused: those that cannot be opened (`CannotOpen`), are none (`CannotPerform`, without message),
    /// of a newer version (`UnsupportedFormat`) or broken (`CannotRead`; all shapes are then gone).
    void Read(const char* PathName);
    void Read(const wchar_t* PathName);
    void Write(const char* PathName) const;
    void Write(const wchar_t* PathName) const;
    void Transfer(Archive& Block);

    /// Draws one shape, or all for -1, in rows. Refused: a wrong index (`OutOfRange`), an area that cannot hold them
    /// (`CannotPerform`; those that fit are drawn).
    void DrawTrained(Limits Area, int ShapeIndex, bool ViewClasses, bool Scaled) const;
    /// Draws the shape last recognized where it was found.
    void DrawMatched(bool ViewClass, bool ViewSimilarity) const;
    /// The shape under a point of the screen, which is selected; -1 if none is.
    int HitShape(Limits Area, int X, int Y, bool Scaled = false) const;

    /// Shares the shapes and the last result. With `KeepView` the settings come along, else those of this one stay.
    void ShallowCopy(const ShapeMatcher& Src, bool KeepView);

private:
    using Shape = std::shared_ptr<const shapes::ShapeModel>;
    void Append(Shape shape);
    int TryTrain(std::span<const Site> outline, int classIndex, int symmetry, const wchar_t* smallArea,
                 const wchar_t* shortLength);
    bool Best(std::span<const Site> outline, shapes::Match& best) const;
    bool RefusesUntrained(const Entry& entry) const;
    template <typename F>
    bool EachCell(const Limits& area, int shapeIndex, bool scaled, F f) const;

    std::vector<Shape> shapes_;
    Shape matched_; ///< kept for the drawing when the training changes
    double transform_[6] = {1, 0, 0, 0, 1, 0};
};

} // namespace Tesk
