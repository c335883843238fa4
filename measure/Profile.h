// One-dimensional pixel data: sampled from images, measured, filtered, searched for edges, or defined as a lookup
// table.
#pragma once

#include "foundation/CopyOnWrite.h"
#include "foundation/ReadOnly.h"
#include "foundation/Records.h"

#include <cstddef>
#include <cstdint>
#include <memory>
#include <string>
#include <vector>

namespace Tesk {

class Archive;
class Image;
class Path;
struct PathNames;

/// Where the samples of a profile came from: what `Profile::Draw` shows, and what a view moves while it is dragged.
/// Positions are relative to the window of the image; `X`, `Y`, `Width`, `Height` are that window.
struct ProfileSource
{
    enum Kinds
    {
        None,
        OfRow,
        OfColumn,
        OfLine,
        OfCurve
    };

    Kinds Kind = None;
    DraggingHandles Direction = NoHandle; ///< `NHandle` for rows, `WHandle` for columns, `AllHandle` for lines
    int Row = 0, Column = 0;
    int Breadth = 0; ///< 0 where a single row, column or line is sampled
    XY Beg{0, 0}, End{0, 0};
    int X = 0, Y = 0, Width = 0, Height = 0;
    std::shared_ptr<const std::vector<Site>> Curve; ///< the vertices of a sampled path
};

/// The samples of `Gray`, `Gray16`, `Gray32` and `Int` profiles are signed 32-bit numbers, whatever the width of the
/// pixels they come from; an `Rgb` sample is three of them, red first, an `Rgba` sample four.
///
/// Operations work on the window, samples `I` to `I + Length - 1` of the store, unless they say otherwise. Statistics
/// and filters refuse an empty profile (`VoidObject`) and types that are not listed (`UnsupportedType`).
///
///     Profile profile;
///     profile.LineAdd(XY(10, 40), XY(300, 55), 5, image); // a band 5 pixels wide
///     Profile::GaussLowPass(5, profile, profile);
///     double x;
///     if (profile.EdgeDetect(20, 4, Raising, 0, x)) profile.Plot(0, 0, 256, 100);
class Profile
{
    template <typename T>
    using Field = ReadOnly<T, Profile>;

public:
    Field<int> I;               ///< index of the window's first sample in the store
    Field<int> Length;          ///< number of samples in the window
    Field<std::uint8_t*> First; ///< the window's first sample; null while there is none
    Field<int> ElementSize;     ///< bytes of a sample
    Field<PixelTypes> Type;     ///< `Undefined` until something is sampled, appended or defined
    int Scale = 1;              ///< number of pixels summed in each sample where the sum was kept
    Field<int> StoreLength;     ///< number of samples of the whole profile
    ProfileSource Source;

    Profile() = default;
    /// A copy has samples of its own.
    Profile(const Profile& Other);
    Profile& operator=(const Profile& Other);
    Profile(Profile&& Other) noexcept;
    Profile& operator=(Profile&& Other) noexcept;
    ~Profile() = default;

    /// \name Sampling
    /// From `Gray`, `Gray16` and `Rgb` images (`UnsupportedType`), replacing the content. Rows and columns must lie in
    /// the image's window (`OutOfRange`).
    /// @{

    /// The pixels of a row or a column.
    void RowGet(int Y, const Image& Src);
    void ColumnGet(int X, const Image& Src);
    /// Rows `Y` to `Y + Breadth - 1` added; divided by `Breadth` with `Average`, else kept whole with `Scale` set to
    /// `Breadth`.
    void RowAdd(int Y, int Breadth, const Image& Src, bool Average = true);
    void ColumnAdd(int X, int Breadth, const Image& Src, bool Average = true);
    /// The variance across the breadth, or with `RMS` its square root, truncated.
    void RowVariance(int Y, int Breadth, const Image& Src, bool RMS = true);
    void ColumnVariance(int X, int Breadth, const Image& Src, bool RMS = true);
    /// The largest value across the breadth, the smallest, and their difference.
    void RowMaximize(int Y, int Breadth, const Image& Src);
    void RowMinimize(int Y, int Breadth, const Image& Src);
    void RowRange(int Y, int Breadth, const Image& Src);
    void ColumnMaximize(int X, int Breadth, const Image& Src);
    void ColumnMinimize(int X, int Breadth, const Image& Src);
    void ColumnRange(int X, int Breadth, const Image& Src);

