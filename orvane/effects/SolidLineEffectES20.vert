PRECISION_DEFAULT_HIGHP(float)

attribute vec3 a_startPosition; // object space
attribute vec3 a_endPosition;   // object space
attribute vec3 a_choiceDirNone; // x: 0 at the start of the segment, else at its end; y: side, 1 or -1

uniform mat4 u_mvpMatrix;       // object to clip space; to world space when there is an offset
uniform mat4 u_vpMatrix;        // world to clip space, read only when there is an offset
uniform mat4 u_worldTransform;  // object to world space
uniform HIGHP vec2 u_viewDims;            // pixels
uniform HIGHP vec2 u_invViewDims;         // 1 / pixels
uniform HIGHP float u_offsetToCameraPos;  // shift towards the camera, world units; 0: none
uniform bool u_DashedLines;     // not read
uniform vec4 u_orthoOffset;     // the same shift as a vector in world space
uniform bool u_isPerspCamera;
uniform bool u_overlayOnly;     // not read
uniform float u_width;          // pixels to each side

varying HIGHP vec2 v_startScreen;      // pixels
varying HIGHP vec2 v_endScreen;        // pixels
varying HIGHP vec2 v_screenDir;        // unit
varying HIGHP vec2 v_screenPerpDir;    // unit
varying HIGHP float v_screenDistance;  // pixels
varying vec3 v_world_position;         // world space

// Cuts the part of the segment that lies behind the plane; all of it becomes a point at no
// place at all.
void clipSegmentToPlane(inout vec4 p0, inout vec4 p1, vec4 plane)
{
    vec2 dist = vec2(dot(p0, plane), dot(p1, plane));
    bvec2 fwdPlane = greaterThanEqual(dist, vec2(0.0));
    if (fwdPlane[0] != fwdPlane[1])
    {
        float t = dist[0] / (dist[0] - dist[1]);
        vec4 crossing = mix(p0, p1, t);
        if (fwdPlane[1])
        {
            p0 = crossing;
        }
        else
        {
            p1 = crossing;
        }
    }
    else if (!fwdPlane[0])
    {
        p0 = vec4(0.0, 0.0, 0.0, -1.0);
        p1 = vec4(0.0, 0.0, 0.0, -1.0);
    }
}

// Takes both ends from the space of u_mvpMatrix to clip space, shifted towards the camera.
void applyOffset(inout vec4 start, inout vec4 end)
{
    if (u_offsetToCameraPos != 0.0)
    {
        if (!u_isPerspCamera)
        {
            start = u_vpMatrix * (start + u_orthoOffset);
            end = u_vpMatrix * (end + u_orthoOffset);
        }
        else
        {
            start = u_vpMatrix * start;
            end = u_vpMatrix * end;
            // 128 has no meaning of its own: styles are tuned to it.
            start.z -= u_offsetToCameraPos / 128.0;
            end.z -= u_offsetToCameraPos / 128.0;
        }
    }
}

vec2 unitOrZero(vec2 v)
{
    float size = length(v);
    return size > 0.0 ? v / size : vec2(0.0);
}

// Of a segment in normalised device coordinates. One seen end-on has none, and a ribbon without
// a direction covers nothing: with one it would be a spot whose slope in depth, and so its
// polygon offset, is without bounds. A segment that is short in depth as well is one of many that
// make up a curve, and has its direction as a long one has.
vec2 direction(vec3 segment)
{
    float pixels = length(segment.xy / (2.0 * u_invViewDims));
    // Depth of the window, whose range is 1.
    float depth = abs(segment.z) * 0.5;
    // Through all of the depth within less than so many pixels.
    bool endOn = depth * 16.0 > pixels;
    return pixels < 1.0 / 64.0 && endOn ? vec2(0.0) : unitOrZero(segment.xy);
}

vec2 toScreen(vec4 clip)
{
    return u_viewDims * ((1.0 + clip.xy / clip.w) * 0.5);
}

void main()
{
    float choice = a_choiceDirNone.x;
    float dir = a_choiceDirNone.y;

    vec4 start = u_mvpMatrix * vec4(a_startPosition, 1.0);
    vec4 end = u_mvpMatrix * vec4(a_endPosition, 1.0);
    applyOffset(start, end);

    // Before the division: a point behind the eye would turn up on the other side.
    vec4 nearPlane = vec4(0.0, 0.0, 1.0, 1.0);
    clipSegmentToPlane(start, end, nearPlane);

    vec2 ndcSlope = direction(end.xyz / end.w - start.xyz / start.w);
    ndcSlope = vec2(ndcSlope.y, -ndcSlope.x);
    vec2 ndcOffset = dir * (u_width * 2.0 * u_invViewDims) * ndcSlope;

    // The place in the world stays that of the end itself, also where the near plane has moved
    // the end: that is meant.
    vec4 pos;
    if (choice == 0.0)
    {
        pos = vec4(start.xy + ndcOffset * start.w, start.zw);
        v_world_position = (u_worldTransform * vec4(a_startPosition, 1.0)).xyz;
    }
    else
    {
        pos = vec4(end.xy + ndcOffset * end.w, end.zw);
        v_world_position = (u_worldTransform * vec4(a_endPosition, 1.0)).xyz;
    }
    gl_Position = pos;

    v_startScreen = toScreen(start);
    v_endScreen = toScreen(end);
    v_screenDir = unitOrZero(v_endScreen - v_startScreen);
    v_screenPerpDir = vec2(v_screenDir.y, -v_screenDir.x);
    v_screenDistance = distance(v_startScreen, v_endScreen);
}
