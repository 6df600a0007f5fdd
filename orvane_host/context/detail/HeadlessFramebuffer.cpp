#include "orvane_host/context/detail/HeadlessFramebuffer.h"

#include <algorithm>
#include <cstddef>
#include <new>

namespace OV::Host::Detail
{

namespace
{

/// Puts framebuffer and renderbuffer bindings back at the end of a scope.
class BindingGuard
{
public:
    explicit BindingGuard(const GLFunctions& gl) : m_gl(gl)
    {
        gl.getIntegerv(GL_DRAW_FRAMEBUFFER_BINDING, &m_draw);
        gl.getIntegerv(GL_READ_FRAMEBUFFER_BINDING, &m_read);
        gl.getIntegerv(GL_RENDERBUFFER_BINDING, &m_renderbuffer);
    }

    ~BindingGuard()
    {
        m_gl.bindFramebuffer(GL_DRAW_FRAMEBUFFER, static_cast<GLuint>(m_draw));
        m_gl.bindFramebuffer(GL_READ_FRAMEBUFFER, static_cast<GLuint>(m_read));
        m_gl.bindRenderbuffer(GL_RENDERBUFFER, static_cast<GLuint>(m_renderbuffer));
    }

    BindingGuard(const BindingGuard&) = delete;
    BindingGuard& operator=(const BindingGuard&) = delete;

private:
    const GLFunctions& m_gl;
    GLint m_draw = 0;
    GLint m_read = 0;
    GLint m_renderbuffer = 0;
};

/// Makes GL write rows without padding to memory for the length of a scope.
class PackGuard
{
public:
    explicit PackGuard(const GLFunctions& gl) : m_gl(gl)
    {
        for (Setting& setting : m_settings)
        {
            gl.getIntegerv(setting.name, &setting.value);
            gl.pixelStorei(setting.name, setting.name == GL_PACK_ALIGNMENT ? 1 : 0);
        }
        gl.getIntegerv(GL_PIXEL_PACK_BUFFER_BINDING, &m_buffer);
        gl.bindBuffer(GL_PIXEL_PACK_BUFFER, 0);
    }

    ~PackGuard()
    {
        for (const Setting& setting : m_settings)
        {
            m_gl.pixelStorei(setting.name, setting.value);
        }
        m_gl.bindBuffer(GL_PIXEL_PACK_BUFFER, static_cast<GLuint>(m_buffer));
    }

    PackGuard(const PackGuard&) = delete;
    PackGuard& operator=(const PackGuard&) = delete;

private:
    struct Setting
    {
        GLenum name;
        GLint value;
    };

