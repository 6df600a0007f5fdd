#pragma once

#include "orvane/Export.h"
#include "orvane/math/Quaternion.h"
#include "orvane/math/Transf3d.h"
#include "orvane/math/Vector.h"

namespace OV
{

class Matrix;

/// Place, rotation and scale of a node, kept in double and narrowed to float on the way out.
///
/// Column vectors, right-handed; the identity by default. Operations with operands write
/// their result to the object they are called on, which may be one of the operands.
class ORVANE_API Transform
{
public:
    const QGM::Transf3d& GetTransf3d() const
    {
        return m_transform;
    }

    void SetTransf3d(const QGM::Transf3d& transform)
    {
        m_transform = transform;
    }

    void Identity()
    {
        m_transform = QGM::Transf3d::kIdentity;
    }

    /// Becomes a * b: b acts first.
    void Multiply(const Transform& a, const Transform& b)
    {
        m_transform = a.m_transform * b.m_transform;
    }

    /// The same, with all 16 elements as floats as ExtractMatrix gives them: in one go they take half the time.
    void Multiply(const Transform& a, const Transform& b, Matrix& inFloats);

    /// Becomes the inverse of t. A singular t gives numbers that are not finite.
    void Invert(const Transform& t)
    {
        m_transform = t.m_transform.invert();
    }

    Vector GetPosition() const
    {
        const auto& m = m_transform.m;
        return Vector(static_cast<float>(m[0][3]), static_cast<float>(m[1][3]),
                      static_cast<float>(m[2][3]));
    }

    void SetPosition(const Vector& v);

    /// The lengths of the three axes. A mirror shows as a negative x, whichever axis made it.
    Vector GetScale() const;

    /// Gives the three axes new lengths. The sign of s.x says whether the transform is a
    /// mirror afterwards; the signs of s.y and s.z have no effect. An s.x of 0 never turns an
    /// axis round. An axis of length zero stays zero.
    void SetScale(const Vector& s);

    /// The largest of the lengths of the three axes.
    float GetMaxScale() const;

    /// The rotation alone; of a mirror, the rotation with its X axis turned round.
    Quaternion GetRotation() const;

    /// Replaces the rotation and keeps position, scale and mirror. q must be unit.
    void SetRotation(const Quaternion& q);

    /// Gives all 16 elements as floats, column-major. The flag has no effect.
    void ExtractMatrix(Matrix& matrix, bool flag = false) const;

    /// Writes the linear part to 9 floats, element (r, c) at c*3 + r.
    void ExtractRot3x3(float* out) const;

    /// Writes the matrix for normals to 9 floats, element (r, c) at c*3 + r. A singular linear
    /// part gives numbers that are not finite.
    void ExtractAffineInverseTranspose3x3(float* out) const;

    /// Takes all 16 elements, (r, c) from c*4 + r. The flag has no effect.
    void FromColumnMajor4x4(const float* m, bool flag = false);

    /// Takes all 16 elements, (r, c) from r*4 + c. The flag has no effect.
    void FromRowMajor4x4(const float* m, bool flag = false);

    /// Becomes the camera-to-world transform of a camera at eye that looks at a point down its
    /// negative Z. up, of any length, must not point along the line of sight.
    void EyeLookUp(const Vector& eye, const Vector& at, const Vector& up);

    /// Whether no element differs by more than 1e-12. NaN is equal to nothing.
    bool operator==(const Transform& other) const;

    bool operator!=(const Transform& other) const;

private:
    QGM::Transf3d m_transform;
};

} // namespace OV
