// Turns the words of a DotCode into text: AIM DotCode, message encodation.
#include "read/codewords/DotCodeText.h"

#include "read/codewords/ReedSolomon.h"

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <string_view>

namespace Tesk::codewords {

namespace {

constexpr int textFailed = 104;
constexpr int maskWeights[] = {0, 3, 7, 17};

enum CodeSet
{
    SetA,
    SetB,
    SetC,
    Binary
};

/// Words that have the same meaning in the sets A, B and C.
enum FunctionWord : int
{
    FNC1 = 107,
    FNC2,
    FNC3,
    UpperShiftA,
    UpperShiftB,
    LatchBinary
};
/// Latches that pad a message stand for nothing.
constexpr int padWord = 106;

bool IsDigit(int character)
{
    return character >= '0' && character <= '9';
}
bool IsLetter(int character)
{
    return (character >= 'A' && character <= 'Z') || (character >= 'a' && character <= 'z');
}

class Decoder
{
public:
    Decoder(std::span<const std::uint16_t> words, SymbolText& text) : words_(words), text_(text) {}

    bool Run()
    {
        if (words_.empty() || words_[0] > 3) return false;
        weight_ = maskWeights[words_[0]];
        while (Left() > 0) {
            // A shift that has run out falls back before the next word.
            if (shifted_ > 0 && shifted_-- == 1) returnsToLatch_ = true;
            const bool last = returnsToLatch_;
            if (!Word(Next())) return false;
            if (last && returnsToLatch_) set_ = latched_;
            if (last) returnsToLatch_ = false;
        }
        if (eciDigits_ > 0) return false;
        if (!trailer_.empty()) text_.Put(trailer_);
        return true;
    }

    int IdentifierDigit() const
    {
        const std::string_view text = text_.View();
        const bool digits = text.size() >= 2 && IsDigit(text[0]) && IsDigit(text[1]);
        const int form = text_.readFNC1 == 2 ? 2 : text_.readFNC1 == 1 || !digits ? 0 : 1;
        return form + (extended_ ? 3 : 0);
    }

private:
    int Left() const { return static_cast<int>(words_.size()) - at_; }
    /// A word without its mask.
    int Peek(int ahead) const
    {
        const int index = at_ + ahead;
        const int value =
            words_[static_cast<std::size_t>(index)] % dotCodeValues - weight_ * (index - 1) % dotCodeValues;
        return value < 0 ? value + dotCodeValues : value;
    }
    int Next()
    {
        const int value = Peek(0);
        ++at_;
        return value;
    }

    void Latch(CodeSet set)
    {
        set_ = latched_ = set;
        shifted_ = 0;
        returnsToLatch_ = false;
    }
    void Shift(CodeSet set, int words)
    {
        set_ = set;
        shifted_ = words;
        returnsToLatch_ = false;
    }

    bool Word(int word)
    {
        if (set_ == Binary) return BinaryWord(word);
        switch (word) {
        case FNC1:
            FunctionOne();
            return true;
        case FNC2:
            return FunctionTwo();
        case FNC3:
            if (at_ == 2) text_.readerProgramming = true;
            return true;
        case UpperShiftA:
        case UpperShiftB:
            return UpperShift(word == UpperShiftA ? SetA : SetB);
        case LatchBinary:
            LatchBinarySet();
            return true;
        default:
            return set_ == SetA ? WordA(word) : set_ == SetB ? WordB(word) : WordC(word);
        }
    }

    bool WordA(int word)
    {
        if (word < 96)
            PutCharacter(CharacterA(word));
        else if (word < 102)
            Shift(SetB, word - 95);
        else if (word == 102)
            Latch(SetB);
        else if (word < 106)
            Shift(SetC, word - 101);
        else
            Latch(SetC);
        return true;
    }

    bool WordB(int word)
    {
        if (word < 96) {
            PutCharacter(CharacterB(word));
        } else if (word == 96) {
            text_.Put("\r\n");
        } else if (word < 101) {
            return MacroOrControl(word - 97);
        } else if (word == 101) {
            Shift(SetA, 1);
        } else if (word == 102) {
            Latch(SetA);
        } else if (word < 106) {
            Shift(SetC, word - 101);
        } else {
            Latch(SetC);
        }
        return true;
    }