    const GLFunctions& m_gl;
    Setting m_settings[4] = {
        {GL_PACK_ALIGNMENT, 4}, {GL_PACK_ROW_LENGTH, 0}, {GL_PACK_SKIP_ROWS, 0}, {GL_PACK_SKIP_PIXELS, 0}};
    GLint m_buffer = 0;
};

/// Drops errors of earlier calls. Bounded, since a lost context reports an error for ever.
void ClearErrors(const GLFunctions& gl)
{
    for (int i = 0; i < 16 && gl.getError() != GL_NO_ERROR; ++i)
    {
    }
}

std::string SizeText(int width, int height)
{
    return std::to_string(width) + "x" + std::to_string(height);
}

/// The reason for a refusal before GL is asked, or an empty text.
std::string FindRefusal(const FramebufferLimits& limits, int width, int height, int samples)
{
    if (width < 1 || height < 1)
    {
        return "a framebuffer of " + SizeText(width, height) + " pixels has no area; ask for at least 1x1";
    }
    if (width > limits.maxWidth || height > limits.maxHeight)
    {
        return "a framebuffer of " + SizeText(width, height) + " pixels is too large; this GL allows at most "
            + SizeText(limits.maxWidth, limits.maxHeight);
    }
    if (samples < 0 || samples > std::max(limits.maxSamples, 1))
    {
        return std::to_string(samples) + " samples a pixel are not to be had; this GL allows 0 to "
            + std::to_string(limits.maxSamples);
    }
    return {};
}

}  // namespace

FramebufferLimits FramebufferLimits::Query(const GLFunctions& gl)
{
    GLint renderbuffer = 0;
    GLint viewport[2] = {0, 0};
    GLint samples = 0;
    gl.getIntegerv(GL_MAX_RENDERBUFFER_SIZE, &renderbuffer);
    gl.getIntegerv(GL_MAX_VIEWPORT_DIMS, viewport);
    gl.getIntegerv(GL_MAX_SAMPLES, &samples);
    return {std::min(renderbuffer, viewport[0]), std::min(renderbuffer, viewport[1]), samples};
}

std::unique_ptr<HeadlessFramebuffer> HeadlessFramebuffer::Create(const GLFunctions& gl,
                                                                 const FramebufferLimits& limits, int width,
                                                                 int height, int samples, std::string& error,
                                                                 int bits)
{
    const std::string refusal = FindRefusal(limits, width, height, samples);
    if (!refusal.empty())
    {
        error = refusal;
        return nullptr;
    }
    const BindingGuard guard(gl);
    ClearErrors(gl);
    std::unique_ptr<HeadlessFramebuffer> made(new HeadlessFramebuffer(gl, width, height, bits));
    const int asked = samples > 1 ? samples : 0;
    if (!made->Build(made->m_draw, asked, true, error)
        || (asked > 0 && !made->Build(made->m_resolve, 0, false, error)))
    {
        return nullptr;
    }
    return made;
}

HeadlessFramebuffer::HeadlessFramebuffer(const GLFunctions& gl, int width, int height, int bits)
    : m_gl(gl), m_width(width), m_height(height), m_bits(bits)
{
}

HeadlessFramebuffer::~HeadlessFramebuffer()
{
    Delete(m_draw);
    Delete(m_resolve);
}

void HeadlessFramebuffer::Abandon()
{
    m_draw = {};
    m_resolve = {};
}

bool HeadlessFramebuffer::Build(Names& names, int samples, bool withDepth, std::string& error)
{
    m_gl.genFramebuffers(1, &names.framebuffer);
    m_gl.bindFramebuffer(GL_FRAMEBUFFER, names.framebuffer);
    bool stored = AddStorage(names.color, m_bits == 16 ? GL_RGBA16 : GL_RGBA8, GL_COLOR_ATTACHMENT0, samples);
    if (samples > 0)
    {
        GLint given = 0;
        m_gl.getRenderbufferParameteriv(GL_RENDERBUFFER, GL_RENDERBUFFER_SAMPLES, &given);
        m_samples = given;
    }
    stored = stored
        && (!withDepth
            || AddStorage(names.depthStencil, GL_DEPTH24_STENCIL8, GL_DEPTH_STENCIL_ATTACHMENT, samples));
    const std::string what = SizeText(m_width, m_height) + " pixels"
        + (samples > 0 ? " with " + std::to_string(samples) + " samples" : "");
    if (!stored)
    {
        error = "this GL has no memory for a framebuffer of " + what + "; ask for a smaller one or fewer samples";
        return false;
    }
    const GLenum status = m_gl.checkFramebufferStatus(GL_FRAMEBUFFER);
    if (status != GL_FRAMEBUFFER_COMPLETE)
    {
        error = "this GL refuses a framebuffer of " + what + " (status " + std::to_string(status)
            + "); ask for a smaller one or fewer samples";
        return false;
    }
    return true;
}

bool HeadlessFramebuffer::AddStorage(GLuint& name, GLenum format, GLenum attachment, int samples)
{
    m_gl.genRenderbuffers(1, &name);
    m_gl.bindRenderbuffer(GL_RENDERBUFFER, name);
    m_gl.renderbufferStorageMultisample(GL_RENDERBUFFER, samples, format, m_width, m_height);
    m_gl.framebufferRenderbuffer(GL_FRAMEBUFFER, attachment, GL_RENDERBUFFER, name);
    return m_gl.getError() == GL_NO_ERROR;
}

void HeadlessFramebuffer::Delete(Names& names)
{
    if (names.framebuffer == 0)
    {
        return;
    }
    m_gl.deleteFramebuffers(1, &names.framebuffer);
    m_gl.deleteRenderbuffers(1, &names.color);
    m_gl.deleteRenderbuffers(1, &names.depthStencil);
    names = {};
}

void HeadlessFramebuffer::Bind()
{
    m_gl.bindFramebuffer(GL_FRAMEBUFFER, m_draw.framebuffer);
    m_gl.viewport(0, 0, m_width, m_height);
}

bool HeadlessFramebuffer::ReadPixels(std::vector<unsigned char>& rgba)
{
    rgba.clear();
    const std::size_t row = static_cast<std::size_t>(m_width) * 4;
    try
    {
        rgba.resize(row * static_cast<std::size_t>(m_height));
    }
    catch (const std::bad_alloc&)
    {
        return false;
    }
    if (!ReadPart(0, 0, m_width, m_height, rgba.data()))
    {
        rgba.clear();
        return false;
    }
    // GL hands out the bottom row first.
    for (std::size_t top = 0, bottom = static_cast<std::size_t>(m_height) - 1; top < bottom; ++top, --bottom)
    {
        std::swap_ranges(rgba.begin() + static_cast<std::ptrdiff_t>(top * row),
                         rgba.begin() + static_cast<std::ptrdiff_t>((top + 1) * row),
                         rgba.begin() + static_cast<std::ptrdiff_t>(bottom * row));
    }
    return true;
}

bool HeadlessFramebuffer::ReadPart(int x, int y, int width, int height, void* rgba)
{
    const BindingGuard guard(m_gl);
    const bool scissored = m_gl.isEnabled(GL_SCISSOR_TEST) != GL_FALSE;
    ClearErrors(m_gl);
    m_gl.bindFramebuffer(GL_READ_FRAMEBUFFER, m_draw.framebuffer);
    if (m_resolve.framebuffer != 0)
    {
        // A blit is cut by the scissor, reading is not.
        m_gl.disable(GL_SCISSOR_TEST);
        m_gl.bindFramebuffer(GL_DRAW_FRAMEBUFFER, m_resolve.framebuffer);
        m_gl.blitFramebuffer(x, y, x + width, y + height, x, y, x + width, y + height, GL_COLOR_BUFFER_BIT, GL_NEAREST);
        m_gl.bindFramebuffer(GL_READ_FRAMEBUFFER, m_resolve.framebuffer);
    }
    {
        const PackGuard pack(m_gl);
        m_gl.readPixels(x, y, width, height, GL_RGBA, m_bits == 16 ? GL_UNSIGNED_SHORT : GL_UNSIGNED_BYTE, rgba);
    }
    if (scissored)
    {
        m_gl.enable(GL_SCISSOR_TEST);
    }
    return m_gl.getError() == GL_NO_ERROR;
}

}  // namespace OV::Host::Detail
