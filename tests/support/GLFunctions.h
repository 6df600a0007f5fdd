#pragma once

// The GL functions that a recorder stands in for. The engine may use any of them; one that is
// missing here goes to the driver unseen, or crashes where there is none.

/// Functions of GL 1.1, which the test program defines: result, name after the prefix,
/// parameters, arguments.
#define ORVANE_GL11_FUNCTIONS(X)                                                                                      \
    X(void, BindTexture, (GLenum target, GLuint texture), (target, texture))                                          \
    X(void, BlendFunc, (GLenum source, GLenum destination), (source, destination))                                    \
    X(void, Clear, (GLbitfield mask), (mask))                                                                         \
    X(void, ClearColor, (GLclampf r, GLclampf g, GLclampf b, GLclampf a), (r, g, b, a))                               \
    X(void, ClearDepth, (GLclampd depth), (depth))                                                                    \
    X(void, ClearStencil, (GLint value), (value))                                                                     \
    X(void, ColorMask, (GLboolean r, GLboolean g, GLboolean b, GLboolean a), (r, g, b, a))                            \
    X(void, CopyTexImage2D,                                                                                           \
      (GLenum target, GLint level, GLenum format, GLint x, GLint y, GLsizei width, GLsizei height, GLint border),     \
      (target, level, format, x, y, width, height, border))                                                           \
    X(void, CopyTexSubImage2D,                                                                                        \
      (GLenum target, GLint level, GLint toX, GLint toY, GLint x, GLint y, GLsizei width, GLsizei height),            \
      (target, level, toX, toY, x, y, width, height))                                                                 \
    X(void, CullFace, (GLenum mode), (mode))                                                                          \
    X(void, DeleteTextures, (GLsizei n, const GLuint* names), (n, names))                                             \
    X(void, DepthFunc, (GLenum function), (function))                                                                 \
    X(void, DepthMask, (GLboolean on), (on))                                                                          \
    X(void, DepthRange, (GLclampd from, GLclampd to), (from, to))                                                     \
    X(void, Disable, (GLenum capability), (capability))                                                               \
    X(void, DrawArrays, (GLenum mode, GLint first, GLsizei count), (mode, first, count))                              \
    X(void, DrawBuffer, (GLenum mode), (mode))                                                                        \
    X(void, DrawElements, (GLenum mode, GLsizei count, GLenum type, const void* indices),                             \
      (mode, count, type, indices))                                                                                   \
    X(void, Enable, (GLenum capability), (capability))                                                                \
    X(void, Finish, (void), ())                                                                                       \
    X(void, Flush, (void), ())                                                                                        \
    X(void, FrontFace, (GLenum mode), (mode))                                                                         \
    X(void, GenTextures, (GLsizei n, GLuint* names), (n, names))                                                      \
    X(void, GetBooleanv, (GLenum name, GLboolean* values), (name, values))                                            \
    X(GLenum, GetError, (void), ())                                                                                   \
    X(void, GetFloatv, (GLenum name, GLfloat* values), (name, values))                                                \
    X(void, GetIntegerv, (GLenum name, GLint* values), (name, values))                                                \
    X(const GLubyte*, GetString, (GLenum name), (name))                                                               \
    X(void, GetTexImage, (GLenum target, GLint level, GLenum format, GLenum type, void* pixels),                      \
      (target, level, format, type, pixels))                                                                          \
    X(void, GetTexLevelParameteriv, (GLenum target, GLint level, GLenum name, GLint* values),                         \
      (target, level, name, values))                                                                                  \
    X(void, GetTexParameterfv, (GLenum target, GLenum name, GLfloat* values), (target, name, values))                 \
    X(void, GetTexParameteriv, (GLenum target, GLenum name, GLint* values), (target, name, values))                   \
    X(void, Hint, (GLenum target, GLenum mode), (target, mode))                                                       \
    X(GLboolean, IsEnabled, (GLenum capability), (capability))                                                        \
    X(GLboolean, IsTexture, (GLuint texture), (texture))                                                              \
    X(void, LineWidth, (GLfloat width), (width))                                                                      \
    X(void, PixelStorei, (GLenum name, GLint value), (name, value))                                                   \
    X(void, PointSize, (GLfloat size), (size))                                                                        \
    X(void, PolygonMode, (GLenum face, GLenum mode), (face, mode))                                                    \
    X(void, PolygonOffset, (GLfloat factor, GLfloat units), (factor, units))                                          \
    X(void, ReadBuffer, (GLenum mode), (mode))                                                                        \
    X(void, ReadPixels,                                                                                               \
      (GLint x, GLint y, GLsizei width, GLsizei height, GLenum format, GLenum type, void* pixels),                    \
      (x, y, width, height, format, type, pixels))                                                                    \
    X(void, Scissor, (GLint x, GLint y, GLsizei width, GLsizei height), (x, y, width, height))                        \
    X(void, StencilFunc, (GLenum function, GLint reference, GLuint mask), (function, reference, mask))                \
    X(void, StencilMask, (GLuint mask), (mask))                                                                       \
    X(void, StencilOp, (GLenum fail, GLenum depthFail, GLenum pass), (fail, depthFail, pass))                         \
    X(void, TexEnvi, (GLenum target, GLenum name, GLint value), (target, name, value))                                \
    X(void, TexImage2D,                                                                                               \
      (GLenum target, GLint level, GLint internalFormat, GLsizei width, GLsizei height, GLint border, GLenum format,  \
       GLenum type, const void* pixels),                                                                              \
      (target, level, internalFormat, width, height, border, format, type, pixels))                                   \
    X(void, TexParameterf, (GLenum target, GLenum name, GLfloat value), (target, name, value))                        \
    X(void, TexParameterfv, (GLenum target, GLenum name, const GLfloat* values), (target, name, values))              \
    X(void, TexParameteri, (GLenum target, GLenum name, GLint value), (target, name, value))                          \
    X(void, TexSubImage2D,                                                                                            \
      (GLenum target, GLint level, GLint x, GLint y, GLsizei width, GLsizei height, GLenum format, GLenum type,       \
       const void* pixels),                                                                                           \
      (target, level, x, y, width, height, format, type, pixels))                                                     \
    X(void, Viewport, (GLint x, GLint y, GLsizei width, GLsizei height), (x, y, width, height))

