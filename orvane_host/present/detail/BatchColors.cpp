#include "orvane_host/present/detail/BatchColors.h"

#include "orvane_host/present/detail/MaterialLook.h"
#include "orvane/effects/EffectES20.h"

namespace OV::Host::Detail
{

namespace
{

glm::vec4 VectorOf(const Color& color)
{
    return {color.r, color.g, color.b, 1.0f};
}

} // namespace

std::size_t BatchColors::Most()
{
    return static_cast<std::size_t>(EffectES20::MostMaterialColors());
}

std::uint64_t BatchColors::NextRevision()
{
    static std::uint64_t revision = 0;
    return ++revision;
}

unsigned char BatchColors::Take(const MaterialColors& colors)
{
    if (m_free.empty())
    {
        m_free.push_back(static_cast<unsigned char>(m_colors.size() / 2));
        m_colors.resize(m_colors.size() + 2);
    }
    const unsigned char number = m_free.back();
    m_free.pop_back();
    Set(number, colors);
    return number;
}

void BatchColors::Set(unsigned char number, const MaterialColors& colors)
{
    const std::size_t first = 2 * static_cast<std::size_t>(number);
    m_colors[first] = VectorOf(colors.diffuse);
    m_colors[first + 1] = VectorOf(colors.ambient);
    m_revision = NextRevision();
}

void BatchColors::Send(EffectES20& effect) const
{
    effect.SendMaterialColors(m_colors.data(), static_cast<int>(m_colors.size()), m_revision);
}

} // namespace OV::Host::Detail
