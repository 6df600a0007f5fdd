#pragma once

#include "orvane/math/Vector.h"

#include <array>
#include <cstdint>
#include <unordered_map>
#include <vector>

namespace OV
{

class RawMesh;

} // namespace OV

namespace OV::Host::Detail
{

/// A triangle by the numbers of its welded points.
using WeldedTriangle = std::array<std::uint32_t, 3>;

/// Points of several meshes of which those within a tolerance of each other are one, the first.
class VertexWelder
{
public:
    explicit VertexWelder(const std::vector<const RawMesh*>& parts);

    /// Points that lie no farther apart are one.
    double Tolerance() const { return m_tolerance; }

    const std::vector<Vector>& Points() const { return m_points; }

    /// In the order of the meshes. Without those that have an index past their vertices, a point
    /// that is not finite or two points welded to one.
    const std::vector<WeldedTriangle>& Triangles() const { return m_triangles; }

private:
    void Measure(const std::vector<const RawMesh*>& parts);
    void AddTriangles(const RawMesh& part);
    std::uint32_t PointAt(const Vector& position);
    std::int64_t FindIn(std::uint64_t cell, const Vector& position) const;

    double m_tolerance = 0.0;
    double m_cellSize = 1.0;
    std::array<double, 3> m_origin{};
    std::vector<Vector> m_points;
    /// For each point the one before it in its cell, -1 for none.
    std::vector<std::int64_t> m_before;
    std::unordered_map<std::uint64_t, std::int64_t> m_cells;
    std::vector<WeldedTriangle> m_triangles;
};

} // namespace OV::Host::Detail
