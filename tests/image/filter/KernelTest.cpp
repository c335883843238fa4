#include "image/Kernel.h"
#include "image/Operator.h"

#include "image/filter/FilterChecks.h"

#include <cmath>
#include <cstring>
#include <limits>
#include <utility>

using namespace Tesk;
using namespace Tesk::checks;

namespace {

class KernelTest : public IgnoringFailures
{};

/// The sum over a rectangle of weights given by column and row.
template <typename W>
long long Weighted(const Pixels& p, int x, int y, int radiusX, int radiusY, W weight)
{
    long long sum = 0;
    for (int j = -radiusY; j <= radiusY; j++)
        for (int i = -radiusX; i <= radiusX; i++)
            sum += static_cast<long long>(weight(i, j)) * p(x + i, y + j);
    return sum;
}

int One(int, int)
{
    return 1;
}

int Square(const Pixels& p, int x, int y)
{
    return static_cast<int>(Weighted(p, x, y, 1, 1, One));
}

int BinomialAt(const Pixels& p, int x, int y)
{
    return static_cast<int>(
               Weighted(p, x, y, 1, 1, [](int i, int j) { return (2 - std::abs(i)) * (2 - std::abs(j)); })) /
           16;
}

int BoxAt(const Pixels& p, int x, int y, int w, int h)
{
    return static_cast<int>(Weighted(p, x, y, w / 2, h / 2, One) / (static_cast<long long>(w) * h));
}

/// Three boxes convolved, as one list of weights.
std::vector<long long> GaussWeights(int size)
{
    const int h = size / 2, r1 = (h + 2) / 3, r2 = (h - r1 + 1) / 2, r3 = h - r1 - r2;
    std::vector<long long> weights{1};
    for (const int r : {r1, r2, r3}) {
        std::vector<long long> next(weights.size() + static_cast<std::size_t>(2 * r));
        for (std::size_t i = 0; i < weights.size(); i++)
            for (std::size_t k = 0; k <= static_cast<std::size_t>(2 * r); k++)
                next[i + k] += weights[i];
        weights = next;
    }
    return weights;
}

/// A mean by its parts.
struct Fraction
{
    long long sum, count;
    int Truncated() const { return static_cast<int>(sum / count); }
};

/// Directly: rows with those weights, truncated, then columns.
Fraction GaussSum(const Pixels& p, int x, int y, int w, int h)
{
    const auto across = GaussWeights(w), down = GaussWeights(h);
    const auto total = [](const std::vector<long long>& weights) {
        long long sum = 0;
        for (const long long weight : weights)
            sum += weight;
        return sum;
    };
    long long sum = 0;
    for (int j = 0; j < h; j++) {
        long long row = 0;
        for (int i = 0; i < w; i++)
            row += across[static_cast<std::size_t>(i)] * p(x + i - w / 2, y + j - h / 2);
        sum += down[static_cast<std::size_t>(j)] * (row / total(across));
    }
    return {sum, total(down)};
}

int GaussAt(const Pixels& p, int x, int y, int w, int h)
{
    return GaussSum(p, x, y, w, h).Truncated();
}

int SigmaAt(const Pixels& p, int x, int y, int size, int range)
{
    long long count = 0, sum = 0;
    for (int j = -size / 2; j <= size / 2; j++)
        for (int i = -size / 2; i <= size / 2; i++)
            if (const int v = p(x + i, y + j); std::abs(v - p(x, y)) <= range) {
                count++;
                sum += v;
            }
    return static_cast<int>(sum / count);
}

} // namespace

