#include "Failures.h"
#include "image/Geometry.h"
#include "image/Samples.h"
#include "measure/Region.h"

#include <algorithm>
#include <cmath>
#include <limits>

using namespace Tesk;

namespace {

/// Anchors that bend a picture of 67 x 41 pixels in the way of a model.
Geometry Bent(RegistrationModels model, const Image& picture)
{
    Geometry geometry;
    for (int y = 0; y <= 40; y += 5)
        for (int x = 0; x <= 66; x += 6) {
            const double d = 1 + 1e-3 * x - 2e-3 * y, u = x - 33, v = y - 20, k = 1 + 1e-4 * (u * u + v * v);
            const XY bent(40 + 0.7 * k * u + 0.05 * v, 22 + 0.8 * k * v);
            geometry.Append(XY(x, y), {bent.X / d, bent.Y / d});
        }
    geometry.ModelFit(model, picture);
    return geometry;
}

std::int64_t Fixed(double v)
{
    return static_cast<std::int64_t>(std::floor(v * 65536 + 0.5));
}

/// The bilinear sample or the nearest pixel at a position in 65,536ths, clamped to the source.
int SampleAt(const Samples& s, std::int64_t x, std::int64_t y, int c, bool interpolate)
{
    const auto held = [](std::int64_t v, int extent) {
        return std::min(std::max<std::int64_t>(v, 0), std::int64_t{extent - 1} << 16);
    };
    x = held(x, s.width), y = held(y, s.height);
    const int i = static_cast<int>(x >> 16), j = static_cast<int>(y >> 16);
    if (!interpolate) return s.At(i, j, c);
    const int right = std::min(i + 1, s.width - 1), below = std::min(j + 1, s.height - 1);
    const auto mix = [](std::int64_t a, std::int64_t b, std::int64_t w) { return (a * (65536 - w) + b * w) / 65536; };
    return static_cast<int>(mix(mix(s.At(i, j, c), s.At(right, j, c), x & 65535),
                                mix(s.At(i, below, c), s.At(right, below, c), x & 65535), y & 65535));
}

using GeometryRegister = checks::IgnoringFailures;

TEST_F(GeometryRegister, TakesEachPixelFromWhereTheModelSays)
{
    for (const PixelTypes type : {Gray, Gray16, Rgb})
        for (int model = Translation; model <= Rational; model++)
            for (const bool interpolate : {true, false}) {
                Image src, straight, back;
                src.Set(67, 41, type);
                Fill(src, 3);
                // Larger than a block of positions, and beyond the source on all sides.
                straight.Set(300, 50, type);
                back.Set(61, 37, type);
                const Geometry geometry = Bent(static_cast<RegistrationModels>(model), src);
                ASSERT_EQ(Status::Error().Code, NoError);
                geometry.Undistort(src, straight, interpolate);
                ASSERT_EQ(Status::Error().Code, NoError) << model;
                geometry.ReverseRegister(src, back, interpolate);
                ASSERT_EQ(Status::Error().Code, NoError) << model;
                const Samples s = SamplesOf(src), got = SamplesOf(straight), gotBack = SamplesOf(back);
                const double half = interpolate ? 0 : 0.5;
                // Affine maps are stepped in 65,536ths from the left, the others worked out at each pixel.
                const std::int64_t slack = model <= Affinity ? 300 + 50 : 1;
                const auto check = [&](const Samples& result, int i, int j, const XY& p) {
                    for (int c = 0; c < s.channels; c++) {
                        bool met = false;
                        for (const std::int64_t dx : {-slack, std::int64_t{0}, slack})
                            for (const std::int64_t dy : {-slack, std::int64_t{0}, slack}) {
                                const int wanted =
                                    SampleAt(s, Fixed(p.X + half) + dx, Fixed(p.Y + half) + dy, c, interpolate);
                                const int near = !interpolate ? 0 : type == Gray16 ? 700 : 3;
                                met = met || std::abs(result.At(i, j, c) - wanted) <= near;
                            }
                        ASSERT_TRUE(met) << model << ' ' << type << ' ' << i << ' ' << j;
                    }
                };
                for (int j = 0; j < straight.Height; j++)
                    for (int i = 0; i < straight.Width; i++)
                        check(got, i, j, geometry.ReverseMapPoint(XY(i, j)));
                for (int j = 0; j < back.Height; j++)
                    for (int i = 0; i < back.Width; i++)
                        check(gotBack, i, j, geometry.MapPoint(XY(i, j)));
                if (HasFatalFailure()) return;
            }
}

TEST_F(GeometryRegister, RecordsAMapThatGivesTheSame)
{
    Image src, direct, map, mapped;
    src.Set(67, 41, Rgb);
    Fill(src, 5);
    direct.Set(270, 44, Rgb);
    map.Set(270, 44, GeoMap);
    for (int model = Translation; model <= Rational; model++) {
        const Geometry geometry = Bent(static_cast<RegistrationModels>(model), src);
        geometry.Undistort(src, direct);
        geometry.Undistort(src, map);
        Geometry::Transform(map, src, mapped);
        ASSERT_EQ(SamplesOf(mapped), SamplesOf(direct)) << model;
    }
}

TEST_F(GeometryRegister, TellsWhereTheSourceHasNeighbours)
{
    Image src, dst;
    src.Set(67, 41, Gray);
    Fill(src, 5);
    for (int model = Translation; model <= Rational; model++)
        for (const bool interpolate : {true, false}) {
            const Geometry geometry = Bent(static_cast<RegistrationModels>(model), src);
            dst.Set(300, 50, Gray);
            Region valid;
            valid.AddRun(1, 2, 3);
            EXPECT_TRUE(geometry.Register(src, dst, valid, interpolate));
            std::vector<int> marks(300 * 50, 0);
            for (const LabeledRun& run : valid.Runs()) {
                ASSERT_LT(run.Start, run.End);
                EXPECT_TRUE(run.Start == 0 || !marks[static_cast<std::size_t>(run.Y * 300 + run.Start - 1)]);
                for (int x = run.Start; x < run.End; x++)
                    marks[static_cast<std::size_t>(run.Y * 300 + x)]++;
            }
            const double half = interpolate ? 0 : 0.5, slack = model <= Affinity ? 0.006 : 2e-5;
            int inside = 0;
            for (int j = 0; j < 50; j++)
                for (int i = 0; i < 300; i++) {
                    const XY p = geometry.ReverseMapPoint(XY(i, j));
                    // How far inside the position lies.
                    const double depth = std::min({p.X + half, 66 - p.X - half, p.Y + half, 40 - p.Y - half});
                    const int mark = marks[static_cast<std::size_t>(j * 300 + i)];
                    if (depth > slack) {
                        EXPECT_EQ(mark, 1) << model << ' ' << i << ' ' << j;
                        inside++;
                    }
                    if (depth < -slack) {
                        EXPECT_EQ(mark, 0) << model << ' ' << i << ' ' << j;
                    }
                }
            EXPECT_GT(inside, 500) << model;
            // A window of the result that lies well inside.
            dst.Window(20, 20, 8, 3);
            Geometry shift;
            shift.Append({10, 10}, {2, 1});
            shift.ModelFit(Translation, src);
            EXPECT_FALSE(shift.Register(src, dst, valid, interpolate));
            ASSERT_EQ(valid.NumRuns, 3);
            EXPECT_EQ(valid.Runs()[2].Start, 0);
            EXPECT_EQ(valid.Runs()[2].End, 8);
            EXPECT_EQ(valid.Runs()[2].Y, 2);
        }
    Region kept;
    kept.AddRun(1, 2, 3);
    Image none;
    EXPECT_FALSE(Geometry().Register(none, dst, kept));
    EXPECT_EQ(Status::Error().Code, VoidObject);
    EXPECT_EQ(kept.NumRuns, 1);
}

TEST_F(GeometryRegister, OfANewGeometryCopies)
{
    Image src, dst;
    src.Set(9, 7, Gray);
    Fill(src, 1);
    dst.Set(9, 7, Gray);
    Geometry().Undistort(src, dst);
    EXPECT_EQ(SamplesOf(dst), SamplesOf(src));
    Geometry unknown;
    unknown.ModelFit(static_cast<RegistrationModels>(99), src);
    Fill(dst, 2);
    unknown.ReverseRegister(src, dst);
    EXPECT_EQ(SamplesOf(dst), SamplesOf(src));
    unknown.ReverseRegister(src, src);
    EXPECT_EQ(SamplesOf(dst), SamplesOf(src));
}

TEST_F(GeometryRegister, StaysInsideTheSourceBehindTheHorizon)
{
    // The denominator is 0 in the middle of the result.
    Geometry geometry;
    for (const XY& p : {XY(1, 0), XY(0, 1), XY(2, 1), XY(1, 2), XY(0, 0), XY(2, 2)})
        geometry.Append({p.X / (1 - p.X / 4), p.Y / (1 - p.X / 4)}, p);
    Image src, dst;
    src.Set(5, 5, Gray);
    Fill(src, 3);
    dst.Set(9, 3, Gray);
    geometry.ModelFit(Perspective, src);
    ASSERT_EQ(Status::Error().Code, NoError);
    for (const bool interpolate : {true, false}) {
        geometry.Undistort(src, dst, interpolate);
        EXPECT_EQ(Status::Error().Code, NoError);
        EXPECT_EQ(dst.Row(0)[0], src.Row(0)[0]);
        EXPECT_EQ(dst.Row(0)[8], src.Row(0)[0]);
    }
}

TEST_F(GeometryRegister, RefusesWhatWarpsRefuse)
{
    Image none, gray, rgb, rgba, gray32;
    gray.Set(4, 4, Gray);
    rgb.Set(4, 4, Rgb);
    rgba.Set(4, 4, Rgba);
    gray32.Set(4, 4, Gray32);
    const Geometry geometry;
    const struct
    {
        const Image& src;
        Image& dst;
        int code;
        const wchar_t* message;
    } rows[] = {
        {gray, none, VoidObject, L"Void destination image"},
        {gray, rgb, IncompatibleType, L"Incompatible destination image type, Rgb instead of Gray"},
        {rgba, rgba, UnsupportedType, L"The image type (Rgba) is not supported for this operation"},
        {gray32, gray32, UnsupportedType, L"The image type (Gray32) is not supported for this operation"},
    };
    for (const auto& row : rows) {
        geometry.Undistort(row.src, row.dst);
        EXPECT_EQ(Status::Error().Code, row.code);
        EXPECT_EQ(checks::Message(), row.message);
        EXPECT_STREQ(Status::AsciiFunction(), "Tesk::Geometry::Register");
        geometry.ReverseRegister(row.src, row.dst);
        EXPECT_EQ(Status::Error().Code, row.code);
        EXPECT_STREQ(Status::AsciiFunction(), "Tesk::Geometry::ReverseRegister");
    }
}

} // namespace
