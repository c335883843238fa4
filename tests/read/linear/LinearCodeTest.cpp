// Decoders of linear symbologies: symbols of all characters in both directions, disturbed widths, quiet zones, check
// digits, several symbols on a line, and lines on which there is nothing.
#include "read/linear/LinearCode.h"

#include <gtest/gtest.h>

#include "Lines.h"
#include "PrintedSymbols.h"

#include <algorithm>
#include <climits>
#include <cstddef>
#include <cstdint>
#include <random>
#include <string>
#include <string_view>
#include <tuple>
#include <utility>
#include <vector>

namespace Tesk {
namespace {

using checks::HasOnly;
using checks::PrintedSymbol;
using checks::printedSymbols;
using checks::Read;
using checks::Reversed;
using checks::ScanLine;

/// Whether elements of more than one module all count as wide.
bool IsTwoWidth(Symbologies symbology)
{
    return symbology == Code39 || symbology == Code39Extended || symbology == CodeCodabar || symbology == Code11 ||
           symbology == CodeMatrix2of5;
}

/// Widths with each wide element as 3.
std::string WideAsThree(std::string widths)
{
    std::ranges::replace_if(
        widths, [](char c) { return c > '1'; }, '3');
    return widths;
}

const Read* Find(const std::vector<Read>& reads, Symbologies symbology)
{
    const auto found = std::ranges::find(reads, symbology, &Read::symbology);
    return found == reads.end() ? nullptr : &*found;
}

const PrintedSymbol& FirstOf(Symbologies symbology)
{
    return *std::ranges::find(printedSymbols, symbology, &PrintedSymbol::symbology);
}

TEST(LinearCodeTest, EveryPrintedSymbolIsReadInBothDirectionsWithItsElements)
{
    for (const PrintedSymbol& printed : printedSymbols) {
        for (const bool backward : {false, true}) {
            const std::string widths = backward ? Reversed(printed.widths) : std::string(printed.widths);
            ScanLine line;
            const std::vector<Read> reads =
                line.AddElement(7).AddElement(12).Add(widths).AddElement(12).AddElement(7).Decode();
            if (backward && printed.symbology == CodePharmacode) {
                EXPECT_FALSE(HasOnly(reads, CodePharmacode, printed.text));
                line.settings.reverse = true;
                EXPECT_TRUE(HasOnly(line.Decode(), CodePharmacode, printed.text)) << printed.text;
                continue;
            }
            ASSERT_TRUE(HasOnly(reads, printed.symbology, printed.text)) << printed.symbology << ' ' << printed.text;
            const Read& read = *Find(reads, printed.symbology);
            const std::size_t last = 2 + widths.size();
            EXPECT_EQ(read.start, line.At(backward ? last : 2));
            EXPECT_EQ(read.end, line.At(backward ? 2 : last));
            EXPECT_EQ(read.firstEdge, 2);
            EXPECT_EQ((read.flags & linear::ForwardRead) != 0, !backward);
            const std::string expected(printed.widths);
            EXPECT_EQ(read.modules, IsTwoWidth(printed.symbology) ? WideAsThree(expected) : expected) << printed.text;
        }
    }
}

TEST(LinearCodeTest, InvertedContrastReadsAlikeButForPharmacode)
{
    for (const PrintedSymbol& printed : printedSymbols) {
        ScanLine line;
        const auto reads = line.Add(printed.widths).Decode(true);
        EXPECT_EQ(HasOnly(reads, printed.symbology, printed.text), printed.symbology != CodePharmacode) << printed.text;
    }
}

TEST(LinearCodeTest, SpreadInkAndJitterAreTolerated)
{
    int read = 0, wrong = 0, all = 0;
    for (const PrintedSymbol& printed : printedSymbols) {
        for (const double spread : {-0.2, 0.2}) {
            ScanLine line;
            line.inkSpread = spread;
            line.jitter = 0.06;
            const auto reads = line.Add(printed.widths).Decode();
            ++all;
            read += HasOnly(reads, printed.symbology, printed.text) ? 1 : 0;
            const Read* found = Find(reads, printed.symbology);
            wrong += found && found->text != printed.text ? 1 : 0;
        }
    }
    EXPECT_EQ(wrong, 0);
    EXPECT_GE(read, all * 98 / 100);
}

TEST(LinearCodeTest, QuietZonesAreAskedForOnEitherSideUnlessAtAnEndOfTheLine)
{
    for (const PrintedSymbol& printed : printedSymbols) {
        if (printed.symbology == CodeDatabar || printed.symbology == CodeDatabarLimited) continue; // they need none
        const double narrow = printed.symbology == CodePharmacode ? 1.5 : 4;
        for (const bool before : {true, false}) {
            ScanLine line;
            line.AddElement(1).AddElement(before ? narrow : 14).Add(printed.widths);
            line.AddElement(before ? 14 : narrow).AddElement(1);
            EXPECT_FALSE(HasOnly(line.Decode(), printed.symbology, printed.text)) << printed.text;
            line.settings.checkQuietZone = false;
            const auto reads = line.Decode();
            // Without quiet zones more may be found, of what lies beside the symbol too.
            const bool found = std::ranges::any_of(
                reads, [&](const Read& r) { return r.symbology == printed.symbology && r.text == printed.text; });
            if (printed.symbology != CodePharmacode) {
                EXPECT_TRUE(found) << printed.text;
            }
        }
    }
}

TEST(LinearCodeTest, EachSymbologyIsReadOnlyWhereItIsEnabled)
{
    for (const PrintedSymbol& printed : printedSymbols) {
        ScanLine line;
        line.Add(printed.widths);
        linear::LinearSettings& s = line.settings;
        s.detectEAN128 = s.detectEAN13 = s.detectEAN8 = s.detectUPCA = s.detectUPCE = s.detect2of5 = s.detect39 = false;
        s.detect39Extended = s.detect93 = s.detectCodabar = s.detectDatabar = s.detectDatabarLimited = false;
        s.detectPharmacode = s.detectITF14 = s.detectMatrix2of5 = s.detectMSI = s.detect11 = false;
        EXPECT_TRUE(line.Decode().empty());
    }
}

TEST(LinearCodeTest, RetailAndInterleavedSymbologiesShareTheirSymbolsBySettings)
{
    ScanLine retail;
    retail.Add(FirstOf(CodeUPCA).widths);
    EXPECT_TRUE(HasOnly(retail.Decode(), CodeUPCA, "930415678207"));
    retail.settings.detectEAN13 = false;
    EXPECT_TRUE(HasOnly(retail.Decode(), CodeUPCA, "930415678207"));
    retail.settings.detectEAN13 = true;
    retail.settings.detectUPCA = false;
    EXPECT_TRUE(HasOnly(retail.Decode(), CodeEAN13, "0930415678207"));
    ScanLine other;
    other.settings.detectEAN13 = false;
    EXPECT_EQ(Find(other.Add(FirstOf(CodeEAN13).widths).Decode(), CodeUPCA), nullptr);

    ScanLine interleaved, itf14;
    interleaved.settings.detect2of5 = itf14.settings.detect2of5 = false;
    EXPECT_TRUE(interleaved.Add(FirstOf(Code2of5).widths).Decode().empty()) << "20 digits are no ITF-14";
    EXPECT_TRUE(HasOnly(itf14.Add(FirstOf(CodeITF14).widths).Decode(), CodeITF14, FirstOf(CodeITF14).text));
    itf14.settings.detectITF14 = false;
    itf14.settings.detect2of5 = true;
    EXPECT_TRUE(HasOnly(itf14.Decode(), Code2of5, FirstOf(CodeITF14).text));
}

TEST(LinearCodeTest, FullASCIIPairsStandForThemselvesWithoutThatSymbology)
{
    ScanLine line;
    line.settings.detect39Extended = false;
    const auto reads = line.Add(printedSymbols[0].widths).AddElement(20).Add(FirstOf(Code39).widths).Decode();
    ASSERT_EQ(reads.size(), 2u) << "two symbols on a line";
    EXPECT_EQ(reads[0].symbology, CodeUPCA);
    EXPECT_EQ(reads[1].text, FirstOf(Code39).text);
}

TEST(LinearCodeTest, TwoSymbolsOfOneKindOnALineAreTwoReads)
{
    ScanLine line;
    const auto reads = line.Add("1113112111414111213111111231321113121132111")
                           .AddElement(8)
                           .Add("1113211222121221411111111132123111141231111")
                           .Decode();
    ASSERT_EQ(reads.size(), 2u);
    EXPECT_EQ(reads[0].text, "96385074");
    EXPECT_EQ(reads[1].text, "01234565");
    EXPECT_EQ(reads[1].firstEdge, 44);
}

/// A symbol of a table of two-width characters, with gaps.
std::string Gapped(std::string_view letters, std::string_view characters, const std::vector<std::string_view>& patterns)
{
    std::string widths;
    for (const char letter : letters) {
        for (const char element : patterns[characters.find(letter)])
            widths += element == 'W' ? '3' : '1';
        widths += '1';
    }
    widths.pop_back();
    return widths;
}

TEST(LinearCodeTest, AWrongCheckIsFlaggedOrVoidsTheSymbolAsItsSymbologySays)
{
    // Code 39 of 1, 2 and its check character 3, and with another one.
    const std::vector<std::string_view> code39 = {"NWNNWNWNN", "WNNWNNNNW", "NNWWNNNNW", "WNWWNNNNN", "NNNWWNNNW"};
    for (const auto& [text, right] : {std::pair{"*123*", true}, {"*124*", false}}) {
        ScanLine line;
        const auto reads = line.Add(Gapped(text, "*1234", code39)).Decode();
        ASSERT_TRUE(HasOnly(reads, Code39, std::string_view(text).substr(1, 3)));
        EXPECT_EQ((reads[0].flags & linear::ChecksumFailed) == 0, right);
    }
    // Code 11 of 123-45 and its check character: 5 + 2*4 + 3*10 + 4*3 + 5*2 + 6*1 = 71, which is 5 modulo 11.
    const std::vector<std::string_view> code11 = {"NNWWN", "WNNNW", "NWNNW", "WWNNN", "NNWNW", "WNWNN", "NNWNN"};
    for (const auto& [text, right] : {std::pair{"*123-455*", true}, {"*123-454*", false}}) {
        ScanLine line;
        const auto reads = line.Add(Gapped(text, "*12345-", code11)).Decode();
        ASSERT_TRUE(HasOnly(reads, Code11, std::string_view(text).substr(1, 7)));
        EXPECT_EQ((Find(reads, Code11)->flags & linear::ChecksumFailed) == 0, right);
    }
    // The check digits of 2 of 5, MSI and Codabar.
    for (const auto& [symbology, text, right] : {std::tuple{Code2of5, "42", false},
                                                 {CodeITF14, "12345678901231", true},
                                                 {CodeMSI, "01234567897", true},
                                                 {CodeMSI, "80", false},
                                                 {CodeCodabar, "D40154C", true},
                                                 {CodeCodabar, "C7D", false}}) {
        const auto printed = std::ranges::find(printedSymbols, std::string_view(text), &PrintedSymbol::text);
        ASSERT_NE(printed, std::end(printedSymbols)) << text;
        ScanLine line;
        const auto reads = line.Add(printed->widths).Decode();
        ASSERT_TRUE(HasOnly(reads, symbology, text));
        EXPECT_EQ((Find(reads, symbology)->flags & linear::ChecksumFailed) == 0, right) << text;
    }
    // A digit of EAN-8, two characters of Code 128 or of Code 93 exchanged: nothing is left.
    std::string ean(FirstOf(CodeEAN8).widths), code128(FirstOf(CodeEAN128).widths), code93(FirstOf(Code93).widths);
    std::swap_ranges(ean.begin() + 3, ean.begin() + 7, ean.begin() + 7);
    std::swap_ranges(code128.begin() + 12, code128.begin() + 18, code128.begin() + 18);
    std::swap_ranges(code93.begin() + 12, code93.begin() + 18, code93.begin() + 18);
    for (const std::string& widths : {ean, code128, code93}) {
        ScanLine line;
        for (const Symbologies symbology : {CodeEAN8, CodeEAN128, Code93})
            EXPECT_EQ(Find(line.Add(widths).Decode(), symbology), nullptr);
    }
}

TEST(LinearCodeTest, FunctionCharactersOfCode128AreTold)
{
    const auto gs1 = std::ranges::find(printedSymbols, ']', [](const PrintedSymbol& p) { return p.text[0]; });
    ASSERT_NE(gs1, std::end(printedSymbols));
    ScanLine line;
    line.Add(gs1->widths);
    Read read = line.Decode().at(0);
    EXPECT_EQ(read.fnc1Position, 1);
    EXPECT_NE(read.flags & linear::FNC1Read, 0);
    line.settings.symbologyIdentifier = false;
    EXPECT_EQ(line.Decode().at(0).text, gs1->text.substr(3));

    // Start B, FNC3, A, FNC1, FNC2, B: values 104 96 33 102 97 34, and the check 1*96 + 2*33 + 3*102 + 4*97 + 5*34 +
    // 104, which is 100 modulo 103.
    ScanLine functions;
    const auto reads = functions
                           .Add("211214"
                                "114311"
                                "111323"
                                "411131"
                                "411113"
                                "131123"
                                "114131"
                                "2331112")
                           .Decode();
    ASSERT_TRUE(HasOnly(reads, CodeEAN128,
                        "A\x1d"
                        "B"));
    EXPECT_EQ(reads[0].flags, linear::ForwardRead | linear::ReaderProgrammed | linear::AppendRequested);
    // Start B, A, FNC1, B: 104 + 33 + 2*102 + 3*34 = 443, which is 31.
    ScanLine second;
    const auto industry = second
                              .Add("211214"
                                   "111323"
                                   "411131"
                                   "131123"
                                   "212321"
                                   "2331112")
                              .Decode();
    ASSERT_TRUE(HasOnly(industry, CodeEAN128, "AB"));
    EXPECT_EQ(industry[0].fnc1Position, 2);
}

TEST(LinearCodeTest, TextsOfMoreThan63BytesAreNotCutButLeft)
{
    const std::vector<std::string_view> code39 = {"NWNNWNWNN", "WNNWNNNNW"};
    for (const std::size_t length : {63u, 64u}) {
        ScanLine line;
        const std::string text(length, '1');
        EXPECT_EQ(HasOnly(line.Add(Gapped('*' + text + '*', "*1", code39)).Decode(), Code39, text), length == 63);
    }
}

TEST(LinearCodeTest, APharmacodeNeedsItsBarsAndBothKinds)
{
    ScanLine line;
    line.Add("12321"); // narrow, wide, narrow: 1*4 + 2*2 + 1
    EXPECT_TRUE(HasOnly(line.Decode(), CodePharmacode, "9"));
    line.settings.minimumBars = 4;
    EXPECT_EQ(Find(line.Decode(), CodePharmacode), nullptr);
    for (const std::string_view uniform : {"12121", "32323"}) {
        ScanLine other;
        EXPECT_EQ(Find(other.Add(uniform).Decode(), CodePharmacode), nullptr);
    }
}

TEST(LinearCodeTest, LinesOfAnythingAreSurvivedAndMostlySilent)
{
    std::mt19937 generator(3);
    struct : linear::ReadSink
    {
        int reads = 0;
        void Take(const linear::SymbolRead& read) override
        {
            ++reads;
            EXPECT_LE(read.textLength, linear::maximumTextLength);
        }
    } sink;
    ScanLine defaults;
    std::vector<int> positions, scratch;
    for (int round = 0; round < 3000; ++round) {
        positions.resize(generator() % 120);
        scratch.resize(positions.size());
        const int kind = round % 4;
        for (int& position : positions)
            position = kind == 0   ? static_cast<int>(generator())
                       : kind == 1 ? 7
                                   : static_cast<int>(generator() % 50000);
        if (kind < 3) std::ranges::sort(positions); // descending lists are no lists, but must do no harm
        linear::LinearSettings settings = defaults.settings;
        settings.minimumBars = kind == 0 ? INT_MIN : 3;
        linear::DecodeLine({positions, INT_MAX, round % 2 == 0, true}, scratch, settings, sink);
    }
    EXPECT_LT(sink.reads, 1000);
}

TEST(LinearCodeTest, DecodabilityFollowsTheDistanceToTheThreshold)
{
    for (const PrintedSymbol& printed : printedSymbols) {
        if (IsTwoWidth(printed.symbology)) continue;
        std::vector<int> widths;
        std::vector<std::uint8_t> modules;
        for (const char width : printed.widths) {
            widths.push_back(100 * (width - '0'));
            modules.push_back(static_cast<std::uint8_t>(width - '0'));
        }
        EXPECT_NEAR(linear::Decodability(printed.symbology, widths, modules), 1, 1e-9) << printed.symbology;
        EXPECT_TRUE(linear::ReferenceDecodes(printed.symbology, widths, modules));
        widths.pop_back();
        EXPECT_EQ(linear::Decodability(printed.symbology, widths, modules), 0);
    }
    // The first edge inside the first digit of EAN-8 is off by 20 % of a module: its first two sums by none and by 0.2.
    std::vector<int> widths;
    std::vector<std::uint8_t> modules;
    for (const char width : FirstOf(CodeEAN8).widths) {
        widths.push_back(100 * (width - '0'));
        modules.push_back(static_cast<std::uint8_t>(width - '0'));
    }
    widths[3] += 20;
    widths[4] -= 20;
    EXPECT_NEAR(linear::Decodability(CodeEAN8, widths, modules), 0.6, 1e-9);
    widths[3] += 40;
    widths[4] -= 40;
    EXPECT_FALSE(linear::ReferenceDecodes(CodeEAN8, widths, modules));

    // MSI of the digit 0: the threshold is 12/8 modules. Of seven narrow elements one has 1.2, of six wide ones
    // one 1.8.
    const std::vector<int> msi = {200, 100, 100, 200, 100, 200, 100, 200, 120, 180, 100, 200, 100};
    const std::vector<std::uint8_t> expected = {2, 1, 1, 2, 1, 2, 1, 2, 1, 2, 1, 2, 1};
    const double narrow = 720.0 / 7, wide = 1180.0 / 6;
    EXPECT_NEAR(linear::Decodability(CodeMSI, msi, expected), std::min(30 / (150 - narrow), 30 / (wide - 150)), 1e-9);
}

TEST(LinearCodeTest, CodabarIsReadWhereItsSpacesAreWiderThanItsBars)
{
    // In pixels: the third widest element of the 1 is a space as wide as the second, and yet a narrow one.
    ScanLine line;
    line.module = 256;
    line.AddElement(90).AddElement(60);
    for (const double width : {3.0, 5.5,  8.0, 9.5, 4.0, 9.7, 3.0, 5.5,  2.9, 6.4, 3.1, 5.3,
                               6.8, 10.9, 2.6, 5.5, 4.0, 9.5, 2.8, 10.5, 3.1, 5.0, 8.0})
        line.AddElement(width);
    EXPECT_TRUE(HasOnly(line.AddElement(60).AddElement(90).Decode(), CodeCodabar, "A1B"));
}

} // namespace
} // namespace Tesk
