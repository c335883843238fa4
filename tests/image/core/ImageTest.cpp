#include "image/Image.h"

#include "Failures.h"
#include "foundation/Archive.h"
#include "image/Geometry.h"
#include "image/Operator.h"
#include "image/Pyramid.h"

#include <cstdio>
#include <cstring>
#include <string>
#include <sys/mman.h>
#include <unistd.h>
#include <vector>

using namespace Tesk;

namespace {

using checks::Message;

class ImageTest : public checks::IgnoringFailures
{};

} // namespace

TEST_F(ImageTest, StoresHaveTheirPitchAlignmentAndSpareBytes)
{
    const struct
    {
        int width;
        PixelTypes type;
        int rowBytes, pitch;
    } cases[] = {{5, Rgb, 15, 16},  {9, Gray1, 2, 4}, {7, Gray, 7, 8},
                 {3, Gray16, 6, 8}, {1, Rgba, 4, 4},  {3, Grad, 12, 12}};
    for (const auto& c : cases) {
        Image image;
        image.Set(c.width, 3, c.type);
        EXPECT_EQ(RowBytes(c.width, c.type), c.rowBytes);
        EXPECT_EQ(image.Pitch, c.pitch);
        EXPECT_EQ(image.BufferSize, static_cast<std::uint32_t>(c.pitch * 3 + 62));
        EXPECT_EQ(reinterpret_cast<std::uintptr_t>(static_cast<std::uint8_t*>(image.FirstPixel)) % 32, 0u);
    }
}

TEST_F(ImageTest, WindowsAreClippedAndTellWhetherTheyWere)
{
    Image image;
    EXPECT_FALSE(image.Window(0, 0, 1, 1));
    EXPECT_EQ(Status::Error().Code, VoidObject);
    EXPECT_EQ(Message(), L"Void source or destination image");
    image.Set(100, 50, Gray);
    EXPECT_TRUE(image.Window(10, 5, 20, 10));
    EXPECT_EQ(image.FirstPixel, image.Buffer + image.AlignOffset + image.Pitch * 5 + 10);
    EXPECT_TRUE(image.HasWindow());
    const struct
    {
        int x, y, width, height;
        bool result;
        int ex, ey, ewidth, eheight;
    } cases[] = {{-5, -5, 20, 10, false, 0, 0, 15, 5},   // cut at the near edges
                 {90, 45, 20, 10, false, 90, 45, 10, 5}, // cut at the far edges
                 {200, 0, 10, 10, false, 90, 45, 10, 5}, // wholly outside: stays
                 {0, 0, 0, 10, true, 90, 45, 10, 5},     // empty: stays, and counts as inside
                 {MaxInt, 0, MaxInt, 1, false, 90, 45, 10, 5}, {0, 0, 100, 50, true, 0, 0, 100, 50}};
    for (const auto& c : cases) {
        EXPECT_EQ(image.Window(c.x, c.y, c.width, c.height), c.result);
        EXPECT_EQ(image.X, c.ex);
        EXPECT_EQ(image.Y, c.ey);
        EXPECT_EQ(image.Width, c.ewidth);
        EXPECT_EQ(image.Height, c.eheight);
    }
}

TEST_F(ImageTest, SetFromAnImageKeepsAFittingWindowThenAFittingStore)
{
    Image source, image;
    source.Set(20, 10, Gray);
    image.Set(100, 50, Gray);
    image.Window(7, 8, 20, 10);
    const std::uint8_t* buffer = image.Buffer;
    image.Set(source);
    EXPECT_EQ(image.Buffer, buffer);
    EXPECT_EQ(image.X, 7);
    source.Set(100, 50, Gray);
    image.Set(source);
    EXPECT_EQ(image.Buffer, buffer);
    EXPECT_FALSE(image.HasWindow());
    image.Set(source, Rgb);
    EXPECT_EQ(image.Type, Rgb);
    EXPECT_EQ(image.Pitch, 300);
    Image nothing;
    image.Set(nothing);
    EXPECT_EQ(Status::Error().Code, VoidObject);
    EXPECT_STREQ(Status::AsciiFunction(), "Tesk::Image::Set");
    EXPECT_EQ(image.Type, Rgb);
}

