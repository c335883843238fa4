// The perspective map of a plane that takes four points to four others.
#pragma once

#include "foundation/Records.h"

#include <array>

namespace Tesk::matrix {

class PerspectiveMap
{
public:
    /// The identity.
    PerspectiveMap() = default;
    /// False if three of the points are on a line; the map is then the identity.
    bool Set(const std::array<XY, 4>& from, const std::array<XY, 4>& to);
    XY operator()(XY p) const
    {
        const double w = m_[6] * p.X + m_[7] * p.Y + m_[8];
        return {(m_[0] * p.X + m_[1] * p.Y + m_[2]) / w, (m_[3] * p.X + m_[4] * p.Y + m_[5]) / w};
    }

private:
    using Matrix = std::array<double, 9>;
    static bool FromSquare(const std::array<XY, 4>& to, Matrix& m);

    Matrix m_{1, 0, 0, 0, 1, 0, 0, 0, 1};
};

} // namespace Tesk::matrix