    /// The pixels along an oblique line at steps of one pixel, bilinear or nearest. A line shorter than one pixel is
    /// reported (`OutOfRange`) and leaves an empty profile.
    void LineGet(const XY& Beg, const XY& End, const Image& Src, bool Interpolate = true);
    /// As for rows, the breadth running across the line and centred on it. Refused, too: a breadth above 65,536
    /// (`OutOfRange`).
    void LineAdd(const XY& Beg, const XY& End, int Breadth, const Image& Src, bool Average = true,
                 bool Interpolate = true);
    void LineVariance(const XY& Beg, const XY& End, int Breadth, const Image& Src, bool RMS = true,
                      bool Interpolate = true);
    void LineMaximize(const XY& Beg, const XY& End, int Breadth, const Image& Src, bool Interpolate = true);
    void LineMinimize(const XY& Beg, const XY& End, int Breadth, const Image& Src, bool Interpolate = true);
    void LineRange(const XY& Beg, const XY& End, int Breadth, const Image& Src, bool Interpolate = true);
    /// The pixels at the vertices of a path, clamped to the image. Refused: an empty path (`VoidObject`).
    void CurveGet(const Path& Pathway, const Image& Src);
    /// @}

    /// \name Statistics, of `Gray`, `Gray16` and `Gray32` profiles
    /// @{

    /// The sample at that fraction (0 to 1) of the sorted ones.
    int Quantile(double Percent) const;
    int Median() const;
    double Mean() const;
    /// The mean without that fraction of the samples, half of it at each end, and without the largest of the rest.
    double TrimmedMean(double Percent) const;
    void Range(int& Minimum, int& Maximum) const;
    /// The population variance, and the mean.
    double Variance(double& Mean) const;
    /// @}

    /// \name Filters
    /// Of `Gray`, `Gray16`, `Gray32` and `Rgb` profiles, each channel by itself; `Gauss...` take no `Rgb`. `Src` and
    /// `Dst` may be the same. `FilterLength` must be positive and odd (`OutOfRange`); the cost does not depend on it.
    /// @{
    static void BoxLowPass(int FilterLength, const Profile& Src, Profile& Dst);
    static void GaussLowPass(int FilterLength, const Profile& Src, Profile& Dst);
    static void BoxHighPass(int FilterLength, const Profile& Src, Profile& Dst);
    static void GaussHighPass(int FilterLength, const Profile& Src, Profile& Dst);
    /// The running sum.
    static void Integrate(const Profile& Src, Profile& Dst);
    /// Twice the central difference.
    static void Derive(const Profile& Src, Profile& Dst);
    /// @}

    /// Lists in `Dst`, an `Int` profile, the index of every edge of at least `MinimumStep`, at its middle level.
    void EdgeDetect(int MinimumStep, int Noise, enum Polarities Polarity, Profile& Dst) const;
    /// Finds one edge, `Selection` being its rank, from the end where it is negative, or an `EdgeSelection`; `X` is its
    /// position, -1 where there is none.
    bool EdgeDetect(int MinimumStep, int Noise, enum Polarities Polarity, int Selection, double& X) const;
    /// Lists in `Dst`, an `Int` profile, the maxima (`Raising`) and the minima (`Falling`) that are strict towards the
    /// left.
    void LocalExtrema(enum Polarities Polarity, Profile& Dst) const;

    /// \name Lookup tables
    /// `Gray` and `Rgb` make 256 samples, `Gray16` makes `1 << GrayDepth`; `Undefined` keeps the present profile, which
    /// must not be empty (`VoidObject`). Other types are refused (`UnsupportedType`).
    /// @{
    /// `Gain` times the index plus `Offset`, truncated and held to 0 to 255, or to 32767 for `Gray16`.
    void GainOffset(double Gain, double Offset, PixelTypes Type = Gray);
    /// `Black` below the threshold, `White` from it up.
    void Threshold(int Threshold, int Black = 0, int White = ~0, PixelTypes Type = Gray);
    /// `Black` below the threshold, `MidGray` for `Delta` indexes from it up, `White` beyond; `NotInitialized` stands
    /// for the middle of the scale.
    void BiThreshold(int Threshold, int Delta, int Black = 0, int MidGray = NotInitialized, int White = ~0,
                     PixelTypes Type = Gray);
    /// Steps of `Resolution`, which must be positive (`OutOfRange`).
    void Quantize(int Resolution, PixelTypes Type = Gray);
    /// The logarithm scaled so that N stays, or its inverse; N is 256, and 65536 for `Gray16`. Index 0 gives 0.
    void Logarithm(bool Inverse, PixelTypes Type = Gray);
    /// The power of the index scaled so that N stays; index 0 gives 0.
    void Gamma(double Exponent, PixelTypes Type = Gray);
    /// An `Rgb` table from blue over green to red, or with `Inverse` from red to blue.
    void PseudoColor(bool Inverse = false);
    /// @}

    /// A sample of the window. Refused: a colour profile (`IncompatibleType`), an index or a component out of range
    /// (`OutOfRange`); the reference is then to a dummy sample.
    int& Sample(int Index) const;
    int& Sample(int Index, int Component) const;

