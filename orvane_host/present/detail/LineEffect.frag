PRECISION_DEFAULT_HIGHP(float)

@OPTIONS@

#define MAX_CLIP_PLANES 6

uniform vec2 u_origin;       // of what is drawn in the whole picture, pixels
uniform float u_halfWidth;   // pixels
uniform bool u_smooth;       // rims, in place of whole pixels
uniform vec2 u_dash;         // pixels from one dash to the next, 0 for none, and of a dash
uniform float u_hiddenHalf;  // half the width of what is hidden, pixels; 0: it is not drawn
uniform vec2 u_hiddenDash;   // as u_dash
uniform int u_kind;          // 0: before all surfaces, 1: seen through glass alone, 2: hidden ones in place of seen ones,
                             // 3: the first two, without fog
uniform bool u_core;         // only where a line covers most of a pixel
#ifdef DEPTH
uniform sampler2D u_depth;   // of opaque surfaces
uniform sampler2D u_slopes;  // as SlopeEffect paints them
uniform vec2 u_size;         // of the depth pictures, pixels
#endif
#ifdef GLASS
uniform sampler2D u_glass;   // the same of what is see-through
uniform sampler2D u_glassSlopes;
#endif
uniform int u_numClipPlanes;
uniform vec3 u_clipPlaneNormals[MAX_CLIP_PLANES];   // world space, to the side cut away
uniform vec3 u_clipPlanePositions[MAX_CLIP_PLANES]; // world space
#ifdef FOG
uniform vec2 u_fogRange;     // where it begins and where it hides all
#endif

varying vec4 v_ends;
varying vec4 v_depths;
varying vec3 v_worldStart;
varying vec3 v_worldEnd;
varying vec2 v_run;

// How much of a stretch about a place, a pixel long, lies between two others.
float overlap(float place, float low, float high)
{
    if (!u_smooth)
    {
        return place >= low && place < high ? 1.0 : 0.0;
    }
    return max(min(place + 0.5, high) - max(place - 0.5, low), 0.0);
}

float dashAt(float place, vec2 dash)
{
    if (dash.x <= 0.0)
    {
        return 1.0;
    }
    float into = mod(place, dash.x);
    // The dash before and the one after reach into this one's stretch too.
    return min(overlap(into, 0.0, dash.y) + overlap(into - dash.x, 0.0, dash.y), 1.0);
}

#ifdef DEPTH
float slopeOf(vec2 channels)
{
    vec2 bytes = floor(channels * 255.0 + 0.5);
    float sign = bytes.x >= 128.0 ? -1.0 : 1.0;
    float power = mod(bytes.x, 128.0) * 256.0 + bytes.y;
    return power > 0.0 ? sign * exp2(power / 1024.0 - 32.0) : 0.0;
}

// Where a place lies by the surface of a pixel, which goes on level to beside the pixel: 1 before
// it, 0 on it, -0.5 behind it by less than it falls away in 0.7 pixels, -0.75 in 3, -1 farther behind. A
// share of that is on it, for what curves, and some rounding.
float sideOf(sampler2D depths, sampler2D slopes, vec2 texel, vec2 place, float depth)
{
    vec2 middle = texel + 0.5;
    float here = texture2D(depths, middle / u_size).x;
    vec4 slopeBytes = texture2D(slopes, middle / u_size);
    vec2 slope = vec2(slopeOf(slopeBytes.rg), slopeOf(slopeBytes.ba));
    float fall = abs(slope.x) + abs(slope.y);
    float room = 0.05 * fall + 8.0 / 16777216.0;
    float behind = depth - here - dot(slope, place - middle);
    return here >= 1.0 || behind < -room ? 1.0 : behind <= room ? 0.0 : behind <= room + 0.7 * fall ? -0.5
         : behind <= room + 3.0 * fall ? -0.75 : -1.0;
}

// By the nearest pixel. What lies on the surface of one of the four about it is seen too, since the
// other face of an edge may be nearer to the eye within a pixel. Far behind the nearest one those on
// whose surface it lies have to be close enough: there a line goes behind the rim of another thing, and
// would go on for more than a pixel. And so is seen what lies just behind a rim, as the edges of round
// ones do. But not where the other three are nearer: then it would be seen through a crack.
bool isSeen(sampler2D depths, sampler2D slopes, vec2 place, float depth)
{
    vec2 first = clamp(floor(place - 0.5), vec2(0.0), u_size - 2.0);
    vec2 nearest = step(0.5, place - first - 0.5);
    vec4 sides = vec4(sideOf(depths, slopes, first + nearest, place, depth),
                      sideOf(depths, slopes, first + vec2(1.0 - nearest.x, nearest.y), place, depth),
                      sideOf(depths, slopes, first + vec2(nearest.x, 1.0 - nearest.y), place, depth),
                      sideOf(depths, slopes, first + 1.0 - nearest, place, depth));
    // Beyond the rims of the picture these count as at it.
    vec2 farther = min(abs(place - first - 0.5 - nearest), 0.5);
    vec4 shares = vec4((1.0 - farther.x) * (1.0 - farther.y), farther.x * (1.0 - farther.y),
                       (1.0 - farther.x) * farther.y, farther.x * farther.y);
    float onSurface = dot(shares, vec4(equal(sides, vec4(0.0))));
    bool atRim = any(equal(sides, vec4(-0.5))) && any(equal(sides, vec4(1.0)));
    bool inCrack = dot(vec4(lessThan(sides, vec4(-0.6))), vec4(1.0)) > 2.5;
    return !inCrack && (sides.x >= 0.0 || onSurface > (sides.x > -0.9 ? 0.0 : 0.4) || atRim);
}
#endif

