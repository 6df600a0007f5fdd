PRECISION_DEFAULT_HIGHP(float)

@OPTIONS@

uniform sampler2D u_layer;
uniform vec2 u_pixel; // of what is drawn into, its width and height counted 1

#ifdef LAYER
vec4 result()
{
    vec4 color = texture2D(u_layer, gl_FragCoord.xy * u_pixel);
    return vec4(color.rgb * color.a, color.a);
}
#endif

#ifdef SUM
// Alpha is what all let through, from which the sum of the densities comes that colours were taken by.
vec4 result()
{
    vec4 sum = texture2D(u_layer, gl_FragCoord.xy * u_pixel);
    float density = -log(max(sum.a, 1e-5));
    vec3 mean = density > 1e-4 ? sum.rgb / density : vec3(0.0);
    float opacity = 1.0 - sum.a;
    return vec4(clamp(mean, 0.0, 1.0) * opacity, opacity);
}
#endif

#ifdef LAY
// The mean over the pixel, of which there may be two each way.
vec4 result()
{
    vec2 low = (gl_FragCoord.xy - 0.25) * u_pixel;
    vec2 high = (gl_FragCoord.xy + 0.25) * u_pixel;
    return 0.25 * (texture2D(u_layer, low) + texture2D(u_layer, high) + texture2D(u_layer, vec2(low.x, high.y))
                   + texture2D(u_layer, vec2(high.x, low.y)));
}
#endif

void main()
{
    gl_FragColor = result();
}
