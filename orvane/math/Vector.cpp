#include "orvane/math/Vector.h"

#include "orvane/math/Matrix.h"
#include "orvane/math/Quaternion.h"
#include "orvane/math/Transform.h"

namespace OV
{

void Vector::Multiply(const Matrix& m, const Vector& v)
{
    Set(m.m[0] * v.x + m.m[4] * v.y + m.m[8] * v.z + m.m[12],
        m.m[1] * v.x + m.m[5] * v.y + m.m[9] * v.z + m.m[13],
        m.m[2] * v.x + m.m[6] * v.y + m.m[10] * v.z + m.m[14]);
}

void Vector::Multiply(const Quaternion& q, const Vector& v)
{
    const Vector u(q.x, q.y, q.z);
    Vector crossed;
    crossed.Cross(u, v);
    const float alongV = q.w * q.w - u.Dot(u);
    const float alongU = 2.0f * u.Dot(v);
    const float alongCross = 2.0f * q.w;
    Set(alongV * v.x + alongU * u.x + alongCross * crossed.x,
        alongV * v.y + alongU * u.y + alongCross * crossed.y,
        alongV * v.z + alongU * u.z + alongCross * crossed.z);
}

void Vector::Multiply(const Transform& t, const Vector& v)
{
    QGM::Point3d point(v.x, v.y, v.z);
    point *= t.GetTransf3d();
    Set(static_cast<float>(point.x), static_cast<float>(point.y), static_cast<float>(point.z));
}

} // namespace OV
