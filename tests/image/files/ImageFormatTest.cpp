// What files of other programs hold: written here through the format's own library, byte by byte, or by hand.
#include "ImageFileSupport.h"

#include <csignal>
#include <png.h>
#include <sys/resource.h>
#include <tiffio.h>
#include <zlib.h>

#include <jpeglib.h>

using namespace Tesk;
namespace fs = std::filesystem;

namespace {

class ImageFormatTest : public ImageFolderTest
{};

struct Tiff
{
    int samples, bits, photometric, planar;
    Bytes row; // one row, or one row of each plane after the other
};

void WriteTiffFile(const std::string& path, int width, const Tiff& tiff)
{
    TIFF* file = TIFFOpen(path.c_str(), "w");
    TIFFSetField(file, TIFFTAG_IMAGEWIDTH, width);
    TIFFSetField(file, TIFFTAG_IMAGELENGTH, 1);
    TIFFSetField(file, TIFFTAG_SAMPLESPERPIXEL, tiff.samples);
    TIFFSetField(file, TIFFTAG_BITSPERSAMPLE, tiff.bits);
    TIFFSetField(file, TIFFTAG_PLANARCONFIG, tiff.planar);
    TIFFSetField(file, TIFFTAG_PHOTOMETRIC, tiff.photometric);
    Bytes row = tiff.row;
    const std::size_t planes = tiff.planar == 2 ? static_cast<std::size_t>(tiff.samples) : 1;
    for (std::size_t plane = 0; plane < planes; plane++)
        TIFFWriteScanline(file, row.data() + plane * row.size() / planes, 0, static_cast<std::uint16_t>(plane));
    TIFFClose(file);
}

/// A picture whose rows are all the same.
void WritePngFile(const std::string& path, int width, int depth, int color, const Bytes& row, bool interlaced = false,
                  int height = 1, void (*setChunks)(png_structp, png_infop) = nullptr)
{
    std::FILE* file = std::fopen(path.c_str(), "wb");
    png_structp png = png_create_write_struct(PNG_LIBPNG_VER_STRING, nullptr, nullptr, nullptr);
    png_infop info = png_create_info_struct(png);
    png_init_io(png, file);
    png_set_IHDR(png, info, static_cast<png_uint_32>(width), static_cast<png_uint_32>(height), depth, color,
                 interlaced ? PNG_INTERLACE_ADAM7 : PNG_INTERLACE_NONE, PNG_COMPRESSION_TYPE_DEFAULT,
                 PNG_FILTER_TYPE_DEFAULT);
    const png_color palette[] = {{1, 2, 3}, {200, 100, 50}};
    const png_byte opacity[] = {0, 128};
    if (color == PNG_COLOR_TYPE_PALETTE) {
        png_set_PLTE(png, info, palette, 2);
        png_set_tRNS(png, info, opacity, 2, nullptr);
    }
    if (setChunks) setChunks(png, info);
    png_write_info(png, info);
    std::vector<png_bytep> rows(static_cast<std::size_t>(height), const_cast<png_bytep>(row.data()));
    png_write_image(png, rows.data());
    png_write_end(png, nullptr);
    png_destroy_write_struct(&png, &info);
    std::fclose(file);
}

void WriteJpegFile(const std::string& path, J_COLOR_SPACE space, int components)
{
    jpeg_compress_struct info;
    jpeg_error_mgr errors;
    info.err = jpeg_std_error(&errors);
    jpeg_create_compress(&info);
    std::FILE* file = std::fopen(path.c_str(), "wb");
    jpeg_stdio_dest(&info, file);
    info.image_width = info.image_height = 8;
    info.input_components = components;
    info.in_color_space = space;
    jpeg_set_defaults(&info);
    jpeg_start_compress(&info, TRUE);
    Bytes row(static_cast<std::size_t>(8 * components), 100);
    JSAMPROW rows[] = {row.data()};
    for (int y = 0; y < 8; y++)
        jpeg_write_scanlines(&info, rows, 1);
    jpeg_finish_compress(&info);
    jpeg_destroy_compress(&info);
    std::fclose(file);
}

/// No file grows beyond a size while this stands, as on a disk that is full by then.
class FileSizeLimit
{
public:
    explicit FileSizeLimit(rlim_t bytes) : handler_(std::signal(SIGXFSZ, SIG_IGN))
    {
        getrlimit(RLIMIT_FSIZE, &former_);
        rlimit limit = former_;
        limit.rlim_cur = bytes;
        setrlimit(RLIMIT_FSIZE, &limit);
    }
    ~FileSizeLimit()
    {
        setrlimit(RLIMIT_FSIZE, &former_);
        std::signal(SIGXFSZ, handler_);
    }
    FileSizeLimit(const FileSizeLimit&) = delete;
    FileSizeLimit& operator=(const FileSizeLimit&) = delete;

private:
    rlimit former_{};
    void (*handler_)(int);
};

} // namespace

