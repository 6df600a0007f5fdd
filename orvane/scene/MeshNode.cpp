#include "orvane/scene/MeshNode.h"

#include "orvane/math/Sphere.h"
#include "orvane/scene/CameraNode.h"
#include "orvane/scene/Mesh.h"
#include "orvane/scene/NodeLineStyle.h"
#include "orvane/scene/NodeListener.h"
#include "orvane/scene/NodeMaterial.h"
#include "orvane/scene/Scene.h"
#include "orvane/scene/detail/Box.h"
#include "orvane/scene/detail/Erase.h"
#include "orvane/scene/detail/MeshNodeLinks.h"
#include "orvane/scene/detail/OwnedObject.h"

#include <cstddef>
#include <utility>

namespace OV
{

MeshNode::MeshNode(Scene* ownScene) :
    Node(ownScene)
{
}

void MeshNode::LeaveMeshes()
{
    Links* const links = GetLinks();
    if (links)
    {
        Scene::RemoveDrawItemsOf(links->drawItems);
    }
    const PointerSpan<Mesh> meshes = EachMesh();
    for (std::size_t i = 0; i < meshes.size(); ++i)
    {
        meshes[i]->DropNode(RankAt(i));
    }
    if (links)
    {
        links->meshes.clear();
        links->laterRanks.clear();
    }
    else
    {
        m_meshes.SetOne(nullptr);
    }
}

MeshNode::~MeshNode()
{
    LeaveMeshes();
    Links* const links = GetLinks();
    if (!links)
    {
        return;
    }
    for (NodeMaterial* material : std::exchange(links->nodeMaterials, {}))
    {
        material->RemoveNode(this);
    }
    for (NodeLineStyle* style : links->lineStyles)
    {
        style->node = nullptr;
    }
    links->renderData.reset();
    links->collisionData.reset();
    m_meshes.Delete();
}

void MeshNode::UpdateGraph()
{
    Node::UpdateGraph();
}

void MeshNode::UpdateCulling(float& nearValue, float& farValue)
{
    FrustumCulling(nearValue, farValue);
    Node::UpdateCulling(nearValue, farValue);
}

void MeshNode::ComputeBoundingBox(Vector& boxMin, Vector& boxMax)
{
    if (!(flags & NodeFlagHidden))
    {
        const float scale = global.GetMaxScale();
        for (const Mesh* mesh : EachMesh())
        {
            const Sphere& sphere = mesh->GetSphere();
            const float radius = scale * sphere.radius;
            Vector center;
            center.Multiply(global, sphere.center);
            const Vector extent(radius, radius, radius);
            Vector low;
            Vector high;
            low.Subtract(center, extent);
            high.Add(center, extent);
            detail::WidenBox(boxMin, boxMax, low, high);
        }
    }
    Node::ComputeBoundingBox(boxMin, boxMax);
}

int MeshNode::Type() const
{
    return NodeTypeMeshNode;
}

bool MeshNode::HasType(int type)
{
    return type == NodeTypeMeshNode || type == NodeTypeNode;
}

bool MeshNode::FrustumCulling(float& nearValue, float& farValue)
{
    const CameraNode* const camera = scene ? scene->GetCameraNode() : nullptr;
    if ((flags & NodeFlagHidden) || !camera)
    {
        return false;
    }

    const float scale = global.GetMaxScale();
    bool culled = true;
    for (const Mesh* mesh : EachMesh())
    {
        const Sphere& sphere = mesh->GetSphere();
        const float radius = scale * sphere.radius;
        Vector center;
        center.Multiply(global, sphere.center);
        if (!camera->IsOutside(center, radius))
        {
            culled = false;
        }
        else if (culled)
        {
            // After the first visible mesh the others count for the depths, seen or not.
            continue;
        }
        Vector inView;
        inView.Multiply(camera->GetInvTransform(), center);
        const float depth = -inView.z;
        if (nearValue > depth - radius)
        {
            nearValue = depth - radius;
        }
        if (depth + radius > farValue)
        {
            farValue = depth + radius;
        }
    }

    // A culled node has passed over each of its meshes: the range is as it was.
    if (culled != ((flags & NodeFlagCulled) != 0))
    {
        flags ^= NodeFlagCulled;
        TellStateChange();
    }
    return culled;
}

void MeshNode::SetFlags(NodeFlags bits, bool recursive)
{
    ChangeFlags(~0u, bits, recursive);
}

void MeshNode::ClearFlags(NodeFlags bits, bool recursive)
{
    ChangeFlags(~static_cast<unsigned int>(bits), 0, recursive);
}

void MeshNode::ChangeFlags(unsigned int kept, unsigned int added, bool recursive)
{
    flags = (flags & kept) | added;
    TellStateChange();
    for (Node* node = recursive ? NextInTree(this, this, true) : nullptr; node;)
    {
        const bool isMeshNode = node->HasType(NodeTypeMeshNode);
        if (isMeshNode)
        {
            auto* const below = static_cast<MeshNode*>(node);
            below->flags = (below->flags & kept) | added;
            below->TellStateChange();
        }
        node = NextInTree(node, this, isMeshNode);
    }
}

Object* MeshNode::GetRenderData() const
{
    const Links* const links = GetLinks();
    return links ? links->renderData.get() : nullptr;
}

void MeshNode::SetRenderData(Object* data)
{
    if (m_meshes.HasExtras() || data)
    {
        detail::ReplaceObject(MakeLinks().renderData, data);
    }
}

Object* MeshNode::GetCollisonData() const
{
    const Links* const links = GetLinks();
    return links ? links->collisionData.get() : nullptr;
}

void MeshNode::SetCollisionData(Object* data)
{
    if (m_meshes.HasExtras() || data)
    {
        detail::ReplaceObject(MakeLinks().collisionData, data);
    }
}

const std::vector<NodeMaterial*>& MeshNode::GetNodeMaterials() const
{
    static const std::vector<NodeMaterial*> none;
    const Links* const links = GetLinks();
    return links ? links->nodeMaterials : none;
}

NodeMaterial* MeshNode::FirstNodeMaterial() const
{
    const std::vector<NodeMaterial*>& materials = GetLinks()->nodeMaterials;
    return materials.empty() ? nullptr : materials.front();
}

void MeshNode::PushNodeMaterial(NodeMaterial* material)
{
    std::vector<NodeMaterial*>& materials = MakeLinks().nodeMaterials;
    if (!detail::Contains(materials, material))
    {
        materials.push_back(material);
        flags |= NodeFlagHasNodeMaterial;
        TellStateChange();
    }
}

void MeshNode::RemoveNodeMaterial(NodeMaterial* material)
{
    if (Links* const links = GetLinks())
    {
        detail::EraseFirst(links->nodeMaterials, material);
    }
    if (GetNodeMaterials().empty())
    {
        flags &= ~NodeFlagHasNodeMaterial;
    }
    TellStateChange();
}

MeshNode::Links& MeshNode::MakeLinks() const
{
    return m_meshes.Make([](Links& links, Mesh* mesh) { links.meshes.push_back(mesh); });
}

const std::vector<Mesh*>& MeshNode::GetMeshes() const
{
    return MakeLinks().meshes;
}

PointerSpan<Mesh> MeshNode::ListedMeshes() const
{
    const std::vector<Mesh*>& meshes = GetLinks()->meshes;
    return PointerSpan<Mesh>(meshes.data(), meshes.size());
}

std::uint64_t MeshNode::RankAt(std::size_t index) const
{
    return index == 0 ? m_firstRank : GetLinks()->laterRanks[index - 1];
}

void MeshNode::AddMesh(Mesh* mesh, std::uint64_t rank)
{
    if (!m_meshes.HasExtras() && m_meshes.GetOne().empty())
    {
        m_meshes.SetOne(mesh);
        m_firstRank = rank;
        TellChange(NodeChangeMeshes);
        return;
    }
    Links& links = MakeLinks();
    std::vector<Mesh*>& meshes = links.meshes;
    meshes.push_back(mesh);
    if (meshes.size() == 1)
    {
        m_firstRank = rank;
        TellChange(NodeChangeMeshes);
        return;
    }
    try
    {
        links.laterRanks.push_back(rank);
    }
    catch (...)
    {
        meshes.pop_back();
        throw;
    }
    TellChange(NodeChangeMeshes);
}

void MeshNode::RemoveMeshAt(std::size_t index)
{
    Links* const links = GetLinks();
    if (!links)
    {
        m_meshes.SetOne(nullptr);
        TellChange(NodeChangeMeshes);
        return;
    }
    std::vector<Mesh*>& meshes = links->meshes;
    meshes.erase(meshes.begin() + static_cast<std::ptrdiff_t>(index));
    TellChange(NodeChangeMeshes);
    if (meshes.empty())
    {
        return;
    }
    std::vector<std::uint64_t>& later = links->laterRanks;
    if (index == 0)
    {
        m_firstRank = later.front();
        index = 1;
    }
    later.erase(later.begin() + static_cast<std::ptrdiff_t>(index - 1));
}

void MeshNode::TellStateChange()
{
    TellChange(NodeChangeState);
}

bool MeshNode::MatchesUpdateID() const
{
    return scene && drawID == scene->GetUpdateID();
}

} // namespace OV
