// Gray-level morphology with a decomposed structuring element, rank filters, thinning, and the segmentations and
// distance maps that belong to morphology.
#pragma once

#include "image/Image.h"

namespace Tesk {

class Blobs;
class Path;

/// A structuring element: the dilation of 3-point and 3 by 3 shapes, one for every two units of the three sizes.
///
/// With the radii `Width / 2`, `Height / 2` and `Diagonal / 2` it is the box of the first two, out of which the
/// diagonal cuts the corners: steps (x, y) with |x| + |y| at most the first two radii's sum less the third.
///
/// All operations read their sources and write `Dst` through their windows, size `Dst` themselves, and may run in
/// place. Pixels outside the window take no part. Refused, unless told otherwise: a void source (`VoidObject`), a
/// pixel type that is not listed (`UnsupportedType`), no memory (`CannotAllocate`).
///
///     Morpho element;
///     element.Octagon(7);
///     element.Open(image, image); // bright specks vanish
///     element.Gradient(image, edges);
///     Morpho::Distance(image, distances);
class Morpho
{
    template <typename T>
    using Field = ReadOnly<T, Morpho>;

public:
    Field<int> Width = 3, Height = 3; ///< extent in pixels, odd
    Field<int> Diagonal = 1;          ///< extent of the part made of diamonds, odd; 1 for boxes

    /// Sets the three sizes. Refused, here and in the setters below: sizes that are no positive odd numbers
    /// (`OutOfRange`); nothing is changed then.
    void Set(int Width, int Height, int Diagonal);
    void Box(int Width, int Height);
    void Square(int Size);
    void Diamond(int Size);
    void Octagon(int Size);
    void Horizontal(int Width);
    void Vertical(int Height);

    /// With `KeepView` takes the sizes of another element. They are all that an element has: without it, it keeps its
    /// own.
    void ShallowCopy(const Morpho& Src, bool KeepView);

    /// Maximum under the element, for `Gray` and `Gray16`, as are the operations down to `Rank`.
    void Dilate(const Image& Src, Image& Dst) const;
    /// Minimum under the element.
    void Erode(const Image& Src, Image& Dst) const;
    /// Erosion, then dilation.
    void Open(const Image& Src, Image& Dst) const;
    /// Dilation, then erosion.
    void Close(const Image& Src, Image& Dst) const;
    /// What the opening takes away; with `Binarize` (`Gray` only) by the automatic threshold.
    void WhiteHat(const Image& Src, Image& Dst, bool Binarize = false) const;
    /// What the closing adds; with `Binarize` (`Gray` only) by the automatic threshold.
    void BlackHat(const Image& Src, Image& Dst, bool Binarize = false) const;
    /// Dilation less erosion (`StandardGradient`), dilation less source (`ExternalGradient`), source less erosion
    /// (`InternalGradient`). Other types are refused (`UnsupportedType`).
    void Gradient(const Image& Src, Image& Dst, GradientTypes Type = StandardGradient) const;
    /// Half way between dilation and erosion.
    void MidRange(const Image& Src, Image& Dst) const;
    /// Half way between opening and closing.
    void PseudoMedian(const Image& Src, Image& Dst) const;
    /// Closing less opening.
    void Contrast(const Image& Src, Image& Dst) const;
    /// The middle of the values under a box, edge pixels repeated. Refused: a `Diagonal` above 1 (`OutOfRange`).
    void Median(const Image& Src, Image& Dst) const;
    /// The value that has the share `Percent` of the values under a box before it, edge pixels repeated. Refused: a
    /// `Percent` outside 0 to 1, 1 excluded, and a `Diagonal` above 1 (`OutOfRange`).
    void Rank(double Percent, const Image& Src, Image& Dst) const;

    /// Thins the 255 pixels of a `Gray` image of 0 and 255, a layer a sweep; the result is the number of sweeps done.
    static int BinaryThin(const Image& Src, Image& Dst, int MaxLayers = Auto, bool KeepEnds = false);
    /// Thins the 0 pixels, which thickens the others without joining them.
    static int BinaryThick(const Image& Src, Image& Dst, int MaxLayers = Auto, bool KeepEnds = false);

