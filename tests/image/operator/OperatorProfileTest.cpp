#include "foundation/Graph.h"
#include "foundation/RecordingTarget.h"
#include "foundation/Status.h"
#include "image/Image.h"
#include "image/Operator.h"
#include "measure/Profile.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <functional>
#include <vector>

using namespace Tesk;

namespace {

class OperatorProfileTest : public ::testing::Test
{
protected:
    void SetUp() override { Status::ErrorBehavior(IgnoreIt); }
    void TearDown() override
    {
        Status::Shallow = false;
        Operator::GrayDepth = 16;
        Graph::DrawTo(nullptr);
    }
};

template <typename T>
Profile Made(PixelTypes type, const std::vector<T>& values)
{
    Profile profile;
    profile.Set(static_cast<int>(values.size()), type);
    std::copy(values.begin(), values.end(), profile.Samples<T>());
    return profile;
}

template <typename T>
std::vector<T> ValuesOf(const Profile& profile)
{
    return {profile.Samples<T>(), profile.Samples<T>() + profile.Length};
}

} // namespace

TEST_F(OperatorProfileTest, EachSampleInTheArithmeticOfItsType)
{
    const std::vector<int> a = {7, -7, 2000000000, 0}, b = {2, 2, 2000000000, -3};
    const std::vector<double> da = {7, -7, 2e9, 0}, db = {2, 2, 2e9, -3};
    struct Case
    {
        const char* what;
        std::function<void(const Profile&, const Profile&, Profile&)> call;
        std::vector<int> whole;
        std::vector<double> real;
    };
    const Case cases[] = {
        {"copy", [](auto& s, auto&, auto& d) { d = s, Operator::Copy(2.7, d); }, {2, 2, 2, 2}, {2.7, 2.7, 2.7, 2.7}},
        {"c + a",
         [](auto& s, auto&, auto& d) { Operator::Add(0.5, s, d); },
         {7, -6, 2000000000, 0},
         {7.5, -6.5, 2e9 + 0.5, 0.5}},
        {"a + b", [](auto& s, auto& t, auto& d) { Operator::Add(s, t, d); }, {9, -5, -294967296, -3}, {9, -5, 4e9, -3}},
        {"c - a",
         [](auto& s, auto&, auto& d) { Operator::Subtract(1, s, d); },
         {-6, 8, -1999999999, 1},
         {-6, 8, 1 - 2e9, 1}},
        {"a - c",
         [](auto& s, auto&, auto& d) { Operator::Subtract(s, 1, d); },
         {6, -8, 1999999999, -1},
         {6, -8, 2e9 - 1, -1}},
        {"a - b", [](auto& s, auto& t, auto& d) { Operator::Subtract(s, t, d); }, {5, -9, 0, 3}, {5, -9, 0, 3}},
        {"c * a",
         [](auto& s, auto&, auto& d) { Operator::Multiply(1.5, s, d); },
         {10, -10, 2147483647, 0},
         {10.5, -10.5, 3e9, 0}},
        {"a * b",
         [](auto& s, auto& t, auto& d) { Operator::Multiply(s, t, d); },
         {14, -14, -1651507200, 0},
         {14, -14, 4e18, 0}},
        {"a / c",
         [](auto& s, auto&, auto& d) { Operator::Divide(s, 2, d); },
         {3, -3, 1000000000, 0},
         {3.5, -3.5, 1e9, 0}},
        {"c / b", [](auto&, auto& t, auto& d) { Operator::Divide(9, t, d); }, {4, 4, 0, -3}, {4.5, 4.5, 4.5e-9, -3}},
        {"a / b", [](auto& s, auto& t, auto& d) { Operator::Divide(s, t, d); }, {3, -3, 1, 0}, {3.5, -3.5, 1, 0}},
        {"max c",
         [](auto& s, auto&, auto& d) { Operator::Maximize(1.5, s, d); },
         {7, 1, 2000000000, 1},
         {7, 1.5, 2e9, 1.5}},
        {"max", [](auto& s, auto& t, auto& d) { Operator::Maximize(s, t, d); }, {7, 2, 2000000000, 0}, {7, 2, 2e9, 0}},
        {"min c", [](auto& s, auto&, auto& d) { Operator::Minimize(1.5, s, d); }, {1, -7, 1, 0}, {1.5, -7, 1.5, 0}},
        {"min",
         [](auto& s, auto& t, auto& d) { Operator::Minimize(s, t, d); },
         {2, -7, 2000000000, -3},
         {2, -7, 2e9, -3}},
    };
    for (const auto& [what, call, whole, real] : cases) {
        for (const PixelTypes type : {Gray, Gray16, Gray32, Int}) {
            Profile s = Made(type, a), t = Made(type, b), d;
            call(s, t, d);
            ASSERT_EQ(Status::Error().Code, NoError) << what << Status::AsciiError();
            EXPECT_EQ(ValuesOf<int>(d), whole) << what;
            EXPECT_EQ(d.Type, type);
            call(s, t, t);
            EXPECT_EQ(ValuesOf<int>(t), whole) << what << " into the second";
            t = Made(type, b);
            call(s, t, s);
            EXPECT_EQ(ValuesOf<int>(s), whole) << what << " into the first";
        }
        Profile d;
        call(Made(Dble, da), Made(Dble, db), d);
        for (std::size_t i = 0; i < real.size(); i++)
            EXPECT_DOUBLE_EQ(d.Samples<double>()[i], real[i]) << what << ' ' << i;
        std::vector<float> fa(da.begin(), da.end()), fb(db.begin(), db.end());
        call(Made(Float, fa), Made(Float, fb), d);
        for (std::size_t i = 0; i < real.size(); i++)
            EXPECT_FLOAT_EQ(d.Samples<float>()[i], static_cast<float>(real[i])) << what << ' ' << i;
    }
}

