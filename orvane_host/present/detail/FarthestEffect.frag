PRECISION_DEFAULT_HIGHP(float)

@OPTIONS@

uniform sampler2D u_from;
uniform vec2 u_size; // of it, pixels

// A depth in three channels, by which it may only grow.
vec4 inBytes(float depth)
{
    float steps = ceil(min(depth, 1.0) * 16777215.0);
    float high = floor(steps / 65536.0);
    float middle = floor((steps - high * 65536.0) / 256.0);
    return vec4(high, middle, steps - high * 65536.0 - middle * 256.0, 255.0) / 255.0;
}

void main()
{
    vec2 texel = floor(gl_FragCoord.xy);
    float farthest = 0.0;
#ifdef NEIGHBOURS
    for (int y = -1; y <= 1; ++y)
    {
        for (int x = -1; x <= 1; ++x)
        {
            vec3 bytes = floor(texture2D(u_from, (texel + vec2(x, y) + 0.5) / u_size).rgb * 255.0 + 0.5);
            farthest = max(farthest, (bytes.r * 65536.0 + bytes.g * 256.0 + bytes.b) / 16777215.0);
        }
    }
#else
    for (int y = 0; y < 4; ++y)
    {
        for (int x = 0; x < 4; ++x)
        {
            farthest = max(farthest, texture2D(u_from, (texel * 4.0 + vec2(x, y) + 0.5) / u_size).x);
        }
    }
#endif
    gl_FragColor = inBytes(farthest);
}
