// Filling, copying and averaging the pixels that a region covers, and filling from a seed.
#include "image/Image.h"
#include "tests/measure/region/Regions.h"

#include <cstring>
#include <functional>

using namespace Tesk;
using namespace Tesk::checks;

namespace {

class RegionPixels : public RegionMethods
{};

constexpr int width = 13, height = 9;

void Fill(Image& image, PixelTypes type, unsigned seed, int distinct = 256)
{
    Noise noise{seed};
    image.Set(width, height, type);
    for (int y = 0; y < height; y++)
        for (int i = 0; i < RowBytes(width, type); i++)
            image.Row(y)[i] = static_cast<std::uint8_t>(noise.Byte() % distinct);
}

/// Two windows of the same size, byte by byte.
void ExpectSame(const Image& a, const Image& b)
{
    for (int y = 0; y < a.Height; y++)
        ASSERT_EQ(std::memcmp(a.Row(y), b.Row(y), static_cast<std::size_t>(RowBytes(a.Width, a.Type))), 0) << y;
}

/// Expects that `write` gives the bytes to the pixels of the region that count, and leaves all others.
void ExpectFilled(PixelTypes type, int columns, const std::vector<std::uint8_t>& bytes,
                  const std::function<void(const Region&, Image&)>& write)
{
    Noise noise{9};
    const Region region = RandomRegion(noise, 16);
    Image image, expected;
    Fill(image, type, 1);
    Fill(expected, type, 1);
    image.Window(2, 1, 8, 6);
    expected.Window(2, 1, 8, 6);
    for (const auto& [y, x] : PixelsOf(region))
        if (x >= 0 && x < columns && y >= 0 && y < 6)
            std::memcpy(expected.Row(y) + static_cast<std::size_t>(x) * bytes.size(), bytes.data(), bytes.size());
    write(region, image);
    EXPECT_EQ(Status::Error().Code, NoError);
    image.Window();
    expected.Window();
    ExpectSame(image, expected);
}

TEST_F(RegionPixels, FillingTakesTheLowBitsOfTheValueInEachType)
{
    const auto fill = [](const Region& region, Image& image) { region.Fill(0x12345678, image); };
    const auto toImage = [](const Region& region, Image& image) { region.ToImage(0x12345678, image); };
    ExpectFilled(Gray, 8, {0x78}, fill);
    ExpectFilled(Gray16, 8, {0x78, 0x56}, fill);
    ExpectFilled(Rgb, 7, {3, 2, 1}, [](const Region& region, Image& image) { region.Fill(RgbPixel(1, 2, 3), image); });
    ExpectFilled(Gray, 8, {0x78}, toImage);
    ExpectFilled(Gray16, 8, {0x78, 0x56}, toImage);
    ExpectFilled(Rgb, 8, {0x78, 0x56, 0x34}, toImage);
    ExpectFilled(Gray32, 8, {0x78, 0x56, 0x34, 0x12}, toImage);
    ExpectFilled(Rgba, 8, {0x78, 0x56, 0x34, 0x12}, toImage);
}

TEST_F(RegionPixels, OtherTypesAreRefused)
{
    const Region region = RegionOf({{0, 2, 0}});
    Image image, gray;
    gray.Set(3, 3, Gray);
    const auto expect = [&](PixelTypes type, const std::wstring& message, const char* context,
                            const std::function<void()>& call) {
        image.Set(3, 3, type);
        call();
        EXPECT_EQ(Status::Error().Code, UnsupportedType);
        std::wstring expected = message;
        expected.replace(expected.find(L"%"), 1, PixelTypeName(type));
        EXPECT_EQ(Message(), expected);
        EXPECT_STREQ(Status::AsciiFunction(), context);
    };
    const std::wstring begin = L"The image type (%) is not supported for this operation, use ";
    for (const PixelTypes type : {Rgb, Gray32, Grad})
        expect(type, begin + L"Gray", "Tesk::Region::Fill", [&] { region.Fill(1, image); });
    for (const PixelTypes type : {Gray, Rgba})
        expect(type, begin + L"Rgb", "Tesk::Region::Fill", [&] { region.Fill(RgbPixel(1, 2, 3), image); });
    for (const PixelTypes type : {Gray32, Gray1})
        expect(type, begin + L"one of Gray, Gray16, Rgb or Rgba", "Tesk::Region::Fill",
               [&] { region.Fill(gray, image); });
    for (const PixelTypes type : {Grad, Gray1})
        expect(type, L"The source image type (%) is not supported for this operation, use Gray... or Rgb...",
               "Tesk::Region::ToImage", [&] { region.ToImage(1, image); });
    expect(Rgb, begin + L"Gray", "Tesk::Region::SeedFill", [&] { Region::SeedFill(Site(0, 0), 9, image); });
    image.Set(3, 3, Rgb);
    region.Fill(gray, image);
    EXPECT_EQ(Status::Error().Code, IncompatibleType);
    Image empty;
    region.Fill(1, empty);
    EXPECT_EQ(Status::Error().Code, VoidObject);
    region.ToImage(1, empty);
    EXPECT_EQ(Status::Error().Code, VoidObject);
}

TEST_F(RegionPixels, CopyingTakesTheShiftedPixelsAndOvershootsNeitherImage)
{
    Noise noise{13};
    const Region region = RandomRegion(noise, 14);
    for (const PixelTypes type : {Gray, Gray16, Rgb, Rgba})
        for (const auto& [shiftX, shiftY] : {std::pair(0, 0), {3, -2}, {-4, 1}, {200, 0}, {MinInt, MaxInt}})
            for (const bool inPlace : {false, true}) {
                const auto bytes = static_cast<std::size_t>(ElementSize(type));
                Image src, dst, expected;
                Fill(src, type, 1);
                Fill(dst, type, inPlace ? 1 : 2);
                Fill(expected, type, inPlace ? 1 : 2);
                src.Window(1, 1, 9, 7);
                for (const auto& [y, x] : PixelsOf(region)) {
                    const std::int64_t fromX = std::int64_t{x} - shiftX, fromY = std::int64_t{y} - shiftY;
                    const Image& from = inPlace ? dst : src;
                    if (x >= 0 && x < width && y >= 0 && y < height && fromX >= 0 && fromX < from.Width && fromY >= 0 &&
                        fromY < from.Height)
                        std::memcpy(expected.Row(y) + static_cast<std::size_t>(x) * bytes,
                                    from.Row(static_cast<int>(fromY)) + static_cast<std::size_t>(fromX) * bytes, bytes);
                }
                region.Fill(inPlace ? dst : src, dst, shiftX, shiftY);
                EXPECT_EQ(Status::Error().Code, NoError);
                ExpectSame(dst, expected);
            }
}

TEST_F(RegionPixels, MeanHasNoFractionAndTheVarianceIsAboutIt)
{
    Image image;
    image.Set(6, 5, Gray);
    for (int y = 0; y < 5; y++)
        for (int x = 0; x < 6; x++)
            image.PixelGray(x, y) = 77;
    image.Window(1, 2, 4, 2);
    const int values[] = {10, 11, 12, 11};
    for (int x = 0; x < 4; x++)
        image.PixelGray(x + 1, 2) = static_cast<GrayPixel>(values[x]);
    int area = 0;
    double mean = 0;
    const Region region = RegionOf({{-3, 2, 0}, {3, 9, 0}, {0, 4, 2}, {0, 4, -1}});
    EXPECT_EQ(region.Mean(image, area), 10); // 32 / 3
    EXPECT_EQ(area, 3);
    EXPECT_DOUBLE_EQ(region.Variance(image, mean, area), (100 + 121 + 121) / 3.0 - 100);
    EXPECT_EQ(mean, 10);
    const Region outside = RegionOf({{4, 9, 0}, {0, 4, 2}});
    for (const bool variance : {false, true}) {
        EXPECT_EQ(variance ? outside.Variance(image, mean, area) : outside.Mean(image, area), 0);
        EXPECT_EQ(Status::Error().Code, VoidObject);
        EXPECT_EQ(Message(), L"The Region is out of the image");
        EXPECT_STREQ(Status::AsciiFunction(), variance ? "Tesk::Region::Variance" : "Tesk::Region::Mean");
        EXPECT_EQ(area, 3);
    }
    EXPECT_EQ(Region().Variance(image, mean, area), 0);
    EXPECT_EQ(Message(), L"The Region is out of the image");
}

TEST_F(RegionPixels, SharedImagesKeepTheirPixels)
{
    Status::Shallow = true;
    Image image, shared, former;
    Fill(image, Gray, 5, 2);
    Fill(former, Gray, 5, 2);
    const Region region = RegionOf({{0, 9, 3}});
    const std::function<void(Image&)> writers[] = {
        [&](Image& dst) { region.Fill(9, dst); }, [&](Image& dst) { region.ToImage(9, dst); },
        [&](Image& dst) { region.Fill(former, dst, 1, 1); }, [](Image& dst) { Region::SeedFill(Site(4, 4), 9, dst); }};
    for (const auto& write : writers) {
        shared.ShallowCopy(image, true);
        write(shared);
        EXPECT_EQ(Status::Error().Code, NoError);
        EXPECT_NE(shared.Buffer, image.Buffer);
        ExpectSame(image, former);
    }
}

/// The pixels that are connected to the seed and differ little from it, one by one.
void SlowFill(int seedX, int seedY, GrayPixel value, Image& image, bool corners, int tolerance)
{
    const int reference = image.Row(seedY)[seedX];
    Pixels filled = {{seedY, seedX}};
    std::vector<std::pair<int, int>> waiting = {{seedY, seedX}};
    while (!waiting.empty()) {
        const auto [y, x] = waiting.back();
        waiting.pop_back();
        for (int dy = -1; dy <= 1; dy++)
            for (int dx = -1; dx <= 1; dx++) {
                const int toX = x + dx, toY = y + dy;
                if ((!corners && dx * dy != 0) || toX < 0 || toY < 0 || toX >= image.Width || toY >= image.Height)
                    continue;
                if (std::abs(image.Row(toY)[toX] - reference) <= tolerance && filled.emplace(toY, toX).second)
                    waiting.emplace_back(toY, toX);
            }
    }
    for (const auto& [y, x] : filled)
        image.Row(y)[x] = value;
}

TEST_F(RegionPixels, SeedFillTakesTheConnectedPixelsEvenIfTheNewValueQualifies)
{
    for (unsigned seed = 0; seed < 40; seed++)
        for (const bool corners : {false, true})
            for (const int tolerance : {0, 1, 2, 5}) {
                Image image, expected;
                Fill(image, Gray, seed, 6);
                Fill(expected, Gray, seed, 6);
                image.Window(1, 2, 9, 6);
                expected.Window(1, 2, 9, 6);
                const int x = static_cast<int>(seed % 9), y = static_cast<int>(seed % 6);
                const auto value = static_cast<GrayPixel>((image.Row(y)[x] + 1) % 256);
                Region::SeedFill(Site(x, y), value, image, corners, tolerance);
                EXPECT_EQ(Status::Error().Code, NoError);
                SlowFill(x, y, value, expected, corners, tolerance);
                image.Window();
                expected.Window();
                ExpectSame(image, expected);
            }
}

TEST_F(RegionPixels, SeedFillBearsAShapeAsLongAsTheImage)
{
    // A spiral of one pixel's width, which no call stack could follow.
    constexpr int size = 801;
    Image image;
    image.Set(size, size, Gray);
    std::memset(image.Row(0), 0, static_cast<std::size_t>(int(image.Pitch)) * size);
    int x = 0, y = 0, dx = 1, dy = 0, marked = 0;
    const auto isFree = [&](int toX, int toY) {
        return toX >= 0 && toY >= 0 && toX < size && toY < size && image.Row(toY)[toX] == 0;
    };
    for (int turns = 0; turns < 2;) {
        image.Row(y)[x] = 50;
        marked++;
        // Two free pixels ahead keep the arms apart.
        if (isFree(x + dx, y + dy) && (isFree(x + 2 * dx, y + 2 * dy) || x + 2 * dx < 0 || x + 2 * dx >= size ||
                                       y + 2 * dy < 0 || y + 2 * dy >= size)) {
            turns = 0;
        } else {
            std::swap(dx, dy);
            dx = -dx;
            turns++;
            marked--;
            continue;
        }
        x += dx;
        y += dy;
    }
    ASSERT_GT(marked, size * size / 3);
    Region::SeedFill(Site(0, 0), 60, image, false, 20);
    int filled = 0;
    for (int row = 0; row < size; row++)
        for (int column = 0; column < size; column++)
            filled += image.Row(row)[column] == 60;
    EXPECT_GE(filled, marked);
    for (int row = 0; row < size; row++)
        for (int column = 0; column < size; column++)
            ASSERT_NE(image.Row(row)[column], 50);
}

TEST_F(RegionPixels, SeedsOutsideOrOfTheValueAreRefused)
{
    Image image;
    Fill(image, Gray, 3);
    image.Window(2, 2, 5, 4);
    for (const auto& [x, y] : {std::pair(-1, 0), {5, 0}, {0, 4}, {0, -1}}) {
        Region::SeedFill(Site(x, y), 9, image);
        EXPECT_EQ(Status::Error().Code, OutOfRange);
        EXPECT_EQ(Message(), L"The seed point (" + std::to_wstring(x) + L", " + std::to_wstring(y) +
                                 L") lies outside the image boundaries [0..4] x [0..3]");
    }
    const GrayPixel value = image.Row(1)[1];
    Region::SeedFill(Site(1, 1), value, image);
    EXPECT_EQ(Status::Error().Code, OutOfRange);
    EXPECT_EQ(Message(), L"The fill value (" + std::to_wstring(value) + L") must differ from the seed pixel value");
    EXPECT_STREQ(Status::AsciiFunction(), "Tesk::Region::SeedFill");
}

} // namespace
