#include "image/Histogram.h"
#include "foundation/Services.h"
#include "foundation/Status.h"
#include "image/Image.h"
#include "image/Operator.h"
#include "measure/Profile.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <functional>
#include <map>
#include <random>
#include <string>
#include <vector>

using namespace Tesk;

namespace {

class HistogramTest : public ::testing::Test
{
protected:
    void SetUp() override
    {
        Status::ErrorBehavior(IgnoreIt);
        Operator::GrayDepth = 10;
    }
    void TearDown() override
    {
        Operator::GrayDepth = 16;
        Status::Shallow = false;
    }
};

int ChannelsOf(const Image& image)
{
    return image.Type == Rgb ? 3 : 1;
}

/// Lumpy noise of odd extent, a window at an odd place in it.
void Lumpy(Image& image, PixelTypes type, unsigned seed, int width = 61, int height = 47)
{
    image.Set(width, height, type);
    std::mt19937 random(seed);
    for (int y = 0; y < height; y++)
        for (int i = 0; i < width * ChannelsOf(image); i++) {
            const unsigned v = random() % 8 < 3 ? 40 + random() % 9 : 150 + random() % 60;
            if (type == Gray16)
                image.Row<std::uint16_t>(y)[i] = static_cast<std::uint16_t>(v * 4);
            else
                image.Row(y)[i] = static_cast<std::uint8_t>(v);
        }
    if (width > 20) image.Window(3, 5, width - 8, height - 6);
}

int Component(const Image& image, int x, int y, int c)
{
    if (image.Type == Gray16) return image.Row<std::uint16_t>(y)[x];
    return image.Type == Rgb ? image.Row(y)[3 * x + 2 - c] : image.Row(y)[x];
}

std::vector<int> Channel(const Image& image, int c)
{
    std::vector<int> values;
    for (int y = 0; y < image.Height; y++)
        for (int x = 0; x < image.Width; x++)
            values.push_back(Component(image, x, y, c));
    return values;
}

double MeanOf(const std::vector<int>& v)
{
    double sum = 0;
    for (const int x : v)
        sum += x;
    return sum / static_cast<double>(v.size());
}

/// The mean of the products of the powers about the means.
double Central(const std::vector<int>& v, const std::vector<int>& w, int p, int q)
{
    const double mv = MeanOf(v), mw = MeanOf(w);
    double sum = 0;
    for (std::size_t i = 0; i < v.size(); i++)
        sum += std::pow(v[i] - mv, p) * std::pow(w[i] - mw, q);
    return sum / static_cast<double>(v.size());
}

/// The smallest level with at least `target` of the sorted values below it.
int Quantile(std::vector<int> v, long long target)
{
    if (target <= 0) return 0;
    std::sort(v.begin(), v.end());
    return v[static_cast<std::size_t>(std::min<long long>(target, static_cast<long long>(v.size())) - 1)] + 1;
}

/// The threshold for which `better(value, best)` first holds last, over all with values on either side.
int Threshold(const std::vector<int>& v, const std::function<double(std::vector<int>, std::vector<int>, int)>& cost)
{
    double best = 0;
    int found = -1;
    for (int t = 0; t < 1024; t++) {
        std::vector<int> below, above;
        for (const int x : v)
            (x < t ? below : above).push_back(x);
        if (below.empty() || above.empty()) continue;
        const double value = cost(below, above, t);
        if (found < 0 || value < best - 1e-9) {
            best = value;
            found = t;
        }
    }
    return found;
}

double Entropy(const std::vector<int>& v)
{
    std::map<int, int> counts;
    for (const int x : v)
        counts[x]++;
    double entropy = 0;
    for (const auto& [level, count] : counts) {
        const double p = count / static_cast<double>(v.size());
        entropy -= p * std::log(p);
    }
    return entropy;
}

} // namespace

