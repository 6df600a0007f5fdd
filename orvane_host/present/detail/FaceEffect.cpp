#include "orvane_host/present/detail/FaceEffect.h"

#include "orvane_host/present/shaders/FaceEffect.frag.h"
#include "orvane_host/present/shaders/FaceEffect.vert.h"
#include "orvane/math/Matrix.h"
#include "orvane/math/Transform.h"
#include "orvane/renderdata/CameraNodeES20.h"
#include "orvane/renderdata/MaterialES20.h"
#include "orvane/scene/CameraNode.h"
#include "orvane/scene/Material.h"
#include "orvane/scene/MeshNode.h"

#include <GL/gl.h>

#include <algorithm>
#include <cmath>

namespace OV::Host::Detail
{

namespace
{

enum Option : std::uint64_t
{
    OptionHoles = 1,
};

constexpr OptionRow kOptions[] = {
    {OptionHoles, "HOLES"},
};

enum Uniform : int
{
    UniformObjectToClip,
    UniformObjectToView,
    UniformWorldTransform,
    UniformNumClipPlanes,
    UniformClipPlaneNormals,
    UniformClipPlanePositions,
    UniformIsPerspective,
    UniformMaps,
    UniformTexture0,
    UniformOpacityMap,
    UniformScale,
};

constexpr IndexedName kUniforms[] = {
    {UniformObjectToClip, "u_objectToClip"},
    {UniformObjectToView, "u_objectToView"},
    {UniformWorldTransform, "u_worldTransform"},
    {UniformNumClipPlanes, "u_numClipPlanes"},
    {UniformClipPlaneNormals, "u_clipPlaneNormals"},
    {UniformClipPlanePositions, "u_clipPlanePositions"},
    {UniformIsPerspective, "u_isPerspective"},
    {UniformMaps, "u_maps"},
    {UniformTexture0, "u_texture0"},
    {UniformOpacityMap, "u_opacityMap"},
    {UniformScale, "u_scale"},
};
static_assert(IsDense(kUniforms));

constexpr ProgramTemplate kTemplate = {
    "FaceEffect", Shaders::FaceEffectVert, Shaders::FaceEffectFrag, kOptions, kUniforms, HoleAttributes,
};

constexpr HoleUniforms kHoles = {UniformMaps, UniformTexture0, UniformOpacityMap, UniformScale};

/// Units in which pixels are neither so large nor so small that the square of their area leaves floats. A power of
/// two, so that no digit changes.
double PerUnitFor(const CameraNode& camera)
{
    float nearest = 0.0f;
    float farthest = 0.0f;
    camera.GetNearFar(nearest, farthest);
    const double between = std::sqrt(std::max(1e-6 * farthest, static_cast<double>(nearest)) * farthest);
    return between > 0.0 && std::isfinite(between) ? std::ldexp(1.0, -std::ilogb(between)) : 1.0;
}

} // namespace

FaceEffect::FaceEffect() : HoleEffect(kHoles) {}

unsigned int FaceEffect::CreateProgramForOptions(std::uint64_t options, std::string& name)
{
    return CreateFromTemplate(kTemplate, options, name);
}

void FaceEffect::Apply(MaterialES20* data, CameraNodeES20* camera)
{
    m_camera = camera;
    m_perUnit = PerUnitFor(*camera->GetCameraNode());
    const bool hasHoles = FindHoles(data);
    UseOptions(hasHoles ? OptionHoles : std::uint64_t(0));
    Set(UniformIsPerspective, camera->GetCameraNode()->GetProjection() == CameraNode::Perspective ? 1 : 0);
    BindHoles(data);
    glDisable(GL_BLEND);
}

void FaceEffect::BindMeshUniforms(MeshNode* node)
{
    // Multiplied in double: far from the origin nothing else leaves differences of pixels.
    Transform toView;
    toView.Multiply(m_camera->GetInvCamT(), node->GetGlobal());
    const auto& rows = toView.GetTransf3d().m;
    Matrix matrix;
    for (int row = 0; row < 4; ++row)
    {
        for (int column = 0; column < 4; ++column)
        {
            matrix.m[column * 4 + row] =
                row < 3 ? static_cast<float>(m_perUnit * rows[row][column]) : column == 3 ? 1.0f : 0.0f;
        }
    }
    Set(UniformObjectToView, matrix);
    Set(UniformObjectToClip, ModelViewProjection(node));
    Set(UniformWorldTransform, *node->GetGlobalMatrix());
    SetClipPlanes(UniformClipPlaneNormals, UniformClipPlanePositions, UniformNumClipPlanes, clipPlanesActive);
}

} // namespace OV::Host::Detail
