// The tables of the standards by what must hold in them: sums, distances, each module placed once.
#include "read/codewords/DataMatrixCells.h"
#include "read/codewords/DotCodeCells.h"
#include "read/codewords/QRCells.h"
#include "read/codewords/ReedSolomon.h"

#include <gtest/gtest.h>

#include <bit>
#include <cstddef>
#include <cstdint>
#include <memory>
#include <set>
#include <utility>
#include <vector>

namespace Tesk::codewords {
namespace {

/// Each codeword has its eight bits, once each. The number of modules that are no data.
template <typename Cells>
int PlacedOnce(const Cells& cells, int rows, int columns, int words)
{
    std::vector<unsigned> bits(static_cast<std::size_t>(words));
    int others = 0;
    for (int row = 0; row < rows; ++row)
        for (int column = 0; column < columns; ++column) {
            const SymbolModule module = cells.At(row, column);
            EXPECT_FALSE(module.Is(SymbolModule::Unplaced)) << row << ", " << column;
            if (!module.IsData()) {
                ++others;
                continue;
            }
            if (module.Word() >= words) return -1;
            unsigned& word = bits[static_cast<std::size_t>(module.Word())];
            EXPECT_EQ(word >> module.Bit() & 1, 0u) << "word " << module.Word();
            word |= 1u << module.Bit();
        }
    for (const unsigned word : bits)
        EXPECT_EQ(word, 255u);
    return others;
}

TEST(DataMatrixTables, EveryModuleIsPlacedOnce)
{
    const auto cells = std::make_unique<DataMatrixCells>();
    for (int i = Size10; i <= Size16x48; ++i) {
        ASSERT_TRUE(cells->Prepare(i));
        const DataMatrixSize& size = cells->Size();
        SCOPED_TRACE(testing::Message() << size.rows << " x " << size.columns);
        const int data = size.RegionRows() * size.regionsDown * size.RegionColumns() * size.regionsAcross;
        const int others = PlacedOnce(*cells, size.rows, size.columns, size.Words());
        EXPECT_EQ(others, size.rows * size.columns - 8 * size.Words());
        EXPECT_EQ(data - 8 * size.Words(), data % 8); // 0 or the four modules in the corner
        int sum = 0;
        for (int block = 0; block < size.blocks; ++block)
            sum += size.BlockData(block) + size.BlockCheck();
        EXPECT_EQ(sum, size.Words());
    }
    EXPECT_FALSE(cells->Prepare(-1));
    EXPECT_FALSE(cells->Prepare(Version1));
}

TEST(QRTables, EveryModuleIsPlacedOnceAndTheBlocksHoldTheWords)
{
    const auto cells = std::make_unique<QRCells>();
    for (int version = 1; version <= maximumQRVersion; ++version) {
        SCOPED_TRACE(testing::Message() << "version " << version);
        ASSERT_TRUE(cells->Prepare(version));
        const QRCapacity capacity = CapacityOfQR(version);
        const int side = QRSide(version), others = PlacedOnce(*cells, side, side, capacity.words);
        EXPECT_EQ(others, side * side - 8 * capacity.words);
        int checks = 0;
        for (int level = LevelL; level <= LevelH; ++level) {
            const QRBlocks blocks = BlocksOfQR(version, level);
            EXPECT_GT(blocks.blocks * blocks.check, checks) << "a higher level corrects more";
            checks = blocks.blocks * blocks.check;
            EXPECT_LE(blocks.BlockData(blocks.blocks - 1) + blocks.check, maximumQRBlockWords);
            std::set<int> places;
            for (int block = 0; block < blocks.blocks; ++block)
                for (int i = 0; i < blocks.BlockData(block) + blocks.check; ++i) {
                    places.insert(blocks.Word(block, i));
                    EXPECT_EQ(blocks.BlockOf(blocks.Word(block, i)), block);
                }
            EXPECT_EQ(places.size(), static_cast<std::size_t>(capacity.words));
            EXPECT_EQ(*places.rbegin(), capacity.words - 1);
        }
    }
    EXPECT_EQ(CapacityOfQR(40).words, maximumQRWords);
    EXPECT_EQ(BlocksOfQR(40, LevelL).Data(), 2956);
    EXPECT_EQ(BlocksOfQR(40, LevelH).Data(), 1276);
    EXPECT_FALSE(cells->Prepare(41));
}

TEST(QRTables, AlignmentPatternsLieEvenly)
{
    for (int version = 2; version <= maximumQRVersion; ++version) {
        const QRAlignment alignment = AlignmentOfQR(version);
        std::set<int> steps;
        for (std::size_t i = 1; i < static_cast<std::size_t>(alignment.count); ++i) {
            EXPECT_EQ(alignment.centres[i] % 2, 0);
            if (i > 1) steps.insert(alignment.centres[i] - alignment.centres[i - 1]);
        }
        EXPECT_LE(steps.size(), 1u) << version;
        const int first = alignment.centres[1] - alignment.centres[0];
        EXPECT_TRUE(alignment.centres[0] == 6 && first >= 12 && first <= 28) << version;
    }
}

TEST(QRTables, FormatAndVersionWordsAreFarApartAndReadWithThreeErrors)
{
    std::vector<int> formats, versions;
    for (int i = 0; i < 32; ++i)
        formats.push_back(QRFormatWord(i / 8, i % 8));
    for (int version = 7; version <= 40; ++version)
        versions.push_back(QRVersionWord(version));
    const auto distance = [](int a, int b) { return std::popcount(static_cast<unsigned>(a ^ b)); };
    for (const std::vector<int>& words : {formats, versions})
        for (std::size_t i = 0; i < words.size(); ++i)
            for (std::size_t j = 0; j < i; ++j)
                ASSERT_GE(distance(words[i], words[j]), words.size() == 32 ? 7 : 8);
    EXPECT_EQ(QRFormatWord(LevelM, 5), 0b100000011001110); // the example of the standard
    EXPECT_EQ(QRVersionWord(7), 0b000111110010010100);

    // Three wrong bits in a copy are corrected; with four, the other copy counts.
    const int side = QRSide(9), right = QRFormatWord(LevelQ, 3), hurt = right ^ 0b100000001010001;
    const auto read = [&](int first, int second, QRFormat& format) {
        std::vector<bool> cells(static_cast<std::size_t>(side) * static_cast<std::size_t>(side));
        const auto at = [&](int row, int column) { return cells.begin() + row * side + column; };
        for (int i = 0; i < 30; ++i) {
            const QRCell cell = QRFormatCell(side, i / 15, i % 15);
            *at(cell.row, cell.column) = ((i < 15 ? first : second) >> i % 15 & 1) != 0;
        }
        return ReadQRFormat(
            side, [&](int row, int column) -> bool { return *at(row, column); }, format);
    };
    QRFormat format;
    ASSERT_TRUE(read(right ^ 0b1000010001, QRFormatWord(LevelL, 0), format));
    EXPECT_EQ(format.word, right);
    EXPECT_EQ(std::pair(format.level, format.mask), std::pair(int{LevelQ}, 3));
    ASSERT_TRUE(read(hurt, QRFormatWord(LevelH, 6) ^ 1, format));
    EXPECT_EQ(std::pair(format.level, format.mask), std::pair(int{LevelH}, 6));
    EXPECT_FALSE(read(hurt, hurt, format));
}

TEST(QRTables, TheVersionMustMatchTheSide)
{
    int version = 0;
    const auto light = [](int, int) { return false; };
    EXPECT_TRUE(ReadQRVersion(41, light, version));
    EXPECT_EQ(version, 6);
    for (const int side : {-3, 16, 17, 20, 22, 45, 177, 181, 2000000000})
        EXPECT_FALSE(ReadQRVersion(side, light, version)) << side;
}

TEST(DotCodeTables, PatternsAreDistinctAndHaveFiveDots)
{
    std::set<int> patterns;
    for (std::size_t i = 0; i < dotCodePatterns.size(); ++i) {
        EXPECT_EQ(std::popcount(dotCodePatterns[i]), 5);
        EXPECT_EQ(DotCodeValue(dotCodePatterns[i]), i);
        patterns.insert(dotCodePatterns[i]);
    }
    EXPECT_EQ(patterns.size(), 113u);
    int erased = 0;
    for (int pattern = 0; pattern < 512; ++pattern)
        erased += DotCodeValue(pattern) == erasedWord;
    EXPECT_EQ(erased, 512 - 113);
}

TEST(DotCodeTables, EachCellOfTheLatticeIsReadOnceAndTheCornersLast)
{
    const auto cells = std::make_unique<DotCodeCells>();
    for (const auto& [width, height] : {std::pair{7, 12}, {12, 7}, {5, 128}, {128, 127}, {31, 20}, {20, 31}})
        for (const bool first : {true, false}) {
            SCOPED_TRACE(testing::Message() << width << " x " << height << (first ? ", first" : ""));
            ASSERT_TRUE(cells->Prepare(width, height, first));
            ASSERT_EQ(cells->Dots(), width * height / 2);
            std::set<std::pair<int, int>> seen;
            for (int i = 0; i < cells->Dots(); ++i) {
                const DotPlace place = cells->Dot(i);
                ASSERT_LT(place.row, height);
                ASSERT_LT(place.column, width);
                ASSERT_EQ((place.row + place.column) % 2 == 0, first);
                seen.insert({place.row, place.column});
                const bool corner =
                    (place.row < 2 || place.row >= height - 2) && (place.column < 2 || place.column >= width - 2);
                EXPECT_TRUE(corner || i < cells->Dots() - 6);
            }
            EXPECT_EQ(seen.size(), static_cast<std::size_t>(cells->Dots()));
            EXPECT_LE(cells->Words(), maximumDotCodeWords);
        }
    EXPECT_FALSE(cells->Prepare(12, 12, true));
    EXPECT_FALSE(cells->Prepare(129, 12, true));
    EXPECT_FALSE(cells->Prepare(-1, 12, true));
}

} // namespace
} // namespace Tesk::codewords
