// The frame of point operations that keep the type of their sources.
#include "image/operator/OperatorFrame.h"

namespace Tesk::points {

bool Prepare(const Entry& entry, const Image& src, Types types, Image& dst, Sources& held)
{
    if (images::Prepare(entry, src, dst, Undefined, held)) return true;
    return !types.Has(held.a.Type) && entry.Refuses(RefuseType(held.a.Type));
}

bool Prepare(const Entry& entry, const Image& src, const Image& srcB, Types types, Image& dst, Sources& held)
{
    if (images::Prepare(entry, src, srcB, dst, Undefined, held)) return true;
    return !types.Has(held.a.Type) && entry.Refuses(RefuseType(held.a.Type));
}

} // namespace Tesk::points
