#pragma once

#include "orvane/Export.h"
#include "orvane/effects/EffectES20.h"

namespace OV
{

class LineStyle;
class Matrix;

/// Lines as ribbons that the vertex shader spreads on the screen, so that their width is in
/// pixels at any distance: antialiased across, dashed, clipped, fogged, and, over a picture of
/// identifiers, kept to the edges of what it shows.
///
/// A vertex is read together with the one four places further on, where the segment ends.
class ORVANE_API SolidLineEffectES20 : public EffectES20
{
public:
    /// From the start of a segment to its end in the buffer, in vertices.
    static constexpr int VerticesPerPoint = 4;

    explicit SolidLineEffectES20(EffectCache* cache);

    void BindMeshAttributes(MeshES20* mesh) override;

    /// Depth writes are on afterwards, also between the lines of a style without them.
    void ReleaseMeshAttributes(MeshES20* mesh) override;
    void BindMeshUniforms(MeshNode* node) override;
    unsigned int CreateProgramForOptions(std::uint64_t options, std::string& name) override;

    /// Selects the program and sets what is constant for the style. GL.
    ///
    /// Turns blending on for an antialiased style and never off. Depth test, function and mask
    /// follow the style until RestoreDepthState.
    /// @param addSecondColor adds red, green and blue of the style's second colour to its first.
    virtual void Apply(LineStyle* style, CameraNodeES20* camera, bool addSecondColor);

    /// Puts depth test, function and mask back to what they were before Apply. GL.
    void RestoreDepthState();

    /// Pixels per point. Widths are multiplied by its square; below 1 it counts as 1.
    float GetPixelRatio() const
    {
        return pixelRatio;
    }

    void SetPixelRatio(float ratio)
    {
        pixelRatio = ratio;
    }

    /// Pictures of the size of the view, for styles with the overlay flag: object identifiers,
    /// depth and group identifiers. GL names; 0: none. They stay the host's, and must not be
    /// attached to the framebuffer that the lines are drawn into.
    void SetIdTexture(unsigned int texture)
    {
        idTexture = texture;
    }

    void SetDepthTexture(unsigned int texture)
    {
        depthTexture = texture;
    }

    void SetGroupTexture(unsigned int texture)
    {
        groupTexture = texture;
    }

protected:
    float pixelRatio = 1.0f;
    unsigned int idTexture = 0;
    unsigned int depthTexture = 0;
    unsigned int groupTexture = 0;

    /// The style of the running Apply shifts its lines towards the camera, which the vertex
    /// shader does between the node's matrix and the camera's.
    bool offsetActive = false;

private:
    struct DepthState
    {
        bool saved = false;
        bool test = true;
        int function = 0;
        bool write = true;
    };

    std::uint64_t OptionsOf(const LineStyle& style) const;
    void SetColorAndWidth(const LineStyle& style, bool addSecondColor);
    void SetOffset(const LineStyle& style, float nearDistance, float farDistance);
    void SetDepthState(const LineStyle& style);
    void SetViewDimensions(std::uint64_t options);
    void BindOverlayTextures(std::uint64_t options, const LineStyle& style);
    const Matrix& CameraMatrix() const;

    DepthState m_depthBefore;
};

} // namespace OV
