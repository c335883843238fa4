#include "image/Kernel.h"
#include "image/filter/GradientVector.h"

#include "image/filter/FilterChecks.h"

#include <cmath>
#include <numbers>
#include <utility>

using namespace Tesk;
using namespace Tesk::checks;

namespace {

class KernelEdgesTest : public IgnoringFailures
{};

struct Components
{
    int x, y;
};

/// Masks with a weight for the middle row or column.
Components Masked(const Pixels& p, int x, int y, int outer, int middle)
{
    Components g{0, 0};
    for (int k = -1; k <= 1; k++) {
        const int weight = k == 0 ? middle : outer;
        g.x += weight * (p(x + 1, y + k) - p(x - 1, y + k));
        g.y += weight * (p(x + k, y + 1) - p(x + k, y - 1));
    }
    return g;
}

Components Magnitudes(Components g)
{
    return {std::abs(g.x), std::abs(g.y)};
}

std::vector<int> Binomials(int order)
{
    std::vector<int> row{1};
    for (int k = 0; k < order; k++) {
        std::vector<int> next(row.size() + 1);
        for (std::size_t i = 0; i < row.size(); i++) {
            next[i] += row[i];
            next[i + 1] += row[i];
        }
        row = next;
    }
    return row;
}

int OrderOf(GradientTypes type)
{
    return type == Canny1Gradient ? 4 : type == Canny15Gradient ? 6 : 8;
}

/// The smoothed image at 256 times the gray scale.
int SmoothedAt(const Pixels& p, int x, int y, GradientTypes type)
{
    const int order = OrderOf(type), r = order / 2;
    const auto weights = Binomials(order);
    long long sum = 0;
    for (int j = -r; j <= r; j++)
        for (int i = -r; i <= r; i++)
            sum += static_cast<long long>(weights[static_cast<std::size_t>(i + r)]) *
                   weights[static_cast<std::size_t>(j + r)] *
                   p(std::clamp(x, 0, p.Width() - 1) + i, std::clamp(y, 0, p.Height() - 1) + j);
    return static_cast<int>(sum / (type == Canny1Gradient ? 1 : type == Canny15Gradient ? 16 : 256));
}

Components CannyAt(const Pixels& p, int x, int y, GradientTypes type)
{
    const auto component = [](int after, int before, bool edge) {
        return static_cast<int>(std::floor((after - before) / (edge ? 64.0 : 128.0)));
    };
    return {component(SmoothedAt(p, x + 1, y, type), SmoothedAt(p, x - 1, y, type), x == 0 || x == p.Width() - 1),
            component(SmoothedAt(p, x, y + 1, type), SmoothedAt(p, x, y - 1, type), y == 0 || y == p.Height() - 1)};
}

/// The sums over 21 pixels: values, squares, weighted by column and by row.
struct Plane
{
    double S = 0, Q = 0, A = 0, B = 0;
    bool inside;

    Plane(const Pixels& p, int x, int y) : inside(x >= 2 && y >= 2 && x + 2 < p.Width() && y + 2 < p.Height())
    {
        for (int j = -2; j <= 2; j++)
            for (int i = -2; i <= 2; i++) {
                if (std::abs(i) == 2 && std::abs(j) == 2) continue;
                const double v = p(x + i, y + j);
                S += v;
                Q += v * v;
                A += v * i;
                B += v * j;
            }
    }
    double Denominator() const { return (21 * Q - S * S + 44100.0) * 34.0; }
};

} // namespace

