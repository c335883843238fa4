// Turns the bits of a QR symbol into text: ISO/IEC 18004, data encodation.
#include "read/codewords/QRText.h"

#include "read/codewords/ReedSolomon.h"

#include <algorithm>
#include <array>
#include <cstddef>

namespace Tesk::codewords {

namespace {

constexpr int textFailed = 104;
constexpr char alphanumeric[] = "0123456789ABCDEFGHIJKLMNOPQRSTUVWXYZ $%*+-./:";

/// Bits of a character count: numeric, alphanumeric, bytes, Kanji, for small, middle and large versions.
constexpr int countBits[3][4] = {{10, 9, 8, 8}, {12, 11, 16, 10}, {14, 13, 16, 12}};
enum CountedMode : int
{
    Numeric,
    Alphanumeric,
    Bytes,
    Kanji
};

class Decoder
{
public:
    Decoder(std::span<const std::uint16_t> data, int version, SymbolText& text)
        : data_(data), countBits_(countBits[version < 10   ? 0
                                            : version < 27 ? 1
                                                           : 2]),
          text_(text)
    {}

    bool Run()
    {
        while (true) {
            const int mode = Take(4);
            if (mode <= 0) return true; // the terminator, or no room for one
            if (!Segment(mode)) return text_.Fail(textFailed);
        }
    }

private:
    /// The next bits, the first one on top; -1 if they run out.
    int Take(int count)
    {
        if (count > static_cast<int>(data_.size()) * 8 - at_) return -1;
        int value = 0;
        for (; count > 0; --count, ++at_)
            value = value << 1 | (data_[static_cast<std::size_t>(at_ / 8)] >> (7 - at_ % 8) & 1);
        return value;
    }
    int TakeCount(CountedMode mode) { return Take(countBits_[mode]); }

    bool Segment(int mode)
    {
        switch (mode) {
        case 1:
            return PutDigits();
        case 2:
            return PutAlphanumeric();
        case 3:
            return StructuredAppend();
        case 4:
            return PutBytes();
        case 5:
            MarkFNC1(1, 2);
            return true;
        case 7:
            return ECI();
        case 8:
            return PutKanji();
        case 9:
            return ApplicationIndicator();
        default:
            return false;
        }
    }

    void MarkFNC1(int position, int modifier)
    {
        if (!separators_) text_.modifier += modifier;
        text_.readFNC1 = position;
        separators_ = true;
    }

    bool PutDigits()
    {
        constexpr int bits[] = {0, 4, 7, 10}, limits[] = {0, 10, 100, 1000};
        int count = TakeCount(Numeric);
        while (count > 0) {
            const int digits = std::min(count, 3);
            const int value = Take(bits[digits]);
            if (value < 0 || value >= limits[digits]) return false;
            text_.PutNumber(value, digits);
            count -= digits;
        }
        return count == 0;
    }

    bool PutAlphanumeric()
    {
        int count = TakeCount(Alphanumeric);
        bool percent = false; // one that may be the first of two
        const auto put = [&](int value) {
            const char character = alphanumeric[value];
            if (!separators_ || (character != '%' && !percent)) {
                text_.Put(character);
            } else if (character != '%') {
                text_.Put(groupSeparator);
                text_.Put(character);
                percent = false;
            } else {
                if (percent) text_.Put('%');
                percent = !percent;
            }
        };
        for (; count > 1; count -= 2) {
            const int value = Take(11);
            if (value < 0 || value >= 45 * 45) return false;
            put(value / 45);
            put(value % 45);
        }
        if (count == 1) {
            const int value = Take(6);
            if (value < 0 || value >= 45) return false;
            put(value);
        }
        if (percent) text_.Put(groupSeparator);
        return count >= 0;
    }

    bool StructuredAppend()
    {
        const int sequence = Take(8), parity = Take(8);
        if (parity < 0) return false;
        text_.symbolPosition = (sequence >> 4) + 1;
        text_.symbolTotal = (sequence & 15) + 1;
        text_.parityData = parity;
        return true;
    }

