#include "orvane_host/geometry/SectionFill.h"

#include "orvane_host/geometry/detail/SolidCutter.h"
#include "orvane/scene/Material.h"
#include "orvane/scene/Mesh.h"
#include "orvane/scene/MeshNode.h"
#include "orvane/scene/Scene.h"

#include <algorithm>
#include <iterator>

namespace OV::Host
{

std::size_t SectionFill::AddTo(Scene& scene, const std::vector<SectionPlane>& planes, float inset, const Color& color)
{
    Detail::SolidCutter cutter;
    Material* material = nullptr;
    std::size_t count = 0;
    for (MeshNode* node : Detail::ShownMeshNodes(scene))
    {
        const Detail::SolidCutter::Faces faces = cutter.Cut(*node, planes, inset, color);
        count += faces.cuts;
        for (const std::shared_ptr<RawMesh>& raw : faces.meshes)
        {
            if (!material)
            {
                material = Detail::MakeSectionMaterial(color);
                scene.AddMaterial(material);
            }
            auto* const mesh = new Mesh(raw, &scene);
            material->AddMesh(mesh);
            mesh->AddNode(node);
        }
    }
    return count;
}

void SectionFill::ShowInsides(Scene& scene, const std::vector<SectionPlane>& planes)
{
    std::vector<Material*> materials;
    for (const auto* list : {&scene.GetOptimizedMaterials(), &scene.GetAlphaMaterials()})
    {
        materials.insert(materials.end(), list->begin(), list->end());
    }
    for (Material* material : materials)
    {
        std::vector<Mesh*> cut;
        std::copy_if(material->EachMesh().begin(), material->EachMesh().end(), std::back_inserter(cut),
                     [&](const Mesh* mesh) { return Detail::IsCut(*mesh, planes); });
        Material* open = material;
        if (!cut.empty() && cut.size() < material->EachMesh().size())
        {
            open = Detail::CopyOf(*material);
            scene.AddMaterial(open);
            for (Mesh* mesh : cut)
            {
                open->AddMesh(mesh);
            }
        }
        open->flags |= cut.empty() ? 0u : MaterialFlagNoCull;
    }
}

} // namespace OV::Host
