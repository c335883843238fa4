// The quality that a reader of matrix codes shows of the symbols that it has read.
#include "read/Code2DReader.h"

#include "read/codewords/DataMatrixCells.h"
#include "read/matrix/EncodedSymbols.h"
#include "read/matrix/Rendered.h"

#include <gtest/gtest.h>

#include <cmath>
#include <cstddef>
#include <memory>
#include <numbers>
#include <string>

namespace Tesk::matrix {

namespace {

class Code2DQualityTest : public testing::Test
{
protected:
    void SetUp() override
    {
        reader_.CheckQuality = true;
        reader_.AdaptiveThreshold = false;
        reader_.DetectQR = true;
        reader_.DetectDotCode = true;
    }
    std::string Grades() const { return static_cast<const char*>(reader_.AsciiGrades); }
    std::string Decoded() { return reader_.Decode(image_) ? Grades() : "not read"; }

    Code2DReader reader_;
    Image image_;
    const SymbolCells medium_{MadeNamed("Text, Structured Append")}, regions_{MadeNamed("two blocks, four regions")};
};

TEST_F(Code2DQualityTest, PerfectSymbolsOfEachFamilyAreAllA)
{
    const auto paint = [&](const SymbolCells& cells, int ink = 0, int paper = 255, double dot = 0) {
        Blank(image_, 8 * (cells.columns + 12), 8 * (cells.rows + 12), paper);
        Paint(cells, Homography::Turned({47.5, 47.5}, 8), image_, {ink, paper, dot});
    };
    for (const SymbolCells* cells : {&medium_, &regions_}) {
        paint(*cells);
        EXPECT_EQ(Decoded(), "A AAAAAAAAA");
        EXPECT_EQ(reader_.SymbolContrast, 1);
        EXPECT_EQ(reader_.UnusedError, 1);
        EXPECT_LT(reader_.AxialNonUniformity, 0.001);
        EXPECT_LT(reader_.GridNonUniformity, 0.001);
        EXPECT_NEAR(reader_.PrintGrowthHorizontal, 0, 0.1);
        EXPECT_EQ(reader_.PrintGrowthVertical, reader_.PrintGrowthHorizontal);
    }
    for (const int version : {1, 2, 7, 14}) {
        paint(EncodedQR(version, codewords::LevelM, version % 8, "quality"));
        EXPECT_EQ(Decoded(), "A AAAAAAAAAAA") << version;
    }
    paint(EncodedDotCode(18, 17, 1, "0123456789"), 0, 255, 0.95);
    EXPECT_EQ(Decoded(), "A AAAAAAAAAAA");

    reader_.EnabledPolarities = WhiteOnBlack;
    paint(medium_, 255, 0);
    EXPECT_EQ(Decoded(), "A AAAAAAAAA");
    paint(EncodedQR(2, codewords::LevelM, 1, "light"), 255, 0);
    EXPECT_EQ(Decoded(), "A AAAAAAAAAAA");
    paint(EncodedDotCode(18, 17, 1, "42"), 255, 0, 0.95);
    EXPECT_EQ(Decoded(), "A AAAAAAAAAAA");
}

TEST_F(Code2DQualityTest, CorrectedWordsUseUpTheUnusedError)
{
    // 10 words of the 20 check words of this size can be corrected.
    const auto places = std::make_unique<codewords::DataMatrixCells>();
    places->Prepare(Size22);
    SymbolCells cells = medium_;
    const std::string letters = "AAAABBCDFFF";
    for (int wrong = 0; wrong <= 10; ++wrong) {
        for (int i = 0; i < 22 * 22; ++i)
            if (const auto module = places->At(i / 22, i % 22); module.IsData() && module.Word() == wrong - 1) {
                cells.Flip(i / 22, i % 22);
                break;
            }
        Blank(image_, 300, 300, 255);
        Paint(cells, Homography::Turned({39.5, 39.5}, 8), image_, {0, 255});
        const char letter = letters[static_cast<std::size_t>(wrong)];
        EXPECT_EQ(Decoded(), std::string(1, letter) + " AAAAA" + letter + "A" + letter + "A") << wrong;
        EXPECT_FLOAT_EQ(reader_.UnusedError, 1 - static_cast<float>(wrong) / 10);
    }
}

TEST_F(Code2DQualityTest, TurnedMirroredAndReducedSymbolsKeepTheirGrades)
{
    reader_.EnabledViews = AutoView;
    for (const int degrees : {0, 30, 90, 200}) {
        SCOPED_TRACE(degrees);
        Blank(image_, 600, 600, 255);
        const auto place = [&](const SymbolCells& cells, double cell) {
            const double a = degrees * std::numbers::pi / 180, half = cells.columns * cell / 2;
            const double c = half * std::cos(a), s = half * std::sin(a);
            return Homography::Turned({300 - c + s, 300 - s - c}, cell, degrees);
        };
        Paint(medium_, place(medium_, 10), image_, {0, 255});
        EXPECT_EQ(Decoded()[0], 'A') << Grades();
        Paint(medium_.Mirrored(), place(medium_, 10), image_, {0, 255});
        EXPECT_EQ(Decoded()[0], 'A') << Grades();
        EXPECT_EQ(reader_.View, Mirrored);
        // Found on another rung, and graded on the image itself.
        reader_.StartLevel = 1;
        EXPECT_EQ(Decoded()[0], 'A') << Grades();
        EXPECT_GT(reader_.SymbolContrast, 0.9);
        reader_.StartLevel = 0;
        const SymbolCells qr = EncodedQR(2, codewords::LevelM, 1, "turned").Mirrored();
        Paint(qr, place(qr, 10), image_, {0, 255}, 4);
        EXPECT_EQ(Decoded()[0], 'A') << Grades();
    }
}

TEST_F(Code2DQualityTest, EachSymbolHasItsOwnGrades)
{
    Blank(image_, 600, 300, 255);
    Paint(medium_, Homography::Turned({39.5, 39.5}, 8), image_, {0, 255});
    const SymbolCells qr = EncodedQR(1, codewords::LevelM, 1, "faint");
    Paint(qr, Homography::Turned({319.5, 39.5}, 8), image_, {100, 255}, 4);
    reader_.MaxDecoded = 2;
    EXPECT_EQ(Decoded(), "B BAAAAAAAAAA");
    ASSERT_EQ(reader_.NumDecoded, 2);
    EXPECT_FLOAT_EQ(reader_.SymbolContrast, 155 / 255.0f);
}

TEST_F(Code2DQualityTest, ChosenSymbolsShowTheirGrades)
{
    EXPECT_EQ(Grades(), "F"); // before any symbol
    Blank(image_, 600, 300, 255);
    Paint(medium_, Homography::Turned({39.5, 39.5}, 8), image_, {0, 255});
    Paint(medium_, Homography::Turned({319.5, 39.5}, 8), image_, {100, 255});
    reader_.MaxDecoded = 2;
    ASSERT_TRUE(reader_.Decode(image_));
    ASSERT_EQ(reader_.NumDecoded, 2);
    for (const int i : {0, 1, 0}) {
        reader_.Choose(i, image_);
        const bool isFaint = reader_.X > 200;
        EXPECT_EQ(Grades(), isFaint ? "B BAAAAAAAA" : "A AAAAAAAAA");
        EXPECT_FLOAT_EQ(reader_.SymbolContrast, isFaint ? 155 / 255.0f : 1);
        const std::string letters = Grades();
        EXPECT_EQ(std::wstring(static_cast<const wchar_t*>(reader_.UnicodeGrades)),
                  std::wstring(letters.begin(), letters.end()));
    }
    reader_.Choose(-1);
    EXPECT_EQ(Grades(), "F");
    EXPECT_EQ(reader_.SymbolContrast, 0);
    reader_.CheckQuality = false;
    EXPECT_EQ(Decoded(), "F"); // read, and not graded
    EXPECT_EQ(reader_.NumDecoded, 2);
}

} // namespace

} // namespace Tesk::matrix
