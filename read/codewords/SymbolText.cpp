// The text of a two-dimensional symbol: a bounded buffer.
#include "read/codewords/SymbolText.h"

#include <algorithm>

namespace Tesk::codewords {

void SymbolText::Clear()
{
    readFNC1 = symbolPosition = symbolTotal = symbolFileID1 = symbolFileID2 = parityData = modifier = 0;
    readerProgramming = false;
    failure = messageValue = 0;
    message = nullptr;
    length_ = 0;
    bytes_[0] = 0;
    overflow_ = false;
}

void SymbolText::Put(int byte)
{
    if (length_ == capacity - 1) {
        overflow_ = true;
        return;
    }
    bytes_[static_cast<std::size_t>(length_++)] = static_cast<char>(byte);
}

void SymbolText::Put(std::string_view text)
{
    for (const char character : text)
        Put(character);
}

void SymbolText::PutNumber(int number, int digits)
{
    std::array<char, 10> reversed; // all that an int can have
    int count = 0;
    for (; (number > 0 || count < digits) && count < 10; number /= 10)
        reversed[static_cast<std::size_t>(count++)] = static_cast<char>('0' + number % 10);
    while (count > 0)
        Put(reversed[static_cast<std::size_t>(--count)]);
}

void SymbolText::PutECI(int value)
{
    Put('\\');
    PutNumber(value, 6);
}

void SymbolText::PutMacro(std::string_view format)
{
    Put("[)>");
    Put(recordSeparator);
    Put(format);
    Put(groupSeparator);
}

void SymbolText::RemoveLast(int count)
{
    length_ -= std::min(count, length_);
}

bool SymbolText::Fail(int state, const wchar_t* failureMessage, int value)
{
    Clear();
    failure = state;
    message = failureMessage;
    messageValue = value;
    return false;
}

bool SymbolText::Finish(bool identifier, char letter, int state)
{
    if (overflow_) return Fail(state);
    if (identifier) {
        const auto end = bytes_.begin() + length_;
        std::copy_backward(bytes_.begin(), end, end + identifierLength);
        bytes_[0] = ']';
        bytes_[1] = letter;
        bytes_[2] = static_cast<char>(modifier < 10 ? '0' + modifier : 'A' + std::min(modifier - 10, 25));
        length_ += identifierLength;
    }
    bytes_[static_cast<std::size_t>(length_)] = 0;
    return true;
}

} // namespace Tesk::codewords
