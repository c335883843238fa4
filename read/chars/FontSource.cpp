// The thumbnails of a font as source text in C.
#include "read/chars/FontSource.h"

#include "read/chars/Font.h"

#include <cstdint>
#include <cstdio>

namespace Tesk::chars {

namespace {

/// Appends as `printf` would print.
template <typename... Values>
void Print(std::string& text, const char* format, Values... values)
{
    constexpr std::size_t longest = 256; // four doubles of fewer than 20 digits, and four integers, are shorter
    char line[longest];
    const int length = std::snprintf(line, longest, format, values...);
    text.append(line, length < 0 ? 0 : static_cast<std::size_t>(length));
}

void PrintRow(std::string& text, const std::uint8_t* pixels, int count)
{
    for (int x = 0; x < count; x++)
        Print(text, "%3d, ", int{pixels[x]});
}

/// All pixels in lines of 16, each ended by a line break.
void PrintPixels(std::string& text, const Image& thumbnail)
{
    constexpr int inLine = 16;
    constexpr const char* lineBreak = "\n\t\t\t";
    int printed = 0;
    for (int y = 0; y < thumbnail.Height; y++)
        for (int x = 0; x < thumbnail.Width; x++) {
            PrintRow(text, thumbnail.Row(y) + x, 1);
            if (++printed % inLine == 0) text += lineBreak;
        }
    if (printed % inLine != 0) text += lineBreak;
}

} // namespace

std::string TableSource(const Font& font, int fontWidth, int fontHeight)
{
    std::string text;
    Print(text, "\tconst int FontCharWidth= %d, FontCharHeight= %d;\n", fontWidth, fontHeight);
    Print(text, "\tconst int NumFontChars= %d;\n", font.Count());
    text += "\tFontChar Thumb[NumFontChars]=\n\t{\n";
    for (int i = 0; i < font.Count(); i++) {
        const FontChar& character = font[i];
        Print(text, "\t\t{\n\t\t\t'%c', %.0f, %.0f, %.0f,\n\t\t\t{\n\t\t\t", int{character.Code}, character.SampleCount,
              character.Sum, character.Spread);
        PrintPixels(text, character.Thumbnail);
        text += "}\n\t\t},\n";
    }
    text += "\t};\n\n";
    return text;
}

std::string ArraysSource(const Font& font)
{
    std::string text;
    for (int i = 0; i < font.Count(); i++) {
        const FontChar& character = font[i];
        const Image& thumbnail = character.Thumbnail;
        Print(text, "// \"%c\" (%d)\n", int{character.Code}, character.Class);
        Print(text, "static byte _CHAR_%d[%d * %d]=\n{\n", i, +thumbnail.Width, +thumbnail.Height);
        for (int y = 0; y < thumbnail.Height; y++) {
            PrintRow(text, thumbnail.Row(y), thumbnail.Width);
            text += '\n';
        }
        text += "};\n\n";
    }
    Print(text, "FontChar Captcha[%d]=\n{\n", font.Count());
    for (int i = 0; i < font.Count(); i++) {
        const FontChar& character = font[i];
        Print(text, "{ %d, %d, %d, %d, %.0f., %.0f., %.0f., _CHAR_%d },\n", int{character.Code}, character.Class,
              +character.Thumbnail.Width, +character.Thumbnail.Height, character.SampleCount, character.Sum,
              character.Spread, i);
    }
    text += "};\n\n";
    return text;
}

} // namespace Tesk::chars
