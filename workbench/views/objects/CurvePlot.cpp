// The numbers beside the plots of histograms and profiles, and what is under the pointer.
#include "workbench/views/objects/CurvePlot.h"

#include <algorithm>
#include <cmath>

namespace TeskPlus {

namespace {

int ChannelsOf(const Profile& profile)
{
    return profile.Type == Rgba ? 4 : profile.Type == Rgb ? 3 : 1;
}

/// Opacity is not plotted.
int CurvesOf(const Profile& profile)
{
    return std::min(ChannelsOf(profile), 3);
}

double ValueAt(const Profile& profile, int index, int channel)
{
    switch (profile.Type) {
    case Float:
        return profile.Samples<float>()[index];
    case Dble:
        return profile.Samples<double>()[index];
    case Bool:
        return profile.First[index];
    default:
        return profile.Samples()[static_cast<std::ptrdiff_t>(index) * ChannelsOf(profile) + channel];
    }
}

} // namespace

PlotAxes CurveAxes(const AnyVariable& Object)
{
    return WithCurve(Object, [](const Profile& curve) {
        // Zero is always in sight.
        double low = 0, high = 0;
        for (int i = 0; i < curve.Length; i++)
            for (int channel = 0; channel < CurvesOf(curve); channel++) {
                const double value = ValueAt(curve, i, channel);
                low = std::min(low, value);
                high = std::max(high, value);
            }
        const double first = int{curve.I};
        return PlotAxes{{first, first + std::max(curve.Length - 1, 0)}, {{low, low == high ? low + 1 : high}}};
    });
}

QString CurveReadOut(const AnyVariable& Object, double Across)
{
    return WithCurve(Object, [&](const Profile& curve) {
        if (curve.Length < 1 || !std::isfinite(Across)) return QString();
        const double last = curve.Length - 1.0;
        const int index = static_cast<int>(std::lround(std::clamp(Across - curve.I, 0.0, last)));
        QString text = QString::number(curve.I + index) + ":";
        for (int channel = 0; channel < CurvesOf(curve); channel++)
            text += " " + QString::number(ValueAt(curve, index, channel), 'g', 10);
        return text;
    });
}

} // namespace TeskPlus
