PRECISION_DEFAULT_HIGHP(float)

@OPTIONS@

#define MAX_CLIP_PLANES 6

uniform int u_numClipPlanes;
uniform vec3 u_clipPlaneNormals[MAX_CLIP_PLANES];   // world space, to the side cut away
uniform vec3 u_clipPlanePositions[MAX_CLIP_PLANES]; // world space
uniform int u_isPerspective;
#ifdef HOLES
uniform int u_maps;             // 1: colours, whose alpha is opacity; 2: an opacity map; 3: both
uniform sampler2D u_texture0;
uniform sampler2D u_opacityMap; // in red
#endif

varying vec3 v_world_position;  // world space
varying vec3 v_place;           // view space, in units that suit it
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

void discardHoles()
{
#ifdef HOLES
    if (u_maps >= 2 && texture2D(u_opacityMap, v_tc).r < 0.4)
    {
        discard;
    }
    if (u_maps != 2 && texture2D(u_texture0, v_tc).a < 0.25)
    {
        discard;
    }
#endif
}

// The normal of the face on the side of the eye. Differences between pixels are those of the plane of
// the face, also where it covers a single one.
vec3 faceNormal()
{
    vec3 towardEye = u_isPerspective == 1 ? -v_place : vec3(0.0, 0.0, 1.0);
    vec3 normal = cross(dFdx(v_place), dFdy(v_place));
    float area = length(normal);
    normal = area > 0.0 ? normal / area : normalize(towardEye);
    return dot(normal, towardEye) < 0.0 ? -normal : normal;
}

// A unit vector as two numbers of 0 to 1: on an octahedron that is unfolded to a square.
vec2 unfolded(vec3 v)
{
    v /= abs(v.x) + abs(v.y) + abs(v.z);
    vec2 side = vec2(v.x < 0.0 ? -1.0 : 1.0, v.y < 0.0 ? -1.0 : 1.0);
    vec2 place = v.z < 0.0 ? (1.0 - abs(v.yx)) * side : v.xy;
    return place * 0.5 + 0.5;
}

void main()
{
    vec3 normal = faceNormal();
    discardClipped();
    discardHoles();
    vec2 place = floor(unfolded(normal) * 65535.0 + 0.5);
    vec2 high = floor(place / 256.0);
    gl_FragColor = vec4(high, place - high * 256.0) / 255.0;
}
