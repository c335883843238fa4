// Codewords to text, by the encodations of the three families, and where each gives up.
#include "read/codewords/DataMatrixText.h"
#include "read/codewords/DotCodeText.h"
#include "read/codewords/QRText.h"

#include <gtest/gtest.h>

#include <cstddef>
#include <cstdint>
#include <random>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace Tesk::codewords {
namespace {

using Words = std::vector<std::uint16_t>;

SymbolText text; // large

/// The text; or the state of the failure behind a "!", and its value where it has one.
std::string Result(bool ok)
{
    EXPECT_EQ(ok, text.failure == 0);
    EXPECT_EQ(text.Bytes()[text.Length()], 0);
    if (ok) return std::string(text.View());
    EXPECT_EQ(text.Length(), 0);
    std::wstring message = text.message == nullptr ? L"" : text.message;
    if (const std::size_t at = message.find(L"%d"); at != std::wstring::npos)
        message.replace(at, 2, std::to_wstring(text.messageValue));
    return "!" + std::to_string(text.failure) + (message.empty() ? "" : " ") +
           std::string(message.begin(), message.end());
}

std::string DataMatrix(const Words& words, bool identifier = false)
{
    return Result(DataMatrixText(words, identifier, text));
}

std::string DotCodeOf(Words words, bool identifier = false)
{
    words.insert(words.begin(), 0);
    return Result(DotCodeText(words, identifier, text));
}

/// Values and their bits.
using Bits = std::vector<std::pair<int, int>>;
std::string QR(const Bits& bits, bool identifier = false, int version = 1)
{
    Words words;
    int at = 0;
    for (const auto& [value, count] : bits)
        for (int i = count - 1; i >= 0; --i, ++at) {
            if (at % 8 == 0) words.push_back(0);
            words.back() |= static_cast<std::uint16_t>((value >> i & 1) << (7 - at % 8));
        }
    return Result(QRText(words, version, identifier, text));
}

TEST(DataMatrixText, EncodationsGiveTheirText)
{
    const std::pair<Words, const char*> cases[] = {
        {{66, 67, 129, 68}, "AB"},
        {{142, 254, 66}, "12A"},
        {{235, 66, 66}, "\301A"},
        {{230, 91, 11, 91, 11, 254, 66}, "AIMAIMA"},
        {{230, 91, 11, 66}, "AIMA"}, // a single codeword left is in ASCII
        {{239, 91, 11}, "aim"},
        {{230, 10, 255}, "\301"}, // upper shift in C40
        {{230, 10, 161}, "!5 A codeword was not recognized while decoding (10)"},
        {{238, 0, 1, 254}, "\r\r\r"},
        {{240, 16, 21, 1, 66, 67}, "DATAAB"},
        {{240, 124, 66, 67, 68}, "ABC"}, // unlatched by its first value
        {{240, 16, 23, 192, 66}, "DAA"}, // by its third
        {{236, 66}, "[)>\03605\035A\036\004"},
        {{237, 66}, "[)>\03606\035A\036\004"},
        {{241, 27, 66}, "\\000026A"},
        {{241, 128, 1}, "\\000127"},
        {{241, 192, 1, 1}, "\\016383"},
        {{66, 241}, "!5 Absent or invalid codeword in ECI Assignment value"},
        {{241, 0}, "!5 Absent or invalid codeword in ECI Assignment value"},
        {{66, 241, 128}, "!5 Absent or invalid codeword in ECI Assignment value"},
        {{66, 242}, "!5 A codeword was not recognized while decoding (242)"},
        {{230, 0, 0}, "!5 A codeword was not recognized while decoding (0)"},
        {{230, 255, 255}, "!5 A codeword was not recognized while decoding (255)"},
        {{66, 67, 234}, "!5 Reader Programming found on position 2, should be 0"},
        {{93}, "\\"},
        {{}, ""},
    };
    for (const auto& [words, expected] : cases)
        EXPECT_EQ(DataMatrix(words), expected);
    EXPECT_EQ(DataMatrix({234, 66}), "A");
    EXPECT_TRUE(text.readerProgramming);
}

TEST(DataMatrixText, BytesLoseTheirRandomizing)
{
    const auto randomized = [](Words words, std::size_t from) {
        for (std::size_t i = from; i < words.size(); ++i)
            words[i] = static_cast<std::uint16_t>((words[i] + 149 * (i + 1) % 255 + 1) % 256);
        return words;
    };
    EXPECT_EQ(DataMatrix(randomized({66, 231, 0, 200, 201, 202}, 2)), "A\310\311\312");
    Words many{231, 250, 1};
    many.resize(3 + 251, 'x');
    EXPECT_EQ(DataMatrix(randomized(many, 1)), std::string(251, 'x'));
    EXPECT_EQ(DataMatrix(randomized({231, 3, 200, 201}, 1)), "!5 A codeword was not recognized while decoding (231)");
}

TEST(DataMatrixText, FNC1CountsInTheFirstTwoPositionsOfASequence)
{
    const auto check = [](const Words& words, const char* expected, int fnc1) {
        EXPECT_EQ(DataMatrix(words, true), expected);
        EXPECT_EQ(text.readFNC1, fnc1);
    };
    check({232, 66}, "]d2A", 1);
    check({66, 232, 67}, "]d3AB", 2);
    check({66, 67, 232, 68}, "]d1AB\035C", 0);
    check({230, 10, 135}, "]d2A", 1);
    check({66, 67, 230, 10, 135}, "]d1AB\035A", 0);
    check({232, 241, 27, 66}, "]d5\\000026A", 1);
    check({233, 10, 1, 5, 232, 66}, "]d2A", 1);
    EXPECT_EQ(std::pair(text.symbolPosition, text.symbolTotal), std::pair(0, 7));
    // The third of seven, as the standard has it.
    check({233, 42, 1, 5, 232, 66}, "]d1\035A", 0);
    EXPECT_EQ(std::pair(text.symbolPosition, text.symbolTotal), std::pair(2, 7));
    EXPECT_EQ(std::pair(text.symbolFileID1, text.symbolFileID2), std::pair(1, 5));
    check({233, 0, 1, 5}, "]d1", 0);
    EXPECT_EQ(text.symbolTotal, 0);
}

TEST(QRText, ModesGiveTheirText)
{
    const std::pair<Bits, const char*> cases[] = {
        {{{1, 4}, {8, 10}, {12, 10}, {345, 10}, {67, 7}, {0, 4}, {255, 8}}, "01234567"},
        {{{1, 4}, {0, 10}, {1, 4}, {1, 10}, {7, 4}}, "7"},
        {{{1, 4}, {3, 10}, {1000, 10}}, "!104"},
        {{{2, 4}, {5, 9}, {462, 11}, {1849, 11}, {2, 6}}, "AC-42"}, // the standard's example
        {{{2, 4}, {2, 9}, {2025, 11}}, "!104"},
        {{{4, 4}, {2, 8}, {92, 8}, {255, 8}}, "\\\377"},
        {{{4, 4}, {3, 8}, {92, 8}, {255, 8}}, "!104"}, // runs out
        {{{4, 4}, {1, 8}, {65, 8}, {0, 3}}, "A"},
        {{{6, 4}}, "!104"},
        {{{10, 4}}, "!104"},
        {{{7, 4}, {26, 8}, {7, 4}, {0x83, 8}, {0x83, 8}, {4, 4}, {1, 8}, {65, 8}}, "\\000026\\000899A"},
        {{{7, 4}, {0xC1, 8}, {0xE240, 16}}, "\\123456"},
        {{{8, 4}, {2, 8}, {0xD9F, 13}, {0x1AAA, 13}}, "\\000020\223\137\344\252"}, // the standard's example
        {{{5, 4}, {2, 4}, {6, 9}, {10 * 45 + 38, 11}, {11 * 45 + 38, 11}, {38 * 45 + 12, 11}}, "A\035B%C"},
        {{{2, 4}, {2, 9}, {10 * 45 + 38, 11}}, "A%"},
        {{{9, 4}, {37, 8}, {4, 4}, {1, 8}, {65, 8}}, "37A"},
        {{{9, 4}, {165, 8}}, "A"},
    };
    for (const auto& [bits, expected] : cases)
        EXPECT_EQ(QR(bits), expected);
    EXPECT_EQ(QR({{4, 4}, {1, 16}, {65, 8}}, false, 10), "A");
    EXPECT_EQ(QR({{1, 4}, {1, 14}, {6, 4}}, false, 27), "6");
}

TEST(QRText, IdentifierTellsOfFNC1AndECI)
{
    EXPECT_EQ(QR({{4, 4}, {1, 8}, {65, 8}}, true), "]Q1A");
    EXPECT_EQ(QR({{7, 4}, {1, 8}, {7, 4}, {2, 8}}, true), "]Q2\\000001\\000002");
    EXPECT_EQ(QR({{7, 4}, {1, 8}, {5, 4}}, true), "]Q4\\000001");
    EXPECT_EQ(text.readFNC1, 1);
    EXPECT_EQ(QR({{9, 4}, {8, 8}}, true), "]Q508");
    EXPECT_EQ(text.readFNC1, 2);
    EXPECT_EQ(QR({{3, 4}, {0x26, 8}, {77, 8}}, true), "]Q1");
    EXPECT_EQ(std::pair(text.symbolPosition, text.symbolTotal), std::pair(3, 7));
    EXPECT_EQ(text.parityData, 77);
}

TEST(QRText, TheLongestTextFitsAndALongerOneFails)
{
    Bits digits{{1, 4}, {7089, 14}};
    digits.resize(2 + 2363, {111, 10});
    EXPECT_EQ(QR(digits, true, 40), "]Q1" + std::string(7089, '1'));
    Bits assignments;
    for (int i = 0; i < 1013; ++i) // of seven bytes each
        assignments.insert(assignments.end(), {{7, 4}, {1, 8}});
    EXPECT_EQ(QR(assignments, false, 40), "!104");
}

TEST(DotCodeText, CodeSetsGiveTheirText)
{
    const std::pair<Words, const char*> cases[] = {
        {{12, 34, 106}, "1234"},
        {{102, 65, 12}, "a12"},
        {{103, 65, 66, 12}, "ab12"},
        {{106, 65, 103, 12, 34, 65}, "a1234a"},
        {{101, 33, 97, 65, 66, 33}, "Aab\101"},
        {{106, 65, 101, 74, 66, 96}, "a\nb\r\n"},
        {{100, 20, 12, 31, 45}, "172012311045"},
        {{106, 97, 33, 98}, "[)>\03605\035A\034\036\004"},
        {{106, 33, 97, 99}, "A\t\035"},
        {{106, 100, 57, 33}, "[)>\03657A\004"},
        {{106, 100, 21, 23, 33}, "[)>\03657A\004"}, // as two characters
        {{106, 100}, "!104"},
        {{108, 3, 12}, "\\00000312"},
        {{108, 40, 0, 0}, "\\000040"},
        {{12, 108, 40, 0}, "!104"},
        {{108}, "!104"},
        {{110, 65, 111, 95}, "\201\377"},
        {{111, 96}, "!104"},
        {{112, 0, 65, 104, 1, 2, 3, 109, 33}, "A010203A"},
        {{112, 102, 102, 102, 102, 102, 102}, "!104"}, // above five digits
        {{112, 2, 53, 109}, "!104"},                   // announces an assignment that does not come
        {{106, 19, 23, 108, 106}, ""},
    };
    for (const auto& [words, expected] : cases)
        EXPECT_EQ(DotCodeOf(words), expected);
    EXPECT_EQ(DotCodeOf({101, 33, 64, 60}), std::string("A\0\\\\", 4));
    DotCodeOf({109, 12});
    EXPECT_TRUE(text.readerProgramming);
    // The third mask adds 17 for each word.
    EXPECT_EQ(Result(DotCodeText(Words{3, 12, 34 + 17, (99 + 34) % 113}, false, text)), "123499");
    EXPECT_EQ(Result(DotCodeText(Words{4, 12}, false, text)), "!104");
    EXPECT_EQ(Result(DotCodeText({}, false, text)), "!104");
}

TEST(DotCodeText, IdentifierTellsOfFNC1AndECI)
{
    const auto check = [](const Words& words, const std::string& expected, int fnc1) {
        EXPECT_EQ(DotCodeOf(words, true), expected);
        EXPECT_EQ(text.readFNC1, fnc1);
    };
    check({107, 12}, "]J012", 1);
    check({12}, "]J112", 0);
    check({106, 33}, "]J0A", 0);
    check({106, 33, 107, 34}, "]J2AB", 2);
    check({12, 107, 34}, "]J21234", 2);
    check({12, 34, 107, 56}, "]J11234\03556", 0);
    check({108, 3, 12}, "]J3\\00000312", 0);
}

TEST(CodewordText, AnyWordsGiveABoundedTextOrNone)
{
    std::mt19937 random(11);
    for (int i = 0; i < 30000; ++i) {
        Words words(random() % (i % 100 == 0 ? 3000 : 60));
        const unsigned limit = i % 3 == 0 ? 65536 : i % 3 == 1 ? 256 : 113;
        for (std::uint16_t& word : words)
            word = static_cast<std::uint16_t>(random() % limit);
        if (!words.empty() && i % 2 == 0) words[0] %= 4;
        const bool identifier = i % 5 == 0;
        Result(DataMatrixText(words, identifier, text));
        Result(QRText(words, 1 + i % 40, identifier, text));
        Result(DotCodeText(words, identifier, text));
    }
}

} // namespace
} // namespace Tesk::codewords
