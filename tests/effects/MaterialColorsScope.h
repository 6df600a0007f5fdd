#pragma once

#include "orvane/effects/EffectES20.h"

#include <GL/glew.h>
#include <glm/gtc/type_ptr.hpp>
#include <glm/vec4.hpp>

namespace OV::Test
{

/// Lets all vertices be of a material of their own in place of the one that is drawn with, for the length of a scope.
/// GL.
class MaterialColorsScope
{
public:
    MaterialColorsScope()
    {
        EffectES20::TakeMaterialColors(true);
        // No array is enabled: it holds for all.
        glVertexAttrib1f(EffectES20::AttributeMaterial, kNumber);
    }

    ~MaterialColorsScope()
    {
        glVertexAttrib4f(EffectES20::AttributeMaterial, 0.0f, 0.0f, 0.0f, 1.0f);
        EffectES20::TakeMaterialColors(false);
    }

    MaterialColorsScope(const MaterialColorsScope&) = delete;
    MaterialColorsScope& operator=(const MaterialColorsScope&) = delete;

    /// Gives that material's colours to all programs that were drawn with in the scope.
    static void Send(const glm::vec4& diffuse, const glm::vec4& ambient)
    {
        constexpr GLuint mostPrograms = 1u << 16;
        for (GLuint program = 1; program < mostPrograms; ++program)
        {
            const int at = glIsProgram(program) ? glGetUniformLocation(program, "u_materialColors[6]") : -1;
            if (at != -1)
            {
                glUseProgram(program);
                glUniform4fv(at, 1, glm::value_ptr(diffuse));
                glUniform4fv(glGetUniformLocation(program, "u_materialColors[7]"), 1, glm::value_ptr(ambient));
            }
        }
        glUseProgram(0);
    }

private:
    static constexpr float kNumber = 3.0f;
};

} // namespace OV::Test
