// Grouping of the pieces of characters in lines, and the order in which these are read.
#include "foundation/DisjointSets.h"
#include "read/chars/Segmentation.h"

#include <algorithm>
#include <cstddef>
#include <cstdlib>

namespace Tesk::chars {

namespace {

bool Overlaps(int a, int aSize, int b, int bSize)
{
    return a < b + bSize && b < a + aSize;
}

CharBox Union(const CharBox& a, const CharBox& b)
{
    const int x = std::min(a.X, b.X), y = std::min(a.Y, b.Y);
    return {x, y, std::max(a.X + a.Width, b.X + b.Width) - x, std::max(a.Y + a.Height, b.Y + b.Height) - y};
}

/// Whether two pieces stand side by side, or above each other as the parts of one character.
bool BelongTogether(const Piece& a, const Piece& b, int charHeight)
{
    const int gap = std::max(b.x - a.Right(), a.x - b.Right());
    if (gap < charHeight && Overlaps(a.y, a.height, b.y, b.height)) return true;
    const int height = std::max(a.Bottom(), b.Bottom()) - std::min(a.y, b.y);
    return Overlaps(a.x, a.width, b.x, b.width) && 4 * std::min(a.height, b.height) < height &&
           2 * height < 3 * charHeight;
}

/// What a line needs to be worth cutting.
std::vector<Piece> ChoosePieces(std::span<const Piece> pieces, const SegmentSettings& settings)
{
    const int widest = static_cast<int>(1.25 * settings.WidestBand()), highest = 2 * settings.charHeight;
    const double least = 0.5 * settings.charWidth * settings.charHeight;
    std::vector<Piece> chosen;
    for (const Piece& piece : pieces)
        if (piece.width <= widest && piece.height <= highest && piece.contrast >= least) chosen.push_back(piece);
    std::sort(chosen.begin(), chosen.end(),
              [](const Piece& a, const Piece& b) { return a.y != b.y ? a.y < b.y : a.x < b.x; });
    return chosen;
}

std::vector<TextLine> UnitePieces(const std::vector<Piece>& pieces, const SegmentSettings& settings)
{
    DisjointSets sets; // the root is the first of each
    for (std::size_t i = 0; i < pieces.size(); i++)
        sets.Add();
    for (std::size_t i = 0; i < pieces.size(); i++) {
        // Pieces come by their tops: those far below have nothing to do with this one.
        const int reach = std::max(pieces[i].Bottom(), pieces[i].y + 3 * settings.charHeight / 2 + 1);
        for (std::size_t j = i + 1; j < pieces.size() && pieces[j].y < reach; j++)
            if (BelongTogether(pieces[i], pieces[j], settings.charHeight))
                sets.Unite(static_cast<int>(i), static_cast<int>(j));
    }
    std::vector<TextLine> lines;
    std::vector<std::size_t> lineOf(pieces.size());
    for (std::size_t i = 0; i < pieces.size(); i++) {
        const Piece& piece = pieces[i];
        const CharBox box{piece.x, piece.y, piece.width, piece.height};
        const auto root = static_cast<std::size_t>(sets.Root(static_cast<int>(i)));
        if (root == i) {
            lineOf[i] = lines.size();
            lines.push_back({box, {}});
        }
        TextLine& line = lines[lineOf[root]];
        line.box = Union(line.box, box);
        line.pieces.push_back(piece);
    }
    return lines;
}

/// Joins lines that fit in one character.
void MergeSmall(std::vector<TextLine>& lines, const SegmentSettings& settings)
{
    std::vector<bool> gone(lines.size());
    for (std::size_t i = 0; i < lines.size(); i++) {
        if (gone[i]) continue;
        TextLine& line = lines[i];
        // Lines come by their tops, too.
        for (std::size_t j = i + 1; j < lines.size() && lines[j].box.Y < line.box.Y + settings.charHeight; j++) {
            if (gone[j]) continue;
            const CharBox box = Union(line.box, lines[j].box);
            if (box.Width >= settings.charWidth || box.Height >= settings.charHeight) continue;
            line.box = box;
            line.pieces.insert(line.pieces.end(), lines[j].pieces.begin(), lines[j].pieces.end());
            gone[j] = true;
        }
    }
    std::size_t i = 0;
    std::erase_if(lines, [&](const TextLine&) { return gone[i++]; });
}

constexpr int none = -1;

/// The nearest neighbours of a line on its left and right.
struct Neighbours
{
    int left = none, right = none;
    int leftCost = MaxInt, rightCost = MaxInt;

