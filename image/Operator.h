// Operations in which each output pixel depends on pixels at the same place only, apart from the adaptive threshold
// and the adaptive equalisation; and the same arithmetic on profiles.
#pragma once

#include "image/Image.h"

namespace Tesk {

class Profile;

/// All operations read their sources and write `Dst` through their windows, size `Dst` themselves, and may run in
/// place. Refused, unless told otherwise: a void source (`VoidObject`), two sources that differ in type
/// (`IncompatibleType`) or window size (`IncompatibleSize`), a pixel type that is not listed (`UnsupportedType`), a
/// clip mode that is not listed
/// (`OutOfRange`).
class Operator
{
public:
    /// Significant bits of `Gray16` and `Gray32` pixels, 9 to 16. Process-wide.
    static int GrayDepth;

    static void Copy(int Const, Image& Dst);
    static void Copy(RgbPixel Const, Image& Dst);
    static void Copy(RgbaPixel Const, Image& Dst);
    static void Copy(const Image& Src, Image& Dst, PixelTypes DstType = Undefined);

    static void Invert(const Image& Src, Image& Dst);
    static void Convert(const Image& Src, Image& Dst, ColorComponents Component = Red_RGB);
    static void RedBlueSwap(const Image& Src, Image& Dst);
    static void DeBayer(const Image& Src, Image& Dst, BayerAlignments TopLeft = RedGreen,
                        BayerQualities Quality = SharpRgb);
    static void ColorsLighten(const Image& Src, Image& Dst, int Black = 10);
    static void ColorsSaturate(const Image& Src, Image& Dst, int Black = 10);
    static void ColorsHueSet(int Hue, const Image& Src, Image& Dst);

    static void Add(int Const, const Image& Src, Image& Dst, GrayClipping Clip = Saturate);
    static void Add(const Image& Src, const Image& SrcB, Image& Dst, GrayClipping Clip = Saturate);
    static void Subtract(int Const, const Image& Src, Image& Dst, GrayClipping Clip = Saturate);
    static void Subtract(const Image& Src, int Const, Image& Dst, GrayClipping Clip = Saturate);
    static void Subtract(const Image& Src, const Image& SrcB, Image& Dst, GrayClipping Clip = Saturate);
    static void Multiply(double Const, const Image& Src, Image& Dst, GrayClipping Clip = Saturate);
    static void Multiply(const Image& Src, const Image& SrcB, Image& Dst, GrayClipping Clip = Saturate);
    static void Divide(double Const, const Image& Src, Image& Dst, GrayClipping Clip = Saturate);
    static void Divide(const Image& Src, double Const, Image& Dst, GrayClipping Clip = Saturate);
    static void Divide(const Image& Src, const Image& SrcB, Image& Dst, GrayClipping Clip = Saturate);
    static void Maximize(int Const, const Image& Src, Image& Dst);
    static void Maximize(const Image& Src, const Image& SrcB, Image& Dst);
    static void Minimize(int Const, const Image& Src, Image& Dst);
    static void Minimize(const Image& Src, const Image& SrcB, Image& Dst);
    static void Blend(double Alpha, const Image& Src, const Image& SrcB, Image& Dst);

    static void EqualTest(int Const, const Image& Src, Image& Dst, int Black = 0, int White = ~0);
    static void EqualTest(const Image& Src, const Image& SrcB, Image& Dst, int Black = 0, int White = ~0);
    static void GreaterTest(int Const, const Image& Src, Image& Dst, int Black = 0, int White = ~0);
    static void GreaterTest(const Image& Src, int Const, Image& Dst, int Black = 0, int White = ~0);
    static void GreaterTest(const Image& Src, const Image& SrcB, Image& Dst, int Black = 0, int White = ~0);
    static void GreaterEqualTest(int Const, const Image& Src, Image& Dst, int Black = 0, int White = ~0);
    static void GreaterEqualTest(const Image& Src, int Const, Image& Dst, int Black = 0, int White = ~0);
    static void GreaterEqualTest(const Image& Src, const Image& SrcB, Image& Dst, int Black = 0, int White = ~0);
    static void And(int Const, const Image& Src, Image& Dst);
    static void And(const Image& Src, const Image& SrcB, Image& Dst);
    static void Or(int Const, const Image& Src, Image& Dst);
    static void Or(const Image& Src, const Image& SrcB, Image& Dst);
    static void Xor(int Const, const Image& Src, Image& Dst);
    static void Xor(const Image& Src, const Image& SrcB, Image& Dst);

    /// Threshold form; `Auto` finds the threshold. Returns the threshold used.
    static int Binarize(int Threshold, const Image& Src, Image& Dst, bool Above = true, Binarization Mode = Binary);
    /// Automatic form for `Gray` and `Rgb`. Returns the threshold of a `Gray` source, 0 for `Rgb`.
    static int Binarize(const Image& Src, Image& Dst, bool Above = true, Binarization Mode = Binary);
    /// Adaptive form for `Gray` and `Gray16`: against the mean of a box of `Size` x `Size` plus `Noise`.
    static void Binarize(int Size, int Noise, const Image& Src, Image& Dst, bool Above = true);
    /// Half way between two gray values, for `Gray`.
    static void Binarize(GrayPixel Background, GrayPixel Foreground, const Image& Src, Image& Dst, bool Above = true,
                         Binarization Mode = Binary);
    /// Half way between two colours, for `Rgb`.
    static void Binarize(RgbPixel BackColor, RgbPixel ForeColor, const Image& Src, Image& Dst, bool Above = true,
                         Binarization Mode = Binary);
    /// Nearness to one colour, for `Rgb`; the mode given tells it from the form above.
    static void Binarize(RgbPixel ForeColor, RgbPixel Tolerance, const Image& Src, Image& Dst, Binarization Mode,
                         bool Isotropic = false);

    static void AddCorrect(const Image& Src, const Image& SrcWhite, Image& Dst, int White = 0);
    static void AddCorrect(const Image& Src, const Image& SrcWhite, Image& Dst, RgbPixel White);
    static void MultiplyCorrect(const Image& Src, const Image& SrcWhite, Image& Dst, int White = 255);
    static void MultiplyCorrect(const Image& Src, const Image& SrcWhite, Image& Dst, RgbPixel White);
    static void Correct(const Image& Src, const Image& SrcBlack, const Image& SrcWhite, Image& Dst, int Black = 0,
                        int White = 255);
    static void Correct(const Image& Src, const Image& SrcBlack, const Image& SrcWhite, Image& Dst, RgbPixel Black,
                        RgbPixel White);

    static void GainOffset(double Gain, double Offset, const Image& Src, Image& Dst);
    static void Normalize(double Mean, double Variance, const Image& Src, Image& Dst);
    static void Equalize(const Image& Src, Image& Dst);
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