TEST_F(KernelTest, FixedFiltersFollowTheirFormulas)
{
    const struct
    {
        const char* name;
        Filter filter;
        Formula formula;
    } cases[] = {
        {"Smooth", Kernel::Smooth,
         [](const Pixels& p, int x, int y) {
             const int s = Square(p, x, y);
             return (s - s * 7 / 64) / 8;
         }},
        {"Smooth8", Kernel::Smooth8, [](const Pixels& p, int x, int y) { return (Square(p, x, y) - p(x, y)) / 8; }},
        {"Binomial", Kernel::Binomial, BinomialAt},
        {"Sharpen4", [](auto& s, auto& d) { Kernel::Sharpen4(s, d); },
         [](const Pixels& p, int x, int y) {
             return Byte(5 * p(x, y) - p(x - 1, y) - p(x + 1, y) - p(x, y - 1) - p(x, y + 1));
         }},
        {"Sharpen4 absolute", [](auto& s, auto& d) { Kernel::Sharpen4(s, d, Absolute); },
         [](const Pixels& p, int x, int y) {
             return Byte(std::abs(5 * p(x, y) - p(x - 1, y) - p(x + 1, y) - p(x, y - 1) - p(x, y + 1)));
         }},
        {"Sharpen8", [](auto& s, auto& d) { Kernel::Sharpen8(s, d); },
         [](const Pixels& p, int x, int y) { return Byte(10 * p(x, y) - Square(p, x, y)); }},
        {"Sharpen8 absolute", [](auto& s, auto& d) { Kernel::Sharpen8(s, d, Absolute); },
         [](const Pixels& p, int x, int y) { return Byte(std::abs(10 * p(x, y) - Square(p, x, y))); }}};
    for (const auto& c : cases)
        CheckSmallWindows(c.name, Gray, c.filter, c.formula);
}

TEST_F(KernelTest, WiderBinomialsAreRepeatedPasses)
{
    using Call = void (*)(const Image&, Image&);
    Image src, dst, repeated;
    for (const int width : {1, 7, 40}) {
        Fill(src, Gray, width, 6, 3);
        Kernel::Binomial(src, repeated);
        for (const Call call : {Call{Kernel::Binomial5}, Call{Kernel::Binomial7}, Call{Kernel::Binomial9}}) {
            Image again;
            Kernel::Binomial(repeated, again);
            call(src, dst);
            EXPECT_EQ(Store(dst), Store(again)) << width;
            repeated.ShallowCopy(again, true);
        }
        Kernel::Binomial9(src, dst);
        Kernel::Binomial9(src, src);
        for (int y = 0; y < 6; y++)
            EXPECT_EQ(std::memcmp(src.Row(y), dst.Row(y), static_cast<std::size_t>(width)), 0);
    }
}

TEST_F(KernelTest, BoxesAreTruncatedMeans)
{
    const struct
    {
        int w, h;
    } sizes[] = {{1, 1}, {3, 3}, {1, 5}, {5, 1}, {3, 7}, {15, 17}, {17, 17}, {41, 3}};
    for (const auto& size : sizes)
        for (const PixelTypes type : {Gray, Gray16})
            CheckSmallWindows(
                "box " + std::to_string(size.w) + " x " + std::to_string(size.h), type,
                [&](auto& s, auto& d) { Kernel::BoxLowPass(size.w, size.h, s, d); },
                [&](const Pixels& p, int x, int y) { return BoxAt(p, x, y, size.w, size.h); });
    // The largest that go through sums of 32 bits, and beyond.
    for (const int size : {253, 255, 257, 301})
        for (const PixelTypes type : {Gray, Gray16})
            CheckWindow(
                "large box", type, 19, 4, [&](auto& s, auto& d) { Kernel::BoxLowPass(size, size, s, d); },
                [&](const Pixels& p, int x, int y) { return BoxAt(p, x, y, size, size); });
}

