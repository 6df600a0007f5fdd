#pragma once

#include "orvane/math/Color.h"
#include "orvane/scene/Node.h"

namespace OV
{

/// Directional light. It joins its scene's list of lights when made and leaves it when
/// deleted, whether or not it stands in the tree; only the first light of the list counts.
///
/// No setter marks the scene dirty.
class ORVANE_API LightNode : public Node
{
public:
    explicit LightNode(Scene* ownScene);
    ~LightNode() override;

    int Type() const override;
    bool HasType(int type) override;

    bool IsVisible() const
    {
        return visible;
    }

    void SetVisible(bool isVisible)
    {
        visible = isVisible;
    }

    const Color& GetColor() const
    {
        return color;
    }

    /// Alpha becomes 1.
    void SetColor(float red, float green, float blue)
    {
        color.Set(red, green, blue);
    }

    /// Counts only while HasAmbient.
    const Color& GetAmbient() const
    {
        return ambient;
    }

    bool HasAmbient() const
    {
        return hasAmbient;
    }

    /// Alpha becomes 1.
    void SetAmbient(float red, float green, float blue);

    /// The colour stays, and no longer counts.
    void ClearAmbient()
    {
        hasAmbient = false;
    }

    /// Takes the direction of the light in the node's own space, of any length but zero, which
    /// gives NaN.
    void SetLocalDirection(const Vector& direction);

    /// The direction in world space, from the global transform as it stands. The reference
    /// stays valid; each call brings what it refers to up to date.
    const Vector& GetGlobalDirection();

    Vector GetGlobalPosition() const
    {
        return global.GetPosition();
    }

    Object* GetRenderData() const
    {
        return renderData.get();
    }

    /// Takes the object over and deletes the present one, even where they are the same: then
    /// none is left.
    void SetRenderData(Object* data);

protected:
    bool visible = true;
    Color color;
    Color ambient;
    bool hasAmbient = false;
    Vector localDirection = Vector(0.0f, 0.0f, -1.0f);
    Vector globalDirection;
    std::unique_ptr<Object> renderData;

private:
    // The global direction and what it was worked out from: every material asks for it in every
    // frame.
    Vector m_direction;
    Transform m_directionPlace;
    Vector m_directionInPlace;
    bool m_knowsDirection = false;
};

} // namespace OV
