#include "orvane_host/context/GLStateGuard.h"

#include "tests/orvane_host/present/EveryFeatureScene.h"
#include "tests/orvane_host/present/PresentationStage.h"
#include "tests/support/GLState.h"
#include "tests/support/GLStateTable.h"

#include <GL/glew.h>
#include <gtest/gtest.h>

#include <array>
#include <string>
#include <vector>

namespace OV::Test
{

namespace
{

using Rows = std::vector<GLStateRow>;
using Values = std::vector<std::vector<double>>;

/// What a program draws with GL of its own: a mesh of two triangles in a vertex array, with a
/// texture, by a shader that feels attributes, blending and depth.
class HostProgram
{
public:
    HostProgram()
    {
        const char* const vertexText =
            "#version 120\n"
            "attribute vec3 place; attribute vec2 coordinate; attribute vec4 tint;\n"
            "varying vec2 v; varying vec4 t;\n"
            "void main() { v = coordinate; t = tint; gl_PointSize = 7.0;\n"
            "  gl_Position = vec4(place, 1.0); gl_ClipVertex = gl_Position; }\n";
        const char* const fragmentText = "#version 120\n"
                                         "uniform sampler2D picture; varying vec2 v; varying vec4 t;\n"
                                         "void main() { gl_FragColor = texture2D(picture, v) * t; }\n";
        m_program = glCreateProgram();
        for (const auto& [kind, text] :
             {std::pair(GL_VERTEX_SHADER, vertexText), std::pair(GL_FRAGMENT_SHADER, fragmentText)})
        {
            const GLuint shader = glCreateShader(static_cast<GLenum>(kind));
            glShaderSource(shader, 1, &text, nullptr);
            glCompileShader(shader);
            glAttachShader(m_program, shader);
            glDeleteShader(shader);
        }
        glBindAttribLocation(m_program, 0, "place");
        glBindAttribLocation(m_program, 1, "coordinate");
        glBindAttribLocation(m_program, 2, "tint");
        glLinkProgram(m_program);
        GLint isLinked = 0;
        glGetProgramiv(m_program, GL_LINK_STATUS, &isLinked);
        EXPECT_TRUE(isLinked);

        const float vertices[] = {-0.9f, -0.8f, 0.1f, 0, 0, 0.8f,  -0.9f, 0.3f, 1, 0,
                                  0.7f,  0.9f,  0.2f, 1, 1, -0.8f, 0.7f,  0.5f, 0, 1};
        const unsigned short indices[] = {0, 1, 2, 0, 2, 3};
        glGenBuffers(2, m_buffers.data());
        glBindBuffer(GL_ARRAY_BUFFER, m_buffers[0]);
        glBufferData(GL_ARRAY_BUFFER, sizeof vertices, vertices, GL_STATIC_DRAW);
        glBindBuffer(GL_ARRAY_BUFFER, 0);
        glBindBuffer(GL_ELEMENT_ARRAY_BUFFER, m_buffers[1]);
        glBufferData(GL_ELEMENT_ARRAY_BUFFER, sizeof indices, indices, GL_STATIC_DRAW);
        glBindBuffer(GL_ELEMENT_ARRAY_BUFFER, 0);

        const unsigned char pixels[] = {255, 0, 0, 255, 0, 255, 0, 200, 0, 0, 255, 150, 255, 255, 0, 100};
        glGenTextures(1, &m_texture);
        glBindTexture(GL_TEXTURE_2D, m_texture);
        glTexImage2D(GL_TEXTURE_2D, 0, GL_RGBA, 2, 2, 0, GL_RGBA, GL_UNSIGNED_BYTE, pixels);
        glTexParameteri(GL_TEXTURE_2D, GL_TEXTURE_MIN_FILTER, GL_NEAREST);
        glTexParameteri(GL_TEXTURE_2D, GL_TEXTURE_MAG_FILTER, GL_NEAREST);
        glBindTexture(GL_TEXTURE_2D, 0);
        glGenVertexArrays(1, &m_vertexArray);
    }

