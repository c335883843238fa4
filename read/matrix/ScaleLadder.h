// The images of a scale ladder: the source, enlarged twice and reduced by two thirds again and again.
#pragma once

#include "image/Image.h"

#include <array>

namespace Tesk::matrix {

constexpr int lowestLevel = -2, highestLevel = 8, leastSide = 36;

/// Twice as wide and high: in each direction (3a + b) >> 2 and (a + 3b) >> 2 between neighbours, the border copied. As
/// the others throws `std::bad_alloc`; `dst` shares no pixel with `src`.
void Double(const Image& src, Image& dst);
/// Each 3 x 3 block becomes 2 x 2: a corner four times, the two pixels beside it twice and the middle once, over 9.
void ShrinkByThird(const Image& src, Image& dst);

/// Climbs down from an enlarged image to small ones; keeps its two buffers from one ladder to the next.
class ScaleLadder
{
public:
    /// Begins with the rung of that level, at most 0. The source must stay where it is.
    void Start(const Image& source, int level);
    /// Goes on to the next rung.
    void Descend();

    int Level() const { return level_; }
    double Scale() const { return scale_; } ///< a length on the source over that on the rung
    const Image& Current() const { return level_ == 0 ? *source_ : buffers_[static_cast<std::size_t>(current_)]; }
    /// Whether the rung is large enough to hold a symbol.
    bool Stands() const { return Current().Width >= leastSide && Current().Height >= leastSide; }

private:
    void Enlarge(int level);

    const Image* source_ = nullptr;
    int level_ = 0, current_ = 0;
    double scale_ = 1;
    std::array<Image, 2> buffers_;
};

} // namespace Tesk::matrix
