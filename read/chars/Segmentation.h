// From a prepared image to the boxes of its characters.
#pragma once

#include "image/Image.h"
#include "read/chars/Strings.h"

#include <span>
#include <vector>

namespace Tesk {
class Blobs;
}

namespace Tesk::chars {

/// What blobs and sizes are held to: the reach of the coordinates of runs.
inline constexpr int mostPixels = 32767;

/// The settings of a segmentation, held to ranges in which all arithmetic stays exact.
struct SegmentSettings
{
    bool localThreshold = false, whiteOnBlack = false;
    int threshold = Auto;
    int charWidth = 32, charHeight = 40;
    bool guessSize = true, keepRatio = false, repairBroken = true, variableWidth = false;
    int dotted = 0, inking = 0, masking = 0;
    int maxTouching = 5, splitRows = 0;
    double gapFraction = 0.1, dotFraction = 0.25;

    /// Pixels between characters.
    int Gap() const { return static_cast<int>(charWidth * gapFraction); }
    /// The widest band that characters may make by touching.
    int WidestBand() const
    {
        return ((maxTouching < 0 ? -maxTouching : maxTouching) - 1) * (charWidth + Gap()) + 2 * charWidth;
    }
    /// Whether something is too small to be a part of a character.
    bool IsDot(int width, int height) const
    {
        return width < static_cast<int>(charWidth * dotFraction) && height < static_cast<int>(charHeight * dotFraction);
    }
};

/// An image made ready: characters are on one side of the threshold.
struct Prepared
{
    Image image;
    int threshold = 0;
};

/// Closes dots, corrects the strokes, cleans the background, levels the light and cuts rows apart. `turned` is `Gray`.
/// An inner form.
[[nodiscard]] int Prepare(const Image& turned, const SegmentSettings& settings, Prepared& prepared);

/// Overwrites `rows - 1` rows by the background, in the deepest gaps between lines of text. Nothing where there are
/// fewer edges than so many lines have.
void CutRows(Image& image, int rows, int charWidth, bool whiteOnBlack);

/// A part of a character or of several: a blob that is dark or light enough.
struct Piece
{
    int x = 0, y = 0, width = 0, height = 0;
    int blob = 0;
    double contrast = 0; ///< the distance of its mean from the threshold, times its area

    int Right() const { return x + width; }
    int Bottom() const { return y + height; }
};

/// The size of a character by those of the pieces: the ones four fifths up in the orders of height and width, where a
/// wide piece counts for as many characters as it likely holds.
void GuessSize(std::span<const Piece> pieces, SegmentSettings& settings);

/// Pieces side by side, with their common box.
struct TextLine
{
    CharBox box;
    std::vector<Piece> pieces;
};

/// Unites pieces that stand side by side or make one character; the lines come in reading order.
std::vector<TextLine> FindLines(std::span<const Piece> pieces, const SegmentSettings& settings);

/// Appends the boxes of the characters of a line, as wide and high as they are.
void CutLine(const TextLine& line, const SegmentSettings& settings, std::vector<CharBox>& boxes);

/// The same for lines of exactly -`maxTouching` characters, along the smallest rectangle around the pieces. With
/// `guessSize` the size of a character becomes that of the line. May throw `std::bad_alloc`.
void CutLineByCount(const TextLine& line, const Blobs& blobs, const Image& image, SegmentSettings& settings,
                    std::vector<CharBox>& boxes);

/// Gives boxes the common size about their centres, or with `variableWidth` the common height.
void MakeAlike(std::span<CharBox> boxes, const SegmentSettings& settings);

} // namespace Tesk::chars
