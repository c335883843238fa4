// Paths of lines and arcs: vertices, drawing, handles.
#include "measure/ArcPath.h"

#include "foundation/Entry.h"
#include "foundation/Graph.h"
#include "foundation/Handles.h"
#include "image/Image.h"

#include <cmath>
#include <cstdint>
#include <cstdio>
#include <utility>

namespace Tesk {

namespace {

constexpr const wchar_t* noMemory = L"Cannot (re)allocate the path Buffer";
constexpr int markArms = 3;

std::int16_t Short16(double v)
{
    return static_cast<std::int16_t>(Clamp(v, double{INT16_MIN}, double{INT16_MAX}));
}

} // namespace

int ArcPath::CheckIndex(int index) const
{
    if (Length < 1) return Status::Format(VoidObject, L"This path is void");
    if (index >= 0 && index < Length) return NoError;
    return Status::Format(OutOfRange, L"The element index (%d) is out of the path range [0..%d]", index, Length - 1);
}

void ArcPath::Take(std::vector<ArcSite>&& sites, bool closed, int orgX, int orgY)
{
    const int length = static_cast<int>(sites.size());
    sites_.Replace(std::move(sites));
    Length = length;
    Closed = closed;
    OrgX = orgX;
    OrgY = orgY;
    HitIndex = -1;
    Handle = NoHandle;
}

void ArcPath::Append(const ArcSite& Vertex)
{
    const Entry entry("Tesk::ArcPath::Append");
    if (entry.Guards(noMemory, [&] { sites_.Write().push_back(Vertex); })) Length += 1;
}

void ArcPath::Clear()
{
    const Entry entry("Tesk::ArcPath::Clear");
    sites_.Reset();
    Length = 0;
    Closed = false;
    HitIndex = -1;
    Handle = NoHandle;
}

ArcSite& ArcPath::Vertex(int Index)
{
    const Entry entry("Tesk::ArcPath::Vertex");
    thread_local ArcSite dummy(0, 0);
    ArcSite* vertex = &dummy;
    if (!entry.Refuses(CheckIndex(Index)))
        entry.Guards(noMemory, [&] { vertex = &sites_.Write()[static_cast<std::size_t>(Index)]; });
    return *vertex;
}

const ArcSite& ArcPath::Vertex(int Index) const
{
    const Entry entry("Tesk::ArcPath::Vertex");
    static const ArcSite dummy(0, 0);
    return entry.Refuses(CheckIndex(Index)) ? dummy : sites_.Read()[static_cast<std::size_t>(Index)];
}

XY ArcPath::ArcMiddle(int Index) const
{
    const Entry entry("Tesk::ArcPath::ArcMiddle");
    if (entry.Refuses(CheckIndex(Index))) return {0, 0};
    return MiddleOf(static_cast<std::size_t>(Index));
}

XY ArcPath::MiddleOf(std::size_t index) const
{
    const std::vector<ArcSite>& sites = sites_.Read();
    const ArcSite& from = sites[index];
    const ArcSite& to = sites[(index + 1) % sites.size()];
    const double dx = to.X - from.X, dy = to.Y - from.Y, half = std::hypot(dx, dy) / 2;
    const XY middle((from.X + to.X) / 2.0, (from.Y + to.Y) / 2.0);
    if (!(half > 0)) return middle;
    // A circle too small for the chord gives half of one about its middle.
    const double sine = Clamp(from.Bulge * half, -1.0, 1.0);
    const double sagitta = sine == sine ? half * sine / (1 + std::sqrt(1 - sine * sine)) : 0;
    return {middle.X + sagitta * dy / (2 * half), middle.Y - sagitta * dx / (2 * half)};
}

void ArcPath::Draw(bool Marks) const
{
    const std::vector<ArcSite>& sites = sites_.Read();
    const auto at = [&](std::size_t i) {
        const ArcSite& site = sites[i % sites.size()];
        return XY(double(OrgX) + site.X, double(OrgY) + site.Y);
    };
    const std::size_t segments = sites.empty() ? 0 : sites.size() - (Closed ? 0 : 1);
    for (std::size_t i = 0; i < segments; i++) {
        const XY from = at(i), to = at(i + 1), middle = MiddleOf(i);
        if (sites[i].Bulge == 0)
            Graph::Line(from.X, from.Y, to.X, to.Y);
        else
            Graph::ArcThrough(from, {middle.X + OrgX, middle.Y + OrgY}, to, Graph::LineWidth);
    }
    if (Marks)
        for (std::size_t i = 0; i < sites.size(); i++)
            Graph::Cross(at(i).X, at(i).Y, markArms);
}

DraggingHandles ArcPath::HitHandle(int X, int Y, bool Nearest)
{
    const ScreenPointer pointer(X, Y, XY(OrgX, OrgY));
    const std::vector<ArcSite>& sites = sites_.Read();
    const auto at = [&](int i) {
        const ArcSite& site = sites[static_cast<std::size_t>(i)];
        return XY(site.X, site.Y);
    };
    HitIndex = Nearest ? pointer.Nearest(Length, at) : pointer.FirstOn(Length, at);
    Handle = HitIndex < 0 ? NoHandle : AllHandle;
    return HitIndex < 0 ? NoHandle : AllHandle;
}

void ArcPath::Drag(int X, int Y)
{
    const Entry entry("Tesk::ArcPath::Drag");
    if (HitIndex < 0 || HitIndex >= Length) return;
    entry.Guards(noMemory, [&] {
        const XY to = ScreenPointer(X, Y, XY(OrgX, OrgY)).Pixel();
        ArcSite& site = sites_.Write()[static_cast<std::size_t>(int(HitIndex))];
        site.X = Short16(to.X);
        site.Y = Short16(to.Y);
    });
}

void ArcPath::Print(int Vertices) const
{
    std::FILE* out = TextOutput();
    if (!out) return;
    std::fprintf(out, "Length %d (%s)\n", int(Length), Closed ? "closed" : "open");
    const int shown = Max(0, Min(Vertices, int(Length))), first = (shown + 1) / 2, last = Length - shown / 2;
    for (int i = 0; i < Length; i++) {
        if (i == first && first < last) {
            std::fputs("... ", out);
            i = last;
            if (i >= Length) break;
        }
        const ArcSite& site = sites_.Read()[static_cast<std::size_t>(i)];
        std::fprintf(out, "(%d, %d) ", site.X, site.Y);
    }
    std::fputc('\n', out);
}

} // namespace Tesk