TEST_F(ImageTest, ImpossibleSizesAreRefusedAndChangeNothing)
{
    Image image;
    image.Set(4, 4, Gray);
    const struct
    {
        int width, height;
        PixelTypes type;
    } cases[] = {{0, 4, Gray},     {4, 0, Gray},         {-1, 4, Gray},
                 {MaxInt, 2, Rgb}, {60000, 60000, Rgba}, {MaxInt, MaxInt, Gray1}};
    for (const auto& c : cases) {
        image.Set(c.width, c.height, c.type);
        EXPECT_EQ(Status::Error().Code, CannotAllocate);
        EXPECT_EQ(Message(), L"Cannot allocate the image buffer");
        EXPECT_EQ(image.Width, 4);
        EXPECT_EQ(image.Type, Gray);
    }
    image.Set(4, 4, Undefined);
    EXPECT_EQ(Status::Error().Code, VoidObject);
    EXPECT_STREQ(Status::AsciiFunction(), "Tesk::Image::Window");
    EXPECT_EQ(image.Width, 0);
    EXPECT_EQ(image.FirstPixel, nullptr);
}

TEST_F(ImageTest, ASizeAloneKeepsTheTypeOrWaitsForOne)
{
    Image image, constant, turned, shadow;
    image.Set(4, 4, Rgb);
    image.Window(1, 1, 2, 2);
    image.Set(6, 5);
    EXPECT_EQ(image.Type, Rgb);
    EXPECT_EQ(image.Width, 6);
    EXPECT_EQ(image.StoreHeight, 5);
    constant.Set(3, 0);
    EXPECT_EQ(Status::Error().Code, CannotAllocate);
    EXPECT_EQ(Message(), L"Cannot allocate the image buffer");
    Operator::Copy(1, constant);
    EXPECT_EQ(Status::Error().Code, VoidObject);

    // A void image becomes what is put into it.
    constant.Set(3, 2);
    EXPECT_EQ(Status::Error().Code, NoError);
    EXPECT_EQ(constant.Type, Undefined);
    Operator::Invert(constant, turned);
    EXPECT_EQ(Status::Error().Code, VoidObject);
    shadow.ShallowCopy(constant, true);
    Operator::Copy(RgbaPixel(1, 2, 3, 4), shadow);
    EXPECT_EQ(shadow.PixelRgba(2, 1).Alpha, 4);
    Operator::Copy(RgbPixel(1, 2, 3), constant);
    EXPECT_EQ(constant.PixelRgb(2, 1).Blue, 3);
    Operator::Copy(RgbaPixel(1, 2, 3, 4), constant);
    EXPECT_EQ(Status::Error().Code, UnsupportedType) << "the type is settled now";
    turned.Set(7, 1);
    Geometry::Rotate(XY(0, 0), XY(0, 0), 0, 1, constant, turned);
    EXPECT_EQ(Status::Error().Code, NoError);
    EXPECT_EQ(turned.Type, Rgb);
    EXPECT_EQ(turned.Width, 7);
    EXPECT_EQ(turned.PixelRgb(6, 0).Green, 2);

    // A size that was asked for goes with the image that it was asked of.
    constant.Set(0, 0, Undefined);
    Operator::Copy(1, constant);
    EXPECT_EQ(Status::Error().Code, VoidObject);
}

TEST_F(ImageTest, AnAssignedImageIsACopyOfPixelsAndWindow)
{
    Image source, copy;
    source.Set(5, 4, Gray);
    for (int y = 0; y < 4; y++)
        for (int x = 0; x < 5; x++)
            source.PixelGray(x, y) = static_cast<GrayPixel>(10 * y + x);
    source.Window(1, 2, 3, 2);
    copy.Set(9, 9, Rgb);
    copy.Window(4, 4, 2, 2);
    copy = source;
    source.PixelGray(1, 2) = 99;
    EXPECT_TRUE(copy.OwnsBuffer);
    EXPECT_EQ(copy.X, 1);
    EXPECT_EQ(copy.Height, 2);
    EXPECT_EQ(copy.PixelGray(1, 2), 21);
    copy.Window();
    EXPECT_EQ(copy.PixelGray(4, 0), 4) << "the store is copied, not the window alone";
    copy = *&copy;
    EXPECT_EQ(copy.PixelGray(4, 3), 34);

    // The result of a method that refused is void, and its refusal stands.
    Pyramid none;
    copy = none.Bitmap(0);
    EXPECT_EQ(Status::Error().Code, VoidObject);
    EXPECT_STREQ(Status::AsciiFunction(), "Tesk::Pyramid::Bitmap");
    EXPECT_EQ(copy.Type, Undefined);
    EXPECT_EQ(copy.FirstPixel, nullptr);
}

