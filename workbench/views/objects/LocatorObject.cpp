// A locator shows where it has found its pattern: outlined on the picture and listed in a table below its sheet. A
// press on a location in the picture selects its row in the table, and the other way round.
#include "workbench/views/objects/ObjectView.h"

#include "engine/Engine.h"
#include "engine/TypeNames.h"
#include "match/Locator.h"

namespace TeskPlus {

namespace {

constexpr SheetOption options[] = {{L"View scores", true}, {L"View contrasts", false}};
enum optionPlace : std::size_t
{
    ViewScores,
    ViewContrasts
};

Locator& LocatorOf(AnyVariable& object)
{
    return static_cast<Var<Locator>&>(object).Value;
}

void Draw(AnyVariable& Object, const IController& Child)
{
    const GraphSettings settings;
    Graph::AutoColors = true;
    Graph::TextColor = Yellow;
    LocatorOf(Object).Draw(OptionOf(Child, ViewScores, true), OptionOf(Child, ViewContrasts, false), -1.0, 0);
}

OverlayHit Hit(IController& Child, int X, int Y)
{
    const Locator* locator = ObjectOf<Locator>(&Child);
    // Hovering selects nothing.
    const bool isHit = locator && locator->LocationAt(X, Y) >= 0;
    return {isHit, isHit ? Qt::CrossCursor : Qt::ArrowCursor};
}

bool Press(IController& Child, int X, int Y)
{
    Locator* locator = ObjectOf<Locator>(&Child);
    return locator && locator->HitLocation(X, Y) != NoHandle;
}

/// What a method does with the locator of an overlay, and whether it does it with nothing but a picture.
struct Use
{
    bool Trains = false, TakesPictureAlone = false;
};

Use UseOf(const IController& child)
{
    using namespace attributeValue;
    const Operation* operation = child.CurrentOperation();
    if (!operation) return {};
    Use use;
    int inputs = 0;
    for (const Arg& argument : operation->Args) {
        const std::uint32_t flags = Engine::VarNode(argument.Node)->Flags;
        if (argument.Variable == child.CurrentVariable())
            use.Trains = !(flags & In);
        else if ((flags & In) && !(flags & Value))
            inputs++;
    }
    use.TakesPictureAlone = inputs == 1;
    return use;
}

/// A pattern that has not been chosen yet starts as the middle of the picture, to be dragged from there; a search takes
/// place in all of the picture that the pattern was cut out of.
void Frame(AnyVariable& Object, const IController& Child, Image& Picture)
{
    const Image& pattern = LocatorOf(Object).TemplateImage();
    const Use use = UseOf(Child);
    if (!use.TakesPictureAlone) return;
    const int width = Picture.StoreWidth, height = Picture.StoreHeight;
    constexpr int smallest = 16;
    if (use.Trains && pattern.Type == Undefined && !Picture.HasWindow() && width / 2 >= smallest &&
        height / 2 >= smallest)
        Picture.Window(width / 4, height / 4, width / 2, height / 2);
    else if (!use.Trains && Picture.HasWindow() && Picture.Width == pattern.Width && Picture.Height == pattern.Height)
        Picture.Window();
}

std::vector<QString> Columns(AnyVariable&)
{
    return {"X", "Y", "Angle", "Scale", "Score", "Contrast"};
}

int Count(AnyVariable& Object)
{
    return LocatorOf(Object).NumLocations;
}

std::vector<std::optional<double>> Values(AnyVariable& Object, int Line)
{
    const _LocatorPose pose = LocatorOf(Object).Location(Line, 0);
    return {pose.X, pose.Y, pose.Angle, pose.Scale, pose.Score, pose.Contrast};
}

int Selected(AnyVariable& Object)
{
    const Locator& locator = LocatorOf(Object);
    return locator.Handle == AllHandle && locator.HitIndex < locator.NumLocations ? int{locator.HitIndex} : -1;
}

void Select(AnyVariable& Object, int Line)
{
    LocatorOf(Object).Select(Line);
}

constexpr OverlayRow overlay{
    .Hit = Hit, .Press = Press, .HitsOnRelease = false, .Color = Green, .Draw = Draw, .Frame = Frame};
constexpr SheetView sheet{.Options = options};
/// The lines stand in the order of falling scores until the user sorts them by a column.
const FeaturesRow features{.MinimumWidth = 240,
                           .Columns = Columns,
                           .Count = Count,
                           .Values = Values,
                           .RestsWhileDragging = true,
                           .SelectsRows = true,
                           .IsSorted = true,
                           .LeastColumnWidth = 60,
                           .Selected = Selected,
                           .Select = Select,
                           .CopyLabel = L"&Copy to Clipboard"};

} // namespace

extern const ObjectView viewLocator{
    .Type = CodeOf(L"Locator"), .Overlay = &overlay, .Sheet = &sheet, .Features = &features};

} // namespace TeskPlus
