// Morphology, rank filters and distance maps of 2048 x 2048 Gray images beside OpenCV on one thread, with memcpy of one
// image as the floor. usage: morpho-bench [128|256]: the width of the vectors.
#include "Bench.h"

#include <opencv2/imgproc.hpp>

namespace {

using Tesk::Morpho;

const cv::BorderTypes replicate = cv::BORDER_REPLICATE;

cv::Mat Box(int size)
{
    return cv::getStructuringElement(cv::MORPH_RECT, {size, size});
}

/// Something between a picture and noise: medians of it are neither all alike nor as scattered as can be.
void FillPicture(Tesk::Image& image)
{
    bench::Fill(image, Tesk::Gray, 1);
    for (int y = 0; y < bench::side; y++)
        for (int x = 0; x < bench::side; x++)
            image.Row(y)[x] =
                static_cast<std::uint8_t>(image.Row(y)[x] / 4 + ((x / 3 + y / 5 + (x / 97) * (y / 71)) & 127));
}

void Medians(const Tesk::Image& src, const char* name)
{
    Tesk::Image dst;
    const cv::Mat from = bench::View(src);
    cv::Mat to;
    bench::Table table(name, src);
    for (const int size : {3, 5, 7, 9, 11, 15, 21, 31, 49}) {
        Morpho morpho;
        morpho.Square(size);
        table.Row(
            "median " + std::to_string(size), [&] { morpho.Median(src, dst); },
            [&] { cv::medianBlur(from, to, size); });
    }
    for (const int size : {3, 15}) {
        Morpho morpho;
        morpho.Square(size);
        table.Row("rank 0.3, " + std::to_string(size), [&] { morpho.Rank(0.3, src, dst); });
    }
}

void Extrema(const Tesk::Image& src)
{
    Tesk::Image dst;
    const cv::Mat from = bench::View(src);
    cv::Mat to;
    bench::Table table("Gray", src);
    for (const int size : {3, 5, 7, 9, 15, 21, 31, 49}) {
        Morpho morpho;
        morpho.Square(size);
        table.Row(
            "dilate " + std::to_string(size), [&] { morpho.Dilate(src, dst); },
            [&] {
                cv::dilate(from, to, Box(size), {-1, -1}, 1, replicate);
            });
    }
    for (const int size : {3, 15}) {
        Morpho morpho;
        morpho.Square(size);
        table.Row(
            "open " + std::to_string(size), [&] { morpho.Open(src, dst); },
            [&] {
                cv::morphologyEx(from, to, cv::MORPH_OPEN, Box(size), {-1, -1}, 1, replicate);
            });
        table.Row(
            "gradient " + std::to_string(size), [&] { morpho.Gradient(src, dst); },
            [&] {
                cv::morphologyEx(from, to, cv::MORPH_GRADIENT, Box(size), {-1, -1}, 1, replicate);
            });
    }
    Morpho diamond;
    diamond.Diamond(3);
    table.Row(
        "dilate cross 3", [&] { diamond.Dilate(src, dst); },
        [&] {
            cv::dilate(from, to, cv::getStructuringElement(cv::MORPH_CROSS, {3, 3}), {-1, -1}, 1, replicate);
        });
    for (const int size : {5, 15, 31}) {
        // The same shape for both: seven more passes of a cross.
        diamond.Diamond(size);
        cv::Mat shape(size, size, CV_8U);
        for (int y = 0; y < size; y++)
            for (int x = 0; x < size; x++)
                shape.at<std::uint8_t>(y, x) = std::abs(x - size / 2) + std::abs(y - size / 2) <= size / 2;
        table.Row(
            "dilate diamond " + std::to_string(size), [&] { diamond.Dilate(src, dst); },
            [&] {
                cv::dilate(from, to, shape, {-1, -1}, 1, replicate);
            });
    }
}

void Distances(Tesk::Image& src, int oneIn, const char* name)
{
    for (int y = 0; y < bench::side; y++)
        for (int x = 0; x < bench::side; x++)
            src.Row(y)[x] = src.Row(y)[x] % oneIn ? 255 : 0;
    Tesk::Image dst;
    const cv::Mat from = bench::View(src);
    cv::Mat to;
    bench::Table table(name, src);
    table.Row(
        "city-block", [&] { Morpho::Distance(src, dst, true, false, false); },
        [&] { cv::distanceTransform(from, to, cv::DIST_L1, 3, CV_8U); });
    table.Row(
        "chessboard", [&] { Morpho::Distance(src, dst, true, false, true); },
        [&] { cv::distanceTransform(from, to, cv::DIST_C, 3); });
    table.Row(
        "chessboard, 16 bits", [&] { Morpho::Distance(src, dst, true, false, true, true); },
        [&] { cv::distanceTransform(from, to, cv::DIST_C, 3); });
    table.Row(
        "Euclidean", [&] { Morpho::Distance(src, dst, true, true); },
        [&] { cv::distanceTransform(from, to, cv::DIST_L2, cv::DIST_MASK_PRECISE); });
    table.Row(
        "Euclidean, 16 bits", [&] { Morpho::Distance(src, dst, true, true, true, true); },
        [&] { cv::distanceTransform(from, to, cv::DIST_L2, cv::DIST_MASK_PRECISE); });
}

} // namespace

int main(int argc, char** argv)
{
    bench::Start(argc, argv);
    Tesk::Image picture, noise;
    FillPicture(picture);
    bench::Fill(noise, Tesk::Gray, 2);
    Medians(picture, "Gray");
    Medians(noise, "noise");
    Extrema(picture);
    bench::Fill(noise, Tesk::Gray, 3);
    Distances(noise, 10, "dense");
    // One feature in 255 * 23 or so.
    bench::Fill(noise, Tesk::Gray, 4);
    for (int y = 0; y < bench::side; y++)
        for (int x = 0; x < bench::side; x++)
            if (x % 67 || y % 89) noise.Row(y)[x] = 1;
    Distances(noise, 251, "sparse");
    return 0;
}
