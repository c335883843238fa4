// Operations in which each output pixel depends on pixels at the same place only, apart from the adaptive threshold
// and the adaptive equalisation; and the same arithmetic on profiles.
#pragma once

#include "image/Image.h"

namespace Tesk {

class Profile;

/// All operations read their sources and write `Dst` through their windows, size `Dst` themselves, and may run in
/// place. Divisions and roots truncate. Refused, unless told otherwise: a void source (`VoidObject`), two sources that
/// differ in type (`IncompatibleType`) or window size (`IncompatibleSize`), a pixel type that is not listed
/// (`UnsupportedType`), a clip mode that is not listed (`OutOfRange`), no memory (`CannotAllocate`). A type or
/// a clip mode may be refused when `Dst` has its new size already.
///
///     Image difference, mask;
///     Operator::Subtract(image, reference, difference, Absolute);
///     Operator::Binarize(24, difference, mask); // 255 from 24 up, else 0
///     Operator::Invert(mask, mask);
class Operator
{
public:
    /// Significant bits of `Gray16` and `Gray32` pixels, 9 to 16. Process-wide.
    static int GrayDepth;

    /// Fills the window of `Dst` with the low byte of a constant (`Gray`, each channel of `Rgb`), its low 16 bits
    /// (`Gray16`) or all its bits as they are (`Gray32`, `Float`). A void `Dst` that was asked for a size becomes
    /// `Gray`, below `Rgb` and `Rgba`. Refused, here and below: another void `Dst` (`VoidObject`).
    static void Copy(int Const, Image& Dst);
    /// Fills the window of an `Rgb` or an `Rgba` image.
    static void Copy(RgbPixel Const, Image& Dst);
    static void Copy(RgbaPixel Const, Image& Dst);
    /// Copies the pixels of any type, or converts them: `Gray16`, `Gray32`, `Rgb`, `Rgba`, `Grad` and `Gray1` to
    /// `Gray`; `Gray` to each of those but `Grad`; `Rgba` to `Rgb` and back; `Gray16` to `Gray1`. Gray values are
    /// shifted by `GrayDepth` less 8, packed ones set from half the scale up; `Rgb` becomes gray by its largest
    /// component, `Rgba` by the mean, `Grad` by its larger component over `GradGain`, opacity becomes 255.
    static void Copy(const Image& Src, Image& Dst, PixelTypes DstType = Undefined);

    /// The complement of every bit, of `Gray`, `Gray16`, `Rgb` and `Gray1`.
    static void Invert(const Image& Src, Image& Dst);
    /// A component of an `Rgb` image, or red, green, blue or alpha of an `Rgba` one, as a `Gray` image, 0 to 255: hues
    /// count 256 to the turn, chrominances from 128. A `Gray` image goes into one channel of an `Rgb` destination,
    /// whose other channels stay. Refused: a component that the source does not have (`UnsupportedType`).
    static void Convert(const Image& Src, Image& Dst, ColorComponents Component = Red_RGB);
    /// Exchanges red and blue, of `Rgb`.
    static void RedBlueSwap(const Image& Src, Image& Dst);
    /// Colours from the `Gray` mosaic of a sensor behind a Bayer filter, `TopLeft` saying how the store begins. Into
    /// `Rgb`: bilinear (`FastRgb`), or apart from the brightness, which is smoothed (`SmoothRgb`) or sharpened again
    /// (`SharpRgb`); the last two qualities give that brightness alone, as `Gray`. Refused: other qualities
    /// (`OutOfRange`).
    static void DeBayer(const Image& Src, Image& Dst, BayerAlignments TopLeft = RedGreen,
                        BayerQualities Quality = SharpRgb);
    /// Scales each colour of an `Rgb` image so that its largest component is 255; below `Black` it stays darker.
    static void ColorsLighten(const Image& Src, Image& Dst, int Black = 10);
    /// Stretches each colour of an `Rgb` image so that its smallest component is 0 and its largest stays; components
    /// that are nearer than `Black` stretch less.
    static void ColorsSaturate(const Image& Src, Image& Dst, int Black = 10);
    /// Turns each colour of an `Rgb` image to `Hue`, of 256 to the turn from red by green, with its extremes kept.
    static void ColorsHueSet(int Hue, const Image& Src, Image& Dst);

