// ".sng" files: the nodes, and the parameters behind them.
#include "foundation/Archive.h"
#include "gauge/SnakeGauge.h"

namespace Tesk {

namespace {

constexpr int versionWithoutReserved = 2, versionWithWidth = 3;
constexpr ArchiveFormat format = {"TSNG",
                                  versionWithWidth,
                                  L"File \"%ls\" is not a SnakeGauge file",
                                  L"The version number \"%d\" of this Snake Model is too high",
                                  1,
                                  L"The version number \"%d\" of this Snake Model is too low"};

} // namespace

void SnakeGauge::Transfer(Archive& Block)
{
    TransferNodes(Block);
    if (Block.Reading()) inspected_ = NoInspection;
    const int version = Block.Header(format);
    Block(MinimumStep, MinimumSlope);
    std::int32_t reserved = 0;
    if (version < versionWithoutReserved) Block(reserved);
    Block(MaximumSpan, Noise, MinimumStep2, MinimumSlope2, MaximumSpan2, Noise2, Thickness, Polarity, Polarity2,
          Selection, Selection2, Density, Breadth);
    if (version >= versionWithWidth)
        Block(NominalWidth);
    else if (Block.Good() && !Block.Ended())
        NominalWidth = Breadth / 2;
    Block(MaxDeviation, RMS);
}

void SnakeGauge::Read(const char* PathName)
{
    ReadModel("Tesk::SnakeGauge::Read", PathName, *this, ShortFile::KeepsFields);
}

void SnakeGauge::Read(const wchar_t* PathName)
{
    ReadModel("Tesk::SnakeGauge::Read", PathName, *this, ShortFile::KeepsFields);
}

void SnakeGauge::Write(const char* PathName) const
{
    WriteModel("Tesk::SnakeGauge::Write", PathName, *this);
}

void SnakeGauge::Write(const wchar_t* PathName) const
{
    WriteModel("Tesk::SnakeGauge::Write", PathName, *this);
}

} // namespace Tesk
