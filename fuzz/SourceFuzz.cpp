// Any bytes as an AVI file: opened, and grabbed from in the order that the last byte tells.
#include "foundation/Status.h"
#include "image/Source.h"

#include <cstdint>
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
        return folder + "/tesk_fuzz_" + std::to_string(getpid()) + ".avi";
    }();
    Status::ErrorBehavior(IgnoreIt);
    TextOutput() = nullptr;
    if (size == 0) return 0;
    std::FILE* file = std::fopen(path.c_str(), "wb");
    if (!file) std::abort();
    std::fwrite(data, 1, size, file);
    std::fclose(file);

    Source source;
    source.FieldMode = data[size - 1] & 1;
    source.OpenSequenceFile(path.c_str());
    if ((source.Mode == Sequence) != (Status::Error().Code == NoError)) std::abort();
    Image frame;
    for (int i = 0; i < 6; i++) {
        const int before = source.CurrentFrame;
        source.Grab(frame, i % 2 ? Gray : Rgb);
        if (Status::Error().Code != NoError && source.NumFrames > before && source.CurrentFrame != before) std::abort();
        if (i == 3) source.CurrentFrame = data[size - 1] >> 4;
    }
    std::remove(path.c_str());
    return 0;
}
