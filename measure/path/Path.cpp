// The sites of a path: growing, sharing, access.
#include "measure/Path.h"

#include "measure/path/PathFrame.h"

#include <utility>

namespace Tesk {

Path::Path(const Path& Other)
{
    *this = Other;
}

Path& Path::operator=(const Path& Other)
{
    if (this == &Other) return *this;
    Share(Other);
    Detach(true);
    return *this;
}

Path::Path(Path&& Other) noexcept
{
    *this = std::move(Other);
}

Path& Path::operator=(Path&& Other) noexcept
{
    if (this == &Other) return *this;
    sites_ = std::move(Other.sites_);
    Length = Other.Length;
    Closed = Other.Closed;
    OrgX = Other.OrgX;
    OrgY = Other.OrgY;
    Other.Length = 0;
    return *this;
}

int Path::CheckSites() const
{
    return Length < 1 ? Status::Format(VoidObject, L"This path is void") : NoError;
}

/// Lets go of the former sites, which others may still share.
void Path::Take(std::vector<Site>&& sites, bool closed, int orgX, int orgY)
{
    sites_.Replace(std::move(sites));
    Length = static_cast<int>(sites_.Read().size());
    Closed = closed;
    OrgX = orgX;
    OrgY = orgY;
}

void Path::Append(Site Vertex)
{
    const Entry entry("Tesk::Path::Append");
    entry.Refuses(paths::Allocating([&] {
        sites_.Write().push_back(Vertex);
        Length += 1;
    }));
}

void Path::Clear()
{
    Status::Error().Code = NoError;
    if (sites_.IsShared())
        sites_.Reset();
    else if (auto* sites = sites_.Get())
        sites->clear();
    Length = 0;
    Closed = false;
}

Site& Path::Vertex(int Index) const
{
    const Entry entry("Tesk::Path::Vertex");
    thread_local Site dummy(0, 0);
    if (entry.Refuses(CheckSites())) return dummy;
    if (Index < 0 || Index >= Length)
        entry.Refuse(OutOfRange, L"The element index (%d) is out of the path range [0..%d]", Index, Length - 1);
    else
        return Sites()[Index];
    return dummy;
}

void Path::ShallowCopy(const Path& Src, bool)
{
    Status::Error().Code = NoError;
    Share(Src);
}

void Path::Share(const Path& src)
{
    if (&src == this) return;
    sites_ = src.sites_;
    Length = src.Length;
    Closed = src.Closed;
    OrgX = src.OrgX;
    OrgY = src.OrgY;
}

void Path::Detach(bool CopySites)
{
    if (!sites_.IsShared()) return;
    try {
        Length = static_cast<int>((CopySites ? sites_.Write() : sites_.Overwrite()).size());
    } catch (const std::bad_alloc&) {
        // The sites stay shared.
    }
}

int CheckReach(const Image& Src)
{
    constexpr int largestSize = INT16_MAX + 1;
    if (Src.Width <= largestSize && Src.Height <= largestSize) return NoError;
    return Status::Format(OutOfRange, L"The image size (%d, %d) is larger than the coordinates of a path reach (%d)",
                          int(Src.Width), int(Src.Height), INT16_MAX);
}

} // namespace Tesk
