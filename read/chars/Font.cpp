// Training and dropping of samples, safe scores, and the smallest subset that reads the rest.
#include "read/chars/Font.h"

#include "foundation/Entry.h"
#include "image/core/Destination.h"
#include "image/core/Refusals.h"
#include "read/chars/Filter.h"

#include <algorithm>
#include <numeric>

namespace Tesk::chars {

namespace {

/// Of all thumbnails of a file: far beyond any font, and what a small file must not ask for.
constexpr std::int64_t mostPixels = std::int64_t{1} << 26;

int MakeSample(const Image& src, Image& sample)
{
    if (const int code = CheckImage(src, Gray)) return code;
    if (src.Width > largestSample || src.Height > largestSample)
        return Status::Format(OutOfRange, L"The size of the sample (%d, %d) must not exceed %d", +src.Width,
                              +src.Height, largestSample);
    if (const int code = sample.TrySet(src.Width, src.Height, Gray)) return code;
    images::CopyRows(src, sample);
    return NoError;
}

int MakeThumbnail(FontChar& record, Packed& rows, const ThumbnailSize& size, Resampler& resampler)
{
    Image& thumbnail = record.Thumbnail;
    if (const int code = thumbnail.TrySet(size.WidthOf(record.Sample.Width), size.Height(), Gray)) return code;
    MakeThumbnail(record.Sample, thumbnail, resampler);
    rows.Take(thumbnail);
    record.SampleCount = static_cast<double>(thumbnail.Width) * thumbnail.Height;
    record.Sum = static_cast<double>(rows.All().sum);
    record.Spread = static_cast<double>(rows.All().variance);
    record.InverseNorm = rows.All().inverseNorm;
    record.SafeScore = -1;
    return NoError;
}

/// A character in the role of the image.
void PutAlone(const Image& thumbnail, Probe& probe)
{
    probe.Begin(thumbnail.Width, thumbnail.Height, 1);
    probe.Put(0, thumbnail.Row(0), thumbnail.Pitch);
}

} // namespace

int CheckFont(const Font& font)
{
    return font.IsVoid() ? Status::Format(OutOfRange, L"The font is void") : NoError;
}

int Font::CheckIndex(int index) const
{
    if (IsVoid()) return Status::Format(OutOfRange, L"No character is available");
    if (index >= 0 && index < Count()) return NoError;
    return Status::Format(OutOfRange, L"The character index (%d) must be in range [0..%d]", index, Count() - 1);
}

void Font::Changed()
{
    hasSafeScores_ = false;
    optimal_.clear();
}

Font::Item& Font::Own(std::size_t index)
{
    std::shared_ptr<Item>& item = items_[index];
    if (item.use_count() > 1) item = std::make_shared<Item>(*item);
    return *item;
}

int Font::Insert(const Image& sample, std::uint16_t code, int userClass, bool whiteOnBlack, int index,
                 const ThumbnailSize& size)
{
    return WithMemory(images::noWorkingMemory, [&] {
        auto item = std::make_shared<Item>();
        FontChar& record = item->record;
        record.Code = code;
        record.Class = userClass;
        record.WhiteOnBlack = whiteOnBlack;
        if (const int failure = MakeSample(sample, record.Sample)) return failure;
        Resampler resampler;
        if (const int failure = MakeThumbnail(record, item->rows, size, resampler)) return failure;
        const auto place =
            index >= 0 ? items_.begin() + std::min(index, Count())
                       : std::find_if(items_.begin(), items_.end(),
                                      [&](const std::shared_ptr<Item>& other) { return other->record.Code > code; });
        items_.insert(place, std::move(item));
        Changed();
        return int{NoError};
    });
}

int Font::Delete(int index)
{
    if (index == -1) {
        Clear();
        return NoError;
    }
    if (const int code = CheckIndex(index)) return code;
    items_.erase(items_.begin() + index);
    Changed();
    return NoError;
}

void Font::Clear()
{
    items_.clear();
    Changed();
}

int Font::Rebuild(const ThumbnailSize& size)
{
    std::int64_t pixels = 0;
    for (const std::shared_ptr<Item>& item : items_)
        pixels += std::int64_t{size.WidthOf(item->record.Sample.Width)} * size.Height();
    if (pixels > mostPixels) return Status::Format(CannotAllocate, images::noWorkingMemory);
    return WithMemory(images::noWorkingMemory, [&] {
        Changed();
        Resampler resampler;
        for (std::size_t i = 0; i < items_.size(); i++) {
            Item& item = Own(i);
            if (const int code = MakeThumbnail(item.record, item.rows, size, resampler)) return code;
        }
        return int{NoError};
    });
}

int Font::FindSafeScores()
{
    if (hasSafeScores_) return NoError;
    return WithMemory(images::noWorkingMemory, [&] {
        Probe probe;
        for (std::size_t i = 0; i < items_.size(); i++) {
            FontChar& record = Own(i).record;
            PutAlone(record.Thumbnail, probe);
            record.SafeScore = -1;
            for (const std::shared_ptr<Item>& other : items_)
                if (other->record.Code != record.Code)
                    record.SafeScore = std::max(record.SafeScore, Compare(other->rows, probe).score);
        }
        hasSafeScores_ = true;
    });
}

namespace {

/// The nearest of the selected characters to one that is not, as far as these were compared.
struct Nearest
{
    std::size_t seen = 0;
    BestMatch best;
};

} // namespace

int Font::Optimize(bool enable, wchar_t globalFilter, bool variableWidth)
{
    optimal_.clear();
    if (!enable) return NoError;
    if (const int code = CheckFont(*this)) return code;
    return WithMemory(images::noWorkingMemory, [&] {
        const int filter = ClassFilter(globalFilter);
        std::vector<int> order;
        for (int i = 0; i < Count(); i++)
            if (Admits(filter, (*this)[i].Code)) order.push_back(i);
        std::vector<Nearest> nearest(items_.size());
        std::size_t selected = std::min<std::size_t>(1, order.size());
        Probe probe;
        const auto isRecognised = [&](int index) {
            // What is selected stays so: each pass only meets what came since the last one.
            Nearest& known = nearest[static_cast<std::size_t>(index)];
            const FontChar& record = (*this)[index];
            if (known.seen < selected) PutAlone(record.Thumbnail, probe);
            for (; known.seen < selected; known.seen++) {
                const int font = order[known.seen];
                known.best.Try(Rows(font), (*this)[font].WhiteOnBlack != record.WhiteOnBlack, variableWidth, font, 0,
                               probe);
            }
            return known.best.fontChar >= 0 && (*this)[known.best.fontChar].Code == record.Code;
        };
        for (std::size_t before = 0; before != selected;) {
            before = selected;
            for (std::size_t i = selected; i < order.size(); i++)
                if (!isRecognised(order[i])) std::swap(order[i], order[selected++]);
        }
        order.resize(selected);
        std::sort(order.begin(), order.end(), [&](int a, int b) {
            return (*this)[a].Code != (*this)[b].Code ? (*this)[a].Code < (*this)[b].Code : a < b;
        });
        optimal_ = std::move(order);
    });
}

} // namespace Tesk::chars
