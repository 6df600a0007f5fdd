#pragma once

#include "orvane/Export.h"
#include "orvane/effects/MaterialEffectES20.h"

namespace OV
{

/// Shows a number at each vertex by colour: on a ramp from blue to red, or by a texture, within
/// the range of a SimMaterial, and in grey outside. Lit along the line of sight.
class ORVANE_API SimMaterialEffectES20 : public MaterialEffectES20
{
public:
    /// Links its program. GL.
    explicit SimMaterialEffectES20(EffectCache* cache);

    void BindMeshAttributes(MeshES20* mesh) override;
    void ReleaseMeshAttributes(MeshES20* mesh) override;
    void BindMeshUniforms(MeshNode* node) override;

    /// A material that is no SimMaterial is shown within the range that was set last.
    void Apply(MaterialES20* material, CameraNodeES20* camera) override;
    void Remove() override;

protected:
    /// Apply turned blending on.
    bool blending = false;

private:
    // Locations in the one program; -1 where it has none.
    int m_positionAttribute = -1;
    int m_normalAttribute = -1;
    int m_scalarAttribute = -1;
    int m_mvpMatrixLocation = -1;
    int m_normalMatrixLocation = -1;
    int m_lightDirLocation = -1;
    int m_colorLocation = -1;
    int m_enableTextureLocation = -1;
    int m_enableLightLocation = -1;
    int m_rangeLocation = -1;
};

} // namespace OV
