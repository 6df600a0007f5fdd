#pragma once

#include "orvane/Export.h"
#include "orvane/effects/MaterialEffectES20.h"
#include "orvane/math/Color.h"

namespace OV
{

/// Lays a line over a finished picture wherever the identifier of a second one changes.
///
/// The left neighbour is not counted: lines stay one-sided. Made by the effect cache; textures
/// and sizes are set before Apply, and the textures stay the caller's.
class ORVANE_API LineFilterEffectES20 : public MaterialEffectES20
{
public:
    void BindMeshAttributes(MeshES20* mesh) override;
    void ReleaseMeshAttributes(MeshES20* mesh) override;

    /// The node is not looked at; null is allowed.
    void BindMeshUniforms(MeshNode* node) override;

    /// Takes no material and no camera: both may be null.
    void Apply(MaterialES20* material, CameraNodeES20* camera) override;
    void Remove() override;

    /// What Apply does: program and textures, depth on unit 0, picture on 1, identifiers on 2.
    void Bind();

    /// Whether the line alone is drawn, with its weight as alpha, for the caller to blend.
    bool OverlayOnly() const { return overlayOnly; }
    void SetOverlayOnly(bool enable) { overlayOnly = enable; }

    /// Of the depth picture; without effect on the lines.
    void SetNearFar(float nearDistance, float farDistance)
    {
        zNear = nearDistance;
        zFar = farDistance;
    }

    /// Opacity of a line where two neighbours or three differ, 0 to 1; half of it where one does.
    float EdgeWeight() const { return edgeWeight; }
    void EdgeWeight(float weight) { edgeWeight = weight; }

    const Color& GetEdgeColor() const { return edgeColor; }
    void SetEdgeColor(Color const& color) { edgeColor = color; }

    /// Size of the pictures, in pixels.
    void SetDimensions(int width, int height)
    {
        textureWidth = width;
        textureHeight = height;
    }

    /// GL names; 0: none.
    void SetRenderTexture(int texture) { renderTexture = texture; }
    void SetDepthTexture(int texture) { depthTexture = texture; }
    void SetIdTexture(int texture) { idTexture = texture; }

    /// Whether the picture of identifiers is shown as it is.
    bool ShowIds() const { return showIds; }
    void SetShowIds(bool show) { showIds = show; }

    /// Handed on to the shader, which does not read it.
    bool ShowDebug() const { return showDebug; }
    void SetShowDebug(bool show) { showDebug = show; }

protected:
    friend class EffectCache;

    /// Links its program. GL.
    explicit LineFilterEffectES20(EffectCache* cache);

    bool overlayOnly = false;
    float zNear = 0.0f;
    float zFar = 0.0f;
    float edgeWeight = 0.5f;
    Color edgeColor{1.0f, 1.0f, 1.0f, 1.0f};
    int textureWidth = 0;
    int textureHeight = 0;
    int renderTexture = 0;
    int depthTexture = 0;
    int idTexture = 0;
    bool showIds = false;
    bool showDebug = false;

private:
    // Locations in the one program; -1 where it has none.
    int m_positionAttribute = -1;
    int m_textureAttribute = -1;
    int m_depthTextureLocation = -1;
    int m_renderedTextureLocation = -1;
    int m_idTextureLocation = -1;
    int m_widthLocation = -1;
    int m_heightLocation = -1;
    int m_overlayOnlyLocation = -1;
    int m_edgeWeightLocation = -1;
    int m_showIdsLocation = -1;
    int m_showDebugLocation = -1;
    int m_zNearLocation = -1;
    int m_zFarLocation = -1;
    int m_edgeColorLocation = -1;
};

} // namespace OV
