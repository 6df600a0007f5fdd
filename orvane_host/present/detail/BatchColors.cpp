#define GL_GLEXT_PROTOTYPES

#include "orvane_host/present/detail/BatchColors.h"

#include "orvane_host/present/detail/MaterialLook.h"
#include "orvane/effects/EffectES20.h"

#include <GL/gl.h>
#include <GL/glext.h>

#include <cmath>

namespace OV::Host::Detail
{

namespace
{

std::array<std::uint16_t, 4> SharesOf(const Color& color)
{
    const auto share = [](float value) { return static_cast<std::uint16_t>(std::lround(65535.0f * value)); };
    return {share(color.r), share(color.g), share(color.b), 65535};
}

} // namespace

BatchColors::Held BatchColors::Held::Of(const MaterialColors& colors)
{
    return {SharesOf(colors.diffuse), SharesOf(colors.ambient)};
}

BatchColors::~BatchColors()
{
    glDeleteBuffers(1, &m_buffer);
}

void BatchColors::Set(std::size_t piece, const Held& held)
{
    if (!(m_held[piece] == held))
    {
        m_held[piece] = held;
        if (m_buffer != 0)
        {
            m_due.push_back(static_cast<std::uint32_t>(piece));
        }
    }
}

void BatchColors::Append(std::size_t piece, std::vector<Held>& vertices) const
{
    vertices.insert(vertices.end(), m_lasts[piece] - FirstOf(piece), m_held[piece]);
}

void BatchColors::Upload()
{
    const bool isNew = m_buffer == 0;
    if (isNew)
    {
        glGenBuffers(1, &m_buffer);
    }
    glBindBuffer(GL_ARRAY_BUFFER, m_buffer);
    // Many small uploads take longer than one of all.
    if (isNew || m_due.size() > m_held.size() / 8)
    {
        std::vector<Held> vertices;
        vertices.reserve(m_lasts.back());
        for (std::size_t piece = 0; piece < m_held.size(); ++piece)
        {
            Append(piece, vertices);
        }
        glBufferData(GL_ARRAY_BUFFER, static_cast<GLsizeiptr>(vertices.size() * sizeof(Held)), vertices.data(),
                     GL_DYNAMIC_DRAW);
        m_due.clear();
        return;
    }
    std::vector<Held> vertices;
    for (const std::uint32_t piece : m_due)
    {
        vertices.clear();
        Append(piece, vertices);
        glBufferSubData(GL_ARRAY_BUFFER, static_cast<GLintptr>(FirstOf(piece) * sizeof(Held)),
                        static_cast<GLsizeiptr>(vertices.size() * sizeof(Held)), vertices.data());
    }
    m_due.clear();
}

void BatchColors::Enable()
{
    if (m_buffer == 0 || !m_due.empty())
    {
        Upload();
    }
    glBindBuffer(GL_ARRAY_BUFFER, m_buffer);
    const auto point = [](unsigned int attribute, std::size_t offset) {
        glVertexAttribPointer(attribute, 3, GL_UNSIGNED_SHORT, GL_TRUE, sizeof(Held),
                              reinterpret_cast<const void*>(offset));
        glEnableVertexAttribArray(attribute);
    };
    point(EffectES20::AttributeMaterialDiffuse, offsetof(Held, diffuse));
    point(EffectES20::AttributeMaterialAmbient, offsetof(Held, ambient));
}

void BatchColors::Disable()
{
    glDisableVertexAttribArray(EffectES20::AttributeMaterialAmbient);
    glDisableVertexAttribArray(EffectES20::AttributeMaterialDiffuse);
}

} // namespace OV::Host::Detail
