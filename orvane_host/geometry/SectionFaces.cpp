#include "orvane_host/geometry/SectionFaces.h"

#include "orvane_host/geometry/detail/Lent.h"
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

SectionFaces::SectionFaces(Scene& scene) :
    m_scene(scene), m_cutter(std::make_unique<Detail::SolidCutter>()),
    m_material(std::make_unique<Detail::Lent<Material>>())
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
    if (fill)
    {
        AddFaces(planes, *fill);
    }
}

void SectionFaces::AddFaces(const std::vector<SectionPlane>& planes, const Fill& fill)
{
    if (!m_material->Get())
    {
        m_material->Reset(std::unique_ptr<Material>(Detail::MakeSectionMaterial(fill.color)));
    }
    Material& material = *m_material->Get();
    Detail::SetSectionColor(material, fill.color);
    for (MeshNode* node : Detail::ShownMeshNodes(m_scene))
    {
        for (const std::shared_ptr<RawMesh>& raw : m_cutter->Cut(*node, planes, fill.inset, fill.color).meshes)
        {
            auto* const mesh = new Mesh(raw, &m_scene);
            material.AddMesh(mesh);
            mesh->AddNode(node);
        }
    }
    if (!material.EachMesh().empty())
    {
        m_scene.AddMaterial(&material);
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
    OwnMaterial& spare = m_spares[&original];
    if (!spare || !spare->Get())
    {
        spare = std::make_unique<Detail::Lent<Material>>(std::unique_ptr<Material>(Detail::CopyOf(original)));
    }
    return spare->Get();
}

const Material* SectionFaces::GetMaterial() const
{
    const Material* const material = m_material->Get();
    return material && !material->EachMesh().empty() ? material : nullptr;
}

void SectionFaces::Heal()
{
    if (Material* const material = m_material->Get())
    {
        while (!material->EachMesh().empty())
        {
            delete *material->EachMesh().begin();
        }
        if (material->GetScene())
        {
            m_scene.RemoveMaterial(material);
        }
    }
    for (const Copy& copy : m_copies)
    {
        TakeOut(copy);
    }
    m_copies.clear();
    m_opened.clear();
}

void SectionFaces::TakeOut(const Copy& copy)
{
    const auto spare = m_spares.find(copy.original);
    if (spare == m_spares.end() || !spare->second->Get() || !copy.material->GetScene())
    {
        return;
    }
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
        if (Material* const material = spare->Get())
        {
            material->Suspend();
        }
    }
    if (Material* const material = m_material->Get())
    {
        material->Suspend();
    }
}

} // namespace OV::Host
