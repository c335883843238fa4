// Reading of boxed characters: each is compared, at places around its own, with the characters of the font.
#pragma once

#include "read/chars/Compare.h"
#include "read/chars/Filter.h"
#include "read/chars/Strings.h"
#include "read/chars/Thumbnail.h"

#include <span>
#include <string>
#include <vector>

namespace Tesk {
class Image;
}

namespace Tesk::chars {

class Font;

/// Font index of a position that has no match, and of one that takes its character from the filter.
inline constexpr int noFontChar = -1, verbatimFontChar = -2;

struct DecodeSettings
{
    std::vector<Filter> filters{anything};
    Filter globalFilter = anything;
    ThumbnailSize size;
    bool whiteOnBlack = false;
    int jitterX = 1, jitterY = 1;
    bool verifyVerbatim = false; ///< compares where the filter leaves no choice, too
    bool discardBadScores = false, useSafeScores = false;
    double minimumScore = 0.9, minimumContrast = 0;
    bool insertSpaces = true, insertNewlines = true;
};

struct DecodedChar
{
    int fontChar = noFontChar;
    double score = -1, contrast = -1;
};

/// Uses keep their memory for the next ones.
class Decoder
{
public:
    /// Reads the strings of a prepared `Gray` image, in whose window the boxes stand; one of no width or height is a
    /// position without a character. An inner form: an empty font, no filters, lack of memory. Safe scores are worked
    /// out where they are used.
    [[nodiscard]] int Decode(const Image& image, Font& font, const DecodeSettings& settings,
                             std::span<const CharBox> boxes, std::span<const CharString> strings);

    /// One for each box.
    const std::vector<DecodedChar>& Chars() const { return chars_; }
    const std::wstring& Text() const { return text_; }
    const std::string& NarrowText() const { return narrow_; } ///< "?" for codes beyond a byte
    double AverageScore() const { return count_ > 0 ? scores_ / count_ : -1; }
    double AverageContrast() const { return count_ > 0 ? contrasts_ / count_ : 0; }

private:
    void Read(const Image& image, const Font& font, const DecodeSettings& settings, const CharBox& box, Filter filter,
              DecodedChar& read);
    void Put(int code);
    void ChooseFontChars(const Font& font, Filter globalFilter, Filter filter);
    BestMatch Search(const Image& image, const Font& font, const DecodeSettings& settings, const CharBox& box);
    void CompareAll(const Font& font, const DecodeSettings& settings, std::size_t first, BestMatch& best);

    std::vector<DecodedChar> chars_;
    std::wstring text_;
    std::string narrow_;
    double scores_ = 0, contrasts_ = 0;
    int count_ = 0;

    Resampler resampler_;
    Probe probe_;
    std::vector<std::uint8_t> thumbnail_;
    std::vector<int> admitted_; ///< indices of the characters that the filters admit
    Filter admittedBy_ = ignored;
};

} // namespace Tesk::chars
