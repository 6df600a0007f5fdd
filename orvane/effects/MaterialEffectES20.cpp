#include "orvane/effects/MaterialEffectES20.h"

#include "orvane/effects/detail/PlainLoop.h"
#include "orvane/math/Color.h"
#include "orvane/math/Vector.h"
#include "orvane/renderdata/MaterialES20.h"
#include "orvane/renderdata/MeshES20.h"
#include "orvane/scene/LightNode.h"
#include "orvane/scene/Material.h"
#include "orvane/scene/Mesh.h"
#include "orvane/scene/Scene.h"

#include <GL/glew.h>

#include <cmath>

namespace OV
{

/// An effect of a class that has said DrawByStreams, as the loop over plain meshes takes one.
class MaterialEffectES20::ByStreams
{
public:
    using Streams = MaterialEffectES20::Streams;
    using BufferLayout = MaterialEffectES20::BufferLayout;

    class NodeUniforms
    {
    public:
        explicit NodeUniforms(ByStreams& effect) : m_effect(effect) {}
        void Send(MeshNode& node) { m_effect.BindMeshUniforms(&node); }

    private:
        ByStreams& m_effect;
    };

    explicit ByStreams(MaterialEffectES20& effect) :
        clipPlanesActive(effect.clipPlanesActive), meshNodeFlag(effect.meshNodeFlag), m_layout(effect.m_layout),
        m_current(effect.m_current), m_effect(effect),
        m_position(static_cast<unsigned int>(effect.m_positionAttribute)),
        m_texture(effect.m_textureAttribute >= 0 &&
                          effect.HasAttribute(static_cast<unsigned int>(effect.m_textureAttribute))
                      ? effect.m_textureAttribute
                      : -1)
    {
    }

    void BindStreams(const Streams& streams)
    {
        EnableAttribute(m_position, 3, streams.stride, streams.position);
        EnableStream(m_texture, 2, streams.stride, streams.texture);
    }

    void ReleaseStreams(const Streams& streams)
    {
        DisableStream(m_texture, streams.texture);
        DisableAttribute(m_position);
    }

    detail::PlainPointers PointersOf(const Streams& behindPosition) const
    {
        detail::PlainPointers pointers;
        pointers.Add(m_position, 3, behindPosition.position);
        if (m_texture >= 0)
        {
            pointers.Add(static_cast<unsigned int>(m_texture), 2, behindPosition.texture);
        }
        return pointers;
    }

    void BindMeshUniforms(MeshNode* node) { m_effect.BindMeshUniforms(node); }
    void BindNoFlags() {}
    void EndMesh() {}
    static bool CanRepeat() { return true; }
    static void DisableSpareAttributes() { EffectES20::DisableSpareAttributes(); }

    bool& clipPlanesActive;
    bool& meshNodeFlag;
    BufferLayout& m_layout;
    ShaderProgram* m_current;

private:
    MaterialEffectES20& m_effect;
    unsigned int m_position;
    int m_texture; ///< negative where the program takes none
};

MaterialEffectES20::MaterialEffectES20(EffectCache* cache) : EffectES20(cache) {}

void MaterialEffectES20::DrawByStreams(unsigned int position, int texture)
{
    m_positionAttribute = static_cast<int>(position);
    m_textureAttribute = texture;
}

void MaterialEffectES20::DrawPlainByStreams(detail::PlainDraw* draws, detail::PlainDraw* end)
{
    ByStreams effect(*this);
    detail::PlainLoop<ByStreams>(effect).Draw(draws, end);
}

MaterialEffectES20::Streams MaterialEffectES20::StreamsOf(const MeshES20& mesh)
{
    return {mesh.stride, mesh.positionOffset, mesh.normalOffset, mesh.textureOffset, mesh.colorOffset};
}

unsigned int MaterialEffectES20::ColorTexture(MaterialES20* material)
{
    const unsigned int texture = material->GetTextureID();
    return texture == MaterialES20::PendingTexture ? 0 : texture;
}

LightNode* MaterialEffectES20::FirstLight(Material* material)
{
    Scene* scene = material->GetScene();
    return scene == nullptr || scene->GetLights().empty() ? nullptr : scene->GetLights().front();
}

Vector MaterialEffectES20::TowardsLight(LightNode* light)
{
    Vector direction;
    direction.Scale(-1.0f, light->GetGlobalDirection());
    return direction;
}

bool MaterialEffectES20::IsLit(Material* material)
{
    return (material->GetFlags() & MaterialFlagUnlit) == 0 && FirstLight(material) != nullptr;
}

bool MaterialEffectES20::EnableBlendingIfNeeded(MaterialES20* data)
{
    const Material* material = data->GetMaterial();
    const bool seeThroughTexture = ColorTexture(data) != 0 && material->hasAlpha;
    if (s_leavesBlending || (!seeThroughTexture && !(material->GetOpacity() < 1.0f)))
    {
        return false;
    }
    glEnable(GL_BLEND);
    glBlendFunc(GL_SRC_ALPHA, GL_ONE_MINUS_SRC_ALPHA);
    return true;
}

float MaterialEffectES20::ShaderScale(float scale)
{
    return std::isfinite(scale) && scale > 0.0f ? 1.0f / scale : 1.0f;
}

Color MaterialEffectES20::LitColor(Material* material, LightNode* light)
{
    return InLight(material->GetDiffuse(), *material, light);
}

Color MaterialEffectES20::InLight(const Color& diffuse, const Material& material, LightNode* light)
{
    if (material.ignoreLightColor)
    {
        return diffuse;
    }
    const Color& color = light->GetColor();
    return Color(diffuse.r * color.r, diffuse.g * color.g, diffuse.b * color.b, diffuse.a);
}

Color MaterialEffectES20::SentColor(Material& material, LightNode* light) const
{
    const Color diffuse = HasMaterialColors() ? Color(1.0f, 1.0f, 1.0f, material.GetOpacity()) : material.GetDiffuse();
    return light ? InLight(diffuse, material, light) : diffuse;
}

Color MaterialEffectES20::SentAmbient(const Material& material) const
{
    return HasMaterialColors() ? Color(1.0f, 1.0f, 1.0f, 1.0f) : material.GetAmbient();
}

void MaterialEffectES20::BindTexture(int unit, unsigned int texture)
{
    glActiveTexture(GL_TEXTURE0 + static_cast<GLenum>(unit));
    glBindTexture(GL_TEXTURE_2D, texture);
}

bool MaterialEffectES20::ShowsFaceSides(MeshES20* data)
{
    const Mesh* mesh = data->GetMesh();
    return mesh != nullptr && (mesh->GetFlags() & MeshFlagShowFaceSides) != 0;
}

void MaterialEffectES20::SetStippling(Material* material, int color, int offset, int size)
{
    if (material->stippling)
    {
        Set(color, material->stippleColor);
        Set(offset, material->stippleOffset);
        Set(size, material->stippleSize);
    }
}

} // namespace OV
