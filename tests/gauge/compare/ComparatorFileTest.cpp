// Comparators in files: what is kept, the order of the fields, versions, broken files.
#include "gauge/Comparator.h"

#include "../../Failures.h"
#include "foundation/Archive.h"
#include "gauge/compare/ComparedPictures.h"
#include "measure/Blobs.h"

#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <span>
#include <string>
#include <vector>

namespace Tesk {
namespace {

using checks::areaHeight;
using checks::areaWidth;
using checks::Message;
using checks::Paint;
namespace fs = std::filesystem;

class ComparatorFileTest : public checks::IgnoringFailures
{
protected:
    ComparatorFileTest()
    {
        Status::ErrorBehavior(IgnoreIt);
        checks::Teach(comparator);
        comparator.AlignerSearchRange(-20, -21, 22, 23, 0, 0, 1, 1);
        comparator.GainCompensation = true;
        comparator.StraightTolerancing(7, 1);
        comparator.AppendDetectorROI(Limits(4, 5, 60, 70));
        Paint(image, 3, 2);
        comparator.Align(image, aligned);
        comparator.UpdateRanges();
    }
    ~ComparatorFileTest() override { std::remove(name.c_str()); }

    std::vector<std::uint8_t> Block()
    {
        std::vector<std::uint8_t> bytes;
        Archive writer = Archive::IntoMemory(bytes);
        comparator.Transfer(writer);
        EXPECT_TRUE(writer.Good());
        return bytes;
    }

    void Put(const std::vector<std::uint8_t>& bytes)
    {
        std::ofstream(name, std::ios::binary)
            .write(reinterpret_cast<const char*>(bytes.data()), static_cast<std::streamsize>(bytes.size()));
    }

