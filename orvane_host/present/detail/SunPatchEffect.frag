PRECISION_DEFAULT_HIGHP(float)

@OPTIONS@

uniform float u_darkness;    // of a shadow, 0 to 1
#ifdef FOG
@FOG_UNIFORMS@
#endif
#ifdef LIGHT_SHARE
@LIGHT_SHARE@
#endif

float shade()
{
#ifdef LIGHT_SHARE
    return u_darkness * (1.0 - OVSL_LightShare(true));
#else
    return 0.0;
#endif
}

void main()
{
    float dark = shade();
#ifdef FOG
    @FOG_CALC@
    dark *= fogFactor;
#endif
    gl_FragColor = vec4(0.0, 0.0, 0.0, dark);
}
