// The reader of matrix codes: a decoding from the image to the results of the symbol that is chosen.
#include "read/Code2DReader.h"

#include "foundation/Angles.h"
#include "foundation/Entry.h"
#include "foundation/KeepChanged.h"
#include "image/core/Refusals.h"
#include "image/operator/PixelSteps.h"
#include "read/core/Expansion.h"
#include "read/core/WideBytes.h"
#include "read/matrix/ReaderState.h"

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <numbers>
#include <string>
#include <utility>

namespace Tesk {

using namespace matrix;

namespace {

constexpr images::Types accepted = {Gray, Rgb, Rgba};
constexpr int mostInking = 16;

/// The name of a size in messages, as programs write it.
std::wstring SizeName(int size)
{
    if (codewords::IsDataMatrixSize(size)) {
        const codewords::DataMatrixSize& cells = codewords::DataMatrixSizes()[static_cast<std::size_t>(size)];
        const std::wstring rows = std::to_wstring(cells.rows);
        return L"Size" + (cells.rows == cells.columns ? rows : rows + L"x" + std::to_wstring(cells.columns));
    }
    if (size >= Version1 && size <= Version40) return L"Version" + std::to_wstring(size - Version1 + 1);
    return size == DotCode ? L"DotCode" : L"?";
}

/// The settings that are no longer what they were.
void KeepSettings(const Code2DSettings& own, const Code2DSettings& former, Code2DSettings& dst)
{
    using S = Code2DSettings;
    KeepChanged(own, former, dst, &S::EnabledPolarities, &S::EnabledViews, &S::SizeFrom, &S::SizeTo,
                &S::DetectDataMatrix, &S::DetectQR, &S::DetectDotCode, &S::SymbologyIdentifier, &S::AdaptiveThreshold,
                &S::Threshold, &S::StartLevel, &S::AccurateEdges, &S::MaxDecoded, &S::CheckQuality,
                &S::InkingCorrection, &S::ObsoleteDotCode, &S::ClutteredQuietZone, &S::LookCloser);
}

int Rounded(double v)
{
    return static_cast<int>(std::lround(v));
}

} // namespace

namespace matrix {

OwnState::OwnState() : state_(std::make_unique<ReaderState>()) {}

OwnState::OwnState(const OwnState& other) : OwnState()
{
    *this = other;
}

OwnState& OwnState::operator=(const OwnState& other)
{
    state_->search.symbols = other->search.symbols;
    state_->search.grades = other->search.grades;
    state_->origin = other->origin;
    state_->finders = other->finders;
    state_->correction = other->correction;
    return *this;
}

OwnState::~OwnState() = default;

namespace {

SearchSettings SettingsOf(const Code2DReader& reader)
{
    SearchSettings settings;
    settings.polarities = reader.EnabledPolarities;
    settings.views = reader.EnabledViews;
    settings.sizeFrom = reader.SizeFrom;
    settings.sizeTo = reader.SizeTo;
    settings.adaptiveThreshold = reader.AdaptiveThreshold;
    settings.threshold = reader.Threshold == Auto ? Auto : std::clamp(reader.Threshold, 0, 255);
    settings.identifier = reader.SymbologyIdentifier;
    settings.accurateEdges = reader.AccurateEdges;
    settings.checkQuality = reader.CheckQuality;
    settings.obsoleteDotCode = reader.ObsoleteDotCode;
    settings.clutteredQuietZone = reader.ClutteredQuietZone;
    settings.maxDecoded = std::clamp(reader.MaxDecoded, 1, mostSymbols);
    return settings;
}

LadderPlan PlanOf(const Code2DReader& reader)
{
    LadderPlan plan;
    plan.dataMatrix = reader.DetectDataMatrix;
    plan.qr = reader.DetectQR;
    plan.dotCode = reader.DetectDotCode;
    plan.startLevel = std::clamp(reader.StartLevel, lowestLevel, highestLevel);
    plan.inking = std::clamp(reader.InkingCorrection, -mostInking, mostInking);
    plan.lookCloser = reader.LookCloser;
    return plan;
}

} // namespace

} // namespace matrix

Code2DReader::Code2DReader()
{
    ClearResults();
}

void Code2DReader::ClearResults()
{
    chosen_ = -1;
    Show(SymbolRecord{});
    X = 0;
    Y = 0;
    ClearGrades();
}

void Code2DReader::ClearGrades()
{
    Show(QualityGrades{});
}

bool Code2DReader::Decode(const Image& Src)
{
    const Entry entry("Tesk::Code2DReader::Decode");
    NumDecoded = 0;
    ClearResults();
    state_->search.symbols.clear();
    state_->search.grades.clear();
    state_->search.rectangleUngraded = false;
    state_->search.failure.Clear();
    LadderPlan plan = PlanOf(*this);
    // They hold for this decoding, whatever becomes of it.
    plan.finders = std::exchange(state_->finders, {});
    if (entry.Refuses(CheckImage(Src))) return false;
    if (DetectDataMatrix && SizeTo < SizeFrom)
        return !entry.Refuse(OutOfRange, L"The selected range of Data Matrix sizes (%ls..%ls) is void",
                             SizeName(SizeFrom).c_str(), SizeName(SizeTo).c_str());
    if (!accepted.Has(Src.Type)) {
        entry.Refuses(images::RefuseType(Src.Type));
        return false;
    }
    const Image* gray = &Src;
    if (Src.Type != Gray) {
        if (points::CopyPixels(entry, Src, state_->gray, Gray)) return false;
        gray = &state_->gray;
    }
    state_->origin = XY(Src.X, Src.Y);
    state_->search.settings = SettingsOf(*this);
    if (!entry.Guards(images::noWorkingMemory, [&] { SearchLadder(*gray, plan, *state_); })) return false;

    const SymbolSearch& search = state_->search;
    NumDecoded = static_cast<int>(search.symbols.size());
    if (NumDecoded == 0) {
        entry.Refuse(CannotRead, search.failure.message, search.failure.value);
        return false;
    }
    Choose(NumDecoded - 1, &Src);
    if (search.rectangleUngraded)
        entry.Refuse(UnsupportedType, L"Quality Check of rectangular codes is not supported yet - "
                                      L"Contact the Technical Support");
    return true;
}

void Code2DReader::Choose(int DecodedIndex, const Image& Src)
{
    const Entry entry("Tesk::Code2DReader::Choose");
    entry.Refuses(Choose(DecodedIndex, &Src));
}

void Code2DReader::Choose(int DecodedIndex)
{
    const Entry entry("Tesk::Code2DReader::Choose");
    if (DecodedIndex < 0) {
        ClearResults();
        return;
    }
    entry.Refuses(Choose(DecodedIndex, nullptr));
}

int Code2DReader::Choose(int index, const Image* src)
{
    if (NumDecoded == 0) return Status::Format(OutOfRange, L"No symbol has been decoded");
    if (index < 0 || index >= NumDecoded)
        return Status::Format(OutOfRange, L"The symbol index (%d) must be in range [0..%d]", index, NumDecoded - 1);
    if (CheckQuality && !src)
        return Status::Format(UnsupportedType,
                              L"The Quality Indicators require the Src argument; use the other overload");
    const auto i = static_cast<std::size_t>(index);
    chosen_ = index;
    Show(state_->search.symbols[i]);
    const auto& grades = state_->search.grades;
    Show(i < grades.size() ? grades[i] : QualityGrades{});
    return NoError;
}

void Code2DReader::Show(const SymbolRecord& symbol)
{
    AsciiString.Assign(symbol.text);
    UnicodeString.Assign(WideBytes(symbol.text));
    StringLength = static_cast<int>(symbol.text.size());
    Symbology = symbol.symbology;
    Size = symbol.size;
    Polarity = symbol.polarity;
    View = symbol.view;
    CellSize = symbol.cellSize;
    ReadFNC1 = symbol.readFNC1;
    ReaderProgramming = symbol.readerProgramming;
    SymbolPosition = symbol.symbolPosition;
    SymbolTotal = symbol.symbolTotal;
    SymbolFileID1 = symbol.symbolFileID1;
    SymbolFileID2 = symbol.symbolFileID2;
    ParityData = symbol.parityData;
    X = Rounded(symbol.x + state_->origin.X);
    Y = Rounded(symbol.y + state_->origin.Y);
    Width = Rounded(symbol.width);
    Height = Rounded(symbol.height);
    Angle = symbol.angle;
}

void Code2DReader::Show(const QualityGrades& grades)
{
    SymbolContrast = grades.symbolContrast;
    ContrastUniformity = grades.contrastUniformity;
    AxialNonUniformity = grades.axialNonUniformity;
    GridNonUniformity = grades.gridNonUniformity;
    UnusedError = grades.unusedError;
    PrintGrowthHorizontal = grades.printGrowth;
    PrintGrowthVertical = grades.printGrowth;
    AsciiGrades.Assign(grades.letters.data());
    UnicodeGrades.Assign(WideBytes(grades.letters.data()));
}

XY Code2DReader::Corner(int Index) const
{
    const Entry entry("Tesk::Code2DReader::Corner");
    if (Index < 0 || Index > 3) {
        entry.Refuse(OutOfRange, L"The corner index (%d) must be in range [0..3]", Index);
        return {0, 0};
    }
    if (chosen_ < 0) return {0, 0};
    return state_->origin +
           state_->search.symbols[static_cast<std::size_t>(chosen_)].corners[static_cast<std::size_t>(Index)];
}

void Code2DReader::ShallowCopy(const Code2DReader& Src, bool KeepView)
{
    const Entry entry("Tesk::Code2DReader::ShallowCopy");
    if (&Src == this) return;
    entry.Guards(images::noWorkingMemory, [&] {
        const Code2DSettings own = *this, former = taken_;
        *this = Src;
        taken_ = Src;
        if (!KeepView) KeepSettings(own, former, *this);
    });
}

void Code2DReader::DCCorrectGeometry(double LengthX, double AngleX, double LengthY, double AngleY)
{
    const Entry entry("Tesk::Code2DReader::DCCorrectGeometry");
    state_->correction = {LengthX, ToRadians(AngleX), LengthY, AngleY == 0 ? std::numbers::pi / 2 : ToRadians(AngleY)};
}

void Code2DReader::QRPresetFinders(const Site& P, const Site& Q, const Site& R, int Size)
{
    const Entry entry("Tesk::Code2DReader::QRPresetFinders");
    state_->finders = {true, {P, Q, R}, Size};
}

int Code2DReader::ExpandGS1(const char In[], char Out[], int OutLength, bool Verbose)
{
    const Entry entry("Tesk::Code2DReader::ExpandGS1");
    return Tesk::ExpandGS1(In, Out, OutLength, Verbose);
}

int Code2DReader::ExpandMIL(const char In[], char Out[], int OutLength, bool Verbose)
{
    const Entry entry("Tesk::Code2DReader::ExpandMIL");
    return Tesk::ExpandMIL(In, Out, OutLength, Verbose);
}

} // namespace Tesk
