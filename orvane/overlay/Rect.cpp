#include "orvane/overlay/Rect.h"

#include "orvane/overlay/Scene2D.h"
#include "orvane/scene/NodeType.h"
#include "orvane/scene/RawMesh.h"

#include <algorithm>
#include <iterator>
#include <limits>

namespace OV
{

Rect::Rect(Scene2D* scene, float width, float height, bool hasTexture) :
    Shape2D(scene), maxX(width), maxY(height)
{
    rawMesh->StartDescription();
    rawMesh->SetPositionBuffer({{0.0f, 0.0f, 0.0f}, {width, 0.0f, 0.0f}, {width, height, 0.0f}, {0.0f, height, 0.0f}});
    if (hasTexture)
    {
        rawMesh->SetTextureBuffer({{0.0f, 0.0f}, {1.0f, 0.0f}, {1.0f, 1.0f}, {0.0f, 1.0f}});
    }
    rawMesh->SetIndices({0, 1, 2, 0, 2, 3});
    rawMesh->EndDescription(true);
}

Rect::~Rect() = default;

int Rect::Type() const
{
    return NodeTypeRect;
}

bool Rect::HasType(int type)
{
    return type == NodeTypeRect || type == NodeTypeShape2D;
}

void Rect::ShiftX(float distance)
{
    Shape2D::ShiftX(distance);
    minX += distance;
    maxX += distance;
}

void Rect::ShiftY(float distance)
{
    Shape2D::ShiftY(distance);
    minY += distance;
    maxY += distance;
}

bool Rect::IsInside(float x, float y)
{
    const std::vector<Vector>& p = rawMesh->positions;
    return p.size() >= 3 && x >= p[0].x - pickPadding - pickLeft && x <= p[1].x + pickPadding + pickRight &&
           y >= p[0].y - pickPadding - pickBottom && y <= p[2].y + pickPadding + pickTop;
}

void Rect::Resize(float width, float height)
{
    WriteCorners({{0.0f, 0.0f, 0.0f}, {width, 0.0f, 0.0f}, {width, height, 0.0f}, {0.0f, height, 0.0f}});
    GeometryChanged();
    minX = 0.0f;
    maxX = width;
    minY = 0.0f;
    maxY = height;
}

void Rect::SetCorners(float x0, float y0, float z0, float x1, float y1, float z1, float x2, float y2, float z2,
                      float x3, float y3, float z3)
{
    const Vector corners[4] = {{x0, y0, z0}, {x1, y1, z1}, {x2, y2, z2}, {x3, y3, z3}};
    WriteCorners(corners);
    GeometryChanged();
    minX = minY = std::numeric_limits<float>::max();
    maxX = maxY = -std::numeric_limits<float>::max();
    for (const Vector& corner : corners)
    {
        minX = std::min(minX, corner.x);
        maxX = std::max(maxX, corner.x);
        minY = std::min(minY, corner.y);
        maxY = std::max(maxY, corner.y);
    }
}

void Rect::SetTextureCoordinates(float u0, float v0, float u1, float v1, float u2, float v2, float u3, float v3)
{
    std::vector<TextureCoordinate>& coordinates = rawMesh->textureCoordinates;
    if (coordinates.size() >= 4)
    {
        coordinates[0] = {u0, v0};
        coordinates[1] = {u1, v1};
        coordinates[2] = {u2, v2};
        coordinates[3] = {u3, v3};
    }
}

void Rect::Clip(float left, float top, float right, float bottom)
{
    const std::vector<TextureCoordinate>& coordinates = rawMesh->textureCoordinates;
    if (uvPristine && coordinates.size() >= 4)
    {
        const TextureCoordinate& farCorner = coordinates[flipV ? 1 : 2];
        fullU = farCorner.u;
        fullV = farCorner.v;
        uvPristine = false;
    }
    WriteCorners({{minX + left, minY + bottom, 0.0f},
                  {maxX - right, minY + bottom, 0.0f},
                  {maxX - right, maxY - top, 0.0f},
                  {minX + left, maxY - top, 0.0f}});
    ClipTexture(left, top, right, bottom);
    SetRenderData(nullptr, true);
}

void Rect::ClipTexture(float left, float top, float right, float bottom)
{
    const float width = maxX - minX;
    const float height = maxY - minY;
    const float uL = left * fullU / width;
    const float uR = (width - right) * fullU / width;
    const float vB = (flipV ? height - bottom : bottom) * fullV / height;
    const float vT = (flipV ? top : height - top) * fullV / height;
    SetTextureCoordinates(uL, vB, uR, vB, uR, vT, uL, vT);
}

void Rect::WriteCorners(const Vector (&corners)[4])
{
    if (rawMesh->positions.size() >= std::size(corners))
    {
        std::copy(std::begin(corners), std::end(corners), rawMesh->positions.begin());
    }
}

} // namespace OV
