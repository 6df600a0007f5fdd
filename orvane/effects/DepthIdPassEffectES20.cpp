#include "orvane/effects/DepthIdPassEffectES20.h"

#include "orvane/effects/detail/PlainLoop.h"
#include "orvane/effects/detail/RepeatedUniform.h"
#include "orvane/effects/shaders/DepthIdPassEffectES20.frag.h"
#include "orvane/effects/shaders/DepthIdPassEffectES20.vert.h"
#include "orvane/math/Matrix.h"
#include "orvane/math/detail/MatrixProduct.h"
#include "orvane/renderdata/CameraNodeES20.h"
#include "orvane/renderdata/MeshES20.h"
#include "orvane/scene/MeshNode.h"

#include <GL/glew.h>

#include <cstdint>

namespace OV
{

namespace
{

enum Option : std::uint64_t
{
    OptionObjectId = 1,
    OptionGroupId = 2,
};

constexpr OptionRow kOptions[] = {
    {OptionObjectId, "OBJECTID"},
    {OptionGroupId, "GROUPID"},
};

enum Uniform : int
{
    UniformEncodedGroupInstance,
    UniformMvpMatrix,
    UniformWorldTransform,
    UniformNumClipPlanes,
    UniformClipPlaneNormals,
    UniformClipPlanePositions,
};

constexpr IndexedName kUniforms[] = {
    {UniformEncodedGroupInstance, "u_encodedGroupInstance"},
    {UniformMvpMatrix, "u_mvpMatrix"},
    {UniformWorldTransform, "u_worldTransform"},
    {UniformNumClipPlanes, "u_numClipPlanes"},
    {UniformClipPlaneNormals, "u_clipPlaneNormals"},
    {UniformClipPlanePositions, "u_clipPlanePositions"},
};
static_assert(IsDense(kUniforms));

enum Attribute : unsigned
{
    AttributePosition,
    AttributeColor,
};

constexpr IndexedName kAttributes[] = {
    {AttributePosition, "a_position"},
    {AttributeColor, "a_color"},
};

constexpr ProgramTemplate kTemplate = {
    "DepthIdPassEffectES20", Shaders::DepthIdPassEffectES20Vert, Shaders::DepthIdPassEffectES20Frag, kOptions,
    kUniforms, kAttributes,
};

/// Spreads neighbouring identifiers over the colours, by more than a rounding step.
constexpr std::uint32_t kSpread = 122;

} // namespace

/// What BindMeshUniforms sends for each of many nodes.
class DepthIdPassEffectES20::NodeUniforms
{
public:
    explicit NodeUniforms(const DepthIdPassEffectES20& effect) :
        m_viewProjection(effect.m_camera->GetMVP()), m_isOfNodes(effect.idMode > 0),
        m_product(effect.m_current, UniformMvpMatrix, effect.Has(UniformMvpMatrix)),
        m_identifier(effect.m_current, UniformEncodedGroupInstance, effect.Has(UniformEncodedGroupInstance)),
        m_world(effect.m_current, UniformWorldTransform, effect.Has(UniformWorldTransform))
    {
    }

    void Send(MeshNode& node)
    {
        const Matrix& world = *node.GetGlobalMatrix();
        Matrix product;
        detail::Multiply(product.m, m_viewProjection.m, world.m);
        m_product.Send(product);
        if (m_isOfNodes)
        {
            float color[4];
            EncodeId(node.GetUserData(), color);
            m_identifier.Send(color);
        }
        m_world.Send(world);
        glDisable(GL_DITHER);
    }

private:
    const Matrix& m_viewProjection;
    bool m_isOfNodes;
    detail::RepeatedUniform m_product;
    detail::RepeatedUniform m_identifier;
    detail::RepeatedUniform m_world;
};

DepthIdPassEffectES20::DepthIdPassEffectES20(EffectCache* cache) : MaterialEffectES20(cache)
{
    static_assert(UniformIdentifier == UniformEncodedGroupInstance && UniformObjectToClip == UniformMvpMatrix);
    m_discardsAtPlanes = true;
}

unsigned int DepthIdPassEffectES20::CreateProgramForOptions(std::uint64_t options, std::string& name)
{
    return CreateFromTemplate(kTemplate, options, name);
}

void DepthIdPassEffectES20::Apply(MaterialES20*, CameraNodeES20* camera)
{
    m_camera = camera;
    UseOptions(idMode == 1 ? OptionGroupId : OptionObjectId);
    glDisable(GL_BLEND);
}

void DepthIdPassEffectES20::Remove()
{
    EndUse();
}

void DepthIdPassEffectES20::BindMeshAttributes(MeshES20* mesh)
{
    BindStreams(StreamsOf(*mesh));
}

void DepthIdPassEffectES20::BindStreams(const Streams& streams)
{
    EnableAttribute(AttributePosition, 3, streams.stride, streams.position);
    if (idMode == 0)
    {
        EnableStream(AttributeColor, 4, streams.stride, streams.color);
    }
}

void DepthIdPassEffectES20::ReleaseMeshAttributes(MeshES20* mesh)
{
    ReleaseStreams(StreamsOf(*mesh));
}

void DepthIdPassEffectES20::ReleaseStreams(const Streams& streams)
{
    DisableAttribute(AttributePosition);
    if (idMode == 0)
    {
        DisableStream(AttributeColor, streams.color);
    }
}

detail::PlainPointers DepthIdPassEffectES20::PointersOf(const Streams& behindPosition) const
{
    detail::PlainPointers pointers;
    pointers.Add(AttributePosition, 3, behindPosition.position);
    if (idMode == 0)
    {
        pointers.Add(AttributeColor, 4, behindPosition.color);
    }
    return pointers;
}

bool DepthIdPassEffectES20::CanRepeat() const
{
    // Values of clip planes are compared with what is known of them, which NodeUniforms leaves out.
    return !Has(UniformNumClipPlanes);
}

void DepthIdPassEffectES20::DrawPlain(detail::PlainDraw* draws, detail::PlainDraw* end)
{
    detail::PlainLoop<DepthIdPassEffectES20>(*this).Draw(draws, end);
}

void DepthIdPassEffectES20::BindMeshUniforms(MeshNode* node)
{
    Set(UniformMvpMatrix, ModelViewProjection(node));
    if (idMode > 0)
    {
        float color[4];
        EncodeId(node->GetUserData(), color);
        Set(UniformEncodedGroupInstance, color[0], color[1], color[2], color[3]);
    }
    Set(UniformWorldTransform, *node->GetGlobalMatrix());
    SetClipPlanes(UniformClipPlaneNormals, UniformClipPlanePositions, UniformNumClipPlanes, true);
    glDisable(GL_DITHER);
}

void DepthIdPassEffectES20::EncodeId(int userData, float (&color)[4])
{
    // The group part goes to the upper bits, the sign with it. One more, so that no node has
    // the colour of an empty picture.
    const auto group = static_cast<std::uint32_t>(userData >> 4) & 0xFFFFF000u;
    const std::uint32_t object = (static_cast<std::uint32_t>(userData) & 0xFFFFu) + 1u;
    const auto encoded = static_cast<std::int32_t>((group | object) * kSpread);
    // Signed as the whole is, so that it may be below 0.
    const std::int32_t blue = encoded >> 16;
    const std::int32_t green = (encoded >> 8) & 0xFF;
    const std::int32_t red = encoded & 0xFF;
    color[0] = static_cast<float>(red / 255.0);
    color[1] = static_cast<float>(green / 255.0);
    color[2] = static_cast<float>(blue / 255.0);
    color[3] = 1.0f;
}

} // namespace OV