TEST_F(OperatorProfileTest, OverlappingWindowsDoNotDisturbEachOther)
{
    Profile p = Made<int>(Gray, {1, 2, 3, 4}), q;
    q.ShallowCopy(p, true);
    p.Window(0, 3);
    q.Window(1, 3);
    Operator::Add(p, q, p);
    EXPECT_EQ(ValuesOf<int>(p), (std::vector<int>{3, 5, 7}));
    Profile shared;
    Status::Shallow = true;
    shared.ShallowCopy(p, true);
    Operator::Add(1, p, p);
    EXPECT_EQ(ValuesOf<int>(p), (std::vector<int>{4, 6, 8}));
    EXPECT_EQ(ValuesOf<int>(shared), (std::vector<int>{3, 5, 7}));
}

TEST_F(OperatorProfileTest, RefusalsLeaveTheDestination)
{
    Profile gray = Made<int>(Gray, {4, 0}), wide = Made<int>(Gray16, {4, 1}), longer = Made<int>(Gray, {1, 2, 3});
    Profile color, none, dst = Made<int>(Gray, {99});
    color.Append(1, 2, 3);
    struct Case
    {
        std::function<void()> call;
        int code;
        const wchar_t* message;
    };
    const Case cases[] = {
        {[&] { Operator::Add(none, gray, dst); }, VoidObject, L"Void source profile"},
        {[&] { Operator::Copy(1, none); }, VoidObject, L"Void source profile"},
        {[&] { Operator::Add(gray, wide, dst); }, IncompatibleType,
         L"Incompatible source profile Types, Gray vs. Gray16"},
        {[&] { Operator::Add(gray, longer, dst); }, IncompatibleSize,
         L"Incompatible source profile sizes, (2) vs. (3)"},
        {[&] { Operator::Multiply(2, color, dst); }, UnsupportedType,
         L"Profile Type (Rgb) not supported for this operation"},
        {[&] { Operator::Divide(gray, 0, dst); }, OutOfRange, L"Cannot divide by zero"},
        {[&] { Operator::Divide(1, gray, dst); }, OutOfRange, L"Cannot divide by zero"},
        {[&] { Operator::Divide(gray, gray, dst); }, OutOfRange, L"Cannot divide by zero"},
    };
    for (const auto& [call, code, message] : cases) {
        call();
        EXPECT_EQ(Status::Error().Code, code);
        EXPECT_STREQ(Status::UnicodeError(), message);
        EXPECT_EQ(ValuesOf<int>(dst), (std::vector<int>{99}));
    }
}