void discardClipped(vec3 world)
{
#ifndef NO_CLIP_PLANES
    for (int i = 0; i < MAX_CLIP_PLANES; ++i)
    {
        if (i >= u_numClipPlanes)
        {
            break;
        }
        if (dot(u_clipPlaneNormals[i], world - u_clipPlanePositions[i]) > 0.0)
        {
            discard;
        }
    }
#endif
}

void main()
{
    vec4 ends = floor(v_ends * 256.0 + 0.5) / 256.0;
    vec2 start = ends.xy;
    vec2 end = ends.zw;
    vec2 pixel = gl_FragCoord.xy + u_origin;
    float size = distance(start, end);
    vec2 along = size > 0.0 ? (end - start) / size : vec2(1.0, 0.0);
    float place = dot(pixel - start, along);
    float away = dot(pixel - start, vec2(along.y, -along.x));

    // Round where a line goes on, else straight.
    bool startsJoined = mod(v_run.y + 0.5, 2.0) >= 1.0;
    bool endsJoined = v_run.y >= 1.5;
    away = startsJoined && place < 0.0 ? distance(pixel, start) : away;
    away = endsJoined && place > size ? distance(pixel, end) : away;
    float within = overlap(place, startsJoined ? -1e4 : 0.0, endsJoined ? 1e4 : size);

    // Everything else is that of the middle of the line beside the pixel.
    float middle = clamp(place, 0.0, size);
    float share = size > 0.0 ? middle / size : 0.0;
    float depth = mix(v_depths.x, v_depths.y, share);
    float nearness = mix(v_depths.z, v_depths.w, share);
    discardClipped(mix(v_worldStart, v_worldEnd, share * v_depths.w / nearness));

    float across = overlap(away, -u_halfWidth, u_halfWidth) * within;
    float acrossHidden = u_hiddenHalf > 0.0 ? overlap(away, -u_hiddenHalf, u_hiddenHalf) * within : 0.0;
    bool seen = true;
    bool seenThroughGlass = true;
#ifdef DEPTH
    // By two of three places along the line: neither gaps nor dots of a pixel come of how the rims of
    // surfaces lie to the middles of pixels. A third is asked only where two differ.
    vec2 votes = vec2(0.0);
    for (int i = 0; i < 3; ++i)
    {
        if (across + acrossHidden <= 0.0 || (i == 2 && mod(votes, 2.0) == vec2(0.0)))
        {
            break;
        }
        float asked = clamp(place + (i == 0 ? 0.0 : i == 1 ? -1.25 : 1.25), 0.0, size);
        vec2 onPicture = start + along * asked - u_origin;
        float depthThere = size > 0.0 ? mix(v_depths.x, v_depths.y, asked / size) : depth;
        bool first = isSeen(u_depth, u_slopes, onPicture, depthThere);
        bool second = first;
#ifdef GLASS
        second = first && isSeen(u_glass, u_glassSlopes, onPicture, depthThere);
#endif
        votes += vec2(first, second);
    }
    seenThroughGlass = votes.x > 1.5;
    seen = votes.y > 1.5;
#endif
    float run = v_run.x + middle;
    bool throughGlass = seenThroughGlass && !seen;
    bool hidden = !seenThroughGlass && (u_kind == 0 || u_kind == 3);
    seen = u_kind == 1 ? throughGlass : u_kind == 2 ? !seen : seen;
    float dashed = across * dashAt(run, u_dash);
    float covered = seen ? dashed : 0.0;
    float coveredHidden = hidden ? acrossHidden * dashAt(run, u_hiddenDash) : 0.0;
    float coveredThrough = u_kind == 3 && throughGlass ? dashed : 0.0;
    if (u_core ? covered < 0.5 : covered + coveredHidden + coveredThrough <= 0.0)
    {
        discard;
    }
    float clear = 1.0;
#ifdef FOG
    clear = clamp((u_fogRange.y - depth / nearness) / (u_fogRange.y - u_fogRange.x), 0.0, 1.0);
#endif
    if (u_kind == 3)
    {
        gl_FragColor = vec4(covered, coveredThrough, coveredHidden, 1.0);
        return;
    }
    gl_FragColor = vec4(covered, covered * clear, coveredHidden, coveredHidden * clear);
}
