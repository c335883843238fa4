#include "read/CharReader.h"

#include "Failures.h"
#include "Glyphs.h"
#include "foundation/Archive.h"

#include <gtest/gtest.h>

#include <cstring>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <string>
#include <unistd.h>
#include <vector>

namespace Tesk {
namespace {

namespace fs = std::filesystem;

/// The fields of a file one by one.
struct Bytes
{
    std::vector<std::uint8_t> all;

    template <typename T>
    Bytes& operator()(T value)
    {
        std::uint8_t bytes[sizeof value];
        std::memcpy(bytes, &value, sizeof value);
        all.insert(all.end(), bytes, bytes + sizeof value);
        return *this;
    }
    Bytes& Text(const char* text)
    {
        all.insert(all.end(), text, text + std::strlen(text));
        return *this;
    }
    Bytes& Flags(std::initializer_list<int> flags)
    {
        for (const int flag : flags)
            all.push_back(static_cast<std::uint8_t>(flag));
        return *this;
    }
};

/// A sample of 5 x 2 pixels with its rows of 8 bytes.
void AppendChar(Bytes& bytes, std::uint16_t code, int userClass, bool whiteOnBlack)
{
    bytes(5)(2)(int{Gray})(code)(userClass).Flags({whiteOnBlack});
    bytes.Flags({1, 2, 3, 4, 250, 0, 0, 0, 11, 12, 13, 14, 15, 0, 0, 0});
}

Bytes Version6()
{
    Bytes bytes;
    bytes.Text("TREA")(6)(30)(44)(5)(2)(2);
    AppendChar(bytes, 'A', 7, false);
    AppendChar(bytes, 0x416, -3, true);
    return bytes;
}

Bytes Version10()
{
    Bytes bytes;
    bytes.Text("TREA")(10)(30)(44).Flags({1, 0, 1, 0})(3)(2)(4)(0.75).Flags({1, 1})(0.2)(0.3).Flags({0, 0})(3);
    bytes.Flags({1})(6).Text("A%9%u").Flags({0})(1);
    for (const int side : {-1, 2, 30, 40})
        bytes(static_cast<std::int16_t>(side));
    bytes(8)(10)(0);
    return bytes;
}

/// All that version 18 holds before the size of the font.
Bytes Settings18(bool full)
{
    Bytes bytes;
    bytes.Text("TREA")(18)(30)(44).Flags({1, 0, 1, 0})(3)(2)(4)(0.75).Flags({1, 1})(0.2)(0.3).Flags({0, 0})(3);
    bytes.Flags({1});
    if (full) {
        bytes(6).Text("A%9%u").Flags({0})(1);
        for (const int side : {-1, 2, 30, 40})
            bytes(static_cast<std::int16_t>(side));
        bytes.Flags({1})(1);
    } else {
        bytes(3).Text("%*").Flags({0})(0).Flags({1});
    }
    bytes.Flags({1, 0})(2)(-7.5)(9.0)(4)(3)(120)(-0.5)(-2).Flags({1})(std::uint16_t{'U'});
    return bytes;
}

Bytes Version18()
{
    Bytes bytes = Settings18(true);
    bytes(5)(2)(1);
    AppendChar(bytes, 'A', 7, true);
    return bytes;
}

class FontFileTest : public checks::IgnoringFailures
{
protected:
    void SetUp() override
    {
        IgnoringFailures::SetUp();
        fs::create_directories(folder);
    }
    void TearDown() override
    {
        fs::remove_all(folder);
        IgnoringFailures::TearDown();
    }
    int Read(const std::vector<std::uint8_t>& bytes, bool settingsOnly = false)
    {
        std::ofstream(path, std::ios::binary | std::ios::trunc)
            .write(reinterpret_cast<const char*>(bytes.data()), static_cast<std::streamsize>(bytes.size()));
        reader.Read(path.c_str(), settingsOnly);
        return Status::Error().Code;
    }
    std::vector<std::uint8_t> Written(bool settingsOnly = false, bool optimalOnly = false)
    {
        fs::remove(path);
        reader.Write(path.c_str(), settingsOnly, optimalOnly);
        EXPECT_EQ(Status::Error().Code, NoError);
        std::ifstream file(path, std::ios::binary);
        return std::vector<std::uint8_t>(std::istreambuf_iterator<char>(file), {});
    }
    void Train(char code, std::uint32_t seed)
    {
        Image sample;
        checks::Fill(sample, 32, 40, seed);
        reader.FontCharInsert(sample, code, static_cast<int>(seed));
        ASSERT_EQ(Status::Error().Code, NoError);
    }

