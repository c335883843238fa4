// Makes samples/parts.png: washers, rods and a plate on a belt under uneven light, with the noise of a camera.
// The picture is the same at each run.
#include "Scene.h"

#include "Tesk.h"

#include <cmath>
#include <cstdint>
#include <cstdio>

namespace {

constexpr int width = 640, height = 480;

double Parts(double x, double y)
{
    double part = 0;
    part = Max(part, scene::Coverage(scene::Washer(x, y, 120, 110, 26, 60)));
    part = Max(part, scene::Coverage(scene::Washer(x, y, 500, 330, 40, 90)));
    part = Max(part, scene::Coverage(scene::Washer(x, y, 330, 210, 12, 30)));
    part = Max(part, scene::Coverage(scene::Rod(x, y, 430, 90, 190, 14, 12)));
    part = Max(part, scene::Coverage(scene::Rod(x, y, 160, 340, 170, 22, -35)));
    part = Max(part, scene::Coverage(scene::Rod(x, y, 300, 400, 60, 10, 80)));
    return part;
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
            const double light = 1.0 - 0.45 * std::hypot(x - 250.0, y - 180.0) / 500.0;
            const double belt = 62 + 4 * std::sin(y * 0.9) + 3 * std::sin(x * 0.05);
            const double part = Parts(x, y);
            const double gray = light * (belt + part * (205 - belt)) + 9 * (noise.Next() + noise.Next());
            row[x] = static_cast<std::uint8_t>(Clamp(gray, 0.0, 255.0));
        }
    }
    picture.Write(argc > 1 ? argv[1] : "parts.png");
    return Status::Error().Code;
}
