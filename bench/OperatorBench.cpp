// The point operations on 2048 x 2048 images beside OpenCV on one thread, with memcpy of one image as the floor.
// usage: operator-bench [128|256]: the width of the vectors; OpenCV is held to 128 bits for 128.
#define TESK_NO_USING_NAMESPACE
#include "Tesk.h"

#include <opencv2/core.hpp>
#include <opencv2/imgproc.hpp>

#include <algorithm>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <functional>
#include <string>
#include <unistd.h>
#include <vector>

namespace {

constexpr int side = 2048, rounds = 41;

/// The shortest of many runs, in microseconds; the two contenders take turns, so that both see the same machine.
std::pair<double, double> Race(const std::function<void()>& ours, const std::function<void()>& theirs)
{
    const auto once = [](const std::function<void()>& run) {
        const auto start = std::chrono::steady_clock::now();
        run();
        return std::chrono::duration<double, std::micro>(std::chrono::steady_clock::now() - start).count();
    };
    double a = 1e30, b = 1e30;
    for (int i = 0; i < rounds; i++) {
        a = std::min(a, once(ours));
        b = std::min(b, once(theirs));
    }
    return {a, b};
}

void Fill(Tesk::Image& image, Tesk::PixelTypes type, unsigned seed)
{
    image.Set(side, side, type);
    for (int y = 0; y < side; y++)
        for (int i = 0; i < Tesk::RowBytes(side, type); i++) {
            seed = seed * 1664525u + 1013904223u;
            image.Row(y)[i] = static_cast<std::uint8_t>(seed >> 24);
        }
}

cv::Mat View(const Tesk::Image& image)
{
    const int type = image.Type == Tesk::Rgb ? CV_8UC3 : CV_8UC1;
    return {side, side, type, static_cast<std::uint8_t*>(image.FirstPixel), static_cast<std::size_t>(int(image.Pitch))};
}

void Bench(Tesk::PixelTypes type, const char* name)
{
    using Tesk::Operator;
    Tesk::Image a, b, dst;
    Fill(a, type, 1);
    Fill(b, type, 2);
    Operator::Copy(a, dst);
    const cv::Mat ca = View(a), cb = View(b);
    cv::Mat cd = ca.clone();
    const std::size_t bytes = static_cast<std::size_t>(int(a.Pitch)) * side;
    std::vector<std::uint8_t> from(bytes, 1), to(bytes, 2);
    const auto floor = Race([&] { std::memcpy(to.data(), from.data(), bytes); }, [] {}).first;
    const struct
    {
        const char* name;
        std::function<void()> ours, theirs;
    } rows[] = {
        {"add", [&] { Operator::Add(a, b, dst); }, [&] { cv::add(ca, cb, cd); }},
        {"subtract", [&] { Operator::Subtract(a, b, dst); }, [&] { cv::subtract(ca, cb, cd); }},
        {"difference", [&] { Operator::Subtract(a, b, dst, Tesk::Absolute); }, [&] { cv::absdiff(ca, cb, cd); }},
        {"and", [&] { Operator::And(a, b, dst); }, [&] { cv::bitwise_and(ca, cb, cd); }},
        {"maximum", [&] { Operator::Maximize(a, b, dst); }, [&] { cv::max(ca, cb, cd); }},
        {"blend", [&] { Operator::Blend(0.3, a, b, dst); }, [&] { cv::addWeighted(ca, 0.3, cb, 0.7, 0, cd); }},
        {"lookup", [&] { Operator::GainOffset(1.5, -10, a, dst); },
         [&] {
             cv::Mat table(1, 256, CV_8U);
             for (int v = 0; v < 256; v++)
                 table.at<std::uint8_t>(v) = cv::saturate_cast<std::uint8_t>(1.5 * v - 10);
             cv::LUT(ca, table, cd);
         }}};
    const auto print = [&](const char* row, std::pair<double, double> times) {
        std::printf("%-5s %-12s OpenCV/ours %5.2f   ours/memcpy %5.2f   OpenCV/memcpy %5.2f\n", name, row,
                    times.second / times.first, times.first / floor, times.second / floor);
    };
    for (const auto& row : rows)
        print(row.name, Race(row.ours, row.theirs));
    Tesk::Image result;
    cv::Mat converted;
    if (type == Tesk::Gray) {
        print("threshold", Race([&] { Operator::Binarize(100, a, dst); },
                                [&] { cv::threshold(ca, cd, 100, 255, cv::THRESH_BINARY); }));
        print("8 to 16",
              Race([&] { Operator::Copy(a, result, Tesk::Gray16); }, [&] { ca.convertTo(converted, CV_16U, 256); }));
    } else {
        std::vector<cv::Mat> planes;
        print("to gray (max)", Race([&] { Operator::Copy(a, result, Tesk::Gray); },
                                    [&] {
                                        cv::split(ca, planes);
                                        cv::max(planes[0], planes[1], converted);
                                        cv::max(converted, planes[2], converted);
                                    }));
    }
}

} // namespace

int main(int argc, char** argv)
{
    const bool narrow = argc > 1 && std::string(argv[1]) == "128";
    if (narrow && !std::getenv("OPENCV_CPU_DISABLE")) {
        // OpenCV reads this once, when it is loaded.
        setenv("OPENCV_CPU_DISABLE", "AVX512-SKX,AVX512-CNL,AVX512-CLX,AVX512-ICL,AVX512F,AVX2,FMA3,AVX", 1);
        execv("/proc/self/exe", argv);
    }
    cv::setNumThreads(1);
    cv::ipp::setUseIPP(!narrow);
    Tesk::Status::ErrorBehavior(Tesk::PrintIt);
    Tesk::Status::SIMDLevel(narrow ? Tesk::SIMDSSE4 : Tesk::SIMDAVX2);
    std::printf("level %ls\n", Tesk::Status::SIMDLevelName(Tesk::Status::SIMDLevel()));
    Bench(Tesk::Gray, "Gray");
    Bench(Tesk::Rgb, "Rgb");
    return 0;
}