    bool WordC(int word)
    {
        if (word < 100) {
            text_.PutNumber(word, 2);
            if (pairsToBatch_ > 0 && --pairsToBatch_ == 0) text_.Put("10");
        } else if (word == 100) {
            // The fields of expiry date and batch.
            text_.Put("17");
            pairsToBatch_ = 3;
        } else if (word == 101) {
            Latch(SetA);
        } else if (word < 106) {
            Shift(SetB, word - 101);
        } else {
            Latch(SetB);
        }
        return true;
    }

    static int CharacterA(int word) { return word < 64 ? word + 32 : word - 64; }
    static int CharacterB(int word) { return word + 32; }

    /// A backslash is doubled, as single ones stand for ECI.
    void PutCharacter(int character)
    {
        text_.Put(character);
        if (character == '\\') text_.Put(character);
    }

    bool MacroOrControl(int which)
    {
        constexpr std::string_view formats[] = {"05", "06", "12"};
        constexpr int controls[] = {9, 28, 29, 30};
        if (text_.Length() > 0) {
            text_.Put(controls[which]);
        } else if (which < 3) {
            text_.PutMacro(formats[which]);
            trailer_ = "\x1E\x04";
        } else {
            return OpenMacro();
        }
        return true;
    }

    /// The format of the message is a word of two digits. Some programs write two digits of set B instead: that is no
    /// loss, as formats 16 to 25 do not exist.
    bool OpenMacro()
    {
        const auto isDigit = [&](int ahead) { return Left() > ahead && Peek(ahead) >= 16 && Peek(ahead) <= 25; };
        const bool digits = isDigit(0) && isDigit(1);
        if (Left() < 1 || Peek(0) > 99) return false;
        text_.Put("[)>\x1E");
        if (!digits) text_.PutNumber(Next(), 2);
        trailer_ = "\x04";
        return true;
    }

    bool UpperShift(CodeSet set)
    {
        if (Left() < 1 || Peek(0) > 95) return false;
        const int word = Next();
        text_.Put(128 + (set == SetA ? CharacterA(word) : CharacterB(word)));
        return true;
    }

    void FunctionOne()
    {
        const std::string_view text = text_.View();
        const bool letter = text.size() == 1 && IsLetter(text[0]);
        const bool digits = text.size() == 2 && IsDigit(text[0]) && IsDigit(text[1]);
        if (text.empty())
            text_.readFNC1 = 1;
        else if (letter || digits)
            text_.readFNC1 = 2;
        else
            text_.Put(groupSeparator);
    }

    bool FunctionTwo()
    {
        if (StructuredAppend()) return true;
        if (Left() < 1) return false;
        int value = Next();
        if (value >= 40) {
            if (Left() < 2) return false;
            value = value * dotCodeValues + Next();
            value = value * dotCodeValues + Next() - 510720;
        }
        return PutECI(value);
    }

    bool PutECI(int value)
    {
        if (value > 999999) return false;
        text_.PutECI(value);
        extended_ = true;
        return true;
    }

    /// The place of a digit or a letter, from 1; 0 for another character.
    static int Place(int character)
    {
        if (IsDigit(character)) return character - '0';
        return character >= 'A' && character <= 'Z' ? character - 'A' + 10 : 0;
    }

    bool StructuredAppend()
    {
        for (int i = 0; i < Left(); ++i)
            if (Peek(i) != padWord) return false;
        const std::string_view text = text_.View();
        int position = 0, total = 0, characters = 2;
        if (set_ == SetC && at_ > 4 && Peek(-4) == padWord) {
            // The position and the total are meant in set A or B, but pads before them have latched to C.
            position = Place(CharacterB(Peek(-3)));
            total = Place(CharacterB(Peek(-2)));
            characters = 4;
        } else if (text.size() >= 2) {
            position = Place(text[text.size() - 2]);
            total = Place(text[text.size() - 1]);
        }
        if (position < 1 || total < 2 || position > total) return false;
        text_.symbolPosition = position - 1;
        text_.symbolTotal = total;
        text_.RemoveLast(characters);
        at_ = static_cast<int>(words_.size());
        return true;
    }

