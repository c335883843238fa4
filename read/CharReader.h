// The reader of printed characters.
#pragma once

#include "foundation/ReadOnly.h"
#include "foundation/ReadOnlyText.h"
#include "measure/Blobs.h"
#include "read/FontChar.h"

#include <initializer_list>
#include <memory>
#include <string>
#include <utility>

namespace Tesk {

class Archive;
class Entry;
class Image;
struct PathNames;

namespace chars {

struct ReaderState;

/// The font, the layout and the characters found. A copy has those of its own.
class OwnChars
{
public:
    OwnChars();
    OwnChars(const OwnChars& other);
    OwnChars& operator=(const OwnChars& other);
    ~OwnChars();

    ReaderState& operator*() const { return *state_; }
    ReaderState* operator->() const { return state_.get(); }

private:
    std::unique_ptr<ReaderState> state_;
};

} // namespace chars

/// The settings of a reader of characters.
struct CharReaderSettings
{
    /// \name Settings of the segmentation
    /// @{
    int Quadrant = 0;            ///< quarter turns that make the text upright
    bool LocalThreshold = false; ///< compares pixels with the mean around them
    int Threshold = Auto;        ///< 0 to 255; `Auto` for the best one
    bool WhiteOnBlack = false;
    int CharWidth = 32, CharHeight = 40; ///< of a character, in pixels
    bool GuessSize = true;               ///< `CharsSegment` finds the two
    bool KeepRatio = false;              ///< keeps their ratio then
    bool RepairBroken = true;            ///< joins small pieces that fit in one character
    int Dotted = 0;                      ///< half the gap between printed dots that is closed, 0 to 10
    int InkingCorrection = 0;            ///< strokes become thicker, or thinner where negative
    int Masking = 0;                     ///< pixels around strokes outside which the background is cleaned, 0 to 15
    bool AlignChars = false;             ///< the characters of a line get one height
    bool EvenlySpaceChars = false;       ///< kept with the font; changes nothing
    int MaxTouching = 5;                 ///< characters that may touch; -n for exactly n characters in each line
    int SplitRows = 0;                   ///< lines, to be cut apart; 0 cuts none
    bool VariableWidth = false;          ///< boxes keep widths of their own
    double GapFraction = 0.1;            ///< space between characters, as a fraction of `CharWidth`
    double DotFraction = 0.25;           ///< pieces smaller than this fraction of a character are dropped
    /// @}

    /// \name Settings of the reading
    /// @{
    double MinimumScore = 0.9;     ///< -1 to 1
    double MinimumContrast = 0;    ///< -1 to 1, as a fraction of that of the font
    bool OCVScoring = false;       ///< compares characters that the filter fixes, too
    wchar_t GlobalFilter = L'*';   ///< class of the characters allowed anywhere
    bool UseSafeScores = false;    ///< each font character has a minimum score of its own
    bool DiscardBadScores = false; ///< "?" for characters of too low a score or contrast
    int JitterX = 1, JitterY = 1;  ///< pixels by which boxes are moved for the best score
    /// What each position may hold: a character stands for itself, "%x" for the class x; the last element holds on.
    /// The wide one counts where the narrow one is "%*".
    std::string AsciiFilter = "%*";
    std::wstring UnicodeFilter = L"%*";
    bool InsertSpaces = true, InsertNewlines = true;
    double MinAngle = -5, MaxAngle = 5; ///< of a layout, in degrees
    LayoutModes LayoutMode = NoLayout;
    int FontWidth = 16, FontHeight = 20; ///< of the thumbnails that are compared, in pixels
    /// @}
};

/// Isolates the characters of an image, arranges them in lines, and compares each with the characters of a trained
/// font by normalised correlation of thumbnails.
///
///     CharReader reader;
///     reader.CharsSegment(sample);
///     reader.FontStringInsert(sample, "0123456789");
///     reader.CharsRead(image);
///     std::puts(reader.AsciiString);
///
/// As a table it has a blob for each character found, in reading order, with the features of its box,
/// `BlobMatchingScore` and three of the user: the index of the font character (60), score (61) and contrast (62). Boxes
/// count from the corner of the window that the image had, after the quarter turns.
///
/// Images are `Gray`, `Gray16`, `Rgb` or `Rgba`. Refused by all that take one: void images (`VoidObject`), other types
/// (`UnsupportedType`), lack of memory (`CannotAllocate`).
class CharReader : public Blobs, public CharReaderSettings
{
    template <typename T>
    using Field = ReadOnly<T, CharReader>;

public:
    using CharReaderSettings::Threshold;

