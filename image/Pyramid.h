// A stack of ever smaller copies of one image, and the rescalings and tile statistics that go with it.
#pragma once

#include "image/Image.h"

#include <array>

namespace Tesk {

/// Levels of `Gray`, `Gray16` or `Rgb` pixels, each half (dyadic) or two thirds of the size of the one before it. With
/// the base apart, level 0 is the caller's source image and is not copied.
///
///     Pyramid pyramid;
///     pyramid.Build(image, 32); // as long as the smaller side has 32 pixels
///     const Image& coarse = pyramid.Bitmap(2);
///     Pyramid::Halve(image, half);
class Pyramid
{
public:
    static constexpr int MaximumLevels = 20;

    ReadOnly<int, Pyramid> NumLevels;  ///< levels built; 0 on a fresh object
    ReadOnly<bool, Pyramid> BaseApart; ///< level 0 lives in the caller's source image

    /// Builds the levels from the window of `Src`, as long as the smaller side is at least `MinSize` pixels and there
    /// are fewer than `MaxLevels` (1 to 20; 0 means 20). A level without pixels is a void image. Refused: a void source
    /// (`VoidObject`), other pixel types (`UnsupportedType`), `MaxLevels` out of range (`OutOfRange`), no memory
    /// (`CannotAllocate`; the levels built by then stay).
    void Build(const Image& Src, int MinSize = 0, int MaxLevels = 0, bool BaseApart = false, bool Dyadic = true);

    /// A level, which is `Src` for level 0 of a pyramid whose base is apart. Refused: an empty pyramid (`VoidObject`),
    /// a level that is not there (`OutOfRange`); the result is then `Src`.
    Image& Bitmap(Image& Src, int Level);
    /// A level. Refused as above, and for a base that is apart (`CannotAllocate`); the result is then a void image.
    Image& Bitmap(int Level);

    /// Doubles the size of a `Gray`, `Gray16` or `Rgb` image, bilinearly on a half-pixel grid, truncating.
    static void Double(const Image& Src, Image& Dst);
    /// Halves the size of a `Gray`, `Gray16` or `Rgb` image by means of 2 x 2 pixels, or makes 2 x 2 pixels of each
    /// 3 x 3; a rest of the source is dropped. Refused, too: nothing left to make (`IncompatibleSize`).
    static void Halve(const Image& Src, Image& Dst, bool Dyadic = true);

    /// Statistics of the tiles of a `Gray` image: one pixel for each `TileSize` x `TileSize` of the source, with
    /// `PartialTiles` for the incomplete tiles at the right and the bottom too. Refused: other pixel types
    /// (`UnsupportedType`), a tile size below 1 (`OutOfRange`), no whole tile (`IncompatibleSize`).
    static void TileMean(int TileSize, const Image& Src, Image& Dst, bool PartialTiles = false);
    /// The mean of the extremes of each tile.
    static void TileMidRange(int TileSize, const Image& Src, Image& Dst, bool PartialTiles = false);
    /// The standard deviation in each tile.
    static void TileDeviation(int TileSize, const Image& Src, Image& Dst, bool PartialTiles = false);
    /// The difference of the extremes of each tile.
    static void TileRange(int TileSize, const Image& Src, Image& Dst, bool PartialTiles = false);

    /// Draws all levels, each at its `DrawingOffset`, or all at the origin. Without `Src` a base that is apart is left
    /// out.
    void Draw(const Image& Src, bool AtOrigin) const;
    void Draw(bool AtOrigin) const;
    /// Where a level stands in the drawing, in pixels: level 0 at the origin, the others in a row beneath it, or at the
    /// top where a base that is apart is left out. Refused like `Bitmap`, with (0, 0).
    Site DrawingOffset(const Image& Src, int Level) const;
    Site DrawingOffset(int Level) const;

    /// Shares the pixels of all levels.
    void ShallowCopy(const Pyramid& Src, bool KeepView);

private:
    int RefuseLevel(int level) const;
    Site OffsetBelow(int baseHeight, int level) const;
    int BaseHeight(const Image* base) const;
    void DrawFrom(const Image* base, bool atOrigin) const;

    std::array<Image, MaximumLevels> levels_;
};

} // namespace Tesk
