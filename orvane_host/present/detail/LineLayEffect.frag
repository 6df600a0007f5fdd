PRECISION_DEFAULT_HIGHP(float)

@OPTIONS@

uniform sampler2D u_lines; // as LineEffect leaves them, or with FINISHED what this effect leaves
uniform int u_channels;    // 0: all, 1: red and blue, without fog, 2: green alone, without fog
uniform vec4 u_color;
uniform vec4 u_fogColor;

varying vec2 v_place;

vec4 inColor(float covered, float clear)
{
    vec3 color = mix(u_fogColor.rgb, u_color.rgb, covered > 0.0 ? clear / covered : 1.0);
    return vec4(color, 1.0) * (covered * u_color.a);
}

// Colours are multiplied by their opacity.
void main()
{
    vec4 lines = texture2D(u_lines, v_place);
    if (lines == vec4(0.0))
    {
        discard;
    }
#ifdef FINISHED
    gl_FragColor = lines;
#else
    lines = u_channels == 1 ? lines.rrbb : u_channels == 2 ? vec4(lines.gg, 0.0, 0.0) : lines;
    vec4 seen = inColor(lines.r, lines.g);
    gl_FragColor = seen + (1.0 - seen.a) * inColor(lines.b, lines.a);
#endif
}
