#pragma once

#include "orvane/Export.h"
#include "orvane/effects/MaterialEffectES20.h"

namespace OV
{

namespace detail
{

struct PlainDraw;

} // namespace detail

/// The standard look: light from one direction computed at the vertices, texture, fog, stipple,
/// clip planes and a mark on back faces.
class ORVANE_API BasicMaterialEffectES20 : public MaterialEffectES20
{
public:
    /// @param additive whether every fragment is added to what is there.
    BasicMaterialEffectES20(EffectCache* cache, bool additive);

    void BindMeshAttributes(MeshES20* mesh) override;
    void ReleaseMeshAttributes(MeshES20* mesh) override;
    void BindMeshUniforms(MeshNode* node) override;
    unsigned int CreateProgramForOptions(std::uint64_t options, std::string& name) override;
    void Apply(MaterialES20* material, CameraNodeES20* camera) override;
    void Remove() override;

    /// Draws meshes one after another as MeshES20::Render does each, with the same calls. GL.
    ///
    /// Between Apply and Remove, and on an effect of this very class: a derived one is asked for each
    /// mesh.
    void DrawPlain(detail::PlainDraw* draws, detail::PlainDraw* end);

protected:
    /// Apply turned blending on.
    bool blendEnabled = false;

    /// The material is drawn with the light.
    bool lit = false;

    /// The mesh being drawn has normals.
    bool hasNormals = false;

    bool additive;

private:
    class NodeUniforms;

    /// How the meshes of a buffer lie in it, which is the same for all.
    struct BufferLayout
    {
        unsigned int vertexBuffer = 0;
        unsigned int indexBuffer = 0;
        int stride = 0;
        int normalOffset = -1; ///< from the position on; negative where there are none
        int textureOffset = -1;
        std::uint64_t listing = 0; ///< of MeshES20, under which it holds
    };

    void SetColors(Material* material);
    void ClearLeftovers();
    void BindStreams(int stride, int positionOffset, int normalOffset, int textureOffset);
    void ReleaseStreams(int normalOffset, int textureOffset);

    const BufferLayout& LayoutOf(const detail::PlainDraw& draw);

    /// Draws the first, and those after it that lie in the same buffer.
    /// @return the first that does not.
    detail::PlainDraw* DrawBuffer(detail::PlainDraw* draw, detail::PlainDraw* end);

    BufferLayout m_layout; ///< of the buffer that was drawn from last

    // What the lit nodes of a mesh left in the program.
    bool m_clipPlanesLeft = false;
    bool m_mirrorLeft = false;
};

} // namespace OV
