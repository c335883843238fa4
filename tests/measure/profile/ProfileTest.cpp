#include "measure/Profile.h"
#include "foundation/Status.h"
#include "image/Image.h"
#include "image/Operator.h"
#include "measure/Path.h"
#include "measure/fit/EdgeWalk.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <functional>
#include <limits>
#include <random>
#include <string>
#include <utility>
#include <vector>

using namespace Tesk;

namespace {

using Values = std::vector<int>;

class ProfileTest : public ::testing::Test
{
protected:
    void SetUp() override { Status::ErrorBehavior(IgnoreIt); }
    void TearDown() override { Status::Shallow = false; }
};

int ChannelsOf(PixelTypes type)
{
    return type == Rgb ? 3 : 1;
}

Values ValuesOf(const Profile& profile)
{
    const int n = profile.Length * ChannelsOf(profile.Type);
    return {profile.Samples(), profile.Samples() + n};
}

Profile Made(const Values& values)
{
    Profile profile;
    for (const int v : values)
        profile.Append(v);
    return profile;
}

/// A noisy image of odd extent, with a window at an odd place.
void Noisy(Image& image, PixelTypes type)
{
    image.Set(37, 29, type);
    std::mt19937 random(7);
    for (int y = 0; y < image.Height; y++)
        for (int i = 0; i < image.Width * ChannelsOf(type); i++)
            if (type == Gray16)
                image.Row<std::uint16_t>(y)[i] = static_cast<std::uint16_t>(random());
            else
                image.Row(y)[i] = static_cast<std::uint8_t>(random());
    image.Window(5, 3, 23, 19);
}

int Component(const Image& image, int x, int y, int c)
{
    if (image.Type == Gray16) return image.Row<std::uint16_t>(y)[x];
    return image.Type == Rgb ? image.Row(y)[3 * x + 2 - c] : image.Row(y)[x];
}

/// What each member of a family makes of the values across the breadth.
int Reduced(const std::string& family, const Values& v)
{
    const auto n = static_cast<double>(v.size());
    long long sum = 0, squares = 0;
    for (const int x : v) {
        sum += x;
        squares += static_cast<long long>(x) * x;
    }
    const auto whole = static_cast<long long>(v.size());
    const double variance = static_cast<double>(whole * squares - sum * sum) / n / n;
    if (family == "Sum") return static_cast<int>(sum);
    if (family == "Average") return static_cast<int>(sum / whole);
    if (family == "Variance") return static_cast<int>(variance);
    if (family == "RMS") return static_cast<int>(std::sqrt(variance));
    const auto [least, most] = std::minmax_element(v.begin(), v.end());
    return family == "Maximum" ? *most : family == "Minimum" ? *least : *most - *least;
}

/// A point of a bilinear surface, in another order of the products than the library's.
double Bilinear(const Image& image, double x, double y, int c)
{
    const auto split = [](double v, int n, int& at) {
        at = static_cast<int>(std::floor(v));
        if (at >= n - 1) {
            at = n - 2;
            return 1.0;
        }
        if (at < 0) {
            at = 0;
            return 0.0;
        }
        return v - at;
    };
    int ix = 0, iy = 0;
    const double fx = split(x, image.Width, ix), fy = split(y, image.Height, iy);
    return (1 - fx) * (1 - fy) * Component(image, ix, iy, c) + fx * (1 - fy) * Component(image, ix + 1, iy, c) +
           (1 - fx) * fy * Component(image, ix, iy + 1, c) + fx * fy * Component(image, ix + 1, iy + 1, c);
}

} // namespace

