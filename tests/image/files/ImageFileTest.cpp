#include "ImageFileSupport.h"
#include "Noise.h"

#include <cwchar>

using namespace Tesk;
namespace fs = std::filesystem;

namespace {

class ImageFileTest : public ImageFolderTest
{};

void ExpectSame(const Image& a, const Image& b, const std::string& what)
{
    ASSERT_EQ(PixelTypes(a.Type), PixelTypes(b.Type)) << what;
    ASSERT_EQ(int(a.Width), int(b.Width)) << what;
    ASSERT_EQ(int(a.Height), int(b.Height)) << what;
    const int bits = a.Type == Gray1 ? a.Width & 7 : 0;
    const int whole = a.Type == Gray1 ? a.Width >> 3 : RowBytes(a.Width, a.Type);
    for (int y = 0; y < a.Height; y++) {
        ASSERT_EQ(std::memcmp(a.Row(y), b.Row(y), static_cast<std::size_t>(whole)), 0) << what << " row " << y;
        if (bits) {
            ASSERT_EQ((a.Row(y)[whole] ^ b.Row(y)[whole]) >> (8 - bits), 0) << what << " row " << y;
        }
    }
}

} // namespace

TEST_F(ImageFileTest, EveryLosslessFormatGivesBackWhatWasWritten)
{
    const struct
    {
        const char* name;
        std::vector<PixelTypes> types;
    } cases[] = {{"a.bmp", {Gray, Gray16, Rgb, Rgba, Gray1}},
                 {"a.PNG", {Gray, Gray16, Rgb, Rgba, Gray1}},
                 {"a.tif", {Gray, Gray16, Rgb, Rgba, Gray1}},
                 {"a.pbm", {Gray1}},
                 {"a.pgm", {Gray, Gray16}},
                 {"a.ppm", {Rgb}}};
    for (const auto& c : cases)
        for (const PixelTypes type : c.types)
            for (const int width : {1, 7, 8, 9, 33}) {
                Image written, read;
                FillByPlace(written, width, 5, type);
                // Colours are read with their opacity multiplied into them, from PNG alone.
                for (int y = 0; y < 5 && type == Rgba && !std::strcmp(c.name, "a.PNG"); y++)
                    for (int x = 0; x < width; x++)
                        written.PixelRgba(x, y).Alpha = 255;
                written.Write(Path(c.name).c_str());
                ASSERT_EQ(Status::Error().Code, NoError) << c.name << Status::AsciiError();
                read.Read(Path(c.name).c_str(), Undefined);
                ASSERT_EQ(Status::Error().Code, NoError) << c.name << Status::AsciiError();
                ExpectSame(written, read, std::string(c.name) + " type " + std::to_string(type));
                EXPECT_TRUE(read.OwnsBuffer);
            }
}

TEST_F(ImageFileTest, OnlyTheWindowIsWrittenAndWidePathsWork)
{
    Image image, crop;
    FillByPlace(image, 20, 10, Rgb);
    image.Window(3, 4, 7, 5);
    const std::wstring path = Widen(Path("window.png").c_str());
    image.Write(path.c_str());
    crop.Read(path.c_str(), Rgb);
    ExpectSame(image, crop, "window");
}

TEST_F(ImageFileTest, UnknownEndingsWriteBmpAndAreRefusedByRead)
{
    Image image;
    FillByPlace(image, 4, 4, Gray);
    image.Write(Path("a.xyz").c_str());
    EXPECT_EQ(Contents(Path("a.xyz"))[0], 'B');
    image.Read(Path("a.xyz").c_str());
    EXPECT_EQ(Status::Error().Code, UnsupportedFormat);
    EXPECT_EQ(Message(), L"Unsupported file extension \"" + Widen(Path("a.xyz").c_str()) + L"\"");
    EXPECT_STREQ(Status::AsciiFunction(), "Tesk::Image::Read");
    image.Read(Path("b.xyz").c_str());
    EXPECT_EQ(Status::Error().Code, CannotOpen);
    image.Read(folder_.c_str());
    EXPECT_EQ(Status::Error().Code, CannotOpen);
    fs::create_directory(folder_ / "folder.png");
    for (const char* name : {"folder.png", "none/a.bmp"}) {
        image.Read(Path(name).c_str());
        EXPECT_EQ(Status::Error().Code, CannotOpen) << name;
        image.Write(Path(name).c_str());
        EXPECT_EQ(Status::Error().Code, CannotOpen) << name;
    }
    EXPECT_EQ(image.Width, 4);
}