TEST_F(KernelTest, GaussiansAreThreeBoxesAlongRowsThenColumns)
{
    const struct
    {
        int w, h;
    } sizes[] = {{1, 1}, {3, 3}, {5, 1}, {1, 5}, {7, 5}, {9, 11}, {13, 15}, {17, 17}, {17, 19}, {33, 21}};
    for (const auto& size : sizes)
        for (const PixelTypes type : {Gray, Gray16})
            for (const int width : {1, 2, 15, 16, 17, 31, 64, 67})
                for (const int height : {1, 3, 18})
                    ASSERT_NO_FATAL_FAILURE(CheckWindow(
                        "gauss " + std::to_string(size.w) + " x " + std::to_string(size.h), type, width, height,
                        [&](auto& s, auto& d) { Kernel::GaussLowPass(size.w, size.h, s, d); },
                        [&](const Pixels& p, int x, int y) { return GaussAt(p, x, y, size.w, size.h); }));
    for (const int size : {255, 257})
        for (const PixelTypes type : {Gray, Gray16})
            CheckWindow(
                "large gauss", type, 5, 3, [&](auto& s, auto& d) { Kernel::GaussLowPass(size, size, s, d); },
                [&](const Pixels& p, int x, int y) { return GaussAt(p, x, y, size, size); });
}

TEST_F(KernelTest, HighPassesAreDifferencesFromTheirLowPass)
{
    const auto clip = [](double v, GrayClipping mode, int largest, int zero, int largestSigned) {
        const double whole = std::trunc(v);
        if (mode == Rescale) return static_cast<int>(std::clamp<double>(whole + zero, 0, largestSigned));
        return static_cast<int>(std::clamp<double>(mode == Absolute ? std::abs(whole) : whole, 0, largest));
    };
    for (const GrayClipping mode : {Saturate, Absolute, Rescale})
        for (const double gain : {1.0, 2.5, -0.75}) {
            const auto bytes = [&](int s, int mean) { return clip(gain * s - gain * mean, mode, 255, 128, 255); };
            const auto words = [&](int s, const Fraction& mean) {
                const double fraction =
                    s * gain - static_cast<double>(mean.sum) * gain / static_cast<double>(mean.count);
                return clip(gain == 1 ? s - mean.Truncated() : fraction, mode, 32767, 32768, 65535);
            };
            CheckSmallWindows(
                "box", Gray, [&](auto& s, auto& d) { Kernel::BoxHighPass(5, 3, s, d, mode, gain); },
                [&](const Pixels& p, int x, int y) { return bytes(p(x, y), BoxAt(p, x, y, 5, 3)); });
            CheckWindow(
                "gauss", Gray, 35, 9, [&](auto& s, auto& d) { Kernel::GaussHighPass(5, 9, s, d, mode, gain); },
                [&](const Pixels& p, int x, int y) { return bytes(p(x, y), GaussAt(p, x, y, 5, 9)); });
            // 16 bits with a gain keep the fraction of the mean.
            CheckSmallWindows(
                "box", Gray16, [&](auto& s, auto& d) { Kernel::BoxHighPass(5, 3, s, d, mode, gain); },
                [&](const Pixels& p, int x, int y) {
                    return words(p(x, y), {Weighted(p, x, y, 2, 1, One), 15});
                });
            for (const auto& [w, h] : {std::pair{5, 9}, {1, 5}, {7, 1}, {21, 3}})
                for (const int width : {1, 33, 35})
                    CheckWindow(
                        "gauss", Gray16, width, 9,
                        [&, w = w, h = h](auto& s, auto& d) { Kernel::GaussHighPass(w, h, s, d, mode, gain); },
                        [&, w = w, h = h](const Pixels& p, int x, int y) {
                            return words(p(x, y), GaussSum(p, x, y, w, h));
                        });
        }
}

TEST_F(KernelTest, HighPassesGoBeyondTheSizesOf32BitSums)
{
    for (const int size : {255, 257, 301})
        for (const PixelTypes type : {Gray, Gray16})
            CheckWindow(
                "large box", type, 19, 4, [&](auto& s, auto& d) { Kernel::BoxHighPass(size, 3, s, d, Rescale); },
                [&](const Pixels& p, int x, int y) {
                    const int difference = p(x, y) - BoxAt(p, x, y, size, 3);
                    return type == Gray ? Byte(difference + 128) : std::clamp(difference + 32768, 0, 65535);
                });
}

