// The reader of matrix codes.
#pragma once

#include "foundation/ReadOnly.h"
#include "foundation/ReadOnlyText.h"
#include "foundation/Records.h"

#include <memory>

namespace Tesk {

class Archive;
class Image;

namespace matrix {

struct ReaderState;
struct SymbolRecord;
struct QualityGrades;

/// Symbols, the corrections of DotCode and the memory of searches. A copy has those of its own, without the memory.
class OwnState
{
public:
    OwnState();
    OwnState(const OwnState& other);
    OwnState& operator=(const OwnState& other);
    ~OwnState();

    ReaderState& operator*() const { return *state_; }
    ReaderState* operator->() const { return state_.get(); }

private:
    std::unique_ptr<ReaderState> state_;
};

} // namespace matrix

/// What a reader looks for, and how.
struct Code2DSettings
{
    CodePolarities EnabledPolarities = BlackOnWhite;
    CodeViews EnabledViews = Straight;
    Sizes SizeFrom = Size10; ///< of a Data Matrix, as the next one; rectangles come behind the squares
    Sizes SizeTo = Size144;
    bool DetectDataMatrix = true;
    bool DetectQR = false;
    bool DetectDotCode = false;
    bool SymbologyIdentifier = false; ///< "]d1" and the like go before the text
    bool AdaptiveThreshold = true;    ///< compares pixels with their surroundings; better off where quality is checked
    int Threshold = Auto; ///< between dark and light, 0 to 255, where it is not adaptive; `Auto` finds one on each rung
    int StartLevel = 0;   ///< -2 enlarges the image four times, 1 reduces it by a third, and so on to 8
    bool AccurateEdges = false;     ///< the sides of a Data Matrix to a fraction of a pixel
    int MaxDecoded = 1;             ///< symbols at which the search stops, 1 to 32
    bool CheckQuality = false;      ///< grade the print
    int InkingCorrection = 0;       ///< pixels by which dark is thickened, or thinned where negative, -16 to 16
    bool ObsoleteDotCode = false;   ///< DotCodes of before version 4, whose outer rows may be empty
    bool ClutteredQuietZone = true; ///< DotCodes with other marks beside them
    /// Where nothing is read, look closer: other thresholds, sides closed where they are broken, finer steps between
    /// the resolutions. Takes up to three times as long again.
    bool LookCloser = true;
};

/// Finds and reads Data Matrix (ISO/IEC 16022, ECC 200), QR (ISO/IEC 18004) and DotCode (AIM DotCode 4.0) symbols, at
/// any angle, at one resolution after the other, until there are `MaxDecoded` of them.
///
///     Code2DReader reader;
///     reader.DetectQR = true;
///     if (reader.Decode(image)) std::puts(reader.AsciiString);
class Code2DReader : public Code2DSettings
{
    template <typename T>
    using Field = ReadOnly<T, Code2DReader>;

public:
    /// \name Results of the last `Decode`, and of the symbol chosen
    /// @{
    Field<int> NumDecoded;
    ReadOnlyText<char, Code2DReader> AsciiString;
    ReadOnlyText<wchar_t, Code2DReader> UnicodeString; ///< the same bytes, as wide characters
    Field<int> StringLength;                           ///< of the text, which may hold zeros, without its ending one
    Field<Symbologies> Symbology = NoSymbology;
    Field<Sizes> Size = Size10;
    Field<CodePolarities> Polarity = BlackOnWhite;
    Field<CodeViews> View = Straight;
    Field<float> CellSize;         ///< the mean side of a cell in pixels
    Field<int> ReadFNC1;           ///< 1 or 2 where an FNC1 stands in the first or second position, else 0
    Field<bool> ReaderProgramming; ///< the symbol is a command to the reader
    Field<int> SymbolPosition, SymbolTotal, SymbolFileID1, SymbolFileID2, ParityData; ///< Structured Append
    Field<int> X, Y;          ///< the upper left corner of the upright symbol, in pixels of the store
    Field<int> Width, Height; ///< along its sides, in pixels
    Field<double> Angle;      ///< of its upper side, in degrees, from the x axis towards the y axis
    /// @}

