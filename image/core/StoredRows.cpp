// Images in the model files that keep rows of pixels with the bytes between them.
#include "image/core/StoredRows.h"

#include "foundation/Archive.h"
#include "image/Image.h"
#include "image/core/Refusals.h"

#include <cstddef>
#include <cstdint>

namespace Tesk::images {

namespace {

constexpr int rowStep = 4;

} // namespace

bool TransferSize(Archive& block, Image& image)
{
    int width = image.Width, height = image.Height;
    PixelTypes type = image.Type;
    block(width, height, type);
    if (!block.Good() || type == Undefined) return false;
    if (!block.Reading()) return true;
    if (type != Gray || width < 1 || height < 1 || WideRowBytes(width, type) * height > block.BytesLeft())
        block.Refuse(CannotRead, L"Cannot read file \"%ls\"", block.Name());
    else if (const int code = image.TrySet(width, height, type))
        block.Refuse(code, L"%ls", noImage);
    return block.Good();
}

void TransferRows(Archive& block, Image& image)
{
    const int used = RowBytes(image.Width, image.Type), rest = (rowStep - used % rowStep) % rowStep;
    for (int y = 0; y < image.Height && block.Good(); y++) {
        std::uint8_t gap[rowStep] = {};
        block.Bytes(image.Row(y), static_cast<std::size_t>(used));
        block.Bytes(gap, static_cast<std::size_t>(rest));
    }
}

} // namespace Tesk::images
