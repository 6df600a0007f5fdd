// How much of the sun's light reaches a fragment, looked up in a map of depths seen from the sun.
//
// Where the fragment lies and the plane that it lies in follow from its place in the view alone, see
// SunShare.vert. Each texel is compared with the depth of that plane at the middle of the texel, which
// is what a texel of the surface itself holds: no surface darkens itself, however steep it is, and
// nothing has to be moved from its place for it.
//
// Most fragments lie well within the light or the shadow. The four pixels of a quad, which
// derivatives are taken over, look up different places, and only where they don't agree the share is
// worked out. Looking up is what costs most, half of it waiting for memory: what isn't wanted is looked up
// where others have just been. Then come uniforms: those that don't depend on the part come with the
// place, see SunShare.vert.

@SUN_OPTIONS@
// Of loops that end before. A compiler that unrolls a loop makes every fragment go through all of it;
// this is more than any unrolls. One that masks goes through the first round in any case, and through
// all of the round that ends the loop: conditions stand at the end.
#define SUN_ROUNDS 64
#define SUN_HARD_TAPS 8.0
#define SUN_SOFT_TAPS 32.0
// The sine of the angle, nearly, down to which light runs along a plane rather than onto it.
#define SUN_FLATTEST 0.004

uniform sampler2D u_sunDepth;            // lengths along the light, 0 to 1
uniform sampler2D u_sunGlass;            // length of the first glass in red, green and blue, what all lets through in alpha
#ifdef SUN_PARTS
// A column for each part, the last one's up to the end. Below: factors and offsets, across and up, to texels of the
// part. Above: texels that may be read, the middles of the first and the last.
uniform sampler2D u_sunTable;
#endif

// See SunShare.vert; where there are parts, places are counted from the eye.
varying vec4 v_sunPlace;
varying vec4 v_sunTexel;
#ifdef SUN_PARTS
varying vec2 v_sunSlices;
#endif
varying vec3 v_sunLook;

// A fragment as the sun sees it.
struct SunSpot
{
    vec3 place;    // texels across and up, length along the light
    vec3 across;   // to the pixel beside it
    vec3 up;       // to the pixel above it
    vec2 slope;    // of the length, a texel
#ifdef SUN_PARTS
    vec4 rect;
#endif
    vec2 step;     // edges of a texel as lengths along the light
#ifdef SUN_SOFT
    vec2 widening; // texels by which rims get wider with the length to what casts them
    float reach;   // length to the farthest that may cast onto the fragment
#endif
    float room;    // what is no farther in front of the fragment is the surface itself
};

// The middle of the texel that lies beside the spot.
vec2 sunTexelAt(SunSpot spot, vec2 beside)
{
    vec2 texel = floor(spot.place.xy + beside) + 0.5;
#ifdef SUN_PARTS
    texel = clamp(texel, spot.rect.xy, spot.rect.zw);
#endif
    return texel;
}

// How far the surface lies behind what is nearest to the sun at a texel; 0 or less is the surface.
float sunBehind(SunSpot spot, vec2 texel, float nearest)
{
    return spot.place.z + dot(spot.slope, texel - spot.place.xy) - spot.room - nearest;
}

float sunBehindSolid(SunSpot spot, vec2 texel)
{
    return sunBehind(spot, texel, texture2D(u_sunDepth, texel * v_sunTexel.xy).r);
}

// How far it lies behind the first glass, and what all glass lets through; anything where that isn't wanted.
vec2 sunBehindGlass(SunSpot spot, vec2 texel, bool wanted)
{
#ifdef SUN_GLASS
    vec4 glass = texture2D(u_sunGlass, wanted ? texel * v_sunTexel.xy : vec2(0.0));
    float first = dot(glass.rgb, vec3(65536.0, 256.0, 1.0) * (255.0 / 16777215.0));
    return vec2(sunBehind(spot, texel, first), glass.a);
#else
    return vec2(0.0, 1.0);
#endif
}

// Texels to a place within the pixel, from its middle.
vec2 sunWithin(SunSpot spot, vec2 at)
{
    return at.x * spot.across.xy + at.y * spot.up.xy;
}

// Whether the rim of glass falls among the pixels of a quad. It is as narrow as it may be: to look for
// it farther off would cost as much as the solid does.
// open: what glass lets through.
bool isGlassRim(float open)
{
#ifdef SUN_GLASS
    return abs(dFdx(open)) + abs(dFdy(open)) > 0.01;
#else
    return false;
#endif
}

// Which pixel of its quad this is: -1 or 1 across and up.
vec2 sunSide()
{
    // A quarter, of either sign. Where a window of odd height counts its rows from the other end, quads begin with odd
    // ones.
    vec2 odd = fract(0.5 * gl_FragCoord.xy) - 0.5;
    return 8.0 * odd * vec2(dFdx(odd.x), dFdy(odd.y));
}

#ifdef SUN_SOFT
// The next of the directions of a spiral that fills a disc evenly.
vec2 sunTurned(vec2 direction)
{
    return vec2(-0.7373688 * direction.x - 0.6754903 * direction.y, 0.6754903 * direction.x - 0.7373688 * direction.y);
}

