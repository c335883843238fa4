// What a reader of matrix codes keeps from one decoding to the next.
#pragma once

#include "foundation/Records.h"
#include "image/Image.h"
#include "read/matrix/DataMatrixSearch.h"
#include "read/matrix/DotCodeSearch.h"
#include "read/matrix/QRSearch.h"
#include "read/matrix/ScaleLadder.h"
#include "read/matrix/SymbolSearch.h"

#include <array>
#include <cstdint>

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
    bool lookCloser = true;
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
    QRSearch qr;
    DotCodeSearch dotCode;
    ScaleLadder ladder;
    Image gray, inked, means, work, joined, padded;
    std::int64_t otherWork = 0; ///< that of the searches which do not measure their own, by their pixels
};

/// Runs the searches down the ladder of a `Gray` image, until there are symbols enough. Throws `std::bad_alloc`.
void SearchLadder(const Image& source, const LadderPlan& plan, ReaderState& state);

/// Searches a rung for Data Matrix symbols of the polarities enabled.
void SearchDataMatrix(const Rung& rung, ReaderState& state);

/// Where the ladder shows nothing, goes down again: with paper around the image, from an enlarged small one, by other
/// thresholds, and with dots joined, at up to three times the work so far. Never beyond what the settings enable.
void LookCloser(const Image& source, const LadderPlan& plan, std::int64_t work, ReaderState& state);

/// Searches a rung for QR symbols.
void SearchQR(const Rung& rung, ReaderState& state);
/// What all searches of a state took.
inline std::int64_t WorkOf(const ReaderState& state)
{
    return state.dataMatrix.Work() + state.otherWork;
}

/// Makes the working image of a search for Data Matrix symbols, flattened over a box or, for 0, as the image is. The
/// level between dark and light: of a flattened image always the same, else the threshold, or for `Auto` the best one.
int MakeWork(const Image& gray, int box, int threshold, ReaderState& state);
/// How far pixels are from the mean of their surroundings: 2 (s - m) + 128, clamped. `means` and `dst` are sized.
void Flatten(const Image& src, int box, Image& means, Image& dst);
/// Makes dark light.
void Invert(Image& gray);

} // namespace Tesk::matrix
