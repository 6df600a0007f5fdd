#include "orvane_host/present/detail/ItemBox.h"

#include "orvane_host/present/detail/Batch.h"
#include "orvane/math/Transform.h"
#include "orvane/math/Vector.h"
#include "orvane/scene/Mesh.h"
#include "orvane/scene/MeshNode.h"

#include <glm/geometric.hpp>

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <typeinfo>

namespace OV::Host::Detail
{

namespace
{

glm::dvec3 ToDouble(const Vector& v)
{
    return {v.x, v.y, v.z};
}

CastBox BoxOf(const BatchES20& batch)
{
    const glm::dvec3 low = ToDouble(batch.GetBox().low);
    const glm::dvec3 high = ToDouble(batch.GetBox().high);
    CastBox box;
    box.middle = 0.5 * (low + high);
    for (int axis = 0; axis < 3; ++axis)
    {
        box.halves[static_cast<std::size_t>(axis)][axis] = 0.5 * (high[axis] - low[axis]);
    }
    return box;
}

/// Of numbers that products and sums of several of that size are off by, some times over.
constexpr double kRounding = 1.0 / (1 << 20);

double Farthest(float low, float high)
{
    return std::max(std::abs(static_cast<double>(low)), std::abs(static_cast<double>(high)));
}

} // namespace

const BatchES20* BatchOf(const Mesh& mesh)
{
    const Object* const data = mesh.GetRenderData();
    // Most are of the engine's own class: equal types are told by an address, others by their names.
    const bool isBatch = data && typeid(*data) != typeid(MeshES20) && typeid(*data) == typeid(BatchES20);
    return isBatch ? static_cast<const BatchES20*>(data) : nullptr;
}

CastBox BoxOf(const Mesh& mesh, const MeshNode& node)
{
    // What is drawn together has no geometry of its own.
    if (const BatchES20* const batch = BatchOf(mesh))
    {
        return BoxOf(*batch);
    }
    Vector low;
    Vector high;
    mesh.GetBBox(low, high);
    const auto& rows = node.GetGlobal().GetTransf3d().m;
    const glm::dvec3 middle = 0.5 * (ToDouble(low) + ToDouble(high));
    const glm::dvec3 half = 0.5 * (ToDouble(high) - ToDouble(low));
    CastBox box;
    for (int row = 0; row < 3; ++row)
    {
        box.middle[row] = rows[row][3];
        for (int axis = 0; axis < 3; ++axis)
        {
            box.middle[row] += rows[row][axis] * middle[axis];
            box.halves[static_cast<std::size_t>(axis)][row] = rows[row][axis] * half[axis];
        }
    }
    return box;
}

double RoundingOf(const Mesh& mesh, const MeshNode& node)
{
    if (const BatchES20* const batch = BatchOf(mesh))
    {
        const WorldBox& box = batch->GetBox();
        return kRounding * (Farthest(box.low.x, box.high.x) + Farthest(box.low.y, box.high.y)
                            + Farthest(box.low.z, box.high.z));
    }
    Vector low;
    Vector high;
    mesh.GetBBox(low, high);
    const glm::dvec3 farthest(Farthest(low.x, high.x), Farthest(low.y, high.y), Farthest(low.z, high.z));
    const auto& rows = node.GetGlobal().GetTransf3d().m;
    double sum = 0.0;
    for (int axis = 0; axis < 3; ++axis)
    {
        sum += glm::length(glm::dvec3(rows[0][axis], rows[1][axis], rows[2][axis])) * farthest[axis];
    }
    return kRounding * sum;
}

} // namespace OV::Host::Detail
