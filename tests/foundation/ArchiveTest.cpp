#include "foundation/Archive.h"

#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>
#include <iterator>
#include <unistd.h>

using namespace Tesk;
namespace fs = std::filesystem;

namespace {

constexpr ArchiveFormat format{"TSMP",
                               3,
                               L"File \"%ls\" is not a Sample file",
                               L"The version number \"%d\" of this Sample file is too high",
                               2,
                               L"The version number \"%d\" of this Sample file is no more supported"};

struct Sample
{
    PixelTypes type = Undefined;
    bool flag = false;
    std::int16_t narrow = 0;
    int wide = 0;
    double number = 0;
    std::vector<std::int32_t> values;
    std::wstring name;
    int added = 77; // since version 3

    void Transfer(Archive& archive)
    {
        const int version = archive.Header(format);
        archive(type, flag, narrow);
        archive.As<std::uint8_t>(wide);
        archive(number);
        archive.Array(values);
        archive.Text(name);
        if (version >= 3) archive(added);
    }
};

Sample Full()
{
    return {Gray16, true, -2, 200, 1.5, {1, -1, 70000}, L"a\x20ac\x1f600", 5};
}

std::vector<std::uint8_t> Written(Sample sample)
{
    std::vector<std::uint8_t> bytes;
    Archive archive = Archive::IntoMemory(bytes);
    sample.Transfer(archive);
    return bytes;
}

class ArchiveFile : public ::testing::Test
{
protected:
    void SetUp() override
    {
        Status::ErrorBehavior(IgnoreIt);
        path_ = (fs::temp_directory_path() / ("tesk_archive_" + std::to_string(getpid()))).string();
    }
    void TearDown() override { fs::remove(path_); }

    void Put(const std::vector<std::uint8_t>& bytes) const
    {
        std::ofstream(path_, std::ios::binary)
            .write(reinterpret_cast<const char*>(bytes.data()), static_cast<std::streamsize>(bytes.size()));
    }

    std::string path_;
};

} // namespace

TEST(Archive, FieldsStandLittleEndianAndUnaligned)
{
    const std::vector<std::uint8_t> expected = {
        'T', 'S', 'M', 'P', 3,   0,    0,    0,                                              // header
        2,   0,   0,   0,   1,   0xfe, 0xff, 200,                                            // type, flag, narrow, wide
        0,   0,   0,   0,   0,   0,    0xf8, 0x3f,                                           // 1.5
        3,   0,   0,   0,   1,   0,    0,    0,    0xff, 0xff, 0xff, 0xff, 0x70, 0x11, 1, 0, // values
        5,   0,   0,   0,   'a', 0,    0xac, 0x20, 0x3d, 0xd8, 0x00, 0xde, 0,    0, // a, euro sign, a surrogate pair
        5,   0,   0,   0};
    EXPECT_EQ(Written(Full()), expected);
    Archive archive = Archive::FromMemory(expected);
    Sample sample;
    sample.Transfer(archive);
    EXPECT_TRUE(archive.Good());
    EXPECT_EQ(archive.BytesLeft(), 0);
    EXPECT_EQ(Written(sample), expected);
}

TEST(Archive, OlderVersionsLeaveNewerFieldsAtTheirDefaults)
{
    std::vector<std::uint8_t> bytes = Written(Full());
    bytes[4] = 2;
    bytes.resize(bytes.size() - 4);
    Archive archive = Archive::FromMemory(bytes);
    Sample sample;
    sample.Transfer(archive);
    EXPECT_TRUE(archive.Good());
    EXPECT_EQ(sample.added, 77);
    EXPECT_EQ(sample.name, Full().name);
}

TEST(Archive, EveryCutIsRefusedOrKeepsTheFieldsThatItDoesNotReach)
{
    const std::vector<std::uint8_t> bytes = Written(Full());
    for (std::size_t length = 0; length < bytes.size(); length++) {
        const std::span<const std::uint8_t> cut(bytes.data(), length);
        Archive strict = Archive::FromMemory(cut);
        Sample refused;
        refused.Transfer(strict);
        EXPECT_FALSE(strict.Good()) << length;
        Archive tolerant = Archive::FromMemory(cut, ShortFile::KeepsFields);
        Sample kept;
        kept.Transfer(tolerant);
        // A piece of a magic is another file; a count that promises more than there is stays an error.
        const bool inMagic = length > 0 && length < 4, inValues = length >= 28 && length < 40,
                   inName = length >= 44 && length < 54;
        EXPECT_EQ(tolerant.Good(), !inMagic && !inValues && !inName) << length;
        EXPECT_EQ(kept.type, length < 12 ? Undefined : Gray16) << length;
        EXPECT_EQ(kept.added, 77);
    }
}

