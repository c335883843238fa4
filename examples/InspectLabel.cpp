// Inspects printed labels: teaches a comparator from 20 good ones, moved and turned under changing light, then looks
// for a missing dot, a smear, a wrong letter or a scratch on half of 100 others. It fails if one is missed, or told of
// a good label. usage: inspect-label [FOLDER]; the comparator and a picture of each kind of defect, painted, are
// written there.
#include "samples/Labels.h"

#include "Tesk.h"

#include <cstdio>
#include <filesystem>
#include <string>
#include <system_error>

namespace {

constexpr int samples = 20, inspected = 100;

struct Tally
{
    int labels = 0, found = 0, missed = 0, falsely = 0;
};

void Show(Comparator& comparator, labels::Label& label, const std::filesystem::path& path)
{
    Image aligned, painted;
    comparator.Align(label.picture, aligned);
    comparator.Differences(aligned, painted);
    painted.Write(path.string().c_str());
}

} // namespace

int main(int argc, char** argv)
{
    const std::filesystem::path folder = argc > 1 ? argv[1] : "inspected-labels";
    std::error_code ignored;
    std::filesystem::create_directories(folder, ignored);
    Status::SIMDLevel(Status::BestSIMDLevel());
    Status::ErrorBehavior(IgnoreIt);

    scene::Noise noise;
    Comparator comparator;
    labels::Teach(samples, noise, comparator);
    comparator.Write((folder / "label.cmp").string().c_str());
    if (Status::Error().Code != NoError) {
        std::fprintf(stderr, "%s\n", Status::AsciiError());
        return 1;
    }
    Tally tallies[std::size(labels::names)];
    for (int i = 0; i < inspected; i++) {
        const auto defect = i % 2 == 0 ? labels::Defect::None
                                       : labels::defects[static_cast<std::size_t>(i / 2) % std::size(labels::defects)];
        const auto kind = static_cast<std::size_t>(defect);
        labels::Label label;
        labels::Print(defect, static_cast<unsigned>(i) * 37u, noise, label);
        const labels::Verdict verdict = labels::Inspect(comparator, label);
        Tally& tally = tallies[kind];
        if (tally.labels == 0) Show(comparator, label, folder / (std::string(labels::names[kind]) + ".png"));
        tally.labels++;
        tally.found += verdict.isFound;
        tally.missed += defect != labels::Defect::None && !verdict.isFound;
        tally.falsely += verdict.elsewhere > 0;
    }
    int wrong = 0;
    for (std::size_t k = 0; k < std::size(labels::names); k++) {
        const Tally& t = tallies[k];
        std::printf("%-13s %3d labels: %3d found, %3d missed, %3d false\n", labels::names[k], t.labels, t.found,
                    t.missed, t.falsely);
        wrong += t.missed + t.falsely;
    }
    return wrong > 0 ? 1 : 0;
}
