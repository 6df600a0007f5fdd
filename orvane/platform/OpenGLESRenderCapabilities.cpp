#include "orvane/platform/OpenGLESRenderCapabilities.h"

#include "orvane/platform/detail/GLString.h"

#include <GL/glew.h>

#include <algorithm>
#include <iterator>
#include <sstream>

namespace OV::Platform::OpenGLES
{

namespace
{

// Contexts of different makes spell one ability in different ways, with and without "GL_".
constexpr const char* kDepthTextureNames[] = {
    "GL_OES_depth_texture",  "GL_ARB_depth_texture",   "GL_ANGLE_depth_texture",     "ANGLE_depth_texture",
    "WEBGL_depth_texture",   "GL_WEBGL_depth_texture", "WEBKIT_WEBGL_depth_texture", "OES_depth_texture",
};

}  // namespace

RenderCapabilities::~RenderCapabilities() = default;

bool RenderCapabilities::HasFramebufferObject()
{
    EnsureDetected();
    return framebufferObject;
}

bool RenderCapabilities::HasARBDepthTexture()
{
    EnsureDetected();
    return arbDepthTexture;
}

bool RenderCapabilities::HasTextureStencil8()
{
    EnsureDetected();
    return textureStencil8;
}

bool RenderCapabilities::HasPackedDepthStencil()
{
    EnsureDetected();
    return packedDepthStencil;
}

int RenderCapabilities::GetMaxTextureSize()
{
    EnsureDetected();
    return maxTextureSize;
}

bool RenderCapabilities::HasNpotTextures()
{
    EnsureDetected();
    return npotTextures;
}

bool RenderCapabilities::RequiresPowerOfTwo()
{
    EnsureDetected();
    return !npotTextures;
}

bool RenderCapabilities::HasNpotRepeat()
{
    EnsureDetected();
    return npotRepeat;
}

bool RenderCapabilities::HasNpotMipmap()
{
    EnsureDetected();
    return npotMipmap;
}

bool RenderCapabilities::HasDepthTexture()
{
    EnsureDetected();
    return depthTexture;
}

bool RenderCapabilities::HasDepthTextureFault()
{
    EnsureDetected();
    return depthTextureFault;
}

bool RenderCapabilities::HasExtension(const std::string& extension) const
{
    return extensions.count(extension) != 0;
}

void RenderCapabilities::EnsureDetected()
{
    if (!detected)
    {
        Detect();
    }
}

bool RenderCapabilities::LoadExtensions()
{
    std::string list;
    const bool answered = ReadGLString(GL_EXTENSIONS, list);
    std::istringstream words(list);
    using Words = std::istream_iterator<std::string>;
    extensions = std::set<std::string>(Words(words), Words());
    return answered;
}

void RenderCapabilities::Detect()
{
    bool answered = LoadExtensions();
    answered = ReadGLString(GL_VENDOR, vendor) && answered;
    answered = ReadGLString(GL_RENDERER, renderer) && answered;
    answered = ReadGLString(GL_VERSION, version) && answered;

    // WebGL has framebuffer objects without saying so among its extensions.
    const bool isWebGL = version.find("WebGL 1.0") != std::string::npos;
    framebufferObject = HasExtension("GL_ARB_framebuffer_object") || isWebGL;
    arbDepthTexture = HasExtension("GL_ARB_depth_texture");
    textureStencil8 = HasExtension("GL_ARB_texture_stencil8");
    packedDepthStencil = HasExtension("GL_EXT_packed_depth_stencil");

    npotRepeat = HasExtension("GL_ARB_texture_non_power_of_two") || HasExtension("GL_OES_texture_npot");
    npotMipmap = npotRepeat || HasExtension("GL_NV_texture_npot_2D_mipmap");
    npotTextures = npotMipmap;

    depthTexture = std::any_of(std::begin(kDepthTextureNames), std::end(kDepthTextureNames),
                               [this](const char* name) { return HasExtension(name); });

    constexpr int noAnswer = -1;
    int size = noAnswer;
    glGetIntegerv(GL_MAX_TEXTURE_SIZE, &size);
    answered = answered && size != noAnswer;
    maxTextureSize = size == noAnswer ? 0 : size;

    // Without a current context, or with one that dies while it is asked, answers are missing,
    // and the next question is to ask again.
    detected = answered && !version.empty();
}

}  // namespace OV::Platform::OpenGLES
