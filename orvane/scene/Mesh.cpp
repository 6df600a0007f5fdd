#include "orvane/scene/Mesh.h"

#include "orvane/base/detail/Walk.h"
#include "orvane/scene/Material.h"
#include "orvane/scene/MeshNode.h"
#include "orvane/scene/NodeListener.h"
#include "orvane/scene/RawMesh.h"
#include "orvane/scene/Scene.h"
#include "orvane/scene/detail/Erase.h"
#include "orvane/scene/detail/MeshExtras.h"

#include <algorithm>
#include <atomic>
#include <cstddef>
#include <limits>
#include <utility>

namespace OV
{

namespace
{

std::atomic<std::uint64_t> nextSortID{0};

Vector BoxSize(const RawMesh& geometry)
{
    Vector size;
    size.Subtract(geometry.bboxMax, geometry.bboxMin);
    return size;
}

void InvertTriangles(RawMesh& geometry)
{
    std::vector<unsigned short>& indices = geometry.indices;
    for (std::size_t i = 0; i + 2 < indices.size(); i += 3)
    {
        std::swap(indices[i], indices[i + 2]);
    }
}

} // namespace

bool CompareMeshPointers::operator()(const Mesh* a, const Mesh* b) const
{
    constexpr std::uint64_t last = std::numeric_limits<std::uint64_t>::max();
    return (a ? a->GetSortID() : last) < (b ? b->GetSortID() : last);
}

Mesh::Mesh(const std::shared_ptr<RawMesh>& geometry) :
    rawMesh(geometry ? geometry : std::make_shared<RawMesh>()),
    sortID(nextSortID++),
    renderDataOnRawMesh(1)
{
}

Mesh::Mesh(const std::shared_ptr<RawMesh>& geometry, Scene* ownScene) :
    Mesh(geometry)
{
    SetScene(ownScene);
}

Mesh::Mesh(const Mesh& other, Scene* ownScene) :
    Mesh(other.rawMesh, ownScene)
{
}

Mesh::Mesh(const Mesh& other) :
    rawMesh(other.rawMesh),
    drawID(other.drawID),
    flags(other.flags),
    sortID(other.sortID),
    renderDataOnRawMesh(other.renderDataOnRawMesh)
{
}

Mesh& Mesh::operator=(const Mesh& other)
{
    if (this == &other)
    {
        return *this;
    }
    // Render data of the old geometry may point back at this mesh.
    SetRenderData(nullptr, true);
    // The set of the material is ordered by what is about to change.
    Material* const ownMaterial = material;
    if (ownMaterial)
    {
        ownMaterial->RemoveMesh(this);
    }
    rawMesh = other.rawMesh;
    drawID = other.drawID;
    renderDataOnRawMesh = other.renderDataOnRawMesh;
    flags = other.flags;
    sortID = other.sortID;
    if (ownMaterial)
    {
        ownMaterial->AddMesh(this);
    }
    TellNodes();
    return *this;
}

Mesh::~Mesh()
{
    detail::Walk::Tell(this);
    if (Extras* const extras = m_nodes.GetExtras())
    {
        Scene::RemoveDrawItemsOf(extras->drawItems);
    }
    SetRenderData(nullptr, true);
    if (scene)
    {
        scene->RemoveMesh(this);
    }
    if (material)
    {
        material->RemoveMesh(this);
    }
    for (MeshNode* node : EachNode())
    {
        node->RemoveMeshAt(detail::IndexOf(node->EachMesh(), this));
    }
    m_nodes.Delete();
}

std::uint64_t Mesh::LastSortID()
{
    return nextSortID - 1;
}

int Mesh::Type() const
{
    return NodeTypeMesh;
}

bool Mesh::HasType(int type)
{
    return type == NodeTypeMesh;
}

void Mesh::SetScene(Scene* newScene)
{
    if (newScene)
    {
        newScene->AddMesh(this);
    }
}

const std::vector<Vector>& Mesh::GetPositionBuffer() const
{
    return rawMesh->positions;
}

const std::vector<Vector>& Mesh::GetNormalBuffer() const
{
    return rawMesh->normals;
}

const std::vector<TextureCoordinate>& Mesh::GetTextureBuffer() const
{
    return rawMesh->textureCoordinates;
}

const std::vector<Color>& Mesh::GetColorBuffer() const
{
    return rawMesh->colors;
}

const std::vector<unsigned short>& Mesh::GetIndices() const
{
    return rawMesh->indices;
}

std::uint64_t Mesh::GetNumVertices() const
{
    return rawMesh->positions.size();
}

std::uint64_t Mesh::GetNumIndices() const
{
    return rawMesh->indices.size();
}

void Mesh::GetBBox(Vector& boxMin, Vector& boxMax) const
{
    boxMin = rawMesh->bboxMin;
    boxMax = rawMesh->bboxMax;
}

const Sphere& Mesh::GetSphere() const
{
    return rawMesh->sphere;
}

Sphere& Mesh::GetSphere()
{
    return rawMesh->sphere;
}

float Mesh::GetSizeX() const
{
    return BoxSize(*rawMesh).x;
}

float Mesh::GetSizeY() const
{
    return BoxSize(*rawMesh).y;
}

float Mesh::GetSizeZ() const
{
    return BoxSize(*rawMesh).z;
}

float Mesh::GetRefSize() const
{
    return BoxSize(*rawMesh).Magnitude();
}

bool Mesh::AddNode(MeshNode* node)
{
    if (!node || detail::Contains(node->EachMesh(), this))
    {
        return false;
    }
    if (!m_nodes.HasExtras() && m_nodes.GetOne().empty())
    {
        m_nodes.SetOne(node);
        try
        {
            node->AddMesh(this, 0);
        }
        catch (...)
        {
            m_nodes.SetOne(nullptr);
            throw;
        }
        TellMaterial();
        return true;
    }
    std::vector<MeshNode*>& nodes = MakeExtras().nodes;
    std::vector<std::uint64_t>& ranks = m_nodes.GetExtras()->nodeRanks;
    if (nodes.size() == 1 && ranks.empty())
    {
        ranks.push_back(0);
    }
    const std::uint64_t rank = ranks.empty() ? 0 : ranks.back() + 1;
    nodes.push_back(node);
    try
    {
        if (nodes.size() > 1)
        {
            ranks.push_back(rank);
        }
        node->AddMesh(this, rank);
    }
    catch (...)
    {
        // Without memory for both sides there is no link.
        nodes.pop_back();
        ranks.resize(std::min(ranks.size(), nodes.size()));
        throw;
    }
    TellMaterial();
    return true;
}

bool Mesh::RemoveNode(MeshNode* node)
{
    const std::size_t index = node ? detail::IndexOf(node->EachMesh(), this) : 0;
    if (!node || index == node->EachMesh().size())
    {
        return false;
    }
    DropNode(node->RankAt(index));
    node->RemoveMeshAt(index);
    return true;
}

void Mesh::DropNode(std::uint64_t rank)
{
    TellMaterial();
    Extras* const extras = m_nodes.GetExtras();
    if (!extras)
    {
        m_nodes.SetOne(nullptr);
        return;
    }
    std::vector<MeshNode*>& nodes = extras->nodes;
    std::vector<std::uint64_t>& ranks = extras->nodeRanks;
    if (ranks.empty())
    {
        nodes.clear();
        return;
    }
    const auto found = std::lower_bound(ranks.begin(), ranks.end(), rank);
    const auto index = found - ranks.begin();
    const auto entry = nodes.begin() + index;
    if (nodes.end() - entry <= detail::shortList)
    {
        ranks.erase(found);
        nodes.erase(entry);
    }
    else
    {
        *entry = nullptr;
        ++extras->goneNodes;
    }
    if (extras->goneNodes > nodes.size() / 2)
    {
        CloseNodeGaps();
    }
}

void Mesh::CloseNodeGaps() const
{
    Extras& extras = *m_nodes.GetExtras();
    std::vector<MeshNode*>& nodes = extras.nodes;
    std::uint32_t& gone = extras.goneNodes;
    if (gone == 0)
    {
        return;
    }
    // What stands between two gaps moves in one piece, so that a reader after each removal pays
    // little more than for taking the entry out at once.
    const auto begin = nodes.begin();
    auto gap = std::find(begin, nodes.end(), nullptr);
    auto kept = gap;
    for (; gone > 0; --gone)
    {
        const auto next = gone > 1 ? std::find(gap + 1, nodes.end(), nullptr) : nodes.end();
        const auto ranks = extras.nodeRanks.begin();
        std::move(ranks + (gap + 1 - begin), ranks + (next - begin), ranks + (kept - begin));
        kept = std::move(gap + 1, next, kept);
        gap = next;
    }
    extras.nodeRanks.resize(static_cast<std::size_t>(kept - begin));
    nodes.erase(kept, nodes.end());
}

Mesh* Mesh::InvertOrder(Mesh* mesh, bool makeCopy)
{
    if (!mesh)
    {
        return nullptr;
    }
    if (makeCopy)
    {
        const auto copy = std::make_shared<RawMesh>(*mesh->rawMesh);
        InvertTriangles(*copy);
        return new Mesh(copy, mesh->scene);
    }
    if (mesh->rawMesh->indices.size() >= 3)
    {
        mesh->SetRenderData(nullptr, mesh->renderDataOnRawMesh);
        mesh->rawMesh->SetRenderData(nullptr);
        InvertTriangles(*mesh->rawMesh);
    }
    return mesh;
}

Object* Mesh::GetRenderData() const
{
    return renderDataOnRawMesh ? rawMesh->renderData.get() : GetOwnRenderData();
}

Object* Mesh::GetOwnRenderData() const
{
    const Extras* const extras = m_nodes.GetExtras();
    return extras ? extras->renderData.get() : nullptr;
}

Mesh::Extras& Mesh::MakeExtras() const
{
    return m_nodes.Make([](Extras& extras, MeshNode* node) { extras.nodes.push_back(node); });
}

const std::vector<MeshNode*>& Mesh::GetNodes() const
{
    const std::vector<MeshNode*>& nodes = MakeExtras().nodes;
    CloseNodeGaps();
    return nodes;
}

PointerSpan<MeshNode> Mesh::ListedNodes() const
{
    CloseNodeGaps();
    const std::vector<MeshNode*>& nodes = m_nodes.GetExtras()->nodes;
    return PointerSpan<MeshNode>(nodes.data(), nodes.size());
}

void Mesh::SetRenderData(Object* data, bool onRawMesh)
{
    // A mesh that never had a slot of its own has an empty one for the length of this.
    std::unique_ptr<Object> noSlot;
    std::unique_ptr<Object>& own = onRawMesh && !m_nodes.HasExtras() ? noSlot : MakeExtras().renderData;
    std::unique_ptr<Object>& present = renderDataOnRawMesh ? rawMesh->renderData : own;
    // Taken out first: what dies may look back at this mesh.
    std::unique_ptr<Object> taken = std::move(present);
    std::unique_ptr<Object>& target = onRawMesh ? rawMesh->renderData : own;
    std::unique_ptr<Object>& other = onRawMesh ? own : rawMesh->renderData;
    renderDataOnRawMesh = onRawMesh ? 1 : 0;
    // The object that is in a slot already stays alive and moves, if it has to.
    for (std::unique_ptr<Object>* slot : {&taken, &other})
    {
        if (slot->get() == data)
        {
            (void)slot->release();
        }
    }
    taken.reset();
    if (target.get() != data)
    {
        delete target.release();
        target.reset(data);
    }
}

void Mesh::DrawChanged()
{
    TellMaterial();
    TellNodes();
}

void Mesh::TellMaterial() const
{
    if (material)
    {
        material->MeshesChanged();
    }
}

void Mesh::TellNodes() const
{
    if (scene && !scene->HasNodeListeners())
    {
        return;
    }
    // With the gaps as they are: this may be called while one is being made.
    const Extras* const extras = m_nodes.GetExtras();
    const PointerSpan<MeshNode> nodes =
        extras ? PointerSpan<MeshNode>(extras->nodes.data(), extras->nodes.size()) : m_nodes.GetOne();
    for (MeshNode* node : nodes)
    {
        if (node)
        {
            node->TellChange(NodeChangeMeshes);
        }
    }
}

void Mesh::Suspend()
{
    SetRenderData(nullptr, true);
}

void Mesh::Resume()
{
}

bool Mesh::MatchesUpdateID() const
{
    return scene && drawID == scene->GetUpdateID();
}

} // namespace OV
