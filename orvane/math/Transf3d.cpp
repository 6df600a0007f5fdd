#include "orvane/math/Transf3d.h"

#include <cmath>

namespace QGM
{

namespace
{

/// Of the volume that its three axes could span, what a transform that flattens may span by rounding.
constexpr double kFlat = 1e-14;

} // namespace

double Transf3d::scaleOfCofactors(double determinant) const
{
    const double most = xDir().length() * yDir().length() * zDir().length();
    const bool isFlat = !(std::fabs(determinant) > kFlat * most);
    // The side that isMirror tells, which decides on what is the front.
    return !isFlat ? 1.0 / determinant : determinant < 0.0 ? -1.0 : 1.0;
}

Transf3d Transf3d::invertProjective() const
{
    // Laplace expansion by pairs of rows: upper holds the 2x2 minors of rows 0 and 1, lower
    // those of rows 2 and 3, over the column pairs 01, 02, 03, 12, 13, 23.
    const double upper[6] = {
        m[0][0] * m[1][1] - m[0][1] * m[1][0], m[0][0] * m[1][2] - m[0][2] * m[1][0],
        m[0][0] * m[1][3] - m[0][3] * m[1][0], m[0][1] * m[1][2] - m[0][2] * m[1][1],
        m[0][1] * m[1][3] - m[0][3] * m[1][1], m[0][2] * m[1][3] - m[0][3] * m[1][2]};
    const double lower[6] = {
        m[2][0] * m[3][1] - m[2][1] * m[3][0], m[2][0] * m[3][2] - m[2][2] * m[3][0],
        m[2][0] * m[3][3] - m[2][3] * m[3][0], m[2][1] * m[3][2] - m[2][2] * m[3][1],
        m[2][1] * m[3][3] - m[2][3] * m[3][1], m[2][2] * m[3][3] - m[2][3] * m[3][2]};
    const double determinant = upper[0] * lower[5] - upper[1] * lower[4] + upper[2] * lower[3] +
                               upper[3] * lower[2] - upper[4] * lower[1] + upper[5] * lower[0];
    const double scale = 1.0 / determinant;

    Transf3d result(Contents::Unset);
    result.m[0][0] = (m[1][1] * lower[5] - m[1][2] * lower[4] + m[1][3] * lower[3]) * scale;
    result.m[0][1] = (m[0][2] * lower[4] - m[0][1] * lower[5] - m[0][3] * lower[3]) * scale;
    result.m[0][2] = (m[3][1] * upper[5] - m[3][2] * upper[4] + m[3][3] * upper[3]) * scale;
    result.m[0][3] = (m[2][2] * upper[4] - m[2][1] * upper[5] - m[2][3] * upper[3]) * scale;
    result.m[1][0] = (m[1][2] * lower[2] - m[1][0] * lower[5] - m[1][3] * lower[1]) * scale;
    result.m[1][1] = (m[0][0] * lower[5] - m[0][2] * lower[2] + m[0][3] * lower[1]) * scale;
    result.m[1][2] = (m[3][2] * upper[2] - m[3][0] * upper[5] - m[3][3] * upper[1]) * scale;
    result.m[1][3] = (m[2][0] * upper[5] - m[2][2] * upper[2] + m[2][3] * upper[1]) * scale;
    result.m[2][0] = (m[1][0] * lower[4] - m[1][1] * lower[2] + m[1][3] * lower[0]) * scale;
    result.m[2][1] = (m[0][1] * lower[2] - m[0][0] * lower[4] - m[0][3] * lower[0]) * scale;
    result.m[2][2] = (m[3][0] * upper[4] - m[3][1] * upper[2] + m[3][3] * upper[0]) * scale;
    result.m[2][3] = (m[2][1] * upper[2] - m[2][0] * upper[4] - m[2][3] * upper[0]) * scale;
    result.m[3][0] = (m[1][1] * lower[1] - m[1][0] * lower[3] - m[1][2] * lower[0]) * scale;
    result.m[3][1] = (m[0][0] * lower[3] - m[0][1] * lower[1] + m[0][2] * lower[0]) * scale;
    result.m[3][2] = (m[3][1] * upper[1] - m[3][0] * upper[3] - m[3][2] * upper[0]) * scale;
    result.m[3][3] = (m[2][0] * upper[3] - m[2][1] * upper[1] + m[2][2] * upper[0]) * scale;
    return result;
}

} // namespace QGM
