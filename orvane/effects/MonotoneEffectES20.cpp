#include "orvane/effects/MonotoneEffectES20.h"

#include "orvane/effects/detail/PlainLoop.h"
#include "orvane/effects/detail/RepeatedUniform.h"
#include "orvane/effects/shaders/MonotoneEffectES20.frag.h"
#include "orvane/effects/shaders/MonotoneEffectES20.vert.h"
#include "orvane/math/Matrix.h"
#include "orvane/math/Vector.h"
#include "orvane/math/detail/MatrixProduct.h"
#include "orvane/renderdata/CameraNodeES20.h"
#include "orvane/renderdata/MeshES20.h"
#include "orvane/scene/Material.h"
#include "orvane/scene/Mesh.h"
#include "orvane/scene/MeshNode.h"

#include <GL/glew.h>

namespace OV
{

namespace
{

constexpr OptionRow kOptions[] = {
    {0, "DEFAULT"},
};

enum Uniform : int
{
    UniformColor,
    UniformMvpMatrix,
    UniformShowFaceSides,
    UniformWorldTransform,
    UniformNumClipPlanes,
    UniformClipPlaneNormals,
    UniformClipPlanePositions,
    UniformClipPlaneOutlineColor,
    UniformClipPlaneOutlineSize,
    UniformPocheColor,
    UniformPocheColorEnabled,
    UniformPointSize,
    UniformIsBackFaces,
    UniformShadowIntensity,
    UniformIsShadow,
};

constexpr IndexedName kUniforms[] = {
    {UniformColor, "u_color"},
    {UniformMvpMatrix, "u_mvpMatrix"},
    {UniformShowFaceSides, "u_showFaceSides"},
    {UniformWorldTransform, "u_worldTransform"},
    {UniformNumClipPlanes, "u_numClipPlanes"},
    {UniformClipPlaneNormals, "u_clipPlaneNormals"},
    {UniformClipPlanePositions, "u_clipPlanePositions"},
    {UniformClipPlaneOutlineColor, "u_clipPlaneOutlineColor"},
    {UniformClipPlaneOutlineSize, "u_clipPlaneOutlineSize"},
    {UniformPocheColor, "u_pocheColor"},
    {UniformPocheColorEnabled, "u_pocheColorEnabled"},
    {UniformPointSize, "u_pointSize"},
    {UniformIsBackFaces, "u_isBackFaces"},
    {UniformShadowIntensity, "u_shadowIntensity"},
    {UniformIsShadow, "u_isShadow"},
};
static_assert(IsDense(kUniforms));

enum Attribute : unsigned
{
    AttributePosition,
};

constexpr IndexedName kAttributes[] = {
    {AttributePosition, "a_position"},
};

// It goes by the name of another effect: that is meant, and names are diagnostic only.
constexpr ProgramTemplate kTemplate = {
    "DepthIdPassEffectES20", Shaders::MonotoneEffectES20Vert, Shaders::MonotoneEffectES20Frag, kOptions, kUniforms,
    kAttributes,
};

constexpr float kPointSize = 6.0f;

/// Gives a new program the one size there is. A node whose first mesh is plain does not set it
/// for the points of its second, which in the first frame would have none, and in the next what
/// an earlier draw had left.
void StartPointSize(unsigned int program)
{
    GLint current = 0;
    glGetIntegerv(GL_CURRENT_PROGRAM, &current);
    glUseProgram(program);
    glUniform1f(glGetUniformLocation(program, kUniforms[UniformPointSize].name), kPointSize);
    glUseProgram(static_cast<GLuint>(current));
}

bool DrawsPoints(const MeshNode& node)
{
    if (node.EachMesh().empty())
    {
        return false;
    }
    const Material* const material = node.EachMesh().front()->GetMaterial();
    return material && (material->GetFlags() & MaterialFlagPoints) != 0;
}

void SetWinding(MeshNode& node)
{
    glFrontFace(node.IsGlobalMirror() ? GL_CW : GL_CCW);
}

} // namespace

/// What BindMeshUniforms sends for each of many nodes.
class MonotoneEffectES20::NodeUniforms
{
public:
    explicit NodeUniforms(MonotoneEffectES20& effect) :
        m_effect(effect), m_viewProjection(effect.m_camera->GetMVP()),
        m_product(effect.m_current, UniformMvpMatrix, effect.Has(UniformMvpMatrix)),
        m_world(effect.m_current, UniformWorldTransform, effect.Has(UniformWorldTransform))
    {
    }

