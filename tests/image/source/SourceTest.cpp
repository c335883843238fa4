#include "image/Source.h"
#include "foundation/Services.h"
#include "foundation/Status.h"
#include "measure/Profile.h"

#include <gtest/gtest.h>

#include <new>
#include <string>
#include <vector>

using namespace Tesk;

namespace {

using Block = std::vector<std::uint8_t>;

class ClipboardTest : public ::testing::Test
{
protected:
    void SetUp() override
    {
        Status::ErrorBehavior(IgnoreIt);
        Services::Clipboard().Empty();
    }
    void TearDown() override
    {
        Services::Install(static_cast<IWindowCapture*>(nullptr));
        Services::Install(static_cast<IClipboard*>(nullptr));
    }

    static Block OnClipboard(int format = IClipboard::Dib)
    {
        Block block;
        Services::Clipboard().Get(format, block);
        return block;
    }

    static void Put32(Block& block, std::size_t at, std::uint32_t value)
    {
        for (std::size_t i = 0; i < 4; i++)
            block[at + i] = static_cast<std::uint8_t>(value >> 8 * i);
    }

    /// A bitmap of 2 x 2 pixels with its rows `bytes`.
    static Block Bitmap(int height, int bitCount, const Block& bytes)
    {
        Block block(40);
        Put32(block, 0, 40);
        Put32(block, 4, 2);
        Put32(block, 8, static_cast<std::uint32_t>(height));
        block[14] = static_cast<std::uint8_t>(bitCount);
        for (const std::uint8_t byte : bytes)
            block.push_back(byte);
        return block;
    }
};

/// A window of 2 x 2 pixels.
class OneWindow final : public IWindowCapture
{
public:
    bool Capture(void* Window, int& Width, int& Height, std::vector<std::uint8_t>& Pixels) override
    {
        Width = Height = 2;
        Pixels = {1, 2, 3, 255, 4, 5, 6, 255, 7, 8, 9, 255, 10, 11, 12, 255};
        return Window == this;
    }
};

/// A desktop without memory.
class FullClipboard final : public IClipboard
{
public:
    void Empty() override {}
    void Put(int, std::vector<std::uint8_t>) override { throw std::bad_alloc(); }
    bool Get(int, std::vector<std::uint8_t>&) override { throw std::bad_alloc(); }
};

} // namespace

TEST_F(ClipboardTest, TheWindowOfAnImageComesBackInEveryTypeThatGoesOut)
{
    for (const PixelTypes type : {Gray, Rgb, Rgba})
        for (const int width : {1, 2, 3, 4, 5}) {
            Image image, pasted;
            image.Set(9, 6, type);
            for (int y = 0; y < 6; y++)
                for (int i = 0; i < RowBytes(9, type); i++)
                    image.Row(y)[i] = static_cast<std::uint8_t>(40 * y + i);
            image.Window(2, 1, width, 3);
            Source::CopyToClipboard(image);
            ASSERT_EQ(Status::Error().Code, NoError);
            EXPECT_EQ(OnClipboard().size(), static_cast<std::size_t>(image.Pitch * 3 + 1064));
            Source::PasteFromClipboard(pasted);
            ASSERT_EQ(Status::Error().Code, NoError);
            ASSERT_EQ(PixelTypes(pasted.Type), type);
            ASSERT_EQ(pasted.Width, width);
            ASSERT_EQ(pasted.Height, 3);
            for (int y = 0; y < 3; y++)
                for (int i = 0; i < RowBytes(width, type); i++)
                    ASSERT_EQ(pasted.Row(y)[i], image.Row(y)[i]);
        }
}

