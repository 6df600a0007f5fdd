#include "orvane/overlay/Scene2D.h"

#include "orvane/math/Transform.h"
#include "orvane/math/Sphere.h"
#include "orvane/math/Vector.h"
#include "orvane/overlay/Shape2DNode.h"
#include "orvane/scene/Material.h"
#include "orvane/scene/Mesh.h"

#include <algorithm>
#include <cmath>
#include <limits>

namespace OV
{

namespace
{

// What has no place in z comes last, so that the order stays one that can be sorted by.
bool IsLower(const AlphaMeshNode* a, const AlphaMeshNode* b)
{
    return a->z < b->z || (std::isnan(b->z) && !std::isnan(a->z));
}

void ResetPickingOf(const std::vector<Material*>& materials)
{
    for (const Material* material : materials)
    {
        for (const Mesh* mesh : material->GetMeshes())
        {
            for (MeshNode* node : mesh->GetNodes())
            {
                if (node->HasType(NodeTypeShape2DNode))
                {
                    static_cast<Shape2DNode*>(node)->pickState = 0;
                }
            }
        }
    }
}

}  // namespace

Scene2D::Scene2D(CoreContext* context)
    : m_context(context)
{
}

Scene2D::~Scene2D() = default;

void Scene2D::UpdateGraph(float width, float height)
{
    screenWidth = width;
    screenHeight = height;
    if (dirty)
    {
        PopulateZOrderedDrawItems();
    }
    Scene::UpdateGraph(width, height);
}

void Scene2D::ResetPicking()
{
    ResetPickingOf(optimizedMaterials);
    ResetPickingOf(alphaMaterials);
}

void Scene2D::ProcessZOrderedDrawItems()
{
    for (AlphaMeshNode* item : zOrderedDrawItems)
    {
        Vector center;
        center.Multiply(item->node->GetGlobal(), item->mesh->GetSphere().center);
        item->z = center.z;
    }
    std::sort(zOrderedDrawItems.begin(), zOrderedDrawItems.end(), IsLower);

    nearZ = std::numeric_limits<float>::max();
    farZ = -std::numeric_limits<float>::max();
    root->UpdateCulling(nearZ, farZ);
}

}  // namespace OV
