// The trained samples of characters, in the order of their codes, and what is worked out among them.
#pragma once

#include "read/FontChar.h"
#include "read/chars/Compare.h"
#include "read/chars/Thumbnail.h"

#include <cstdint>
#include <memory>
#include <vector>

namespace Tesk {
class Archive;
}

namespace Tesk::chars {

/// Copies share the characters; each changes what is its own. All that may fail are inner forms: an `ErrorCodes` value,
/// with its message stored.
class Font
{
public:
    int Count() const { return static_cast<int>(items_.size()); }
    bool IsVoid() const { return items_.empty(); }
    const FontChar& operator[](int index) const { return At(index).record; }
    /// The thumbnail as comparison takes it.
    const Packed& Rows(int index) const { return At(index).rows; }

    /// "The character index (%d) must be in range [0..%d]", or "No character is available".
    [[nodiscard]] int CheckIndex(int index) const;

    /// Trains a window of a `Gray` image: at `index`, limited to the count, or where that is negative before the first
    /// character of a greater code.
    [[nodiscard]] int Insert(const Image& sample, std::uint16_t code, int userClass, bool whiteOnBlack, int index,
                             const ThumbnailSize& size);
    /// All of them for -1.
    [[nodiscard]] int Delete(int index);
    void Clear();
    /// Makes thumbnails and statistics again. Refused: more of them than a font may hold (`CannotAllocate`).
    [[nodiscard]] int Rebuild(const ThumbnailSize& size);

    /// Whether no change came after `FindSafeScores`.
    bool HasSafeScores() const { return hasSafeScores_; }
    /// For each character its best score among those of other codes, unless they are known.
    [[nodiscard]] int FindSafeScores();

    /// Drops the subset, and where `enable` is set chooses one, of the characters of the class `globalFilter`, by which
    /// each other one is recognised correctly. "The font is void" (`OutOfRange`) for an empty font.
    [[nodiscard]] int Optimize(bool enable, wchar_t globalFilter, bool variableWidth);
    /// Indices of the subset, by code; any change of the font drops it.
    const std::vector<int>& Optimal() const { return optimal_; }

    /// The samples, with codes, classes and polarities; of the writer with `optimalOnly` those of the subset. What is
    /// read has no thumbnails before `Rebuild`.
    void Transfer(Archive& block, bool optimalOnly = false);

private:
    struct Item
    {
        FontChar record;
        Packed rows;
    };

    const Item& At(int index) const { return *items_[static_cast<std::size_t>(index)]; }
    Item& Own(std::size_t index);
    void Changed();

    std::vector<std::shared_ptr<Item>> items_;
    std::vector<int> optimal_;
    bool hasSafeScores_ = false;
};

/// Refuses to read by an empty font: "The font is void" (`OutOfRange`).
[[nodiscard]] int CheckFont(const Font& font);

} // namespace Tesk::chars
