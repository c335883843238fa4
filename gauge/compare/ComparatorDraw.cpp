// The ROIs of a comparator on the screen: drawn, hit and dragged.
#include "gauge/Comparator.h"

#include "foundation/Entry.h"
#include "foundation/Graph.h"
#include "foundation/Handles.h"
#include "gauge/compare/CompareFrame.h"

#include <cstddef>

namespace Tesk {

using namespace compare;

namespace {

PredefinedColors ColorOf(ROITypes type, int index)
{
    return type == Train ? Green : type == Search ? Yellow : index == 0 ? Blue : Cyan;
}

SourceRectangle Moved(SourceRectangle box, const XY& by)
{
    box.X += static_cast<int>(by.X);
    box.Y += static_cast<int>(by.Y);
    return box;
}

} // namespace

/// The ROI as it is stored.
const Limits& Comparator::ROIAt(ROITypes type, int index) const
{
    if (type == Detect) return detectors_[static_cast<std::size_t>(index)];
    return type == Train ? AlignerAt(index).train : AlignerAt(index).search;
}

/// From where it counts: detectors lie in the working area.
XY Comparator::OriginOf(ROITypes type, int index) const
{
    return type == Detect && index > 0 ? XY(WorkingArea().X, WorkingArea().Y) : XY(0, 0);
}

/// Calls `f(type, index)` for the ROIs of the types, the smaller kinds first, until one returns true.
template <typename F>
bool Comparator::AnyROI(int types, F f) const
{
    for (int i = 1; types & Detect && i < NumDetectors; i++)
        if (f(Detect, i)) return true;
    for (const ROITypes type : {Train, Search})
        for (int i = 0; types & type && i < NumAligners; i++)
            if (f(type, i)) return true;
    return types & Detect && NumDetectors > 0 && f(Detect, 0);
}

void Comparator::DrawROI(int Types, bool Handles) const
{
    const Entry entry("Tesk::Comparator::DrawROI");
    if (RefusesIdle(entry)) return;
    const GraphSettings kept;
    AnyROI(Types, [&](ROITypes type, int index) {
        const bool isHit = Handle != NoHandle && HitType == type && HitIndex == index;
        if (Graph::AutoColors) Graph::LineColor = isHit ? Red : ColorOf(type, index);
        DrawBox(Moved(ROIAt(type, index), OriginOf(type, index)), Handles);
        return false;
    });
}

void Comparator::DrawROI(bool TrainROI, bool SearchROI, bool DetectROI) const
{
    DrawROI((TrainROI ? Train : 0) | (SearchROI ? Search : 0) | (DetectROI ? Detect : 0), false);
}

DraggingHandles Comparator::HitROI(int X, int Y, int Types)
{
    const Entry entry("Tesk::Comparator::HitROI");
    Handle = NoHandle;
    HitType = NoType;
    HitIndex = -1;
    if (RefusesIdle(entry)) return NoHandle;
    AnyROI(Types, [&](ROITypes type, int index) {
        const SourceRectangle box = Moved(ROIAt(type, index), OriginOf(type, index));
        const DraggingHandles hit = HitBox(box, X, Y);
        if (hit == NoHandle) return false;
        Handle = hit;
        HitType = type;
        HitIndex = index;
        const Limits& roi = ROIAt(type, index);
        grab_.Take(ScreenPointer(X, Y, OriginOf(type, index)).Pixel(), XY(roi.X, roi.Y));
        return true;
    });
    return Handle;
}

void Comparator::DragROI(int X, int Y)
{
    const Entry entry("Tesk::Comparator::DragROI");
    if (RefusesIdle(entry) || Handle == NoHandle) return;
    const ROITypes type = HitType;
    const int index = HitIndex;
    // What was hit may be gone.
    if (index < 0 || index >= (type == Detect ? NumDetectors : NumAligners)) return;
    const bool isInside = type == Detect && index > 0;
    const int width = isInside ? WorkingArea().Width : int(reference_.Width),
              height = isInside ? WorkingArea().Height : int(reference_.Height);
    const SourceRectangle box =
        DragBox(ROIAt(type, index), Handle, ScreenPointer(X, Y, OriginOf(type, index)).Pixel(), grab_, width, height);
    if (box.Width < 1 || box.Height < 1) return;
    const Limits roi(box.X, box.Y, box.Width, box.Height);
    if (type == Detect)
        PutDetector(index, roi);
    else
        (type == Train ? AlignerAt(index).train : AlignerAt(index).search) = roi;
}

} // namespace Tesk