    ~HostProgram()
    {
        glDeleteProgram(m_program);
        glDeleteBuffers(2, m_buffers.data());
        glDeleteTextures(1, &m_texture);
        glDeleteVertexArrays(1, &m_vertexArray);
    }

    /// Sets what Draw goes by, once, as programs do that trust their own state.
    /// @param ownsArray whether attributes lie in a vertex array of the program's.
    void SetUp(bool ownsArray) const
    {
        glBindVertexArray(ownsArray ? m_vertexArray : 0);
        glBindBuffer(GL_ARRAY_BUFFER, m_buffers[0]);
        glVertexAttribPointer(0, 3, GL_FLOAT, GL_FALSE, 20, nullptr);
        glVertexAttribPointer(1, 2, GL_FLOAT, GL_FALSE, 20, reinterpret_cast<const void*>(12));
        glEnableVertexAttribArray(0);
        glEnableVertexAttribArray(1);
        glVertexAttrib4f(2, 0.9f, 0.8f, 0.7f, 0.6f);
        glBindBuffer(GL_ELEMENT_ARRAY_BUFFER, m_buffers[1]);
        glUseProgram(m_program);
        glActiveTexture(GL_TEXTURE3);
        glBindTexture(GL_TEXTURE_2D, m_texture);
        glUniform1i(glGetUniformLocation(m_program, "picture"), 3);
        glEnable(GL_BLEND);
        glBlendFunc(GL_SRC_ALPHA, GL_ONE_MINUS_SRC_ALPHA);
        glEnable(GL_DEPTH_TEST);
        glViewport(5, 3, 80, 55);
        glClearColor(0.1f, 0.3f, 0.2f, 1.0f);
    }

    /// With its indices, or without where others are bound: those may name vertices that are not.
    void Draw() const
    {
        glClear(GL_COLOR_BUFFER_BIT | GL_DEPTH_BUFFER_BIT | GL_STENCIL_BUFFER_BIT);
        GLint indices = 0;
        glGetIntegerv(GL_ELEMENT_ARRAY_BUFFER_BINDING, &indices);
        if (indices == static_cast<GLint>(m_buffers[1]))
        {
            glDrawElements(GL_TRIANGLES, 6, GL_UNSIGNED_SHORT, nullptr);
        }
        else
        {
            glDrawArrays(GL_TRIANGLES, 0, 3);
        }
    }

    GLuint Texture() const { return m_texture; }
    GLuint Array() const { return m_vertexArray; }
    GLuint Vertices() const { return m_buffers[0]; }

private:
    GLuint m_program = 0;
    GLuint m_texture = 0;
    GLuint m_vertexArray = 0;
    std::array<GLuint, 2> m_buffers{};
};

std::vector<double> Get(GLenum query, int count = 1)
{
    std::vector<double> values(16);
    glGetDoublev(query, values.data());
    values.resize(static_cast<std::size_t>(count));
    return values;
}

std::vector<double> GetAttribute(GLuint index)
{
    std::vector<double> values;
    for (const GLenum query :
         {GL_VERTEX_ATTRIB_ARRAY_ENABLED, GL_VERTEX_ATTRIB_ARRAY_SIZE, GL_VERTEX_ATTRIB_ARRAY_TYPE,
          GL_VERTEX_ATTRIB_ARRAY_NORMALIZED, GL_VERTEX_ATTRIB_ARRAY_INTEGER, GL_VERTEX_ATTRIB_ARRAY_LONG,
          GL_VERTEX_ATTRIB_ARRAY_STRIDE, GL_VERTEX_ATTRIB_ARRAY_BUFFER_BINDING,
          GL_VERTEX_ATTRIB_ARRAY_DIVISOR})
    {
        GLint value = 0;
        glGetVertexAttribiv(index, query, &value);
        values.push_back(value);
    }
    void* pointer = nullptr;
    glGetVertexAttribPointerv(index, GL_VERTEX_ATTRIB_ARRAY_POINTER, &pointer);
    values.push_back(static_cast<double>(reinterpret_cast<std::uintptr_t>(pointer)));
    if (index > 0)
    {
        std::array<GLdouble, 4> value{};
        glGetVertexAttribdv(index, GL_CURRENT_VERTEX_ATTRIB, value.data());
        values.insert(values.end(), value.begin(), value.end());
    }
    return values;
}

/// States of a program with GL of its own that a frame of the engine alone never meets.
class FurtherRows
{
public:
    explicit FurtherRows(const HostProgram& host) : m_host(host)
    {
        glGenBuffers(1, &m_pixels);
        glBindBuffer(GL_PIXEL_PACK_BUFFER, m_pixels);
        glBufferData(GL_PIXEL_PACK_BUFFER, 1 << 20, nullptr, GL_STREAM_READ);
        glBindBuffer(GL_PIXEL_PACK_BUFFER, 0);
        glGenFramebuffers(1, &m_framebuffer);
        AddAttributes();
        AddTextures();
        AddPixels();
        AddRest();
    }