TEST_F(ImageFormatTest, TiffRowsConvertByTypeAndPhotometricValue)
{
    const Tiff gray{1, 8, 1, 1, {10, 250}}, grayInverse{1, 8, 0, 1, {10, 250}};
    const Tiff wide{1, 16, 1, 1, {0x34, 0x02, 0, 1}}, wideInverse{1, 16, 0, 1, {0x34, 0x02, 0, 1}};
    const Tiff bits{1, 1, 1, 1, {0x40}}, bitsInverse{1, 1, 0, 1, {0x40}};
    const Tiff colors{3, 8, 2, 1, {1, 2, 3, 40, 5, 6}}, planes{3, 8, 2, 2, {1, 40, 2, 5, 3, 6}};
    const Tiff four{4, 8, 2, 1, {9, 1, 2, 3, 8, 40, 5, 6}}, fourPlanes{4, 8, 2, 2, {9, 8, 1, 40, 2, 5, 3, 6}};
    constexpr int refused = IncompatibleType;
    const struct
    {
        Tiff file;
        PixelTypes wanted;
        int code;
        Bytes row;
    } cases[] = {{gray, Gray, NoError, {10, 250}},
                 {grayInverse, Gray, NoError, {245, 5}},
                 {gray, Gray16, NoError, {40, 0, 0xe8, 3}},
                 {grayInverse, Gray16, NoError, {0xd4, 3, 20, 0}},
                 {gray, Rgb, NoError, {10, 10, 10, 250, 250, 250}},
                 {grayInverse, Rgb, NoError, {10, 10, 10, 250, 250, 250}},
                 {gray, Gray1, refused, {}},
                 {wide, Gray, NoError, {0x234 >> 2, 64}},
                 {wideInverse, Gray, NoError, {255 - (0x234 >> 2), 255 - 64}},
                 {wide, Gray16, NoError, {0x34, 0x02, 0, 1}},
                 {wideInverse, Gray16, NoError, {0xcb, 0x01, 0xff, 2}},
                 {wide, Rgb, refused, {}},
                 {bits, Gray, NoError, {0, 255}},
                 {bitsInverse, Gray, NoError, {255, 0}},
                 {bits, Gray1, NoError, {0x40}},
                 {bitsInverse, Gray1, NoError, {0xbf}},
                 {bits, Gray16, refused, {}},
                 {colors, Gray, NoError, {3, 40}},
                 {colors, Rgb, NoError, {3, 2, 1, 6, 5, 40}},
                 {colors, Undefined, NoError, {3, 2, 1, 6, 5, 40}},
                 {colors, Gray16, refused, {}},
                 {planes, Rgb, NoError, {3, 2, 1, 6, 5, 40}},
                 {planes, Gray, refused, {}},
                 {four, Undefined, NoError, {3, 2, 1, 9, 6, 5, 40, 8}},
                 {four, Gray, NoError, {(1 + 2 + 3) * 85 >> 8, (40 + 5 + 6) * 85 >> 8}},
                 {four, Rgb, refused, {}},
                 {fourPlanes, Undefined, NoError, {3, 2, 1, 9, 6, 5, 40, 8}},
                 {{2, 8, 1, 1, {1, 2, 3, 4}}, Undefined, UnsupportedFormat, {}},
                 {{1, 4, 1, 1, {1}}, Undefined, UnsupportedFormat, {}}};
    Operator::GrayDepth = 10;
    for (const auto& c : cases) {
        WriteTiffFile(Path("a.tif"), 2, c.file);
        Image image;
        image.Read(Path("a.tif").c_str(), c.wanted);
        const auto what = "case " + std::to_string(&c - cases) + ' ' + Status::AsciiError();
        ASSERT_EQ(Status::Error().Code, c.code) << what;
        if (c.code == NoError) {
            EXPECT_EQ(RowOf(image, 0), c.row) << what;
        }
    }
    WriteTiffFile(Path("a.tif"), 2, planes);
    Image image;
    image.Read(Path("a.tif").c_str(), Gray);
    EXPECT_STREQ(Status::UnicodeError(),
                 L"Implicit type conversion from Rgb to Gray is not supported (use Copy) for separate planar Tiff");
}

