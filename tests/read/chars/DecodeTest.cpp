#include "read/chars/Decode.h"

#include "Failures.h"
#include "Glyphs.h"
#include "read/chars/Font.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

namespace Tesk {
namespace {

using chars::CharBox;
using chars::CharString;

/// Boxes of 16 x 20 in an image of noise, beside glyphs of other noise.
class DecodeTest : public checks::IgnoringFailures
{
protected:
    static constexpr int width = 16, height = 20;

    DecodeTest()
    {
        settings.size = {8, 10, width, false};
        checks::Fill(image, 200, 40, 99, 60);
    }

    void Train(int code, std::uint32_t seed, bool whiteOnBlack = false)
    {
        Image sample;
        checks::Fill(sample, width, height, seed);
        ASSERT_EQ(font.Insert(sample, static_cast<std::uint16_t>(code), 0, whiteOnBlack, -1, settings.size), NoError);
    }
    /// Puts the glyph of a seed into the image, and its box `dx`, `dy` away.
    void Show(std::uint32_t seed, int x, int y, int dx = 0, int dy = 0)
    {
        Image glyph;
        checks::Fill(glyph, width, height, seed);
        checks::Paste(glyph, image, x, y);
        boxes.push_back({x + dx, y + dy, width, height});
    }
    std::wstring Decoded()
    {
        if (strings.empty()) strings.push_back({0, static_cast<int>(boxes.size()), 0});
        EXPECT_EQ(decoder.Decode(image, font, settings, boxes, strings), NoError);
        return decoder.Text();
    }
    void TrainAbc()
    {
        for (int i = 0; i < 3; i++)
            Train('A' + i, 1 + static_cast<std::uint32_t>(i));
    }

