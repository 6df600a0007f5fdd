#pragma once

#include "orvane/Export.h"
#include "orvane/math/Point3d.h"
#include "orvane/math/Vector3d.h"

#include <cmath>
#include <cstdint>

namespace QGM
{

/// 4x4 transform for column vectors in double precision.
///
/// Products and inverses are the inner loop of the node graph: they are inline and
/// allocate nothing.
class Transf3d
{
public:
    static const Transf3d kIdentity;

    /// The identity.
    constexpr Transf3d() :
        m{{1.0, 0.0, 0.0, 0.0}, {0.0, 1.0, 0.0, 0.0}, {0.0, 0.0, 1.0, 0.0}, {0.0, 0.0, 0.0, 1.0}}
    {
    }

    /// Maps the axes of its own space to x, y and z and the zero point to the origin given.
    /// The flag has no effect.
    constexpr Transf3d(const Point3d& origin, const Vector3d& x, const Vector3d& y,
                       const Vector3d& z, bool) :
        m{{x.x, y.x, z.x, origin.x},
          {x.y, y.y, z.y, origin.y},
          {x.z, y.z, z.z, origin.z},
          {0.0, 0.0, 0.0, 1.0}}
    {
    }

    /// Writes one element, row and column in 0..3, unchecked.
    constexpr void setValue(std::uint64_t row, std::uint64_t column, double value)
    {
        m[row][column] = value;
    }

    /// Column 0 of the linear part, as long as it is.
    constexpr Vector3d xDir() const
    {
        return Vector3d(m[0][0], m[1][0], m[2][0]);
    }

    /// Column 1 of the linear part, as long as it is.
    constexpr Vector3d yDir() const
    {
        return Vector3d(m[0][1], m[1][1], m[2][1]);
    }

    /// Column 2 of the linear part, as long as it is.
    constexpr Vector3d zDir() const
    {
        return Vector3d(m[0][2], m[1][2], m[2][2]);
    }

    /// Whether the linear part turns right-handed into left-handed: its determinant is
    /// negative. A flattening transform is no mirror.
    constexpr bool isMirror() const
    {
        return m[0][0] * (m[1][1] * m[2][2] - m[1][2] * m[2][1]) +
                   m[0][1] * (m[1][2] * m[2][0] - m[1][0] * m[2][2]) +
                   m[0][2] * (m[1][0] * m[2][1] - m[1][1] * m[2][0]) <
               0.0;
    }

    /// The inverse. A singular transform gives numbers that are not finite.
    Transf3d invert() const;

    /// The transposed inverse of the linear part, without translation: what normals are
    /// transformed by. A linear part that flattens to a plane has none: there it takes normals to
    /// either normal of the plane, and what lies in the plane to next to nothing.
    Transf3d affineInverseTranspose() const;

    /// The product, with this on the left: the right operand acts first.
    Transf3d operator*(const Transf3d& right) const;

    /// Whether no element differs by more than the tolerance. NaN is equal to nothing.
    bool isEqual(const Transf3d& other, double tolerance) const;

    /// Row-major: element (row r, column c) is m[r][c], the translation in column 3.
    double m[4][4];

private:
    enum class Contents
    {
        Unset
    };

    /// For results of which every element is written next.
    explicit Transf3d(Contents)
    {
    }

    /// Writes the nine cofactors of the linear part, element (r, c) at [r][c].
    /// @return the determinant.
    double linearCofactors(double cofactors[3][3]) const;

    /// What cofactors are multiplied by where the determinant is next to nothing.
    ORVANE_API double scaleOfCofactors(double determinant) const;

    ORVANE_API Transf3d invertProjective() const;
};

inline constexpr Transf3d Transf3d::kIdentity{};

inline double Transf3d::linearCofactors(double cofactors[3][3]) const
{
    cofactors[0][0] = m[1][1] * m[2][2] - m[1][2] * m[2][1];
    cofactors[0][1] = m[1][2] * m[2][0] - m[1][0] * m[2][2];
    cofactors[0][2] = m[1][0] * m[2][1] - m[1][1] * m[2][0];
    cofactors[1][0] = m[0][2] * m[2][1] - m[0][1] * m[2][2];
    cofactors[1][1] = m[0][0] * m[2][2] - m[0][2] * m[2][0];
    cofactors[1][2] = m[0][1] * m[2][0] - m[0][0] * m[2][1];
    cofactors[2][0] = m[0][1] * m[1][2] - m[0][2] * m[1][1];
    cofactors[2][1] = m[0][2] * m[1][0] - m[0][0] * m[1][2];
    cofactors[2][2] = m[0][0] * m[1][1] - m[0][1] * m[1][0];
    return m[0][0] * cofactors[0][0] + m[0][1] * cofactors[0][1] + m[0][2] * cofactors[0][2];
}

inline Transf3d Transf3d::invert() const
{
    const bool isAffine = m[3][0] == 0.0 && m[3][1] == 0.0 && m[3][2] == 0.0 && m[3][3] == 1.0;
    if (!isAffine)
    {
        return invertProjective();
    }

    double cofactors[3][3];
    const double scale = 1.0 / linearCofactors(cofactors);
    Transf3d result(Contents::Unset);
    for (int row = 0; row < 3; ++row)
    {
        const double a = cofactors[0][row] * scale;
        const double b = cofactors[1][row] * scale;
        const double c = cofactors[2][row] * scale;
        result.m[row][0] = a;
        result.m[row][1] = b;
        result.m[row][2] = c;
        result.m[row][3] = -(a * m[0][3] + b * m[1][3] + c * m[2][3]);
    }
    result.m[3][0] = 0.0;
    result.m[3][1] = 0.0;
    result.m[3][2] = 0.0;
    result.m[3][3] = 1.0;
    return result;
}

inline Transf3d Transf3d::affineInverseTranspose() const
{
    constexpr double little = 1e-12;
    double cofactors[3][3];
    const double determinant = linearCofactors(cofactors);
    const double scale = std::fabs(determinant) < little ? scaleOfCofactors(determinant) : 1.0 / determinant;
    Transf3d result;
    for (int row = 0; row < 3; ++row)
    {
        for (int column = 0; column < 3; ++column)
        {
            result.m[row][column] = cofactors[row][column] * scale;
        }
    }
    return result;
}

inline Transf3d Transf3d::operator*(const Transf3d& right) const
{
    Transf3d result(Contents::Unset);
    for (int row = 0; row < 4; ++row)
    {
        for (int column = 0; column < 4; ++column)
        {
            result.m[row][column] = m[row][0] * right.m[0][column] + m[row][1] * right.m[1][column] +
                                    m[row][2] * right.m[2][column] + m[row][3] * right.m[3][column];
        }
    }
    return result;
}

inline bool Transf3d::isEqual(const Transf3d& other, double tolerance) const
{
    for (int row = 0; row < 4; ++row)
    {
        for (int column = 0; column < 4; ++column)
        {
            if (!(std::fabs(m[row][column] - other.m[row][column]) <= tolerance))
            {
                return false;
            }
        }
    }
    return true;
}

inline Point3d& Point3d::operator*=(const Transf3d& transform)
{
    const auto& m = transform.m;
    return *this = Point3d(m[0][0] * x + m[0][1] * y + m[0][2] * z + m[0][3],
                           m[1][0] * x + m[1][1] * y + m[1][2] * z + m[1][3],
                           m[2][0] * x + m[2][1] * y + m[2][2] * z + m[2][3]);
}

} // namespace QGM