    void LatchBinarySet()
    {
        Latch(Binary);
        groupWords_ = 0;
        group_ = 0;
    }

    /// Six words of base 103 hold five digits of base 259.
    bool BinaryWord(int word)
    {
        if (word < 103) {
            group_ = group_ * 103 + static_cast<std::uint64_t>(word);
            ++groupWords_;
            return (groupWords_ < 6 && Left() > 0) || EndGroup();
        }
        if (!EndGroup()) return false;
        if (word < 109)
            Shift(SetC, word - 101);
        else
            Latch(word == 109 ? SetA : word == 110 ? SetB : SetC);
        return true;
    }

    bool EndGroup()
    {
        std::uint64_t power = 1;
        for (int i = 1; i < groupWords_; ++i)
            power *= 259;
        if (groupWords_ > 1 && group_ >= power) return false; // more than the digits hold
        for (; groupWords_ > 1; --groupWords_) {
            power /= 259;
            if (!Digit(static_cast<int>(group_ / power))) return false;
            group_ %= power;
        }
        group_ = 0;
        groupWords_ = 0;
        return true;
    }

    bool Digit(int digit)
    {
        if (eciDigits_ > 0) {
            // The second digit of three has the weight of a byte.
            eci_ = eciDigits_ == 2 && eciLength_ == 3 ? (eci_ << 8) + digit
                   : eciDigits_ == eciLength_         ? digit
                                                      : eci_ * 257 + digit;
            return --eciDigits_ > 0 || PutECI(eci_);
        }
        if (digit < 256)
            PutCharacter(digit);
        else
            eciDigits_ = eciLength_ = digit - 255;
        return true;
    }

    std::span<const std::uint16_t> words_;
    SymbolText& text_;
    int at_ = 1, weight_ = 0;
    CodeSet set_ = SetC, latched_ = SetC;
    int shifted_ = 0;             ///< words that are still to be read in a shifted set
    bool returnsToLatch_ = false; ///< the word at hand is the last of them
    int pairsToBatch_ = 0;
    std::string_view trailer_;
    std::uint64_t group_ = 0;
    int groupWords_ = 0;
    int eci_ = 0, eciDigits_ = 0, eciLength_ = 0; ///< digits still to come, and of all
    bool extended_ = false;
};

} // namespace

bool CorrectDotCode(std::span<std::uint16_t> words, double& unusedError)
{
    constexpr int spared = 2;
    unusedError = 0;
    if (words.size() > static_cast<std::size_t>(maximumDotCodeWords)) return false;
    const DotCodeBlocks blocks = DotCodeBlocks::Of(static_cast<int>(words.size()));
    if (blocks.data < 3) return false;
    const ReedSolomonPrime code;
    ReedSolomon::Scratch scratch;
    double unused = 1;
    for (int block = 0; block < blocks.blocks; ++block) {
        const int data = blocks.BlockData(block), check = blocks.BlockWords(block) - data;
        int erasures = 0, errors = 0;
        if (!code.Decode(words.data() + block, data, check, blocks.blocks, erasures, errors, scratch)) return false;
        const int used = erasures + 2 * errors, usable = check - spared;
        if (used > usable) return false;
        if (usable > 0) unused = std::min(unused, 1 - static_cast<double>(used) / usable);
    }
    unusedError = unused;
    return true;
}

bool DotCodeText(std::span<const std::uint16_t> data, bool identifier, SymbolText& text)
{
    text.Clear();
    Decoder decoder(data, text);
    if (!decoder.Run()) return text.Fail(textFailed);
    text.modifier = decoder.IdentifierDigit();
    return text.Finish(identifier, 'J', textFailed);
}

} // namespace Tesk::codewords
