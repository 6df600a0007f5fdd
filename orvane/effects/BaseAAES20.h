#pragma once

#include "orvane/Export.h"
#include "orvane/effects/MaterialEffectES20.h"

namespace OV
{

/// Draws a captured picture on the screen, over a quad in clip space.
class ORVANE_API BaseAAES20 : public MaterialEffectES20
{
public:
    void BindMeshAttributes(MeshES20* mesh) override;
    void ReleaseMeshAttributes(MeshES20* mesh) override;
    void BindMeshUniforms(MeshNode* node) override;

    /// Takes no material and no camera: both may be null. The picture is on texture unit 0.
    void Apply(MaterialES20* material, CameraNodeES20* camera) override;
    void Remove() override;

    /// Size of the screen in pixels.
    virtual void SetDimensions(int newWidth, int newHeight);

protected:
    explicit BaseAAES20(EffectCache* cache);

    /// Links the one program, whose attribute is a_position.
    void Link(const char* name, const char* vertexSource, const char* fragmentSource);

    int width = 0;
    int height = 0;

private:
    int m_positionAttribute = -1;
};

} // namespace OV
