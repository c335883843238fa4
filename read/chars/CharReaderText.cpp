// The settings and results of a character reader as text, for inspection.
#include "foundation/Entry.h"
#include "foundation/Status.h"
#include "read/CharReader.h"

#include <cstdio>
#include <string>

namespace Tesk {

namespace {

void PrintValue(std::FILE* out, const char* name, bool value)
{
    std::fprintf(out, "%s= %s\n", name, value ? "true" : "false");
}
void PrintValue(std::FILE* out, const char* name, int value)
{
    if (value == Auto)
        std::fprintf(out, "%s= Auto\n", name);
    else
        std::fprintf(out, "%s= %d\n", name, value);
}
void PrintValue(std::FILE* out, const char* name, double value)
{
    std::fprintf(out, "%s= %g\n", name, value);
}
void PrintValue(std::FILE* out, const char* name, const char* value)
{
    std::fprintf(out, "%s= %s\n", name, value);
}
void PrintValue(std::FILE* out, const char* name, const wchar_t* value)
{
    PrintValue(out, name, Narrow(value).c_str());
}

struct Property
{
    const char* name;
    void (*print)(std::FILE* out, const char* name, const CharReader& reader);
};

/// Each as a value of the type that prints it.
template <auto Member, typename As>
constexpr Property Make(const char* name)
{
    return {name, [](std::FILE* out, const char* label, const CharReader& reader) {
                PrintValue(out, label, static_cast<As>(reader.*Member));
            }};
}

constexpr Property properties[] = {
    Make<&CharReader::Quadrant, int>("Quadrant"),
    Make<&CharReader::LocalThreshold, bool>("LocalThreshold"),
    Make<&CharReader::Threshold, int>("Threshold"),
    Make<&CharReader::WhiteOnBlack, bool>("WhiteOnBlack"),
    Make<&CharReader::CharWidth, int>("CharWidth"),
    Make<&CharReader::CharHeight, int>("CharHeight"),
    Make<&CharReader::GuessSize, bool>("GuessSize"),
    Make<&CharReader::KeepRatio, bool>("KeepRatio"),
    Make<&CharReader::RepairBroken, bool>("RepairBroken"),
    Make<&CharReader::Dotted, int>("Dotted"),
    Make<&CharReader::InkingCorrection, int>("InkingCorrection"),
    Make<&CharReader::Masking, int>("Masking"),
    Make<&CharReader::AlignChars, bool>("AlignChars"),
    Make<&CharReader::EvenlySpaceChars, bool>("EvenlySpaceChars"),
    Make<&CharReader::MaxTouching, int>("MaxTouching"),
    Make<&CharReader::SplitRows, int>("SplitRows"),
    Make<&CharReader::VariableWidth, bool>("VariableWidth"),
    Make<&CharReader::GapFraction, double>("GapFraction"),
    Make<&CharReader::DotFraction, double>("DotFraction"),
    Make<&CharReader::NumChars, int>("NumChars"),
    Make<&CharReader::MinimumContrast, double>("MinimumContrast"),
    Make<&CharReader::OCVScoring, bool>("OCVScoring"),
    Make<&CharReader::AverageContrast, double>("AverageContrast"),
    Make<&CharReader::MinimumScore, double>("MinimumScore"),
    Make<&CharReader::UseSafeScores, bool>("UseSafeScores"),
    Make<&CharReader::DiscardBadScores, bool>("DiscardBadScores"),
    Make<&CharReader::JitterX, int>("JitterX"),
    Make<&CharReader::JitterY, int>("JitterY"),
    Make<&CharReader::InsertSpaces, bool>("InsertSpaces"),
    Make<&CharReader::InsertNewlines, bool>("InsertNewlines"),
    Make<&CharReader::MinAngle, double>("MinAngle"),
    Make<&CharReader::MaxAngle, double>("MaxAngle"),
    Make<&CharReader::AsciiString, const char*>("AsciiString"),
    Make<&CharReader::AverageScore, double>("AverageScore"),
    Make<&CharReader::LayoutMode, int>("LayoutMode"),
    Make<&CharReader::NumLayoutChars, int>("NumLayoutChars"),
    Make<&CharReader::NumLayoutStrings, int>("NumLayoutStrings"),
    Make<&CharReader::FontWidth, int>("FontWidth"),
    Make<&CharReader::FontHeight, int>("FontHeight"),
    Make<&CharReader::NumFontChars, int>("NumFontChars"),
};

} // namespace

void CharReader::Print(const char* Title) const
{
    const Entry entry("Tesk::CharReader::Print");
    std::FILE* const out = TextOutput();
    if (!out) return;
    std::fprintf(out, "CharReader %s\n", Title ? Title : "");
    for (const Property& property : properties)
        property.print(out, property.name, *this);
    PrintValue(out, "GlobalFilter", std::wstring(1, GlobalFilter).c_str());
    PrintValue(out, "AsciiFilter", AsciiFilter.c_str());
    PrintValue(out, "UnicodeFilter", UnicodeFilter.c_str());
}

} // namespace Tesk