    ~FurtherRows()
    {
        glDeleteBuffers(1, &m_pixels);
        glDeleteFramebuffers(1, &m_framebuffer);
    }

    const Rows& Get() const { return m_rows; }

private:
    void AddAttributes()
    {
        for (GLuint i = 0; i < 16; ++i)
        {
            const GLuint vertices = m_host.Vertices();
            m_rows.push_back(
                {"attribute " + std::to_string(i),
                 [i, vertices]
                 {
                     glBindVertexArray(0);
                     glBindBuffer(GL_ARRAY_BUFFER, vertices);
                     if (i % 3 == 0)
                     {
                         glVertexAttribIPointer(i, 2, GL_UNSIGNED_BYTE, 4,
                                                reinterpret_cast<const void*>(std::uintptr_t(i)));
                     }
                     else if (i % 3 == 1)
                     {
                         glVertexAttribLPointer(i, 1, GL_DOUBLE, 8,
                                                reinterpret_cast<const void*>(std::uintptr_t(8)));
                     }
                     else
                     {
                         glVertexAttribPointer(i, 4, GL_UNSIGNED_BYTE, GL_TRUE, 4,
                                               reinterpret_cast<const void*>(std::uintptr_t(i)));
                     }
                     glEnableVertexAttribArray(i);
                     glVertexAttribDivisor(i, i + 1);
                     if (i > 0)
                     {
                         glVertexAttrib4f(i, 0.5f, 0.25f, static_cast<float>(i), -1.0f);
                     }
                     // So that nothing but the attribute says so.
                     glBindBuffer(GL_ARRAY_BUFFER, 0);
                 },
                 [i]
                 {
                     glBindVertexArray(0);
                     glBindBuffer(GL_ARRAY_BUFFER, 0);
                     glVertexAttribPointer(i, 4, GL_FLOAT, GL_FALSE, 0, nullptr);
                     glDisableVertexAttribArray(i);
                     glVertexAttribDivisor(i, 0);
                     if (i > 0)
                     {
                         glVertexAttrib4f(i, 0.0f, 0.0f, 0.0f, 1.0f);
                     }
                 },
                 // Of no vertex array, whichever is bound.
                 [i]
                 {
                     GLint array = 0;
                     glGetIntegerv(GL_VERTEX_ARRAY_BINDING, &array);
                     glBindVertexArray(0);
                     const std::vector<double> values = GetAttribute(i);
                     glBindVertexArray(static_cast<GLuint>(array));
                     return values;
                 }});
        }
        AddClientArray("vertices of the fixed function", GL_VERTEX_ARRAY);
        AddClientArray("normals of the fixed function", GL_NORMAL_ARRAY);
        AddClientArray("colours of the fixed function", GL_COLOR_ARRAY);
        m_rows.push_back({"texture coordinates of the fixed function",
                          []
                          {
                              glClientActiveTexture(GL_TEXTURE2);
                              glTexCoordPointer(2, GL_FLOAT, 8, nullptr);
                              glEnableClientState(GL_TEXTURE_COORD_ARRAY);
                          },
                          []
                          {
                              glClientActiveTexture(GL_TEXTURE2);
                              glDisableClientState(GL_TEXTURE_COORD_ARRAY);
                              glTexCoordPointer(4, GL_FLOAT, 0, nullptr);
                              glClientActiveTexture(GL_TEXTURE0);
                          },
                          []
                          {
                              GLint unit = 0;
                              glGetIntegerv(GL_CLIENT_ACTIVE_TEXTURE, &unit);
                              glClientActiveTexture(GL_TEXTURE2);
                              std::vector<double> values = {double(unit),
                                                            double(glIsEnabled(GL_TEXTURE_COORD_ARRAY)),
                                                            Test::Get(GL_TEXTURE_COORD_ARRAY_SIZE)[0]};
                              glClientActiveTexture(static_cast<GLenum>(unit));
                              return values;
                          }});
    }

