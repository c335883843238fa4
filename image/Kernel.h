// Filters in which a pixel depends on its neighbourhood: a user's convolution mask, and the fixed low-pass, high-pass
// and edge filters.
#pragma once

#include "image/Image.h"

#include <vector>

namespace Tesk {

/// A convolution mask, and the home of the fixed filters.
///
/// All filters read `Src` and write `Dst` through their windows, size `Dst` themselves, and may run in place. A pixel
/// outside the window counts as the nearest pixel of the window, whatever the store holds there. Unless told otherwise
/// they take `Gray` images. Refused: a void source (`VoidObject`), a pixel type that is not listed (`UnsupportedType`),
/// a clip mode that is not listed (`OutOfRange`), a filter size that is not a positive odd number or is beyond 32767
/// (`OutOfRange`), no memory (`CannotAllocate`).
///
///     Image smooth, edges;
///     Kernel::GaussLowPass(9, 9, image, smooth);
///     Kernel mask; // 3 x 3
///     mask.Coefficient(0, 1) = -1;
///     mask.Coefficient(2, 1) = 1;
///     mask.Convolve(smooth, edges);
class Kernel
{
public:
    /// The size of the mask. A change takes effect at the next use, with all coefficients 0; `Set` does both at once.
    int Width = 3, Height = 3;
    /// Treatment of results out of range: `Saturate`, `Absolute` or `Negative`.
    GrayClipping Clip = Absolute;
    /// Added to every result.
    double Offset = 0;
    /// `Width * Height` numbers, row by row.
    std::vector<double> Coefficients = std::vector<double>(9);

    /// Resizes the mask; the coefficients become 0 unless their number stays. Refused: a negative size, no memory
    /// (`CannotAllocate`).
    void Set(int Width, int Height);
    /// With `KeepView` takes all of another mask. A mask has nothing but settings: without it, it keeps its own.
    /// Refused: no memory (`CannotAllocate`).
    void ShallowCopy(const Kernel& Src, bool KeepView);
    /// A coefficient by column and row. Outside the mask (`OutOfRange`) the reference is to a dummy.
    double& Coefficient(int X, int Y);
    /// Scales the coefficients so that they add up to `Sum`. Refused: an empty mask or one of sum 0 (`OutOfRange`).
    void Normalize(double Sum);
    /// The correlation of `Gray` pixels with the mask, centred at `Width / 2`, `Height / 2`, plus `Offset`, in double
    /// precision, rounded to the nearest.
    void Convolve(const Image& Src, Image& Dst);

    /// The mean of 3 x 3 pixels, in the integer form (S - (S * 7 >> 6)) >> 3.
    static void Smooth(const Image& Src, Image& Dst);
    /// The mean of the eight neighbours.
    static void Smooth8(const Image& Src, Image& Dst);
    /// The binomial mask 1 2 1 by 1 2 1, truncated; the wider ones are two, three and four passes of it.
    static void Binomial(const Image& Src, Image& Dst);
    static void Binomial5(const Image& Src, Image& Dst);
    static void Binomial7(const Image& Src, Image& Dst);
    static void Binomial9(const Image& Src, Image& Dst);
    /// The truncated mean of a box; `Gray`, `Gray16`. The time does not depend on the size.
    static void BoxLowPass(int FilterWidth, int FilterHeight, const Image& Src, Image& Dst);
    /// A Gaussian approximated by three boxes along rows, then along columns, whose radii add up to half the size;
    /// `Gray`, `Gray16`. The time does not depend on the size.
    static void GaussLowPass(int FilterWidth, int FilterHeight, const Image& Src, Image& Dst);
    /// The sigma filter (Lee, 1983): the mean of those pixels of a square that differ from the centre by at most
    /// `GrayRange`; `Gray`, `Gray16`.
    static void Bilateral(int FilterSize, int GrayRange, const Image& Src, Image& Dst);

    /// The pixel raised above its four or eight neighbours; `Clip` `Saturate` or `Absolute`.
    static void Sharpen4(const Image& Src, Image& Dst, GrayClipping Clip = Saturate);
    static void Sharpen8(const Image& Src, Image& Dst, GrayClipping Clip = Saturate);
    /// Adds `Strength` times the difference from the mean of the eight neighbours; `Gray`, `Rgb`.
    static void Unsharp(double Strength, const Image& Src, Image& Dst);
    /// `Gain` times the difference from the low-pass of the same name; `Clip` `Saturate`, `Absolute` or `Rescale`
    /// (128, or 32768, stands for 0); `Gray`, `Gray16` (up to 32767).
    static void BoxHighPass(int FilterWidth, int FilterHeight, const Image& Src, Image& Dst,
                            GrayClipping Clip = Saturate, double Gain = 1);
    static void GaussHighPass(int FilterWidth, int FilterHeight, const Image& Src, Image& Dst,
                              GrayClipping Clip = Saturate, double Gain = 1);

    /// Differences between the neighbours on both sides: the larger of the two directions, or one of them; `Gray`,
    /// `Gray16`.
    static void Gradient(const Image& Src, Image& Dst);
    static void GradientX(const Image& Src, Image& Dst);
    static void GradientY(const Image& Src, Image& Dst);
    /// The sum of the two differences; `Clip` `Saturate` or `Rescale` (halved).
    static void GradientSum(const Image& Src, Image& Dst, GrayClipping Clip = Saturate);
    /// Sobel's masks: the larger component, the sum, or one of them; `Clip` `Saturate` or `Rescale`.
    static void Sobel(const Image& Src, Image& Dst, GrayClipping Clip = Saturate);
    static void SobelSum(const Image& Src, Image& Dst, GrayClipping Clip = Saturate);
    static void SobelX(const Image& Src, Image& Dst, GrayClipping Clip = Saturate);
    static void SobelY(const Image& Src, Image& Dst, GrayClipping Clip = Saturate);
    /// Prewitt's masks, as with Sobel's.
    static void Prewitt(const Image& Src, Image& Dst, GrayClipping Clip = Saturate);
    static void PrewittSum(const Image& Src, Image& Dst, GrayClipping Clip = Saturate);
    static void PrewittX(const Image& Src, Image& Dst, GrayClipping Clip = Saturate);
    static void PrewittY(const Image& Src, Image& Dst, GrayClipping Clip = Saturate);
    /// The magnitude of the gradient of the image smoothed by a binomial mask. Refused: a type other than
    /// `Canny1Gradient`, `Canny15Gradient`, `Canny2Gradient` (`UnsupportedType`).
    static void Canny(const Image& Src, Image& Dst, GradientTypes Type);
    /// The direction of that gradient: 256 steps for a full turn with 128 for +X, or else folded about the X axis with
    /// 255 for +X and 0 for -X.
    static void CannyPhase(const Image& Src, Image& Dst, GradientTypes Type, bool FullTurn = true);
    /// How well a plane fits the 21 pixels of a 5 x 5 square without its corners; 0 along the two outer rows and
    /// columns.
    static void CorrelatedGradient(const Image& Src, Image& Dst);
    /// The standard deviation in a box, truncated.
    static void BoxDeviation(int FilterWidth, int FilterHeight, const Image& Src, Image& Dst);
    /// The smaller eigenvalue of the gradients' covariance in a square (Shi and Tomasi, 1994), or with `Edges` the
    /// larger one.
    static void Cornerness(int FilterSize, const Image& Src, Image& Dst, bool Edges = false);

private:
    bool FitCoefficients();
};

} // namespace Tesk
