// The plane that fits best the 21 pixels of a 5 x 5 square without its corners.
#pragma once

#include "image/Image.h"

namespace Tesk::filters {

struct PlaneFit
{
    int S = 0; ///< the sum of the values
    int Q = 0; ///< the sum of their squares
    int A = 0; ///< the sum of the values weighted by their column, from -2 to 2
    int B = 0; ///< the same by row

    /// 21 * 21 times the variance, lifted above the noise of flat places, times 34, the sum of the squared weights.
    double Spread() const { return (21 * Q - S * S + 44100.0) * 34.0; }
};

/// `f(x, y, fit)` for the pixels of a `Gray` window that are at least two away from its edge.
template <typename F>
void EachPlaneFit(const Image& src, F f)
{
    for (int y = 2; y + 2 < src.Height; y++)
        for (int x = 2; x + 2 < src.Width; x++) {
            PlaneFit fit;
            for (int j = -2; j <= 2; j++) {
                const int reach = j == -2 || j == 2 ? 1 : 2;
                const GrayPixel* row = src.Row<GrayPixel>(y + j) + x;
                int sum = 0;
                for (int i = -reach; i <= reach; i++) {
                    const int v = row[i];
                    sum += v;
                    fit.Q += v * v;
                    fit.A += v * i;
                }
                fit.S += sum;
                fit.B += sum * j;
            }
            f(x, y, fit);
        }
}

} // namespace Tesk::filters
