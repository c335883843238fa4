// What is plotted for each type that has a plot.
#include "workbench/views/GenericPlotController.h"

#include "image/Histogram.h"

namespace TeskPlus {

namespace {

template <typename T>
const T& ValueOf(const AnyVariable& Object)
{
    return static_cast<const Var<T>&>(Object).Value;
}

template <typename T>
void PlotCurve(AnyVariable& Object, int Width, int Height)
{
    ValueOf<T>(Object).Plot(0, 0, Width, Height, false, 0, 0, 0, true);
}

template <typename T>
std::string CurveText(const AnyVariable& Object)
{
    const char* text = ValueOf<T>(Object).ToAsciiString(-1);
    return text ? text : "";
}

constexpr int histogramType = 43, profileType = 62;

constexpr PlotRow rows[] = {
    {histogramType, 512, 256, Green, PlotCurve<Histogram>, L"&Copy frequencies to Clipboard", CurveText<Histogram>},
    {profileType, 512, 256, Blue, PlotCurve<Profile>, L"&Copy values to Clipboard", CurveText<Profile>},
};

} // namespace

const PlotRow* FindPlot(int Type)
{
    for (const PlotRow& row : rows)
        if (row.Type == Type) return &row;
    return nullptr;
}

} // namespace TeskPlus
