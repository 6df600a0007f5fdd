#pragma once

#include "orvane/Export.h"
#include "orvane/effects/MaterialEffectES20.h"

namespace OV
{

/// A place kept for another kind of ambient occlusion. Its shader was never finished and does
/// not compile, so it draws with no program; no effect cache makes it.
class ORVANE_API ScalableAmbientObscuranceEffectES20 : public MaterialEffectES20
{
public:
    /// Fails to link its program, and reports so. GL.
    explicit ScalableAmbientObscuranceEffectES20(EffectCache* cache);

    void BindMeshAttributes(MeshES20* mesh) override;
    void ReleaseMeshAttributes(MeshES20* mesh) override;
    void BindMeshUniforms(MeshNode* node) override;
    void Apply(MaterialES20* material, CameraNodeES20* camera) override;
    void Remove() override;

    /// What Apply does.
    void Bind();

protected:
    int width = 0;
    int height = 0;
    int renderTexture = 0;
    int depthTexture = 0;

private:
    // Locations in the one program; -1 where it has none.
    int m_positionAttribute = -1;
    int m_textureAttribute = -1;
    int m_depthTextureLocation = -1;
    int m_renderedTextureLocation = -1;
    int m_widthLocation = -1;
    int m_heightLocation = -1;
};

} // namespace OV
