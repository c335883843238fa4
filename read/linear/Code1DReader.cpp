// The reader of linear symbols: a decoding from the scan to the results of the symbol that is chosen.
#include "read/Code1DReader.h"

#include "foundation/Angles.h"
#include "foundation/Entry.h"
#include "image/core/Refusals.h"
#include "read/core/Expansion.h"
#include "read/core/SymbologyLabel.h"
#include "read/core/WideBytes.h"
#include "read/linear/ScanState.h"
#include "read/linear/Settings.h"

#include <algorithm>
#include <cmath>
#include <cstdlib>
#include <numbers>
#include <string>
#include <string_view>

namespace Tesk {

using namespace linear;

namespace {

constexpr images::Types accepted = {Gray, Gray16, Rgb, Rgba}, colored = {Rgb, Rgba};
constexpr int mostColorDirections = 2;
constexpr int mostDensity = 65536;

int CheckDirections(int directions)
{
    if (directions <= mostColorDirections) return NoError;
    return Status::Format(
        OutOfRange, L"Color inspection does not support more than two directions (NumDirections == %d)", directions);
}

int RefuseBars()
{
    return Status::Format(OutOfRange, L"Anomaly while processing the bars, cannot proceed");
}

char GradeLetter(double mean)
{
    return mean >= 3.5 ? 'A' : mean >= 2.5 ? 'B' : mean >= 1.5 ? 'C' : mean >= 0.5 ? 'D' : 'F';
}

int Rounded(double v)
{
    return static_cast<int>(std::lround(v));
}

double Distance(Site a, Site b)
{
    return std::hypot(b.X - a.X, b.Y - a.Y);
}

} // namespace

namespace linear {

OwnState::OwnState() : state_(std::make_unique<ScanState>()) {}

OwnState::OwnState(const OwnState& other) : OwnState()
{
    *this = other;
}

OwnState& OwnState::operator=(const OwnState& other)
{
    state_->ballot = other->ballot;
    state_->trained = other->trained;
    state_->inspected = other->inspected;
    state_->trainedText = other->trainedText;
    return *this;
}

OwnState::~OwnState() = default;

LinearSettings SettingsOf(const Code1DReader& reader)
{
    LinearSettings settings;
    settings.detectEAN128 = reader.DetectEAN128;
    settings.detectEAN13 = reader.DetectEAN13;
    settings.detectEAN8 = reader.DetectEAN8;
    settings.detectUPCA = reader.DetectUPCA;
    settings.detectUPCE = reader.DetectUPCE;
    settings.detect2of5 = reader.Detect2of5;
    settings.detect39 = reader.Detect39;
    settings.detect39Extended = reader.Detect39Extended;
    settings.detect93 = reader.Detect93;
    settings.detectCodabar = reader.DetectCodabar;
    settings.detectDatabar = reader.DetectDatabar;
    settings.detectDatabarLimited = reader.DetectDatabarLimited;
    settings.detectPharmacode = reader.DetectPharmacode;
    settings.detectITF14 = reader.DetectITF14;
    settings.detectMatrix2of5 = reader.DetectMatrix2of5;
    settings.detectMSI = reader.DetectMSI;
    settings.detect11 = reader.Detect11;
    settings.reverse = reader.Reverse;
    settings.checkQuietZone = reader.CheckQuietZone;
    settings.symbologyIdentifier = reader.SymbologyIdentifier;
    settings.minimumBars = reader.MinimumBars;
    return settings;
}

} // namespace linear

void Code1DReader::ClearResults()
{
    chosen_ = -1;
    AsciiString.Clear();
    UnicodeString.Clear();
    Symbology = NoSymbology;
    ValidCRC = false;
    ReadFNC1 = 0;
    ReaderProgramming = false;
    Append = false;
    X = 0;
    Y = 0;
    Width = 0;
    Height = 0;
    Angle = 0;
    AsciiGrade = '\0';
    UnicodeGrade = L'\0';
    AsciiProfileGrades.Clear();
}

bool Code1DReader::Decode(const Image& Src)
{
    const Entry entry("Tesk::Code1DReader::Decode");
    ClearResults();
    NumDecoded = 0;
    ValidColors = false;
    state_->inspected.count = 0;
    state_->ballot.Clear();
    if (entry.Refuses(images::CheckType(Src, accepted))) return false;
    if (!entry.Guards(images::noWorkingMemory, [&] { Scan(Src); })) return false;
    if (NumDecoded == 0) {
        entry.Refuse(CannotRead, L"No symbol candidate was found in the image");
        return false;
    }
    // The symbol is read, whatever becomes of its quality and its colours.
    if (entry.Refuses(Choose(state_->ballot.Best(NumDecoded), &Src))) return true;
    if (Symbology == CodePharmacode && colored.Has(Src.Type) && state_->trained.count > 0)
        entry.Refuses(InspectColors(Src));
    return true;
}

void Code1DReader::Scan(const Image& src)
{
    const Raster raster(src);
    LinearSettings settings = SettingsOf(*this);
    ScanScratch& scratch = state_->scratch;
    const auto longest = static_cast<std::size_t>(std::max(raster.Width(), raster.Height())) + 1 + 2 * lineBorder;
    if (scratch.line.size() < longest) scratch.line.resize(longest);

    VotingReader reader(raster, settings, state_->ballot, scratch);
    reader.rule = EdgeRule::Of(Noise, Step);
    const int density = std::clamp(Density, 1, mostDensity);
    ScanDirections(reader, NumDirections, Reverse, density);
    NumDecoded = state_->ballot.Count(leastVotes);
    if (NumDecoded == 0 && LookCloser) {
        settings.detectDatabarRows = settings.detectDatabar;
        VotingReader closer(raster, settings, state_->ballot, scratch);
        closer.Charge(reader.Work());
        NumDecoded = linear::LookCloser(closer, NumDirections, density);
    }
    state_->ballot.Move(NumDecoded, src.X, src.Y);
}

void Code1DReader::Choose(int DecodedIndex, const Image& Src)
{
    const Entry entry("Tesk::Code1DReader::Choose");
    entry.Refuses(Choose(DecodedIndex, &Src));
}

void Code1DReader::Choose(int DecodedIndex)
{
    const Entry entry("Tesk::Code1DReader::Choose");
    entry.Refuses(Choose(DecodedIndex, nullptr));
}

int Code1DReader::Choose(int index, const Image* src)
{
    if (index < 0) {
        ClearResults();
        return NoError;
    }
    if (NumDecoded == 0) return Status::Format(OutOfRange, L"No symbol has been decoded");
    if (index >= NumDecoded)
        return Status::Format(OutOfRange, L"The symbol index (%d) must be in range [0..%d]", index, NumDecoded - 1);
    if (CheckQuality && !src)
        return Status::Format(UnsupportedType,
                              L"The Quality Indicators require the Src argument; use the other overload");
    if (CheckQuality)
        if (const int code = images::CheckType(*src, accepted)) return code;

    ClearResults();
    chosen_ = index;
    const ScanVote& symbol = state_->ballot[index];
    AsciiString.Assign(symbol.Text());
    UnicodeString.Assign(WideBytes(symbol.Text()));
    Symbology = symbol.symbology;
    ValidCRC = (symbol.flags & ChecksumFailed) == 0;
    ReadFNC1 = symbol.fnc1Position;
    ReaderProgramming = (symbol.flags & ReaderProgrammed) != 0;
    Append = (symbol.flags & AppendRequested) != 0;

    // The text runs along the box, whose height lies a quarter turn further: from the other line where that is a
    // mirror.
    const auto [a, b, c, d] = symbol.corners;
    const bool turned = (b.X - a.X) * (d.Y - a.Y) < (b.Y - a.Y) * (d.X - a.X);
    const Site from = turned ? d : a, to = turned ? c : b;
    X = from.X;
    Y = from.Y;
    Width = Rounded(Distance(from, to));
    Height = Rounded(Distance(a, d));
    Angle = ToDegrees(std::atan2(to.Y - from.Y, to.X - from.X));
    if (!CheckQuality) return NoError;
    return WithMemory(images::noWorkingMemory, [&] { Grade(*src); });
}

void Code1DReader::Grade(const Image& src)
{
    const PrintQuality quality =
        GradePrint(Raster(src), state_->ballot[chosen_], XY(src.X, src.Y), state_->scratch.fine);
    const auto letter = [](int value) { return value == 0 ? 'F' : static_cast<char>('E' - value); };
    for (std::size_t i = 0; i < PrintQuality::profiles; i++) {
        AsciiProfileGrades.Append(letter(quality.Grade(i)));
        AsciiProfileGrades.Append(' ');
        for (const int value : quality.values[i])
            AsciiProfileGrades.Append(letter(value));
        AsciiProfileGrades.Append('\n');
    }
    AsciiGrade = GradeLetter(quality.Mean());
    UnicodeGrade = static_cast<wchar_t>(AsciiGrade);
}

void Code1DReader::ColorTrain(const Image& Src)
{
    const Entry entry("Tesk::Code1DReader::ColorTrain");
    if (entry.Refuses(CheckImage(Src))) return;
    if (!colored.Has(Src.Type)) {
        entry.Refuses(images::RefuseType(Src.Type, L" - must be a color image"));
        return;
    }
    if (entry.Refuses(CheckDirections(NumDirections))) return;
    if (Symbology != CodePharmacode || chosen_ < 0) {
        entry.Refuse(UnsupportedType, L"Color inspection applies to Pharmacodes only - this is a %ls Symbol",
                     SymbologyLabel(Symbology));
        return;
    }
    const ScanVote& symbol = state_->ballot[chosen_];
    ColorBars bars;
    const int code = WithMemory(images::noWorkingMemory, [&]() -> int {
        const bool found = FindColorBars(Src, SettingsOf(*this), EdgeRule::Of(Noise, Step), symbol, NumDirections >= 0,
                                         state_->scratch, bars);
        return found ? int{NoError} : RefuseBars();
    });
    if (entry.Refuses(code)) return;
    for (int i = 0; i < bars.count; i++)
        bars.bars[static_cast<std::size_t>(i)].passed = true;
    state_->trained = bars;
    state_->trainedText = symbol.text;
    NumColorBars = bars.count;
}

/// Compares the bars of the chosen symbol with the trained ones.
int Code1DReader::InspectColors(const Image& src)
{
    if (const int code = CheckDirections(NumDirections)) return code;
    const ScanVote& symbol = state_->ballot[chosen_];
    if (std::string_view(symbol.text.data()) != state_->trainedText.data())
        return Status::Format(UnsupportedFormat, L"Unexpected decoded value, cannot check the bar colors");
    ColorBars& bars = state_->inspected;
    const int code = WithMemory(images::noWorkingMemory, [&]() -> int {
        const bool found = FindColorBars(src, SettingsOf(*this), EdgeRule::Of(Noise, Step), symbol, NumDirections >= 0,
                                         state_->scratch, bars);
        return found && bars.count == state_->trained.count ? int{NoError} : RefuseBars();
    });
    if (code != NoError) {
        bars.count = 0;
        return code;
    }
    bool all = true;
    for (std::size_t i = 0; i < static_cast<std::size_t>(bars.count); i++) {
        const RgbPixel found = bars.bars[i].color, trained = state_->trained.bars[i].color;
        const int largest = std::max({std::abs(found.Red - trained.Red), std::abs(found.Green - trained.Green),
                                      std::abs(found.Blue - trained.Blue)});
        bars.bars[i].passed = largest <= RgbTolerance;
        all = all && bars.bars[i].passed;
    }
    ValidColors = all;
    return NoError;
}

void Code1DReader::ShallowCopy(const Code1DReader& Src, bool KeepView)
{
    const Entry entry("Tesk::Code1DReader::ShallowCopy");
    if (&Src == this) return;
    entry.Guards(images::noWorkingMemory, [&] {
        const Code1DSettings own = *this;
        *this = Src;
        if (!KeepView) static_cast<Code1DSettings&>(*this) = own;
    });
}

int Code1DReader::ExpandGS1(const char In[], char Out[], int OutLength, bool Verbose)
{
    const Entry entry("Tesk::Code1DReader::ExpandGS1");
    return Tesk::ExpandGS1(In, Out, OutLength, Verbose);
}

RgbPixel Code1DReader::BarColor(int Index) const
{
    const Entry entry("Tesk::Code1DReader::BarColor");
    if (Index < 0 || Index >= NumColorBars) {
        entry.Refuse(OutOfRange, L"The bar index (%d) is out of the available range [0..%d]", Index, NumColorBars - 1);
        return {0, 0, 0};
    }
    return state_->trained.bars[static_cast<std::size_t>(Index)].color;
}

} // namespace Tesk