TEST_F(ImageFormatTest, PngRowsConvertByColorTypeAndDepth)
{
    constexpr int refused = IncompatibleType;
    const struct
    {
        int depth, color;
        Bytes file;
        PixelTypes wanted;
        int code;
        Bytes row;
    } cases[] = {
        {8, PNG_COLOR_TYPE_GRAY, {10, 250}, Rgb, NoError, {10, 10, 10, 250, 250, 250}},
        {8, PNG_COLOR_TYPE_GRAY, {10, 250}, Gray16, refused, {}},
        {8, PNG_COLOR_TYPE_GRAY_ALPHA, {10, 0, 250, 255}, Undefined, NoError, {10, 250}},
        {1, PNG_COLOR_TYPE_GRAY, {0x40}, Undefined, NoError, {0x40}},
        {1, PNG_COLOR_TYPE_GRAY, {0x40}, Gray, NoError, {0, 255}},
        {1, PNG_COLOR_TYPE_GRAY, {0x40}, Rgb, NoError, {0, 0, 0, 255, 255, 255}},
        {2, PNG_COLOR_TYPE_GRAY, {0x40}, Undefined, UnsupportedFormat, {}},
        {4, PNG_COLOR_TYPE_GRAY, {0x5f}, Undefined, NoError, {0x55, 0xff}},
        {16, PNG_COLOR_TYPE_GRAY, {2, 0x34, 1, 0}, Undefined, NoError, {0x34, 2, 0, 1}},
        {16, PNG_COLOR_TYPE_GRAY, {2, 0x34, 1, 0}, Gray, NoError, {0x234 >> 2, 64}},
        {16, PNG_COLOR_TYPE_GRAY, {2, 0x34, 1, 0}, Rgb, NoError, {141, 141, 141, 64, 64, 64}},
        {8, PNG_COLOR_TYPE_RGB, {1, 2, 3, 4, 5, 6}, Undefined, NoError, {3, 2, 1, 6, 5, 4}},
        {8, PNG_COLOR_TYPE_RGB, {1, 2, 3, 4, 5, 6}, Gray1, refused, {}},
        {8, PNG_COLOR_TYPE_RGB, {50, 50, 50, 7, 7, 7}, Gray, NoError, {50, 7}},
        {16, PNG_COLOR_TYPE_RGB, {1, 99, 2, 99, 3, 99, 4, 9, 5, 9, 6, 9}, Undefined, NoError, {3, 2, 1, 6, 5, 4}},
        {8, PNG_COLOR_TYPE_PALETTE, {1, 0}, Undefined, NoError, {50, 100, 200, 3, 2, 1}},
        {1, PNG_COLOR_TYPE_PALETTE, {0x80}, Rgb, NoError, {50, 100, 200, 3, 2, 1}},
        {8, PNG_COLOR_TYPE_PALETTE, {1, 0}, Gray16, refused, {}},
        {8, PNG_COLOR_TYPE_RGB_ALPHA, {255, 255, 255, 0, 4, 5, 6, 255}, Undefined, NoError, {0, 0, 0, 0, 6, 5, 4, 255}},
        {8, PNG_COLOR_TYPE_RGB_ALPHA, {1, 2, 3, 0, 4, 5, 6, 255}, Rgb, NoError, {3, 2, 1, 6, 5, 4}},
        {8, PNG_COLOR_TYPE_RGB_ALPHA, {9, 9, 9, 0, 6, 6, 6, 255}, Gray, NoError, {9, 6}}};
    Operator::GrayDepth = 10;
    for (const auto& c : cases)
        for (const bool interlaced : {false, true}) {
            WritePngFile(Path("a.png"), 2, c.depth, c.color, c.file, interlaced);
            Image image;
            image.Read(Path("a.png").c_str(), c.wanted);
            const auto what = "case " + std::to_string(&c - cases) + ' ' + Status::AsciiError();
            ASSERT_EQ(Status::Error().Code, c.code) << what;
            if (c.code == NoError) {
                EXPECT_EQ(RowOf(image, 0), c.row) << what;
            }
        }
}

