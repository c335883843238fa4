// Counts of pixels by gray or colour level; the statistics and thresholds that follow from them; measures of the
// quality of an image and of the difference between two.
#pragma once

#include "measure/Profile.h"

namespace Tesk {

class Comparator;
class Entry;
class Region;

/// A profile whose samples are counts: 256 for `Gray` and `Rgb` images, `1 << GrayDepth` for `Gray16`; three counts a
/// level for `Rgb`. With a window, the level of its first count is `I`.
///
/// Each statistic has a form on the histogram, which refuses an empty one (`VoidObject`), and a static form on the
/// window of a `Gray` or `Gray16` image; the colour forms are for `Rgb`. Other types are refused (`UnsupportedType`).
///
///     Histogram histogram;
///     histogram.Compute(image);
///     const int threshold = histogram.BestThreshold();
///     const int bright = histogram.Count(threshold);
///     const double mean = Histogram::Mean(image); // without a histogram of one's own
class Histogram : public Profile
{
public:
    /// Counts the pixels of a `Gray`, `Gray16` or `Rgb` image; without `Clear` they are added to the counts, which
    /// must be of that many levels (`IncompatibleSize`).
    void Compute(const Image& Src, bool Clear = true);
    /// The same for the pixels of a region, whose coordinates count from the corner of the window, to which it is cut.
    void Compute(const Image& Src, const Region& Mask, bool Clear = true);
    /// Counts the samples of a `Gray`, `Gray16` or `Rgb` profile. Refused: samples out of the range of levels
    /// (`UnsupportedType`).
    void Compute(const Profile& Src, bool Clear = true);
    /// The running sums of the counts of a window, from its first level on; the counts around it are taken over.
    void Cumulate(const Histogram& Src);

    /// \name Statistics
    /// @{

    /// The number of pixels at or above a level, or below it.
    int Count(int Threshold = 128, bool Above = true) const;
    double Mean() const;
    void Mean(double& MeanR, double& MeanG, double& MeanB) const;
    /// One above the level in which the middle pixel falls.
    int Median() const;
    /// The level with the most pixels; the first of equals.
    int Mode() const;
    /// The number of levels that hold that fraction of the pixels: the smallest level below which they lie.
    int Quantile(double Percent) const;
    /// The mean of the levels left when half of that fraction is cut off at each end, whole levels at a time.
    double TrimmedMean(double Percent) const;
    void Range(int& Minimum, int& Maximum) const;
    void Range(RgbPixel& Minimum, RgbPixel& Maximum) const;
    double Variance(double& Mean) const;
    /// The mean of the variances of the three channels.
    double Variance(double& MeanR, double& MeanG, double& MeanB) const;
    /// The mean distance to the median.
    double MedianAbsoluteDeviation(int& Median) const;
    /// The third and the fourth standardised moment, 0 without variance; the kurtosis of a normal distribution is 3.
    double Skewness(double& Mean, double& Variance) const;
    double Kurtosis(double& Mean, double& Variance) const;
    /// In bits.
    double Entropy() const;
    /// The threshold of least variance within the parts (Otsu 1979); 0 without two parts.
    int BestThreshold() const;
    /// The threshold of the largest sum of entropies of the parts (Kapur 1985).
    int EntropyThreshold() const;
    /// The threshold half way between the means of its parts (Ridler 1978).
    int IsodataThreshold() const;
    /// @}

    /// \name The same on images
    /// @{
    static int Count(int Threshold, bool Above, const Image& Src);
    static double Mean(const Image& Src);
    static void Mean(const Image& Src, double& MeanR, double& MeanG, double& MeanB);
    static int Median(const Image& Src);
    static int Mode(const Image& Src);
    static int Quantile(double Percent, const Image& Src);
    static double TrimmedMean(double Percent, const Image& Src);
    static void Range(const Image& Src, int& Minimum, int& Maximum);
    static void Range(const Image& Src, RgbPixel& Minimum, RgbPixel& Maximum);
    static double Variance(const Image& Src, double& Mean);
    static double Variance(const Image& Src, double& MeanR, double& MeanG, double& MeanB);
    static double MedianAbsoluteDeviation(const Image& Src, int& Median);
    static double Skewness(const Image& Src, double& Mean, double& Variance);
    static double Kurtosis(const Image& Src, double& Mean, double& Variance);
    static double Entropy(const Image& Src);
    static int BestThreshold(const Image& Src);
    static int EntropyThreshold(const Image& Src);
    static int IsodataThreshold(const Image& Src);
    /// The variances and the covariances of the channels of an `Rgb` image.
    static void Covariance(const Image& Src, double& RR, double& GG, double& BB, double& RG, double& GB, double& BR);
    /// @}

