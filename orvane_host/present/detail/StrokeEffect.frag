// Shading in strokes of a pen on white paper, as wide on the screen whatever the size of the object and the
// distance of the eye.
//
// Strokes lie in rows in object space, on lattices whose spacings are powers of two. Of each set of rows the
// lattice counts whose strokes are once to twice as far apart as the tone asks for, and strokes halfway between
// these come in by as much as they are too far apart: the tone stays, and where one lattice gives way to
// the next one they show the same.
//
// A light tone takes one set, a dark one three, and shadow one more. Loops go through what is drawn alone and
// end as soon as it is: where conditions only mask what they skip, on the software renderer, it would cost as
// much.

PRECISION_DEFAULT_HIGHP(float)

#define SETS 3
#define ROUNDS 64                  // of loops that end before; more than any compiler unrolls

uniform vec4 u_ambient;
uniform vec4 u_color;              // in the light
uniform vec3 u_lightDir;           // world space, unit, towards the light
uniform float u_width;             // of a stroke, in pixels of what is drawn into
uniform float u_opacity;           // of the material, 0 to 1; below 1 it is a pane
uniform float u_veil;              // how much of what lies behind it the paper covers, 0 to 1
uniform LOWP int u_enableLight;
uniform LOWP int u_enableTexture;
uniform LOWP int u_enableNormals;
uniform sampler2D u_baseTexture;
uniform mat3 u_faceMatrix;         // as u_normalMatrix of the vertices

varying vec3 v_position;           // object space
varying vec3 v_normal;             // object space
varying vec3 v_world_normal;       // not of unit length
varying vec2 v_tc;

// The tone, which is the share of the paper that stays white; see StrokeEffect.
const float shade = 0.74;          // of white that is turned away from the light
const float fullLight = 0.75;      // cosine to the light from which on white stays paper
const float colorShare = 0.28;     // how much of what a colour is darker than white counts
const float glass = 0.92;          // of the clearest pane
const float coarser = 2.0;         // levels of textures: what is finer than strokes would only fray them

// Strokes; lengths count widths of them.
const float setCoverage = 0.15;    // of a set, where the next one begins
const float mostCoverage = 0.5;    // they get broader beyond
const float leastCoverage = 0.06;  // they get paler below
const float segment = 96.0;        // from gap to gap along a stroke, where the pen was lifted, to twice as long
const float gap = 5.0;
const float palest = 0.55;         // ink of the palest stroke
const float inked = 0.5 * (1.0 + palest) * (1.0 - gap / segment); // what pale strokes and gaps leave
const float bend = 0.05;           // how far strokes go to and fro, of the distance between them
const float aside = 0.16;          // how far at most a stroke lies from its place in the row, of the same
// Strokes of a set lie across one direction of the object, unit, wherever they are: on what is round they follow it
// without a seam. In planes of two axes those of different sets cross at 36 degrees or more, and those of a shadow
// at 26 or more; no direction is close to one that faces of buildings often look in.
const vec3 firstSide = vec3(0.5002, -0.6603, 0.5602);
const vec3 secondSide = vec3(0.9388, -0.2401, -0.2469);
const vec3 thirdSide = vec3(0.3668, 0.2133, -0.9055);
const vec3 shadowSide = vec3(0.2752, 0.9312, -0.2392);

#ifdef LIGHT_SHARE
@LIGHT_SHARE@
#endif

struct Surface
{
    vec3 across;    // of object space, a pixel to the right
    vec3 up;        // a pixel up
    vec3 normal;    // object space
    vec3 shading;   // normal in world space
    vec4 texel;     // white, opaque without a texture
};

Surface surfaceHere()
{
    Surface surface;
    surface.across = dFdx(v_position);
    surface.up = dFdy(v_position);
    vec3 face = cross(surface.across, surface.up);
    surface.normal = u_enableNormals == 1 ? v_normal : face;
    surface.shading = u_enableNormals == 1 ? v_world_normal : u_faceMatrix * face;
    vec4 texel = texture2D(u_baseTexture, v_tc, coarser);
    surface.texel = u_enableTexture == 1 ? texel : vec4(1.0);
    return surface;
}