    void AddClientArray(const char* name, GLenum array)
    {
        m_rows.push_back({name, [array] { glEnableClientState(array); },
                          [array] { glDisableClientState(array); },
                          [array] { return std::vector<double>{double(glIsEnabled(array))}; }});
    }

    void AddTextures()
    {
        for (GLenum unit = 5; unit < 8; ++unit)
        {
            const GLuint texture = m_host.Texture();
            m_rows.push_back({"texture of unit " + std::to_string(unit),
                              [=]
                              {
                                  glActiveTexture(GL_TEXTURE0 + unit);
                                  glBindTexture(GL_TEXTURE_2D, texture);
                              },
                              [=]
                              {
                                  glActiveTexture(GL_TEXTURE0 + unit);
                                  glBindTexture(GL_TEXTURE_2D, 0);
                                  glActiveTexture(GL_TEXTURE0);
                              },
                              [=]
                              {
                                  GLint active = 0;
                                  glGetIntegerv(GL_ACTIVE_TEXTURE, &active);
                                  glActiveTexture(GL_TEXTURE0 + unit);
                                  std::vector<double> values = Test::Get(GL_TEXTURE_BINDING_2D);
                                  glActiveTexture(static_cast<GLenum>(active));
                                  values.push_back(active);
                                  return values;
                              }});
        }
    }

    void AddPixels()
    {
        const GLuint buffer = m_pixels;
        m_rows.push_back({"buffer of pixel packing", [=] { glBindBuffer(GL_PIXEL_PACK_BUFFER, buffer); },
                          [] { glBindBuffer(GL_PIXEL_PACK_BUFFER, 0); },
                          [] { return Test::Get(GL_PIXEL_PACK_BUFFER_BINDING); }});
        m_rows.push_back({"buffer of pixel unpacking", [=] { glBindBuffer(GL_PIXEL_UNPACK_BUFFER, buffer); },
                          [] { glBindBuffer(GL_PIXEL_UNPACK_BUFFER, 0); },
                          [] { return Test::Get(GL_PIXEL_UNPACK_BUFFER_BINDING); }});
        m_rows.push_back({"colour maps of pixels", [] { glPixelTransferi(GL_MAP_COLOR, 1); },
                          [] { glPixelTransferi(GL_MAP_COLOR, 0); }, [] { return Test::Get(GL_MAP_COLOR); }});
    }

