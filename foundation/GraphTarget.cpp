// What targets do that have no shorter way of their own.
#include "foundation/GraphTarget.h"

#include <cstddef>

namespace Tesk {

void GraphTarget::BlitRows(const TargetBitmap& Bitmap, const BitmapRows& Rows, int Left, int Top, int Width, int Height)
{
    TargetBitmap whole = Bitmap;
    whole.Pitch = static_cast<int>((std::int64_t{Bitmap.Width} * Bitmap.BitCount + 7) >> 3);
    std::vector<std::uint8_t> pixels(static_cast<std::size_t>(whole.Pitch) * static_cast<std::size_t>(whole.Height));
    for (int y = 0; y < whole.Height; y++)
        Rows.Get(y, 0, whole.Width, pixels.data() + static_cast<std::ptrdiff_t>(whole.Pitch) * y);
    whole.Pixels = pixels.data();
    Blit(whole, Left, Top, Width, Height);
}

} // namespace Tesk