    fs::path folder = fs::temp_directory_path() / ("tesk-font-" + std::to_string(getpid()));
    fs::path path = folder / "some.fnt";
    CharReader reader;
};

TEST_F(FontFileTest, Version6HasSizesAndCharactersAlone)
{
    reader.MinAngle = -12;
    reader.GuessSize = false;
    reader.OCVScoring = false;
    reader.GlobalFilter = L'9';
    reader.Threshold = 9;
    reader.AsciiFilter = "%9";
    ASSERT_EQ(Read(Version6().all), NoError);
    EXPECT_EQ(reader.CharWidth, 30);
    EXPECT_EQ(reader.CharHeight, 44);
    EXPECT_TRUE(!reader.WhiteOnBlack && reader.GuessSize && !reader.KeepRatio && reader.RepairBroken);
    EXPECT_EQ(reader.MaxTouching, 5);
    EXPECT_TRUE(reader.JitterX == 0 && reader.JitterY == 0);
    EXPECT_EQ(reader.MinimumScore, 0.9);
    EXPECT_EQ(reader.DotFraction, 0.5);
    EXPECT_EQ(reader.Threshold, Auto);
    EXPECT_TRUE(reader.OCVScoring);
    EXPECT_EQ(reader.GlobalFilter, L'*');
    EXPECT_EQ(reader.AsciiFilter, "%*");
    EXPECT_EQ(reader.LayoutMode, NoLayout);
    EXPECT_EQ(reader.MinAngle, -12);
    ASSERT_EQ(reader.NumFontChars, 2);
    const FontChar& character = reader.FontCharAt(0);
    EXPECT_EQ(character.Code, 'A');
    EXPECT_EQ(character.Class, 7);
    EXPECT_EQ(character.Sum, 1 + 2 + 3 + 4 + 250 + 65);
    EXPECT_EQ(character.Sample.Row(0)[4], 250);
    EXPECT_EQ(reader.FontCharAt(1).Code, 0x416);
    EXPECT_EQ(reader.FontCharAt(1).Class, -3);
    EXPECT_TRUE(reader.FontCharAt(1).WhiteOnBlack);
}

TEST_F(FontFileTest, Version10HasALayoutWithoutAMode)
{
    Train('B', 1);
    ASSERT_EQ(Read(Version10().all), NoError);
    EXPECT_TRUE(reader.WhiteOnBlack && !reader.GuessSize && reader.KeepRatio && !reader.RepairBroken);
    EXPECT_EQ(reader.MaxTouching, 3);
    EXPECT_EQ(reader.JitterX, 2);
    EXPECT_EQ(reader.JitterY, 4);
    EXPECT_EQ(reader.MinimumScore, 0.75);
    EXPECT_TRUE(reader.UseSafeScores && reader.DiscardBadScores && !reader.InsertNewlines && !reader.InsertSpaces);
    EXPECT_EQ(reader.GapFraction, 0.2);
    EXPECT_EQ(reader.DotFraction, 0.3);
    EXPECT_EQ(reader.Quadrant, 3);
    EXPECT_TRUE(reader.VariableWidth);
    EXPECT_EQ(reader.AsciiFilter, "A%9%u");
    EXPECT_EQ(reader.NumLayoutChars, 1);
    EXPECT_EQ(reader.LayoutMode, FlexibleLayout);
    EXPECT_TRUE(reader.OCVScoring);
    EXPECT_EQ(reader.GlobalFilter, L'*');
    EXPECT_FALSE(CharReader().OCVScoring);
    EXPECT_EQ(reader.FontWidth, 8);
    EXPECT_EQ(reader.FontHeight, 10);
    EXPECT_EQ(reader.NumFontChars, 0);
}

TEST_F(FontFileTest, Version18IsReadAndWrittenByteForByte)
{
    const Bytes bytes = Version18();
    ASSERT_EQ(Read(bytes.all), NoError);
    EXPECT_TRUE(reader.LocalThreshold && reader.AlignChars && !reader.EvenlySpaceChars);
    EXPECT_EQ(reader.LayoutMode, RigidLayout);
    EXPECT_EQ(reader.Dotted, 2);
    EXPECT_EQ(reader.MinAngle, -7.5);
    EXPECT_EQ(reader.MaxAngle, 9);
    EXPECT_EQ(reader.Masking, 4);
    EXPECT_EQ(reader.SplitRows, 3);
    EXPECT_EQ(reader.Threshold, 120);
    EXPECT_EQ(reader.MinimumContrast, -0.5);
    EXPECT_EQ(reader.InkingCorrection, -2);
    EXPECT_TRUE(reader.OCVScoring);
    EXPECT_EQ(reader.GlobalFilter, L'U');
    // VariableWidth: (5 * 5 + 30 / 2) / 30
    EXPECT_EQ(+reader.FontCharAt(0).Thumbnail.Width, 1);
    EXPECT_EQ(Written(), bytes.all);
}

TEST_F(FontFileTest, SettingsAloneLeaveFontLayoutAndFilter)
{
    ASSERT_EQ(Read(Version18().all), NoError);
    Bytes settings = Settings18(false);
    settings(5)(2)(0);
    EXPECT_EQ(Written(true), settings.all);
    for (const bool asked : {true, false}) {
        reader.SplitRows = 8;
        ASSERT_EQ(Read(settings.all, asked), NoError) << asked;
        EXPECT_EQ(reader.SplitRows, 3);
        EXPECT_EQ(reader.NumFontChars, 1);
        EXPECT_EQ(reader.NumLayoutChars, 1);
        EXPECT_EQ(reader.LayoutMode, RigidLayout);
        EXPECT_EQ(reader.AsciiFilter, "A%9%u");
    }
    // From the file of a font, too.
    CharReader().Write(path.c_str());
    reader.Read(path.c_str(), true);
    EXPECT_EQ(Status::Error().Code, NoError);
    EXPECT_EQ(reader.Masking, 0);
    EXPECT_EQ(reader.FontHeight, 20);
    EXPECT_EQ(reader.NumFontChars, 1);
    EXPECT_EQ(+reader.FontCharAt(0).Thumbnail.Height, 20);
    EXPECT_EQ(reader.LayoutMode, RigidLayout);
    // And all of it, which has no characters.
    reader.Read(path.c_str());
    EXPECT_EQ(reader.NumFontChars, 0);
    EXPECT_EQ(reader.AsciiFilter, "%*");
    EXPECT_EQ(reader.LayoutMode, NoLayout);
}

TEST_F(FontFileTest, OptimalCharactersAloneAreWritten)
{
    Train('A', 1);
    Train('A', 1);
    Train('B', 2);
    reader.Optimize(true);
    ASSERT_EQ(Read(Written(false, true)), NoError);
    ASSERT_EQ(reader.NumFontChars, 2);
    EXPECT_EQ(reader.FontCharAt(0).Code, 'A');
    EXPECT_EQ(reader.FontCharAt(1).Code, 'B');
    EXPECT_EQ(reader.FontCharAt(1).Sample.Row(39)[31], [] {
        Image sample;
        checks::Fill(sample, 32, 40, 2);
        return sample.Row(39)[31];
    }());
}

TEST_F(FontFileTest, RefusesOtherVersionsAndFiles)
{
    Bytes bytes = Version18();
    bytes.all[4] = 19;
    EXPECT_EQ(Read(bytes.all), OutOfRange);
    EXPECT_EQ(checks::Message(), L"The version number (19) of this CharReader Font is too high");
    bytes.all[4] = 5;
    EXPECT_EQ(Read(bytes.all), OutOfRange);
    EXPECT_EQ(checks::Message(), L"The version number (5) of this CharReader Font is no more supported ");
    bytes.all[0] = 'X';
    EXPECT_EQ(Read(bytes.all), UnsupportedFormat);
    EXPECT_EQ(checks::Message(), L"");
    reader.Read((folder / "none.fnt").c_str());
    EXPECT_EQ(Status::Error().Code, CannotOpen);
    reader.Write((folder / "none" / "some.fnt").c_str());
    EXPECT_EQ(Status::Error().Code, CannotOpen);
}

TEST_F(FontFileTest, AFileCutAnywhereChangesNothing)
{
    Train('B', 1);
    const std::vector<std::uint8_t> before = Written();
    for (const Bytes& bytes : {Version18(), Version10(), Version6()})
        for (std::size_t length = 0; length < bytes.all.size(); length++) {
            const std::vector<std::uint8_t> cut(bytes.all.begin(),
                                                bytes.all.begin() + static_cast<std::ptrdiff_t>(length));
            const int code = Read(cut);
            EXPECT_EQ(code, length > 0 && length < 4 ? UnsupportedFormat : CannotRead) << length;
        }
    EXPECT_EQ(Written(), before);
}

TEST_F(FontFileTest, RefusesSizesThatNoFontHas)
{
    for (const int size : {0, -1, 257, 0x7fffffff}) {
        Bytes width = Settings18(true);
        width(size)(2)(0);
        EXPECT_EQ(Read(width.all), CannotRead) << size;
    }
    for (const int count : {-1, 2, 0x7fffffff}) {
        Bytes chars = Settings18(true);
        chars(5)(2)(count);
        AppendChar(chars, 'A', 7, true);
        EXPECT_EQ(Read(chars.all), CannotRead) << count;
    }
    Bytes broad = Settings18(true);
    broad(5)(2)(1)(0x7fffffff)(0x7fffffff)(int{Gray});
    broad.all.resize(broad.all.size() + 100);
    EXPECT_EQ(Read(broad.all), CannotRead);
}

} // namespace
} // namespace Tesk
