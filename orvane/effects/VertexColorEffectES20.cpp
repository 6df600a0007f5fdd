#include "orvane/effects/VertexColorEffectES20.h"

#include "orvane/effects/detail/ViewSpaceLight.h"
#include "orvane/effects/shaders/VertexColorEffectES20.frag.h"
#include "orvane/effects/shaders/VertexColorEffectES20.vert.h"
#include "orvane/math/Matrix.h"
#include "orvane/math/Matrix3x3.h"
#include "orvane/renderdata/MaterialES20.h"
#include "orvane/renderdata/MeshES20.h"
#include "orvane/scene/Material.h"
#include "orvane/scene/MeshNode.h"

namespace OV
{

namespace
{

enum Uniform : int
{
    UniformEnableLight,
    UniformLightDir,
    UniformMvpMatrix,
    UniformNormalMatrix,
    UniformWorldTransform,
    UniformNumClipPlanes,
    UniformClipPlaneNormals,
    UniformClipPlanePositions,
    UniformClipPlaneOutlineColor,
    UniformClipPlaneOutlineSize,
};

constexpr IndexedName kUniforms[] = {
    {UniformEnableLight, "u_enableLight"},
    {UniformLightDir, "u_lightDir"},
    {UniformMvpMatrix, "u_mvpMatrix"},
    {UniformNormalMatrix, "u_normalMatrix"},
    {UniformWorldTransform, "u_worldTransform"},
    {UniformNumClipPlanes, "u_numClipPlanes"},
    {UniformClipPlaneNormals, "u_clipPlaneNormals"},
    {UniformClipPlanePositions, "u_clipPlanePositions"},
    {UniformClipPlaneOutlineColor, "u_clipPlaneOutlineColor"},
    {UniformClipPlaneOutlineSize, "u_clipPlaneOutlineSize"},
};
static_assert(IsDense(kUniforms));

enum Attribute : unsigned
{
    AttributePosition,
    AttributeNormal,
    AttributeColor,
};

constexpr IndexedName kAttributes[] = {
    {AttributePosition, "a_position"},
    {AttributeNormal, "a_normal"},
    {AttributeColor, "a_vcolor"},
};

constexpr ProgramTemplate kTemplate = {
    "VertexColorEffectES20",
    Shaders::VertexColorEffectES20Vert,
    Shaders::VertexColorEffectES20Frag,
    {},
    kUniforms,
    kAttributes,
};

} // namespace

VertexColorEffectES20::VertexColorEffectES20(EffectCache* cache) : MaterialEffectES20(cache)
{
    m_discardsAtPlanes = true;
    m_takesLightShare = true;
}

unsigned int VertexColorEffectES20::CreateProgramForOptions(std::uint64_t options, std::string& name)
{
    return CreateFromTemplate(kTemplate, options, name);
}

void VertexColorEffectES20::Apply(MaterialES20* data, CameraNodeES20* camera)
{
    UseOptions(0);
    const bool unlit = (data->GetMaterial()->GetFlags() & MaterialFlagUnlit) != 0;
    Set(UniformEnableLight, unlit ? 0 : 1);
    Set(UniformLightDir, Detail::kViewSpaceLight);
    m_camera = camera;
}

void VertexColorEffectES20::Remove()
{
    EndUse();
}

void VertexColorEffectES20::BindMeshAttributes(MeshES20* mesh)
{
    const int stride = mesh->GetStride();
    EnableAttribute(AttributePosition, 3, stride, mesh->GetPositionOffset());
    EnableStream(AttributeNormal, 3, stride, mesh->GetNormalOffset());
    EnableStream(AttributeColor, 4, stride, mesh->GetColorOffset());
}

void VertexColorEffectES20::ReleaseMeshAttributes(MeshES20* mesh)
{
    DisableStream(AttributeColor, mesh->GetColorOffset());
    DisableStream(AttributeNormal, mesh->GetNormalOffset());
    DisableAttribute(AttributePosition);
}

void VertexColorEffectES20::BindMeshUniforms(MeshNode* node)
{
    Set(UniformMvpMatrix, ModelViewProjection(node));
    Set(UniformNormalMatrix, Detail::ViewSpaceNormalMatrix(*m_camera, *node));
    Set(UniformWorldTransform, *node->GetGlobalMatrix());
    if (SetClipPlanes(UniformClipPlaneNormals, UniformClipPlanePositions, UniformNumClipPlanes, true) > 0)
    {
        Set(UniformClipPlaneOutlineColor, s_clipPlaneOutlineColor);
        Set(UniformClipPlaneOutlineSize, s_clipPlaneOutlineSize);
    }
}

} // namespace OV