TEST_F(HistogramTest, CountsAreThoseOfTheWindow)
{
    for (const PixelTypes type : {Gray, Gray16, Rgb})
        for (const int width : {1, 7, 8, 17, 61}) {
            Image image;
            Lumpy(image, type, 3, width, 47);
            Histogram histogram;
            histogram.Compute(image);
            ASSERT_EQ(Status::Error().Code, NoError);
            ASSERT_EQ(histogram.Length, type == Gray16 ? 1024 : 256);
            ASSERT_EQ(histogram.Type, type == Rgb ? Rgb : Gray);
            for (int c = 0; c < ChannelsOf(image); c++) {
                std::vector<int> expected(static_cast<std::size_t>(int(histogram.Length)));
                for (const int v : Channel(image, c))
                    expected[static_cast<std::size_t>(std::min(v, histogram.Length - 1))]++;
                for (int i = 0; i < histogram.Length; i++)
                    ASSERT_EQ(histogram.Sample(i, c), expected[static_cast<std::size_t>(i)]) << width << ' ' << i;
            }
            const int before = histogram.Sample(150, 0);
            histogram.Compute(image, false);
            EXPECT_EQ(histogram.Sample(150, 0), 2 * before);
        }
    // Large images are counted by pairs of bytes, windows of odd width too.
    for (const PixelTypes type : {Gray, Rgb}) {
        Image large;
        Lumpy(large, type, 17, 1025, 601);
        Histogram once, rows;
        once.Compute(large);
        const Limits window(large.X, large.Y, large.Width, large.Height);
        for (int y = 0; y < window.Height; y++) {
            large.Window(window.X, window.Y + y, window.Width, 1);
            rows.Compute(large, y == 0);
        }
        for (int c = 0; c < ChannelsOf(large); c++) {
            int total = 0;
            for (int i = 0; i < 256; i++) {
                ASSERT_EQ(once.Sample(i, c), rows.Sample(i, c)) << type << ' ' << i << ' ' << c;
                total += once.Sample(i, c);
            }
            EXPECT_EQ(total, 1017 * 595);
        }
    }
    // Pairs that come again and again, across the ends of rows too.
    for (const int width : {512, 513}) {
        Image flat;
        flat.Set(width, 401, Rgb);
        Operator::Copy(RgbPixel(3, 2, 1), flat);
        flat.Row<RgbPixel>(400)[width - 1] = RgbPixel(3, 2, 9);
        Histogram histogram;
        histogram.Compute(flat);
        EXPECT_EQ(histogram.Sample(3, 0), width * 401);
        EXPECT_EQ(histogram.Sample(2, 1), width * 401);
        EXPECT_EQ(histogram.Sample(1, 2), width * 401 - 1);
        EXPECT_EQ(histogram.Sample(9, 2), 1);
    }
    // Values beyond the depth stand at the last level.
    Image deep;
    deep.Set(5, 1, Gray16);
    for (int x = 0; x < 5; x++)
        deep.Row<std::uint16_t>(0)[x] = static_cast<std::uint16_t>(x < 2 ? 65535 : 7);
    Histogram histogram;
    histogram.Compute(deep);
    EXPECT_EQ(histogram.Bin(1023), 2);
    EXPECT_EQ(histogram.Bin(7), 3);
}

TEST_F(HistogramTest, ProfilesAreCountedToo)
{
    Profile profile;
    for (const int v : {3, 3, 255})
        profile.Append(v);
    Histogram histogram;
    histogram.Compute(profile);
    EXPECT_EQ(histogram.Bin(3), 2);
    EXPECT_EQ(histogram.Bin(255), 1);
    profile.Append(256);
    histogram.Compute(profile);
    EXPECT_EQ(Status::Error().Code, UnsupportedType);
    EXPECT_STREQ(Status::UnicodeError(), L"This profile holds values larger than the allowed gray range, rescale it");
    profile.Window(0, 3);
    histogram.Compute(profile, false);
    EXPECT_EQ(histogram.Bin(3), 4);
    histogram.Compute(histogram);
    EXPECT_EQ(histogram.Bin(0), 254) << "its own counts counted";
    EXPECT_EQ(histogram.Bin(4), 1);
    histogram.Compute(histogram, false);
    EXPECT_EQ(histogram.Bin(0), 254 + 253);
    Profile color;
    color.Append(1, 2, 3);
    color.Append(1, 7, 3);
    histogram.Compute(color);
    EXPECT_EQ(histogram.Sample(1, 0), 2);
    EXPECT_EQ(histogram.Sample(7, 1), 1);
    Profile real;
    real.Set(3, Float);
    histogram.Compute(real);
    EXPECT_STREQ(Status::UnicodeError(), L"The profile Type (Float) is not supported for this operation");

    Histogram sums;
    sums.Cumulate(histogram);
    EXPECT_EQ(sums.Sample(2, 1), 1);
    EXPECT_EQ(sums.Sample(255, 1), 2);
    EXPECT_EQ(sums.Sample(0, 0), 0);
}

TEST_F(HistogramTest, SumsOfAWindowStandAtTheLevelsOfTheirCounts)
{
    Profile profile;
    for (const int v : {10, 11, 11, 12, 12, 13})
        profile.Append(v);
    Histogram histogram, apart, shared;
    histogram.Compute(profile);
    histogram.Window(11, 3);
    shared.ShallowCopy(histogram, false);
    shared.Window(0, 9);
    apart.Cumulate(histogram);
    shared.Cumulate(histogram);
    EXPECT_EQ(histogram.Bin(1), 2) << "the source";
    histogram.Cumulate(histogram);
    for (Histogram* sums : {&apart, &shared, &histogram}) {
        EXPECT_STREQ(sums->ToAsciiString(-1), "Level\tCount\n11\t2\n12\t4\n13\t5\n");
        sums->Profile::Window();
        EXPECT_EQ(sums->Length, 256);
        EXPECT_EQ(sums->Bin(10), 1) << "a count outside the window";
    }
}

