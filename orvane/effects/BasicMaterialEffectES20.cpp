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

/// An offset from the position on as one into the buffer; negative where there is none.
int BehindPosition(int positionOffset, int offset)
{
    return offset < 0 ? -1 : positionOffset + offset;
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
    BindStreams(mesh->GetStride(), mesh->GetPositionOffset(), mesh->GetNormalOffset(), mesh->GetTextureOffset());
    Set(UniformIsShowFaceSides, ShowsFaceSides(mesh) ? 1 : 0);
}

void BasicMaterialEffectES20::BindStreams(int stride, int positionOffset, int normalOffset, int textureOffset)
{
    EnableAttribute(AttributePosition, 3, stride, positionOffset);
    if (lit)
    {
        hasNormals = EnableStream(AttributeNormal, 3, stride, normalOffset);
        if (!hasNormals)
        {
            Set(UniformEnableLight, 0);
        }
    }
    if (HasAttribute(AttributeTexture))
    {
        EnableStream(AttributeTexture, 2, stride, textureOffset);
    }
}

void BasicMaterialEffectES20::ReleaseMeshAttributes(MeshES20* mesh)
{
    ReleaseStreams(mesh->GetNormalOffset(), mesh->GetTextureOffset());
}

void BasicMaterialEffectES20::ReleaseStreams(int normalOffset, int textureOffset)
{
    if (HasAttribute(AttributeTexture))
    {
        DisableStream(AttributeTexture, textureOffset);
    }
    if (lit && !DisableStream(AttributeNormal, normalOffset))
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

void BasicMaterialEffectES20::DrawPlain(detail::PlainDraw* draw, detail::PlainDraw* end)
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

const BasicMaterialEffectES20::BufferLayout& BasicMaterialEffectES20::LayoutOf(const detail::PlainDraw& draw)
{
    if (m_layout.vertexBuffer != draw.vertexBuffer || m_layout.listing != MeshES20::GetListingRevision())
    {
        const MeshES20& data = draw.Data();
        const auto fromPosition = [&](int offset) { return offset < 0 ? -1 : offset - data.positionOffset; };
        m_layout = {data.vertexBufferId,
                    data.indexBufferId,
                    data.stride,
                    fromPosition(data.normalOffset),
                    fromPosition(data.textureOffset),
                    MeshES20::GetListingRevision()};
    }
    return m_layout;
}

detail::PlainDraw* BasicMaterialEffectES20::DrawBuffer(detail::PlainDraw* draw, detail::PlainDraw* end)
{
    const detail::PlainDraw& first = *draw;
    const BufferLayout& layout = LayoutOf(first);
    MeshES20::ApplyBuffer(layout.vertexBuffer, layout.indexBuffer);
    OV_GL_CHECKPOINT();
    clipPlanesActive = first.isClipped != 0;
    // As BindMeshAttributes for a mesh without flags, which is not looked at.
    BindStreams(layout.stride, first.positionOffset, BehindPosition(first.positionOffset, layout.normalOffset),
                BehindPosition(first.positionOffset, layout.textureOffset));
    Set(UniformIsShowFaceSides, 0);
    DisableSpareAttributes();
    OV_GL_CHECKPOINT();

    const bool isShaded = lit && hasNormals;
    // A mesh without normals turns the light off and on again, and clip planes are taken back. Where others have
    // drawn since Apply, nothing is known of the program.
    const bool canRepeat = (isShaded || !lit) && !Has(UniformNumClipPlanes) &&
                           detail::RepeatedUniform::AreFollowed(m_current);
    const bool hasTexture = HasAttribute(AttributeTexture) && layout.textureOffset >= 0;
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
        const int count = draw->DrawnIndexCount();
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
            glDrawElements(GL_TRIANGLES, count, GL_UNSIGNED_SHORT, draw->FirstIndex());
        }
        ++draw;
        if (!canRepeat || draw == end || !draw->HasVertices() ||
            draw->vertexBuffer != first.vertexBuffer || draw->isClipped != first.isClipped)
        {
            break;
        }
        ClearLeftovers();
        // As BindStreams, with the arrays enabled.
        PointAttribute(AttributePosition, 3, layout.stride, draw->positionOffset);
        if (isShaded)
        {
            PointAttribute(AttributeNormal, 3, layout.stride, draw->positionOffset + layout.normalOffset);
        }
        if (hasTexture)
        {
            PointAttribute(AttributeTexture, 2, layout.stride, draw->positionOffset + layout.textureOffset);
        }
    }
    ReleaseStreams(layout.normalOffset, layout.textureOffset);
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
