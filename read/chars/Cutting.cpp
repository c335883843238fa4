// Cutting of a line into characters: by gaps, and where characters touch by their size.
#include "read/chars/Segmentation.h"

#include <algorithm>
#include <cstddef>
#include <cstdint>

namespace Tesk::chars {

namespace {

/// The columns of pieces that stand above each other.
struct Band
{
    int left, right, top, bottom;

    void Take(int l, int r, int t, int b)
    {
        left = std::min(left, l);
        right = std::max(right, r);
        top = std::min(top, t);
        bottom = std::max(bottom, b);
    }
};

std::vector<Band> FindBands(const TextLine& line)
{
    std::vector<Piece> pieces = line.pieces;
    std::sort(pieces.begin(), pieces.end(), [](const Piece& a, const Piece& b) { return a.x < b.x; });
    std::vector<Band> bands;
    for (const Piece& piece : pieces) {
        if (bands.empty() || piece.x >= bands.back().right)
            bands.push_back({piece.x, piece.Right(), piece.y, piece.Bottom()});
        else
            bands.back().Take(piece.x, piece.Right(), piece.y, piece.Bottom());
    }
    return bands;
}

/// Joins neighbours that make one character together, the narrowest first.
void MergeBands(std::vector<Band>& bands, int charWidth)
{
    while (bands.size() >= 2) {
        std::size_t best = 0;
        int least = charWidth;
        for (std::size_t i = 1; i < bands.size(); i++) {
            const int width = bands[i].right - bands[i - 1].left, gap = bands[i].left - bands[i - 1].right;
            if (width >= least || 4 * gap >= charWidth) continue;
            least = width;
            best = i;
        }
        if (best == 0) return;
        const Band second = bands[best];
        bands[best - 1].Take(second.left, second.right, second.top, second.bottom);
        bands.erase(bands.begin() + static_cast<std::ptrdiff_t>(best));
    }
}

void CutBand(const Band& band, const SegmentSettings& settings, std::vector<CharBox>& boxes)
{
    const int width = band.right - band.left, height = band.bottom - band.top, gap = settings.Gap();
    if (width > settings.WidestBand() || height > 2 * settings.charHeight || settings.IsDot(width, height)) return;
    const int count = std::max((width + gap) / (settings.charWidth + gap), 1), pitch = (width + gap) / count;
    for (int i = 0; i < count; i++)
        boxes.push_back({band.left + i * pitch, band.top, pitch - gap, height});
}

/// The value four fifths up in their order.
int FourFifths(std::vector<int>& values)
{
    const auto at = values.begin() + static_cast<std::ptrdiff_t>(4 * values.size() / 5);
    std::nth_element(values.begin(), at, values.end());
    return *at;
}

} // namespace

void GuessSize(std::span<const Piece> pieces, SegmentSettings& settings)
{
    constexpr int leastHeight = 8;
    if (pieces.empty()) return;
    std::vector<int> sizes;
    for (const Piece& piece : pieces)
        sizes.push_back(piece.height);
    const int oldWidth = settings.charWidth, oldHeight = settings.charHeight;
    settings.charHeight = std::max(FourFifths(sizes), leastHeight);
    if (settings.keepRatio) {
        const std::int64_t width = std::int64_t{oldWidth} * settings.charHeight / oldHeight;
        settings.charWidth = static_cast<int>(std::clamp<std::int64_t>(width, 1, mostPixels));
        return;
    }
    const int guess = 2 * settings.charHeight / 3;
    sizes.clear();
    for (const Piece& piece : pieces)
        sizes.push_back(piece.width / std::max((2 * piece.width + guess) / (2 * guess), 1));
    settings.charWidth = std::max(FourFifths(sizes), 1);
}

void CutLine(const TextLine& line, const SegmentSettings& settings, std::vector<CharBox>& boxes)
{
    std::vector<Band> bands = FindBands(line);
    MergeBands(bands, settings.charWidth);
    for (const Band& band : bands)
        CutBand(band, settings, boxes);
}

void MakeAlike(std::span<CharBox> boxes, const SegmentSettings& settings)
{
    for (CharBox& box : boxes) {
        const int width = settings.variableWidth ? std::max(settings.charWidth / 3, box.Width) : settings.charWidth;
        box.X += (box.Width - width) / 2;
        box.Width = width;
        box.Y += (box.Height - settings.charHeight) / 2;
        box.Height = settings.charHeight;
    }
}

} // namespace Tesk::chars
