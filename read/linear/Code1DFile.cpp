// The files of a reader's settings.
#include "foundation/Archive.h"
#include "read/Code1DReader.h"

namespace Tesk {

namespace {

constexpr ArchiveFormat format = {"TC1R", 4, nullptr,
                                  L"The version number \"%d\" of this Code1DReader file is too high"};
constexpr int firstWithIdentifier = 2, firstWithReserved = 3, firstWithMoreKinds = 4;

} // namespace

void Code1DReader::Read(const char* PathName)
{
    ReadModel("Tesk::Code1DReader::Read", PathName, *this);
}

void Code1DReader::Read(const wchar_t* PathName)
{
    ReadModel("Tesk::Code1DReader::Read", PathName, *this);
}

void Code1DReader::Write(const char* PathName) const
{
    WriteModel("Tesk::Code1DReader::Write", PathName, *this);
}

void Code1DReader::Write(const wchar_t* PathName) const
{
    WriteModel("Tesk::Code1DReader::Write", PathName, *this);
}

void Code1DReader::Transfer(Archive& Block)
{
    const int version = Block.Header(format);
    Block(DetectEAN128, DetectEAN13, DetectEAN8, DetectUPCA, DetectUPCE, Detect2of5, Detect39, Detect39Extended);
    Block(Detect93, DetectCodabar, DetectDatabar, DetectDatabarLimited, DetectPharmacode);
    bool reserved = false;
    if (version >= firstWithReserved) Block(reserved);
    if (version >= firstWithMoreKinds)
        Block(DetectITF14, DetectMatrix2of5, DetectMSI, Detect11);
    else
        DetectITF14 = DetectMatrix2of5 = DetectMSI = Detect11 = false;
    Block(NumDirections, Density, Noise, Step, Reverse, CheckQuietZone, MinimumBars, CheckQuality);
    if (version >= firstWithIdentifier)
        Block(SymbologyIdentifier);
    else
        SymbologyIdentifier = true;
}

} // namespace Tesk
