#include "apps/render/SurfaceSettings.h"

#include "orvane_host/present/HatchTextures.h"
#include "orvane_host/import/ImportOptions.h"
#include "orvane_host/geometry/SectionFill.h"
#include "orvane/effects/EffectES20.h"
#include "orvane/scene/Material.h"
#include "orvane/scene/Scene.h"

#include <glm/vec3.hpp>
#include <glm/vec4.hpp>

#include <vector>

namespace OV::RenderApp
{

namespace
{

constexpr float UsualOutlineShare = 1.0f / 500.0f;

/// Of the model: how deep below a cut its section lies at least. A driver that shades samples may
/// look a little beside them.
constexpr float SectionInsetShare = 2e-4f;

/// What a face in the dark keeps of its colour in the looks that shade every pixel. They take the
/// luminance of the ambient colour for it, where the basic look adds the colour itself.
constexpr float ShadeLevel = 0.5f;

/// Extent of a model that the strokes are drawn for.
constexpr float HatchedExtent = 24.0f;

bool ShadesEveryPixel(Host::Look look)
{
    return look == Host::Look::Advanced || look == Host::Look::Phong;
}

glm::vec3 ToVec(const Vector& v)
{
    return {v.x, v.y, v.z};
}

glm::vec4 ToVec(const Color& color)
{
    return {color.r, color.g, color.b, 1.0f};
}

} // namespace

float AmbientLevelFor(Host::Look look)
{
    // These fade from the whole colour to a share of it and add nothing, so that the light needs
    // to leave no room.
    return ShadesEveryPixel(look) ? 0.0f : Host::ImportOptions().ambientLevel;
}

int StrokeDensityFor(float extent)
{
    int density = 1;
    while (density < Host::HatchTextures::MostDensity && extent * static_cast<float>(density) < HatchedExtent / 2.0f)
    {
        density *= 2;
    }
    return density;
}

void SuitMaterials(Host::Look look, Scene& scene)
{
    if (!ShadesEveryPixel(look))
    {
        return;
    }
    for (const auto* list : {&scene.GetOptimizedMaterials(), &scene.GetAlphaMaterials()})
    {
        for (Material* material : *list)
        {
            if ((material->flags & MaterialFlagUnlit) == 0)
            {
                material->SetAmbient(Color(ShadeLevel, ShadeLevel, ShadeLevel));
            }
        }
    }
}

void ApplyClipping(const SurfaceLook& look, Scene& scene, float extent)
{
    if (look.clips.empty())
    {
        return;
    }
    for (const ClipPlane& plane : look.clips)
    {
        EffectES20::AddClipPlane(ToVec(plane.normal), ToVec(plane.position));
    }
    const float outline = look.outline.value_or(extent * UsualOutlineShare);
    EffectES20::SetClipPlaneOutlineSize(outline);
    EffectES20::SetClipPlaneOutlineColor(ToVec(look.outlineColor));
    EffectES20::EnablePocheColor(look.poche.has_value());
    EffectES20::SetPocheColor(ToVec(look.poche.value_or(Color())));
    std::vector<Host::SectionPlane> planes;
    for (const ClipPlane& plane : look.clips)
    {
        planes.push_back({plane.normal, plane.position});
    }
    scene.UpdateGraph(1.0f, 1.0f);
    Host::SectionFill::ShowInsides(scene, planes);
    if (look.poche)
    {
        // Below the outline, which is a band along the cut.
        Host::SectionFill::AddTo(scene, planes, 1.25f * outline + SectionInsetShare * extent, *look.poche);
    }
}

} // namespace OV::RenderApp
