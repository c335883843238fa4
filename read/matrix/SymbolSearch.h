// What the searches for matrix codes share: the settings, the symbols read so far, and why none was read.
#pragma once

#include "foundation/Enumerations.h"
#include "foundation/Records.h"
#include "image/Image.h"
#include "read/codewords/SymbolReader.h"

#include <array>
#include <cmath>
#include <cstddef>
#include <string>
#include <vector>

namespace Tesk::matrix {

constexpr int mostSymbols = 32;

/// What a reader was set to, as the searches take it.
struct SearchSettings
{
    int polarities = BlackOnWhite; ///< a set of `CodePolarities`
    int views = Straight;          ///< a set of `CodeViews`
    Sizes sizeFrom = Size10, sizeTo = Size144;
    bool adaptiveThreshold = true;
    int threshold = Auto;
    bool identifier = false;
    bool accurateEdges = false;
    bool checkQuality = false;
    bool obsoleteDotCode = false;
    bool clutteredQuietZone = true;
    int maxDecoded = 1;
};

/// The letters and numbers of a graded symbol, after ISO/IEC 15415.
struct QualityGrades
{
    float symbolContrast = 0, contrastUniformity = 0, axialNonUniformity = 0, gridNonUniformity = 0, unusedError = 0;
    float printGrowth = 0;
    std::array<char, 16> letters{'F'}; ///< the overall grade, a blank, the letters; ends with a zero
};

/// A symbol that was read. Places are pixels of the source window, the first one at 0.
struct SymbolRecord
{
    std::string text; ///< may hold zeros
    Symbologies symbology = NoSymbology;
    Sizes size = Size10;
    int readFNC1 = 0;
    bool readerProgramming = false;
    int symbolPosition = 0, symbolTotal = 0, symbolFileID1 = 0, symbolFileID2 = 0, parityData = 0;
    float cellSize = 0;
    CodePolarities polarity = BlackOnWhite;
    CodeViews view = Straight;
    double x = 0, y = 0, width = 0, height = 0, angle = 0; ///< the angle in the current unit
    std::array<XY, 4> corners{};

    /// Takes the text and what goes with it.
    void Take(const codewords::SymbolText& read);
    /// Whether a place lies inside the four corners.
    bool Holds(XY place) const;
};

/// Why no symbol was read: the state and the message set last. A message is a format of one "%d" or none.
struct SearchFailure
{
    int state = 1;
    const wchar_t* message = nullptr;
    int value = 0;

    SearchFailure();
    void Clear(); ///< the state at the start, and after a symbol
    void Set(int newState, const wchar_t* newMessage, int newValue = 0);
    void Raise(int newState); ///< the larger of the old and the new state; the message stays
};

/// The threshold told, or for `Auto` the best one of a `Gray` image.
int ThresholdOf(const Image& gray, int threshold);

/// An image of the ladder.
struct Rung
{
    const Image& image; ///< `Gray`
    int level;          ///< 0 the source
    double scale;       ///< a length on the source over that on this rung
};

/// A symbol as it was sampled, for grading: places are pixels of the source window, unrounded.
struct SampledSymbol
{
    int rows = 0, columns = 0;         ///< cells, or lattice positions of a DotCode
    std::vector<XY> nodes;             ///< (rows + 1) x (columns + 1) corners of cells, row by row
    std::vector<XY> centers;           ///< rows x columns middles of cells, row by row
    int lightCells = 0, darkCells = 0; ///< counted while sampling

    /// Takes nodes and centers from `place(column, row)`, where the middle of the first cell is at 0 and 0, and counts
    /// the cells by `isDark(row, column)`.
    template <typename Place, typename IsDark>
    void Take(int symbolRows, int symbolColumns, Place place, IsDark isDark)
    {
        rows = symbolRows;
        columns = symbolColumns;
        nodes.clear();
        centers.clear();
        lightCells = darkCells = 0;
        for (int row = 0; row <= rows; ++row)
            for (int column = 0; column <= columns; ++column)
                nodes.push_back(place(column - 0.5, row - 0.5));
        for (int row = 0; row < rows; ++row)
            for (int column = 0; column < columns; ++column) {
                centers.push_back(place(column, row));
                ++(isDark(row, column) ? darkCells : lightCells);
            }
    }
    XY Node(int row, int column) const { return nodes[static_cast<std::size_t>(row * (columns + 1) + column)]; }
    XY Center(int row, int column) const { return centers[static_cast<std::size_t>(row * columns + column)]; }
};

inline double Distance(XY a, XY b)
{
    return std::hypot(b.X - a.X, b.Y - a.Y);
}

/// The mean sides of a cell in pixels.
struct CellSides
{
    double width = 1, height = 1;
};
/// Of a symbol with the corners lower left, lower right, upper right and upper left.
inline CellSides SidesOf(const std::array<XY, 4>& p, int rows, int columns)
{
    return {(Distance(p[0], p[1]) + Distance(p[2], p[3])) / (2 * columns),
            (Distance(p[3], p[0]) + Distance(p[1], p[2])) / (2 * rows)};
}

/// What the searches of one decoding share.
struct SymbolSearch
{
    SearchSettings settings;
    const Image* source = nullptr; ///< `Gray`, of rung 0
    SearchFailure failure;
    std::vector<SymbolRecord> symbols;
    std::vector<QualityGrades> grades; ///< one for each symbol where quality is asked for, else empty
    codewords::SymbolReader reader;
    bool rectangleUngraded = false; ///< quality was asked for of a symbol that is no square

    bool IsFull() const { return static_cast<int>(symbols.size()) >= settings.maxDecoded; }
    /// Whether a place of a rung lies in a symbol already read.
    bool IsRead(XY place, double scale) const;
    /// Keeps a symbol; the failure state starts anew.
    void Add(SymbolRecord symbol);
};

} // namespace Tesk::matrix
