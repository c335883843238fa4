// Every feature of random blobs beside the same worked out slowly, pixel by pixel.
#include "image/Geometry.h"
#include "image/Histogram.h"
#include "image/Image.h"
#include "measure/Blobs.h"
#include "measure/Path.h"
#include "tests/Failures.h"
#include "tests/Noise.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <cmath>
#include <functional>
#include <map>
#include <numbers>
#include <span>
#include <vector>

using namespace Tesk;

namespace {

constexpr int size = 24, blobsInARow = 3;
constexpr double pi = std::numbers::pi;
constexpr std::array<std::array<int, 2>, 8> directions = {
    {{1, 0}, {1, 1}, {0, 1}, {-1, 1}, {-1, 0}, {-1, -1}, {0, -1}, {1, -1}}};

/// The pixels of a blob, at (left, top) in its image.
struct Pixels
{
    int left = 0, top = 0;
    bool set[size][size] = {};

    bool At(int x, int y) const
    {
        x -= left;
        y -= top;
        return x >= 0 && y >= 0 && x < size && y < size && set[y][x];
    }
    /// All pixels, row by row.
    std::vector<Site> All() const
    {
        std::vector<Site> all;
        for (int y = 0; y < size; y++)
            for (int x = 0; x < size; x++)
                if (set[y][x]) all.emplace_back(x + left, y + top);
        return all;
    }
    Region Runs() const
    {
        Region region;
        for (const Site s : All())
            if (!At(s.X - 1, s.Y)) region.AddRun(s.X, RightOf(s), s.Y);
        return region;
    }
    int RightOf(Site s) const
    {
        int x = s.X;
        while (At(x, s.Y))
            x++;
        return x;
    }
};

/// A blob in one piece, with holes and arms: a pixel that walks about, now in single steps, now in strokes.
Pixels RandomPixels(checks::Noise& noise, int steps, int left, int top)
{
    Pixels pixels;
    pixels.left = left;
    pixels.top = top;
    int x = size / 2, y = size / 2;
    while (steps > 0) {
        const int d = noise.Byte() % 8;
        for (int length = noise.Byte() % 4 ? 1 : noise.Byte() % 9; length >= 0 && steps-- > 0; length--) {
            pixels.set[y][x] = true;
            x = Clamp(x + directions[static_cast<std::size_t>(d)][0], 1, size - 2);
            y = Clamp(y + directions[static_cast<std::size_t>(d)][1], 1, size - 2);
        }
    }
    return pixels;
}

/// Without its holes: what a flood from outside, in straight steps, does not reach.
Pixels Filled(const Pixels& pixels)
{
    Pixels outside = pixels;
    std::fill_n(&outside.set[0][0], size * size, false);
    outside.set[0][0] = true; // no blob comes to the rim
    for (bool grows = true; grows;) {
        grows = false;
        for (int y = 0; y < size; y++)
            for (int x = 0; x < size; x++) {
                const int i = x + pixels.left, j = y + pixels.top;
                if (outside.set[y][x] || pixels.set[y][x]) continue;
                if (outside.At(i - 1, j) || outside.At(i + 1, j) || outside.At(i, j - 1) || outside.At(i, j + 1))
                    grows = outside.set[y][x] = true;
            }
    }
    for (auto& row : outside.set)
        for (bool& set : row)
            set = !set;
    return outside;
}

/// The length of the contour by the ends of rows: from each the contour goes on to the next end below or above, across
/// the gap to the run beside, or round the run.
int Perimeter(const Pixels& pixels)
{
    const Pixels whole = Filled(pixels);
    const std::vector<LabeledRun> runs = [&] {
        const Region region = whole.Runs();
        return std::vector<LabeledRun>(region.Runs().begin(), region.Runs().end());
    }();
    const auto touching = [&](const LabeledRun& run, int y) {
        std::vector<LabeledRun> found;
        for (const LabeledRun& other : runs)
            if (other.Y == y && other.End >= run.Start && run.End >= other.Start) found.push_back(other);
        return found;
    };
    int sum = 0;
    for (const LabeledRun& run : runs) {
        const std::vector<LabeledRun> below = touching(run, run.Y + 1), above = touching(run, run.Y - 1);
        if (below.empty()) {
            sum += run.End - run.Start - 1;
        } else {
            const std::vector<LabeledRun> row = touching(below.front(), run.Y);
            if (row.front().Start == run.Start)
                sum += Max(std::abs(run.Start - below.front().Start), 1);
            else
                for (std::size_t i = 1; i < row.size(); i++)
                    if (row[i].Start == run.Start) sum += run.Start - row[i - 1].End + 1;
        }
        if (above.empty()) {
            sum += run.End - run.Start - 1;
        } else {
            const std::vector<LabeledRun> row = touching(above.back(), run.Y);
            if (row.back().Start == run.Start)
                sum += Max(std::abs(run.End - above.back().End), 1);
            else
                for (std::size_t i = 0; i + 1 < row.size(); i++)
                    if (row[i].Start == run.Start) sum += row[i + 1].Start - run.End + 1;
        }
    }
    return sum;
}

/// Of the polygon through the centers of the outer pixels: each square of four centers lies in it, half in it, or out.
int FilledArea(const Pixels& pixels)
{
    const Pixels whole = Filled(pixels);
    int halves = 0;
    for (int y = 0; y + 1 < size; y++)
        for (int x = 0; x + 1 < size; x++)
            halves += Max(whole.set[y][x] + whole.set[y][x + 1] + whole.set[y + 1][x] + whole.set[y + 1][x + 1] - 2, 0);
    return halves >> 1;
}

int FullPerimeter(const Pixels& pixels)
{
    int border = 0;
    for (const Site s : pixels.All())
        border += !std::all_of(directions.begin(), directions.end(),
                               [&](const auto& d) { return pixels.At(s.X + d[0], s.Y + d[1]); });
    return border;
}

/// The outline by the walk on the raster.
std::vector<Site> Outline(const Pixels& pixels)
{
    std::vector<Site> outline;
    Site at = pixels.All().front(), next = at;
    const auto step = [&](int d) {
        const auto& to = directions[static_cast<std::size_t>(d)];
        next = Site(at.X + to[0], at.Y + to[1]);
        return pixels.At(next.X, next.Y);
    };
    int d = 0;
    while (d < 4 && !step(d))
        d++;
    if (d == 4) return outline;
    const int first = d;
    const Site second = next;
    do {
        outline.push_back(at);
        d = ((d & ~1) - 1) & 7;
        at = next;
        while (!step(d))
            d = (d + 1) & 7;
    } while (next.X != second.X || next.Y != second.Y || d != first);
    return outline;
}

/// Wrapped round the pixels from the first one, down its left side: from each corner to the pixel with all others on
/// one side.
std::vector<Site> Hull(const std::vector<Site>& all)
{
    std::vector<Site> hull;
    Site p = all.front();
    do {
        hull.push_back(p);
        Site best = p;
        for (const Site r : all) {
            const int dx = best.X - p.X, dy = best.Y - p.Y, ex = r.X - p.X, ey = r.Y - p.Y, cross = dx * ey - dy * ex;
            if (cross > 0 || (cross == 0 && ex * ex + ey * ey > dx * dx + dy * dy)) best = r;
        }
        p = best;
    } while (p.X != hull.front().X || p.Y != hull.front().Y);
    return hull;
}

using Values = std::map<int, double>;

/// The box on the side of the hull across which the pixels reach least far, or farthest.
void CaliperBox(const std::vector<Site>& all, bool largest, int first, double scale, Values& values)
{
    const std::vector<Site> hull = Hull(all);
    Site p = hull[0], q = p, far = p;
    double best = largest ? -1 : 1e9;
    for (std::size_t i = 0; i < hull.size(); i++) {
        const Site from = hull[(i + hull.size() - 1) % hull.size()], to = hull[i];
        const auto f = [&](Site s) { return (s.X - from.X) * (to.Y - from.Y) - (s.Y - from.Y) * (to.X - from.X); };
        const Site most = *std::max_element(all.begin(), all.end(), [&](Site a, Site b) { return f(a) < f(b); });
        const double width = f(most) / std::hypot(to.X - from.X, to.Y - from.Y);
        if (largest ? width <= best + 1e-9 : width >= best - 1e-9) continue;
        best = width;
        p = from, q = to, far = most;
    }
    double a = std::atan2(q.X - p.X, q.Y - p.Y);
    if (a < 0) a += pi;
    const double c = std::cos(a), n = std::sin(a);
    double low = 1e9, high = -1e9;
    for (const Site s : all) {
        low = Min(low, s.Y * c + s.X * n);
        high = Max(high, s.Y * c + s.X * n);
    }
    const double ends[] = {far.X * c - far.Y * n, q.X * c - q.Y * n}, mu = (ends[0] + ends[1]) / 2,
                 mv = (low + high) / 2, across = std::abs(ends[0] - ends[1]), along = high - low;
    const bool single = hull.size() == 1;
    if (along > across) a += a > pi / 2 ? -pi / 2 : pi / 2;
    values[first] = (single ? hull[0].X : mu * c + mv * n) * scale;
    values[first + 1] = (single ? hull[0].Y : -mu * n + mv * c) * scale;
    values[first + 2] = Max(along, across) * scale;
    values[first + 3] = Min(along, across) * scale;
    if (single || std::abs(along - across) > 1e-9) values[first + 4] = single ? 0 : a * 180 / pi;
    values[first + 5] = single ? 0 : Min(along, across) / Max(along, across);
}

/// The center and the ellipse with the moments of weighted pixels. In a round one no axis is the longer.
void Inertia(const std::vector<Site>& all, const std::function<double(Site)>& weight, int center, int first,
             double scale, Values& values)
{
    double a = 0, x = 0, y = 0, xx = 0, xy = 0, yy = 0;
    for (const Site s : all) {
        a += weight(s);
        x += weight(s) * s.X;
        y += weight(s) * s.Y;
    }
    if (a == 0) return;
    x /= a;
    y /= a;
    for (const Site s : all) {
        const double w = weight(s) / a;
        xx += w * ((s.X - x) * (s.X - x) + 1.0 / 12);
        yy += w * ((s.Y - y) * (s.Y - y) + 1.0 / 12);
        xy += w * (s.X - x) * (s.Y - y);
    }
    const double mean = (xx + yy) / 2, root = std::hypot((xx - yy) / 2, xy), l1 = mean + root, l2 = mean - root;
    values[center] = x * scale;
    values[center + 1] = y * scale;
    values[first] = 4 * std::sqrt(l1) * scale;
    values[first + 1] = 4 * std::sqrt(l2) * scale;
    // A vertical axis is at 90 degrees as well as at -90.
    if (root > 1e-6 && (std::abs(xy) > 1e-6 || xx > yy)) values[first + 2] = -std::atan2(2 * xy, xx - yy) * 90 / pi;
    values[first + 3] = std::sqrt(Max(1 - l2 / l1 * l2 / l1, 0.0));
}

void Grays(const std::vector<Site>& all, const Image& image, double scale, Values& values)
{
    const auto gray = [&](Site s) {
        return image.Type == Gray16 ? image.Row<std::uint16_t>(s.Y)[s.X] : 1.0 * image.Row(s.Y)[s.X];
    };
    std::vector<double> levels;
    double squares = 0;
    for (const Site s : all) {
        levels.push_back(gray(s));
        values[BlobMass] += gray(s);
        squares += gray(s) * gray(s);
    }
    std::sort(levels.begin(), levels.end());
    const double count = static_cast<double>(levels.size()), mean = values[BlobMass] / count;
    values[BlobAverage] = mean;
    values[BlobDeviation] = std::sqrt(Max(squares / count - mean * mean, 0.0));
    values[BlobMinimum] = levels.front();
    values[BlobMaximum] = levels.back();
    if (image.Type == Gray16) return;
    values[BlobMedian] = levels[(levels.size() + 1) / 2 - 1] + 1;
    Inertia(all, gray, BlobCentroidX, BlobEllipsoid, scale, values);
}

Values Expected(const Pixels& pixels, const Image& image, double scale)
{
    const std::vector<Site> all = pixels.All(), hull = Hull(all);
    Values values;
    const double area = static_cast<double>(all.size());
    values[BlobArea] = area;
    values[BlobWorldArea] = area * scale * scale;
    values[BlobPerimeter] = Perimeter(pixels);
    values[BlobFullPerimeter] = FullPerimeter(pixels);
    values[BlobFilledArea] = FilledArea(pixels);
    int twice = 0;
    for (std::size_t i = 0, before = hull.size() - 1; i < hull.size(); before = i++) {
        twice += hull[before].X * hull[i].Y - hull[before].Y * hull[i].X;
        values[BlobConvexPerimeter] += std::trunc(std::hypot(hull[i].X - hull[before].X, hull[i].Y - hull[before].Y));
    }
    values[BlobConvexArea] = std::abs(twice >> 1);
    const double perimeter = values[BlobPerimeter];
    values[BlobPerimetricRatio] = perimeter == 0 ? 1 : 4 * pi * area / perimeter / perimeter;
    values[BlobFillingRatio] = values[BlobFilledArea] / area;
    values[BlobConvexAreaRatio] = values[BlobConvexArea] / area;
    values[BlobConvexPerimeterRatio] = perimeter == 0 ? 0 : values[BlobConvexPerimeter] / perimeter;
    Inertia(
        all, [](Site) { return 1; }, BlobCenterX, BlobEllipse, scale, values);
    Grays(all, image, scale, values);
    int right = 0, bottom = 0, left = MaxInt, top = MaxInt;
    for (const Site s : all) {
        left = Min<int>(left, s.X), right = Max<int>(right, s.X + 1);
        top = Min<int>(top, s.Y), bottom = Max<int>(bottom, s.Y + 1);
    }
    const int box[] = {left, top, right - left, bottom - top};
    for (int i = 0; i < 4; i++) {
        values[BlobBoxX + i] = box[i];
        values[BlobWorldBoxX + i] = box[i] * scale;
    }
    values[BlobAspectRatio] = box[3] / static_cast<double>(box[2]);
    CaliperBox(all, false, BlobFeretBox, scale, values);
    CaliperBox(all, true, BlobDiametralBox, scale, values);
    return values;
}

class BlobsTwin : public checks::IgnoringFailures
{
protected:
    void TearDown() override
    {
        Geometry::SimpleCalibration(1, 1);
        IgnoringFailures::TearDown();
    }

