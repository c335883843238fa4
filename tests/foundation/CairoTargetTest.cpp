#include "foundation/CairoTarget.h"

#include "Noise.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstddef>
#include <cstring>
#include <string>

using namespace Tesk;

namespace {

constexpr RgbPixel black(0, 0, 0), red(255, 0, 0), yellow(255, 255, 0), gray(7, 7, 7);

class CairoTargetTest : public ::testing::Test
{
protected:
    void SetUp() override { target_.SetLine(&red, 1); }

    /// The surface as text: '.' black, '#' red, 'o' yellow, '?' another colour.
    std::vector<std::string> Picture()
    {
        std::vector<std::string> rows;
        for (int y = 0; y < target_.Height(); y++) {
            std::string row;
            for (int x = 0; x < target_.Width(); x++) {
                const RgbPixel p = target_.PixelAt(x, y);
                row.push_back(p == black ? '.' : p == red ? '#' : p == yellow ? 'o' : '?');
            }
            rows.push_back(row);
        }
        return rows;
    }

    int Count(RgbPixel color)
    {
        int count = 0;
        for (int y = 0; y < target_.Height(); y++)
            for (int x = 0; x < target_.Width(); x++)
                count += target_.PixelAt(x, y) == color;
        return count;
    }

    using Rows = std::vector<std::string>;
    CairoTarget target_{9, 7};
};

} // namespace

TEST_F(CairoTargetTest, ThinFiguresAreTracedPixelByPixelAndFilledInside)
{
    target_.SetFill(&yellow);
    target_.Rectangle(1, 1, 6, 4);
    EXPECT_EQ(Picture(),
              (Rows{".........", ".######..", ".#oooo#..", ".#oooo#..", ".######..", ".........", "........."}));
    target_.FillRectangle(0, 0, 9, 7, black);
    target_.SetFill(nullptr);
    target_.MoveTo({0, 6});
    target_.LineTo({6, 2});
    EXPECT_EQ(Picture(),
              (Rows{".........", ".........", "......#..", "....##...", "...#.....", ".##......", "#........"}));
    target_.FillRectangle(0, 0, 9, 7, black);
    target_.SetFill(&yellow);
    target_.Ellipse(1, 0, 7, 6);
    EXPECT_EQ(Picture(),
              (Rows{"...###...", "..#ooo#..", ".#ooooo#.", ".#ooooo#.", ".#ooooo#.", "..#ooo#..", "...###..."}));
}

TEST_F(CairoTargetTest, ALineIsTheSameFromBothEnds)
{
    for (int y = 0; y < 7; y++) {
        target_.FillRectangle(0, 0, 9, 7, black);
        target_.MoveTo({0, 0});
        target_.LineTo({8, y});
        const Rows there = Picture();
        target_.FillRectangle(0, 0, 9, 7, black);
        target_.MoveTo({8, y});
        target_.LineTo({0, 0});
        EXPECT_EQ(Picture(), there) << y;
        EXPECT_EQ(Count(red), 9);
    }
}

TEST_F(CairoTargetTest, WithoutAPenOnlyTheFillIsDrawn)
{
    target_.SetLine(nullptr, 1);
    target_.SetFill(&yellow);
    target_.Polygon({{1, 1}, {7, 1}, {7, 5}, {1, 5}});
    EXPECT_EQ(Count(red), 0);
    EXPECT_GT(Count(yellow), 20);
    EXPECT_EQ(target_.PixelAt(4, 3), yellow);
}

TEST_F(CairoTargetTest, WhatLiesOutsideIsClippedHoweverFar)
{
    constexpr int far = 1 << 30;
    target_.SetFill(&yellow);
    target_.MoveTo({-far, 3});
    target_.LineTo({far, 3});
    EXPECT_EQ(Count(red), 9);
    target_.SetOrigin({far, far});
    target_.Rectangle(-far - 5, -far - 5, -far + 20, -far + 20);
    EXPECT_EQ(Count(yellow), 63);
    target_.Ellipse(-far, -far, far, far);
    target_.FillRectangle(far, far, 2147483647, 2147483647, red);
    target_.Pixel({far, far}, red);
    target_.Text({far, far}, L"far");
    target_.LineTo({0, 0});
    EXPECT_EQ(Count(yellow), 63);
}

