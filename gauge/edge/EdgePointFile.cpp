// ".edp" files, and the parameters of detection in the files of all gauges.
#include "gauge/EdgePoint.h"

#include "foundation/Archive.h"

namespace Tesk {

namespace {

constexpr ArchiveFormat format = {"TEDP", 1, L"File \"%ls\" is not an EdgePoint file",
                                  L"The version number \"%d\" of this EdgePoint file is too high"};

} // namespace

void EdgePoint::TransferAnalysis(Archive& block)
{
    block(Breadth, Smoothing, Noise, MinimumSlope, MinimumStep, MinimumSpan, Polarity, SplitPeaks);
}

void EdgePoint::Transfer(Archive& Block)
{
    Block.Header(format);
    Block(Beg.X, Beg.Y, End.X, End.Y);
    TransferAnalysis(Block);
}

void EdgePoint::Read(const char* PathName)
{
    ReadModel("Tesk::EdgePoint::Read", PathName, *this, ShortFile::KeepsFields);
}

void EdgePoint::Read(const wchar_t* PathName)
{
    ReadModel("Tesk::EdgePoint::Read", PathName, *this, ShortFile::KeepsFields);
}

void EdgePoint::Write(const char* PathName) const
{
    WriteModel("Tesk::EdgePoint::Write", PathName, *this);
}

void EdgePoint::Write(const wchar_t* PathName) const
{
    WriteModel("Tesk::EdgePoint::Write", PathName, *this);
}

} // namespace Tesk
