#pragma once

namespace OV
{

/// The effect slot of a material that a walk over the render list draws with.
///
/// The engine's own frame uses RenderPassDefault; the others serve callers that name them.
enum RenderPass : int
{
    RenderPassAmbient = 0,
    RenderPassDefault = 1,
    RenderPassBasicVariant = 2,
    RenderPassWeightedAverage = 3,
    RenderPassDepthId = 4,
    RenderPassDepthIdSecond = 5,
    RenderPassSSAO = 6,
    RenderPassSky = 7,
    RenderPassVertexColor = 8,
    RenderPassAdvanced = 9,
    RenderPassAdvancedSecond = 10,
    RenderPassCrosshatch = 11,
    RenderPassCrosshatchSecond = 12,
    RenderPassMonotone = 13,
    RenderPassMonotoneSecond = 14
};

/// Number of values of RenderPass, and so of effect slots in a MaterialES20.
inline constexpr unsigned int kRenderPassCount = 15;

} // namespace OV