TEST_F(HistogramTest, StatisticsAgreeWithTheSortedPixels)
{
    for (const PixelTypes type : {Gray, Gray16}) {
        Image image;
        Lumpy(image, type, 11);
        Histogram histogram;
        histogram.Compute(image);
        const auto v = Channel(image, 0);
        const auto n = static_cast<long long>(v.size());
        double mean = 0, variance = 0;
        int level = 0, most = 0;
        const double tolerance = 1e-7;
        EXPECT_EQ(Histogram::Mean(image), MeanOf(v));
        EXPECT_EQ(histogram.Mean(), MeanOf(v));
        EXPECT_NEAR(Histogram::Variance(image, mean), Central(v, v, 2, 0), tolerance);
        EXPECT_EQ(mean, MeanOf(v));
        EXPECT_NEAR(histogram.Variance(mean), Central(v, v, 2, 0), tolerance);
        const double sigma = std::sqrt(Central(v, v, 2, 0));
        EXPECT_NEAR(histogram.Skewness(mean, variance), Central(v, v, 3, 0) / std::pow(sigma, 3), tolerance);
        EXPECT_NEAR(Histogram::Skewness(image, mean, variance), Central(v, v, 3, 0) / std::pow(sigma, 3), tolerance);
        EXPECT_NEAR(histogram.Kurtosis(mean, variance), Central(v, v, 4, 0) / std::pow(sigma, 4), tolerance);
        EXPECT_NEAR(Histogram::Kurtosis(image, mean, variance), Central(v, v, 4, 0) / std::pow(sigma, 4), tolerance);
        EXPECT_NEAR(variance, sigma * sigma, tolerance);
        for (const double percent : {-1.0, 0.0, 0.1, 0.37, 0.5, 1.0, 9.0}) {
            const auto counts = static_cast<double>(n);
            const auto target = static_cast<long long>(counts * percent + 0.5);
            const int all = type == Gray ? 256 : 1024;
            EXPECT_EQ(histogram.Quantile(percent), target > n ? all : Quantile(v, target)) << percent;
            const auto truncated = static_cast<long long>(counts * percent);
            EXPECT_EQ(Histogram::Quantile(percent, image), truncated > n ? all : Quantile(v, truncated)) << percent;
        }
        EXPECT_EQ(histogram.Median(), histogram.Quantile(0.5));
        EXPECT_EQ(Histogram::Median(image), Histogram::Quantile(0.5, image));
        std::map<int, int> counts;
        for (const int x : v)
            counts[x]++;
        const auto mode = std::max_element(counts.begin(), counts.end(),
                                           [](const auto& a, const auto& b) { return a.second < b.second; });
        EXPECT_EQ(histogram.Mode(), mode->first);
        EXPECT_EQ(Histogram::Mode(image), mode->first);
        histogram.Range(level, most);
        EXPECT_EQ(level, *std::min_element(v.begin(), v.end()));
        EXPECT_EQ(most, *std::max_element(v.begin(), v.end()));
        const double deviation = Histogram::MedianAbsoluteDeviation(image, level);
        EXPECT_EQ(level, Quantile(v, n / 2));
        double distance = 0;
        for (const int x : v)
            distance += std::abs(x - level);
        EXPECT_NEAR(deviation, distance / static_cast<double>(n), tolerance);
        EXPECT_EQ(histogram.MedianAbsoluteDeviation(most), deviation);
        EXPECT_NEAR(histogram.Entropy(), Entropy(v) / std::log(2.0), tolerance);
        EXPECT_NEAR(Histogram::Entropy(image), Entropy(v) / std::log(2.0), tolerance);
        const auto above = std::count_if(v.begin(), v.end(), [](int x) { return x >= 160; });
        EXPECT_EQ(histogram.Count(160, true), above);
        EXPECT_EQ(Histogram::Count(160, false, image), n - above);
        EXPECT_EQ(histogram.Count(-5, true), n);
        EXPECT_EQ(histogram.Count(5000, true), 0);

        EXPECT_EQ(Histogram::EntropyThreshold(image), histogram.EntropyThreshold());
        EXPECT_EQ(histogram.EntropyThreshold(),
                  Threshold(v, [](auto below, auto up, int) { return -(Entropy(below) + Entropy(up)); }));
        EXPECT_EQ(Histogram::IsodataThreshold(image), histogram.IsodataThreshold());
        EXPECT_EQ(histogram.IsodataThreshold(), Threshold(v, [](auto below, auto up, int t) {
                      return std::abs((MeanOf(below) + MeanOf(up)) / 2 - t);
                  }));
        EXPECT_EQ(Histogram::BestThreshold(image), histogram.BestThreshold());
        const int best = histogram.BestThreshold();
        EXPECT_GT(best, type == Gray ? 48 : 192);
        EXPECT_LT(best, type == Gray ? 151 : 604);
        if (type == Gray) {
            Image binary;
            EXPECT_EQ(best, Operator::Binarize(image, binary)) << "the same rule finds both";
        }
    }
}

