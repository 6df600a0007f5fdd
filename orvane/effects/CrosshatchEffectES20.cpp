#include "orvane/effects/CrosshatchEffectES20.h"

#include "orvane/effects/shaders/CrosshatchEffectES20.frag.h"
#include "orvane/effects/shaders/CrosshatchEffectES20.vert.h"
#include "orvane/math/Color.h"
#include "orvane/math/Matrix.h"
#include "orvane/math/Vector.h"
#include "orvane/renderdata/MaterialES20.h"
#include "orvane/renderdata/MeshES20.h"
#include "orvane/scene/LightNode.h"
#include "orvane/scene/Material.h"
#include "orvane/scene/NodeType.h"

#include <GL/glew.h>

namespace OV
{

namespace
{

enum Uniform : int
{
    UniformAmbient,
    UniformAmbientPass,
    UniformBaseTexture,
    UniformColor,
    UniformEnableLight,
    UniformEnableTexture,
    UniformHScale,
    UniformLight,
    UniformMvpMatrix,
    UniformNoiseTexture,
    UniformNormals,
    UniformTexture0,
    UniformTexture1,
    UniformTexture2,
    UniformTexture3,
    UniformVScale,
};

constexpr IndexedName kUniforms[] = {
    {UniformAmbient, "u_ambient"},
    {UniformAmbientPass, "u_ambientPass"},
    {UniformBaseTexture, "u_baseTexture"},
    {UniformColor, "u_color"},
    {UniformEnableLight, "u_enableLight"},
    {UniformEnableTexture, "u_enableTexture"},
    {UniformHScale, "u_hScale"},
    {UniformLight, "u_lightDir"},
    {UniformMvpMatrix, "u_mvpMatrix"},
    {UniformNoiseTexture, "u_noiseTexture"},
    {UniformNormals, "u_normalMatrix"},
    {UniformTexture0, "u_texture0"},
    {UniformTexture1, "u_texture1"},
    {UniformTexture2, "u_texture2"},
    {UniformTexture3, "u_texture3"},
    {UniformVScale, "u_vScale"},
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
    "CrosshatchEffect", Shaders::CrosshatchEffectES20Vert, Shaders::CrosshatchEffectES20Frag, {}, kUniforms,
    kAttributes,
};

enum TextureUnit : int
{
    UnitFirstHatch,
    UnitBase = CrosshatchEffectES20::HatchCount,
    UnitNoise,
};

} // namespace

CrosshatchEffectES20::CrosshatchEffectES20(EffectCache* cache) : MaterialEffectES20(cache)
{
    static_assert(UniformLightDir == UniformLight && UniformNormalMatrix == UniformNormals);
    m_takesLightShare = true;
}

unsigned int CrosshatchEffectES20::CreateProgramForOptions(std::uint64_t options, std::string& name)
{
    return CreateFromTemplate(kTemplate, options, name);
}

void CrosshatchEffectES20::SetHatchTexture(int index, unsigned int texture)
{
    if (index >= 0 && index < HatchCount)
    {
        hatchTextures[index] = texture;
    }
}

void CrosshatchEffectES20::Apply(MaterialES20* data, CameraNodeES20* camera)
{
    m_camera = camera;
    UseOptions(0);
    SetTextures(data);
    SetColors(data->GetMaterial());
}

void CrosshatchEffectES20::SetTextures(MaterialES20* data)
{
    Material* const material = data->GetMaterial();
    const unsigned int texture = ColorTexture(data);
    float hScale = 1.0f;
    float vScale = 1.0f;
    if (texture != 0 && material->HasType(NodeTypeNodeMaterial))
    {
        hScale = ShaderScale(data->GetUScale());
        vScale = ShaderScale(data->GetVScale());
    }
    else if (texture != 0)
    {
        hScale = material->hatchUScale;
        vScale = material->hatchVScale;
    }
    Set(UniformHScale, hScale);
    Set(UniformVScale, vScale);
    Set(UniformEnableTexture, texture != 0 ? 1 : 0);
    Set(UniformAmbientPass, passFlag ? 1 : 0);
    for (int i = 0; i < HatchCount; ++i)
    {
        BindTexture(UnitFirstHatch + i, hatchTextures[i]);
    }
    if (texture != 0)
    {
        BindTexture(UnitBase, texture);
    }
    BindTexture(UnitNoise, noiseTexture);
    glActiveTexture(GL_TEXTURE0);
    for (int i = 0; i < HatchCount; ++i)
    {
        Set(UniformTexture0 + i, UnitFirstHatch + i);
    }
    Set(UniformBaseTexture, static_cast<int>(UnitBase));
    Set(UniformNoiseTexture, static_cast<int>(UnitNoise));
}

void CrosshatchEffectES20::SetColors(Material* material)
{
    lit = IsLit(material);
    Set(UniformAmbient, material->GetAmbient());
    if (!lit)
    {
        Set(UniformColor, material->GetDiffuse());
        Set(UniformEnableLight, 0);
        return;
    }
    LightNode* const light = FirstLight(material);
    Set(UniformColor, LitColor(material, light));
    // Who ignores the light's colour takes no light at all here: that is meant.
    Set(UniformEnableLight, material->ignoreLightColor ? 0 : 1);
    Vector towardsLight;
    towardsLight.Scale(-1.0f, light->GetGlobalDirection());
    Set(UniformLightDir, towardsLight);
}

void CrosshatchEffectES20::Remove()
{
    EndUse();
}

void CrosshatchEffectES20::BindMeshAttributes(MeshES20* mesh)
{
    const int stride = mesh->GetStride();
    EnableAttribute(AttributePosition, 3, stride, mesh->GetPositionOffset());
    if (lit)
    {
        hasNormals = EnableStream(AttributeNormal, 3, stride, mesh->GetNormalOffset());
    }
    EnableStream(AttributeTexture, 2, stride, mesh->GetTextureOffset());
}

void CrosshatchEffectES20::ReleaseMeshAttributes(MeshES20* mesh)
{
    DisableStream(AttributeTexture, mesh->GetTextureOffset());
    if (lit)
    {
        DisableStream(AttributeNormal, mesh->GetNormalOffset());
    }
    DisableAttribute(AttributePosition);
}

void CrosshatchEffectES20::BindMeshUniforms(MeshNode* node)
{
    Set(UniformMvpMatrix, ModelViewProjection(node));
    if (lit && hasNormals)
    {
        SetNormalMatrix(UniformNormalMatrix, node);
    }
}

} // namespace OV
