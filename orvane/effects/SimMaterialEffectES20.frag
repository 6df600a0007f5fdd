PRECISION_DEFAULT_MEDIUMP(float)

uniform vec4 u_color;             // not read
uniform LOWP int u_enableTexture; // 1: the texture is the ramp
uniform sampler2D u_texture0;
uniform vec2 u_scalarcliprange;   // lower and upper end, both included

varying float v_colorfactor;      // cosine between normal and light; 1 when unlit
varying float v_sc;               // the number

// Blue, cyan, green, yellow, red.
vec3 gradient(float v)
{
    vec3 color = vec3(1.0, 0.0, 0.0);
    if (v <= 0.0)
    {
        color = vec3(0.0, 0.0, 1.0);
    }
    else if (v <= 0.25)
    {
        color = vec3(0.0, v * 4.0, 1.0);
    }
    else if (v <= 0.5)
    {
        color = vec3(0.0, 1.0, 2.0 - v * 4.0);
    }
    else if (v <= 0.75)
    {
        color = vec3((v - 0.5) * 4.0, 1.0, 0.0);
    }
    else if (v < 1.0)
    {
        color = vec3(1.0, 1.0 - (v - 0.75) * 4.0, 0.0);
    }
    return color;
}

// An empty or reversed range holds nothing.
bool thresholdcheck(float v, float lower, float upper)
{
    return lower < upper && v >= lower && v <= upper;
}

void main()
{
    if (!thresholdcheck(v_sc, u_scalarcliprange.x, u_scalarcliprange.y))
    {
        gl_FragColor = vec4(v_colorfactor * vec3(0.75, 0.75, 0.75), 0.5);
    }
    else if (u_enableTexture == 1)
    {
        vec4 s = texture2D(u_texture0, vec2(v_sc, 0.0));
        gl_FragColor = vec4(v_colorfactor * s.rgb, s.a);
    }
    else
    {
        gl_FragColor = vec4(v_colorfactor * gradient(v_sc), 1.0);
    }
}