    void Send(MeshNode& node)
    {
        const Matrix& world = *node.GetGlobalMatrix();
        Matrix product;
        detail::Multiply(product.m, m_viewProjection.m, world.m);
        m_product.Send(product);
        SetWinding(node);
        m_effect.SetSurface(&node);
        m_world.Send(world);
    }

private:
    MonotoneEffectES20& m_effect;
    const Matrix& m_viewProjection;
    detail::RepeatedUniform m_product;
    detail::RepeatedUniform m_world;
};

MonotoneEffectES20::MonotoneEffectES20(EffectCache* cache) : MaterialEffectES20(cache)
{
    m_discardsAtPlanes = true;
    m_takesLightShare = true;
}

unsigned int MonotoneEffectES20::CreateProgramForOptions(std::uint64_t options, std::string& name)
{
    const unsigned int program = CreateFromTemplate(kTemplate, options, name);
    if (program != 0)
    {
        StartPointSize(program);
    }
    return program;
}

void MonotoneEffectES20::Apply(MaterialES20*, CameraNodeES20* camera)
{
    m_camera = camera;
    UseOptions(0);
    glDisable(GL_BLEND);
}

void MonotoneEffectES20::Remove()
{
    EndUse();
}

void MonotoneEffectES20::BindMeshAttributes(MeshES20* mesh)
{
    BindStreams(StreamsOf(*mesh));
    Set(UniformShowFaceSides, ShowsFaceSides(mesh) ? 1 : 0);
}

void MonotoneEffectES20::BindStreams(const Streams& streams)
{
    EnableAttribute(AttributePosition, 3, streams.stride, streams.position);
}

void MonotoneEffectES20::BindNoFlags()
{
    Set(UniformShowFaceSides, 0);
}

void MonotoneEffectES20::ReleaseMeshAttributes(MeshES20* mesh)
{
    ReleaseStreams(StreamsOf(*mesh));
}

void MonotoneEffectES20::ReleaseStreams(const Streams&)
{
    DisableAttribute(AttributePosition);
    EndMesh();
}

void MonotoneEffectES20::EndMesh()
{
    glFrontFace(GL_CCW);
}

detail::PlainPointers MonotoneEffectES20::PointersOf(const Streams& behindPosition) const
{
    detail::PlainPointers pointers;
    pointers.Add(AttributePosition, 3, behindPosition.position);
    return pointers;
}

bool MonotoneEffectES20::CanRepeat() const
{
    // Values of clip planes are compared with what is known of them, which NodeUniforms leaves out.
    return !Has(UniformNumClipPlanes);
}

void MonotoneEffectES20::DrawPlain(detail::PlainDraw* draws, detail::PlainDraw* end)
{
    detail::PlainLoop<MonotoneEffectES20>(*this).Draw(draws, end);
}

void MonotoneEffectES20::BindMeshUniforms(MeshNode* node)
{
    Set(UniformMvpMatrix, ModelViewProjection(node));
    SetWinding(*node);
    SetSurface(node);
    Set(UniformWorldTransform, *node->GetGlobalMatrix());
    if (SetClipPlanes(UniformClipPlaneNormals, UniformClipPlanePositions, UniformNumClipPlanes, clipPlanesActive) > 0)
    {
        Set(UniformClipPlaneOutlineColor, s_clipPlaneOutlineColor);
        Set(UniformClipPlaneOutlineSize, s_clipPlaneOutlineSize);
    }
    Set(UniformPocheColor, s_pocheColor);
    Set(UniformPocheColorEnabled, s_pocheColorEnabled ? 1 : 0);
    Set(UniformIsBackFaces, meshNodeFlag ? 1 : 0);
    Set(UniformIsShadow, s_isShadow ? 1 : 0);
    Set(UniformShadowIntensity, s_shadowIntensity);
}

void MonotoneEffectES20::SetSurface(MeshNode* node)
{
    // The vertices hand one number on for all three.
    const float grey = passFlag ? 0.8f : 1.0f;
    if (DrawsPoints(*node))
    {
        Set(UniformColor, Vector(0.0f, 0.0f, 0.0f));
        Set(UniformPointSize, kPointSize);
    }
    else
    {
        Set(UniformColor, Vector(grey, grey, grey));
    }
}

} // namespace OV
