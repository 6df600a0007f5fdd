// How much of the sun's light reaches a fragment, looked up in a map of depths seen from the sun.
//
// Where the fragment lies follows from its pixel and its distance alone, and so does the plane that
// it lies in. Each texel is compared with the depth of that plane at the middle of the texel, which
// is what a texel of the surface itself holds: no surface darkens itself, however steep it is, and
// nothing has to be moved from its place for it.

#define SUN_TILES 8
#define SUN_TAPS 8
#define SUN_SEARCH_TAPS 16
#define SUN_SOFT_TAPS 32

uniform sampler2D u_sunDepth;            // lengths along the light, 0 to 1
uniform sampler2D u_sunGlass;            // length of the first glass in red, green and blue, what all lets through in alpha
uniform vec2 u_sunTexel;                 // of the map, its width and height counted 1
uniform vec4 u_sunPixel;                 // of the picture, its width and height counted 2; 1 with perspective; 0
uniform int u_sunTiles;                  // in use
uniform vec4 u_sunToMap[3 * SUN_TILES];  // rows, from the view to texels across and up and to the length along the light
uniform vec4 u_sunRects[SUN_TILES];      // texels that may be read: the middles of the first and the last
uniform vec2 u_sunSteps[SUN_TILES];      // edges of a texel as lengths along the light
uniform vec4 u_sunLook;                  // darkness of flat tones; half the sun's width over its distance, 0: hard; 1 with glass; -

// A fragment as the sun sees it.
struct SunSpot
{
    vec3 place;    // texels across and up, length along the light
    vec2 slope;    // of the length, a texel
    vec2 across;   // texels to the next pixel
    vec2 up;       // texels to the pixel above
    vec4 rect;
    vec2 step;     // edges of a texel as lengths along the light
    float room;    // what is no farther in front of the fragment is the surface itself
};

vec3 sunPlace(vec4 rowU, vec4 rowV, vec4 rowZ, vec4 p)
{
    return vec3(dot(rowU, p), dot(rowV, p), dot(rowZ, p));
}

// The share of the light at a texel that lies beside the spot.
float sunTap(SunSpot spot, vec2 beside)
{
    vec2 texel = clamp(floor(spot.place.xy + beside) + 0.5, spot.rect.xy, spot.rect.zw);
    float depth = spot.place.z + dot(spot.slope, texel - spot.place.xy) - spot.room;
    float share = texture2D(u_sunDepth, texel * u_sunTexel).r < depth ? 0.0 : 1.0;
    if (u_sunLook.z > 0.5)
    {
        vec4 glass = texture2D(u_sunGlass, texel * u_sunTexel);
        float first = dot(glass.rgb, vec3(65536.0, 256.0, 1.0) * (255.0 / 16777215.0));
        share *= first < depth ? glass.a : 1.0;
    }
    return share;
}

// One of the places of a filter within a pixel, or a texel where that is larger.
float sunTapWithin(SunSpot spot, vec2 at)
{
    vec2 spread = clamp(1.0 - max(abs(spot.across), abs(spot.up)), 0.0, 1.0);
    return sunTap(spot, at.x * spot.across + at.y * spot.up + at * spread);
}

// Eight places of a pixel, no two in a row or column: rims as smooth as those of surfaces.
float sunHard(SunSpot spot)
{
    return (sunTapWithin(spot, vec2(-0.4375, -0.0625)) + sunTapWithin(spot, vec2(-0.3125, 0.3125))
          + sunTapWithin(spot, vec2(-0.1875, -0.3125)) + sunTapWithin(spot, vec2(-0.0625, 0.0625))
          + sunTapWithin(spot, vec2(0.0625, 0.4375)) + sunTapWithin(spot, vec2(0.1875, -0.1875))
          + sunTapWithin(spot, vec2(0.3125, 0.1875)) + sunTapWithin(spot, vec2(0.4375, -0.4375))) / 8.0;
}

// The next of the directions of a spiral that fills a disc evenly.
vec2 sunTurned(vec2 direction)
{
    return vec2(-0.7373688 * direction.x - 0.6754903 * direction.y, 0.6754903 * direction.x - 0.7373688 * direction.y);
}

