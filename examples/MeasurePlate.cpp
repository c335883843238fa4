// Measures a machined plate by gauges: the diameter and the roundness of its bore, its width, the width of its slot and
// the angle of it, in millimetres and degrees. The gauges were placed on the first picture; on the others the plate is
// found and they move along with it.
// usage: measure-plate [FOLDER [IMAGE...]]; writes plate.txt into the folder, and fails where two pictures of the plate
// disagree by more than a fiftieth of a pixel.
#include "Tesk.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <cstdio>
#include <filesystem>
#include <string>
#include <system_error>
#include <vector>

namespace {

constexpr double degree = 3.14159265358979323846 / 180;
constexpr double millimetresPerPixel = 0.05;
constexpr int leastArea = 10000;

/// Where the gauges stand on the first picture.
const XY boreCentre(261, 298), plateCentre(401, 298), slotCentre(541, 318);
constexpr double boreRadius = 120, plateLength = 440, plateWidth = 400, slotLength = 120, slotWidth = 80,
                 slotAngle = 30;
constexpr double probeLength = 32;

/// Where a plate lies; it turns by less than a quarter.
struct Place
{
    XY centre;
    double degrees;
};

Place Located(const Image& picture)
{
    Blobs blobs;
    blobs.Segment(picture, true, true, leastArea);
    blobs.Evaluate(BlobArea, picture);
    blobs.Evaluate(BlobCenter, picture);
    blobs.Evaluate(BlobEllipse, picture);
    blobs.ByFeatureSort(BlobArea, picture, false);
    // Places are in millimetres, and the angle of an ellipse counts from x away from y.
    return {XY(blobs.FloatFeature(0, BlobCenterX) / millimetresPerPixel,
               blobs.FloatFeature(0, BlobCenterY) / millimetresPerPixel),
            -blobs.FloatFeature(0, BlobEllipseAngle)};
}

/// Takes a place on the first picture to another one.
XY Moved(XY place, const Place& from, const Place& to)
{
    const double c = std::cos((to.degrees - from.degrees) * degree), s = std::sin((to.degrees - from.degrees) * degree);
    const double x = place.X - from.centre.X, y = place.Y - from.centre.Y;
    return {to.centre.X + c * x - s * y, to.centre.Y + s * x + c * y};
}

/// Five pixels broad, for edges that a lens has spread over three.
template <typename Gauge>
void Tune(Gauge& gauge)
{
    gauge.Breadth = 5;
    gauge.Smoothing = 5;
    gauge.Density = 2;
}

/// Detects twice: the second time from where the edge is.
template <typename Gauge>
bool Settle(Gauge& gauge, const Image& picture)
{
    if (!gauge.Detect(picture)) return false;
    gauge.Realign();
    return gauge.Detect(picture);
}

constexpr std::array names{"Diameter", "Roundness", "Width", "Slot", "Angle"};
using Measures = std::array<double, names.size()>;

bool Measured(const Image& picture, const Place& reference, const Place& pose, Measures& sizes)
{
    const double turn = pose.degrees - reference.degrees;
    EdgeArc bore;
    EdgeRectangle sides, slot;
    Tune(bore);
    Tune(sides);
    Tune(slot);
    bore.Locate(Moved(boreCentre, reference, pose), boreRadius, probeLength);
    // Two sides each: a width is measured, whatever the length.
    sides.FourSides = slot.FourSides = false;
    sides.Locate(Moved(plateCentre, reference, pose), XY(plateLength, plateWidth), turn, probeLength);
    slot.Locate(Moved(slotCentre, reference, pose), XY(slotLength, slotWidth), slotAngle + turn, probeLength);
    if (!Settle(bore, picture) || !Settle(sides, picture) || !Settle(slot, picture)) return false;
    sizes = {2 * bore.FittedRadius, bore.Deviation, XY(sides.FittedSize).Y, XY(slot.FittedSize).Y,
             slot.FittedAngle - sides.FittedAngle};
    return true;
}

} // namespace

int main(int argc, char** argv)
{
    const std::filesystem::path folder = argc > 1 ? argv[1] : "measured";
    std::vector<std::string> paths(argv + Min(argc, 2), argv + argc);
    if (paths.empty()) paths = {"samples/plate.png", "samples/plate-moved.png"};
    std::error_code ignored;
    std::filesystem::create_directories(folder, ignored);
    Status::SIMDLevel(Status::BestSIMDLevel());
    Status::ErrorBehavior(PrintIt);
    Geometry::SimpleCalibration(1, millimetresPerPixel);

    std::FILE* table = std::fopen((folder / "plate.txt").string().c_str(), "w");
    if (!table) return 1;
    for (const char* name : names)
        std::fprintf(table, "%s%c", name, name == names.back() ? '\n' : '\t');
    Place reference{};
    Measures first{};
    int failed = 0;
    for (const std::string& path : paths) {
        Image picture;
        picture.Read(path.c_str(), Gray);
        const Place pose = Located(picture);
        if (path == paths.front()) reference = pose;
        Measures sizes{};
        if (!Measured(picture, reference, pose, sizes)) {
            std::printf("%s: an edge is missing\n", path.c_str());
            failed++;
            continue;
        }
        if (path == paths.front()) first = sizes;
        for (std::size_t i = 0; i < sizes.size(); i++) {
            const bool agrees = std::abs(sizes[i] - first[i]) <= 0.02 * (i == 4 ? 1 : millimetresPerPixel);
            std::fprintf(table, "%.4f%c", sizes[i], i + 1 < sizes.size() ? '\t' : '\n');
            std::printf("%s: %-10s %9.4f%s\n", path.c_str(), names[i], sizes[i], agrees ? "" : ", unlike the first");
            failed += !agrees;
        }
    }
    std::fclose(table);
    return failed > 0;
}
