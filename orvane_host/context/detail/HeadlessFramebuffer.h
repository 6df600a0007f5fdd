#pragma once

#include "orvane_host/context/detail/GLFunctions.h"

#include <memory>
#include <string>
#include <vector>

namespace OV::Host::Detail
{

/// What a GL context allows a framebuffer to be.
struct FramebufferLimits
{
    int maxWidth = 0;
    int maxHeight = 0;
    int maxSamples = 0;

    static FramebufferLimits Query(const GLFunctions& gl);
};

/// A framebuffer object with a colour and a packed depth and stencil renderbuffer and, when it
/// is multisampled, a second one that the samples are resolved into. Made, used and destroyed
/// with its context current.
class HeadlessFramebuffer
{
public:
    /// Null, with the reason in `error`, when the driver does not give it. Leaves the bindings
    /// of framebuffer and renderbuffer as they were.
    /// @param bits of a channel, 8 or 16.
    static std::unique_ptr<HeadlessFramebuffer> Create(const GLFunctions& gl, const FramebufferLimits& limits,
                                                       int width, int height, int samples, std::string& error,
                                                       int bits = 8);

    ~HeadlessFramebuffer();

    HeadlessFramebuffer(const HeadlessFramebuffer&) = delete;
    HeadlessFramebuffer& operator=(const HeadlessFramebuffer&) = delete;

    /// Forgets the names, so that the destructor makes no GL call.
    void Abandon();

    void Bind();
    bool ReadPixels(std::vector<unsigned char>& rgba);

    /// Reads RGBA in the framebuffer's bits a channel, tight rows, the bottom one first.
    /// @param x, y of the lower left corner of what is read, which lies inside.
    bool ReadPart(int x, int y, int width, int height, void* rgba);

    int GetWidth() const { return m_width; }
    int GetHeight() const { return m_height; }
    int GetSamples() const { return m_samples; }
    unsigned int GetName() const { return m_draw.framebuffer; }

private:
    /// GL names of one framebuffer and what is attached to it; 0 means none.
    struct Names
    {
        GLuint framebuffer = 0;
        GLuint color = 0;
        GLuint depthStencil = 0;
    };

    HeadlessFramebuffer(const GLFunctions& gl, int width, int height, int bits);

    bool Build(Names& names, int samples, bool withDepth, std::string& error);
    bool AddStorage(GLuint& name, GLenum format, GLenum attachment, int samples);
    void Delete(Names& names);

    const GLFunctions& m_gl;
    int m_width;
    int m_height;
    int m_bits;
    int m_samples = 0;
    Names m_draw;
    Names m_resolve;
};

}  // namespace OV::Host::Detail
