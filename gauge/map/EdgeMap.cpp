// Edge pixels linked to paths, and what is asked of them.
#include "gauge/EdgeMap.h"

#include "foundation/Entry.h"
#include "foundation/Graph.h"
#include "gauge/map/EdgeMaxima.h"
#include "image/core/Destination.h"
#include "image/core/Refusals.h"
#include "image/filter/GradientVector.h"
#include "measure/ArcPath.h"
#include "measure/Path.h"
#include "measure/path/ChordWalk.h"

#include <algorithm>
#include <array>
#include <span>
#include <utility>

namespace Tesk {

using namespace edgemaps;

namespace {

constexpr const char* following = "Tesk::EdgeMap::Follow";

/// To the right, and clockwise on the screen.
constexpr std::array<std::pair<int, int>, 8> neighbours{
    {{1, 0}, {1, 1}, {0, 1}, {-1, 1}, {-1, 0}, {-1, -1}, {0, -1}, {1, -1}}};

/// Takes the pixels of a path out of the maxima.
class Chain
{
public:
    Chain(Image& maxima, int noise, std::vector<Site>& sites) : maxima_(maxima), noise_(noise), sites_(sites) {}

    void Take(int x, int y)
    {
        std::uint8_t& value = maxima_.Row(y)[x];
        sum_ += value;
        value = 0;
        sites_.emplace_back(x, y);
        x_ = x;
        y_ = y;
    }
    /// Goes on to the strongest neighbour above the noise, as long as there is one.
    void Walk(int x, int y)
    {
        x_ = x;
        y_ = y;
        for (;;) {
            int best = noise_, bestX = -1, bestY = -1;
            for (const auto& [dx, dy] : neighbours) {
                const int i = x_ + dx, j = y_ + dy;
                if (i < 0 || j < 0 || i >= maxima_.Width || j >= maxima_.Height || maxima_.Row(j)[i] <= best) continue;
                best = maxima_.Row(j)[i];
                bestX = i;
                bestY = j;
            }
            if (bestX < 0) return;
            Take(bestX, bestY);
        }
    }
    std::int64_t Sum() const { return sum_; }

private:
    Image& maxima_;
    int noise_, x_ = 0, y_ = 0;
    std::vector<Site>& sites_;
    std::int64_t sum_ = 0;
};

/// Refuses an image whose pixels are no sites, with its corner.
int CheckSites(const Image& src)
{
    if (src.Type != Gray)
        return Status::Format(UnsupportedType, L"The image type (%ls) is not supported for this operation",
                              PixelTypeName(src.Type));
    constexpr int largest = INT16_MAX + 1;
    if (std::int64_t{src.X} + src.Width <= largest && std::int64_t{src.Y} + src.Height <= largest && src.X >= 0 &&
        src.Y >= 0)
        return NoError;
    return CheckReach(src) ? OutOfRange : Status::Format(OutOfRange, L"The image lies beyond the reach of sites");
}

} // namespace

void EdgeMap::Restart(const Image& src)
{
    Sites.values_.clear();
    Paths.values_.clear();
    Vertices.values_.clear();
    Arcs.values_.clear();
    NumPaths = 0;
    OrgX = int(src.X);
    OrgY = int(src.Y);
    Curved = Vectorized = false;
}

int EdgeMap::Link(int noise, int minAverageGray, int minLength, const Image& src, GradientTypes type, int& used)
{
    if (const int code = CheckImage(src)) return code;
    if (const int code = CheckSites(src)) return code;
    if (const int code = CheckGradient(src, type)) return code;
    return WithMemory(images::noWorkingMemory, [&] {
        Image gradient, maxima;
        const int gain = gradients::Gain(type), inUse = GradientOf(src, type, noise, gradient);
        images::MakeLike(src, Gray, maxima);
        Maxima(gradient, inUse, std::int64_t{MaxInt} * gain, maxima);
        used = inUse / gain;
        Restart(src);
        auto& sites = Sites.values_;
        for (int y = 0; y < maxima.Height; y++)
            for (int x = 0; x < maxima.Width; x++) {
                if (maxima.Row(y)[x] <= Max(used, 0)) continue;
                const std::size_t first = sites.size();
                Chain chain(maxima, Max(used, 0), sites);
                chain.Take(x, y);
                chain.Walk(x, y);
                std::reverse(sites.begin() + static_cast<std::ptrdiff_t>(first), sites.end());
                chain.Walk(x, y);
                const auto length = static_cast<std::int64_t>(sites.size() - first);
                if (length > minLength && chain.Sum() > length * minAverageGray)
                    Paths.values_.push_back({static_cast<int>(first), static_cast<int>(sites.size()), 0});
                else
                    sites.resize(first);
            }
        for (Site& site : sites)
            site = Site(site.X + OrgX, site.Y + OrgY);
        NumPaths = static_cast<int>(Paths.size());
    });
}

/// Puts vertices in the place of each path.
int EdgeMap::Reduce(bool curved, double deviation)
{
    return WithMemory(images::noWorkingMemory, [&] {
        std::vector<Site> chords;
        for (EdgePath& path : Paths.values_) {
            path.Vectors = static_cast<int>(curved ? Arcs.size() : Vertices.size());
            const std::span<const Site> chain(Sites.data() + path.First, Sites.data() + path.End);
            if (curved) {
                const std::vector<ArcSite> arcs = paths::LinesAndArcs(chain, false, deviation);
                Arcs.values_.insert(Arcs.values_.end(), arcs.begin(), arcs.end());
            } else {
                paths::ChordVertices(chain, deviation, chords);
                Vertices.values_.insert(Vertices.values_.end(), chords.begin(), chords.end());
            }
        }
        Curved = curved;
        Vectorized = true;
    });
}

int EdgeMap::Follow(int Noise, int MinAverageGray, int MinLength, const Image& Src, GradientTypes Type)
{
    const Entry entry(following);
    int used = 0;
    return entry.Refuses(Link(Noise, MinAverageGray, MinLength, Src, Type, used)) ? 0 : used;
}

int EdgeMap::Vectorize(int Noise, int MinAverageGray, int MinLength, const Image& Src, bool Curved, double Deviation,
                       GradientTypes Type)
{
    const Entry entry("Tesk::EdgeMap::Vectorize");
    int used = 0;
    if (entry.Refuses(Link(Noise, MinAverageGray, MinLength, Src, Type, used)) ||
        entry.Refuses(Reduce(Curved, Deviation)))
        return 0;
    return used;
}

void EdgeMap::IsoCurves(const Image& Src, int FilterSize, int Noise, int IntegrationLength, int MinLength,
                        int EdgeStrength)
{
    const Entry entry("Tesk::EdgeMap::IsoCurves");
    if (entry.Refuses(CheckImage(Src)) || entry.Refuses(CheckSites(Src))) return;
    entry.Refuses(Trace(Src, FilterSize, Noise, IntegrationLength, MinLength, EdgeStrength));
}

int EdgeMap::CheckPath(int path) const
{
    if (NumPaths == 0) return Status::Format(OutOfRange, L"No path is available");
    if (path >= 0 && path < NumPaths) return NoError;
    return Status::Format(OutOfRange, L"Invalid path index (%d), must be in range [0..%d]", path, NumPaths - 1);
}

/// The vertices of a path that exists.
int EdgeMap::VertexCount(int path, bool curved) const
{
    const auto index = static_cast<std::size_t>(path);
    const std::size_t end = index + 1 < Paths.size() ? static_cast<std::size_t>(Paths[index + 1].Vectors)
                            : curved                 ? Arcs.size()
                                                     : Vertices.size();
    return static_cast<int>(end) - Paths[index].Vectors;
}

/// Without an index the path alone is looked at.
int EdgeMap::CheckVertex(int path, const int* index, bool curved) const
{
    if (const int code = CheckPath(path)) return code;
    if (Vectorized && Curved && !curved)
        return Status::Format(OutOfRange, L"This edge map has been vectorized to arcs");
    if (!Vectorized || Curved != curved) return Status::Format(OutOfRange, L"This edge map has not been vectorized");
    const int count = VertexCount(path, curved);
    if (!index || (*index >= 0 && *index < count)) return NoError;
    return Status::Format(OutOfRange, L"Invalid vertex index (%d) for this path (%d), must be in range [0..%d]", *index,
                          path, count - 1);
}

void EdgeMap::GetPath(int Index, Path& Dst) const
{
    const Entry entry("Tesk::EdgeMap::GetPath");
    if (entry.Refuses(CheckPath(Index))) return;
    const EdgePath& path = Paths[static_cast<std::size_t>(Index)];
    entry.Guards(images::noWorkingMemory, [&] {
        Path sites;
        for (int i = path.First; i < path.End; i++)
            sites.Append(Sites[static_cast<std::size_t>(i)]);
        Dst = std::move(sites);
    });
}

int EdgeMap::NumVertexes(int Path) const
{
    const Entry entry("Tesk::EdgeMap::NumVertexes");
    return entry.Refuses(CheckVertex(Path, nullptr, false)) ? 0 : VertexCount(Path, false);
}

Site EdgeMap::Vertex(int Path, int Index) const
{
    const Entry entry("Tesk::EdgeMap::Vertex");
    if (entry.Refuses(CheckVertex(Path, &Index, false))) return Site(0, 0);
    return Vertices[static_cast<std::size_t>(Paths[static_cast<std::size_t>(Path)].Vectors + Index)];
}

int EdgeMap::NumArcs(int Path) const
{
    const Entry entry("Tesk::EdgeMap::NumArcs");
    return entry.Refuses(CheckVertex(Path, nullptr, true)) ? 0 : VertexCount(Path, true);
}

ArcSite EdgeMap::Arc(int Path, int Index) const
{
    const Entry entry("Tesk::EdgeMap::Arc");
    if (entry.Refuses(CheckVertex(Path, &Index, true))) return ArcSite(0, 0);
    return Arcs[static_cast<std::size_t>(Paths[static_cast<std::size_t>(Path)].Vectors + Index)];
}

void EdgeMap::Draw(bool Marks) const
{
    const Entry entry("Tesk::EdgeMap::Draw");
    constexpr int markArms = 3;
    for (int i = 0; i < NumPaths; i++) {
        const EdgePath& path = Paths[static_cast<std::size_t>(i)];
        if (Vectorized && Curved) {
            ArcPath arcs;
            for (int k = 0; k < VertexCount(i, true); k++)
                arcs.Append(Arcs[static_cast<std::size_t>(path.Vectors + k)]);
            arcs.Draw(Marks);
            continue;
        }
        const Site* first = Vectorized ? Vertices.data() + path.Vectors : Sites.data() + path.First;
        const int count = Vectorized ? VertexCount(i, false) : path.End - path.First;
        Graph::Polyline(first, count, false);
        for (int k = 0; Marks && k < count; k++)
            Graph::Cross(first[k].X, first[k].Y, markArms);
    }
}

} // namespace Tesk