/// Later functions, reached through GLEW's pointers, which say the rest.
#define ORVANE_GLEW_FUNCTIONS(X)  \
    X(ActiveTexture)              \
    X(AttachShader)               \
    X(BindAttribLocation)         \
    X(BindBuffer)                 \
    X(BindFramebuffer)            \
    X(BindRenderbuffer)           \
    X(BindSampler)                \
    X(ClipControl)                \
    X(BindVertexArray)            \
    X(BlendColor)                 \
    X(BlendEquation)              \
    X(BlendEquationSeparate)      \
    X(BlendFuncSeparate)          \
    X(BlitFramebuffer)            \
    X(BufferData)                 \
    X(BufferSubData)              \
    X(CheckFramebufferStatus)     \
    X(CompileShader)              \
    X(CreateProgram)              \
    X(CreateShader)               \
    X(DeleteBuffers)              \
    X(DeleteFramebuffers)         \
    X(DeleteProgram)              \
    X(DeleteRenderbuffers)        \
    X(DeleteShader)               \
    X(DetachShader)               \
    X(DisableVertexAttribArray)   \
    X(DrawBuffers)                \
    X(EnableVertexAttribArray)    \
    X(FramebufferRenderbuffer)    \
    X(FramebufferTexture2D)       \
    X(GenBuffers)                 \
    X(GenFramebuffers)            \
    X(GenRenderbuffers)           \
    X(GenerateMipmap)             \
    X(GetActiveAttrib)            \
    X(GetActiveUniform)           \
    X(GetAttachedShaders)         \
    X(GetAttribLocation)          \
    X(GetBufferParameteriv)       \
    X(GetBufferSubData)           \
    X(GetProgramInfoLog)          \
    X(GetProgramiv)               \
    X(GetShaderInfoLog)           \
    X(GetShaderiv)                \
    X(GetUniformLocation)         \
    X(GetUniformfv)               \
    X(GetUniformiv)               \
    X(GetVertexAttribiv)          \
    X(IsBuffer)                   \
    X(IsFramebuffer)              \
    X(IsProgram)                  \
    X(IsRenderbuffer)             \
    X(IsShader)                   \
    X(LinkProgram)                \
    X(MultiDrawElements)          \
    X(MinSampleShading)           \
    X(RenderbufferStorage)        \
    X(RenderbufferStorageMultisample) \
    X(SampleCoverage)             \
    X(ShaderSource)               \
    X(StencilFuncSeparate)        \
    X(StencilMaskSeparate)        \
    X(StencilOpSeparate)          \
    X(Uniform1f)                  \
    X(Uniform1fv)                 \
    X(Uniform1i)                  \
    X(Uniform1iv)                 \
    X(Uniform2f)                  \
    X(Uniform2fv)                 \
    X(Uniform2i)                  \
    X(Uniform2iv)                 \
    X(Uniform3f)                  \
    X(Uniform3fv)                 \
    X(Uniform3i)                  \
    X(Uniform3iv)                 \
    X(Uniform4f)                  \
    X(Uniform4fv)                 \
    X(Uniform4i)                  \
    X(Uniform4iv)                 \
    X(UniformMatrix2fv)           \
    X(UniformMatrix3fv)           \
    X(UniformMatrix4fv)           \
    X(UseProgram)                 \
    X(ValidateProgram)            \
    X(VertexAttrib1f)             \
    X(VertexAttrib2f)             \
    X(VertexAttrib3f)             \
    X(VertexAttrib4f)             \
    X(VertexAttrib4fv)            \
    X(VertexAttribPointer)
