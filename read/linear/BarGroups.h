// Groups of bars in any orientation: edges of scan lines, linked from line to line to the sides of bars, and neighbours
// of these united to what may be a symbol.
#pragma once

#include "foundation/Records.h"
#include "read/linear/LineWalk.h"

#include <cstdint>
#include <span>
#include <vector>

namespace Tesk::linear {

/// Bars beside each other.
struct BarGroup
{
    XY first{0, 0}, last{0, 0}; ///< the centres of the outer bar sides, on the axis
    XY along{0, 1};             ///< the direction of the bars, of length 1
    double length = 0;          ///< of the bars
};

class BarFinder
{
public:
    /// A bar side reaches over that many distances of lines.
    static constexpr int usualReach = 6;

    /// Looks along the columns of a picture, or along its rows, for sides of bars that cross these.
    std::span<const BarGroup> Find(const Raster& raster, bool alongRows, int density, EdgeRule rule,
                                   int reach = usualReach);
    /// Pixels and edges looked at.
    std::int64_t Work() const { return work_; }
    int EdgesFound() const { return edgesFound_; }

private:
    /// An edge on a line, with the links to the next ones of its bar side.
    struct Edge
    {
        int position; ///< along the line, in 1/256 pixel
        int slope;    ///< of the bar side: change of the position from one line to the next
        int next, previous;
        int chain;
        int line;
        bool rising;
    };
    struct Chain
    {
        int head, tail;
        XY from, to; ///< x along the lines, y across them
        double Length() const;
    };

    void FindEdgesOfLines(const Raster& raster, bool alongRows, EdgeRule rule);
    int SlopeAt(const Raster& raster, bool alongRows, int v, int position) const;
    void Link();
    void LinkLines(int line, int next);
    void CollectChains();
    void RemoveOthers();
    bool IsStraight(const Chain& chain) const;
    void Unite();
    bool AreNeighbours(const Chain& a, const Chain& b) const;
    int Root(int chain);
    void MakeGroups(bool alongRows);
    void MakeGroup(std::span<const int> chains, bool alongRows);

    int density_ = 5, reach_ = usualReach;
    std::vector<int> line_, found_, lineStarts_, rootOf_, members_;
    std::vector<Turn> turns_;
    std::vector<Edge> edges_;
    std::vector<Chain> chains_;
    std::vector<double> lengths_;
    std::vector<XY> centers_, kept_;
    std::vector<BarGroup> groups_;
    int edgesFound_ = 0;
    std::int64_t work_ = 0;
};

} // namespace Tesk::linear