TEST_F(ImageTest, ExternalBuffersThatNoRowsFitInAreRefused)
{
    std::uint8_t buffer[64] = {};
    Image image;
    image.Set(5, 3, Gray, buffer, -8, 16);
    ASSERT_EQ(Status::Error().Code, NoError);
    EXPECT_FALSE(image.OwnsBuffer);
    EXPECT_EQ(image.Row(2), buffer);
    const struct
    {
        int width, height;
        PixelTypes type;
        int pitch, offset;
    } cases[] = {{0, 3, Gray, 8, 0}, {5, 0, Gray, 8, 0},  {5, 3, Gray, 4, 0},   {5, 3, Gray, -4, 16},
                 {2, 3, Rgb, 5, 0},  {5, 3, Gray, 8, -1}, {5, 3, IntXY, 64, 0}, {MaxInt, 1, Rgb, 0, 0}};
    for (const auto& c : cases) {
        image.Set(c.width, c.height, c.type, buffer, c.pitch, c.offset);
        EXPECT_EQ(Status::Error().Code, OutOfRange) << &c - cases;
        EXPECT_STREQ(Status::AsciiFunction(), "Tesk::Image::Set");
        EXPECT_EQ(image.Row(2), buffer) << "the former view stays";
    }
    image.Set(5, 0, Gray, buffer);
    EXPECT_EQ(Message(), L"An external buffer of 5 x 0 Gray pixels cannot be used");
}

TEST_F(ImageTest, PixelsAreReachedByStoreCoordinatesInsideTheWindowOnly)
{
    Image image;
    image.Set(10, 10, Gray16);
    image.Window(2, 3, 4, 5);
    image.PixelGray16(2, 3) = 777;
    EXPECT_EQ(*image.Row<Gray16Pixel>(0), 777);
    image.PixelGray16(1, 3) = 5;
    EXPECT_EQ(Status::Error().Code, OutOfRange);
    EXPECT_EQ(Message(), L"Pixel coordinates (-1, 0) out of the image range [2..5] x [3..7]");
    EXPECT_STREQ(Status::AsciiFunction(), "Tesk::Image::PixelGray16");
    image.PixelGray(2, 3);
    EXPECT_EQ(Message(), L"Image Type is Gray16, Gray was expected");
    EXPECT_EQ(Status::Error().Code, IncompatibleType);
    Image bits;
    bits.Set(9, 2, Gray1);
    std::fill_n(bits.Row(0), 4, 0);
    bits.PixelGray1(8, 0, true);
    EXPECT_EQ(bits.Row(0)[1], 0x80);
    EXPECT_TRUE(bits.PixelGray1(8, 0));
    EXPECT_FALSE(bits.PixelGray1(7, 0));
    EXPECT_FALSE(bits.PixelGray1(9, 0));
    EXPECT_EQ(Status::Error().Code, OutOfRange);
}

TEST_F(ImageTest, ShadowsKeepTheirRelativeWindowAndTheirPixels)
{
    Image source, shadow;
    source.Set(100, 50, Gray);
    std::fill_n(source.Row(0), 50 * source.Pitch, 9);
    shadow.ShallowCopy(source, true);
    EXPECT_EQ(shadow.FirstPixel, source.FirstPixel);
    EXPECT_FALSE(shadow.OwnsBuffer);
    shadow.Window(10, 10, 20, 20);
    Image larger;
    larger.Set(200, 100, Gray);
    shadow.ShallowCopy(larger, false);
    EXPECT_EQ(shadow.X, 20);
    EXPECT_EQ(shadow.Width, 40);

    Status::Shallow = true;
    Image kept;
    kept.ShallowCopy(source, true);
    source.DetachIfShared(false);
    source.Row(0)[0] = 1;
    EXPECT_EQ(kept.Row(0)[0], 9);
    source.Detach(true);
    EXPECT_EQ(source.Row(0)[0], 1);
}

TEST_F(ImageTest, AShadowOnAVoidImageTakesTheSizeOfTheWindow)
{
    Image source, shadow;
    source.Set(100, 50, Gray);
    source.Window(30, 20, 40, 10);
    shadow.ShallowCopy(source, false);
    EXPECT_EQ(shadow.X, 0);
    EXPECT_EQ(shadow.Y, 0);
    EXPECT_EQ(shadow.Width, 40);
    EXPECT_EQ(shadow.Height, 10);
    EXPECT_EQ(shadow.StoreWidth, 100);
    EXPECT_EQ(shadow.FirstPixel, source.Buffer + source.AlignOffset);
}

