// What the benchmarks share: choosing the width of the vectors, racing two contenders, and printing ratios to a peer
// and to memcpy. Times are the shortest of many runs of 2048 x 2048 images on one thread.
#pragma once

#define TESK_NO_USING_NAMESPACE
#include "Tesk.h"

#include <opencv2/core.hpp>

#include <algorithm>
#include <chrono>
#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <functional>
#include <string>
#include <unistd.h>
#include <utility>
#include <vector>

namespace bench {

inline constexpr int side = 2048;

/// Reads the argument 128 or 256, the width of the vectors for both contenders: for 128 OpenCV is started anew with its
/// wider paths switched off, since it reads that setting once, when it is loaded.
inline void Start(int argc, char** argv)
{
    const bool narrow = argc > 1 && std::string(argv[1]) == "128";
    if (narrow && !std::getenv("OPENCV_CPU_DISABLE")) {
        setenv("OPENCV_CPU_DISABLE", "AVX512-SKX,AVX512-CNL,AVX512-CLX,AVX512-ICL,AVX512F,AVX2,FMA3,AVX", 1);
        execv("/proc/self/exe", argv);
    }
    cv::setNumThreads(1);
    cv::ipp::setUseIPP(!narrow);
    Tesk::Status::ErrorBehavior(Tesk::PrintIt);
    Tesk::Status::SIMDLevel(narrow ? Tesk::SIMDSSE4 : Tesk::SIMDAVX2);
    std::printf("level %ls\n", Tesk::Status::SIMDLevelName(Tesk::Status::SIMDLevel()));
}

/// The shortest run of each, in microseconds; the two take turns, so that both see the same machine. Runs stop after
/// `rounds`, or after half a second.
inline std::pair<double, double> Race(const std::function<void()>& ours, const std::function<void()>& theirs,
                                      int rounds = 41)
{
    using Clock = std::chrono::steady_clock;
    const auto micro = [](Clock::duration d) { return std::chrono::duration<double, std::micro>(d).count(); };
    const auto once = [&](const std::function<void()>& run) {
        const auto start = Clock::now();
        run();
        return micro(Clock::now() - start);
    };
    double a = 1e30, b = 1e30;
    const auto start = Clock::now();
    for (int i = 0; i < rounds && (i < 3 || micro(Clock::now() - start) < 5e5); i++) {
        a = std::min(a, once(ours));
        b = std::min(b, once(theirs));
    }
    return {a, b};
}

/// An image of random bytes.
inline void Fill(Tesk::Image& image, Tesk::PixelTypes type, unsigned seed)
{
    image.Set(side, side, type);
    for (int y = 0; y < side; y++)
        for (int i = 0; i < Tesk::RowBytes(side, type); i++) {
            seed = seed * 1664525u + 1013904223u;
            image.Row(y)[i] = static_cast<std::uint8_t>(seed >> 24);
        }
}

/// The same pixels as OpenCV sees them.
inline cv::Mat View(const Tesk::Image& image)
{
    const int type = image.Type == Tesk::Rgb ? CV_8UC3 : image.Type == Tesk::Gray16 ? CV_16UC1 : CV_8UC1;
    return {image.Height, image.Width, type, static_cast<std::uint8_t*>(image.FirstPixel),
            static_cast<std::size_t>(int(image.Pitch))};
}

/// Microseconds to copy one image with memcpy.
inline double CopyTime(const Tesk::Image& image)
{
    const std::size_t bytes = static_cast<std::size_t>(int(image.Pitch)) * side;
    std::vector<std::uint8_t> from(bytes, 1), to(bytes, 2);
    return Race([&] { std::memcpy(to.data(), from.data(), bytes); }, [] {}).first;
}

/// Prints a row for each race, and at the end the geometric mean and the smallest of the ratios.
class Table
{
public:
    Table(std::string name, double floor) : name_(std::move(name)), floor_(floor) {}
    Table(const Table&) = delete;
    Table& operator=(const Table&) = delete;
    ~Table()
    {
        if (rows_ > 0)
            std::printf("%-6s %-22s OpenCV/ours %6.2f   the smallest %6.2f\n", name_.c_str(), "geometric mean",
                        std::exp(logs_ / rows_), smallest_);
    }

    void Row(const std::string& row, const std::function<void()>& ours, const std::function<void()>& theirs)
    {
        const auto [mine, other] = Race(ours, theirs);
        std::printf("%-6s %-22s OpenCV/ours %6.2f   ours/memcpy %6.2f   OpenCV/memcpy %6.2f\n", name_.c_str(),
                    row.c_str(), other / mine, mine / floor_, other / floor_);
        logs_ += std::log(other / mine);
        smallest_ = std::min(smallest_, other / mine);
        rows_++;
    }

    /// A row without a peer.
    void Row(const std::string& row, const std::function<void()>& ours)
    {
        std::printf("%-6s %-22s ours/memcpy %6.2f\n", name_.c_str(), row.c_str(), Race(ours, [] {}).first / floor_);
    }

private:
    std::string name_;
    double floor_;
    double logs_ = 0, smallest_ = 1e30;
    int rows_ = 0;
};

} // namespace bench
