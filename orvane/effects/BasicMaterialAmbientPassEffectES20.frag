PRECISION_DEFAULT_HIGHP(float)

@OPTIONS@

uniform vec4 u_ambient;             // alpha is the opacity
uniform bool u_isShowFaceSides;
uniform bool u_isMirrored;          // the node's transform reverses handedness
uniform vec4 u_pocheColor;
uniform bool u_pocheColorEnabled;   // not read
uniform float u_shadowIntensity;    // 0 for no shadow to 1 for black
uniform bool u_isShadow;
#ifdef TEXTURE
uniform sampler2D u_texture0;
#endif
#ifdef FOG
@FOG_UNIFORMS@
#endif
#ifdef STIPPLING
@STIPPLING_UNIFORMS@
#endif

#ifdef TEXTURE
varying MEDIUMP vec2 v_tc;
#endif

#ifdef STIPPLING
@INCLUDE_OVSL_ADD_STIPPLING_FUNCTION@
#endif

vec4 ambientColor()
{
#ifdef TEXTURE
    return u_ambient * texture2D(u_texture0, v_tc);
#else
    return u_ambient;
#endif
}

vec4 markedBackFace(vec4 fragColor)
{
    bool isFrontFacing = u_isMirrored ? !gl_FrontFacing : gl_FrontFacing;
    vec4 color = fragColor;
    if (!isFrontFacing)
    {
        if (u_isShowFaceSides)
        {
            color = vec4(fragColor.r * 0.5, fragColor.g * 0.5, fragColor.b * 0.7 + 0.3, fragColor.a);
        }
        else if (fragColor.a > 0.999)
        {
            // Clip planes and u_pocheColorEnabled are not asked, unlike in the main pass.
            color = u_pocheColor;
        }
    }
    return color;
}

void main()
{
    vec4 finalColor = markedBackFace(ambientColor());
#ifdef FOG
    @FOG_CALC_FRAGMENT@
    finalColor = mix(u_fogColor, finalColor, fogFactor);
#endif
#ifdef STIPPLING
    finalColor = OVSL_AddStippling(u_stippleOffset, u_stippleSize, gl_FragCoord.xy, u_stippleColor, finalColor);
#endif
    float shadow = u_isShadow ? u_shadowIntensity : 0.0;
    gl_FragColor = vec4((1.0 - shadow) * finalColor.rgb, finalColor.a);
}
