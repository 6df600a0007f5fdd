#pragma once

#include "orvane/effects/MaterialEffectES20.h"

namespace OV::Host::Detail
{

/// Shades surfaces in strokes of a pen that are as wide on the screen at any size and from any distance,
/// and lie on each face of an object as it faces in the object's own axes.
///
/// The engine's effect lays pictures of strokes on a house in metres; here strokes are worked out at
/// each pixel, so that their tone is that of the shading.
class StrokeEffect final : public MaterialEffectES20
{
public:
    StrokeEffect();

    /// Of a stroke, in pixels of what is drawn into.
    void SetWidth(float pixels) { m_width = pixels; }

    unsigned int CreateProgramForOptions(std::uint64_t options, std::string& name) override;
    void Apply(MaterialES20* material, CameraNodeES20* camera) override;
    void Remove() override;
    void BindMeshAttributes(MeshES20* mesh) override;
    void ReleaseMeshAttributes(MeshES20* mesh) override;
    void BindMeshUniforms(MeshNode* node) override;

private:
    float m_width = 1.0f;
    bool m_hasTexture = false;
    bool m_blends = false;
    bool m_hasNormals = false; ///< the mesh being drawn
};

} // namespace OV::Host::Detail
