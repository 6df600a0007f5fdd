#pragma once

#include "orvane/effects/MaterialEffectES20.h"

namespace OV::Host::Detail
{

/// Shades surfaces in strokes of a pen on white paper that are as wide on the screen at any size and from
/// any distance, and lie on an object by its own axes.
///
/// The engine's effect lays pictures of strokes on a house in metres; here strokes are worked out at
/// each pixel. Their tone, the share of the paper that stays white, is this shading: paper is white where a
/// white face looks to the light by a cosine of 0.75 or more, falls evenly to 0.74 where it looks beside or
/// away, and takes 0.28 of what the colour in full light (ambient and diffuse, times the texture) is darker than
/// white: tone = (0.74 + 0.26 min(cosine / 0.75, 1)) (1 - 0.28 (1 - luminance)). Shadow takes its darkness of
/// what looks to the light, by strokes of its own. A material that is less than opaque is a pane: it covers
/// what lies behind by a veil of paper of 0.6 to 1, by its opacity, with strokes for 0.92 to the tone of a white
/// face, whatever its colour.
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
