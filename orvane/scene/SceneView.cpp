// What a scene computes from frame to frame: the walk, the order of the draw items, depths
// and boxes.

#include "orvane/base/detail/Walk.h"
#include "orvane/math/Sphere.h"
#include "orvane/math/Transform.h"
#include "orvane/scene/CameraNode.h"
#include "orvane/scene/Material.h"
#include "orvane/scene/Mesh.h"
#include "orvane/scene/MeshNode.h"
#include "orvane/scene/Scene.h"
#include "orvane/scene/detail/Box.h"
#include "orvane/scene/detail/Erase.h"
#include "orvane/scene/detail/MeshExtras.h"
#include "orvane/scene/detail/MeshNodeLinks.h"
#include "orvane/scene/detail/Subtree.h"

#include <algorithm>
#include <cmath>
#include <utility>

namespace OV
{

namespace
{

/// Farthest first. What has no depth that is a number comes last, so that the order is one.
bool IsDrawnBefore(const AlphaMeshNode* a, const AlphaMeshNode* b)
{
    if (std::isnan(b->z))
    {
        return !std::isnan(a->z);
    }
    return a->z > b->z;
}

} // namespace

void Scene::UpdateGraph(float width, float height)
{
    if (detail::Walk::IsOn(this, detail::Walk::Update | detail::Walk::Draw))
    {
        return;
    }
    const detail::Walk walk(this, detail::Walk::Update);
    if (CameraNode* const camera = GetCameraNode())
    {
        camera->screenWidth = width;
        camera->screenHeight = height;
        camera->UpdateGraph();
        if (!walk.IsGone(camera))
        {
            camera->UpdateFrustum(width, height);
        }
    }
    if (dirty && !walk.IsGone(this))
    {
        UpdateTree();
        if (!walk.IsGone(this))
        {
            if (m_hasGoneDrawItems)
            {
                DropGoneDrawItems();
            }
            ProcessZOrderedDrawItems();
        }
    }
    if (walk.IsGone(this))
    {
        return;
    }
    ++updateID;
    dirty = false;
}

void Scene::UpdateTree()
{
    const detail::Walk walk(this, detail::Walk::Other);
    Node* const walked = root;
    if (walked)
    {
        walked->UpdateGraph();
    }
    // What a Clear from within has put in its place was moved in this update, and would not be
    // looked at in the next.
    if (!walk.IsGone(this) && root && root != walked)
    {
        root->UpdateGraph();
    }
}

void Scene::ProcessZOrderedDrawItems()
{
    const CameraNode* const camera = GetCameraNode();
    if (!camera)
    {
        return;
    }
    const Transform toCamera = camera->GetInvTransform();
    for (AlphaMeshNode* item : GetZOrderedDrawItems())
    {
        Vector center;
        center.Multiply(item->node->GetGlobal(), item->mesh->GetSphere().center);
        center.Multiply(toCamera, center);
        item->z = -center.z;
    }
    std::sort(zOrderedDrawItems.begin(), zOrderedDrawItems.end(), IsDrawnBefore);
}

void Scene::PopulateZOrderedDrawItems()
{
    ClearDrawItems();
    for (const Material* material : alphaMaterials)
    {
        for (Mesh* mesh : material->EachMesh())
        {
            // By number: the first item makes the mesh keep a list.
            for (std::size_t i = 0; i < mesh->EachNode().size(); ++i)
            {
                AppendDrawItem(mesh->EachNode()[i], mesh);
            }
        }
    }
}

void Scene::AppendDrawItem(MeshNode* node, Mesh* mesh)
{
    std::unique_ptr<AlphaMeshNode> item;
    if (m_spareDrawItems.empty())
    {
        item = std::make_unique<AlphaMeshNode>();
    }
    else
    {
        item = std::move(m_spareDrawItems.back());
        m_spareDrawItems.pop_back();
    }
    *item = {node, mesh, 0.0f};
    std::vector<DrawItemPlace>& ofNode = node->MakeLinks().drawItems;
    std::vector<DrawItemPlace>& ofMesh = mesh->MakeExtras().drawItems;
    const DrawItemPlace place{this, m_drawItemLinks.size()};
    m_drawItemLinks.push_back({item.get(), node, mesh, ofNode.size(), ofMesh.size()});
    ofNode.push_back(place);
    ofMesh.push_back(place);
    zOrderedDrawItems.push_back(item.release());
}

void Scene::UnlinkDrawItem(DrawItemLink& link)
{
    // The last place of each list takes that of the one which leaves.
    std::vector<DrawItemPlace>& ofNode = link.node->GetLinks()->drawItems;
    const DrawItemPlace lastOfNode = ofNode.back();
    ofNode[link.placeAtNode] = lastOfNode;
    lastOfNode.scene->m_drawItemLinks[lastOfNode.number].placeAtNode = link.placeAtNode;
    ofNode.pop_back();

    std::vector<DrawItemPlace>& ofMesh = link.mesh->m_nodes.GetExtras()->drawItems;
    const DrawItemPlace lastOfMesh = ofMesh.back();
    ofMesh[link.placeAtMesh] = lastOfMesh;
    lastOfMesh.scene->m_drawItemLinks[lastOfMesh.number].placeAtMesh = link.placeAtMesh;
    ofMesh.pop_back();

    link.item->node = nullptr;
    link.item->mesh = nullptr;
    link.item = nullptr;
}

void Scene::ClearDrawItems()
{
    for (DrawItemLink& link : m_drawItemLinks)
    {
        if (link.item)
        {
            UnlinkDrawItem(link);
        }
    }
    m_drawItemLinks.clear();
    for (AlphaMeshNode* item : zOrderedDrawItems)
    {
        m_spareDrawItems.emplace_back(item);
    }
    zOrderedDrawItems.clear();
    m_hasGoneDrawItems = false;
}

void Scene::RemoveDrawItemsOf(std::vector<DrawItemPlace>& places)
{
    while (!places.empty())
    {
        const DrawItemPlace place = places.back();
        Scene& scene = *place.scene;
        scene.UnlinkDrawItem(scene.m_drawItemLinks[place.number]);
        scene.m_hasGoneDrawItems = true;
        if (scene.zOrderedDrawItems.size() <= detail::shortList)
        {
            scene.DropGoneDrawItems();
        }
    }
}

void Scene::DropGoneDrawItems() const
{
    const auto drop = [](AlphaMeshNode* item)
    {
        const bool isGone = !item->node;
        if (isGone)
        {
            delete item;
        }
        return isGone;
    };
    zOrderedDrawItems.erase(std::remove_if(zOrderedDrawItems.begin(), zOrderedDrawItems.end(), drop),
                            zOrderedDrawItems.end());
    m_hasGoneDrawItems = false;
}

void Scene::UpdateCulling()
{
    float nearValue = detail::largestFloat;
    float farValue = -detail::largestFloat;
    const detail::Walk walk(this, detail::Walk::Other);
    if (root)
    {
        root->UpdateCulling(nearValue, farValue);
    }
    if (walk.IsGone(this))
    {
        return;
    }
    ProcessNearFar(nearValue, farValue);
}

void Scene::ProcessNearFar(float nearValue, float farValue)
{
    CameraNode* const camera = GetCameraNode();
    if (!camera)
    {
        return;
    }
    constexpr float share = 0.005f;
    const bool isPerspective = camera->GetProjection() == CameraNode::Perspective;
    float n = 0.1f;
    float f = 200.0f;
    const bool isNothingSeen = farValue < 0.0f && isPerspective;
    if (!isNothingSeen)
    {
        const float margin = (farValue - nearValue) * share;
        n = nearValue - margin;
        f = farValue + margin;
    }
    // The 0.1 of an empty view never arrives: the floor lifts it as well.
    const float lowest = std::min(5.0f, f * share);
    if (isPerspective && lowest > n)
    {
        n = lowest;
    }
    camera->SetNearFar(n, f);
}

void Scene::Frame()
{
    Vector boxMin;
    Vector boxMax;
    detail::StartBox(boxMin, boxMax);
    if (detail::Walk::IsOn(this, detail::Walk::Update))
    {
        return;
    }
    const detail::Walk walk(this, detail::Walk::Update);
    UpdateTree();
    if (!walk.IsGone(this) && root)
    {
        root->ComputeBoundingBox(boxMin, boxMax);
    }
    if (walk.IsGone(this))
    {
        return;
    }
    CameraNode* const camera = GetCameraNode();
    if (!camera || camera->GetProjection() != CameraNode::Perspective)
    {
        return;
    }
    Vector center;
    center.Add(boxMin, boxMax);
    center.Scale(0.5f);
    Vector diagonal;
    diagonal.Subtract(boxMax, boxMin);
    const float distance = diagonal.Magnitude();
    Vector eye;
    eye.Add(center, Vector(0.0f, 0.0f, distance));

    Transform place;
    place.EyeLookUp(eye, center, Vector(0.0f, 1.0f, 0.0f));
    camera->SetGlobal(place);
    camera->SetDistanceToTarget(distance);
}

void Scene::GetBoundingBox(Vector& boxMin, Vector& boxMax)
{
    detail::StartBox(boxMin, boxMax);
    for (Node* node : detail::CollectSubtree(root))
    {
        if (node->Type() != NodeTypeMeshNode)
        {
            continue;
        }
        for (const Mesh* mesh : static_cast<MeshNode*>(node)->EachMesh())
        {
            for (const Vector& position : mesh->GetPositionBuffer())
            {
                Vector inWorld;
                inWorld.Multiply(node->GetGlobal(), position);
                detail::WidenBox(boxMin, boxMax, inWorld);
            }
        }
    }
}

} // namespace OV
