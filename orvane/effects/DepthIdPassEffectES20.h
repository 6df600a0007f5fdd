#pragma once

#include "orvane/Export.h"
#include "orvane/effects/MaterialEffectES20.h"

namespace OV
{

/// Paints every surface in a flat colour that stands for an identifier: of each vertex, from the
/// mesh's colours, or of each node, from its user data. Without light.
class ORVANE_API DepthIdPassEffectES20 : public MaterialEffectES20
{
public:
    explicit DepthIdPassEffectES20(EffectCache* cache);

    void BindMeshAttributes(MeshES20* mesh) override;
    void ReleaseMeshAttributes(MeshES20* mesh) override;

    /// Turns dithering off, so that identifiers reach the target unchanged.
    void BindMeshUniforms(MeshNode* node) override;
    unsigned int CreateProgramForOptions(std::uint64_t options, std::string& name) override;
    void Apply(MaterialES20* material, CameraNodeES20* camera) override;
    void Remove() override;

    /// 0: identifiers of vertices, 1: of nodes. Takes effect at the next Apply.
    void SetIdMode(int mode)
    {
        idMode = mode;
    }

    int GetIdMode() const
    {
        return idMode;
    }

    /// Draws meshes one after another as MeshES20::Render does each, with the same calls. GL.
    ///
    /// Between Apply and Remove, and on an effect of this very class: a derived one is asked for each
    /// mesh.
    void DrawPlain(detail::PlainDraw* draws, detail::PlainDraw* end);

    /// The colour, red, green, blue from 0 to 1, that stands for a node's user data.
    static void EncodeId(int userData, float (&color)[4]);

protected:
    /// Places in the table of uniforms.
    static constexpr int UniformIdentifier = 0;
    static constexpr int UniformObjectToClip = 1;

    int idMode = 0;

private:
    friend class detail::PlainLoop<DepthIdPassEffectES20>;

    class NodeUniforms;

    void BindStreams(const Streams& streams);
    void ReleaseStreams(const Streams& streams);
    void BindNoFlags() {}
    void EndMesh() {}
    bool CanRepeat() const;
    detail::PlainPointers PointersOf(const Streams& behindPosition) const;
};

} // namespace OV
