#define GL_GLEXT_PROTOTYPES

#include "orvane_host/present/detail/ShadowStage.h"

#include "orvane_host/present/PresentationFrame.h"
#include "orvane_host/present/StageAccess.h"
#include "orvane_host/present/detail/CasterEffect.h"
#include "orvane_host/present/detail/WholeView.h"
#include "orvane_host/present/detail/DrawIdKeeper.h"
#include "orvane_host/present/detail/EffectInPlace.h"
#include "orvane_host/present/detail/Effects.h"
#include "orvane_host/present/detail/ItemBox.h"
#include "orvane_host/present/detail/SurfacePass.h"
#include "orvane_host/present/detail/TouchedTexels.h"
#include "orvane/renderdata/CameraNodeES20.h"
#include "orvane/renderdata/MeshES20.h"
#include "orvane/scene/CameraNode.h"

#include <GL/gl.h>
#include <GL/glext.h>

#include <glm/geometric.hpp>
#include <glm/gtc/type_ptr.hpp>
#include <glm/matrix.hpp>

#include <algorithm>
#include <cmath>
#include <cstdint>

namespace OV::Host::Detail
{

namespace
{

/// A sun lower than this over the plane, as the sine of its height, leaves no shadow on it that
/// ends in sight.
constexpr double kLowest = 0.01;

/// Edges of texels in pixels of the picture; rims that run nearly along texels have dents of that size. With the coarse
/// ones hard rims stay within 1.5 pixels, and a frame inside of a house takes 0.87 of the time that it takes with those
/// of a pixel, since fewer lie in memory. Soft rims would get teeth, for next to no time.
constexpr double kCoarse = 1.4142135623730950;
constexpr double kMedium = 1.0;
constexpr double kFine = 0.7071067811865475; // where one part holds all

/// Degrees. Of wider suns soft shadows are looked for at more places.
constexpr float kWidest = 1.0f;

/// Of a side of a map's part: of a view, and of a tile of a poster, beside whose buffers the map has to find room.
constexpr int kMostTexels = 4096;
constexpr int kMostTexelsOfPart = 2048;

/// Steps of a depth of 16 bits, and how many the edge of a texel has at least, for rounding to be less than what
/// surfaces are allowed to lie behind themselves, which is most of an edge.
constexpr double kSteps = 65535.0;
constexpr double kStepsOfEdge = 1.0;

/// Whether 16 bits tell the lengths of a map apart.
bool IsShortEnough(const SunView& view)
{
    return view.GetFinestStep() * kSteps >= kStepsOfEdge;
}

/// Parts of a map that are drawn, without the rest of it.
class PartScope
{
public:
    PartScope()
    {
        glGetFloatv(GL_DEPTH_RANGE, m_range);
        glGetIntegerv(GL_SCISSOR_BOX, m_box);
        glGetBooleanv(GL_COLOR_WRITEMASK, m_mask);
        m_scissor = glIsEnabled(GL_SCISSOR_TEST) != GL_FALSE;
        glDepthRange(0.0, 1.0);
    }

    ~PartScope()
    {
        glDepthRange(m_range[0], m_range[1]);
        glScissor(m_box[0], m_box[1], m_box[2], m_box[3]);
        glColorMask(m_mask[0], m_mask[1], m_mask[2], m_mask[3]);
        (m_scissor ? glEnable : glDisable)(GL_SCISSOR_TEST);
        glEnable(GL_CULL_FACE);
        glEnable(GL_DEPTH_TEST);
        glDisable(GL_BLEND);
    }

