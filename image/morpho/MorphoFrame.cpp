#include "image/morpho/MorphoFrame.h"

namespace Tesk::morpho {

int CheckType(const Image& image, Types types, const wchar_t* required)
{
    if (const int code = CheckImage(image)) return code;
    if (types.Has(image.Type)) return NoError;
    return Status::Format(UnsupportedType, L"The image type (%ls) is not supported for this operation%ls",
                          PixelTypeName(image.Type), required);
}

bool MakeWork(const Entry& entry, const Image& like, PixelTypes type, Image& work)
{
    return !work.TrySet(like.Width, like.Height, type) &&
           entry.Refuse(CannotAllocate, L"Cannot allocate the image buffer");
}

bool Hold(const Entry& entry, const Image& src, const Image& dst, Image& held)
{
    // A detached destination writes elsewhere, so the view stays as it is.
    if (Status::Shallow || !points::Overlap(src, dst)) {
        held.ShallowCopy(src, true);
        return false;
    }
    if (MakeWork(entry, src, src.Type, held)) return true;
    CopyRows(src, held);
    held.GradGain = src.GradGain;
    return false;
}

bool Size(const Image& src, Image& dst, PixelTypes type)
{
    const bool read = src.FirstPixel == dst.FirstPixel;
    dst.Set(src, type);
    if (Status::Error().Code != NoError) return true;
    dst.DetachIfShared(read);
    dst.GradGain = 1;
    return false;
}

bool Prepare(const Entry& entry, const Image& src, Types types, Image& dst, Image& held, PixelTypes dstType,
             const wchar_t* required)
{
    if (entry.Refuses(CheckType(src, types, required))) return true;
    return Hold(entry, src, dst, held) || Size(held, dst, dstType);
}

} // namespace Tesk::morpho