TEST_F(ImageFileTest, BmpRowsStandBottomUpAndPalettesConvert)
{
    Bytes bytes = BmpHeader(2, -2, 8, 54 + 8, 2);
    bytes.insert(bytes.end(), {10, 20, 30, 0, 200, 200, 200, 0}); // blue, green, red, spare
    bytes.insert(bytes.end(), {1, 0, 99, 99, 0, 1, 99, 99});
    const std::string path = Put("p.bmp", bytes);
    Image image;
    image.Read(path.c_str(), Undefined);
    ASSERT_EQ(PixelTypes(image.Type), Rgb);
    EXPECT_EQ(image.PixelRgb(0, 0), RgbPixel(30, 20, 10));
    EXPECT_EQ(image.PixelRgb(1, 0), RgbPixel(200, 200, 200));
    image.Read(path.c_str(), Gray);
    EXPECT_EQ(image.PixelGray(1, 1), (366 * 20 + 37 * 10 + 109 * 30) >> 9);
    image.Read(path.c_str(), Gray16);
    EXPECT_EQ(image.PixelGray16(1, 0), 1 << 8);
    image.Read(path.c_str(), Gray1);
    EXPECT_EQ(Status::Error().Code, IncompatibleType);
    EXPECT_EQ(Message(), L"Implicit type conversion from Gray to Gray1 is not supported (use Copy)");
}

TEST_F(ImageFileTest, BmpHeadersComeShortAndLong)
{
    constexpr int shortHeader = 12, longHeader = 124;
    const auto withHeader = [](int headerSize, int bitCount, const Bytes& palette, const Bytes& rows) {
        Bytes bytes = BmpHeader(3, 3, bitCount);
        if (headerSize == shortHeader) {
            Bytes header = {shortHeader, 0, 0, 0, 3, 0, 3, 0, 1, 0, static_cast<std::uint8_t>(bitCount), 0};
            bytes.resize(14);
            bytes.insert(bytes.end(), header.begin(), header.end());
        } else {
            bytes.resize(static_cast<std::size_t>(14 + headerSize));
            bytes[14] = static_cast<std::uint8_t>(headerSize);
        }
        bytes.insert(bytes.end(), palette.begin(), palette.end());
        Put32(bytes, 10, static_cast<std::uint32_t>(bytes.size()));
        bytes.insert(bytes.end(), rows.begin(), rows.end());
        return bytes;
    };
    Bytes rows24, rows8(12), colors3(3 * 256), colors4(4 * 256);
    for (int i = 0; i < 36; i++)
        rows24.push_back(static_cast<std::uint8_t>(i + 1));
    for (std::size_t i = 0; i < 256; i++)
        colors3[3 * i] = colors4[4 * i] = static_cast<std::uint8_t>(255 - i);
    rows8[8] = 200; // the first pixel of the top row
    Image image;
    for (const int size : {shortHeader, longHeader}) {
        image.Read(Put("a.bmp", withHeader(size, 24, {}, rows24)).c_str(), Undefined);
        ASSERT_EQ(Status::Error().Code, NoError) << size << ' ' << Status::AsciiError();
        EXPECT_EQ(RowOf(image, 0), (Bytes{25, 26, 27, 28, 29, 30, 31, 32, 33})) << size;
        EXPECT_EQ(RowOf(image, 2), (Bytes{1, 2, 3, 4, 5, 6, 7, 8, 9})) << size;
        image.Read(Put("a.bmp", withHeader(size, 8, size == shortHeader ? colors3 : colors4, rows8)).c_str(), Rgb);
        ASSERT_EQ(Status::Error().Code, NoError) << size << ' ' << Status::AsciiError();
        EXPECT_EQ(RowOf(image, 0), (Bytes{55, 0, 0, 255, 0, 0, 255, 0, 0})) << size;
    }
}

