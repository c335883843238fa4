// What TIFF files of other programs hold beside plain strips of gray values and colours; all are written by libtiff
// here.
#include "ImageFileSupport.h"

#include <cstdint>
#include <functional>
#include <memory>
#include <sys/resource.h>
#include <tiffio.h>

using namespace Tesk;

namespace {

class TiffFileTest : public ImageFolderTest
{
protected:
    struct Layout
    {
        int width, height, samples, bits, photometric;
        int planar = PLANARCONFIG_CONTIG;
    };
    struct Closer
    {
        void operator()(TIFF* tiff) const { TIFFClose(tiff); }
    };
    using File = std::unique_ptr<TIFF, Closer>;

    File Create(const Layout& layout, const std::function<void(TIFF*)>& setFields = {})
    {
        File file(TIFFOpen(path_.c_str(), "w"));
        TIFFSetField(file.get(), TIFFTAG_IMAGEWIDTH, layout.width);
        TIFFSetField(file.get(), TIFFTAG_IMAGELENGTH, layout.height);
        TIFFSetField(file.get(), TIFFTAG_SAMPLESPERPIXEL, layout.samples);
        TIFFSetField(file.get(), TIFFTAG_BITSPERSAMPLE, layout.bits);
        TIFFSetField(file.get(), TIFFTAG_PHOTOMETRIC, layout.photometric);
        TIFFSetField(file.get(), TIFFTAG_PLANARCONFIG, layout.planar);
        if (setFields) setFields(file.get());
        return file;
    }

    /// In one strip, or one for each plane.
    void Write(const Layout& layout, Bytes pixels, const std::function<void(TIFF*)>& setFields = {})
    {
        const File file = Create(layout, setFields);
        const std::size_t strips =
            layout.planar == PLANARCONFIG_SEPARATE ? static_cast<std::size_t>(layout.samples) : 1;
        const std::size_t size = pixels.size() / strips;
        for (std::size_t i = 0; i < strips; i++)
            TIFFWriteEncodedStrip(file.get(), static_cast<std::uint32_t>(i), pixels.data() + size * i,
                                  static_cast<tmsize_t>(size));
    }

    /// Cuts rows of whole bytes into tiles of 16 x 32 pixels.
    void WriteTiles(const Layout& layout, const std::vector<Bytes>& planes,
                    const std::function<void(TIFF*)>& setFields = {})
    {
        constexpr int tileWidth = 16, tileHeight = 32;
        const File file = Create(layout, [&](TIFF* tiff) {
            TIFFSetField(tiff, TIFFTAG_TILEWIDTH, tileWidth);
            TIFFSetField(tiff, TIFFTAG_TILELENGTH, tileHeight);
            if (setFields) setFields(tiff);
        });
        const int bits = layout.bits * (planes.size() > 1 ? 1 : layout.samples);
        const int rowBytes = (layout.width * bits + 7) / 8, tileBytes = tileWidth * bits / 8;
        for (std::size_t plane = 0; plane < planes.size(); plane++)
            for (int y = 0; y < layout.height; y += tileHeight)
                for (int x = 0; x < layout.width; x += tileWidth) {
                    Bytes tile(static_cast<std::size_t>(tileBytes * tileHeight), 0xee);
                    const int from = x * bits / 8;
                    for (int i = 0; i < tileHeight && y + i < layout.height; i++)
                        for (int k = 0; k < tileBytes && from + k < rowBytes; k++)
                            tile[static_cast<std::size_t>(tileBytes * i + k)] =
                                planes[plane][static_cast<std::size_t>(rowBytes * (y + i) + from + k)];
                    TIFFWriteTile(file.get(), tile.data(), static_cast<std::uint32_t>(x), static_cast<std::uint32_t>(y),
                                  0, static_cast<std::uint16_t>(plane));
                }
    }

