PRECISION_DEFAULT_MEDIUMP(float)

#define MAX_CLIP_PLANES 6

uniform int u_numClipPlanes;
uniform vec3 u_clipPlaneNormals[MAX_CLIP_PLANES];   // world space, to the side cut away
uniform vec3 u_clipPlanePositions[MAX_CLIP_PLANES]; // world space
uniform vec4 u_clipPlaneOutlineColor;
uniform float u_clipPlaneOutlineSize;               // world units

varying vec4 v_color;
varying vec3 v_world_position;                      // world space

#ifdef LIGHT_SHARE
@LIGHT_SHARE@
#endif

// Whether the fragment lies in the outline band of a cut. Cut away by a later plane, it is
// discarded all the same.
bool clippedToOutline()
{
    bool isOutline = false;
    float outlineTestThresh = -1.0 * u_clipPlaneOutlineSize;
#ifndef NO_CLIP_PLANES
    // The bound is a constant because ES 2 takes no uniform in the condition of a loop.
    for (int i = 0; i < MAX_CLIP_PLANES; ++i)
    {
        if (i >= u_numClipPlanes)
        {
            break;
        }
        float clipTest = dot(u_clipPlaneNormals[i], v_world_position - u_clipPlanePositions[i]);
        if (clipTest > 0.0)
        {
            discard;
        }
        else if (clipTest > outlineTestThresh)
        {
            isOutline = true;
        }
    }
#endif
    return isOutline;
}

void main()
{
    bool isOutline = clippedToOutline();
    vec4 color = v_color;
#ifdef LIGHT_SHARE
    color.rgb *= OVSL_ShadowTone();
#endif
    gl_FragColor = isOutline ? u_clipPlaneOutlineColor : color;
}