TEST_F(KernelTest, UnsharpAddsTheDifferenceFromTheNeighbours)
{
    for (const double strength : {0.0, 1.0, 0.3, 3.0, -2.0, 1e9}) {
        CheckSmallWindows(
            "unsharp", Gray, [&](auto& s, auto& d) { Kernel::Unsharp(strength, s, d); },
            [&](const Pixels& p, int x, int y) {
                const int s = p(x, y), mean = (Square(p, x, y) - s) / 8;
                return Byte(s + std::floor((s - mean) * std::trunc(strength * 1024) / 1024));
            });
    }
    // Each channel of a colour goes the way of a gray image.
    for (const SIMDLevels level : allLevels)
        for (const int width : {1, 2, 11, 40}) {
            const AtLevel at(level);
            Image rgb, gray, sharp, sharpGray;
            Fill(rgb, Rgb, width, 5, 6);
            Kernel::Unsharp(1.5, rgb, sharp);
            for (int channel = 0; channel < 3; channel++) {
                gray.Set(width, 5, Gray);
                for (int y = 0; y < 5; y++)
                    for (int x = 0; x < width; x++)
                        gray.Row(y)[x] = rgb.Row(y)[3 * x + channel];
                Kernel::Unsharp(1.5, gray, sharpGray);
                for (int y = 0; y < 5; y++)
                    for (int x = 0; x < width; x++)
                        ASSERT_EQ(sharp.Row(y)[3 * x + channel], sharpGray.Row(y)[x]) << x << ' ' << y;
            }
        }
}

TEST_F(KernelTest, BilateralIsTheMeanOfThoseNearInGray)
{
    for (const int size : {1, 3, 9})
        for (const int range : {0, 40, 255, MaxInt})
            for (const int width : {1, 4, 23}) {
                CheckWindow(
                    "bilateral", Gray, width, 6, [&](auto& s, auto& d) { Kernel::Bilateral(size, range, s, d); },
                    [&](const Pixels& p, int x, int y) { return SigmaAt(p, x, y, size, range); });
            }
    // Counts in columns, higher and wider than the picture.
    for (const int size : {31, 33, 255})
        CheckWindow(
            "bilateral", Gray, 41, 5, [&](auto& s, auto& d) { Kernel::Bilateral(size, 60, s, d); },
            [&](const Pixels& p, int x, int y) { return SigmaAt(p, x, y, size, 60); });
    // Few levels or few pixels, and ranges that begin and end within the segments of counts.
    for (const auto& c : {std::pair{5, 20000}, {9, 3}, {31, 20000}, {33, 255}, {33, 256}, {33, 5000}, {33, 70000}})
        CheckWindow(
            "bilateral", Gray16, 19, 3, [&](auto& s, auto& d) { Kernel::Bilateral(c.first, c.second, s, d); },
            [&](const Pixels& p, int x, int y) { return SigmaAt(p, x, y, c.first, c.second); });
    Image src, dst;
    Fill(src, Gray, 9, 4, 3);
    Kernel::Bilateral(3, -5, src, dst);
    EXPECT_EQ(dst.Row(2)[2], 0) << "no gray value lies within a negative range";
}

TEST_F(KernelTest, ConvolveCorrelatesAndRounds)
{
    for (const GrayClipping clip : {Saturate, Absolute, Negative})
        for (const auto& [w, h] : {std::pair{1, 1}, {3, 3}, {5, 3}, {2, 4}, {49, 1}, {1, 49}}) {
            Kernel kernel;
            kernel.Set(w, h);
            for (int j = 0; j < h; j++)
                for (int i = 0; i < w; i++)
                    kernel.Coefficient(i, j) = ((i * 7 + j * 5) % 11 - 4.5) / (w * h);
            kernel.Clip = clip;
            kernel.Offset = 3.25;
            const auto former = kernel.Coefficients;
            CheckSmallWindows(
                "convolve", Gray, [&](auto& s, auto& d) { kernel.Convolve(s, d); },
                [&](const Pixels& p, int x, int y) {
                    double sum = 3.25;
                    for (int j = 0; j < h; j++)
                        for (int i = 0; i < w; i++)
                            sum += ((i * 7 + j * 5) % 11 - 4.5) / (w * h) * p(x + i - w / 2, y + j - h / 2);
                    return Byte((clip == Absolute ? std::abs(sum) : clip == Negative ? -sum : sum) + 0.5);
                });
            EXPECT_EQ(kernel.Coefficients, former);
            EXPECT_EQ(kernel.Offset, 3.25);
        }
}

