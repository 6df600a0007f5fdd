#include "orvane_host/import/detail/MaterialBuilder.h"

#include "orvane_host/geometry/detail/DepthRank.h"
#include "orvane_host/geometry/detail/MaterialCopy.h"

#include "orvane/scene/LineStyle.h"
#include "orvane/scene/Scene.h"

#include <algorithm>
#include <cmath>
#include <memory>

namespace OV::Host
{

namespace
{

constexpr float kPointSize = 3.0f;
/// Of a line that fades to nothing over it, to both sides.
constexpr float kLineWidth = 1.5f;

} // namespace

MaterialBuilder::MaterialBuilder(const ModelData& model, const std::string& modelPath,
                                 const ImportOptions& options, Scene& scene, ImportReport& report)
    : m_model(model), m_options(options), m_scene(scene), m_report(report),
      m_pictures(model, modelPath, options.limits), m_maps(m_pictures, report)
{
}

Material& MaterialBuilder::Get(std::uint32_t index, PrimitiveKind kind, int rank)
{
    ImportedMaterial*& known = m_materials[{index, kind, 0}];
    if (!known)
    {
        known = &Make(index, kind);
        ++m_report.materials;
    }
    if (rank == 0)
    {
        return *known;
    }
    ImportedMaterial*& ranked = m_materials[{index, kind, rank}];
    if (!ranked)
    {
        auto copy = std::make_unique<ImportedMaterial>(*known);
        Detail::CompleteCopy(*known, *copy);
        Detail::DepthRank::Give(*copy, Detail::DepthRank::Steps(rank));
        m_scene.AddMaterial(copy.get());
        ranked = copy.release();
    }
    return *ranked;
}

ImportedMaterial& MaterialBuilder::Make(std::uint32_t index, PrimitiveKind kind)
{
    const MaterialData plain;
    const MaterialData& data = index < m_model.materials.size() ? m_model.materials[index] : plain;
    auto material = std::make_unique<ImportedMaterial>(data.name);
    SetColors(data, *material);
    if (data.isTwoSided)
    {
        material->SetFlags(MaterialFlagNoCull);
    }
    if (kind == PrimitiveKind::Points)
    {
        material->SetFlags(MaterialFlagPoints | MaterialFlagUnlit);
        material->pointSize = kPointSize;
        material->SetAmbient(Color(0.0f, 0.0f, 0.0f, 1.0f));
    }
    material->clampTexture = data.clampsTexture;
    const bool hasAlpha = m_options.textures && SetTexture(data, *material);
    if (m_options.textures && kind != PrimitiveKind::Points)
    {
        m_maps.SetMaps(data, *material);
    }
    material->hasAlpha = hasAlpha && data.alphaMode != AlphaMode::Opaque;
    if (material->hasAlpha && !material->IsTransparent())
    {
        // The opacity alone decides what is drawn after all opaque things. This much less
        // than 1 shows in no pixel.
        material->SetOpacity(std::nextafter(1.0f, 0.0f));
    }

    m_scene.AddMaterial(material.get());
    return *material.release();
}

LineStyle& MaterialBuilder::GetStyle(std::uint32_t index)
{
    LineStyle*& known = m_styles[index];
    if (!known)
    {
        const MaterialData plain;
        const MaterialData& data = index < m_model.materials.size() ? m_model.materials[index] : plain;
        auto style = std::make_unique<LineStyle>(data.name);
        style->color = Color(data.diffuse[0], data.diffuse[1], data.diffuse[2], data.diffuse[3]);
        style->secondColor = Color(0.0f, 0.0f, 0.0f, 1.0f);
        style->width = kLineWidth;
        m_scene.AddLineStyle(style.get());
        known = style.release();
    }
    return *known;
}

void MaterialBuilder::SetColors(const MaterialData& data, Material& material) const
{
    const float level = data.isUnlit ? 0.0f : std::clamp(m_options.ambientLevel, 0.0f, 1.0f);
    float ambient[3];
    for (int i = 0; i < 3; ++i)
    {
        ambient[i] = std::min(1.0f, level * data.diffuse[i] + data.emissive[i]);
    }
    material.SetDiffuse(Color(data.diffuse[0], data.diffuse[1], data.diffuse[2], data.diffuse[3]));
    material.SetAmbient(Color(ambient[0], ambient[1], ambient[2], 1.0f));
    material.SetEmissive(Color(data.emissive[0], data.emissive[1], data.emissive[2], 1.0f));
    material.SetSpecular(Color(data.specular[0], data.specular[1], data.specular[2], 1.0f));
    material.SetShininess(data.shininess);
    std::copy(data.reflection, data.reflection + 3, material.reflectionFactors);
    // The light's colour leaves room for the ambient share.
    material.ignoreLightColor = false;
    if (data.isUnlit)
    {
        material.SetFlags(MaterialFlagUnlit);
    }
}

bool MaterialBuilder::SetTexture(const MaterialData& data, ImportedMaterial& material)
{
    if (data.texture.IsNone())
    {
        return false;
    }
    FoundPicture picture = m_pictures.Find(data.texture);
    bool hasAlpha = picture.facts.hasAlpha;
    // A name that is no text cannot be handed on; the pixels can.
    if (picture.IsUsable() && !picture.embedded && IsText(picture.path))
    {
        SetTexturePaths(material, picture.path, std::string(), std::string());
    }
    else if (picture.IsUsable())
    {
        hasAlpha = SetPixels(picture, material);
    }
    if (!picture.IsUsable())
    {
        ReportMissing(m_report, data.name, "picture", picture);
        return false;
    }
    ++(picture.path.empty() ? m_report.embeddedTextures : m_report.fileTextures);
    return hasAlpha;
}

bool MaterialBuilder::SetPixels(FoundPicture& picture, Material& material)
{
    DecodedPicture decoded = m_pictures.Decode(picture);
    if (!decoded.pixels)
    {
        return false;
    }
    m_pictures.Keep(decoded.Bytes());
    const bool hasAlpha = decoded.HasTransparentPixel();
    material.pixelWidth = static_cast<int>(decoded.width);
    material.pixelHeight = static_cast<int>(decoded.height);
    material.pixels = decoded.pixels.release();
    return hasAlpha;
}

} // namespace OV::Host