TEST_F(KernelEdgesTest, DifferencesAndMasksFollowTheirFormulas)
{
    using Call = void (*)(const Image&, Image&, GrayClipping);
    using Of = int (*)(Components, GrayClipping);
    const Of larger = [](Components g, GrayClipping) { return std::max(g.x, g.y); };
    const struct
    {
        const char* name;
        Call call;
        int outer, middle;
        std::function<int(Components)> saturated, rescaled;
    } cases[] = {
        {"GradientSum", Kernel::GradientSum, 0, 1, [](Components g) { return g.x + g.y; },
         [](Components g) { return (g.x + g.y) / 2; }},
        {"Sobel", Kernel::Sobel, 1, 2, [=](Components g) { return larger(g, Saturate); },
         [=](Components g) { return larger(g, Rescale) / 4; }},
        {"SobelSum", Kernel::SobelSum, 1, 2, [](Components g) { return g.x + g.y; },
         [](Components g) { return (g.x + g.y) / 8; }},
        {"SobelX", Kernel::SobelX, 1, 2, [](Components g) { return g.x; }, [](Components g) { return g.x / 4; }},
        {"SobelY", Kernel::SobelY, 1, 2, [](Components g) { return g.y; }, [](Components g) { return g.y / 4; }},
        {"Prewitt", Kernel::Prewitt, 1, 1, [=](Components g) { return larger(g, Saturate); },
         [=](Components g) { return larger(g, Rescale) * 42 / 128; }},
        {"PrewittSum", Kernel::PrewittSum, 1, 1, [](Components g) { return g.x + g.y; },
         [](Components g) { return (g.x + g.y) * 42 / 256; }},
        {"PrewittX", Kernel::PrewittX, 1, 1, [](Components g) { return g.x; },
         [](Components g) { return g.x * 85 / 256; }},
        {"PrewittY", Kernel::PrewittY, 1, 1, [](Components g) { return g.y; },
         [](Components g) { return g.y * 85 / 256; }},
    };
    for (const auto& c : cases)
        for (const GrayClipping clip : {Saturate, Rescale})
            CheckSmallWindows(
                c.name, Gray, [&](auto& s, auto& d) { c.call(s, d, clip); },
                [&](const Pixels& p, int x, int y) {
                    const Components g = Magnitudes(Masked(p, x, y, c.outer, c.middle));
                    return std::min(255, clip == Saturate ? c.saturated(g) : c.rescaled(g));
                });
    for (const PixelTypes type : {Gray, Gray16}) {
        const auto check = [&](const char* name, Filter filter, auto of) {
            CheckSmallWindows(name, type, filter,
                              [&](const Pixels& p, int x, int y) { return of(Magnitudes(Masked(p, x, y, 0, 1))); });
        };
        check("Gradient", Kernel::Gradient, [](Components g) { return std::max(g.x, g.y); });
        check("GradientX", Kernel::GradientX, [](Components g) { return g.x; });
        check("GradientY", Kernel::GradientY, [](Components g) { return g.y; });
    }
}

TEST_F(KernelEdgesTest, CannyMagnitudesAndDirections)
{
    for (const GradientTypes type : {Canny1Gradient, Canny15Gradient, Canny2Gradient}) {
        CheckSmallWindows(
            "canny", Gray, [&](auto& s, auto& d) { Kernel::Canny(s, d, type); },
            [&](const Pixels& p, int x, int y) {
                const Components g = CannyAt(p, x, y, type);
                return Byte(std::sqrt(static_cast<double>(g.x * g.x + g.y * g.y)));
            });
        for (const bool full : {true, false})
            CheckSmallWindows(
                "phase", Gray, [&](auto& s, auto& d) { Kernel::CannyPhase(s, d, type, full); },
                [&](const Pixels& p, int x, int y) {
                    const Components g = CannyAt(p, x, y, type);
                    const double turn = std::atan2(static_cast<double>(g.y), static_cast<double>(g.x)) * 256;
                    if (full) return static_cast<int>(turn / (2 * std::numbers::pi) + 128) & 255;
                    const int v = static_cast<int>(turn / std::numbers::pi + 255);
                    return v < 256 ? v : 511 - v;
                });
    }
}

TEST_F(KernelEdgesTest, DirectionsOfPlainRampsAreThoseOfTheFields)
{
    const struct
    {
        int dx, dy, full, folded;
    } cases[] = {{4, 0, 128, 255}, {0, 4, 192, 128}, {-4, 0, 0, 0}, {0, -4, 64, 127}, {4, 4, 160, 192}};
    for (const auto& c : cases) {
        Image src, dst;
        src.Set(21, 21, Gray);
        for (int y = 0; y < 21; y++)
            for (int x = 0; x < 21; x++)
                src.Row(y)[x] = static_cast<std::uint8_t>(128 + c.dx * (x - 10) + c.dy * (y - 10));
        Kernel::CannyPhase(src, dst, Canny1Gradient);
        EXPECT_EQ(dst.Row(10)[10], c.full);
        Kernel::CannyPhase(src, dst, Canny1Gradient, false);
        EXPECT_EQ(dst.Row(10)[10], c.folded);
        Kernel::Canny(src, dst, Canny2Gradient);
        EXPECT_EQ(dst.Row(10)[10], static_cast<int>(4 * std::hypot(c.dx, c.dy)));
    }
}

