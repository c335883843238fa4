// Any bytes as an AVI file: opened, and grabbed from in the order that the last byte tells.
#include "foundation/Status.h"
#include "image/Source.h"

#include "TemporaryFile.h"

#include <cstdint>
#include <cstdlib>

using namespace Tesk;

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    Status::ErrorBehavior(IgnoreIt);
    TextOutput() = nullptr;
    if (size == 0) return 0;
    const fuzz::TemporaryFile file("avi", data, size);

    Source source;
    source.FieldMode = data[size - 1] & 1;
    source.OpenSequenceFile(file.Path());
    if ((source.Mode == Sequence) != (Status::Error().Code == NoError)) std::abort();
    Image frame;
    for (int i = 0; i < 6; i++) {
        const int before = source.CurrentFrame;
        source.Grab(frame, i % 2 ? Gray : Rgb);
        if (Status::Error().Code != NoError && source.NumFrames > before && source.CurrentFrame != before) std::abort();
        if (i == 3) source.CurrentFrame = data[size - 1] >> 4;
    }
    return 0;
}
