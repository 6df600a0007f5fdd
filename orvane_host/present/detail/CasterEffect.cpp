#define GL_GLEXT_PROTOTYPES

#include "orvane_host/present/detail/CasterEffect.h"

#include "orvane_host/present/shaders/CasterEffect.frag.h"
#include "orvane_host/present/shaders/CasterEffect.vert.h"
#include "orvane/math/Matrix.h"
#include "orvane/math/Transform.h"
#include "orvane/renderdata/MaterialES20.h"
#include "orvane/scene/Material.h"
#include "orvane/scene/MeshNode.h"

#include <GL/gl.h>
#include <GL/glext.h>

#include <glm/gtc/type_ptr.hpp>

#include <algorithm>

namespace OV::Host::Detail
{

namespace
{

enum Option : std::uint64_t
{
    OptionHoles = 1,
    OptionGlass = 2,
};

constexpr OptionRow kOptions[] = {
    {OptionHoles, "HOLES"},
    {OptionGlass, "GLASS"},
};

enum Uniform : int
{
    UniformObjectToClip,
    UniformWorldTransform,
    UniformNumClipPlanes,
    UniformClipPlaneNormals,
    UniformClipPlanePositions,
    UniformOpacity,
    UniformMaps,
    UniformTexture0,
    UniformOpacityMap,
    UniformScale,
};

constexpr IndexedName kUniforms[] = {
    {UniformObjectToClip, "u_objectToClip"},
    {UniformWorldTransform, "u_worldTransform"},
    {UniformNumClipPlanes, "u_numClipPlanes"},
    {UniformClipPlaneNormals, "u_clipPlaneNormals"},
    {UniformClipPlanePositions, "u_clipPlanePositions"},
    {UniformOpacity, "u_opacity"},
    {UniformMaps, "u_maps"},
    {UniformTexture0, "u_texture0"},
    {UniformOpacityMap, "u_opacityMap"},
    {UniformScale, "u_scale"},
};
static_assert(IsDense(kUniforms));

constexpr ProgramTemplate kTemplate = {
    "CasterEffect", Shaders::CasterEffectVert, Shaders::CasterEffectFrag, kOptions, kUniforms, HoleAttributes,
};

constexpr HoleUniforms kHoles = {UniformMaps, UniformTexture0, UniformOpacityMap, UniformScale};

} // namespace

CasterEffect::CasterEffect() : HoleEffect(kHoles) {}

void CasterEffect::Clip(bool clip)
{
    m_clip = clip;
}

unsigned int CasterEffect::CreateProgramForOptions(std::uint64_t options, std::string& name)
{
    return CreateFromTemplate(kTemplate, options, name);
}

void CasterEffect::Apply(MaterialES20* data, CameraNodeES20*)
{
    const Material& material = *data->GetMaterial();
    const bool hasHoles = FindHoles(data);
    UseOptions((hasHoles ? OptionHoles : std::uint64_t(0)) | (m_glass ? OptionGlass : std::uint64_t(0)));
    Set(UniformOpacity, material.GetOpacity());
    BindHoles(data);
    // The sun sees surfaces where they are, whatever the material moves them by for the eye.
    glDisable(GL_POLYGON_OFFSET_FILL);
}

void CasterEffect::BindMeshUniforms(MeshNode* node)
{
    // Meshes and materials switch culling back on.
    glDisable(GL_CULL_FACE);
    // In double: the map may be of a small part of a large scene.
    const auto& rows = node->GetGlobal().GetTransf3d().m;
    glm::dmat4 toWorld(1.0);
    for (int row = 0; row < 3; ++row)
    {
        for (int column = 0; column < 4; ++column)
        {
            toWorld[column][row] = rows[row][column];
        }
    }
    const glm::dmat4 toClip = m_worldToClip * toWorld;
    Matrix matrix;
    std::transform(glm::value_ptr(toClip), glm::value_ptr(toClip) + 16, matrix.m,
                   [](double value) { return static_cast<float>(value); });
    Set(UniformObjectToClip, matrix);
    Set(UniformWorldTransform, *node->GetGlobalMatrix());
    SetClipPlanes(UniformClipPlaneNormals, UniformClipPlanePositions, UniformNumClipPlanes, m_clip);
}

} // namespace OV::Host::Detail
