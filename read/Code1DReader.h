// The reader of one-dimensional bar codes.
#pragma once

#include "foundation/ReadOnly.h"
#include "foundation/ReadOnlyText.h"
#include "foundation/Records.h"

#include <memory>

namespace Tesk {

class Archive;
class Image;

namespace linear {

struct ScanState;

/// Votes, trained colours and the memory of scans. A copy has those of its own, without the memory.
class OwnState
{
public:
    OwnState();
    OwnState(const OwnState& other);
    OwnState& operator=(const OwnState& other);
    ~OwnState();

    ScanState& operator*() const { return *state_; }
    ScanState* operator->() const { return state_.get(); }

private:
    std::unique_ptr<ScanState> state_;
};

} // namespace linear

/// What a reader looks for, and how.
struct Code1DSettings
{
    bool DetectEAN128 = true; ///< GS1-128 and Code 128, ISO/IEC 15417
    bool DetectEAN13 = true;  ///< ISO/IEC 15420, as the three that follow
    bool DetectEAN8 = true;
    bool DetectUPCA = true; ///< goes before EAN-13 where the first digit is 0
    bool DetectUPCE = true;
    bool Detect2of5 = true;       ///< interleaved 2 of 5, ISO/IEC 16390
    bool Detect39 = true;         ///< ISO/IEC 16388
    bool Detect39Extended = true; ///< Code 39 with the full ASCII set
    bool Detect93 = true;
    bool DetectCodabar = true;
    bool DetectDatabar = true; ///< ISO/IEC 24724, as the next one
    bool DetectDatabarLimited = true;
    bool DetectPharmacode = false; ///< has no frame: best alone
    bool DetectITF14 = false;      ///< interleaved 2 of 5 of 14 digits
    bool DetectMatrix2of5 = false;
    bool DetectMSI = false;
    bool Detect11 = false;
    /// `Auto` for any orientation; 0 for vertical scan lines, 1 for horizontal, 2 for both, N from 3 on for those every
    /// 180 / N degrees (at most 180 of them); -A for lines at the angles -A and A, and 0 with `Reverse`, in degrees.
    int NumDirections = Auto;
    int Density = 5;                 ///< pixels from one scan line to the next, at least 1
    int Noise = 10;                  ///< changes of gray value up to this are no bars
    int Step = 32;                   ///< the smallest contrast of a bar with the background
    bool Reverse = false;            ///< reads in the opposite direction, for Pharmacodes
    bool CheckQuietZone = true;      ///< the quiet zones of the standards must be there
    int MinimumBars = 3;             ///< of a Pharmacode
    bool SymbologyIdentifier = true; ///< "]C1" precedes a Code 128 text with FNC1 in the first position
    bool CheckQuality = false;       ///< grade the print of the chosen symbol
    int RgbTolerance = 20;           ///< allowed deviation of each colour component of a Pharmacode bar
    /// Where nothing is read, look closer: lines nearer to each other and averaged along the bars, weaker bars, blur
    /// undone. What is read so must agree on several lines.
    bool LookCloser = true;
};

/// Finds and reads bar codes along scan lines: parallel ones of told directions, or lines across the groups of bars
/// that are found in any direction. A symbol counts when three lines or more read the same text.
///
///     Code1DReader reader;
///     reader.DetectITF14 = true;
///     if (reader.Decode(image))
///         for (int i = 0; i < reader.NumDecoded; i++) {
///             reader.Choose(i, image);
///             std::puts(reader.AsciiString);
///         }
class Code1DReader : public Code1DSettings
{
    template <typename T>
    using Field = ReadOnly<T, Code1DReader>;

public:
    /// \name Results of the last `Decode`, and of the symbol chosen
    /// @{
    Field<int> NumDecoded;
    ReadOnlyText<char, Code1DReader> AsciiString;
    ReadOnlyText<wchar_t, Code1DReader> UnicodeString; ///< the same bytes, as wide characters
    Field<Symbologies> Symbology = NoSymbology;
    Field<bool> ValidCRC;          ///< the checksum is right, or there is none
    Field<int> ReadFNC1;           ///< 1 or 2 where an FNC1 stands in the first or second position, else 0
    Field<bool> ReaderProgramming; ///< the symbol is a command to the reader
    Field<bool> Append;            ///< the text goes before that of the next symbol
    Field<int> X, Y;               ///< the corner of the symbol's box where the text begins, in pixels of the store
    Field<int> Width, Height;      ///< of the box, along the text and across it
    Field<double> Angle;           ///< of the text, in degrees, from the x axis towards the y axis
    Field<char> AsciiGrade;        ///< 'A' to 'D' or 'F', 0 where none was asked for
    Field<wchar_t> UnicodeGrade;
    /// For each of ten scan lines its grade, a blank, and those of scan, minimum reflectance, edge determination,
    /// symbol contrast, edge contrast, modulation, defects, decode, decodability and quiet zone, after ISO/IEC 15416.
    ReadOnlyText<char, Code1DReader> AsciiProfileGrades;
    Field<int> NumColorBars; ///< bars whose colours were trained
    Field<bool> ValidColors; ///< all bars have the trained colours
    /// @}

