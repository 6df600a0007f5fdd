#pragma once

#include "orvane_host/present/detail/ScreenEffect.h"
#include "orvane/math/Color.h"

#include <string>

namespace OV::Host::Detail
{

/// Lays what LineEffect has drawn over a picture in the colour of the lines, wherever it covers a
/// pixel, once. Its own colours are multiplied by their opacity.
class LineLayEffect final : public ScreenEffect
{
public:
    /// What of the channels is laid.
    enum class Channels
    {
        Fogged,       ///< all, green and alpha for what is clear of fog
        Clear,        ///< red and blue
        ThroughGlass, ///< green
    };

    /// The next Apply lays what LineEffect drew. @param lines a texture.
    void ShowLines(unsigned int lines, Channels channels, const Color& color, const Color& fogColor);

    /// The next Apply lays what was laid into another picture. @param picture a texture.
    void ShowPicture(unsigned int picture);

    unsigned int CreateProgramForOptions(std::uint64_t options, std::string& name) override;
    void Apply(MaterialES20* material, CameraNodeES20* camera) override;

private:
    unsigned int m_texture = 0;
    bool m_isFinished = false;
    Channels m_channels = Channels::Fogged;
    Color m_color;
    Color m_fogColor;
};

} // namespace OV::Host::Detail