// What light and shadow leave of white, 1 each where there is all the light.
struct Light
{
    float facing;
    float shadow;
};

Light lightOn(Surface surface)
{
#ifdef LIGHT_SHARE
    float direct = OVSL_ShadowTone();
#else
    float direct = 1.0;
#endif
    float facing = dot(surface.shading, u_lightDir) / max(length(surface.shading), 1.0e-30);
    // Of a face alone it is not known which side is its front.
    facing = u_enableNormals == 1 ? max(facing, 0.0) : abs(facing);
    float arrives = u_enableLight == 1 ? min(facing / fullLight, 1.0) : 1.0;
    Light light;
    light.facing = mix(shade, 1.0, arrives);
    // What faces away from the light lies in no other's shadow.
    light.shadow = mix(shade, direct, arrives) / light.facing;
    return light;
}

// The share of the paper that is to stay white outside of shadows.
float toneOf(Surface surface, Light light)
{
    vec3 color = clamp(u_enableLight == 1 ? u_ambient.rgb + u_color.rgb : u_color.rgb, 0.0, 1.0) * surface.texel.rgb;
    float tint = 1.0 - colorShare * (1.0 - dot(color, vec3(0.299, 0.587, 0.114)));
    return u_opacity < 1.0 ? mix(glass, light.facing, u_opacity) : light.facing * tint;
}

// Where rows of strokes lie: across the strokes and along them, in units.
struct Rows
{
    vec2 place;
    vec2 right;  // a pixel to the right
    vec2 up;     // a pixel up
};

// @param across, along: directions of object space, unit, at right angles
Rows rowsOf(Surface surface, vec3 across, vec3 along)
{
    Rows rows;
    rows.place = vec2(dot(v_position, across), dot(v_position, along));
    rows.right = vec2(dot(surface.across, across), dot(surface.across, along));
    rows.up = vec2(dot(surface.up, across), dot(surface.up, along));
    return rows;
}

vec2 hash(vec2 x)
{
    x = fract(x * 0.1031);
    x *= x + 33.33;
    return fract(x * (x + x));
}

// Numbers of strokes by their places, the same in each lattice that has them and of any magnitude.
vec2 numbersOf(vec2 places)
{
    vec2 sizes = max(abs(places), 1.0e-30);
    return places * exp2(-floor(log2(sizes))) * 4093.0;
}

// As sin(2 pi x), nearly.
vec2 waveAt(vec2 x)
{
    vec2 part = 2.0 * fract(x) - 1.0;
    return 4.0 * part * (1.0 - abs(part));
}

// @param along in segments
vec2 bendAt(vec2 along)
{
    // Two whose bends never meet twice alike.
    return waveAt(along) + waveAt(1.618 * along);
}

// What of the ink of a stroke is there at a place along it: less in gaps, where the pen was lifted.
// @param pixels of a segment
vec2 between(vec2 along, float pixels)
{
    vec2 part = fract(along);
    vec2 away = min(part, 1.0 - part) * pixels;
    return clamp(away / (0.5 * gap * u_width) - 0.5, 0.0, 1.0);
}