TEST_F(ProfileTest, RowsAndColumnsAreReducedAcrossTheBreadth)
{
    struct Case
    {
        const char* family;
        std::function<void(Profile&, const Image&)> row, column;
        int at, breadth, scale;
    };
    const Case cases[] = {
        {"Sum", [](auto& p, auto& i) { p.RowGet(4, i); }, [](auto& p, auto& i) { p.ColumnGet(4, i); }, 4, 1, 1},
        {"Sum", [](auto& p, auto& i) { p.RowAdd(2, 7, i, false); },
         [](auto& p, auto& i) { p.ColumnAdd(2, 7, i, false); }, 2, 7, 7},
        {"Average", [](auto& p, auto& i) { p.RowAdd(0, 19, i); }, [](auto& p, auto& i) { p.ColumnAdd(0, 19, i); }, 0,
         19, 1},
        {"Variance", [](auto& p, auto& i) { p.RowVariance(3, 5, i, false); },
         [](auto& p, auto& i) { p.ColumnVariance(3, 5, i, false); }, 3, 5, 1},
        {"RMS", [](auto& p, auto& i) { p.RowVariance(3, 5, i); }, [](auto& p, auto& i) { p.ColumnVariance(3, 5, i); },
         3, 5, 1},
        {"Maximum", [](auto& p, auto& i) { p.RowMaximize(16, 3, i); },
         [](auto& p, auto& i) { p.ColumnMaximize(16, 3, i); }, 16, 3, 1},
        {"Minimum", [](auto& p, auto& i) { p.RowMinimize(1, 4, i); },
         [](auto& p, auto& i) { p.ColumnMinimize(1, 4, i); }, 1, 4, 1},
        {"Range", [](auto& p, auto& i) { p.RowRange(1, 4, i); }, [](auto& p, auto& i) { p.ColumnRange(1, 4, i); }, 1, 4,
         1},
    };
    for (const PixelTypes type : {Gray, Gray16, Rgb}) {
        Image image;
        Noisy(image, type);
        for (const auto& [family, row, column, at, breadth, scale] : cases)
            for (const bool rows : {true, false}) {
                Profile profile;
                (rows ? row : column)(profile, image);
                ASSERT_EQ(Status::Error().Code, NoError) << Status::AsciiError();
                Values expected;
                for (int i = 0; i < (rows ? image.Width : image.Height); i++)
                    for (int c = 0; c < ChannelsOf(type); c++) {
                        Values across;
                        for (int k = 0; k < breadth; k++)
                            across.push_back(rows ? Component(image, i, at + k, c) : Component(image, at + k, i, c));
                        expected.push_back(Reduced(family, across));
                    }
                EXPECT_EQ(ValuesOf(profile), expected) << family << ' ' << type << ' ' << rows;
                EXPECT_EQ(profile.Scale, scale) << family;
                EXPECT_EQ(profile.Type, type);
            }
    }
}

TEST_F(ProfileTest, LinesAreSampledAtStepsOfOnePixel)
{
    const XY ends[][2] = {{{1.5, 2.25}, {17.3, 11.9}}, {{20, 17}, {2, 3}}, {{-6, 4}, {30, 4.5}}, {{22, 18}, {24, 40}}};
    for (const PixelTypes type : {Gray, Gray16, Rgb}) {
        Image image;
        Noisy(image, type);
        for (const auto& [beg, end] : ends) {
            const double length = std::hypot(end.X - beg.X, end.Y - beg.Y);
            const double ux = (end.X - beg.X) / length, uy = (end.Y - beg.Y) / length;
            Profile near, between, across;
            near.LineGet(beg, end, image, false);
            between.LineGet(beg, end, image);
            across.LineRange(beg, end, 4, image, false);
            ASSERT_EQ(near.Length, static_cast<int>(length));
            ASSERT_EQ(between.Length, near.Length);
            const auto held = [](double v, int n) {
                const int at = static_cast<int>(std::trunc(v + 0.5));
                return at < 0 ? 0 : at >= n ? n - 1 : at;
            };
            const auto nearest = [&](double x, double y, int c) {
                return Component(image, held(x, image.Width), held(y, image.Height), c);
            };
            for (int i = 0; i < near.Length; i++)
                for (int c = 0; c < ChannelsOf(type); c++) {
                    const double x = beg.X + i * ux, y = beg.Y + i * uy;
                    EXPECT_EQ(near.Sample(i, c), nearest(x, y, c));
                    // Different rounding may differ by one where the surface stands at a whole number.
                    EXPECT_NEAR(between.Sample(i, c), Bilinear(image, x, y, c) - 0.5, 0.5 + 1e-6);
                    Values values;
                    for (const double aside : {-1.5, -0.5, 0.5, 1.5})
                        values.push_back(nearest(x - aside * uy, y + aside * ux, c));
                    EXPECT_EQ(across.Sample(i, c), Reduced("Range", values));
                }
        }
    }
}