    std::string name = (fs::temp_directory_path() / "tesk-comparator-file-test.cmp").string();
    Comparator comparator;
    Image image, aligned;
};

TEST_F(ComparatorFileTest, WhatWasWrittenIsReadBack)
{
    comparator.Write(name.c_str());
    ASSERT_EQ(Status::Error().Code, NoError);
    Comparator read;
    read.Read(name.c_str());
    ASSERT_EQ(Status::Error().Code, NoError) << std::string(Message().begin(), Message().end());
    EXPECT_EQ(read.Mode, Aligned);
    EXPECT_EQ(int(read.NumAligners), 1);
    EXPECT_EQ(int(read.NumDetectors), 2);
    EXPECT_EQ(read.DetectorIndex, 1);
    EXPECT_EQ(read.DetectorROI().Height, 70);
    EXPECT_EQ(read.SearchMargins[3], 23);
    EXPECT_TRUE(read.GainCompensation);
    EXPECT_EQ(double(read.MaxShiftX), double(comparator.MaxShiftX));
    EXPECT_EQ(int(read.NumSamples), 0);
    EXPECT_EQ(read.Clip().Area(), 0);
    for (int y = 0; y < image.Height; y++) {
        EXPECT_EQ(std::memcmp(read.LowerLimit.Row(y), comparator.LowerLimit.Row(y), 200), 0);
        EXPECT_EQ(std::memcmp(read.UpperLimit.Row(y), comparator.UpperLimit.Row(y), 200), 0);
    }
    // An image can be aligned and compared at once.
    Image again;
    Blobs blobs;
    read.Align(image, again);
    ASSERT_EQ(Status::Error().Code, NoError);
    for (int y = 0; y < areaHeight; y++)
        EXPECT_EQ(std::memcmp(again.Row(y), aligned.Row(y), areaWidth), 0);
    for (int i = 0; i < 4; i++)
        for (int j = 0; j < 4; j++)
            again.Row(30 + j)[20 + i] = 255, again.Row(80 + j)[20 + i] = 255;
    read.Differences(again, blobs);
    EXPECT_EQ(int(blobs.NumBlobs), 1) << "the other one lies outside of the detector";
}

TEST_F(ComparatorFileTest, FieldsStandInTheirOrder)
{
    const std::vector<std::uint8_t> bytes = Block();
    const auto number = [&](std::size_t at) {
        std::int32_t v;
        std::memcpy(&v, bytes.data() + at, sizeof v);
        return v;
    };
    const auto real = [&](std::size_t at) {
        double v;
        std::memcpy(&v, bytes.data() + at, sizeof v);
        return v;
    };
    const std::size_t picture = 16 + 200 * 160;
    EXPECT_EQ(std::memcmp(bytes.data(), "TCMP", 4), 0);
    EXPECT_EQ(number(4), 1);
    EXPECT_EQ(number(8), Aligned);
    EXPECT_EQ(number(12), Gray);
    EXPECT_EQ(number(16), 200);
    EXPECT_EQ(number(20), 160);
    std::size_t at = 12 + picture;
    EXPECT_EQ(number(at), 1);
    EXPECT_EQ(number(at + 4), -1);
    EXPECT_EQ(number(at + 8), 2);
    EXPECT_EQ(number(at + 12), 1);
    EXPECT_EQ(real(at + 24), double(comparator.MaxShiftX));
    EXPECT_EQ(real(at + 72), 1); // the largest scale
    EXPECT_EQ(bytes[at + 80], 1);
    EXPECT_EQ(number(at + 81), Gray);
    at += 81 + 2 * picture;
    EXPECT_EQ(bytes[at], 82); // the train ROI
    EXPECT_EQ(bytes[at + 8], 62);
    at += 16;
    EXPECT_EQ(number(at), Translation);
    EXPECT_EQ(number(at + 4), -20);
    EXPECT_EQ(number(at + 16), 23);
    EXPECT_EQ(real(at + 36), 1); // the smallest scale
    at += 52;
    EXPECT_EQ(bytes[at], 32); // the working area
    EXPECT_EQ(bytes[at + 8], 4);
    at += 16;
    EXPECT_EQ(real(at), comparator.ReferenceMean[0]);
    EXPECT_EQ(real(at + 24), double(comparator.ReferenceVariance));
    EXPECT_EQ(bytes[at + 32], 0);
    EXPECT_EQ(std::memcmp(bytes.data() + at + 33, "TLOC", 4), 0);
}

TEST_F(ComparatorFileTest, OtherFilesAndVersionsAreRefused)
{
    const std::vector<std::uint8_t> bytes = Block();
    const auto expect = [&](std::vector<std::uint8_t> broken, const wchar_t* text) {
        Put(broken);
        Comparator read;
        read.Read(name.c_str());
        EXPECT_EQ(Status::Error().Code, UnsupportedFormat);
        EXPECT_NE(Message().find(text), std::wstring::npos) << std::string(Message().begin(), Message().end());
        EXPECT_EQ(read.Mode, CompareIdle);
    };
    auto broken = bytes;
    broken[0] = 'X';
    expect(broken, L"is not a Comparator model");
    broken = bytes;
    broken[4] = 2;
    expect(broken, L"The version number (2) of this Comparator model is too high");
    broken[4] = 0;
    expect(broken, L"The version number (0) of this Comparator model is no more supported ");
    Comparator read;
    read.Read((name + ".missing").c_str());
    EXPECT_EQ(Status::Error().Code, CannotOpen);
    EXPECT_EQ(std::string(Status::AsciiFunction()), "Tesk::Comparator::Read");
}

TEST_F(ComparatorFileTest, AFileThatIsCutAnywhereIsRefused)
{
    const std::vector<std::uint8_t> bytes = Block();
    const std::size_t picture = 16 + 200 * 160;
    for (std::size_t length = 0; length < bytes.size(); length++) {
        // Inside of a picture one place is as good as another.
        if (length > 200 && length < bytes.size() - 200 && length % picture > 220 && length % 1009 != 0) continue;
        Comparator read;
        Archive reader = Archive::FromMemory(std::span(bytes).first(length));
        read.Transfer(reader);
        ASSERT_FALSE(reader.Good()) << length;
    }
}

TEST_F(ComparatorFileTest, NumbersThatCannotBeAreRefused)
{
    const std::vector<std::uint8_t> bytes = Block();
    const std::size_t picture = 16 + 200 * 160, counts = 12 + picture, aligners = counts + 81 + 2 * picture;
    const auto refused = [&](std::size_t at, std::uint8_t value) {
        auto broken = bytes;
        broken[at] = value;
        Comparator read;
        Archive reader = Archive::FromMemory(broken);
        read.Transfer(reader);
        EXPECT_FALSE(reader.Good()) << at;
    };
    refused(8, 6);                        // no such phase
    refused(8, 0);                        // a reference, but idle
    refused(12, Gray16);                  // a type of pixels
    refused(counts, 5);                   // aligners
    refused(counts + 3, 0x80);            // fewer than none
    refused(counts + 10, 0x7f);           // detectors
    refused(counts + 85, 199);            // limits of another width
    refused(aligners + 16, 12);           // no such model
    refused(aligners + 16 + 52 + 4, 200); // a working area that is too wide
}

TEST_F(ComparatorFileTest, WithoutLimitsAndInRgbToo)
{
    Comparator open, read;
    checks::Teach(open, Rgb);
    open.Write(name.c_str());
    ASSERT_EQ(Status::Error().Code, NoError);
    read.Read(name.c_str());
    ASSERT_EQ(Status::Error().Code, NoError);
    EXPECT_EQ(read.Mode, EditingAligners);
    EXPECT_EQ(PixelTypes(read.LowerLimit.Type), Undefined);
    EXPECT_EQ(PixelTypes(read.Reference.Type), Rgb);
    EXPECT_EQ(read.Reference.Row<RgbPixel>(17)[33], open.Reference.Row<RgbPixel>(17)[33]);
}

} // namespace
} // namespace Tesk
