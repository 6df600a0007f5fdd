#include "orvane/overlay/Scene2D.h"

#include "orvane/math/Sphere.h"
#include "orvane/math/Transform.h"
#include "orvane/math/Vector.h"
#include "orvane/overlay/Shape2DNode.h"
#include "orvane/overlay/Sprite.h"
#include "orvane/overlay/Text.h"
#include "orvane/scene/CameraNode.h"
#include "orvane/scene/LineStyle.h"
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

template <class Object>
void RemoveFrom(std::vector<Object*>& list, const Object* object)
{
    list.erase(std::remove(list.begin(), list.end(), object), list.end());
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

Scene2D::~Scene2D()
{
    TellContentsOfClear();
}

void Scene2D::Clear()
{
    TellContentsOfClear();
    Scene::Clear();
}

void Scene2D::TellContentsOfClear()
{
    for (Sprite* sprite : sprites)
    {
        sprite->OnLayerCleared();
    }
    sprites.clear();
    for (Text* text : texts)
    {
        text->OnLayerCleared();
    }
    texts.clear();
}

bool Scene2D::AddLineStyle(LineStyle* style)
{
    if (style)
    {
        style->fog = false;
    }
    return Scene::AddLineStyle(style);
}

void Scene2D::UpdateGraph(float width, float height)
{
    const bool resized = width != screenWidth || height != screenHeight;
    screenWidth = width;
    screenHeight = height;
    if (CameraNode* const camera = GetCameraNode())
    {
        camera->screenWidth = width;
        camera->screenHeight = height;
    }
    if (resized)
    {
        RefreshScaledMaterials(optimizedMaterials);
        RefreshScaledMaterials(alphaMaterials);
    }
    for (Shape2DNode* follower : m_followers)
    {
        follower->FollowParent();
    }
    if (dirty)
    {
        PopulateZOrderedDrawItems();
    }
    Scene::UpdateGraph(width, height);
}

void Scene2D::RefreshScaledMaterials(const std::vector<Material*>& materials)
{
    const std::vector<Material*> present = materials;
    for (Material* material : present)
    {
        if (material->HasType(NodeTypeMaterial2D) && material->uScale < 1.0f)
        {
            material->Suspend();
            MarkDirty();
        }
    }
}

void Scene2D::AddSprite(Sprite* sprite)
{
    sprites.push_back(sprite);
    MarkDirty();
}

void Scene2D::RemoveSprite(Sprite* sprite)
{
    RemoveFrom(sprites, sprite);
    MarkDirty();
}

void Scene2D::AddText(Text* text)
{
    texts.push_back(text);
    MarkDirty();
}

void Scene2D::RemoveText(Text* text)
{
    RemoveFrom(texts, text);
    MarkDirty();
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