    bool PutBytes()
    {
        int count = TakeCount(Bytes);
        for (; count > 0; --count) {
            const int byte = Take(8);
            if (byte < 0) return false;
            text_.Put(byte);
        }
        return count == 0;
    }

    /// One byte for assignments below 128, two below 16384, else three.
    bool ECI()
    {
        int value = Take(8);
        if (value < 0) return false;
        const int more = value < 0x80 ? 0 : (value & 0xE0) == 0xC0 ? 2 : 1;
        if (more > 0) {
            const int rest = Take(8 * more);
            if (rest < 0) return false;
            value = (value & (more == 2 ? 31 : 63)) << (8 * more) | rest;
        }
        if (value > 999999) return false;
        if (!extended_) ++text_.modifier;
        extended_ = true;
        text_.PutECI(value);
        return true;
    }

    bool PutKanji()
    {
        constexpr int shiftJIS = 20;
        text_.PutECI(shiftJIS);
        int count = TakeCount(Kanji);
        for (; count > 0; --count) {
            const int value = Take(13);
            if (value < 0) return false;
            // Rows of 192 go to rows of 256; from the 32nd on, behind the single byte characters.
            const int row = value / 192, character = value + 64 * row + (row < 31 ? 0x8140 : 0xC140);
            text_.Put(character >> 8);
            text_.Put(character & 255);
        }
        return count == 0;
    }

    bool ApplicationIndicator()
    {
        const int value = Take(8);
        if (value < 0) return false;
        MarkFNC1(2, 4);
        if (value < 100)
            text_.PutNumber(value, 2);
        else
            text_.Put(value - 100);
        return true;
    }

    std::span<const std::uint16_t> data_;
    const int* countBits_;
    SymbolText& text_;
    int at_ = 0;
    bool separators_ = false, extended_ = false;
};

} // namespace

bool CorrectQR(std::span<std::uint16_t> words, int version, int level, std::span<std::uint16_t> data,
               double& unusedError)
{
    unusedError = 0;
    if (!IsQRVersion(version) || level < LevelL || level > LevelH) return false;
    const QRBlocks blocks = BlocksOfQR(version, level);
    if (words.size() < static_cast<std::size_t>(blocks.words) || data.size() < static_cast<std::size_t>(blocks.Data()))
        return false;
    const ReedSolomonBinary code = ReedSolomonBinary::QR();
    ReedSolomon::Scratch scratch;
    std::array<std::uint16_t, maximumQRBlockWords> block;
    double unused = 1;
    std::size_t filled = 0;
    for (int b = 0; b < blocks.blocks; ++b) {
        const int blockData = blocks.BlockData(b), count = blockData + blocks.check;
        for (int i = 0; i < count; ++i)
            block[static_cast<std::size_t>(i)] = words[static_cast<std::size_t>(blocks.Word(b, i))];
        int erasures = 0, errors = 0;
        if (!code.Decode(block.data(), blockData, blocks.check, 1, erasures, errors, scratch)) return false;
        const int kept = 2 * erasures > blocks.check ? 3 : MisdecodeProtection(version, level);
        const int used = erasures + 2 * errors, usable = blocks.check - kept;
        if (used > usable) return false;
        unused = std::min(unused, 1 - static_cast<double>(used) / usable);
        for (int i = 0; i < count; ++i)
            words[static_cast<std::size_t>(blocks.Word(b, i))] = block[static_cast<std::size_t>(i)];
        for (int i = 0; i < blockData; ++i)
            data[filled++] = block[static_cast<std::size_t>(i)];
    }
    unusedError = unused;
    return true;
}

bool QRText(std::span<const std::uint16_t> data, int version, bool identifier, SymbolText& text)
{
    text.Clear();
    text.modifier = 1;
    return Decoder(data, version, text).Run() && text.Finish(identifier, 'Q', textFailed);
}

} // namespace Tesk::codewords
