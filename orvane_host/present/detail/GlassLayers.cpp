#define GL_GLEXT_PROTOTYPES

#include "orvane_host/present/detail/GlassLayers.h"

#include "orvane_host/present/StageAccess.h"
#include "orvane_host/present/detail/Effects.h"
#include "orvane_host/present/detail/GlassEffect.h"
#include "orvane_host/present/detail/LightShareScope.h"
#include "orvane_host/present/detail/SurfacePass.h"

#include <GL/gl.h>
#include <GL/glext.h>

#include <algorithm>
#include <cstdlib>

namespace OV::Host::Detail
{

namespace
{

GLint Query(GLenum name)
{
    GLint value = 0;
    glGetIntegerv(name, &value);
    return value;
}

/// Buffers of numbers that have a point came with this version.
bool HasFloatBuffers()
{
    const auto* const version = reinterpret_cast<const char*>(glGetString(GL_VERSION));
    return version && std::atoi(version) >= 3;
}

/// Leaves out what hides nothing here, for the length of a scope.
class DepthOnlyScope
{
public:
    DepthOnlyScope() { glColorMask(GL_FALSE, GL_FALSE, GL_FALSE, GL_FALSE); }
    ~DepthOnlyScope() { glColorMask(GL_TRUE, GL_TRUE, GL_TRUE, GL_TRUE); }

    DepthOnlyScope(const DepthOnlyScope&) = delete;
    DepthOnlyScope& operator=(const DepthOnlyScope&) = delete;

private:
    NoLightShareScope m_unshared{true};
};

/// Surfaces blend as they are told here, for the length of a scope.
class OwnBlendingScope
{
public:
    OwnBlendingScope()
    {
        EffectES20::LeaveBlending(true);
        // Lines leave it on.
        glDisable(GL_BLEND);
    }

    ~OwnBlendingScope()
    {
        EffectES20::LeaveBlending(false);
        glDisable(GL_BLEND);
    }

    OwnBlendingScope(const OwnBlendingScope&) = delete;
    OwnBlendingScope& operator=(const OwnBlendingScope&) = delete;
};

/// Draws over all of a buffer without its depths, for the length of a scope.
class OverBufferScope
{
public:
    OverBufferScope()
    {
        glDisable(GL_DEPTH_TEST);
        glDisable(GL_CULL_FACE);
        glEnable(GL_BLEND);
    }

    ~OverBufferScope()
    {
        glDisable(GL_BLEND);
        glEnable(GL_CULL_FACE);
        glEnable(GL_DEPTH_TEST);
    }

