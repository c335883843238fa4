// What a reader of characters holds beside its settings.
#pragma once

#include "foundation/Records.h"
#include "image/Image.h"
#include "read/CharReader.h"
#include "read/chars/Decode.h"
#include "read/chars/Font.h"
#include "read/chars/Placement.h"
#include "read/chars/Strings.h"

#include <vector>

namespace Tesk::chars {

struct ReaderState
{
    Font font;
    Decoder decoder;

    std::vector<CharBox> found;      ///< in reading order, as the blobs of the table
    std::vector<int> trueWidths;     ///< of those, before they became alike
    std::vector<int> map;            ///< for each position the index of what was found there, or -1
    std::vector<CharString> strings; ///< of positions
    std::vector<DecodedChar> read;   ///< for each position
    std::wstring shown;              ///< for each position what was read, or a blank
    Limits window;                   ///< of the image
    int quadrant = 0;                ///< of the last segmentation

    std::vector<CharBox> layout, preset;
    Placement placement; ///< of the layout, last

    int Positions() const { return static_cast<int>(map.size()); }
    /// An empty box for a character that is missing.
    CharBox BoxAt(int position) const
    {
        const int index = map[static_cast<std::size_t>(position)];
        return index < 0 ? CharBox() : found[static_cast<std::size_t>(index)];
    }
    std::vector<CharBox> Boxes() const;

    static ThumbnailSize SizeOf(const CharReader& reader);
};

} // namespace Tesk::chars
