// The plain loops that define what the filters' row kernels give.
#include "image/filter/FilterKernels.h"

#include <cmath>
#include <cstdlib>

namespace Tesk::kernels {

namespace {

int Byte(int value)
{
    return value < 0 ? 0 : value > 255 ? 255 : value;
}

int Larger(int a, int b)
{
    return a > b ? a : b;
}

/// The 3 x 3 pixels around a place, by column: left, middle, right; and by row: above, here, below.
struct Window
{
    int la, ma, ra, lh, mh, rh, lb, mb, rb;

    int Sum() const { return la + ma + ra + lh + mh + rh + lb + mb + rb; }
    int Cross() const { return 5 * mh - lh - rh - ma - mb; }
    int X() const { return std::abs(lh - rh); }
    int Y() const { return std::abs(ma - mb); }
    int SobelX() const { return std::abs(ra + 2 * rh + rb - la - 2 * lh - lb); }
    int SobelY() const { return std::abs(lb + 2 * mb + rb - la - 2 * ma - ra); }
    int PrewittX() const { return std::abs(ra + rh + rb - la - lh - lb); }
    int PrewittY() const { return std::abs(lb + mb + rb - la - ma - ra); }
};

template <typename F>
void EachWindow(const std::uint8_t* a, const std::uint8_t* h, const std::uint8_t* b, std::uint8_t* d, std::size_t n,
                F f)
{
    const auto count = static_cast<std::ptrdiff_t>(n);
    for (std::ptrdiff_t i = 0; i < count; i++)
        d[i] = static_cast<std::uint8_t>(
            f(Window{a[i - 1], a[i], a[i + 1], h[i - 1], h[i], h[i + 1], b[i - 1], b[i], b[i + 1]}));
}

/// Binomial coefficients of the orders in use.
const int* Weights(int order)
{
    static constexpr int four[] = {1, 4, 6, 4, 1}, six[] = {1, 6, 15, 20, 15, 6, 1},
                         eight[] = {1, 8, 28, 56, 70, 56, 28, 8, 1};
    return order == 4 ? four : order == 6 ? six : eight;
}

} // namespace

void Square3RowPlain(Square3 Filter, const std::uint8_t* above, const std::uint8_t* here, const std::uint8_t* below,
                     std::uint8_t* d, std::size_t n)
{
    const auto each = [&](auto f) { EachWindow(above, here, below, d, n, f); };
    using W = const Window&;
    switch (Filter) {
    case Square3::Smooth:
        return each([](W w) { return (w.Sum() - ((w.Sum() * 7) >> 6)) >> 3; });
    case Square3::Smooth8:
        return each([](W w) { return (w.Sum() - w.mh) >> 3; });
    case Square3::Binomial:
        return each(
            [](W w) { return (w.la + 2 * w.ma + w.ra + 2 * (w.lh + 2 * w.mh + w.rh) + w.lb + 2 * w.mb + w.rb) >> 4; });
    case Square3::Sharpen4:
        return each([](W w) { return Byte(w.Cross()); });
    case Square3::Sharpen8:
        return each([](W w) { return Byte(10 * w.mh - w.Sum()); });
    case Square3::Sharpen4Absolute:
        return each([](W w) { return Byte(std::abs(w.Cross())); });
    case Square3::Sharpen8Absolute:
        return each([](W w) { return Byte(std::abs(10 * w.mh - w.Sum())); });
    case Square3::GradientLarger:
        return each([](W w) { return Larger(w.X(), w.Y()); });
    case Square3::GradientX:
        return each([](W w) { return w.X(); });
    case Square3::GradientY:
        return each([](W w) { return w.Y(); });
    case Square3::GradientSum:
        return each([](W w) { return Byte(w.X() + w.Y()); });
    case Square3::GradientHalfSum:
        return each([](W w) { return (w.X() + w.Y()) >> 1; });
    case Square3::SobelLarger:
        return each([](W w) { return Byte(Larger(w.SobelX(), w.SobelY())); });
    case Square3::SobelSum:
        return each([](W w) { return Byte(w.SobelX() + w.SobelY()); });
    case Square3::SobelX:
        return each([](W w) { return Byte(w.SobelX()); });
    case Square3::SobelY:
        return each([](W w) { return Byte(w.SobelY()); });
    case Square3::SobelLargerScaled:
        return each([](W w) { return Larger(w.SobelX(), w.SobelY()) >> 2; });
    case Square3::SobelSumScaled:
        return each([](W w) { return (w.SobelX() + w.SobelY()) >> 3; });
    case Square3::SobelXScaled:
        return each([](W w) { return w.SobelX() >> 2; });
    case Square3::SobelYScaled:
        return each([](W w) { return w.SobelY() >> 2; });
    case Square3::PrewittLarger:
        return each([](W w) { return Byte(Larger(w.PrewittX(), w.PrewittY())); });
    case Square3::PrewittSum:
        return each([](W w) { return Byte(w.PrewittX() + w.PrewittY()); });
    case Square3::PrewittX:
        return each([](W w) { return Byte(w.PrewittX()); });
    case Square3::PrewittY:
        return each([](W w) { return Byte(w.PrewittY()); });
    case Square3::PrewittLargerScaled:
        return each([](W w) { return (Larger(w.PrewittX(), w.PrewittY()) * 42) >> 7; });
    case Square3::PrewittSumScaled:
        return each([](W w) { return ((w.PrewittX() + w.PrewittY()) * 42) >> 8; });
    case Square3::PrewittXScaled:
        return each([](W w) { return (w.PrewittX() * 85) >> 8; });
    case Square3::PrewittYScaled:
        return each([](W w) { return (w.PrewittY() * 85) >> 8; });
    }
}

void UnsharpRowPlain(const std::uint8_t* above, const std::uint8_t* here, const std::uint8_t* below, std::uint8_t* d,
                     std::size_t n, std::ptrdiff_t step, int K)
{
    const auto count = static_cast<std::ptrdiff_t>(n);
    for (std::ptrdiff_t i = 0; i < count; i++) {
        int sum = here[i - step] + here[i + step];
        sum += above[i - step] + above[i] + above[i + step] + below[i - step] + below[i] + below[i + step];
        const int s = here[i];
        d[i] = static_cast<std::uint8_t>(Byte(s + (((s - (sum >> 3)) * K) >> 10)));
    }
}

void BinomialWordsRowPlain(int Order, const std::uint8_t* s, std::uint16_t* d, std::size_t n)
{
    const int* weights = Weights(Order);
    for (std::size_t i = 0; i < n; i++) {
        const std::uint8_t* from = s + i - Order / 2;
        int sum = 0;
        for (int k = 0; k <= Order; k++)
            sum += weights[k] * from[k];
        d[i] = static_cast<std::uint16_t>(sum);
    }
}

void BinomialColumnsRowPlain(int Order, const std::uint16_t* const* rows, std::uint16_t* d, std::size_t n)
{
    const int* weights = Weights(Order);
    for (std::size_t i = 0; i < n; i++) {
        int sum = 0;
        for (int k = 0; k <= Order; k++)
            sum += weights[k] * rows[k][i];
        d[i] = static_cast<std::uint16_t>(sum >> (2 * Order - 8));
    }
}

void ShiftedDifferenceRowPlain(const std::uint16_t* a, const std::uint16_t* b, std::int16_t* d, std::size_t n,
                               int Shift)
{
    for (std::size_t i = 0; i < n; i++)
        d[i] = static_cast<std::int16_t>((a[i] - b[i]) >> Shift);
}

void MagnitudeRowPlain(const std::int16_t* x, const std::int16_t* y, std::uint8_t* d, std::size_t n)
{
    // The sum of the squares is below 2^24, and so exact; and the rounded root of k * k - 1 is below k there.
    for (std::size_t i = 0; i < n; i++)
        d[i] =
            static_cast<std::uint8_t>(Byte(static_cast<int>(std::sqrt(static_cast<float>(x[i] * x[i] + y[i] * y[i])))));
}

} // namespace Tesk::kernels