// The sum over the pixels of a quad.
// side: which of them this is.
float sunOfQuad(float value, vec2 side)
{
    // Of the pixel beside it and then of both above or below.
    value += value - side.x * dFdx(value);
    return value + value - side.y * dFdy(value);
}

// How far from the middle of a disc of radius 1 a place of the spiral lies that has such a share of the disc within:
// the square root, to a thirtieth. Exact ones take far longer, in the first round for nothing.
vec2 sunRoots(vec2 within)
{
    return 0.1354 + within * (1.5597 - 0.7298 * within);
}

float sunShare(SunSpot spot, bool wanted)
{
    // No narrower than a pixel, nor than a texel.
    vec2 least = 0.5 * max(max(abs(spot.across.xy), abs(spot.up.xy)), vec2(1.0));
    // Places lie on texels: a disc that is narrower than this may find none of a rim that runs between them.
    vec2 radius = max(spot.widening * spot.reach, 3.0 * least);
    // Each pixel of a quad looks up two of eight places of a disc, in the first round of the loop: how many
    // are hidden by what is solid, and how far they lie behind it. Where they agree that is all. Four lie on
    // the rim and four between these on half the radius. The disc of a wide sun reaches over more that is
    // small, and has twelve.
    vec2 side = sunSide();
    vec2 turned = vec2(-side.y, side.x);
#ifdef SUN_WIDE
    vec2 first = radius * (0.33 * side + 0.6 * turned);
    vec2 second = radius * (0.43 * side - 0.25 * turned);
    float third = sunBehindSolid(spot, sunTexelAt(spot, radius * (0.23 * side + 0.08 * turned)));
    const float places = 12.0;
#else
    vec2 first = radius * (0.6 * side + 0.33 * turned);
    vec2 second = radius * (0.34 * side - 0.1 * turned);
    const float third = -1.0;
    const float places = 8.0;
#endif
    vec2 behind = vec2(0.0);
#ifdef SUN_GLASS
    // Glass takes more than the solid: one place a round, for the first to look it up once.
    behind.y = sunBehindSolid(spot, sunTexelAt(spot, second));
    float share = 1.0;
#else
    float share = 0.5;
#endif
    bool isOtherOpen = behind.y <= 0.0;
    // Else places of a spiral, as many as it takes for steps not to be seen. The first round turns what it does not
    // use, on to 1, 0.
#ifdef SUN_GLASS
    vec2 direction = vec2(-0.7373688, -0.6754903);
#else
    vec2 direction = vec2(0.0874256, 0.9961716);
#endif
    vec2 rim = vec2(0.0); // radius of the disc
    float taps = 0.0;
    float done = 0.0;
    float sum = 0.0;
    for (int i = 0; i < SUN_ROUNDS; ++i)
    {
        vec2 reach = sunRoots((done + vec2(0.5, 1.5)) * share);
        first = i == 0 ? first : reach.x * rim * direction;
        direction = sunTurned(direction);
#ifndef SUN_GLASS
        second = i == 0 ? second : reach.y * rim * direction;
        direction = sunTurned(direction);
#endif
        vec2 texel = sunTexelAt(spot, first);
        behind.x = sunBehindSolid(spot, texel);
#ifndef SUN_GLASS
        behind.y = sunBehindSolid(spot, sunTexelAt(spot, second));
#endif
        // In the first round not where the other place is hidden: either all are, or more is asked for. To ask
        // for this one too would be to wait for it.
        bool seesGlass = i > 0 || isOtherOpen;
        vec2 glass = sunBehindGlass(spot, i == 0 ? floor(spot.place.xy) + 0.5 : texel, seesGlass);
        float open = glass.x > 0.0 ? glass.y : 1.0;
        float seen = behind.x > 0.0 ? 0.0 : open;
#ifndef SUN_GLASS
        seen += behind.y > 0.0 ? 0.0 : 1.0;
#endif
        sum += share * seen;
        if (i == 0)
        {
            // In one number, of the quad: how many are hidden, times 16, and how far they lie behind.
            vec3 lengths = vec3(behind, third);
            float found = sunOfQuad(16.0 * dot(step(0.0, lengths), vec3(1.0))
                                    + dot(clamp(lengths, 0.0, 1.0), vec3(1.0)), side);
            bool isRim = isGlassRim(open);
            bool isMixed = found < 16.0 * places - 8.0 && (found > 8.0 || isRim);
            if (!wanted || !isMixed)
            {
                break;
            }
            // How wide the rim is against what is least, by the mean length to what casts it: one division for the
            // mean and both axes.
            float hidden = floor(found / 16.0);
            float farther = (found - 16.0 * hidden) / (max(hidden, 1.0) * least.x * least.y);
            vec2 width = max(spot.widening * least.yx * farther, 1.0);
            rim = width * least;
            taps = 2.0 * floor(min(1.5 + max(width.x, width.y), 0.5 * SUN_SOFT_TAPS + 0.5));
            share = 1.0 / taps;
            sum = 0.0;
        }
        else
        {
#ifdef SUN_GLASS
            done += 1.0;
#else
            done += 2.0;
#endif
            if (done >= taps)
            {
                break;
            }
        }
    }
    return sum;
}
#else
float sunShare(SunSpot spot, bool wanted)
{
    // The outermost corner of the quad: of four that agree none is on a rim.
    vec2 side = 0.5 * sunSide();
    bool isCornerHidden = sunBehindSolid(spot, sunTexelAt(spot, sunWithin(spot, side))) > 0.0;
    float corner = float(isCornerHidden);
    bool isMixed = abs(dFdx(corner)) + abs(dFdy(corner)) > 0.5;
    // The middle of a side of the quad, and on rims eight places of a pixel, or of a texel where that
    // is larger, no two of which lie in a row or column: rims are as smooth as those of surfaces.
    vec2 spread = clamp(1.0 - max(abs(spot.across.xy), abs(spot.up.xy)), 0.0, 1.0);
    vec2 at = vec2(-side.y, side.x);
    float lit = 0.0;
    float count = 0.0;
    for (int i = 0; i < SUN_ROUNDS; ++i)
    {
        vec2 texel = sunTexelAt(spot, sunWithin(spot, at) + at * spread);
        bool isHidden = sunBehindSolid(spot, texel) > 0.0;
        vec2 glass = sunBehindGlass(spot, texel, !isHidden);
        float open = isHidden ? 0.0 : glass.x > 0.0 ? glass.y : 1.0;
        lit += open;
        count += 1.0;
        if (i == 0)
        {
            // Glass takes as much as the solid, and is looked up at these places alone.
            bool isRim = isGlassRim(open);
            if (!wanted || (!isMixed && !isRim && isHidden == isCornerHidden))
            {
                break;
            }
            lit = 0.0;
            count = 0.0;
            at = vec2(-0.1875, 0.4375);
        }
        if (count >= SUN_HARD_TAPS)
        {
            break;
        }
        at = i == 4 ? vec2(0.3125, -0.0625) : vec2(-at.y, at.x);
    }
    return lit / count;
}
#endif

