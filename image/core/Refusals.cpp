// The messages of the refusals that the families share.
#include "image/core/Refusals.h"

#include "foundation/Status.h"

namespace Tesk::images {

const wchar_t* ClippingName(GrayClipping clip)
{
    static constexpr const wchar_t* names[] = {L"Saturate", L"Absolute", L"Negative", L"Rescale"};
    return clip >= Saturate && clip <= Rescale ? names[clip] : L"?";
}

int RefuseType(PixelTypes type, const wchar_t* required)
{
    return Status::Format(UnsupportedType, L"The image type (%ls) is not supported for this operation%ls",
                          PixelTypeName(type), required);
}

int RefuseClip(GrayClipping clip)
{
    return Status::Format(OutOfRange, L"The clipping mode (%ls) is not supported for this operation",
                          ClippingName(clip));
}

int CheckType(const Image& image, Types types, const wchar_t* required)
{
    if (const int code = CheckImage(image)) return code;
    return types.Has(image.Type) ? int{NoError} : RefuseType(image.Type, required);
}

int RefuseSizes(const Image& src, const Image& dst)
{
    return Status::Format(IncompatibleSize, L"Incompatible source or destination image sizes, (%d, %d) vs. (%d, %d)",
                          int(src.Width), int(src.Height), int(dst.Width), int(dst.Height));
}

} // namespace Tesk::images
