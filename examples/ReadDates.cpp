// Reads the best-before dates of lids: trains a font on a few good ones, then reads 200 others, moved and turned, of
// which every third misses a character or has a wrong one. It prints how many were read right, read wrong and rejected,
// and fails if a good one is rejected, a faulty one passes, or anything is read wrong. usage: read-dates [FOLDER]; the
// font and a picture of each kind, with what was read drawn on it, are written there.
#include "samples/Lids.h"

#include "Tesk.h"

#include <cstddef>
#include <cstdio>
#include <filesystem>
#include <iterator>
#include <string>
#include <system_error>
#include <vector>

namespace {

constexpr int lidsRead = 200;

struct Tally
{
    int lids = 0, right = 0, wrong = 0, rejected = 0, named = 0;
};

void Show(const CharReader& reader, const lids::Lid& lid, const std::filesystem::path& path)
{
    Image shown;
    Operator::Copy(lid.picture, shown, Rgb);
    const Tesk::GraphSettings kept;
    Graph::BeginImageTarget(shown);
    Graph::Zoom = 1;
    reader.Draw(true);
    Graph::EndImageTarget(shown);
    shown.Write(path.string().c_str());
}

/// What the reader says of a lid: its text, or that and where something is wrong with it.
void Judge(CharReader& reader, lids::Lid& lid, Tally& tally)
{
    reader.CharsRead(lid.picture);
    const std::vector<int> doubtful = lids::Doubtful(reader);
    tally.lids++;
    if (!doubtful.empty()) {
        tally.rejected++;
        tally.named += doubtful.size() == 1 && doubtful.front() == lid.faultAt;
    } else if (lid.faultAt < 0 && lids::TextOf(lid) == static_cast<const char*>(reader.AsciiString)) {
        tally.right++;
    } else {
        tally.wrong++;
    }
}

} // namespace

int main(int argc, char** argv)
{
    const std::filesystem::path folder = argc > 1 ? argv[1] : "read-dates";
    std::error_code ignored;
    std::filesystem::create_directories(folder, ignored);
    Status::SIMDLevel(Status::BestSIMDLevel());
    Status::ErrorBehavior(IgnoreIt);

    scene::Noise noise;
    CharReader reader;
    lids::Teach(noise, reader);
    reader.Write((folder / "lids.fnt").string().c_str());
    if (Status::Error().Code != NoError) {
        std::fprintf(stderr, "%s\n", Status::AsciiError());
        return 1;
    }
    Tally tallies[std::size(lids::names)];
    for (unsigned i = 0; i < lidsRead; i++) {
        const auto fault = i % 3 != 2 ? lids::Fault::None : i % 2 ? lids::Fault::Missing : lids::Fault::Wrong;
        const auto kind = static_cast<std::size_t>(fault);
        lids::Lid lid;
        lids::Make(100 + i, fault, noise, lid);
        Judge(reader, lid, tallies[kind]);
        if (tallies[kind].lids == 1) Show(reader, lid, folder / (std::string(lids::names[kind]) + ".png"));
    }
    bool failed = false;
    std::printf("%-18s %5s %6s %6s %9s %14s\n", "", "lids", "right", "wrong", "rejected", "fault named");
    for (std::size_t k = 0; k < std::size(lids::names); k++) {
        const Tally& t = tallies[k];
        std::printf("%-18s %5d %6d %6d %9d %14d\n", lids::names[k], t.lids, t.right, t.wrong, t.rejected, t.named);
        failed = failed || t.wrong > 0 || (k == 0 ? t.rejected > 0 : t.named < t.lids);
    }
    return failed ? 1 : 0;
}
