#include "orvane/effects/BasicMaterialAmbientPassEffectES20.h"

#include "orvane/effects/detail/BasicMaterialOptions.h"
#include "orvane/effects/shaders/BasicMaterialAmbientPassEffectES20.frag.h"
#include "orvane/effects/shaders/BasicMaterialAmbientPassEffectES20.vert.h"
#include "orvane/math/Matrix.h"
#include "orvane/renderdata/MaterialES20.h"
#include "orvane/renderdata/MeshES20.h"
#include "orvane/scene/LightNode.h"
#include "orvane/scene/Material.h"
#include "orvane/scene/Mesh.h"
#include "orvane/scene/MeshNode.h"

#include <GL/glew.h>

namespace OV
{

namespace
{

enum Uniform : int
{
    UniformAmbient,
    UniformFogColor,
    UniformFogRange,
    UniformHScale,
    UniformIsMirrored,
    UniformIsShowFaceSides,
    UniformMvpMatrix,
    UniformPointSize,
    UniformStippleColor,
    UniformStippleOffset,
    UniformStippleSize,
    UniformVScale,
    UniformPocheColor,
    UniformPocheColorEnabled,
    UniformShadowIntensity,
    UniformIsShadow,
};

constexpr IndexedName kUniforms[] = {
    {UniformAmbient, "u_ambient"},
    {UniformFogColor, "u_fogColor"},
    {UniformFogRange, "u_fogRange"},
    {UniformHScale, "u_hScale"},
    {UniformIsMirrored, "u_isMirrored"},
    {UniformIsShowFaceSides, "u_isShowFaceSides"},
    {UniformMvpMatrix, "u_mvpMatrix"},
    {UniformPointSize, "u_pointSize"},
    {UniformStippleColor, "u_stippleColor"},
    {UniformStippleOffset, "u_stippleOffset"},
    {UniformStippleSize, "u_stippleSize"},
    {UniformVScale, "u_vScale"},
    {UniformPocheColor, "u_pocheColor"},
    {UniformPocheColorEnabled, "u_pocheColorEnabled"},
    {UniformShadowIntensity, "u_shadowIntensity"},
    {UniformIsShadow, "u_isShadow"},
};
static_assert(IsDense(kUniforms));

enum Attribute : unsigned
{
    AttributePosition,
    AttributeTexture,
};

constexpr IndexedName kAttributes[] = {
    {AttributePosition, "a_position"},
    {AttributeTexture, "a_texture"},
};

constexpr ProgramTemplate kTemplate = {
    "BasicMaterialAmbientEffect",
    Shaders::BasicMaterialAmbientPassEffectES20Vert,
    Shaders::BasicMaterialAmbientPassEffectES20Frag,
    kBasicMaterialOptions,
    kUniforms,
    kAttributes,
};

} // namespace

BasicMaterialAmbientPassEffectES20::BasicMaterialAmbientPassEffectES20(EffectCache* cache) :
    MaterialEffectES20(cache)
{
}

unsigned int
BasicMaterialAmbientPassEffectES20::CreateProgramForOptions(std::uint64_t options,
                                                            std::string& name)
{
    return CreateFromTemplate(kTemplate, options, name);
}

void BasicMaterialAmbientPassEffectES20::Apply(MaterialES20* data, CameraNodeES20* camera)
{
    m_camera = camera;
    Material* material = data->GetMaterial();
    const unsigned int texture = ColorTexture(data);
    UseOptions(BasicMaterialOptions(*material, texture));
    if (texture != 0)
    {
        BindTexture(0, texture);
        Set(UniformHScale, ShaderScale(data->GetUScale()));
        Set(UniformVScale, ShaderScale(data->GetVScale()));
    }
    const bool shadow =
        IsShadow() && GetAdvancedMaterialShaderType() == EffectCache::AdvancedMaterialPhong;
    Set(UniformIsShadow, shadow ? 1 : 0);
    Set(UniformShadowIntensity, GetShadowIntensity());
    SetFog(UniformFogRange, UniformFogColor);
    blendEnabled = EnableBlendingIfNeeded(data);
    lit = IsLit(material);
    ambientColor = AmbientColor(material);
    Set(UniformAmbient, ambientColor);
    Set(UniformPointSize, material->pointSize);
    SetStippling(material, UniformStippleColor, UniformStippleOffset, UniformStippleSize);
}

Color BasicMaterialAmbientPassEffectES20::AmbientColor(Material* material)
{
    Color color = material->GetAmbient();
    LightNode* light = FirstLight(material);
    if (light != nullptr && light->HasAmbient())
    {
        const Color& ambient = light->GetAmbient();
        color.Set(color.r * ambient.r, color.g * ambient.g, color.b * ambient.b);
    }
    color.a = material->GetOpacity();
    if (!IsLit(material))
    {
        color.AddRGB(material->GetDiffuse());
    }
    return color;
}

void BasicMaterialAmbientPassEffectES20::Remove()
{
    EndUse();
    if (blendEnabled)
    {
        glDisable(GL_BLEND);
        blendEnabled = false;
    }
}

bool BasicMaterialAmbientPassEffectES20::ShowsWholeColor(MeshES20* mesh) const
{
    return lit && mesh->GetNormalOffset() == -1;
}

void BasicMaterialAmbientPassEffectES20::BindMeshAttributes(MeshES20* mesh)
{
    EnableAttribute(AttributePosition, 3, mesh->GetStride(), mesh->GetPositionOffset());
    if (ShowsWholeColor(mesh))
    {
        Material* material = mesh->GetMesh() ? mesh->GetMesh()->GetMaterial() : nullptr;
        if (material != nullptr)
        {
            Color whole = material->GetDiffuse();
            whole.AddRGB(material->GetAmbient());
            Set(UniformAmbient, whole);
        }
    }
    if (HasAttribute(AttributeTexture))
    {
        EnableStream(AttributeTexture, 2, mesh->GetStride(), mesh->GetTextureOffset());
    }
    Set(UniformIsShowFaceSides, ShowsFaceSides(mesh) ? 1 : 0);
}

void BasicMaterialAmbientPassEffectES20::ReleaseMeshAttributes(MeshES20* mesh)
{
    if (HasAttribute(AttributeTexture))
    {
        DisableStream(AttributeTexture, mesh->GetTextureOffset());
    }
    if (ShowsWholeColor(mesh))
    {
        Set(UniformAmbient, ambientColor);
    }
    // The position stays enabled, unlike in the main pass: that is meant.
}

void BasicMaterialAmbientPassEffectES20::BindMeshUniforms(MeshNode* node)
{
    Set(UniformMvpMatrix, ModelViewProjection(node));
    Set(UniformIsMirrored, node->IsGlobalMirror() ? 1 : 0);
    Set(UniformPocheColor, s_pocheColor);
    Set(UniformPocheColorEnabled, s_pocheColorEnabled ? 1 : 0);
}

} // namespace OV
