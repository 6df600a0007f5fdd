PRECISION_DEFAULT_HIGHP(float)

@OPTION_DEFINITIONS@

#define MAX_CLIP_PLANES 6

#ifdef TEXTURE
uniform sampler2D u_texture0;
#endif
uniform int u_numClipPlanes;
uniform vec3 u_clipPlaneNormals[MAX_CLIP_PLANES];   // world space, to the side cut away
uniform vec3 u_clipPlanePositions[MAX_CLIP_PLANES]; // world space
uniform vec4 u_pocheColor;
uniform bool u_pocheColorEnabled;
#ifdef FOG
@FOG_UNIFORMS@
#endif
#ifdef STIPPLING
@STIPPLING_UNIFORMS@
#endif

varying float v_colorfactor;        // cosine between normal and light; 1 when unlit
varying vec3 v_world_position;      // world space
#ifdef TEXTURE
varying MEDIUMP vec2 v_tc;
#endif
#ifdef MATERIAL_COLORS
varying vec3 v_materialDiffuse;     // what u_color and u_ambient, white but for the light, don't tell
varying vec3 v_materialAmbient;
#endif

const vec4 minColor = vec4(0.0, 0.0, 0.0, 0.0);
const vec4 maxColor = vec4(1.0, 1.0, 1.0, 1.0);

#ifdef STIPPLING
@INCLUDE_OVSL_ADD_STIPPLING_FUNCTION@
#endif

#ifdef LIGHT_SHARE
varying vec4 v_ambient;             // from the vertices, since reading uniforms takes more
varying vec4 v_color;

#define AMBIENT vec4(v_ambient.rgb, 0.0)
#define COLOR v_color
#define IS_LIT (v_ambient.a > 3.5)
#define IS_MIRRORED (fract(0.25 * (v_ambient.a + 0.5)) > 0.5)
#define SHOWS_FACE_SIDES (fract(0.5 * (v_ambient.a + 0.5)) > 0.5)

@LIGHT_SHARE@
#else
uniform vec4 u_ambient;
uniform vec4 u_color;               // alpha is the opacity
uniform bool u_isShowFaceSides;
uniform bool u_isMirrored;          // the node's transform reverses handedness

#define AMBIENT u_ambient
#define COLOR u_color
#define IS_MIRRORED u_isMirrored
#define SHOWS_FACE_SIDES u_isShowFaceSides
#endif

// Of the light that falls on the surface, how much arrives.
float lightShare(float lightFactor)
{
#ifdef LIGHT_SHARE
    return IS_LIT ? OVSL_LightShare(lightFactor > 0.0) : 1.0;
#else
    return 1.0;
#endif
}

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
        float clipTest = dot(u_clipPlaneNormals[i], v_world_position - u_clipPlanePositions[i]);
        if (clipTest > 0.0)
        {
            discard;
        }
    }
#endif
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
#ifdef MATERIAL_COLORS
    return vec4(COLOR.rgb * v_materialDiffuse, COLOR.a);
#else
    return COLOR;
#endif
}

vec4 ambientColor()
{
#ifdef MATERIAL_COLORS
    return vec4(AMBIENT.rgb * v_materialAmbient, AMBIENT.a);
#else
    return AMBIENT;
#endif
}

vec4 shadedColor()
{
    // Back faces take the light from behind rather than stay dark.
    float colorFactor = max(gl_FrontFacing ? v_colorfactor : -v_colorfactor, 0.0);
    colorFactor *= lightShare(colorFactor);
    vec4 light = clamp(ambientColor() + surfaceColor() * colorFactor, minColor, maxColor);
#ifdef TEXTURE
    vec4 s = texture2D(u_texture0, v_tc);
    return vec4(light.rgb * s.rgb, s.a * COLOR.a);
#else
    return vec4(light.rgb, COLOR.a);
#endif
}

vec4 markedBackFace(vec4 fragColor)
{
    bool isFrontFacing = IS_MIRRORED ? !gl_FrontFacing : gl_FrontFacing;
    vec4 color = fragColor;
    if (!isFrontFacing)
    {
        if (SHOWS_FACE_SIDES)
        {
            color = vec4(fragColor.r * 0.5, fragColor.g * 0.5, fragColor.b * 0.7 + 0.3, fragColor.a);
        }
        else if (fragColor.a > 0.999 && u_pocheColorEnabled && haveClipPlanes())
        {
            // Seen from behind, a face of a cut solid is its inside.
            color = u_pocheColor;
        }
    }
    return color;
}

void main()
{
    discardClipped();
    vec4 finalColor = markedBackFace(shadedColor());
#ifdef FOG
    @FOG_CALC_FRAGMENT@
    finalColor = mix(u_fogColor, finalColor, fogFactor);
#endif
#ifdef STIPPLING
    finalColor = OVSL_AddStippling(u_stippleOffset, u_stippleSize, gl_FragCoord.xy, u_stippleColor, finalColor);
#endif
    gl_FragColor = finalColor;
}
