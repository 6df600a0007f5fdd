// How much of the sun's light reaches a fragment, looked up in a map of depths seen from the sun.
//
// Where the fragment lies follows from its pixel and its distance alone, and so does the plane that
// it lies in. Each texel is compared with the depth of that plane at the middle of the texel, which
// is what a texel of the surface itself holds: no surface darkens itself, however steep it is, and
// nothing has to be moved from its place for it.

@SUN_OPTIONS@
#define SUN_TILES 8
// Of loops that end before. A compiler that unrolls a loop makes every fragment go through all of it;
// this is more than any unrolls.
#define SUN_ROUNDS 64
#define SUN_SEARCH_TAPS 16
#define SUN_SOFT_TAPS 32

uniform sampler2D u_sunDepth;            // lengths along the light, 0 to 1
uniform sampler2D u_sunGlass;            // length of the first glass in red, green and blue, what all lets through in alpha
uniform vec2 u_sunTexel;                 // of the map, its width and height counted 1
uniform int u_sunTiles;                  // in use
uniform vec3 u_sunToMap[4 * SUN_TILES];  // what a pixel across, a pixel up, the distance and the rest add, see sunSpotIn
uniform vec4 u_sunRects[SUN_TILES];      // texels that may be read: the middles of the first and the last
uniform vec2 u_sunSteps[SUN_TILES];      // edges of a texel as lengths along the light
uniform vec2 u_sunLook;                  // darkness of flat tones; half the sun's width over its distance

// A fragment as the sun sees it.
struct SunSpot
{
    vec3 place;    // texels across and up, length along the light
    vec3 across;   // to the pixel beside it
    vec3 up;       // to the pixel above it
    vec2 slope;    // of the length, a texel
    vec4 rect;
    vec2 step;     // edges of a texel as lengths along the light
    float room;    // what is no farther in front of the fragment is the surface itself
};

// The share of the light at a texel that lies beside the spot.
float sunTap(SunSpot spot, vec2 beside)
{
    vec2 texel = clamp(floor(spot.place.xy + beside) + 0.5, spot.rect.xy, spot.rect.zw);
    float depth = spot.place.z + dot(spot.slope, texel - spot.place.xy) - spot.room;
    float share = texture2D(u_sunDepth, texel * u_sunTexel).r < depth ? 0.0 : 1.0;
#ifdef SUN_GLASS
    vec4 glass = texture2D(u_sunGlass, texel * u_sunTexel);
    float first = dot(glass.rgb, vec3(65536.0, 256.0, 1.0) * (255.0 / 16777215.0));
    share *= first < depth ? glass.a : 1.0;
#endif
    return share;
}

// One of the places of a filter within a pixel, or a texel where that is larger.
float sunTapWithin(SunSpot spot, vec2 at)
{
    vec2 spread = clamp(1.0 - max(abs(spot.across.xy), abs(spot.up.xy)), 0.0, 1.0);
    return sunTap(spot, at.x * spot.across.xy + at.y * spot.up.xy + at * spread);
}

// Four places of a pixel, and on rims four more, no two of which lie in a row or column: rims are as
// smooth as those of surfaces.
float sunHard(SunSpot spot, bool wanted)
{
    vec2 at = vec2(0.4375, 0.1875);
    float lit = 0.0;
    float count = 0.0;
    for (int i = 0; i < SUN_ROUNDS; ++i)
    {
        if (!wanted || i >= 8 || (i == 4 && (lit == 0.0 || lit == 4.0)))
        {
            break;
        }
        lit += sunTapWithin(spot, at);
        count += 1.0;
        at = i == 3 ? vec2(0.3125, -0.0625) : vec2(-at.y, at.x);
    }
    return lit / max(count, 1.0);
}

#ifdef SUN_SOFT
// The next of the directions of a spiral that fills a disc evenly.
vec2 sunTurned(vec2 direction)
{
    return vec2(-0.7373688 * direction.x - 0.6754903 * direction.y, 0.6754903 * direction.x - 0.7373688 * direction.y);
}

// How far what hides the sun lies before the spot on average, along the light, and how much of the
// sky about the sun it hides.
vec2 sunHiding(SunSpot spot, bool wanted)
{
    vec2 radius = max(u_sunLook.y * spot.place.z / spot.step, vec2(1.0));
    vec2 direction = vec2(1.0, 0.0);
    float sum = 0.0;
    float count = 0.0;
    for (int i = 0; i < SUN_ROUNDS; ++i)
    {
        if (!wanted || i >= SUN_SEARCH_TAPS)
        {
            break;
        }
        vec2 beside = direction * radius * sqrt((float(i) + 0.5) / float(SUN_SEARCH_TAPS));
        vec2 texel = clamp(floor(spot.place.xy + beside) + 0.5, spot.rect.xy, spot.rect.zw);
        float depth = spot.place.z + dot(spot.slope, texel - spot.place.xy);
        float found = texture2D(u_sunDepth, texel * u_sunTexel).r;
        float hides = found < depth - spot.room ? 1.0 : 0.0;
        sum += hides * (depth - found);
        count += hides;
        direction = sunTurned(direction);
    }
    return vec2(sum / max(count, 1.0), count / float(SUN_SEARCH_TAPS));
}