    const Image& Read(PixelTypes wanted, int code = NoError)
    {
        image_.Read(path_.c_str(), wanted);
        EXPECT_EQ(Status::Error().Code, code) << Status::AsciiError();
        return image_;
    }

    Bytes Pixels(const Image& image)
    {
        Bytes all;
        for (int y = 0; y < image.Height; y++) {
            const Bytes row = RowOf(image, y);
            all.insert(all.end(), row.begin(), row.end());
        }
        return all;
    }

    void SetUp() override
    {
        ImageFolderTest::SetUp();
        path_ = Path("a.tif");
    }

    std::string path_;
    Image image_;
};

void SetPalette(TIFF* tiff)
{
    std::uint16_t red[256] = {}, green[256] = {}, blue[256] = {};
    red[0] = 200 << 8 | 200;
    green[0] = 100 << 8 | 100;
    green[1] = blue[1] = 65535;
    blue[1] = 30 << 8 | 30;
    TIFFSetField(tiff, TIFFTAG_COLORMAP, red, green, blue);
}

} // namespace

TEST_F(TiffFileTest, ColorsThatTheFileDescribesAreWorkedOut)
{
    const auto separated = [](TIFF* tiff) { TIFFSetField(tiff, TIFFTAG_INKSET, INKSET_CMYK); };
    const auto whole = [](TIFF* tiff) { TIFFSetField(tiff, TIFFTAG_YCBCRSUBSAMPLING, 1, 1); };
    const auto halved = [](TIFF* tiff) { TIFFSetField(tiff, TIFFTAG_YCBCRSUBSAMPLING, 2, 2); };
    const Bytes paletteBgr = {0, 100, 200, 30, 255, 0};
    const struct
    {
        Layout layout;
        Bytes file;
        std::function<void(TIFF*)> fields;
        PixelTypes wanted, type;
        Bytes pixels;
    } cases[] = {{{2, 1, 1, 8, PHOTOMETRIC_PALETTE}, {0, 1}, SetPalette, Undefined, Rgb, paletteBgr},
                 {{2, 1, 1, 8, PHOTOMETRIC_PALETTE}, {0, 1}, SetPalette, Rgb, Rgb, paletteBgr},
                 {{2, 1, 1, 8, PHOTOMETRIC_PALETTE}, {0, 1}, SetPalette, Gray, Gray, {200, 255}},
                 {{2, 1, 1, 4, PHOTOMETRIC_PALETTE}, {0x01}, SetPalette, Rgb, Rgb, paletteBgr},
                 {{2, 1, 1, 2, PHOTOMETRIC_PALETTE}, {0x10}, SetPalette, Rgb, Rgb, paletteBgr},
                 {{2, 1, 1, 1, PHOTOMETRIC_PALETTE}, {0x40}, SetPalette, Undefined, Rgb, paletteBgr},
                 // White, cyan, half of black: (255 - 127) * 255 / 255.
                 {{3, 1, 4, 8, PHOTOMETRIC_SEPARATED},
                  {0, 0, 0, 0, 255, 0, 0, 0, 0, 0, 0, 127},
                  separated,
                  Undefined,
                  Rgb,
                  {255, 255, 255, 255, 255, 0, 128, 128, 128}},
                 {{2, 1, 3, 8, PHOTOMETRIC_YCBCR}, {50, 128, 128, 210, 128, 128}, whole, Gray, Gray, {50, 210}},
                 // Four values of brightness share their colour.
                 {{2, 2, 3, 8, PHOTOMETRIC_YCBCR}, {10, 20, 30, 40, 128, 128}, halved, Gray, Gray, {10, 20, 30, 40}},
                 {{2, 1, 3, 8, PHOTOMETRIC_CIELAB}, {255, 0, 0, 0, 0, 0}, {}, Gray, Gray, {255, 0}},
                 // Sixteen bits are 257 times eight.
                 {{2, 1, 3, 16, PHOTOMETRIC_RGB},
                  {255, 255, 128, 128, 0, 0, 7, 7, 8, 8, 9, 9},
                  {},
                  Undefined,
                  Rgb,
                  {0, 128, 255, 9, 8, 7}},
                 {{1, 1, 3, 16, PHOTOMETRIC_RGB, PLANARCONFIG_SEPARATE}, {7, 7, 8, 8, 9, 9}, {}, Rgb, Rgb, {9, 8, 7}},
                 {{1, 1, 4, 16, PHOTOMETRIC_RGB}, {7, 7, 8, 8, 9, 9, 200, 200}, {}, Undefined, Rgba, {9, 8, 7, 200}}};
    for (const auto& c : cases) {
        Write(c.layout, c.file, c.fields);
        const Image& image = Read(c.wanted);
        EXPECT_EQ(PixelTypes(image.Type), c.type) << "case " << &c - cases;
        EXPECT_EQ(Pixels(image), c.pixels) << "case " << &c - cases;
    }
    Write({1, 1, 3, 16, PHOTOMETRIC_RGB, PLANARCONFIG_SEPARATE}, {7, 7, 8, 8, 9, 9});
    Read(Gray, IncompatibleType);
    Write({2, 1, 1, 8, PHOTOMETRIC_PALETTE}, {0, 1}, SetPalette);
    Read(Gray16, IncompatibleType);
    EXPECT_EQ(Message(), L"Implicit type conversion from Rgb to Gray16 is not supported (use Copy)");
}

