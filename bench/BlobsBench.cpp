// Blobs of 2048 x 2048 pictures beside OpenCV's threshold and labelling with statistics, on one thread: the parts of a
// segmentation, and the groups of features on top. usage: blobs-bench [128|256]: the width of the vectors.
#include "Bench.h"

#include <opencv2/imgproc.hpp>

namespace {

using Tesk::Blobs;

constexpr int threshold = 128;

struct Picture
{
    const char* name;
    Tesk::Image image;
};

/// 400 bright discs on a dark ground.
void FillDiscs(Tesk::Image& image)
{
    constexpr int step = 102, radius = 20;
    image.Set(bench::side, bench::side, Tesk::Gray);
    for (int y = 0; y < bench::side; y++)
        for (int x = 0; x < bench::side; x++) {
            const int dx = x % step - step / 2, dy = y % step - step / 2;
            const bool whole = x / step < 20 && y / step < 20;
            image.Row(y)[x] = whole && dx * dx + dy * dy < radius * radius ? 200 : 40;
        }
}

/// Noise, smoothed and stretched again: pieces of all shapes, half of the pixels bright.
void FillSmooth(Tesk::Image& image)
{
    bench::Fill(image, Tesk::Gray, 7);
    cv::Mat view = bench::View(image);
    cv::GaussianBlur(view, view, {0, 0}, 4);
    cv::normalize(view, view, 0, 255, cv::NORM_MINMAX);
    const double middle = cv::mean(view)[0];
    view.convertTo(view, CV_8U, 1, threshold - middle);
}

/// Pixels of which so many in a thousand are bright, without any order.
void FillNoise(Tesk::Image& image, unsigned perMille)
{
    image.Set(bench::side, bench::side, Tesk::Gray);
    unsigned seed = 3;
    for (int y = 0; y < bench::side; y++)
        for (int x = 0; x < bench::side; x++) {
            seed = seed * 1664525u + 1013904223u;
            image.Row(y)[x] = (seed >> 8) % 1000 < perMille ? 200 : 40;
        }
}

/// The time that a group of features adds to a segmentation, in microseconds.
double TimeOf(Blobs& blobs, const Tesk::Image& image, Tesk::Features feature, double segmentation)
{
    const auto [both] = bench::Race<1>({[&] {
                                           blobs.Segment(threshold, image, true, true, 1);
                                           blobs.Evaluate(feature, image);
                                       }},
                                       7);
    return both - segmentation;
}

void Measure(const Picture& picture)
{
    const Tesk::Image& image = picture.image;
    const cv::Mat from = bench::View(image);
    cv::Mat mask, labels, statistics, centroids;
    Blobs blobs;
    Tesk::Region region;
    const auto [scan, segmentation, theirs] = bench::Race<3>(
        {[&] { region.Binarize(threshold, image); }, [&] { blobs.Segment(threshold, image, true, true, 1); },
         [&] {
             cv::threshold(from, mask, threshold - 1, 255, cv::THRESH_BINARY);
             cv::connectedComponentsWithStats(mask, labels, statistics, centroids, 8, CV_32S);
         }},
        21);
    const int runs = region.NumRuns, count = blobs.NumBlobs;
    if (count != statistics.rows - 1) std::printf("%s: OpenCV finds %d\n", picture.name, statistics.rows - 1);
    const auto [unlike] = bench::Race<1>({[&] { blobs.Segment(threshold, image, true, false, 1); }}, 9);
    std::printf("%-10s %8d %8d %8.0f %8.0f %8.0f %8.0f %8.0f %8.2f", picture.name, runs, count, scan,
                segmentation - scan, segmentation, unlike, theirs, theirs / segmentation);
    for (const Tesk::Features feature :
         {Tesk::BlobBoxX, Tesk::BlobCenterX, Tesk::BlobEllipseWidth, Tesk::BlobPerimeter, Tesk::BlobAverage})
        std::printf(" %8.0f", TimeOf(blobs, image, feature, segmentation));
    std::printf("\n");
    std::fflush(stdout);
}

} // namespace

int main(int argc, char** argv)
{
    bench::Start(argc, argv);
    std::array<Picture, 5> pictures;
    pictures[0].name = "discs";
    FillDiscs(pictures[0].image);
    pictures[1].name = "smooth";
    FillSmooth(pictures[1].image);
    const char* names[] = {"noise 1 %", "noise 10 %", "noise 50 %"};
    const unsigned shares[] = {10, 100, 500};
    for (std::size_t i = 0; i < 3; i++) {
        pictures[2 + i].name = names[i];
        FillNoise(pictures[2 + i].image, shares[i]);
    }
    std::printf("microseconds; features are what they add to a segmentation\n");
    std::printf("%-10s %8s %8s %8s %8s %8s %8s %8s %8s %8s %8s %8s %8s %8s\n", "picture", "runs", "blobs", "scan",
                "label", "both", "4-joined", "OpenCV", "ratio", "box", "center", "ellipse", "outline", "gray");
    for (const Picture& picture : pictures)
        Measure(picture);
    return 0;
}
