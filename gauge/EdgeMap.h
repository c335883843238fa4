// Maps of the edges in an image: rasters of them, and chains of edge pixels with their polygons.
#pragma once

#include "foundation/ReadOnly.h"
#include "foundation/ReadOnlyArray.h"
#include "foundation/Records.h"

#include <cstdint>
#include <vector>

namespace Tesk {

class Image;
class Path;

/// The sites of a path in an `EdgeMap`, and the first of its vertices.
struct EdgePath
{
    int First, End;
    int Vectors;
};

/// All operations take `Gray` images (`UnsupportedType`); gradients are those of `Kernel` from `StandardGradient` to
/// `Canny2Gradient` (others: `UnsupportedType`). A `Noise` of `Auto` is 1.3 times the mean magnitude of the gradient.
/// The magnitude is the larger of the two components, in gray levels, up to 255.
///
///     Image edges;
///     EdgeMap::StrongEdges(Auto, 32, image, edges);    // 255 on edges, 0 elsewhere
///     EdgeMap map;
///     map.Vectorize(Auto, 10, 20, image);
///     for (int i = 0; i < map.NumPaths; i++)
///         for (int j = 0; j < map.NumVertexes(i); j++)
///             std::printf("%d %d\n", map.Vertex(i, j).X, map.Vertex(i, j).Y);
class EdgeMap
{
    template <typename T>
    using Field = ReadOnly<T, EdgeMap>;
    template <typename T>
    using Array = ReadOnlyArray<T, EdgeMap>;

public:
    Field<int> NumPaths;
    Array<Site> Sites; ///< of all paths, in pixels of the whole image
    Array<EdgePath> Paths;
    Array<Site> Vertices;   ///< of polygons
    Array<ArcSite> Arcs;    ///< of lines and arcs
    Field<int> OrgX, OrgY;  ///< corner of the image's window, which all sites count in
    Field<bool> Curved;     ///< there are lines and arcs
    Field<bool> Vectorized; ///< there are vertices

    /// The components of the gradient as a `Grad` image, which keeps its `GradGain`.
    static void GradientVector(const Image& Src, Image& Dst, enum GradientTypes Type = PrewittGradient);
    /// The magnitude where it is a maximum along its larger component, at least `Noise` and at most `UpperLimit`; 0
    /// elsewhere and at the border. With `Binarize` 255 there. Returns the noise in use.
    static int GradientMaxima(int Noise, const Image& Src, Image& Dst, bool Binarize = false,
                              enum GradientTypes Type = PrewittGradient, int UpperLimit = MaxInt);
    /// 255 on the maxima above `EdgeStrength` and on all that are connected to them, 0 elsewhere (the hysteresis of
    /// Canny 1986). Returns the noise in use.
    static int StrongEdges(int Noise, int EdgeStrength, const Image& Src, Image& Dst,
                           enum GradientTypes Type = PrewittGradient, int UpperLimit = MaxInt);
    /// 255 in the middle of each rise or fall by at least `MinimumStep` along rows and columns, deaf to changes up to
    /// `Noise`. With `ShowPolarity` falls are 0 on a ground of 128.
    static void StepEdges(int MinimumStep, int Noise, const Image& Src, Image& Dst, Polarities Polarity = Both,
                          Directions Directions = BothDirections, bool ShowPolarity = false);

    /// Links maxima of the gradient to paths of more than `MinLength` sites and of a mean magnitude above
    /// `MinAverageGray`. Returns the noise in use. Refused, too: an image beyond the reach of sites (`OutOfRange`), no
    /// memory (`CannotAllocate`), as by the next two.
    int Follow(int Noise, int MinAverageGray, int MinLength, const Image& Src, GradientTypes Type = PrewittGradient);
    /// The same, and polygons in their place that stay within `Deviation` pixels, or with `Curved` lines and arcs.
    int Vectorize(int Noise, int MinAverageGray, int MinLength, const Image& Src, bool Curved = false,
                  double Deviation = 1, GradientTypes Type = PrewittGradient);
    /// Outlines of what is darker than its surroundings, a box of `FilterSize`, plus `Noise`; of each those stretches
    /// whose strength, the sum of the inner gradient over `IntegrationLength` sites, reaches `EdgeStrength`.
    void IsoCurves(const Image& Src, int FilterSize, int Noise, int IntegrationLength, int MinLength, int EdgeStrength);

    /// \name Results
    /// Refused: an index out of range, vertices of a map that has none or has those of the other kind (`OutOfRange`).
    /// @{
    void GetPath(int Index, Path& Dst) const;
    int NumVertexes(int Path) const;
    Site Vertex(int Path, int Index) const;
    int NumArcs(int Path) const;
    ArcSite Arc(int Path, int Index) const;
    /// @}

    /// Draws the polygons, the lines and arcs, or the chains of sites in `Graph::LineColor`; with `Marks` their
    /// vertices in `Graph::PointColor`.
    void Draw(bool Marks = false) const;

private:
    int Link(int noise, int minAverageGray, int minLength, const Image& src, GradientTypes type, int& used);
    int Reduce(bool curved, double deviation);
    int Trace(const Image& src, int filterSize, int noise, int integrationLength, int minLength, int edgeStrength);
    void Restart(const Image& src);
    int CheckPath(int path) const;
    int CheckVertex(int path, const int* index, bool curved) const;
    int VertexCount(int path, bool curved) const;
};

} // namespace Tesk
