// The searches on each rung of the ladder.
#include "image/core/Destination.h"
#include "image/filter/LocalMeans.h"
#include "image/morpho/MorphoExtremum.h"
#include "read/matrix/ReaderState.h"

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <cstdlib>

namespace Tesk::matrix {

namespace {

constexpr int flatteningBox = 27, flatThreshold = 118;
/// Places on outlines have 16 bits.
constexpr int mostSide = 32767;
/// Of the searches for QR and DotCode, per pixel, in the measure of that for Data Matrix.
constexpr std::int64_t workOfPixel = 20;

/// The source with its dark thickened or thinned.
const Image& Inked(const Image& source, int inking, Image& inked)
{
    if (inking == 0) return source;
    images::MakeLike(source, Gray, inked);
    const int size = 2 * std::abs(inking) + 1;
    morpho::Apply(inking > 0 ? morpho::Extremum::Minimum : morpho::Extremum::Maximum,
                  morpho::Element(size, size, 1, source), source, inked);
    return inked;
}

} // namespace

void Flatten(const Image& src, int box, Image& means, Image& dst)
{
    images::MakeLike(src, Gray, means);
    images::MakeLike(src, Gray, dst);
    filters::BoxMeans(src, box, box, means);
    for (int y = 0; y < src.Height; ++y) {
        const std::uint8_t *s = src.Row(y), *m = means.Row(y);
        std::uint8_t* d = dst.Row(y);
        for (int x = 0; x < src.Width; ++x)
            d[x] = static_cast<std::uint8_t>(std::clamp(2 * (s[x] - m[x]) + 128, 0, 255));
    }
}

void Invert(Image& gray)
{
    for (int y = 0; y < gray.Height; ++y) {
        std::uint8_t* row = gray.Row(y);
        for (int x = 0; x < gray.Width; ++x)
            row[x] = static_cast<std::uint8_t>(255 - row[x]);
    }
}

int MakeWork(const Image& gray, int box, int threshold, ReaderState& state)
{
    if (box > 0) {
        Flatten(gray, box, state.means, state.work);
        return flatThreshold;
    }
    images::MakeLike(gray, Gray, state.work);
    images::CopyRows(gray, state.work);
    return ThresholdOf(gray, threshold);
}

void SearchDataMatrix(const Rung& rung, ReaderState& state)
{
    SymbolSearch& search = state.search;
    const int box = search.settings.adaptiveThreshold ? flatteningBox : 0;
    int threshold = MakeWork(rung.image, box, search.settings.threshold, state);
    for (const CodePolarities polarity : {BlackOnWhite, WhiteOnBlack}) {
        if (search.settings.polarities & polarity)
            state.dataMatrix.Search({rung, state.work, threshold, polarity}, search);
        if (search.IsFull()) return;
        if ((search.settings.polarities & WhiteOnBlack) == 0) return;
        Invert(state.work);
        // A threshold told of the image itself parts its inverse at the same place.
        if (!search.settings.adaptiveThreshold) threshold = 256 - threshold;
    }
}

void SearchQR(const Rung& rung, ReaderState& state)
{
    state.otherWork += workOfPixel * rung.image.Width * rung.image.Height;
    state.qr.Search(rung, state.search);
}

namespace {

void SearchRung(const Rung& rung, const LadderPlan& plan, ReaderState& state)
{
    SymbolSearch& search = state.search;
    if (plan.dataMatrix) SearchDataMatrix(rung, state);
    if (plan.qr && !search.IsFull()) SearchQR(rung, state);
    if (!plan.dotCode) return;
    for (const CodePolarities polarity : {BlackOnWhite, WhiteOnBlack})
        if ((search.settings.polarities & polarity) != 0 && !search.IsFull()) {
            state.otherWork += workOfPixel * rung.image.Width * rung.image.Height;
            state.dotCode.Search(rung, polarity, search);
        }
}

/// Takes the finders told for the time of a search.
class TakenFinders
{
public:
    TakenFinders(const PresetFinders& finders, QRSearch& search) : search_(search)
    {
        if (finders.given) search.Preset(finders.places, finders.size);
    }
    ~TakenFinders() { search_.EndPreset(); }
    TakenFinders(const TakenFinders&) = delete;
    TakenFinders& operator=(const TakenFinders&) = delete;

private:
    QRSearch& search_;
};

} // namespace

void SearchLadder(const Image& source, const LadderPlan& plan, ReaderState& state)
{
    const Image& inked = Inked(source, plan.inking, state.inked);
    const TakenFinders finders(plan.finders, state.qr);
    const LatticeCorrection& lattice = state.correction;
    state.dotCode.Correct(lattice.lengthX, lattice.angleX, lattice.lengthY, lattice.angleY);
    state.search.source = &inked;
    const std::int64_t before = WorkOf(state);
    ScaleLadder& ladder = state.ladder;
    for (ladder.Start(inked, plan.startLevel); ladder.Stands(); ladder.Descend()) {
        const Rung rung{ladder.Current(), ladder.Level(), ladder.Scale()};
        if (rung.level < plan.startLevel || std::max<int>(rung.image.Width, rung.image.Height) > mostSide) continue;
        SearchRung(rung, plan, state);
        if (state.search.IsFull()) return;
    }
    if (plan.lookCloser && state.search.symbols.empty()) LookCloser(inked, plan, WorkOf(state) - before, state);
}

} // namespace Tesk::matrix
