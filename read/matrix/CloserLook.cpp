// The second way down the ladder, where the first one found nothing.
#include "image/core/Destination.h"
#include "image/histogram/LevelCounts.h"
#include "image/morpho/MorphoExtremum.h"
#include "read/matrix/ReaderState.h"

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <new>

namespace Tesk::matrix {

namespace {

/// Paper around the image: an eighth of it, in pixels at least and at most.
constexpr int leastPadding = 8, mostPadding = 32;
/// Images with a shorter side are enlarged once, those with one of half that twice.
constexpr int smallSide = 120;
/// Times the work of the first way; the share of each pixel is measured generously.
constexpr int budget = 2;
constexpr std::int64_t workOfParting = 2, workOfClosing = 4;
/// What a small image may take in any case: a few milliseconds.
constexpr std::int64_t leastWork = 4 << 20;
constexpr double paperShare = 0.9;

/// A way to part dark and light.
struct Parting
{
    int box;     ///< that pixels are compared with; 0 for one threshold in the whole image
    int closing; ///< pixels by which dark is grown and taken back to join it
};
constexpr Parting partings[] = {{27, 2}, {0, 2}, {27, 0}, {0, 0}, {27, 4}, {81, 0}};

/// The level of the paper: few pixels are farther from the ink.
int PaperOf(const Image& gray, CodePolarities polarity)
{
    const auto counts = levels::CountGray(gray);
    const double share = polarity == WhiteOnBlack ? 1 - paperShare : paperShare;
    const double wanted = share * gray.Width * gray.Height;
    double seen = 0;
    int level = 0;
    while (level < 255 && (seen += counts[static_cast<std::size_t>(level)]) < wanted)
        ++level;
    return level;
}

void Pad(const Image& source, int border, int paper, Image& padded)
{
    if (padded.TrySet(source.Width + 2 * border, source.Height + 2 * border, Gray) != NoError) throw std::bad_alloc();
    images::FillRows(padded, paper);
    for (int y = 0; y < source.Height; ++y)
        std::memcpy(padded.Row(y + border) + border, source.Row(y), static_cast<std::size_t>(int(source.Width)));
}

/// Joins what is dark and not far apart.
void Close(const Image& work, int radius, Image& scratch, Image& joined)
{
    images::MakeLike(work, Gray, joined);
    if (radius == 0) {
        images::CopyRows(work, joined);
        return;
    }
    images::MakeLike(work, Gray, scratch);
    const morpho::Element element(2 * radius + 1, 2 * radius + 1, 1, work);
    morpho::Apply(morpho::Extremum::Minimum, element, work, scratch);
    morpho::Apply(morpho::Extremum::Maximum, element, scratch, joined);
}

class SecondLook
{
public:
    SecondLook(const LadderPlan& plan, std::int64_t limit, ReaderState& state)
        : plan_(plan), limit_(limit), state_(state)
    {}

    /// Searches the padded image; whether anything was read.
    bool Search(const Image& padded, int level, CodePolarities polarity)
    {
        state_.search.source = &padded;
        for (const Parting& parting : partings) {
            ScaleLadder& ladder = state_.ladder;
            for (ladder.Start(padded, level); ladder.Stands(); ladder.Descend()) {
                if (ladder.Level() < level) continue;
                if (WorkOf(state_) >= limit_) return !state_.search.symbols.empty();
                SearchRung({ladder.Current(), ladder.Level(), ladder.Scale()}, parting, polarity);
                if (state_.search.IsFull()) return true;
            }
            if (!state_.search.symbols.empty()) return true;
        }
        return false;
    }

private:
    void SearchRung(const Rung& rung, const Parting& parting, CodePolarities polarity)
    {
        SymbolSearch& search = state_.search;
        state_.otherWork +=
            (workOfParting + (parting.closing > 0 ? workOfClosing : 0)) * rung.image.Width * rung.image.Height;
        if (plan_.dataMatrix) {
            const int threshold = Part(rung.image, parting.box, polarity);
            Close(state_.work, parting.closing, state_.means, state_.joined);
            state_.dataMatrix.Search({rung, state_.work, threshold, polarity, &state_.joined}, search);
        }
        if (!plan_.qr || parting.closing > 0 || search.IsFull()) return;
        const SearchSettings asked = search.settings;
        search.settings.polarities = polarity;
        search.settings.adaptiveThreshold = parting.box > 0;
        search.settings.threshold = Auto;
        SearchQR(rung, state_);
        search.settings = asked;
    }

    /// Makes the working image, where symbols are dark; its threshold.
    int Part(const Image& gray, int box, CodePolarities polarity)
    {
        const int threshold = MakeWork(gray, box, Auto, state_);
        if (polarity != WhiteOnBlack) return threshold;
        Invert(state_.work);
        return 256 - threshold;
    }

    const LadderPlan& plan_;
    std::int64_t limit_;
    ReaderState& state_;
};

/// The first rung: enlarged for a small image, unless larger symbols alone are asked for.
int LevelFor(const Image& source, int startLevel)
{
    const int side = std::min<int>(source.Width, source.Height);
    const int level = side < smallSide / 2 ? -2 : side < smallSide ? -1 : 0;
    return startLevel > 0 ? startLevel : std::min(startLevel, level);
}

} // namespace

void LookCloser(const Image& source, const LadderPlan& plan, std::int64_t work, ReaderState& state)
{
    SymbolSearch& search = state.search;
    if ((!plan.dataMatrix && !plan.qr) || plan.finders.given) return;
    const int border = std::clamp(std::min<int>(source.Width, source.Height) / 8, leastPadding, mostPadding);
    constexpr int mostSide = 8191; // enlarged twice, its places still have 16 bits
    if (std::max<int>(source.Width, source.Height) > mostSide - 2 * border) return;
    const SearchFailure first = search.failure;
    const std::int64_t allowed = std::max(budget * work, leastWork), start = WorkOf(state);
    const int polarities = search.settings.polarities & AutoPolarity;
    for (const CodePolarities polarity : {BlackOnWhite, WhiteOnBlack}) {
        if ((polarities & polarity) == 0) continue;
        // Each polarity has its share.
        const std::int64_t limit =
            start + (polarities == AutoPolarity && polarity == BlackOnWhite ? allowed / 2 : allowed);
        Pad(source, border, PaperOf(source, polarity), state.padded);
        if (SecondLook(plan, limit, state).Search(state.padded, LevelFor(source, plan.startLevel), polarity)) break;
    }
    search.source = &source;
    for (SymbolRecord& symbol : search.symbols) {
        symbol.x -= border;
        symbol.y -= border;
        for (XY& corner : symbol.corners)
            corner = corner - XY(border, border);
    }
    if (search.symbols.empty()) search.failure = first;
}

} // namespace Tesk::matrix
