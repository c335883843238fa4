#include "image/Image.h"
#include "measure/Blobs.h"
#include "measure/Path.h"
#include "tests/Failures.h"
#include "tests/Noise.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <functional>
#include <numbers>

using namespace Tesk;
using checks::Message;

namespace {

constexpr int size = 24;

/// Pixels by pixels, as a slow twin of a blob.
struct Pixels
{
    bool set[size][size] = {};

    bool At(int x, int y) const { return x >= 0 && y >= 0 && x < size && y < size && set[y][x]; }
    void Each(const std::function<void(int, int)>& f) const
    {
        for (int y = 0; y < size; y++)
            for (int x = 0; x < size; x++)
                if (set[y][x]) f(x, y);
    }
};

/// A blob in one piece: a pixel that walks about.
Pixels RandomPixels(checks::Noise& noise, int steps)
{
    Pixels pixels;
    int x = size / 2, y = size / 2;
    for (int i = 0; i < steps; i++) {
        pixels.set[y][x] = true;
        x = Clamp(x + noise.Byte() % 3 - 1, 1, size - 2);
        y = Clamp(y + noise.Byte() % 3 - 1, 1, size - 2);
    }
    return pixels;
}

Region RegionOf(const Pixels& pixels)
{
    Region region;
    for (int y = 0; y < size; y++)
        for (int x = 0; x < size; x++) {
            if (!pixels.set[y][x]) continue;
            const int start = x;
            while (pixels.At(x, y))
                x++;
            region.AddRun(start, x, y);
        }
    return region;
}

class BlobsFeatures : public checks::IgnoringFailures
{
protected:
    void SetUp() override
    {
        IgnoringFailures::SetUp();
        image_.Set(size, size, Gray);
        for (int y = 0; y < size; y++)
            for (int x = 0; x < size; x++)
                image_.Row(y)[x] = static_cast<std::uint8_t>(x * 37 + y * 11 + x * y);
    }

    double Value(Blobs& blobs, int feature)
    {
        blobs.Evaluate(static_cast<Features>(feature), image_, 0);
        EXPECT_EQ(Status::Error().Code, NoError) << feature;
        EXPECT_TRUE(blobs.IsComputed(0, feature)) << feature;
        return blobs.Type(feature) == Int ? blobs.IntFeature(0, feature) : double{blobs.FloatFeature(0, feature)};
    }

    static Blobs Single(const std::vector<LabeledRun>& runs)
    {
        Region region;
        for (const LabeledRun& run : runs)
            region.AddRun(run.Start, run.End, run.Y);
        Blobs blobs;
        blobs.AppendBlob(region, false);
        return blobs;
    }

