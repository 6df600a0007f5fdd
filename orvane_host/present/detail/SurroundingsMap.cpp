#define GL_GLEXT_PROTOTYPES

#include "orvane_host/present/detail/SurroundingsMap.h"

#include "orvane_host/present/Surroundings.h"
#include "orvane_host/present/detail/UploadScope.h"

#include <GL/gl.h>
#include <GL/glext.h>

#include <cmath>
#include <cstring>

namespace OV::Host::Detail
{

namespace
{

bool CanBeSeamless()
{
    const auto* const names = reinterpret_cast<const char*>(glGetString(GL_EXTENSIONS));
    return names && std::strstr(names, "GL_ARB_seamless_cube_map");
}

} // namespace

unsigned int SurroundingsMap::Upload()
{
    if (m_uploaded == m_surroundings)
    {
        return m_texture;
    }
    ReleaseGL();
    if (!m_surroundings)
    {
        return 0;
    }
    const UploadScope scope;
    glGenTextures(1, &m_texture);
    glActiveTexture(GL_TEXTURE0);
    glBindTexture(GL_TEXTURE_CUBE_MAP, m_texture);
    const int levels = m_surroundings->GetLevelCount();
    for (int level = 0; level < levels; ++level)
    {
        const int size = m_surroundings->GetFaceSize() >> level;
        for (int face = 0; face < 6; ++face)
        {
            glTexImage2D(static_cast<GLenum>(GL_TEXTURE_CUBE_MAP_POSITIVE_X + face), level, GL_RGBA8, size, size, 0,
                         GL_RGBA, GL_UNSIGNED_BYTE, m_surroundings->GetTexels(level, face));
        }
    }
    glTexParameteri(GL_TEXTURE_CUBE_MAP, GL_TEXTURE_MAX_LEVEL, levels - 1);
    glTexParameteri(GL_TEXTURE_CUBE_MAP, GL_TEXTURE_MIN_FILTER, GL_LINEAR_MIPMAP_LINEAR);
    // A level is blurred over a few of its texels, more than it takes not to flicker.
    glTexParameterf(GL_TEXTURE_CUBE_MAP, GL_TEXTURE_LOD_BIAS, -1.5f);
    glTexParameteri(GL_TEXTURE_CUBE_MAP, GL_TEXTURE_MAG_FILTER, GL_LINEAR);
    for (const GLenum axis : {GL_TEXTURE_WRAP_S, GL_TEXTURE_WRAP_T, GL_TEXTURE_WRAP_R})
    {
        glTexParameteri(GL_TEXTURE_CUBE_MAP, axis, GL_CLAMP_TO_EDGE);
    }
    glBindTexture(GL_TEXTURE_CUBE_MAP, 0);
    m_uploaded = m_surroundings;
    return m_texture;
}

void SurroundingsMap::SetRoughness(float roughness)
{
    if (!m_uploaded)
    {
        return;
    }
    // Steps that nobody sees spare changes from one material to the next.
    constexpr float steps = 8.0f;
    const float level = std::round(m_uploaded->LevelOf(roughness) * steps) / steps;
    if (level != m_level)
    {
        m_level = level;
        glActiveTexture(GL_TEXTURE0);
        glBindTexture(GL_TEXTURE_CUBE_MAP, m_texture);
        glTexParameterf(GL_TEXTURE_CUBE_MAP, GL_TEXTURE_MIN_LOD, level);
        glBindTexture(GL_TEXTURE_CUBE_MAP, 0);
    }
}

void SurroundingsMap::ReleaseGL()
{
    if (m_texture != 0)
    {
        glDeleteTextures(1, &m_texture);
    }
    m_texture = 0;
    m_level = -1.0f;
    m_uploaded.reset();
}

SeamlessScope::SeamlessScope(bool wanted) :
    m_on(wanted && CanBeSeamless() && !glIsEnabled(GL_TEXTURE_CUBE_MAP_SEAMLESS))
{
    if (m_on)
    {
        glEnable(GL_TEXTURE_CUBE_MAP_SEAMLESS);
    }
}

SeamlessScope::~SeamlessScope()
{
    if (m_on)
    {
        glDisable(GL_TEXTURE_CUBE_MAP_SEAMLESS);
    }
}

} // namespace OV::Host::Detail
