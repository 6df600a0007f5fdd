#include "tests/support/GLStateTable.h"

#include <GL/glew.h>

#include <array>

namespace OV::Test
{

namespace
{

using Numbers = std::vector<double>;
using Table = std::vector<GLStateRow>;

constexpr int kTextureUnits = 5;
constexpr int kAttributes = 6;
constexpr int kClipPlanes = 6;

/// Objects for states that name one.
struct Objects
{
    GLuint buffer = 0;
    GLuint texture = 0;
    GLuint cube = 0;
    GLuint vertexArray = 0;
    GLuint sampler = 0;
    GLuint renderbuffer = 0;
    GLuint program = 0;
};

Objects g_objects;

/// As they were when the table was made: a context without a window starts with other ones.
std::array<GLint, 4> g_scissor{};
std::array<GLint, 4> g_viewport{};

void SetBox(void(GLAPIENTRY* set)(GLint, GLint, GLsizei, GLsizei), const std::array<GLint, 4>& box)
{
    set(box[0], box[1], box[2], box[3]);
}

GLuint Buffer()
{
    if (g_objects.buffer == 0)
    {
        glGenBuffers(1, &g_objects.buffer);
        GLint bound = 0;
        glGetIntegerv(GL_ARRAY_BUFFER_BINDING, &bound);
        glBindBuffer(GL_ARRAY_BUFFER, g_objects.buffer);
        const std::vector<unsigned char> bytes(1 << 16, 0x3f);
        glBufferData(GL_ARRAY_BUFFER, static_cast<GLsizeiptr>(bytes.size()), bytes.data(), GL_STATIC_DRAW);
        glBindBuffer(GL_ARRAY_BUFFER, static_cast<GLuint>(bound));
    }
    return g_objects.buffer;
}

GLuint Texture(GLenum target)
{
    GLuint& name = target == GL_TEXTURE_2D ? g_objects.texture : g_objects.cube;
    if (name == 0)
    {
        glGenTextures(1, &name);
    }
    return name;
}

/// A sampler that no picture survives.
GLuint Sampler()
{
    if (g_objects.sampler == 0)
    {
        glGenSamplers(1, &g_objects.sampler);
        glSamplerParameteri(g_objects.sampler, GL_TEXTURE_WRAP_S, GL_CLAMP_TO_BORDER);
        glSamplerParameteri(g_objects.sampler, GL_TEXTURE_WRAP_T, GL_CLAMP_TO_BORDER);
        glSamplerParameteri(g_objects.sampler, GL_TEXTURE_COMPARE_MODE, GL_COMPARE_REF_TO_TEXTURE);
        glSamplerParameterf(g_objects.sampler, GL_TEXTURE_MIN_LOD, 3.0f);
    }
    return g_objects.sampler;
}

GLuint VertexArray()
{
    if (g_objects.vertexArray == 0)
    {
        glGenVertexArrays(1, &g_objects.vertexArray);
    }
    return g_objects.vertexArray;
}

GLuint Renderbuffer()
{
    if (g_objects.renderbuffer == 0)
    {
        glGenRenderbuffers(1, &g_objects.renderbuffer);
    }
    return g_objects.renderbuffer;
}

GLuint Program()
{
    if (g_objects.program == 0)
    {
        const char* const source = "void main() { gl_FragColor = vec4(1.0); }";
        const GLuint shader = glCreateShader(GL_FRAGMENT_SHADER);
        glShaderSource(shader, 1, &source, nullptr);
        glCompileShader(shader);
        g_objects.program = glCreateProgram();
        glAttachShader(g_objects.program, shader);
        glLinkProgram(g_objects.program);
        glDeleteShader(shader);
    }
    return g_objects.program;
}

Numbers Get(GLenum query, int count = 1)
{
    std::array<double, 16> values{};
    glGetDoublev(query, values.data());
    return Numbers(values.begin(), values.begin() + count);
}

std::function<Numbers()> Reader(GLenum query, int count = 1)
{
    return [query, count] { return Get(query, count); };
}

void AddSwitch(Table& table, const char* name, GLenum capability, bool start = false)
{
    const auto set = [capability](bool on) { (on ? glEnable : glDisable)(capability); };
    table.push_back({name, [=] { set(!start); }, [=] { set(start); },
                     [capability] { return Numbers{glIsEnabled(capability) ? 1.0 : 0.0}; }});
}

void AddValue(Table& table, const char* name, GLenum query, int count, std::function<void()> change,
              std::function<void()> reset)
{
    table.push_back({name, std::move(change), std::move(reset), Reader(query, count)});
}

void AddSwitches(Table& table)
{
    struct Row
    {
        const char* name;
        GLenum capability;
        bool known = true;
        bool start = false;
    };
    const Row rows[] = {
        {"alpha test", GL_ALPHA_TEST},
        {"automatic normals", GL_AUTO_NORMAL},
        {"blending", GL_BLEND},
        {"logic operation", GL_COLOR_LOGIC_OP},
        {"logic operation on indices", GL_INDEX_LOGIC_OP},
        {"colour material", GL_COLOR_MATERIAL},
        {"colour sum", GL_COLOR_SUM},
        {"face culling", GL_CULL_FACE},
        {"depth test", GL_DEPTH_TEST},
        {"dithering", GL_DITHER, true, true},
        {"fixed-function fog", GL_FOG},
        {"fixed-function light", GL_LIGHT0},
        {"fixed-function lighting", GL_LIGHTING},
        {"line smoothing", GL_LINE_SMOOTH},
        {"line stipple", GL_LINE_STIPPLE},
        {"multisampling", GL_MULTISAMPLE, true, true},
        {"normalising", GL_NORMALIZE},
        {"point smoothing", GL_POINT_SMOOTH},
        {"point sprites", GL_POINT_SPRITE},
        {"polygon offset", GL_POLYGON_OFFSET_FILL},
        {"polygon offset of lines", GL_POLYGON_OFFSET_LINE},
        {"polygon offset of points", GL_POLYGON_OFFSET_POINT},
        {"polygon smoothing", GL_POLYGON_SMOOTH},
        {"polygon stipple", GL_POLYGON_STIPPLE},
        {"rescaling of normals", GL_RESCALE_NORMAL},
        {"alpha to coverage", GL_SAMPLE_ALPHA_TO_COVERAGE},
        {"alpha to one", GL_SAMPLE_ALPHA_TO_ONE},
        {"texturing in 1D", GL_TEXTURE_1D},
        {"texturing in 2D", GL_TEXTURE_2D},
        {"texturing in 3D", GL_TEXTURE_3D},
        {"texturing of cubes", GL_TEXTURE_CUBE_MAP},
        {"texture generation of s", GL_TEXTURE_GEN_S},
        {"texture generation of t", GL_TEXTURE_GEN_T},
        {"texture generation of r", GL_TEXTURE_GEN_R},
        {"texture generation of q", GL_TEXTURE_GEN_Q},
        {"program point size", GL_PROGRAM_POINT_SIZE},
        {"two-sided colours of programs", GL_VERTEX_PROGRAM_TWO_SIDE},
        {"discarding of primitives", GL_RASTERIZER_DISCARD, GLEW_VERSION_3_0 != 0},
        {"sRGB framebuffer", GL_FRAMEBUFFER_SRGB, GLEW_VERSION_3_0 != 0},
        {"seamless cube maps", GL_TEXTURE_CUBE_MAP_SEAMLESS, GLEW_VERSION_3_2 != 0},
        {"depth clamping", GL_DEPTH_CLAMP, GLEW_VERSION_3_2 != 0},
        {"sample shading", GL_SAMPLE_SHADING, GLEW_VERSION_4_0 != 0},
        {"primitive restart", GL_PRIMITIVE_RESTART, GLEW_VERSION_3_1 != 0},
        {"primitive restart at the last index", GL_PRIMITIVE_RESTART_FIXED_INDEX, GLEW_VERSION_4_3 != 0},
    };
    for (const Row& row : rows)
    {
        if (row.known)
        {
            AddSwitch(table, row.name, row.capability, row.start);
        }
    }
    for (int i = 0; i < kClipPlanes; ++i)
    {
        const auto plane = static_cast<GLenum>(GL_CLIP_PLANE0 + i);
        static const GLdouble half[4] = {1.0, 0.0, 0.0, 0.0};
        static const GLdouble none[4] = {0.0, 0.0, 0.0, 0.0};
        table.push_back({"user clip planes",
                         [plane]
                         {
                             glClipPlane(plane, half);
                             glEnable(plane);
                         },
                         [plane]
                         {
                             glDisable(plane);
                             glClipPlane(plane, none);
                         },
                         [plane]
                         {
                             Numbers numbers(4);
                             glGetClipPlane(plane, numbers.data());
                             numbers.push_back(glIsEnabled(plane) ? 1.0 : 0.0);
                             return numbers;
                         }});
    }
}

void AddTests(Table& table)
{
    AddValue(table, "alpha function", GL_ALPHA_TEST_FUNC, 1, [] { glAlphaFunc(GL_NEVER, 0.5f); },
             [] { glAlphaFunc(GL_ALWAYS, 0.0f); });
    AddValue(table, "operation of the logic operation", GL_LOGIC_OP_MODE, 1, [] { glLogicOp(GL_CLEAR); },
             [] { glLogicOp(GL_COPY); });
    AddValue(table, "blend colour", GL_BLEND_COLOR, 4, [] { glBlendColor(1, 0.5f, 0.25f, 0.75f); },
             [] { glBlendColor(0, 0, 0, 0); });
    AddValue(table, "blend equation", GL_BLEND_EQUATION_RGB, 1, [] { glBlendEquation(GL_MIN); },
             [] { glBlendEquation(GL_FUNC_ADD); });
    AddValue(table, "blend equation of alpha", GL_BLEND_EQUATION_ALPHA, 1,
             [] { glBlendEquationSeparate(GL_FUNC_ADD, GL_MIN); }, [] { glBlendEquation(GL_FUNC_ADD); });
    const auto noBlend = [] { glBlendFunc(GL_ONE, GL_ZERO); };
    table.push_back({"blend function", [] { glBlendFuncSeparate(GL_DST_COLOR, GL_ZERO, GL_DST_ALPHA, GL_ZERO); }, noBlend,
                     []
                     {
                         Numbers numbers;
                         for (const GLenum query :
                              {GL_BLEND_SRC_RGB, GL_BLEND_DST_RGB, GL_BLEND_SRC_ALPHA, GL_BLEND_DST_ALPHA})
                         {
                             numbers.push_back(Get(query)[0]);
                         }
                         return numbers;
                     }});
    AddValue(table, "depth function", GL_DEPTH_FUNC, 1, [] { glDepthFunc(GL_NEVER); }, [] { glDepthFunc(GL_LESS); });
    AddValue(table, "depth mask", GL_DEPTH_WRITEMASK, 1, [] { glDepthMask(GL_FALSE); }, [] { glDepthMask(GL_TRUE); });
    AddValue(table, "depth range", GL_DEPTH_RANGE, 2, [] { glDepthRange(1.0, 0.0); }, [] { glDepthRange(0.0, 1.0); });
    AddValue(table, "colour mask", GL_COLOR_WRITEMASK, 4, [] { glColorMask(GL_TRUE, GL_FALSE, GL_TRUE, GL_TRUE); },
             [] { glColorMask(GL_TRUE, GL_TRUE, GL_TRUE, GL_TRUE); });
    table.push_back({"scissor test",
                     []
                     {
                         glScissor(10, 10, 30, 30);
                         glEnable(GL_SCISSOR_TEST);
                     },
                     []
                     {
                         glDisable(GL_SCISSOR_TEST);
                         SetBox(glScissor, g_scissor);
                     },
                     [] { return Numbers{glIsEnabled(GL_SCISSOR_TEST) ? 1.0 : 0.0}; }});
    AddValue(table, "scissor box", GL_SCISSOR_BOX, 4, [] { glScissor(10, 10, 30, 30); },
             [] { SetBox(glScissor, g_scissor); });
    table.push_back({"stencil test",
                     []
                     {
                         glStencilFunc(GL_NEVER, 1, 0x0f);
                         glEnable(GL_STENCIL_TEST);
                     },
                     []
                     {
                         glDisable(GL_STENCIL_TEST);
                         glStencilFunc(GL_ALWAYS, 0, ~0u);
                     },
                     [] { return Numbers{glIsEnabled(GL_STENCIL_TEST) ? 1.0 : 0.0}; }});
    AddValue(table, "stencil function", GL_STENCIL_FUNC, 1, [] { glStencilFunc(GL_NEVER, 1, 0x0f); },
             [] { glStencilFunc(GL_ALWAYS, 0, ~0u); });
    AddValue(table, "stencil operation", GL_STENCIL_PASS_DEPTH_PASS, 1,
             [] { glStencilOp(GL_INVERT, GL_INCR, GL_INVERT); }, [] { glStencilOp(GL_KEEP, GL_KEEP, GL_KEEP); });
    AddValue(table, "stencil mask", GL_STENCIL_WRITEMASK, 1, [] { glStencilMask(1); }, [] { glStencilMask(~0u); });
    table.push_back({"sample coverage",
                     []
                     {
                         glSampleCoverage(0.0f, GL_FALSE);
                         glEnable(GL_SAMPLE_COVERAGE);
                     },
                     []
                     {
                         glDisable(GL_SAMPLE_COVERAGE);
                         glSampleCoverage(1.0f, GL_FALSE);
                     },
                     [] { return Numbers{glIsEnabled(GL_SAMPLE_COVERAGE) ? 1.0 : 0.0}; }});
    if (GLEW_VERSION_3_2)
    {
        table.push_back({"sample mask",
                         []
                         {
                             glSampleMaski(0, 0);
                             glEnable(GL_SAMPLE_MASK);
                         },
                         []
                         {
                             glDisable(GL_SAMPLE_MASK);
                             glSampleMaski(0, ~0u);
                         },
                         [] { return Numbers{glIsEnabled(GL_SAMPLE_MASK) ? 1.0 : 0.0}; }});
    }
}

void AddClears(Table& table)
{
    AddValue(table, "clear colour", GL_COLOR_CLEAR_VALUE, 4, [] { glClearColor(1, 0, 1, 0.5f); },
             [] { glClearColor(0, 0, 0, 0); });
    AddValue(table, "clear depth", GL_DEPTH_CLEAR_VALUE, 1, [] { glClearDepth(0.0); }, [] { glClearDepth(1.0); });
    AddValue(table, "clear stencil", GL_STENCIL_CLEAR_VALUE, 1, [] { glClearStencil(3); }, [] { glClearStencil(0); });
    AddValue(table, "clear accumulation", GL_ACCUM_CLEAR_VALUE, 4, [] { glClearAccum(1, 1, 1, 1); },
             [] { glClearAccum(0, 0, 0, 0); });
    AddValue(table, "clear index", GL_INDEX_CLEAR_VALUE, 1, [] { glClearIndex(1); }, [] { glClearIndex(0); });
}

void AddRasterizing(Table& table)
{
    AddValue(table, "culled face", GL_CULL_FACE_MODE, 1, [] { glCullFace(GL_FRONT); }, [] { glCullFace(GL_BACK); });
    AddValue(table, "front face", GL_FRONT_FACE, 1, [] { glFrontFace(GL_CW); }, [] { glFrontFace(GL_CCW); });
    AddValue(table, "polygon mode", GL_POLYGON_MODE, 2, [] { glPolygonMode(GL_FRONT_AND_BACK, GL_LINE); },
             [] { glPolygonMode(GL_FRONT_AND_BACK, GL_FILL); });
    AddValue(table, "polygon offset values", GL_POLYGON_OFFSET_FACTOR, 1, [] { glPolygonOffset(50.0f, 50.0f); },
             [] { glPolygonOffset(0.0f, 0.0f); });
    AddValue(table, "viewport", GL_VIEWPORT, 4, [] { glViewport(7, 9, 20, 30); }, [] { SetBox(glViewport, g_viewport); });
    AddValue(table, "line width", GL_LINE_WIDTH, 1, [] { glLineWidth(5.0f); }, [] { glLineWidth(1.0f); });
    AddValue(table, "line stipple pattern", GL_LINE_STIPPLE_PATTERN, 1, [] { glLineStipple(2, 0x0f0f); },
             [] { glLineStipple(1, 0xffff); });
    AddValue(table, "point size", GL_POINT_SIZE, 1, [] { glPointSize(9.0f); }, [] { glPointSize(1.0f); });
    AddValue(table, "smallest point size", GL_POINT_SIZE_MIN, 1, [] { glPointParameterf(GL_POINT_SIZE_MIN, 30.0f); },
             [] { glPointParameterf(GL_POINT_SIZE_MIN, 0.0f); });
    AddValue(table, "point fade", GL_POINT_FADE_THRESHOLD_SIZE, 1,
             [] { glPointParameterf(GL_POINT_FADE_THRESHOLD_SIZE, 60.0f); },
             [] { glPointParameterf(GL_POINT_FADE_THRESHOLD_SIZE, 1.0f); });
    static const GLfloat steep[3] = {0.0f, 0.0f, 9.0f};
    static const GLfloat flat[3] = {1.0f, 0.0f, 0.0f};
    AddValue(table, "point attenuation", GL_POINT_DISTANCE_ATTENUATION, 3,
             [] { glPointParameterfv(GL_POINT_DISTANCE_ATTENUATION, steep); },
             [] { glPointParameterfv(GL_POINT_DISTANCE_ATTENUATION, flat); });
    AddValue(table, "point sprite origin", GL_POINT_SPRITE_COORD_ORIGIN, 1,
             [] { glPointParameteri(GL_POINT_SPRITE_COORD_ORIGIN, GL_LOWER_LEFT); },
             [] { glPointParameteri(GL_POINT_SPRITE_COORD_ORIGIN, GL_UPPER_LEFT); });
    AddValue(table, "shade model", GL_SHADE_MODEL, 1, [] { glShadeModel(GL_FLAT); }, [] { glShadeModel(GL_SMOOTH); });
    AddValue(table, "perspective hint", GL_PERSPECTIVE_CORRECTION_HINT, 1,
             [] { glHint(GL_PERSPECTIVE_CORRECTION_HINT, GL_FASTEST); },
             [] { glHint(GL_PERSPECTIVE_CORRECTION_HINT, GL_DONT_CARE); });
    AddValue(table, "derivative hint", GL_FRAGMENT_SHADER_DERIVATIVE_HINT, 1,
             [] { glHint(GL_FRAGMENT_SHADER_DERIVATIVE_HINT, GL_NICEST); },
             [] { glHint(GL_FRAGMENT_SHADER_DERIVATIVE_HINT, GL_DONT_CARE); });
    if (GLEW_VERSION_3_2)
    {
        AddValue(table, "provoking vertex", GL_PROVOKING_VERTEX, 1, [] { glProvokingVertex(GL_FIRST_VERTEX_CONVENTION); },
                 [] { glProvokingVertex(GL_LAST_VERTEX_CONVENTION); });
    }
    if (GLEW_VERSION_3_0)
    {
        AddValue(table, "clamping of colours", GL_CLAMP_FRAGMENT_COLOR, 1,
                 [] { glClampColor(GL_CLAMP_FRAGMENT_COLOR, GL_FALSE); },
                 [] { glClampColor(GL_CLAMP_FRAGMENT_COLOR, GL_FIXED_ONLY); });
    }
    if (GLEW_VERSION_3_1)
    {
        AddValue(table, "primitive restart index", GL_PRIMITIVE_RESTART_INDEX, 1, [] { glPrimitiveRestartIndex(1); },
                 [] { glPrimitiveRestartIndex(0); });
    }
    if (GLEW_ARB_clip_control)
    {
        AddValue(table, "clip control", GL_CLIP_ORIGIN, 1, [] { glClipControl(GL_UPPER_LEFT, GL_ZERO_TO_ONE); },
                 [] { glClipControl(GL_LOWER_LEFT, GL_NEGATIVE_ONE_TO_ONE); });
    }
}

void AddFixedFunction(Table& table)
{
    static const GLfloat odd[4] = {0.25f, 0.5f, 0.75f, 0.5f};
    static const GLfloat fogStart[4] = {0.0f, 0.0f, 0.0f, 0.0f};
    static const GLfloat dim[4] = {0.2f, 0.2f, 0.2f, 1.0f};
    AddValue(table, "fixed-function fog colour", GL_FOG_COLOR, 4, [] { glFogfv(GL_FOG_COLOR, odd); },
             [] { glFogfv(GL_FOG_COLOR, fogStart); });
    AddValue(table, "fixed-function ambient light", GL_LIGHT_MODEL_AMBIENT, 4,
             [] { glLightModelfv(GL_LIGHT_MODEL_AMBIENT, odd); }, [] { glLightModelfv(GL_LIGHT_MODEL_AMBIENT, dim); });
    AddValue(table, "matrix mode", GL_MATRIX_MODE, 1, [] { glMatrixMode(GL_PROJECTION); },
             [] { glMatrixMode(GL_MODELVIEW); });
    const auto matrix = [&table](const char* name, GLenum mode, GLenum query)
    {
        AddValue(table, name, query, 16,
                 [mode]
                 {
                     glMatrixMode(mode);
                     glScalef(0.5f, 3.0f, 1.0f);
                     glMatrixMode(GL_MODELVIEW);
                 },
                 [mode]
                 {
                     glMatrixMode(mode);
                     glLoadIdentity();
                     glMatrixMode(GL_MODELVIEW);
                 });
    };
    matrix("modelview matrix", GL_MODELVIEW, GL_MODELVIEW_MATRIX);
    matrix("projection matrix", GL_PROJECTION, GL_PROJECTION_MATRIX);
    matrix("texture matrix", GL_TEXTURE, GL_TEXTURE_MATRIX);
    AddValue(table, "current colour", GL_CURRENT_COLOR, 4, [] { glColor4fv(odd); }, [] { glColor4f(1, 1, 1, 1); });
    AddValue(table, "current normal", GL_CURRENT_NORMAL, 3, [] { glNormal3fv(odd); }, [] { glNormal3f(0, 0, 1); });
    AddValue(table, "current texture coordinates", GL_CURRENT_TEXTURE_COORDS, 4, [] { glTexCoord4fv(odd); },
             [] { glTexCoord4f(0, 0, 0, 1); });
    AddValue(table, "edge flag", GL_EDGE_FLAG, 1, [] { glEdgeFlag(GL_FALSE); }, [] { glEdgeFlag(GL_TRUE); });
    table.push_back({"texture environment", [] { glTexEnvi(GL_TEXTURE_ENV, GL_TEXTURE_ENV_MODE, GL_REPLACE); },
                     [] { glTexEnvi(GL_TEXTURE_ENV, GL_TEXTURE_ENV_MODE, GL_MODULATE); },
                     []
                     {
                         GLint mode = 0;
                         glGetTexEnviv(GL_TEXTURE_ENV, GL_TEXTURE_ENV_MODE, &mode);
                         return Numbers{static_cast<double>(mode)};
                     }});
    table.push_back({"texture level bias", [] { glTexEnvf(GL_TEXTURE_FILTER_CONTROL, GL_TEXTURE_LOD_BIAS, 4.0f); },
                     [] { glTexEnvf(GL_TEXTURE_FILTER_CONTROL, GL_TEXTURE_LOD_BIAS, 0.0f); },
                     []
                     {
                         GLfloat bias = 0;
                         glGetTexEnvfv(GL_TEXTURE_FILTER_CONTROL, GL_TEXTURE_LOD_BIAS, &bias);
                         return Numbers{bias};
                     }});
    static const GLfloat somewhere[64] = {};
    const auto clientArray = [&table](const char* name, GLenum array, std::function<void()> point)
    {
        table.push_back({name,
                         [=]
                         {
                             point();
                             glEnableClientState(array);
                         },
                         [=] { glDisableClientState(array); },
                         [=] { return Numbers{glIsEnabled(array) ? 1.0 : 0.0}; }});
    };
    clientArray("array of fixed-function normals", GL_NORMAL_ARRAY, [] { glNormalPointer(GL_FLOAT, 0, somewhere); });
    clientArray("array of fixed-function colours", GL_COLOR_ARRAY, [] { glColorPointer(4, GL_FLOAT, 0, somewhere); });
    clientArray("array of fixed-function texture coordinates", GL_TEXTURE_COORD_ARRAY,
                [] { glTexCoordPointer(2, GL_FLOAT, 0, somewhere); });
}

void AddPixels(Table& table)
{
    const auto store = [&table](const char* name, GLenum value, GLint other, GLint start)
    {
        AddValue(table, name, value, 1, [=] { glPixelStorei(value, other); }, [=] { glPixelStorei(value, start); });
    };
    store("pixel unpacking: alignment", GL_UNPACK_ALIGNMENT, 8, 4);
    store("pixel unpacking: row length", GL_UNPACK_ROW_LENGTH, 3, 0);
    store("pixel unpacking: rows", GL_UNPACK_SKIP_ROWS, 2, 0);
    store("pixel unpacking: pixels", GL_UNPACK_SKIP_PIXELS, 2, 0);
    store("pixel unpacking: byte order", GL_UNPACK_SWAP_BYTES, 1, 0);
    store("pixel packing: alignment", GL_PACK_ALIGNMENT, 8, 4);
    store("pixel packing: row length", GL_PACK_ROW_LENGTH, 256, 0);
    const auto transfer = [&table](const char* name, GLenum value, GLfloat other, GLfloat start)
    {
        AddValue(table, name, value, 1, [=] { glPixelTransferf(value, other); },
                 [=] { glPixelTransferf(value, start); });
    };
    transfer("pixel transfer: scale", GL_RED_SCALE, 0.25f, 1.0f);
    transfer("pixel transfer: bias", GL_GREEN_BIAS, 0.5f, 0.0f);
    AddValue(table, "pixel zoom", GL_ZOOM_X, 1, [] { glPixelZoom(2.0f, 2.0f); }, [] { glPixelZoom(1.0f, 1.0f); });
}

void AddTextures(Table& table)
{
    AddValue(table, "active texture unit", GL_ACTIVE_TEXTURE, 1, [] { glActiveTexture(GL_TEXTURE3); },
             [] { glActiveTexture(GL_TEXTURE0); });
    AddValue(table, "active client texture unit", GL_CLIENT_ACTIVE_TEXTURE, 1,
             [] { glClientActiveTexture(GL_TEXTURE3); }, [] { glClientActiveTexture(GL_TEXTURE0); });
    for (int unit = 0; unit < kTextureUnits; ++unit)
    {
        const auto at = [unit](const auto& what)
        {
            GLint active = 0;
            glGetIntegerv(GL_ACTIVE_TEXTURE, &active);
            glActiveTexture(static_cast<GLenum>(GL_TEXTURE0 + unit));
            what();
            glActiveTexture(static_cast<GLenum>(active));
        };
        const auto binding = [&table, at](const char* name, GLenum target, GLenum query)
        {
            table.push_back({name, [=] { at([=] { glBindTexture(target, Texture(target)); }); },
                             [=] { at([=] { glBindTexture(target, 0); }); },
                             [=]
                             {
                                 Numbers bound;
                                 at([&] { bound = Get(query); });
                                 return bound;
                             }});
        };
        binding("2D textures", GL_TEXTURE_2D, GL_TEXTURE_BINDING_2D);
        binding("cube textures", GL_TEXTURE_CUBE_MAP, GL_TEXTURE_BINDING_CUBE_MAP);
        if (GLEW_ARB_sampler_objects)
        {
            const auto name = static_cast<GLuint>(unit);
            table.push_back({"samplers", [=] { glBindSampler(name, Sampler()); }, [=] { glBindSampler(name, 0); },
                             [=]
                             {
                                 Numbers bound;
                                 at([&] { bound = Get(GL_SAMPLER_BINDING); });
                                 return bound;
                             }});
        }
    }
}

void AddVertices(Table& table)
{
    AddValue(table, "array buffer", GL_ARRAY_BUFFER_BINDING, 1, [] { glBindBuffer(GL_ARRAY_BUFFER, Buffer()); },
             [] { glBindBuffer(GL_ARRAY_BUFFER, 0); });
    AddValue(table, "element buffer", GL_ELEMENT_ARRAY_BUFFER_BINDING, 1,
             [] { glBindBuffer(GL_ELEMENT_ARRAY_BUFFER, Buffer()); },
             [] { glBindBuffer(GL_ELEMENT_ARRAY_BUFFER, 0); });
    AddValue(table, "program", GL_CURRENT_PROGRAM, 1, [] { glUseProgram(Program()); }, [] { glUseProgram(0); });
    AddValue(table, "renderbuffer", GL_RENDERBUFFER_BINDING, 1,
             [] { glBindRenderbuffer(GL_RENDERBUFFER, Renderbuffer()); },
             [] { glBindRenderbuffer(GL_RENDERBUFFER, 0); });
    if (GLEW_ARB_vertex_array_object)
    {
        AddValue(table, "vertex array", GL_VERTEX_ARRAY_BINDING, 1, [] { glBindVertexArray(VertexArray()); },
                 [] { glBindVertexArray(0); });
    }
    if (GLEW_VERSION_3_1)
    {
        AddValue(table, "uniform buffer", GL_UNIFORM_BUFFER_BINDING, 1,
                 [] { glBindBuffer(GL_UNIFORM_BUFFER, Buffer()); }, [] { glBindBuffer(GL_UNIFORM_BUFFER, 0); });
    }
    for (GLuint i = 0; i < kAttributes; ++i)
    {
        const auto integer = [i](GLenum query)
        {
            GLint value = 0;
            glGetVertexAttribiv(i, query, &value);
            return static_cast<double>(value);
        };
        table.push_back({"vertex attribute arrays",
                         [=]
                         {
                             GLint bound = 0;
                             glGetIntegerv(GL_ARRAY_BUFFER_BINDING, &bound);
                             glBindBuffer(GL_ARRAY_BUFFER, Buffer());
                             glVertexAttribPointer(i, 4, GL_FLOAT, GL_FALSE, 0, nullptr);
                             glBindBuffer(GL_ARRAY_BUFFER, static_cast<GLuint>(bound));
                             glEnableVertexAttribArray(i);
                         },
                         [=]
                         {
                             glDisableVertexAttribArray(i);
                             glVertexAttribPointer(i, 4, GL_FLOAT, GL_FALSE, 0, nullptr);
                         },
                         [=] { return Numbers{integer(GL_VERTEX_ATTRIB_ARRAY_ENABLED)}; }});
        table.push_back({"pointers of vertex attributes",
                         [=] { glVertexAttribPointer(i, 3, GL_SHORT, GL_TRUE, 12, nullptr); },
                         [=] { glVertexAttribPointer(i, 4, GL_FLOAT, GL_FALSE, 0, nullptr); },
                         [=]
                         {
                             return Numbers{integer(GL_VERTEX_ATTRIB_ARRAY_SIZE), integer(GL_VERTEX_ATTRIB_ARRAY_TYPE),
                                            integer(GL_VERTEX_ATTRIB_ARRAY_STRIDE)};
                         }});
        if (GLEW_VERSION_3_3)
        {
            table.push_back({"divisors of vertex attributes", [=] { glVertexAttribDivisor(i, 1); },
                             [=] { glVertexAttribDivisor(i, 0); },
                             [=] { return Numbers{integer(GL_VERTEX_ATTRIB_ARRAY_DIVISOR)}; }});
        }
        // The one of number 0 is the vertex itself in GL 2.1, and has no value.
        if (i > 0)
        {
            table.push_back({"current values of vertex attributes",
                             [=] { glVertexAttrib4f(i, 0.25f, -0.5f, 0.75f, 0.5f); },
                             [=] { glVertexAttrib4f(i, 0.0f, 0.0f, 0.0f, 1.0f); },
                             [=]
                             {
                                 Numbers value(4);
                                 glGetVertexAttribdv(i, GL_CURRENT_VERTEX_ATTRIB, value.data());
                                 return value;
                             }});
        }
    }
}

}  // namespace

const std::vector<GLStateRow>& GLStateTable()
{
    static const Table table = []
    {
        glGetIntegerv(GL_SCISSOR_BOX, g_scissor.data());
        glGetIntegerv(GL_VIEWPORT, g_viewport.data());
        Table rows;
        AddSwitches(rows);
        AddTests(rows);
        AddClears(rows);
        AddRasterizing(rows);
        AddFixedFunction(rows);
        AddPixels(rows);
        AddTextures(rows);
        AddVertices(rows);
        return rows;
    }();
    return table;
}

void FreeGLStateObjects()
{
    const auto release = [](void (*destroy)(GLsizei, const GLuint*), GLuint& name)
    {
        if (name != 0)
        {
            destroy(1, &name);
            name = 0;
        }
    };
    release(glDeleteBuffers, g_objects.buffer);
    release(glDeleteTextures, g_objects.texture);
    release(glDeleteTextures, g_objects.cube);
    release(glDeleteRenderbuffers, g_objects.renderbuffer);
    if (g_objects.sampler != 0)
    {
        release(glDeleteSamplers, g_objects.sampler);
    }
    if (g_objects.vertexArray != 0)
    {
        release(glDeleteVertexArrays, g_objects.vertexArray);
    }
    if (g_objects.program != 0)
    {
        glDeleteProgram(g_objects.program);
        g_objects.program = 0;
    }
}

}  // namespace OV::Test
