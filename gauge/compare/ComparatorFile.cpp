// Comparators in ".cmp" files.
#include "gauge/Comparator.h"

#include "foundation/Archive.h"
#include "gauge/compare/CompareFrame.h"

#include <algorithm>
#include <cmath>
#include <cstddef>

namespace Tesk {

using namespace compare;

namespace {

constexpr ArchiveFormat format = {"TCMP",
                                  1,
                                  L"File \"%ls\" is not a Comparator model",
                                  L"The version number (%d) of this Comparator model is too high",
                                  1,
                                  L"The version number (%d) of this Comparator model is no more supported ",
                                  UnsupportedFormat,
                                  UnsupportedFormat};

constexpr int boxBytes = 8;

void TransferBox(Archive& block, Limits& box)
{
    block(box.X, box.Y, box.Width, box.Height);
}

template <typename... Values>
bool AreNumbers(const Values&... values)
{
    return (std::isfinite(double(values)) && ...);
}

} // namespace

void Comparator::TransferRanges(Archive& block)
{
    double shiftX[] = {MinShiftX, MaxShiftX}, shiftY[] = {MinShiftY, MaxShiftY},
           rotation[] = {MinRotation, MaxRotation}, scaling[] = {MinScaling, MaxScaling};
    for (auto* range : {&shiftX, &shiftY, &rotation, &scaling})
        block((*range)[0], (*range)[1]);
    if (!block.Reading()) return;
    MinShiftX = shiftX[0], MaxShiftX = shiftX[1];
    MinShiftY = shiftY[0], MaxShiftY = shiftY[1];
    MinRotation = rotation[0], MaxRotation = rotation[1];
    MinScaling = scaling[0], MaxScaling = scaling[1];
}

/// Whether what was read, but for the locators, is a comparator that could have been taught.
bool Comparator::IsWhole() const
{
    if (Mode <= CompareIdle || Mode > Inspected || (reference_.Type != Gray && reference_.Type != Rgb)) return false;
    if (reference_.Width > farthest || reference_.Height > farthest || Model < Translation || Model > Rational)
        return false;
    const auto fits = [this](const Image& limit) {
        return limit.Type == reference_.Type && limit.Width == reference_.Width && limit.Height == reference_.Height;
    };
    const bool isOpen = lower_.Type == Undefined && upper_.Type == Undefined;
    if (!isOpen && !(fits(lower_) && fits(upper_))) return false;
    if (NumAligners < 1 || NumDetectors < 1) return false;
    const Limits& area = WorkingArea();
    if (area.X < 0 || area.Y < 0 || area.Width < 1 || area.Height < 1 || area.X + area.Width > reference_.Width ||
        area.Y + area.Height > reference_.Height)
        return false;
    return std::all_of(SearchRanges.begin(), SearchRanges.end(), [](double v) { return std::isfinite(v); }) &&
           std::all_of(ReferenceMean.begin(), ReferenceMean.end(), [](double v) { return std::isfinite(v); }) &&
           AreNumbers(ReferenceVariance, MinShiftX, MaxShiftX, MinShiftY, MaxShiftY, MinRotation, MaxRotation,
                      MinScaling, MaxScaling);
}

/// A file takes a train ROI to be the one that the locator has learned.
void Comparator::TransferAligners(Archive& block)
{
    for (int i = 0; i < NumAligners && block.Good(); i++) {
        TransferBox(block, AlignerAt(i).train);
        TransferBox(block, AlignerAt(i).search);
        if (block.Reading()) AlignerAt(i).trained = AlignerAt(i).train;
    }
}

void Comparator::Transfer(Archive& Block)
{
    const auto broken = [&] { Block.Refuse(CannotRead, L"Cannot read file \"%ls\"", Block.Name()); };
    Block.Header(format);
    int aligners = NumAligners, detectors = NumDetectors;
    Block(Mode);
    if (!Block.Good()) return;
    reference_.Transfer(Block, true);
    Block(aligners, AlignerIndex);
    Block.Count(detectors, boxBytes);
    Block(DetectorIndex);
    TransferRanges(Block);
    Block(GainCompensation);
    if (!Block.Good()) return;
    lower_.Transfer(Block, true);
    upper_.Transfer(Block, true);
    if (Block.Reading() && (aligners < 0 || aligners > MostAligners || detectors < 0)) return broken();
    NumAligners = aligners;
    TransferAligners(Block);
    RegistrationModels model = Model;
    Block(model);
    Model = model;
    Block.Elements(SearchMargins.values_.data(), SearchMargins.size());
    Block.Elements(SearchRanges.values_.data(), SearchRanges.size());
    if (!Block.Good()) return;
    if (Block.Reading()) detectors_.assign(static_cast<std::size_t>(detectors), Limits(0, 0, 0, 0));
    NumDetectors = detectors;
    for (Limits& detector : detectors_)
        TransferBox(Block, detector);
    Block.Elements(ReferenceMean.values_.data(), ReferenceMean.size());
    double variance = ReferenceVariance;
    bool statistical = Statistical;
    Block(variance, statistical);
    ReferenceVariance = variance;
    Statistical = statistical;
    if (!Block.Good()) return;
    if (Block.Reading() && !IsWhole()) return broken();
    for (int i = 0; i < NumAligners && Block.Good(); i++)
        AlignerAt(i).locator.Transfer(Block);
}

namespace {

/// A comparator of its own takes the file, so that nothing of the former one is left.
template <typename Path>
void ReadFrom(const Path* pathName, Comparator& comparator)
{
    ReadModel("Tesk::Comparator::Read", pathName, ShortFile::Refused, [&](Archive& archive) {
        Comparator read;
        read.Transfer(archive);
        if (archive.Good()) comparator = read;
    });
}

} // namespace

void Comparator::Read(const char* PathName)
{
    ReadFrom(PathName, *this);
}

void Comparator::Read(const wchar_t* PathName)
{
    ReadFrom(PathName, *this);
}

void Comparator::Write(const char* PathName) const
{
    const Entry entry("Tesk::Comparator::Write");
    if (!RefusesIdle(entry)) WriteModel("Tesk::Comparator::Write", PathName, *this);
}

void Comparator::Write(const wchar_t* PathName) const
{
    const Entry entry("Tesk::Comparator::Write");
    if (!RefusesIdle(entry)) WriteModel("Tesk::Comparator::Write", PathName, *this);
}

} // namespace Tesk
