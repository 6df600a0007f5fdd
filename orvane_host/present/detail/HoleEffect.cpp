#include "orvane_host/present/detail/HoleEffect.h"

#include "orvane/renderdata/MaterialES20.h"
#include "orvane/renderdata/MeshES20.h"
#include "orvane/scene/Material.h"

namespace OV::Host::Detail
{

namespace
{

constexpr unsigned Position = HoleAttributes[0].index;
constexpr unsigned Texture = HoleAttributes[1].index;
constexpr int OpacityUnit = 1;

} // namespace

HoleEffect::HoleEffect(const HoleUniforms& uniforms) : MaterialEffectES20(nullptr), m_uniforms(uniforms)
{
    m_discardsAtPlanes = true;
    DrawByStreams(Position, static_cast<int>(Texture));
}

bool HoleEffect::FindHoles(MaterialES20* data)
{
    m_colors = data->GetMaterial()->hasAlpha ? ColorTexture(data) : 0;
    m_opacity = data->GetOpacityMapID();
    return m_colors != 0 || m_opacity != 0;
}

void HoleEffect::BindHoles(MaterialES20* data)
{
    if (m_colors == 0 && m_opacity == 0)
    {
        return;
    }
    Set(m_uniforms.maps, (m_colors != 0 ? 1 : 0) + (m_opacity != 0 ? 2 : 0));
    Set(m_uniforms.texture, 0);
    Set(m_uniforms.opacityMap, OpacityUnit);
    Set(m_uniforms.scale, ShaderScale(data->GetUScale()), ShaderScale(data->GetVScale()));
    BindTexture(OpacityUnit, m_opacity);
    BindTexture(0, m_colors);
}

void HoleEffect::Remove()
{
    EndUse();
    if (m_colors != 0 || m_opacity != 0)
    {
        BindTexture(OpacityUnit, 0);
        BindTexture(0, 0);
        m_colors = 0;
        m_opacity = 0;
    }
}

void HoleEffect::BindMeshAttributes(MeshES20* mesh)
{
    EnableAttribute(Position, 3, mesh->GetStride(), mesh->GetPositionOffset());
    if (HasAttribute(Texture))
    {
        EnableStream(Texture, 2, mesh->GetStride(), mesh->GetTextureOffset());
    }
}

void HoleEffect::ReleaseMeshAttributes(MeshES20* mesh)
{
    if (HasAttribute(Texture))
    {
        DisableStream(Texture, mesh->GetTextureOffset());
    }
    DisableAttribute(Position);
}

} // namespace OV::Host::Detail
