#include "image/core/Destination.h"

#include "image/core/PixelTypes.h"

#include <gtest/gtest.h>
#include <limits>
#include <vector>

using namespace Tesk;
using namespace Tesk::images;

namespace {

std::vector<std::uint8_t> PixelsOf(const Image& image)
{
    std::vector<std::uint8_t> pixels;
    for (int y = 0; y < image.Height; y++)
        pixels.insert(pixels.end(), image.Row(y), image.Row(y) + ByteCount(image));
    return pixels;
}

void Number(Image& image)
{
    for (int y = 0, v = 0; y < image.Height; y++)
        for (int x = 0; x < ByteCount(image); x++)
            image.Row(y)[x] = static_cast<std::uint8_t>(v++ * 7);
}

} // namespace

TEST(Destination, IsKeptApartFromItsSourceWhereWritesReachWhatIsRead)
{
    const struct
    {
        const char* name;
        int sourceX, destinationX;
        InPlace inPlace;
        bool copied;
    } cases[] = {{"served in place", 2, 2, InPlace::Served, false},
                 {"not served in place", 2, 2, InPlace::Copied, true},
                 {"a pixel further, which no order of rows serves", 2, 3, InPlace::Served, true},
                 {"columns side by side, whose rows interleave", 0, 8, InPlace::Served, true}};
    for (const auto& c : cases) {
        Image store, source, destination;
        store.Set(16, 5, Gray);
        Number(store);
        source.ShallowCopy(store, true);
        source.Window(c.sourceX, 0, 8, 5);
        destination.ShallowCopy(store, true);
        destination.Window(c.destinationX, 0, 8, 5);
        const auto pixels = PixelsOf(source);
        Sources held;
        ASSERT_FALSE(Prepare(Entry("test"), source, destination, Undefined, held, c.inPlace)) << c.name;
        EXPECT_EQ(held.a.FirstPixel != source.FirstPixel, c.copied) << c.name;
        EXPECT_EQ(destination.X, c.destinationX) << c.name << ": a window that fits stays";
        if (c.copied) FillRows(destination, 0);
        EXPECT_EQ(PixelsOf(held.a), pixels) << c.name;
    }
}

TEST(Destination, LeavesASharedStoreToTheOthers)
{
    for (const bool read : {false, true}) {
        Image destination, other, source;
        destination.Set(6, 4, Gray);
        Number(destination);
        other.ShallowCopy(destination, true);
        source.Set(6, 4, Gray);
        const auto pixels = PixelsOf(other);
        Status::Shallow = true;
        Sources held;
        EXPECT_FALSE(Prepare(Entry("test"), read ? destination : source, destination, Undefined, held));
        Status::Shallow = false;
        EXPECT_NE(destination.Buffer, other.Buffer);
        // An operation in place may leave pixels as they are.
        if (read) {
            EXPECT_EQ(PixelsOf(destination), pixels);
        }
        FillRows(destination, 0);
        EXPECT_EQ(PixelsOf(other), pixels);
    }
}

TEST(Destination, OfItsOwnSizeLeavesTheSourceAliveThatItTakesTheNameOf)
{
    Image image;
    image.Set(6, 4, Gray16);
    Number(image);
    image.GradGain = 5;
    const auto pixels = PixelsOf(image);
    Sources held;
    ASSERT_FALSE(Prepare(Entry("test"), image, image, 4, 6, held));
    EXPECT_EQ(image.Width, 4);
    EXPECT_EQ(image.Type, Gray16);
    EXPECT_EQ(image.GradGain, 1);
    FillRows(image, 0);
    EXPECT_EQ(PixelsOf(held.a), pixels);
    const std::uint8_t* buffer = image.Buffer;
    Status::ErrorBehavior(IgnoreIt);
    EXPECT_TRUE(Prepare(Entry("test"), image, image, std::int64_t{1} << 40, 1, held));
    EXPECT_EQ(Status::Error().Code, CannotAllocate);
    EXPECT_STREQ(Status::AsciiFunction(), "Tesk::Image::Set");
    EXPECT_EQ(image.Buffer, buffer);
}

TEST(Destination, InnerFormsOfSizingReturnTheirFailureAndReportNothing)
{
    Image image;
    image.Set(8, 8, Gray);
    image.Window(1, 1, 5, 5);
    const std::uint8_t* buffer = image.Buffer;
    Status::Error().Code = NoError;
    EXPECT_EQ(image.Fit(std::int64_t{std::numeric_limits<int>::max()} + 9, 5, Gray), CannotAllocate);
    EXPECT_EQ(image.Fit(0, 5, Gray), CannotAllocate);
    EXPECT_EQ(image.Fit(5, 5, Gray), NoError);
    EXPECT_EQ(image.X, 1);
    EXPECT_EQ(image.TrySet(8, 8, Gray), NoError);
    EXPECT_EQ(image.X, 0);
    EXPECT_EQ(image.Buffer, buffer);
    EXPECT_EQ(image.TrySet(5, 5, Gray), NoError);
    EXPECT_EQ(image.StoreWidth, 5) << "a store of that size, not a window";
    EXPECT_EQ(Status::Error().Code, NoError);
    EXPECT_EQ(WideRowBytes(std::int64_t{1} << 31, Rgb), std::int64_t{3} << 31);
    EXPECT_EQ(WideRowBytes(9, Gray1), 2);
}

TEST(PixelTypes, VisitorsCallWhatIsListedAndNothingElse)
{
    for (int code = Undefined; code <= Short; code++) {
        const auto type = static_cast<PixelTypes>(code);
        std::size_t bytes = 0, sampleBytes = 0;
        const bool pixel = VisitPixels<Gray16, Rgba>(type, [&]<typename T>() { bytes = sizeof(T); });
        const bool samples = VisitSamples<Gray16, Rgb, Rgba>(
            type, [&]<int channels, typename T>() { sampleBytes = channels * sizeof(T); });
        EXPECT_EQ(pixel, type == Gray16 || type == Rgba);
        EXPECT_EQ(bytes, pixel ? static_cast<std::size_t>(ElementSize(type)) : 0);
        EXPECT_EQ(samples, pixel || type == Rgb);
        EXPECT_EQ(sampleBytes, samples ? static_cast<std::size_t>(ElementSize(type)) : 0);
        if (samples) {
            EXPECT_EQ(Channels(type), type == Gray16 ? 1 : ElementSize(type));
        }
    }
}
