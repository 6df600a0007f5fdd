#pragma once

namespace OV
{

/// GLSL texts that the markers of shader templates expand to, each one line.
///
/// FogCalc leaves in fogFactor how much of the fragment's own colour remains: 1 at the near end
/// of u_fogRange and before, 0 at its far end and beyond, by the distance to the eye.
inline constexpr char FogUniforms[] =
    "uniform vec2 u_fogRange; uniform vec4 u_fogColor; const float LOG2 = 1.442695;";

inline constexpr char FogCalc[] =
    "float fogFactor = 1.0; { float _ov_z = gl_FragCoord.z / gl_FragCoord.w; "
    "float _ov_x = (u_fogRange.y - _ov_z) / (u_fogRange.y - u_fogRange.x); "
    "fogFactor = clamp(_ov_x, 0.0, 1.0); }";

inline constexpr char StipplingUniforms[] =
    "uniform vec4 u_stippleColor; uniform float u_stippleSize; uniform float u_stippleOffset;";

/// Draws a grid of dots fixed to the screen: size and offset are in pixels, and a dot is half
/// the stipple colour, half the fragment's own.
inline constexpr char StipplingFunction[] =
    "vec4 OVSL_AddStippling(float offset, float size, vec2 fragCoord, vec4 color, vec4 src) { "
    "vec4 result = src; "
    "if (mod(fragCoord.y, offset) < size && mod(fragCoord.x, offset) < size) { "
    "result = mix(color, src, 0.5); } return result; }";

/// A fog that can be switched off per draw and can be exponential. No effect of the engine uses
/// this pair; it is there for effects of a host.
inline constexpr char FogUniformsFull[] =
    "uniform bool u_bFog; uniform vec2 u_fogRange; uniform vec4 u_fogColor; "
    "uniform bool u_bLinearFog; uniform float u_fogDensity; const float LOG2 = 1.442695;";

inline constexpr char FogCalcFull[] =
    "float fogFactor = 1.0; if (u_bFog) { float z = gl_FragCoord.z / gl_FragCoord.w; "
    "if (u_bLinearFog) { float x = (u_fogRange.y - z) / (u_fogRange.y - u_fogRange.x); "
    "fogFactor = clamp(x, 0.0, 1.0); } else { "
    "fogFactor = exp2(-u_fogDensity * u_fogDensity * z * z * LOG2); "
    "fogFactor = clamp(fogFactor, 0.0, 1.0); } }";

} // namespace OV
