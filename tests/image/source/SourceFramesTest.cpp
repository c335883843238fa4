#include "foundation/Status.h"
#include "image/Source.h"
#include "image/source/AviFile.h"

#include <gtest/gtest.h>

#include <cstdint>
#include <filesystem>
#include <fstream>
#include <string>
#include <vector>

using namespace Tesk;
using avi::Avi;
using avi::Bytes;

namespace {

class SourceFramesTest : public ::testing::Test
{
protected:
    void SetUp() override
    {
        Status::ErrorBehavior(IgnoreIt);
        // Tests run side by side.
        folder_ = std::filesystem::path(::testing::TempDir()) /
                  (std::string("frames_") + ::testing::UnitTest::GetInstance()->current_test_info()->name());
        std::filesystem::create_directories(folder_);
    }
    void TearDown() override { std::filesystem::remove_all(folder_); }

    std::string File(const std::string& name, const Bytes& content) const
    {
        const std::string path = (folder_ / name).string();
        std::ofstream(path, std::ios::binary) << content;
        return path;
    }
    /// An image file of one gray value.
    std::string Picture(const std::string& name, std::uint8_t value, int height = 1) const
    {
        Image image;
        image.Set(2, height, Gray);
        for (int y = 0; y < height; y++)
            image.Row(y)[0] = image.Row(y)[1] = static_cast<std::uint8_t>(value + 10 * y);
        const std::string path = (folder_ / name).string();
        image.Write(path.c_str());
        return path;
    }
    static void ExpectFailure(int code, const std::wstring& message, const std::string& context)
    {
        EXPECT_EQ(Status::Error().Code, code);
        EXPECT_EQ(Status::UnicodeError(), message);
        EXPECT_EQ(Status::AsciiFunction(), context);
    }

