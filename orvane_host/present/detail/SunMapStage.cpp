#include "orvane_host/present/detail/SunMapStage.h"

#include "orvane_host/present/PresentationFrame.h"
#include "orvane_host/present/StageAccess.h"
#include "orvane/math/TextureCoordinate.h"
#include "orvane/renderdata/MeshES20.h"
#include "orvane/scene/Mesh.h"
#include "orvane/scene/MeshNode.h"
#include "orvane/scene/RawMesh.h"
#include "orvane/scene/Scene.h"
#include "orvane/scene/SimMaterial.h"

#include <GL/gl.h>
#include <GL/glext.h>

#include <algorithm>
#include <cstddef>
#include <utility>

namespace OV::Host::Detail
{

namespace
{

/// Indices of a mesh have 16 bits.
constexpr std::size_t kCellsOfAMesh = 16000;

} // namespace

SunMapStage::SunMapStage(const std::vector<SunMapCell>& cells) : m_scene(std::make_unique<Scene>())
{
    auto* const material = new SimMaterial("map");
    material->flags = MaterialFlagUnlit | MaterialFlagNoCull;
    // A trace more than the values take, which are rounded between corners: what is out of the range is grey.
    material->rangeLower = -0.01f;
    material->rangeUpper = 1.01f;
    m_scene->AddMaterial(material);
    for (std::size_t first = 0; first < cells.size(); first += kCellsOfAMesh)
    {
        AddMesh(cells.data() + first, std::min(kCellsOfAMesh, cells.size() - first));
    }
}

SunMapStage::~SunMapStage() = default;

void SunMapStage::AddMesh(const SunMapCell* cells, std::size_t count)
{
    std::vector<Vector> positions;
    std::vector<TextureCoordinate> coordinates;
    std::vector<unsigned short> indices;
    for (std::size_t i = 0; i < count; ++i)
    {
        const SunMapCell& cell = cells[i];
        const auto first = static_cast<unsigned short>(positions.size());
        for (int corner = 0; corner < cell.count; ++corner)
        {
            positions.push_back(cell.corners[corner]);
            coordinates.emplace_back(std::clamp(cell.values[corner], 0.0f, 1.0f), 0.0f);
        }
        for (int corner = 1; corner + 1 < cell.count; ++corner)
        {
            for (const int index : {0, corner, corner + 1})
            {
                indices.push_back(static_cast<unsigned short>(first + index));
            }
        }
    }
    auto raw = std::make_shared<RawMesh>();
    raw->StartDescription();
    raw->SetPositionBuffer(std::move(positions));
    raw->SetTextureBuffer(std::move(coordinates));
    raw->SetIndices(std::move(indices));
    raw->EndDescription(true);
    auto* const mesh = new Mesh(raw, m_scene.get());
    m_scene->GetOptimizedMaterials().front()->AddMesh(mesh);
    auto* const node = new MeshNode(m_scene.get());
    m_scene->GetRoot()->AddChild(node, false);
    mesh->AddNode(node);
}

void SunMapStage::Draw(PresentationFrame& frame)
{
    m_items.clear();
    for (Material* material : m_scene->GetOptimizedMaterials())
    {
        frame.renderer.List(*material, frame.cameraData, m_items, false);
    }
    frame.renderer.Upload();
    for (Mesh* mesh : m_scene->EachMesh())
    {
        // No stream of scalars is packed: the first texture coordinate is one.
        if (auto* const data = dynamic_cast<MeshES20*>(mesh->GetRenderData()))
        {
            data->scalarOffset = data->GetTextureOffset();
        }
    }
    // The map may reach beyond the model, which alone the near and the far plane are about. What is
    // farther lies as deep as where nothing was drawn.
    GLint depthFunction = GL_LESS;
    glGetIntegerv(GL_DEPTH_FUNC, &depthFunction);
    glDepthFunc(GL_LEQUAL);
    glEnable(GL_DEPTH_CLAMP);
    glDisable(GL_CULL_FACE);
    glDisable(GL_BLEND);
    frame.renderer.Draw(frame.cameraData, m_items, RenderPassDefault);
    glDisable(GL_BLEND);
    glEnable(GL_CULL_FACE);
    glDisable(GL_DEPTH_CLAMP);
    glDepthFunc(static_cast<GLenum>(depthFunction));
    MeshES20::ResetBufferCache();
}

void SunMapStage::ReleaseGL()
{
    m_scene->Suspend();
}

} // namespace OV::Host::Detail