    PartScope(const PartScope&) = delete;
    PartScope& operator=(const PartScope&) = delete;

private:
    GLfloat m_range[2] = {};
    GLint m_box[4] = {};
    GLboolean m_mask[4] = {};
    bool m_scissor = false;
};

GLbitfield BuffersOf(bool glass)
{
    return glass ? GL_COLOR_BUFFER_BIT | GL_DEPTH_BUFFER_BIT : GL_DEPTH_BUFFER_BIT;
}

void Confine(const TexelRect& texels)
{
    glScissor(texels.low.x, texels.low.y, texels.high.x - texels.low.x, texels.high.y - texels.low.y);
}

void Clear(const TexelRect& texels, bool glass)
{
    Confine(texels);
    // Materials may have left them off.
    glDepthMask(GL_TRUE);
    glClear(BuffersOf(glass));
}

glm::dvec3 ToDouble(const Vector& v)
{
    return {v.x, v.y, v.z};
}

glm::dmat4 ToDouble(const Matrix& matrix)
{
    return glm::dmat4(glm::make_mat4(matrix.m));
}

} // namespace

ShadowStage::~ShadowStage()
{
    Drop(m_effect);
}

void ShadowStage::ReleaseGL()
{
    Drop(m_effect);
    m_depth.Resize(0, 0);
    m_glass.Resize(0, 0);
    m_table.ReleaseGL();
    m_drawn.Forget();
    m_parts.Forget();
    m_inForce = false;
}

void ShadowStage::Prepare(PresentationFrame&)
{
    m_inForce = false;
    m_patch.reset();
}

void ShadowStage::Draw(PresentationFrame& frame)
{
    const double length = m_towardSun ? glm::length(ToDouble(*m_towardSun)) : 0.0;
    if (!m_settings || !(length > 0.0))
    {
        return;
    }
    const glm::dvec3 towardSun = ToDouble(*m_towardSun) / length;
    m_casters.List(frame);
    m_hasGlass = m_casters.HasGlass();
    const WholeView seen = SeenIn(frame);
    const std::optional<SunView> view = LayOut(frame, seen, towardSun);
    if (!view || !DrawMaps(frame, *view))
    {
        m_patch.reset();
        return;
    }
    SetValues(frame, seen, *view);
    BindMaps(frame);
    m_inForce = true;
}

WholeView ShadowStage::SeenIn(PresentationFrame& frame)
{
    WholeView seen(frame);
    if (frame.part.ofPoster)
    {
        seen.size = frame.target;
        seen.first = {};
        seen.worldToClip = frame.cameraData.GetMVP();
    }
    return seen;
}

std::optional<SunView> ShadowStage::LayOut(const PresentationFrame& frame, const WholeView& seen,
                                           const glm::dvec3& towardSun)
{
    const std::vector<CastBox>& boxes = m_casters.GetBoxes();
    if (boxes.empty())
    {
        return std::nullopt;
    }
    SunView::Request request;
    request.towardSun = towardSun;
    request.up = ToDouble(m_up);
    request.worldToClip = ToDouble(seen.worldToClip);
    request.perspective = frame.camera.GetProjection() == CameraNode::Perspective;
    request.pixels = {seen.size.width, seen.size.height};
    GLint limit = 0;
    glGetIntegerv(GL_MAX_TEXTURE_SIZE, &limit);
    request.texel = m_isFine || m_settings->soft ? kMedium : kCoarse;
    request.texelOfWhole = m_isFine ? kFine : kMedium;
    request.mostTexels = std::min(limit / 2, frame.part.ofPoster ? kMostTexelsOfPart : kMostTexels);
    request.mostParts = SunTable::IsSupported() ? SunView::MostTiles : 1;
    request.low = boxes.front().middle;
    request.high = boxes.front().middle;
    for (const CastBox& box : boxes)
    {
        const glm::dvec3 reach = glm::abs(box.halves[0]) + glm::abs(box.halves[1]) + glm::abs(box.halves[2]);
        request.low = glm::min(request.low, box.middle - reach);
        request.high = glm::max(request.high, box.middle + reach);
    }
    FindPatch(towardSun, request.low, request.high);
    SunView view(request, boxes);
    return view.GetTiles().empty() ? std::nullopt : std::optional<SunView>(std::move(view));
}

void ShadowStage::FindPatch(const glm::dvec3& towardSun, glm::dvec3& low, glm::dvec3& high)
{
    if (!m_plane)
    {
        return;
    }
    const glm::dvec3 up = ToDouble(m_plane->up);
    const double height = glm::dot(up, towardSun);
    if (height < kLowest)
    {
        return;
    }
    // The corners of the scene, along the light onto the plane, in a rectangle along the shadows.
    const glm::dvec3 flat = towardSun - height * up;
    const glm::dvec3 other = std::abs(up.x) < 0.9 ? glm::dvec3(1.0, 0.0, 0.0) : glm::dvec3(0.0, 0.0, 1.0);
    const glm::dvec3 along = glm::normalize(glm::length(flat) > 1e-6 ? flat : glm::cross(up, other));
    const glm::dvec3 across = glm::cross(along, up);
    const glm::dvec3 position = ToDouble(m_plane->position);
    glm::dvec2 from(0.0);
    glm::dvec2 to(0.0);
    for (int i = 0; i < 8; ++i)
    {
        const glm::dvec3 corner((i & 1) != 0 ? high.x : low.x, (i & 2) != 0 ? high.y : low.y,
                                (i & 4) != 0 ? high.z : low.z);
        const glm::dvec3 place = corner - towardSun * (glm::dot(up, corner - position) / height) - position;
        const glm::dvec2 flatPlace(glm::dot(across, place), glm::dot(along, place));
        from = i == 0 ? flatPlace : glm::min(from, flatPlace);
        to = i == 0 ? flatPlace : glm::max(to, flatPlace);
    }
    m_patch = Patch{position + across * from.x + along * from.y, across * (to.x - from.x), along * (to.y - from.y)};
    for (const glm::dvec2 end : {glm::dvec2(0, 0), glm::dvec2(0, 1), glm::dvec2(1, 0), glm::dvec2(1, 1)})
    {
        const glm::dvec3 corner = m_patch->corner + end.x * m_patch->across + end.y * m_patch->along;
        low = glm::min(low, corner);
        high = glm::max(high, corner);
    }
}

std::uint64_t ShadowStage::FingerprintOf(const SunView& view) const
{
    Fingerprint print;
    print.Add(view.GetSize());
    print.Add(IsShortEnough(view));
    print.Add(m_hasGlass);
    for (const glm::dvec3& axis : view.GetAxes())
    {
        print.Add(axis.x);
        print.Add(axis.y);
        print.Add(axis.z);
    }
    print.Add(m_settings->clippedCasts);
    const std::vector<glm::vec3>& normals = EffectES20::GetClipPlaneNormals();
    for (std::size_t i = 0; i < normals.size() && !m_settings->clippedCasts; ++i)
    {
        for (int axis = 0; axis < 3; ++axis)
        {
            print.Add(normals[i][axis]);
            print.Add(EffectES20::GetClipPlanePositions()[i][axis]);
        }
    }
    return print.Get();
}

bool ShadowStage::MakeMaps(const SunView& view)
{
    const glm::ivec2 size = view.GetSize();
    const ScreenBuffer::Depths depths = IsShortEnough(view) ? ScreenBuffer::Depths::Short : ScreenBuffer::Depths::Finest;
    m_depth.SetDepths(depths);
    m_glass.SetDepths(depths);
    if (!m_depth.Resize(size.x, size.y))
    {
        m_drawn.Forget();
        m_parts.Forget();
        return false;
    }
    if (!m_hasGlass || !m_glass.Resize(size.x, size.y))
    {
        m_hasGlass = false;
        m_glass.Resize(0, 0);
    }
    return true;
}

bool ShadowStage::DrawMaps(PresentationFrame& frame, const SunView& view)
{
    if (!MakeMaps(view))
    {
        return false;
    }
    const std::uint64_t layout = FingerprintOf(view);
    m_parts.Become(view.GetTiles());
    if (m_drawn.AreThose(layout, m_casters.GetPrints()) && !m_parts.HaveChanged())
    {
        return true;
    }
    m_drawn.Become(layout, m_casters.GetPrints(), [&](std::size_t i) {
        const CasterList::Caster& caster = m_casters.GetCasters()[i];
        SunView::Footprint footprint = view.FootprintOf(m_casters.GetBoxes()[i]);
        const double rounding = RoundingOf(*caster.item.mesh, *caster.node);
        footprint.from -= rounding;
        footprint.to += rounding;
        return footprint;
    });
    if (!m_effect)
    {
        m_effect = new CasterEffect;
    }
    m_effect->Clip(!m_settings->clippedCasts);
    const OffscreenScope offscreen(frame);
    const PartScope parts;
    DrawMap(frame, view, false);
    if (m_hasGlass)
    {
        DrawMap(frame, view, true);
    }
    return true;
}

void ShadowStage::DrawMap(PresentationFrame& frame, const SunView& view, bool glass)
{
    const bool isWhole = m_drawn.HasAllChanged();
    if (!isWhole && m_drawn.GetChanged(glass).empty() && !m_parts.HaveChanged())
    {
        return;
    }
    glDisable(GL_SCISSOR_TEST);
    glClearColor(1.0f, 1.0f, 1.0f, 1.0f);
    RenderTarget& target = (glass ? m_glass : m_depth).GetTarget();
    target.BeginCapture(isWhole ? BuffersOf(glass) : 0u);
    glEnable(GL_SCISSOR_TEST);
    if (!isWhole)
    {
        for (const TexelRect& texels : m_parts.GetGone())
        {
            Clear(texels, glass);
        }
    }
    const std::vector<SunView::Tile>& tiles = view.GetTiles();
    for (std::size_t i = 0; i < tiles.size(); ++i)
    {
        if (isWhole)
        {
            DrawTexels(frame, tiles[i], {tiles[i].low, tiles[i].high}, glass);
        }
        else
        {
            DrawPart(frame, tiles[i], m_parts.GetChanges()[i], glass);
        }
    }
    target.EndCapture();
}

void ShadowStage::DrawPart(PresentationFrame& frame, const SunView::Tile& tile, const DrawnParts::Change& change,
                           bool glass)
{
    for (const TexelRect& texels : change.left)
    {
        Clear(texels, glass);
    }
    // The map is empty wherever no part was.
    for (const TexelRect& texels : change.added)
    {
        DrawTexels(frame, tile, texels, glass);
    }
    if (change.isOther)
    {
        return;
    }
    for (const TexelRect& texels : FindTouchedTexels(tile, m_drawn.GetChanged(glass)))
    {
        Clear(texels, glass);
        DrawTexels(frame, tile, texels, glass);
    }
}

void ShadowStage::DrawTexels(PresentationFrame& frame, const SunView::Tile& tile, const TexelRect& texels, bool glass)
{
    m_items.clear();
    const SunView::Footprint area = FootprintAbout(tile, texels);
    const std::vector<SunView::Footprint>& footprints = m_drawn.GetFootprints();
    const std::vector<CasterList::Caster>& casters = m_casters.GetCasters();
    for (std::size_t i = 0; i < casters.size(); ++i)
    {
        if (casters[i].isGlass == glass && footprints[i].Meets(area))
        {
            m_items.push_back(casters[i].item);
        }
    }
    if (m_items.empty())
    {
        return;
    }
    const glm::ivec2 size = tile.cellHigh - tile.cellLow;
    glViewport(tile.cellLow.x, tile.cellLow.y, size.x, size.y);
    Confine(texels);
    m_effect->SetView(tile.toClip);
    m_effect->DrawGlass(glass);
    const auto draw = [&] {
        DrawIdKeeper drawIds(frame.scene);
        drawIds.Keep(m_items);
        const EffectInPlace inPlace(m_items, RenderPassDepthId, *m_effect);
        frame.renderer.Draw(frame.cameraData, m_items, RenderPassDepthId);
    };
    if (!glass)
    {
        draw();
        return;
    }
    // The first of the glasses tells where it is, and all of them what they let through.
    glColorMask(GL_TRUE, GL_TRUE, GL_TRUE, GL_FALSE);
    draw();
    glColorMask(GL_FALSE, GL_FALSE, GL_FALSE, GL_TRUE);
    glDisable(GL_DEPTH_TEST);
    glEnable(GL_BLEND);
    glBlendFunc(GL_ZERO, GL_SRC_ALPHA);
    draw();
    glDisable(GL_BLEND);
    glEnable(GL_DEPTH_TEST);
    glColorMask(GL_TRUE, GL_TRUE, GL_TRUE, GL_TRUE);
}

void ShadowStage::SetValues(const PresentationFrame& frame, const WholeView& seen, const SunView& view)
{
    static_assert(SunTable::Columns == SunView::MostTiles);
    SunShare::Values& values = m_share.values;
    const auto narrow = [](double value) { return static_cast<float>(value); };
    const bool isPerspective = frame.camera.GetProjection() == CameraNode::Perspective;
    const glm::ivec2 size = view.GetSize();
    values.texel = {narrow(1.0 / size.x), narrow(1.0 / size.y)};
    const std::vector<SunView::Tile>& tiles = view.GetTiles();
    const SunView::Slices& slices = view.GetSlices();
    values.slices = {narrow(slices.perOctave / SunTable::Columns),
                     narrow((slices.atOne + slices.firstCell) / SunTable::Columns)};
    const glm::dmat4 toWorld = SunShare::ToWorld(seen.worldToClip, isPerspective);
    values.step = {narrow(tiles.front().step.x), narrow(tiles.front().step.y)};
    const bool hasParts = view.HasParts();
    const glm::dmat4 reach = glm::transpose(glm::dmat4(glm::dvec4(0.0), glm::dvec4(0.0), glm::dvec4(0.0),
                                                       view.GetReach() - glm::dvec4(0.0, 0.0, 0.0, 1.0)));
    m_share.frame = {&frame.cameraData, isPerspective, tiles.front().toMap + reach, glm::dvec3(0.0)};
    // What is in the map may be rounded up: a surface isn't behind itself for that.
    m_share.frame.start.z = IsShortEnough(view) ? 0.5 / kSteps : 0.0;
    if (hasParts)
    {
        // From the eye, near which what is small shows most.
        const glm::dvec4 start = tiles.front().toMap * toWorld[3];
        m_share.frame.start.x = start.x;
        m_share.frame.start.y = start.y;
        SunTable::Rows rows;
        for (std::size_t i = 0; i < SunTable::Columns; ++i)
        {
            const std::size_t cells = static_cast<std::size_t>(view.CountCells());
            const std::size_t part = (i + cells - static_cast<std::size_t>(slices.firstCell)) % cells;
            const SunView::Tile& tile = tiles[std::min(part, tiles.size() - 1)];
            const glm::dvec2 finer = tiles.front().step / tile.step;
            const glm::dvec4 eye = tile.toMap * toWorld[3];
            rows[0][i] = {narrow(finer.x), narrow(finer.y), narrow(eye.x), narrow(eye.y)};
            rows[1][i] = {narrow(tile.low.x + 0.5), narrow(tile.low.y + 0.5), narrow(tile.high.x - 0.5),
                          narrow(tile.high.y - 0.5)};
        }
        m_table.Upload(rows);
    }
    constexpr double radians = 3.14159265358979323846 / 180.0;
    const double halfWidth = m_settings->soft ? std::tan(0.5 * m_settings->sunWidth * radians) : 0.0;
    values.look = {narrow(halfWidth / tiles.front().step.x), narrow(halfWidth / tiles.front().step.y),
                   m_settings->darkness};
    const auto optionIf = [](bool condition, SunShare::Option option) { return condition ? unsigned(option) : 0u; };
    m_share.SetOptions(optionIf(hasParts, SunShare::OptionParts)
                       | optionIf(m_settings->soft, SunShare::OptionSoft)
                       | optionIf(m_settings->soft && m_settings->sunWidth > kWidest, SunShare::OptionWide)
                       | optionIf(m_hasGlass, SunShare::OptionGlass));
}

void ShadowStage::BindMaps(PresentationFrame& frame)
{
    glActiveTexture(GL_TEXTURE0 + SunShare::TableUnit);
    glBindTexture(GL_TEXTURE_2D, m_table.GetTexture());
    glActiveTexture(GL_TEXTURE0 + SunShare::GlassUnit);
    glBindTexture(GL_TEXTURE_2D, m_hasGlass ? m_glass.GetTarget().GetColorTexture() : 0);
    glActiveTexture(GL_TEXTURE0 + SunShare::DepthUnit);
    glBindTexture(GL_TEXTURE_2D, m_depth.GetTarget().GetDepthTexture());
    glActiveTexture(GL_TEXTURE0);
    frame.usedUnits[SunShare::DepthUnit] = true;
    frame.usedUnits[SunShare::GlassUnit] = true;
    frame.usedUnits[SunShare::TableUnit] = true;
}

} // namespace OV::Host::Detail
