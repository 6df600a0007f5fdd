#include "orvane_host/geometry/Primitives.h"

#include "orvane/scene/RawMesh.h"

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <utility>
#include <vector>

namespace OV::Host
{

namespace
{

constexpr double kPi = 3.14159265358979323846;
/// So many parts each way leave every vertex a 16-bit index, with the rows that poles have besides.
constexpr int kMostParts = 254;
constexpr int kMostSegments = 4096;

bool IsSize(float size)
{
    return size > 0.0f && std::isfinite(size);
}

/// Vertices and triangles of a mesh in the making.
class Builder
{
public:
    unsigned short Add(const Vector& position, const Vector& normal, float u, float v)
    {
        m_positions.push_back(position);
        m_normals.push_back(normal);
        m_coordinates.emplace_back(u, v);
        return static_cast<unsigned short>(m_positions.size() - 1);
    }

    void AddTriangle(int a, int b, int c)
    {
        for (const int index : {a, b, c})
        {
            m_indices.push_back(static_cast<unsigned short>(index));
        }
    }

    /// Corners counter-clockwise from the front.
    void AddQuad(int a, int b, int c, int d)
    {
        AddTriangle(a, b, c);
        AddTriangle(a, c, d);
    }

    int Count() const { return static_cast<int>(m_positions.size()); }

