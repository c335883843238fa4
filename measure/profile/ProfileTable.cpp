// Profiles that are defined as lookup tables.
#include "measure/Profile.h"

#include "image/core/GrayDepth.h"
#include "measure/profile/ProfileFrame.h"

#include <cmath>

namespace Tesk {

using namespace profiles;

namespace {

constexpr int tableLength = 256;
constexpr int largestGray16 = 32767;
/// The range over which `Logarithm` and `Gamma` run.
constexpr double grayRange = 256, gray16Range = 65536;

double RangeOf(PixelTypes type)
{
    return type == Gray16 ? gray16Range : grayRange;
}

/// One colour of the ramp from blue over cyan, green and yellow to red.
void RampColor(int index, std::int32_t* rgb)
{
    constexpr int quarter = tableLength / 4, full = 255;
    const int within = index % quarter * full / (quarter - 1);
    switch (index / quarter) {
    case 0:
        rgb[0] = 0, rgb[1] = within, rgb[2] = full;
        break;
    case 1:
        rgb[0] = 0, rgb[1] = full, rgb[2] = full - within;
        break;
    case 2:
        rgb[0] = within, rgb[1] = full, rgb[2] = 0;
        break;
    default:
        rgb[0] = full, rgb[1] = full - within, rgb[2] = 0;
    }
}

} // namespace

/// Sizes the table for `type`, and gives every component of each sample the value `f(index)`.
template <typename F>
int Profile::Define(PixelTypes type, F f)
{
    const PixelTypes wanted = type == Undefined ? PixelTypes(Type) : type;
    const bool fixed = wanted == Gray || wanted == Gray16 || wanted == Rgb;
    if (type == Undefined && Length < 1) return RefuseEmpty();
    if (!fixed && !(type == Undefined && (IsWhole(wanted) || wanted == Rgba))) return RefuseType(wanted);
    const int length = wanted == Gray16 ? levels::Gray16Levels() : tableLength;
    if (!(type == Undefined ? DetachIfShared() : TrySet(length, type))) return RefuseMemory();
    Source = {};
    const int channels = Channels(Type);
    std::int32_t* samples = Samples();
    for (int i = 0; i < Length; i++) {
        const int value = f(i);
        for (int c = 0; c < channels; c++)
            *samples++ = value;
    }
    return NoError;
}

void Profile::GainOffset(double Gain, double Offset, PixelTypes Type)
{
    const Entry entry("Tesk::Profile::GainOffset");
    const PixelTypes type = Type == Undefined ? PixelTypes(this->Type) : Type;
    const bool bytes = type == Gray || type == Rgb || type == Rgba;
    // Types without a range of pixels are held to what a sample can store alone.
    const bool ranged = bytes || type == Gray16;
    const int largest = bytes ? 255 : type == Gray16 ? largestGray16 : INT32_MAX;
    entry.Refuses(
        Define(Type, [=](int i) { return Clamp(Truncated(i * Gain + Offset), ranged ? 0 : INT32_MIN, largest); }));
}

void Profile::Threshold(int Threshold, int Black, int White, PixelTypes Type)
{
    const Entry entry("Tesk::Profile::Threshold");
    entry.Refuses(Define(Type, [=](int i) { return i < Threshold ? Black : White; }));
}

void Profile::BiThreshold(int Threshold, int Delta, int Black, int MidGray, int White, PixelTypes Type)
{
    const Entry entry("Tesk::Profile::BiThreshold");
    const PixelTypes type = Type == Undefined ? PixelTypes(this->Type) : Type;
    const int half = type != Gray16 ? 128 : Type == Undefined ? Length / 2 : levels::Gray16Levels() / 2;
    const int middle = MidGray == NotInitialized ? half : MidGray;
    const std::int64_t upper = std::int64_t{Threshold} + Delta;
    entry.Refuses(Define(Type, [=](int i) { return i < Threshold ? Black : i < upper ? middle : White; }));
}

void Profile::Quantize(int Resolution, PixelTypes Type)
{
    const Entry entry("Tesk::Profile::Quantize");
    if (Resolution < 1) {
        entry.Refuse(OutOfRange, L"The resolution (%d) must be positive", Resolution);
        return;
    }
    entry.Refuses(Define(Type, [=](int i) { return i - i % Resolution; }));
}

void Profile::Logarithm(bool Inverse, PixelTypes Type)
{
    const Entry entry("Tesk::Profile::Logarithm");
    const double n = RangeOf(Type == Undefined ? PixelTypes(this->Type) : Type), logN = std::log(n);
    entry.Refuses(Define(Type, [=](int i) {
        if (i == 0) return 0;
        return Truncated(Inverse ? std::exp(i * logN / n) : std::log(static_cast<double>(i)) * n / logN);
    }));
}

void Profile::Gamma(double Exponent, PixelTypes Type)
{
    const Entry entry("Tesk::Profile::Gamma");
    const double n = RangeOf(Type == Undefined ? PixelTypes(this->Type) : Type), factor = std::pow(n, 1 - Exponent);
    entry.Refuses(Define(Type, [=](int i) { return i == 0 ? 0 : Truncated(std::pow(i, Exponent) * factor); }));
}

void Profile::PseudoColor(bool Inverse)
{
    const Entry entry("Tesk::Profile::PseudoColor");
    if (entry.Refuses(Size(tableLength, Rgb))) return;
    Source = {};
    for (int i = 0; i < tableLength; i++)
        RampColor(Inverse ? tableLength - 1 - i : i, Samples() + 3 * i);
}

} // namespace Tesk
