#include "orvane/effects/BasicMaterialEffectES20.h"

#include "orvane/effects/detail/BasicMaterialOptions.h"
#include "orvane/effects/detail/PlainLoop.h"
#include "orvane/effects/detail/RepeatedUniform.h"
#include "orvane/effects/shaders/BasicMaterialEffectES20.frag.h"
#include "orvane/effects/shaders/BasicMaterialEffectES20.vert.h"
#include "orvane/math/Color.h"
#include "orvane/math/Matrix.h"
#include "orvane/math/Vector.h"
#include "orvane/math/detail/MatrixProduct.h"
#include "orvane/renderdata/CameraNodeES20.h"
#include "orvane/renderdata/MaterialES20.h"
#include "orvane/renderdata/MeshES20.h"
#include "orvane/scene/LightNode.h"
#include "orvane/scene/Material.h"
#include "orvane/scene/MeshNode.h"

#include <GL/glew.h>

#include <cstdint>

namespace OV
{

namespace
{

enum Uniform : int
{
    UniformAmbient,
    UniformColor,
    UniformEnableLight,
    UniformFogColor,
    UniformFogRange,
    UniformHScale,
    UniformIsDoubleSided, // declared for the shader, set by nobody: that is meant
    UniformIsMirrored,
    UniformIsShowFaceSides,
    UniformLightDir,
    UniformMvpMatrix,
    UniformNormalMatrix,
    UniformPointSize,
    UniformStippleColor,
    UniformStippleOffset,
    UniformStippleSize,
    UniformVScale,
    UniformWorldTransform,
    UniformNumClipPlanes,
    UniformClipPlaneNormals,
    UniformClipPlanePositions,
    UniformPocheColor,
    UniformPocheColorEnabled,
};

constexpr IndexedName kUniforms[] = {
    {UniformAmbient, "u_ambient"},
    {UniformColor, "u_color"},
    {UniformEnableLight, "u_enableLight"},
    {UniformFogColor, "u_fogColor"},
    {UniformFogRange, "u_fogRange"},
    {UniformHScale, "u_hScale"},
    {UniformIsDoubleSided, "u_isDoubleSided"},
    {UniformIsMirrored, "u_isMirrored"},
    {UniformIsShowFaceSides, "u_isShowFaceSides"},
    {UniformLightDir, "u_lightDir"},
    {UniformMvpMatrix, "u_mvpMatrix"},
    {UniformNormalMatrix, "u_normalMatrix"},
    {UniformPointSize, "u_pointSize"},
    {UniformStippleColor, "u_stippleColor"},
    {UniformStippleOffset, "u_stippleOffset"},
    {UniformStippleSize, "u_stippleSize"},
    {UniformVScale, "u_vScale"},
    {UniformWorldTransform, "u_worldTransform"},
    {UniformNumClipPlanes, "u_numClipPlanes"},
    {UniformClipPlaneNormals, "u_clipPlaneNormals"},
    {UniformClipPlanePositions, "u_clipPlanePositions"},
    {UniformPocheColor, "u_pocheColor"},
    {UniformPocheColorEnabled, "u_pocheColorEnabled"},
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
    "BasicMaterialEffect",          Shaders::BasicMaterialEffectES20Vert,
    Shaders::BasicMaterialEffectES20Frag, kBasicMaterialOptions,
    kUniforms,                      kAttributes,
};

} // namespace

/// What BindMeshUniforms sends for each of many nodes.
class BasicMaterialEffectES20::NodeUniforms
{
public:
    explicit NodeUniforms(BasicMaterialEffectES20& effect) :
        m_effect(effect), m_viewProjection(effect.m_camera->GetMVP()), m_isShaded(effect.IsShaded()),
        m_product(effect.m_current, UniformMvpMatrix, effect.Has(UniformMvpMatrix)),
        m_normals(effect.m_current, UniformNormalMatrix, effect.Has(UniformNormalMatrix)),
        m_mirrored(effect.m_current, UniformIsMirrored, effect.Has(UniformIsMirrored)),
        m_world(effect.m_current, UniformWorldTransform, effect.Has(UniformWorldTransform))
    {
    }

