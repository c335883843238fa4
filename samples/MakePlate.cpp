// Makes samples/plate.png and samples/plate-moved.png: a machined plate with a bore and a slot, brushed, under uneven
// light, with the blur and the noise of a camera; the second one moved and turned. And samples/plate.txt, the true
// sizes. The files are the same at each run. usage: make-plate [IMAGE MOVED SIZES]
#include "Scene.h"

#include "Tesk.h"

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <cstdio>
#include <vector>

namespace {

constexpr int width = 800, height = 600;
constexpr double pi = 3.14159265358979323846;

/// Sizes in millimetres, from the middle of the plate.
constexpr double millimetresPerPixel = 0.05;
constexpr double plateLength = 30, plateWidth = 20, cornerRadius = 1.5;
constexpr double boreX = -7, boreY = 0, boreDiameter = 12;
constexpr double slotX = 7, slotY = 1, slotLength = 11, slotWidth = 4, slotDegrees = 30;

struct Pose
{
    double x, y, degrees; ///< of the middle of the plate, in pixels
};

/// How far a place is from the edge of the plate, below 0 on its metal.
double Plate(double x, double y)
{
    const double u = std::abs(x) - plateLength / 2 + cornerRadius, v = std::abs(y) - plateWidth / 2 + cornerRadius;
    const double outline = std::hypot(Max(u, 0.0), Max(v, 0.0)) + Min(Max(u, v), 0.0) - cornerRadius;
    const double bore = std::hypot(x - boreX, y - boreY) - boreDiameter / 2;
    const double slot = scene::Rod(x, y, slotX, slotY, slotLength - slotWidth, slotWidth / 2, slotDegrees);
    return Max(outline, Max(-bore, -slot));
}

/// Three means of three pixels along each axis are close to a Gaussian.
void Blur(std::vector<double>& light)
{
    std::vector<double> former;
    for (const int stride : {1, width})
        for (int pass = 0; pass < 3; pass++) {
            former = light;
            for (std::size_t i = static_cast<std::size_t>(stride); i + static_cast<std::size_t>(stride) < light.size();
                 i++)
                light[i] = (former[i - static_cast<std::size_t>(stride)] + former[i] +
                            former[i + static_cast<std::size_t>(stride)]) /
                           3;
        }
}

void Make(const Pose& pose, scene::Noise& noise, const char* path)
{
    const double c = std::cos(pose.degrees * pi / 180), s = std::sin(pose.degrees * pi / 180);
    constexpr int fine = 4;
    std::vector<double> light;
    for (int y = 0; y < height; y++)
        for (int x = 0; x < width; x++) {
            double sum = 0;
            for (int j = 0; j < fine; j++)
                for (int i = 0; i < fine; i++) {
                    const double dx = x + (i + 0.5) / fine - 0.5 - pose.x, dy = y + (j + 0.5) / fine - 0.5 - pose.y;
                    const double u = (c * dx + s * dy) * millimetresPerPixel;
                    const double v = (c * dy - s * dx) * millimetresPerPixel;
                    // The brush went along the plate.
                    const double metal = 170 + 4 * std::sin(9 * v + std::sin(0.7 * u)) + 3 * std::sin(23 * v);
                    sum += 40 + scene::Coverage(Plate(u, v) / millimetresPerPixel, 1.0 / fine) * (metal - 40);
                }
            light.push_back(sum / (fine * fine));
        }
    Blur(light);
    Image picture;
    picture.Set(width, height, Gray);
    for (int y = 0; y < height; y++)
        for (int x = 0; x < width; x++) {
            const double lamp = 1.08 - 0.25 * std::hypot(x - 330.0, y - 220.0) / 500;
            const double gray =
                lamp * light[static_cast<std::size_t>(y * width + x)] + 5 * (noise.Next() + noise.Next());
            picture.Row(y)[x] = static_cast<std::uint8_t>(Clamp(gray + 0.5, 0.0, 255.0));
        }
    picture.Write(path);
}

} // namespace

int main(int argc, char** argv)
{
    const bool named = argc > 3;
    scene::Noise noise;
    Make({401.3, 297.6, 0}, noise, named ? argv[1] : "plate.png");
    Make({388.45, 311.8, 14.3}, noise, named ? argv[2] : "plate-moved.png");
    std::FILE* sizes = std::fopen(named ? argv[3] : "plate.txt", "w");
    if (!sizes) return 1;
    std::fprintf(sizes, "Diameter\tWidth\tSlot\tAngle\n%g\t%g\t%g\t%g\n", boreDiameter, plateWidth, slotWidth,
                 slotDegrees);
    std::fclose(sizes);
    return Status::Error().Code;
}
