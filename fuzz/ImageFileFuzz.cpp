// Any bytes as an image file of one format: read in a type that the last byte chooses, then drawn and written again.
#include "foundation/CairoTarget.h"
#include "foundation/Graph.h"
#include "foundation/Status.h"
#include "image/Image.h"

#include "TemporaryFile.h"

#include <cstdlib>

using namespace Tesk;

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    Status::ErrorBehavior(IgnoreIt);
    TextOutput() = nullptr;
    if (size == 0) return 0;
    const fuzz::TemporaryFile file(TESK_FUZZ_FORMAT, data, size);

    constexpr PixelTypes types[] = {Undefined, Gray, Gray16, Rgb, Gray1};
    Image image;
    image.Set(3, 2, Gray);
    image.PixelGray(1, 1) = 77;
    image.Read(file.Path(), types[data[size - 1] % 5]);
    const int code = Status::Error().Code;
    if (code != NoError && (image.Width != 3 || image.Height != 2 || image.PixelGray(1, 1) != 77)) std::abort();
    if (code == NoError && image.Width < 2000 && image.Height < 2000) {
        CairoTarget target(16, 16);
        Graph::DrawTo(&target);
        image.Draw(true);
        Graph::DrawTo(nullptr);
        image.Write(file.Path());
    }
    return 0;
}
