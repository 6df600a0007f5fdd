#include "orvane/renderer/detail/FrameState.h"

#include <GL/glew.h>

namespace OV::Detail
{

namespace
{

/// What is off in every frame. Names that a context does not know would be errors there.
struct Switch
{
    GLenum capability;
    bool (*isKnown)();
};

bool Always()
{
    return true;
}

constexpr Switch kSwitches[] = {
    {GL_ALPHA_TEST, Always},
    {GL_COLOR_LOGIC_OP, Always},
    {GL_POLYGON_SMOOTH, Always},
    {GL_POLYGON_STIPPLE, Always},
    {GL_POINT_SMOOTH, Always},
    {GL_POINT_SPRITE, Always},
    {GL_SAMPLE_ALPHA_TO_COVERAGE, Always},
    {GL_SAMPLE_ALPHA_TO_ONE, Always},
    {GL_SAMPLE_COVERAGE, Always},
    {GL_RASTERIZER_DISCARD, [] { return GLEW_VERSION_3_0 != 0; }},
    {GL_FRAMEBUFFER_SRGB, [] { return GLEW_VERSION_3_0 != 0; }},
    {GL_PRIMITIVE_RESTART, [] { return GLEW_VERSION_3_1 != 0; }},
    {GL_DEPTH_CLAMP, [] { return GLEW_ARB_depth_clamp != 0; }},
    {GL_SAMPLE_MASK, [] { return GLEW_VERSION_3_2 != 0; }},
    {GL_PRIMITIVE_RESTART_FIXED_INDEX, [] { return GLEW_VERSION_4_3 != 0; }},
};

/// Effects look up textures in no unit past these.
constexpr GLuint kTextureUnits = 8;

/// A sampler of the host's would take the place of what the textures themselves say.
void UnbindSamplers()
{
    if (GLEW_ARB_sampler_objects)
    {
        for (GLuint unit = 0; unit < kTextureUnits; ++unit)
        {
            glBindSampler(unit, 0);
        }
    }
}

} // namespace

void SetFrameState()
{
    for (const Switch& item : kSwitches)
    {
        if (item.isKnown())
        {
            glDisable(item.capability);
        }
    }
    // Not the host's: enabling attributes and binding indices would change it for good.
    if (GLEW_ARB_vertex_array_object)
    {
        glBindVertexArray(0);
    }
    if (GLEW_ARB_clip_control)
    {
        glClipControl(GL_LOWER_LEFT, GL_NEGATIVE_ONE_TO_ONE);
    }
    UnbindSamplers();
    glFrontFace(GL_CCW);
    glCullFace(GL_BACK);
    glPolygonMode(GL_FRONT_AND_BACK, GL_FILL);
    glDepthFunc(GL_LESS);
    glClearDepth(1.0);
}

} // namespace OV::Detail
