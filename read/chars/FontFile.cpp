// The samples of a font in ".fnt" files.
#include "foundation/Archive.h"
#include "image/core/StoredRows.h"
#include "read/chars/Font.h"

namespace Tesk::chars {

namespace {

/// Width, height, type, code, class, polarity, and a row of one pixel.
constexpr std::int64_t leastCharBytes = 3 * 4 + 2 + 4 + 1 + 4;

void TransferChar(Archive& block, FontChar& record)
{
    const bool hasRows = images::TransferSize(block, record.Sample);
    if (block.Good() && (!hasRows || record.Sample.Width > largestSample || record.Sample.Height > largestSample))
        return block.Refuse(CannotRead);
    block(record.Code, record.Class, record.WhiteOnBlack);
    images::TransferRows(block, record.Sample);
}

} // namespace

void Font::Transfer(Archive& block, bool optimalOnly)
{
    if (!block.Reading()) {
        int count = optimalOnly ? static_cast<int>(optimal_.size()) : Count();
        block.Count(count, leastCharBytes);
        for (int i = 0; i < count && block.Good(); i++)
            TransferChar(block, items_[static_cast<std::size_t>(optimalOnly ? optimal_[i] : i)]->record);
        return;
    }
    int count = 0;
    block.Count(count, leastCharBytes);
    if (!block.Good()) return;
    Clear();
    for (int i = 0; i < count && block.Good(); i++) {
        items_.push_back(std::make_shared<Item>());
        TransferChar(block, items_.back()->record);
    }
}

} // namespace Tesk::chars
