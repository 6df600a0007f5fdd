#include "orvane_host/present/detail/SurfaceStage.h"

#include "orvane_host/import/detail/ImportedMaterial.h"
#include "orvane_host/present/PresentationFrame.h"
#include "orvane_host/present/StageAccess.h"
#include "orvane_host/present/detail/ConstantColorScope.h"
#include "orvane_host/present/detail/DrawIdKeeper.h"
#include "orvane_host/present/detail/Effects.h"
#include "orvane_host/present/detail/LightShareScope.h"
#include "orvane_host/present/detail/LineStage.h"
#include "orvane_host/present/detail/MaterialDataOf.h"
#include "orvane_host/present/detail/NeededScope.h"
#include "orvane_host/present/detail/SampleShadingScope.h"
#include "orvane_host/present/detail/ShadowStage.h"
#include "orvane_host/present/detail/StrokeEffect.h"
#include "orvane/effects/AdvancedMaterialBaseES20.h"
#include "orvane/effects/BasicMaterialEffectES20.h"
#include "orvane/math/Transform.h"
#include "orvane/renderdata/CameraNodeES20.h"
#include "orvane/renderdata/MaterialES20.h"
#include "orvane/renderdata/MeshES20.h"
#include "orvane/renderdata/MeshStyleES20.h"
#include "orvane/scene/CameraNode.h"
#include "orvane/scene/Material.h"
#include "orvane/scene/Mesh.h"
#include "orvane/scene/Scene.h"

#include <GL/gl.h>
#include <glm/geometric.hpp>
#include <glm/vec3.hpp>

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <functional>
#include <typeinfo>

namespace OV::Host::Detail
{

namespace
{

/// The attribute that the look reads colours from.
constexpr GLuint kColorAttribute = 2;

/// Whether there are cuts that gain by shading each sample.
bool SmoothsCuts(const CameraNode& camera)
{
    const std::vector<glm::vec3>& normals = EffectES20::GetClipPlaneNormals();
    if (normals.empty() || camera.GetProjection() != CameraNode::Perspective
        || SampleShadingScope::IsExactInPerspective())
    {
        return !normals.empty();
    }
    const Vector place = camera.GetGlobal().GetPosition();
    const glm::vec3 eye(place.x, place.y, place.z);
    for (std::size_t i = 0; i < normals.size(); ++i)
    {
        // What is off grows with the distance of the plane from the origin, against that from the
        // eye. Up to here it is a pixel or two, and better than dots beside the cut.
        constexpr float most = 4.0f;
        const glm::vec3& position = EffectES20::GetClipPlanePositions()[i];
        if (std::abs(glm::dot(normals[i], position)) > most * std::abs(glm::dot(normals[i], eye - position)))
        {
            return false;
        }
    }
    return true;
}

/// Draws depths alone, for the length of a scope.
class NoColorScope
{
public:
    NoColorScope()
    {
        glGetBooleanv(GL_COLOR_WRITEMASK, m_before);
        glColorMask(GL_FALSE, GL_FALSE, GL_FALSE, GL_FALSE);
    }

    ~NoColorScope() { glColorMask(m_before[0], m_before[1], m_before[2], m_before[3]); }

