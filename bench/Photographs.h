// Photographs of codes in folders FAMILY-N, and how often and how fast readers read them.
#pragma once

#include "Bench.h"
#include "foundation/Status.h"
#include "image/Image.h"

#include <algorithm>
#include <chrono>
#include <cstddef>
#include <cstdio>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <optional>
#include <span>
#include <string>
#include <vector>

namespace bench {

using Texts = std::vector<std::string>;

struct Photograph
{
    std::string name;
    std::optional<std::string> text; ///< that of the code, where one lies beside the picture
    Tesk::Image image;
};

/// The pictures NAME.png or NAME.jpg of a family, with NAME.txt or NAME.bin beside them.
inline std::vector<Photograph> LoadPhotographs(const std::filesystem::path& folder, const std::string& family)
{
    namespace fs = std::filesystem;
    std::vector<fs::path> paths;
    for (const auto& directory : fs::directory_iterator(folder)) {
        if (!directory.is_directory() || !directory.path().filename().string().starts_with(family + "-")) continue;
        for (const auto& file : fs::directory_iterator(directory))
            if (file.path().extension() == ".png" || file.path().extension() == ".jpg") paths.push_back(file.path());
    }
    std::sort(paths.begin(), paths.end());
    std::vector<Photograph> pictures(paths.size());
    for (std::size_t i = 0; i < paths.size(); i++) {
        pictures[i].name = paths[i].parent_path().filename().string() + "/" + paths[i].filename().string();
        pictures[i].image.Read(paths[i].c_str(), Tesk::Gray);
        for (const char* extension : {".bin", ".txt"})
            if (std::ifstream text(fs::path(paths[i]).replace_extension(extension), std::ios::binary); text)
                pictures[i].text = std::string(std::istreambuf_iterator<char>(text), {});
    }
    return pictures;
}

enum class Verdict
{
    Right,
    Wrong,
    None
};

struct ReadCount
{
    int right = 0, wrong = 0, none = 0;
    std::vector<double> times;

    double Median()
    {
        if (times.empty()) return 0;
        std::nth_element(times.begin(), times.begin() + static_cast<std::ptrdiff_t>(times.size() / 2), times.end());
        return times[times.size() / 2];
    }
    /// `codes` were read of a picture, of which the right ones count each.
    void Add(Verdict verdict, int codes)
    {
        if (verdict == Verdict::Right)
            right += codes;
        else
            ++(verdict == Verdict::Wrong ? wrong : none);
    }
};

template <typename Family>
struct Contender
{
    const char* name;
    Texts (*read)(const Family&, const Tesk::Image&);
};

/// Prints a line of what the contenders read in a family, and with `only` what each picture whose name has that gives.
/// `judge(picture, texts)` gives a verdict.
template <typename Family, typename Judge>
void PrintReads(const Family& family, std::span<const Photograph> pictures,
                std::span<const Contender<Family>> contenders, const char* only, Judge judge)
{
    using Clock = std::chrono::steady_clock;
    constexpr int rounds = 5;
    std::vector<ReadCount> counts(contenders.size());
    for (const Photograph& picture : pictures) {
        if (only && picture.name.find(only) == std::string::npos) continue;
        for (std::size_t k = 0; k < contenders.size(); k++) {
            Texts texts;
            double shortest = 1e30;
            for (int round = 0; round < rounds; round++) {
                const auto begin = Clock::now();
                texts = contenders[k].read(family, picture.image);
                shortest = std::min(shortest, std::chrono::duration<double, std::micro>(Clock::now() - begin).count());
            }
            counts[k].times.push_back(shortest);
            const Verdict verdict = texts.empty() ? Verdict::None : judge(picture, texts);
            counts[k].Add(verdict, picture.text ? 1 : static_cast<int>(texts.size()));
            if (!only) continue;
            std::printf("  %-40s %-6s %-6s", picture.name.c_str(), contenders[k].name,
                        verdict == Verdict::Right   ? "right"
                        : verdict == Verdict::Wrong ? "WRONG"
                                                    : "none");
            for (const std::string& text : texts)
                std::printf(" [%s]", text.c_str());
            std::printf("\n");
        }
    }
    std::printf("%-15s %3zu", family.name.c_str(), pictures.size());
    for (std::size_t k = 0; k < contenders.size(); k++)
        std::printf("  %-5s %3d right %2d wrong %2d none %6.0f us", contenders[k].name, counts[k].right,
                    counts[k].wrong, counts[k].none, counts[k].Median());
    std::printf("\n");
}

/// Runs `print(family, only)` for the families that the arguments choose: FOLDER [FAMILY [NAME]].
template <typename Families, typename Print>
int ForFamilies(int argc, char** argv, const char* program, const Families& families, Print print)
{
    if (argc < 2) {
        std::printf("%s FOLDER [FAMILY [NAME]]\n", program);
        return 2;
    }
    Start(1, argv);
    Tesk::Status::ErrorBehavior(Tesk::IgnoreIt);
    for (const auto& family : families)
        if (argc < 3 || std::string(argv[2]) == "all" || family.name == argv[2])
            print(family, argc > 3 ? argv[3] : nullptr);
    return 0;
}

} // namespace bench
