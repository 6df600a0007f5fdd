#extension GL_OES_standard_derivatives : enable
PRECISION_DEFAULT_HIGHP(float)

@OPTIONS@

#define MAX_CLIP_PLANES 6

uniform int u_numClipPlanes;
uniform vec3 u_clipPlaneNormals[MAX_CLIP_PLANES];   // world space, to the side cut away
uniform vec3 u_clipPlanePositions[MAX_CLIP_PLANES]; // world space

varying vec3 v_world_position; // world space

// In two channels: which way, and 1/1024 of a power of two from 2 to the power of -32 on.
vec2 inBytes(float slope)
{
    float size = abs(slope);
    float power = size > 0.0 ? clamp(log2(size) + 32.0, 0.0, 31.99) * 1024.0 : 0.0;
    float whole = floor(power) + (slope < 0.0 ? 32768.0 : 0.0);
    float high = floor(whole / 256.0);
    return vec2(high, whole - 256.0 * high) / 255.0;
}

void main()
{
    // Before anything is discarded, which would leave neighbours without a value.
    vec2 slopes = vec2(dFdx(gl_FragCoord.z), dFdy(gl_FragCoord.z));
#ifndef NO_CLIP_PLANES
    for (int i = 0; i < MAX_CLIP_PLANES; ++i)
    {
        if (i >= u_numClipPlanes)
        {
            break;
        }
        if (dot(u_clipPlaneNormals[i], v_world_position - u_clipPlanePositions[i]) > 0.0)
        {
            discard;
        }
    }
#endif
    gl_FragColor = vec4(inBytes(slopes.x), inBytes(slopes.y));
}