    std::filesystem::path folder_;
    Source source_;
    Image frame_;
};

TEST_F(SourceFramesTest, FilesComeInTheirOrderAndRoundAgain)
{
    EXPECT_FALSE(source_.Grab(frame_));
    ExpectFailure(VoidObject, L"Ths source has not been opened", "Tesk::Source::Grab");
    for (int i = 0; i < 3; i++)
        source_.AddFile(Picture(std::to_string(i) + ".bmp", static_cast<std::uint8_t>(50 * i)).c_str());
    EXPECT_EQ(source_.Mode, AsciiFiles);
    EXPECT_EQ(source_.NumFrames, 3);
    Source copy;
    copy.ShallowCopy(source_, true);
    copy.AddFile(Picture("more.bmp", 250).c_str());
    EXPECT_EQ(source_.NumFrames, 3);
    for (int i = 0; i < 4; i++) {
        EXPECT_EQ(source_.Grab(frame_), i % 3 != 2) << i;
        EXPECT_EQ(frame_.Row(0)[1], 50 * (i % 3)) << i;
    }
    copy.CurrentFrame = 3;
    EXPECT_FALSE(copy.Grab(frame_));
    EXPECT_EQ(frame_.Row(0)[0], 250);
    // A file that cannot be read is passed over.
    source_.AddFile((folder_ / "none.bmp").string().c_str());
    source_.CurrentFrame = 3;
    EXPECT_FALSE(source_.Grab(frame_));
    EXPECT_EQ(Status::Error().Code, CannotOpen);
    EXPECT_EQ(Status::AsciiFunction(), std::string("Tesk::Image::Read"));
    EXPECT_EQ(source_.CurrentFrame, 4);

    Source wide;
    wide.AddFile((folder_ / "0.bmp").wstring().c_str());
    wide.AddFile("1.bmp");
    ExpectFailure(IncompatibleMode, L"The source is already opened in the UnicodeFiles mode", Status::AsciiFunction());
    EXPECT_EQ(wide.NumFrames, 1);
    EXPECT_FALSE(wide.Grab(frame_, Gray16));
    ExpectFailure(UnsupportedType, L"The image type (Gray16) is not supported for this operation",
                  "Tesk::Source::Grab");
    EXPECT_EQ(wide.CurrentFrame, 0);
}

TEST_F(SourceFramesTest, SequencesGiveEachFrameBottomRowFirst)
{
    const std::string path = File("frames.avi", Avi(5, 3, 6));
    source_.OpenSequenceFile(path.c_str());
    ASSERT_EQ(Status::Error().Code, NoError) << Status::AsciiError();
    EXPECT_EQ(source_.Mode, Sequence);
    EXPECT_EQ(source_.NumFrames, 6);
    EXPECT_EQ(source_.FrameRate, 29.0);
    EXPECT_EQ(source_.PixelType, Rgb);
    EXPECT_EQ(source_.Width, 5);
    EXPECT_EQ(source_.Height, 3);
    for (int k : {0, 1, 2, 3, 4, 5, 0, 1}) {
        EXPECT_EQ(source_.Grab(frame_), k != 5);
        ASSERT_EQ(frame_.Type, Rgb);
        for (int y = 0; y < 3; y++)
            for (int x = 0; x < 5; x++) {
                const std::uint8_t* p = frame_.Row(y) + 3 * x;
                ASSERT_EQ(p[0], 10 * k + y) << k << ' ' << x << ' ' << y;
                ASSERT_EQ(p[1], x);
                ASSERT_EQ(p[2], 200);
            }
    }
    source_.AddFile("more.bmp");
    ExpectFailure(IncompatibleMode, L"The source is already opened in the Sequence mode", Status::AsciiFunction());
    // A copy lives on, from any frame, in gray, upright, after the original is closed.
    Source copy;
    copy.ShallowCopy(source_, false);
    source_.Close();
    EXPECT_EQ(source_.Mode, Idle);
    copy.Upright = true;
    for (int k : {4, 2, 5, 0, 3}) {
        copy.CurrentFrame = k;
        copy.Grab(frame_, Gray);
        ASSERT_EQ(frame_.Type, Gray);
        EXPECT_EQ(frame_.Row(0)[2], 10 * k + 2);
        EXPECT_EQ(frame_.Row(2)[2], 10 * k);
    }
}

TEST_F(SourceFramesTest, InterlacedFramesAreInterpolated)
{
    for (const int height : {1, 2, 4, 5}) {
        Source source;
        source.FieldMode = true;
        source.OpenSequenceFile(File("field.avi", Avi(4, height, 1)).c_str());
        source.Grab(frame_, Gray);
        ASSERT_EQ(frame_.Height, height);
        // Every row lies between its neighbours, but a last one that has only the one above.
        for (int y = 0; y < height; y++)
            EXPECT_EQ(frame_.Row(y)[0], y % 2 == 1 && y + 1 == height ? y - 1 : y) << height;
    }
    source_.FieldMode = true;
    source_.AddFile(Picture("rows.bmp", 0, 3).c_str());
    source_.Grab(frame_);
    EXPECT_EQ(frame_.Row(1)[0], 10);
}

TEST_F(SourceFramesTest, TellsWhyASequenceDoesNotOpen)
{
    const std::string missing = (folder_ / "none.avi").string();
    const std::wstring wide(missing.begin(), missing.end());
    source_.OpenSequenceFile(missing.c_str());
    ExpectFailure(CannotOpen, L"Cannot open file \"" + wide + L"\", disk error while opening",
                  "Tesk::Source::OpenSequenceFile");
    source_.OpenSequenceFile(wide.c_str());
    ExpectFailure(CannotOpen, L"Cannot open file \"" + wide + L"\"", "Tesk::Source::OpenSequenceFile");
    source_.OpenSequenceFile(File("text.avi", "no frames at all").c_str());
    EXPECT_EQ(Status::Error().Code, UnsupportedFormat);
    EXPECT_NE(std::wstring(Status::UnicodeError()).find(L"does not have an AVI handler"), std::wstring::npos);
    source_.OpenSequenceFile(File("strange.avi", Avi(4, 2, 1, 1, 1, "QQQQ")).c_str());
    ExpectFailure(CannotOpen, L"Can't open the Avi file (cannot decompress QQQQ)", "Tesk::Source::_Open");
    EXPECT_EQ(source_.Mode, Idle);
    EXPECT_EQ(source_.NumFrames, 0);

    // However a file is cut, what is left of it is read, or told to be missing.
    const Bytes whole = Avi(4, 2, 3);
    for (std::size_t size = 12; size < whole.size(); size += 7) {
        Source cut;
        cut.OpenSequenceFile(File("cut.avi", whole.substr(0, size)).c_str());
        EXPECT_EQ(cut.Mode == Idle, Status::Error().Code != NoError) << size;
        for (int i = 0; i < 4; i++)
            cut.Grab(frame_);
    }
    EXPECT_FALSE(source_.Input());
    ExpectFailure(CannotRead, L"This source has not been opened", "Tesk::Source::Input");
    source_.Output();
    ExpectFailure(CannotRead, L"This source has not been opened", "Tesk::Source::Output");
}

} // namespace
