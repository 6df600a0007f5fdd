#pragma once

#include "orvane/Export.h"
#include "orvane/effects/EffectES20.h"

#include <cstdint>

namespace OV
{

namespace detail
{

struct PlainDraw;
class PlainDraws;
class PlainPointers;

template <class Effect>
class PlainLoop;

} // namespace detail

class LightNode;
class Material;
class MaterialES20;
class Vector;

/// An effect that is applied to the meshes of one material after another.
class ORVANE_API MaterialEffectES20 : public EffectES20
{
public:
    /// Selects the program and sets what is constant for the material in a pass. The camera is
    /// read until the meshes of the material are drawn.
    virtual void Apply(MaterialES20* material, CameraNodeES20* camera) = 0;

    /// Undoes what Apply changed in the state of GL.
    virtual void Remove() = 0;

protected:
    /// Where the streams of a mesh begin in the buffer that is bound, in bytes; negative where there is none.
    struct Streams
    {
        int stride = 0; ///< from one vertex to the next
        int position = 0;
        int normal = -1;
        int texture = -1;
        int color = -1;
    };

    explicit MaterialEffectES20(EffectCache* cache);

    /// Said at construction by a class that does no more than to enable and disable, in BindMeshAttributes and
    /// ReleaseMeshAttributes, the stream of positions and, where the program has the attribute, that of texture
    /// coordinates, and to send uniforms or switch GL's capabilities in BindMeshUniforms: most meshes are then drawn
    /// in one loop, which asks for BindMeshUniforms alone.
    /// @param texture negative where the class has no such attribute.
    void DrawByStreams(unsigned int position, int texture = -1);

    static Streams StreamsOf(const MeshES20& mesh);

    /// The colour texture to draw with; 0 for none, and for one that is still to come.
    static unsigned int ColorTexture(MaterialES20* material);

    /// The first light of the material's scene; null when there is none.
    static LightNode* FirstLight(Material* material);

    /// The direction to a light, in world space.
    static Vector TowardsLight(LightNode* light);

    /// Whether the material takes light and there is one to take.
    static bool IsLit(Material* material);

    /// Turns on blending by alpha for a see-through texture or colour.
    /// @return whether it did.
    static bool EnableBlendingIfNeeded(MaterialES20* material);

    /// What texture coordinates are multiplied by for a scale: its inverse, or 1 for a scale
    /// that isn't a positive finite number.
    static float ShaderScale(float scale);

    /// The diffuse colour in the light: their product, with the opacity as alpha. A material that
    /// ignores the light's colour keeps its own.
    static Color LitColor(Material* material, LightNode* light);

    /// What is sent as the colours of a material, whose light is null where it takes none: its own, or white where
    /// the vertices have them.
    Color SentColor(Material& material, LightNode* light) const;
    Color SentAmbient(const Material& material) const;

    /// Points an attribute at a stream of floats of the bound buffer and enables it, where the
    /// program has the attribute and the mesh the stream: neither number is negative.
    /// @return whether both are there.
    static bool EnableStream(int attribute, int components, int stride, int offset)
    {
        const bool present = attribute >= 0 && offset >= 0;
        if (present)
        {
            EnableAttribute(static_cast<unsigned int>(attribute), components, stride, offset);
        }
        return present;
    }

    /// Disables what EnableStream enables.
    static bool DisableStream(int attribute, int offset)
    {
        const bool present = attribute >= 0 && offset >= 0;
        if (present)
        {
            DisableAttribute(static_cast<unsigned int>(attribute));
        }
        return present;
    }

    /// Binds a flat texture, which leaves its unit the active one.
    static void BindTexture(int unit, unsigned int texture);

    /// Whether the mesh marks its back faces.
    static bool ShowsFaceSides(MeshES20* mesh);

    /// Stipple colour and the two lengths in pixels, when the material is stippled.
    void SetStippling(Material* material, int color, int offset, int size);

private:
    template <class Effect>
    friend class detail::PlainLoop;
    friend class detail::PlainDraws;

    class ByStreams;

    void DrawPlainByStreams(detail::PlainDraw* draws, detail::PlainDraw* end);

    static Color InLight(const Color& diffuse, const Material& material, LightNode* light);
    bool HasMaterialColors() const { return m_knowsMaterialColors && s_takesMaterialColors; }

    /// How the meshes of a buffer lie in it, which is the same for all.
    struct BufferLayout
    {
        unsigned int vertexBuffer = 0;
        unsigned int indexBuffer = 0;
        Streams fromPosition;
        std::uint64_t listing = 0; ///< of MeshES20, under which it holds
    };

    BufferLayout m_layout; ///< of the buffer that plain meshes were drawn from last

    // Of a class that has said DrawByStreams.
    int m_positionAttribute = -1; ///< negative for one that has not
    int m_textureAttribute = -1;
};

} // namespace OV
