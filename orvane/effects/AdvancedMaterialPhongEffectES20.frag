#extension GL_OES_standard_derivatives : enable

@OPTIONS@

PRECISION_DEFAULT_HIGHP(float)

#define MAX_CLIP_PLANES 6

uniform vec4 u_ambient;
uniform vec4 u_color;               // alpha is the opacity
uniform vec4 u_specular;
uniform MEDIUMP vec3 u_lightDir;    // world space, unit, towards the light
uniform vec3 u_reflectionFactors;   // straight on, at a grazing angle, gloss
uniform samplerCube u_reflectionMap;
#ifdef REFLECT_AT_PIXELS
uniform vec3 u_camera;              // world space
uniform vec4 u_reflectionTint;      // of what is reflected straight on
#endif
uniform MEDIUMP mat3 u_cubeMatrix;  // its transpose carries world space to that of the cube map
#ifdef TEXTURE
uniform sampler2D u_texture0;
#endif
#ifdef NORMALMAP
uniform sampler2D u_normalMap;      // tangent space
#endif
#ifdef CUTOUT
uniform sampler2D u_opacityMap;     // in red
#endif
uniform bool u_isShowFaceSides;
uniform bool u_isBackFaces;
uniform bool u_monochrome;
uniform bool u_meshMonochrome;
uniform int u_numClipPlanes;
uniform vec3 u_clipPlaneNormals[MAX_CLIP_PLANES];   // world space, to the side cut away
uniform vec3 u_clipPlanePositions[MAX_CLIP_PLANES]; // world space
uniform vec4 u_clipPlaneOutlineColor;
uniform float u_clipPlaneOutlineSize;               // world units
uniform vec4 u_pocheColor;
uniform bool u_pocheColorEnabled;
uniform float u_ambientColorIntensity;
uniform float u_ambientTextureIntensity;
uniform float u_shadowIntensity;
uniform bool u_isShadow;
uniform float u_sunShading;         // 0: flat ambient shading, 1: full sun
#ifdef FOG
@FOG_UNIFORMS@
#endif
#ifdef STIPPLING
@STIPPLING_UNIFORMS@
#endif

varying float v_colorfactor;        // cosine between normal and light; 1 when unlit
varying MEDIUMP vec2 v_tc;
varying vec3 v_position;            // object space
varying vec3 v_world_position;      // world space
varying vec3 v_normal;              // world space
varying vec3 v_viewvector;          // world space, towards the camera
#ifndef NORMALMAP
varying MEDIUMP vec3 v_cubeMapLookup;
#endif
#ifdef VERTEX_COLORS
varying vec3 v_vcolor;
#endif
#ifdef MATERIAL_COLORS
varying vec3 v_materialDiffuse;     // what u_color and u_ambient, white but for the light, don't tell
varying vec3 v_materialAmbient;
#endif

const vec4 minColor = vec4(0.0, 0.0, 0.0, 0.0);
const vec4 maxColor = vec4(1.0, 1.0, 1.0, 1.0);
const vec3 lumcoeff = vec3(0.212, 0.7152, 0.0722);
const float shininess = 0.3;

#ifdef STIPPLING
@STIPPLING_FUNCTION@
#endif

#ifdef LIGHT_SHARE
uniform LOWP int u_enableLight;     // 1: lit by the light
@LIGHT_SHARE@
#endif

// Of the light that falls on the surface, how much arrives.
float lightShare(float lightFactor)
{
#ifdef LIGHT_SHARE
    return u_enableLight == 1 ? OVSL_LightShare(lightFactor > 0.0) : 1.0;
#else
    return 1.0;
#endif
}

#ifdef NORMALMAP
// Axes of the texture on the surface, from how position and coordinate change on the screen.
mat3 cotangent_frame(vec3 N, vec3 p, vec2 uv)
{
    vec3 dp1 = dFdx(p);
    vec3 dp2 = dFdy(p);
    vec2 duv1 = dFdx(uv);
    vec2 duv2 = dFdy(uv);
    vec3 dp2perp = cross(dp2, N);
    vec3 dp1perp = cross(N, dp1);
    vec3 T = dp2perp * duv1.x + dp1perp * duv2.x;
    vec3 B = dp2perp * duv1.y + dp1perp * duv2.y;
    // Where nothing changes there is no frame, and the root of 0 would blacken the surface.
    float invmax = inversesqrt(max(max(dot(T, T), dot(B, B)), 1e-30));
    return mat3(T * invmax, B * invmax, N);
}