    void AddRest()
    {
        m_rows.push_back({"sample mask value", [] { glSampleMaski(0, 0x5); }, [] { glSampleMaski(0, ~0u); },
                          []
                          {
                              GLint mask = 0;
                              glGetIntegeri_v(GL_SAMPLE_MASK_VALUE, 0, &mask);
                              return std::vector<double>{double(mask)};
                          }});
        m_rows.push_back({"least share of samples", [] { glMinSampleShading(0.5f); },
                          [] { glMinSampleShading(0.0f); },
                          [] { return Test::Get(GL_MIN_SAMPLE_SHADING_VALUE); }});
        m_rows.push_back(
            {"clip control", [] { glClipControl(GL_UPPER_LEFT, GL_ZERO_TO_ONE); },
             [] { glClipControl(GL_LOWER_LEFT, GL_NEGATIVE_ONE_TO_ONE); },
             [] {
                 return std::vector<double>{Test::Get(GL_CLIP_ORIGIN)[0], Test::Get(GL_CLIP_DEPTH_MODE)[0]};
             }});
        m_rows.push_back({"clamping of colours", [] { glClampColor(GL_CLAMP_FRAGMENT_COLOR, GL_TRUE); },
                          [] { glClampColor(GL_CLAMP_FRAGMENT_COLOR, GL_FIXED_ONLY); },
                          [] { return Test::Get(GL_CLAMP_FRAGMENT_COLOR); }});
        m_rows.push_back({"matrix mode", [] { glMatrixMode(GL_TEXTURE); }, [] { glMatrixMode(GL_MODELVIEW); },
                          [] { return Test::Get(GL_MATRIX_MODE); }});
        m_rows.push_back({"colour of the fixed function", [] { glColor4f(0.1f, 0.2f, 0.3f, 0.4f); },
                          [] { glColor4f(1, 1, 1, 1); }, [] { return Test::Get(GL_CURRENT_COLOR, 4); }});
        const GLuint framebuffer = m_framebuffer;
        m_rows.push_back({"framebuffer to read from",
                          [=] { glBindFramebuffer(GL_READ_FRAMEBUFFER, framebuffer); },
                          []
                          {
                              GLint draw = 0;
                              glGetIntegerv(GL_DRAW_FRAMEBUFFER_BINDING, &draw);
                              glBindFramebuffer(GL_READ_FRAMEBUFFER, static_cast<GLuint>(draw));
                          },
                          [] { return Test::Get(GL_READ_FRAMEBUFFER_BINDING); }});
        m_rows.push_back({"vertex array with its own indices",
                          [array = m_host.Array(), vertices = m_host.Vertices()]
                          {
                              glBindVertexArray(array);
                              glBindBuffer(GL_ELEMENT_ARRAY_BUFFER, vertices);
                          },
                          [array = m_host.Array()]
                          {
                              glBindVertexArray(array);
                              glBindBuffer(GL_ELEMENT_ARRAY_BUFFER, 0);
                              glBindVertexArray(0);
                          },
                          []
                          {
                              return std::vector<double>{Test::Get(GL_VERTEX_ARRAY_BINDING)[0],
                                                         Test::Get(GL_ELEMENT_ARRAY_BUFFER_BINDING)[0]};
                          }});
    }

    const HostProgram& m_host;
    GLuint m_pixels = 0;
    GLuint m_framebuffer = 0;
    Rows m_rows;
};

/// A presentation with everything in it in a program that draws with GL of its own.
class GLStateGuardTest : public PresentationStage
{
protected:
    GLStateGuardTest() : scene(*app.GetContext()), further(host)
    {
        renderer->ShowSky(true);
        renderer->SetEdges(Host::EdgeLook());
        renderer->ShowAmbientOcclusion(true);
        rows = GLStateTable();
        rows.insert(rows.end(), further.Get().begin(), further.Get().end());
        fresh = Frame();
        ResetAll();
    }

    ~GLStateGuardTest() override
    {
        ResetAll();
        // The driver keeps the program of the last draw, deleted or not, until the next one.
        Frame();
        glScissor(0, 0, 0, 0);
        GLState::Unbind();
        FreeGLStateObjects();
    }

    /// As the engine draws it where nothing else uses GL.
    Picture Frame()
    {
        GLState::ClearFramebuffer();
        return Draw(true);
    }

    void ResetAll()
    {
        for (const GLStateRow& row : rows)
        {
            row.reset();
        }
        // The row knows it of the unit that is active alone.
        for (GLenum unit = 0; unit < 8; ++unit)
        {
            glActiveTexture(GL_TEXTURE0 + unit);
            glTexEnvf(GL_TEXTURE_FILTER_CONTROL, GL_TEXTURE_LOD_BIAS, 0.0f);
        }
        glActiveTexture(GL_TEXTURE0);
        glViewport(0, 0, Width(), Height());
        glScissor(0, 0, Width(), Height());
    }

    Values ReadAll() const
    {
        Values values;
        for (const GLStateRow& row : rows)
        {
            values.push_back(row.read());
        }
        return values;
    }