TEST_F(KernelEdgesTest, StatisticsOfNeighbourhoods)
{
    CheckSmallWindows("correlated", Gray, Kernel::CorrelatedGradient, [](const Pixels& p, int x, int y) {
        const Plane f(p, x, y);
        return f.inside ? Byte((f.A * f.A + f.B * f.B) * 5355.0 / f.Denominator()) : 0;
    });
    for (const auto& [w, h] : {std::pair{1, 1}, {3, 3}, {5, 1}, {9, 15}})
        CheckSmallWindows(
            "deviation", Gray, [&](auto& s, auto& d) { Kernel::BoxDeviation(w, h, s, d); },
            [&](const Pixels& p, int x, int y) {
                double S = 0, Q = 0;
                const double N = w * h;
                for (int j = -h / 2; j <= h / 2; j++)
                    for (int i = -w / 2; i <= w / 2; i++) {
                        const double v = p(x + i, y + j);
                        S += v;
                        Q += v * v;
                    }
                return static_cast<int>(std::sqrt((Q - S * S / N) / N));
            });
    for (const int size : {255, 257})
        CheckWindow(
            "large deviation", Gray, 17, 3, [&](auto& s, auto& d) { Kernel::BoxDeviation(size, size, s, d); },
            [&](const Pixels& p, int x, int y) {
                long long S = 0, Q = 0;
                const long long N = size * size;
                for (int j = -size / 2; j <= size / 2; j++)
                    for (int i = -size / 2; i <= size / 2; i++) {
                        const int v = p(x + i, y + j);
                        S += v;
                        Q += v * v;
                    }
                return static_cast<int>(std::sqrt(static_cast<double>(N * Q - S * S)) / static_cast<double>(N));
            });
    for (const int size : {1, 3, 7})
        for (const bool larger : {false, true})
            CheckSmallWindows(
                "cornerness", Gray, [&](auto& s, auto& d) { Kernel::Cornerness(size, s, d, larger); },
                [&](const Pixels& p, int x, int y) {
                    double a = 0, b = 0, c = 0;
                    for (int j = -size / 2; j <= size / 2; j++)
                        for (int i = -size / 2; i <= size / 2; i++) {
                            const int u = std::clamp(x + i, 0, p.Width() - 1), v = std::clamp(y + j, 0, p.Height() - 1);
                            Components g = Masked(p, u, v, 0, 1);
                            if (u == 0 || u == p.Width() - 1) g.x = std::clamp(2 * g.x, -255, 255);
                            if (v == 0 || v == p.Height() - 1) g.y = std::clamp(2 * g.y, -255, 255);
                            a += g.x * g.x;
                            b += g.x * g.y;
                            c += g.y * g.y;
                        }
                    const double m = (a + c) / 2, root = std::sqrt(std::max(0.0, m * m - (a * c - b * b)));
                    return Byte((larger ? m + root : m - root) * 0.0078125 /
                                std::trunc(std::sqrt(static_cast<double>(size * size * size))));
                });
}

TEST_F(KernelEdgesTest, GradientVectorsOfEveryType)
{
    const struct
    {
        GradientTypes type;
        int gain;
        std::function<Components(const Pixels&, int, int)> formula;
    } cases[] = {{StandardGradient, 1, [](const Pixels& p, int x, int y) { return Masked(p, x, y, 0, 1); }},
                 {PrewittGradient, 3, [](const Pixels& p, int x, int y) { return Masked(p, x, y, 1, 1); }},
                 {SobelGradient, 4, [](const Pixels& p, int x, int y) { return Masked(p, x, y, 1, 2); }},
                 {CorrelatedGradient, 1,
                  [](const Pixels& p, int x, int y) {
                      const Plane f(p, x, y);
                      const double D = std::sqrt(f.Denominator());
                      return f.inside ? Components{static_cast<int>(f.A * 1020 / D), static_cast<int>(f.B * 1020 / D)}
                                      : Components{0, 0};
                  }},
                 {Canny1Gradient, 1, [](const Pixels& p, int x, int y) { return CannyAt(p, x, y, Canny1Gradient); }},
                 {Canny15Gradient, 5, [](const Pixels& p, int x, int y) { return CannyAt(p, x, y, Canny15Gradient); }},
                 {Canny2Gradient, 35, [](const Pixels& p, int x, int y) { return CannyAt(p, x, y, Canny2Gradient); }}};
    const int limits[] = {255, 767, 1023};
    for (const auto& c : cases)
        for (const SIMDLevels level : allLevels)
            for (int width = 1; width <= 35; width += width < 6 ? 1 : 7)
                for (const int height : {1, 2, 3, 8}) {
                    const AtLevel at(level);
                    Image src, grad;
                    Fill(src, Gray, width, height, static_cast<unsigned>(width + height));
                    grad.Set(width, height, Grad);
                    gradients::Compute(src, c.type, grad);
                    EXPECT_EQ(grad.GradGain, c.gain);
                    const Pixels p(src);
                    for (int y = 0; y < height; y++)
                        for (int x = 0; x < width; x++) {
                            Components g = c.formula(p, x, y);
                            if (c.type <= SobelGradient) {
                                const int limit = limits[c.type];
                                if (x == 0 || x == width - 1) g.x = std::clamp(2 * g.x, -limit, limit);
                                if (y == 0 || y == height - 1) g.y = std::clamp(2 * g.y, -limit, limit);
                            }
                            ASSERT_EQ(grad.Row<GradPixel>(y)[x].X, g.x) << int{c.type} << ' ' << x << ' ' << y;
                            ASSERT_EQ(grad.Row<GradPixel>(y)[x].Y, g.y) << int{c.type} << ' ' << x << ' ' << y;
                        }
                }
    EXPECT_EQ(gradients::Gain(ExternalGradient), 0);
}

