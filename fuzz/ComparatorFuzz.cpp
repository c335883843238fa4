// Any bytes as a file of a comparator: read, then written again, drawn, hit, and used on a picture.
#include "foundation/Archive.h"
#include "foundation/CairoTarget.h"
#include "foundation/Graph.h"
#include "gauge/Comparator.h"
#include "image/Histogram.h"
#include "image/Image.h"
#include "measure/Blobs.h"

#include "Checks.h"

#include <cstddef>
#include <cstdint>
#include <vector>

using namespace Tesk;
using namespace Tesk::fuzz;

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    static CairoTarget target(64, 48);
    Status::ErrorBehavior(IgnoreIt);
    Comparator comparator;
    Archive reader = Archive::FromMemory({data, size});
    comparator.Transfer(reader);
    if (!reader.Good()) return 0;
    RequireRoundTrip(comparator);

    Graph::DrawTo(&target);
    comparator.DrawROI(Train | Search | Detect, true);
    for (int at = 0; at < 200; at += 23)
        if (comparator.HitROI(at, at, Train | Search | Detect) != NoHandle) comparator.DragROI(at + 7, at - 5);
    // Wide searches only cost time.
    for (int i = 0; i < comparator.NumAligners; i++) {
        Locator& locator = comparator.Aligner(i);
        locator.MinAngle = locator.MaxAngle = 0;
        locator.MinScale = locator.MaxScale = 1;
        locator.MaxLocations = 1;
    }
    Image picture, aligned, painted;
    picture = comparator.Reference;
    Histogram dark, light;
    Blobs blobs;
    comparator.InstanceIndex = 0;
    comparator.StartTolerancing(size % 2 == 0);
    comparator.Align(picture, aligned);
    comparator.UpdateRanges(-1);
    comparator.NextTolerancing(aligned);
    comparator.Differences(aligned, painted);
    comparator.Differences(aligned, dark, light);
    comparator.Differences(aligned, blobs);
    comparator.DrawDifferences(aligned);
    comparator.EndTolerancing(1.5);
    comparator.StraightTolerancing(9, 2);
    Graph::DrawTo(nullptr);
    return 0;
}