    /// Gives this profile the length of the window of `Src`, and `Type`, that of `Src` if `Undefined`. The values are
    /// not copied. Refused: `CannotAllocate`.
    void Set(const Profile& Src, PixelTypes Type = Undefined);
    /// Gives this profile a length and a type. Refused: a type or a length that no profile has (`OutOfRange`),
    /// `CannotAllocate`.
    void Set(int Length, PixelTypes Type);
    /// Leaves no sample, and keeps the type and the memory.
    void Clear();
    /// Adds a sample at the end; a profile without a type becomes `Gray`, or `Rgb`. Refused: another type
    /// (`IncompatibleType`), `CannotAllocate`.
    void Append(int Value);
    void Append(int R, int G, int B);

    /// The window, or one sample of it, as text that stands until the next call. -1 for all; other negative indexes
    /// count from the end. Refused: `OutOfRange`.
    const char* ToAsciiString(int Index) const;

    /// ".prf" files of `Gray`, `Gray16`, `Gray32` and `Rgb` profiles.
    void Read(const char* PathName);
    void Read(const wchar_t* PathName);
    void Write(const char* PathName) const;
    void Write(const wchar_t* PathName) const;
    /// The content of such a file. Refused: other types and other files (`UnsupportedFormat`), a newer version
    /// (`OutOfRange`), a file that promises more than it holds (`CannotRead`), `CannotAllocate`.
    void Transfer(Archive& Block);

    /// Resets the window to the whole store.
    void Window();
    /// Clips a window to the store and sets it; false if it was clipped. An empty window changes nothing.
    bool Window(int I, int Length);
    bool SetWindow(int I, int Length) { return Window(I, Length); }
    /// Whether the window is smaller than the store.
    bool HasWindow() const { return Length < StoreLength; }

    /// The window of the image in which the profile is drawn and dragged.
    void SetWindow(const Image& Mother);
    void SetWindow(int X, int Y, int Width, int Height);

    /// Draws the line, the band or the curve from which the samples came.
    void Draw(bool Handles) const;
    /// The handle of the band or line under a point of the screen; kept in `Handle` for `Drag`.
    DraggingHandles HitHandle(int X, int Y) const;
    /// Moves the handle last hit to a point of the screen.
    void Drag(int X, int Y);
    static ReadOnly<DraggingHandles, Profile> Handle;

    /// Draws the curve of the values into a box of target pixels, an `Rgb` profile as three curves. `Vertical` lets the
    /// index run downwards. `Minimum` and `Maximum` are the values at the ends of the box; where they are equal the
    /// curve fills it. `Grid` is the number of samples between grid lines, 0 for none.
    void Plot(int X, int Y, int Width, int Height, bool Vertical = false, int Minimum = 0, int Maximum = 0,
              int Grid = 0, bool Frame = true) const;

    /// Shares the samples of `Src`. The window keeps its relative place, or with `KeepWindow` becomes that of `Src`.
    void ShallowCopy(const Profile& Src, bool KeepWindow);
    /// Moves to a store of its own, so that those who share the former one keep theirs.
    void Detach(bool CopySamples);

    /// The samples of the window as `T`.
    template <typename T = std::int32_t>
    T* Samples() const
    {
        return reinterpret_cast<T*>(First.operator std::uint8_t*());
    }

protected:
    /// Takes a new length and type, its samples not set, and says whether it could. Samples that others share stay
    /// theirs.
    bool TrySet(int length, PixelTypes type);
    /// Gets a destination of the window's length of `src` and of `type` ready, in place where the two are the same
    /// window. `held` then stands for the source. False without memory.
    static bool Prepare(const Profile& src, Profile& dst, PixelTypes type, Profile& held);
    /// Before samples are written that are also read.
    bool DetachIfShared();

    mutable std::string text_; ///< what `ToAsciiString` gave last

private:
    friend class Operator;

    void ResetWindow();
    void PlaceFirst();
    void Share(const Profile& src, bool keepWindow);
    void Write(const PathNames& names) const;

    // Inner forms: the code of what was refused, with its message stored.
    int Size(int length, PixelTypes type);
    int Grow();
    int AppendSample(const std::int32_t* values, PixelTypes typeOfNew);
    template <typename F>
    int Define(PixelTypes type, F f);
    template <typename Fetch>
    int SampleBand(const Image& src, int length, const ProfileSource& source, int across, Fetch fetch);
    template <typename F>
    static int Filter(const Profile& src, Profile& dst, F filter);
    int SampleRows(int y, int breadth, const Image& src, int across);
    int SampleColumns(int x, int breadth, const Image& src, int across);
    int SampleLines(const XY& beg, const XY& end, int breadth, const Image& src, int across, bool interpolate);
    int SampleCurve(const Path& pathway, const Image& src);
    int Rank(double percent, int& sample) const;

    SharedBytes block_; ///< the store, held by all that share it
};

/// A void profile, one of another type than `Type`, or two that differ in type or in length. The result is an
/// `ErrorCodes` value with its message stored.
int CheckProfile(const Profile& Src, PixelTypes Type = Undefined);
int CheckProfiles(const Profile& Src, const Profile& SrcB);

/// Bytes of a sample; 0 for the types that profiles do not hold.
int SampleSize(PixelTypes Type);

} // namespace Tesk
