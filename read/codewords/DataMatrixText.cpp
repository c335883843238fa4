// Turns the codewords of a Data Matrix into text: ISO/IEC 16022, ECC 200 data encodation.
#include "read/codewords/DataMatrixText.h"

#include "read/codewords/ReedSolomon.h"

#include <algorithm>
#include <cstddef>
#include <string_view>

namespace Tesk::codewords {

namespace {

constexpr int textFailed = 5;
constexpr const wchar_t* unrecognized = L"A codeword was not recognized while decoding (%d)";
constexpr const wchar_t* programmingTooLate = L"Reader Programming found on position %d, should be 0";
constexpr const wchar_t* invalidECI = L"Absent or invalid codeword in ECI Assignment value";

/// Character sets of the modes C40, Text and X12 by their values. What is below `firstCharacter` are shifts.
enum Functions : char
{
    FNC1 = 1,
    UpperShift = 2
};
constexpr int firstCharacter = 3;
constexpr char tableC40[] = "\0\0\0 0123456789ABCDEFGHIJKLMNOPQRSTUVWXYZ";
constexpr char tableText[] = "\0\0\0 0123456789abcdefghijklmnopqrstuvwxyz";
constexpr char tableX12[] = "\r*> 0123456789ABCDEFGHIJKLMNOPQRSTUVWXYZ";
constexpr char shift2[] = "!\"#$%&'()*+,-./:;<=>?@[\\]^_\1\0\0\2";
constexpr char shift3C40[] = "`abcdefghijklmnopqrstuvwxyz{|}~\x7F";
constexpr char shift3Text[] = "`ABCDEFGHIJKLMNOPQRSTUVWXYZ{|}~\x7F";

class Decoder
{
public:
    Decoder(std::span<const std::uint16_t> data, SymbolText& text) : data_(data), text_(text) {}

    bool Run()
    {
        while (at_ < Size() && data_[Index(at_)] != 129)
            if (!Ascii(data_[Index(at_++)])) return false;
        if (macro_) {
            text_.Put(recordSeparator);
            text_.Put(endOfTransmission);
        }
        return true;
    }

private:
    static std::size_t Index(int position) { return static_cast<std::size_t>(position); }
    int Size() const { return static_cast<int>(data_.size()); }
    int Left() const { return Size() - at_; }
    bool Unrecognized(int codeword) { return text_.Fail(textFailed, unrecognized, codeword); }

    /// `at_` is behind the codeword.
    bool Ascii(int codeword)
    {
        if (codeword >= 1 && codeword <= 128) {
            text_.Put(codeword - 1 + (upper_ ? 128 : 0));
            upper_ = false;
            return true;
        }
        if (codeword >= 130 && codeword <= 229) {
            text_.PutNumber(codeword - 130, 2);
            return true;
        }
        switch (codeword) {
        case 230:
            return Triplets(tableC40, shift3C40);
        case 231:
            return Base256();
        case 232:
            return FunctionOne();
        case 233:
            StructuredAppend();
            return true;
        case 234:
            if (text_.Length() > 0) return text_.Fail(textFailed, programmingTooLate, text_.Length());
            text_.readerProgramming = true;
            return true;
        case 235:
            upper_ = true;
            return true;
        case 236:
            return Macro("05");
        case 237:
            return Macro("06");
        case 238:
            return Triplets(tableX12, nullptr);
        case 239:
            return Triplets(tableText, shift3Text);
        case 240:
            Edifact();
            return true;
        case 241:
            return ECI();
        case 254:
            return true;
        default:
            return Unrecognized(codeword);
        }
    }

    bool Macro(std::string_view format)
    {
        text_.PutMacro(format);
        macro_ = true;
        return true;
    }

    bool FunctionOne()
    {
        // In the first symbol of a sequence the positions count from behind the Structured Append codewords.
        const int position = at_ - 1 - (text_.symbolTotal > 0 && text_.symbolPosition == 0 && at_ > 4 ? 4 : 0);
        if (position < 2)
            MarkFNC1(position);
        else
            text_.Put(groupSeparator);
        return true;
    }

    void MarkFNC1(int position)
    {
        text_.readFNC1 = 1 + position;
        text_.modifier = 2 + position;
    }

    void StructuredAppend()
    {
        if (Left() < 3) {
            at_ = Size();
            return;
        }
        const int sequence = data_[Index(at_)] & 255;
        const int position = sequence >> 4, total = 17 - (sequence & 15);
        text_.symbolPosition = position;
        text_.symbolTotal = total <= 16 && position < total ? total : 0;
        text_.symbolFileID1 = data_[Index(at_ + 1)] & 255;
        text_.symbolFileID2 = data_[Index(at_ + 2)] & 255;
        at_ += 3;
    }

