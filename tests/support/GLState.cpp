#include "tests/support/GLState.h"

#include "orvane_host/context/HeadlessContext.h"

#include <GL/gl.h>
#include <GL/glext.h>

#include <algorithm>
#include <map>
#include <stdexcept>
#include <string>
#include <type_traits>

namespace OV::Test
{

namespace
{

constexpr int TextureUnits = 8;
constexpr int VertexAttributes = 16;

struct Functions
{
    decltype(&::glGetError) getError;
    decltype(&::glGetDoublev) getDoublev;
    decltype(&::glGetIntegerv) getIntegerv;
    decltype(&::glIsEnabled) isEnabled;
    decltype(&::glEnable) enable;
    decltype(&::glDisable) disable;
    decltype(&::glDepthFunc) depthFunc;
    decltype(&::glDepthMask) depthMask;
    decltype(&::glColorMask) colorMask;
    decltype(&::glStencilMask) stencilMask;
    decltype(&::glStencilFunc) stencilFunc;
    decltype(&::glStencilOp) stencilOp;
    decltype(&::glClear) clear;
    decltype(&::glClearColor) clearColor;
    decltype(&::glClearDepth) clearDepth;
    decltype(&::glClearStencil) clearStencil;
    decltype(&::glBlendFunc) blendFunc;
    decltype(&::glCullFace) cullFace;
    decltype(&::glFrontFace) frontFace;
    decltype(&::glPolygonMode) polygonMode;
    decltype(&::glLineWidth) lineWidth;
    decltype(&::glPixelStorei) pixelStorei;
    decltype(&::glBindTexture) bindTexture;
    decltype(&::glIsTexture) isTexture;
    PFNGLBLENDEQUATIONPROC blendEquation;
    PFNGLACTIVETEXTUREPROC activeTexture;
    PFNGLUSEPROGRAMPROC useProgram;
    PFNGLBINDBUFFERPROC bindBuffer;
    PFNGLGETVERTEXATTRIBIVPROC getVertexAttribiv;
    PFNGLDISABLEVERTEXATTRIBARRAYPROC disableVertexAttribArray;
    PFNGLISBUFFERPROC isBuffer;
    PFNGLISPROGRAMPROC isProgram;
    PFNGLISSHADERPROC isShader;
    PFNGLISFRAMEBUFFERPROC isFramebuffer;
    PFNGLISRENDERBUFFERPROC isRenderbuffer;
};

template <typename Function>
void Fetch(Function& function, const char* name)
{
    function = reinterpret_cast<Function>(Host::HeadlessContext::GetProcAddress(name));
    if (!function)
    {
        throw std::runtime_error(std::string("the GL driver lacks ") + name);
    }
}

Functions FetchAll()
{
    Functions f{};
    Fetch(f.getError, "glGetError");
    Fetch(f.getDoublev, "glGetDoublev");
    Fetch(f.getIntegerv, "glGetIntegerv");
    Fetch(f.isEnabled, "glIsEnabled");
    Fetch(f.enable, "glEnable");
    Fetch(f.disable, "glDisable");
    Fetch(f.depthFunc, "glDepthFunc");
    Fetch(f.depthMask, "glDepthMask");
    Fetch(f.colorMask, "glColorMask");
    Fetch(f.stencilMask, "glStencilMask");
    Fetch(f.stencilFunc, "glStencilFunc");
    Fetch(f.stencilOp, "glStencilOp");
    Fetch(f.clear, "glClear");
    Fetch(f.clearColor, "glClearColor");
    Fetch(f.clearDepth, "glClearDepth");
    Fetch(f.clearStencil, "glClearStencil");
    Fetch(f.blendFunc, "glBlendFunc");
    Fetch(f.cullFace, "glCullFace");
    Fetch(f.frontFace, "glFrontFace");
    Fetch(f.polygonMode, "glPolygonMode");
    Fetch(f.lineWidth, "glLineWidth");
    Fetch(f.pixelStorei, "glPixelStorei");
    Fetch(f.bindTexture, "glBindTexture");
    Fetch(f.isTexture, "glIsTexture");
    Fetch(f.blendEquation, "glBlendEquation");
    Fetch(f.activeTexture, "glActiveTexture");
    Fetch(f.useProgram, "glUseProgram");
    Fetch(f.bindBuffer, "glBindBuffer");
    Fetch(f.getVertexAttribiv, "glGetVertexAttribiv");
    Fetch(f.disableVertexAttribArray, "glDisableVertexAttribArray");
    Fetch(f.isBuffer, "glIsBuffer");
    Fetch(f.isProgram, "glIsProgram");
    Fetch(f.isShader, "glIsShader");
    Fetch(f.isFramebuffer, "glIsFramebuffer");
    Fetch(f.isRenderbuffer, "glIsRenderbuffer");
    return f;
}

const Functions& GL()
{
    static const Functions functions = FetchAll();
    return functions;
}

struct NamedValue
{
    const char* name;
    GLenum query;
    int count;
};

constexpr NamedValue Values[] = {
    {"draw framebuffer", GL_DRAW_FRAMEBUFFER_BINDING, 1},
    {"read framebuffer", GL_READ_FRAMEBUFFER_BINDING, 1},
    {"renderbuffer", GL_RENDERBUFFER_BINDING, 1},
    {"viewport", GL_VIEWPORT, 4},
    {"scissor box", GL_SCISSOR_BOX, 4},
    {"clear colour", GL_COLOR_CLEAR_VALUE, 4},
    {"clear depth", GL_DEPTH_CLEAR_VALUE, 1},
    {"clear stencil", GL_STENCIL_CLEAR_VALUE, 1},
    {"colour mask", GL_COLOR_WRITEMASK, 4},
    {"depth mask", GL_DEPTH_WRITEMASK, 1},
    {"depth function", GL_DEPTH_FUNC, 1},
    {"stencil mask", GL_STENCIL_WRITEMASK, 1},
    {"stencil function", GL_STENCIL_FUNC, 1},
    {"stencil reference", GL_STENCIL_REF, 1},
    {"stencil operation on fail", GL_STENCIL_FAIL, 1},
    {"stencil operation on depth fail", GL_STENCIL_PASS_DEPTH_FAIL, 1},
    {"stencil operation on pass", GL_STENCIL_PASS_DEPTH_PASS, 1},
    {"blend source", GL_BLEND_SRC_RGB, 1},
    {"blend destination", GL_BLEND_DST_RGB, 1},
    {"blend source alpha", GL_BLEND_SRC_ALPHA, 1},
    {"blend destination alpha", GL_BLEND_DST_ALPHA, 1},
    {"blend equation", GL_BLEND_EQUATION_RGB, 1},
    {"blend equation alpha", GL_BLEND_EQUATION_ALPHA, 1},
    {"culled face", GL_CULL_FACE_MODE, 1},
    {"front face", GL_FRONT_FACE, 1},
    {"polygon mode", GL_POLYGON_MODE, 2},
    {"line width", GL_LINE_WIDTH, 1},
    {"active texture", GL_ACTIVE_TEXTURE, 1},
    {"program", GL_CURRENT_PROGRAM, 1},
    {"array buffer", GL_ARRAY_BUFFER_BINDING, 1},
    {"element buffer", GL_ELEMENT_ARRAY_BUFFER_BINDING, 1},
    {"unpack alignment", GL_UNPACK_ALIGNMENT, 1},
    {"unpack row length", GL_UNPACK_ROW_LENGTH, 1},
    {"unpack skip rows", GL_UNPACK_SKIP_ROWS, 1},
    {"unpack skip pixels", GL_UNPACK_SKIP_PIXELS, 1},
    {"pack alignment", GL_PACK_ALIGNMENT, 1},
};

struct NamedSwitch
{
    const char* name;
    GLenum capability;
    bool start;
};

constexpr NamedSwitch Switches[] = {
    {"blending", GL_BLEND, false},
    {"face culling", GL_CULL_FACE, false},
    {"depth test", GL_DEPTH_TEST, false},
    {"stencil test", GL_STENCIL_TEST, false},
    {"scissor test", GL_SCISSOR_TEST, false},
    {"dithering", GL_DITHER, true},
    {"polygon offset", GL_POLYGON_OFFSET_FILL, false},
    {"alpha to coverage", GL_SAMPLE_ALPHA_TO_COVERAGE, false},
    {"sample coverage", GL_SAMPLE_COVERAGE, false},
    {"multisampling", GL_MULTISAMPLE, true},
    {"program point size", GL_PROGRAM_POINT_SIZE, false},
};

}  // namespace

GLStateValues GLState::Capture()
{
    const Functions& gl = GL();
    GLStateValues state;
    for (const NamedValue& value : Values)
    {
        double numbers[4] = {0, 0, 0, 0};
        gl.getDoublev(value.query, numbers);
        state[value.name].assign(numbers, numbers + value.count);
    }
    for (const NamedSwitch& item : Switches)
    {
        state[item.name] = {gl.isEnabled(item.capability) ? 1.0 : 0.0};
    }
    GLint active = 0;
    gl.getIntegerv(GL_ACTIVE_TEXTURE, &active);
    for (int unit = 0; unit < TextureUnits; ++unit)
    {
        GLint bound = 0;
        gl.activeTexture(static_cast<GLenum>(GL_TEXTURE0 + unit));
        gl.getIntegerv(GL_TEXTURE_BINDING_2D, &bound);
        state["texture of unit " + std::to_string(unit)] = {static_cast<double>(bound)};
    }
    gl.activeTexture(static_cast<GLenum>(active));
    for (int attribute = 0; attribute < VertexAttributes; ++attribute)
    {
        GLint enabled = 0;
        gl.getVertexAttribiv(static_cast<GLuint>(attribute), GL_VERTEX_ATTRIB_ARRAY_ENABLED, &enabled);
        state["vertex attribute " + std::to_string(attribute)] = {static_cast<double>(enabled)};
    }
    return state;
}

void GLState::Reset()
{
    const Functions& gl = GL();
    for (const NamedSwitch& item : Switches)
    {
        (item.start ? gl.enable : gl.disable)(item.capability);
    }
    gl.clearColor(0, 0, 0, 0);
    gl.clearDepth(1);
    gl.clearStencil(0);
    gl.colorMask(GL_TRUE, GL_TRUE, GL_TRUE, GL_TRUE);
    gl.depthMask(GL_TRUE);
    gl.depthFunc(GL_LESS);
    gl.stencilMask(~0u);
    gl.stencilFunc(GL_ALWAYS, 0, ~0u);
    gl.stencilOp(GL_KEEP, GL_KEEP, GL_KEEP);
    gl.blendFunc(GL_ONE, GL_ZERO);
    gl.blendEquation(GL_FUNC_ADD);
    gl.cullFace(GL_BACK);
    gl.frontFace(GL_CCW);
    gl.polygonMode(GL_FRONT_AND_BACK, GL_FILL);
    gl.lineWidth(1);
    gl.pixelStorei(GL_UNPACK_ALIGNMENT, 4);
    gl.pixelStorei(GL_UNPACK_ROW_LENGTH, 0);
    gl.pixelStorei(GL_UNPACK_SKIP_ROWS, 0);
    gl.pixelStorei(GL_UNPACK_SKIP_PIXELS, 0);
    gl.pixelStorei(GL_PACK_ALIGNMENT, 4);
    for (int attribute = 0; attribute < VertexAttributes; ++attribute)
    {
        gl.disableVertexAttribArray(static_cast<GLuint>(attribute));
    }
    Unbind();
}

void GLState::Unbind()
{
    const Functions& gl = GL();
    gl.useProgram(0);
    gl.bindBuffer(GL_ARRAY_BUFFER, 0);
    gl.bindBuffer(GL_ELEMENT_ARRAY_BUFFER, 0);
    for (int unit = TextureUnits - 1; unit >= 0; --unit)
    {
        gl.activeTexture(static_cast<GLenum>(GL_TEXTURE0 + unit));
        gl.bindTexture(GL_TEXTURE_2D, 0);
    }
}

GLObjects GLState::CaptureObjects()
{
    // Drivers hand out the lowest free name, so that names lie close together, or, as Mesa does for
    // renderbuffers, one above all there ever were. A gap this long after the last one that was ever
    // found ends the search.
    constexpr unsigned int longestGap = 1024;
    static std::map<std::string, unsigned int> lastOfKind;
    const Functions& gl = GL();
    GLObjects objects;
    const auto collect = [&](const char* kind, GLboolean (APIENTRYP isObject)(GLuint))
    {
        std::set<unsigned int>& names = objects[kind];
        unsigned int& last = lastOfKind[kind];
        for (unsigned int name = 1; name <= last + longestGap; ++name)
        {
            if (isObject(name))
            {
                names.insert(name);
                last = std::max(last, name);
            }
        }
    };
    collect("buffer", gl.isBuffer);
    collect("texture", gl.isTexture);
    collect("program", gl.isProgram);
    collect("shader", gl.isShader);
    collect("framebuffer", gl.isFramebuffer);
    collect("renderbuffer", gl.isRenderbuffer);
    return objects;
}

unsigned int GLState::TakeError()
{
    return GL().getError();
}

void GLState::DropErrors()
{
    // Bounded, since a lost context reports an error for ever.
    for (int i = 0; i < 64 && TakeError() != GL_NO_ERROR; ++i)
    {
    }
}

void GLState::ClearFramebuffer()
{
    const Functions& gl = GL();
    gl.clearColor(0, 0, 0, 0);
    gl.clearDepth(1);
    gl.clearStencil(0);
    gl.clear(GL_COLOR_BUFFER_BIT | GL_DEPTH_BUFFER_BIT | GL_STENCIL_BUFFER_BIT);
}

}  // namespace OV::Test
