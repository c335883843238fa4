// The neighbourhood filters on 2048 x 2048 images beside OpenCV on one thread, with memcpy of one image as the floor.
// usage: filter-bench [128|256]: the width of the vectors.
#include "bench/Bench.h"

#include <tuple>

#include <opencv2/imgproc.hpp>

namespace {

using Tesk::Kernel;

void Bench()
{
    Tesk::Image a, dst;
    bench::Fill(a, Tesk::Gray, 1);
    Kernel::Smooth(a, dst);
    const cv::Mat ca = bench::View(a);
    cv::Mat cd = ca.clone(), gx, gy, ax, ay, fx, fy, magnitude, smooth;
    bench::Table table("Gray", a);
    const int replicate = cv::BORDER_REPLICATE;

    table.Row(
        "Sobel sum", [&] { Kernel::SobelSum(a, dst); },
        [&] {
            cv::spatialGradient(ca, gx, gy, 3, replicate);
            cv::convertScaleAbs(gx, ax);
            cv::convertScaleAbs(gy, ay);
            cv::add(ax, ay, cd);
        });
    table.Row(
        "Sobel larger", [&] { Kernel::Sobel(a, dst); },
        [&] {
            cv::spatialGradient(ca, gx, gy, 3, replicate);
            cv::convertScaleAbs(gx, ax);
            cv::convertScaleAbs(gy, ay);
            cv::max(ax, ay, cd);
        });
    table.Row(
        "Sobel x, 8 bits", [&] { Kernel::SobelX(a, dst); },
        [&] {
            cv::Sobel(ca, gx, CV_16S, 1, 0, 3, 1, 0, replicate);
            cv::convertScaleAbs(gx, cd);
        });
    table.Row("Prewitt larger", [&] { Kernel::Prewitt(a, dst); });
    table.Row("gradient larger", [&] { Kernel::Gradient(a, dst); });
    table.Row(
        "binomial 3 x 3", [&] { Kernel::Binomial(a, dst); },
        [&] {
            cv::GaussianBlur(ca, cd, {3, 3}, 0, 0, replicate);
        });
    table.Row(
        "sharpen 4", [&] { Kernel::Sharpen4(a, dst); },
        [&] {
            static const cv::Mat mask = (cv::Mat_<float>(3, 3) << 0, -1, 0, -1, 5, -1, 0, -1, 0);
            cv::filter2D(ca, cd, CV_8U, mask, {-1, -1}, 0, replicate);
        });
    for (const int size : {3, 5, 9, 15, 21, 31, 51, 75, 101})
        table.Row(
            "box " + std::to_string(size), [&] { Kernel::BoxLowPass(size, size, a, dst); },
            [&] {
                cv::blur(ca, cd, {size, size}, {-1, -1}, replicate);
            });
    for (const int size : {3, 5, 9, 15, 21, 31, 51, 75, 101})
        table.Row(
            "gauss " + std::to_string(size), [&] { Kernel::GaussLowPass(size, size, a, dst); },
            [&] {
                cv::GaussianBlur(ca, cd, {size, size}, 0, 0, replicate);
            });
    for (const auto& [name, type, size] : {std::tuple{"canny 1", Tesk::Canny1Gradient, 5},
                                           {"canny 1.5", Tesk::Canny15Gradient, 7},
                                           {"canny 2", Tesk::Canny2Gradient, 9}})
        table.Row(
            std::string(name) + " magnitude", [&] { Kernel::Canny(a, dst, type); },
            [&] {
                cv::GaussianBlur(ca, smooth, {size, size}, 0, 0, replicate);
                cv::spatialGradient(smooth, gx, gy, 3, replicate);
                gx.convertTo(fx, CV_32F);
                gy.convertTo(fy, CV_32F);
                cv::magnitude(fx, fy, magnitude);
                magnitude.convertTo(cd, CV_8U);
            });
    for (const int size : {15, 51})
        table.Row(
            "deviation " + std::to_string(size), [&] { Kernel::BoxDeviation(size, size, a, dst); },
            [&] {
                cv::boxFilter(ca, fx, CV_32F, {size, size}, {-1, -1}, true, replicate);
                cv::sqrBoxFilter(ca, fy, CV_32F, {size, size}, {-1, -1}, true, replicate);
                cv::multiply(fx, fx, fx);
                cv::subtract(fy, fx, fy);
                cv::sqrt(fy, fy);
                fy.convertTo(cd, CV_8U);
            });
    Tesk::Image deep;
    bench::Fill(deep, Tesk::Gray16, 2);
    for (const int size : {5, 15, 21, 31, 63})
        table.Row("bilateral " + std::to_string(size), [&] { Kernel::Bilateral(size, 30, a, dst); });
    for (const int size : {5, 15, 31})
        table.Row("bilateral, 16 bits, " + std::to_string(size), [&] { Kernel::Bilateral(size, 20000, deep, dst); });
}

} // namespace

int main(int argc, char** argv)
{
    bench::Start(argc, argv);
    Bench();
    return 0;
}
