#pragma once

#include "apps/render/Options.h"

namespace OV
{

class Scene;

} // namespace OV

namespace OV::RenderApp
{

/// The share of ambient light that AddDefaultLights leaves room for.
float AmbientLevelFor(Host::Look look);

/// How densely pen strokes lie on a model of an extent, so that a small one isn't drawn with a
/// broad pen.
int StrokeDensityFor(float extent);

/// Gives materials what the look reads otherwise than the basic one.
void SuitMaterials(Host::Look look, Scene& scene);

/// Sets the planes that cut, their outline and the section fill, and lets the materials show the
/// insides that a cut opens.
/// @param extent of the model, which decides the width of an outline that was left out.
void ApplyClipping(const SurfaceLook& look, Scene& scene, float extent);

} // namespace OV::RenderApp
