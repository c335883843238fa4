// QR and DotCode symbols of any size, encoded as their standards tell, for tests.
#pragma once

#include "read/codewords/DotCodeCells.h"
#include "read/codewords/DotCodeTables.h"
#include "read/codewords/QRCells.h"
#include "read/codewords/QRTables.h"
#include "read/codewords/SlowField.h"
#include "read/matrix/Rendered.h"

#include <algorithm>
#include <array>
#include <cstddef>
#include <cstdint>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

namespace Tesk::matrix {

/// A symbol in byte mode, padded; a text that is too long is cut.
inline SymbolCells EncodedQR(int version, int level, int mask, std::string text)
{
    using namespace codewords;
    const QRBlocks blocks = BlocksOfQR(version, level);
    const int countBits = version < 10 ? 8 : 16;
    text.resize(std::min(text.size(), static_cast<std::size_t>(blocks.Data() - 3)));
    std::vector<bool> bits;
    const auto put = [&](int value, int count) {
        while (count-- > 0)
            bits.push_back((value >> count & 1) != 0);
    };
    put(4, 4);
    put(static_cast<int>(text.size()), countBits);
    for (const char c : text)
        put(static_cast<unsigned char>(c), 8);
    put(0, 4);
    while (bits.size() % 8 != 0)
        bits.push_back(false);
    for (int pad = 0xEC; bits.size() < static_cast<std::size_t>(8 * blocks.Data()); pad ^= 0xEC ^ 0x11)
        put(pad, 8);

    std::vector<int> words(static_cast<std::size_t>(blocks.words));
    std::size_t from = 0;
    for (int block = 0; block < blocks.blocks; ++block) {
        const int data = blocks.BlockData(block);
        std::vector<std::uint16_t> coded(static_cast<std::size_t>(data + blocks.check));
        for (int i = 0; i < data; ++i)
            for (int bit = 0; bit < 8; ++bit)
                coded[static_cast<std::size_t>(i)] =
                    static_cast<std::uint16_t>(coded[static_cast<std::size_t>(i)] << 1 | (bits[from++] ? 1 : 0));
        slowQR.Encode(coded, blocks.check);
        for (std::size_t i = 0; i < coded.size(); ++i)
            words[static_cast<std::size_t>(blocks.Word(block, static_cast<int>(i)))] = coded[i];
    }

    const auto places = std::make_unique<QRCells>();
    places->Prepare(version);
    const int side = QRSide(version);
    SymbolCells cells(side, side);
    const auto set = [&](int row, int column, bool dark) {
        if (cells(row, column) != dark) cells.Flip(row, column);
    };
    for (int row = 0; row < side; ++row)
        for (int column = 0; column < side; ++column) {
            const SymbolModule module = places->At(row, column);
            const bool isMasked = module.IsData() || module.Is(SymbolModule::RemainderBit);
            const bool bit = module.IsData() && (words[static_cast<std::size_t>(module.Word())] >> module.Bit() & 1);
            set(row, column, isMasked ? bit != QRMaskInverts(mask, row, column) : module.Is(SymbolModule::FixedDark));
        }
    for (int copy = 0; copy < 2; ++copy) {
        for (int bit = 0; bit < 15; ++bit) {
            const QRCell cell = QRFormatCell(side, copy, bit);
            set(cell.row, cell.column, (QRFormatWord(level, mask) >> bit & 1) != 0);
        }
        for (int bit = 0; bit < 18 && version >= 7; ++bit) {
            const QRCell cell = QRVersionCell(side, copy, bit);
            set(cell.row, cell.column, (QRVersionWord(version) >> bit & 1) != 0);
        }
    }
    return cells;
}

/// A symbol of Code Set C: two digits a word, with zeros behind. Rows and columns add up to an odd number. Cells that
/// no word fills have dots or none.
inline SymbolCells EncodedDotCode(int rows, int columns, int mask, std::string digits, bool fillsRest = true)
{
    using namespace codewords;
    static constexpr std::array<int, 4> weights{0, 3, 7, 17};
    const auto places = std::make_unique<DotCodeCells>();
    places->Prepare(columns, rows, true);
    const DotCodeBlocks blocks = DotCodeBlocks::Of(places->Words());
    digits.resize(static_cast<std::size_t>(2 * (blocks.data - 1)), '0');
    std::vector<std::uint16_t> words(static_cast<std::size_t>(blocks.words));
    words[0] = static_cast<std::uint16_t>(mask);
    for (int i = 1; i < blocks.data; ++i) {
        const std::size_t at = static_cast<std::size_t>(2 * (i - 1));
        const int value = 10 * (digits[at] - '0') + digits[at + 1] - '0';
        words[static_cast<std::size_t>(i)] =
            static_cast<std::uint16_t>((value + weights[static_cast<std::size_t>(mask)] * (i - 1)) % dotCodeValues);
    }
    const int step = blocks.blocks;
    for (int block = 0; block < step; ++block) {
        std::vector<std::uint16_t> coded;
        for (int i = block; i < blocks.words; i += step)
            coded.push_back(words[static_cast<std::size_t>(i)]);
        slowDotCode.Encode(coded, blocks.BlockWords(block) - blocks.BlockData(block));
        for (std::size_t i = 0; i < coded.size(); ++i)
            words[static_cast<std::size_t>(block) + i * static_cast<std::size_t>(step)] = coded[i];
    }
    SymbolCells cells(rows, columns);
    const int dotsOfWords = DotCodeCells::FirstDot(blocks.words);
    for (int word = 0; word < blocks.words; ++word) {
        const int count = DotCodeCells::DotsOf(word);
        const int pattern = DotCodeCells::PatternOf(word, words[static_cast<std::size_t>(word)]);
        for (int i = 0; i < count; ++i)
            if (pattern >> (count - 1 - i) & 1) {
                const DotPlace place = places->Dot(DotCodeCells::FirstDot(word) + i);
                cells.Flip(place.row, place.column);
            }
    }
    for (int i = dotsOfWords; fillsRest && i < places->Dots(); ++i)
        cells.Flip(places->Dot(i).row, places->Dot(i).column);
    return cells;
}

/// So many letters and digits without a period.
inline std::string LongText(std::size_t length)
{
    std::string text;
    for (unsigned i = 0, state = 12345; i < length; ++i) {
        state = state * 1103515245u + 12345u;
        text.push_back("0123456789ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz .,"[(state >> 16) % 65]);
    }
    return text;
}

} // namespace Tesk::matrix
