#include "orvane_host/geometry/SectionFaces.h"

#include "orvane_host/geometry/detail/SolidCutter.h"
#include "orvane/scene/Material.h"
#include "orvane/scene/Mesh.h"
#include "orvane/scene/MeshNode.h"
#include "orvane/scene/Scene.h"

#include <algorithm>
#include <iterator>

namespace OV::Host
{

namespace
{

/// Whether a material, which a host may have deleted, is one of a scene.
bool IsIn(const Scene& scene, const Material* material)
{
    const auto holds = [material](const std::vector<Material*>& list)
    { return std::find(list.begin(), list.end(), material) != list.end(); };
    return holds(scene.GetOptimizedMaterials()) || holds(scene.GetAlphaMaterials());
}

} // namespace

SectionFaces::SectionFaces(Scene& scene) : m_scene(scene), m_cutter(std::make_unique<Detail::SolidCutter>())
{
}

SectionFaces::~SectionFaces()
{
    Heal();
}

void SectionFaces::Cut(const std::vector<SectionPlane>& planes, const std::optional<Fill>& fill)
{
    Heal();
    if (planes.empty())
    {
        return;
    }
    Open(planes);
    if (!fill)
    {
        return;
    }
    if (!m_material)
    {
        m_material.reset(Detail::MakeSectionMaterial(fill->color));
    }
    Detail::SetSectionColor(*m_material, fill->color);
    for (MeshNode* node : Detail::ShownMeshNodes(m_scene))
    {
        for (const std::shared_ptr<RawMesh>& raw : m_cutter->Cut(*node, planes, fill->inset, fill->color).meshes)
        {
            auto* const mesh = new Mesh(raw, &m_scene);
            m_material->AddMesh(mesh);
            mesh->AddNode(node);
            m_meshes.push_back(mesh);
        }
    }
    if (!m_meshes.empty())
    {
        m_scene.AddMaterial(m_material.get());
    }
}

void SectionFaces::Open(const std::vector<SectionPlane>& planes)
{
    std::vector<Material*> materials = m_scene.GetOptimizedMaterials();
    materials.insert(materials.end(), m_scene.GetAlphaMaterials().begin(), m_scene.GetAlphaMaterials().end());
    for (Material* material : materials)
    {
        std::vector<Mesh*> cut;
        std::copy_if(material->EachMesh().begin(), material->EachMesh().end(), std::back_inserter(cut),
                     [&](const Mesh* mesh) { return Detail::IsCut(*mesh, planes); });
        if (cut.empty())
        {
            continue;
        }
        // A copy has the fields of a plain material only.
        if (cut.size() == material->EachMesh().size() || material->Type() != NodeTypeMaterial)
        {
            m_opened.push_back(material);
            continue;
        }
        Material* const copy = CopyFor(*material);
        m_scene.AddMaterial(copy);
        for (Mesh* mesh : cut)
        {
            copy->AddMesh(mesh);
        }
        m_copies.push_back({material, copy});
        m_opened.push_back(copy);
    }
}

Material* SectionFaces::CopyFor(Material& original)
{
    std::unique_ptr<Material>& spare = m_spares[&original];
    if (!spare)
    {
        spare.reset(Detail::CopyOf(original));
    }
    return spare.get();
}

void SectionFaces::Heal()
{
    for (Mesh* mesh : m_meshes)
    {
        delete mesh;
    }
    m_meshes.clear();
    if (m_material && m_material->GetScene())
    {
        m_scene.RemoveMaterial(m_material.get());
    }
    for (const Copy& copy : m_copies)
    {
        m_scene.RemoveMaterial(copy.material);
        // The order of the meshes is that of their creation, whoever had them meanwhile.
        while (!copy.material->EachMesh().empty())
        {
            Mesh* const mesh = *copy.material->EachMesh().begin();
            copy.material->RemoveMesh(mesh);
            if (IsIn(m_scene, copy.original))
            {
                copy.original->AddMesh(mesh);
            }
        }
    }
    m_copies.clear();
    m_opened.clear();
}

void SectionFaces::Forget()
{
    Heal();
    m_spares.clear();
    m_cutter->Forget();
}

void SectionFaces::Suspend()
{
    for (const auto& [original, spare] : m_spares)
    {
        spare->Suspend();
    }
    if (m_material)
    {
        m_material->Suspend();
    }
}

} // namespace OV::Host
