#include "orvane/overlay/Scene2D.h"

#include "orvane/base/detail/Walk.h"
#include "orvane/math/Sphere.h"
#include "orvane/math/Transform.h"
#include "orvane/math/Vector.h"
#include "orvane/overlay/Material2D.h"
#include "orvane/overlay/Shape2D.h"
#include "orvane/overlay/Shape2DNode.h"
#include "orvane/overlay/Sprite.h"
#include "orvane/overlay/Text.h"
#include "orvane/scene/CameraNode.h"
#include "orvane/scene/LineStyle.h"
#include "orvane/scene/Material.h"
#include "orvane/scene/Mesh.h"
#include "orvane/scene/NodeType.h"

#include <algorithm>
#include <cmath>
#include <limits>
#include <tuple>

namespace OV
{

namespace
{

// What has no place in z comes last, so that the order stays one that can be sorted by.
float Sortable(float z)
{
    return std::isnan(z) ? std::numeric_limits<float>::infinity() : z;
}

// Pixels are freed once they are in a texture: there is nothing to make another one of.
bool CanBeMadeAnew(const Material2D& material)
{
    return !material.textureName.empty() || !material.text.empty();
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
        for (const Mesh* mesh : material->EachMesh())
        {
            for (MeshNode* node : mesh->EachNode())
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
    // The nodes go after this list does.
    for (Shape2DNode* follower : m_followers)
    {
        follower->m_follows = false;
    }
}

bool Scene2D::DrawOrder::operator<(const DrawOrder& other) const
{
    return std::tie(z, localZ, mesh, sprite, sortID, place) <
           std::tie(other.z, other.localZ, other.mesh, other.sprite, other.sortID, other.place);
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
    if (detail::Walk::IsOn(this, detail::Walk::Any))
    {
        return;
    }
    const detail::Walk walk(this, detail::Walk::UpdateLayer);
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
        MarkDirty();
        RefreshScaledMaterials(optimizedMaterials);
        if (!walk.IsGone(this))
        {
            RefreshScaledMaterials(alphaMaterials);
        }
    }
    if (!walk.IsGone(this))
    {
        MoveFollowers(walk);
    }
    if (walk.IsGone(this))
    {
        return;
    }
    if (dirty)
    {
        PopulateZOrderedDrawItems();
    }
    Scene::UpdateGraph(width, height);
}

void Scene2D::MoveFollowers(const detail::Walk& walk)
{
    // By index: a node leaves the list when it finds what it follows gone, and a screen mapping of
    // the host's may take any of them away.
    for (std::size_t i = m_followers.size(); i-- > 0;)
    {
        if (i < m_followers.size())
        {
            m_followers[i]->FollowParent();
        }
        if (walk.IsGone(this))
        {
            return;
        }
    }
}

void Scene2D::RefreshScaledMaterials(const std::vector<Material*>& materials)
{
    // A loader that is given a texture back may take others of the materials away.
    const detail::Walk walk(this, detail::Walk::Other);
    const std::vector<Material*> present = materials;
    for (Material* material : present)
    {
        if (walk.IsGone(material))
        {
            continue;
        }
        const auto* const flat = dynamic_cast<const Material2D*>(material);
        if (flat && flat->uScale < 1.0f && CanBeMadeAnew(*flat))
        {
            material->Suspend();
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
    SortDrawItems();

    const detail::Walk walk(this, detail::Walk::Other);
    float nearest = std::numeric_limits<float>::max();
    float farthest = -std::numeric_limits<float>::max();
    if (root)
    {
        root->UpdateCulling(nearest, farthest);
    }
    if (!walk.IsGone(this))
    {
        nearZ = nearest;
        farZ = farthest;
    }
}

void Scene2D::SortDrawItems()
{
    m_drawOrder.clear();
    for (AlphaMeshNode* item : GetZOrderedDrawItems())
    {
        const std::uint64_t sortID = item->mesh->GetSortID();
        const bool isShape = item->mesh->HasType(NodeTypeShape2D);
        const Shape2D::Age age = isShape ? static_cast<const Shape2D*>(item->mesh)->m_age : Shape2D::Age{sortID, 0};
        const Vector& localCenter = item->mesh->GetSphere().center;
        Vector center;
        center.Multiply(item->node->GetGlobal(), localCenter);
        item->z = center.z;
        m_drawOrder.push_back(
            {Sortable(center.z), Sortable(localCenter.z), age.mesh, age.sprite, sortID, m_drawOrder.size(), item});
    }
    std::sort(m_drawOrder.begin(), m_drawOrder.end());
    for (std::size_t i = 0; i < m_drawOrder.size(); ++i)
    {
        zOrderedDrawItems[i] = m_drawOrder[i].item;
    }
}

}  // namespace OV
