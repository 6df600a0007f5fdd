#pragma once

#include "orvane_host/present/PresentationFrame.h"

namespace OV
{

class EffectCache;
class SolidLineEffectES20;

} // namespace OV

namespace OV::Host::Detail
{

/// What lines are drawn with besides their styles: their width in a target of another size than
/// the screen, and the identifiers that overlaid ones are held to.
class LineSetup
{
public:
    LineSetup() = default;
    LineSetup(const LineSetup&) = delete;
    LineSetup& operator=(const LineSetup&) = delete;

    /// Lines that are drawn from here on are as wide as their styles say in pixels of the screen. GL.
    void Begin(EffectCache& effects, const PixelSize& target, const PixelSize& screen);

    /// And those of overlaid styles are held to the identifiers of the frame.
    void Overlay(PresentationFrame& frame);

    /// Lines are drawn as ever again.
    void End();

    /// GL with the last reference to the effect.
    void ReleaseGL();

private:
    SolidLineEffectES20* m_effect = nullptr; ///< one counted reference; null until begun
};

} // namespace OV::Host::Detail