TEST_F(ProfileTest, TheLineFamilyAlongARowIsTheRowFamily)
{
    Image image;
    Noisy(image, Gray);
    const XY beg(0, 6), end(23, 6);
    Profile line, row;
    const auto same = [&] {
        ASSERT_EQ(line.Length, row.Length);
        EXPECT_EQ(ValuesOf(line), ValuesOf(row));
        EXPECT_EQ(line.Scale, row.Scale);
    };
    line.LineAdd(beg, end, 5, image, false), row.RowAdd(4, 5, image, false), same();
    line.LineAdd(beg, end, 5, image), row.RowAdd(4, 5, image), same();
    line.LineVariance(beg, end, 5, image), row.RowVariance(4, 5, image), same();
    line.LineMaximize(beg, end, 5, image), row.RowMaximize(4, 5, image), same();
    line.LineMinimize(beg, end, 5, image, false), row.RowMinimize(4, 5, image), same();
    EXPECT_EQ(line.Source.Kind, ProfileSource::OfLine);
    EXPECT_EQ(row.Source.Row, 4);
    EXPECT_EQ(row.Source.X, 5);
}

TEST_F(ProfileTest, AConstantImageGivesItsValueAtEveryFraction)
{
    Image image;
    image.Set(1, 9, Gray16);
    for (int y = 0; y < 9; y++)
        image.Row<std::uint16_t>(y)[0] = 40001;
    Profile profile;
    profile.LineGet(XY(-3.3, -1.7), XY(7.1, 9.9), image);
    for (int i = 0; i < profile.Length; i++)
        EXPECT_EQ(profile.Sample(i), 40001);
}

TEST_F(ProfileTest, ACurveIsSampledAtItsVertices)
{
    Image image;
    Noisy(image, Rgb);
    Path path;
    for (const Site site : {Site(3, 4), Site(-5, 7), Site(1000, 1000)})
        path.Append(site);
    Profile profile;
    profile.CurveGet(path, image);
    Values expected;
    for (const auto& [x, y] : {std::pair{3, 4}, {0, 7}, {22, 18}})
        for (int c = 0; c < 3; c++)
            expected.push_back(Component(image, x, y, c));
    EXPECT_EQ(ValuesOf(profile), expected);
    profile.CurveGet(Path(), image);
    EXPECT_EQ(Status::Error().Code, VoidObject);
    EXPECT_EQ(profile.Length, 3);
}

