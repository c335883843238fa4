// How often the decoders of linear symbologies say something about lines on which there is nothing: random elements of
// 1 to 4 modules, with jitter, 20 to 100 edges a line. Prints the reads of each symbology by million lines.
//
//     linear-noise [LINES] [SEED]
#include "read/linear/LinearCode.h"

#include <array>
#include <cstdio>
#include <cstdlib>
#include <random>
#include <span>

namespace {

using namespace Tesk;
using namespace Tesk::linear;

constexpr std::array<const char*, 19> names = {"none",
                                               "Code 128",
                                               "EAN-13",
                                               "EAN-8",
                                               "UPC-A",
                                               "UPC-E",
                                               "2 of 5",
                                               "Code 39",
                                               "39 Extended",
                                               "Pharmacode",
                                               "DataBar",
                                               "Limited",
                                               "DataBar Expanded",
                                               "Code 93",
                                               "Codabar",
                                               "ITF-14",
                                               "Matrix",
                                               "MSI",
                                               "Code 11"};

struct Counts : ReadSink
{
    std::array<long, names.size()> reads{}, valid{};

    void Take(const SymbolRead& read) override
    {
        const auto index = static_cast<std::size_t>(read.symbology);
        ++reads[index];
        if (!(read.flags & ChecksumFailed)) ++valid[index];
    }
};

/// Lines of random elements.
class Noise
{
public:
    explicit Noise(unsigned seed) : generator_(seed) {}

    EdgeList Next()
    {
        constexpr int module = 800; // in 1/256 pixel
        const int count = 20 + static_cast<int>(generator_() % 81);
        int position = 3 * module;
        for (int i = 0; i < count; ++i) {
            positions_[static_cast<std::size_t>(i)] = position;
            const int jitter = static_cast<int>(generator_() % (module / 2 + 1)) - module / 4;
            position += module * (1 + static_cast<int>(generator_() % 4)) + jitter;
        }
        return {std::span(positions_).first(static_cast<std::size_t>(count)), position, generator_() % 2 != 0, true};
    }

private:
    std::mt19937 generator_;
    std::array<int, 100> positions_;
};

} // namespace

int main(int count, char** arguments)
{
    const long lines = count > 1 ? std::atol(arguments[1]) : 10'000'000;
    Noise noise(count > 2 ? static_cast<unsigned>(std::atol(arguments[2])) : 1);
    for (const bool quietZones : {true, false}) {
        LinearSettings settings;
        settings.detectITF14 = settings.detectMatrix2of5 = settings.detectMSI = settings.detect11 = true;
        settings.detectPharmacode = true;
        settings.checkQuietZone = quietZones;
        Counts counts;
        std::array<int, 100> scratch;
        for (long i = 0; i < lines; ++i)
            DecodeLine(noise.Next(), scratch, settings, counts);
        std::printf("%ld lines, quiet zones %s: reads per million (with a right checksum or none)\n", lines,
                    quietZones ? "checked" : "not checked");
        for (std::size_t i = 1; i < names.size(); ++i)
            std::printf("  %-18s%12.3f%12.3f\n", names[i], 1e6 * static_cast<double>(counts.reads[i]) / lines,
                        1e6 * static_cast<double>(counts.valid[i]) / lines);
    }
}