TEST_F(HistogramTest, HandWorkedValues)
{
    Image constant, two;
    constant.Set(5, 3, Gray);
    Operator::Copy(5, constant);
    two.Set(4, 1, Gray);
    for (const int x : {0, 1, 2, 3})
        two.Row(0)[x] = static_cast<std::uint8_t>(x < 2 ? 10 : 20);
    double mean = 0, variance = 0;
    EXPECT_EQ(Histogram::Median(constant), 6);
    EXPECT_EQ(Histogram::BestThreshold(constant), 0);
    EXPECT_EQ(Histogram::EntropyThreshold(constant), 0);
    EXPECT_EQ(Histogram::IsodataThreshold(constant), 0);
    EXPECT_EQ(Histogram::Skewness(constant, mean, variance), 0);
    EXPECT_EQ(Histogram::Entropy(two), 1.0);
    EXPECT_EQ(Histogram::BestThreshold(two), 15) << "all splits from 11 to 20 are equal";
    EXPECT_EQ(Histogram::IsodataThreshold(two), 15);
    EXPECT_EQ(Histogram::EntropyThreshold(two), 11);
    EXPECT_EQ(Histogram::Kurtosis(two, mean, variance), 1);

    // Levels 0 to 4 with 1, 2, 3, 4, 10 pixels.
    Histogram histogram;
    for (const int count : {1, 2, 3, 4, 10})
        histogram.Append(count);
    // T = 2: levels 0 and 1 are skipped; 2, 3 and 4 are needed to get from 3 to 18.
    EXPECT_DOUBLE_EQ(histogram.TrimmedMean(0.2), (6 + 12 + 40) / 17.0);
    // T = 10: ten are skipped with level 3, and no level is needed to come to ten.
    EXPECT_EQ(histogram.TrimmedMean(1.0), 4);
    EXPECT_DOUBLE_EQ(histogram.TrimmedMean(0), 60 / 20.0);
    EXPECT_EQ(histogram.TrimmedMean(1e9), 5);
    // The window's levels keep their numbers.
    histogram.Window(2, 3);
    EXPECT_DOUBLE_EQ(histogram.Mean(), 58 / 17.0);
    EXPECT_EQ(histogram.Mode(), 4);
    EXPECT_EQ(histogram.Median(), 5);
    EXPECT_EQ(histogram.BestThreshold(), 4);
    EXPECT_STREQ(histogram.ToAsciiString(-1), "Level\tCount\n2\t3\n3\t4\n4\t10\n");
    EXPECT_STREQ(histogram.ToAsciiString(-3), "Level\tCount\n2\t3\n");
    histogram.ToAsciiString(3);
    EXPECT_EQ(Status::Error().Code, OutOfRange);
    // Counts that somebody wrote below 0 count as none.
    histogram.Bin(2) = -10;
    EXPECT_DOUBLE_EQ(histogram.Mean(), 18 / 7.0);
}

TEST_F(HistogramTest, ColoursAreMeasuredChannelByChannel)
{
    Image image;
    Lumpy(image, Rgb, 5);
    Histogram histogram;
    histogram.Compute(image);
    const std::vector<int> channels[] = {Channel(image, 0), Channel(image, 1), Channel(image, 2)};
    double r[2], g[2], b[2], variance = 0;
    Histogram::Mean(image, r[0], g[0], b[0]);
    histogram.Mean(r[1], g[1], b[1]);
    RgbPixel least[2], most[2];
    Histogram::Range(image, least[0], most[0]);
    histogram.Range(least[1], most[1]);
    for (const auto& channel : channels)
        variance += Central(channel, channel, 2, 0) / 3;
    for (int form = 0; form < 2; form++) {
        EXPECT_EQ(r[form], MeanOf(channels[0]));
        EXPECT_EQ(g[form], MeanOf(channels[1]));
        EXPECT_EQ(b[form], MeanOf(channels[2]));
        EXPECT_EQ(least[form].Green, *std::min_element(channels[1].begin(), channels[1].end()));
        EXPECT_EQ(most[form].Blue, *std::max_element(channels[2].begin(), channels[2].end()));
    }
    EXPECT_NEAR(Histogram::Variance(image, r[0], g[0], b[0]), variance, 1e-7);
    EXPECT_NEAR(histogram.Variance(r[1], g[1], b[1]), variance, 1e-7);
    double m[6];
    Histogram::Covariance(image, m[0], m[1], m[2], m[3], m[4], m[5]);
    const int pairs[][2] = {{0, 0}, {1, 1}, {2, 2}, {0, 1}, {1, 2}, {2, 0}};
    for (int i = 0; i < 6; i++)
        EXPECT_NEAR(m[i], Central(channels[pairs[i][0]], channels[pairs[i][1]], 1, 1), 1e-7) << i;
}

