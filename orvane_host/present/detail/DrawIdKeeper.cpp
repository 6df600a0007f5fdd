#include "orvane_host/present/detail/DrawIdKeeper.h"

#include "orvane/scene/Material.h"
#include "orvane/scene/Mesh.h"
#include "orvane/scene/Scene.h"

namespace OV::Host::Detail
{

DrawIdKeeper::DrawIdKeeper(const Scene& scene) : m_id(scene.GetUpdateID())
{
    for (const auto* list : {&scene.GetOptimizedMaterials(), &scene.GetAlphaMaterials()})
    {
        for (Material* material : *list)
        {
            if (material->UsingDrawID() && material->ReadyToDraw())
            {
                m_materials.push_back(material);
            }
        }
    }
}

void DrawIdKeeper::Keep(const std::vector<RenderItemES20>& items)
{
    for (const RenderItemES20& item : items)
    {
        // A material that is drawn as a whole has no mesh with a draw ID.
        if (item.mesh && item.mesh->UsingDrawID() && item.mesh->ReadyToDraw())
        {
            m_meshes.push_back(item.mesh);
        }
    }
}

DrawIdKeeper::~DrawIdKeeper()
{
    for (Material* material : m_materials)
    {
        material->SetDrawID(m_id);
    }
    for (Mesh* mesh : m_meshes)
    {
        mesh->SetDrawID(m_id);
    }
}

} // namespace OV::Host::Detail