    /// \name Results
    /// @{
    Field<int> NumChars;
    ReadOnlyText<char, CharReader> AsciiString;
    ReadOnlyText<wchar_t, CharReader> UnicodeString;
    Field<double> AverageScore = -1.0; ///< of the characters read, -1 for none
    Field<double> AverageContrast;
    Field<int> NumLayoutChars, NumLayoutStrings;
    Field<int> NumFontChars;
    Field<DraggingHandles> Handle = NoHandle;    ///< `AllHandle` where the last hit test met a character
    Field<int> HitIndex = -1, HitFontIndex = -1; ///< the character, and the font character, that was hit last
    /// @}

    CharReader();
    ~CharReader() override;
    CharReader(const CharReader& Other) = default;
    CharReader& operator=(const CharReader& Other) = default;
    /// Takes what `Src` has. With `KeepView` all of its settings too; without it only those that have not been changed
    /// here since the last time.
    void ShallowCopy(const CharReader& Src, bool KeepView);

    /// \name Segmentation and reading
    /// @{

    /// Finds the characters and arranges them in lines. Refused: no character, a layout mode without a layout, which is
    /// then reset (`OutOfRange`).
    void CharsSegment(const Image& Src);
    /// Reads the characters that were found. Refused: no font, no filter (`OutOfRange`).
    void CharsDecode(const Image& Src);
    /// Both. Refused as by both, but that the layout mode stays.
    void CharsRead(Image& Src);
    /// @}

    /// \name One character
    /// Refused, with a neutral value: an index beyond the characters (`OutOfRange`).
    /// @{

    /// The index of the font character, -1 for no match, -2 for one that the filter gave, and for a refusal.
    int MatchingFontChar(int Index) const;
    /// The character that was read, whether or not its score sufficed: "?" for no match, 0 before a reading.
    wchar_t CharCode(int Index) const;
    double CharScore(int Index) const;
    double CharContrast(int Index) const;
    /// The width before boxes became alike; `CharWidth` for a missing character.
    int CharTrueWidth(int Index) const;
    /// The pixels of its box, `Gray`, with `Normalized` resampled for comparison. A missing character gives 128.
    void CharThumbnail(const Image& Src, int Index, Image& Dst, bool Normalized);
    /// 32 or 10 if a gap or a line jump follows, else 0.
    int Separator(int Index) const;
    /// @}

    /// \name Layouts and boxes by hand
    /// @{

    /// Makes the characters at hand the layout. Refused: no character (`OutOfRange`).
    void TakeLayout();
    /// Drops the layout.
    void DropLayout();
    /// Makes a list of that many boxes the characters at hand, 30 by 20 pixels side by side; `PresetBox` moves one of
    /// them. Refused: no such box (`OutOfRange`).
    void PresetBoxes(int Count);
    void PresetBox(int Index, int X, int Y, int Width, int Height);
    /// @}

    /// \name Font
    /// @{

    /// Trains the characters that were found, one for each code. Refused: another number of codes (`OutOfRange`).
    void FontStringInsert(const Image& Src, const char Codes[], int Class = 0, int FontCharIndex = -1);
    void FontStringInsert(const Image& Src, const wchar_t Codes[], int Class = 0, int FontCharIndex = -1);
    /// Trains an image of one character: at an index, or for -1 behind those of lower and equal codes.
    void FontCharInsert(const Image& Sample, char Code, int Class = 0, int FontCharIndex = -1);
    void FontCharInsert(const Image& Sample, wchar_t Code, int Class = 0, int FontCharIndex = -1);
    /// All of them for -1. Refused, here and by the next: another index (`OutOfRange`).
    void FontCharDelete(int Index);
    /// An empty record after a refusal.
    const FontChar& FontCharAt(int Index) const;
    /// Chooses those characters of the font by which each other one is recognised, or drops the choice. Refused: no
    /// font (`OutOfRange`).
    void Optimize(bool Enable);

