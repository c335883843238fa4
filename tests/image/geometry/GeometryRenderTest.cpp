// Calibration with pictures of a target, as a camera sees it: turned, tilted, through a lens, and partly covered.
#include "image/Geometry.h"
#include "image/Image.h"

#include "Failures.h"
#include "Noise.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <numbers>
#include <set>
#include <utility>

using namespace Tesk;

namespace {

constexpr int columns = 14, rows = 10, width = 1000, height = 760;
constexpr double middleX = (width - 1) * 0.5, middleY = (height - 1) * 0.5;

/// A camera over a target, whose dots are a step apart.
struct View
{
    double degrees, pitch;
    double lens = 0;    ///< k, where the lens draws to r (1 + k r) what it should to r
    XY tilt = XY(0, 0); ///< by how much of itself the scale changes in a pixel

    /// From the place on the target, in steps from the first dot, to the image.
    XY At(double column, double row) const
    {
        const double a = degrees * std::numbers::pi / 180, c = pitch * std::cos(a), s = pitch * std::sin(a);
        const double x = column - (columns - 1) * 0.5, y = row - (rows - 1) * 0.5;
        const XY flat(c * x - s * y, s * x + c * y);
        XY p = flat;
        for (int i = 0; i < 10; i++) {
            const double f = (1 + tilt.X * p.X + tilt.Y * p.Y) / (1 + lens * std::hypot(p.X, p.Y));
            p = XY(flat.X * f, flat.Y * f);
        }
        return {middleX + p.X, middleY + p.Y};
    }
};

using Places = std::set<std::pair<int, int>>;

/// A dark dot with a soft rim: the place on the target of each pixel is found by two steps along the tangents.
void RenderDot(const View& view, int column, int row, Image& image)
{
    constexpr double radius = 0.38, contrast = 170, step = 0.01; // steps of the grid
    const auto slope = [&](double sx, double sy) {
        const XY a = view.At(column + sx, row + sy), b = view.At(column - sx, row - sy);
        return XY((a.X - b.X) / (2 * step), (a.Y - b.Y) / (2 * step));
    };
    const XY at = view.At(column, row), dx = slope(step, 0), dy = slope(0, step);
    const double area = dx.X * dy.Y - dx.Y * dy.X;
    const int reach = static_cast<int>(view.pitch * 0.6), left = static_cast<int>(at.X), top = static_cast<int>(at.Y);
    for (int y = Max(top - reach, 0); y <= Min(top + reach, height - 1); y++)
        for (int x = Max(left - reach, 0); x <= Min(left + reach, width - 1); x++) {
            double u = 0, v = 0;
            for (int i = 0; i < 2; i++) {
                const XY p = i == 0 ? at : view.At(column + u, row + v);
                u += ((x - p.X) * dy.Y - (y - p.Y) * dy.X) / area;
                v += ((y - p.Y) * dx.X - (x - p.X) * dx.Y) / area;
                if (std::abs(u * u + v * v - radius * radius) > 0.06) break; // well inside or outside
            }
            const double inside = Clamp(0.5 + (radius - std::hypot(u, v)) * std::sqrt(area), 0.0, 1.0);
            image.Row(y)[x] = static_cast<std::uint8_t>(image.Row(y)[x] - contrast * inside);
        }
}

/// The dots that are not covered, under a light that falls off, with some noise.
void Render(const View& view, const Places& covered, Image& image)
{
    checks::Noise noise{5};
    image.Set(width, height, Gray);
    for (int y = 0; y < height; y++)
        for (int x = 0; x < width; x++)
            image.Row(y)[x] = static_cast<std::uint8_t>(230 - x / 50 - noise.Byte() % 8);
    for (int row = 0; row < rows; row++)
        for (int column = 0; column < columns; column++)
            if (!covered.count({column, row})) RenderDot(view, column, row, image);
}

class GeometryRender : public checks::IgnoringFailures
{
protected:
    void TearDown() override
    {
        Geometry::SimpleCalibration(1, 1);
        IgnoringFailures::TearDown();
    }

