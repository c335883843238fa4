// The user's convolution mask.
#include "image/Kernel.h"
#include "image/filter/KernelFrame.h"

#include <utility>

namespace Tesk {

namespace {

using namespace filters;

/// Rows beyond the window repeat its first or last one, so a mask needs at most the rows of the window as doubles.
std::vector<double> Extended(const Image& src, int y, int left, int right)
{
    std::vector<double> row(static_cast<std::size_t>(left) + static_cast<std::size_t>(right) +
                            static_cast<std::size_t>(int(src.Width)));
    const GrayPixel* s = src.Row<GrayPixel>(y);
    double* to = row.data();
    to = std::fill_n(to, left, s[0]);
    to = std::copy_n(s, int(src.Width), to);
    std::fill_n(to, right, s[src.Width - 1]);
    return row;
}

} // namespace

bool Kernel::FitCoefficients()
{
    if (Width < 0 || Height < 0) return false;
    const std::size_t count = static_cast<std::size_t>(Width) * static_cast<std::size_t>(Height);
    if (Coefficients.size() == count) return true;
    try {
        std::vector<double>(count).swap(Coefficients);
    } catch (const std::bad_alloc&) {
        return false;
    } catch (const std::length_error&) {
        return false;
    }
    return true;
}

void Kernel::Set(int Width, int Height)
{
    const Entry entry("Tesk::Kernel::Set");
    const int formerWidth = this->Width, formerHeight = this->Height;
    this->Width = Width;
    this->Height = Height;
    if (FitCoefficients()) return;
    this->Width = formerWidth;
    this->Height = formerHeight;
    entry.Refuse(CannotAllocate, L"Cannot allocate the kernel Buffer");
}

void Kernel::ShallowCopy(const Kernel& Src, bool KeepView)
{
    const Entry entry("Tesk::Kernel::ShallowCopy");
    if (!KeepView || this == &Src) return;
    entry.Guards(L"Cannot allocate the kernel Buffer", [&] {
        Kernel copy = Src;
        *this = std::move(copy);
    });
}

double& Kernel::Coefficient(int X, int Y)
{
    thread_local double dummy;
    const Entry entry("Tesk::Kernel::Coefficient");
    if (X >= 0 && X < Width && Y >= 0 && Y < Height) {
        if (FitCoefficients())
            return Coefficients[static_cast<std::size_t>(Y) * static_cast<std::size_t>(Width) +
                                static_cast<std::size_t>(X)];
        entry.Refuse(CannotAllocate, L"Cannot allocate the kernel Buffer");
    } else {
        entry.Refuse(OutOfRange, L"The requested indexes %d x %d are out of range %d x %d", X, Y, Width, Height);
    }
    dummy = 0;
    return dummy;
}

void Kernel::Normalize(double Sum)
{
    const Entry entry("Tesk::Kernel::Normalize");
    if (!FitCoefficients()) {
        entry.Refuse(CannotAllocate, L"Cannot allocate the kernel Buffer");
        return;
    }
    double sum = 0;
    for (const double coefficient : Coefficients)
        sum += coefficient;
    if (sum == 0) {
        entry.Refuse(OutOfRange, L"Cannot normalize, this is an empty or zero-sum kernel\n");
        return;
    }
    for (double& coefficient : Coefficients)
        coefficient *= Sum / sum;
}

void Kernel::Convolve(const Image& Src, Image& Dst)
{
    const Entry entry("Tesk::Kernel::Convolve");
    if (entry.Refuses(CheckType(Src, {Gray})) || entry.Refuses(CheckClip(Clip, {Saturate, Absolute, Negative}))) return;
    if (!FitCoefficients()) {
        entry.Refuse(CannotAllocate, L"Cannot allocate the kernel Buffer");
        return;
    }
    Sources held;
    // The rows that are still needed are kept as doubles.
    if (Prepare(entry, Src, Dst, Gray, held)) return;
    Guarded(entry, [&] {
        // A mask without coefficients reaches nowhere, however long its one side.
        const int maskWidth = Coefficients.empty() ? 0 : Width, maskHeight = Coefficients.empty() ? 0 : Height;
        const int width = held.a.Width, height = held.a.Height, up = maskHeight / 2;
        const std::size_t rowCount = static_cast<std::size_t>(Min(Max(maskHeight, 1), height));
        std::vector<std::vector<double>> ring(rowCount);
        std::vector<double> sums(static_cast<std::size_t>(width));
        int taken = 0;
        for (int y = 0; y < height; y++) {
            const std::int64_t last = Min<std::int64_t>(std::int64_t{y} - up + maskHeight - 1, height - 1);
            for (; taken <= Max<std::int64_t>(last, 0) && taken < height; taken++)
                ring[static_cast<std::size_t>(taken) % rowCount] =
                    Extended(held.a, taken, maskWidth / 2, maskWidth - maskWidth / 2);
            std::fill(sums.begin(), sums.end(), Offset);
            const double* coefficient = Coefficients.data();
            for (int j = 0; j < maskHeight; j++) {
                const auto from = Clamp<std::int64_t>(std::int64_t{y} - up + j, 0, height - 1);
                const double* row = ring[static_cast<std::size_t>(from) % rowCount].data();
                for (int i = 0; i < maskWidth; i++, coefficient++)
                    for (int x = 0; x < width; x++)
                        sums[static_cast<std::size_t>(x)] += *coefficient * row[x + i];
            }
            GrayPixel* d = Dst.Row<GrayPixel>(y);
            for (int x = 0; x < width; x++) {
                const double sum = sums[static_cast<std::size_t>(x)];
                const double value = Clip == Absolute ? std::abs(sum) : Clip == Negative ? -sum : sum;
                d[x] = TruncatedByte(value + 0.5);
            }
        }
    });
}

} // namespace Tesk