TEST_F(CairoTargetTest, TheOriginAndARotationMoveWhatIsDrawn)
{
    target_.SetOrigin({2, 1});
    target_.SetRotation(3.14159265358979 / 2, {2, 2});
    target_.MoveTo({0, 0});
    target_.LineTo({3, 0});
    target_.ResetRotation();
    target_.Pixel({0, 0}, yellow);
    EXPECT_EQ(Picture(),
              (Rows{".........", "..o......", ".........", "....#....", "....#....", "....#....", "....#...."}));
}

TEST_F(CairoTargetTest, WideLinesCoverTheirWidth)
{
    target_.SetLine(&red, 3);
    target_.MoveTo({-20, 3});
    target_.LineTo({20, 3});
    EXPECT_EQ(Picture(),
              (Rows{".........", ".........", "#########", "#########", "#########", ".........", "........."}));
}

TEST_F(CairoTargetTest, BitmapsOfEveryDepthAreStretchedToTheirBox)
{
    const RgbPixel palette[256] = {black, red, yellow};
    const std::uint8_t bits[] = {0x40}, indexes[] = {2, 1}, bgr[] = {0, 255, 255, 0, 0, 255},
                       bgra[] = {0, 255, 255, 9, 0, 0, 255, 9};
    const struct
    {
        int bitCount;
        const std::uint8_t* pixels;
        const char* row;
    } cases[] = {{1, bits, "...###..."}, {8, indexes, "ooo###..."}, {24, bgr, "ooo###..."}, {32, bgra, "ooo###..."}};
    for (const auto& c : cases) {
        target_.FillRectangle(0, 0, 9, 7, black);
        target_.Blit({2, 1, c.bitCount, 8, c.pixels, palette}, 0, 0, 6, 3);
        EXPECT_EQ(Picture(), (Rows{c.row, c.row, c.row, ".........", ".........", ".........", "........."}))
            << c.bitCount;
    }
    // Partly off the surface on all sides.
    target_.Blit({2, 1, 8, 8, indexes, palette}, -10, -10, 30, 40);
    EXPECT_EQ(Count(yellow), 5 * 7);
    EXPECT_EQ(Count(red), 4 * 7);
    target_.Blit({2, 1, 8, 8, indexes, palette}, 9, 0, 2, 1);
    target_.Blit({2, 1, 8, 8, indexes, palette}, -2, 0, 2, 1);
    EXPECT_EQ(Count(yellow), 5 * 7);
}

TEST_F(CairoTargetTest, ReducedBitmapsShowMeansAndOpacityBlends)
{
    const std::uint8_t bgr[] = {10, 20, 30, 30, 40, 50, 50, 60, 70, 70, 80, 91};
    target_.Blit({2, 2, 24, 6, bgr, nullptr}, 3, 2, 1, 1);
    EXPECT_EQ(target_.PixelAt(3, 2), RgbPixel(60, 50, 40));
    target_.FillRectangle(0, 0, 9, 7, RgbPixel(200, 100, 0));
    const std::uint8_t premultiplied[] = {20, 40, 60, 127};
    target_.Blit({1, 1, 32, 4, premultiplied, nullptr, true}, 0, 0, 1, 1);
    EXPECT_EQ(target_.PixelAt(0, 0), RgbPixel(60 + 200 * 128 / 255, 40 + 100 * 128 / 255, 20));
    const std::uint8_t bright[] = {255, 255, 255, 0};
    target_.Blit({1, 1, 32, 4, bright, nullptr, true}, 0, 0, 1, 1);
    EXPECT_EQ(target_.PixelAt(0, 0), RgbPixel(255, 255, 255));
}

