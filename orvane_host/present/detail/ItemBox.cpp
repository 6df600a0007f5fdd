#include "orvane_host/present/detail/ItemBox.h"

#include "orvane_host/present/detail/Batch.h"
#include "orvane/math/Transform.h"
#include "orvane/math/Vector.h"
#include "orvane/scene/Mesh.h"
#include "orvane/scene/MeshNode.h"

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

} // namespace OV::Host::Detail
