// The files of a reader's settings.
#include "foundation/Archive.h"
#include "read/Code2DReader.h"

namespace Tesk {

namespace {

constexpr ArchiveFormat format = {"TC2R", 3, L"File \"%ls\" is not a Code2DReader file",
                                  L"The version number \"%d\" of this Code2DReader file is too high"};
constexpr int firstWithInking = 2, firstWithDotCode = 3;

} // namespace

void Code2DReader::Read(const char* PathName)
{
    ReadModel("Tesk::Code2DReader::Read", PathName, ShortFile::Refused, [this](Archive& file) { Transfer(file); });
}

void Code2DReader::Read(const wchar_t* PathName)
{
    ReadModel("Tesk::Code2DReader::Read", PathName, ShortFile::Refused, [this](Archive& file) { Transfer(file); });
}

void Code2DReader::Write(const char* PathName) const
{
    WriteModel("Tesk::Code2DReader::Write", PathName, *this);
}

void Code2DReader::Write(const wchar_t* PathName) const
{
    WriteModel("Tesk::Code2DReader::Write", PathName, *this);
}

void Code2DReader::Transfer(Archive& Block)
{
    const int version = Block.Header(format);
    if (!Block.Good()) return;
    Block(EnabledPolarities, EnabledViews, SizeFrom, SizeTo, DetectDataMatrix, DetectQR, DetectDotCode);
    Block(SymbologyIdentifier, AdaptiveThreshold, Threshold, StartLevel, AccurateEdges, MaxDecoded, CheckQuality);
    if (!Block.Good()) return;
    if (version >= firstWithInking)
        Block(InkingCorrection);
    else
        InkingCorrection = 0;
    if (version >= firstWithDotCode)
        Block(ObsoleteDotCode, ClutteredQuietZone);
    else
        ObsoleteDotCode = ClutteredQuietZone = false;
}

} // namespace Tesk
