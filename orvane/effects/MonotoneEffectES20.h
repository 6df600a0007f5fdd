#pragma once

#include "orvane/Export.h"
#include "orvane/effects/MaterialEffectES20.h"

namespace OV
{

/// Paints every surface in one flat colour, so that edges and lines carry the picture.
///
/// White, or light grey in the second pass; points are black. Clip planes with outline and
/// section fill as usual.
class ORVANE_API MonotoneEffectES20 : public MaterialEffectES20
{
public:
    explicit MonotoneEffectES20(EffectCache* cache);

    void BindMeshAttributes(MeshES20* mesh) override;
    void ReleaseMeshAttributes(MeshES20* mesh) override;
    void BindMeshUniforms(MeshNode* node) override;
    unsigned int CreateProgramForOptions(std::uint64_t options, std::string& name) override;

    /// Reads nothing of the material.
    void Apply(MaterialES20* material, CameraNodeES20* camera) override;
    void Remove() override;

    /// Draws meshes one after another as MeshES20::Render does each, with the same calls. GL.
    ///
    /// Between Apply and Remove, and on an effect of this very class: a derived one is asked for each
    /// mesh.
    void DrawPlain(detail::PlainDraw* draws, detail::PlainDraw* end);

    /// True in the second pass. Set before Apply.
    bool passFlag = false;

private:
    friend class detail::PlainLoop<MonotoneEffectES20>;

    class NodeUniforms;

    void SetSurface(MeshNode* node);
    void BindStreams(const Streams& streams);
    void ReleaseStreams(const Streams& streams);
    void BindNoFlags();
    void EndMesh();
    bool CanRepeat() const;
    detail::PlainPointers PointersOf(const Streams& behindPosition) const;
};

} // namespace OV