TEST_F(ImageTest, AViewThatDetachesReadsItsRowsAloneAndGetsAStoreOfItsOwn)
{
    // Rows of 5 bytes, 100 apart, up to the last byte that may be read.
    const auto page = static_cast<std::size_t>(sysconf(_SC_PAGESIZE));
    void* const pages = mmap(nullptr, 2 * page, PROT_READ | PROT_WRITE, MAP_PRIVATE | MAP_ANONYMOUS, -1, 0);
    ASSERT_NE(pages, MAP_FAILED);
    std::uint8_t* const end = static_cast<std::uint8_t*>(pages) + page;
    ASSERT_EQ(mprotect(end, page, PROT_NONE), 0);
    for (const int pitch : {100, -100}) {
        Image view;
        view.Set(5, 3, Gray, end - 205, pitch, pitch > 0 ? 0 : 200);
        for (int y = 0; y < 3; y++)
            std::memset(view.Row(y), 10 + y, 5);
        view.Window(1, 1, 3, 2);
        view.Detach(true);
        EXPECT_TRUE(view.OwnsBuffer);
        EXPECT_EQ(view.Pitch, 8);
        EXPECT_EQ(view.BufferSize, 8u * 3 + 62);
        EXPECT_EQ(view.FirstPixel, view.Buffer + view.AlignOffset + 8 + 1);
        view.Window();
        for (int y = 0; y < 3; y++)
            for (int x = 0; x < 5; x++)
                EXPECT_EQ(view.PixelGray(x, y), 10 + y) << pitch;
        std::memset(view.Row(0), 99, 24);
        EXPECT_EQ(end[-1], pitch > 0 ? 12 : 10) << "the buffer of the view stays";
    }
    munmap(pages, 2 * page);
}

TEST_F(ImageTest, TheBlockOfAGoneImageLivesWithItsShadow)
{
    Image shadow;
    {
        Image source;
        source.Set(8, 8, Gray);
        source.Row(3)[3] = 42;
        shadow.ShallowCopy(source, true);
    }
    EXPECT_EQ(shadow.Row(3)[3], 42);
}

TEST_F(ImageTest, PrintShowsTheEndsAndBlocksKeepEveryPixel)
{
    Image image;
    image.Set(5, 3, Gray);
    for (int y = 0; y < 3; y++)
        for (int x = 0; x < 5; x++)
            image.Row(y)[x] = static_cast<std::uint8_t>(10 * y + x);
    std::FILE* file = std::tmpfile();
    TextOutput() = file;
    image.Print(2, 4);
    TextOutput() = stderr;
    std::string text(200, 0);
    std::rewind(file);
    text.resize(std::fread(text.data(), 1, text.size(), file));
    EXPECT_EQ(text, "Type: Gray, Size 5 x 3 pixels\n  0   1 ...   3   4 \n...\n 20  21 ...  23  24 \n");
    std::fclose(file);

    std::vector<std::uint8_t> bytes;
    image.Window(1, 1, 3, 2);
    Archive writer = Archive::IntoMemory(bytes);
    image.Transfer(writer);
    EXPECT_EQ(bytes,
              (std::vector<std::uint8_t>{1, 0, 0, 0, 3, 0, 0, 0, 2, 0, 0, 0, 1, 0, 0, 0, 11, 12, 13, 21, 22, 23}));
    Image copy;
    Archive reader = Archive::FromMemory(bytes);
    copy.Transfer(reader);
    EXPECT_TRUE(reader.Good());
    EXPECT_EQ(copy.Row(1)[2], 23);
    copy.Transfer(reader);
    EXPECT_EQ(reader.Code(), CannotRead);
}

TEST_F(ImageTest, BrokenBlocksAllocateNothing)
{
    const struct
    {
        std::vector<std::uint8_t> bytes;
        int code;
    } cases[] = {{{1, 0, 0, 0, 0x60, 0xea, 0, 0, 0x60, 0xea, 0, 0, 1, 0, 0, 0, 7, 7}, CannotRead}, // 60,000 squared
                 {{5, 0, 0, 0, 0xff, 0xff, 0xff, 0x7f, 0xff, 0xff, 0xff, 0x7f, 1, 0, 0, 0}, CannotRead},
                 {{0, 0, 0, 0, 1, 0, 0, 0, 1, 0, 0, 0, 1, 0, 0, 0}, VoidObject},
                 {{77, 0, 0, 0, 1, 0, 0, 0, 1, 0, 0, 0, 1, 0, 0, 0}, CannotAllocate},
                 {{1, 0, 0, 0, 0xff, 0xff, 0xff, 0xff, 1, 0, 0, 0, 1, 0, 0, 0}, CannotAllocate}};
    for (const auto& c : cases) {
        Image image;
        image.GradGain = 5;
        Archive reader = Archive::FromMemory(c.bytes);
        image.Transfer(reader);
        EXPECT_EQ(reader.Code(), c.code);
        EXPECT_EQ(image.Type, Undefined);
        EXPECT_EQ(image.GradGain, 5);
    }
}
