// The locator: finds the places of an image that look like a trained pattern.
#pragma once

#include "foundation/ReadOnly.h"
#include "foundation/Records.h"

#include <memory>

namespace Tesk {

class Archive;
class Geometry;
class Image;
class Path;
class Poly;
class Region;

namespace locator {
struct Candidate;
struct Locations;
struct Masks;
struct Model;
struct Settings;
class Search;
} // namespace locator

/// A place where a pattern was found.
struct _LocatorPose
{
    double X, Y;     ///< the centre of the pattern, in pixels or in the units of a calibration
    double Angle;    ///< in degrees
    double Scale;    ///< against the trained pattern
    double Score;    ///< 1 for a perfect likeness, negative for an inverted one
    double Contrast; ///< against the trained pattern
};

/// Compares a pattern with an image at all places, angles and scales that are allowed, by gray values (normalized
/// correlation) or by the gradients at its edges: first at a low resolution everywhere, then at ever higher ones about
/// the best places.
///
/// Images are `Gray`; `Gray16`, `Rgb` and `Rgba` ones are converted. Refused throughout: other types
/// (`UnsupportedType`), void images (`VoidObject`), no memory (`CannotAllocate`).
///
///     Locator locator;
///     locator.Train(pattern);
///     locator.MinAngle = -180, locator.MaxAngle = 180;
///     locator.Find(image);
///     if (locator.NumLocations > 0) std::printf("%.2f %.2f\n", locator.Location(0).X, locator.Location(0).Y);
class Locator
{
    template <typename T>
    using Field = ReadOnly<T, Locator>;

public:
    Field<int> MaxAreaDepths;          ///< levels at which the pattern can be compared by gray values
    Field<int> MaxEdgesDepths;         ///< levels at which it has edges enough to be compared by them
    int MaxLocations = 1;              ///< most locations to report
    double MinScore = 0;               ///< least score to accept
    double MinContrast = 0.25;         ///< least contrast to accept, against that of the pattern
    double MinAngle = 0, MaxAngle = 0; ///< in degrees
    double MinScale = 1, MaxScale = 1;
    bool Edges = false;            ///< compare gradients rather than gray values
    int Symmetry = 1;              ///< 1, 2 (half a turn) or 4 (a quarter turn); kept with the model for its users
    double MaxOverlap = 0.25;      ///< overlap of two locations that is allowed, as a part of their area
    int MaxDepths = 16;            ///< most levels to search
    int StopDepth = 0;             ///< level at which the search ends
    Field<int> NumLocations;       ///< locations found
    Field<DraggingHandles> Handle; ///< `AllHandle` over the location last hit
    Field<int> HitIndex = -1;      ///< the location last hit

    Locator();
    Locator(const Locator& Other);
    Locator& operator=(const Locator& Other);
    ~Locator();

    /// Learns the window of an image, of at least 64 pixels (`OutOfRange`), or the `Disk` inscribed in it.
    void Train(const Image& Src, bool Disk = false);
    /// Learns the pixels under the white ones of a mask of the same size (`IncompatibleSize`). An `EdgeMask` tells with
    /// its pixels above 0 where the edges lie.
    void Train(const Image& Mask, const Image& Src, bool EdgeMask = false);
    /// Learns the pixels of a region, whose coordinates are those of the window with `SrcWindow`, else of the image.
    void Train(const Region& Mask, const Image& Src, bool SrcWindow = false);

    /// The pattern and the masks at full size; void images if there are none.
    const Image& TemplateImage() const;
    const Image& MaskImage() const;
    const Image& SearchMaskImage() const;

    /// Finds the pattern. Refused: no model (`VoidObject`), an image smaller than the pattern (`UnsupportedType`) or of
    /// another size than the search mask (`IncompatibleSize`), no level to search (`OutOfRange`).
    void Find(const Image& Src);