TEST_F(OperatorProfileTest, PixelsGoThroughTables)
{
    Operator::GrayDepth = 9;
    Profile gray, color, wide;
    for (int i = 0; i < 256; i++) {
        gray.Append(255 - i);
        color.Append(i, 255 - i, i / 2);
    }
    gray.Sample(5) = ~0;
    wide.Set(512, Gray16);
    for (int i = 0; i < 512; i++)
        wide.Sample(i) = 7 * i;
    Image bytes, words, pixels, dst;
    bytes.Set(19, 5, Gray);
    words.Set(19, 5, Gray16);
    pixels.Set(19, 5, Rgb);
    for (int y = 0; y < 5; y++)
        for (int x = 0; x < 19; x++) {
            const int v = y * 19 + x;
            bytes.Row(y)[x] = static_cast<std::uint8_t>(v);
            words.Row<std::uint16_t>(y)[x] = static_cast<std::uint16_t>(v * 9);
            pixels.Row<RgbPixel>(y)[x] = RgbPixel(v, 2 * v, 255 - v);
        }
    bytes.Window(1, 0, 17, 5);
    pixels.Window(1, 0, 17, 5);
    const auto inverse = [](int v) { return v == 5 ? 255 : 255 - v; };
    Operator::Transform(gray, bytes, dst);
    ASSERT_EQ(dst.Type, Gray);
    for (int i = 0; i < 85; i++)
        EXPECT_EQ(dst.Row(i / 17)[i % 17], inverse(bytes.Row(i / 17)[i % 17]));
    Operator::Transform(color, bytes, dst);
    ASSERT_EQ(dst.Type, Rgb);
    for (int i = 0; i < 85; i++) {
        const int v = bytes.Row(i / 17)[i % 17];
        EXPECT_EQ(dst.Row<RgbPixel>(i / 17)[i % 17], RgbPixel(v, 255 - v, v / 2));
    }
    Operator::Transform(gray, pixels, dst);
    for (int i = 0; i < 85; i++) {
        const RgbPixel p = pixels.Row<RgbPixel>(i / 17)[i % 17];
        EXPECT_EQ(dst.Row<RgbPixel>(i / 17)[i % 17], RgbPixel(inverse(p.Red), inverse(p.Green), inverse(p.Blue)));
    }
    Operator::Transform(color, pixels, dst);
    for (int i = 0; i < 85; i++) {
        const RgbPixel p = pixels.Row<RgbPixel>(i / 17)[i % 17];
        EXPECT_EQ(dst.Row<RgbPixel>(i / 17)[i % 17], RgbPixel(p.Red, 255 - p.Green, p.Blue / 2));
    }
    Operator::Transform(wide, words, dst);
    EXPECT_EQ(dst.Row<std::uint16_t>(0)[3], 7 * 27);
    EXPECT_EQ(dst.Row<std::uint16_t>(4)[18], 7 * 511) << "beyond the depth";
    // In place, changing the type under the source.
    Operator::Transform(color, bytes, bytes);
    EXPECT_EQ(bytes.Row<RgbPixel>(0)[0], RgbPixel(1, 254, 0));

    Profile none;
    struct Case
    {
        Profile* table;
        Image* src;
        int code;
        const wchar_t* message;
    };
    for (const auto& [table, src, code, message] :
         {Case{&none, &words, VoidObject, L"Void source profile"},
          {&gray, &words, UnsupportedType, L"The profile Type (Gray) is not supported for this image type (Gray16)"},
          {&wide, &pixels, UnsupportedType, L"The profile Type (Gray16) is not supported for this image type (Rgb)"}}) {
        Operator::Transform(*table, *src, dst);
        EXPECT_EQ(Status::Error().Code, code);
        EXPECT_STREQ(Status::UnicodeError(), message);
    }
    gray.Window(0, 255);
    Operator::Transform(gray, pixels, dst);
    EXPECT_STREQ(Status::UnicodeError(), L"This profile has 255 entries instead of 256");
    EXPECT_EQ(Status::Error().Code, IncompatibleSize);
}

TEST_F(OperatorProfileTest, ATableColoursADrawnImage)
{
    Profile table, none;
    table.PseudoColor();
    Image gray, color, empty;
    gray.Set(2, 1, Gray);
    gray.Row(0)[0] = 0;
    gray.Row(0)[1] = 255;
    color.Set(2, 1, Rgb);
    Operator::Copy(1, color);
    RecordingTarget target;
    Graph::DrawTo(&target);
    empty.Draw(table, false);
    EXPECT_TRUE(target.Calls.empty());
    gray.Draw(table, false);
    EXPECT_EQ(target.Calls.size(), 1u);
    EXPECT_EQ(Status::Error().Code, NoError);
    struct Case
    {
        const Image& image;
        std::function<void()> change;
        int code;
        const wchar_t* message;
    };
    const Case cases[] = {
        {color, [] {}, UnsupportedType, L"Only Gray images can be rendered through a lookup-table, this one is Rgb"},
        {gray, [&] { table.Window(1, 255); }, IncompatibleSize,
         L"The lookup-table for Gray image rendering must have 256 entries, this one has 255"},
        {gray, [&] { table.Set(256, Float); }, IncompatibleType,
         L"Gray images can be rendered through a Gray or Rgb lookup-table, this one is Float"},
    };
    for (const auto& [image, change, code, message] : cases) {
        change();
        image.Draw(table, true);
        EXPECT_EQ(Status::Error().Code, code);
        EXPECT_STREQ(Status::UnicodeError(), message);
        EXPECT_STREQ(Status::AsciiFunction(), "Tesk::Image::Draw");
    }
    EXPECT_EQ(target.Calls.size(), 1u);
}
