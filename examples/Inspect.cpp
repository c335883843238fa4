// Counts and measures round parts: finds a target of dots and takes the scale from it, evens the light out, tells the
// parts from the belt, and writes their sizes in millimetres. Without a target the sizes are in pixels.
// usage: inspect [IMAGE [FOLDER [SIZES]]]; with a table of the true sizes it fails if a part is off by over 0.05.
#include "Tesk.h"

#include <cmath>
#include <cstdio>
#include <filesystem>
#include <fstream>
#include <string>
#include <system_error>
#include <vector>

namespace {

/// Wider than any part, so that an opening leaves the belt alone; in pixels.
constexpr int widestPart = 91;
/// By how much a part is brighter than the belt at the least.
constexpr int leastContrast = 40;
/// A target has more dots than dirt forms by chance.
constexpr int fewestDots = 20;
/// The distance of two dots of the target, in millimetres.
constexpr double gridStep = 4;
/// Smaller blobs are dots of the target, or dirt; in pixels.
constexpr int leastArea = 500;
constexpr double tolerance = 0.05;

struct Part
{
    double outer, inner; ///< the diameters of a ring, 0 for the inner one of a disc
    bool isRound;
};

/// A ring's area and its ellipse of inertia give both of its diameters: their squares differ by the area, and their sum
/// is the square of the ellipse's axis.
Part Measured(const Blobs& parts, int i)
{
    constexpr double pi = 3.14159265358979323846;
    const double width = parts.FloatFeature(i, BlobEllipseWidth), height = parts.FloatFeature(i, BlobEllipseHeight);
    const double sum = width * height, difference = 4 * parts.FloatFeature(i, BlobWorldArea) / pi;
    const double hole = (sum - difference) / 2;
    return {std::sqrt((sum + difference) / 2), hole > 0 ? std::sqrt(hole) : 0, height > 0.8 * width};
}

/// Takes the belt away, which is what an opening leaves, and brings the parts to one brightness by that of the
/// brightest pixels around, so that one threshold stands in the middle of all edges.
void FlattenLight(const Image& picture, Image& flat)
{
    Image smooth, belt, raised, peak;
    Morpho square;
    square.Square(widestPart);
    Kernel::Binomial(picture, smooth);
    square.Open(smooth, belt);
    Kernel::BoxLowPass(widestPart / 2, widestPart / 2, belt, belt);
    Operator::AddCorrect(smooth, belt, raised);
    square.Dilate(raised, peak);
    Kernel::BoxLowPass(widestPart / 2, widestPart / 2, peak, peak);
    Operator::Maximize(leastContrast, peak, peak);
    Operator::MultiplyCorrect(raised, peak, flat, 200);
}

/// How many of the true sizes no part comes near to.
int Missing(const std::string& path, const std::vector<Part>& parts)
{
    std::ifstream sizes(path);
    std::string names;
    std::getline(sizes, names);
    int missing = 0;
    for (double outer, inner; sizes >> outer >> inner;) {
        double best = 1e9;
        for (const Part& part : parts)
            if (part.isRound) best = Min(best, Max(std::abs(part.outer - outer), std::abs(part.inner - inner)));
        std::printf("%5.1f x %4.1f: off by %.3f\n", outer, inner, best);
        if (best > tolerance) missing++;
    }
    return missing;
}

} // namespace

int main(int argc, char** argv)
{
    const std::string path = argc > 1 ? argv[1] : "samples/washers.png";
    const std::filesystem::path folder = argc > 2 ? argv[2] : "inspected";
    std::error_code ignored;
    std::filesystem::create_directories(folder, ignored);
    Status::SIMDLevel(Status::BestSIMDLevel());
    Status::ErrorBehavior(IgnoreIt);

    Image picture, flat;
    picture.Read(path.c_str());
    FlattenLight(picture, flat);
    if (Status::Error().Code != NoError) {
        std::fprintf(stderr, "%s\n", Status::AsciiError());
        return 1;
    }
    Geometry camera;
    camera.CalibrateTarget(Similarity, flat, gridStep, true);
    if (Status::Error().Code == NoError && camera.NumAnchors >= fewestDots) {
        std::printf("%d dots of a target: a pixel is %.4f mm\n", int(camera.NumAnchors),
                    double(Geometry::ScaleFromPixel));
        camera.Write((folder / "camera.cal").string().c_str());
    } else {
        std::printf("no target: sizes are in pixels\n");
        Geometry::SimpleCalibration(1, 1);
    }

    Blobs blobs;
    blobs.Segment(flat, true, true, leastArea);
    blobs.BorderSelect(flat);
    blobs.Evaluate(BlobWorldArea, flat);
    blobs.Evaluate(BlobCenter, flat);
    blobs.Evaluate(BlobEllipse, flat);
    blobs.ByFeatureSort(BlobWorldArea, flat, false);
    std::vector<Part> parts;
    std::ofstream table(folder / "parts.txt");
    table << "X\tY\tOuter\tInner\n";
    for (int i = 0; i < blobs.NumSelectedBlobs; i++) {
        const Part part = Measured(blobs, i);
        parts.push_back(part);
        table << blobs.FloatFeature(i, BlobCenterX) << '\t' << blobs.FloatFeature(i, BlobCenterY) << '\t' << part.outer
              << '\t' << part.inner << '\n';
    }
    int round = 0;
    for (const Part& part : parts)
        round += part.isRound;
    std::printf("%d parts, %d of them round\n", int(blobs.NumSelectedBlobs), round);
    return argc > 3 ? Missing(argv[3], parts) : 0;
}