TEST_F(TiffFileTest, CompressedColorsComeAsTheyWent)
{
    // Two strips, the last of them short, and whole tiles.
    for (const bool tiled : {false, true}) {
        constexpr int width = 48, height = 64;
        Bytes rgb;
        for (int i = 0; i < width * height; i++)
            rgb.insert(rgb.end(), {200, 120, static_cast<std::uint8_t>(i < width * height / 2 ? 40 : 90)});
        const Layout layout{width, height, 3, 8, PHOTOMETRIC_YCBCR};
        const auto fields = [](TIFF* tiff) {
            TIFFSetField(tiff, TIFFTAG_COMPRESSION, COMPRESSION_JPEG);
            TIFFSetField(tiff, TIFFTAG_JPEGCOLORMODE, JPEGCOLORMODE_RGB);
            TIFFSetField(tiff, TIFFTAG_JPEGQUALITY, 95);
        };
        if (tiled) {
            WriteTiles(layout, {rgb}, fields);
        } else {
            const File file = Create(layout, fields);
            TIFFSetField(file.get(), TIFFTAG_ROWSPERSTRIP, 48);
            for (int y = 0; y < height; y++)
                TIFFWriteScanline(file.get(), rgb.data() + 3 * width * y, static_cast<std::uint32_t>(y), 0);
        }
        const Image& image = Read(Undefined);
        ASSERT_EQ(PixelTypes(image.Type), Rgb);
        ASSERT_EQ(image.Height, height);
        for (const int y : {0, 28, 36, height - 1})
            for (const int x : {0, 15, 16, width - 1}) {
                const RgbPixel pixel = image.PixelRgb(x, y);
                EXPECT_NEAR(pixel.Red, 200, 4) << x << ' ' << y;
                EXPECT_NEAR(pixel.Green, 120, 4);
                EXPECT_NEAR(pixel.Blue, y < height / 2 ? 40 : 90, 4);
            }
    }
}

