#define GL_GLEXT_PROTOTYPES

#include "orvane_host/context/GLStateGuard.h"

#include "orvane_host/context/detail/GLVersion.h"
#include "orvane_host/context/detail/VertexAttributes.h"

#include <GL/gl.h>
#include <GL/glext.h>

#include <algorithm>
#include <array>
#include <iterator>
#include <optional>
#include <utility>
#include <vector>

namespace OV::Host
{

namespace
{

/// Effects look up textures in no unit past these.
constexpr GLuint kTextureUnits = 8;

/// Something to switch on and off, and the version that knows it; names that a context does not
/// know would be errors there.
struct Switch
{
    GLenum capability;
    int major = 1;
    int minor = 0;
    bool isOnAtFirst = false;
};

/// That a frame may feel. glPushAttrib has those of GL 2.1 too, but for one or the other in drivers.
constexpr Switch kSwitches[] = {
    {GL_ALPHA_TEST},
    {GL_BLEND},
    {GL_COLOR_LOGIC_OP},
    {GL_COLOR_SUM},
    {GL_CULL_FACE},
    {GL_DEPTH_TEST},
    {GL_FOG},
    {GL_INDEX_LOGIC_OP},
    {GL_LIGHTING},
    {GL_LINE_SMOOTH},
    {GL_LINE_STIPPLE},
    {GL_POINT_SMOOTH},
    {GL_POINT_SPRITE},
    {GL_POLYGON_OFFSET_FILL},
    {GL_POLYGON_OFFSET_LINE},
    {GL_POLYGON_OFFSET_POINT},
    {GL_POLYGON_SMOOTH},
    {GL_POLYGON_STIPPLE},
    {GL_SAMPLE_ALPHA_TO_COVERAGE},
    {GL_SAMPLE_ALPHA_TO_ONE},
    {GL_SAMPLE_COVERAGE},
    {GL_SCISSOR_TEST},
    {GL_STENCIL_TEST},
    {GL_VERTEX_PROGRAM_TWO_SIDE},
    {GL_DITHER, 1, 0, true},
    {GL_MULTISAMPLE, 1, 3, true},
    {GL_PROGRAM_POINT_SIZE, 2, 0},
    {GL_RASTERIZER_DISCARD, 3, 0},
    {GL_FRAMEBUFFER_SRGB, 3, 0},
    {GL_PRIMITIVE_RESTART, 3, 1},
    {GL_DEPTH_CLAMP, 3, 2},
    {GL_SAMPLE_MASK, 3, 2},
    {GL_TEXTURE_CUBE_MAP_SEAMLESS, 3, 2},
    {GL_SAMPLE_SHADING, 4, 0},
    {GL_PRIMITIVE_RESTART_FIXED_INDEX, 4, 3},
};

GLint Get(GLenum query)
{
    GLint value = 0;
    glGetIntegerv(query, &value);
    return value;
}

GLuint GetName(GLenum query)
{
    return static_cast<GLuint>(Get(query));
}

void Set(GLenum capability, bool on)
{
    (on ? glEnable : glDisable)(capability);
}

void ResetFragments()
{
    glAlphaFunc(GL_ALWAYS, 0.0f);
    glBlendColor(0.0f, 0.0f, 0.0f, 0.0f);
    glBlendEquation(GL_FUNC_ADD);
    glBlendFunc(GL_ONE, GL_ZERO);
    glLogicOp(GL_COPY);
    glColorMask(GL_TRUE, GL_TRUE, GL_TRUE, GL_TRUE);
    glDepthMask(GL_TRUE);
    glDepthFunc(GL_LESS);
    glDepthRange(0.0, 1.0);
    glStencilFunc(GL_ALWAYS, 0, ~0u);
    glStencilOp(GL_KEEP, GL_KEEP, GL_KEEP);
    glStencilMask(~0u);
    glSampleCoverage(1.0f, GL_FALSE);
    glClearColor(0.0f, 0.0f, 0.0f, 0.0f);
    glClearDepth(1.0);
    glClearStencil(0);
}

void ResetRasterizing()
{
    glCullFace(GL_BACK);
    glFrontFace(GL_CCW);
    glPolygonMode(GL_FRONT_AND_BACK, GL_FILL);
    glPolygonOffset(0.0f, 0.0f);
    glLineWidth(1.0f);
    glPointSize(1.0f);
    glPointParameterf(GL_POINT_SIZE_MIN, 0.0f);
    glPointParameterf(GL_POINT_FADE_THRESHOLD_SIZE, 1.0f);
    glPointParameteri(GL_POINT_SPRITE_COORD_ORIGIN, GL_UPPER_LEFT);
    GLfloat largest = 0.0f;
    GLfloat range[2] = {1.0f, 1.0f};
    glGetFloatv(GL_ALIASED_POINT_SIZE_RANGE, range);
    largest = std::max(range[0], range[1]);
    glPointParameterf(GL_POINT_SIZE_MAX, largest);
    const GLfloat attenuation[] = {1.0f, 0.0f, 0.0f};
    glPointParameterfv(GL_POINT_DISTANCE_ATTENUATION, attenuation);
}

/// What pictures go through on the way to and from GL.
void ResetPixels()
{
    for (const GLenum store :
         {GL_UNPACK_SWAP_BYTES, GL_UNPACK_LSB_FIRST, GL_UNPACK_ROW_LENGTH, GL_UNPACK_IMAGE_HEIGHT,
          GL_UNPACK_SKIP_ROWS, GL_UNPACK_SKIP_PIXELS, GL_UNPACK_SKIP_IMAGES, GL_PACK_SWAP_BYTES,
          GL_PACK_LSB_FIRST, GL_PACK_ROW_LENGTH, GL_PACK_IMAGE_HEIGHT, GL_PACK_SKIP_ROWS, GL_PACK_SKIP_PIXELS,
          GL_PACK_SKIP_IMAGES})
    {
        glPixelStorei(store, 0);
    }
    glPixelStorei(GL_UNPACK_ALIGNMENT, 4);
    glPixelStorei(GL_PACK_ALIGNMENT, 4);
    for (const GLenum scale : {GL_RED_SCALE, GL_GREEN_SCALE, GL_BLUE_SCALE, GL_ALPHA_SCALE, GL_DEPTH_SCALE})
    {
        glPixelTransferf(scale, 1.0f);
    }
    for (const GLenum bias : {GL_RED_BIAS, GL_GREEN_BIAS, GL_BLUE_BIAS, GL_ALPHA_BIAS, GL_DEPTH_BIAS})
    {
        glPixelTransferf(bias, 0.0f);
    }
    for (const GLenum index : {GL_MAP_COLOR, GL_MAP_STENCIL, GL_INDEX_SHIFT, GL_INDEX_OFFSET})
    {
        glPixelTransferi(index, 0);
    }
}

void ResetClientArrays()
{
    for (const GLenum array : {GL_VERTEX_ARRAY, GL_NORMAL_ARRAY, GL_COLOR_ARRAY, GL_INDEX_ARRAY,
                               GL_EDGE_FLAG_ARRAY, GL_SECONDARY_COLOR_ARRAY, GL_FOG_COORD_ARRAY})
    {
        glDisableClientState(array);
    }
    const GLint units = Get(GL_MAX_TEXTURE_COORDS);
    for (GLint unit = 0; unit < units; ++unit)
    {
        glClientActiveTexture(static_cast<GLenum>(GL_TEXTURE0 + unit));
        glDisableClientState(GL_TEXTURE_COORD_ARRAY);
    }
    glClientActiveTexture(GL_TEXTURE0);
}

} // namespace

struct GLStateGuard::Saved
{
    Saved();

