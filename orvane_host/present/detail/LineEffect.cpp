#define GL_GLEXT_PROTOTYPES

#include "orvane_host/present/detail/LineEffect.h"

#include "orvane_host/present/detail/FarthestEffect.h"
#include "orvane_host/present/detail/LineRuns.h"
#include "orvane_host/present/shaders/LineEffect.frag.h"
#include "orvane_host/present/shaders/LineEffect.vert.h"
#include "orvane/effects/SkySettings.h"
#include "orvane/effects/SolidLineEffectES20.h"
#include "orvane/math/Quaternion.h"
#include "orvane/math/Vector.h"
#include "orvane/renderdata/CameraNodeES20.h"
#include "orvane/renderdata/MeshES20.h"
#include "orvane/scene/CameraNode.h"
#include "orvane/scene/LineStyle.h"
#include "orvane/scene/MeshNode.h"

#include <GL/gl.h>
#include <GL/glext.h>

#include <algorithm>
#include <cstddef>

namespace OV::Host::Detail
{

namespace
{

enum Option : std::uint64_t
{
    OptionDepth = 1,
    OptionGlass = 2,
    OptionFog = 4,
    OptionFarthest = 8,
};

constexpr OptionRow kOptions[] = {
    {OptionDepth, "DEPTH"},
    {OptionGlass, "GLASS"},
    {OptionFog, "FOG"},
    {OptionFarthest, "FARTHEST"},
};

enum Uniform : int
{
    UniformMvpMatrix,
    UniformVpMatrix,
    UniformWorldTransform,
    UniformOffsetToCameraPos,
    UniformOrthoOffset,
    UniformIsPerspCamera,
    UniformWhole,
    UniformPart,
    UniformGuard,
    UniformReach,
    UniformOrigin,
    UniformHalfWidth,
    UniformSmooth,
    UniformDash,
    UniformHiddenHalf,
    UniformHiddenDash,
    UniformKind,
    UniformCore,
    UniformDepth,
    UniformSlopes,
    UniformSize,
    UniformGlass,
    UniformGlassSlopes,
    UniformNumClipPlanes,
    UniformClipPlaneNormals,
    UniformClipPlanePositions,
    UniformFogRange,
    UniformFarthest,
    UniformBlocks,
};

constexpr IndexedName kUniforms[] = {
    {UniformMvpMatrix, "u_mvpMatrix"},
    {UniformVpMatrix, "u_vpMatrix"},
    {UniformWorldTransform, "u_worldTransform"},
    {UniformOffsetToCameraPos, "u_offsetToCameraPos"},
    {UniformOrthoOffset, "u_orthoOffset"},
    {UniformIsPerspCamera, "u_isPerspCamera"},
    {UniformWhole, "u_whole"},
    {UniformPart, "u_part"},
    {UniformGuard, "u_guard"},
    {UniformReach, "u_reach"},
    {UniformOrigin, "u_origin"},
    {UniformHalfWidth, "u_halfWidth"},
    {UniformSmooth, "u_smooth"},
    {UniformDash, "u_dash"},
    {UniformHiddenHalf, "u_hiddenHalf"},
    {UniformHiddenDash, "u_hiddenDash"},
    {UniformKind, "u_kind"},
    {UniformCore, "u_core"},
    {UniformDepth, "u_depth"},
    {UniformSlopes, "u_slopes"},
    {UniformSize, "u_size"},
    {UniformGlass, "u_glass"},
    {UniformGlassSlopes, "u_glassSlopes"},
    {UniformNumClipPlanes, "u_numClipPlanes"},
    {UniformClipPlaneNormals, "u_clipPlaneNormals"},
    {UniformClipPlanePositions, "u_clipPlanePositions"},
    {UniformFogRange, "u_fogRange"},
    {UniformFarthest, "u_farthest"},
    {UniformBlocks, "u_blocks"},
};
static_assert(IsDense(kUniforms));

enum Attribute : unsigned
{
    AttributeStartPosition,
    AttributeEndPosition,
    AttributeChoiceDirNone,
    AttributeRun,
};

constexpr IndexedName kAttributes[] = {
    {AttributeStartPosition, "a_startPosition"},
    {AttributeEndPosition, "a_endPosition"},
    {AttributeChoiceDirNone, "a_choiceDirNone"},
    {AttributeRun, "a_run"},
};

constexpr ProgramTemplate kTemplate = {
    "LineEffect", Shaders::LineEffectVert, Shaders::LineEffectFrag, kOptions, kUniforms, kAttributes,
};

constexpr std::uint64_t OptionIf(bool condition, Option option)
{
    return condition ? option : std::uint64_t(0);
}

/// A style's offset of 1 is this part of the depth range, as the engine has it.
constexpr float kOffsetsPerRange = 500.0f;

/// Which of the shader's kinds draws what is hidden in place of what is seen.
constexpr int kHiddenKind = 2;

// Units of the textures.
enum Unit : int
{
    UnitDepth,
    UnitSlopes,
    UnitGlass,
    UnitGlassSlopes,
    UnitFarthest,
    UnitCount,
};

/// The first unit comes last and stays active.
template <class TextureOf>
void BindTextures(TextureOf textureOf)
{
    for (int unit = UnitCount; unit-- > 0;)
    {
        glActiveTexture(GL_TEXTURE0 + static_cast<GLenum>(unit));
        glBindTexture(GL_TEXTURE_2D, textureOf(unit));
    }
}

} // namespace

LineEffect::LineEffect() : EffectES20(nullptr)
{
    m_discardsAtPlanes = true;
}

unsigned int LineEffect::CreateProgramForOptions(std::uint64_t options, std::string& name)
{
    return CreateFromTemplate(kTemplate, options, name);
}

void LineEffect::Show(const View& view, Kind kind, const LineRuns& runs)
{
    m_view = view;
    m_kind = kind;
    m_runs = &runs;
}

float LineEffect::ReachOf(const Pen& pen)
{
    // Half a pixel for smooth rims, and another for where the middles of pixels lie.
    return std::max(pen.halfWidth, pen.hiddenHalfWidth) + 1.0f;
}

std::array<float, 2> LineEffect::GuardOf(const PixelSize& whole, float reach)
{
    const float about = 4.0f * reach;
    return {1.0f + about / static_cast<float>(whole.width), 1.0f + about / static_cast<float>(whole.height)};
}

void LineEffect::Apply(const LineStyle& style, const Pen& pen, CameraNodeES20& camera, bool core)
{
    m_camera = &camera;
    const bool isTested = m_view.depth && !style.noDepthTest;
    const SkySettings& sky = SkySettings::inst();
    const bool turnsRound = isTested && (style.GetFlags() & LineStyleFlagDepthLessEqual) != 0;
    const bool leavesOut = isTested && m_view.depth.farthest != 0 && !turnsRound && pen.hiddenHalfWidth <= 0.0f;
    UseOptions(OptionIf(leavesOut, OptionFarthest) | OptionIf(isTested, OptionDepth) | OptionIf(isTested && m_view.glass, OptionGlass)
               | OptionIf(style.fog && sky.UseFog(), OptionFog));
    Set(UniformKind, turnsRound ? kHiddenKind : static_cast<int>(m_kind));
    Set(UniformCore, core ? 1 : 0);
    Set(UniformWhole, static_cast<float>(m_view.whole.width), static_cast<float>(m_view.whole.height));
    Set(UniformPart, m_view.x, m_view.y, static_cast<float>(m_view.target.width), static_cast<float>(m_view.target.height));
    Set(UniformOrigin, m_view.x, m_view.y);
    Set(UniformSize, static_cast<float>(m_view.target.width), static_cast<float>(m_view.target.height));
    const float reach = ReachOf(pen);
    const std::array<float, 2> guard = GuardOf(m_view.whole, reach);
    Set(UniformGuard, guard[0], guard[1]);
    Set(UniformReach, reach);
    Set(UniformHalfWidth, pen.halfWidth);
    Set(UniformSmooth, pen.isSmooth ? 1 : 0);
    Set(UniformDash, pen.dashes.period, pen.dashes.length);
    Set(UniformHiddenHalf, pen.hiddenHalfWidth);
    Set(UniformHiddenDash, pen.hiddenDashes.period, pen.hiddenDashes.length);
    Set(UniformFogRange, sky.GetFogStart(), sky.GetFogEnd());
    SetOffset(style, camera);
    Set(UniformDepth, static_cast<int>(UnitDepth));
    Set(UniformSlopes, static_cast<int>(UnitSlopes));
    Set(UniformGlass, static_cast<int>(UnitGlass));
    Set(UniformGlassSlopes, static_cast<int>(UnitGlassSlopes));
    Set(UniformFarthest, static_cast<int>(UnitFarthest));
    Set(UniformBlocks, static_cast<float>((m_view.target.width + FarthestEffect::Block - 1) / FarthestEffect::Block),
        static_cast<float>((m_view.target.height + FarthestEffect::Block - 1) / FarthestEffect::Block));
    const unsigned int textures[] = {m_view.depth.depth, m_view.depth.slopes, m_view.glass.depth, m_view.glass.slopes,
                                     m_view.depth.farthest};
    static_assert(sizeof(textures) / sizeof(textures[0]) == UnitCount);
    BindTextures([&](int unit) {
        GLint bound = 0;
        glGetIntegerv(GL_TEXTURE_BINDING_2D, &bound);
        m_boundBefore[static_cast<std::size_t>(unit)] = static_cast<unsigned int>(bound);
        return textures[unit];
    });
}

void LineEffect::SetOffset(const LineStyle& style, CameraNodeES20& camera)
{
    CameraNode* const node = camera.GetCameraNode();
    m_isOffset = style.offset != 0.0f && node;
    if (!m_isOffset)
    {
        Set(UniformOffsetToCameraPos, 0.0f);
        return;
    }
    float nearest = 0.0f;
    float farthest = 1.0f;
    node->GetNearFar(nearest, farthest);
    const float offset = style.offset * ((farthest - nearest) / kOffsetsPerRange);
    Vector view;
    view.Multiply(node->GetGlobal().GetRotation(), Vector(0.0f, 0.0f, -1.0f));
    Set(UniformOffsetToCameraPos, offset);
    Set(UniformOrthoOffset, -view.x * offset, -view.y * offset, -view.z * offset, 0.0f);
    Set(UniformIsPerspCamera, node->GetProjection() == CameraNode::Perspective ? 1 : 0);
    Set(UniformVpMatrix, m_view.worldToClip);
}

void LineEffect::Remove()
{
    EndUse();
    glVertexAttrib4f(AttributeRun, 0.0f, 0.0f, 0.0f, 1.0f);
    // Looks leave theirs for the next frame.
    BindTextures([&](int unit) { return m_boundBefore[static_cast<std::size_t>(unit)]; });
}

void LineEffect::BindMeshAttributes(MeshES20* mesh)
{
    m_mesh = mesh;
    const int stride = mesh->GetStride();
    const int start = mesh->GetPositionOffset();
    EnableAttribute(AttributeStartPosition, 3, stride, start);
    EnableAttribute(AttributeEndPosition, 3, stride, start + SolidLineEffectES20::VerticesPerPoint * stride);
    if (mesh->GetNormalOffset() >= 0)
    {
        EnableAttribute(AttributeChoiceDirNone, 3, stride, mesh->GetNormalOffset());
    }
}

void LineEffect::ReleaseMeshAttributes(MeshES20*)
{
    DisableAttribute(AttributeStartPosition);
    DisableAttribute(AttributeEndPosition);
    DisableAttribute(AttributeChoiceDirNone);
    DisableAttribute(AttributeRun);
}

void LineEffect::BindMeshUniforms(MeshNode* node)
{
    const Matrix& world = *node->GetGlobalMatrix();
    if (m_isOffset)
    {
        Set(UniformMvpMatrix, world);
    }
    else
    {
        Matrix matrix;
        matrix.Multiply(m_view.worldToClip, world);
        Set(UniformMvpMatrix, matrix);
    }
    Set(UniformWorldTransform, world);
    SetClipPlanes(UniformClipPlaneNormals, UniformClipPlanePositions, UniformNumClipPlanes, clipPlanesActive);
    const int run = m_runs->Bind(*m_mesh, *node, AttributeRun);
    if (run >= 0)
    {
        EnableAttribute(AttributeRun, 2, LineRuns::Stride, run);
        LineRuns::Unbind(*m_mesh);
    }
}

} // namespace OV::Host::Detail
