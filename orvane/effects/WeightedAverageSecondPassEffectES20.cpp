#include "orvane/effects/WeightedAverageSecondPassEffectES20.h"

#include "orvane/effects/shaders/WeightedAverageSecondPassEffectES20.frag.h"
#include "orvane/effects/shaders/WeightedAverageSecondPassEffectES20.vert.h"
#include "orvane/math/Matrix.h"
#include "orvane/renderdata/MeshES20.h"

#include <GL/glew.h>

namespace OV
{

namespace
{

enum Uniform : int
{
    UniformMvpMatrix,
};

constexpr IndexedName kUniforms[] = {
    {UniformMvpMatrix, "u_mvpMatrix"},
};
static_assert(IsDense(kUniforms));

enum Attribute : unsigned
{
    AttributePosition,
};

constexpr IndexedName kAttributes[] = {
    {AttributePosition, "a_position"},
};

constexpr ProgramTemplate kTemplate = {
    "WeightedAverageSecondPassEffect",
    Shaders::WeightedAverageSecondPassEffectES20Vert,
    Shaders::WeightedAverageSecondPassEffectES20Frag,
    {},
    kUniforms,
    kAttributes,
};

} // namespace

WeightedAverageSecondPassEffectES20::WeightedAverageSecondPassEffectES20(EffectCache* cache) :
    MaterialEffectES20(cache)
{
}

unsigned int WeightedAverageSecondPassEffectES20::CreateProgramForOptions(std::uint64_t options, std::string& name)
{
    return CreateFromTemplate(kTemplate, options, name);
}

void WeightedAverageSecondPassEffectES20::Apply(MaterialES20*, CameraNodeES20* camera)
{
    UseOptions(0);
    glEnable(GL_BLEND);
    glBlendFunc(GL_ONE, GL_ONE);
    m_camera = camera;
}

void WeightedAverageSecondPassEffectES20::Remove()
{
    EndUse();
    glDisable(GL_BLEND);
}

void WeightedAverageSecondPassEffectES20::BindMeshAttributes(MeshES20* mesh)
{
    EnableAttribute(AttributePosition, 3, mesh->GetStride(), mesh->GetPositionOffset());
}

void WeightedAverageSecondPassEffectES20::ReleaseMeshAttributes(MeshES20*)
{
    DisableAttribute(AttributePosition);
}

void WeightedAverageSecondPassEffectES20::BindMeshUniforms(MeshNode* node)
{
    Set(UniformMvpMatrix, ModelViewProjection(node));
}

} // namespace OV