TEST_F(TiffFileTest, TilesHoldThePictureOfTheStrips)
{
    for (const PixelTypes type : {Gray1, Gray, Gray16, Rgb, Rgba}) {
        Image image;
        FillByPlace(image, 37, 45, type);
        // The order of samples in the file is that of the writer.
        const int samples = type == Rgb ? 3 : type == Rgba ? 4 : 1, bits = type == Gray16 ? 16 : type == Gray1 ? 1 : 8;
        const Bytes pixels = Pixels(image);
        Bytes stored = pixels;
        for (std::size_t i = 0; samples > 1 && i < stored.size(); i++) {
            const std::size_t n = static_cast<std::size_t>(samples), sample = i % n;
            stored[i] = pixels[i - sample + n - 1 - sample];
        }
        const int photometric = samples > 1 ? PHOTOMETRIC_RGB : PHOTOMETRIC_MINISBLACK;
        WriteTiles({37, 45, samples, bits, photometric}, {stored});
        EXPECT_EQ(Pixels(Read(Undefined)), pixels) << type;
        if (samples == 1) continue;
        std::vector<Bytes> planes(static_cast<std::size_t>(samples));
        for (std::size_t i = 0; i < stored.size(); i++)
            planes[i % planes.size()].push_back(stored[i]);
        WriteTiles({37, 45, samples, 8, photometric, PLANARCONFIG_SEPARATE}, planes);
        EXPECT_EQ(Pixels(Read(Undefined)), pixels) << type << " in planes";
    }
    const Bytes indexes(37 * 45, 1);
    WriteTiles({37, 45, 1, 8, PHOTOMETRIC_PALETTE}, {indexes}, SetPalette);
    EXPECT_EQ(Read(Rgb).PixelRgb(36, 44), RgbPixel(0, 255, 30));
}

TEST_F(TiffFileTest, PicturesAreTurnedUpright)
{
    // Stored as 123 over 456.
    const char* upright[] = {"123/456",  "321/654",  "654/321",  "456/123",
                             "14/25/36", "41/52/63", "63/52/41", "36/25/14"};
    for (int orientation = 1; orientation <= 8; orientation++) {
        const auto fields = [&](TIFF* tiff) { TIFFSetField(tiff, TIFFTAG_ORIENTATION, orientation); };
        const auto shown = [&](PixelTypes wanted, auto value) {
            Read(wanted);
            std::string text;
            for (int y = 0; y < image_.Height; y++) {
                if (y > 0) text += '/';
                for (int x = 0; x < image_.Width; x++)
                    text += static_cast<char>('0' + value(x, y));
            }
            return text;
        };
        Write({3, 2, 1, 8, PHOTOMETRIC_MINISBLACK}, {1, 2, 3, 4, 5, 6}, fields);
        const std::string expected = upright[orientation - 1];
        EXPECT_EQ(shown(Gray, [&](int x, int y) { return image_.PixelGray(x, y); }), expected);
        EXPECT_EQ(shown(Rgb, [&](int x, int y) { return image_.PixelRgb(x, y).Blue; }), expected);
        // Derived colours are turned once, too: 1 in the first place only.
        Write({3, 2, 1, 8, PHOTOMETRIC_PALETTE}, {1, 0, 0, 0, 0, 0}, [&](TIFF* tiff) {
            fields(tiff);
            SetPalette(tiff);
        });
        std::string first = expected;
        for (char& c : first)
            if (c > '1') c = '0';
        EXPECT_EQ(shown(Rgb, [&](int x, int y) { return image_.PixelRgb(x, y).Green == 255; }), first);
        Write({3, 2, 1, 1, PHOTOMETRIC_MINISBLACK}, {0x80, 0}, fields);
        EXPECT_EQ(shown(Gray1, [&](int x, int y) { return image_.PixelGray1(x, y); }), first);
    }
}