TEST_F(HistogramTest, RefusalsNameWhatIsWrong)
{
    Image gray, color, empty, deep, map;
    Lumpy(gray, Gray, 1);
    Lumpy(color, Rgb, 1);
    deep.Set(4, 4, Gray32);
    map.Set(4, 4, GeoMap);
    Histogram none, ofColor, ofGray;
    ofColor.Compute(color);
    ofGray.Compute(gray);
    double x = -7, y = -7, z = -7;
    int i = -7, k = -7;
    Image dst;
    struct Case
    {
        std::function<void()> call;
        int code;
        const wchar_t* message;
        const char* context;
    };
    const Case cases[] = {
        {[&] { none.Mean(); }, VoidObject, L"Void histogram", "Tesk::Histogram::Mean"},
        {[&] { none.Variance(x, y, z); }, VoidObject, L"Void histogram", "Tesk::Histogram::Variance"},
        {[&] { none.Bin(0); }, VoidObject, L"Void histogram", "Tesk::Histogram::Bin"},
        {[&] { ofGray.Bin(256); }, OutOfRange, L"The element index (256) is out of the histogram range [0..255]",
         "Tesk::Histogram::Bin"},
        {[&] { ofColor.Median(); }, UnsupportedType, L"Histogram pixel Type (Rgb) not supported for this operation",
         "Tesk::Histogram::Median"},
        {[&] { ofGray.Mean(x, y, z); }, UnsupportedType,
         L"Histogram pixel Type (Gray) not supported for this operation, use Rgb", "Tesk::Histogram::Mean"},
        {[&] { Histogram::Range(color, i, k); }, UnsupportedType,
         L"Image pixel Type (Rgb) not supported for this operation", "Tesk::Histogram::Range"},
        {[&] { Histogram::Covariance(gray, x, x, y, y, z, z); }, UnsupportedType,
         L"Image pixel Type (Gray) not supported for this operation, use Rgb", "Tesk::Histogram::Covariance"},
        {[&] { ofGray.Compute(deep); }, UnsupportedType, L"The image type (Gray32) is not supported for this operation",
         "Tesk::Histogram::Compute"},
        {[&] { ofGray.Compute(color, false); }, UnsupportedType,
         L"Histogram pixel Type (Gray) not supported for this operation", "Tesk::Histogram::Compute"},
        {[&] { ofGray.Compute(empty); }, VoidObject, L"Void source or destination image", "Tesk::Histogram::Compute"},
        {[&] { Histogram::Saturation(deep, i, k, x, y); }, UnsupportedType,
         L"The image type (Gray32) is not supported for this operation", "Tesk::Histogram::Saturation"},
        {[&] { Histogram::CountDifferences(gray, color); }, IncompatibleType,
         L"Incompatible source or destination image types, Rgb instead of Gray", "Tesk::Histogram::CountDifferences"},
        {[&] { Histogram::SumAbsoluteDifferences(deep, deep, true); }, UnsupportedType,
         L"The image type (Gray32) is not supported for this operation", "Tesk::Histogram::SumAbsoluteDifferences"},
        {[&] { Histogram::Normalize(1, 2, color, dst, x, y); }, UnsupportedType,
         L"Image pixel Type (Rgb) not supported for this operation", "Tesk::Histogram::Normalize"},
        {[&] { Histogram::Normalize(1, 2, 3, 4, gray, dst, x, y, y, y); }, UnsupportedType,
         L"Image pixel Type (Gray) not supported for this operation, use Rgb", "Tesk::Histogram::Normalize"},
        {[&] { Histogram::ShowDifferences(map, map, dst); }, UnsupportedType,
         L"The image type (Map) is not supported for this operation", "Tesk::Histogram::ShowDifferences"},
    };
    for (const auto& [call, code, message, context] : cases) {
        Status::Error().Code = NoError;
        call();
        EXPECT_EQ(Status::Error().Code, code) << context;
        EXPECT_STREQ(Status::UnicodeError(), message);
        EXPECT_STREQ(Status::AsciiFunction(), context);
    }
    Image words;
    Lumpy(words, Gray16, 1);
    ofGray.Compute(words, false);
    EXPECT_EQ(Status::Error().Code, IncompatibleSize);
    EXPECT_STREQ(Status::UnicodeError(), L"This profile has 256 entries instead of 1024");
    EXPECT_EQ(x, -7);
    EXPECT_EQ(i, -7);
    EXPECT_EQ(dst.Type, Undefined);
}

