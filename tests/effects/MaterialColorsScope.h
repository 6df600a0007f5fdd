#pragma once

#include "orvane/effects/EffectES20.h"

#include <GL/glew.h>
#include <glm/vec4.hpp>

namespace OV::Test
{

/// Lets all vertices have a diffuse and an ambient colour in place of the material's, for the length of a scope. GL.
class MaterialColorsScope
{
public:
    MaterialColorsScope(const glm::vec4& diffuse, const glm::vec4& ambient)
    {
        EffectES20::TakeMaterialColors(true);
        // No array is enabled: they hold for all.
        glVertexAttrib3f(EffectES20::AttributeMaterialDiffuse, diffuse.r, diffuse.g, diffuse.b);
        glVertexAttrib3f(EffectES20::AttributeMaterialAmbient, ambient.r, ambient.g, ambient.b);
    }

    ~MaterialColorsScope()
    {
        glVertexAttrib4f(EffectES20::AttributeMaterialDiffuse, 0.0f, 0.0f, 0.0f, 1.0f);
        glVertexAttrib4f(EffectES20::AttributeMaterialAmbient, 0.0f, 0.0f, 0.0f, 1.0f);
        EffectES20::TakeMaterialColors(false);
    }

    MaterialColorsScope(const MaterialColorsScope&) = delete;
    MaterialColorsScope& operator=(const MaterialColorsScope&) = delete;
};

} // namespace OV::Test
