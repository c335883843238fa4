// Edges and local extrema of a profile.
#include "measure/Profile.h"

#include "measure/fit/EdgeWalk.h"
#include "measure/profile/ProfileFrame.h"

#include <cstring>
#include <vector>

namespace Tesk {

using namespace profiles;

namespace {

/// Fills the list that `dst` was sized for; it may be the profile in which the indexes were found.
int List(const std::vector<std::int32_t>& indexes, Profile& dst, bool sized)
{
    if (!sized) return RefuseMemory();
    dst.Source = {};
    if (!indexes.empty()) std::memcpy(dst.Samples(), indexes.data(), indexes.size() * sizeof(indexes[0]));
    return NoError;
}

} // namespace

void Profile::EdgeDetect(int MinimumStep, int Noise, enum Polarities Polarity, Profile& Dst) const
{
    const Entry entry("Tesk::Profile::EdgeDetect");
    if (entry.Refuses(CheckSamples(*this, IsGray))) return;
    entry.Refuses(Allocating([&] {
        std::vector<std::int32_t> indexes;
        const std::int32_t* samples = Samples();
        WalkEdges(samples, Length, MinimumStep, Noise, Polarity,
                  [&](const EdgeStep& edge) { indexes.push_back(edge.Crossing(samples)); });
        return List(indexes, Dst, Dst.TrySet(static_cast<int>(indexes.size()), Int));
    }));
}

bool Profile::EdgeDetect(int MinimumStep, int Noise, enum Polarities Polarity, int Selection, double& X) const
{
    const Entry entry("Tesk::Profile::EdgeDetect");
    if (entry.Refuses(CheckSamples(*this, IsGray))) return false;
    EdgeStep edge{};
    const bool found = SelectEdge(Samples(), Length, MinimumStep, Noise, Polarity, Selection, edge);
    X = found ? edge.Position(Samples()) : -1;
    return found;
}

void Profile::LocalExtrema(enum Polarities Polarity, Profile& Dst) const
{
    const Entry entry("Tesk::Profile::LocalExtrema");
    if (entry.Refuses(CheckSamples(*this, IsGray))) return;
    entry.Refuses(Allocating([&] {
        std::vector<std::int32_t> indexes;
        const std::int32_t* v = Samples();
        for (int i = 1; i < Length - 1; i++) {
            const bool maximum = (Polarity & Raising) && v[i - 1] < v[i] && v[i] >= v[i + 1];
            const bool minimum = (Polarity & Falling) && v[i - 1] > v[i] && v[i] <= v[i + 1];
            if (maximum || minimum) indexes.push_back(i);
        }
        return List(indexes, Dst, Dst.TrySet(static_cast<int>(indexes.size()), Int));
    }));
}

} // namespace Tesk