    NoColorScope(const NoColorScope&) = delete;
    NoColorScope& operator=(const NoColorScope&) = delete;

private:
    NoLightShareScope m_unshared{true};
    GLboolean m_before[4] = {};
};

/// Of an item, once it is uploaded; of one that stands for a whole material, of its meshes.
MaterialES20::Colored HowManyAreColored(const RenderItemES20& item)
{
    if (!item.mesh)
    {
        return static_cast<MaterialES20&>(*item.style).HowManyListedAreColored();
    }
    const auto* const data = static_cast<const MeshES20*>(item.mesh->GetRenderData());
    return data && data->GetColorOffset() >= 0 ? MaterialES20::Colored::All : MaterialES20::Colored::None;
}

} // namespace

SurfaceStage::SurfaceStage() = default;

SurfaceStage::~SurfaceStage() = default;

bool SurfaceStage::WantsLayers(const PresentationFrame& frame) const
{
    const bool isShown = m_look == Look::Basic || m_look == Look::Advanced || m_look == Look::Phong;
    const FrameItems& items = frame.items.Seen();
    return m_glass.order != GlassOrder::Scene && isShown && m_surfacesShown && !frame.overDraw
        && items.firstAlpha < items.all.size();
}

FrameNeeds SurfaceStage::NeedsOf(const PresentationFrame& frame) const
{
    FrameNeeds needs;
    needs.target = WantsLayers(frame);
    needs.objectIdentifiers = OverlaysLines();
    needs.groupIdentifiers = OverlaysLines();
    needs.optional = true;
    return needs;
}

int SurfaceStage::MarginOf(const PixelSize&) const
{
    // Overlaid lines look for ends of identities beside the pixel.
    return OverlaysLines() ? 2 : 0;
}

void SurfaceStage::ReleaseGL()
{
    Drop(m_strokes);
    Drop(m_advanced);
    Drop(m_phong);
    m_surroundings.ReleaseGL();
    m_layers.ReleaseGL();
    m_lineSetup.ReleaseGL();
}

RenderPass SurfaceStage::PassOfLook() const
{
    switch (m_look)
    {
    case Look::Advanced:
    case Look::Phong:
        return RenderPassAdvanced;
    case Look::Crosshatch:
        return RenderPassCrosshatch;
    case Look::Monotone:
        return RenderPassMonotone;
    case Look::VertexColor:
        return RenderPassVertexColor;
    case Look::Basic:
        break;
    }
    return RenderPassDefault;
}

void SurfaceStage::Prepare(PresentationFrame& frame)
{
    switch (m_look)
    {
    case Look::Advanced:
        EffectES20::SetAdvancedMaterialShaderType(EffectCache::AdvancedMaterial);
        PrepareEdit(frame);
        break;
    case Look::Phong:
        EffectES20::SetAdvancedMaterialShaderType(EffectCache::AdvancedMaterialPhong);
        PrepareEdit(frame);
        break;
    case Look::Crosshatch:
    case Look::Basic:
    case Look::Monotone:
    case Look::VertexColor:
        break;
    }
}

void SurfaceStage::PrepareEdit(PresentationFrame& frame)
{
    const bool soft = m_look == Look::Phong;
    AdvancedMaterialBaseES20* const effect = FetchOnce(
        soft ? m_phong : m_advanced, frame.renderer.GetEffects(),
        soft ? EffectCache::AdvancedMaterialPhong : EffectCache::AdvancedMaterial);
    if (!effect)
    {
        return;
    }
    if (m_editPath)
    {
        effect->SetEditInContextPath(*m_editPath);
    }
    else
    {
        effect->ClearEditInContextPath();
    }
}

bool SurfaceStage::Reflection::operator==(const Reflection& other) const
{
    return isAny == other.isAny
        && (!isAny || (roughness == other.roughness && tint.r == other.tint.r && tint.g == other.tint.g && tint.b == other.tint.b));
}

SurfaceStage::Reflection SurfaceStage::ReflectionOf(const MeshStyleES20& style)
{
    Reflection reflection;
    const MaterialES20* const data = MaterialDataOf(style);
    const Material* const material = data ? data->GetMaterial() : nullptr;
    if (!material)
    {
        return reflection;
    }
    const float* const factors = material->reflectionFactors;
    reflection.isAny = factors[2] > 0.0f && (factors[0] > 0.0f || factors[1] > 0.0f);
    reflection.roughness = 1.0f - factors[2];
    // The factors hold how much is reflected, the highlights in which colour.
    const Color& color = material->GetSpecular();
    const float luminance = 0.299f * color.r + 0.587f * color.g + 0.114f * color.b;
    reflection.tint = luminance > 1e-3f ? Color(color.r / luminance, color.g / luminance, color.b / luminance)
                                        : Color(1.0f, 1.0f, 1.0f);
    return reflection;
}

void SurfaceStage::PrepareReflection()
{
    const bool reflects = m_look == Look::Advanced || m_look == Look::Phong;
    m_reflectionMap = reflects ? m_surroundings.Upload() : 0;
    m_reflecting = m_reflectionMap == 0 ? nullptr : m_look == Look::Phong ? m_phong : m_advanced;
}

bool SurfaceStage::TakesVertexColors(const MeshStyleES20& style)
{
    // Those of a host are its own affair, and those of cuts are there for the look of that name alone.
    const MaterialES20* const data = MaterialDataOf(style);
    const Material* const material = data ? data->GetMaterial() : nullptr;
    return material && typeid(*material) == typeid(ImportedMaterial);
}

void SurfaceStage::Reflect(const Reflection& reflection)
{
    if (!m_reflecting)
    {
        return;
    }
    if (!reflection.isAny)
    {
        m_reflecting->SetReflectionMap(0);
        return;
    }
    m_surroundings.SetRoughness(reflection.roughness);
    m_reflecting->SetPixelReflection(m_reflectionMap, reflection.tint);
}

std::optional<float> SurfaceStage::GetStrokeWidth(const PresentationFrame& frame) const
{
    if (m_look != Look::Crosshatch)
    {
        return std::nullopt;
    }
    // A capture may be finer than the screen.
    const float finer = static_cast<float>(frame.target.width) / static_cast<float>(std::max(frame.screen.width, 1));
    return m_strokeWidth * finer;
}

void SurfaceStage::UseStrokes(const PresentationFrame& frame)
{
    if (!m_strokes)
    {
        m_strokes = new StrokeEffect;
    }
    m_strokes->SetWidth(*GetStrokeWidth(frame));
    for (const auto* list : {&frame.scene.GetOptimizedMaterials(), &frame.scene.GetAlphaMaterials()})
    {
        for (Material* material : *list)
        {
            auto* const data = dynamic_cast<MaterialES20*>(material->GetRenderData());
            EffectES20** const slot = data ? &data->passEffects[RenderPassCrosshatch] : nullptr;
            // A kind of material that isn't drawn in this pass has no effect to replace.
            if (slot && *slot && *slot != m_strokes)
            {
                (*slot)->Release();
                *slot = m_strokes;
                m_strokes->AddReference();
            }
        }
    }
}

void SurfaceStage::Draw(PresentationFrame& frame)
{
    if (m_look == Look::Crosshatch)
    {
        UseStrokes(frame);
    }
    PrepareReflection();
    m_lineSetup.Begin(frame.renderer.GetEffects(), frame.target, frame.screen);
    if (OverlaysLines() && frame.served)
    {
        m_lineSetup.Overlay(frame);
    }
    DrawLook(frame);
    Reflect(Reflection());
    m_lineSetup.End();
}

void SurfaceStage::DrawLook(PresentationFrame& frame)
{
    const SampleShadingScope sampleShading(SmoothsCuts(frame.camera) && SampleShadingScope::IsOfUse());
    const LightShareScope lightShare(m_shadows ? m_shadows->GetShare() : nullptr);
    const SeamlessScope seamless(m_reflecting != nullptr);
    const ConstantColorScope plainColors(kColorAttribute, m_look == Look::VertexColor);
    const FrameItems& items = frame.items.Seen();
    if (WantsLayers(frame) && frame.served && DrawLayers(frame))
    {
        return;
    }
    if (m_surfacesShown)
    {
        const auto draw = [&](const std::vector<RenderItemES20>& part, bool depthOnly) {
            // Strokes are dear, and leave nothing out; the cheaper look follows clip planes.
            const bool cheap = depthOnly && m_look == Look::Crosshatch && EffectES20::GetClipPlaneNormals().empty();
            const NoLightShareScope unshared(depthOnly);
            DrawItems(frame, part, cheap ? RenderPassMonotone : PassOfLook(), frame.target);
        };
        const bool linesElsewhere = m_lineStage && m_lineStage->IsActive();
        // Without lines between them, see-through surfaces, which a flat look draws as solid ones, come among these.
        const bool isSorted = TakesNearestFirst(frame);
        const bool asOne = isSorted && !linesElsewhere && items.firstLine == items.firstAlpha;
        const std::size_t solids = asOne ? items.all.size() : items.firstLine;
        const std::vector<RenderItemES20>& all =
            isSorted ? m_nearestFirst.Arrange(items.all, solids, frame.cameraData.GetMVP(), PassOfLook()) : items.all;
        if (linesElsewhere)
        {
            DrawWithoutLines(frame, all, draw);
            return;
        }
        m_lineRoom.Draw(all, solids, asOne ? solids : items.firstAlpha, frame.overDraw, draw);
        return;
    }
    if (m_lineStage && m_lineStage->IsActive())
    {
        return;
    }
    m_lines.assign(items.all.begin() + static_cast<std::ptrdiff_t>(items.firstLine),
                   items.all.begin() + static_cast<std::ptrdiff_t>(items.firstAlpha));
    DrawItems(frame, m_lines, RenderPassDefault, frame.target);
}

bool SurfaceStage::SortsMeshes() const
{
    return m_look == Look::Monotone && m_shadows && m_shadows->GetShadows();
}

/// Whether fragments are so dear, against the rest of them, that it pays to sort what they are of.
bool SurfaceStage::TakesNearestFirst(const PresentationFrame& frame) const
{
    // What a host has deleted since the items were listed can't be asked where it is.
    return m_look == Look::Monotone && EffectES20::GetLightShare() && !frame.renderer.HasLosses();
}

void SurfaceStage::DrawWithoutLines(PresentationFrame& frame, const std::vector<RenderItemES20>& all,
                                    const LineRoom::DrawItems& draw)
{
    const FrameItems& items = frame.items.Seen();
    m_part.assign(all.begin(), all.begin() + static_cast<std::ptrdiff_t>(items.firstLine));
    m_lineRoom.Draw(m_part, m_part.size(), m_part.size(), false, draw);
    m_lineStage->DrawThroughGlass(frame);
    m_part.assign(all.begin() + static_cast<std::ptrdiff_t>(items.firstAlpha), all.end());
    m_lineRoom.Draw(m_part, m_part.size(), m_part.size(), false, draw);
}

/// Whether a see-through surface is drawn with an effect that knows layers.
bool SurfaceStage::IsLayered(const RenderItemES20& item) const
{
    const MaterialES20* const data = MaterialDataOf(*item.style);
    const Material* const material = data ? data->GetMaterial() : nullptr;
    if (!material || (material->GetFlags() & (MaterialFlagAlwaysPass | MaterialFlagPoints)) != 0)
    {
        return false;
    }
    EffectES20* const own = item.style->GetShader(PassOfLook());
    const EffectES20* const effect = own ? own : item.style->GetShader(RenderPassDefault);
    return dynamic_cast<const AdvancedMaterialBaseES20*>(effect) || dynamic_cast<const BasicMaterialEffectES20*>(effect);
}

/// Draws surfaces and lines, those that are see-through in layers.
/// @return false, with nothing drawn, where that can't be had.
bool SurfaceStage::DrawLayers(PresentationFrame& frame)
{
    const FrameItems& items = frame.items.Seen();
    const auto alpha = items.all.begin() + static_cast<std::ptrdiff_t>(items.firstAlpha);
    m_panes.clear();
    m_others.clear();
    const MeshStyleES20* style = nullptr;
    bool isLayered = false;
    for (auto item = alpha; item != items.all.end(); ++item)
    {
        // The meshes of a material stand in a row.
        isLayered = item->style == style ? isLayered : IsLayered(*item);
        style = item->style;
        (isLayered ? m_panes : m_others).push_back(*item);
    }
    if (m_panes.empty() || !m_layers.Prepare(frame, m_glass))
    {
        return false;
    }
    const bool linesElsewhere = m_lineStage && m_lineStage->IsActive();
    const std::size_t solids = linesElsewhere ? items.firstLine : items.firstAlpha;
    m_solids.assign(items.all.begin(), items.all.begin() + static_cast<std::ptrdiff_t>(solids));
    const RenderPass pass = PassOfLook();
    const auto drawAgain = [&](const std::vector<RenderItemES20>& part) {
        DrawIdKeeper drawIds(frame.scene);
        drawIds.Keep(part);
        DrawItems(frame, part, pass, m_layers.Size());
    };
    // They come first, while draw IDs are as they were.
    m_lineSetup.Begin(frame.renderer.GetEffects(), m_layers.Size(), frame.screen);
    const unsigned int solidDepth =
        linesElsewhere && m_layers.Size() == frame.target ? m_lineStage->GetSolidDepth() : 0;
    const auto drawSolids = [&] { drawAgain(m_solids); };
    const auto drawPanes = [&] { drawAgain(m_panes); };
    const auto gather = [&] { m_layers.Gather(frame, EffectES20::GetLightShare(), solidDepth, drawSolids, drawPanes); };
    // All without room, as in that depth: else a pane close before a wall could be behind it. By reference,
    // which allocates nothing.
    m_lineRoom.Without(m_solids, m_panes, std::cref(gather));
    m_lineSetup.Begin(frame.renderer.GetEffects(), frame.target, frame.screen);
    m_lineRoom.Draw(m_solids, items.firstLine, solids, frame.overDraw,
                    [&](const std::vector<RenderItemES20>& part, bool depthOnly) {
                        const NoLightShareScope unshared(depthOnly);
                        DrawItems(frame, part, pass, frame.target);
                    });
    if (linesElsewhere)
    {
        m_lineStage->DrawThroughGlass(frame);
    }
    m_layers.Lay(frame);
    {
        // What comes later finds the depths of all surfaces.
        const NoColorScope depthOnly;
        DrawItems(frame, m_panes, pass, frame.target);
    }
    DrawItems(frame, m_others, pass, frame.target);
    return true;
}

void SurfaceStage::DrawItems(PresentationFrame& frame, const std::vector<RenderItemES20>& items, RenderPass pass,
                             const PixelSize& buffer)
{
    const NeededScope needed(frame.part, buffer);
    const auto passOf = [pass](const RenderItemES20& item) {
        return item.style->GetShader(pass) ? pass : RenderPassDefault;
    };
    AdvancedMaterialBaseES20* const shader =
        m_look == Look::Advanced ? m_advanced : m_look == Look::Phong ? m_phong : nullptr;
    const MeshStyleES20* style = nullptr;
    Dress dress;
    bool takesColors = false;
    // The meshes of a material stand in a row.
    const auto dressOf = [&](const RenderItemES20& item) -> const Dress& {
        if (shader && item.style != style)
        {
            style = item.style;
            dress.reflection = m_reflecting ? ReflectionOf(*style) : Reflection();
            takesColors = TakesVertexColors(*style);
        }
        const MaterialES20::Colored colored =
            takesColors ? HowManyAreColored(item) : MaterialES20::Colored::None;
        dress.isColored = colored == MaterialES20::Colored::All;
        dress.isMixed = colored == MaterialES20::Colored::Some;
        return dress;
    };
    auto begin = items.begin();
    while (begin != items.end())
    {
        const RenderPass own = passOf(*begin);
        const Dress shared = dressOf(*begin);
        const auto end = std::find_if(begin, items.end(), [&](const RenderItemES20& item) {
            return passOf(item) != own || !(dressOf(item) == shared);
        });
        if (shared.isMixed)
        {
            m_spread.clear();
            std::for_each(begin, end, [this](const RenderItemES20& item) { StageAccess::ListMeshes(item, m_spread); });
            DrawItems(frame, m_spread, pass, buffer);
            begin = end;
            continue;
        }
        Reflect(shared.reflection);
        if (shader)
        {
            shader->SetVertexColors(shared.isColored);
        }
        m_run.assign(begin, end);
        if (MaterialDataOf(*m_run.front().style))
        {
            frame.renderer.DrawInPicture(frame, m_run, own);
        }
        else
        {
            frame.renderer.Draw(frame.cameraData, m_run, own);
        }
        begin = end;
    }
    if (shader)
    {
        shader->SetVertexColors(false);
    }
}

} // namespace OV::Host::Detail