TEST_F(KernelEdgesTest, BadCallsAreRefused)
{
    Image gray, gray16, nothing, dst;
    Fill(gray, Gray, 8, 4, 3);
    Fill(gray16, Gray16, 8, 4, 3);
    const wchar_t* type16 = L"The image type (Gray16) is not supported for this operation";
    const struct
    {
        std::function<void()> call;
        int code;
        const wchar_t* message;
        const char* context;
    } cases[] = {{[&] { Kernel::Gradient(nothing, dst); }, VoidObject, L"Void source or destination image", "Gradient"},
                 {[&] { Kernel::GradientSum(gray16, dst); }, UnsupportedType, type16, "GradientSum"},
                 {[&] { Kernel::GradientSum(gray, dst, Absolute); }, OutOfRange,
                  L"The clipping mode (Absolute) is not supported for this operation", "GradientSum"},
                 {[&] { Kernel::Sobel(gray, dst, Absolute); }, OutOfRange,
                  L"The clipping mode (Absolute) is not supported for this operation", "Sobel"},
                 {[&] { Kernel::PrewittY(gray, dst, Negative); }, OutOfRange,
                  L"The clipping mode (Negative) is not supported for this operation", "PrewittY"},
                 {[&] { Kernel::SobelX(gray16, dst); }, UnsupportedType, type16, "SobelX"},
                 {[&] { Kernel::Canny(gray, dst, SobelGradient); }, UnsupportedType,
                  L"The gradient type (SobelGradient) is not supported for this operation; use one of Canny 1/1.5/2",
                  "Canny"},
                 {[&] { Kernel::CannyPhase(gray, dst, InternalGradient); }, UnsupportedType,
                  L"The gradient type (InternalGradient) is not supported for this operation; use one of Canny 1/1.5/2",
                  "CannyPhase"},
                 {[&] { Kernel::Canny(gray16, dst, Canny1Gradient); }, UnsupportedType, type16, "Canny"},
                 {[&] { Kernel::CorrelatedGradient(gray16, dst); }, UnsupportedType, type16, "CorrelatedGradient"},
                 {[&] { Kernel::BoxDeviation(3, 2, gray, dst); }, OutOfRange,
                  L"The filter Height (2) must be a positive odd number", "BoxDeviation"},
                 {[&] { Kernel::BoxDeviation(0, 3, gray, dst); }, OutOfRange,
                  L"The filter Width (0) must be a positive odd number", "BoxDeviation"},
                 {[&] { Kernel::Cornerness(4, gray, dst); }, OutOfRange,
                  L"The filter size (4) must be a positive odd number", "Cornerness"},
                 {[&] { Kernel::Cornerness(3, gray16, dst); }, UnsupportedType, type16, "Cornerness"}};
    for (const auto& c : cases) {
        c.call();
        EXPECT_EQ(Status::Error().Code, c.code) << c.context;
        EXPECT_EQ(Message(), c.message) << c.context;
        EXPECT_EQ(Status::AsciiFunction(), std::string("Tesk::Kernel::") + c.context);
        EXPECT_EQ(dst.Type, Undefined);
    }
}
