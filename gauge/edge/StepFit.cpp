// A blurred step fitted to samples, by least squares. The place of an edge comes thus near the bound of Cramer and Rao,
// since every sample counts by what it tells of it.
#include "gauge/edge/StepFit.h"

#include <array>
#include <cmath>
#include <cstddef>
#include <numbers>

namespace Tesk::edges {

namespace {

/// Nodes of a table of the normal distribution, in steps of 1/16 up to 5 to both sides; cubic between them, the
/// distribution function is right to 5e-8.
constexpr int nodesPerUnit = 16, reach = 5, nodes = 2 * reach * nodesPerUnit + 2;

struct Normal
{
    double part, density; ///< the distribution function less a half, and its derivative
};

class NormalTable
{
public:
    NormalTable()
    {
        for (int i = 0; i < nodes; i++) {
            const double t = static_cast<double>(i) / nodesPerUnit - reach;
            table_[static_cast<std::size_t>(i)] = {std::erf(t / std::numbers::sqrt2) / 2, std::exp(-t * t / 2) *
                                                                                              std::numbers::inv_sqrtpi /
                                                                                              std::numbers::sqrt2};
        }
    }

    Normal At(double t) const
    {
        if (!(t > -reach)) return {-0.5, 0};
        if (t >= reach) return {0.5, 0};
        const double at = (t + reach) * nodesPerUnit;
        const int node = static_cast<int>(at);
        const double f = at - node, e = 1 - f;
        const Normal &a = table_[static_cast<std::size_t>(node)], &b = table_[static_cast<std::size_t>(node) + 1];
        // Hermite's cubic, and its derivative.
        constexpr double h = 1.0 / nodesPerUnit;
        const double rise = (b.part - a.part) * nodesPerUnit, ef = e * f;
        const double part = a.part + h * f * (rise + e * (a.density - rise) - ef * (a.density + b.density - 2 * rise));
        return {part, a.density * (1 - f) * (1 - 3 * f) + b.density * f * (3 * f - 2) + 6 * ef * rise};
    }

private:
    std::array<Normal, nodes> table_;
};

const NormalTable& Table()
{
    static const NormalTable table;
    return table;
}

/// The normal equations of the four unknowns.
struct Equations
{
    static constexpr int count = 4;
    double a[count][count] = {}, b[count] = {};

    /// By elimination, without square roots; false if they do not determine the unknowns.
    bool Solve()
    {
        constexpr double singular = 1e-10;
        double inverse[count];
        for (int i = 0; i < count; i++) {
            const double whole = a[i][i];
            for (int j = 0; j < i; j++) {
                double sum = a[i][j];
                for (int k = 0; k < j; k++)
                    sum -= a[i][k] * a[j][k] * inverse[k];
                a[i][j] = sum;
                a[i][i] -= sum * sum * inverse[j];
                b[i] -= sum * b[j] * inverse[j];
            }
            if (!(a[i][i] > singular * whole)) return false;
            inverse[i] = 1 / a[i][i];
        }
        for (int i = count - 1; i >= 0; i--) {
            for (int k = i + 1; k < count; k++)
                b[i] -= a[k][i] * b[k];
            b[i] *= inverse[i];
        }
        return true;
    }
};

/// Samples on one side that are clear of the step.
struct Flank
{
    double count = 0, sum = 0;

    Flank(const std::int32_t* samples, int from, int to)
    {
        for (int i = from; i < to; i++)
            sum += samples[i];
        count = to > from ? to - from : 0;
    }

    /// Adds them to the equations; `part` is a half, with the sign of the side.
    void AddTo(Equations& e, const BlurredStep& s, double part) const
    {
        const double rest = sum - count * (s.middle + part * s.height);
        e.a[0][0] += count;
        e.a[1][0] += count * part;
        e.a[1][1] += count * part * part;
        e.b[0] += rest;
        e.b[1] += rest * part;
    }
};

void AddCore(const StepSamples& window, double skew, const BlurredStep& s, Equations& e)
{
    const NormalTable& normal = Table();
    const double inverse = 1 / s.width, lean = skew * inverse * inverse * inverse / 6;
    double sumF = 0, sumG = 0, sumT = 0, ff = 0, fg = 0, ft = 0, gg = 0, gt = 0, tt = 0, r0 = 0, rf = 0, rg = 0, rt = 0;
    for (int i = window.coreFrom; i <= window.coreTo; i++) {
        const double t = (i - s.place) * inverse;
        const auto [f, g] = normal.At(t);
        const double tg = t * g, rest = window.samples[i] - s.middle - s.height * (f + lean * (t * tg - g));
        sumF += f, sumG += g, sumT += tg;
        ff += f * f, fg += f * g, ft += f * tg;
        gg += g * g, gt += g * tg, tt += tg * tg;
        r0 += rest, rf += rest * f, rg += rest * g, rt += rest * tg;
    }
    const double sums[Equations::count][Equations::count] = {
        {static_cast<double>(window.coreTo - window.coreFrom + 1), 0, 0, 0},
        {sumF, ff, 0, 0},
        {sumG, fg, gg, 0},
        {sumT, ft, gt, tt}};
    const double rests[Equations::count] = {r0, rf, rg, rt};
    for (int i = 0; i < Equations::count; i++) {
        for (int j = 0; j <= i; j++)
            e.a[i][j] += sums[i][j];
        e.b[i] += rests[i];
    }
}

} // namespace

bool FitStep(const StepSamples& window, double skew, BlurredStep& step)
{
    constexpr int mostIterations = 8;
    // A last move of that many samples leaves a tenth of it behind, at most.
    constexpr double settled = 1e-2, farthest = 1, narrowest = 0.3, widest = 16, longestMove = 0.5, mostGrowth = 4;
    const Flank before(window.samples, window.from, window.coreFrom),
        behind(window.samples, window.coreTo + 1, window.to + 1);
    BlurredStep s = step;
    for (int i = 0; i < mostIterations; i++) {
        Equations e;
        AddCore(window, skew, s, e);
        before.AddTo(e, s, -0.5);
        behind.AddTo(e, s, 0.5);
        if (!e.Solve()) return false;
        const double unit = -s.width / s.height;
        double move = e.b[2] * unit, growth = e.b[3] * unit;
        if (!(std::abs(move) <= longestMove)) move = std::copysign(longestMove, move);
        growth = std::fmin(std::fmax(growth, -s.width / 3), s.width / 2);
        s.middle += e.b[0];
        s.height += e.b[1];
        s.place += move;
        s.width += growth;
        if (!(std::abs(s.place - step.place) <= farthest && s.width >= narrowest && s.width <= widest &&
              s.height * step.height > 0 && std::abs(s.height) <= mostGrowth * std::abs(step.height)))
            return false;
        if (std::abs(move) > settled) continue;
        step = s;
        return true;
    }
    return false;
}

} // namespace Tesk::edges
