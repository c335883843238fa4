// Regions of 2048 x 2048 pictures beside OpenCV on byte images, on one thread: the scan beside the threshold, algebra
// and morphology beside the same on masks. usage: region-bench [128|256]: the width of the vectors.
#include "Bench.h"

#include <opencv2/imgproc.hpp>

namespace {

using Tesk::Region;

constexpr int threshold = 128;

/// Half of the pixels bright, without any order.
void FillNoise(Tesk::Image& image)
{
    bench::Fill(image, Tesk::Gray, 1);
}

/// Bright discs on a dark ground, `step` pixels apart.
void FillDiscs(Tesk::Image& image, int step, int radius)
{
    image.Set(bench::side, bench::side, Tesk::Gray);
    for (int y = 0; y < bench::side; y++)
        for (int x = 0; x < bench::side; x++) {
            const int dx = x % step - step / 2, dy = y % step - step / 2;
            image.Row(y)[x] = dx * dx + dy * dy < radius * radius ? 200 : 40;
        }
}

void Race(const char* name, const Tesk::Image& first, const Tesk::Image& second)
{
    bench::Table table(name, first);
    const cv::Mat from = bench::View(first);
    cv::Mat a, b, mask;
    Region p, q, result;
    table.Row(
        "scan", [&] { result.Binarize(threshold, first); },
        [&] { cv::threshold(from, mask, threshold - 1, 255, cv::THRESH_BINARY); });
    p.Binarize(threshold, first);
    q.Binarize(threshold, second);
    cv::threshold(from, a, threshold - 1, 255, cv::THRESH_BINARY);
    cv::threshold(bench::View(second), b, threshold - 1, 255, cv::THRESH_BINARY);
    std::printf("%-6s %d runs\n", name, int(p.NumRuns));
    table.Row(
        "unite", [&] { result.Unite(p, q); }, [&] { cv::bitwise_or(a, b, mask); });
    table.Row(
        "intersect", [&] { result.Intersect(p, q); }, [&] { cv::bitwise_and(a, b, mask); });
    table.Row(
        "subtract", [&] { result.Subtract(p, q); }, [&] { cv::subtract(a, b, mask); });
    table.Row(
        "invert", [&] { result.Invert(0, 0, bench::side, bench::side, p); }, [&] { cv::bitwise_not(a, mask); });
    for (const int size : {3, 7}) {
        Tesk::Morpho square;
        square.Square(size);
        const cv::Mat box = cv::getStructuringElement(cv::MORPH_RECT, {size, size});
        table.Row(
            "erode " + std::to_string(size), [&] { result.Erode(p, square); }, [&] { cv::erode(a, mask, box); });
        table.Row(
            "dilate " + std::to_string(size), [&] { result.Dilate(p, square); }, [&] { cv::dilate(a, mask, box); });
    }
    int area = 0;
    double sum = 0;
    table.Row(
        "center", [&] { sum += p.Center(area).X; }, [&] { sum += cv::moments(a, true).m10; });
    table.Row(
        "mean", [&] { sum += p.Mean(first, area); }, [&] { sum += cv::mean(from, a)[0]; });
    Tesk::Image dst;
    dst.Set(bench::side, bench::side, Tesk::Gray);
    cv::Mat to = bench::View(dst);
    table.Row(
        "fill", [&] { p.Fill(9, dst); }, [&] { to.setTo(9, a); });
}

} // namespace

int main(int argc, char** argv)
{
    bench::Start(argc, argv);
    Tesk::Image sparse, dense, noise, shifted;
    FillDiscs(sparse, 256, 20);
    FillDiscs(dense, 24, 9);
    FillDiscs(shifted, 30, 11);
    FillNoise(noise);
    Race("sparse", sparse, shifted);
    Race("dense", dense, shifted);
    Race("noise", noise, shifted);
    return 0;
}
