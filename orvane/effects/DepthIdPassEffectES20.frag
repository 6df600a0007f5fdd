PRECISION_DEFAULT_HIGHP(float)

@OPTIONS@

#define MAX_CLIP_PLANES 6

uniform int u_numClipPlanes;
uniform vec3 u_clipPlaneNormals[MAX_CLIP_PLANES];   // world space, to the side cut away
uniform vec3 u_clipPlanePositions[MAX_CLIP_PLANES]; // world space

varying HIGHP vec4 v_color;                         // an identifier
varying HIGHP vec3 v_world_position;                // world space

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
        vec3 CN = u_clipPlaneNormals[i];
        vec3 CP = u_clipPlanePositions[i];
        if (dot(CN, v_world_position - CP) > 0.0)
        {
            discard;
        }
    }
#endif
}

void main()
{
    discardClipped();
    gl_FragColor = vec4(v_color.r, v_color.g, v_color.b, 1.0);
}
