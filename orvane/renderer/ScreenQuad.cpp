#include "orvane/renderer/detail/ScreenQuad.h"

#include "orvane/renderdata/MeshES20.h"
#include "orvane/scene/Mesh.h"
#include "orvane/scene/MeshNode.h"
#include "orvane/scene/RawMesh.h"
#include "orvane/scene/Scene.h"

#include <memory>
#include <utility>
#include <vector>

namespace OV::Detail
{

std::shared_ptr<RawMesh> MakeScreenQuad()
{
    std::vector<Vector> positions = {{-1.0f, -1.0f, 0.0f}, {-1.0f, 1.0f, 0.0f}, {1.0f, 1.0f, 0.0f},
                                     {1.0f, 1.0f, 0.0f},   {1.0f, -1.0f, 0.0f}, {-1.0f, -1.0f, 0.0f}};
    std::vector<TextureCoordinate> textureCoordinates = {{0.0f, 0.0f}, {0.0f, 1.0f}, {1.0f, 1.0f},
                                                         {1.0f, 1.0f}, {1.0f, 0.0f}, {0.0f, 0.0f}};
    std::vector<unsigned short> indices = {0, 1, 2, 3, 4, 5};

    auto quad = std::make_shared<RawMesh>();
    quad->StartDescription();
    quad->SetPositionBuffer(std::move(positions));
    quad->SetTextureBuffer(std::move(textureCoordinates));
    quad->SetIndices(std::move(indices));
    quad->EndDescription(true);
    return quad;
}

ScreenMesh::~ScreenMesh() = default;

ScreenMesh MakeScreenMesh(SharedBufferPool& pool)
{
    ScreenMesh made;
    made.scene = std::make_unique<Scene>();
    auto mesh = std::make_unique<Mesh>(MakeScreenQuad());
    mesh->SetScene(made.scene.get());
    made.mesh = mesh.release();
    made.data = new MeshES20(made.mesh, &pool);
    made.mesh->SetRenderData(made.data, true);
    auto node = std::make_unique<MeshNode>(made.scene.get());
    made.scene->GetRoot()->AddChild(node.get(), false);
    made.mesh->AddNode(node.release());
    return made;
}

} // namespace OV::Detail
