// Any bytes as a file of the reader of linear symbols, followed by the pixels of a picture: read, decoded, graded,
// drawn and written again.
#include "foundation/Archive.h"
#include "foundation/CairoTarget.h"
#include "foundation/Graph.h"
#include "foundation/Status.h"
#include "image/Image.h"
#include "read/Code1DReader.h"

#include "Checks.h"

#include <algorithm>
#include <cstdint>
#include <vector>

using namespace Tesk;
using namespace Tesk::fuzz;

namespace {

constexpr std::size_t settings = 64; ///< bytes, more than a file has
constexpr int height = 24;

/// Rows that are alike but for their ends: as bars are.
void Fill(Image& image, const std::uint8_t* pixels, std::size_t count, PixelTypes type)
{
    const int width = std::max(1, static_cast<int>(std::min<std::size_t>(count, 400)) * 64 / RowBytes(64, type));
    image.Set(width, height, type);
    const std::size_t row = static_cast<std::size_t>(RowBytes(width, type));
    for (int y = 0; y < height; y++)
        for (std::size_t i = 0; i < row; i++)
            image.Row(y)[i] = i < count ? pixels[(i + static_cast<std::size_t>(y) / 9) % count] : 255;
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    static CairoTarget target(64, 48);
    Status::ErrorBehavior(IgnoreIt);
    Code1DReader reader;
    Archive archive = Archive::FromMemory({data, std::min(size, settings)}, ShortFile::KeepsFields);
    reader.Transfer(archive);
    RequireRoundTrip(reader, ShortFile::KeepsFields);

    if (size <= settings) return 0;
    constexpr PixelTypes types[] = {Gray, Gray16, Rgb, Rgba};
    Image image;
    Fill(image, data + settings, size - settings, types[data[size - 1] % 4]);
    const bool decoded = reader.Decode(image);
    Require(decoded == (reader.NumDecoded > 0) && reader.NumDecoded <= 32);
    Graph::DrawTo(&target);
    for (int i = 0; i < reader.NumDecoded; i++) {
        reader.Choose(i, image);
        reader.ColorTrain(image);
        reader.Draw(true, true, true, true);
    }
    reader.Decode(image);
    Graph::DrawTo(nullptr);
    return 0;
}
