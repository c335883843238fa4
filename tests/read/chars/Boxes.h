// Pictures of dark blocks, and the boxes that a reader makes of them.
#pragma once

#include "foundation/Graph.h"
#include "image/Image.h"
#include "read/CharReader.h"

#include <algorithm>
#include <ostream>
#include <vector>

namespace Tesk::checks {

struct Box
{
    int x, y, width, height;

    bool operator==(const Box&) const = default;
    friend std::ostream& operator<<(std::ostream& out, const Box& box)
    {
        return out << box.x << ' ' << box.y << ' ' << box.width << ' ' << box.height;
    }
};

inline void Flood(Image& image, const Box& box, int value)
{
    for (int y = box.y; y < box.y + box.height; y++)
        std::fill_n(image.Row(y) + box.x, box.width, static_cast<std::uint8_t>(value));
}

inline void Blocks(Image& image, int width, int height, const std::vector<Box>& blocks)
{
    image.Set(width, height, Gray);
    Flood(image, {0, 0, width, height}, 255);
    for (const Box& block : blocks)
        Flood(image, block, 0);
}

inline std::vector<Box> BoxesOf(const CharReader& reader)
{
    std::vector<Box> boxes;
    for (int i = 0; i < reader.NumBlobs; i++)
        boxes.push_back({reader.IntFeature(i, BlobBoxX), reader.IntFeature(i, BlobBoxY),
                         reader.IntFeature(i, BlobBoxWidth), reader.IntFeature(i, BlobBoxHeight)});
    return boxes;
}

/// For characters of 32 by 40 pixels.
inline void FixSize(CharReader& reader)
{
    reader.GuessSize = false;
    reader.CharWidth = 32;
    reader.CharHeight = 40;
}

/// Black text on white, with its top left corner at 20, 20.
inline void DrawText(Image& image, int width, int height, const char* text, int fontSize = 36)
{
    Blocks(image, width, height, {});
    const GraphSettings settings(1.0);
    Graph::FontSize = fontSize;
    Graph::TextAlignX = -1;
    Graph::TextAlignY = -1;
    Graph::TextColor = Black;
    Graph::BeginImageTarget(image);
    Graph::Text(20, 20, text);
    Graph::EndImageTarget(image);
}

} // namespace Tesk::checks
