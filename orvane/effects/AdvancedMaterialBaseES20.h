#pragma once

#include "orvane/Export.h"
#include "orvane/effects/MaterialEffectES20.h"
#include "orvane/math/Color.h"
#include "orvane/math/Matrix3x3.h"

#include <cstdint>
#include <utility>
#include <vector>

namespace OV
{

class Node;

/// What the two models of per-pixel material shading have in common: light, normal and opacity
/// maps, reflection, clip planes with outline and section fill, and the greying of everything
/// outside the part of the model that is being edited.
class ORVANE_API AdvancedMaterialBaseES20 : public MaterialEffectES20
{
public:
    using Path = std::vector<std::pair<std::uint64_t, std::uint64_t>>;

    void BindMeshAttributes(MeshES20* mesh) override;
    void ReleaseMeshAttributes(MeshES20* mesh) override;
    void BindMeshUniforms(MeshNode* node) override;
    void Apply(MaterialES20* material, CameraNodeES20* camera) override;
    void Remove() override;

    /// Draws meshes one after another as MeshES20::Render does each, with the same calls. GL.
    ///
    /// Between Apply and Remove, and on an effect of the very class of one of the two models: a derived one is
    /// asked for each mesh.
    void DrawPlain(detail::PlainDraw* draws, detail::PlainDraw* end);

    /// Shows every node in grey whose own path does not begin with this one, from now on and
    /// for all materials of this effect. An empty path greys only nodes without a path.
    void SetEditInContextPath(const Path& path);

    /// Shows all nodes in colour again.
    void ClearEditInContextPath();

    /// The cube map that surfaces reflect; GL name, 0: none. It stays the caller's, who sets it
    /// again after a resume.
    void SetReflectionMap(unsigned int texture)
    {
        reflectionMapId = texture;
        m_reflectsAtPixels = false;
    }

    /// As SetReflectionMap, but the direction is worked out at every pixel, with a normal of unit
    /// length, so that large flat faces and scaled nodes mirror rightly.
    /// @param tint multiplies what is reflected straight on, and less the flatter the view.
    void SetPixelReflection(unsigned int texture, const Color& tint)
    {
        reflectionMapId = texture;
        m_reflectionTint = tint;
        m_reflectsAtPixels = texture != 0;
    }

    /// Whether the colours of the vertices multiply the surface's own, its opacity left alone, from the
    /// next Apply on. Of a mesh without colours it is the attribute's current value that does.
    void SetVertexColors(bool multiply)
    {
        m_takesVertexColors = multiply;
    }

    /// True in the second, ambient pass. Set before Apply.
    bool passFlag = false;

protected:
    explicit AdvancedMaterialBaseES20(EffectCache* cache);

    /// Sets what one model has and the other hasn't.
    virtual void SetModelUniforms() = 0;

    /// The place of u_meshMonochrome in the model's uniform table.
    virtual int MeshMonochromeUniform() const = 0;

    /// Likewise that of u_reflectionTint.
    virtual int ReflectionTintUniform() const = 0;

    Path editPath;
    unsigned int reflectionMapId = 0;

    /// Apply turned blending on.
    bool blendEnabled = false;

    /// The material is drawn with the light.
    bool lit = false;

    /// The mesh being drawn has normals.
    bool hasNormals = false;
    bool editPathActive = false;

    /// Shows everything in grey.
    bool forceMonochrome = false;

    /// A quarter turn about X, from the world to the space of the cube map.
    Matrix3x3 cubeMatrix;

private:
    friend class detail::PlainLoop<AdvancedMaterialBaseES20>;

    class NodeUniforms;

    std::uint64_t OptionsOf(MaterialES20* data) const;
    void SetMaps(MaterialES20* data);
    void SetColors(Material* material);
    bool IsOutsideEdit(const Node& node) const;
    bool IsGrey(const Node& node) const { return forceMonochrome || (editPathActive && IsOutsideEdit(node)); }
    void BindStreams(const Streams& streams);
    void ReleaseStreams(const Streams& streams);
    void BindNoFlags();
    void EndMesh();
    bool IsShaded() const { return lit && hasNormals; }
    bool CanRepeat() const;
    detail::PlainPointers PointersOf(const Streams& behindPosition) const;
    bool TakesColors() const;

    bool m_takesVertexColors = false;
    bool m_reflectsAtPixels = false;
    Color m_reflectionTint;
    bool m_reflectionBound = false; ///< a cube map is bound, from Apply to Remove
};

} // namespace OV
