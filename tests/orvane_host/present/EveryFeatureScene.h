#pragma once

#include "orvane/math/Color.h"
#include "orvane/math/Transform.h"
#include "orvane/math/Vector.h"
#include "orvane/scene/LineStyle.h"
#include "orvane/scene/Material.h"
#include "tests/imaging/TextureFiles.h"

#include <memory>
#include <vector>

namespace OV
{

class CameraNode;
class CoreContext;
class Mesh;
class MeshNode;
class RawMesh;
class Scene;
class Scene2D;
class Sprite;
class Text;

} // namespace OV

namespace OV::Test
{

/// A view that has one of everything that the engine draws: materials of each kind, a node
/// material, mirrored and hidden nodes, points, every kind of line, a clip plane with its outline
/// and section, fog, a sky's colours, and sprites, a rectangle, an arrow and a text in both
/// layers. Nothing of it moves.
///
/// Sky, fog and clip planes are settings of the process: who uses this puts them back
/// (EffectSettingsGuard).
class EveryFeatureScene
{
public:
    /// Becomes the scene of a context, and fills its layers. The context must outlive it.
    explicit EveryFeatureScene(CoreContext& context);

    /// Fills an empty scene that must outlive it; no layers.
    explicit EveryFeatureScene(Scene& scene);
    ~EveryFeatureScene();

    EveryFeatureScene(const EveryFeatureScene&) = delete;
    EveryFeatureScene& operator=(const EveryFeatureScene&) = delete;

    void UseOrthographic(bool orthographic);

    Scene& GetScene() { return *m_scene; }
    CameraNode& GetCamera();

private:
    Material& AddMaterial(const Color& diffuse);
    MeshNode& AddNode(const Transform& place);
    MeshNode& Add(Material& material, const std::shared_ptr<RawMesh>& raw, const Transform& place);
    LineStyle& AddLine(const std::vector<Vector>& points, const Color& color, float width);

    void FillScene();
    void AddRoom();
    void AddSurfaces();
    void AddMappedSurfaces();
    void AddUnusualSurfaces();
    void AddNodesOfEveryKind();
    void AddLines();
    void AddSettings();
    void AddSprite(Scene2D& layer, float x, float y, float z, const Color& color, bool textured);
    void AddArrow(Scene2D& layer, float x, float y, float z);
    void FillLayer(Scene2D& layer, float left);

    TextureFiles m_files;
    Scene* m_scene = nullptr;
    std::vector<std::unique_ptr<Sprite>> m_sprites;
    std::vector<std::unique_ptr<Text>> m_texts;
    int m_nextUserData = 0;
};

} // namespace OV::Test