    /// \name Arithmetic
    /// Of `Gray` and `Rgb`, channel by channel, and of two `Gray16` images where told, up to the largest value M: 255,
    /// or that of `GrayDepth`. Results are held to 0 to M (`Saturate`), taken as absolute values (`Absolute`), or
    /// scaled (`Rescale`): a sum is halved, a difference halved about the middle, a product divided by 256, a quotient
    /// multiplied by 256.
    /// @{

    /// `Saturate`, `Absolute`, `Rescale`. The constant may lie beyond the range of a pixel.
    static void Add(int Const, const Image& Src, Image& Dst, GrayClipping Clip = Saturate);
    /// `Gray16` too; `Saturate`, `Rescale`.
    static void Add(const Image& Src, const Image& SrcB, Image& Dst, GrayClipping Clip = Saturate);
    /// The constant less the image, or the image less the constant, which is the sum with the opposite constant in
    /// every mode; `Saturate`, `Absolute`, `Rescale`.
    static void Subtract(int Const, const Image& Src, Image& Dst, GrayClipping Clip = Saturate);
    static void Subtract(const Image& Src, int Const, Image& Dst, GrayClipping Clip = Saturate);
    /// `Saturate`, `Absolute`, `Rescale`, and `Negative`, which is `SrcB` less `Src`; `Gray16` too, but for the last.
    static void Subtract(const Image& Src, const Image& SrcB, Image& Dst, GrayClipping Clip = Saturate);
    /// `Saturate`, `Rescale`.
    static void Multiply(double Const, const Image& Src, Image& Dst, GrayClipping Clip = Saturate);
    static void Multiply(const Image& Src, const Image& SrcB, Image& Dst, GrayClipping Clip = Saturate);
    /// `Saturate`, `Rescale`. A quotient by a pixel of 0 is 255; a constant divisor of 0 is refused (`OutOfRange`).
    static void Divide(double Const, const Image& Src, Image& Dst, GrayClipping Clip = Saturate);
    static void Divide(const Image& Src, double Const, Image& Dst, GrayClipping Clip = Saturate);
    static void Divide(const Image& Src, const Image& SrcB, Image& Dst, GrayClipping Clip = Saturate);
    /// The larger value, the smaller value; two `Gray16` images too.
    static void Maximize(int Const, const Image& Src, Image& Dst);
    static void Maximize(const Image& Src, const Image& SrcB, Image& Dst);
    static void Minimize(int Const, const Image& Src, Image& Dst);
    static void Minimize(const Image& Src, const Image& SrcB, Image& Dst);
    /// `Alpha` times `Src` plus 1 - `Alpha` times `SrcB`, `Alpha` in 256ths; `Rgba` and, in 1024ths, `Gray16` too.
    static void Blend(double Alpha, const Image& Src, const Image& SrcB, Image& Dst);
    /// @}

    /// \name Comparisons
    /// `White` where the test holds, else `Black`, both by their low byte, of `Gray` and `Rgb`. Constants may lie
    /// beyond the range of a pixel.
    /// @{

    /// Whether all channels are equal, into `Gray`; with a constant, by its low 16 bits, `Gray16` too, which is refused
    /// in place (`IncompatibleMode`).
    static void EqualTest(int Const, const Image& Src, Image& Dst, int Black = 0, int White = ~0);
    static void EqualTest(const Image& Src, const Image& SrcB, Image& Dst, int Black = 0, int White = ~0);
    /// In the order of the arguments, channel by channel, into the type of the source.
    static void GreaterTest(int Const, const Image& Src, Image& Dst, int Black = 0, int White = ~0);
    static void GreaterTest(const Image& Src, int Const, Image& Dst, int Black = 0, int White = ~0);
    static void GreaterTest(const Image& Src, const Image& SrcB, Image& Dst, int Black = 0, int White = ~0);
    static void GreaterEqualTest(int Const, const Image& Src, Image& Dst, int Black = 0, int White = ~0);
    static void GreaterEqualTest(const Image& Src, int Const, Image& Dst, int Black = 0, int White = ~0);
    static void GreaterEqualTest(const Image& Src, const Image& SrcB, Image& Dst, int Black = 0, int White = ~0);
    /// @}