TEST_F(ImageFileTest, BmpHeadersAreRefusedWithTheirReasons)
{
    Bytes compressed = BmpHeader(1, 1, 24);
    compressed[30] = 1;
    Bytes tiny = BmpHeader(1, 1, 24);
    tiny[14] = 20;
    const struct
    {
        Bytes bytes;
        int code;
        const wchar_t* start;
    } cases[] = {{{'B', 'M'}, CannotRead, L"Cannot read from file \""},
                 {Bytes(60, 'x'), UnsupportedFormat, L"File \""},
                 {compressed, UnsupportedFormat, L"Compressed BMP file formats are not supported"},
                 {tiny, UnsupportedFormat, L"Unsupported BMP header format"},
                 {BmpHeader(1, 1, 4), UnsupportedFormat,
                  L"Unsupported BMP image format, bit count is 4, not among 8, 16, 24 or 32"},
                 {BmpHeader(1, 1, 8), CannotRead, L"Cannot read the color palette from file \""},
                 {BmpHeader(60000, 60000, 24), CannotRead, L"Cannot read image row from the BMP file \""},
                 {BmpHeader(0, 5, 24), CannotAllocate, L"Cannot allocate the image Buffer"},
                 {BmpHeader(-3, 5, 24), CannotAllocate, L"Cannot allocate the image Buffer"}};
    Image image;
    for (const auto& c : cases) {
        image.Read(Put("h.bmp", c.bytes).c_str(), Undefined);
        EXPECT_EQ(Status::Error().Code, c.code) << Status::AsciiError();
        EXPECT_EQ(Message().substr(0, std::wcslen(c.start)), c.start);
        EXPECT_EQ(PixelTypes(image.Type), Undefined);
    }
}

TEST_F(ImageFileTest, PnmHeadersMaySpreadAndTextFormsRead)
{
    Image image;
    image.Read(Put("a.pgm", std::string("p2\n# a comment\n2\n# another\n2 9\n1 2\n3 4\n")).c_str());
    ASSERT_EQ(Status::Error().Code, NoError) << Status::AsciiError();
    EXPECT_EQ(image.PixelGray(1, 1), 4);
    image.Read(Put("a.pbm", std::string("P1 3 1\n1 01\n")).c_str());
    EXPECT_EQ(image.PixelGray(0, 0), 0);
    EXPECT_EQ(image.PixelGray(1, 0), 255);
    image.Read(Put("b.pbm", std::string("P4\n9 1\n\x80\x80")).c_str(), Undefined);
    EXPECT_EQ(image.Pitch, 4);
    EXPECT_FALSE(image.PixelGray1(0, 0));
    EXPECT_TRUE(image.PixelGray1(1, 0));
    EXPECT_FALSE(image.PixelGray1(8, 0));
    image.Read(Put("b.pgm", std::string("P5\n1 1\n300\n\x01\x02")).c_str(), Gray);
    ASSERT_EQ(PixelTypes(image.Type), Gray16);
    EXPECT_EQ(image.PixelGray16(0, 0), 0x102);
    image.Read(Put("c.pgm", std::string("P5 2 1 255 \x07\x0a")).c_str());
    EXPECT_EQ(image.PixelGray(1, 0), 10) << "samples on the header's line";
    image.Read(Put("a.ppm", std::string("P3\n1 1 255\n1 2 3\n")).c_str());
    EXPECT_EQ(image.PixelRgb(0, 0), RgbPixel(1, 2, 3));
    image.Read(Put("d.pgm", std::string("P2 2 1\n1000\n300 1000\n")).c_str(), Gray);
    ASSERT_EQ(PixelTypes(image.Type), Gray16);
    EXPECT_EQ(image.PixelGray16(1, 0), 1000);

    const struct
    {
        const char *name, *text;
        int code;
        const wchar_t* start;
    } cases[] = {{"d.pgm", "P6\n1 1 255\n", UnsupportedFormat, L"File \""},
                 {"e.pgm", "P5\n1 1", CannotRead, L"Cannot read the header from the PGM file \""},
                 {"f.pgm", "P5\n1 1 70000\n", UnsupportedFormat,
                  L"Unsupported PGM image format, the maximum gray value (70000) is larger than 65535"},
                 {"g.ppm", "P6\n1 1 256\n", UnsupportedFormat,
                  L"Unsupported PPM image format, the maximum gray value (256) is larger than 255"},
                 {"h.pgm", "P5\n60000 60000 255\nabc", CannotRead, L"Cannot read an image row from the PGM file \""},
                 {"i.ppm", "P6\n2 2 255\nabc", CannotRead, L"Cannot read an image row from the file \""},
                 {"j.pbm", "P1\n2 1\n1x", CannotRead, L"Cannot read a pixel value from the PBM file \""},
                 {"j.ppm", "P3\n1 1 255\n1 2 x", CannotRead, L"Cannot read a pixel value from the file \""},
                 {"k.pgm", "P2\n-1 5 255\n1 2 3 4 5 6", CannotRead, L"Cannot read the header from the PGM file \""}};
    for (const auto& c : cases) {
        image.Read(Put(c.name, std::string(c.text)).c_str());
        EXPECT_EQ(Status::Error().Code, c.code) << c.name << ' ' << Status::AsciiError();
        EXPECT_EQ(Message().substr(0, std::wcslen(c.start)), c.start);
    }
}

