PRECISION_DEFAULT_HIGHP(float)

@OPTIONS@

#define MAX_CLIP_PLANES 6

uniform int u_numClipPlanes;
uniform vec3 u_clipPlaneNormals[MAX_CLIP_PLANES];   // world space, to the side cut away
uniform vec3 u_clipPlanePositions[MAX_CLIP_PLANES]; // world space
uniform vec4 u_clipPlaneOutlineColor;
uniform float u_clipPlaneOutlineSize;               // world units
uniform vec4 u_pocheColor;
uniform bool u_pocheColorEnabled;
uniform bool u_isBackFaces;

varying vec3 v_world_position;                      // world space

#ifdef LIGHT_SHARE
varying vec3 v_surface;                             // from the vertices, since reading uniforms takes more

@LIGHT_SHARE@

vec3 plainColor()
{
    return v_surface.rrr;
}

bool showsFaceSides()
{
    return v_surface.b > 0.5;
}

float shadeOfAll()
{
    return v_surface.g;
}
#else
uniform vec3 u_color;
uniform bool u_showFaceSides;
uniform float u_shadowIntensity;
uniform bool u_isShadow;

vec3 plainColor()
{
    return u_color;
}

bool showsFaceSides()
{
    return u_showFaceSides;
}

float shadeOfAll()
{
    return u_isShadow ? 1.0 - u_shadowIntensity : 1.0;
}
#endif

// Whether the fragment lies in the outline band of a cut. Cut away by a later plane, it is
// discarded all the same.
bool clippedToOutline()
{
    bool isOutline = false;
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
        else if (clipTest > -u_clipPlaneOutlineSize)
        {
            isOutline = true;
        }
    }
#endif
    return isOutline;
}

// Whether a plane may have cut something, so that its inside shows.
bool haveClipPlanes()
{
#ifdef NO_CLIP_PLANES
    return false;
#else
    return u_numClipPlanes > 0;
#endif
}

vec4 surfaceColor()
{
    bool canUsePoche = u_pocheColorEnabled && haveClipPlanes();
    vec4 color = vec4(plainColor(), 1.0);
#ifdef LIGHT_SHARE
    color.rgb *= OVSL_ShadowTone();
#endif
    if (!gl_FrontFacing)
    {
        if (showsFaceSides())
        {
            color = vec4(color.r * 0.8, color.g * 0.5, color.b * 0.4, 1.0);
        }
        else if (canUsePoche)
        {
            color = u_pocheColor;
        }
    }
    else if (u_isBackFaces && canUsePoche)
    {
        color = u_pocheColor;
    }
    return color;
}

void main()
{
    bool isOutline = clippedToOutline();
    vec4 color = surfaceColor();
    gl_FragColor = isOutline ? u_clipPlaneOutlineColor : shadeOfAll() * color;
}
