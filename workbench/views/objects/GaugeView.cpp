// The plot of a gauge's probe, on which its thresholds are dragged, and the cursors of gauges.
#include "workbench/views/objects/GaugeView.h"

#include "gauge/EdgePlot.h"

#include <cmath>

namespace TeskPlus {

namespace {

class ProbeHandles final : public PlotHandles
{
public:
    explicit ProbeHandles(GaugeAccess gauge) : gauge_(gauge) {}

    void Draw(AnyVariable& Object, int Width, int Height) override
    {
        plot_.SetFrame(0, 0, Width, Height);
        plot_.Draw(gauge_(Object));
    }
    std::optional<Qt::CursorShape> Hit(AnyVariable& Object, int X, int Y) override
    {
        switch (plot_.HitHandle(X, Y, gauge_(Object))) {
        case AllHandle:
            return Qt::SizeAllCursor;
        case HighMinimumStepHandle:
        case LowMinimumStepHandle:
        case HighMinimumSlopeHandle:
        case LowMinimumSlopeHandle:
            return Qt::SizeVerCursor;
        default:
            return std::nullopt;
        }
    }
    bool Drag(AnyVariable& Object, int X, int Y) override
    {
        plot_.Drag(X, Y, gauge_(Object));
        return true;
    }

private:
    GaugeAccess gauge_;
    EdgePlot plot_;
};

} // namespace

Qt::CursorShape CursorOfOctant(int Octant)
{
    switch (Octant & 3) {
    case 0:
        return Qt::SizeHorCursor;
    case 1:
        return Qt::SizeFDiagCursor;
    case 2:
        return Qt::SizeVerCursor;
    default:
        return Qt::SizeBDiagCursor;
    }
}

const Geometry* CalibratorOf(const IController& Child)
{
    const Operation* operation = Child.CurrentOperation();
    if (!operation) return nullptr;
    for (const Arg& argument : operation->Args)
        if (const auto* calibrator = dynamic_cast<const Var<Geometry>*>(argument.Variable)) return &calibrator->Value;
    return nullptr;
}

std::unique_ptr<PlotHandles> MakeProbeHandles(GaugeAccess Gauge)
{
    return std::make_unique<ProbeHandles>(Gauge);
}

PlotAxes ProbeAxes(const EdgePoint& Gauge)
{
    const EdgePlot plot;
    return {{0, std::max(Gauge.SignalLength - 1.0, 1.0)},
            {{double(plot.MinimumSignal), double(plot.MaximumSignal), 0, 0.5},
             {double(plot.MinimumDerivative), double(plot.MaximumDerivative), 0.5, 1}}};
}

QString ProbeReadOut(const EdgePoint& Gauge, double Across)
{
    const std::size_t length = std::min(Gauge.Signal.size(), Gauge.Derivative.size());
    if (length < 1 || !std::isfinite(Across)) return {};
    const auto index = static_cast<std::size_t>(std::lround(std::clamp(Across, 0.0, static_cast<double>(length - 1))));
    const double scale = std::max(int{Gauge.Scale}, 1);
    const auto text = [&](std::int32_t value) { return QString::number(value / scale, 'f', 1); };
    return QString("%1: signal %2, derivative %3")
        .arg(index)
        .arg(text(Gauge.Signal[index]), text(Gauge.Derivative[index]));
}

} // namespace TeskPlus
