// The search around each box, the rules of acceptance, and the text.
#include "read/chars/Decode.h"

#include "foundation/Entry.h"
#include "image/Image.h"
#include "image/core/Refusals.h"
#include "read/chars/Font.h"

#include <algorithm>

namespace Tesk::chars {

namespace {

constexpr int largestJitter = 10;
/// Thumbnails that are compared together, unless one row of places has more: enough to share the reading of the font.
constexpr std::size_t comparedTogether = 32;
constexpr wchar_t unread = L'?';
constexpr int largestByte = 255;

/// The places of a window along one axis, as offsets from its own.
struct Range
{
    int first, last;

    Range(int at, int length, int limit, int jitter)
        : first(-std::min(jitter, at)), last(std::min(jitter, limit - length - at))
    {}
    std::size_t Count() const { return static_cast<std::size_t>(last - first + 1); }
};

struct Window
{
    int x, y, width, height;

    Window(const CharBox& box, const Image& image)
        : width(std::min({box.Width, +image.Width, largestSample})),
          height(std::min({box.Height, +image.Height, largestSample}))
    {
        x = std::clamp(box.X, 0, image.Width - width);
        y = std::clamp(box.Y, 0, image.Height - height);
    }
};

} // namespace

void Decoder::Put(int code)
{
    text_ += static_cast<wchar_t>(code);
    narrow_ += code > largestByte ? '?' : static_cast<char>(code);
}

void Decoder::ChooseFontChars(const Font& font, Filter globalFilter, Filter filter)
{
    if (admittedBy_ == filter) return;
    admittedBy_ = filter;
    admitted_.clear();
    for (int i = 0; i < font.Count(); i++)
        if (Admits(globalFilter, font[i].Code) && Admits(filter, font[i].Code)) admitted_.push_back(i);
}

void Decoder::CompareAll(const Font& font, const DecodeSettings& settings, std::size_t first, BestMatch& best)
{
    for (const int index : admitted_)
        best.Try(font.Rows(index), font[index].WhiteOnBlack != settings.whiteOnBlack, settings.size.variableWidth,
                 index, first, probe_);
}

BestMatch Decoder::Search(const Image& image, const Font& font, const DecodeSettings& settings, const CharBox& box)
{
    const Window window(box, image);
    const Range across(window.x, window.width, image.Width, std::clamp(settings.jitterX, 0, largestJitter)),
        down(window.y, window.height, image.Height, std::clamp(settings.jitterY, 0, largestJitter));
    const int width = settings.size.WidthOf(window.width), height = settings.size.Height();
    resampler_.Prepare(window.width, window.height, width, height);
    thumbnail_.resize(static_cast<std::size_t>(width) * static_cast<std::size_t>(height));
    const auto rowsTogether = static_cast<int>(std::max<std::size_t>(1, comparedTogether / across.Count()));
    BestMatch best;
    std::size_t position = 0;
    for (int dy = down.first; dy <= down.last; dy += rowsTogether) {
        const int end = std::min(dy + rowsTogether, down.last + 1);
        const std::size_t first = position;
        probe_.Begin(width, height, across.Count() * static_cast<std::size_t>(end - dy));
        for (int row = dy; row < end; row++) {
            // All places of a row share its columns.
            resampler_.Columns(image.Row(window.y + row) + window.x + across.first, image.Pitch,
                               window.width + across.last - across.first);
            for (int column = 0; column <= across.last - across.first; column++, position++) {
                resampler_.Rows(column, thumbnail_.data(), width);
                probe_.Put(position - first, thumbnail_.data(), width);
            }
        }
        CompareAll(font, settings, first, best);
    }
    return best;
}

void Decoder::Read(const Image& image, const Font& font, const DecodeSettings& settings, const CharBox& box,
                   Filter filter, DecodedChar& read)
{
    if (box.IsEmpty()) return Put(unread);
    bool verbatim = IsVerbatim(filter) && !settings.verifyVerbatim;
    if (!verbatim) {
        ChooseFontChars(font, settings.globalFilter, filter);
        const BestMatch best = Search(image, font, settings, box);
        read = {best.fontChar, best.score, best.contrast};
        verbatim = best.fontChar < 0 && IsVerbatim(filter);
        if (best.fontChar < 0 && !verbatim) return Put(unread);
    }
    if (verbatim) read = {verbatimFontChar, 1, 1};
    if (settings.discardBadScores && !verbatim) {
        const double threshold = settings.useSafeScores ? font[read.fontChar].SafeScore : settings.minimumScore;
        if (read.score < threshold || read.contrast < settings.minimumContrast) return Put(unread);
    }
    Put(verbatim ? filter : font[read.fontChar].Code);
    scores_ += read.score;
    contrasts_ += read.contrast;
    count_++;
}

int Decoder::Decode(const Image& image, Font& font, const DecodeSettings& settings, std::span<const CharBox> boxes,
                    std::span<const CharString> strings)
{
    if (const int code = CheckImage(image, Gray)) return code;
    if (const int code = CheckFont(font)) return code;
    if (settings.filters.empty()) return Status::Format(OutOfRange, L"Void filter string");
    if (settings.useSafeScores)
        if (const int code = font.FindSafeScores()) return code;
    return WithMemory(images::noWorkingMemory, [&] {
        chars_.assign(boxes.size(), DecodedChar());
        text_.clear();
        narrow_.clear();
        scores_ = contrasts_ = 0;
        count_ = 0;
        admittedBy_ = ignored;
        for (const CharString& string : strings) {
            const int end = std::min(string.Last, static_cast<int>(boxes.size()));
            for (int i = std::max(string.First, 0); i < end; i++) {
                const auto at = static_cast<std::size_t>(i);
                const Filter filter = FilterAt(settings.filters, at);
                if (filter != ignored) Read(image, font, settings, boxes[at], filter, chars_[at]);
            }
            if ((string.Separator == ' ' && settings.insertSpaces) ||
                (string.Separator == '\n' && settings.insertNewlines))
                Put(string.Separator);
        }
    });
}

} // namespace Tesk::chars
