#include "foundation/Archive.h"
#include "tests/measure/path/PathShapes.h"

#include <filesystem>
#include <fstream>
#include <iterator>
#include <unistd.h>

using namespace Tesk;
namespace fs = std::filesystem;

namespace {

class PathFile : public PathMethods
{
protected:
    PathFile() : name_((fs::temp_directory_path() / ("tesk_path_" + std::to_string(getpid()) + ".pth")).string()) {}
    ~PathFile() override { fs::remove(name_); }

    std::string Bytes() const
    {
        std::ifstream file(name_, std::ios::binary);
        return {std::istreambuf_iterator<char>(file), {}};
    }
    void Put(const std::string& bytes) const { std::ofstream(name_, std::ios::binary | std::ios::trunc) << bytes; }

    std::string name_;
};

TEST_F(PathFile, HoldsFlagLengthSitesAndReservedWords)
{
    PathOf({{1, -2}, {0x1234, 5}}).Write(name_.c_str());
    EXPECT_EQ(Status::Error().Code, NoError);
    const std::string expected("TPTH\1\0\0\0\1\2\0\0\0\1\0\xfe\xff\x34\x12\5\0\0\0\0\0\0\0\0\0", 29);
    EXPECT_EQ(Bytes(), expected);
    // Reserved words of another writer do not matter.
    std::string other = expected;
    other.replace(21, 8, "\1\2\3\4\5\6\7\x88");
    Put(other);
    Path path = PathOf({{7, 7}}, false);
    path.OrgX = 3;
    path.Read(name_.c_str());
    EXPECT_EQ(Status::Error().Code, NoError);
    EXPECT_EQ(SitesOf(path), (std::vector<std::pair<int, int>>{{1, -2}, {0x1234, 5}}));
    EXPECT_TRUE(path.Closed);
    EXPECT_EQ(path.OrgX, 0);
}

TEST_F(PathFile, ComesBackAsItWasEvenIfEmpty)
{
    std::mt19937 random(3);
    for (const int count : {0, 1, 1000})
        for (const bool closed : {false, true}) {
            fs::remove(name_);
            Path path = RandomPath(random, count, 32767), read;
            path.Closed = closed;
            path.Write(std::filesystem::path(name_).wstring().c_str());
            read.Read(std::filesystem::path(name_).wstring().c_str());
            EXPECT_EQ(Status::Error().Code, NoError);
            EXPECT_EQ(read.Closed, closed);
            EXPECT_EQ(read.Length, count);
            EXPECT_EQ(SitesOf(read), SitesOf(path));
        }
}

TEST_F(PathFile, IsRefusedWhereverItIsCutAndLeavesThePath)
{
    PathOf({{1, 2}, {3, 4}}).Write(name_.c_str());
    const std::string whole = Bytes();
    Path path = PathOf({{9, 9}});
    for (std::size_t size = 0; size < whole.size(); size++) {
        Put(whole.substr(0, size));
        path.Read(name_.c_str());
        EXPECT_EQ(Status::Error().Code, size > 0 && size < 4 ? UnsupportedFormat : CannotRead) << size;
        EXPECT_STREQ(Status::AsciiFunction(), "Tesk::Path::Read");
        ASSERT_EQ(SitesOf(path), (std::vector<std::pair<int, int>>{{9, 9}})) << size;
    }
}

TEST_F(PathFile, TellsWhatIsWrongWithAnother)
{
    PathOf({{1, 2}}).Write(name_.c_str());
    const std::string whole = Bytes();
    const std::wstring name(name_.begin(), name_.end());
    Path path;
    Put("TPRF" + whole.substr(4));
    path.Read(name_.c_str());
    ExpectRefusal(UnsupportedFormat, L"File \"" + name + L"\" is not a Path file", "Tesk::Path::Read");
    std::string newer = whole;
    newer[4] = 2;
    Put(newer);
    path.Read(name_.c_str());
    ExpectRefusal(OutOfRange, L"The version number \"2\" of this Path file is too high", "Tesk::Path::Read");
    // Lengths below 0 and far beyond the file take no memory.
    for (const char* length : {"\xff\xff\xff\xff", "\xff\xff\xff\x7f"}) {
        std::string huge = whole;
        huge.replace(9, 4, length, 4);
        Put(huge);
        path.Read(name_.c_str());
        EXPECT_EQ(Status::Error().Code, CannotRead);
    }
    path.Read("/no/such/folder/a.pth");
    ExpectRefusal(CannotOpen, L"Cannot open file \"/no/such/folder/a.pth\" (No such file or directory)",
                  "Tesk::Path::Read");
    path.Write("/no/such/folder/a.pth");
    EXPECT_EQ(Status::Error().Code, CannotOpen);
    EXPECT_STREQ(Status::AsciiFunction(), "Tesk::Path::Write");
}

TEST_F(PathFile, TextListsAllSitesOrOneFromEitherEnd)
{
    const Path path = PathOf({{1, -2}, {30, 4}, {5, 6}});
    EXPECT_STREQ(path.ToAsciiString(-1), "X\tY\n1\t-2\n30\t4\n5\t6\n");
    EXPECT_STREQ(path.ToAsciiString(1), "X\tY\n30\t4\n");
    EXPECT_STREQ(path.ToAsciiString(-3), "X\tY\n1\t-2\n");
    for (const int index : {3, -4, MinInt}) {
        EXPECT_STREQ(path.ToAsciiString(index), "");
        ExpectRefusal(OutOfRange, L"The vertex index (" + std::to_wstring(index) + L") must be in range [0..2]",
                      "Tesk::Path::ToAsciiString");
    }
    EXPECT_STREQ(Path().ToAsciiString(0), "");
    ExpectRefusal(OutOfRange, L"No sample has been appended yet, the profile is empty", "Tesk::Path::ToAsciiString");
}

} // namespace