    chars::Font font;
    chars::DecodeSettings settings;
    chars::Decoder decoder;
    Image image;
    std::vector<CharBox> boxes;
    std::vector<CharString> strings;
};

TEST_F(DecodeTest, ReadsWhatWasTrainedNearItsBox)
{
    TrainAbc();
    Show(2, 10, 8);
    Show(3, 40, 8, 1, -1);
    Show(1, 70, 8, 2, 0);
    EXPECT_EQ(Decoded().substr(0, 2), L"BC");
    EXPECT_EQ(decoder.Chars()[0].score, 1);
    EXPECT_EQ(decoder.Chars()[1].score, 1);
    EXPECT_EQ(decoder.Chars()[1].fontChar, 2);
    EXPECT_LT(decoder.Chars()[2].score, 1);
    settings.jitterX = 2;
    EXPECT_EQ(Decoded(), L"BCA");
    EXPECT_EQ(decoder.AverageScore(), 1);
    EXPECT_EQ(decoder.AverageContrast(), 1);
    EXPECT_EQ(decoder.NarrowText(), "BCA");
}

/// The rules one after the other, on images.
chars::DecodedChar SlowMatch(const Image& image, const chars::Font& font, const chars::DecodeSettings& settings,
                             const CharBox& box)
{
    chars::DecodedChar best;
    chars::Resampler resampler;
    const int x = std::clamp(box.X, 0, image.Width - box.Width), y = std::clamp(box.Y, 0, image.Height - box.Height);
    for (int dy = -settings.jitterY; dy <= settings.jitterY; dy++)
        for (int dx = -settings.jitterX; dx <= settings.jitterX; dx++) {
            if (x + dx < 0 || y + dy < 0 || x + dx + box.Width > image.Width || y + dy + box.Height > image.Height)
                continue;
            Image window, thumbnail;
            checks::Crop(image, x + dx, y + dy, box.Width, box.Height, window);
            thumbnail.Set(settings.size.WidthOf(box.Width), settings.size.fontHeight, Gray);
            chars::MakeThumbnail(window, thumbnail, resampler);
            for (int i = 0; i < font.Count(); i++) {
                const int w = font[i].Thumbnail.Width;
                if (settings.size.variableWidth && (w > 2 * thumbnail.Width || 2 * w < thumbnail.Width)) continue;
                double contrast = 0, score = checks::SlowScore(font[i].Thumbnail, thumbnail, &contrast);
                if (font[i].WhiteOnBlack != settings.whiteOnBlack) {
                    score = -score;
                    contrast = -contrast;
                }
                if (score > best.score + 1e-10) best = {i, score, contrast};
            }
        }
    return best;
}

TEST_F(DecodeTest, FindsTheSameAsAPlainSearch)
{
    for (const bool variableWidth : {false, true})
        for (const int jitter : {0, 1, 4, 10}) {
            settings.size.variableWidth = variableWidth;
            settings.jitterX = jitter;
            settings.jitterY = jitter / 2 + 1;
            font.Clear();
            boxes.clear();
            strings.clear();
            checks::Noise noise{static_cast<std::uint32_t>(jitter)};
            for (std::uint32_t i = 0; i < 25; i++) {
                Image sample;
                checks::Fill(sample, variableWidth ? 5 + static_cast<int>(i) : width, height, i);
                ASSERT_EQ(font.Insert(sample, static_cast<std::uint16_t>('A' + i), 0, i % 5 == 0, -1, settings.size),
                          NoError);
            }
            for (int i = 0; i < 12; i++)
                boxes.push_back({noise.Byte() - 20, noise.Byte() / 4 - 10, variableWidth ? 4 + 2 * i : width, height});
            Decoded();
            for (std::size_t i = 0; i < boxes.size(); i++) {
                const chars::DecodedChar slow = SlowMatch(image, font, settings, boxes[i]);
                EXPECT_EQ(decoder.Chars()[i].fontChar, slow.fontChar) << i;
                EXPECT_NEAR(decoder.Chars()[i].score, slow.score, 1e-9) << i;
                EXPECT_NEAR(decoder.Chars()[i].contrast, slow.contrast, 1e-9) << i;
            }
        }
}

TEST_F(DecodeTest, AmongEqualScoresTheHigherPlaceThenTheFirstSampleWins)
{
    // The lower place shows 'A', the upper one 'B', both without a fault.
    settings.size = {width, height, width, false};
    settings.jitterX = 0;
    Image upper, lower;
    checks::Fill(image, width, height + 2, 4);
    checks::Crop(image, 0, 0, width, height, upper);
    checks::Crop(image, 0, 2, width, height, lower);
    ASSERT_EQ(font.Insert(lower, 'A', 0, false, -1, settings.size), NoError);
    ASSERT_EQ(font.Insert(upper, 'B', 0, false, -1, settings.size), NoError);
    ASSERT_EQ(font.Insert(upper, 'C', 0, false, -1, settings.size), NoError);
    boxes.push_back({0, 1, width, height});
    EXPECT_EQ(Decoded(), L"B");
}

TEST_F(DecodeTest, BoxesBeyondTheImageAreMovedIntoIt)
{
    TrainAbc();
    Show(1, 0, 0, -7, -9);
    Show(2, 200 - width, 40 - height, 30, 50);
    EXPECT_EQ(Decoded(), L"AB");
    boxes = {{-5, -5, 5000, 5000}};
    strings.clear();
    EXPECT_EQ(Decoded().size(), 1u);
}

TEST_F(DecodeTest, FiltersAdmitByPosition)
{
    TrainAbc();
    Train('1', 4);
    Show(4, 10, 8);
    Show(4, 40, 8);
    settings.filters = chars::ParseFilter("%a%9");
    EXPECT_NE(Decoded()[0], L'1');
    EXPECT_EQ(Decoded()[1], L'1');
    settings.globalFilter = chars::ClassFilter('a');
    EXPECT_EQ(Decoded()[1], L'?');
    EXPECT_EQ(decoder.Chars()[1].fontChar, chars::noFontChar);
    EXPECT_EQ(decoder.Chars()[1].score, -1);
}

TEST_F(DecodeTest, AVerbatimPositionIsComparedForVerificationOnly)
{
    TrainAbc();
    Show(1, 10, 8);
    settings.filters = chars::ParseFilter("Z");
    EXPECT_EQ(Decoded(), L"Z");
    EXPECT_EQ(decoder.Chars()[0].fontChar, chars::verbatimFontChar);
    EXPECT_EQ(decoder.Chars()[0].score, 1);
    settings.verifyVerbatim = true;
    // No sample of a Z: passes all the same.
    EXPECT_EQ(Decoded(), L"Z");
    EXPECT_EQ(decoder.Chars()[0].fontChar, chars::verbatimFontChar);
    settings.filters = chars::ParseFilter("B");
    settings.discardBadScores = true;
    EXPECT_EQ(Decoded(), L"?");
    EXPECT_EQ(decoder.Chars()[0].fontChar, 1);
    EXPECT_LT(decoder.Chars()[0].score, 0.9);
    EXPECT_EQ(decoder.AverageScore(), -1);
    EXPECT_EQ(decoder.AverageContrast(), 0);
}

TEST_F(DecodeTest, BadScoresAndContrastsAreDiscarded)
{
    TrainAbc();
    Image faint;
    Show(1, 10, 8);
    checks::Fill(faint, width, height, 1);
    for (int y = 0; y < height; y++)
        for (int x = 0; x < width; x++)
            faint.Row(y)[x] = static_cast<std::uint8_t>(faint.Row(y)[x] / 4);
    checks::Paste(faint, image, 40, 8);
    boxes.push_back({40, 8, width, height});
    boxes.push_back({100, 8, width, height});
    settings.discardBadScores = true;
    EXPECT_EQ(Decoded(), L"AA?");
    EXPECT_GE(decoder.Chars()[2].fontChar, 0);
    EXPECT_GT(decoder.AverageScore(), 0.99); // of those accepted
    EXPECT_NEAR(decoder.Chars()[1].contrast, 4, 0.1);
    settings.minimumContrast = 2;
    EXPECT_EQ(Decoded(), L"?A?");
    settings.minimumContrast = -1;
    settings.useSafeScores = true;
    settings.minimumScore = 1;
    EXPECT_EQ(Decoded().substr(0, 2), L"AA");
    EXPECT_TRUE(font.HasSafeScores());
}

TEST_F(DecodeTest, PolarityTurnsTheScore)
{
    TrainAbc();
    Show(1, 10, 8);
    settings.whiteOnBlack = true;
    Decoded();
    EXPECT_NE(decoder.Chars()[0].fontChar, 0);
    for (int y = 0; y < image.Height; y++)
        for (int x = 0; x < image.Width; x++)
            image.Row(y)[x] = static_cast<std::uint8_t>(255 - image.Row(y)[x]);
    EXPECT_EQ(Decoded(), L"A");
    EXPECT_GT(decoder.Chars()[0].score, 0.99);
}

TEST_F(DecodeTest, TextTakesSeparatorsAndLeavesOutIgnoredPositions)
{
    TrainAbc();
    for (const std::uint32_t seed : {1u, 2u, 3u, 1u})
        Show(seed, 10 + 30 * static_cast<int>(boxes.size()), 8);
    strings = {{0, 1, ' '}, {1, 3, '\n'}, {3, 4, 0}};
    EXPECT_EQ(Decoded(), L"A BC\nA");
    settings.insertSpaces = false;
    EXPECT_EQ(Decoded(), L"ABC\nA");
    settings.insertNewlines = false;
    EXPECT_EQ(Decoded(), L"ABCA");
    boxes[1].Width = 0;
    EXPECT_EQ(Decoded(), L"A?CA");
    settings.filters = chars::ParseFilter("%*%-%-%*");
    EXPECT_EQ(Decoded(), L"AA");
    EXPECT_EQ(decoder.Chars()[2].fontChar, chars::noFontChar);
}

TEST_F(DecodeTest, CodesBeyondAByteAreQuestionMarksInNarrowText)
{
    Train(0x416, 1);
    Train(0xe9, 2);
    Show(1, 10, 8);
    Show(2, 40, 8);
    EXPECT_EQ(Decoded(), L"\x416\xe9");
    EXPECT_EQ(decoder.NarrowText(), "?\xe9");
}

TEST_F(DecodeTest, RefusesWithoutAFontOrFilters)
{
    boxes.push_back({0, 0, width, height});
    EXPECT_EQ(decoder.Decode(image, font, settings, boxes, strings), OutOfRange);
    EXPECT_EQ(checks::Message(), L"The font is void");
    Train('A', 1);
    settings.filters.clear();
    EXPECT_EQ(decoder.Decode(image, font, settings, boxes, strings), OutOfRange);
    EXPECT_EQ(checks::Message(), L"Void filter string");
    Image none;
    EXPECT_EQ(decoder.Decode(none, font, settings, boxes, strings), VoidObject);
}

} // namespace
} // namespace Tesk
