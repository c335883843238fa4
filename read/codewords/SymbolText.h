// The text of a two-dimensional symbol, and what the symbol tells beside it.
#pragma once

#include <array>
#include <cstddef>
#include <string_view>

namespace Tesk::codewords {

/// Separates fields where a symbol has FNC1.
constexpr int groupSeparator = 29;
constexpr int recordSeparator = 30;
constexpr int endOfTransmission = 4;

/// A buffer that decoders fill byte by byte. A text that does not fit is refused by `Finish`, never cut.
class SymbolText
{
public:
    /// Bytes, with the ending zero: the longest QR symbol has so many digits. The identifier has its own room.
    static constexpr int capacity = 7090, identifierLength = 3;

    int readFNC1 = 0; ///< 1 or 2 if FNC1 stands in the first or second position
    bool readerProgramming = false;
    int symbolPosition = 0, symbolTotal = 0; ///< of Structured Append; a total of 0 stands for none
    int symbolFileID1 = 0, symbolFileID2 = 0;
    int parityData = 0;
    int modifier = 0; ///< of the symbology identifier: a digit, then letters from 10 on

    int failure = 0;                  ///< 0, or the state that the decoder stopped with
    const wchar_t* message = nullptr; ///< of the failure, a format of one "%d" or none; null where there is none
    int messageValue = 0;

    const char* Bytes() const { return bytes_.data(); } ///< ends with a zero; may hold others
    int Length() const { return length_; }              ///< without the ending zero
    std::string_view View() const { return {bytes_.data(), static_cast<std::size_t>(length_)}; }

    /// No text, no flags, no failure.
    void Clear();
    void Put(int byte);
    void Put(std::string_view text);
    /// A number that is not negative, with zeros ahead up to `digits` digits.
    void PutNumber(int number, int digits);
    /// A backslash and six digits.
    void PutECI(int value);
    /// The header of a message in the format of ISO/IEC 15434: "[)>", RS, `format`, GS.
    void PutMacro(std::string_view format);
    void RemoveLast(int count);

    /// Takes the text and the flags back, and keeps the failure. Always false.
    bool Fail(int state, const wchar_t* failureMessage = nullptr, int value = 0);
    /// Closes the text, with "]", `letter` and the modifier ahead where the symbology identifier is wanted. False, with
    /// the failure `state`, if the text does not fit.
    bool Finish(bool identifier, char letter, int state);

private:
    std::array<char, capacity + identifierLength> bytes_{};
    int length_ = 0;
    bool overflow_ = false;
};

} // namespace Tesk::codewords
