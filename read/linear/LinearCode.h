// What the scanner of lines and the decoders of the linear symbologies have in common: the edges of a line, the symbol
// that was read on it, and what is asked of its elements for grading.
#pragma once

#include "foundation/Enumerations.h"

#include <array>
#include <cstddef>
#include <cstdint>
#include <span>
#include <string_view>

namespace Tesk::linear {

/// The edges of a scan line. Positions count in 1/256 pixel and ascend.
struct EdgeList
{
    std::span<const int> positions;
    int length = 0;      ///< of the line, in 1/256 pixel
    bool rising = false; ///< the first edge leads from dark to bright
    bool forward = true; ///< in the direction of the scan; else the mirrored list, whose positions are negated
};

/// What is known of a read besides its text, as bits.
enum ReadFlags : int
{
    ForwardRead = 1,       ///< the text runs in the direction of the scan
    ChecksumFailed = 2,    ///< a checksum that does not void the read is wrong
    FNC1Read = 4,          ///< FNC1 stands in the first or second position
    ReaderProgrammed = 8,  ///< the symbol programs the reader
    AppendRequested = 16,  ///< the text is to be appended to that of other symbols
    ScannedAlongRows = 32, ///< set by the scanner, never by a decoder
};

/// The longest text, in bytes. What is longer is not reported: a part of it would be a misread.
constexpr int maximumTextLength = 63;
/// At least the number of elements of any symbol that is reported: two symbol characters of ten elements for each byte
/// of text, and the frame.
constexpr int maximumElements = 20 * maximumTextLength + 60;

/// A row of a stacked GS1 DataBar: half of its number and of its checks. It is no symbol before its other half is
/// found.
struct DatabarRow
{
    bool isUpper = false;
    int finder = 0;         ///< the value of its finder pattern
    int sum = 0;            ///< of its weighed elements
    std::int64_t value = 0; ///< of its two characters
};

/// A symbol that was read on a line, or with `NoSymbology` a row of one.
struct SymbolRead
{
    std::array<char, maximumTextLength + 1> text{}; ///< ends with a zero; it may hold others
    int textLength = 0;                             ///< in bytes, without the ending zero
    int flags = 0;                                  ///< `ReadFlags`
    int fnc1Position = 0;                           ///< 1 or 2 if FNC1 stands there, else 0
    Symbologies symbology = NoSymbology;
    /// Where the symbol begins and ends in the order of its text, on the line as it was scanned, in 1/256 pixel:
    /// `start` lies behind `end` where `ForwardRead` is not set.
    int start = 0, end = 0;
    int firstEdge = 0;    ///< index of the lower of its end edges in the forward list
    int elementCount = 0; ///< bars and spaces; there is one edge more
    /// The width of each element in modules, in the order of the text; wide elements of the two-width symbologies count
    /// as 2 in MSI, else as 3. It has `elementCount` bytes, and is valid until `Take` returns.
    std::span<const std::uint8_t> modules;
    DatabarRow row{}; ///< where it is one; the text tells it from others

    std::string_view Text() const { return {text.data(), static_cast<std::size_t>(textLength)}; }
};

/// Takes the reads of a line.
class ReadSink
{
public:
    virtual void Take(const SymbolRead& read) = 0;

protected:
    ~ReadSink() = default;
};

/// What to look for, with the defaults of the reader.
struct LinearSettings
{
    bool detectEAN128 = true, detectEAN13 = true, detectEAN8 = true, detectUPCA = true, detectUPCE = true;
    bool detect2of5 = true, detect39 = true, detect39Extended = true, detect93 = true, detectCodabar = true;
    bool detectDatabar = true, detectDatabarLimited = true;
    bool detectDatabarRows = false; ///< of stacked symbols
    bool detectPharmacode = false, detectITF14 = false, detectMatrix2of5 = false, detectMSI = false, detect11 = false;
    bool reverse = false;            ///< Pharmacodes are read against the direction of the scan
    bool checkQuietZone = true;      ///< the empty space beside the symbol must be there
    bool symbologyIdentifier = true; ///< "]C1" precedes the text of a Code 128 symbol with FNC1 in the first position
    int minimumBars = 3;             ///< of a Pharmacode
};

/// Runs all decoders that are enabled on the edges of a line, and gives their reads to `sink`. `scratch` must have room
/// for as many positions as the list has; without it only the symbologies of retail are looked for. Nothing is
/// allocated. Whether something was read.
bool DecodeLine(const EdgeList& forward, std::span<int> scratch, const LinearSettings& settings, ReadSink& sink);

/// The text of two rows that make a symbol; empty if they make none.
std::string_view TextOfDatabarRows(const DatabarRow& upper, const DatabarRow& lower,
                                   std::array<char, maximumTextLength + 1>& text);

/// The decodability V of ISO/IEC 15416 of a symbol whose elements measure `elementWidths` (any unit) and have the
/// nominal `modules`, both in the order of the text; 0 to 1, and 0 where the numbers of elements differ or fit no
/// symbol.
double Decodability(Symbologies symbology, std::span<const int> elementWidths, std::span<const std::uint8_t> modules);

/// Whether the reference decoding of the measured widths gives the elements that are expected.
bool ReferenceDecodes(Symbologies symbology, std::span<const int> elementWidths, std::span<const std::uint8_t> modules);

} // namespace Tesk::linear