    bool ECI()
    {
        const int c1 = Left() > 0 ? data_[Index(at_)] : 0;
        const int count = c1 < 128 ? 1 : c1 < 192 ? 2 : 3;
        if (Left() < count) return text_.Fail(textFailed, invalidECI);
        const auto next = [&](int i) { return int{data_[Index(at_ + i)]}; };
        const int value = count == 1   ? c1 - 1
                          : count == 2 ? c1 * 254 + next(1) - 32386
                                       : (c1 * 254 + next(1)) * 254 + next(2) - 12370944;
        // No assignment has more digits than six.
        if (c1 > 255 || value < 0 || value > 999999) return text_.Fail(textFailed, invalidECI);
        at_ += count;
        text_.PutECI(value);
        text_.modifier += 3;
        return true;
    }

    /// C40, Text, and X12, which has no shifts: three values in two codewords.
    bool Triplets(const char* basic, const char* shift3)
    {
        int shift = 0;
        bool upper = false;
        while (Left() > 0) {
            const int c1 = data_[Index(at_)];
            if (c1 == 254) {
                ++at_;
                return true;
            }
            if (Left() < 2) return true; // a single codeword left is in ASCII
            const int value = 256 * c1 + data_[Index(at_ + 1)] - 1;
            if (value < 0 || value >= 64000) return Unrecognized(c1);
            at_ += 2;
            for (const int digit : {value / 1600, value / 40 % 40, value % 40}) {
                if (shift == 0 && shift3 != nullptr && digit < firstCharacter) {
                    shift = digit + 1;
                    continue;
                }
                if (!Shifted(shift, digit, shift == 3 ? shift3 : basic, upper)) return Unrecognized(c1);
                shift = 0;
            }
        }
        return true;
    }

    /// One value in a character set; false for one that the set does not have.
    bool Shifted(int shift, int digit, const char* set, bool& upper)
    {
        int character = 0;
        switch (shift) {
        case 1:
            if (digit > 31) return false;
            character = digit;
            break;
        case 2:
            if (digit > 30 || digit == 28 || digit == 29) return false;
            if (shift2[digit] == UpperShift) {
                upper = true;
                return true;
            }
            if (shift2[digit] == FNC1) {
                if (text_.Length() < 2)
                    MarkFNC1(text_.Length());
                else
                    text_.Put(groupSeparator);
                return true;
            }
            character = shift2[digit];
            break;
        case 3:
            if (digit > 31) return false;
            character = set[digit];
            break;
        default:
            character = set[digit];
        }
        text_.Put(character + (upper ? 128 : 0));
        upper = false;
        return true;
    }

    /// Four characters of six bits in three codewords.
    void Edifact()
    {
        while (Left() >= 3) {
            const int bits =
                (data_[Index(at_)] & 255) << 16 | (data_[Index(at_ + 1)] & 255) << 8 | (data_[Index(at_ + 2)] & 255);
            for (int i = 0; i < 4; ++i) {
                const int value = bits >> (18 - 6 * i) & 63;
                if (value == 31) { // ASCII goes on at the next whole codeword
                    at_ += std::min(i + 1, 3);
                    return;
                }
                text_.Put(value < 32 ? value + 64 : value);
            }
            at_ += 3;
        }
    }

    /// The byte behind a codeword at its place, of which the randomizing is taken away.
    int RandomizedByte()
    {
        const int random = 149 * (at_ + 1) % 255 + 1;
        return (data_[Index(at_++)] - random) & 255;
    }

    bool Base256()
    {
        if (Left() < 1) return Unrecognized(231);
        int count = RandomizedByte();
        if (count >= 250) {
            if (Left() < 1) return Unrecognized(231);
            count = (count - 249) * 250 + RandomizedByte();
        } else if (count == 0) {
            count = Left();
        }
        if (count > Left()) return Unrecognized(231);
        for (; count > 0; --count)
            text_.Put(RandomizedByte());
        return true;
    }

    std::span<const std::uint16_t> data_;
    SymbolText& text_;
    int at_ = 0;
    bool upper_ = false, macro_ = false;
};

} // namespace

bool CorrectDataMatrix(std::span<std::uint16_t> words, const DataMatrixSize& size, double& unusedError)
{
    unusedError = 0;
    if (words.size() < static_cast<std::size_t>(size.Words())) return false;
    const ReedSolomonBinary code = ReedSolomonBinary::DataMatrix();
    ReedSolomon::Scratch scratch;
    int worst = 0; // in half checks
    for (int block = 0; block < size.blocks; ++block) {
        int erasures = 0, errors = 0;
        if (!code.Decode(words.data() + block, size.BlockData(block), size.BlockCheck(), size.blocks, erasures, errors,
                         scratch))
            return false;
        // Beyond half of the distance a code word may be found, which is not the one that was printed.
        if (erasures + 2 * errors > size.BlockCheck()) return false;
        worst = std::max(worst, errors + (erasures + 1) / 2);
    }
    // An odd check word corrects nothing.
    unusedError = std::max(0.0, 1 - static_cast<double>(worst) / (size.BlockCheck() / 2));
    return true;
}

bool DataMatrixText(std::span<const std::uint16_t> data, bool identifier, SymbolText& text)
{
    text.Clear();
    text.modifier = 1;
    return Decoder(data, text).Run() && text.Finish(identifier, 'd', textFailed);
}

} // namespace Tesk::codewords