vec3 perturb_normal(vec3 N, vec3 V, vec2 texcoord)
{
    vec3 map = texture2D(u_normalMap, texcoord).xyz;
    map = map * 255. / 127. - 128. / 127.;
    return normalize(cotangent_frame(N, -V, texcoord) * map);
}
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

vec3 surfaceNormal()
{
#ifdef NORMALMAP
    return perturb_normal(normalize(v_normal), v_viewvector, v_tc);
#else
    return normalize(v_normal);
#endif
}

vec4 sampleReflection(vec3 normal)
{
#ifdef REFLECT_AT_PIXELS
    // Directions of the vertices, of unit length, would bend what large faces reflect.
    vec3 view = normalize(u_camera - v_world_position);
    vec4 found = textureCube(u_reflectionMap, reflect(view, normal) * u_cubeMatrix);
    return mix(vec4(1.0), u_reflectionTint, abs(dot(view, normal))) * found;
#else
#ifdef NORMALMAP
    return textureCube(u_reflectionMap, normalize(reflect(v_viewvector, normal) * u_cubeMatrix));
#else
    return textureCube(u_reflectionMap, v_cubeMapLookup);
#endif
#endif
}

// How much the surface reflects: more, the flatter it is looked at.
float reflectionShare(vec3 normal)
{
#ifdef REFLECT_AT_PIXELS
    float rf = abs(dot(normalize(u_camera - v_world_position), normal));
#else
    float rf = abs(dot(v_viewvector, normal));
#endif
    return mix(u_reflectionFactors.y, u_reflectionFactors.x, rf);
}

vec4 specularLight(vec3 normal, float brightness)
{
    vec3 R = normalize(reflect(u_lightDir, normal));
    float specularIntensity = pow(max(dot(-R, v_viewvector), 0.0), shininess) * brightness;
    return specularIntensity * u_specular;
}

float facingColorFactor()
{
    return max(gl_FrontFacing ? v_colorfactor : -v_colorfactor, 0.0);
}

float lightOnSurface(vec3 normal, float share)
{
#ifdef NORMALMAP
    vec3 direction = gl_FrontFacing ? u_lightDir : -u_lightDir;
    float bumpLightFactor = max(dot(normal, direction), 0.0);
    return mix(1.0 - 0.1 * (1.0 - dot(v_viewvector, normal)), bumpLightFactor * share, u_sunShading);
#else
    return mix(1.0, facingColorFactor() * share, u_sunShading);
#endif
}

#ifdef REFLECT_AT_PIXELS
// Glass hides what is behind it as far as it reflects; else the opacity would dim reflections.
vec4 withReflection(vec3 surface, vec3 reflected, float share, float texelAlpha)
{
    float opacity = mix(u_color.a, 1.0, share);
    vec3 color = (surface * u_color.a + reflected) / max(opacity, 0.001);
    return vec4(clamp(color, minColor.rgb, maxColor.rgb), texelAlpha * opacity);
}
#endif

// Alpha is the opacity, which colours of vertices leave alone.
vec4 surfaceColor()
{
    vec4 color = u_color;
#ifdef MATERIAL_COLORS
    color.rgb *= v_materialDiffuse;
#endif
#ifdef VERTEX_COLORS
    color.rgb *= v_vcolor;
#endif
    return color;
}

vec3 ambientColor()
{
#ifdef MATERIAL_COLORS
    return u_ambient.rgb * v_materialAmbient;
#else
    return u_ambient.rgb;
#endif
}

