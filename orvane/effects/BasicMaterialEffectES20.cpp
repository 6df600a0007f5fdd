#include "orvane/effects/BasicMaterialEffectES20.h"

#include "orvane/base/GLCheckpoint.h"
#include "orvane/effects/detail/BasicMaterialOptions.h"
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
#include "orvane/renderdata/detail/PlainDraw.h"
#include "orvane/scene/LightNode.h"
#include "orvane/scene/Material.h"
#include "orvane/scene/MeshNode.h"

#include <GL/glew.h>

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <optional>

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

/// How many draws ahead their memory is asked for.
constexpr std::ptrdiff_t kAhead = 8;

void PointAttribute(unsigned int attribute, int components, int stride, int offset)
{
    glVertexAttribPointer(attribute, components, GL_FLOAT, GL_FALSE, stride,
                          reinterpret_cast<const void*>(static_cast<std::intptr_t>(offset)));
}

/// As BindStreams, with the arrays enabled.
void PointStreams(const MeshES20& data, bool normals, bool texture)
{
    PointAttribute(AttributePosition, 3, data.stride, data.positionOffset);
    if (normals)
    {
        PointAttribute(AttributeNormal, 3, data.stride, data.normalOffset);
    }
    if (texture)
    {
        PointAttribute(AttributeTexture, 2, data.stride, data.textureOffset);
    }
}

/// Whether the second mesh is drawn as the first was but for where it begins.
bool IsOfLayout(const MeshES20& first, const MeshES20& second)
{
    return second.vertexBufferId == first.vertexBufferId && second.stride == first.stride &&
           second.clippingPlaneEnabled == first.clippingPlaneEnabled &&
           (second.normalOffset < 0) == (first.normalOffset < 0) &&
           (second.textureOffset < 0) == (first.textureOffset < 0);
}

} // namespace

/// What BindMeshUniforms sends for each of many nodes.
class BasicMaterialEffectES20::NodeUniforms
{
public:
    explicit NodeUniforms(const BasicMaterialEffectES20& effect) :
        m_viewProjection(effect.m_camera->GetMVP()),
        m_product(effect.m_current, UniformMvpMatrix, effect.Has(UniformMvpMatrix)),
        m_normals(effect.m_current, UniformNormalMatrix, effect.Has(UniformNormalMatrix)),
        m_mirrored(effect.m_current, UniformIsMirrored, effect.Has(UniformIsMirrored)),
        m_world(effect.m_current, UniformWorldTransform, effect.Has(UniformWorldTransform))
    {
    }

    void SendProduct(MeshNode& node)
    {
        Matrix product;
        detail::Multiply(product.m, m_viewProjection.m, node.GetGlobalMatrix()->m);
        m_product.Send(product);
    }

    /// What the light takes.
    /// @return whether the node is a mirror.
    bool SendShading(MeshNode& node)
    {
        m_normals.Send(node.GetGlobalNormalMatrix());
        const bool isMirror = node.IsGlobalMirror();
        m_mirrored.Send(isMirror ? 1 : 0);
        if (m_world.Exists())
        {
            m_world.Send(*node.GetGlobalMatrix());
        }
        return isMirror;
    }

private:
    const Matrix& m_viewProjection;
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
    Set(UniformAmbient, material->GetAmbient());
    if (!lit)
    {
        Set(UniformColor, material->GetDiffuse());
        return;
    }
    LightNode* light = FirstLight(material);
    Set(UniformLightDir, TowardsLight(light));
    Set(UniformColor, LitColor(material, light));
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
    BindStreams(mesh);
    Set(UniformIsShowFaceSides, ShowsFaceSides(mesh) ? 1 : 0);
}

void BasicMaterialEffectES20::BindStreams(MeshES20* mesh)
{
    const int stride = mesh->GetStride();
    EnableAttribute(AttributePosition, 3, stride, mesh->GetPositionOffset());
    if (lit)
    {
        hasNormals = EnableStream(AttributeNormal, 3, stride, mesh->GetNormalOffset());
        if (!hasNormals)
        {
            Set(UniformEnableLight, 0);
        }
    }
    if (HasAttribute(AttributeTexture))
    {
        EnableStream(AttributeTexture, 2, stride, mesh->GetTextureOffset());
    }
}

void BasicMaterialEffectES20::ReleaseMeshAttributes(MeshES20* mesh)
{
    if (HasAttribute(AttributeTexture))
    {
        DisableStream(AttributeTexture, mesh->GetTextureOffset());
    }
    if (lit && !DisableStream(AttributeNormal, mesh->GetNormalOffset()))
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
    if (!lit || !hasNormals)
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

void BasicMaterialEffectES20::DrawPlain(const detail::PlainDraw* draw, const detail::PlainDraw* end)
{
    // The first was asked for with its material.
    for (std::ptrdiff_t i = 1; i < std::min(kAhead, end - draw); ++i)
    {
        detail::Prefetch(draw[i]);
    }
    meshNodeFlag = false;
    while (draw != end)
    {
        draw = draw->HasVertices() ? DrawBuffer(draw, end) : draw + 1;
    }
}

const detail::PlainDraw* BasicMaterialEffectES20::DrawBuffer(const detail::PlainDraw* draw,
                                                             const detail::PlainDraw* end)
{
    MeshES20* const first = draw->data;
    MeshES20::ApplyBuffer(first->vertexBufferId, first->indexBufferId);
    OV_GL_CHECKPOINT();
    clipPlanesActive = first->clippingPlaneEnabled;
    // As BindMeshAttributes for a mesh without flags, which is not looked at.
    BindStreams(first);
    Set(UniformIsShowFaceSides, 0);
    DisableSpareAttributes();
    OV_GL_CHECKPOINT();

    const bool isShaded = lit && hasNormals;
    // A mesh without normals turns the light off and on again, and clip planes are taken back. Where others have
    // drawn since Apply, nothing is known of the program.
    const bool canRepeat = (isShaded || !lit) && !Has(UniformNumClipPlanes) &&
                           detail::RepeatedUniform::AreFollowed(m_current);
    const bool hasTexture = HasAttribute(AttributeTexture) && first->textureOffset >= 0;
    bool isFirstNode = true;
    // Not made for a mesh that is alone.
    std::optional<NodeUniforms> uniforms;
    for (;;)
    {
        if (end - draw > kAhead)
        {
            detail::Prefetch(draw[kAhead]);
        }
        MeshNode& node = *draw->node;
        const int count = detail::DrawnIndexCount(*draw->data, *draw->geometry);
        if (count != 0 && detail::IsDrawn(node, false))
        {
            if (isFirstNode)
            {
                BasicMaterialEffectES20::BindMeshUniforms(&node);
                isFirstNode = false;
            }
            else
            {
                if (!uniforms)
                {
                    uniforms.emplace(*this);
                }
                uniforms->SendProduct(node);
                if (isShaded)
                {
                    m_mirrorLeft = uniforms->SendShading(node);
                }
            }
            glDrawElements(GL_TRIANGLES, count, GL_UNSIGNED_SHORT, detail::FirstIndex(*draw->data));
        }
        ++draw;
        if (!canRepeat || draw == end || !draw->HasVertices() || !IsOfLayout(*first, *draw->data))
        {
            break;
        }
        ClearLeftovers();
        PointStreams(*draw->data, isShaded, hasTexture);
    }
    BasicMaterialEffectES20::ReleaseMeshAttributes(first);
    return draw;
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