// How far what hides the sun lies before the spot on average, along the light; 0 where nothing does.
float sunBlockerDistance(SunSpot spot)
{
    vec2 radius = u_sunLook.y * spot.place.z / spot.step;
    vec2 direction = vec2(1.0, 0.0);
    float sum = 0.0;
    float count = 0.0;
    for (int i = 0; i < SUN_SEARCH_TAPS; ++i)
    {
        vec2 beside = direction * radius * sqrt((float(i) + 0.5) / float(SUN_SEARCH_TAPS));
        vec2 texel = clamp(floor(spot.place.xy + beside) + 0.5, spot.rect.xy, spot.rect.zw);
        float depth = spot.place.z + dot(spot.slope, texel - spot.place.xy);
        float found = texture2D(u_sunDepth, texel * u_sunTexel).r;
        float hides = found < depth - spot.room ? 1.0 : 0.0;
        sum += hides * (depth - found);
        count += hides;
        direction = sunTurned(direction);
    }
    return count > 0.0 ? sum / count : 0.0;
}

float sunSoft(SunSpot spot)
{
    vec2 radius = u_sunLook.y * sunBlockerDistance(spot) / spot.step;
    if (max(radius.x, radius.y) < 1.0)
    {
        return sunHard(spot);
    }
    vec2 direction = vec2(1.0, 0.0);
    float sum = 0.0;
    for (int i = 0; i < SUN_SOFT_TAPS; ++i)
    {
        sum += sunTap(spot, direction * radius * sqrt((float(i) + 0.5) / float(SUN_SOFT_TAPS)));
        direction = sunTurned(direction);
    }
    return sum / float(SUN_SOFT_TAPS);
}

float OVSL_LightShare(bool wanted)
{
    // Of the view: the pixel times the distance and the distance, or the pixel and the depth.
    vec3 pixel = vec3(gl_FragCoord.xy * u_sunPixel.xy - 1.0, 1.0);
    vec3 p;
    vec3 pAcross;
    vec3 pUp;
    if (u_sunPixel.z > 0.5)
    {
        float away = 1.0 / gl_FragCoord.w;
        p = pixel * away;
        pAcross = (vec3(u_sunPixel.x, 0.0, 0.0) - p * dFdx(gl_FragCoord.w)) * away;
        pUp = (vec3(0.0, u_sunPixel.y, 0.0) - p * dFdy(gl_FragCoord.w)) * away;
    }
    else
    {
        p = vec3(pixel.xy, 2.0 * gl_FragCoord.z - 1.0);
        pAcross = vec3(u_sunPixel.x, 0.0, 2.0 * dFdx(gl_FragCoord.z));
        pUp = vec3(0.0, u_sunPixel.y, 2.0 * dFdy(gl_FragCoord.z));
    }
    if (!wanted)
    {
        return 1.0;
    }

    SunSpot spot;
    bool found = false;
    vec3 across = vec3(0.0);
    vec3 up = vec3(0.0);
    for (int i = 0; i < SUN_TILES; ++i)
    {
        if (i >= u_sunTiles || found)
        {
            break;
        }
        spot.rect = u_sunRects[i];
        spot.place = sunPlace(u_sunToMap[3 * i], u_sunToMap[3 * i + 1], u_sunToMap[3 * i + 2], vec4(p, 1.0));
        found = all(greaterThan(spot.place.xy, spot.rect.xy + 2.0)) && all(lessThan(spot.place.xy, spot.rect.zw - 2.0));
        if (found || i == 0)
        {
            across = sunPlace(u_sunToMap[3 * i], u_sunToMap[3 * i + 1], u_sunToMap[3 * i + 2], vec4(pAcross, 0.0));
            up = sunPlace(u_sunToMap[3 * i], u_sunToMap[3 * i + 1], u_sunToMap[3 * i + 2], vec4(pUp, 0.0));
            spot.step = u_sunSteps[i];
        }
    }

    // The plane turns the same side to the sun as to the eye if it looks the same way round to both.
    float area = across.x * up.y - across.y * up.x;
    if (area <= 0.0)
    {
        return 0.0;
    }
    if (!found)
    {
        return 1.0;
    }
    spot.slope = vec2(across.z * up.y - up.z * across.y, up.z * across.x - across.z * up.x) / area;
    spot.across = across.xy;
    spot.up = up.xy;
    // A corner that texels see from the other side, a pixel that reaches beyond its surface, and
    // what numbers leave.
    spot.room = 0.75 * max(spot.step.x, spot.step.y)
              + 0.5 * max(length(across.xy * spot.step), length(up.xy * spot.step))
              + 0.02 * (abs(spot.slope.x) + abs(spot.slope.y)) + 1.0e-6;
    return u_sunLook.y > 0.0 ? sunSoft(spot) : sunHard(spot);
}

float OVSL_ShadowTone()
{
    return 1.0 - u_sunLook.x * (1.0 - OVSL_LightShare(true));
}
