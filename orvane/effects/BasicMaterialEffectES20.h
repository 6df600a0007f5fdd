#pragma once

#include "orvane/Export.h"
#include "orvane/effects/MaterialEffectES20.h"

namespace OV
{

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
    friend class detail::PlainLoop<BasicMaterialEffectES20>;

    class NodeUniforms;

    void SetColors(Material* material);
    void ClearLeftovers();
    void BindStreams(const Streams& streams);
    void ReleaseStreams(const Streams& streams);
    void BindNoFlags();
    void EndMesh() { ClearLeftovers(); }
    bool IsShaded() const { return lit && hasNormals; }
    bool CanRepeat() const;
    detail::PlainPointers PointersOf(const Streams& behindPosition) const;

    // What the lit nodes of a mesh left in the program.
    bool m_clipPlanesLeft = false;
    bool m_mirrorLeft = false;
};

} // namespace OV