    /// The mean distance, in pixels, of the mapped dots from their places.
    static double Residual(const Geometry& geometry)
    {
        double sum = 0;
        for (int i = 0; i < geometry.NumAnchors; i++) {
            const XY p = geometry.MapPoint(geometry.Src(i)), q = geometry.Dst(i);
            sum += std::hypot(p.X - q.X, p.Y - q.Y) * Geometry::ScaleToPixel;
        }
        return sum / geometry.NumAnchors;
    }

    /// The dots that were numbered, each of which must stand where the view has it. They count from the first row and
    /// column of them that there are.
    static Places Numbered(const Geometry& geometry, const View& view)
    {
        Places found;
        int firstColumn = columns, firstRow = rows;
        for (int row = 0; row < rows; row++)
            for (int column = 0; column < columns; column++)
                for (int i = 0; i < geometry.NumAnchors; i++) {
                    const XY p = view.At(column, row), q = geometry.Src(i);
                    if (std::hypot(p.X - q.X, p.Y - q.Y) > 0.5) continue;
                    found.insert({column, row});
                    firstColumn = Min(firstColumn, column - static_cast<int>(geometry.Dst(i).X));
                    firstRow = Min(firstRow, row - static_cast<int>(geometry.Dst(i).Y));
                }
        EXPECT_EQ(static_cast<int>(found.size()), geometry.NumAnchors);
        for (int i = 0; i < geometry.NumAnchors; i++) {
            const XY p = view.At(geometry.Dst(i).X + firstColumn, geometry.Dst(i).Y + firstRow), q = geometry.Src(i);
            EXPECT_LT(std::hypot(p.X - q.X, p.Y - q.Y), 0.5);
        }
        EXPECT_EQ(firstColumn, std::min_element(found.begin(), found.end())->first);
        return found;
    }
};

TEST_F(GeometryRender, IsMetByTheModelOfTheView)
{
    const XY tilt(2e-4, -3e-4);
    const struct
    {
        RegistrationModels model;
        View view;
    } cases[] = {{Similarity, {11.3, 54}},       {Affinity, {-27, 50}},      {Perspective, {8, 50, 0, tilt}},
                 {Rational, {8, 50, 0, tilt}},   {Quadratic, {5, 58, 2e-4}}, {Quadratic, {5, 52, -1e-4}},
                 {General, {-9, 54, 1e-4, tilt}}};
    for (const auto& [model, view] : cases) {
        Image image;
        Render(view, {}, image);
        Geometry geometry;
        geometry.CalibrateTarget(model, image, 1);
        ASSERT_EQ(Status::Error().Code, NoError);
        EXPECT_EQ(Numbered(geometry, view).size(), columns * rows - 4u) << model;
        EXPECT_LT(Residual(geometry), 0.05) << model;
        geometry.ModelFit(Similarity, image);
        EXPECT_GT(Residual(geometry), model <= Affinity ? 0.0 : 1.0) << "which is not the right model";
    }
}

TEST_F(GeometryRender, OfACoveredTargetIsNumberedRightWhereItIsReached)
{
    const View view = {9, 50, 1e-4, XY(1e-4, -2e-4)};
    Image image;
    // A patch of a fifth of the dots: all others are numbered, but for corners.
    Places patch;
    for (int row = 3; row < 7; row++)
        for (int column = 4; column < 11; column++)
            patch.insert({column, row});
    Render(view, patch, image);
    Geometry geometry;
    geometry.CalibrateTarget(General, image, 1);
    ASSERT_EQ(Status::Error().Code, NoError);
    EXPECT_EQ(Numbered(geometry, view).size(), columns * rows - patch.size() - 4);
    EXPECT_LT(Residual(geometry), 0.05);
    for (const std::uint32_t seed : {1u, 2u, 3u, 4u, 5u}) {
        checks::Noise noise{seed};
        Places covered;
        while (covered.size() < columns * rows / 5)
            covered.insert({static_cast<int>((noise() >> 8) % columns), static_cast<int>((noise() >> 8) % rows)});
        Render(view, covered, image);
        geometry.CalibrateTarget(Similarity, image, 1);
        ASSERT_EQ(Status::Error().Code, NoError);
        // Dots that no complete cross reaches are left out, which here are many.
        EXPECT_GE(Numbered(geometry, view).size(), 5u) << seed;
    }
}

} // namespace
