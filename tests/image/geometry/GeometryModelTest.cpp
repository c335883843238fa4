#include "Failures.h"
#include "Noise.h"
#include "image/Geometry.h"

#include <cmath>
#include <functional>
#include <limits>
#include <numbers>

using namespace Tesk;

namespace {

using Numbers = std::vector<double>;

/// A point mapped by a model, written out from its equation.
XY Mapped(RegistrationModels model, const Numbers& c, double x, double y)
{
    double u = 0, v = 0, d = 1;
    switch (model) {
    case Translation:
        return {x + c[2], y + c[5]};
    case Quadratic:
        u = x - c[10], v = y - c[11];
        break;
    case General:
        u = x - c[12], v = y - c[13], d = c[10] * u + c[11] * v + 1;
        break;
    case Perspective:
        d = c[6] * x + c[7] * y + 1;
        break;
    case Rational:
        d = c[12] * x + c[13] * y + 1;
        break;
    default:
        break;
    }
    const double r = std::hypot(u, v);
    if (model == Quadratic || model == General)
        return {(c[0] * u * r + c[1] * v * r + c[2] * u + c[3] * v + c[4]) / d,
                (c[5] * u * r + c[6] * v * r + c[7] * u + c[8] * v + c[9]) / d};
    if (model == Biquadratic || model == Rational)
        return {(c[0] * x * x + c[1] * x * y + c[2] * y * y + c[3] * x + c[4] * y + c[5]) / d,
                (c[6] * x * x + c[7] * x * y + c[8] * y * y + c[9] * x + c[10] * y + c[11]) / d};
    return {(c[0] * x + c[1] * y + c[2]) / d, (c[3] * x + c[4] * y + c[5]) / d};
}

/// A picture of 640 x 480 pixels and a map to some unit of length.
struct Truth
{
    RegistrationModels model;
    Numbers c;
};

const std::vector<Truth>& Truths()
{
    static const std::vector<Truth> truths = {
        {Translation, {0, 0, 12.5, 0, 0, -7.25}},
        {Rotation, {0.6, -0.8, 30, 0.8, 0.6, -40}},
        {Mirroring, {0.6, 0.8, 30, 0.8, -0.6, -40}},
        {Scaling, {0.3, 0, 5, 0, 0.3, -2}},
        {Similarity, {0.24, -0.18, 5, 0.18, 0.24, -2}},
        {Reflection, {0.24, 0.18, 5, 0.18, -0.24, -2}},
        {Affinity, {0.3, 0.05, -40, -0.02, 0.25, 10}},
        {Perspective, {0.3, 0.05, -40, -0.02, 0.25, 10, 2e-4, -1e-4}},
        {Quadratic, {2e-5, 1e-6, 0.25, 0.01, 80, -1e-6, 1.5e-5, -0.02, 0.26, 60, 319.5, 239.5}},
        {General, {2e-5, 1e-6, 0.25, 0.01, 80, -1e-6, 1.5e-5, -0.02, 0.26, 60, 2e-4, -1e-4, 319.5, 239.5}},
        {Biquadratic, {1e-5, -2e-5, 3e-6, 0.25, 0.01, -40, 4e-6, 1e-5, -1e-5, -0.02, 0.26, 10}},
        {Rational, {1e-5, -2e-5, 3e-6, 0.25, 0.01, -40, 4e-6, 1e-5, -1e-5, -0.02, 0.26, 10, 2e-4, -1e-4}},
    };
    return truths;
}

struct Picture : Image
{
    Picture() { Set(640, 480, Gray); }
};

/// Anchors on a grid over the picture, with noise on their destinations.
Geometry Anchored(const Truth& truth, double noise)
{
    checks::Noise random{7};
    Geometry geometry;
    for (int y = 20; y < 480; y += 40)
        for (int x = 20; x < 640; x += 40) {
            const XY p = Mapped(truth.model, truth.c, x, y);
            geometry.Append(XY(x, y), {p.X + noise * (random.Byte() - 127.5) / 127.5,
                                       p.Y + noise * (random.Byte() - 127.5) / 127.5});
        }
    return geometry;
}

double Distance(const XY& a, const XY& b)
{
    return std::hypot(a.X - b.X, a.Y - b.Y);
}

using GeometryModel = checks::IgnoringFailures;

TEST_F(GeometryModel, IsRecoveredFromExactAndFromNoisyAnchors)
{
    const Picture picture;
    for (const Truth& truth : Truths())
        for (const double noise : {0.0, 0.02}) {
            Geometry geometry = Anchored(truth, noise);
            geometry.ModelFit(truth.model, picture);
            ASSERT_EQ(Status::Error().Code, NoError) << truth.model;
            EXPECT_EQ(geometry.Model, truth.model);
            for (int y = 0; y < 480; y += 37)
                for (int x = 0; x < 640; x += 41) {
                    const XY wanted = Mapped(truth.model, truth.c, x, y), found = geometry.MapPoint(XY(x, y));
                    ASSERT_LT(Distance(found, wanted), noise > 0 ? 0.02 : 1e-8) << truth.model << ' ' << x << ' ' << y;
                    // The map back is fitted on its own. It is exact where the inverse has the form of the model;
                    // elsewhere it is off by parts of a pixel (about 3.5 of these to the unit).
                    const bool exact = truth.model <= Perspective;
                    const double bound = exact ? (noise > 0 ? 0.1 : 1e-6) : 2;
                    ASSERT_LT(Distance(geometry.ReverseMapPoint(found), XY(x, y)), bound)
                        << truth.model << ' ' << x << ' ' << y;
                }
            if (noise > 0) continue;
            for (std::size_t i = 0; i < truth.c.size(); i++)
                EXPECT_NEAR(geometry.Forward()[i], truth.c[i], 1e-9 * (1 + std::abs(truth.c[i]))) << truth.model << i;
        }
}

/// The sum of squares that a fit makes least: of the equations, multiplied out by the denominator.
double Squares(const Geometry& geometry, const Numbers& c)
{
    double sum = 0;
    for (int i = 0; i < geometry.NumAnchors; i++) {
        const XY &p = geometry.Src(i), &q = geometry.Dst(i), r = Mapped(geometry.Model, c, p.X, p.Y);
        double d = 1;
        if (geometry.Model == Perspective) d = c[6] * p.X + c[7] * p.Y + 1;
        if (geometry.Model == Rational) d = c[12] * p.X + c[13] * p.Y + 1;
        if (geometry.Model == General) d = c[10] * (p.X - c[12]) + c[11] * (p.Y - c[13]) + 1;
        sum += d * d * ((r.X - q.X) * (r.X - q.X) + (r.Y - q.Y) * (r.Y - q.Y));
    }
    return sum;
}

TEST_F(GeometryModel, HasTheLeastSquares)
{
    const Picture picture;
    for (const Truth& truth : Truths()) {
        Geometry geometry = Anchored(truth, 0.5);
        geometry.ModelFit(truth.model, picture);
        const auto& forward = geometry.Forward();
        const Numbers c(forward.begin(), forward.end());
        const double least = Squares(geometry, c);
        const auto expectMore = [&](const Numbers& other, int what) {
            EXPECT_GT(Squares(geometry, other), least) << truth.model << ' ' << what;
        };
        const std::size_t free =
            truth.model == Quadratic || truth.model == General ? truth.c.size() - 2 : truth.c.size();
        if (truth.model == Translation || truth.model >= Affinity) {
            for (std::size_t i = 0; i < free; i++)
                for (const double step : {-1e-4, 1e-4}) {
                    if (truth.model == Translation && i % 3 != 2) continue;
                    Numbers other = c;
                    other[i] += step * std::abs(c[i]);
                    expectMore(other, static_cast<int>(i));
                }
            continue;
        }
        // What these models leave free: a turn, where there is a scale its size, and the shift.
        for (const double step : {-1e-4, 1e-4}) {
            Numbers turned = c, grown = c, moved = c;
            for (const std::size_t i : {0u, 1u}) {
                turned[i] = std::cos(step) * c[i] - std::sin(step) * c[i + 3];
                turned[i + 3] = std::sin(step) * c[i] + std::cos(step) * c[i + 3];
                grown[i] *= 1 + step, grown[i + 3] *= 1 + step;
            }
            moved[2] += step, moved[5] -= step;
            if (truth.model != Scaling) expectMore(turned, 1);
            if (truth.model >= Scaling) expectMore(grown, 2);
            expectMore(moved, 3);
        }
    }
}

TEST_F(GeometryModel, IsWorkedOutByHandForFewAnchors)
{
    const Image none;
    Geometry one;
    one.Append({3, 4}, {10, 2});
    one.ModelFit(Translation, none);
    EXPECT_EQ(Status::Error().Code, NoError);
    EXPECT_EQ(one.MapPoint({1, 1}).X, 8);
    EXPECT_EQ(one.ReverseMapPoint({8, -1}).Y, 1);

    // A quarter turn, doubled: only the models with a scale follow it.
    Geometry pair;
    pair.Append({0, 0}, {1, 1});
    pair.Append({2, 0}, {1, 5});
    pair.ModelFit(Rotation, none);
    EXPECT_NEAR(Distance(pair.MapPoint({1, 0}), {1, 3}), 0, 1e-12);
    EXPECT_NEAR(Distance(pair.MapPoint({1, 1}), {0, 3}), 0, 1e-12);
    EXPECT_NEAR(Distance(pair.ReverseMapPoint({1, 3}), {1, 0}), 0, 1e-12);
    pair.ModelFit(Similarity, none);
    EXPECT_NEAR(Distance(pair.MapPoint({0, 1}), {-1, 1}), 0, 1e-12);
    pair.ModelFit(Mirroring, none);
    EXPECT_NEAR(Distance(pair.MapPoint({1, 1}), {2, 3}), 0, 1e-12);
    pair.ModelFit(Reflection, none);
    EXPECT_NEAR(Distance(pair.MapPoint({0, 1}), {3, 1}), 0, 1e-12);

    // Stretched along x alone, and back.
    Geometry square;
    for (const int y : {0, 1})
        for (const int x : {0, 1})
            square.Append(XY(x, y), XY(2 * x, y));
    square.ModelFit(Scaling, none);
    EXPECT_DOUBLE_EQ(square.Forward()[0], 1.5);
    EXPECT_DOUBLE_EQ(square.Forward()[4], 1.5);
    EXPECT_DOUBLE_EQ(square.Inverse()[0], 3.0 / 5);
    square.ModelFit(Affinity, none);
    EXPECT_NEAR(Distance(square.MapPoint({0.25, 0.5}), {0.5, 0.5}), 0, 1e-12);
}

TEST_F(GeometryModel, OfQuotientsServesPointsThatNeedNone)
{
    const Picture picture;
    for (const RegistrationModels model : {Perspective, Quadratic, General, Biquadratic, Rational})
        for (const Truth& truth : Truths()) {
            if (truth.model > Affinity) continue;
            Geometry geometry = Anchored(truth, 0);
            geometry.ModelFit(model, picture);
            ASSERT_EQ(Status::Error().Code, NoError) << model << ' ' << truth.model;
            EXPECT_LT(Distance(geometry.MapPoint({200, 333}), Mapped(truth.model, truth.c, 200, 333)), 1e-7) << model;
            EXPECT_LT(Distance(geometry.ReverseMapPoint(geometry.MapPoint({200, 333})), {200, 333}), 1e-6) << model;
        }
}

TEST_F(GeometryModel, OfAnUnknownNumberLeavesPointsAsTheyAre)
{
    const Image none;
    Geometry geometry;
    EXPECT_EQ(geometry.MapPoint({3, 4}).Y, 4);
    geometry.Append({0, 0}, {5, 5});
    geometry.ModelFit(Translation, none);
    for (const int number : {-1, 12, 1000}) {
        geometry.ModelFit(static_cast<RegistrationModels>(number), none);
        EXPECT_EQ(Status::Error().Code, NoError);
        EXPECT_EQ(geometry.Model, number);
        EXPECT_EQ(geometry.MapPoint({3, 4}).X, 3);
    }
}

TEST_F(GeometryModel, IsRefusedForAnchorsThatDoNotTellIt)
{
    constexpr double nan = std::numeric_limits<double>::quiet_NaN(), huge = 1e200;
    const wchar_t* source = L"The source anchor points are forming a degenerate configuration";
    const wchar_t* destination = L"The destination anchor points are forming a degenerate configuration";
    const XY spread[] = {{0.1, 0.7}, {10, 1}, {3, 8}, {7, 7.5}, {2, 4}, {9, 5}, {5, 0}, {4.5, 9}};
    const auto spreadAt = [&](int i) { return spread[i]; };
    const auto equal = [](int) { return XY(0.1, 0.7); };
    const auto line = [](int i) { return XY(1e5 + i / 3.0, 20 - 0.7 * i); };
    const auto infinite = [&](int i) { return i == 1 ? XY(nan, 0) : spread[i]; };
    const auto far = [&](int i) { return XY(huge * spread[i].X, huge * spread[i].Y); };
    using Points = std::function<XY(int)>;
    const struct
    {
        RegistrationModels model;
        int count;
        Points from, to;
        const wchar_t* message;
        const char* context;
    } rows[] = {
        {Translation, 0, spreadAt, spreadAt, L"No anchor points were provided", "Tesk::Failure"},
        {Rotation, 1, spreadAt, spreadAt, L"The Rotation model requires at least 2 anchor points and 1 were provided",
         "Tesk::Failure"},
        {Affinity, 2, spreadAt, spreadAt, L"The Affinity model requires at least 3 anchor points and 2 were provided",
         "Tesk::Failure"},
        {Perspective, 3, spreadAt, spreadAt,
         L"The Perspective model requires at least 4 anchor points and 3 were provided", "Tesk::Failure"},
        {Rational, 6, spreadAt, spreadAt, L"The Rational model requires at least 7 anchor points and 6 were provided",
         "Tesk::Failure"},
        {General, 5, spreadAt, spreadAt, L"The General model requires at least 6 anchor points and 5 were provided",
         "Tesk::Failure"},
        {Translation, 3, infinite, spreadAt, source, "Tesk::Geometry::ModelFit"},
        {Rotation, 3, equal, spreadAt, source, "Tesk::Geometry::ModelFit"},
        {Similarity, 3, equal, spreadAt, source, "Tesk::Geometry::ModelFit"},
        {Scaling, 3, spreadAt, equal, destination, "Tesk::Geometry::ModelFit"},
        {Mirroring, 3, spreadAt, equal, destination, "Tesk::Geometry::ModelFit"},
        {Affinity, 8, line, spreadAt, source, "Tesk::Geometry::ModelFit"},
        {Affinity, 8, spreadAt, line, destination, "Tesk::Geometry::ModelFit"},
        {Perspective, 8, line, spreadAt, source, "Tesk::Geometry::ModelFit"},
        {Perspective, 8, spreadAt, line, destination, "Tesk::Geometry::ModelFit"},
        {Quadratic, 8, line, spreadAt, source, "Tesk::Geometry::ModelFit"},
        {General, 8, line, spreadAt, source, "Tesk::Geometry::ModelFit"},
        {Biquadratic, 8, line, spreadAt, source, "Tesk::Geometry::ModelFit"},
        {Rational, 8, line, spreadAt, source, "Tesk::Geometry::ModelFit"},
        {Rational, 8, far, spreadAt, source, "Tesk::Geometry::ModelFit"},
        {General, 8, spreadAt, infinite, destination, "Tesk::Geometry::ModelFit"},
    };
    const Picture picture;
    for (const auto& row : rows) {
        Geometry anchored;
        for (int i = 0; i < row.count; i++)
            anchored.Append(row.from(i), row.to(i));
        anchored.ModelFit(row.model, picture);
        EXPECT_EQ(Status::Error().Code, OutOfRange) << row.model;
        EXPECT_EQ(checks::Message(), row.message) << row.model;
        EXPECT_STREQ(Status::AsciiFunction(), row.context);
        EXPECT_EQ(anchored.Model, row.model);
        EXPECT_EQ(Distance(anchored.MapPoint({3, 4}), {3, 4}), 0) << row.model;
        EXPECT_EQ(Distance(anchored.ReverseMapPoint({3, 4}), {3, 4}), 0) << row.model;
        EXPECT_EQ(anchored.NumAnchors, row.count);
    }
    Geometry radial = Anchored(Truths()[Quadratic], 0);
    radial.ModelFit(Quadratic, Image());
    EXPECT_EQ(Status::Error().Code, VoidObject);
    EXPECT_EQ(radial.Model, Quadratic);
    // A model that is in force keeps its map.
    Geometry kept = Anchored(Truths()[Scaling], 0);
    kept.ModelFit(Scaling, picture);
    kept.Append({nan, 0}, {0, 0});
    kept.ModelFit(Scaling, picture);
    EXPECT_EQ(checks::Message(), source);
    EXPECT_NEAR(kept.MapPoint({10, 10}).X, 8, 1e-9);
}

TEST_F(GeometryModel, OfAPureScalingStretchesEachAxis)
{
    Geometry geometry;
    geometry.PureScaling(100, 10, 50, 20);
    EXPECT_EQ(geometry.Model, Scaling);
    EXPECT_DOUBLE_EQ(geometry.MapPoint({200, 5}).X, 20);
    EXPECT_DOUBLE_EQ(geometry.MapPoint({200, 5}).Y, 2);
    EXPECT_DOUBLE_EQ(geometry.ReverseMapPoint({20, 2}).Y, 5);
    geometry.PureScaling(100, 10);
    EXPECT_DOUBLE_EQ(geometry.MapPoint({200, 5}).Y, 0.5);
    for (const XY& sizes : {XY(0, 1), XY(1, 0)}) {
        geometry.PureScaling(sizes.X, sizes.Y);
        EXPECT_EQ(Status::Error().Code, OutOfRange);
        EXPECT_EQ(checks::Message(), L"Zero sizes are not allowed");
        EXPECT_STREQ(Status::AsciiFunction(), "Tesk::Geometry::PureScaling");
    }
    geometry.PureScaling(1e300, 1e-300);
    EXPECT_EQ(Status::Error().Code, OutOfRange);
    EXPECT_DOUBLE_EQ(geometry.MapPoint({200, 5}).Y, 0.5);
}

TEST_F(GeometryModel, KeepsAnchorsOfItsOwn)
{
    Geometry geometry;
    const Geometry& constant = geometry;
    for (const auto& call : {std::function<void()>([&] { geometry.Src(0).X = 9; }), {[&] { constant.Src(0); }}}) {
        call();
        EXPECT_EQ(Status::Error().Code, OutOfRange);
        EXPECT_EQ(checks::Message(), L"No anchor points are available");
        EXPECT_STREQ(Status::AsciiFunction(), "Tesk::Geometry::Src");
    }
    geometry.Append({1, 2}, {3, 4});
    geometry.Append(geometry.Dst(0), geometry.Src(0));
    geometry.Dst(2).X = 7;
    EXPECT_EQ(checks::Message(), L"The anchor index (2) is out of the allowed range [0..1]");
    EXPECT_STREQ(Status::AsciiFunction(), "Tesk::Geometry::Dst");
    EXPECT_EQ(constant.Dst(-1).X, 0);
    EXPECT_EQ(constant.Src(1).X, 3);
    EXPECT_EQ(constant.Dst(1).Y, 2);

    Geometry copy(geometry), shared;
    shared.ShallowCopy(geometry, true);
    XY& anchor = geometry.Src(0);
    anchor.X = 50;
    geometry.Append({8, 8}, {8, 8});
    EXPECT_EQ(geometry.Src(0).X, 50);
    EXPECT_EQ(geometry.NumAnchors, 3);
    EXPECT_EQ(copy.Src(0).X, 1);
    EXPECT_EQ(shared.Src(0).X, 1);
    EXPECT_EQ(shared.NumAnchors, 2);
}

} // namespace