TEST_F(CairoTargetTest, EveryKindOfBitmapIsReducedToTheMeansOfItsParts)
{
    // Bytes that a palette of grays, or three or four channels, make into colours; pixels fall on 3 or 4 columns.
    constexpr int width = 23, height = 11, newWidth = 6, newHeight = 4, pitch = 4 * width;
    std::vector<std::uint8_t> pixels(static_cast<std::size_t>(pitch) * height);
    checks::Noise noise{7};
    for (auto& pixel : pixels)
        pixel = noise.Byte();
    RgbPixel grays[256];
    for (int v = 0; v < 256; v++)
        grays[v] = RgbPixel(v, 255 - v, v / 2);
    for (const int bits : {1, 8, 24, 32}) {
        const auto at = [&](int x, int y, int channel) -> int { // 0 is blue
            const std::uint8_t* row = pixels.data() + static_cast<std::ptrdiff_t>(pitch) * y;
            if (bits > 8) return row[bits / 8 * x + channel];
            const RgbPixel color = grays[bits == 8 ? row[x] : row[x / 8] >> (7 - x % 8) & 1];
            return channel == 0 ? color.Blue : channel == 1 ? color.Green : color.Red;
        };
        // Partly to the left of the surface, which is 9 x 7.
        target_.Blit({width, height, bits, pitch, pixels.data(), grays}, -2, 1, newWidth, newHeight);
        for (int y = 0; y < newHeight; y++)
            for (int x = 2; x < newWidth; x++) {
                int sums[3] = {}, count = 0;
                for (int sy = y * height / newHeight; sy < (y + 1) * height / newHeight; sy++)
                    for (int sx = x * width / newWidth; sx < (x + 1) * width / newWidth; sx++) {
                        count++;
                        for (int c = 0; c < 3; c++)
                            sums[c] += at(sx, sy, c);
                    }
                EXPECT_EQ(target_.PixelAt(x - 2, y + 1), RgbPixel(sums[2] / count, sums[1] / count, sums[0] / count))
                    << bits << " bits at " << x << ", " << y;
            }
    }
}

TEST_F(CairoTargetTest, RowsThatAreMadeOnDemandShowTheSameAndNoMoreThanIsSeenIsMade)
{
    constexpr int width = 64, height = 48;
    checks::Noise noise{3};
    std::vector<std::uint8_t> pixels(4 * width * height);
    for (auto& pixel : pixels)
        pixel = noise.Byte();
    RgbPixel grays[256];
    for (int v = 0; v < 256; v++)
        grays[v] = RgbPixel(v, v, v);
    struct Rows final : BitmapRows
    {
        const std::uint8_t* pixels;
        int bits, pitch;
        mutable int left = width, top = height, right = 0, bottom = 0, made = 0;

        void Get(int y, int from, int to, std::uint8_t* dst) const override
        {
            EXPECT_TRUE(bits > 1 || from % 8 == 0);
            std::memcpy(dst, pixels + pitch * y + from * bits / 8,
                        static_cast<std::size_t>((to - from) * bits + 7) / 8);
            left = Min(left, from);
            right = Max(right, to);
            top = Min(top, y);
            bottom = Max(bottom, y + 1);
            made++;
        }
    };
    // Enlarged, as they are, and reduced; the surface of 9 x 7 sees a part from the middle.
    for (const int bits : {1, 8, 32})
        for (const double zoom : {3.0, 1.0, 0.5}) {
            const int pitch = width * bits / 8, w = static_cast<int>(width * zoom), h = static_cast<int>(height * zoom);
            TargetBitmap bitmap{width, height, bits, pitch, pixels.data(), grays, bits == 32};
            target_.FillRectangle(0, 0, 9, 7, red);
            target_.Blit(bitmap, -w / 2, -h / 2, w, h);
            std::vector<std::uint8_t> expected(target_.Pixels(), target_.Pixels() + 7 * target_.Stride());
            Rows rows;
            rows.pixels = pixels.data();
            rows.bits = bits;
            rows.pitch = pitch;
            bitmap.Pixels = nullptr;
            target_.FillRectangle(0, 0, 9, 7, red);
            target_.BlitRows(bitmap, rows, -w / 2, -h / 2, w, h);
            EXPECT_EQ(expected, std::vector<std::uint8_t>(target_.Pixels(), target_.Pixels() + 7 * target_.Stride()))
                << bits << ' ' << zoom;
            EXPECT_GE(rows.left, width / 2 - 7) << "at 1 bit a pixel rows begin on whole bytes";
            EXPECT_LE(rows.right, width / 2 + 9 / zoom + 1);
            EXPECT_GE(rows.top, height / 2);
            EXPECT_LE(rows.bottom, height / 2 + 7 / zoom + 1);
            EXPECT_EQ(rows.made, rows.bottom - rows.top) << "each once";
        }
}