    /// Lays the font out from a point, wrapping at `MaxX`: the samples as they are, or else the thumbnails, and below
    /// them the codes. The one that was hit is drawn in red.
    void DrawFontChars(int X, int Y, int MaxX, int HGap, int VGap, bool Samples, bool Codes, bool OptimalOnly) const;
    /// The font character that stands so under a point of the screen: `HitFontIndex`.
    void HitFontChar(int PointX, int PointY, int X, int Y, int MaxX, int HGap, int VGap, bool Samples, bool Codes,
                     bool OptimalOnly);

    /// ".fnt" files of the font and the settings. Refused: `CannotOpen`, `CannotRead`, `CannotWrite`, another file
    /// (`UnsupportedFormat`), another version (`OutOfRange`).
    void Read(const char* PathName, bool SettingsOnly = false);
    void Read(const wchar_t* PathName, bool SettingsOnly = false);
    void Write(const char* PathName, bool SettingsOnly = false, bool OptimalOnly = false) const;
    void Write(const wchar_t* PathName, bool SettingsOnly = false, bool OptimalOnly = false) const;
    /// The font and the settings, as in a file.
    void Transfer(Archive& Block);
    void Transfer(Archive& Block, bool SettingsOnly, bool OptimalOnly);

    /// Makes one the font character that was hit, -1 none. Refused: another index (`OutOfRange`).
    void ChooseFontChar(int Index);

    /// Prints the thumbnails to standard output, as the source of a table.
    void ExportThumbnails() const;
    /// The same as an array for each character.
    void ExportArrays() const;
    /// @}

    /// \name Display
    /// @{

    /// Outlines the characters in green, and with `ViewChars` shows what was read in green where the score reached its
    /// threshold, else in red.
    void Draw(bool ViewChars) const;
    /// Outlines one character, unless it is missing, in the color of lines. Refused: no such character (`OutOfRange`).
    void DrawChar(int Index) const;
    /// Outlines the layout in magenta, as it was placed last.
    void DrawLayout() const;
    /// Sets `Handle` and `HitIndex` by the character under a point of the screen.
    void HitChar(int X, int Y);
    /// Prints the settings, one a line, to the library's text output.
    void Print(const char* Title) const;
    /// @}

private:
    int CheckChar(int index) const;
    /// Makes an image `Gray` and upright. True, and reported, if it was refused.
    bool MakeUpright(const Entry& entry, const Image& src, Image& upright);
    int CheckLayout() const;
    int TrySegment(const Image& upright);
    int TryDecode(const Image& upright);
    void MatchLayout();
    /// Makes the boxes at hand blobs, without scores.
    int TakeChars();
    int TakePresets();
    int StoreScores();
    int StoreFeatures(int blob, std::initializer_list<std::pair<int, double>> values);
    void ClearChars();
    /// After a change of the font or of the layout.
    void CountFont();
    void CountLayout();
    template <typename C>
    void InsertString(const Image& src, const C codes[], int userClass, int index);
    void InsertChar(const Image& sample, wchar_t code, int userClass, int index);
    void ReadFields(Archive& block, bool settingsOnly);
    void WriteFields(Archive& block, bool settingsOnly, bool optimalOnly);
    void ReadFile(const PathNames& names, bool settingsOnly);
    void WriteFile(const PathNames& names, bool settingsOnly, bool optimalOnly) const;

    chars::OwnChars state_;
    CharReaderSettings taken_; ///< by the last `ShallowCopy`, and where sizes were guessed
};

} // namespace Tesk