TEST_F(ImageFormatTest, OpacityMultipliesTheValuesOfAPngWhateverGammaItTells)
{
    void (*const chunks[])(png_structp, png_infop) = {
        [](png_structp, png_infop) {},
        [](png_structp png, png_infop info) { png_set_sRGB(png, info, PNG_sRGB_INTENT_PERCEPTUAL); },
        [](png_structp png, png_infop info) { png_set_gAMA(png, info, 0.45455); },
        [](png_structp png, png_infop info) { png_set_gAMA(png, info, 1.8); }};
    for (const auto& chunk : chunks) {
        WritePngFile(Path("a.png"), 3, 8, PNG_COLOR_TYPE_RGB_ALPHA, {128, 64, 3, 255, 255, 90, 10, 51, 9, 9, 9, 0},
                     false, 1, chunk);
        Image image;
        image.Read(Path("a.png").c_str(), Undefined);
        EXPECT_EQ(RowOf(image, 0), (Bytes{3, 64, 128, 255, 2, 18, 51, 51, 0, 0, 0, 0})) << &chunk - chunks;
    }
}

TEST_F(ImageFormatTest, JpegHoldsGrayAndColorAndNamesTheSpacesThatItRefuses)
{
    Image image;
    WriteJpegFile(Path("a.jpg"), JCS_GRAYSCALE, 1);
    image.Read(Path("a.jpg").c_str(), Undefined);
    EXPECT_EQ(PixelTypes(image.Type), Gray);
    image.Read(Path("a.jpg").c_str(), Rgb);
    EXPECT_EQ(image.PixelRgb(3, 3), RgbPixel(100, 100, 100));
    image.Read(Path("a.jpg").c_str(), Gray1);
    EXPECT_EQ(Status::Error().Code, IncompatibleType);
    WriteJpegFile(Path("a.jpg"), JCS_CMYK, 4);
    image.Read(Path("a.jpg").c_str(), Gray);
    EXPECT_EQ(Status::Error().Code, UnsupportedFormat);
    EXPECT_STREQ(Status::UnicodeError(),
                 L"Unsupported JPEG image format, number of components is 4, color space is 4 (CMYK)");
    // Opacity has no place in the format: the colours are kept.
    Image rgba;
    rgba.Set(16, 16, Rgba);
    for (int y = 0; y < 16; y++)
        for (int x = 0; x < 16; x++)
            rgba.Row<RgbaPixel>(y)[x] = RgbaPixel(200, 120, 40, 7);
    rgba.Write(Path("b.jpg").c_str());
    ASSERT_EQ(Status::Error().Code, NoError) << Status::AsciiError();
    image.Read(Path("b.jpg").c_str(), Rgb);
    EXPECT_NEAR(image.PixelRgb(8, 8).Red, 200, 4);
    EXPECT_NEAR(image.PixelRgb(8, 8).Blue, 40, 4);
}

