// The point operations on 2048 x 2048 images beside OpenCV on one thread, with memcpy of one image as the floor.
// usage: operator-bench [128|256]: the width of the vectors.
#include "bench/Bench.h"

#include <opencv2/imgproc.hpp>

namespace {

using Tesk::Operator;

void Images(Tesk::PixelTypes type, const char* name)
{
    Tesk::Image a, b, dst, result;
    bench::Fill(a, type, 1);
    bench::Fill(b, type, 2);
    Operator::Copy(a, dst);
    const cv::Mat ca = bench::View(a), cb = bench::View(b);
    cv::Mat cd = ca.clone(), converted;
    bench::Table table(name, a);
    table.Row(
        "add", [&] { Operator::Add(a, b, dst); }, [&] { cv::add(ca, cb, cd); });
    table.Row(
        "subtract", [&] { Operator::Subtract(a, b, dst); }, [&] { cv::subtract(ca, cb, cd); });
    table.Row(
        "difference", [&] { Operator::Subtract(a, b, dst, Tesk::Absolute); }, [&] { cv::absdiff(ca, cb, cd); });
    table.Row(
        "and", [&] { Operator::And(a, b, dst); }, [&] { cv::bitwise_and(ca, cb, cd); });
    table.Row(
        "maximum", [&] { Operator::Maximize(a, b, dst); }, [&] { cv::max(ca, cb, cd); });
    table.Row(
        "blend", [&] { Operator::Blend(0.3, a, b, dst); }, [&] { cv::addWeighted(ca, 0.3, cb, 0.7, 0, cd); });
    table.Row(
        "lookup", [&] { Operator::GainOffset(1.5, -10, a, dst); },
        [&] {
            cv::Mat entries(1, 256, CV_8U);
            for (int v = 0; v < 256; v++)
                entries.at<std::uint8_t>(v) = cv::saturate_cast<std::uint8_t>(1.5 * v - 10);
            cv::LUT(ca, entries, cd);
        });
    if (type == Tesk::Gray) {
        table.Row(
            "threshold", [&] { Operator::Binarize(100, a, dst); },
            [&] { cv::threshold(ca, cd, 100, 255, cv::THRESH_BINARY); });
        table.Row(
            "8 to 16 bits", [&] { Operator::Copy(a, result, Tesk::Gray16); },
            [&] { ca.convertTo(converted, CV_16U, 256); });
    } else {
        std::vector<cv::Mat> planes;
        table.Row(
            "to gray, by maximum", [&] { Operator::Copy(a, result, Tesk::Gray); },
            [&] {
                cv::split(ca, planes);
                cv::max(planes[0], planes[1], converted);
                cv::max(converted, planes[2], converted);
            });
    }
}

} // namespace

int main(int argc, char** argv)
{
    bench::Start(argc, argv);
    Images(Tesk::Gray, "Gray");
    Images(Tesk::Rgb, "Rgb");
    return 0;
}
