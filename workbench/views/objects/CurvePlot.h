// The plots of histograms and profiles: each may be bound where the other is asked for.
#pragma once

#include "image/Histogram.h"
#include "workbench/views/objects/GenericPlotController.h"

#include <string>

namespace TeskPlus {

/// Calls `f` with the histogram or the profile.
template <typename F>
auto WithCurve(const AnyVariable& Object, F f)
{
    if (const auto* histogram = dynamic_cast<const Var<Histogram>*>(&Object)) return f(histogram->Value);
    return f(dynamic_cast<const Var<Profile>&>(Object).Value);
}

inline void PlotCurve(AnyVariable& Object, int Width, int Height)
{
    WithCurve(Object, [&](const auto& curve) { curve.Plot(0, 0, Width, Height, false, 0, 0, 0, true); });
}

inline std::string CurveText(const AnyVariable& Object)
{
    return WithCurve(Object, [](const auto& curve) {
        const char* text = curve.ToAsciiString(-1);
        return std::string(text ? text : "");
    });
}

/// Indexes of the store across, and the values that fill the plot.
PlotAxes CurveAxes(const AnyVariable& Object);
/// "Index: value", with the values of red, green and blue where there are these.
QString CurveReadOut(const AnyVariable& Object, double Across);

} // namespace TeskPlus