TEST_F(HistogramTest, AFailureWithinAnotherOperationIsReportedOnce)
{
    struct Counter : IMessageBox
    {
        int shown = 0;
        void Show(const wchar_t*, const wchar_t*) override { shown++; }
    } counter;
    // As gray pixels this would be larger than any image.
    constexpr int size = 70000;
    std::uint8_t nothing[4];
    Image huge, dst;
    huge.Set(size, size, Gray1, nothing, (size + 31) / 32 * 4);
    Services::Install(&counter);
    Status::ErrorBehavior(ShowIt);
    Histogram::ShowDifferences(huge, huge, dst);
    const int code = Status::Error().Code;
    Status::ErrorBehavior(IgnoreIt);
    Services::Install(static_cast<IMessageBox*>(nullptr));
    EXPECT_EQ(code, CannotAllocate);
    EXPECT_EQ(counter.shown, 1);
    EXPECT_EQ(dst.Type, Undefined);
}

TEST_F(HistogramTest, NoiseIsTheAnswerOfAMaskThatIgnoresPlanes)
{
    const int masks[2][5] = {{1, -2, 1}, {1, -4, 6, -4, 1}};
    for (const PixelTypes type : {Gray, Gray16, Rgb})
        for (const bool large : {false, true}) {
            Image image, shown, inPlace;
            Lumpy(image, type, 9);
            const int size = large ? 5 : 3, reach = size / 2, channels = ChannelsOf(image);
            Histogram::ShowNoise(image, shown, large);
            ASSERT_EQ(shown.Type, type == Rgb ? Rgb : Gray);
            double sum = 0, count = 0;
            for (int y = 0; y < image.Height; y++)
                for (int x = 0; x < image.Width; x++)
                    for (int c = 0; c < channels; c++) {
                        const bool inner =
                            x >= reach && x < image.Width - reach && y >= reach && y < image.Height - reach;
                        int answer = 0;
                        for (int j = 0; inner && j < size; j++)
                            for (int i = 0; i < size; i++)
                                answer += masks[large][i] * masks[large][j] *
                                          Component(image, x + i - reach, y + j - reach, c);
                        sum += std::abs(answer);
                        count += inner;
                        ASSERT_EQ(Component(shown, x, y, c), std::min(std::abs(answer), 255));
                    }
            EXPECT_DOUBLE_EQ(Histogram::Noise(image, large), sum * 0.20833333333333334 / count);
            Operator::Copy(image, inPlace);
            Histogram::ShowNoise(inPlace, inPlace, large);
            EXPECT_EQ(Histogram::CountDifferences(inPlace, shown), 0);
        }
    Image plane, tiny;
    plane.Set(9, 7, Gray);
    for (int y = 0; y < 7; y++)
        for (int x = 0; x < 9; x++)
            plane.Row(y)[x] = static_cast<std::uint8_t>(3 * x + 5 * y);
    EXPECT_EQ(Histogram::Noise(plane), 0);
    tiny.Set(2, 9, Gray);
    Operator::Copy(7, tiny);
    EXPECT_EQ(Histogram::Noise(tiny), 0);
    EXPECT_EQ(Status::Error().Code, NoError);
    Histogram::ShowNoise(tiny, tiny, true);
    EXPECT_EQ(tiny.PixelGray(1, 4), 0);
}

TEST_F(HistogramTest, SaturationIsAtTheExtremeLevels)
{
    Image gray, color, shown;
    gray.Set(5, 1, Gray);
    int i = 0;
    for (const int v : {7, 200, 7, 50, 9})
        gray.Row(0)[i++] = static_cast<std::uint8_t>(v);
    int dark = 0, light = 0;
    double black = 0, white = 0;
    Histogram::Saturation(gray, dark, light, black, white);
    EXPECT_EQ(dark, 7);
    EXPECT_EQ(light, 200);
    EXPECT_EQ(black, 0.4);
    EXPECT_EQ(white, 0.2);
    Histogram::ShowSaturation(gray, shown);
    const auto pixels = [&] {
        std::vector<RgbPixel> row(shown.Row<RgbPixel>(0), shown.Row<RgbPixel>(0) + shown.Width);
        return row;
    };
    const RgbPixel blue(0, 0, 255), red(255, 0, 0), mid(50, 50, 50), nine(9, 9, 9);
    EXPECT_EQ(pixels(), (std::vector<RgbPixel>{blue, red, blue, mid, nine}));
    Histogram::ShowSaturation(gray, shown, 9, 50);
    EXPECT_EQ(pixels(), (std::vector<RgbPixel>{blue, red, blue, red, blue}));

    color.Set(4, 1, Rgb);
    i = 0;
    for (const RgbPixel p : {RgbPixel(1, 50, 99), RgbPixel(9, 50, 60), RgbPixel(5, 60, 70), RgbPixel(5, 55, 80)})
        color.Row<RgbPixel>(0)[i++] = p;
    Histogram::Saturation(color, dark, light, black, white);
    EXPECT_EQ(dark, 1);
    EXPECT_EQ(light, 99);
    EXPECT_EQ(black, 0.5) << "the first and the second pixel";
    EXPECT_EQ(white, 0.25) << "the third one's green";
    Histogram::ShowSaturation(color, color, 1, 99);
    EXPECT_EQ(color.PixelRgb(0, 0), blue);
    EXPECT_EQ(color.PixelRgb(3, 0), RgbPixel(5, 55, 80));
}

