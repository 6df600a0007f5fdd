#include "orvane_host/present/detail/StrokeEffect.h"

#include "orvane_host/present/shaders/StrokeEffect.frag.h"
#include "orvane_host/present/shaders/StrokeEffect.vert.h"
#include "orvane/math/Color.h"
#include "orvane/math/Matrix.h"
#include "orvane/math/Vector.h"
#include "orvane/renderdata/MaterialES20.h"
#include "orvane/renderdata/MeshES20.h"
#include "orvane/scene/LightNode.h"
#include "orvane/scene/Material.h"

#include <GL/gl.h>

#include <algorithm>

namespace OV::Host::Detail
{

namespace
{

/// How much of what lies behind it the clearest pane covers.
constexpr float kClearestVeil = 0.6f;

enum Uniform : int
{
    UniformAmbient,
    UniformColor,
    UniformLight,
    UniformWidth,
    UniformOpacity,
    UniformVeil,
    UniformEnableLight,
    UniformEnableTexture,
    UniformEnableNormals,
    UniformBaseTexture,
    UniformFaceMatrix,
    UniformMvpMatrix,
    UniformNormals,
    UniformScale,
};

constexpr IndexedName kUniforms[] = {
    {UniformAmbient, "u_ambient"},
    {UniformColor, "u_color"},
    {UniformLight, "u_lightDir"},
    {UniformWidth, "u_width"},
    {UniformOpacity, "u_opacity"},
    {UniformVeil, "u_veil"},
    {UniformEnableLight, "u_enableLight"},
    {UniformEnableTexture, "u_enableTexture"},
    {UniformEnableNormals, "u_enableNormals"},
    {UniformBaseTexture, "u_baseTexture"},
    {UniformFaceMatrix, "u_faceMatrix"},
    {UniformMvpMatrix, "u_mvpMatrix"},
    {UniformNormals, "u_normalMatrix"},
    {UniformScale, "u_scale"},
};
static_assert(IsDense(kUniforms));

enum Attribute : unsigned
{
    AttributePosition,
    AttributeNormal,
    AttributeTexture,
};

constexpr IndexedName kAttributes[] = {
    {AttributePosition, "a_position"},
    {AttributeNormal, "a_normal"},
    {AttributeTexture, "a_texture"},
};

constexpr ProgramTemplate kTemplate = {
    "StrokeEffect", Shaders::StrokeEffectVert, Shaders::StrokeEffectFrag, {}, kUniforms, kAttributes,
};

} // namespace

StrokeEffect::StrokeEffect() : MaterialEffectES20(nullptr)
{
    m_takesLightShare = true;
}

unsigned int StrokeEffect::CreateProgramForOptions(std::uint64_t options, std::string& name)
{
    return CreateFromTemplate(kTemplate, options, name);
}

void StrokeEffect::Apply(MaterialES20* data, CameraNodeES20* camera)
{
    m_camera = camera;
    Material* const material = data->GetMaterial();
    const unsigned int texture = ColorTexture(data);
    m_hasTexture = texture != 0;
    UseOptions(0);
    m_blends = EnableBlendingIfNeeded(data);
    Set(UniformWidth, m_width);
    const float opacity = std::clamp(material->GetOpacity(), 0.0f, 1.0f);
    Set(UniformOpacity, opacity);
    Set(UniformVeil, kClearestVeil + (1.0f - kClearestVeil) * opacity);
    Set(UniformAmbient, material->GetAmbient());
    const bool isLit = IsLit(material);
    LightNode* const light = isLit ? FirstLight(material) : nullptr;
    Set(UniformColor, isLit ? LitColor(material, light) : material->GetDiffuse());
    Set(UniformEnableLight, isLit ? 1 : 0);
    if (isLit)
    {
        Vector towardsLight;
        towardsLight.Scale(-1.0f, light->GetGlobalDirection());
        Set(UniformLight, towardsLight);
    }
    Set(UniformEnableTexture, m_hasTexture ? 1 : 0);
    if (m_hasTexture)
    {
        Set(UniformBaseTexture, 0);
        Set(UniformScale, ShaderScale(data->GetUScale()), ShaderScale(data->GetVScale()));
        BindTexture(0, texture);
    }
}

void StrokeEffect::Remove()
{
    EndUse();
    if (m_blends)
    {
        glDisable(GL_BLEND);
        m_blends = false;
    }
    if (m_hasTexture)
    {
        BindTexture(0, 0);
        m_hasTexture = false;
    }
}

void StrokeEffect::BindMeshAttributes(MeshES20* mesh)
{
    const int stride = mesh->GetStride();
    EnableAttribute(AttributePosition, 3, stride, mesh->GetPositionOffset());
    m_hasNormals = EnableStream(AttributeNormal, 3, stride, mesh->GetNormalOffset());
    EnableStream(AttributeTexture, 2, stride, mesh->GetTextureOffset());
    Set(UniformEnableNormals, m_hasNormals ? 1 : 0);
}

void StrokeEffect::ReleaseMeshAttributes(MeshES20* mesh)
{
    DisableStream(AttributeTexture, mesh->GetTextureOffset());
    DisableStream(AttributeNormal, mesh->GetNormalOffset());
    DisableAttribute(AttributePosition);
}

void StrokeEffect::BindMeshUniforms(MeshNode* node)
{
    Set(UniformMvpMatrix, ModelViewProjection(node));
    SetNormalMatrix(m_hasNormals ? UniformNormals : UniformFaceMatrix, node);
}

} // namespace OV::Host::Detail