TEST_F(ImageFormatTest, BlankPagesOpenInTheTypesThatTakeMoreThanTheFile)
{
    // One bit a pixel, and nearly nothing once it is compressed: as much as each format can leave out.
    constexpr int width = 10000, height = 2000;
    Image page, read;
    page.Set(width, height, Gray1);
    std::memset(page.Row(0), 255, static_cast<std::size_t>(page.Pitch * height));
    page.Write(Path("gray.bmp").c_str());
    page.Write(Path("gray.png").c_str());
    page.Write(Path("gray.pbm").c_str());
    WritePngFile(Path("palette.png"), width, 1, PNG_COLOR_TYPE_PALETTE, Bytes(width / 8, 255), false, height);
    TIFF* fax = TIFFOpen(Path("fax.tif").c_str(), "w");
    TIFFSetField(fax, TIFFTAG_IMAGEWIDTH, width);
    TIFFSetField(fax, TIFFTAG_IMAGELENGTH, height);
    TIFFSetField(fax, TIFFTAG_ROWSPERSTRIP, height);
    TIFFSetField(fax, TIFFTAG_SAMPLESPERPIXEL, 1);
    TIFFSetField(fax, TIFFTAG_BITSPERSAMPLE, 1);
    TIFFSetField(fax, TIFFTAG_PHOTOMETRIC, PHOTOMETRIC_MINISWHITE);
    TIFFSetField(fax, TIFFTAG_COMPRESSION, COMPRESSION_CCITTFAX4);
    Bytes white(width / 8);
    for (int y = 0; y < height; y++)
        TIFFWriteScanline(fax, white.data(), static_cast<std::uint32_t>(y), 0);
    TIFFClose(fax);
    const struct
    {
        const char* name;
        PixelTypes type;
        Bytes pixel;
    } cases[] = {{"gray.bmp", Gray, {255}},
                 {"gray.png", Gray, {255}},
                 {"gray.png", Rgb, {255, 255, 255}},
                 {"gray.pbm", Gray16, {255}},
                 {"palette.png", Rgb, {50, 100, 200}},
                 {"fax.tif", Gray, {255}}};
    for (const auto& c : cases) {
        read.Read(Path(c.name).c_str(), c.type);
        ASSERT_EQ(Status::Error().Code, NoError) << c.name << ' ' << c.type << ' ' << Status::AsciiError();
        ASSERT_EQ(read.Height, height) << c.name;
        const std::uint8_t* last = read.Row(height - 1) + RowBytes(width - 1, c.type);
        EXPECT_EQ(Bytes(last, last + c.pixel.size()), c.pixel) << c.name << ' ' << c.type;
    }
}

