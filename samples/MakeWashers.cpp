// Makes samples/washers.png: washers and bolts beside a target of dots under uneven light, seen by a camera that stands
// a little askew, with its blur and noise; and samples/washers.txt, the true sizes. The files are the same at each run.
// usage: make-washers [IMAGE [SIZES]]
#include "Scene.h"

#include "Tesk.h"

#include <cmath>
#include <cstdint>
#include <cstdio>

namespace {

constexpr int width = 1000, height = 760;
/// What the program that measures has to find out.
constexpr double millimetresPerPixel = 0.1003, turn = 3.2 * 3.14159265358979323846 / 180;
/// The edges of the lens, in pixels.
constexpr double blur = 2.2;

/// Places and sizes in millimetres.
struct Washer
{
    double x, y, outer, inner;
};
constexpr Washer washers[] = {{54, 14, 20, 10.5}, {80, 15, 16, 8.4}, {57, 36, 12, 6.4}, {77, 35, 10, 5.3},
                              {14, 56, 20, 10.5}, {36, 58, 12, 6.4}, {88, 55, 16, 8.4}};
struct Bolt
{
    double x, y, length, diameter, degrees;
};
constexpr Bolt bolts[] = {{62, 58, 26, 6, -20}, {92, 34, 18, 5, 75}};

struct Target
{
    double x, y, step, diameter;
    int columns, rows;
};
constexpr Target target{9, 10, 4, 2, 9, 7};

double Scene(double x, double y)
{
    double distance = 1e9;
    for (const Washer& washer : washers)
        distance = Min(distance, scene::Washer(x, y, washer.x, washer.y, washer.inner / 2, washer.outer / 2));
    for (const Bolt& bolt : bolts)
        distance = Min(distance,
                       scene::Rod(x, y, bolt.x, bolt.y, bolt.length - bolt.diameter, bolt.diameter / 2, bolt.degrees));
    const auto nearest = [](double at, double first, double step, int count) {
        return first + step * Clamp(std::round((at - first) / step), 0.0, count - 1.0);
    };
    const double dotX = nearest(x, target.x, target.step, target.columns);
    const double dotY = nearest(y, target.y, target.step, target.rows);
    return Min(distance, std::hypot(x - dotX, y - dotY) - target.diameter / 2);
}

} // namespace

int main(int argc, char** argv)
{
    Image picture;
    picture.Set(width, height, Gray);
    scene::Noise noise;
    for (int y = 0; y < height; y++) {
        std::uint8_t* row = picture.Row(y);
        for (int x = 0; x < width; x++) {
            const double u = (x - width / 2.0) * millimetresPerPixel, v = (y - height / 2.0) * millimetresPerPixel;
            const double sceneX = u * std::cos(turn) - v * std::sin(turn) + 51;
            const double sceneY = u * std::sin(turn) + v * std::cos(turn) + 36;
            const double light = 1.0 - 0.4 * std::hypot(x - 380.0, y - 260.0) / 700.0;
            const double belt = 55 + 4 * std::sin(y * 0.21) + 3 * std::sin(x * 0.05);
            const double part = scene::Coverage(Scene(sceneX, sceneY) / millimetresPerPixel, blur);
            const double gray = light * (belt + part * (210 - belt)) + 8 * (noise.Next() + noise.Next());
            row[x] = static_cast<std::uint8_t>(Clamp(gray, 0.0, 255.0));
        }
    }
    picture.Write(argc > 1 ? argv[1] : "washers.png");
    std::FILE* sizes = std::fopen(argc > 2 ? argv[2] : "washers.txt", "w");
    if (!sizes) return 1;
    std::fprintf(sizes, "Outer\tInner\n");
    for (const Washer& washer : washers)
        std::fprintf(sizes, "%g\t%g\n", washer.outer, washer.inner);
    std::fclose(sizes);
    return Status::Error().Code;
}