    void Send(MeshNode& node)
    {
        Matrix product;
        detail::Multiply(product.m, m_viewProjection.m, node.GetGlobalMatrix()->m);
        m_product.Send(product);
        if (!m_isShaded)
        {
            return;
        }
        m_normals.Send(node.GetGlobalNormalMatrix());
        m_effect.m_mirrorLeft = node.IsGlobalMirror();
        m_mirrored.Send(m_effect.m_mirrorLeft ? 1 : 0);
        if (m_world.Exists())
        {
            m_world.Send(*node.GetGlobalMatrix());
        }
    }

private:
    BasicMaterialEffectES20& m_effect;
    const Matrix& m_viewProjection;
    bool m_isShaded;
    detail::RepeatedUniform m_product;
    detail::RepeatedUniform m_normals;
    detail::RepeatedUniform m_mirrored;
    detail::RepeatedUniform m_world;
};

BasicMaterialEffectES20::BasicMaterialEffectES20(EffectCache* cache, bool isAdditive) :
    MaterialEffectES20(cache), additive(isAdditive)
{
    m_discardsAtPlanes = true;
    m_takesLightShare = true;
    m_knowsMaterialColors = true;
}

unsigned int BasicMaterialEffectES20::CreateProgramForOptions(std::uint64_t options,
                                                              std::string& name)
{
    return CreateFromTemplate(kTemplate, options, name);
}

void BasicMaterialEffectES20::Apply(MaterialES20* data, CameraNodeES20* camera)
{
    Material* material = data->GetMaterial();
    const unsigned int texture = ColorTexture(data);
    UseOptions(BasicMaterialOptions(*material, texture));
    m_camera = camera;
    SetFog(UniformFogRange, UniformFogColor);
    SetStippling(material, UniformStippleColor, UniformStippleOffset, UniformStippleSize);
    if (additive)
    {
        glEnable(GL_BLEND);
        glBlendFunc(GL_ONE, GL_ONE);
        blendEnabled = true;
    }
    else
    {
        blendEnabled = EnableBlendingIfNeeded(data);
    }
    BindTexture(0, texture);
    if (texture != 0)
    {
        Set(UniformHScale, ShaderScale(data->GetUScale()));
        Set(UniformVScale, ShaderScale(data->GetVScale()));
    }
    SetColors(material);
    Set(UniformPointSize, material->pointSize);
}

void BasicMaterialEffectES20::SetColors(Material* material)
{
    lit = IsLit(material);
    Set(UniformEnableLight, lit ? 1 : 0);
    Set(UniformAmbient, SentAmbient(*material));
    if (!lit)
    {
        Set(UniformColor, SentColor(*material, nullptr));
        return;
    }
    LightNode* light = FirstLight(material);
    Set(UniformLightDir, TowardsLight(light));
    Set(UniformColor, SentColor(*material, light));
}

void BasicMaterialEffectES20::Remove()
{
    EndUse();
    if (blendEnabled)
    {
        glDisable(GL_BLEND);
        blendEnabled = false;
    }
}

void BasicMaterialEffectES20::BindMeshAttributes(MeshES20* mesh)
{
    BindStreams(StreamsOf(*mesh));
    Set(UniformIsShowFaceSides, ShowsFaceSides(mesh) ? 1 : 0);
}

void BasicMaterialEffectES20::BindStreams(const Streams& streams)
{
    EnableAttribute(AttributePosition, 3, streams.stride, streams.position);
    if (lit)
    {
        hasNormals = EnableStream(AttributeNormal, 3, streams.stride, streams.normal);
        if (!hasNormals)
        {
            Set(UniformEnableLight, 0);
        }
    }
    if (HasAttribute(AttributeTexture))
    {
        EnableStream(AttributeTexture, 2, streams.stride, streams.texture);
    }
}

void BasicMaterialEffectES20::BindNoFlags()
{
    Set(UniformIsShowFaceSides, 0);
}

void BasicMaterialEffectES20::ReleaseMeshAttributes(MeshES20* mesh)
{
    ReleaseStreams(StreamsOf(*mesh));
}

void BasicMaterialEffectES20::ReleaseStreams(const Streams& streams)
{
    if (HasAttribute(AttributeTexture))
    {
        DisableStream(AttributeTexture, streams.texture);
    }
    if (lit && !DisableStream(AttributeNormal, streams.normal))
    {
        Set(UniformEnableLight, 1);
    }
    DisableAttribute(AttributePosition);
    ClearLeftovers();
}

void BasicMaterialEffectES20::BindMeshUniforms(MeshNode* node)
{
    // What nearly all meshes of nearly all models are drawn by: no call more than it takes.
    Matrix modelViewProjection;
    modelViewProjection.Multiply(m_camera->GetMVP(), *node->GetGlobalMatrix());
    Set(UniformMvpMatrix, modelViewProjection);
    if (!IsShaded())
    {
        return;
    }
    Set(UniformNormalMatrix, node->GetGlobalNormalMatrix());
    m_mirrorLeft = node->IsGlobalMirror();
    Set(UniformIsMirrored, m_mirrorLeft ? 1 : 0);
    if (Has(UniformWorldTransform))
    {
        Set(UniformWorldTransform, *node->GetGlobalMatrix());
    }
    m_clipPlanesLeft = SetClipPlanes(UniformClipPlaneNormals, UniformClipPlanePositions,
                                     UniformNumClipPlanes, clipPlanesActive) > 0;
    Set(UniformPocheColor, s_pocheColor);
    Set(UniformPocheColorEnabled, s_pocheColorEnabled ? 1 : 0);
}

void BasicMaterialEffectES20::DrawPlain(detail::PlainDraw* draws, detail::PlainDraw* end)
{
    detail::PlainLoop<BasicMaterialEffectES20>(*this).Draw(draws, end);
}

bool BasicMaterialEffectES20::CanRepeat() const
{
    // Clip planes are taken back behind each mesh, and one without normals turns the light off and on again.
    return !Has(UniformNumClipPlanes) && (hasNormals || !lit);
}

detail::PlainPointers BasicMaterialEffectES20::PointersOf(const Streams& behindPosition) const
{
    detail::PlainPointers pointers;
    pointers.Add(AttributePosition, 3, behindPosition.position);
    if (IsShaded())
    {
        pointers.Add(AttributeNormal, 3, behindPosition.normal);
    }
    if (HasAttribute(AttributeTexture))
    {
        pointers.Add(AttributeTexture, 2, behindPosition.texture);
    }
    return pointers;
}

void BasicMaterialEffectES20::ClearLeftovers()
{
    // Unlit draws don't set these two, and what they draw must not depend on what came before.
    if (m_clipPlanesLeft)
    {
        Set(UniformNumClipPlanes, 0);
        m_clipPlanesLeft = false;
    }
    if (m_mirrorLeft)
    {
        Set(UniformIsMirrored, 0);
        m_mirrorLeft = false;
    }
}

} // namespace OV