    /// The program draws, the engine draws a frame, the program draws again.
    void ExpectBothUndisturbed(const std::string& label)
    {
        SCOPED_TRACE(label);
        const GLStateValues named = GLState::Capture();
        const Values before = ReadAll();
        GLState::DropErrors();
        Picture first = DrawHost();
        {
            const Host::GLStateGuard guard;
            ASSERT_TRUE(guard.IsActive());
            ExpectSame(Frame(), fresh, "in the frame");
        }
        ExpectNoGLError();
        const Values after = ReadAll();
        for (std::size_t i = 0; i < rows.size(); ++i)
        {
            EXPECT_EQ(before[i], after[i]) << rows[i].name;
        }
        EXPECT_EQ(GLState::Capture(), named);
        ExpectSame(DrawHost(), first, "in the program's own picture");
    }

    /// The program's picture by the state as it is, over what is always the same.
    Picture DrawHost()
    {
        {
            const Host::GLStateGuard guard;
            GLState::ClearFramebuffer();
        }
        host.Draw();
        const Host::GLStateGuard guard;
        return ReadPixels();
    }

    EveryFeatureScene scene;
    HostProgram host;
    FurtherRows further;
    Rows rows;
    Picture fresh;
};

} // namespace

TEST_F(GLStateGuardTest, TheProgramDrawsSomething)
{
    for (const bool ownsArray : {false, true})
    {
        ResetAll();
        host.SetUp(ownsArray);
        const Picture picture = DrawHost();
        EXPECT_EQ(picture.At(0, 0), (Pixel{26, 76, 51, 255}));
        EXPECT_NE(picture.At(48, 32), picture.At(0, 0));
    }
}

TEST_F(GLStateGuardTest, EachStateByItselfIsKeptAndDoesNotReachTheFrame)
{
    for (const bool ownsArray : {false, true})
    {
        for (const GLStateRow& row : rows)
        {
            ResetAll();
            host.SetUp(ownsArray);
            row.change();
            ExpectBothUndisturbed(row.name + (ownsArray ? ", with a vertex array" : ""));
        }
    }
}

TEST_F(GLStateGuardTest, AllStatesTogetherAreKeptAndDoNotReachTheFrame)
{
    for (const bool isNew : {false, true})
    {
        ResetAll();
        if (isNew)
        {
            SuspendAndResume();
        }
        host.SetUp(false);
        for (const GLStateRow& row : rows)
        {
            row.change();
        }
        ExpectBothUndisturbed(isNew ? "a first frame" : "a later frame");
    }
}

TEST_F(GLStateGuardTest, EachWayOfPixelsIsKeptFromAFirstFrame)
{
    int count = 0;
    for (const GLStateRow& row : rows)
    {
        if (row.name.find("pixel") != std::string::npos)
        {
            ResetAll();
            SuspendAndResume();
            host.SetUp(true);
            row.change();
            ExpectBothUndisturbed(row.name);
            ++count;
        }
    }
    EXPECT_GT(count, 5);
}

TEST_F(GLStateGuardTest, GuardsNest)
{
    host.SetUp(true);
    const Values before = ReadAll();
    {
        const Host::GLStateGuard outer;
        host.SetUp(false);
        const Values between = ReadAll();
        {
            const Host::GLStateGuard inner;
            Frame();
        }
        EXPECT_EQ(ReadAll(), between);
    }
    EXPECT_EQ(ReadAll(), before);
}

TEST_F(GLStateGuardTest, WithoutRoomOnTheStackNothingIsTouched)
{
    GLint most = 0;
    glGetIntegerv(GL_MAX_ATTRIB_STACK_DEPTH, &most);
    for (GLint i = 0; i < most; ++i)
    {
        glPushAttrib(GL_CURRENT_BIT);
    }
    host.SetUp(true);
    const Values before = ReadAll();
    {
        const Host::GLStateGuard guard;
        EXPECT_FALSE(guard.IsActive());
        EXPECT_EQ(ReadAll(), before);
    }
    EXPECT_EQ(ReadAll(), before);
    ExpectNoGLError();
    for (GLint i = 0; i < most; ++i)
    {
        glPopAttrib();
    }
    ExpectNoGLError();
}

} // namespace OV::Test