    /// \name Quality of the symbol chosen, in the manner of ISO/IEC 15415
    /// @{
    Field<float> SymbolContrast;     ///< the light mean less the dark one, over 255
    Field<float> ContrastUniformity; ///< the least modulation of a cell of data, about 1 where all are alike
    Field<float> AxialNonUniformity; ///< how far the sides of cells differ, over their mean
    Field<float> GridNonUniformity;  ///< how far a node of the grid is from its place, over the diagonal of a cell
    Field<float> UnusedError;        ///< the share of the correction that the worst block has left
    Field<float> PrintGrowthHorizontal, PrintGrowthVertical; ///< 0 as drawn, 1 too thin, -1 too thick
    /// The overall grade, a blank, and the letters of contrast, print growth in both directions, axial nonuniformity,
    /// grid nonuniformity, unused error, modulation, reflectance margin and fixed pattern damage; of QR and DotCode
    /// those of format and version too. "F" without.
    ReadOnlyText<char, Code2DReader> AsciiGrades;
    ReadOnlyText<wchar_t, Code2DReader> UnicodeGrades;
    /// @}

    Code2DReader();

    /// Finds and reads the symbols of a `Gray`, `Rgb` or `Rgba` image; the results show the last one. Refused: a void
    /// range of sizes (`OutOfRange`), other images (`UnsupportedType`, `VoidObject`), one without a symbol
    /// (`CannotRead`, with the reason), lack of memory (`CannotAllocate`); and with `CheckQuality` a rectangular Data
    /// Matrix, which is read all the same (`UnsupportedType`).
    bool Decode(const Image& Src);
    /// Shows a symbol in the results, with the quality that it was found to have when it was read; the form without the
    /// image clears them for a negative index. Refused: an index beyond the symbols (`OutOfRange`); without the image,
    /// when quality is asked for (`UnsupportedType`).
    void Choose(int DecodedIndex, const Image& Src);
    void Choose(int DecodedIndex);
    /// A corner of the symbol chosen, in pixels of the store: 0 lower left, where the solid sides of a Data Matrix
    /// meet, 1 upper left, 2 upper right, 3 lower right of the upright symbol. Refused: another index (`OutOfRange`).
    XY Corner(int Index) const;

    /// Tells how the lattice of DotCodes is deformed: the lengths and directions that the unit vectors along rows and
    /// columns became. Angles in degrees; 0 for `AngleY` stands for 90.
    void DCCorrectGeometry(double LengthX = 1, double AngleX = 0, double LengthY = 1, double AngleY = 0);
    /// Gives the next `Decode` the centers and the width of the finder patterns of a QR symbol. For reserved use.
    void QRPresetFinders(const Site& P, const Site& Q, const Site& R, int Size);

    /// Splits a GS1 text into its fields, each headed by its application identifier in brackets, with `Verbose` by its
    /// name too and on a line of its own. The length of the whole with its ending zero; `Out` may be null. After the
    /// GS1 General Specifications.
    static int ExpandGS1(const char In[], char Out[], int OutLength, bool Verbose = false);
    /// The same of a text that marks property, after MIL-STD-130.
    static int ExpandMIL(const char In[], char Out[], int OutLength, bool Verbose = false);

    /// ".c2r" files of the settings; what was read before a failure stays. Refused: `CannotOpen`, `CannotRead`, another
    /// file (`UnsupportedFormat`), a later version (`OutOfRange`).
    void Read(const char* PathName);
    void Read(const wchar_t* PathName);
    void Write(const char* PathName) const;
    void Write(const wchar_t* PathName) const;
    void Transfer(Archive& Block);

    /// Outlines the chosen symbol in green, with `All` the others too, in yellow with `HighlightBest`; texts with
    /// `ViewText`, followed by the kind of symbol with `ViewName`.
    void Draw(bool ViewText = false, bool ViewName = false, bool All = false, bool HighlightBest = false) const;

    /// Takes what was read, and the corrections and finders that were told. With `KeepView` the settings come along,
    /// else only those that have not been changed here since the last time.
    void ShallowCopy(const Code2DReader& Src, bool KeepView);

private:
    void ClearResults();
    void ClearGrades();
    int Scan(const Image& src);
    int Choose(int index, const Image* src);
    void Show(const matrix::SymbolRecord& symbol);
    void Show(const matrix::QualityGrades& grades);

    matrix::OwnState state_;
    Code2DSettings taken_; ///< by the last `ShallowCopy`
    int chosen_ = -1;
};

} // namespace Tesk
