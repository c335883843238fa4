// What is plotted for each type that has a plot.
#include "workbench/views/objects/GenericPlotController.h"

#include "image/Histogram.h"
#include "workbench/logic/TypeCodes.h"

namespace TeskPlus {

namespace {

/// Calls `f` with the histogram or the profile: each may be bound where the other is asked for.
template <typename F>
auto WithCurve(const AnyVariable& Object, F f)
{
    if (const auto* histogram = dynamic_cast<const Var<Histogram>*>(&Object)) return f(histogram->Value);
    return f(dynamic_cast<const Var<Profile>&>(Object).Value);
}

void PlotCurve(AnyVariable& Object, int Width, int Height)
{
    WithCurve(Object, [&](const auto& curve) { curve.Plot(0, 0, Width, Height, false, 0, 0, 0, true); });
}

std::string CurveText(const AnyVariable& Object)
{
    return WithCurve(Object, [](const auto& curve) {
        const char* text = curve.ToAsciiString(-1);
        return std::string(text ? text : "");
    });
}

constexpr PlotRow rows[] = {
    {histogramType, 512, 256, Green, PlotCurve, L"&Copy frequencies to Clipboard", CurveText},
    {profileType, 512, 256, Blue, PlotCurve, L"&Copy values to Clipboard", CurveText},
};

} // namespace

const PlotRow* FindPlot(int Type)
{
    for (const PlotRow& row : rows)
        if (row.Type == Type) return &row;
    return nullptr;
}

} // namespace TeskPlus