    /// Finds and reads the symbols of a `Gray`, `Gray16`, `Rgb` or `Rgba` image and chooses the one read most often; of
    /// colours the largest component counts. Refused: other images (`UnsupportedType`, `VoidObject`), one without a
    /// symbol (`CannotRead`), lack of memory (`CannotAllocate`); where colours were trained, a Pharmacode of another
    /// value (`UnsupportedFormat`) and more than two directions (`OutOfRange`).
    bool Decode(const Image& Src);
    /// Shows a symbol in the results, and with `CheckQuality` grades it; a negative index clears them. Refused: an
    /// index beyond the symbols (`OutOfRange`); without the image, when quality is asked for (`UnsupportedType`).
    void Choose(int DecodedIndex, const Image& Src);
    void Choose(int DecodedIndex);

    /// Learns the value of the Pharmacode that was chosen, and the mean colour of each of its bars (`Rgb`, `Rgba`).
    /// Refused: another image or another symbol (`UnsupportedType`), more than two directions, and bars that cannot be
    /// told on both ends (`OutOfRange`).
    void ColorTrain(const Image& Src);
    /// The trained colour of a bar. Refused: another index (`OutOfRange`), with black.
    RgbPixel BarColor(int Index) const;

    /// Splits a GS1 text into its fields, each headed by its application identifier in brackets, with `Verbose` by its
    /// name too and on a line of its own. The length of the whole with its ending zero; `Out` may be null. After the
    /// GS1 General Specifications.
    static int ExpandGS1(const char In[], char Out[], int OutLength, bool Verbose = false);

    /// ".c1r" files of the settings. Refused: `CannotOpen`, `CannotRead`, another file (`UnsupportedFormat`), a later
    /// version (`OutOfRange`).
    void Read(const char* PathName);
    void Read(const wchar_t* PathName);
    void Write(const char* PathName) const;
    void Write(const wchar_t* PathName) const;
    void Transfer(Archive& Block);

    /// Outlines the chosen symbol in green, with `All` the others too, in yellow with `HighlightBest`; bars whose
    /// colours were checked in green or red; texts with `ViewText`, followed by the kind of symbol with `ViewName`.
    void Draw(bool ViewText = false, bool ViewName = false, bool All = false, bool HighlightBest = false) const;

    /// Takes what was read and what was trained. With `KeepView` the settings come along, else those of this one stay.
    void ShallowCopy(const Code1DReader& Src, bool KeepView);

private:
    void ClearResults();
    void Scan(const Image& src);
    int Choose(int index, const Image* src);
    void Grade(const Image& src);
    int InspectColors(const Image& src);

    linear::OwnState state_;
    int chosen_ = -1;
};

} // namespace Tesk