TEST_F(CairoTargetTest, TextStandsInItsBox)
{
    target_.Resize(200, 60);
    target_.SetText(red, &yellow, L"System", 20);
    const TargetPoint size = target_.TextExtent(L"Width 12");
    EXPECT_NEAR(size.Y, 20, 1);
    EXPECT_GT(size.X, 40);
    EXPECT_LT(size.X, 140);
    target_.Text({10, 10}, L"Width 12");
    EXPECT_GT(Count(yellow), size.X * size.Y / 2);
    EXPECT_GT(Count(red), 20);
    // Nothing outside the box, but for what letters may overhang.
    int outside = 0;
    for (int y = 0; y < 60; y++)
        for (int x = 0; x < 200; x++)
            if (x < 9 || x > 11 + size.X || y < 9 || y > 11 + size.Y) outside += target_.PixelAt(x, y) != black;
    EXPECT_EQ(outside, 0);
}

TEST_F(CairoTargetTest, ATextThatCannotBeShownLeavesTheRestToBeDrawn)
{
    target_.Resize(60, 30);
    target_.SetText(red, nullptr, L"System", 16);
    const std::wstring broken = {L'a', static_cast<wchar_t>(0xd800), static_cast<wchar_t>(0x7fffffff)};
    EXPECT_GT(target_.TextExtent(broken).X, 0);
    target_.Text({0, 0}, broken);
    target_.FillRectangle(0, 0, 60, 30, black);
    target_.Text({0, 0}, L"ab");
    EXPECT_LT(Count(black), 60 * 30);
    target_.SetFill(&yellow);
    target_.Rectangle(20, 10, 50, 25);
    EXPECT_GT(Count(yellow), 200);
}

TEST_F(CairoTargetTest, LettersHaveTheWidthThatTheirHeightGivesThem)
{
    target_.Resize(200, 60);
    const std::wstring letters = L"abcdefghijklmnopqrstuvwxyzABCDEFGHIJKLMNOPQRSTUVWXYZ0123456789";
    for (const int size : {16, 32, 48}) {
        target_.SetText(red, nullptr, L"System", size);
        const double mean = target_.TextExtent(letters).X / static_cast<double>(letters.size());
        EXPECT_NEAR(mean, 7.0 * size / 16, 0.06 * size) << size;
    }
}

TEST_F(CairoTargetTest, SizesChangeAndAnImpossibleOneIsHeld)
{
    target_.FillRectangle(0, 0, 9, 7, gray);
    target_.Resize(9, 7);
    EXPECT_EQ(Count(gray), 63);
    target_.Resize(20, 10);
    EXPECT_EQ(target_.ClientSize(), (TargetPoint{20, 10}));
    EXPECT_EQ(Count(black), 200);
    EXPECT_GE(target_.Stride(), 80);
    EXPECT_EQ(target_.Pixels()[3], 255);
    target_.Resize(0, -4);
    EXPECT_EQ(target_.Pixels(), nullptr);
    target_.SetFill(&yellow);
    target_.Rectangle(0, 0, 5, 5);
    target_.Text({0, 0}, L"x");
    EXPECT_GT(target_.TextExtent(L"x").X, 0);
    target_.Resize(1 << 30, 1);
    EXPECT_EQ(target_.Width(), CairoTarget::LargestSide);
}
