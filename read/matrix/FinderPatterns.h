// Finder and alignment patterns of QR: squares in squares, found on the transitions of rows.
#pragma once

#include "foundation/Records.h"
#include "read/matrix/BinaryImage.h"

#include <array>
#include <cmath>
#include <cstddef>
#include <limits>
#include <vector>

namespace Tesk::matrix {

/// A finder pattern, or an alignment pattern.
struct FinderRecord
{
    XY center{0, 0};
    double size = 0;     ///< width in pixels, of the line on which the pattern is smallest
    bool isFree = false; ///< not of a symbol read
    bool hasRing = false;
    std::array<XY, 8> ring{}; ///< where lines to the right, and on clockwise by 45 degrees, leave the pattern
};

/// Part of an image, the ends not included.
struct SearchArea
{
    int x, y, endX, endY;
};

class FinderPatterns
{
public:
    static constexpr std::size_t mostFinders = 192;

    /// Finds the finder patterns of an image, at most `mostFinders`.
    void Search(const BinaryImage& image) { ListPatterns(image, Finder, {0, 0, image.Width(), image.Height()}); }
    /// Finds the alignment pattern whose middle is nearest to a place, within an area, among those for which
    /// `fits(record)` holds.
    template <typename Fits>
    bool FindAlignment(const BinaryImage& image, const SearchArea& area, XY near, Fits fits, FinderRecord& found)
    {
        ListPatterns(image, Alignment, area);
        double least = std::numeric_limits<double>::max();
        for (const FinderRecord& record : list_) {
            const double distance = std::hypot(record.center.X - near.X, record.center.Y - near.Y);
            if (distance >= least || !fits(record)) continue;
            least = distance;
            found = record;
        }
        return least < std::numeric_limits<double>::max();
    }

    std::vector<FinderRecord>& List() { return list_; }

private:
    enum Form
    {
        Finder,   ///< 1 1 3 1 1, dark first
        Alignment ///< 1 1 1, light first, between dark ones
    };
    /// A candidate while it is tested.
    struct Candidate
    {
        Site center;
        double size;
        std::array<Site, 8> inner, outer; ///< dark pixels beside the transitions next to the centre, and of the ring
    };

    /// Lists the patterns of an area of the image.
    void ListPatterns(const BinaryImage& image, Form form, const SearchArea& area);
    void FindTransitions(const BinaryImage& image, int y, int x, int endX);
    bool TestRow(Form form, std::size_t first, int y, Candidate& candidate) const;
    static bool TestLine(const BinaryImage& image, Form form, std::size_t line, Candidate& candidate);
    static bool Verify(const BinaryImage& image, Form form, const Candidate& candidate, FinderRecord& record);
    bool IsKnown(Site center) const;
    template <typename Found>
    void SearchRow(const BinaryImage& image, Form form, int y, const SearchArea& area, Found found);

    std::vector<int> transitions_;
    std::vector<FinderRecord> list_;
};

} // namespace Tesk::matrix
