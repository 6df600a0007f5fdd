#pragma once

#include "orvane/Export.h"
#include "orvane/effects/ProgramTemplate.h"

namespace OV
{

class ShaderProgram;

/// How much of the light reaches each fragment: what a host lays into the effects that shade
/// surfaces, such as the shadows that it has worked out.
///
/// EffectES20::SetLightShare puts one in force. From then on the effects BasicMaterialEffectES20,
/// AdvancedMaterialEffectES20, AdvancedMaterialPhongEffectES20, CrosshatchEffectES20,
/// MonotoneEffectES20 and VertexColorEffectES20 draw with programs that have its text in the
/// fragment shader. Without one they draw as ever.
class ORVANE_API LightShare
{
public:
    LightShare() = default;
    LightShare(const LightShare&) = delete;
    LightShare& operator=(const LightShare&) = delete;
    virtual ~LightShare();

    /// GLSL that declares its uniforms and defines two functions, each of which is called at most
    /// once a fragment, in uniform control flow. Derivatives may be used.
    ///
    /// `float OVSL_LightShare(bool wanted)`: 0 where nothing of the first light's light arrives to 1
    /// where all does; anything where it isn't wanted, since the surface takes none. The effects
    /// that light surfaces lose so much of the light, and nothing of what else they add.
    ///
    /// `float OVSL_ShadowTone()`: what the colours of effects are multiplied by that know no light.
    ///
    /// Constant as long as the object lives. Each text that a process meets is compiled once for
    /// each set of options that it is drawn with.
    virtual const char* Source() const = 0;

    /// GLSL behind the shader, with a `main` that calls that of the effect, by the name `OVSL_Main`, once
    /// and in uniform control flow, and does with gl_FragColor what it likes. Null, as here, for none.
    /// Constant as Source is.
    virtual const char* Enclosure() const;

    /// GLSL behind the vertex shader, with a `main` that calls that of the effect, by the name `OVSL_Main`, and
    /// may hand on to Source what follows from gl_Position. Null, as here, for none. Constant as Source is.
    virtual const char* VertexEnclosure() const;

    /// Names of its uniforms, dense from 0.
    virtual NameTable Uniforms() const = 0;

    /// Gives a program, which is in use, its uniforms: once after each EffectES20::SetLightShare. GL.
    /// @param first place of the first one in the program's table; the others follow it.
    virtual void Feed(ShaderProgram& program, int first) = 0;
};

} // namespace OV