TEST_F(ClipboardTest, TheHeaderIsThatOfABitmap)
{
    Image image;
    image.Set(3, 1, Gray);
    for (int x = 0; x < 3; x++)
        image.Row(0)[x] = static_cast<std::uint8_t>(x + 7);
    Source::CopyToClipboard(image);
    const Block block = OnClipboard();
    const Block header = {40, 0, 0, 0, 3,    0,    0, 0, 1,    0,    0, 0, 1, 0, 8, 0, 0, 0, 0, 0,
                          0,  0, 0, 0, 0x13, 0x0b, 0, 0, 0x13, 0x0b, 0, 0, 0, 1, 0, 0, 0, 0, 0, 0};
    EXPECT_EQ(Block(block.begin(), block.begin() + 40), header);
    EXPECT_EQ(Block(block.begin() + 40 + 4 * 200, block.begin() + 44 + 4 * 200), (Block{200, 200, 200, 0}));
    EXPECT_EQ(Block(block.begin() + 1064, block.begin() + 1067), (Block{7, 8, 9}));
}

TEST_F(ClipboardTest, RowsStandEitherWayUpAndPalettesAndMasksAreSkipped)
{
    Image image;
    Block palette = Bitmap(2, 8, {10, 20, 31, 0, 1, 1, 1, 0, /* rows */ 0, 1, 9, 9, 1, 2, 9, 9});
    palette[32] = 2;
    Services::Clipboard().Put(IClipboard::Dib, palette);
    Source::PasteFromClipboard(image);
    ASSERT_EQ(Status::Error().Code, NoError);
    EXPECT_EQ(image.PixelGray(0, 0), 1);
    EXPECT_EQ(image.PixelGray(1, 0), 0) << "an index without a colour";
    EXPECT_EQ(image.PixelGray(0, 1), 20);

    Services::Clipboard().Put(IClipboard::Dib, Bitmap(-2, 24, {1, 2, 3, 4, 5, 6, 0, 0, 7, 8, 9, 10, 11, 12, 0, 0}));
    Source::PasteFromClipboard(image);
    EXPECT_EQ(image.PixelRgb(1, 0), RgbPixel(6, 5, 4));
    Block masks = Bitmap(1, 32, {9, 9, 9, 9, 9, 9, 9, 9, 9, 9, 9, 9, 1, 2, 3, 4, 5, 6, 7, 8});
    masks[16] = 3;
    Services::Clipboard().Put(IClipboard::Dib, masks);
    Source::PasteFromClipboard(image);
    EXPECT_EQ(image.PixelRgba(1, 0), RgbaPixel(7, 6, 5, 8));
}

TEST_F(ClipboardTest, WhatIsNoPictureIsRefusedAndTheImageStays)
{
    Block compressed = Bitmap(2, 8, {}), flat = Bitmap(0, 24, Block(16)), vast = Bitmap(2, 24, Block(16));
    compressed[16] = 1;
    Put32(vast, 4, 60000);
    Put32(vast, 8, 60000);
    Block colors = Bitmap(2, 8, Block(16));
    Put32(colors, 32, 0xffffffff);
    Block lowest = Bitmap(2, 32, Block(16));
    Put32(lowest, 8, 0x80000000);
    const struct
    {
        Block block;
        int code;
        const wchar_t* message;
    } cases[] = {
        {{}, CannotRead, L"There is no suitable image data in the clipboard"},
        {Block(39), CannotRead, L"There is no suitable image data in the clipboard"},
        {compressed, UnsupportedType, L"The image Compression mode (1) is not supported for this clipboard operation"},
        {Bitmap(2, 16, Block(8)), UnsupportedType,
         L"The image BitCount (16) is not supported for this clipboard operation"},
        {Bitmap(2, 24, Block(15)), CannotRead, L"There is no suitable image data in the clipboard"},
        {flat, CannotRead, L"There is no suitable image data in the clipboard"},
        {vast, CannotRead, L"There is no suitable image data in the clipboard"},
        {colors, CannotRead, L"There is no suitable image data in the clipboard"},
        {lowest, CannotRead, L"There is no suitable image data in the clipboard"}};
    Image image;
    image.Set(3, 3, Gray16);
    for (const auto& c : cases) {
        Services::Clipboard().Empty();
        if (!c.block.empty()) Services::Clipboard().Put(IClipboard::Dib, c.block);
        Source::PasteFromClipboard(image);
        EXPECT_EQ(Status::Error().Code, c.code);
        EXPECT_STREQ(Status::UnicodeError(), c.message);
        EXPECT_STREQ(Status::AsciiFunction(), "Tesk::Source::PasteFromClipboard");
        EXPECT_EQ(PixelTypes(image.Type), Gray16);
    }
    Source::CopyToClipboard(image);
    EXPECT_EQ(Status::Error().Code, UnsupportedType);
    EXPECT_STREQ(Status::UnicodeError(), L"The image type (Gray16) is not supported for this clipboard operation");
    EXPECT_STREQ(Status::AsciiFunction(), "Tesk::Source::CopyToClipboard");
    Source::CopyToClipboard(Image());
    EXPECT_EQ(Status::Error().Code, VoidObject);
}

