// Comparing an aligned image with its limits: nanoseconds a pixel beside a copy and beside OpenCV's comparison with one
// tolerance for all pixels, for an image with few differences and one with many; and what learning and aligning cost.
#include "Bench.h"

#include <opencv2/imgproc.hpp>

#include <cstdint>
#include <cstdio>
#include <cstring>
#include <vector>

namespace {

using namespace Tesk;

constexpr int width = 1280, height = 1024, margin = 32, tolerance = 12;

/// Marks of random gray values, and noise of a few gray values; one pixel in `every` is off by much.
void Paint(Image& image, unsigned seed, unsigned every)
{
    image.Set(width, height, Gray);
    unsigned noise = seed;
    const auto next = [&noise] { return (noise = noise * 1664525u + 1013904223u) >> 16; };
    for (int y = 0; y < height; y++)
        for (int x = 0; x < width; x++) {
            const unsigned mark =
                (static_cast<unsigned>(x / 16) * 7919u + static_cast<unsigned>(y / 16) * 104729u) * 2654435761u;
            const int value = 60 + static_cast<int>(mark >> 25) + static_cast<int>(next() % 5);
            const bool isOff = every != 0 && next() % every == 0;
            image.Row(y)[x] = static_cast<std::uint8_t>(isOff ? 255 - value : value);
        }
}

} // namespace

int main(int argc, char** argv)
{
    bench::Start(argc, argv);
    Image reference;
    Paint(reference, 1, 0);
    Comparator comparator;
    comparator.SetReference(reference, 1, 1, Translation);
    comparator.TrainAligners();
    comparator.StraightTolerancing(tolerance, 0);
    for (const unsigned every : {0u, 10000u, 50u}) {
        Image image, aligned, painted;
        Histogram dark, light;
        Blobs blobs;
        Paint(image, 2, every);
        comparator.Align(image, aligned);
        const double pixels = static_cast<double>(aligned.Width) * aligned.Height;
        Image window;
        window.ShallowCopy(reference, true);
        window.Window(margin, margin, aligned.Width, aligned.Height);
        const cv::Mat a = bench::View(aligned), b = bench::View(window);
        cv::Mat difference, mask;
        std::vector<std::uint8_t> from(static_cast<std::size_t>(pixels), 1), to(from.size());
        const auto [blobbed, paint, counted, theirs, copied] = bench::Race<5>(
            {[&] { comparator.Differences(aligned, blobs, 5); }, [&] { comparator.Differences(aligned, painted); },
             [&] { comparator.Differences(aligned, dark, light); },
             [&] {
                 cv::absdiff(a, b, difference);
                 cv::threshold(difference, mask, tolerance, 255, cv::THRESH_BINARY);
             },
             [&] { std::memcpy(to.data(), from.data(), from.size()); }},
            201);
        std::printf("1 pixel in %5u differs: blobs %.3f, painted %.3f, histograms %.3f, OpenCV absdiff and threshold "
                    "%.3f, memcpy %.3f ns a pixel\n",
                    every, 1000 * blobbed / pixels, 1000 * paint / pixels, 1000 * counted / pixels,
                    1000 * theirs / pixels, 1000 * copied / pixels);
    }
    Image image, aligned;
    Paint(image, 3, 0);
    comparator.Align(image, aligned);
    const double pixels = static_cast<double>(aligned.Width) * aligned.Height;
    for (const bool statistical : {false, true}) {
        comparator.StartTolerancing(statistical);
        const auto [learned, ended] =
            bench::Race<2>({[&] { comparator.NextTolerancing(aligned); }, [&] { comparator.EndTolerancing(1); }}, 101);
        std::printf("%s: a sample %.3f, the end %.3f ns a pixel\n", statistical ? "statistics" : "envelope",
                    1000 * learned / pixels, 1000 * ended / pixels);
    }
    const auto [shifted] = bench::Race<1>({[&] { comparator.Align(image, aligned); }}, 21);
    std::printf("Align by one aligner that shifts: %.2f ms\n", shifted / 1000);
}
