#pragma once

#include "orvane/Export.h"
#include "orvane/effects/MaterialEffectES20.h"

namespace OV
{

/// Flat things in one colour, times a texture if there is one; without light.
class ORVANE_API HUDEffectES20 : public MaterialEffectES20
{
public:
    /// Links its program. GL.
    explicit HUDEffectES20(EffectCache* cache);

    void BindMeshAttributes(MeshES20* mesh) override;
    void ReleaseMeshAttributes(MeshES20* mesh) override;
    void BindMeshUniforms(MeshNode* node) override;

    /// A textured material is always blended. Depth writes follow the material until Remove.
    void Apply(MaterialES20* material, CameraNodeES20* camera) override;

    /// Turns depth writes on, whatever the material said.
    void Remove() override;

protected:
    /// Apply turned blending on.
    bool blending = false;

private:
    // Locations in the one program; -1 where it has none.
    int m_positionAttribute = -1;
    int m_textureAttribute = -1;
    int m_mvpMatrixLocation = -1;
    int m_colorLocation = -1;
    int m_enableTextureLocation = -1;
};

} // namespace OV
