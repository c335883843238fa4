// What a reader of matrix codes keeps from one decoding to the next.
#pragma once

#include "foundation/Records.h"
#include "image/Image.h"
#include "read/matrix/DataMatrixSearch.h"
#include "read/matrix/ScaleLadder.h"
#include "read/matrix/SymbolSearch.h"

#include <array>

namespace Tesk::matrix {

/// Finders told for the next decoding.
struct PresetFinders
{
    bool given = false;
    std::array<Site, 3> places{};
    int size = 0;
};

/// Which searches run on which rungs.
struct LadderPlan
{
    bool dataMatrix = true, qr = false, dotCode = false;
    int startLevel = 0;
    int inking = 0; ///< the dark grows by so many pixels
    PresetFinders finders;
};

/// A lattice deformed by the printing, see `Code2DReader::DCCorrectGeometry`. Angles in radians.
struct LatticeCorrection
{
    double lengthX = 1, angleX = 0, lengthY = 1, angleY = 0;
};

struct ReaderState
{
    SymbolSearch search;
    XY origin{0, 0};       ///< of the window that was decoded
    PresetFinders finders; ///< for the next decoding
    LatticeCorrection correction;

    DataMatrixSearch dataMatrix;
    ScaleLadder ladder;
    Image gray, inked, means, work;
};

/// Runs the searches down the ladder of a `Gray` image, until there are symbols enough. Throws `std::bad_alloc`.
void SearchLadder(const Image& source, const LadderPlan& plan, ReaderState& state);

/// Searches a rung for Data Matrix symbols of the polarities enabled.
void SearchDataMatrix(const Rung& rung, ReaderState& state);

/// How far pixels are from the mean of their surroundings: 2 (s - m) + 128, clamped. `means` and `dst` are sized.
void Flatten(const Image& src, int box, Image& means, Image& dst);
/// Makes dark light.
void Invert(Image& gray);

} // namespace Tesk::matrix