TEST_F(ProfileTest, SamplingRefusesWhatLiesOutside)
{
    Image image, deep, empty;
    Noisy(image, Gray);
    deep.Set(4, 4, Gray32);
    Profile profile = Made({1, 2});
    const auto refused = [&](int code, const wchar_t* message) {
        EXPECT_EQ(Status::Error().Code, code);
        EXPECT_STREQ(Status::UnicodeError(), message);
        EXPECT_EQ(ValuesOf(profile), (Values{1, 2}));
    };
    profile.RowGet(19, image);
    refused(OutOfRange, L"Ordinate (19) must be in the range [0..18]");
    EXPECT_STREQ(Status::AsciiFunction(), "Tesk::Profile::RowGet");
    profile.RowAdd(17, 3, image);
    refused(OutOfRange, L"Ordinate plus height (17 + 3) must be in the range [0..19]");
    profile.ColumnGet(-1, image);
    refused(OutOfRange, L"Abscissa (-1) must be in the range [0..22]");
    profile.ColumnVariance(1, std::numeric_limits<int>::max(), image);
    refused(OutOfRange, L"Abscissa plus width (1 + 2147483647) must be in the range [0..23]");
    profile.ColumnRange(1, 0, image);
    refused(OutOfRange, L"The breadth (0) must be positive");
    profile.LineAdd(XY(0, 0), XY(9, 9), -1, image);
    refused(OutOfRange, L"The breadth (-1) must be positive");
    profile.LineRange(XY(0, 0), XY(9, 9), 65537, image);
    refused(OutOfRange, L"The breadth (65537) must be in the range [1..65536]");
    profile.LineAdd(XY(0, 0), XY(1e9, 0), 2, image);
    refused(CannotAllocate, L"Cannot allocate the profile Buffer");
    profile.LineGet(XY(0, 0), XY(9, 9), deep);
    refused(UnsupportedType, L"The image type (Gray32) is not supported for this operation");
    profile.LineGet(XY(0, 0), XY(1e300, 9), image);
    refused(CannotAllocate, L"Cannot allocate the profile Buffer");
    profile.RowGet(0, empty);
    refused(VoidObject, L"Void source or destination image");
    profile.LineGet(XY(3, 3), XY(3.5, 3), image);
    EXPECT_STREQ(Status::UnicodeError(), L"This profile is too short (0.500 pixels)");
    EXPECT_EQ(profile.Length, 0);
    EXPECT_EQ(profile.StoreLength, 0);
    profile.LineGet(XY(std::nan(""), 3), XY(3.5, 3), image);
    EXPECT_EQ(Status::Error().Code, OutOfRange);
}

TEST_F(ProfileTest, SamplingLeavesASharedProfileToTheOthers)
{
    Image image;
    Noisy(image, Gray);
    Profile profile = Made(Values(23, 7)), shared;
    for (const bool shallow : {false, true}) {
        Status::Shallow = shallow;
        shared.ShallowCopy(profile, true);
        profile.RowGet(4, image);
        EXPECT_EQ(profile.Sample(2), Component(image, 2, 4, 0));
        EXPECT_EQ(ValuesOf(shared), Values(23, 7)) << shallow;
        profile.ShallowCopy(shared, true);
    }
}

TEST_F(ProfileTest, StatisticsOfAWindow)
{
    Profile profile = Made({1000, 5, 1, 9, 7, 3, -1000});
    EXPECT_TRUE(profile.Window(1, 5));
    EXPECT_EQ(profile.Median(), 5);
    for (const auto& [percent, value] :
         {std::pair{0.0, 1}, {0.2, 3}, {0.59, 5}, {0.99, 9}, {1.0, 9}, {-3.0, 1}, {1e300, 9}, {std::nan(""), 1}})
        EXPECT_EQ(profile.Quantile(percent), value) << percent;
    EXPECT_EQ(profile.Mean(), 5);
    EXPECT_EQ(profile.TrimmedMean(0), 4) << "the largest is left out";
    EXPECT_EQ(profile.TrimmedMean(0.4), 4) << "3 and 5";
    EXPECT_EQ(profile.TrimmedMean(0.8), 0) << "nothing is left";
    EXPECT_EQ(profile.TrimmedMean(-1e9), 4);
    int least = 0, most = 0;
    profile.Range(least, most);
    EXPECT_EQ(least, 1);
    EXPECT_EQ(most, 9);
    double mean = 0;
    EXPECT_EQ(profile.Variance(mean), 8);
    EXPECT_EQ(mean, 5);
}

