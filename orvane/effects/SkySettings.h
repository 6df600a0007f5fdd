#pragma once

#include "orvane/Export.h"
#include "orvane/math/Color.h"

/// Sky and fog of the process: what every effect reads when it is applied.
///
/// A host changes the one instance between frames. Distances are along the view, in the units
/// of the scene.
class ORVANE_API SkySettings
{
public:
    static SkySettings& inst()
    {
        return m_Inst;
    }

    SkySettings() = default;

    bool UseFog() const
    {
        return m_useFog;
    }

    void SetUseFog(bool use)
    {
        m_useFog = use;
    }

    /// Where the fog begins.
    float GetFogStart() const
    {
        return m_fogStart;
    }

    void SetFogStart(float start)
    {
        m_fogStart = start;
    }

    /// Where nothing but fog is left.
    float GetFogEnd() const
    {
        return m_fogEnd;
    }

    void SetFogEnd(float end)
    {
        m_fogEnd = end;
    }

    const OV::Color& GetHorizonColor() const
    {
        return m_horizonColor;
    }

    /// The fog always has the colour of the horizon.
    const OV::Color& GetFogColor() const
    {
        return m_horizonColor;
    }

    void SetHorizonColor(const OV::Color& color)
    {
        m_horizonColor = color;
    }

    /// Reaches no shader, as FogDensity: the fog is linear.
    bool UseLinearFog() const
    {
        return m_useLinearFog;
    }

    float FogDensity() const
    {
        return m_fogDensity;
    }

    const OV::Color& GetSkyColor() const
    {
        return m_skyColor;
    }

    void SetSkyColor(const OV::Color& color)
    {
        m_skyColor = color;
    }

    const OV::Color& GetUpperSkyColor() const
    {
        return m_upperSkyColor;
    }

    void SetSkyUpperColor(const OV::Color& color)
    {
        m_upperSkyColor = color;
    }

    /// Where the horizon colour has faded into the sky colour, as a share of the sky's height.
    float HorizonStop() const
    {
        return m_horizonStop;
    }

    void SetHorizonStop(float stop)
    {
        m_horizonStop = stop;
    }

    /// Where the sky colour has faded into the upper one. It must not equal the horizon's stop:
    /// the shader divides by the difference.
    float SkyStop() const
    {
        return m_skyStop;
    }

    void SetSkyStop(float stop)
    {
        m_skyStop = stop;
    }

    /// Without it the whole sky has the colour of the horizon.
    bool UseSkyColor() const
    {
        return m_useSkyColor;
    }

    void SetUseSkyColor(bool use)
    {
        m_useSkyColor = use;
    }

    /// White sky and white fog, whatever the colours hold.
    bool IsMonotone() const
    {
        return m_monotone;
    }

    void SetMonotone(bool monotone)
    {
        m_monotone = monotone;
    }

private:
    bool m_useFog = true;
    float m_fogStart = 8000.0f;
    float m_fogEnd = 10000.0f;
    OV::Color m_horizonColor{1.0f, 1.0f, 1.0f, 1.0f};
    bool m_useLinearFog = true;
    float m_fogDensity = 0.00005f;
    OV::Color m_skyColor{0.7372549f, 0.8f, 0.85490197f, 1.0f};
    OV::Color m_upperSkyColor{0.5921569f, 0.7294118f, 0.8862745f, 1.0f};
    float m_horizonStop = 0.1f;
    float m_skyStop = 0.2f;
    bool m_useSkyColor = true;
    bool m_monotone = false;

    static SkySettings m_Inst;
};
