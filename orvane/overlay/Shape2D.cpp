#include "orvane/overlay/Shape2D.h"

#include "orvane/scene/NodeType.h"
#include "orvane/scene/RawMesh.h"
#include "orvane/scene/Scene.h"

#include <atomic>

namespace OV
{

Shape2D::Shape2D(Scene* ownScene) : Mesh(std::make_shared<RawMesh>(), ownScene) {}

Shape2D::~Shape2D() = default;

void Shape2D::NoteSprite()
{
    static std::atomic<std::uint64_t> sprites{0};
    m_age = {LastSortID(), ++sprites};
}

int Shape2D::Type() const
{
    return NodeTypeShape2D;
}

bool Shape2D::HasType(int type)
{
    return type == NodeTypeShape2D;
}

void Shape2D::ShiftX(float distance)
{
    Shift(Vector(distance, 0.0f, 0.0f));
}

void Shape2D::ShiftY(float distance)
{
    Shift(Vector(0.0f, distance, 0.0f));
}

void Shape2D::ShiftZ(float distance)
{
    Shift(Vector(0.0f, 0.0f, distance));
}

void Shape2D::Shift(const Vector& distance)
{
    for (Vector& position : rawMesh->positions)
    {
        position.Add(position, distance);
    }
    GeometryChanged();
}

void Shape2D::GeometryChanged()
{
    rawMesh->EndDescription(true);
    SetRenderData(nullptr, true);
    if (scene)
    {
        scene->MarkDirty();
    }
}

void Shape2D::GetBounds(float&, float&) {}

bool Shape2D::IsInside(float, float)
{
    return false;
}

void Shape2D::ComputeEdgePoint(float&, float&, float) {}

void Shape2D::Resize(float, float) {}

void Shape2D::Padding(float) {}

void Shape2D::ComputeContentArea(int&, int&) {}

} // namespace OV