TEST_F(ProfileTest, StatisticsRefuseEmptyAndColouredProfiles)
{
    Profile empty, color;
    color.Append(1, 2, 3);
    int least = -7, most = -7;
    double x = -7;
    for (const auto& [profile, code] : {std::pair{&empty, VoidObject}, {&color, UnsupportedType}}) {
        const std::function<void()> methods[] = {[&, p = profile] { p->Quantile(0.5); },
                                                 [&, p = profile] { p->Median(); },
                                                 [&, p = profile] { p->Mean(); },
                                                 [&, p = profile] { p->TrimmedMean(0); },
                                                 [&, p = profile] { p->Range(least, most); },
                                                 [&, p = profile] { p->Variance(x); },
                                                 [&, p = profile] { p->EdgeDetect(1, 0, Both, 0, x); },
                                                 [&, p = profile] { p->LocalExtrema(Both, *p); },
                                                 [&, p = profile] { Profile::GaussLowPass(3, *p, *p); }};
        for (const auto& method : methods) {
            Status::Error().Code = NoError;
            method();
            EXPECT_EQ(Status::Error().Code, code);
            EXPECT_STREQ(Status::UnicodeError(), code == VoidObject
                                                     ? L"The profile is empty"
                                                     : L"Profile Type (Rgb) not supported for this operation");
        }
    }
    EXPECT_EQ(least, -7);
    EXPECT_EQ(x, -7);
}

TEST_F(ProfileTest, BoxAndGaussFiltersAreRunningMeans)
{
    const auto box = [](const Values& v, int r) {
        Values out;
        const int n = static_cast<int>(v.size());
        for (int i = 0; i < n; i++) {
            long long sum = 0;
            for (int k = i - r; k <= i + r; k++)
                sum += v[static_cast<std::size_t>(std::clamp(k, 0, n - 1))];
            out.push_back(static_cast<int>(sum / (2 * r + 1)));
        }
        return out;
    };
    std::mt19937 random(3);
    for (const int n : {1, 2, 5, 33})
        for (const int length : {1, 3, 5, 7, 9, 35, 201}) {
            Values v;
            for (int i = 0; i < n; i++)
                v.push_back(static_cast<int>(random() % 2000) - 1000);
            const Profile source = Made(v);
            const int h = length / 2, r1 = (h + 2) / 3, r2 = (h - r1 + 1) / 2;
            const Values mean = box(v, h), gauss = box(box(box(v, r1), r2), h - r1 - r2);
            Profile out;
            Profile::BoxLowPass(length, source, out);
            EXPECT_EQ(ValuesOf(out), mean) << n << ' ' << length;
            Profile::GaussLowPass(length, source, out);
            EXPECT_EQ(ValuesOf(out), gauss) << n << ' ' << length;
            Profile::BoxHighPass(length, source, out);
            for (int i = 0; i < n; i++)
                EXPECT_EQ(out.Sample(i), v[static_cast<std::size_t>(i)] - mean[static_cast<std::size_t>(i)]);
            out = source;
            Profile::GaussHighPass(length, out, out);
            for (int i = 0; i < n; i++)
                EXPECT_EQ(out.Sample(i), v[static_cast<std::size_t>(i)] - gauss[static_cast<std::size_t>(i)]);
        }
    Profile constant = Made({std::numeric_limits<int>::max(), std::numeric_limits<int>::max()});
    Profile::BoxLowPass(std::numeric_limits<int>::max(), constant, constant);
    EXPECT_EQ(constant.Sample(1), std::numeric_limits<int>::max());
    for (const int length : {0, -3, 4}) {
        Profile::BoxLowPass(length, constant, constant);
        EXPECT_EQ(Status::Error().Code, OutOfRange);
    }
    EXPECT_STREQ(Status::UnicodeError(), L"The filter length (4) must be a positive odd number");
}

TEST_F(ProfileTest, SumsAndDifferencesChannelByChannel)
{
    Profile out;
    Profile::Derive(Made({4, 9, 7, 7}), out);
    EXPECT_EQ(ValuesOf(out), (Values{10, 3, -2, 0}));
    Profile::Derive(Made({4, 9}), out);
    EXPECT_EQ(ValuesOf(out), (Values{10, 10}));
    Profile::Derive(Made({4}), out);
    EXPECT_EQ(ValuesOf(out), (Values{0}));
    Profile::Integrate(Made({std::numeric_limits<int>::max(), 1, -5}), out);
    EXPECT_EQ(ValuesOf(out), (Values{2147483647, 2147483647, 2147483643}));
    Profile color;
    color.Append(1, 10, 100);
    color.Append(2, 20, 200);
    Profile::Integrate(color, color);
    EXPECT_EQ(ValuesOf(color), (Values{1, 10, 100, 3, 30, 300}));
}