    /// Draws 255 where a value of the series `Level + k * Step` is crossed, for `Gray`. Refused: a `Step` below 1
    /// (`OutOfRange`).
    static void Isophotes(int Level, int Step, bool Connexity8, const Image& Src, Image& Dst);

    /// Watershed by immersion of a relief, `Gray` or `Grad`, all detail up to `Noise` merged; `Auto` takes 1.3 times
    /// the noise estimate. The result is the `Noise` used, 0 to 255. `Dst` is `Gray`: 255 on dams and 0 in basins, or
    /// without `Binarize` the low byte of the labels, 2 on dams and counting from 3 in basins.
    static int Watershed(bool Connexity8, const Image& Grd, Image& Dst, int Noise = Auto, bool Binarize = true);
    /// Each basin filled with the mean of the `Gray` image `Src` over it, 255 on dams; without `Average` with the low
    /// byte of its label. Refused: a window of `Src` that differs from the relief's (`IncompatibleSize`).
    static int Watershed(bool Connexity8, const Image& Grd, const Image& Src, Image& Dst, int Noise = Auto,
                         bool Average = true);
    /// Each basin as a blob of the class `DefaultClass`, in the order of their first pixels. Refused: a window beyond
    /// the coordinates of runs (`OutOfRange`).
    static int Watershed(bool Connexity8, const Image& Grd, Blobs& Dst, int Noise = Auto);
    /// The labels themselves, in a `Gray32` image.
    static int _WatershedMap(bool Connexity8, const Image& Grd, Image& Dst, int Noise = Auto);

    /// Lists the places of a `Gray` image that no neighbour surpasses, of each plateau the first in row order, into
    /// `Dst`, whose origin becomes the window's corner; those below `MinGray` are left out. With `MaxCount` above 0 the
    /// highest so many in descending order, else all in row order. Refused: windows of more than 32,768 rows or columns
    /// (`OutOfRange`), which the coordinates of a path do not reach.
    static void RegionalMaxima(int MinGray, int MaxCount, const Image& Src, Path& Dst, bool Connexity8 = true);
    /// The same for the places that no neighbour undercuts, those above `MaxGray` left out, in ascending order.
    static void RegionalMinima(int MaxGray, int MaxCount, const Image& Src, Path& Dst, bool Connexity8 = true);

    /// Segments `Gray` or `Grad` by uniting the most alike neighbours first (Felzenszwalb and Huttenlocher 2004): an
    /// edge unites two sets if it is within the threshold of both, `Step` over the size plus the last edge; then sets
    /// below `MinArea` unite with a neighbour. `Filter` smooths a `Gray` source: 1 to 4 binomial passes. `Dst` is
    /// `Gray`: the low byte of the index of each set's root. Refused: a `Filter` outside 0 to 4 (`OutOfRange`).
    static void GraphSegment(const Image& Src, Image& Dst, int Filter, double Step, int MinArea,
                             bool Connexity8 = true);
    /// Fills each 4-connected area of 0 pixels of the `Gray` image `Msk` with the mean of the `Gray` image `Src` over
    /// it (0 for a mean of 1); other pixels keep the value of `Msk`. Refused: windows of two sizes
    /// (`IncompatibleSize`).
    static void AverageRegions(const Image& Msk, const Image& Src, Image& Dst);

    /// Distance to the nearest pixel of value 0, without `Above` of value 255, for `Gray`. Into `Gray`, or with `Large`
    /// into `Gray16`, saturated: exact Euclidean truncated to whole pixels, else chessboard with `Connexity8` and
    /// city-block without.
    static void Distance(const Image& Src, Image& Dst, bool Above = true, bool Euclidean = false,
                         bool Connexity8 = true, bool Large = false);

    /// Clears the inner pixels of a `Gray` image with fewer or more than so many of their eight neighbours not 0.
    static void KillConnect(int MinNeighbors, int MaxNeighbors, const Image& Src, Image& Dst);
};

/// Draws the shape of an element into a sized `Gray` image: black cells on white, a line of one pixel between them.
void RenderMorpho(const Morpho& Element, Image& Dst);

} // namespace Tesk
