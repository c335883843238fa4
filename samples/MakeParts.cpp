// Makes samples/parts.png: washers, rods and a plate on a belt under uneven light, with the noise of a camera.
// The picture is the same at each run.
#include "Tesk.h"

#include <cmath>
#include <cstdint>
#include <cstdio>

namespace {

constexpr int width = 640, height = 480;

/// A linear congruential generator (Knuth's MMIX constants), so that every machine makes the same picture.
class Noise
{
public:
    double Next()
    {
        state_ = state_ * 6364136223846793005u + 1442695040888963407u;
        return static_cast<double>(state_ >> 40) / static_cast<double>(1u << 24) - 0.5;
    }

private:
    std::uint64_t state_ = 20;
};

/// How much of a pixel lies inside a shape, from the signed distance to its edge.
double Coverage(double distance)
{
    return Clamp(0.5 - distance, 0.0, 1.0);
}

double Washer(double x, double y, double cx, double cy, double inner, double outer)
{
    const double r = std::hypot(x - cx, y - cy);
    return Coverage(Max(r - outer, inner - r));
}

double Rod(double x, double y, double cx, double cy, double length, double radius, double degrees)
{
    const double angle = degrees * 3.14159265358979323846 / 180;
    const double along = (x - cx) * std::cos(angle) + (y - cy) * std::sin(angle);
    const double across = (y - cy) * std::cos(angle) - (x - cx) * std::sin(angle);
    const double beyond = Max(std::abs(along) - length / 2, 0.0);
    return Coverage(std::hypot(beyond, across) - radius);
}

double Parts(double x, double y)
{
    double part = 0;
    part = Max(part, Washer(x, y, 120, 110, 26, 60));
    part = Max(part, Washer(x, y, 500, 330, 40, 90));
    part = Max(part, Washer(x, y, 330, 210, 12, 30));
    part = Max(part, Rod(x, y, 430, 90, 190, 14, 12));
    part = Max(part, Rod(x, y, 160, 340, 170, 22, -35));
    part = Max(part, Rod(x, y, 300, 400, 60, 10, 80));
    return part;
}

} // namespace

int main(int argc, char** argv)
{
    Image picture;
    picture.Set(width, height, Gray);
    Noise noise;
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
