// What the benchmarks share: choosing the width of the vectors, racing two contenders, and printing ratios to a peer
// and to memcpy. Times are the shortest of many runs of 2048 x 2048 images on one thread.
#pragma once

#define TESK_NO_USING_NAMESPACE
#include "Tesk.h"

#include <opencv2/core.hpp>

#include <algorithm>
#include <array>
#include <chrono>
#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <fstream>
#include <functional>
#include <string>
#include <unistd.h>
#include <utility>
#include <vector>

namespace bench {

inline constexpr int side = 2048;

/// What the system calls the processor.
inline std::string ProcessorName()
{
    std::ifstream cores("/proc/cpuinfo");
    for (std::string line; std::getline(cores, line);)
        if (line.starts_with("model name")) return line.substr(line.find(':') + 2);
    return "unknown processor";
}

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
    Tesk::Status::SIMDLevel(narrow ? Tesk::SIMDSSE4 : Tesk::Status::BestSIMDLevel());
    std::printf("%s, level %ls\n", ProcessorName().c_str(), Tesk::Status::SIMDLevelName(Tesk::Status::SIMDLevel()));
}

/// The shortest run of each contender, in microseconds; they take turns, so that all see the same machine and the same
/// caches. Runs stop after `rounds`, or after half a second.
template <std::size_t count>
std::array<double, count> Race(const std::array<std::function<void()>, count>& contenders, int rounds = 41)
{
    using Clock = std::chrono::steady_clock;
    const auto since = [](Clock::time_point start) {
        return std::chrono::duration<double, std::micro>(Clock::now() - start).count();
    };
    std::array<double, count> shortest;
    shortest.fill(1e30);
    const auto start = Clock::now();
    for (int round = 0; round < rounds && (round < 3 || since(start) < 5e5); round++)
        for (std::size_t k = 0; k < count; k++) {
            // Back and forth, since who comes second finds the sources in the caches.
            const std::size_t i = round % 2 == 0 ? k : count - 1 - k;
            const auto begin = Clock::now();
            contenders[i]();
            shortest[i] = std::min(shortest[i], since(begin));
        }
    return shortest;
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

/// Prints a row for each race, and at the end the geometric mean and the smallest of the ratios. A copy of one image
/// with memcpy takes its turn in each race, as the floor.
class Table
{
public:
    Table(std::string name, const Tesk::Image& image)
        : name_(std::move(name)), from_(static_cast<std::size_t>(int(image.Pitch)) * side, 1), to_(from_.size(), 2)
    {}
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
        const auto [mine, other, copy] = Race<3>({ours, theirs, [this] { Copy(); }});
        std::printf("%-6s %-22s OpenCV/ours %6.2f   ours/memcpy %6.2f   OpenCV/memcpy %6.2f\n", name_.c_str(),
                    row.c_str(), other / mine, mine / copy, other / copy);
        logs_ += std::log(other / mine);
        smallest_ = std::min(smallest_, other / mine);
        rows_++;
    }

    /// A row without a peer.
    void Row(const std::string& row, const std::function<void()>& ours)
    {
        const auto [mine, copy] = Race<2>({ours, [this] { Copy(); }});
        std::printf("%-6s %-22s ours/memcpy %6.2f\n", name_.c_str(), row.c_str(), mine / copy);
    }

private:
    void Copy() { std::memcpy(to_.data(), from_.data(), from_.size()); }

    std::string name_;
    std::vector<std::uint8_t> from_, to_;
    double logs_ = 0, smallest_ = 1e30;
    int rows_ = 0;
};

} // namespace bench