    OverBufferScope(const OverBufferScope&) = delete;
    OverBufferScope& operator=(const OverBufferScope&) = delete;
};

void BindAt(int unit, unsigned int texture)
{
    glActiveTexture(GL_TEXTURE0 + static_cast<GLenum>(unit));
    glBindTexture(GL_TEXTURE_2D, texture);
    glActiveTexture(GL_TEXTURE0);
}

} // namespace

GlassLayers::~GlassLayers()
{
    ReleaseGL();
}

void GlassLayers::ReleaseGL()
{
    Drop(m_effect);
    if (m_textures[0] != 0)
    {
        glDeleteFramebuffers(FramebufferCount, m_framebuffers.data());
        glDeleteTextures(TextureCount, m_textures.data());
        glDeleteQueries(1, &m_query);
    }
    m_textures.fill(0);
    m_framebuffers.fill(0);
    m_query = 0;
    m_size = {};
    m_isUsable = false;
}

bool GlassLayers::Prepare(const PresentationFrame& frame, const GlassSettings& settings)
{
    m_settings = settings;
    // Where the picture has samples, rims of glass are as smooth by twice the pixels each way; not while
    // it has to be quick.
    const bool wantsFine = frame.multisampled && settings.order == GlassOrder::Exact;
    const GLint most = std::min(Query(GL_MAX_TEXTURE_SIZE), 16384);
    const int longest = std::max(frame.target.width, frame.target.height);
    m_scale = wantsFine && 2 * longest <= most ? 2 : 1;
    const PixelSize size{m_scale * frame.target.width, m_scale * frame.target.height};
    if (size != m_size)
    {
        ReleaseGL();
        m_size = size;
        m_isUsable = longest <= most && Make();
    }
    return m_isUsable;
}

bool GlassLayers::Make()
{
    if (!HasFloatBuffers())
    {
        return false;
    }
    const GLint framebuffer = Query(GL_FRAMEBUFFER_BINDING);
    glGenTextures(TextureCount, m_textures.data());
    glGenFramebuffers(FramebufferCount, m_framebuffers.data());
    glGenQueries(1, &m_query);
    MakeTexture(Solid, GL_DEPTH_COMPONENT32F);
    MakeTexture(First, GL_DEPTH_COMPONENT32F);
    MakeTexture(Second, GL_DEPTH_COMPONENT32F);
    MakeTexture(Layer, GL_RGBA8);
    MakeTexture(Sum, GL_RGBA16F);
    MakeTexture(Glass, GL_RGBA16F);
    const bool isMade = Attach(IntoSolid, Layer, Solid) && Attach(IntoFirst, Layer, First)
        && Attach(IntoSecond, Layer, Second) && Attach(IntoSum, Sum, TextureCount)
        && Attach(IntoGlass, Glass, TextureCount);
    glBindFramebuffer(GL_FRAMEBUFFER, static_cast<GLuint>(framebuffer));
    // A refusal is none of the host's.
    for (int i = 0; i < 16 && !isMade && glGetError() != GL_NO_ERROR; ++i)
    {
    }
    return isMade;
}

void GlassLayers::MakeTexture(Texture texture, int format) const
{
    const bool isDepth = format == GL_DEPTH_COMPONENT32F;
    glBindTexture(GL_TEXTURE_2D, m_textures[texture]);
    for (const GLenum name : {GL_TEXTURE_MIN_FILTER, GL_TEXTURE_MAG_FILTER})
    {
        glTexParameteri(GL_TEXTURE_2D, name, GL_NEAREST);
    }
    for (const GLenum name : {GL_TEXTURE_WRAP_S, GL_TEXTURE_WRAP_T})
    {
        glTexParameteri(GL_TEXTURE_2D, name, GL_CLAMP_TO_EDGE);
    }
    glTexImage2D(GL_TEXTURE_2D, 0, format, m_size.width, m_size.height, 0, isDepth ? GL_DEPTH_COMPONENT : GL_RGBA,
                 isDepth ? GL_FLOAT : GL_UNSIGNED_BYTE, nullptr);
    glBindTexture(GL_TEXTURE_2D, 0);
}

bool GlassLayers::Attach(Framebuffer into, Texture color, Texture depth) const
{
    glBindFramebuffer(GL_FRAMEBUFFER, m_framebuffers[into]);
    glFramebufferTexture2D(GL_FRAMEBUFFER, GL_COLOR_ATTACHMENT0, GL_TEXTURE_2D, m_textures[color], 0);
    if (depth != TextureCount)
    {
        glFramebufferTexture2D(GL_FRAMEBUFFER, GL_DEPTH_ATTACHMENT, GL_TEXTURE_2D, m_textures[depth], 0);
    }
    return glCheckFramebufferStatus(GL_FRAMEBUFFER) == GL_FRAMEBUFFER_COMPLETE;
}

/// Binds and clears.
void GlassLayers::Begin(Framebuffer into, float depth) const
{
    const bool isSum = into == IntoSum || into == IntoGlass;
    glBindFramebuffer(GL_FRAMEBUFFER, m_framebuffers[into]);
    // Of a sum alpha is what is let through.
    glClearColor(0.0f, 0.0f, 0.0f, isSum ? 1.0f : 0.0f);
    glClearDepth(depth);
    glClear(GL_COLOR_BUFFER_BIT | (isSum ? 0u : GL_DEPTH_BUFFER_BIT));
    glClearDepth(1.0);
}

void GlassLayers::Gather(PresentationFrame& frame, LightShare* light, unsigned int solidDepth, const Drawing& solid,
                         const Drawing& glass)
{
    if (!m_effect)
    {
        m_effect = new GlassEffect;
    }
    {
        const OffscreenScope offscreen(frame);
        glViewport(0, 0, m_size.width, m_size.height);
        if (solidDepth == 0)
        {
            Begin(IntoSolid, 1.0f);
            const DepthOnlyScope depthOnly;
            solid();
        }
        BindAt(GlassShare::SolidUnit, solidDepth != 0 ? solidDepth : m_textures[Solid]);
        frame.usedUnits[GlassShare::SolidUnit] = true;
        frame.usedUnits[GlassShare::LastUnit] = true;
        // Before the first layer lies nothing.
        Begin(IntoSecond, 0.0f);
        Begin(IntoGlass, 0.0f);
        bool isMore = true;
        int number = 0;
        if (m_settings.order == GlassOrder::Exact)
        {
            m_share.Set(GlassShare::Form::Layer, light, m_size.width, m_size.height, 1.0f / static_cast<float>(m_scale));
            const LightShareScope share(&m_share);
            for (; isMore && number < m_settings.layers; ++number)
            {
                isMore = DrawLayer(number, glass);
                if (isMore)
                {
                    Put(frame, Layer);
                }
            }
        }
        if (isMore)
        {
            DrawSum(frame, light, glass, number % 2 == 0 ? Second : First);
        }
        BindAt(GlassShare::SolidUnit, 0);
        BindAt(GlassShare::LastUnit, 0);
        glBindFramebuffer(GL_FRAMEBUFFER, frame.framebuffer);
    }
}

/// @return whether there is anything in it.
bool GlassLayers::DrawLayer(int number, const Drawing& glass)
{
    const bool isEven = number % 2 == 0;
    BindAt(GlassShare::LastUnit, m_textures[isEven ? Second : First]);
    Begin(isEven ? IntoFirst : IntoSecond, 1.0f);
    const OwnBlendingScope unblended;
    glBeginQuery(GL_SAMPLES_PASSED, m_query);
    glass();
    glEndQuery(GL_SAMPLES_PASSED);
    GLuint pixels = 0;
    glGetQueryObjectuiv(m_query, GL_QUERY_RESULT, &pixels);
    return pixels != 0;
}

/// Puts a layer, or a sum, behind what is put together.
void GlassLayers::Put(PresentationFrame& frame, Texture texture)
{
    glBindFramebuffer(GL_FRAMEBUFFER, m_framebuffers[IntoGlass]);
    const OverBufferScope over;
    glBlendFuncSeparate(GL_DST_ALPHA, GL_ONE, GL_ZERO, GL_ONE_MINUS_SRC_ALPHA);
    m_effect->Show(texture == Sum ? GlassEffect::Sum : GlassEffect::Layer, m_textures[texture], m_size.width,
                   m_size.height);
    frame.renderer.DrawOverScreen(*m_effect);
}

/// Draws what lies behind the last layer, all at once.
void GlassLayers::DrawSum(PresentationFrame& frame, LightShare* light, const Drawing& glass, Texture last)
{
    BindAt(GlassShare::LastUnit, m_textures[last]);
    Begin(IntoSum, 1.0f);
    {
        m_share.Set(GlassShare::Form::Sum, light, m_size.width, m_size.height, 1.0f / static_cast<float>(m_scale));
        const LightShareScope share(&m_share);
        const OwnBlendingScope added;
        glEnable(GL_BLEND);
        glBlendFuncSeparate(GL_ONE, GL_ONE, GL_ZERO, GL_ONE_MINUS_SRC_ALPHA);
        glass();
    }
    Put(frame, Sum);
}

void GlassLayers::Lay(PresentationFrame& frame)
{
    const OverBufferScope over;
    // A picture without a background keeps what it has of one.
    glColorMask(GL_TRUE, GL_TRUE, GL_TRUE, GL_FALSE);
    glBlendFunc(GL_ONE, GL_SRC_ALPHA);
    m_effect->Show(GlassEffect::Lay, m_textures[Glass], frame.target.width, frame.target.height);
    frame.renderer.DrawOverScreen(*m_effect);
    glColorMask(GL_TRUE, GL_TRUE, GL_TRUE, GL_TRUE);
}

} // namespace OV::Host::Detail
