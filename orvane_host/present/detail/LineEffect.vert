PRECISION_DEFAULT_HIGHP(float)

@OPTIONS@

attribute vec3 a_startPosition; // object space
attribute vec3 a_endPosition;   // object space
attribute vec3 a_choiceDirNone; // x: 0 at the start of the segment, else at its end; y: side, 1 or -1
attribute vec2 a_run;           // x: pixels of its polyline before the segment; y: joints, 1 at the start + 2 at the end

uniform mat4 u_mvpMatrix;       // object to clip space; to world space when there is an offset
uniform mat4 u_vpMatrix;        // world to clip space, read only when there is an offset
uniform mat4 u_worldTransform;  // object to world space
uniform float u_offsetToCameraPos; // shift towards the camera, world units; 0: none
uniform vec4 u_orthoOffset;     // the same shift as a vector in world space
uniform bool u_isPerspCamera;
uniform vec2 u_whole;           // pixels, of the whole picture
uniform vec4 u_part;            // pixels, of the part that is drawn: its lower left corner and its size
uniform vec2 u_guard;           // how far segments are followed, in normalised device coordinates
uniform float u_reach;          // pixels to each side
#ifdef FARTHEST
uniform sampler2D u_farthest;   // as FarthestEffect draws it
uniform vec2 u_blocks;          // its size
#endif

varying vec4 v_ends;    // pixels of the whole picture, start and end
varying vec4 v_depths;  // of the window, then 1 over the distance, each at start and end
varying vec3 v_worldStart;
varying vec3 v_worldEnd;
varying vec2 v_run;     // as a_run

vec4 toClip(vec3 position)
{
    vec4 place = u_mvpMatrix * vec4(position, 1.0);
    if (u_offsetToCameraPos != 0.0)
    {
        if (u_isPerspCamera)
        {
            place = u_vpMatrix * place;
            // 128 has no meaning of its own: styles are tuned to it.
            place.z -= u_offsetToCameraPos / 128.0;
        }
        else
        {
            place = u_vpMatrix * (place + u_orthoOffset);
        }
    }
    return place;
}

// Takes what lies on the wrong side of a plane off the range of a segment.
void cut(float atStart, float atEnd, inout vec2 range)
{
    float crossing = atStart / (atStart - atEnd);
    if (atStart < 0.0)
    {
        range.x = atEnd < 0.0 ? 2.0 : max(range.x, crossing);
    }
    else if (atEnd < 0.0)
    {
        range.y = min(range.y, crossing);
    }
}

// What is far outside would have no exact place in pixels, and what is behind the eye none at all.
vec2 rangeOf(vec4 start, vec4 end)
{
    vec2 range = vec2(0.0, 1.0);
    cut(start.z + start.w, end.z + end.w, range);
    cut(u_guard.x * start.w + start.x, u_guard.x * end.w + end.x, range);
    cut(u_guard.x * start.w - start.x, u_guard.x * end.w - end.x, range);
    cut(u_guard.y * start.w + start.y, u_guard.y * end.w + end.y, range);
    cut(u_guard.y * start.w - start.y, u_guard.y * end.w - end.y, range);
    return range;
}

vec2 toPixels(vec4 clip)
{
    // On a grid, by which every pixel of a segment finds the same ends whatever interpolation does.
    return floor((clip.xy / clip.w * 0.5 + 0.5) * u_whole * 256.0 + 0.5) / 256.0;
}

#ifdef FARTHEST
// Whether all of a segment is behind what is farthest about it. Of long ones it isn't asked.
bool isBehindAll(vec2 start, vec2 end, vec2 depths)
{
    // Blocks know a block about them, which the steps and what is looked at beside the line stay in.
    const float pixels = 2.0;
    float steps = ceil(distance(start, end) / pixels);
    if (steps > 128.0)
    {
        return false;
    }
    float perStep = (depths.y - depths.x) / max(steps, 1.0);
    // What lies beside the line is looked at less than two steps farther along.
    float room = 2.0 * abs(perStep) + 1e-6;
    for (int i = 0; i <= 128; ++i)
    {
        if (float(i) > steps)
        {
            break;
        }
        vec2 place = mix(start, end, float(i) / max(steps, 1.0)) - u_part.xy;
        vec2 block = clamp(floor(place / 4.0), vec2(0.0), u_blocks - 1.0);
        vec3 bytes = floor(texture2D(u_farthest, (block + 0.5) / u_blocks).rgb * 255.0 + 0.5);
        if (depths.x + float(i) * perStep - room <= (bytes.r * 65536.0 + bytes.g * 256.0 + bytes.b) / 16777215.0)
        {
            return false;
        }
    }
    return true;
}
#endif

void main()
{
    vec4 first = toClip(a_startPosition);
    vec4 last = toClip(a_endPosition);
    vec2 range = rangeOf(first, last);
    if (range.x >= range.y)
    {
        gl_Position = vec4(2.0, 2.0, 2.0, 1.0);
        v_ends = vec4(0.0);
        v_depths = vec4(0.0);
        v_worldStart = vec3(0.0);
        v_worldEnd = vec3(0.0);
        v_run = vec2(0.0);
        return;
    }
    vec4 start = mix(first, last, range.x);
    vec4 end = mix(first, last, range.y);
    v_ends = vec4(toPixels(start), toPixels(end));
    v_depths = vec4(vec2(start.z / start.w, end.z / end.w) * 0.5 + 0.5, 1.0 / start.w, 1.0 / end.w);
    v_worldStart = (u_worldTransform * vec4(mix(a_startPosition, a_endPosition, range.x), 1.0)).xyz;
    v_worldEnd = (u_worldTransform * vec4(mix(a_startPosition, a_endPosition, range.y), 1.0)).xyz;
    v_run = a_run;
#ifdef FARTHEST
    if (isBehindAll(v_ends.xy, v_ends.zw, v_depths.xy))
    {
        gl_Position = vec4(2.0, 2.0, 2.0, 1.0);
        return;
    }
#endif

    vec2 along = v_ends.zw - v_ends.xy;
    float size = length(along);
    along = size > 0.0 ? along / size : vec2(1.0, 0.0);
    vec2 across = vec2(along.y, -along.x);
    bool isStart = a_choiceDirNone.x == 0.0;
    vec2 corner = isStart ? v_ends.xy - u_reach * along : v_ends.zw + u_reach * along;
    corner += a_choiceDirNone.y * u_reach * across;
    gl_Position = vec4((corner - u_part.xy) / u_part.zw * 2.0 - 1.0, (isStart ? v_depths.x : v_depths.y) * 2.0 - 1.0, 1.0);
}
