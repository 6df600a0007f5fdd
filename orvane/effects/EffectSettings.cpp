#include "orvane/effects/EffectES20.h"

#include "orvane/effects/LightShare.h"

#include <algorithm>
#include <string>

namespace OV
{

std::vector<glm::vec3> EffectES20::s_clipPlaneNormals;
std::vector<glm::vec3> EffectES20::s_clipPlanePositions;
float EffectES20::s_clipPlaneOutlineSize = 0.3f;
glm::vec4 EffectES20::s_clipPlaneOutlineColor(0.0f, 0.0f, 0.0f, 1.0f);
bool EffectES20::s_pocheColorEnabled = true;
glm::vec4 EffectES20::s_pocheColor(0.0f, 0.0f, 0.0f, 1.0f);
float EffectES20::s_ambientColorIntensity = 1.0f;
float EffectES20::s_ambientTextureIntensity = 1.24f;
float EffectES20::s_shadowIntensity = 0.2f;
float EffectES20::s_sunShading = 0.25f;
bool EffectES20::s_isShadow = false;
EffectCache::EffectType EffectES20::s_advancedMaterialShaderType = EffectCache::AdvancedMaterial;
std::uint32_t EffectES20::s_enabledAttributes = 0;
std::uint32_t EffectES20::s_spareAttributes = 0;
std::uint32_t EffectES20::s_disabledAttributes = 0;
std::uint64_t EffectES20::s_valuesForgotten = 0;
LightShare* EffectES20::s_lightShare = nullptr;
bool EffectES20::s_leavesBlending = false;
bool EffectES20::s_takesMaterialColors = false;
std::uint64_t EffectES20::s_lightShareOption = 0;
std::uint64_t EffectES20::s_lightSharesSet = 0;

namespace
{

/// The number of a text of GLSL, from 1 in the order in which they are met.
std::size_t NumberOf(const LightShare& share)
{
    struct Text
    {
        std::string source;
        std::string enclosure;
        std::string vertexEnclosure;
    };
    static std::vector<Text> known;
    const char* const source = share.Source();
    const char* const enclosure = share.Enclosure() ? share.Enclosure() : "";
    const char* const vertexEnclosure = share.VertexEnclosure() ? share.VertexEnclosure() : "";
    const auto found = std::find_if(known.begin(), known.end(), [&](const Text& text) {
        return text.source == source && text.enclosure == enclosure && text.vertexEnclosure == vertexEnclosure;
    });
    const auto number = static_cast<std::size_t>(found - known.begin()) + 1;
    if (found == known.end())
    {
        known.push_back({source, enclosure, vertexEnclosure});
    }
    return number;
}

} // namespace

LightShare::~LightShare() = default;

const char* LightShare::Enclosure() const
{
    return nullptr;
}

const char* LightShare::VertexEnclosure() const
{
    return nullptr;
}

bool EffectES20::SetLightShare(LightShare* share)
{
    constexpr int shift = 56;
    static_assert(OptionLightShares == std::uint64_t{0x3F} << shift);
    const std::uint64_t number = share ? NumberOf(*share) : 0;
    const bool isTaken = number <= OptionLightShares >> shift;
    s_lightShare = isTaken ? share : nullptr;
    s_lightShareOption = isTaken ? number << shift : 0;
    ++s_lightSharesSet;
    return isTaken;
}

void EffectES20::LeaveBlending(bool leave)
{
    s_leavesBlending = leave;
}

void EffectES20::TakeMaterialColors(bool take)
{
    s_takesMaterialColors = take;
}

LightShare* EffectES20::GetLightShare()
{
    return s_lightShare;
}

void EffectES20::AddClipPlane(glm::vec3 normal, glm::vec3 position)
{
    s_clipPlaneNormals.push_back(normal);
    s_clipPlanePositions.push_back(position);
}

void EffectES20::ClearClipPlanes()
{
    s_clipPlaneNormals.clear();
    s_clipPlanePositions.clear();
}

const std::vector<glm::vec3>& EffectES20::GetClipPlaneNormals()
{
    return s_clipPlaneNormals;
}

const std::vector<glm::vec3>& EffectES20::GetClipPlanePositions()
{
    return s_clipPlanePositions;
}

float EffectES20::GetClipPlaneOutlineSize()
{
    return s_clipPlaneOutlineSize;
}

void EffectES20::SetClipPlaneOutlineSize(float size)
{
    s_clipPlaneOutlineSize = size;
}

const glm::vec4& EffectES20::GetClipPlaneOutlineColor()
{
    return s_clipPlaneOutlineColor;
}

void EffectES20::SetClipPlaneOutlineColor(const glm::vec4& color)
{
    s_clipPlaneOutlineColor = color;
}

bool EffectES20::IsPocheColorEnabled()
{
    return s_pocheColorEnabled;
}

void EffectES20::EnablePocheColor(bool enable)
{
    s_pocheColorEnabled = enable;
}

const glm::vec4& EffectES20::GetPocheColor()
{
    return s_pocheColor;
}

void EffectES20::SetPocheColor(const glm::vec4& color)
{
    s_pocheColor = color;
}

float EffectES20::GetAmbientColorIntensity()
{
    return s_ambientColorIntensity;
}

void EffectES20::SetAmbientColorIntensity(float intensity)
{
    s_ambientColorIntensity = intensity;
}

float EffectES20::GetAmbientTextureIntensity()
{
    return s_ambientTextureIntensity;
}

void EffectES20::SetAmbientTextureIntensity(float intensity)
{
    s_ambientTextureIntensity = intensity;
}

float EffectES20::GetShadowIntensity()
{
    return s_shadowIntensity;
}

void EffectES20::SetShadowIntensity(float intensity)
{
    s_shadowIntensity = intensity;
}

float EffectES20::GetSunShading()
{
    return s_sunShading;
}

void EffectES20::SetSunShading(float shading)
{
    s_sunShading = shading;
}

bool EffectES20::IsShadow()
{
    return s_isShadow;
}

void EffectES20::SetShadow(bool shadow)
{
    s_isShadow = shadow;
}

EffectCache::EffectType EffectES20::GetAdvancedMaterialShaderType()
{
    return s_advancedMaterialShaderType;
}

void EffectES20::SetAdvancedMaterialShaderType(EffectCache::EffectType type)
{
    s_advancedMaterialShaderType = type == EffectCache::AdvancedMaterialPhong
                                       ? EffectCache::AdvancedMaterialPhong
                                       : EffectCache::AdvancedMaterial;
}

} // namespace OV