    std::shared_ptr<RawMesh> Finish()
    {
        auto mesh = std::make_shared<RawMesh>();
        mesh->SetPositionBuffer(std::move(m_positions));
        mesh->SetNormalBuffer(std::move(m_normals));
        mesh->SetTextureBuffer(std::move(m_coordinates));
        mesh->SetIndices(std::move(m_indices));
        mesh->EndDescription(true);
        return mesh;
    }

private:
    std::vector<Vector> m_positions;
    std::vector<Vector> m_normals;
    std::vector<TextureCoordinate> m_coordinates;
    std::vector<unsigned short> m_indices;
};

/// Unit vectors round Y, against the clock as seen from above, from +Z on; the last is the first,
/// bit for bit.
std::vector<Vector> Round(int segments)
{
    std::vector<Vector> directions;
    for (int i = 0; i < segments; ++i)
    {
        const double angle = 2.0 * kPi * i / segments;
        directions.emplace_back(static_cast<float>(std::sin(angle)), 0.0f,
                                static_cast<float>(std::cos(angle)));
    }
    directions.push_back(directions.front());
    return directions;
}

Vector At(const Vector& direction, float radius, float y)
{
    return Vector(direction.x * radius, y, direction.z * radius);
}

/// A disc about the axis.
/// @param up 1 where it faces +Y, -1 where -Y.
void AddCap(Builder& builder, const std::vector<Vector>& round, float radius, float y, float up)
{
    const Vector normal(0.0f, up, 0.0f);
    const int middle = builder.Add(Vector(0.0f, y, 0.0f), normal, 0.5f, 0.5f);
    for (const Vector& direction : round)
    {
        builder.Add(At(direction, radius, y), normal, 0.5f + 0.5f * direction.x,
                    0.5f - 0.5f * up * direction.z);
    }
    for (int i = 1; i < static_cast<int>(round.size()); ++i)
    {
        builder.AddTriangle(middle, middle + (up > 0.0f ? i : i + 1), middle + (up > 0.0f ? i + 1 : i));
    }
}

} // namespace

std::shared_ptr<RawMesh> Primitives::Box(const Vector& boxMin, const Vector& boxMax)
{
    for (unsigned int axis = 0; axis < 3; ++axis)
    {
        if (!std::isfinite(boxMin[axis]) || !std::isfinite(boxMax[axis]) || !(boxMin[axis] < boxMax[axis]))
        {
            return nullptr;
        }
    }
    struct Face
    {
        Vector right; ///< as seen from outside
        Vector up;
    };
    const Face faces[] = {
        {{1, 0, 0}, {0, 1, 0}}, {{-1, 0, 0}, {0, 1, 0}}, {{0, 0, -1}, {0, 1, 0}},
        {{0, 0, 1}, {0, 1, 0}}, {{1, 0, 0}, {0, 0, -1}}, {{1, 0, 0}, {0, 0, 1}},
    };
    Builder builder;
    for (const Face& face : faces)
    {
        Vector normal;
        normal.Cross(face.right, face.up);
        const auto corner = [&](float u, float v)
        {
            Vector position;
            for (unsigned int axis = 0; axis < 3; ++axis)
            {
                const float side =
                    normal[axis] + (2.0f * u - 1.0f) * face.right[axis] + (2.0f * v - 1.0f) * face.up[axis];
                position[axis] = side > 0.0f ? boxMax[axis] : boxMin[axis];
            }
            return builder.Add(position, normal, u, v);
        };
        const int first = corner(0.0f, 0.0f);
        corner(1.0f, 0.0f);
        corner(1.0f, 1.0f);
        corner(0.0f, 1.0f);
        builder.AddQuad(first, first + 1, first + 2, first + 3);
    }
    return builder.Finish();
}

std::shared_ptr<RawMesh> Primitives::Plane(float width, float depth, int columns, int rows)
{
    if (!IsSize(width) || !IsSize(depth))
    {
        return nullptr;
    }
    columns = std::clamp(columns, 1, kMostParts);
    rows = std::clamp(rows, 1, kMostParts);
    Builder builder;
    for (int row = 0; row <= rows; ++row)
    {
        const float v = static_cast<float>(row) / static_cast<float>(rows);
        for (int column = 0; column <= columns; ++column)
        {
            const float u = static_cast<float>(column) / static_cast<float>(columns);
            builder.Add(Vector((u - 0.5f) * width, 0.0f, (0.5f - v) * depth), Vector(0.0f, 1.0f, 0.0f), u, v);
        }
    }
    for (int row = 0; row < rows; ++row)
    {
        for (int column = 0; column < columns; ++column)
        {
            const int first = row * (columns + 1) + column;
            builder.AddQuad(first, first + 1, first + columns + 2, first + columns + 1);
        }
    }
    return builder.Finish();
}

std::shared_ptr<RawMesh> Primitives::Cylinder(float radius, float height, int segments)
{
    if (!IsSize(radius) || !IsSize(height))
    {
        return nullptr;
    }
    segments = std::clamp(segments, 3, kMostSegments);
    const std::vector<Vector> round = Round(segments);
    const float top = 0.5f * height;
    Builder builder;
    for (int i = 0; i <= segments; ++i)
    {
        const Vector& direction = round[static_cast<std::size_t>(i)];
        const float u = static_cast<float>(i) / static_cast<float>(segments);
        builder.Add(At(direction, radius, -top), direction, u, 0.0f);
        builder.Add(At(direction, radius, top), direction, u, 1.0f);
    }
    for (int i = 0; i < segments; ++i)
    {
        builder.AddQuad(2 * i, 2 * i + 2, 2 * i + 3, 2 * i + 1);
    }
    AddCap(builder, round, radius, top, 1.0f);
    AddCap(builder, round, radius, -top, -1.0f);
    return builder.Finish();
}

std::shared_ptr<RawMesh> Primitives::Cone(float radius, float height, int segments)
{
    if (!IsSize(radius) || !IsSize(height))
    {
        return nullptr;
    }
    segments = std::clamp(segments, 3, kMostSegments);
    const std::vector<Vector> round = Round(segments);
    const float top = 0.5f * height;
    // Square to the slope.
    const double slope = std::hypot(double(radius), double(height));
    const auto out = static_cast<float>(height / slope);
    const auto up = static_cast<float>(radius / slope);
    Builder builder;
    for (int i = 0; i <= segments; ++i)
    {
        const Vector& direction = round[static_cast<std::size_t>(i)];
        const float u = static_cast<float>(i) / static_cast<float>(segments);
        builder.Add(At(direction, radius, -top), At(direction, out, up), u, 0.0f);
    }
    for (int i = 0; i < segments; ++i)
    {
        // A tip for each segment, with the normal of its middle.
        const double angle = 2.0 * kPi * (i + 0.5) / segments;
        const Vector direction(static_cast<float>(std::sin(angle)), 0.0f,
                               static_cast<float>(std::cos(angle)));
        const float u = (static_cast<float>(i) + 0.5f) / static_cast<float>(segments);
        const int tip = builder.Add(Vector(0.0f, top, 0.0f), At(direction, out, up), u, 1.0f);
        builder.AddTriangle(i, i + 1, tip);
    }
    AddCap(builder, round, radius, -top, -1.0f);
    return builder.Finish();
}

std::shared_ptr<RawMesh> Primitives::Sphere(float radius, int segments, int rings)
{
    if (!IsSize(radius))
    {
        return nullptr;
    }
    segments = std::clamp(segments, 3, kMostParts);
    rings = std::clamp(rings, 2, kMostParts);
    const std::vector<Vector> round = Round(segments);
    Builder builder;
    // The rings between the poles, from below.
    for (int ring = 1; ring < rings; ++ring)
    {
        const double angle = kPi * ring / rings;
        const auto y = static_cast<float>(-std::cos(angle));
        const auto out = static_cast<float>(std::sin(angle));
        for (int i = 0; i <= segments; ++i)
        {
            const Vector normal = At(round[static_cast<std::size_t>(i)], out, y);
            builder.Add(Vector(normal.x * radius, normal.y * radius, normal.z * radius), normal,
                        static_cast<float>(i) / static_cast<float>(segments),
                        static_cast<float>(ring) / static_cast<float>(rings));
        }
    }
    const int stride = segments + 1;
    for (int ring = 0; ring + 2 < rings; ++ring)
    {
        for (int i = 0; i < segments; ++i)
        {
            const int first = ring * stride + i;
            builder.AddQuad(first, first + 1, first + stride + 1, first + stride);
        }
    }
    // A pole for each segment, with the texture coordinate of its middle.
    const int last = (rings - 2) * stride;
    for (int i = 0; i < segments; ++i)
    {
        const float u = (static_cast<float>(i) + 0.5f) / static_cast<float>(segments);
        const int bottom = builder.Add(Vector(0.0f, -radius, 0.0f), Vector(0.0f, -1.0f, 0.0f), u, 0.0f);
        builder.AddTriangle(bottom, i + 1, i);
        const int top = builder.Add(Vector(0.0f, radius, 0.0f), Vector(0.0f, 1.0f, 0.0f), u, 1.0f);
        builder.AddTriangle(top, last + i, last + i + 1);
    }
    return builder.Finish();
}

} // namespace OV::Host
