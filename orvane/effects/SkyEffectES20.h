#pragma once

#include "orvane/Export.h"
#include "orvane/effects/MaterialEffectES20.h"

namespace OV
{

/// The sky: a gradient of three colours from the horizon up, by the second texture coordinate
/// of the mesh that it is painted on.
class ORVANE_API SkyEffectES20 : public MaterialEffectES20
{
public:
    /// Links its program. GL.
    explicit SkyEffectES20(EffectCache* cache);

    void BindMeshAttributes(MeshES20* mesh) override;
    void ReleaseMeshAttributes(MeshES20* mesh) override;
    void BindMeshUniforms(MeshNode* node) override;
    void Apply(MaterialES20* material, CameraNodeES20* camera) override;
    void Remove() override;

private:
    // Locations in the one program; -1 where it has none.
    int m_horizonColorLocation = -1;
    int m_skyColorLocation = -1;
    int m_upperSkyColorLocation = -1;
    int m_horizonStopLocation = -1;
    int m_skyStopLocation = -1;
    int m_mvpMatrixLocation = -1;
    int m_positionAttribute = -1;
    int m_textureAttribute = -1;
};

} // namespace OV
