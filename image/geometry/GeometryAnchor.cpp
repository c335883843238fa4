// The anchors of a geometry: pairs of points in two frames.
#include "foundation/Entry.h"
#include "foundation/Graph.h"
#include "foundation/Handles.h"
#include "image/Geometry.h"

namespace Tesk {

ReadOnly<DraggingHandles, Geometry> Geometry::Handle(NoHandle);

namespace {

constexpr const wchar_t* noBuffer = L"Cannot allocate the anchors buffer";

/// The anchor last hit, and where the pointer took hold of it.
int grabbed = -1;
Grab grab;

/// What a refused index refers to.
XY& Dummy()
{
    thread_local XY dummy(0, 0);
    dummy = {0, 0};
    return dummy;
}

} // namespace

std::span<const AnchorPair> Geometry::Anchors() const
{
    return anchors_.Read();
}

void Geometry::Append(const XY& Src, const XY& Dst)
{
    const Entry entry("Tesk::Geometry::Append");
    entry.Guards(noBuffer, [&] {
        const AnchorPair pair{Src, Dst}; // the points may be anchors of this geometry
        anchors_.Write().push_back(pair);
        NumAnchors = static_cast<int>(anchors_.Read().size());
    });
}

bool Geometry::RefuseIndex(const Entry& entry, int index) const
{
    if (NumAnchors < 1) return entry.Refuse(OutOfRange, L"No anchor points are available");
    return (index < 0 || index >= NumAnchors) &&
           entry.Refuse(OutOfRange, L"The anchor index (%d) is out of the allowed range [0..%d]", index,
                        NumAnchors - 1);
}

AnchorPair* Geometry::Reach(const Entry& entry, int index)
{
    if (RefuseIndex(entry, index)) return nullptr;
    AnchorPair* pair = nullptr;
    entry.Guards(noBuffer, [&] { pair = &anchors_.Write()[static_cast<std::size_t>(index)]; });
    return pair;
}

XY& Geometry::Src(int Index)
{
    const Entry entry("Tesk::Geometry::Src");
    AnchorPair* pair = Reach(entry, Index);
    return pair ? pair->Src : Dummy();
}

XY& Geometry::Dst(int Index)
{
    const Entry entry("Tesk::Geometry::Dst");
    AnchorPair* pair = Reach(entry, Index);
    return pair ? pair->Dst : Dummy();
}

const XY& Geometry::Src(int Index) const
{
    const Entry entry("Tesk::Geometry::Src");
    return RefuseIndex(entry, Index) ? Dummy() : Anchors()[static_cast<std::size_t>(Index)].Src;
}

const XY& Geometry::Dst(int Index) const
{
    const Entry entry("Tesk::Geometry::Dst");
    return RefuseIndex(entry, Index) ? Dummy() : Anchors()[static_cast<std::size_t>(Index)].Dst;
}

void Geometry::DrawAnchors(double OrgX, double OrgY, int Radius, bool Source) const
{
    const Entry entry("Tesk::Geometry::DrawAnchors");
    for (const AnchorPair& pair : Anchors()) {
        const XY& p = Source ? pair.Src : pair.Dst;
        Graph::Marker(OrgX + p.X, OrgY + p.Y, Source, Radius);
    }
}

DraggingHandles Geometry::HitHandle(int X, int Y, double OrgX, double OrgY, bool Source) const
{
    const Entry entry("Tesk::Geometry::HitHandle");
    const ScreenPointer pointer(X, Y, XY(OrgX, OrgY));
    const std::span<const AnchorPair> anchors = Anchors();
    const auto at = [&](int i) {
        const AnchorPair& pair = anchors[static_cast<std::size_t>(i)];
        return Source ? pair.Src : pair.Dst;
    };
    grabbed = pointer.Nearest(NumAnchors, at);
    Handle = NoHandle;
    if (grabbed >= 0 && pointer.IsOnMark(at(grabbed))) {
        grab.Take(ScreenPointer(X, Y).Position(), at(grabbed));
        Handle = Source ? SrcAnchorHandle : DstAnchorHandle;
    }
    return Handle;
}

void Geometry::Drag(int X, int Y)
{
    const Entry entry("Tesk::Geometry::Drag");
    if (Handle == NoHandle || grabbed >= NumAnchors) return;
    AnchorPair* pair = Reach(entry, grabbed);
    if (pair) (Handle == SrcAnchorHandle ? pair->Src : pair->Dst) = grab.Moved(ScreenPointer(X, Y).Position());
}

} // namespace Tesk