TEST_F(ClipboardTest, APictureOfAWindowReplacesWhatWasThere)
{
    OneWindow window;
    Source::CopyToClipboard(static_cast<void*>(&window));
    EXPECT_EQ(Status::Error().Code, CannotPerform) << "no window service is installed";
    Services::Install(&window);
    Services::Clipboard().Put(IClipboard::Dib, {1});
    Source::CopyToClipboard(static_cast<void*>(&window));
    EXPECT_EQ(Status::Error().Code, NoError);
    EXPECT_TRUE(OnClipboard().empty());
    const Block block = OnClipboard(IClipboard::Bitmap);
    ASSERT_EQ(block.size(), 56u);
    EXPECT_EQ(Block(block.begin() + 40, block.begin() + 44), (Block{7, 8, 9, 255}));
    Source::CopyToClipboard(static_cast<void*>(nullptr));
    EXPECT_EQ(Status::Error().Code, CannotPerform);
}

TEST_F(ClipboardTest, AProfileGoesOutAsLinesOfText)
{
    const auto text = [] {
        const Block block = OnClipboard(IClipboard::Text);
        return std::string(block.begin(), block.end());
    };
    Profile gray, rgb, wide;
    for (const int value : {7, 255, -3, 12})
        gray.Append(value);
    gray.Window(1, 2);
    Services::Clipboard().Put(IClipboard::Dib, {1});
    Source::CopyToClipboard(gray);
    ASSERT_EQ(Status::Error().Code, NoError);
    EXPECT_EQ(text(), std::string("255\r\n-3\r\n\0", 10));
    EXPECT_TRUE(OnClipboard().empty());
    rgb.Append(1, 20, 255);
    rgb.Append(INT32_MIN, INT32_MIN, INT32_MIN);
    Source::CopyToClipboard(rgb);
    EXPECT_EQ(text(), std::string("1\t20\t255\r\n-2147483648\t-2147483648\t-2147483648\r\n\0", 48));
    wide.Set(3, Gray16);
    Source::CopyToClipboard(wide);
    EXPECT_EQ(Status::Error().Code, UnsupportedType);
    EXPECT_STREQ(Status::UnicodeError(),
                 L"The profile pixel Type (Gray16) is not supported for this clipboard operation");
    EXPECT_STREQ(Status::AsciiFunction(), "Tesk::Source::CopyToClipboard");
    Source::CopyToClipboard(Profile());
    EXPECT_EQ(Status::Error().Code, VoidObject);
    EXPECT_EQ(text().size(), 48u) << "a refusal leaves the clipboard alone";
}

TEST_F(ClipboardTest, AWantOfMemoryIsAFailureLikeAnyOther)
{
    FullClipboard full;
    Services::Install(&full);
    Image image;
    Profile profile;
    image.Set(3, 3, Gray);
    profile.Append(1);
    Source::CopyToClipboard(image);
    EXPECT_EQ(Status::Error().Code, CannotAllocate);
    Source::CopyToClipboard(profile);
    EXPECT_EQ(Status::Error().Code, CannotAllocate);
    Source::PasteFromClipboard(image);
    EXPECT_EQ(Status::Error().Code, CannotAllocate);
    EXPECT_EQ(image.Width, 3);
}
