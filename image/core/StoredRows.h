// Images in the model files that keep rows of pixels with the bytes between them.
#pragma once

namespace Tesk {
class Archive;
class Image;
} // namespace Tesk

namespace Tesk::images {

/// Width, height and type. What is read gets a store of that size. Whether rows follow: a void image is its type alone,
/// and leaves the former one as it was. Refused: a `Gray` image that the file cannot hold, and any other one that is
/// not void (`CannotRead`).
[[nodiscard]] bool TransferSize(Archive& block, Image& image);

/// The rows of an image of that size, each filled up by zeros to the pitch that a store of its width has.
void TransferRows(Archive& block, Image& image);

} // namespace Tesk::images
