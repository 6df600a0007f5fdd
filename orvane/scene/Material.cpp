#include "orvane/scene/Material.h"

#include "orvane/base/detail/Walk.h"
#include "orvane/scene/Mesh.h"
#include "orvane/scene/MeshNode.h"
#include "orvane/scene/Scene.h"

#include <cstddef>
#include <cstdlib>
#include <utility>

namespace OV
{

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
    m_lifetime.End();
    std::free(pixels);
    if (scene)
    {
        scene->RemoveMaterial(this);
    }
    for (Mesh* mesh : meshes)
    {
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
    const std::size_t count = meshes.size();
    // Most often the mesh is the newest.
    meshes.insert(meshes.end(), mesh);
    if (meshes.size() != count)
    {
        mesh->material = this;
        ++m_meshesRevision;
        mesh->TellNodes();
    }
    return true;
}

bool Material::RemoveMesh(Mesh* mesh)
{
    const auto found = meshes.find(mesh);
    if (found == meshes.end())
    {
        return false;
    }
    // A copy of a mesh stands for it here: it is the entry that leaves.
    Mesh* const leaving = *found;
    leaving->material = nullptr;
    meshes.erase(found);
    ++m_meshesRevision;
    leaving->TellNodes();
    return true;
}

bool Material::HasVisibleItems() const
{
    for (const Mesh* mesh : meshes)
    {
        for (const MeshNode* node : mesh->GetNodes())
        {
            if (!(node->GetFlags() & (NodeFlagHidden | NodeFlagCulled)))
            {
                return true;
            }
        }
    }
    return false;
}

void Material::SetRenderData(Object* data)
{
    std::unique_ptr<Object> old = std::move(renderData);
    renderData.reset(data == old.get() ? nullptr : data);
    detail::Walk::DiscardDrawn(std::move(old));
}

void Material::Suspend()
{
    detail::Walk::DiscardDrawn(std::move(renderData));
}

void Material::Resume()
{
}

bool Material::MatchesUpdateID() const
{
    return scene && drawID == scene->GetUpdateID();
}

} // namespace OV
