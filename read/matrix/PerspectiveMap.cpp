// The perspective map of a plane: from the unit square to each of the two figures (Heckbert 1989), and one after the
// other.
#include "read/matrix/PerspectiveMap.h"

#include <cmath>

namespace Tesk::matrix {

bool PerspectiveMap::FromSquare(const std::array<XY, 4>& to, Matrix& m)
{
    const XY a = to[1] - to[2], b = to[3] - to[2], sum = (to[0] - to[1]) + (to[2] - to[3]);
    const double determinant = a.X * b.Y - b.X * a.Y;
    if (!(std::abs(determinant) > 1e-9)) return false;
    const double g = (sum.X * b.Y - b.X * sum.Y) / determinant, h = (a.X * sum.Y - sum.X * a.Y) / determinant;
    m = {to[1].X - to[0].X + g * to[1].X,
         to[3].X - to[0].X + h * to[3].X,
         to[0].X,
         to[1].Y - to[0].Y + g * to[1].Y,
         to[3].Y - to[0].Y + h * to[3].Y,
         to[0].Y,
         g,
         h,
         1};
    return true;
}

bool PerspectiveMap::Set(const std::array<XY, 4>& from, const std::array<XY, 4>& to)
{
    *this = PerspectiveMap();
    Matrix f, t;
    if (!FromSquare(from, f) || !FromSquare(to, t)) return false;
    const Matrix adjoint{f[4] * f[8] - f[5] * f[7], f[2] * f[7] - f[1] * f[8], f[1] * f[5] - f[2] * f[4],
                         f[5] * f[6] - f[3] * f[8], f[0] * f[8] - f[2] * f[6], f[2] * f[3] - f[0] * f[5],
                         f[3] * f[7] - f[4] * f[6], f[1] * f[6] - f[0] * f[7], f[0] * f[4] - f[1] * f[3]};
    const double determinant = f[0] * adjoint[0] + f[1] * adjoint[3] + f[2] * adjoint[6];
    if (!(std::abs(determinant) > 1e-9)) return false;
    for (std::size_t row = 0; row < 3; ++row)
        for (std::size_t column = 0; column < 3; ++column) {
            double value = 0;
            for (std::size_t k = 0; k < 3; ++k)
                value += t[3 * row + k] * adjoint[3 * k + column];
            m_[3 * row + column] = value;
        }
    return true;
}

} // namespace Tesk::matrix