vec4 shadedColor()
{
    const float brightness = 1.0;
    vec3 adjustedNormal = surfaceNormal();
    float share = lightShare(1.0);
    float lightFactor = lightOnSurface(adjustedNormal, share);
    vec4 spec = specularLight(adjustedNormal, brightness * share);
    float gloss = u_reflectionFactors.z;
#ifdef REFLECT_AT_PIXELS
    // The lamps are in the picture.
    spec = vec4(0.0);
#endif
    vec4 fspec = mix(spec * u_sunShading, sampleReflection(adjustedNormal), gloss)
               * reflectionShare(adjustedNormal) * 0.9;

    float ambientLum = max(0.7, dot(ambientColor(), lumcoeff));
#ifdef TEXTURE
    // Keeps the texture's colours from washing out near full light.
    const vec4 colorScale = vec4(0.8, 0.8, 0.8, 1.0);
    vec4 texColor = texture2D(u_texture0, v_tc);
    if (texColor.a < 0.25)
    {
        discard;
    }
    vec4 diffuse = (surfaceColor() * colorScale) * texColor;
    vec4 ambient_color = 0.5 * vec4(ambientLum * diffuse.rgb, 1.0) * u_sunShading;
    float strength = lightFactor * u_ambientTextureIntensity;
#ifdef REFLECT_AT_PIXELS
    return withReflection(strength * (ambient_color + diffuse).rgb, strength * fspec.rgb,
                          gloss * reflectionShare(adjustedNormal), texColor.a);
#else
    vec4 c = strength * (ambient_color + diffuse + fspec);
    return vec4(clamp(c, minColor, maxColor).rgb, texColor.a * u_color.a);
#endif
#else
    vec4 diffuse = surfaceColor();
    vec4 ambient_color = 0.5 * vec4(ambientLum * surfaceColor().rgb, 1.0) * u_sunShading;
    float strength = lightFactor * u_ambientColorIntensity;
#ifdef REFLECT_AT_PIXELS
    return withReflection(strength * (ambient_color + diffuse).rgb, strength * fspec.rgb,
                          gloss * reflectionShare(adjustedNormal), 1.0);
#else
    vec4 c = strength * (ambient_color + diffuse + fspec);
    return vec4(clamp(c, minColor, maxColor).rgb, u_color.a);
#endif
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

vec4 markedFace(vec4 finalColor, vec4 fragColor)
{
    bool canUsePocheColor = fragColor.a > 0.999 && u_pocheColorEnabled && haveClipPlanes();
    vec4 color = finalColor;
    if (!gl_FrontFacing)
    {
        if (u_isShowFaceSides)
        {
            color = vec4(fragColor.r * 0.8, fragColor.g * 0.5, fragColor.b * 0.4 + 0.0, fragColor.a);
        }
        else if (canUsePocheColor)
        {
            color = u_pocheColor;
        }
    }
    else if (u_isBackFaces && canUsePocheColor)
    {
        color = u_pocheColor;
    }
    return color;
}

vec4 greyed(vec4 color)
{
    if (u_monochrome || u_meshMonochrome)
    {
        float lum = dot(color.rgb, lumcoeff) * 0.6 + 0.15;
        color.rgb = vec3(lum, lum, lum);
    }
    return color;
}

void main()
{
#ifdef CUTOUT
    // First, since an early discard is cheapest; above 0, since mipmaps would thin the edges.
    if (texture2D(u_opacityMap, v_tc).r < 0.4)
    {
        discard;
    }
#endif
    if (clippedToOutline())
    {
        gl_FragColor = u_clipPlaneOutlineColor;
        return;
    }
    vec4 fragColor = shadedColor();
    float shadowIntensity = u_isShadow ? 1.0 - u_shadowIntensity : 1.0;
    vec4 shadowed = vec4(shadowIntensity * fragColor.rgb, fragColor.a);
    vec4 finalColor = greyed(markedFace(shadowed, fragColor));
#ifdef FOG
    @FOG_CALC@
    finalColor = mix(u_fogColor, finalColor, fogFactor);
#endif
#ifdef STIPPLING
    finalColor = OVSL_AddStippling(u_stippleOffset, u_stippleSize, gl_FragCoord.xy, u_stippleColor, finalColor);
#endif
    gl_FragColor = finalColor;
}