    void Reset() const;
    void Restore() const;

    Detail::GLVersion version;
    bool hasVertexArrays = version.Has(3, 0, "GL_ARB_vertex_array_object");
    bool hasSamplers = version.Has(3, 3, "GL_ARB_sampler_objects");
    bool hasClipControl = version.Has(4, 5, "GL_ARB_clip_control");
    bool hasTwoFramebuffers = version.Has(3, 0, "GL_ARB_framebuffer_object");

    GLuint drawFramebuffer = 0;
    GLuint readFramebuffer = 0;
    GLuint renderbuffer = 0;
    GLuint program = 0;
    GLuint vertexArray = 0;
    GLuint arrayBuffer = 0;
    GLuint elementBuffer = 0; ///< of no vertex array
    GLuint packBuffer = 0;
    GLuint unpackBuffer = 0;
    GLenum activeUnit = GL_TEXTURE0;
    struct Unit
    {
        GLuint texture = 0;
        GLuint cube = 0;
        GLuint sampler = 0;
    };
    std::array<Unit, kTextureUnits> units{};
    std::vector<std::pair<const Switch*, bool>> switches; ///< that the version knows, as they were
    std::array<GLint, 2> clipControl{};
    GLint provokingVertex = 0;
    GLint sampleMask = 0;
    GLfloat sampleShading = 0.0f;
    std::array<GLint, 3> clampedColors{};               ///< of vertices, fragments and reading
    std::optional<Detail::VertexAttributes> attributes; ///< of no vertex array
};

namespace
{

constexpr GLenum kClampedColors[] = {GL_CLAMP_VERTEX_COLOR, GL_CLAMP_FRAGMENT_COLOR, GL_CLAMP_READ_COLOR};
constexpr GLenum kClampedColorsAtFirst[] = {GL_TRUE, GL_FIXED_ONLY, GL_FIXED_ONLY};

} // namespace

GLStateGuard::Saved::Saved()
{
    drawFramebuffer = GetName(GL_DRAW_FRAMEBUFFER_BINDING);
    readFramebuffer = hasTwoFramebuffers ? GetName(GL_READ_FRAMEBUFFER_BINDING) : drawFramebuffer;
    renderbuffer = GetName(GL_RENDERBUFFER_BINDING);
    program = GetName(GL_CURRENT_PROGRAM);
    arrayBuffer = GetName(GL_ARRAY_BUFFER_BINDING);
    packBuffer = GetName(GL_PIXEL_PACK_BUFFER_BINDING);
    unpackBuffer = GetName(GL_PIXEL_UNPACK_BUFFER_BINDING);
    activeUnit = static_cast<GLenum>(Get(GL_ACTIVE_TEXTURE));
    for (GLuint i = 0; i < kTextureUnits; ++i)
    {
        glActiveTexture(GL_TEXTURE0 + i);
        units[i].texture = GetName(GL_TEXTURE_BINDING_2D);
        units[i].cube = GetName(GL_TEXTURE_BINDING_CUBE_MAP);
        units[i].sampler = hasSamplers ? GetName(GL_SAMPLER_BINDING) : 0;
    }
    glActiveTexture(activeUnit);
    for (const Switch& item : kSwitches)
    {
        if (version.Has(item.major, item.minor))
        {
            switches.push_back({&item, glIsEnabled(item.capability) == GL_TRUE});
        }
    }
    if (hasClipControl)
    {
        clipControl = {Get(GL_CLIP_ORIGIN), Get(GL_CLIP_DEPTH_MODE)};
    }
    if (version.Has(3, 0))
    {
        std::transform(std::begin(kClampedColors), std::end(kClampedColors), clampedColors.begin(), Get);
    }
    if (version.Has(3, 2))
    {
        provokingVertex = Get(GL_PROVOKING_VERTEX);
        glGetIntegeri_v(GL_SAMPLE_MASK_VALUE, 0, &sampleMask);
    }
    if (version.Has(4, 0))
    {
        glGetFloatv(GL_MIN_SAMPLE_SHADING_VALUE, &sampleShading);
    }
    // The engine draws without a vertex array, whose attributes and indices are its own.
    if (hasVertexArrays)
    {
        vertexArray = GetName(GL_VERTEX_ARRAY_BINDING);
        glBindVertexArray(0);
    }
    elementBuffer = GetName(GL_ELEMENT_ARRAY_BUFFER_BINDING);
    attributes.emplace(version);
    glPushClientAttrib(static_cast<GLbitfield>(GL_CLIENT_ALL_ATTRIB_BITS));
    glPushAttrib(GL_ALL_ATTRIB_BITS);
}

void GLStateGuard::Saved::Reset() const
{
    for (const auto& item : switches)
    {
        Set(item.first->capability, item.first->isOnAtFirst);
    }
    const GLint planes = Get(GL_MAX_CLIP_PLANES);
    for (GLint i = 0; i < planes; ++i)
    {
        Set(static_cast<GLenum>(GL_CLIP_PLANE0 + i), false);
    }
    ResetFragments();
    ResetRasterizing();
    ResetPixels();
    ResetClientArrays();
    attributes->Reset();
    glUseProgram(0);
    for (const GLenum buffer :
         {GL_ARRAY_BUFFER, GL_ELEMENT_ARRAY_BUFFER, GL_PIXEL_PACK_BUFFER, GL_PIXEL_UNPACK_BUFFER})
    {
        glBindBuffer(buffer, 0);
    }
    for (GLuint i = 0; i < kTextureUnits; ++i)
    {
        glActiveTexture(GL_TEXTURE0 + i);
        glBindTexture(GL_TEXTURE_2D, 0);
        glBindTexture(GL_TEXTURE_CUBE_MAP, 0);
        glTexEnvf(GL_TEXTURE_FILTER_CONTROL, GL_TEXTURE_LOD_BIAS, 0.0f);
        if (hasSamplers)
        {
            glBindSampler(i, 0);
        }
    }
    glActiveTexture(GL_TEXTURE0);
    if (hasClipControl)
    {
        glClipControl(GL_LOWER_LEFT, GL_NEGATIVE_ONE_TO_ONE);
    }
    for (std::size_t i = 0; i < clampedColors.size() && version.Has(3, 0); ++i)
    {
        glClampColor(kClampedColors[i], kClampedColorsAtFirst[i]);
    }
    if (version.Has(3, 2))
    {
        glProvokingVertex(GL_LAST_VERTEX_CONVENTION);
        glSampleMaski(0, ~0u);
    }
    if (version.Has(4, 0))
    {
        glMinSampleShading(0.0f);
    }
}

void GLStateGuard::Saved::Restore() const
{
    // First: the buffers that are drawn to and read from, which the stack holds, are those of the
    // framebuffers bound.
    if (hasTwoFramebuffers)
    {
        glBindFramebuffer(GL_DRAW_FRAMEBUFFER, drawFramebuffer);
        glBindFramebuffer(GL_READ_FRAMEBUFFER, readFramebuffer);
    }
    else
    {
        glBindFramebuffer(GL_FRAMEBUFFER, drawFramebuffer);
    }
    glBindRenderbuffer(GL_RENDERBUFFER, renderbuffer);
    if (hasVertexArrays)
    {
        glBindVertexArray(0);
    }
    glPopAttrib();
    glPopClientAttrib();
    attributes->Restore();
    glBindBuffer(GL_ELEMENT_ARRAY_BUFFER, elementBuffer);
    if (hasVertexArrays)
    {
        glBindVertexArray(vertexArray);
    }
    glBindBuffer(GL_ARRAY_BUFFER, arrayBuffer);
    glBindBuffer(GL_PIXEL_PACK_BUFFER, packBuffer);
    glBindBuffer(GL_PIXEL_UNPACK_BUFFER, unpackBuffer);
    for (GLuint i = 0; i < kTextureUnits; ++i)
    {
        glActiveTexture(GL_TEXTURE0 + i);
        glBindTexture(GL_TEXTURE_2D, units[i].texture);
        glBindTexture(GL_TEXTURE_CUBE_MAP, units[i].cube);
        if (hasSamplers)
        {
            glBindSampler(i, units[i].sampler);
        }
    }
    glActiveTexture(activeUnit);
    for (const auto& [item, isOn] : switches)
    {
        Set(item->capability, isOn);
    }
    if (hasClipControl)
    {
        glClipControl(static_cast<GLenum>(clipControl[0]), static_cast<GLenum>(clipControl[1]));
    }
    for (std::size_t i = 0; i < clampedColors.size() && version.Has(3, 0); ++i)
    {
        glClampColor(kClampedColors[i], static_cast<GLenum>(clampedColors[i]));
    }
    if (version.Has(3, 2))
    {
        glProvokingVertex(static_cast<GLenum>(provokingVertex));
        glSampleMaski(0, static_cast<GLbitfield>(sampleMask));
    }
    if (version.Has(4, 0))
    {
        glMinSampleShading(sampleShading);
    }
    glUseProgram(program);
}

GLStateGuard::GLStateGuard()
{
    const bool hasRoom = Get(GL_ATTRIB_STACK_DEPTH) < Get(GL_MAX_ATTRIB_STACK_DEPTH) &&
                         Get(GL_CLIENT_ATTRIB_STACK_DEPTH) < Get(GL_MAX_CLIENT_ATTRIB_STACK_DEPTH);
    if (hasRoom)
    {
        m_saved = std::make_unique<Saved>();
        m_saved->Reset();
    }
}

GLStateGuard::~GLStateGuard()
{
    if (m_saved)
    {
        m_saved->Restore();
    }
}

} // namespace OV::Host