TEST_F(HistogramTest, DifferencesBetweenTwoImages)
{
    for (const PixelTypes type : {Gray, Gray16, Rgb}) {
        Image a, b;
        Lumpy(a, type, 21);
        Lumpy(b, type, 22);
        for (int i = 0; i < 9 * ChannelsOf(a); i++)
            if (type == Gray16)
                b.Row<std::uint16_t>(7)[i] = a.Row<std::uint16_t>(7)[i];
            else
                b.Row(7)[i] = a.Row(7)[i];
        double differing = 0, absolute = 0, squares = 0, covariance = 0, va = 0, vb = 0;
        for (int y = 0; y < a.Height; y++)
            for (int x = 0; x < a.Width; x++) {
                bool differs = false;
                for (int c = 0; c < ChannelsOf(a); c++) {
                    const int d = Component(a, x, y, c) - Component(b, x, y, c);
                    differs = differs || d != 0;
                    absolute += std::abs(d);
                    squares += d * d;
                }
                differing += differs;
            }
        for (int c = 0; c < ChannelsOf(a); c++) {
            const auto v = Channel(a, c), w = Channel(b, c);
            covariance += Central(v, w, 1, 1);
            va += Central(v, v, 2, 0);
            vb += Central(w, w, 2, 0);
        }
        const double pixels = a.Width * a.Height;
        EXPECT_EQ(Histogram::CountDifferences(a, b), differing);
        EXPECT_EQ(Histogram::SumAbsoluteDifferences(a, b, false), absolute);
        EXPECT_EQ(Histogram::SumAbsoluteDifferences(a, b, true), absolute / pixels);
        EXPECT_EQ(Histogram::SumSquaredDifferences(a, b, false), squares);
        EXPECT_EQ(Histogram::SumSquaredDifferences(a, b), std::sqrt(squares / pixels));
        if (type == Gray16) continue;
        EXPECT_NEAR(Histogram::NormalizedCorrelation(a, b), covariance / std::sqrt(va * vb), 1e-9);
        EXPECT_NEAR(Histogram::NormalizedCorrelation(a, a), 1, 1e-12);
        Operator::Invert(a, b);
        EXPECT_NEAR(Histogram::NormalizedCorrelation(a, b), -1, 1e-12);
        Operator::Copy(5, b);
        EXPECT_EQ(Histogram::NormalizedCorrelation(a, b), 0);
    }
}

TEST_F(HistogramTest, NormalisationReachesTheMeanAndTheVariance)
{
    Image gray, other, dst, color;
    Lumpy(gray, Gray, 31);
    Lumpy(other, Gray, 32, 33, 21);
    Operator::Divide(other, 2.0, other);
    double gain = 0, offset = 0, mean = 0;
    Histogram::Normalize(100, 400, gray, dst, gain, offset);
    EXPECT_NEAR(Histogram::Variance(dst, mean), 400, 12);
    EXPECT_NEAR(mean, 100, 1);
    EXPECT_NEAR(gain, 20 / std::sqrt(Histogram::Variance(gray, mean)), 1e-12);
    EXPECT_NEAR(offset, 100 - gain * mean, 1e-9);
    Histogram::Normalize(-1, -1, gray, dst, gain, offset);
    EXPECT_EQ(gain, 1);
    EXPECT_EQ(offset, 0);
    Histogram::Normalize(gray, other, dst, gain, offset);
    EXPECT_NEAR(Histogram::Mean(dst), Histogram::Mean(other), 1);
    Operator::Copy(9, gray);
    Histogram::Normalize(100, 400, gray, gray, gain, offset);
    EXPECT_EQ(gain, 0);
    EXPECT_EQ(gray.Row(0)[0], 100) << "a constant image takes the mean";

    Lumpy(color, Rgb, 33);
    double r = 0, g = 0, b = 0, offsets[3];
    Histogram::Normalize(60, 120, -1, 300, color, dst, gain, offsets[0], offsets[1], offsets[2]);
    const double blue = MeanOf(Channel(color, 2));
    EXPECT_NEAR(Histogram::Variance(dst, r, g, b), 300, 12);
    EXPECT_NEAR(r, 60, 1);
    EXPECT_NEAR(g, 120, 1);
    EXPECT_NEAR(b, blue, 1);
}