TEST_F(ImageFileTest, PnmSamplesBeginWhereTheHeaderEnds)
{
    using namespace std::string_literals;
    const struct
    {
        const char* what;
        std::string text;
        Bytes row;
    } cases[] = {{"a carriage return before the line feed", "P5\r\n3 1\r\n255\r\n\1\2\3"s, {1, 2, 3}},
                 {"a blank before the line feed", "P5\n3 1\n255 \n\1\2\3"s, {1, 2, 3}},
                 {"zeros on the header's line", "P5 3 1 255 \0\0\7"s, {0, 0, 7}},
                 {"zeros behind a line feed", "P5 3 1 255\n\0\n\0"s, {0, 10, 0}},
                 {"samples like white space, on the header's line", "P5 3 1 255 \r \n"s, {13, 32, 10}},
                 {"samples like white space, on a line of their own", "P5 3 1 255\n\n\n\n"s, {10, 10, 10}},
                 {"a sample like a comment", "P5 3 1 255 #\n#"s, {35, 10, 35}},
                 {"numbers on the header's line", "P2 3 1 255 1 2 3\n"s, {1, 2, 3}},
                 {"a comment behind the header", "P2\n3 1 255 # nothing\n1 2 3\n"s, {1, 2, 3}}};
    for (const auto& c : cases) {
        Image image;
        image.Read(Put("a.pgm", c.text).c_str());
        ASSERT_EQ(Status::Error().Code, NoError) << c.what << ": " << Status::AsciiError();
        EXPECT_EQ(RowOf(image, 0), c.row) << c.what;
    }
}

TEST_F(ImageFileTest, ConversionsOnTheWayIn)
{
    Image gray16, gray, rgb, rgba, read;
    FillByPlace(gray16, 9, 3, Gray16);
    FillByPlace(rgb, 9, 3, Rgb);
    FillByPlace(gray, 9, 3, Gray);
    for (const char* name : {"c.bmp", "c.png", "c.tif"}) {
        gray16.Write(Path(name).c_str());
        read.Read(Path(name).c_str(), Gray);
        ASSERT_EQ(PixelTypes(read.Type), Gray) << name;
        EXPECT_EQ(read.PixelGray(4, 2), gray16.PixelGray16(4, 2) >> 8) << name;
        gray.Write(Path(name).c_str());
        read.Read(Path(name).c_str(), Rgb);
        ASSERT_EQ(PixelTypes(read.Type), Rgb) << name << Status::AsciiError();
        EXPECT_EQ(read.PixelRgb(4, 2), RgbPixel(gray.PixelGray(4, 2), gray.PixelGray(4, 2), gray.PixelGray(4, 2)));
    }
    for (const char* name : {"c.bmp", "c.tif", "c.ppm"}) {
        rgb.Write(Path(name).c_str());
        read.Read(Path(name).c_str(), Gray);
        if (std::string(name) == "c.ppm")
            ExpectSame(rgb, read, "always colour");
        else
            EXPECT_EQ(read.PixelGray(4, 2), ColorToGray(rgb.PixelRgb(4, 2))) << name;
    }
    gray16.Write(Path("d.bmp").c_str());
    read.Read(Path("d.bmp").c_str(), Rgb);
    const int narrowed = gray16.PixelGray16(4, 2) >> 8;
    EXPECT_EQ(read.PixelRgb(4, 2), RgbPixel(narrowed, narrowed, narrowed));
    FillByPlace(rgba, 9, 3, Rgba);
    const RgbaPixel pixel = rgba.PixelRgba(4, 2);
    rgba.Write(Path("d.bmp").c_str());
    read.Read(Path("d.bmp").c_str(), Gray);
    EXPECT_EQ(read.PixelGray(4, 2), (pixel.Red + pixel.Green + pixel.Blue) * 85 >> 8);
    read.Read(Path("d.bmp").c_str(), Rgb);
    EXPECT_EQ(Status::Error().Code, IncompatibleType);
    rgba.Write(Path("d.ppm").c_str());
    read.Read(Path("d.ppm").c_str(), Undefined);
    EXPECT_EQ(read.PixelRgb(4, 2), RgbPixel(pixel.Red, pixel.Green, pixel.Blue));
    read.Read(Path("c.bmp").c_str(), Dble);
    EXPECT_EQ(Status::Error().Code, IncompatibleType);
}

