// Any bytes as a picture on the clipboard.
#include "foundation/Services.h"
#include "foundation/Status.h"
#include "image/Image.h"
#include "image/Source.h"

#include <cstdlib>

using namespace Tesk;

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    Status::ErrorBehavior(IgnoreIt);
    Services::Clipboard().Put(IClipboard::Dib, {data, data + size});
    Image image;
    image.Set(3, 2, Gray);
    Source::PasteFromClipboard(image);
    if (Status::Error().Code != NoError && image.Width != 3) std::abort();
    if (Status::Error().Code == NoError) Source::CopyToClipboard(image);
    return 0;
}
