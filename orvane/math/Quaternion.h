#pragma once

#include "orvane/Export.h"

namespace OV
{

class Matrix;
class Matrix3x3;
class Vector;

/// Rotation as a quaternion, w last; the identity by default.
///
/// Three-operand operations write their result to the object they are called on, which may
/// be one of the operands. Angles are radians. Where no guard is named, bad input gives NaN.
class ORVANE_API Quaternion
{
public:
    constexpr Quaternion() = default;

    /// Takes the unit quaternion of this direction; four zeros give NaN.
    Quaternion(float xValue, float yValue, float zValue, float wValue);

    /// Takes the unit quaternion of this direction; four zeros give NaN.
    void Set(float xValue, float yValue, float zValue, float wValue);

    /// Becomes the Hamilton product a (x) b: the rotation b first, then a. Not normalised.
    void Multiply(const Quaternion& a, const Quaternion& b);

    /// Becomes b (x) a, the reverse of Multiply, and unit: the rotation a first, then b.
    void Compose(const Quaternion& a, const Quaternion& b);

    /// Becomes a followed by the conjugate of b, and unit: takes b back out of Compose.
    void Uncompose(const Quaternion& a, const Quaternion& b);

    /// Becomes the conjugate of q, which is the inverse when q is unit.
    void Invert(const Quaternion& q);

    void Normalize();

    /// Becomes the rotation about the axis, of any length but zero.
    void FromRotation(const Vector& axis, float angle);

    /// Gives the axis, unit, and the angle in 0..2 pi. Where there is next to no rotation, or
    /// no axis to be had, the axis is X.
    void GetRotation(Vector& axis, float& angle);

    /// Becomes the rotation of a rotation matrix m, element (r, c) at c*3 + r.
    void FromColumnMajor3x3(const float* m);

    /// Becomes the rotation of a rotation matrix m, element (r, c) at r*3 + c.
    void FromRowMajor3x3(const float* m);

    /// Becomes the rotation whose matrix has the columns a, b and c.
    void FromThreeVectors(const Vector& a, const Vector& b, const Vector& c);

    /// Gives the columns of the rotation matrix, each made unit.
    void GetThreeVectors(Vector& a, Vector& b, Vector& c) const;

    /// Gives the rotation matrix of a unit quaternion.
    void ExtractMatrix(Matrix3x3& matrix) const;

    /// Gives the rotation matrix of a unit quaternion, without translation.
    void ExtractMatrix(Matrix& matrix) const;

    /// Becomes the shortest rotation that carries b onto a, the second onto the first.
    /// Both must be unit. Opposite vectors give a half turn about Y, whatever they are.
    void FromTwoVectors(const Vector& a, const Vector& b);

    /// Turns by r, then puts the up direction of before back into the screen plane.
    /// Up along the line of sight gives NaN.
    /// @return true, always.
    bool MakeYUp(const Quaternion& r);

    /// Becomes the rotation about X by e.x, then about Y by e.y, then about Z by e.z.
    void SetEulerAngles(const Vector& e);

    /// Gives the angles of SetEulerAngles, each in 0..2 pi. Where Y stands at a quarter turn
    /// either way, z is 0 and x takes the rest.
    void GetEulerAngles(Vector& e) const;

    /// Becomes the spherical interpolation along the shorter arc from a to b, t clamped to
    /// 0..1, linear where the two are close. Not normalised.
    void Interpolate(const Quaternion& a, const Quaternion& b, float t);

    /// Whether no component differs by more than 1e-6. The test is a negated "greater", so
    /// that NaN counts as equal to anything. The opposite quaternion, the same rotation, differs.
    bool operator==(const Quaternion& other) const;

    bool operator!=(const Quaternion& other) const;

    float x = 0.0f;
    float y = 0.0f;
    float z = 0.0f;
    float w = 1.0f;
};

} // namespace OV
