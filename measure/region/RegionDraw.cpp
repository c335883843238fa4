// Regions on the screen.
#include "foundation/Entry.h"
#include "foundation/Graph.h"
#include "measure/Region.h"
#include "measure/region/RegionFrame.h"

namespace Tesk {

using namespace regions;

int regions::DrawRuns(RunSpan runs)
{
    if (Graph::FillColor == NoColor)
        return Status::Format(OutOfRange, L"Can't draw the Region, the filling color is set to NoColor");
    for (const LabeledRun& run : runs)
        Graph::FillTargetRectangle(Graph::ToTarget(run.Start), Graph::ToTarget(run.Y), Graph::ToTarget(run.End),
                                   Graph::ToTarget(run.Y + 1));
    return NoError;
}

void Region::Draw() const
{
    const Entry entry("Tesk::Region::Draw");
    entry.Refuses(DrawRuns(Runs()));
}

void Region::DrawOutline(bool Connexity8) const
{
    const Entry entry("Tesk::Region::DrawOutline");
    if (NumRuns < 1) return;
    RunList border;
    const bool made = entry.Guards(noRuns, [&] {
        Region sorted(*this);
        sorted.Sort();
        border = Subtracted(sorted.Runs(), Eroded(sorted.Runs(), Element(3, 3, Connexity8 ? 3 : 1)));
    });
    if (made) entry.Refuses(DrawRuns(border));
}

} // namespace Tesk