TEST_F(ProfileTest, AFilterInPlaceWritesTheWindowAlone)
{
    Profile profile = Made({1, 2, 4, 8, 16});
    profile.Window(1, 3);
    Profile apart, shared;
    shared.ShallowCopy(profile, true);
    Status::Shallow = true;
    Profile::Integrate(profile, apart);
    EXPECT_EQ(ValuesOf(apart), (Values{2, 6, 14}));
    EXPECT_FALSE(apart.HasWindow());
    Profile::Integrate(profile, profile);
    EXPECT_EQ(ValuesOf(profile), ValuesOf(apart));
    EXPECT_EQ(ValuesOf(shared), (Values{2, 4, 8})) << "another sharer keeps its samples";
    profile.Window();
    EXPECT_EQ(ValuesOf(profile), (Values{1, 2, 6, 14, 16}));
    // A destination that is another window of the source's samples.
    Profile other;
    other.ShallowCopy(profile, true);
    profile.Window(0, 4);
    other.Window(1, 4);
    Profile::Integrate(profile, other);
    EXPECT_EQ(ValuesOf(other), (Values{1, 3, 9, 23}));
    EXPECT_EQ(ValuesOf(profile), (Values{1, 2, 6, 14}));
}

TEST_F(ProfileTest, EdgesAreWhereTheMiddleLevelIsCrossed)
{
    Values ramp;
    for (int i = 0; i <= 100; i++)
        ramp.push_back(i);
    Values bump = ramp;
    bump.insert(bump.end(), ramp.rbegin(), ramp.rend());
    struct Case
    {
        const char* what;
        Values signal;
        int step, noise;
        Polarities polarity;
        Values edges;
    };
    const Case cases[] = {
        {"a ramp", ramp, 50, 0, Both, {50}},
        {"a ramp asked for falls", ramp, 50, 0, Falling, {}},
        {"up and down", bump, 50, 0, Both, {50, 151}},
        {"up and down, falls alone", bump, 50, 0, Falling, {151}},
        {"a dip of the noise", {0, 20, 18, 40}, 30, 2, Both, {1}},
        {"a dip of more", {0, 20, 17, 40}, 20, 2, Both, {1, 3}},
        {"a plateau peak", {0, 10, 10, 10, 0}, 5, 0, Both, {1, 4}},
        {"an odd middle level", {0, 2, 3, 5}, 5, 0, Both, {2}},
        {"flat, with no minimum", {5, 5, 5}, 0, 0, Both, {}},
        {"falling first, with no minimum", {9, 4}, 0, 0, Both, {1}},
        {"a negative noise counts as none", {1, 3, 2, 4}, 1, -9, Both, {1, 2, 3}},
        {"one sample", {5}, 0, 0, Both, {}},
        {"the extremes of an int", {INT32_MIN, INT32_MAX, INT32_MIN}, 1, 0, Both, {1, 2}},
    };
    for (const auto& [what, signal, step, noise, polarity, edges] : cases) {
        Profile list = Made({1, 2, 3});
        Made(signal).EdgeDetect(step, noise, polarity, list);
        EXPECT_EQ(ValuesOf(list), edges) << what;
        EXPECT_EQ(list.Type, Int) << what;
    }
}

