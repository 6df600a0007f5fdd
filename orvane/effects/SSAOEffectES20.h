#pragma once

#include "orvane/Export.h"
#include "orvane/effects/MaterialEffectES20.h"

#include <array>

namespace OV
{

/// Darkens a finished picture in its corners: along a spiral around each pixel the depth picture
/// tells how much of the surroundings lies in front.
///
/// Made by the effect cache; textures, size and near and far are set before Apply, and the
/// textures stay the caller's. A size of 0 divides by zero.
class ORVANE_API SSAOEffectES20 : public MaterialEffectES20
{
public:
    void BindMeshAttributes(MeshES20* mesh) override;
    void ReleaseMeshAttributes(MeshES20* mesh) override;

    /// The node is not looked at; null is allowed.
    void BindMeshUniforms(MeshNode* node) override;
    unsigned int CreateProgramForOptions(std::uint64_t options, std::string& name) override;

    /// Takes no material and no camera: both may be null.
    void Apply(MaterialES20* material, CameraNodeES20* camera) override;
    void Remove() override;

    /// What Apply does: program, with mist, and textures, depth on unit 0, picture on 1.
    void Bind();

    /// Where the pictures are a part of a larger one, whose size SetDimensions tells: its lower left pixel
    /// in the larger one, its size, and that of the larger one in as fine pixels, which may be finer
    /// than those of SetDimensions. It is drawn at the origin of the target. All of it at first; every part of a
    /// picture, all of it as well, is drawn alike once this was called.
    void SetPart(int x, int y, int partWidth, int partHeight, int wholeWidth, int wholeHeight)
    {
        isPart = true;
        part = {static_cast<float>(x), static_cast<float>(y), static_cast<float>(partWidth),
                static_cast<float>(partHeight)};
        whole = {static_cast<float>(wholeWidth), static_cast<float>(wholeHeight)};
    }

    /// Size of the pictures, in pixels.
    void SetDimensions(int newWidth, int newHeight)
    {
        width = newWidth;
        height = newHeight;
    }

    /// GL names; 0: none.
    void SetRenderTexture(int texture) { renderTexture = texture; }
    void SetDepthTexture(int texture) { depthTexture = texture; }

    /// Of the camera that the depth picture was drawn with.
    void SetNearFar(float nearDistance, float farDistance)
    {
        zNear = nearDistance;
        zFar = farDistance;
    }

protected:
    friend class EffectCache;

    explicit SSAOEffectES20(EffectCache* cache);

    bool isPart = false;
    std::array<float, 4> part{};
    std::array<float, 2> whole{};
    int width = 0;
    int height = 0;
    int renderTexture = 0;
    int depthTexture = 0;
    float zNear = 0.1f;
    float zFar = 1000.0f;
};

} // namespace OV