TEST_F(KernelTest, MasksOfNothingOrOfNoNumberGiveNoSurprise)
{
    Image src, dst;
    Fill(src, Gray, 6, 4, 3);
    Kernel kernel;
    kernel.Set(0, 3);
    kernel.Offset = 41.6;
    kernel.Convolve(src, dst);
    EXPECT_EQ(dst.Row(1)[1], 42);
    for (const auto& [w, h] : {std::pair{MaxInt, 0}, {0, MaxInt}, {0, 0}}) {
        kernel.Set(w, h);
        EXPECT_EQ(Status::Error().Code, NoError);
        Operator::Copy(0, dst);
        kernel.Convolve(src, dst);
        EXPECT_EQ(Status::Error().Code, NoError) << "a mask without coefficients needs no room";
        EXPECT_EQ(dst.Row(1)[1], 42);
    }
    kernel.Set(1, 1);
    kernel.Coefficient(0, 0) = std::numeric_limits<double>::quiet_NaN();
    kernel.Convolve(src, dst);
    EXPECT_EQ(dst.Row(1)[1], 0);
    kernel.Width = 3; // takes effect with coefficients of 0
    kernel.Convolve(src, dst);
    EXPECT_EQ(dst.Row(1)[1], 42);
    EXPECT_EQ(kernel.Coefficients.size(), 3u);
}

TEST_F(KernelTest, NormalizeScalesToASumAndRefusesNone)
{
    Kernel kernel;
    EXPECT_EQ(kernel.Width, 3);
    EXPECT_EQ(kernel.Height, 3);
    EXPECT_EQ(kernel.Clip, Absolute);
    EXPECT_EQ(kernel.Offset, 0);
    kernel.Set(3, 1);
    kernel.Coefficient(0, 0) = 1;
    kernel.Coefficient(1, 0) = 2;
    kernel.Coefficient(2, 0) = 5;
    kernel.Normalize(4);
    EXPECT_EQ(kernel.Coefficients, (std::vector<double>{0.5, 1, 2.5}));
    kernel.Set(2, 1);
    kernel.Coefficient(0, 0) = 1;
    kernel.Coefficient(1, 0) = -1;
    for (const int width : {2, 0}) {
        kernel.Set(width, 1);
        kernel.Normalize(1);
        EXPECT_EQ(Status::Error().Code, OutOfRange);
        EXPECT_EQ(Message(), L"Cannot normalize, this is an empty or zero-sum kernel\n");
    }
}

TEST_F(KernelTest, CoefficientsOutsideTheMaskAreADummy)
{
    Kernel kernel;
    kernel.Set(3, 5);
    for (const auto& [x, y] : {std::pair{3, 0}, {0, 5}, {-1, 0}, {0, MinInt}}) {
        kernel.Coefficient(x, y) = 7;
        EXPECT_EQ(Status::Error().Code, OutOfRange);
        EXPECT_EQ(Message(), L"The requested indexes " + std::to_wstring(x) + L" x " + std::to_wstring(y) +
                                 L" are out of range 3 x 5");
        EXPECT_STREQ(Status::AsciiFunction(), "Tesk::Kernel::Coefficient");
    }
    EXPECT_EQ(kernel.Coefficients, std::vector<double>(15));
    for (const auto& [w, h] : {std::pair{-1, 3}, {3, -1}, {MaxInt, MaxInt}}) {
        kernel.Set(w, h);
        EXPECT_EQ(Status::Error().Code, CannotAllocate);
        EXPECT_EQ(Message(), L"Cannot allocate the kernel Buffer");
        EXPECT_STREQ(Status::AsciiFunction(), "Tesk::Kernel::Set");
        EXPECT_EQ(kernel.Width, 3);
        EXPECT_EQ(kernel.Height, 5);
    }
    kernel.Width = -4;
    Image src, dst;
    Fill(src, Gray, 3, 3, 3);
    kernel.Convolve(src, dst);
    EXPECT_EQ(Status::Error().Code, CannotAllocate);
}