TEST_F(ProfileTest, OneEdgeIsSelected)
{
    // Three edges: up 60 in 6, down 50 in 2, up 40 in 1.
    const Profile profile = Made({0, 10, 20, 30, 40, 50, 60, 35, 10, 50});
    struct Case
    {
        const char* what;
        int selection;
        double x;
    };
    for (const auto& [what, selection, x] : {Case{"slope", BestSlope, 8.5},
                                             {"step", BestStep, 3},
                                             {"span", BestSpan, 3},
                                             {"centre", OverCenter, 3},
                                             {"first", 0, 3},
                                             {"second", 1, 7},
                                             {"third", 2, 8.5},
                                             {"fourth", 3, -1},
                                             {"last", -1, 8.5},
                                             {"third from the end", -3, 3},
                                             {"beyond the first", -5, -1},
                                             {"far beyond", -1000000, -1}}) {
        double found = 99;
        EXPECT_EQ(profile.EdgeDetect(30, 0, Both, selection, found), x >= 0) << what;
        EXPECT_DOUBLE_EQ(found, x) << what;
    }
    double x = 0;
    Made({0, 1, 100, 101}).EdgeDetect(50, 0, Raising, 0, x);
    EXPECT_DOUBLE_EQ(x, 1.5) << "between the samples on either side of 50.5";
    profiles::EdgeStep edge{};
    EXPECT_TRUE(profiles::SelectEdge(profile.Samples(), profile.Length, 30, 0, Falling, -1, edge));
    EXPECT_EQ(edge.Step(), 50);
    EXPECT_EQ(edge.Span(), 2);
    EXPECT_EQ(edge.Polarity(), Falling);
}

TEST_F(ProfileTest, EdgesAndExtremaAreThoseOfTheWindow)
{
    // Before the window a higher peak and a deeper valley.
    Profile profile = Made({500, -500, 0, 10, 20, 10, 0, -500, 500}), list;
    profile.Window(2, 5);
    profile.EdgeDetect(15, 0, Both, list);
    EXPECT_EQ(ValuesOf(list), (Values{1, 3}));
    double x = 0;
    EXPECT_TRUE(profile.EdgeDetect(15, 0, Both, BestStep, x));
    EXPECT_DOUBLE_EQ(x, 1);
    EXPECT_TRUE(profile.EdgeDetect(15, 0, Both, -1, x));
    EXPECT_DOUBLE_EQ(x, 3);
    profile.LocalExtrema(Both, list);
    EXPECT_EQ(ValuesOf(list), (Values{2}));
}

TEST_F(ProfileTest, LocalExtremaAreStrictTowardsTheLeft)
{
    Profile profile = Made({5, 9, 9, 2, 2, 7, 8}), list;
    profile.LocalExtrema(Both, list);
    EXPECT_EQ(ValuesOf(list), (Values{1, 3}));
    profile.LocalExtrema(Falling, list);
    EXPECT_EQ(ValuesOf(list), (Values{3}));
    profile.Window(1, 2);
    profile.LocalExtrema(Both, list);
    EXPECT_EQ(list.Length, 0);
    profile.Window();
    profile.LocalExtrema(Raising, profile);
    EXPECT_EQ(ValuesOf(profile), (Values{1})) << "into itself";
}

TEST_F(ProfileTest, WindowsAreClippedToTheStore)
{
    Profile profile = Made({1, 2, 3, 4, 5});
    struct Case
    {
        int from, length;
        bool inside;
        int i, n;
    };
    for (const auto& [from, length, inside, i, n] : {Case{1, 3, true, 1, 3},
                                                     {3, 9, false, 3, 2},
                                                     {-2, 4, false, 0, 2},
                                                     {2, 0, true, 0, 2},
                                                     {7, 2, false, 0, 2},
                                                     {1, std::numeric_limits<int>::max(), false, 1, 4},
                                                     {std::numeric_limits<int>::min(), 5, false, 1, 4}}) {
        EXPECT_EQ(profile.Window(from, length), inside) << from;
        EXPECT_EQ(profile.I, i) << from;
        EXPECT_EQ(profile.Length, n) << from;
    }
    EXPECT_TRUE(profile.HasWindow());
    EXPECT_EQ(profile.Sample(0), 2);
    profile.Append(6);
    EXPECT_EQ(profile.Length, 5) << "a window at the end grows with the store";
    profile.Window(0, 2);
    profile.Append(7);
    EXPECT_EQ(profile.Length, 2);
    EXPECT_EQ(profile.StoreLength, 7);

    Profile shadow;
    shadow.ShallowCopy(profile, true);
    EXPECT_EQ(shadow.Length, 2);
    EXPECT_EQ(shadow.First, profile.First);
    shadow.Window(2, 3);
    Profile larger;
    larger.Set(14, Gray);
    shadow.ShallowCopy(larger, false);
    EXPECT_EQ(shadow.I, 4);
    EXPECT_EQ(shadow.Length, 6);
}

