#pragma once

#include "orvane/effects/EffectCache.h"
#include "orvane/effects/SkySettings.h"

#include <glm/vec3.hpp>
#include <glm/vec4.hpp>

#include <vector>

namespace OV
{

class CameraNode;

} // namespace OV

namespace OV::Host
{

struct PresentationSettings;

namespace Detail
{

/// What settings want of those that effects share in a process, in force while this lives.
class ProcessSettings
{
public:
    /// @param camera the distances of the fog depend on its range of depths.
    /// @param outlineWidth of a cut, where the settings leave it to the model.
    ProcessSettings(const PresentationSettings& settings, const CameraNode& camera, float outlineWidth);

    /// Takes over the camera's range of depths once it is another one.
    static void FollowDepths(const PresentationSettings& settings, const CameraNode& camera);

    /// Puts back what was in force.
    ~ProcessSettings();

    ProcessSettings(const ProcessSettings&) = delete;
    ProcessSettings& operator=(const ProcessSettings&) = delete;

private:
    SkySettings m_sky;
    std::vector<glm::vec3> m_normals;
    std::vector<glm::vec3> m_positions;
    float m_outlineSize;
    glm::vec4 m_outlineColor;
    bool m_pocheEnabled;
    glm::vec4 m_pocheColor;
    EffectCache::EffectType m_shaderType;
};

} // namespace Detail

} // namespace OV::Host