    /// \name Bit operations
    /// Of `Gray` and `Rgb` with the low byte of a constant; two `Gray1` images too.
    /// @{
    static void And(int Const, const Image& Src, Image& Dst);
    static void And(const Image& Src, const Image& SrcB, Image& Dst);
    static void Or(int Const, const Image& Src, Image& Dst);
    static void Or(const Image& Src, const Image& SrcB, Image& Dst);
    static void Xor(int Const, const Image& Src, Image& Dst);
    static void Xor(const Image& Src, const Image& SrcB, Image& Dst);
    /// @}

    /// \name Thresholds
    /// Pixels above the threshold become 255 and the others 0, or without `Above` the other way round (`Binary`).
    /// `Means` gives each side its mean, `Soft` a ramp from one mean to the other, `ToGray1` packed bits; all else is
    /// `Gray`.
    /// @{

    /// For `Gray`; `Auto` finds the threshold. Returns the threshold used.
    static int Binarize(int Threshold, const Image& Src, Image& Dst, bool Above = true, Binarization Mode = Binary);
    /// The threshold of least variance within the sides (Otsu 1979) for `Gray`, which is the result; half way between
    /// the two mean colours along the principal axis for `Rgb`, with `Binary` and `Soft` only (`IncompatibleMode`), and
    /// then 0.
    static int Binarize(const Image& Src, Image& Dst, bool Above = true, Binarization Mode = Binary);
    /// For `Gray` and `Gray16`: from the mean of the `Size` x `Size` pixels around each, itself included, plus `Noise`
    /// up; edge pixels are repeated. Refused: a size that is not odd, or beyond 32767 (`OutOfRange`).
    static void Binarize(int Size, int Noise, const Image& Src, Image& Dst, bool Above = true);
    /// Half way between two gray values, for `Gray`; a darker foreground reverses the sides.
    static void Binarize(GrayPixel Background, GrayPixel Foreground, const Image& Src, Image& Dst, bool Above = true,
                         Binarization Mode = Binary);
    /// Half way between two colours along the line through them, for `Rgb`; `Binary` and `Soft` only
    /// (`IncompatibleMode`), as is the form below.
    static void Binarize(RgbPixel BackColor, RgbPixel ForeColor, const Image& Src, Image& Dst, bool Above = true,
                         Binarization Mode = Binary);
    /// Nearness to one colour, for `Rgb`: all channels within `Tolerance`, or with `Isotropic` inside the ellipsoid of
    /// those half axes. The mode given tells it from the form above.
    static void Binarize(RgbPixel ForeColor, RgbPixel Tolerance, const Image& Src, Image& Dst, Binarization Mode,
                         bool Isotropic = false);
    /// @}

    /// \name Shading correction
    /// Of `Gray` and `Rgb` by `Gray` references and of `Gray16`, up to 32767, by `Gray16` ones. Levels are gray values,
    /// or those of the channels. Refused: other references (`IncompatibleType`), references of another window size
    /// (`IncompatibleSize`).
    /// @{

    /// The source less the reference plus `White`.
    static void AddCorrect(const Image& Src, const Image& SrcWhite, Image& Dst, int White = 0);
    static void AddCorrect(const Image& Src, const Image& SrcWhite, Image& Dst, RgbPixel White);
    /// The source times `White` over the reference; `White` where that is 0.
    static void MultiplyCorrect(const Image& Src, const Image& SrcWhite, Image& Dst, int White = 255);
    static void MultiplyCorrect(const Image& Src, const Image& SrcWhite, Image& Dst, RgbPixel White);
    /// The line that takes the black reference to `Black` and the white one to `White`; `White` less `Black` where they
    /// are equal.
    static void Correct(const Image& Src, const Image& SrcBlack, const Image& SrcWhite, Image& Dst, int Black = 0,
                        int White = 255);
    static void Correct(const Image& Src, const Image& SrcBlack, const Image& SrcWhite, Image& Dst, RgbPixel Black,
                        RgbPixel White);
    /// @}

