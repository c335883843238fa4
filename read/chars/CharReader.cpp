// The reader of characters: segmentation and reading from the image to the texts.
#include "read/CharReader.h"

#include "foundation/Angles.h"
#include "foundation/Entry.h"
#include "foundation/KeepChanged.h"
#include "image/core/Refusals.h"
#include "image/geometry/QuarterTurn.h"
#include "image/operator/PixelSteps.h"
#include "read/chars/ReaderState.h"

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <cstdlib>

namespace Tesk {

using namespace chars;

namespace {

/// The user's features of a character.
constexpr int fontCharFeature = 60, scoreFeature = 61, contrastFeature = 62;
constexpr int leastArea = 9, averageStep = 10;

/// Within a range; what is not a number is its lower end.
double Held(double value, double from, double to)
{
    return value >= from ? std::min(value, to) : from;
}

int RefuseNoChars()
{
    return Status::Format(OutOfRange, L"No character was found in the inspected area");
}

/// Blobs that are surely on their side of the threshold and clear of the border.
std::vector<Piece> CollectPieces(const Blobs& blobs, bool light, int threshold)
{
    std::vector<Piece> pieces;
    for (int i = 0; i < blobs.NumSelectedBlobs; i++) {
        const double average = blobs.FloatFeature(i, BlobAverage);
        if (light ? average < threshold + averageStep : average > threshold - averageStep) continue;
        pieces.push_back({blobs.IntFeature(i, BlobBoxX), blobs.IntFeature(i, BlobBoxY),
                          blobs.IntFeature(i, BlobBoxWidth), blobs.IntFeature(i, BlobBoxHeight), i,
                          std::fabs(average - threshold) * blobs.IntFeature(i, BlobArea)});
    }
    return pieces;
}

int FindBlobs(const Prepared& prepared, bool light, Blobs& blobs)
{
    int threshold = prepared.threshold;
    if (const int code = blobs.TrySegment(threshold, prepared.image, light, true, leastArea, MaxInt)) return code;
    if (blobs.NumBlobs == 0) return RefuseNoChars();
    if (const int code = blobs.TryBorderSelect(prepared.image, Deselect)) return code;
    return blobs.TryEvaluate(BlobAverage, prepared.image, AllSelected);
}

/// The boxes of the characters, not yet alike. Sizes that are guessed go to the settings.
int FindChars(const Image& upright, SegmentSettings& settings, std::vector<CharBox>& boxes)
{
    Prepared prepared;
    if (const int code = Prepare(upright, settings, prepared)) return code;
    Blobs blobs;
    if (const int code = FindBlobs(prepared, settings.whiteOnBlack, blobs)) return code;
    return WithMemory(images::noWorkingMemory, [&] {
        std::vector<Piece> pieces = CollectPieces(blobs, settings.whiteOnBlack, prepared.threshold);
        if (settings.guessSize && settings.maxTouching >= 1) GuessSize(pieces, settings);
        for (const TextLine& line : FindLines(pieces, settings))
            if (settings.maxTouching >= 0)
                CutLine(line, settings, boxes);
            else
                CutLineByCount(line, blobs, prepared.image, settings, boxes);
    });
}

/// The settings that are no longer what they were.
void KeepSettings(const CharReaderSettings& own, const CharReaderSettings& former, CharReaderSettings& dst)
{
    using S = CharReaderSettings;
    KeepChanged(own, former, dst, &S::Quadrant, &S::LocalThreshold, &S::Threshold, &S::WhiteOnBlack, &S::CharWidth,
                &S::CharHeight, &S::GuessSize, &S::KeepRatio, &S::RepairBroken, &S::Dotted, &S::InkingCorrection,
                &S::Masking, &S::AlignChars, &S::EvenlySpaceChars, &S::MaxTouching, &S::SplitRows, &S::VariableWidth,
                &S::GapFraction, &S::DotFraction, &S::MinimumScore, &S::MinimumContrast, &S::OCVScoring,
                &S::GlobalFilter, &S::UseSafeScores, &S::DiscardBadScores, &S::JitterX, &S::JitterY, &S::AsciiFilter,
                &S::UnicodeFilter, &S::InsertSpaces, &S::InsertNewlines, &S::MinAngle, &S::MaxAngle, &S::LayoutMode,
                &S::FontWidth, &S::FontHeight);
}

} // namespace

namespace chars {

OwnChars::OwnChars() : state_(std::make_unique<ReaderState>()) {}
OwnChars::OwnChars(const OwnChars& other) : state_(std::make_unique<ReaderState>(*other)) {}
OwnChars::~OwnChars() = default;

OwnChars& OwnChars::operator=(const OwnChars& other)
{
    *state_ = *other.state_;
    return *this;
}

void ReaderState::TakeFound(std::vector<CharBox> boxes)
{
    found = std::move(boxes);
    trueWidths.clear();
    for (const CharBox& box : found)
        trueWidths.push_back(box.Width);
    map.resize(found.size());
    for (std::size_t i = 0; i < map.size(); i++)
        map[i] = static_cast<int>(i);
}

CharBox ReaderState::BoxAt(int position) const
{
    const int index = map[static_cast<std::size_t>(position)];
    return index < 0 ? CharBox() : found[static_cast<std::size_t>(index)];
}

std::vector<CharBox> ReaderState::Boxes() const
{
    std::vector<CharBox> boxes;
    for (std::size_t i = 0; i < map.size(); i++)
        boxes.push_back(BoxAt(static_cast<int>(i)));
    return boxes;
}

SourceRectangle ReaderState::InPicture(const CharBox& box) const
{
    SourceRectangle back =
        turns::TurnedBack(quadrant, {box.X, box.Y, box.Width, box.Height}, window.Width, window.Height);
    back.X += window.X;
    back.Y += window.Y;
    return back;
}

XY ReaderState::InPicture(XY point) const
{
    return XY(window.X, window.Y) + turns::TurnedBack(quadrant, point, window.Width, window.Height);
}

ThumbnailSize ThumbnailSizeOf(const CharReader& reader)
{
    return {reader.FontWidth, reader.FontHeight, reader.CharWidth, reader.VariableWidth};
}

std::vector<Filter> FiltersOf(const CharReader& reader)
{
    return reader.AsciiFilter == "%*" ? ParseFilter(reader.UnicodeFilter) : ParseFilter(reader.AsciiFilter);
}

SegmentSettings SegmentSettingsOf(const CharReader& reader)
{
    constexpr int mostRadius = 1000, mostTouching = 1000;
    SegmentSettings settings;
    settings.localThreshold = reader.LocalThreshold;
    settings.whiteOnBlack = reader.WhiteOnBlack;
    // Further ones split no gray values, either.
    settings.threshold = reader.Threshold == Auto ? Auto : Clamp(reader.Threshold, -1, 256);
    settings.charWidth = Clamp(reader.CharWidth, 1, mostPixels);
    settings.charHeight = Clamp(reader.CharHeight, 1, mostPixels);
    settings.guessSize = reader.GuessSize;
    settings.keepRatio = reader.KeepRatio;
    settings.repairBroken = reader.RepairBroken;
    settings.variableWidth = reader.VariableWidth;
    settings.dotted = Clamp(reader.Dotted, 0, mostRadius);
    settings.inking = Clamp(reader.InkingCorrection, -mostRadius, mostRadius);
    settings.masking = Clamp(reader.Masking, 0, mostRadius);
    settings.maxTouching = Clamp(reader.MaxTouching, -mostTouching, mostTouching);
    settings.splitRows = Clamp(reader.SplitRows, 0, mostPixels);
    settings.gapFraction = Held(reader.GapFraction, 0, 1);
    settings.dotFraction = Held(reader.DotFraction, 0, 1);
    return settings;
}

} // namespace chars

CharReader::CharReader() = default;
CharReader::~CharReader() = default;

void CharReader::ShallowCopy(const CharReader& Src, bool KeepView)
{
    const Entry entry("Tesk::CharReader::ShallowCopy");
    if (&Src == this) return;
    entry.Guards(images::noWorkingMemory, [&] {
        const CharReaderSettings own = *this, former = taken_;
        *this = Src;
        taken_ = Src;
        if (!KeepView) KeepSettings(own, former, *this);
    });
}

int CharReader::CheckChar(int index) const
{
    if (index >= 0 && index < NumChars) return NoError;
    return Status::Format(OutOfRange, L"The character index (%d) is out of the available range [0..%d]", index,
                          NumChars - 1);
}

int CharReader::CheckLayout() const
{
    if (LayoutMode == NoLayout || !state_->layout.empty()) return NoError;
    return Status::Format(OutOfRange, L"Void Layout model");
}

bool CharReader::MakeUpright(const Entry& entry, const Image& src, Image& upright)
{
    Image gray;
    return points::CopyPixels(entry, src, gray, Gray) || turns::TurnPixels(entry, Quadrant, gray, upright);
}

void CharReader::ClearChars()
{
    AsciiString.Clear();
    UnicodeString.Clear();
    AverageScore = -1.0;
    AverageContrast = 0.0;
    NumChars = 0;
    Handle = NoHandle;
    HitIndex = -1;
    ReaderState& state = *state_;
    state.found.clear();
    state.trueWidths.clear();
    state.map.clear();
    state.strings.clear();
    state.read.clear();
    state.shown.clear();
    Blobs::Clear();
}

void CharReader::CharsSegment(const Image& Src)
{
    const Entry entry("Tesk::CharReader::CharsSegment");
    if (entry.Refuses(images::CheckType(Src, accepted))) return;
    if (const int code = CheckLayout()) {
        LayoutMode = NoLayout;
        entry.Refuses(code);
        return;
    }
    Image upright;
    if (MakeUpright(entry, Src, upright)) return;
    state_->window = SourceRectangle(Src.X, Src.Y, Src.Width, Src.Height);
    entry.Refuses(TrySegment(upright));
}

void CharReader::CharsDecode(const Image& Src)
{
    const Entry entry("Tesk::CharReader::CharsDecode");
    if (entry.Refuses(images::CheckType(Src, accepted)) || entry.Refuses(CheckFont(state_->font))) return;
    Image upright;
    if (MakeUpright(entry, Src, upright)) return;
    entry.Refuses(TryDecode(upright));
}

void CharReader::CharsRead(Image& Src)
{
    const Entry entry("Tesk::CharReader::CharsRead");
    if (entry.Refuses(images::CheckType(Src, accepted)) || entry.Refuses(CheckFont(state_->font)) ||
        entry.Refuses(CheckLayout()))
        return;
    Image upright;
    if (MakeUpright(entry, Src, upright)) return;
    state_->window = SourceRectangle(Src.X, Src.Y, Src.Width, Src.Height);
    if (!entry.Refuses(TrySegment(upright))) entry.Refuses(TryDecode(upright));
}

int CharReader::TrySegment(const Image& upright)
{
    ClearChars();
    state_->quadrant = Quadrant;
    SegmentSettings settings = SegmentSettingsOf(*this);
    std::vector<CharBox> boxes;
    if (const int code = FindChars(upright, settings, boxes)) return code;
    if (boxes.empty()) return RefuseNoChars();
    // A guess is no choice of the user's.
    if (CharWidth != settings.charWidth) CharWidth = taken_.CharWidth = settings.charWidth;
    if (CharHeight != settings.charHeight) CharHeight = taken_.CharHeight = settings.charHeight;

    const int code = WithMemory(images::noWorkingMemory, [&] {
        ReaderState& state = *state_;
        state.TakeFound(std::move(boxes));
        MakeAlike(state.found, settings);
        state.strings = FindStrings(state.found, settings.charWidth, settings.charHeight);
        if (AlignChars) AlignLines(state.found, state.strings);
        if (LayoutMode != NoLayout) MatchLayout();
    });
    return code ? code : TakeChars();
}

void CharReader::MatchLayout()
{
    ReaderState& state = *state_;
    const LayoutSearch search = {Clamp(CharWidth, 1, mostPixels), Clamp(CharHeight, 1, mostPixels),
                                 ToRadians(Held(MinAngle, -180, 180)), ToRadians(Held(MaxAngle, -180, 180))};
    if (LayoutMode == FlexibleLayout) {
        state.placement = search.Shift(state.layout, state.found);
        state.map = Pair(state.layout, state.placement, state.found, false).found;
    } else {
        state.placement = search.Find(state.layout, state.found);
        const Pairing pairing = Pair(state.layout, state.placement, state.found, true);
        std::vector<CharBox> boxes;
        for (const CharBox& box : state.layout)
            boxes.push_back(Placed(box, state.placement));
        std::vector<int> widths;
        for (const int index : pairing.found)
            widths.push_back(index < 0 ? CharWidth : state.trueWidths[static_cast<std::size_t>(index)]);
        state.TakeFound(std::move(boxes));
        state.trueWidths = std::move(widths);
        for (std::size_t i = 0; i < state.map.size(); i++)
            if (pairing.found[i] < 0) state.map[i] = -1;
    }
    state.strings = FindStrings(state.layout, CharWidth, CharHeight);
}

int CharReader::TakeChars()
{
    ReaderState& state = *state_;
    if (const int code = ResetTable()) return code;
    for (const int feature : {BlobBoxX, BlobBoxY, BlobBoxWidth, BlobBoxHeight})
        if (const int code = ProvideColumn(feature)) return code;
    for (const int type : {int(Int), int(Float), int(Float)})
        if (const int code = TryAppendUserFeature(type)) return code;
    const std::vector<BlobRecord> records(state.found.size());
    if (const int code = AddBlobs(records)) return code;
    for (std::size_t i = 0; i < state.found.size(); i++) {
        const CharBox& box = state.found[i];
        if (const int code = StoreFeatures(static_cast<int>(i), {{BlobBoxX, box.X},
                                                                 {BlobBoxY, box.Y},
                                                                 {BlobBoxWidth, box.Width},
                                                                 {BlobBoxHeight, box.Height},
                                                                 {fontCharFeature, noFontChar},
                                                                 {scoreFeature, -1},
                                                                 {contrastFeature, -1}}))
            return code;
    }
    state.read.assign(state.map.size(), DecodedChar());
    NumChars = static_cast<int>(state.map.size());
    return NoError;
}

int CharReader::StoreFeatures(int blob, std::initializer_list<std::pair<int, double>> values)
{
    for (const auto& [feature, value] : values)
        if (const int code = TrySetFeature(blob, feature, value)) return code;
    return NoError;
}

int CharReader::StoreScores()
{
    const ReaderState& state = *state_;
    for (std::size_t i = 0; i < state.map.size(); i++) {
        if (state.map[i] < 0) continue;
        const DecodedChar& read = state.read[i];
        if (const int code = StoreFeatures(
                state.map[i],
                {{fontCharFeature, read.fontChar}, {scoreFeature, read.score}, {contrastFeature, read.contrast}}))
            return code;
    }
    return NoError;
}

int CharReader::TryDecode(const Image& upright)
{
    ReaderState& state = *state_;
    DecodeSettings settings;
    const int code = WithMemory(images::noWorkingMemory, [&]() -> int {
        settings.filters = FiltersOf(*this);
        settings.globalFilter = ClassFilter(GlobalFilter);
        settings.size = ThumbnailSizeOf(*this);
        settings.whiteOnBlack = WhiteOnBlack;
        settings.jitterX = JitterX;
        settings.jitterY = JitterY;
        settings.verifyVerbatim = OCVScoring;
        settings.discardBadScores = DiscardBadScores;
        settings.useSafeScores = UseSafeScores;
        settings.minimumScore = MinimumScore;
        settings.minimumContrast = MinimumContrast;
        settings.insertSpaces = InsertSpaces;
        settings.insertNewlines = InsertNewlines;
        if (const int failure = state.decoder.Decode(upright, state.font, settings, state.Boxes(), state.strings))
            return failure;
        state.read = state.decoder.Chars();
        state.shown.clear();
        for (std::size_t i = 0; i < state.read.size(); i++) {
            const int index = state.read[i].fontChar;
            state.shown += index >= 0                  ? static_cast<wchar_t>(state.font[index].Code)
                           : index == verbatimFontChar ? static_cast<wchar_t>(FilterAt(settings.filters, i))
                                                       : L'?';
        }
        AsciiString.Assign(state.decoder.NarrowText());
        UnicodeString.Assign(state.decoder.Text());
        return NoError;
    });
    if (code) return code;
    AverageScore = state.decoder.AverageScore();
    AverageContrast = state.decoder.AverageContrast();
    return StoreScores();
}

} // namespace Tesk
