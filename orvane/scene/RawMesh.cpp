#include "orvane/scene/RawMesh.h"

#include "orvane/scene/detail/Box.h"

#include <utility>

namespace OV
{

namespace
{

/// Moves an array in where it fits the positions.
template <class T>
bool TakeBuffer(std::vector<T>& own, std::vector<T>& given, const std::vector<Vector>& positions)
{
    if (&given == &own)
    {
        return true;
    }
    if (!positions.empty() && given.size() != positions.size())
    {
        return false;
    }
    own = std::move(given);
    given.clear();
    return true;
}

} // namespace

RawMesh::RawMesh(const RawMesh& other) :
    positions(other.positions),
    indices(other.indices),
    normals(other.normals),
    textureCoordinates(other.textureCoordinates),
    colors(other.colors),
    bboxMin(other.bboxMin),
    bboxMax(other.bboxMax),
    sphere(other.sphere)
{
}

RawMesh& RawMesh::operator=(const RawMesh& other)
{
    if (this != &other)
    {
        renderData.reset();
        positions = other.positions;
        normals = other.normals;
        textureCoordinates = other.textureCoordinates;
        colors = other.colors;
        indices = other.indices;
        bboxMin = other.bboxMin;
        bboxMax = other.bboxMax;
        sphere = other.sphere;
    }
    return *this;
}

RawMesh::~RawMesh()
{
    renderData.reset();
}

void RawMesh::StartDescription()
{
    positions.clear();
    normals.clear();
    textureCoordinates.clear();
    colors.clear();
    indices.clear();
    renderData.reset();
}

bool RawMesh::SetPositionBuffer(std::vector<Vector>&& buffer)
{
    return TakeBuffer(positions, buffer, positions);
}

bool RawMesh::SetNormalBuffer(std::vector<Vector>&& buffer)
{
    return TakeBuffer(normals, buffer, positions);
}

bool RawMesh::SetTextureBuffer(std::vector<TextureCoordinate>&& buffer)
{
    return TakeBuffer(textureCoordinates, buffer, positions);
}

bool RawMesh::SetColorBuffer(std::vector<Color>&& buffer)
{
    return TakeBuffer(colors, buffer, positions);
}

bool RawMesh::SetIndices(std::vector<unsigned short>&& buffer)
{
    if (!indices.empty())
    {
        return false;
    }
    indices.swap(buffer);
    return true;
}

bool RawMesh::EndDescription(bool computeBox)
{
    if (positions.empty())
    {
        return false;
    }
    if (computeBox)
    {
        ComputeBBox();
    }
    sphere.center.Add(bboxMin, bboxMax);
    sphere.center.Scale(0.5f);
    Vector halfDiagonal;
    halfDiagonal.Subtract(bboxMin, sphere.center);
    sphere.radius = halfDiagonal.Magnitude();
    return true;
}

void RawMesh::ComputeBBox()
{
    if (positions.empty())
    {
        return;
    }
    bboxMin = bboxMax = positions.front();
    for (const Vector& position : positions)
    {
        detail::WidenBox(bboxMin, bboxMax, position);
    }
}

void RawMesh::SetBBox(const Vector& boxMin, const Vector& boxMax)
{
    bboxMin = boxMin;
    bboxMax = boxMax;
}

void RawMesh::SetRenderData(Object* data)
{
    if (data != renderData.get())
    {
        delete renderData.release();
        renderData.reset(data);
    }
}

} // namespace OV
