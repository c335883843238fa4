// Erosion and dilation on rows of bits, whole words at a time.
#include "measure/region/BitRows.h"

#include "measure/region/RunLists.h"
#include "measure/region/ScanKernels.h"

#include <algorithm>
#include <cstdint>
#include <vector>

namespace Tesk::regions {

namespace {

using Word = std::uint64_t;
constexpr int wordBits = 64;

/// Columns from `left` up to `right`, rows from `top` up to `bottom`.
struct Frame
{
    int left, top, right, bottom;

    std::size_t Words() const { return static_cast<std::size_t>(right - left) / wordBits + 1; }
    std::size_t Rows() const { return static_cast<std::size_t>(bottom - top); }
};

/// Runs in scan order that are not empty.
Frame FrameOf(RunSpan src)
{
    Frame frame{INT16_MAX, src.front().Y, INT16_MIN, src.back().Y + 1};
    for (const LabeledRun& run : src) {
        frame.left = Min<int>(frame.left, run.Start);
        frame.right = Max<int>(frame.right, run.End);
    }
    return frame;
}

/// The rows by which an element reaches up or down.
int Reach(const Element& element)
{
    return Max(Max(element.diagonal, element.box), 0);
}

/// Bits of a frame, the leftmost column in the lowest bit of the first word.
class BitRows
{
public:
    explicit BitRows(const Frame& frame) : frame_(frame), pitch_(frame.Words()), words_(pitch_ * frame.Rows()) {}

    /// Sets the pixels of runs that lie apart, in place of none.
    void Set(RunSpan runs)
    {
        for (const LabeledRun& run : runs) {
            Word* row = Row(static_cast<std::size_t>(run.Y - frame_.top));
            const auto from = static_cast<unsigned>(run.Start - frame_.left),
                       to = static_cast<unsigned>(run.End - frame_.left);
            row[from / wordBits] ^= Word{1} << from % wordBits;
            row[to / wordBits] ^= Word{1} << to % wordBits;
        }
        // Each bit becomes the parity of those up to it: set from the start of a run up to its end.
        for (std::size_t y = 0; y < frame_.Rows(); y++) {
            Word* row = Row(y);
            for (int shift = 1; shift < wordBits; shift *= 2)
                for (std::size_t i = 0; i < pitch_; i++)
                    row[i] ^= row[i] << shift;
            Word open = 0;
            for (std::size_t i = 0; i < pitch_; i++) {
                row[i] ^= open;
                open = Word{0} - (row[i] >> (wordBits - 1));
            }
        }
    }

    /// Makes each bit the combination of those up to `reach` columns to either side. Bits beyond the frame are 0.
    template <typename Combine>
    void Across(int reach, Combine combine)
    {
        const int whole = 2 * reach + 1;
        for (std::size_t y = 0; y < frame_.Rows() && reach > 0; y++) {
            Word* row = Row(y);
            // First of a window that begins at the bit, twice as long each time.
            for (int length = 1; length < whole;) {
                const int shift = Min(length, whole - length);
                for (std::size_t i = 0; i + 1 < pitch_; i++)
                    row[i] = combine(row[i], row[i] >> shift | row[i + 1] << (wordBits - shift));
                row[pitch_ - 1] = combine(row[pitch_ - 1], row[pitch_ - 1] >> shift);
                length += shift;
            }
            for (std::size_t i = pitch_; --i > 0;)
                row[i] = row[i] << reach | row[i - 1] >> (wordBits - reach);
            row[0] <<= reach;
        }
    }

    /// Combines each row with those of `other` that lie `rows` above and below it; beyond the frame all bits are 0.
    template <typename Combine>
    void Combined(const BitRows& other, int rows, Combine combine)
    {
        const auto step = static_cast<std::size_t>(rows) * pitch_, all = words_.size();
        const std::size_t moved = Min(step, all);
        for (std::size_t i = 0; i < all - moved; i++)
            words_[i] = combine(words_[i], other.words_[i + step]);
        for (std::size_t i = all - moved; i < all; i++)
            words_[i] = combine(words_[i], Word{0});
        for (std::size_t i = moved; i < all; i++)
            words_[i] = combine(words_[i], other.words_[i - step]);
        for (std::size_t i = 0; i < moved; i++)
            words_[i] = combine(words_[i], Word{0});
    }

    RunList Runs(std::size_t expected) const
    {
        RunList runs;
        runs.reserve(expected);
        std::vector<std::int32_t> edges(pitch_ * wordBits + 1 + kernels::edgeSlack);
        for (std::size_t y = 0; y < frame_.Rows(); y++) {
            const std::size_t count = kernels::WordEdges(words_.data() + y * pitch_, pitch_ * wordBits, edges.data());
            const std::size_t first = runs.size();
            if (runs.capacity() < first + count / 2) runs.reserve(2 * (first + count));
            runs.resize(first + count / 2);
            for (std::size_t i = 0; i < count / 2; i++)
                runs[first + i] = MakeRun(edges[2 * i] + frame_.left, edges[2 * i + 1] + frame_.left,
                                          static_cast<int>(y) + frame_.top);
        }
        return runs;
    }

private:
    Word* Row(std::size_t y) { return words_.data() + y * pitch_; }

    Frame frame_;
    std::size_t pitch_;
    std::vector<Word> words_;
};

/// Moves an element over runs: rows of full width first, then those that the diagonal narrows.
template <typename Combine>
RunList Moved(RunSpan src, const Frame& frame, const Element& element, Combine combine)
{
    BitRows wide(frame);
    wide.Set(src);
    const BitRows bits(element.diagonal > 0 ? wide : BitRows({}));
    wide.Across(element.halfWidth, combine);
    BitRows result(wide);
    for (int k = 1; k <= element.box; k++)
        result.Combined(wide, k, combine);
    for (int k = 1; k <= element.diagonal; k++) {
        wide = bits;
        wide.Across(element.halfWidth - k, combine);
        result.Combined(wide, k, combine);
    }
    return result.Runs(src.size());
}

} // namespace

bool SuitsBits(RunSpan src, const Element& element)
{
    const int reach = Reach(element);
    if (src.empty() || reach < 1 || reach >= wordBits || element.diagonal < 0 || element.halfWidth < element.diagonal ||
        element.halfWidth >= wordBits / 2)
        return false;
    constexpr std::size_t wordsForARun = 8;
    const Frame frame = FrameOf(src);
    if (frame.left >= frame.right || frame.Words() * frame.Rows() > wordsForARun * src.size()) return false;
    if (frame.left - element.halfWidth < INT16_MIN || frame.right + element.halfWidth > INT16_MAX ||
        frame.top - reach < INT16_MIN || frame.bottom + reach > INT16_MAX)
        return false;
    bool apart = src[0].Start < src[0].End;
    for (std::size_t i = 1; i < src.size(); i++)
        apart &= (src[i].Start < src[i].End) & ((src[i].Y != src[i - 1].Y) | (src[i].Start > src[i - 1].End));
    return apart;
}

RunList ErodedBits(RunSpan src, const Element& element)
{
    return Moved(src, FrameOf(src), element, [](Word a, Word b) { return a & b; });
}

RunList DilatedBits(RunSpan src, const Element& element)
{
    const int reach = Reach(element);
    Frame frame = FrameOf(src);
    frame.left -= 2 * element.halfWidth; // the windows of the leftmost bits begin there
    frame.right += element.halfWidth;
    frame.top -= reach;
    frame.bottom += reach;
    return Moved(src, frame, element, [](Word a, Word b) { return a | b; });
}

} // namespace Tesk::regions
