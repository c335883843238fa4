// Scan lines over symbols whose elements are told, and what is read on them.
#pragma once

#include "read/linear/LinearCode.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <random>
#include <string>
#include <string_view>
#include <vector>

namespace Tesk::checks {

struct Read
{
    Symbologies symbology;
    std::string text, modules;
    int flags, fnc1Position, start, end, firstEdge;

    bool operator==(const Read&) const = default;
};

/// The edges of a line, in the making.
class ScanLine
{
public:
    int module = 640;                 ///< in 1/256 pixel
    double jitter = 0, inkSpread = 0; ///< in modules: of each edge at random, and of each bar in width
    linear::LinearSettings settings;

    ScanLine()
    {
        settings.detectPharmacode = settings.detectITF14 = settings.detectMatrix2of5 = true;
        settings.detectMSI = settings.detect11 = true;
    }

    /// Adds elements of which each digit tells the width; the first one of the line is a bar.
    ScanLine& Add(std::string_view widths)
    {
        for (const char width : widths)
            AddElement(width - '0');
        return *this;
    }
    ScanLine& AddElement(double modules)
    {
        if (positions_.empty()) positions_.push_back(Place());
        exact_ += modules;
        isBar_ = !isBar_;
        positions_.push_back(Place());
        return *this;
    }

    std::vector<Read> Decode(bool inverted = false) const
    {
        struct Sink : linear::ReadSink
        {
            std::vector<Read> reads;
            void Take(const linear::SymbolRead& read) override
            {
                std::string modules;
                for (const std::uint8_t width : read.modules)
                    modules += static_cast<char>('0' + width);
                reads.push_back({read.symbology, std::string(read.Text()), modules, read.flags, read.fnc1Position,
                                 read.start, read.end, read.firstEdge});
                EXPECT_EQ(read.modules.size(), static_cast<std::size_t>(read.elementCount));
            }
        } sink;
        std::vector<int> scratch(positions_.size());
        const linear::EdgeList list{positions_, positions_.back() + 5000, inverted, true};
        const bool found = linear::DecodeLine(list, scratch, settings, sink);
        EXPECT_EQ(found, !sink.reads.empty());
        return sink.reads;
    }

    int At(std::size_t edge) const { return positions_[edge]; }

private:
    int Place()
    {
        std::uniform_real_distribution<double> random(-jitter, jitter);
        const double spread = isBar_ ? inkSpread / 2 : -inkSpread / 2;
        return 5000 + static_cast<int>(module * (exact_ + random(generator_) + spread));
    }

    std::vector<int> positions_;
    double exact_ = 0;
    bool isBar_ = false;
    std::mt19937 generator_{7};
};

inline std::string Reversed(std::string_view text)
{
    return {text.rbegin(), text.rend()};
}

/// Whether one of the reads has the text, and none of its symbology another one.
inline bool HasOnly(const std::vector<Read>& reads, Symbologies symbology, std::string_view text)
{
    return std::ranges::any_of(reads, [&](const Read& r) { return r.symbology == symbology && r.text == text; }) &&
           std::ranges::none_of(reads, [&](const Read& r) { return r.symbology == symbology && r.text != text; });
}

} // namespace Tesk::checks