TEST_F(ProfileTest, SamplesAreReachedWithinTheirRange)
{
    const auto refused = [](int& sample, int code, const wchar_t* message) {
        sample = 99;
        EXPECT_EQ(Status::Error().Code, code);
        EXPECT_STREQ(Status::UnicodeError(), message);
    };
    Profile gray = Made({4, 5}), color, opaque, empty;
    color.Append(1, 2, 3);
    opaque.Set(1, Rgba);
    opaque.Sample(0, 3) = 7;
    EXPECT_EQ(Status::Error().Code, NoError);
    color.Sample(0, 2) = 30;
    EXPECT_EQ(ValuesOf(color), (Values{1, 2, 30}));
    refused(gray.Sample(2), OutOfRange, L"The element index (2) is out of the profile range [0..1]");
    refused(gray.Sample(-1), OutOfRange, L"The element index (-1) is out of the profile range [0..1]");
    refused(gray.Sample(0, 1), OutOfRange, L"The component index (1) must be 0 for a grayscale profile");
    refused(color.Sample(0), IncompatibleType, L"The profile Type is Rgb, grayscale was expected");
    refused(color.Sample(0, 3), OutOfRange,
            L"Sample component index (3) must be in the range [0..2] for an Rgb profile");
    refused(opaque.Sample(0, 4), OutOfRange,
            L"Sample component index (4) must be in the range [0..3] for an Rgba profile");
    refused(empty.Sample(0), VoidObject, L"The profile is empty");
    gray.Append(1, 2, 3);
    EXPECT_STREQ(Status::UnicodeError(), L"Cannot append a color element to a Gray profile");
    color.Append(1);
    EXPECT_EQ(Status::Error().Code, IncompatibleType);
    EXPECT_STREQ(Status::UnicodeError(), L"Cannot append a grayscale element to a Rgb profile");
    EXPECT_EQ(ValuesOf(gray), (Values{4, 5}));

    empty.Set(color, Gray16);
    EXPECT_EQ(empty.Type, Gray16);
    EXPECT_EQ(empty.Length, 1);
    empty.Clear();
    EXPECT_EQ(empty.StoreLength, 0);
    EXPECT_EQ(empty.Type, Gray16);
    empty.Set(5, DbleXY);
    EXPECT_EQ(Status::Error().Code, UnsupportedType);
    empty.Set(-1, Gray);
    EXPECT_EQ(Status::Error().Code, OutOfRange);
}

TEST_F(ProfileTest, CopiesHaveSamplesOfTheirOwn)
{
    Profile a = Made({1, 2, 3});
    a.Window(1, 2);
    Profile b = a, shared;
    shared.ShallowCopy(a, true);
    b.Sample(0) = 20;
    EXPECT_EQ(a.Sample(0), 2);
    shared.Append(4);
    EXPECT_EQ(a.StoreLength, 3);
    EXPECT_EQ(ValuesOf(shared), (Values{2, 3, 4}));
    Profile moved = std::move(b);
    EXPECT_EQ(ValuesOf(moved), (Values{20, 3}));

    Path path;
    path.Append(1, 2);
    Path copy = path, sharing;
    sharing.ShallowCopy(path, true);
    sharing.Append(3, 4);
    copy.Vertex(0) = Site(9, 9);
    EXPECT_EQ(path.Length, 1);
    EXPECT_EQ(path.Vertex(0).X, 1);
    path.Vertex(1) = Site(5, 5);
    EXPECT_STREQ(Status::UnicodeError(), L"The element index (1) is out of the path range [0..0]");
    path.Clear();
    path.Vertex(0);
    EXPECT_EQ(Status::Error().Code, VoidObject);
    EXPECT_EQ(sharing.Length, 2);
    EXPECT_EQ(sharing.Vertex(1).Y, 4);
}
