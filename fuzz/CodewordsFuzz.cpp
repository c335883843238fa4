// Any bytes as the cells of a matrix code, with their wrong cells corrected as far as they can be, and as codewords
// that are right already: none of it may leave its tables or its text.
#include "read/codewords/DataMatrixText.h"
#include "read/codewords/QRText.h"
#include "read/codewords/SymbolReader.h"

#include "Checks.h"

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <span>
#include <vector>

using namespace Tesk;
using namespace Tesk::fuzz;
using namespace Tesk::codewords;

namespace {

void CheckText(const SymbolText& text)
{
    Require(text.Length() >= 0 && text.Length() < SymbolText::capacity + SymbolText::identifierLength);
    Require(text.Bytes()[text.Length()] == 0);
    Require(text.failure == 0 || text.Length() == 0);
}

SymbolReader reader;
DataMatrixGrid dataMatrixGrid;
QRGrid qrGrid;
SymbolText text;

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* bytes, std::size_t size)
{
    if (size < 4) return 0;
    const int family = bytes[0] % 4, first = bytes[1], second = bytes[2];
    const bool flag = bytes[3] % 2 != 0;
    const std::span rest(bytes + 4, size - 4);
    const auto isDark = [&](int row, int column) {
        const std::size_t bit = static_cast<std::size_t>(row) * 177 + static_cast<std::size_t>(column);
        return bit / 8 < rest.size() && (rest[bit / 8] >> bit % 8 & 1) != 0;
    };
    if (family == 0) {
        for (int row = -1; row <= 144; ++row)
            for (int column = -1; column <= 144; ++column)
                dataMatrixGrid.At(row, column) = isDark(row + 1, column + 1) ? 0 : LightCell;
        const ReadState state = reader.ReadDataMatrix(dataMatrixGrid, first - 1, second, flag);
        if (state == SymbolRead) Require(reader.UnusedError() >= 0 && reader.UnusedError() <= 1);
    } else if (family == 1) {
        const int side = first;
        QRFormat format;
        int version = 0;
        if (!ReadQRFormat(std::max(side, 21), isDark, format) || !ReadQRVersion(side, isDark, version)) return 0;
        for (int row = 0; row < side; ++row)
            for (int column = 0; column < side; ++column)
                qrGrid.At(row, column) = isDark(row, column) ? 0 : LightCell;
        reader.ReadQR(qrGrid, version, format, flag);
    } else if (family == 2) {
        reader.ReadDotCode(first, second, flag, isDark, flag);
    } else {
        std::vector<std::uint16_t> words(rest.begin(), rest.end());
        if (flag)
            for (std::uint16_t& word : words)
                word = static_cast<std::uint16_t>(word % dotCodeValues);
        DataMatrixText(words, flag, text);
        CheckText(text);
        QRText(words, first, flag, text);
        CheckText(text);
        DotCodeText(words, flag, text);
        CheckText(text);
    }
    CheckText(reader.Text());
    return 0;
}
