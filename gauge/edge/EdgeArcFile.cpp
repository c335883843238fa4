// ".eda" files.
#include "gauge/EdgeArc.h"

#include "foundation/Archive.h"

namespace Tesk {

namespace {

constexpr ArchiveFormat format = {"TEDA", 3, L"File \"%ls\" is not an EdgeArc file",
                                  L"The version number \"%d\" of this EdgeArc file is too high"};
constexpr int firstWithRadius = 2, firstWithFitting = 3;
constexpr double radiusBefore = 32;

} // namespace

void EdgeArc::Transfer(Archive& Block)
{
    const int version = Block.Header(format);
    double radius = Radius, start = StartAngle, end = EndAngle;
    XY center = Center;
    if (version >= firstWithRadius) {
        Block(radius, Closed);
    } else {
        radius = radiusBefore;
        Closed = false;
    }
    Block(center.X, center.Y, start, end);
    TransferSampling(Block);
    TransferFitting(Block, version >= firstWithFitting);
    if (Block.Reading()) {
        if (Closed)
            PlaceCircle(center, radius, ProbeLength);
        else
            PlaceArc(center, radius, start, end, ProbeLength);
    }
    TransferAnalysis(Block);
}

void EdgeArc::Read(const char* PathName)
{
    ReadModel("Tesk::EdgeArc::Read", PathName, *this, ShortFile::KeepsFields);
}

void EdgeArc::Read(const wchar_t* PathName)
{
    ReadModel("Tesk::EdgeArc::Read", PathName, *this, ShortFile::KeepsFields);
}

void EdgeArc::Write(const char* PathName) const
{
    WriteModel("Tesk::EdgeArc::Write", PathName, *this);
}

void EdgeArc::Write(const wchar_t* PathName) const
{
    WriteModel("Tesk::EdgeArc::Write", PathName, *this);
}

} // namespace Tesk