    void Offer(int& side, int& cost, int line, int offered)
    {
        if (offered >= cost) return;
        side = line;
        cost = offered;
    }
};

std::vector<Neighbours> FindNeighbours(const std::vector<TextLine>& lines, int charHeight)
{
    std::vector<Neighbours> neighbours(lines.size());
    const int count = static_cast<int>(lines.size());
    for (int i = 0; i < count; i++) {
        const CharBox& a = lines[static_cast<std::size_t>(i)].box;
        for (int j = i + 1; j < count && lines[static_cast<std::size_t>(j)].box.Y < a.Y + a.Height; j++) {
            const CharBox& b = lines[static_cast<std::size_t>(j)].box;
            const bool inOrder = a.X <= b.X;
            const int gap = inOrder ? b.X - a.X - a.Width : a.X - b.X - b.Width;
            if (gap > charHeight + a.Width + b.Width) continue;
            const int cost = gap + std::abs(a.Y - b.Y);
            const int l = inOrder ? i : j, r = inOrder ? j : i;
            Neighbours &left = neighbours[static_cast<std::size_t>(l)],
                       &right = neighbours[static_cast<std::size_t>(r)];
            left.Offer(left.right, left.rightCost, r, cost);
            right.Offer(right.left, right.leftCost, l, cost);
        }
    }
    std::vector<Neighbours> mutual = neighbours;
    for (int i = 0; i < count; i++) {
        Neighbours& line = mutual[static_cast<std::size_t>(i)];
        if (line.left != none && neighbours[static_cast<std::size_t>(line.left)].right != i) line.left = none;
        if (line.right != none && neighbours[static_cast<std::size_t>(line.right)].left != i) line.right = none;
    }
    return mutual;
}

/// Chains of neighbours, each from the left, by the top of what begins highest.
void PutInOrder(std::vector<TextLine>& lines, int charHeight)
{
    std::stable_sort(lines.begin(), lines.end(),
                     [](const TextLine& a, const TextLine& b) { return a.box.Y < b.box.Y; });
    const std::vector<Neighbours> neighbours = FindNeighbours(lines, charHeight);
    std::vector<bool> visited(lines.size());
    std::vector<TextLine> ordered;
    ordered.reserve(lines.size());
    for (std::size_t i = 0; i < lines.size(); i++) {
        if (visited[i]) continue;
        int at = static_cast<int>(i);
        // Neighbours on the right begin farther right, or lower at one place: no chain comes back to itself.
        while (neighbours[static_cast<std::size_t>(at)].left != none)
            at = neighbours[static_cast<std::size_t>(at)].left;
        for (; at != none; at = neighbours[static_cast<std::size_t>(at)].right) {
            visited[static_cast<std::size_t>(at)] = true;
            ordered.push_back(std::move(lines[static_cast<std::size_t>(at)]));
        }
    }
    lines = std::move(ordered);
}

} // namespace

std::vector<TextLine> FindLines(std::span<const Piece> pieces, const SegmentSettings& settings)
{
    std::vector<TextLine> lines = UnitePieces(ChoosePieces(pieces, settings), settings);
    if (settings.repairBroken) MergeSmall(lines, settings);
    std::erase_if(lines, [&](const TextLine& line) {
        return settings.IsDot(line.box.Width, line.box.Height) || line.box.Height > 2 * settings.charHeight;
    });
    PutInOrder(lines, settings.charHeight);
    return lines;
}

} // namespace Tesk::chars
