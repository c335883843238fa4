// Three finder patterns as those of one QR symbol: their order, their modules, and how many there are between them.
#pragma once

#include "foundation/Records.h"
#include "read/matrix/BinaryImage.h"
#include "read/matrix/FinderPatterns.h"

#include <array>

namespace Tesk::matrix {

/// Whether two patterns can be of one symbol: alike, in the distance of a symbol that exists, and with modules between.
bool ArePaired(const BinaryImage& image, const FinderRecord& a, const FinderRecord& b);

/// One pattern in its symbol: the vectors of a module along the first row and down the first column.
struct FinderFrame
{
    XY center{0, 0};
    XY along{1, 0}, down{0, 1};
};

class FinderTriple
{
public:
    /// Puts the patterns in order: that of the corner, then clockwise. False where they make no corner of a square.
    bool Order(const FinderRecord& a, const FinderRecord& b, const FinderRecord& c);
    /// Exchanges the second and the third: the symbol seen from behind.
    void Mirror();

    /// 0 that of the corner, 1 that at the end of the first row, 2 that at the end of the first column.
    const FinderFrame& operator[](std::size_t i) const { return frames_[i]; }
    /// The side in cells that the sizes of the patterns tell.
    double EstimatedSide() const { return estimate_; }
    /// The place in the pattern of the corner, of the first row's or the first column's end where both timing lines
    /// meet it: the cell of its ring that is nearest to the others.
    XY InnerCell(std::size_t i) const;

    /// The middle of a cell of a symbol of so many cells a side, by the pattern nearest to it.
    XY PlaceBeside(int side, int column, int row) const;
    /// The cells a side that the timing line of the first row tells, or that of the first column; 0 if it does not tell
    /// any side near the estimate.
    int SideByTiming(const BinaryImage& image, std::size_t toward) const;

private:
    void SetFrame(FinderFrame& frame, const FinderRecord& record) const;

    std::array<FinderFrame, 3> frames_;
    XY along_{1, 0}, down_{0, 1}; ///< of length 1
    double estimate_ = 0;
};

} // namespace Tesk::matrix
