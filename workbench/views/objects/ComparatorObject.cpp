// A comparator shows its ROIs on the picture that it aligns, where they are dragged, and what differs on the picture
// that it has aligned. The buttons of its sheet learn the aligners' patterns anew, and add and remove detectors.
#include "workbench/views/objects/ObjectView.h"

#include "engine/Engine.h"
#include "engine/TypeNames.h"
#include "foundation/Handles.h"
#include "foundation/Status.h"
#include "gauge/Comparator.h"
#include "workbench/views/picture/BoxCursor.h"

#include <cwchar>

namespace TeskPlus {

namespace {

constexpr int allROIs = Train | Search | Detect;

Comparator& ComparatorOf(AnyVariable& object)
{
    return static_cast<Var<Comparator>&>(object).Value;
}

/// The one of an overlay; null where it has no reference, so that there is nothing to show.
Comparator* TaughtOf(const IController& child)
{
    Comparator* comparator = ObjectOf<Comparator>(&child);
    const bool isTaught = comparator && comparator->Mode != CompareIdle && comparator->Reference.Type != Undefined;
    return isTaught ? comparator : nullptr;
}

/// Whether the picture below is an aligned one, in which positions count from the corner of the working area.
bool IsOnAligned(const IController& child)
{
    const Operation* operation = child.CurrentOperation();
    return operation && operation->Node >= 0 && !std::wcscmp(Engine::Tree[operation->Node]->Identifier, L"Differences");
}

Limits DetectorAt(Comparator& comparator, int index)
{
    const int edited = comparator.DetectorIndex;
    comparator.DetectorIndex = index;
    const Limits roi = comparator.DetectorROI();
    comparator.DetectorIndex = edited;
    return roi;
}

void DrawCompared(Comparator& comparator, const Image& picture)
{
    const Limits area = DetectorAt(comparator, 0);
    if (comparator.Mode == Inspected && picture.Type == comparator.Reference.Type && picture.Width == area.Width &&
        picture.Height == area.Height)
        comparator.DrawDifferences(picture);
    DrawIn(Cyan, [&] {
        for (int i = 1; i < comparator.NumDetectors; i++)
            DrawBox(DetectorAt(comparator, i), false);
    });
}

void Draw(AnyVariable&, const IController& Child)
{
    Comparator* comparator = TaughtOf(Child);
    if (!comparator) return;
    const GraphSettings settings;
    Graph::AutoColors = true;
    if (!IsOnAligned(Child))
        comparator->DrawROI(allROIs, false);
    else if (const Image* picture = PictureOf(Child.MotherController()))
        DrawCompared(*comparator, *picture);
}

OverlayHit Hit(IController& Child, int X, int Y)
{
    Comparator* comparator = TaughtOf(Child);
    if (!comparator || IsOnAligned(Child)) return {};
    const DraggingHandles handle = comparator->HitROI(X, Y, allROIs);
    return {handle != NoHandle, CursorOfBox(handle)};
}

void Drag(IController& Child, const Image&, int X, int Y)
{
    if (Comparator* comparator = TaughtOf(Child)) comparator->DragROI(X, Y);
}

bool IsHeld(const IController& Child)
{
    const Comparator* comparator = TaughtOf(Child);
    return comparator && comparator->Handle != NoHandle;
}

/// Changes the ROIs of a comparator and of those that it goes on from, whose phase stays. False for a refusal.
template <typename Change>
bool ChangeROIs(AnyVariable& object, Change change)
{
    Comparator& shown = ComparatorOf(object);
    change(shown);
    if (Status::Error().Code != NoError) return false;
    EachSource<Comparator>(object, [&](Comparator& other) { other.TakeROIs(shown); });
    return true;
}

void TrainAll(Comparator& comparator)
{
    const int edited = comparator.AlignerIndex;
    comparator.AlignerIndex = All;
    comparator.TrainAligners();
    comparator.AlignerIndex = edited;
}

void TrainAligners(AnyVariable& Object, int)
{
    if (ChangeROIs(Object, TrainAll)) EachSource<Comparator>(Object, TrainAll);
}

void AddDetector(AnyVariable& Object, int)
{
    ChangeROIs(Object, [](Comparator& comparator) {
        const Limits area = DetectorAt(comparator, 0);
        if (Status::Error().Code == NoError)
            comparator.AppendDetectorROI(Limits(area.Width / 4, area.Height / 4, area.Width / 2, area.Height / 2));
    });
}

/// The one that was dragged last, else the last one.
void RemoveDetector(AnyVariable& Object, int)
{
    ChangeROIs(Object, [](Comparator& comparator) {
        const bool isHit =
            comparator.HitType == Detect && comparator.HitIndex > 0 && comparator.HitIndex < comparator.NumDetectors;
        comparator.DetectorIndex = isHit ? int{comparator.HitIndex} : comparator.NumDetectors - 1;
        comparator.RemoveDetectorROI();
    });
}

constexpr OverlayRow overlay{.Hit = Hit, .Drag = Drag, .IsHeld = IsHeld, .Color = Blue, .Draw = Draw};
constexpr SheetButton buttons[] = {
    {L"Train Aligners", TrainAligners}, {L"Add Detector", AddDetector}, {L"Remove Detector", RemoveDetector}};
constexpr SheetView sheet{.Buttons = buttons};

} // namespace

extern const ObjectView viewComparator{.Type = CodeOf(L"Comparator"), .Overlay = &overlay, .Sheet = &sheet};

} // namespace TeskPlus