    static void Draw(PixelTypes type, Image& image)
    {
        image.Set(size * blobsInARow, size, type);
        for (int y = 0; y < image.Height; y++)
            for (int x = 0; x < image.Width; x++)
                if (type == Gray16)
                    image.Row<std::uint16_t>(y)[x] = static_cast<std::uint16_t>(x * 3701 + y * 1103 + x * y);
                else
                    image.Row(y)[x] = static_cast<std::uint8_t>(x < size ? 0 : (x * 37 + y * 11 + x * y) | 1);
    }

    /// What is given as lists: points and pixels.
    static void ExpectLists(const Blobs& blobs, int i, const Pixels& pixels, const Image& image)
    {
        const auto expectSites = [](std::span<const Site> sites, const std::vector<Site>& expected) {
            EXPECT_TRUE(std::equal(sites.begin(), sites.end(), expected.begin(), expected.end(),
                                   [](Site a, Site b) { return a.X == b.X && a.Y == b.Y; }));
        };
        const auto part = [&](std::span<const Site> sites, int first) {
            const auto begin = static_cast<std::size_t>(blobs.IntFeature(i, first)),
                       end = static_cast<std::size_t>(blobs.IntFeature(i, first + 1));
            return sites.subspan(begin, end - begin);
        };
        const std::vector<Site> outline = Outline(pixels);
        expectSites(part(blobs.Outlines(), BlobOutlineBeg), outline);
        Path walked, path, polygon;
        for (const Site s : outline)
            walked.Append(s);
        if (!outline.empty()) walked.Vectorize(polygon, 1);
        expectSites(part(blobs.Vectors(), BlobVectorBeg), {polygon.Sites(), polygon.Sites() + polygon.Length});
        blobs.Outline(i, image, path);
        expectSites({path.Sites(), static_cast<std::size_t>(int(path.Length))}, outline);
        blobs.ConvexHull(i, image, path);
        expectSites({path.Sites(), static_cast<std::size_t>(int(path.Length))}, Hull(pixels.All()));
        Image drawn;
        Draw(image.Type, drawn);
        blobs.ToImage(i, 1000 + 77, drawn);
        for (int y = 0; y < image.Height; y++)
            for (int x = 0; x < image.Width; x++)
                if (image.Type == Gray16)
                    EXPECT_EQ(drawn.Row<std::uint16_t>(y)[x], pixels.At(x, y) ? 1077 : image.Row<std::uint16_t>(y)[x]);
                else
                    EXPECT_EQ(drawn.Row(y)[x], pixels.At(x, y) ? 1077 & 255 : image.Row(y)[x]);
        Histogram counts;
        blobs.PixelHistogram(i, image, counts);
        EXPECT_EQ(Status::Error().Code, image.Type == Gray ? NoError : IncompatibleType);
        if (image.Type != Gray) return;
        blobs.PixelHistogram(i, image, counts, false);
        std::vector<int> twice(256);
        for (const Site s : pixels.All())
            twice[image.Row(s.Y)[s.X]] += 2;
        EXPECT_TRUE(std::equal(twice.begin(), twice.end(), counts.Samples()));
    }
};

TEST_F(BlobsTwin, FeaturesAreThoseOfThePixels)
{
    checks::Noise noise{7};
    for (int round = 0; round < 60; round++) {
        Image image;
        Draw(round % 3 == 2 ? Gray16 : Gray, image);
        const double scale = round % 4 == 3 ? 0.0625 : 1;
        Geometry::SimpleCalibration(1, scale);
        Blobs blobs;
        blobs.DefaultClass = round;
        std::vector<Pixels> made;
        for (int i = 0; i < blobsInARow; i++) {
            made.push_back(RandomPixels(noise, 1 + round * round / 4, i * size, 0));
            blobs.AppendBlob(made.back().Runs(), false);
        }
        for (int feature = 0; feature < Blobs::NumPredefinedFeatures; feature++) {
            blobs.Evaluate(static_cast<Features>(feature), image, All);
            const bool isMatching = feature >= BlobMatchingScore && feature <= BlobMatchingAngle,
                       isGrayOnly = feature == BlobMedian || (feature >= BlobCentroidX && feature < BlobBoxX);
            const int code = isMatching ? OutOfRange : isGrayOnly && image.Type != Gray ? IncompatibleType : NoError;
            EXPECT_EQ(Status::Error().Code, code) << feature;
        }
        for (int i = 0; i < blobsInARow; i++) {
            SCOPED_TRACE(testing::Message() << "blob " << i << " of round " << round);
            EXPECT_EQ(blobs.IntFeature(i, BlobClass), round);
            const Pixels& pixels = made[static_cast<std::size_t>(i)];
            for (const auto& [feature, value] : Expected(pixels, image, scale)) {
                EXPECT_TRUE(blobs.IsComputed(i, feature)) << feature;
                EXPECT_NEAR(blobs.Type(feature) == Int ? blobs.IntFeature(i, feature) : blobs.FloatFeature(i, feature),
                            value, 2e-6 * (1 + std::abs(value)) + (feature == BlobEccentricity) * 1e-4)
                    << feature;
            }
            // The first one is black: without a mass it has no centroid.
            EXPECT_EQ(blobs.IsComputed(i, BlobCentroidX), image.Type == Gray && i > 0);
            ExpectLists(blobs, i, pixels, image);
        }
    }
}

} // namespace
