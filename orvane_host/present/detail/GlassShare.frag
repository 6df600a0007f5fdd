// Behind a look: lets only what lies between the last layer of glass and what is solid pass.

@GLASS_OPTIONS@

uniform sampler2D u_glassSolid; // depth of what is solid
uniform sampler2D u_glassLast;  // depth of the last layer

// What two depths of one surface may differ by, one of them rounded to 24 bits.
const float glassRounding = 1.8e-7;
// More would be a density without bounds.
const float glassMostOpacity = 0.998;

void main()
{
    // First of all of it, since derivatives want the pixels beside.
    OVSL_Main();
    vec2 place = gl_FragCoord.xy * u_glassPixel.xy;
    float depth = gl_FragCoord.z;
    if (depth > texture2D(u_glassSolid, place).r || depth <= texture2D(u_glassLast, place).r + glassRounding)
    {
        discard;
    }
#ifdef GLASS_SUM
    float opacity = clamp(gl_FragColor.a, 0.0, glassMostOpacity);
    gl_FragColor = vec4(-log(1.0 - opacity) * gl_FragColor.rgb, opacity);
#endif
}