TEST_F(TiffFileTest, WhatCannotBeReadIsRefusedWithItsReason)
{
    const auto format = [](int value) {
        return [value](TIFF* tiff) { TIFFSetField(tiff, TIFFTAG_SAMPLEFORMAT, value); };
    };
    const struct
    {
        Layout layout;
        std::function<void(TIFF*)> fields;
        const wchar_t* message;
    } cases[] = {
        {{2, 1, 1, 8, 1}, format(SAMPLEFORMAT_INT), L"Unsupported TIFF image format (signed samples)"},
        {{2, 1, 3, 16, 2}, format(SAMPLEFORMAT_INT), L"Unsupported TIFF image format (signed samples)"},
        {{2, 1, 1, 16, 1}, format(SAMPLEFORMAT_IEEEFP), L"Unsupported TIFF image format (floating-point samples)"},
        {{2, 1, 1, 32, 1}, format(SAMPLEFORMAT_IEEEFP), L"Unsupported number of bits per sample (32)"},
        {{2, 1, 1, 2, 1}, {}, L"Unsupported number of bits per sample (2)"},
        {{2, 1, 1, 12, 1}, {}, L"Unsupported number of bits per sample (12)"},
        {{2, 1, 3, 12, 2}, {}, L"Unsupported number of bits per sample (12)"},
        {{2, 1, 5, 8, 2}, {}, L"Unsupported number of samples per pixel (5)"}};
    for (const auto& c : cases) {
        Write(c.layout, Bytes(static_cast<std::size_t>(2 * c.layout.samples * c.layout.bits + 7) / 8), c.fields);
        Read(Undefined, UnsupportedFormat);
        EXPECT_EQ(Message(), c.message);
    }
    // For these libtiff has the words.
    for (const Layout& layout : {Layout{2, 1, 3, 8, PHOTOMETRIC_ICCLAB}, Layout{2, 1, 4, 16, PHOTOMETRIC_SEPARATED}}) {
        Write(layout, Bytes(static_cast<std::size_t>(2 * layout.samples * layout.bits / 8)));
        Read(Undefined, UnsupportedFormat);
        EXPECT_EQ(Message().compare(0, 31, L"Unsupported TIFF image format ("), 0);
        EXPECT_GT(Message().size(), 40u);
    }
}

TEST_F(TiffFileTest, BrokenTilesLeaveTheImageAndAskForLittleMemory)
{
    WriteTiles({37, 45, 1, 8, PHOTOMETRIC_MINISBLACK}, {Bytes(37 * 45, 9)});
    Bytes cut = Contents(path_);
    // The tiles stand before the directory: where they should be there is nothing now.
    for (std::size_t i = 0; i + 8 < cut.size(); i++)
        if (cut[i] == 0x44 && cut[i + 1] == 1 && cut[i + 2] == 4) { // TileOffsets, as long numbers
            const std::size_t offsets = cut[i + 8] | cut[i + 9] << 8 | cut[i + 10] << 16;
            Put32(cut, offsets + 4, 0x7fffff00);
            break;
        }
    Image image;
    image.Set(3, 3, Gray);
    image.Read(Put("cut.tif", cut).c_str(), Gray);
    EXPECT_EQ(Status::Error().Code, CannotRead);
    EXPECT_EQ(image.Width, 3);

    rusage before{}, after{};
    getrusage(RUSAGE_SELF, &before);
    for (const int photometric : {PHOTOMETRIC_MINISBLACK, PHOTOMETRIC_PALETTE}) {
        {
            const File vast = Create({20, 20, 1, 8, photometric}, [&](TIFF* tiff) {
                TIFFSetField(tiff, TIFFTAG_TILEWIDTH, 40000);
                TIFFSetField(tiff, TIFFTAG_TILELENGTH, 40000);
                if (photometric == PHOTOMETRIC_PALETTE) SetPalette(tiff);
            });
            std::uint8_t little[10] = {};
            TIFFWriteRawTile(vast.get(), 0, little, sizeof little);
        }
        image.Read(path_.c_str(), Undefined);
        EXPECT_EQ(Status::Error().Code, CannotAllocate) << photometric << Status::AsciiError();
        EXPECT_EQ(image.Width, 3);
    }
    getrusage(RUSAGE_SELF, &after);
    EXPECT_LT(after.ru_maxrss - before.ru_maxrss, 100 * 1024) << "kilobytes";
}