    /// Restricts later searches to where all of the pattern lies on white pixels of a mask of the images' size.
    void SearchMask(const Image& Mask);
    /// The same for a region, in an image of the size of `Src`. Refused: an empty region (`VoidObject`).
    void SearchMask(const Region& Mask, const Image& Src, bool SrcWindow = false);
    /// Lifts the restriction.
    void SearchMask();

    /// A location, at the resolution of `Depth`, or of `StopDepth` for -1; in the units of
    /// `Geometry::SimpleCalibration` or of a calibration. The record is overwritten by the next call. Refused: an index
    /// or a depth out of range (`OutOfRange`).
    const _LocatorPose& Location(int Index, int Depth = -1) const;
    const _LocatorPose& Location(const Geometry& Calibration, int Index, int Depth = -1) const;
    /// The corners of a location. Refused: no model (`VoidObject`), an index out of range (`OutOfRange`).
    void Corners(int LocationIndex, Poly& Dst) const;
    /// The edges of the model at a location, as pixels. Refused likewise.
    void EdgePoints(int LocationIndex, Path& Dst) const;
    /// Maps the part of a `Gray` or `Rgb` image at a location to the place and size of the pattern.
    void Register(int LocationIndex, const Image& Src, Image& Dst, bool Interpolate = true) const;
    /// Maps a point of the pattern into the image, or back. The pattern's points count from its corner if `Local`, else
    /// from the corner of the image it was trained in. Refused: an index out of range (`OutOfRange`).
    XY TransformPoint(XY P, int LocationIndex, bool ToImage, bool Local) const;

    /// Draws the locations with their scores or contrasts; those below `MinScore` in red. At the resolution of `Depth`,
    /// unless it is negative.
    void Draw(bool ViewScores = false, bool ViewContrasts = false, double MinScore = -1, int Depth = 0) const;
    /// Plots the edges of the model at `StopDepth`. Refused: no such level (`OutOfRange`).
    void DrawModel() const;
    /// The location under a point of the screen; -1 for none.
    int LocationAt(int MouseX, int MouseY) const;
    /// The same taken hold of: `AllHandle` and its `HitIndex`, else `NoHandle` and -1.
    DraggingHandles HitLocation(int MouseX, int MouseY);
    /// Takes hold of a location as if it had been hit; of none for an index that is none.
    void Select(int LocationIndex);

    /// ".loc" files. Refused: those that cannot be opened (`CannotOpen`), are none (`UnsupportedFormat`), of a newer
    /// version (`OutOfRange`) or broken (`CannotRead`).
    void Read(const char* PathName);
    void Read(const wchar_t* PathName);
    void Write(const char* PathName) const;
    void Write(const wchar_t* PathName) const;
    void Transfer(Archive& Block);

    /// Shares the model and the locations. With `KeepView` the settings come along, and which location was hit; else
    /// those of this locator stay.
    void ShallowCopy(const Locator& Src, bool KeepView);

private:
    const locator::Candidate* Reach(const char* context, int index, const wchar_t* range) const;
    const locator::Candidate* ReachTrained(const char* context, int index) const;
    bool Place(const char* context, int index, int depth) const;
    void Take(std::shared_ptr<const locator::Model> model);
    int TryTrain(const Image& gray, const Image& src, int mode, const Image* mask, bool edgeMask);
    int TryFind(const Image& gray, const Image& src, const locator::Settings& settings);
    int TryMask(std::shared_ptr<locator::Masks> masks);
    int CheckSearch(const Image& src, locator::Settings& settings) const;
    void Share(const Locator& src);
    void TransferSettings(Archive& block, int version);
    void TakeRead(Archive& block, const std::shared_ptr<locator::Model>& model,
                  const std::shared_ptr<locator::Masks>& masks);

    std::shared_ptr<const locator::Model> model_;
    std::shared_ptr<const locator::Masks> searchMask_;
    std::shared_ptr<const locator::Locations> locations_;
    std::unique_ptr<locator::Search> search_; ///< buffers, kept between searches
    mutable _LocatorPose pose_{};
    int originX_ = 0, originY_ = 0; ///< of the window last searched
};

} // namespace Tesk