// The fragment in its part of the map.
SunSpot sunSpot()
{
    SunSpot spot;
    spot.place = v_sunPlace.xyz;
    spot.across = dFdx(v_sunPlace.xyz);
    spot.up = dFdy(v_sunPlace.xyz);
    spot.step = v_sunTexel.zw;
#ifdef SUN_SOFT
    spot.widening = v_sunLook.xy;
    spot.reach = v_sunPlace.w;
#endif
#ifdef SUN_PARTS
    // By the distance alone: asking one part after the other takes twice what the rest does.
    float column = v_sunSlices.y - v_sunSlices.x * log2(gl_FragCoord.w);
    vec4 part = texture2D(u_sunTable, vec2(column, 0.25));
    spot.place.xy = spot.place.xy * part.xy + part.zw;
    spot.across.xy *= part.xy;
    spot.up.xy *= part.xy;
    spot.step /= part.xy;
#ifdef SUN_SOFT
    spot.widening *= part.xy;
#endif
    spot.rect = texture2D(u_sunTable, vec2(column, 0.75));
#endif
    return spot;
}

#ifdef SUN_PARTS
bool isWithin(SunSpot spot)
{
    vec2 inside = step(spot.rect.xy + 2.0, spot.place.xy) * step(spot.place.xy, spot.rect.zw - 2.0);
    return inside.x * inside.y > 0.5;
}
#endif

float OVSL_LightShare(bool wanted)
{
    SunSpot spot = sunSpot();
    // About the only part the map is empty, so that what lies beyond it is lit.
    bool isOpen = wanted;
#ifdef SUN_PARTS
    isOpen = isOpen && isWithin(spot);
#endif
    // The plane turns the same side to the sun as to the eye if it looks the same way round to both. Of one that light
    // runs along numbers don't tell, from pixel to pixel: it counts as turned away.
    float area = spot.across.x * spot.up.y - spot.across.y * spot.up.x;
    vec2 along = vec2(spot.across.z * spot.up.y - spot.up.z * spot.across.y,
                      spot.up.z * spot.across.x - spot.across.z * spot.up.x);
    bool isTowardSun = all(lessThan(SUN_FLATTEST * abs(along), area * spot.step));
    spot.slope = along * (1.0 / area);
    // A corner that texels see from the other side, a pixel that reaches beyond its surface, and
    // what numbers leave.
    vec2 reach = max(abs(spot.across.xy), abs(spot.up.xy)) * spot.step;
    spot.room = 0.75 * max(spot.step.x, spot.step.y) + 0.5 * max(reach.x, reach.y)
              + 0.02 * (abs(spot.slope.x) + abs(spot.slope.y)) + 1.0e-6;
    bool isWanted = isOpen && isTowardSun;
    spot.place.xy = isWanted ? spot.place.xy : vec2(0.0);
    float share = sunShare(spot, isWanted);
    return isTowardSun ? isOpen ? share : 1.0 : 0.0;
}

float OVSL_ShadowTone()
{
    return 1.0 - v_sunLook.z * (1.0 - OVSL_LightShare(true));
}
