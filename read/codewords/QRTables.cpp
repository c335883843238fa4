// ISO/IEC 18004, QR Code Model 2: error correction characteristics (table 9), positions of alignment patterns (annex
// E), format and version information (annexes C and D).
#include "read/codewords/QRTables.h"

#include <bit>
#include <cstddef>
#include <cstdint>

namespace Tesk::codewords {

namespace {

/// Check words of a block, by level and version.
constexpr std::uint8_t checkWords[4][maximumQRVersion] = {
    {7,  10, 15, 20, 26, 18, 20, 24, 30, 18, 20, 24, 26, 30, 22, 24, 28, 30, 28, 28,
     28, 28, 30, 30, 26, 28, 30, 30, 30, 30, 30, 30, 30, 30, 30, 30, 30, 30, 30, 30},
    {10, 16, 26, 18, 24, 16, 18, 22, 22, 26, 30, 22, 22, 24, 24, 28, 28, 26, 26, 26,
     26, 28, 28, 28, 28, 28, 28, 28, 28, 28, 28, 28, 28, 28, 28, 28, 28, 28, 28, 28},
    {13, 22, 18, 26, 18, 24, 18, 22, 20, 24, 28, 26, 24, 20, 30, 24, 28, 28, 26, 30,
     28, 30, 30, 30, 30, 28, 30, 30, 30, 30, 30, 30, 30, 30, 30, 30, 30, 30, 30, 30},
    {17, 28, 22, 16, 22, 28, 26, 26, 24, 28, 24, 28, 22, 24, 24, 30, 28, 28, 26, 28,
     30, 24, 30, 30, 30, 30, 30, 30, 30, 30, 30, 30, 30, 30, 30, 30, 30, 30, 30, 30},
};

/// Blocks, by level and version.
constexpr std::uint8_t blockCounts[4][maximumQRVersion] = {
    {1, 1, 1, 1,  1,  2,  2,  2,  2,  4,  4,  4,  4,  4,  6,  6,  6,  6,  7,  8,
     8, 9, 9, 10, 12, 12, 12, 13, 14, 15, 16, 17, 18, 19, 19, 20, 21, 22, 24, 25},
    {1,  1,  1,  2,  2,  4,  4,  4,  5,  5,  5,  8,  9,  9,  10, 10, 11, 13, 14, 16,
     17, 17, 18, 20, 21, 23, 25, 26, 28, 29, 31, 33, 35, 37, 38, 40, 43, 45, 47, 49},
    {1,  1,  2,  2,  4,  4,  6,  6,  8,  8,  8,  10, 12, 16, 12, 17, 16, 18, 21, 20,
     23, 23, 25, 27, 29, 34, 34, 35, 38, 40, 43, 45, 48, 51, 53, 56, 59, 62, 65, 68},
    {1,  1,  2,  4,  4,  4,  5,  6,  8,  8,  11, 11, 16, 16, 18, 16, 19, 21, 25, 25,
     25, 34, 30, 32, 35, 37, 40, 42, 45, 48, 51, 54, 57, 60, 63, 66, 70, 74, 77, 81},
};

/// The distance of alignment patterns from each other, but for the first two; by version.
constexpr std::uint8_t alignmentSteps[maximumQRVersion] = {0,  12, 16, 20, 24, 28, 16, 18, 20, 22, 24, 26, 28, 20,
                                                           22, 24, 24, 26, 28, 28, 22, 24, 24, 26, 26, 28, 28, 24,
                                                           24, 26, 26, 26, 28, 28, 24, 26, 26, 26, 28, 28};

constexpr std::uint8_t protection[3][4] = {{3, 2, 1, 1}, {2, 0, 0, 0}, {1, 0, 0, 0}};

constexpr int formatPolynomial = 0x537, formatMask = 0x5412, versionPolynomial = 0x1F25;
/// At this distance a word could come from another one.
constexpr int tooFar = 4;

/// `data` with the remainder behind it that makes it a multiple of the polynomial, of degree `degree`.
constexpr int WithRemainder(int data, int polynomial, int degree)
{
    int remainder = data << degree;
    for (int bit = 17; bit >= degree; --bit)
        if ((remainder >> bit & 1) != 0) remainder ^= polynomial << (bit - degree);
    return data << degree | remainder;
}

int Distance(int a, int b)
{
    return std::popcount(static_cast<unsigned>(a ^ b));
}

} // namespace

QRBlocks BlocksOfQR(int version, int level)
{
    const auto v = static_cast<std::size_t>(version - 1), l = static_cast<std::size_t>(level);
    QRBlocks result{};
    result.words = CapacityOfQR(version).words;
    result.blocks = blockCounts[l][v];
    result.check = checkWords[l][v];
    result.shortData = result.Data() / result.blocks;
    result.shortBlocks = result.blocks - result.Data() % result.blocks;
    return result;
}

int MisdecodeProtection(int version, int level)
{
    return version <= 3 ? protection[static_cast<std::size_t>(version - 1)][static_cast<std::size_t>(level)] : 0;
}

QRCapacity CapacityOfQR(int version)
{
    const int side = QRSide(version), alignment = AlignmentOfQR(version).count;
    int modules = side * side - 3 * 64 - 2 * (side - 16) - 31; // finders, timing, format and its dark module
    // Alignment patterns; those between the finders share five modules with the timing patterns.
    if (alignment > 0) modules -= (alignment * alignment - 3) * 25 - 2 * (alignment - 2) * 5;
    if (version >= 7) modules -= 36;
    return {modules / 8, modules % 8};
}

QRAlignment AlignmentOfQR(int version)
{
    QRAlignment result;
    if (version < 2) return result;
    result.count = version / 7 + 2;
    int centre = QRSide(version) - 7;
    for (int i = result.count - 1; i > 0; --i, centre -= alignmentSteps[version - 1])
        result.centres[static_cast<std::size_t>(i)] = centre;
    result.centres[0] = 6;
    return result;
}

int QRFormatWord(int level, int mask)
{
    // In the symbol the levels are numbered with the lower bit inverted.
    return WithRemainder((level ^ 1) << 3 | mask, formatPolynomial, 10) ^ formatMask;
}

int QRVersionWord(int version)
{
    return WithRemainder(version, versionPolynomial, 12);
}

bool MatchQRFormat(int bits, QRFormat& format)
{
    int nearest = tooFar;
    for (int data = 0; data < 32; ++data) {
        const int level = data >> 3 ^ 1, mask = data & 7, word = QRFormatWord(level, mask);
        if (Distance(bits, word) >= nearest) continue;
        nearest = Distance(bits, word);
        format = {level, mask, word};
    }
    return nearest < tooFar;
}

bool MatchQRVersion(int bits, int& version)
{
    int nearest = tooFar;
    for (int candidate = 7; candidate <= maximumQRVersion; ++candidate) {
        const int distance = Distance(bits, QRVersionWord(candidate));
        if (distance >= nearest) continue;
        nearest = distance;
        version = candidate;
    }
    return nearest < tooFar;
}

} // namespace Tesk::codewords
