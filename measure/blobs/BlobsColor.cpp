// Colours on a line: projections, and the two colours that an image consists of.
#include "measure/blobs/BlobsColor.h"

#include <Eigen/Dense>

#include <cmath>
#include <cstdint>

namespace Tesk::blobs {

namespace {

constexpr int fixedOne = 1024;

/// Truncation after a shift into positive numbers: the floor for all weights down to -32.
int Fixed(double value)
{
    constexpr int shift = 32768;
    return static_cast<int>(value * fixedOne + shift) - shift;
}

/// The sums over all pixels of the channels, blue first, and of their products.
struct ChannelSums
{
    std::int64_t sums[3] = {}, products[3][3] = {};

    explicit ChannelSums(const Image& src)
    {
        for (int y = 0; y < src.Height; y++) {
            // A row is at most 32767 pixels wide, whose products fit.
            std::uint32_t b = 0, g = 0, r = 0, bb = 0, bg = 0, br = 0, gg = 0, gr = 0, rr = 0;
            const RgbPixel* row = src.Row<RgbPixel>(y);
            for (int x = 0; x < src.Width; x++) {
                const std::uint32_t blue = row[x].Blue, green = row[x].Green, red = row[x].Red;
                b += blue;
                g += green;
                r += red;
                bb += blue * blue;
                bg += blue * green;
                br += blue * red;
                gg += green * green;
                gr += green * red;
                rr += red * red;
            }
            const std::uint32_t row1[3] = {b, g, r}, row2[3][3] = {{bb, bg, br}, {bg, gg, gr}, {br, gr, rr}};
            for (int i = 0; i < 3; i++) {
                sums[i] += row1[i];
                for (int j = 0; j < 3; j++)
                    products[i][j] += row2[i][j];
            }
        }
    }
};

/// The unit vector along which the pixels vary most, turned towards more of the channels.
Eigen::Vector3d PrincipalAxis(const ChannelSums& s, std::int64_t n)
{
    // About the integer means all sums are exact, and what is left to subtract is small.
    Eigen::Matrix3d scatter;
    for (int i = 0; i < 3; i++)
        for (int j = 0; j < 3; j++) {
            const std::int64_t mi = s.sums[i] / n, mj = s.sums[j] / n;
            const std::int64_t products = s.products[i][j] - mi * s.sums[j] - mj * s.sums[i] + n * mi * mj;
            scatter(i, j) = static_cast<double>(products) - static_cast<double>(s.sums[i] - n * mi) *
                                                                static_cast<double>(s.sums[j] - n * mj) /
                                                                static_cast<double>(n);
        }
    const Eigen::SelfAdjointEigenSolver<Eigen::Matrix3d> solver(scatter);
    Eigen::Vector3d axis = solver.eigenvectors().col(2);
    // Where the channels cancel out, the last one that varies decides.
    constexpr double nothing = 1e-9;
    double side = axis.sum();
    for (int i = 2; i >= 0 && std::abs(side) < nothing; i--)
        side = axis(i);
    if (side < 0) axis = -axis;
    return axis;
}

} // namespace

ColorPlane::ColorPlane(RgbPixel back, RgbPixel fore)
{
    const int db = fore.Blue - back.Blue, dg = fore.Green - back.Green, dr = fore.Red - back.Red;
    constexpr double foreAt = 256, middle = 128;
    const double s = foreAt / Max(db * db + dg * dg + dr * dr, 1);
    blue_ = Fixed(db * s);
    green_ = Fixed(dg * s);
    red_ = Fixed(dr * s);
    limit_ = static_cast<int>(
        std::floor((back.Blue * db * s + back.Green * dg * s + back.Red * dr * s + middle) * fixedOne));
}

DominantColors::DominantColors(const Image& src)
{
    const std::int64_t n = std::int64_t{src.Width} * src.Height;
    const ChannelSums s(src);
    const Eigen::Vector3d axis = PrincipalAxis(s, n);
    const int blue = Fixed(axis(0)), green = Fixed(axis(1)), red = Fixed(axis(2));
    double mean = 0;
    for (int i = 0; i < 3; i++)
        mean += axis(i) * static_cast<double>(s.sums[i]) / static_cast<double>(n);
    const int limit = static_cast<int>(std::floor(mean * fixedOne));
    std::int64_t low[3] = {}, count = 0;
    for (int y = 0; y < src.Height; y++) {
        const RgbPixel* row = src.Row<RgbPixel>(y);
        for (int x = 0; x < src.Width; x++) {
            const RgbPixel p = row[x];
            const std::int64_t isLow = blue * p.Blue + green * p.Green + red * p.Red < limit;
            count += isLow;
            low[0] += isLow * p.Blue;
            low[1] += isLow * p.Green;
            low[2] += isLow * p.Red;
        }
    }
    const auto mean3 = [](const std::int64_t* sums, std::int64_t pixels) {
        return RgbPixel(static_cast<int>(sums[2] / pixels), static_cast<int>(sums[1] / pixels),
                        static_cast<int>(sums[0] / pixels));
    };
    const std::int64_t others[3] = {s.sums[0] - low[0], s.sums[1] - low[1], s.sums[2] - low[2]};
    back = count > 0 ? mean3(low, count) : RgbPixel(0, 0, 0);
    fore = count < n ? mean3(others, n - count) : RgbPixel(255, 255, 255);
}

} // namespace Tesk::blobs
