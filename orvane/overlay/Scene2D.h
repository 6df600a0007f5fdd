#pragma once

#include "orvane/scene/Scene.h"

namespace OV
{

class CoreContext;

/// A layer of flat things in front of the 3D scene or behind it, measured in screen pixels.
///
/// What it shows stands on Shape2DNodes. Things farther up in z are drawn over those below;
/// z orders the layer alone, which is never hidden by the 3D scene.
class ORVANE_API Scene2D : public Scene
{
public:
    /// @param context the context that the layer belongs to; not owned, null is allowed.
    explicit Scene2D(CoreContext* context);
    ~Scene2D() override;

    CoreContext* GetContext() const { return m_context; }

    /// As Scene::UpdateGraph; keeps the size and, when something has changed, puts the
    /// transparent things in order anew.
    /// @param width, height of the layer in pixels.
    void UpdateGraph(float width, float height) override;

    /// Puts the pick state of every Shape2DNode that shows a mesh with a material back to idle.
    void ResetPicking();

    float screenWidth = 0.0f;   ///< of the layer, in pixels, as of the last UpdateGraph
    float screenHeight = 0.0f;  ///< likewise
    float nearZ = 0.0f;         ///< smallest depth (-z) in the layer as of its last change
    float farZ = 1.0f;          ///< largest depth (-z) in the layer as of its last change

protected:
    /// Orders the transparent things from the lowest z to the highest, culls what is off the
    /// screen, and finds nearZ and farZ: in a layer that shows nothing they are the largest
    /// float and its negative.
    void ProcessZOrderedDrawItems() override;

private:
    CoreContext* m_context;
};

}  // namespace OV
