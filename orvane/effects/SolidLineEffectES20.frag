PRECISION_DEFAULT_HIGHP(float)

@OPTIONS@

#define MAX_CLIP_PLANES 6

#ifdef OVERLAY
uniform sampler2D u_idTexture;
uniform sampler2D u_groupTexture;
#ifndef MOBILE
uniform sampler2D u_depthTexture;
uniform float u_znear;
uniform float u_zfar;
#endif
#endif
uniform vec4 u_color;
uniform float u_invWidth;                           // 1 / pixels
#ifdef DASHED
uniform float u_dashedLineFrequency;                // dashes per pixel
#endif
uniform int u_numClipPlanes;
uniform vec3 u_clipPlaneNormals[MAX_CLIP_PLANES];   // world space, to the side cut away
uniform vec3 u_clipPlanePositions[MAX_CLIP_PLANES]; // world space
uniform HIGHP vec2 u_invViewDims;                   // 1 / pixels
#ifdef FOG
@FOG_UNIFORMS@
#endif

varying HIGHP vec2 v_startScreen;      // pixels
varying HIGHP vec2 v_endScreen;        // pixels
varying HIGHP vec2 v_screenDir;        // unit
varying HIGHP vec2 v_screenPerpDir;    // unit
varying HIGHP float v_screenDistance;  // pixels
varying vec3 v_world_position;         // world space

#define pixelWidth u_invViewDims.x
#define pixelHeight u_invViewDims.y

#ifdef OVERLAY
float unpack_id(vec4 c)
{
    return (c.b * 256.0 * 256.0 + c.g * 256.0 + c.r) * 256.0;
}

bool isEdge(sampler2D et, vec2 coord)
{
    float centre = unpack_id(texture2D(et, coord));
    float left = unpack_id(texture2D(et, coord + vec2(-pixelWidth, 0.0)));
    float right = unpack_id(texture2D(et, coord + vec2(pixelWidth, 0.0)));
    float top = unpack_id(texture2D(et, coord + vec2(0.0, -pixelHeight)));
    float bottom = unpack_id(texture2D(et, coord + vec2(0.0, pixelHeight)));
    float sum = step(1.0, abs(left - centre)) + step(1.0, abs(right - centre))
              + step(1.0, abs(top - centre)) + step(1.0, abs(bottom - centre));
    return sum > 0.0;
}

#ifndef MOBILE
float readDepth(vec2 coord)
{
    return texture2D(u_depthTexture, coord).x;
}

float normalizeDepth(float depth)
{
    return (2.0 * u_znear) / (u_zfar + u_znear - depth * (u_zfar - u_znear));
}

// A line on the rim of a solid lies half over what is behind it: any neighbour will do.
bool passesDepthTest(vec2 coord)
{
    float centre = texture2D(u_depthTexture, coord).x;
    float left = texture2D(u_depthTexture, coord + vec2(-pixelWidth, 0.0)).x;
    float right = texture2D(u_depthTexture, coord + vec2(pixelWidth, 0.0)).x;
    float top = texture2D(u_depthTexture, coord + vec2(0.0, -pixelHeight)).x;
    float bottom = texture2D(u_depthTexture, coord + vec2(0.0, pixelHeight)).x;
    float z = gl_FragCoord.z;
    return z <= centre || z <= left || z <= right || z <= top || z <= bottom;
}
#endif

void discardOffEdges()
{
    // All sampling comes before any condition: some drivers refuse it inside.
    vec2 fc = gl_FragCoord.xy * u_invViewDims;
    bool onEdge = isEdge(u_idTexture, fc);
    bool onGroup = isEdge(u_groupTexture, fc);
    bool onEdgeOrGroup = onEdge || onGroup;
#ifdef MOBILE
    if (!onEdgeOrGroup)
    {
        discard;
    }
#else
    bool visible = passesDepthTest(fc);
    if (!onEdgeOrGroup || !visible)
    {
        discard;
    }
#endif
}
#endif

#ifdef ANTIALIAS
float distToLine(vec2 p)
{
    return abs(dot(v_screenPerpDir, p - v_startScreen));
}
#endif

#ifdef DASHED
void discardGaps()
{
    if (mod(distance(v_startScreen, gl_FragCoord.xy) * u_dashedLineFrequency, 2.0) > 1.0)
    {
        discard;
    }
}
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
        float clipTest = dot(u_clipPlaneNormals[i], v_world_position - u_clipPlanePositions[i]);
        if (clipTest > 0.0)
        {
            discard;
        }
    }
#endif
}

void main()
{
#ifdef DASHED
    discardGaps();
#endif
    discardClipped();
#ifdef OVERLAY
    discardOffEdges();
#endif
    vec4 color = u_color;
#ifdef ANTIALIAS
    float aaFactor = 1.0 - clamp(distToLine(gl_FragCoord.xy) * u_invWidth, 0.0, 1.0);
    color = vec4(u_color.rgb, u_color.a * aaFactor);
#endif
#ifdef FOG
    @FOG_CALC@
    color = mix(u_fogColor, color, fogFactor);
#endif
    gl_FragColor = color;
}
