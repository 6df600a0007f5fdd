#include "orvane/overlay/Arrow.h"

#include "orvane/overlay/Scene2D.h"
#include "orvane/scene/RawMesh.h"

namespace OV
{

Arrow::Arrow(float size, float ratio, Scene2D* scene) : Shape2D(scene)
{
    rawMesh->StartDescription();
    rawMesh->SetPositionBuffer(
        {{0.0f, 0.0f, 0.0f}, {ratio * size, size * -0.5f, 0.0f}, {ratio * size, size * 0.5f, 0.0f}});
    rawMesh->SetIndices({0, 1, 2});
    rawMesh->EndDescription(true);
}

Arrow::~Arrow() = default;

bool Arrow::IsInside(float x, float y)
{
    const std::vector<Vector>& p = rawMesh->positions;
    if (p.size() < 3)
    {
        return false;
    }
    Vector a;
    a.Subtract(p[2], p[0]);
    Vector b;
    b.Subtract(p[1], p[0]);
    Vector c;
    c.Subtract(Vector(x, y, 0.0f), p[0]);
    const float aa = a.Dot(a);
    const float ab = a.Dot(b);
    const float ac = a.Dot(c);
    const float bb = b.Dot(b);
    const float bc = b.Dot(c);
    const float inv = 1.0f / (bb * aa - ab * ab);
    const float u = (bb * ac - bc * ab) * inv;
    const float v = (bc * aa - ac * ab) * inv;
    return u >= 0.0f && v >= 0.0f && u + v < 1.0f;
}

} // namespace OV