    /// `Gain` times each value plus `Offset`, truncated and held to a byte, of `Gray` and `Rgb`.
    static void GainOffset(double Gain, double Offset, const Image& Src, Image& Dst);
    /// Brings a `Gray` image to a mean and a variance by a gain and an offset; negative ones stand for 128 and 16384. A
    /// constant image takes the mean.
    static void Normalize(double Mean, double Variance, const Image& Src, Image& Dst);
    /// Each value by the share of the pixels that are darker, on the scale of its type: of `Gray`, `Gray16`, and `Rgb`,
    /// whose colours are scaled by that of their sum.
    static void Equalize(const Image& Src, Image& Dst);
    /// The same among the `FilterSize` x `FilterSize` pixels around each, of `Gray`; edge pixels are repeated. Refused:
    /// a size that is not odd, or beyond 32767 (`OutOfRange`).
    static void Equalize(int FilterSize, const Image& Src, Image& Dst);
    /// Every pixel through a table: `Gray` images through `Gray` or `Rgb` tables of 256 entries, `Rgb` images through
    /// the same, each channel by its own column, `Gray16` images through `Gray16` tables of `1 << GrayDepth`. Refused:
    /// a void table (`VoidObject`), other pairs (`UnsupportedType`), another length (`IncompatibleSize`).
    static void Transform(Profile& LookupTable, const Image& Src, Image& Dst);

    /// \name Arithmetic on profiles
    /// Of `Gray`, `Gray16`, `Gray32`, `Int`, `Float` and `Dble` samples, without clipping. Whole numbers of two
    /// profiles wrap, results of a constant are truncated. Refused: a void profile (`VoidObject`), two that differ in
    /// type (`IncompatibleType`) or length (`IncompatibleSize`), a divisor of 0 (`OutOfRange`).
    /// @{
    static void Copy(double Const, Profile& Dst);
    static void Add(double Const, const Profile& Src, Profile& Dst);
    static void Add(const Profile& Src, const Profile& SrcB, Profile& Dst);
    static void Subtract(double Const, const Profile& Src, Profile& Dst);
    static void Subtract(const Profile& Src, double Const, Profile& Dst);
    static void Subtract(const Profile& Src, const Profile& SrcB, Profile& Dst);
    static void Multiply(double Const, const Profile& Src, Profile& Dst);
    static void Multiply(const Profile& Src, const Profile& SrcB, Profile& Dst);
    static void Divide(double Const, const Profile& Src, Profile& Dst);
    static void Divide(const Profile& Src, double Const, Profile& Dst);
    static void Divide(const Profile& Src, const Profile& SrcB, Profile& Dst);
    static void Maximize(double Const, const Profile& Src, Profile& Dst);
    static void Maximize(const Profile& Src, const Profile& SrcB, Profile& Dst);
    static void Minimize(double Const, const Profile& Src, Profile& Dst);
    static void Minimize(const Profile& Src, const Profile& SrcB, Profile& Dst);
    /// @}

private:
    template <typename F>
    static void EachSample(const char* context, const Profile& Src, Profile& Dst, bool divisor, F f);
    template <typename F>
    static void EachSamplePair(const char* context, const Profile& Src, const Profile& SrcB, Profile& Dst, bool divisor,
                               F f);
};

/// The library's colour-to-gray rule: the largest of the three components.
inline std::uint8_t ColorToGray(RgbPixel Pixel)
{
    return Max(Pixel.Red, Max(Pixel.Green, Pixel.Blue));
}

} // namespace Tesk