// Ink of one set of strokes.
// @param coverage share of the paper that they are to cover, up to a half
float inkOf(Rows rows, float coverage)
{
    vec2 across = vec2(rows.right.x, rows.up.x);
    vec2 along = vec2(rows.right.y, rows.up.y);
    // Units a pixel: across the strokes and along them; and how far places along move aside a unit.
    float pixel = max(length(across), 1.0e-30);
    float pixelAlong = max(abs(across.x * along.y - across.y * along.x) / pixel, 0.1 * length(along) + 1.0e-30);
    float skew = dot(across, along) / (pixel * pixel);
    coverage /= inked;
    // From stroke to stroke and from gap to gap: the smallest powers of two that aren't below the lengths
    // asked for, and by how much they are above, 0 to 1.
    vec2 asked = u_width * vec2(pixel / clamp(coverage, leastCoverage, mostCoverage), pixelAlong * segment);
    vec2 lattice = exp2(ceil(log2(asked)));
    vec2 halfway = lattice / asked - 1.0;

    // The nearest stroke of the lattice and the nearest one halfway between two of them.
    float row = rows.place.x / lattice.x;
    vec2 places = vec2(floor(row + 0.5), floor(row) + 0.5) * lattice.x;
    vec2 beside = rows.place.x - places;
    vec2 numbers = numbersOf(places);
    vec2 phase = 7.0 * hash(numbers);
    vec2 segments = (rows.place.y - skew * beside) / lattice.y;
    vec2 bent = mix(bendAt(segments + phase), bendAt(2.0 * segments + phase), halfway.y) * bend
              + (2.0 * hash(numbers + 0.71) - 1.0) * aside;
    vec2 away = abs(beside - bent * asked.x) / pixel;
    float width = u_width * max(coverage / mostCoverage, 1.0);
    vec2 ink = clamp(0.5 * width + 0.5 - away, 0.0, 1.0);
    float pixels = lattice.y / pixelAlong;
    vec2 there = mix(between(segments + phase, pixels), between(2.0 * segments + phase, 0.5 * pixels), halfway.y);
    ink *= there * mix(vec2(palest), vec2(1.0), hash(numbers + 0.37));
    return min(ink.x + halfway.x * ink.y, 1.0) * min(coverage / leastCoverage, 1.0);
}

vec3 sideOf(int set)
{
    return set == 1 ? firstSide : set == 2 ? secondSide : thirdSide;
}

// Ink of a set across a direction of the object. About the two places that face that way strokes would get lost,
// and lie across another direction.
float inkAcross(vec3 side, Surface surface, float coverage)
{
    float facing = abs(dot(surface.normal, side)) / max(length(surface.normal), 1.0e-30);
    float other = smoothstep(0.9990, 0.9996, facing);
    vec3 aside = normalize(vec3(-side.y, side.x, 0.0));
    vec3 across = cross(side, aside);
    // Where most is black, what is left of the paper lies between the strokes as these lie on it.
    bool isMostBlack = coverage > 0.5;
    float drawn = isMostBlack ? 1.0 - coverage : coverage;
    float ink = 0.0;
    for (int i = 0; i < ROUNDS; ++i)
    {
        bool isOther = other > 0.5;
        float weight = isOther ? other : 1.0 - other;
        ink += weight * inkOf(rowsOf(surface, isOther ? across : side, aside), drawn);
        other = isOther ? 0.0 : 1.0;
        if (weight > 0.99 || i == 1)
        {
            break;
        }
    }
    return isMostBlack ? 1.0 - ink : ink;
}

// The share of the paper that all strokes leave white.
// @param tone that is to be left outside of shadows; shadow: what these leave of it
float paperOf(Surface surface, float tone, float shadow)
{
    // Sets take it in turns, and beyond the last one all get denser.
    float least = min(1.0 - setCoverage, pow(tone, 1.0 / float(SETS)));
    float begins = 1.0;
    float paper = 1.0;
    for (int set = 1; set < ROUNDS; ++set)
    {
        bool isShadow = set > SETS || tone >= begins;
        float left = isShadow ? shadow : clamp(tone / begins, least, 1.0);
        paper *= 1.0 - inkAcross(isShadow ? shadowSide : sideOf(set), surface, 1.0 - left);
        begins *= 1.0 - setCoverage;
        if (isShadow || (shadow >= 1.0 && (set == SETS || tone >= begins)))
        {
            break;
        }
    }
    return paper;
}

void main()
{
    Surface surface = surfaceHere();
    Light light = lightOn(surface);
    float tone = toneOf(surface, light);
    float paper = paperOf(surface, tone, light.shadow);
    // A pane is a veil of paper with the strokes on it.
    float covered = 1.0 - (1.0 - u_veil) * paper;
    gl_FragColor = vec4(vec3(u_veil * paper / max(covered, 1.0e-6)), covered * surface.texel.a);
}
