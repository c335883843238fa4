// Any bytes as an image file of one format: read in a type that the last byte chooses, then drawn and written again.
#include "foundation/CairoTarget.h"
#include "foundation/Graph.h"
#include "foundation/Status.h"
#include "image/Image.h"

#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <string>
#include <unistd.h>

using namespace Tesk;

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    static const std::string path = [] {
        const std::string folder = std::filesystem::exists("/dev/shm") ? "/dev/shm" : ".";
        return folder + "/tesk_fuzz_" + std::to_string(getpid()) + "." TESK_FUZZ_FORMAT;
    }();
    Status::ErrorBehavior(IgnoreIt);
    TextOutput() = nullptr;
    if (size == 0) return 0;
    std::FILE* file = std::fopen(path.c_str(), "wb");
    if (!file) std::abort();
    std::fwrite(data, 1, size, file);
    std::fclose(file);

    constexpr PixelTypes types[] = {Undefined, Gray, Gray16, Rgb, Gray1};
    Image image;
    image.Set(3, 2, Gray);
    image.PixelGray(1, 1) = 77;
    image.Read(path.c_str(), types[data[size - 1] % 5]);
    const int code = Status::Error().Code;
    if (code != NoError && (image.Width != 3 || image.Height != 2 || image.PixelGray(1, 1) != 77)) std::abort();
    if (code == NoError && image.Width < 2000 && image.Height < 2000) {
        CairoTarget target(16, 16);
        Graph::DrawTo(&target);
        image.Draw(true);
        Graph::DrawTo(nullptr);
        image.Write(path.c_str());
    }
    std::remove(path.c_str());
    return 0;
}