    /// The standard deviation of the noise of a `Gray`, `Gray16` or `Rgb` image, as far as it answers to a mask that
    /// kills linear structure (Immerkaer 1996), 3 x 3 or with `Large` 5 x 5; 0 for a smaller window.
    static double Noise(const Image& Src, bool Large = false);
    /// The magnitude of that answer, at most 255; 0 along the border. `Dst` is `Rgb` for `Rgb`, else `Gray`.
    static void ShowNoise(const Image& Src, Image& Dst, bool Large = false);
    /// The extreme levels of a `Gray` or `Rgb` image, and the shares of the pixels that stand there.
    static void Saturation(const Image& Src, int& Darkest, int& Lightest, double& BlackFraction, double& WhiteFraction);
    /// A colour copy of a `Gray` or `Rgb` image in which the pixels of a channel at or below `Dark` are blue, and those
    /// at or above `Light` red; `NotInitialized` stands for the extreme levels.
    static void ShowSaturation(const Image& Src, Image& Dst, int Dark = NotInitialized, int Light = NotInitialized);

    /// \name Comparison of two `Gray`, `Gray16` or `Rgb` images of one size
    /// @{

    /// The number of pixels that differ.
    static int CountDifferences(const Image& Src, const Image& SrcB);
    /// The sum over all channels, or with `Average` that divided by the number of pixels.
    static double SumAbsoluteDifferences(const Image& Src, const Image& SrcB, bool Average);
    /// The sum over all channels, or with `RMS` the square root of that divided by the number of pixels.
    static double SumSquaredDifferences(const Image& Src, const Image& SrcB, bool RMS = true);
    /// -1 to 1, for `Gray` and `Rgb`; 0 where one of the images is constant.
    static double NormalizedCorrelation(const Image& Src, const Image& SrcB);
    /// @}

    /// Brings a `Gray` image to a mean and a variance; negative ones keep its own. A constant image takes the mean.
    static void Normalize(double Mean, double Variance, const Image& Src, Image& Dst, double& Gain, double& Offset);
    /// An `Rgb` image to three means, by one gain and three offsets.
    static void Normalize(double MeanR, double MeanG, double MeanB, double Variance, const Image& Src, Image& Dst,
                          double& Gain, double& OffsetR, double& OffsetG, double& OffsetB);
    /// A `Gray` image to the mean and the variance of another one, of any size.
    static void Normalize(const Image& Src, const Image& SrcB, Image& Dst, double& Gain, double& Offset);

    /// A colour copy of `Src` in which the pixels that are lighter than in `SrcB` by `Threshold` are red, and those
    /// that are darker by it blue. Other types than `Gray` are compared as `Operator::Copy` makes them gray. With
    /// `Normalize`, `SrcB` is first scaled to `Src`.
    static void ShowDifferences(const Image& Src, const Image& SrcB, Image& Dst, int Threshold = 16,
                                bool Normalize = false);

    /// The count of a level. Refused: an empty histogram (`VoidObject`), an index out of range (`OutOfRange`); the
    /// reference is then to a dummy count.
    int& Bin(int Index) const;

    /// The counts, or one of them, with their levels. -1 for all; other negative indexes count from the end.
    const char* ToAsciiString(int Index) const;

private:
    friend class Blobs;
    friend class Comparator;
    friend class Path;

    bool SetUp(const Entry& entry, PixelTypes type, int entries, bool clear);
    bool SetUpSums(const Histogram& Src, Profile& held);
};

} // namespace Tesk
