// Contours of blobs in gray images.
#include "measure/Path.h"

#include "measure/path/PathFrame.h"

#include <algorithm>
#include <optional>
#include <utility>

namespace Tesk {

using namespace paths;

namespace {

/// The neighbours of a pixel, clockwise on the screen from the right; without the corners, every other one.
constexpr int neighbours = 8;
constexpr int offsetX[neighbours] = {1, 1, 0, -1, -1, -1, 0, 1};
constexpr int offsetY[neighbours] = {0, 1, 1, 1, 0, -1, -1, -1};

struct Place
{
    int x, y;
    bool operator==(const Place&) const = default;
};

class Blob
{
public:
    Blob(const Image& src, int threshold, bool above, bool connexity8)
        : src_(src), threshold_(threshold), above_(above), step_(connexity8 ? 1 : 2)
    {}

    bool InImage(Place p) const { return p.x >= 0 && p.y >= 0 && p.x < src_.Width && p.y < src_.Height; }
    bool Has(Place p) const { return InImage(p) && (src_.Row(p.y)[p.x] >= threshold_) == above_; }
    static Place Neighbour(Place p, int direction) { return {p.x + offsetX[direction], p.y + offsetY[direction]}; }

    /// The first direction in which the blob ends; with `inside`, within the image alone.
    std::optional<int> Background(Place seed, bool inside) const
    {
        for (int d = 0; d < neighbours; d += step_) {
            const Place next = Neighbour(seed, d);
            if (!Has(next) && (!inside || InImage(next))) return d;
        }
        return {};
    }

    enum Ends
    {
        AtSeed,
        AtBorder,
        Alone
    };

    /// Appends the pixels behind the seed, turning by `sense`, 1 clockwise or -1, until the seed is met again. With
    /// `open` the walk ends at the border, and goes through the seed, where the blob is thin, until it would leave it
    /// as at first. From a pixel to the next goes a permutation of the pairs of neighbours in the blob, so the walk
    /// comes back.
    Ends Walk(Place seed, int direction, int sense, bool open, std::vector<Site>& sites) const
    {
        Place at = seed;
        int d = direction;
        std::optional<int> first;
        for (;;) {
            int tested = 0;
            for (; tested < neighbours; tested += step_, d = Turned(d, sense * step_)) {
                const Place next = Neighbour(at, d);
                if (Has(next)) break;
                if (open && !InImage(next)) return AtBorder;
            }
            if (tested >= neighbours) return Alone;
            if (!first)
                first = d;
            else if (at == seed && d == *first)
                break;
            at = Neighbour(at, d);
            if (at == seed && !open) return AtSeed;
            sites.emplace_back(at.x, at.y);
            d = Turned(d, neighbours / 2 + sense * step_);
        }
        sites.pop_back();
        return AtSeed;
    }

private:
    static int Turned(int direction, int by) { return (direction + by + neighbours) % neighbours; }

    const Image& src_;
    int threshold_;
    bool above_;
    int step_;
};

} // namespace

void Path::Follow(const Site& Seed, int Threshold, const Image& Src, bool Above, bool Connexity8, bool AlwaysClosed)
{
    const Entry entry("Tesk::Path::Follow");
    if (entry.Refuses(CheckImage(Src, Gray)) || entry.Refuses(CheckReach(Src))) return;
    const Place seed{Seed.X - Src.X, Seed.Y - Src.Y};
    const int orgX = Src.X, orgY = Src.Y;
    entry.Refuses(Allocating([&] {
        std::vector<Site> sites;
        bool closed = false;
        if (seed.x >= 0 && seed.y >= 0 && seed.x < Src.Width && seed.y < Src.Height) {
            const int value = Src.Row(seed.y)[seed.x];
            const Blob blob(Src, Threshold != Auto ? Threshold : Above ? value : value + 1, Above, Connexity8);
            // An open contour starts beside a pixel of the image if it can: beside the border there is none to follow.
            std::optional<int> background;
            if (blob.Has(seed)) {
                if (!AlwaysClosed) background = blob.Background(seed, true);
                if (!background) background = blob.Background(seed, false);
            }
            if (background) {
                sites.emplace_back(seed.x, seed.y);
                closed = blob.Walk(seed, *background, 1, !AlwaysClosed, sites) != Blob::AtBorder;
                if (closed) {
                    // The border is nowhere: the contour is what a closed walk gives.
                    const auto again = std::find_if(sites.begin() + 1, sites.end(),
                                                    [&](Site site) { return Same(site, sites.front()); });
                    sites.erase(again, sites.end());
                } else {
                    std::vector<Site> before;
                    blob.Walk(seed, *background, -1, true, before);
                    sites.insert(sites.begin(), before.rbegin(), before.rend());
                }
            }
        }
        Take(std::move(sites), closed, orgX, orgY);
    }));
}

} // namespace Tesk
