PRECISION_DEFAULT_HIGHP(float)

@OPTIONS@

#define MAX_CLIP_PLANES 6

uniform int u_numClipPlanes;
uniform vec3 u_clipPlaneNormals[MAX_CLIP_PLANES];   // world space, to the side cut away
uniform vec3 u_clipPlanePositions[MAX_CLIP_PLANES]; // world space
uniform float u_opacity;        // of the material
uniform int u_maps;             // 1: colours, whose alpha is opacity; 2: an opacity map; 3: both
#ifdef HOLES
uniform sampler2D u_texture0;
uniform sampler2D u_opacityMap; // in red
#endif

varying vec3 v_world_position;  // world space
#ifdef HOLES
varying vec2 v_tc;
#endif

void discardClipped()
{
#ifndef NO_CLIP_PLANES
    // The bound is a constant because ES 2 takes no uniform in the condition of a loop.
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
}

// The opacity of the surface. What the looks leave out casts nothing.
float opacity()
{
    float alpha = u_opacity;
#ifdef HOLES
    if (u_maps >= 2 && texture2D(u_opacityMap, v_tc).r < 0.4)
    {
        discard;
    }
    if (u_maps != 2)
    {
        float texel = texture2D(u_texture0, v_tc).a;
        if (texel < 0.25)
        {
            discard;
        }
        alpha *= texel;
    }
#endif
    return alpha;
}

void main()
{
    discardClipped();
    float alpha = opacity();
#ifdef GLASS
    // The first glass leaves its length in three channels, all of it what it lets through: light goes
    // into a pane through one face and out through another, each of which takes half.
    float reach = floor(gl_FragCoord.z * 16777215.0);
    float high = floor(reach / 65536.0);
    float middle = floor((reach - high * 65536.0) / 256.0);
    gl_FragColor = vec4(vec3(high, middle, reach - high * 65536.0 - middle * 256.0) / 255.0, sqrt(1.0 - alpha));
#else
    gl_FragColor = vec4(1.0, 1.0, 1.0, alpha);
#endif
}