TEST_F(HistogramTest, LighterPixelsAreRedAndDarkerOnesBlue)
{
    Image a, b, dst;
    a.Set(5, 1, Gray);
    b.Set(5, 1, Gray);
    const int values[][2] = {{100, 84}, {100, 85}, {100, 116}, {100, 115}, {7, 7}};
    for (int x = 0; x < 5; x++) {
        a.Row(0)[x] = static_cast<std::uint8_t>(values[x][0]);
        b.Row(0)[x] = static_cast<std::uint8_t>(values[x][1]);
    }
    Histogram::ShowDifferences(a, b, dst);
    const RgbPixel expected[] = {{255, 0, 0}, {100, 100, 100}, {0, 0, 255}, {100, 100, 100}, {7, 7, 7}};
    for (int x = 0; x < 5; x++)
        EXPECT_EQ(dst.PixelRgb(x, 0), expected[x]) << x;
    // An image and its copy with less contrast and another brightness: fitted, they differ by little. The fit takes
    // the ratio of the variances as its gain, which is 1 where only the brightness differs.
    Image lighter;
    Operator::Add(30, a, lighter);
    Histogram::ShowDifferences(a, lighter, dst, 3, true);
    for (int x = 0; x < 5; x++)
        EXPECT_EQ(dst.PixelRgb(x, 0).Green, a.Row(0)[x]) << x;
    Histogram::ShowDifferences(a, b, b);
    EXPECT_EQ(b.Type, Rgb);
    EXPECT_EQ(b.PixelRgb(2, 0), expected[2]);
    Image colorA, colorB;
    Operator::Copy(a, colorA, Rgb);
    Operator::Copy(a, colorB, Rgb);
    colorB.PixelRgb(4, 0) = RgbPixel(40, 0, 0);
    Histogram::ShowDifferences(colorA, colorB, colorA);
    EXPECT_EQ(colorA.PixelRgb(4, 0), expected[2]);
    EXPECT_EQ(colorA.PixelRgb(1, 0), expected[1]);
}

TEST_F(HistogramTest, FittedDifferencesMayBeLargerThanAnyPixel)
{
    // The fit multiplies B by the ratio of the variances, some 2.6 thousand million.
    constexpr int size = 400;
    Image a, b, dst;
    a.Set(size, size, Gray);
    b.Set(size, size, Gray);
    Operator::Copy(0, a);
    a.Window(0, 0, size, size / 2);
    Operator::Copy(255, a);
    a.Window();
    Operator::Copy(100, b);
    b.PixelGray(7, 9) = 99;
    Histogram::ShowDifferences(a, b, dst, 16, true);
    EXPECT_EQ(dst.PixelRgb(7, 9), RgbPixel(255, 0, 0));
    EXPECT_EQ(dst.PixelRgb(8, 9), RgbPixel(0, 0, 255));
    Histogram::ShowDifferences(a, b, dst, MaxInt, true);
    EXPECT_EQ(dst.PixelRgb(7, 9), RgbPixel(255, 0, 0));
    EXPECT_EQ(dst.PixelRgb(8, 9), RgbPixel(255, 255, 255));
}

TEST_F(HistogramTest, ViewsKeepTheirPixelsUnderSharing)
{
    Image color, other, before;
    Lumpy(color, Rgb, 3);
    Lumpy(other, Rgb, 4);
    Operator::Copy(color, before);
    const std::function<void(Image&)> runs[] = {[](Image& i) { Histogram::ShowSaturation(i, i, 60, 150); },
                                                [&](Image& i) { Histogram::ShowDifferences(i, other, i); },
                                                [](Image& i) { Histogram::ShowNoise(i, i); }};
    for (const auto& run : runs) {
        Image apart, shared, kept;
        Operator::Copy(color, apart);
        Operator::Copy(color, shared);
        run(apart);
        Status::Shallow = true;
        kept.ShallowCopy(shared, true);
        run(shared);
        Status::Shallow = false;
        EXPECT_EQ(Histogram::CountDifferences(kept, before), 0);
        EXPECT_EQ(Histogram::CountDifferences(shared, apart), 0);
        EXPECT_GT(Histogram::CountDifferences(shared, kept), 0);
    }
}
