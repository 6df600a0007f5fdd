#pragma once

#include "orvane_host/present/PresentationStage.h"
#include "orvane_host/present/detail/EffectInPlace.h"
#include "orvane_host/view/ViewFit.h"
#include "orvane/renderdata/RenderItemES20.h"

#include <memory>
#include <vector>

namespace OV
{

class MeshNode;
class Scene;

} // namespace OV

namespace OV::Host::Detail
{

class DomeEffect;

/// The sky: a dome of a scene of its own about the eye.
///
/// It lists and uploads by itself, since it is drawn before the scene's own meshes are listed.
class SkyStage final : public PresentationStage
{
public:
    SkyStage();

    /// GL if it was drawn.
    ~SkyStage() override;

    /// The axis of the world that the sky is above; Y at first.
    void SetUpAxis(UpAxis axis) { m_upAxis = axis; }

    void Draw(PresentationFrame& frame) override;
    void ReleaseGL() override;

    /// Null until it is drawn.
    const Scene* GetScene() const { return m_scene.get(); }

private:
    void MakeScene();
    void MoveTo(const PresentationFrame& frame);
    void LookFrom(PresentationFrame& frame);

    UpAxis m_upAxis = UpAxis::Y;
    std::unique_ptr<Scene> m_scene;
    MeshNode* m_node = nullptr; ///< lives in m_scene
    DomeEffect* m_effect = nullptr; ///< one reference; null until it is drawn
    std::vector<RenderItemES20> m_items;
    EffectInPlace::Replaced m_replaced;
};

} // namespace OV::Host::Detail
