// Runs the decoders on the edges of a line, in both directions, and holds what they share.
#include "read/linear/LinearCode.h"

#include "read/linear/LinearFrame.h"

#include <algorithm>
#include <array>
#include <climits>
#include <cstddef>
#include <cstdint>
#include <span>
#include <string_view>

namespace Tesk::linear {

void Symbol::Add(char character)
{
    if (read_.textLength == maximumTextLength) {
        tooLong_ = true;
        return;
    }
    read_.text[static_cast<std::size_t>(read_.textLength++)] = character;
}

void Symbol::Add(std::string_view text)
{
    for (const char character : text)
        Add(character);
}

void Symbol::Clear()
{
    read_.text = {};
    read_.textLength = 0;
}

void Symbol::AddElement(int width)
{
    if (elements_ == maximumElements) {
        tooLong_ = true;
        return;
    }
    modules_[static_cast<std::size_t>(elements_++)] = static_cast<std::uint8_t>(width);
}

void Symbol::AddPattern(int pattern)
{
    int unit = 1;
    while (pattern / unit >= 10)
        unit *= 10;
    for (; unit > 0; unit /= 10)
        AddElement(pattern / unit % 10);
}

void Symbol::AddTwoWidth(unsigned mask, int count, int wide)
{
    for (int bit = count - 1; bit >= 0; --bit)
        AddElement(mask >> bit & 1 ? wide : 1);
}

void Symbol::SetFNC1(int position)
{
    read_.fnc1Position = position;
    Flag(FNC1Read);
}

bool Line::IsQuiet(int first, int last, std::int64_t zone, std::int64_t divisor) const
{
    if (!settings.checkQuietZone) return true;
    if (first > 0 && Width(first - 1) * divisor < zone) return false;
    return last + 1 >= Edges() || Width(last) * divisor >= zone;
}

int Line::Report(Symbol& symbol, int first, bool mirrored) const
{
    SymbolRead& read = symbol.read_;
    if (symbol.tooLong_ || read.textLength == 0) return -1;
    const int last = first + symbol.elements_;
    const auto placeOf = [&](int edge) {
        const int position = list_.positions[static_cast<std::size_t>(edge)];
        return list_.forward ? position : -position;
    };
    read.start = placeOf(mirrored ? last : first);
    read.end = placeOf(mirrored ? first : last);
    if (list_.forward != mirrored) symbol.Flag(ForwardRead);
    read.firstEdge = list_.forward ? first : Edges() - 1 - last;
    read.elementCount = symbol.elements_;
    read.modules = std::span(symbol.modules_).first(static_cast<std::size_t>(symbol.elements_));
    sink_.Take(read);
    return last;
}

void ElementSpread::Add(const Line& line, int first, unsigned wide, int count)
{
    for (int i = 0; i < count; ++i) {
        Extremes& extremes = extremes_[static_cast<std::size_t>((first + i) % 2)][wide >> (count - 1 - i) & 1];
        const std::int64_t width = line.Width(first + i);
        extremes.least = std::min(extremes.least, width);
        extremes.most = std::max(extremes.most, width);
    }
}

bool ElementSpread::IsUniform() const
{
    return std::ranges::all_of(extremes_, [](const auto& kinds) {
        const Extremes &narrow = kinds[0], &wide = kinds[1];
        if (narrow.most > 0 && 2 * narrow.most > 5 * narrow.least) return false;
        if (wide.most > 0 && wide.most > 2 * wide.least) return false;
        return wide.most == 0 || 5 * wide.least >= 6 * narrow.most;
    });
}

int CheckDigit(std::string_view digits)
{
    int sum = 0;
    for (std::size_t i = 0; i < digits.size(); ++i)
        sum += (digits[digits.size() - 1 - i] - '0') * (i % 2 == 0 ? 3 : 1);
    return (10 - sum % 10) % 10;
}

bool LuhnHolds(std::string_view text)
{
    int sum = 0, digits = 0;
    for (std::size_t i = text.size(); i-- > 0;) {
        if (text[i] < '0' || text[i] > '9') continue;
        const int value = (text[i] - '0') << (digits % 2);
        sum += value > 9 ? value - 9 : value;
        ++digits;
    }
    return digits > 0 && sum % 10 == 0;
}

namespace {

/// The list as it is met from the other end.
EdgeList MirroredList(const EdgeList& list, std::span<int> scratch)
{
    const std::size_t count = list.positions.size();
    for (std::size_t i = 0; i < count; ++i)
        scratch[i] = -std::max(list.positions[count - 1 - i], -INT_MAX);
    return {scratch.first(count), list.length, list.rising != (count % 2 != 0), !list.forward};
}

/// The decoders that are called with both lists, in their order, and what enables them.
struct Decoder
{
    bool (*isEnabled)(const LinearSettings&);
    bool (*decode)(const Line&);
};
using S = LinearSettings;
constexpr Decoder decoders[] = {
    {[](const S& s) { return s.detectEAN128; }, DecodeCode128},
    {[](const S& s) { return s.detect2of5 || s.detectITF14; }, DecodeInterleaved2of5},
    {[](const S& s) { return s.detectMatrix2of5; }, DecodeMatrix2of5},
    {[](const S& s) { return s.detectMSI; }, DecodeMSI},
    {[](const S& s) { return s.detect11; }, DecodeCode11},
    {[](const S& s) { return s.detectPharmacode; }, DecodePharmacode},
    {[](const S& s) { return s.detectDatabar; }, DecodeDatabar},
    {[](const S& s) { return s.detectDatabarRows; }, DecodeDatabarRow},
    {[](const S& s) { return s.detectDatabarLimited; }, DecodeDatabarLimited},
    {[](const S& s) { return s.detect39 || s.detect39Extended; }, DecodeCode39},
    {[](const S& s) { return s.detect93; }, DecodeCode93},
    {[](const S& s) { return s.detectCodabar; }, DecodeCodabar},
};

} // namespace

bool DecodeLine(const EdgeList& forward, std::span<int> scratch, const LinearSettings& settings, ReadSink& sink)
{
    const Line line(forward, settings, sink);
    bool found = false;
    if (settings.detectEAN13 || settings.detectUPCA) found = DecodeEAN13(line) || found;
    if (settings.detectEAN8) found = DecodeEAN8(line) || found;
    if (scratch.size() < forward.positions.size()) return found;
    const EdgeList mirroredList = MirroredList(forward, scratch);
    const Line mirrored(mirroredList, settings, sink);
    if (settings.detectUPCE) {
        const bool read = DecodeUPCE(line);
        found = DecodeUPCE(mirrored) || read || found;
    }
    for (const Decoder& decoder : decoders)
        if (decoder.isEnabled(settings)) found = decoder.decode(line) || decoder.decode(mirrored) || found;
    return found;
}

} // namespace Tesk::linear
