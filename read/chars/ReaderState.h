// What a reader of characters holds beside its settings.
#pragma once

#include "foundation/Graph.h"
#include "image/core/Refusals.h"
#include "read/CharReader.h"
#include "read/chars/Decode.h"
#include "read/chars/Font.h"
#include "read/chars/Placement.h"
#include "read/chars/Segmentation.h"
#include "read/chars/Strings.h"

#include <cstddef>
#include <string>
#include <vector>

namespace Tesk::chars {

inline constexpr images::Types accepted = {Gray, Gray16, Rgb, Rgba}; ///< of images

struct ReaderState
{
    Font font;
    Decoder decoder;

    std::vector<CharBox> found;      ///< in reading order, as the blobs of the table
    std::vector<int> trueWidths;     ///< of those, before they became alike
    std::vector<int> map;            ///< for each position the index of what was found there, or -1
    std::vector<CharString> strings; ///< of positions
    std::vector<DecodedChar> read;   ///< for each position
    std::wstring shown;              ///< for each position the character read, "?" for none; empty before a decoding
    SourceRectangle window;          ///< of the image
    int quadrant = 0;                ///< of the image in which the boxes stand

    std::vector<CharBox> layout, preset;
    Placement placement; ///< of the layout, last

    /// Makes boxes the characters at hand, each at its own position.
    void TakeFound(std::vector<CharBox> boxes);
    /// An empty box for a character that is missing.
    CharBox BoxAt(int position) const;
    std::vector<CharBox> Boxes() const;
    /// A box of the turned window in the whole picture.
    SourceRectangle InPicture(const CharBox& box) const;
    XY InPicture(XY point) const;
};

/// That of thumbnails, by the settings.
ThumbnailSize ThumbnailSizeOf(const CharReader& reader);
/// The filters that are in force.
std::vector<Filter> FiltersOf(const CharReader& reader);
SegmentSettings SegmentSettingsOf(const CharReader& reader);

} // namespace Tesk::chars