    Image image_;
};

/// The ellipse with the moments of weighted pixels.
void ExpectEllipse(Blobs& blobs, int first, const Pixels& pixels, const std::function<double(int, int)>& weight)
{
    double a = 0, x = 0, y = 0, xx = 0, xy = 0, yy = 0;
    pixels.Each([&](int i, int j) {
        const double w = weight(i, j);
        a += w;
        x += w * i;
        y += w * j;
    });
    x /= a;
    y /= a;
    pixels.Each([&](int i, int j) {
        const double w = weight(i, j) / a;
        xx += w * ((i - x) * (i - x) + 1.0 / 12);
        yy += w * ((j - y) * (j - y) + 1.0 / 12);
        xy += w * (i - x) * (j - y);
    });
    const double mean = (xx + yy) / 2, root = std::hypot((xx - yy) / 2, xy), l1 = mean + root, l2 = mean - root;
    EXPECT_NEAR(blobs.FloatFeature(0, first), 4 * std::sqrt(l1), 1e-4);
    EXPECT_NEAR(blobs.FloatFeature(0, first + 1), 4 * std::sqrt(l2), 1e-4);
    EXPECT_NEAR(blobs.FloatFeature(0, first + 3), std::sqrt(1 - l2 / l1 * l2 / l1), 1e-4);
    if (root <= 1e-6) return;
    const double turn = blobs.FloatFeature(0, first + 2) * std::numbers::pi / 180 + std::atan2(2 * xy, xx - yy) / 2;
    EXPECT_NEAR(std::sin(turn), 0, 1e-4);
}

TEST_F(BlobsFeatures, AreThoseOfThePixels)
{
    checks::Noise noise{7};
    for (int round = 0; round < 60; round++) {
        const Pixels pixels = RandomPixels(noise, 1 + round * 4);
        Blobs blobs;
        blobs.AppendBlob(RegionOf(pixels), false);
        int area = 0, inner = 0, left = size, right = 0, top = size, bottom = 0;
        double x = 0, y = 0, mass = 0, squares = 0, mx = 0, my = 0;
        std::vector<int> values;
        pixels.Each([&](int i, int j) {
            area++;
            bool inside = true;
            for (int dy = -1; dy <= 1; dy++)
                for (int dx = -1; dx <= 1; dx++)
                    inside = inside && pixels.At(i + dx, j + dy);
            inner += inside;
            const int v = image_.Row(j)[i];
            values.push_back(v);
            x += i;
            y += j;
            mass += v;
            squares += v * v;
            mx += v * i;
            my += v * j;
            left = Min(left, i);
            right = Max(right, i);
            top = Min(top, j);
            bottom = Max(bottom, j);
        });
        std::sort(values.begin(), values.end());
        const double mean = mass / area;
        const struct
        {
            int feature;
            double expected;
        } expected[] = {
            {BlobArea, area * 1.0},
            {BlobWorldArea, area * 1.0},
            {BlobFullPerimeter, area - inner * 1.0},
            {BlobCenterX, x / area},
            {BlobCenterY, y / area},
            {BlobMass, mass},
            {BlobAverage, mean},
            {BlobDeviation, std::sqrt(Max(squares / area - mean * mean, 0.0))},
            {BlobMedian, values[static_cast<std::size_t>((area + 1) / 2 - 1)] + 1.0},
            {BlobMinimum, values.front() * 1.0},
            {BlobMaximum, values.back() * 1.0},
            {BlobCentroidX, mx / mass},
            {BlobCentroidY, my / mass},
            {BlobBoxX, left * 1.0},
            {BlobBoxY, top * 1.0},
            {BlobBoxWidth, right - left + 1.0},
            {BlobBoxHeight, bottom - top + 1.0},
            {BlobWorldBoxHeight, bottom - top + 1.0},
            {BlobAspectRatio, (bottom - top + 1.0) / (right - left + 1.0)},
        };
        for (const auto& [feature, value] : expected) {
            if ((feature == BlobCentroidX || feature == BlobCentroidY) && mass == 0) continue;
            EXPECT_NEAR(Value(blobs, feature), value, 1e-5 * (1 + std::abs(value))) << feature << " in " << round;
        }
        Value(blobs, BlobEllipseAngle);
        ExpectEllipse(blobs, BlobEllipse, pixels, [](int, int) { return 1.0; });
        if (mass == 0) continue;
        Value(blobs, BlobEllipsoid);
        ExpectEllipse(blobs, BlobEllipsoid, pixels, [this](int i, int j) { return 1.0 * image_.Row(j)[i]; });

        // The hull is that of the pixels' centers; its boxes are found by turning all of it to each side.
        Path all, hull;
        pixels.Each([&all](int i, int j) { all.Append(i, j); });
        all.ConvexHull(hull);
        EXPECT_EQ(Value(blobs, BlobConvexArea), std::abs(hull.Area()));
        EXPECT_EQ(Value(blobs, BlobConvexPerimeter), hull.Perimeter(true));
        if (hull.Length < 3) continue;
        double least = 1e9, most = -1, leastLength = 0, mostLength = 0;
        for (int i = 0; i < hull.Length; i++) {
            const Site p = hull.Vertex(i), q = hull.Vertex((i + 1) % hull.Length);
            const double angle = std::atan2(q.Y - p.Y, q.X - p.X), c = std::cos(angle), s = std::sin(angle);
            double u0 = 1e9, u1 = -1e9, v0 = 1e9, v1 = -1e9;
            pixels.Each([&](int px, int py) {
                u0 = Min(u0, px * c + py * s);
                u1 = Max(u1, px * c + py * s);
                v0 = Min(v0, py * c - px * s);
                v1 = Max(v1, py * c - px * s);
            });
            if (v1 - v0 < least - 1e-9) {
                least = v1 - v0;
                leastLength = u1 - u0;
            }
            if (v1 - v0 > most + 1e-9) {
                most = v1 - v0;
                mostLength = u1 - u0;
            }
        }
        const double feret[] = {Value(blobs, BlobFeretWidth), Value(blobs, BlobFeretHeight)};
        const double diameter[] = {Value(blobs, BlobDiametralWidth), Value(blobs, BlobDiametralHeight)};
        EXPECT_NEAR(Min(feret[0], feret[1]), Min(least, leastLength), 1e-4) << round;
        EXPECT_GE(feret[0], feret[1]);
        EXPECT_TRUE(std::abs(diameter[0] - most) < 1e-4 || std::abs(diameter[1] - most) < 1e-4) << round << mostLength;
    }
}

TEST_F(BlobsFeatures, OfShapesWorkedOutByHand)
{
    Blobs bar = Single({{3, 10, 5, 0}});
    EXPECT_EQ(Value(bar, BlobPerimeter), 12);
    EXPECT_EQ(Value(bar, BlobFilledArea), 0);
    EXPECT_EQ(Value(bar, BlobEllipseAngle), 0); // and computed, though it is a negative zero
    EXPECT_EQ(Value(bar, BlobFeretWidth), 6);
    EXPECT_EQ(Value(bar, BlobFeretHeight), 0);
    Blobs dot = Single({{4, 5, 6, 0}});
    EXPECT_EQ(Value(dot, BlobPerimeter), 0);
    EXPECT_EQ(Value(dot, BlobPerimetricRatio), 1);
    EXPECT_EQ(Value(dot, BlobConvexPerimeterRatio), 0);
    EXPECT_EQ(Value(dot, BlobFeretCenterX), 4);
    EXPECT_EQ(Value(dot, BlobDiametralCenterY), 6);
    std::vector<LabeledRun> runs;
    for (std::int16_t y = 0; y < 10; y++)
        runs.push_back({0, 10, y, 0});
    Blobs square = Single(runs);
    EXPECT_EQ(Value(square, BlobFilledArea), 81);
    EXPECT_EQ(Value(square, BlobPerimeter), 36);
    EXPECT_EQ(Value(square, BlobFullPerimeter), 36);
    EXPECT_EQ(Value(square, BlobConvexArea), 81);
    EXPECT_EQ(Value(square, BlobFillingRatio), 0.81f);
    EXPECT_EQ(Value(square, BlobPerimetricRatio), 12.566371f * 100 / (36.0f * 36.0f));
    EXPECT_EQ(Value(square, BlobOutlineEnd) - Value(square, BlobOutlineBeg), 36);
    EXPECT_GE(Value(square, BlobVectorEnd) - Value(square, BlobVectorBeg), 4);
    EXPECT_LT(Value(square, BlobVectorEnd) - Value(square, BlobVectorBeg), 8);
    // A ring: the hole does not count.
    Blobs ring = Single({{0, 3, 0, 0}, {0, 1, 1, 0}, {2, 3, 1, 0}, {0, 3, 2, 0}});
    EXPECT_EQ(Value(ring, BlobPerimeter), 8);
    EXPECT_EQ(Value(ring, BlobFullPerimeter), 8);
    EXPECT_EQ(Value(ring, BlobFilledArea), 4);
    // A U: 2 down, 4 across and 2 up outside, 1 down, 4 across and 1 up inside.
    Blobs cup = Single({{0, 1, 0, 0}, {4, 5, 0, 0}, {0, 1, 1, 0}, {4, 5, 1, 0}, {0, 5, 2, 0}});
    EXPECT_EQ(Value(cup, BlobPerimeter), 14);
}

TEST_F(BlobsFeatures, AreWorkedOutOnceAndForTheBlobsNamed)
{
    Blobs blobs;
    for (int i = 0; i < 4; i++) {
        Region region;
        region.AddRun(2 * i, 2 * i + 1 + i, 2 * i);
        blobs.AppendBlob(region, false);
    }
    blobs.Evaluate(BlobMass, image_, 1);
    EXPECT_TRUE(blobs.IsComputed(-1, BlobMass));
    EXPECT_TRUE(blobs.IsComputed(1, BlobMass));
    EXPECT_FALSE(blobs.IsComputed(0, BlobMass));
    const int mass = blobs.IntFeature(1, BlobMass);
    Image dark;
    dark.Set(size, size, Gray);
    std::fill(dark.Row(0), dark.Row(0) + dark.Pitch * (size - 1) + size, std::uint8_t{0});
    blobs.Evaluate(BlobMass, dark);
    EXPECT_EQ(blobs.IntFeature(1, BlobMass), mass);
    EXPECT_EQ(blobs.IntFeature(2, BlobMass), 0);
    blobs.Evaluate(BlobCentroid, dark);
    EXPECT_FALSE(blobs.IsComputed(2, BlobCentroidX));
    EXPECT_EQ(std::wstring(blobs.ToUnicodeString(BlobMass, 1)), L"Mass\n" + std::to_wstring(mass) + L"\n");
}

TEST_F(BlobsFeatures, RefusalsSayWhy)
{
    Blobs blobs = Single({{1, 4, 2, 0}});
    Image color;
    color.Set(4, 4, Rgb);
    blobs.Evaluate(BlobMass, color);
    EXPECT_EQ(Message(), L"The image type (Rgb) is not supported for the BlobMass feature; use Gray or Gray16");
    EXPECT_EQ(Status::Error().Code, UnsupportedType);
    EXPECT_FALSE(blobs.IsComputed(-1, BlobMass));
    blobs.Evaluate(BlobMedian, color);
    EXPECT_EQ(Status::Error().Code, IncompatibleType);
    blobs.Evaluate(BlobMatchingX, image_);
    EXPECT_EQ(Message(), L"This feature (Matching X) cannot be computed");
    blobs.IntFeature(0, BlobPerimeter);
    EXPECT_EQ(Message(), L"This feature (Perimeter) has not been computed");
    blobs.FloatFeature(0, BlobArea);
    EXPECT_EQ(Message(), L"Area is a Int feature, not Float !");
    blobs.Evaluate(BlobBox, image_, 1);
    EXPECT_EQ(Message(), L"The blob index (1) must be in range [0..0]");
    EXPECT_STREQ(Status::AsciiFunction(), "");
    blobs.ByFeatureSelect(BlobCenterX, image_, 0, 1, Select);
    EXPECT_EQ(Message(), L"Center X is a Float feature, use float bounds");
    blobs.FeatureMode(BlobArea, image_, 0);
    EXPECT_EQ(Message(), L"Use one of All, AllSelected or AllDeselected");
    EXPECT_EQ(blobs.WhichFeature(9), 60);
    EXPECT_EQ(Message(), L"The index (9) must be in range [2..3]");
    for (int i = 0; i < 16; i++)
        EXPECT_EQ(blobs.AppendFeature(i % 2 ? Int : Float), 60 + i);
    EXPECT_EQ(blobs.AppendFeature(Int), 60);
    EXPECT_EQ(Message(), L"The maximum number of user features (16) has been reached");
}

} // namespace
