#pragma once

#include "orvane/Export.h"
#include "orvane/effects/MaterialEffectES20.h"

namespace OV
{

/// Draws a lit surface in four tones of pen strokes, laid on it along the three axes of its own
/// space: the strokes stay on the object when it moves.
class ORVANE_API CrosshatchEffectES20 : public MaterialEffectES20
{
public:
    static constexpr int HatchCount = 4;

    explicit CrosshatchEffectES20(EffectCache* cache);

    void BindMeshAttributes(MeshES20* mesh) override;
    void ReleaseMeshAttributes(MeshES20* mesh) override;
    void BindMeshUniforms(MeshNode* node) override;
    unsigned int CreateProgramForOptions(std::uint64_t options, std::string& name) override;
    void Apply(MaterialES20* material, CameraNodeES20* camera) override;
    void Remove() override;

    /// A picture of strokes, repeating, with the strokes in its alpha: 0 the lightest to 3 the
    /// densest. It stays the caller's, who sets it again after a resume; any other index is
    /// ignored.
    void SetHatchTexture(int index, unsigned int texture);

    /// A picture of noise, on the same terms. No shader reads it yet.
    void SetNoiseTexture(unsigned int texture)
    {
        noiseTexture = texture;
    }

    /// True in the second, ambient pass. Set before Apply.
    bool passFlag = false;

protected:
    /// Places in the table of uniforms.
    static constexpr int UniformLightDir = 7;
    static constexpr int UniformNormalMatrix = 10;

    unsigned int noiseTexture = 0;
    unsigned int hatchTextures[HatchCount] = {0, 0, 0, 0};

    /// The material is drawn with the light.
    bool lit = false;

    /// The mesh being drawn has normals.
    bool hasNormals = false;

private:
    void SetTextures(MaterialES20* data);
    void SetColors(Material* material);
};

} // namespace OV
