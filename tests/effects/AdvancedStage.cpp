#include "tests/effects/AdvancedStage.h"

#include "orvane/scene/LightNode.h"
#include "orvane/scene/Material.h"

#include <glm/geometric.hpp>

namespace OV::Test
{

namespace
{

const glm::vec4 kDiffuse(0.6f, 0.5f, 0.3f, 1.0f);
const glm::vec4 kAmbient(0.3f, 0.5f, 0.4f, 1.0f);
const glm::vec3 kTowardsLight = glm::normalize(glm::vec3(1.0f, 2.0f, 3.0f));

} // namespace

std::optional<glm::vec4> AdvancedCase::At(int x, int y, const glm::vec4& background) const
{
    const std::optional<glm::vec4> weights = surface.Weights(x, y);
    if (!weights)
    {
        return std::nullopt;
    }
    std::array<AdvancedVaryings, 4> corners;
    for (int i = 0; i < 4; ++i)
    {
        const auto corner = static_cast<std::size_t>(i);
        corners[corner] = AdvancedVertex(look, surface.WorldMatrix(), surface.NormalMatrix(), surface.Object(i),
                                         surface.normals[corner],
                                         surface.hasCoordinates ? surface.coordinates[corner] : glm::vec2(0.0f));
    }
    const auto [right, up] = surface.WeightChange(x, y);
    const AdvancedVaryings changeRight = Surface::Blend(corners, right);
    const AdvancedVaryings changeUp = Surface::Blend(corners, up);
    const ScreenChange change{changeRight.view, changeUp.view, changeRight.coordinate, changeUp.coordinate};
    AdvancedLook here = look;
    if (here.stipple)
    {
        here.stipple->position = {static_cast<float>(x) + 0.5f, static_cast<float>(y) + 0.5f};
    }
    const bool turned = takesWinding && surface.IsMirrored();
    const Shaded shaded = ShadeAdvanced(here, Surface::Blend(corners, *weights), change, surface.facesAway == turned);
    switch (shaded.outcome)
    {
    case Shaded::Outcome::Unsure:
        return std::nullopt;
    case Shaded::Outcome::Discarded:
        return background;
    case Shaded::Outcome::Drawn:
        break;
    }
    return look.color.a < 1.0f ? BlendOver(shaded.color, background) : shaded.color;
}

AdvancedStage::AdvancedStage() :
    m_plain(dynamic_cast<AdvancedMaterialBaseES20*>(renderer.Effects().GetEffect(EffectCache::AdvancedMaterial))),
    m_phong(dynamic_cast<AdvancedMaterialBaseES20*>(renderer.Effects().GetEffect(EffectCache::AdvancedMaterialPhong)))
{
}

AdvancedStage::~AdvancedStage()
{
    m_plain->Release();
    m_phong->Release();
}

void AdvancedStage::UseModel(bool phong)
{
    EffectES20::SetAdvancedMaterialShaderType(phong ? EffectCache::AdvancedMaterialPhong
                                                    : EffectCache::AdvancedMaterial);
}

AdvancedCase AdvancedStage::Usual(bool phong)
{
    UseModel(phong);
    AdvancedCase usual;
    usual.look.phong = phong;
    usual.look.ambient = kAmbient;
    usual.look.color = kDiffuse;
    usual.look.specular = glm::vec4(1.0f);
    usual.look.towardsLight = kTowardsLight;
    usual.look.lit = true;
    usual.look.camera = Eye();
    usual.look.poche = glm::vec4(0.0f, 0.0f, 0.0f, 1.0f);
    usual.takesWinding = true;
    return usual;
}

LightNode& AdvancedStage::AddUsualLight()
{
    return AddLight(-kTowardsLight);
}

Material& AdvancedStage::AddUsualMaterial()
{
    return AddMaterial(kDiffuse, kAmbient);
}

Picture AdvancedStage::Draw(const AdvancedCase& of)
{
    return DrawPass(of.look.ambientPass ? RenderPassAdvancedSecond : RenderPassAdvanced);
}

void AdvancedStage::ExpectCase(const AdvancedCase& expected)
{
    ExpectShades(Draw(expected), expected.surface.rect,
                 [&](int x, int y) { return expected.At(x, y, Background); });
}

float AdvancedStage::DistanceOf(const Surface& surface) const
{
    return FogDistance(ViewProjection(), surface.World(0));
}

} // namespace OV::Test
