#pragma once

#include "orvane/Export.h"
#include "orvane/base/Object.h"
#include "orvane/renderdata/RenderPass.h"

namespace OV
{

class CameraNodeES20;
class EffectES20;

/// What the item loop of the renderer sees of a material's or a line style's render data.
class ORVANE_API MeshStyleES20 : public Object
{
public:
    ~MeshStyleES20() override;

    /// Sets up GL for drawing meshes under this style in the given pass. GL.
    /// @return true if an effect was applied; Remove is called in either case.
    virtual bool Apply(CameraNodeES20* camera, RenderPass pass) = 0;

    /// Applies the effect of the default pass and changes no other state. GL.
    virtual void Apply(CameraNodeES20* camera) = 0;

protected:
    friend class Renderer20;

    /// Undoes what Apply changed and the next style would not set. GL.
    virtual void Remove() = 0;

public:
    /// The effect that meshes are drawn through in this pass; null if the pass isn't served.
    virtual EffectES20* GetShader(RenderPass pass) = 0;

    /// The effect of the default pass; may be null.
    virtual EffectES20* GetShader() = 0;
};

} // namespace OV
