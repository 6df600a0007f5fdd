#pragma once

#include "orvane/renderdata/CameraNodeES20.h"
#include "orvane/renderdata/MaterialES20.h"
#include "orvane/renderer/Renderer20.h"
#include "orvane/scene/Material.h"
#include "orvane/scene/Scene.h"
#include "tests/renderdata/RenderDataDoubles.h"

#include <memory>
#include <string>
#include <vector>

namespace OV::Test
{

/// The renderer with its protected side open.
class OpenRenderer20 : public Renderer20
{
public:
    using Renderer20::Renderer20;

    using Renderer20::ClearOffscreenBuffers;
    using Renderer20::CreateMSAABuffers;
    using Renderer20::CreateScreenMesh;
    using Renderer20::PrepareLineStyle;
    using Renderer20::PrepareOptimizedMaterial;
    using Renderer20::ListMeshes;
    using Renderer20::PrepareWholeMaterial;
    using Renderer20::PrepareWholeMaterials;
    using Renderer20::PrepareZOrderedMeshNode;
    using Renderer20::RenderItemList;
    using Renderer20::SetupAntialiasBuffers;

    using Renderer20::aaMode;
    using Renderer20::bufferPool;
    using Renderer20::capabilities;
    using Renderer20::clearColor;
    using Renderer20::devicePixelRatio;
    using Renderer20::effectCache;
    using Renderer20::extension;
    using Renderer20::height;
    using Renderer20::hudCamera;
    using Renderer20::msaaBuffersReady;
    using Renderer20::msaaColorRenderbuffer;
    using Renderer20::msaaDepthRenderbuffer;
    using Renderer20::msaaFramebuffer;
    using Renderer20::offscreenColorRenderbuffer;
    using Renderer20::offscreenColorTexture;
    using Renderer20::offscreenDepthRenderbuffer;
    using Renderer20::offscreenDepthTexture;
    using Renderer20::offscreenFramebuffer;
    using Renderer20::offscreenHeight;
    using Renderer20::offscreenSpareRenderbuffer;
    using Renderer20::offscreenWidth;
    using Renderer20::onScreenDepthbuffer;
    using Renderer20::onScreenFramebuffer;
    using Renderer20::onScreenRenderbuffer;
    using Renderer20::overDraw;
    using Renderer20::requestFlag;
    using Renderer20::screenEffect;
    using Renderer20::screenMesh;
    using Renderer20::screenMeshData;
    using Renderer20::screenScene;
    using Renderer20::textureLoader;
    using Renderer20::width;

    /// Draws the capture with this effect, whose one reference it takes over, or with none.
    void UseScreenEffect(EffectES20* effect)
    {
        if (screenEffect)
            screenEffect->Release();
        screenEffect = effect;
    }
};

/// A mesh of one triangle that the scene owns, at a node of its own in the scene's root.
struct ScenePart
{
    Mesh* mesh = nullptr;
    MeshNode* node = nullptr;
};

inline ScenePart AddPart(Scene& scene, Material& material, std::vector<unsigned short> indices = {0, 1, 2},
                         Format format = {})
{
    ScenePart part;
    part.mesh = new Mesh(MakeRawMesh(3, std::move(indices), format), &scene);
    part.node = new MeshNode(&scene);
    part.mesh->AddNode(part.node);
    scene.GetRoot()->AddChild(part.node, false);
    material.AddMesh(part.mesh);
    return part;
}

/// A material that the scene owns.
inline Material* AddMaterial(Scene& scene, const std::string& name, float opacity = 1.0f)
{
    auto* material = new Material(name);
    material->SetOpacity(opacity);
    scene.AddMaterial(material);
    return material;
}

} // namespace OV::Test
