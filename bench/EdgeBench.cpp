// Probes and line gauges: nanoseconds a pixel beside a plain bilinear loop, and the error of the place of an edge with
// both estimators, beside the bound of Cramer and Rao.
#include "Bench.h"

#include <array>
#include <cmath>
#include <cstdio>
#include <random>

namespace {

using namespace Tesk;

constexpr double low = 50, step = 150, pi = 3.14159265358979323846;
constexpr int breadth = 5, length = 32;

double Density(double t)
{
    return std::exp(-t * t / 2) / std::sqrt(2 * pi);
}

double Distribution(double t)
{
    return std::erfc(-t / std::sqrt(2.0)) / 2;
}

/// The mean over a pixel of a blurred step at `edge`.
double PixelOf(double x, double edge, double blur)
{
    const auto integral = [=](double v) { return v * Distribution(v / blur) + blur * Density(v / blur); };
    return low + step * (integral(x + 0.5 - edge) - integral(x - 0.5 - edge));
}

/// An upright edge, or one along a slanted line where `slope` is not 0.
void Paint(Image& image, int width, int height, double edge, double slope, double blur, double noise,
           std::mt19937& generator)
{
    std::normal_distribution<double> normal;
    image.Set(width, height, Gray);
    for (int y = 0; y < height; y++)
        for (int x = 0; x < width; x++) {
            const double value = PixelOf(x, edge + slope * y, blur) + (noise > 0 ? noise * normal(generator) : 0);
            image.Row(y)[x] = static_cast<std::uint8_t>(std::lround(std::fmin(std::fmax(value, 0), 255)));
        }
}

/// The least standard deviation of a place from a probe with white noise, if levels and width are not known either.
double Bound(double blur, double noise)
{
    const double width = std::sqrt(blur * blur + 1.0 / 12);
    double a[4][5] = {};
    for (int i = 0; i <= length; i++) {
        const double t = (i - length / 2 - 0.3) / width;
        const double j[] = {1, Distribution(t), -step * Density(t) / width, -step * t * Density(t) / width};
        for (int r = 0; r < 4; r++)
            for (int c = 0; c < 4; c++)
                a[r][c] += j[r] * j[c];
    }
    // The third unknown's element of the inverse.
    a[2][4] = 1;
    for (int k = 0; k < 4; k++)
        for (int r = 0; r < 4; r++) {
            if (r == k) continue;
            const double factor = a[r][k] / a[k][k];
            for (int c = 0; c < 5; c++)
                a[r][c] -= factor * a[k][c];
        }
    return noise / std::sqrt(double(breadth)) * std::sqrt(a[2][4] / a[2][2]);
}

EdgePoint ProbeOver(double edge, double phase, int smoothing, bool model)
{
    EdgePoint gauge;
    const double from = std::floor(edge) - length / 2 + phase;
    gauge.Beg = {from, 6};
    gauge.End = {from + length, 6};
    gauge.Breadth = breadth;
    gauge.Smoothing = smoothing;
    gauge.MinimumStep = 20;
    gauge.StepModel = model;
    return gauge;
}

/// The largest mean error over phases of the edge and of the probe; faint noise makes up for the rounding of gray
/// values, which is the same in all rows otherwise.
double WorstBias(double blur, int smoothing, bool model, std::mt19937& generator)
{
    constexpr int repetitions = 100;
    double worst = 0;
    for (int e = 0; e < 10; e++)
        for (int p = 0; p < 5; p++) {
            double sum = 0;
            for (int k = 0; k < repetitions; k++) {
                Image image;
                Paint(image, 80, 13, 40 + e / 10.0, 0, blur, 0.5, generator);
                EdgePoint gauge = ProbeOver(40 + e / 10.0, p / 5.0, smoothing, model);
                gauge.Detect(image);
                sum += gauge.FittedEdge(BestStep, Both).X - 40 - e / 10.0;
            }
            worst = std::fmax(worst, std::abs(sum / repetitions));
        }
    return worst;
}

double Scatter(double blur, int smoothing, double noise, bool model, std::mt19937& generator)
{
    constexpr int repetitions = 1500;
    double sum = 0, squares = 0;
    for (int k = 0; k < repetitions; k++) {
        Image image;
        Paint(image, 80, 13, 40.3, 0, blur, noise, generator);
        EdgePoint gauge = ProbeOver(40.3, 0, smoothing, model);
        gauge.Detect(image);
        const double error = gauge.FittedEdge(BestStep, Both).X - 40.3;
        sum += error;
        squares += error * error;
    }
    return std::sqrt(squares / repetitions - sum * sum / repetitions / repetitions);
}

void PrintAccuracy()
{
    std::mt19937 generator(7);
    std::printf("A probe of breadth %d over a step of %g: bias, and scatter over the bound at noise 2 and 8\n", breadth,
                step);
    for (const double blur : {0.7, 1.0, 1.5, 2.0})
        for (const int smoothing : {1, 3, 5})
            for (const bool model : {false, true})
                std::printf("blur %.1f smoothing %d %-6s bias %.4f   noise 2: %.2f   noise 8: %.2f\n", blur, smoothing,
                            model ? "step" : "vertex", WorstBias(blur, smoothing, model, generator),
                            Scatter(blur, smoothing, 2, model, generator) / Bound(blur, 2),
                            Scatter(blur, smoothing, 8, model, generator) / Bound(blur, 8));
}

/// The same pixels, read by a plain loop.
int ReadPlainly(const Image& image, const EdgeLine& gauge, int probes)
{
    const double dx = (gauge.RefEnd.X - gauge.RefBeg.X) / (probes - 1),
                 dy = (gauge.RefEnd.Y - gauge.RefBeg.Y) / (probes - 1), unit = std::hypot(dx, dy);
    const double ux = -dy / unit, uy = dx / unit, half = length / 2.0;
    int total = 0;
    for (int probe = 0; probe < probes; probe++)
        for (int i = 0; i <= length; i++) {
            double sum = 0;
            for (int j = 0; j < breadth; j++) {
                const double across = j - (breadth - 1) / 2.0;
                const double x = gauge.RefBeg.X + probe * dx + (i - half) * ux - across * uy;
                const double y = gauge.RefBeg.Y + probe * dy + (i - half) * uy + across * ux;
                const int column = static_cast<int>(x), row = static_cast<int>(y);
                const double fx = x - column, fy = y - row;
                const std::uint8_t *upper = image.Row(row) + column, *lower = image.Row(row + 1) + column;
                const double top = upper[0] + fx * (upper[1] - upper[0]),
                             bottom = lower[0] + fx * (lower[1] - lower[0]);
                sum += top + fy * (bottom - top);
            }
            total += static_cast<int>(sum + 0.5);
        }
    return total;
}

void PrintSpeed()
{
    std::mt19937 generator(7);
    Image image;
    Paint(image, 480, 640, 200.3, 0.1, 1, 2, generator);
    EdgeLine gauge, model;
    gauge.Locate({232, 320}, 300, 84.3, length);
    gauge.Density = 300 / 99.0 + 1e-9;
    gauge.Breadth = breadth;
    model = gauge;
    model.StepModel = true;
    volatile int sink = 0;
    const auto [ours, fitted, plain] = bench::Race<3>({[&] { gauge.Detect(image); }, [&] { model.Detect(image); },
                                                       [&] { sink = ReadPlainly(image, gauge, gauge.NumSamples); }},
                                                      2000);
    const double pixels = static_cast<double>(gauge.NumSamples) * (length + 1) * breadth;
    std::printf("EdgeLine of %d probes, %d x %d: %.2f ns a pixel with the fit, %.2f with the step model, a plain "
                "bilinear loop %.2f\n",
                int(gauge.NumSamples), length, breadth, 1000 * ours / pixels, 1000 * fitted / pixels,
                1000 * plain / pixels);
}

} // namespace

int main(int argc, char** argv)
{
    bench::Start(argc, argv);
    PrintSpeed();
    PrintAccuracy();
}
