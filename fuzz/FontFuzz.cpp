// Any bytes as a file of a character reader: read, then written again, and put to read a picture.
#include "foundation/Archive.h"
#include "image/Image.h"
#include "read/CharReader.h"

#include "Checks.h"

#include <cstdint>
#include <vector>

using namespace Tesk;
using namespace Tesk::fuzz;

namespace {

/// Four dark bars on a bright ground.
Image& Picture()
{
    static Image image;
    if (image.Type != Undefined) return image;
    image.Set(96, 40, Gray);
    for (int y = 0; y < image.Height; y++)
        for (int x = 0; x < image.Width; x++)
            image.Row(y)[x] =
                static_cast<std::uint8_t>(y > 8 && y < 30 && x % 24 > 8 && x % 24 < 18 ? 20 + y : 220 - x);
    return image;
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    Status::ErrorBehavior(IgnoreIt);
    if (size == 0) return 0;
    CharReader reader;
    Archive archive = Archive::FromMemory({data + 1, size - 1});
    reader.Transfer(archive, data[0] % 2 == 1, false);
    if (!archive.Good()) return 0;
    RequireRoundTrip(reader);

    // Searches and safe scores over a large font only cost time.
    constexpr int mostChars = 40;
    while (reader.NumFontChars > mostChars)
        reader.FontCharDelete(0);
    reader.CharsRead(Picture());
    reader.Optimize(true);
    return 0;
}