TEST_F(ImageFormatTest, HeadersOfVastImagesAskForLittleMemory)
{
    Bytes bmp = BmpHeader(60000, 60000, 24), tiff = {'I', 'I', 42, 0, 8, 0, 0, 0, 5, 0};
    tiff.resize(74);
    const std::uint16_t tags[][2] = {{256, 60000}, {257, 60000}, {262, 1}, {273, 8}, {279, 10}};
    for (std::size_t i = 0; i < 5; i++) {
        std::uint8_t* entry = &tiff[10 + 12 * i]; // tag, two bytes a value, one value
        const std::uint16_t fields[] = {tags[i][0], 3, 1, 0, tags[i][1], 0};
        for (std::size_t k = 0; k < 6; k++) {
            entry[2 * k] = static_cast<std::uint8_t>(fields[k]);
            entry[2 * k + 1] = static_cast<std::uint8_t>(fields[k] >> 8);
        }
    }
    bmp.resize(100);
    Bytes png, jpeg;
    {
        // Small files, with 60,000 for their width and height.
        WritePngFile(Path("small.png"), 2, 8, PNG_COLOR_TYPE_RGB, {1, 2, 3, 4, 5, 6});
        png = Contents(Path("small.png"));
        for (const std::size_t at : {std::size_t{18}, std::size_t{22}}) {
            png[at] = 0xea;
            png[at + 1] = 0x60;
        }
        const auto crc = crc32(0, png.data() + 12, 17);
        for (std::size_t i = 0; i < 4; i++)
            png[29 + i] = static_cast<std::uint8_t>(crc >> (24 - 8 * i));
        WriteJpegFile(Path("small.jpg"), JCS_GRAYSCALE, 1);
        jpeg = Contents(Path("small.jpg"));
        for (std::size_t at = 0; at + 8 < jpeg.size(); at++)
            if (jpeg[at] == 0xff && jpeg[at + 1] == 0xc0)
                for (const std::size_t side : {std::size_t{5}, std::size_t{7}}) {
                    jpeg[at + side] = 0xea;
                    jpeg[at + side + 1] = 0x60;
                }
    }
    const auto text = [](const std::string& s) { return Bytes(s.begin(), s.end()); };
    const struct
    {
        const char* name;
        Bytes bytes;
        int code;
    } cases[] = {{"v.bmp", bmp, CannotRead},
                 {"v.tif", tiff, CannotAllocate},
                 {"v.png", png, CannotAllocate},
                 {"v.jpg", jpeg, CannotAllocate},
                 {"v.pbm", text("P4\n60000 60000\n" + std::string(80, 'x')), CannotRead},
                 {"v.pgm", text("P2\n60000 60000 255\n" + std::string(80, '1')), CannotRead},
                 {"v.ppm", text("P6\n60000 60000 255\n" + std::string(80, 'x')), CannotRead}};
    rusage before{}, after{};
    getrusage(RUSAGE_SELF, &before);
    for (const auto& c : cases) {
        Image image;
        image.Set(3, 3, Gray);
        image.Read(Put(c.name, c.bytes).c_str(), Undefined);
        EXPECT_EQ(Status::Error().Code, c.code) << c.name << ' ' << Status::AsciiError();
        EXPECT_EQ(image.Width, 3);
    }
    getrusage(RUSAGE_SELF, &after);
    EXPECT_LT(after.ru_maxrss - before.ru_maxrss, 100 * 1024) << "kilobytes";
}

TEST_F(ImageFormatTest, WritersRefuseATypeBeforeTheyTouchTheFileAndReportAFullDisk)
{
    Image gradient, gray, bits, rgb;
    gradient.Set(4, 4, Grad);
    gray.Set(400, 400, Gray);
    bits.Set(400, 400, Gray1);
    rgb.Set(4, 4, Rgb);
    const struct
    {
        const char* name;
        const Image& image;
        const wchar_t* message;
    } cases[] = {
        {"k.bmp", gradient, L"The image type (Gradient) is not supported for this operation, use one of Gray* or Rgb*"},
        {"k.png", gradient, L"The image type (Gradient) is not supported for this operation"},
        {"k.tiff", gradient, L"The image type (Gradient) is not supported for this operation"},
        {"k.jpeg", bits, L"The image type (Gray1) is not supported for saving under the JPEG image format"},
        {"k.pbm", rgb, L"The image type (Rgb) is not supported for this operation, use one of Gray or Gray16"},
        {"k.pgm", bits, L"The image type (Gray1) is not supported for this operation, use one of Gray or Gray16"},
        {"k.ppm", gray, L"The image type (Gray) is not supported for this operation, use Rgb*"}};
    for (const auto& c : cases) {
        Put(c.name, Bytes{1, 2, 3});
        c.image.Write(Path(c.name).c_str());
        EXPECT_EQ(Status::Error().Code, UnsupportedType) << c.name;
        EXPECT_STREQ(Status::UnicodeError(), c.message);
        EXPECT_STREQ(Status::AsciiFunction(), "Tesk::Image::Write");
        EXPECT_EQ(fs::file_size(Path(c.name)), 3u) << c.name;
    }
    Image().Write(Path("k.bmp").c_str());
    EXPECT_EQ(Status::Error().Code, VoidObject);
    if (!fs::exists("/dev/full")) return;
    for (const char* ending : {"bmp", "png", "jpg", "tif", "pbm", "pgm"}) {
        const std::string path = Path(std::string("full.") + ending);
        fs::create_symlink("/dev/full", path);
        gray.Write(path.c_str());
        EXPECT_EQ(Status::Error().Code, CannotWrite) << ending << ' ' << Status::AsciiError();
    }
}

