#include "orvane/renderer/detail/ScreenQuad.h"

#include "orvane/scene/RawMesh.h"

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

} // namespace OV::Detail