TEST(Archive, CountsAreBoundedByTheBytesThatAreLeft)
{
    for (const std::int32_t count : {-1, 3, 1 << 28, 0x7fffffff}) {
        std::vector<std::uint8_t> bytes;
        Archive writer = Archive::IntoMemory(bytes);
        std::int32_t written = count, element = 9;
        writer(written, element, element);
        Archive reader = Archive::FromMemory(bytes);
        std::vector<std::int32_t> values;
        reader.Array(values);
        EXPECT_EQ(reader.Code(), CannotRead) << count;
        EXPECT_TRUE(values.empty());
    }
}

TEST_F(ArchiveFile, WritersCreateAndDoNotCutAndBothPathFormsWork)
{
    const std::size_t size = Written(Full()).size();
    EXPECT_TRUE(WriteModel("Tesk::Sample::Write", path_.c_str(), Full()));
    EXPECT_EQ(fs::file_size(path_), size);
    Put(std::vector<std::uint8_t>(size + 9, 'z'));
    EXPECT_TRUE(WriteModel("Tesk::Sample::Write", Widen(path_.c_str()).c_str(), Full()));
    EXPECT_EQ(fs::file_size(path_), size + 9);
    Sample sample;
    EXPECT_TRUE(ReadModel("Tesk::Sample::Read", Widen(path_.c_str()).c_str(), sample));
    EXPECT_EQ(Written(sample), Written(Full()));
}

TEST_F(ArchiveFile, RefusalsNameTheFileAndLeaveTheObjectAlone)
{
    const auto changed = [](std::size_t at, std::uint8_t value) {
        auto bytes = Written(Full());
        bytes[at] = value;
        return bytes;
    };
    auto cut = Written(Full());
    cut.pop_back();
    const struct
    {
        std::vector<std::uint8_t> bytes;
        int code;
        std::wstring message;
    } cases[] = {
        {changed(0, 'X'), UnsupportedFormat, L"File \"" + Widen(path_.c_str()) + L"\" is not a Sample file"},
        {changed(4, 4), OutOfRange, L"The version number \"4\" of this Sample file is too high"},
        {changed(7, 0xff), OutOfRange, L"The version number \"-16777213\" of this Sample file is no more supported"},
        {cut, CannotRead, L""},
        {{}, CannotRead, L""}};
    for (const auto& c : cases) {
        Put(c.bytes);
        Sample sample;
        sample.wide = 11;
        EXPECT_FALSE(ReadModel("Tesk::Sample::Read", path_.c_str(), sample));
        EXPECT_EQ(Status::Error().Code, c.code);
        EXPECT_EQ(Status::UnicodeError(), c.message);
        EXPECT_STREQ(Status::AsciiFunction(), "Tesk::Sample::Read");
        EXPECT_EQ(sample.wide, 11);
        EXPECT_TRUE(sample.values.empty());
    }
}

TEST_F(ArchiveFile, FilesThatCannotBeOpenedOrWrittenAreRefused)
{
    Sample sample;
    EXPECT_FALSE(ReadModel("Tesk::Sample::Read", path_.c_str(), sample));
    EXPECT_EQ(Status::Error().Code, CannotOpen);
    EXPECT_EQ(Status::UnicodeError(),
              L"Cannot open file \"" + Widen(path_.c_str()) + L"\" (No such file or directory)");
    const std::string folder = fs::temp_directory_path().string();
    EXPECT_FALSE(ReadModel("Tesk::Sample::Read", folder.c_str(), sample));
    EXPECT_EQ(Status::Error().Code, CannotOpen);
    EXPECT_FALSE(WriteModel("Tesk::Sample::Write", folder.c_str(), sample));
    EXPECT_EQ(Status::Error().Code, CannotOpen);
    if (!fs::exists("/dev/full")) return;
    EXPECT_FALSE(WriteModel("Tesk::Sample::Write", "/dev/full", sample));
    EXPECT_EQ(Status::Error().Code, CannotWrite);
}

TEST(ModelFrame, ItsInnerFormReturnsTheFailureAndReportsNothing)
{
    Status::ErrorBehavior(ThrowIt); // nothing is thrown
    const auto fail = [](Archive& archive) { archive.Refuse(OutOfRange, L"Too %hs", "far"); };
    EXPECT_EQ(LoadModel("/no such folder/a.mod", ShortFile::Refused, fail), CannotOpen);
    EXPECT_EQ(Status::Error().Code, NoError);
    const std::string path =
        (std::filesystem::temp_directory_path() / ("tesk_frame_" + std::to_string(getpid()))).string();
    EXPECT_EQ(SaveModel(path.c_str(), fail), OutOfRange);
    EXPECT_STREQ(Status::UnicodeError(), L"Too far");
    EXPECT_EQ(SaveModel(path.c_str(),
                        [](Archive& archive) {
                            int v = 7;
                            archive(v);
                        }),
              NoError);
    int read = 0;
    EXPECT_EQ(LoadModel(path.c_str(), ShortFile::Refused, [&](Archive& archive) { archive(read); }), NoError);
    EXPECT_EQ(read, 7);
    EXPECT_EQ(Status::Error().Code, NoError);
    std::filesystem::remove(path);
    Status::ErrorBehavior(IgnoreIt);
}