TEST_F(ImageFormatTest, ADiskThatFillsUpIsReportedUpToTheLastByte)
{
    for (const char* name : {"f.bmp", "f.png", "f.jpg", "f.tif", "f.pbm", "f.pgm", "f.ppm"}) {
        const std::string kind = name;
        Image image;
        FillByPlace(image, 120, 100, kind == "f.pbm" ? Gray1 : kind == "f.ppm" ? Rgb : Gray);
        image.Write(Path(name).c_str());
        ASSERT_EQ(Status::Error().Code, NoError) << name;
        const auto size = fs::file_size(Path(name));
        for (const auto room : {decltype(size){0}, decltype(size){9}, size / 2, size - 1}) {
            fs::remove(Path(name));
            int code = NoError;
            {
                const FileSizeLimit limit(room);
                image.Write(Path(name).c_str());
                code = Status::Error().Code;
            }
            EXPECT_EQ(code, CannotWrite) << name << " with room for " << room << " of " << size;
        }
    }
}

TEST_F(ImageFormatTest, AStripLongerThanAMillionPixelsIsWritten)
{
    Image strip, read;
    strip.Set(1000001, 1, Gray);
    std::memset(strip.Row(0), 9, 1000001);
    strip.Row(0)[1000000] = 77;
    for (const char* name : {"s.png", "s.tif", "s.pgm", "s.bmp"}) {
        strip.Write(Path(name).c_str());
        ASSERT_EQ(Status::Error().Code, NoError) << name << ' ' << Status::AsciiError();
        read.Read(Path(name).c_str());
        ASSERT_EQ(read.Width, 1000001) << name;
        EXPECT_EQ(read.PixelGray(1000000, 0), 77) << name;
    }
}

TEST_F(ImageFormatTest, AFileWithoutPermissionIsRefused)
{
    if (geteuid() == 0) GTEST_SKIP() << "nothing is forbidden to the superuser";
    const std::string path = Put("secret.bmp", Bytes{1, 2, 3});
    fs::permissions(path, fs::perms::none);
    Image image;
    image.Read(path.c_str());
    EXPECT_EQ(Status::Error().Code, CannotOpen);
    EXPECT_EQ(std::wstring(Status::UnicodeError()),
              L"Cannot open file \"" + Widen(path.c_str()) + L"\" (Permission denied)");
    image.Set(2, 2, Gray);
    image.Write(path.c_str());
    EXPECT_EQ(Status::Error().Code, CannotOpen);
}

TEST_F(ImageFormatTest, PbmWritesBlackForTheLowerHalfAndKeepsTheImage)
{
    Image gray, gray16, bits;
    gray.Set(9, 1, Gray);
    gray16.Set(9, 1, Gray16);
    bits.Set(9, 1, Gray1);
    Operator::GrayDepth = 12;
    for (int x = 0; x < 9; x++) {
        gray.Row(0)[x] = x % 3 == 0 ? 127 : 128;
        gray16.Row<std::uint16_t>(0)[x] = x % 3 == 0 ? 2047 : 2048;
        bits.PixelGray1(x, 0, x % 3 != 0);
    }
    for (const Image* image : {&gray, &gray16, &bits}) {
        image->Write(Path("b.pbm").c_str());
        const Bytes bytes = Contents(Path("b.pbm"));
        EXPECT_EQ(std::string(bytes.begin(), bytes.begin() + 7), "P4\n9 1\n");
        EXPECT_EQ(Bytes(bytes.begin() + 7, bytes.end()), (Bytes{0x92, 0}));
    }
    EXPECT_TRUE(bits.PixelGray1(1, 0));
    EXPECT_FALSE(bits.PixelGray1(0, 0));
    Image read;
    read.Read(Path("b.pbm").c_str(), Gray16);
    EXPECT_EQ(read.PixelGray16(1, 0), 4095);
    read.Read(Path("b.pbm").c_str(), Rgb);
    EXPECT_EQ(Status::Error().Code, IncompatibleType);
}
