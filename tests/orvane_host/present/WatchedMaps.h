#pragma once

#include "tests/orvane_host/present/AddedStage.h"

#include "orvane_host/present/Presentation.h"
#include "orvane_host/present/PresentationRenderer.h"
#include "orvane_host/present/detail/SunShare.h"

#include <GL/glew.h>

#include <cstddef>
#include <memory>
#include <utility>
#include <vector>

namespace OV::Test
{

/// What is in the sun's maps.
struct Maps
{
    std::vector<float> depths;
    std::vector<unsigned char> glass;

    bool operator==(const Maps& other) const { return depths == other.depths && glass == other.glass; }
    bool operator!=(const Maps& other) const { return !(*this == other); }
};

inline GLint BoundTo(int unit)
{
    glActiveTexture(GL_TEXTURE0 + static_cast<GLenum>(unit));
    GLint texture = 0;
    glGetIntegerv(GL_TEXTURE_BINDING_2D, &texture);
    return texture;
}

inline std::size_t TexelsOfBound()
{
    GLint width = 0;
    GLint height = 0;
    glGetTexLevelParameteriv(GL_TEXTURE_2D, 0, GL_TEXTURE_WIDTH, &width);
    glGetTexLevelParameteriv(GL_TEXTURE_2D, 0, GL_TEXTURE_HEIGHT, &height);
    return static_cast<std::size_t>(width) * static_cast<std::size_t>(height);
}

inline Maps ReadMaps()
{
    Maps maps;
    if (BoundTo(Host::Detail::SunShare::DepthUnit) != 0)
    {
        maps.depths.resize(TexelsOfBound());
        glGetTexImage(GL_TEXTURE_2D, 0, GL_DEPTH_COMPONENT, GL_FLOAT, maps.depths.data());
    }
    if (BoundTo(Host::Detail::SunShare::GlassUnit) != 0)
    {
        maps.glass.resize(4 * TexelsOfBound());
        glGetTexImage(GL_TEXTURE_2D, 0, GL_RGBA, GL_UNSIGNED_BYTE, maps.glass.data());
    }
    glActiveTexture(GL_TEXTURE0);
    return maps;
}

/// A presentation whose maps are read in each frame.
class Watched
{
public:
    explicit Watched(std::unique_ptr<Host::Presentation> presentation) : m_presentation(std::move(presentation))
    {
        auto stage = std::make_unique<AddedStage>(std::make_shared<StageRecord>());
        stage->draw = [this](Host::PresentationFrame&) { maps = ReadMaps(); };
        m_presentation->GetRenderer().AddStage(std::move(stage), Host::StageSlot::AfterSurfaces);
    }

    Host::Presentation& Get() { return *m_presentation; }

    Maps maps; ///< of the last frame

private:
    std::unique_ptr<Host::Presentation> m_presentation;
};

} // namespace OV::Test