TEST_F(KernelTest, BadCallsAreRefusedAndLeaveTheDestination)
{
    Image gray, gray16, rgb, nothing;
    Fill(gray, Gray, 8, 4, 3);
    Fill(gray16, Gray16, 8, 4, 3);
    Fill(rgb, Rgb, 8, 4, 3);
    Kernel rescaling;
    rescaling.Clip = Rescale;
    const wchar_t* unsupportedRgb = L"The image type (Rgb) is not supported for this operation";
    const wchar_t* unsupported16 = L"The image type (Gray16) is not supported for this operation";
    const wchar_t* rescale = L"The clipping mode (Rescale) is not supported for this operation";
    const wchar_t* negative = L"The clipping mode (Negative) is not supported for this operation";
    const struct
    {
        std::function<void(Image&)> call;
        int code;
        const wchar_t* message;
        const char* context;
    } cases[] = {
        {[&](Image& d) { Kernel::Smooth(nothing, d); }, VoidObject, L"Void source or destination image", "Smooth"},
        {[&](Image& d) { Kernel::Smooth8(rgb, d); }, UnsupportedType, unsupportedRgb, "Smooth8"},
        {[&](Image& d) { Kernel::Binomial(gray16, d); }, UnsupportedType, unsupported16, "Binomial"},
        {[&](Image& d) { Kernel::Binomial5(gray16, d); }, UnsupportedType, unsupported16, "Binomial5"},
        {[&](Image& d) { Kernel::Binomial7(gray16, d); }, UnsupportedType, unsupported16, "Binomial7"},
        {[&](Image& d) { Kernel::Binomial9(nothing, d); }, VoidObject, L"Void source or destination image",
         "Binomial9"},
        {[&](Image& d) { Kernel::Unsharp(1, gray16, d); }, UnsupportedType, unsupported16, "Unsharp"},
        {[&](Image& d) { rescaling.Convolve(gray, d); }, OutOfRange, rescale, "Convolve"},
        {[&](Image& d) { rescaling.Convolve(rgb, d); }, UnsupportedType, unsupportedRgb, "Convolve"},
        {[&](Image& d) { Kernel::Sharpen4(gray, d, Rescale); }, OutOfRange, rescale, "Sharpen4"},
        {[&](Image& d) { Kernel::Sharpen8(gray, d, Negative); }, OutOfRange, negative, "Sharpen8"},
        {[&](Image& d) { Kernel::BoxLowPass(4, 3, gray, d); }, OutOfRange,
         L"The filter Width (4) must be a positive odd number", "BoxLowPass"},
        {[&](Image& d) { Kernel::BoxLowPass(3, 0, gray, d); }, OutOfRange,
         L"The filter Height (0) must be a positive odd number", "BoxLowPass"},
        {[&](Image& d) { Kernel::BoxLowPass(3, 3, rgb, d); }, UnsupportedType, unsupportedRgb, "BoxLowPass"},
        {[&](Image& d) { Kernel::GaussLowPass(-3, 3, gray, d); }, OutOfRange,
         L"The filter Width (-3) must be a positive odd number", "GaussLowPass"},
        {[&](Image& d) { Kernel::GaussLowPass(3, MaxInt, gray, d); }, OutOfRange,
         L"The filter Height (2147483647) is out of the range 1 to 32767", "GaussLowPass"},
        {[&](Image& d) { Kernel::Bilateral(2, 25, gray, d); }, OutOfRange,
         L"The filter Size (2) must be a positive odd number", "Bilateral"},
        {[&](Image& d) { Kernel::Bilateral(3, 25, rgb, d); }, UnsupportedType, unsupportedRgb, "Bilateral"},
        {[&](Image& d) { Kernel::BoxHighPass(3, 3, gray, d, Negative); }, OutOfRange, negative, "BoxHighPass"},
        {[&](Image& d) { Kernel::GaussHighPass(6, 3, gray, d); }, OutOfRange,
         L"The filter Width (6) must be a positive odd number", "GaussHighPass"},
    };
    for (const auto& c : cases) {
        Image dst;
        Fill(dst, Gray16, 3, 2, 5);
        const auto before = Store(dst);
        c.call(dst);
        EXPECT_EQ(Status::Error().Code, c.code) << c.context;
        EXPECT_EQ(Message(), c.message) << c.context;
        EXPECT_EQ(Status::AsciiFunction(), std::string("Tesk::Kernel::") + c.context);
        EXPECT_EQ(Store(dst), before) << c.context;
    }
}

