#include "orvane/scene/Material.h"

#include "orvane/base/detail/Walk.h"
#include "orvane/scene/Mesh.h"
#include "orvane/scene/MeshNode.h"
#include "orvane/scene/Scene.h"

#include <cstdlib>
#include <utility>

namespace OV
{

std::atomic<std::uint64_t> Material::s_listingRevision{0};

Material::Material(const std::string& materialName) :
    name(materialName)
{
}

Material::Material() :
    stippleColor(0.0f, 0.0f, 0.0f, 0.0f)
{
}

Material::Material(const Material& other) :
    diffuse(other.diffuse),
    ambient(other.ambient),
    hasAlpha(other.hasAlpha),
    ignoreLightColor(other.ignoreLightColor),
    stippling(other.stippling),
    emissive(other.emissive),
    specular(other.specular),
    shininess(other.shininess),
    stippleColor(other.stippleColor),
    texturePath(other.texturePath),
    textureName(other.textureName),
    name(other.name)
{
}

Material::~Material()
{
    detail::Walk::Tell(this);
    ListingChanged();
    m_lifetime.End();
    std::free(pixels);
    if (scene)
    {
        scene->RemoveMaterial(this);
    }
    m_meshSet.reset();
    // One by one: who is told may delete others.
    while (!m_meshes.empty())
    {
        Mesh* const mesh = *m_meshes.begin();
        m_meshes.Remove(mesh);
        mesh->material = nullptr;
        mesh->TellNodes();
    }
    detail::Walk::DiscardDrawn(std::move(renderData));
}

bool Material::IsTransparent()
{
    return GetOpacity() < 1.0f;
}

int Material::Type() const
{
    return NodeTypeMaterial;
}

bool Material::HasType(int type)
{
    return type == NodeTypeMaterial;
}

bool Material::AddMesh(Mesh* mesh)
{
    if (!mesh)
    {
        return false;
    }
    if (mesh->material)
    {
        mesh->material->RemoveMesh(mesh);
    }
    if (m_meshes.Insert(mesh))
    {
        try
        {
            if (m_meshSet)
            {
                m_meshSet->insert(mesh);
            }
        }
        catch (...)
        {
            m_meshes.Remove(mesh);
            throw;
        }
        mesh->material = this;
        MeshesChanged();
        mesh->TellNodes();
    }
    return true;
}

bool Material::RemoveMesh(Mesh* mesh)
{
    // A copy of a mesh stands for it here: it is the entry that leaves.
    Mesh* const leaving = m_meshes.Find(mesh);
    if (!leaving)
    {
        return false;
    }
    leaving->material = nullptr;
    if (m_meshSet)
    {
        m_meshSet->erase(leaving);
    }
    m_meshes.Remove(leaving);
    MeshesChanged();
    leaving->TellNodes();
    return true;
}

bool Material::HasVisibleItems() const
{
    for (const Mesh* mesh : m_meshes)
    {
        for (const MeshNode* node : mesh->EachNode())
        {
            if (!(node->GetFlags() & (NodeFlagHidden | NodeFlagCulled)))
            {
                return true;
            }
        }
    }
    return false;
}

const std::set<Mesh*, CompareMeshPointers>& Material::GetMeshes() const
{
    if (!m_meshSet)
    {
        m_meshSet = std::make_unique<std::set<Mesh*, CompareMeshPointers>>(m_meshes.begin(), m_meshes.end());
    }
    return *m_meshSet;
}

void Material::SetRenderData(Object* data)
{
    ListingChanged();
    std::unique_ptr<Object> old = std::move(renderData);
    renderData.reset(data == old.get() ? nullptr : data);
    detail::Walk::DiscardDrawn(std::move(old));
}

void Material::Suspend()
{
    ListingChanged();
    detail::Walk::DiscardDrawn(std::move(renderData));
}

void Material::Resume()
{
}

void Material::MeshesChanged()
{
    ++m_meshesRevision;
    ListingChanged();
}

bool Material::MatchesUpdateID() const
{
    return scene && drawID == scene->GetUpdateID();
}

} // namespace OV
