// Lids with a best-before date as a camera sees them: three printed lines, moved and turned, under uneven light and
// with the noise of a camera, and with one character missing or wrong if wanted.
#pragma once

#include "samples/Scene.h"

#include "Tesk.h"

#include <cmath>
#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

namespace lids {

constexpr int size = 360, lidRadius = 165;
/// Of the print, in pixels; characters stand in a grid, as a marking head puts them.
constexpr int pitch = 19, lineStep = 50, fontHeight = 38;

enum class Fault
{
    None,
    Missing,
    Wrong
};

constexpr const char* names[] = {"good", "missing character", "wrong character"};

/// What is printed, and which of its characters, counted without the blanks, is missing or wrong.
struct Lid
{
    Image picture;
    std::string lines[3];
    int faultAt = -1;
};

/// The order of the filter: fixed words, the date and the mark of the line, and a batch of digits with a letter.
constexpr const char* words = "BESTBEFORE";
constexpr int wordLength = 10, dateLength = 8, characters = 28;
/// Each fixed character is compared with its own kind alone, each other one with those of its class.
constexpr const char* filter = "BESTBEFORE%9%9%9%9%9%9%9%9L%9%9%9%9%u%9%9%9%9";

/// The characters in the order in which they are read.
inline std::string CharactersOf(const Lid& lid)
{
    std::string text;
    for (const std::string& line : lid.lines)
        for (const char c : line)
            if (c != ' ') text += c;
    return text;
}

/// What a reader makes of a good lid.
inline std::string TextOf(const Lid& lid)
{
    return lid.lines[0] + '\n' + lid.lines[1] + '\n' + lid.lines[2];
}

/// The lines of a lid: the date and the batch follow from a number.
inline void Compose(unsigned number, Lid& lid)
{
    const auto digits = [](unsigned value, unsigned count) {
        std::string text(count, '0');
        for (; count > 0; value /= 10)
            text[--count] = static_cast<char>('0' + value % 10);
        return text;
    };
    lid.lines[0] = "BEST BEFORE";
    lid.lines[1] = digits(1 + number * 7 % 28, 2) + ' ' + digits(1 + number * 5 % 12, 2) + ' ' +
                   digits(2026 + number * 389 % 973, 4);
    lid.lines[2] =
        'L' + digits(4711 + number * 317, 4) + static_cast<char>('A' + number % 6) + ' ' + digits(625 + number * 83, 4);
    lid.faultAt = -1;
}

/// Takes one character away, or puts one there that the filter refuses: a letter for a digit, and the other way round.
inline void Spoil(Fault fault, unsigned place, Lid& lid)
{
    if (fault == Fault::None) return;
    lid.faultAt = static_cast<int>(place % characters);
    int index = 0;
    for (std::string& line : lid.lines)
        for (char& c : line)
            if (c != ' ' && index++ == lid.faultAt) {
                const bool isDigit = c >= '0' && c <= '9';
                c = fault == Fault::Missing ? '\0' : isDigit ? "AEFHKT"[place % 6] : "1247"[place % 4];
            }
}

inline void DrawPrint(const Lid& lid, Image& dst)
{
    const Tesk::GraphSettings kept;
    Graph::BeginImageTarget(dst);
    Graph::Zoom = 1;
    Graph::AutoColors = false;
    Graph::TextColor = Black;
    Graph::FillColor = NoColor;
    Graph::TextAlignX = Graph::TextAlignY = 0;
    Graph::FontName = L"DejaVu Sans Mono";
    Graph::FontSize = fontHeight;
    for (int row = 0; row < 3; row++) {
        const std::string& line = lid.lines[row];
        const double left = size / 2.0 - pitch * (static_cast<double>(line.size()) - 1) / 2;
        for (std::size_t i = 0; i < line.size(); i++)
            if (const auto c = static_cast<wchar_t>(line[i]); c > L' ')
                Graph::Text(left + pitch * static_cast<double>(i), size / 2.0 + lineStep * (row - 1),
                            std::wstring(1, c).c_str());
    }
    Graph::EndImageTarget(dst);
}

/// Takes the picture of a lid, turned by an angle in degrees about its middle and moved by up to `shift` pixels.
inline void Photograph(Lid& lid, double degrees, scene::Noise& noise, double shift = 6)
{
    Image flat, turned;
    flat.Set(size, size, Gray);
    Operator::Copy(255, flat);
    DrawPrint(lid, flat);
    Kernel::Binomial(flat, flat);
    turned.Set(size, size, Gray);
    const XY middle(size / 2.0, size / 2.0),
        to(middle.X + 2 * shift * noise.Next(), middle.Y + 2 * shift * noise.Next());
    Geometry::Rotate(middle, to, degrees, 1, flat, turned);
    const double light = 1 + 0.16 * noise.Next(), slope = 0.3 * noise.Next();
    lid.picture.Set(size, size, Gray);
    for (int y = 0; y < size; y++)
        for (int x = 0; x < size; x++) {
            const double inside = scene::Coverage(std::hypot(x - to.X, y - to.Y) - lidRadius, 3);
            const double shade = light * (1 + slope * (x - to.X) / size);
            const double print = inside > 0 ? turned.Row(y)[x] / 255.0 : 1;
            // The sum of uniform numbers is nearly normal: a deviation of 4.
            const double grain = 7 * (noise.Next() + noise.Next() + noise.Next() + noise.Next());
            const double value = shade * (40 + inside * (20 + 130 * print)) + grain;
            lid.picture.Row(y)[x] = static_cast<std::uint8_t>(Clamp(value, 0.0, 255.0));
        }
}

/// A lid by its number, turned by up to `most` degrees.
inline void Make(unsigned number, Fault fault, scene::Noise& noise, Lid& lid, double most = 5)
{
    Compose(number, lid);
    Spoil(fault, number * 13, lid);
    Photograph(lid, 2 * most * noise.Next(), noise);
}

/// Sets a reader to look for the layout at any angle up to some degrees, and to reject what is not what the filter asks
/// for.
inline void SetChecks(CharReader& reader, double most = 5)
{
    reader.LayoutMode = RigidLayout;
    reader.MinAngle = -most - 1;
    reader.MaxAngle = most + 1;
    reader.AsciiFilter = filter;
    reader.OCVScoring = true;
    reader.DiscardBadScores = true;
    reader.JitterX = reader.JitterY = 2;
}

/// Good lids to train a font on, each turned by another angle; the first one is upright, and gives the layout. There
/// are two for each letter at the least.
constexpr unsigned trained = 13;

inline void MakeTrained(unsigned number, scene::Noise& noise, Lid& lid, double most = 5)
{
    Compose(number, lid);
    Photograph(lid, most * (2.0 * ((number + trained / 2) % trained) / (trained - 1) - 1), noise);
}

inline void Teach(scene::Noise& noise, CharReader& reader, double most = 5)
{
    for (unsigned i = 0; i < trained && Status::Error().Code == NoError; i++) {
        Lid lid;
        MakeTrained(i, noise, lid, most);
        reader.CharsSegment(lid.picture);
        reader.FontStringInsert(lid.picture, CharactersOf(lid).c_str());
        // The size of the first ones holds for all.
        if (i == 0) reader.TakeLayout();
        reader.GuessSize = false;
    }
    SetChecks(reader, most);
}

/// The characters, counted without the blanks, that a reader rejects: missing ones, and those that are not what the
/// filter asks for.
inline std::vector<int> Doubtful(const CharReader& reader)
{
    std::vector<int> doubtful;
    int index = 0;
    for (const char* c = reader.AsciiString; *c; c++) {
        if (*c == ' ' || *c == '\n') continue;
        if (*c == '?') doubtful.push_back(index);
        index++;
    }
    return doubtful;
}

} // namespace lids