TEST_F(KernelTest, ConstantImagesStayAndDestinationsAreSized)
{
    for (const int value : {0, 1, 77, 255}) {
        Image src;
        src.Set(21, 6, Gray);
        for (int y = 0; y < 6; y++)
            std::fill_n(src.Row(y), 21, static_cast<std::uint8_t>(value));
        const std::pair<const char*, Filter> filters[] = {
            {"Smooth", Kernel::Smooth},
            {"Binomial9", Kernel::Binomial9},
            {"box", [](auto& s, auto& d) { Kernel::BoxLowPass(99, 101, s, d); }},
            {"gauss", [](auto& s, auto& d) { Kernel::GaussLowPass(99, 101, s, d); }},
            {"bilateral", [](auto& s, auto& d) { Kernel::Bilateral(15, 25, s, d); }}};
        for (const auto& [name, filter] : filters) {
            Image dst;
            filter(src, dst);
            ASSERT_EQ(dst.Type, Gray) << name;
            ASSERT_EQ(dst.Width, 21);
            ASSERT_EQ(dst.Height, 6);
            for (int y = 0; y < 6; y++)
                for (int x = 0; x < 21; x++)
                    ASSERT_EQ(dst.Row(y)[x], value) << name;
        }
    }
}

TEST_F(KernelTest, OverlappingWindowsOfOneStoreAndSharedStoresAreKeptApart)
{
    const Filter filters[] = {Kernel::Binomial5,
                              [](auto& s, auto& d) { Kernel::BoxLowPass(5, 3, s, d); },
                              [](auto& s, auto& d) { Kernel::GaussLowPass(3, 5, s, d); },
                              [](auto& s, auto& d) { Kernel::BoxHighPass(3, 3, s, d, Rescale); },
                              [](auto& s, auto& d) { Kernel::Cornerness(3, s, d); },
                              [](auto& s, auto& d) { Kernel::Canny(s, d, Canny2Gradient); }};
    for (const Filter& filter : filters) {
        Image store, wanted, from, to;
        Fill(store, Gray, 20, 12, 3);
        store.Window();
        from.ShallowCopy(store, true);
        from.Window(0, 0, 20, 12);
        to.ShallowCopy(store, true);
        to.Window(1, 1, 20, 12);
        filter(from, wanted);
        filter(from, to); // the destination one row and column further on in the same store
        EXPECT_EQ(Pixels(to)(19, 11), Pixels(wanted)(19, 11));
        for (int y = 0; y < 12; y++)
            EXPECT_EQ(std::memcmp(to.Row(y), wanted.Row(y), 20), 0);

        // Copy on write: who shares the pixels keeps them.
        Image src, kept;
        Fill(src, Gray, 20, 12, 3);
        kept.ShallowCopy(src, true);
        const auto before = Store(kept);
        Status::Shallow = true;
        filter(src, src);
        Status::Shallow = false;
        EXPECT_EQ(Store(kept), before);
        filter(kept, wanted);
        for (int y = 0; y < 12; y++)
            EXPECT_EQ(std::memcmp(src.Row(y), wanted.Row(y), 20), 0);
    }
}