TEST_F(ImageFileTest, AGrayDepthOutOfItsRangeIsHeldToIt)
{
    Image gray, gray16, read;
    FillByPlace(gray, 9, 3, Gray);
    FillByPlace(gray16, 9, 3, Gray16);
    const struct
    {
        int depth, shift;
    } cases[] = {{4, 0}, {-3, 0}, {40, 8}};
    for (const auto& c : cases) {
        Operator::GrayDepth = c.depth;
        for (const char* name : {"e.bmp", "e.tif"}) {
            gray.Write(Path(name).c_str());
            read.Read(Path(name).c_str(), Gray16);
            EXPECT_EQ(read.PixelGray16(4, 2), gray.PixelGray(4, 2) << c.shift) << name << ' ' << c.depth;
        }
        for (const char* name : {"e.bmp", "e.tif", "e.png"}) {
            gray16.Write(Path(name).c_str());
            read.Read(Path(name).c_str(), Gray);
            EXPECT_EQ(read.PixelGray(4, 2), gray16.PixelGray16(4, 2) >> c.shift & 255) << name << ' ' << c.depth;
        }
        read.Read(Put("e.pbm", std::string("P1 1 1\n0\n")).c_str(), Gray16);
        EXPECT_EQ(read.PixelGray16(0, 0), (256 << c.shift) - 1) << c.depth;
    }
}

TEST_F(ImageFileTest, JpegIsNearAndRefusesWhatItCannotHold)
{
    Image image, read, wide;
    image.Set(40, 30, Rgb);
    for (int y = 0; y < 30; y++)
        for (int x = 0; x < 40; x++)
            image.Row<RgbPixel>(y)[x] = RgbPixel(200, 100 + x, 40);
    image.Write(Path("a.jpg").c_str());
    read.Read(Path("a.jpg").c_str(), Rgb);
    ASSERT_EQ(Status::Error().Code, NoError) << Status::AsciiError();
    EXPECT_NEAR(read.PixelRgb(20, 15).Red, 200, 6);
    EXPECT_NEAR(read.PixelRgb(20, 15).Green, 120, 6);
    EXPECT_NEAR(read.PixelRgb(20, 15).Blue, 40, 8);
    read.Read(Path("a.jpg").c_str(), Gray);
    ASSERT_EQ(PixelTypes(read.Type), Gray);
    EXPECT_NEAR(read.PixelGray(20, 15), 200, 6);
    read.Read(Path("a.jpg").c_str(), Gray16);
    EXPECT_EQ(Status::Error().Code, IncompatibleType);
    FillByPlace(wide, 4, 4, Gray16);
    wide.Write(Path("b.jpg").c_str());
    EXPECT_EQ(Message(), L"The image type (Gray16) is not supported for saving under the JPEG image format");
}

TEST_F(ImageFileTest, FilesCutAnywhereAreRefusedAndLeaveTheImageAlone)
{
    for (const char* name : {"t.bmp", "t.pbm", "t.pgm", "t.ppm", "t.png", "t.jpg", "t.tif"}) {
        Image picture, image;
        const std::string kind = name;
        FillByPlace(picture, 61, 47, kind == "t.ppm" || kind == "t.jpg" ? Rgb : kind == "t.pbm" ? Gray1 : Gray);
        picture.Write(Path(name).c_str());
        const Bytes whole = Contents(Path(name));
        FillByPlace(image, 3, 3, Gray);
        std::vector<std::size_t> cuts;
        for (std::size_t cut = 0; cut < 200 && cut < whole.size(); cut++)
            cuts.push_back(cut);
        checks::Noise noise{1};
        for (int i = 0; i < 40; i++)
            cuts.push_back((noise() >> 8) % whole.size());
        for (const std::size_t cut : cuts) {
            // The last bytes of PNG and TIFF hold no pixels.
            if (cut + 20 > whole.size()) continue;
            const std::string path = Put(name, Bytes(whole.begin(), whole.begin() + static_cast<std::ptrdiff_t>(cut)));
            image.Read(path.c_str(), Undefined);
            ASSERT_NE(Status::Error().Code, NoError) << name << " cut at " << cut;
            ASSERT_EQ(image.Width, 3) << name << " cut at " << cut;
        }
        // Flipped bytes may pass or fail, but never harm.
        for (int i = 0; i < 200; i++) {
            Bytes broken = whole;
            const std::uint32_t random = noise();
            broken[(random >> 8) % Min<std::size_t>(broken.size(), 400)] ^=
                static_cast<std::uint8_t>(1 + (random >> 5) % 255);
            Image any;
            any.Read(Put(name, broken).c_str(), Undefined);
        }
    }
}