float sunSoft(SunSpot spot, bool wanted)
{
    // No narrower than a pixel, nor than a texel.
    vec2 least = 0.5 * max(max(abs(spot.across.xy), abs(spot.up.xy)), vec2(1.0));
    vec2 hiding = sunHiding(spot, wanted);
    vec2 radius = max(u_sunLook.y * hiding.x / spot.step, least);
    vec2 direction = vec2(1.0, 0.0);
    float sum = 0.0;
    for (int i = 0; i < SUN_ROUNDS; ++i)
    {
        if (!wanted || hiding.y == 0.0 || hiding.y == 1.0 || i >= SUN_SOFT_TAPS)
        {
            break;
        }
        sum += sunTap(spot, direction * radius * sqrt((float(i) + 0.5) / float(SUN_SOFT_TAPS)));
        direction = sunTurned(direction);
    }
    return hiding.y == 0.0 ? 1.0 : sum / float(SUN_SOFT_TAPS);
}

#endif

// The fragment in a part of the map. Of the view it has its pixel and its distance, which the
// numbers of the part carry there: with perspective the distance multiplies the pixel.
void sunSpotIn(int tile, inout SunSpot spot)
{
    vec3 pixelAcross = u_sunToMap[4 * tile];
    vec3 pixelUp = u_sunToMap[4 * tile + 1];
    vec3 ahead = pixelAcross * gl_FragCoord.x + pixelUp * gl_FragCoord.y + u_sunToMap[4 * tile + 2];
#ifdef SUN_PERSPECTIVE
    float away = 1.0 / gl_FragCoord.w;
    spot.place = u_sunToMap[4 * tile + 3] + ahead * away;
    spot.across = (pixelAcross - ahead * (dFdx(gl_FragCoord.w) * away)) * away;
    spot.up = (pixelUp - ahead * (dFdy(gl_FragCoord.w) * away)) * away;
#else
    vec3 deeper = u_sunToMap[4 * tile + 3];
    spot.place = ahead + deeper * gl_FragCoord.z;
    spot.across = pixelAcross + deeper * dFdx(gl_FragCoord.z);
    spot.up = pixelUp + deeper * dFdy(gl_FragCoord.z);
#endif
    spot.rect = u_sunRects[tile];
    spot.step = u_sunSteps[tile];
}

bool isWithin(SunSpot spot)
{
    vec2 inside = step(spot.rect.xy + 2.0, spot.place.xy) * step(spot.place.xy, spot.rect.zw - 2.0);
    return inside.x * inside.y > 0.5;
}

float OVSL_LightShare(bool wanted)
{
    SunSpot spot;
    sunSpotIn(0, spot);
    bool found = isWithin(spot);
#ifdef SUN_PARTS
    for (int i = 1; i < SUN_TILES; ++i)
    {
        if (found || i >= u_sunTiles)
        {
            break;
        }
        sunSpotIn(i, spot);
        found = isWithin(spot);
    }
#endif

    // The plane turns the same side to the sun as to the eye if it looks the same way round to both.
    float area = spot.across.x * spot.up.y - spot.across.y * spot.up.x;
    spot.slope = vec2(spot.across.z * spot.up.y - spot.up.z * spot.across.y,
                      spot.up.z * spot.across.x - spot.across.z * spot.up.x) / area;
    // A corner that texels see from the other side, a pixel that reaches beyond its surface, and
    // what numbers leave.
    vec2 reach = max(abs(spot.across.xy), abs(spot.up.xy)) * spot.step;
    spot.room = 0.75 * max(spot.step.x, spot.step.y) + 0.5 * max(reach.x, reach.y)
              + 0.02 * (abs(spot.slope.x) + abs(spot.slope.y)) + 1.0e-6;
    bool isOpen = found && wanted && area > 0.0;
#ifdef SUN_SOFT
    float share = sunSoft(spot, isOpen);
#else
    float share = sunHard(spot, isOpen);
#endif
    return isOpen ? share : area > 0.0 ? 1.0 : 0.0;
}

float OVSL_ShadowTone()
{
    return 1.0 - u_sunLook.x * (1.0 - OVSL_LightShare(true));
}
