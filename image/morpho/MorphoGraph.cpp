// Graph segmentation: neighbours unite into sets, the most alike first (Felzenszwalb and Huttenlocher 2004).
#include "image/Morpho.h"

#include "image/filter/SquareFilters.h"
#include "image/morpho/MorphoFrame.h"

#include <algorithm>
#include <array>
#include <cstdlib>
#include <iterator>
#include <utility>
#include <vector>

namespace Tesk {

namespace {

using namespace morpho;

enum Direction : std::uint8_t
{
    East,
    SouthEast,
    South,
    SouthWest
};

struct Edge
{
    std::int64_t weight;
    std::uint32_t pixel; ///< index of the pixel that the edge starts from
    Direction direction;
};

/// A pixel, and the set of which it is the root.
struct Node
{
    std::uint32_t parent, size;
    float threshold;
    std::uint8_t rank;
};

class Forest
{
public:
    Forest(std::size_t pixels, double step) : step_(step), nodes_(pixels)
    {
        for (std::size_t k = 0; k < pixels; k++)
            nodes_[k] = {static_cast<std::uint32_t>(k), 1, static_cast<float>(step), 0};
    }

    std::uint32_t Root(std::uint32_t pixel)
    {
        while (nodes_[pixel].parent != pixel) {
            const std::uint32_t above = nodes_[nodes_[pixel].parent].parent;
            nodes_[pixel].parent = above;
            pixel = above;
        }
        return pixel;
    }

    bool Accept(std::uint32_t a, std::uint32_t b, float weight) const
    {
        return nodes_[a].threshold >= weight && nodes_[b].threshold >= weight;
    }
    bool IsSmall(std::uint32_t a, std::uint32_t b, int minArea) const
    {
        return std::int64_t{nodes_[a].size} < minArea || std::int64_t{nodes_[b].size} < minArea;
    }

    void Unite(std::uint32_t a, std::uint32_t b, float weight)
    {
        if (nodes_[a].rank > nodes_[b].rank) std::swap(a, b);
        Node &under = nodes_[a], &root = nodes_[b];
        if (under.rank == root.rank) root.rank++;
        under.parent = b;
        root.size += under.size;
        root.threshold = static_cast<float>(step_ / root.size + weight);
    }

private:
    double step_;
    std::vector<Node> nodes_;
};

std::vector<Edge> Edges(const Image& image, bool connexity8)
{
    const int width = image.Width, height = image.Height;
    const std::int64_t gain = image.GradGain == 0 ? 1 : image.GradGain;
    const auto weight = [&](int x, int y, int u, int v) -> std::int64_t {
        if (image.Type == Gray) return std::abs(image.Row(y)[x] - image.Row(v)[u]);
        const GradPixel a = image.Row<GradPixel>(y)[x], b = image.Row<GradPixel>(v)[u];
        return (std::int64_t{a.X} * b.X + std::int64_t{a.Y} * b.Y) / gain + 256;
    };
    std::vector<Edge> edges;
    edges.reserve(static_cast<std::size_t>(width) * static_cast<std::size_t>(height) * (connexity8 ? 4 : 2));
    for (int y = 0; y < height; y++)
        for (int x = 0; x < width; x++) {
            const auto add = [&](int u, int v, Direction direction) {
                if (u < 0 || u >= width || v >= height) return;
                const auto pixel =
                    static_cast<std::uint32_t>(y) * static_cast<std::uint32_t>(width) + static_cast<std::uint32_t>(x);
                edges.push_back({weight(x, y, u, v), pixel, direction});
            };
            add(x + 1, y, East);
            if (connexity8) add(x + 1, y + 1, SouthEast);
            add(x, y + 1, South);
            if (connexity8) add(x - 1, y + 1, SouthWest);
        }
    return edges;
}

/// By weight; edges of one weight stay in the order of rows and directions.
void Sort(std::vector<Edge>& edges, PixelTypes type)
{
    if (type != Gray) {
        std::stable_sort(edges.begin(), edges.end(), [](const Edge& a, const Edge& b) { return a.weight < b.weight; });
        return;
    }
    std::array<std::size_t, 257> starts{};
    for (const Edge& edge : edges)
        starts[static_cast<std::size_t>(edge.weight) + 1]++;
    for (std::size_t v = 1; v < starts.size(); v++)
        starts[v] += starts[v - 1];
    std::vector<Edge> sorted(edges.size());
    for (const Edge& edge : edges)
        sorted[starts[static_cast<std::size_t>(edge.weight)]++] = edge;
    edges.swap(sorted);
}

Forest Segment(const Image& image, double step, int minArea, bool connexity8)
{
    std::vector<Edge> edges = Edges(image, connexity8);
    Sort(edges, image.Type);
    const auto width = static_cast<std::uint32_t>(int(image.Width));
    Forest forest(static_cast<std::size_t>(width) * static_cast<std::size_t>(int(image.Height)), step);
    const std::uint32_t offsets[] = {1, width + 1, width, width - 1};
    const auto pass = [&](auto joins) {
        for (const Edge& edge : edges) {
            const std::uint32_t a = forest.Root(edge.pixel), b = forest.Root(edge.pixel + offsets[edge.direction]);
            const auto weight = static_cast<float>(edge.weight);
            if (a != b && joins(a, b, weight)) forest.Unite(a, b, weight);
        }
    };
    pass([&](std::uint32_t a, std::uint32_t b, float weight) { return forest.Accept(a, b, weight); });
    if (minArea > 1) pass([&](std::uint32_t a, std::uint32_t b, float) { return forest.IsSmall(a, b, minArea); });
    return forest;
}

/// The filters 1 to so many are powers of the binomial mask.
constexpr int mostSmoothing = 4;

} // namespace

void Morpho::GraphSegment(const Image& Src, Image& Dst, int Filter, double Step, int MinArea, bool Connexity8)
{
    const Entry entry("Tesk::Morpho::GraphSegment");
    if (entry.Refuses(CheckType(Src, {Gray, Grad}))) return;
    const bool filtered = Src.Type == Gray && Filter != 0;
    if (filtered && (Filter < 0 || Filter > mostSmoothing)) {
        Status::Raise(Status::Format(OutOfRange, L"The Filter value (%d) must be in range [0..4]", Filter), "");
        return;
    }
    Sources held;
    if (Prepare(entry, Src, {Gray, Grad}, Dst, held, Gray)) return;
    Guarded(entry, [&] {
        if (filtered) filters::FilterBinomially(Filter, held.a, Dst);
        Forest forest = Segment(filtered ? Dst : held.a, Step, MinArea, Connexity8);
        std::uint32_t pixel = 0;
        for (int y = 0; y < Dst.Height; y++)
            for (int x = 0; x < Dst.Width; x++)
                Dst.Row(y)[x] = static_cast<GrayPixel>(forest.Root(pixel++) & 255);
    });
}

} // namespace Tesk
