// Shading in strokes of a pen on white paper, as wide on the screen whatever the size of the object and the
// distance of the eye.
//
// Strokes lie in rows in object space, on lattices whose spacings are powers of two. Of each set of rows the
// lattice counts whose strokes are once to twice as far apart as the tone asks for, and strokes halfway between
// these come in by as much as they are too far apart: the tone stays, and where one lattice gives way to
// the next one they show the same.
//
// A light tone takes one set, a dark one three. Loops go through what is drawn alone and end as soon as it
// is: where conditions only mask what they skip, on the software renderer, it would cost as much.

PRECISION_DEFAULT_HIGHP(float)

#define SETS 3
#define ROUNDS 64                  // of loops that end before; more than any compiler unrolls

uniform vec4 u_ambient;
uniform vec4 u_color;              // in the light
uniform vec3 u_lightDir;           // world space, unit, towards the light
uniform float u_width;             // of a stroke, in pixels of what is drawn into
uniform float u_opacity;           // 0 to 1; below 1 it is a pane
uniform LOWP int u_enableLight;
uniform LOWP int u_enableTexture;
uniform LOWP int u_enableNormals;
uniform sampler2D u_baseTexture;
uniform mat3 u_faceMatrix;         // as u_normalMatrix of the vertices

varying vec3 v_position;           // object space
varying vec3 v_normal;             // object space
varying vec3 v_world_normal;       // not of unit length
varying vec2 v_tc;

// The tone, which is the share of the paper that stays white.
const float shade = 0.74;          // of white that is turned away from the light
const float fullLight = 0.75;      // cosine to the light from which on white stays paper
const float colorShare = 0.28;     // how much of what a colour is darker than white counts
const float glass = 0.92;          // of the clearest pane
const float veil = 0.6;            // how much of what lies behind it the clearest pane covers
const float coarser = 2.0;         // levels of textures: what is finer than strokes would only fray them

// Strokes; lengths count widths of them.
const float setCoverage = 0.15;    // of a set, where the next one begins
const float mostCoverage = 0.5;    // they get broader beyond
const float leastCoverage = 0.06;  // they get paler below
const float segment = 96.0;        // from gap to gap along a stroke, to twice as long
const float gap = 5.0;
const float inGap = 0.0;           // ink that is left in the middle of a gap
const float palest = 0.55;          // ink of the palest stroke
const float inked = 0.5 * (1.0 + palest) * (1.0 - (1.0 - inGap) * gap / segment); // what both leave
const float waves = 1.0;           // bends in a segment
const float bend = 0.05;           // of the distance between strokes
const float aside = 0.16;          // of the same, how far a stroke lies from its place in the row
const vec2 firstWay = vec2(0.6428, 0.7660); // of the first set, unit, in a plane of two axes of the object
const vec2 shadowWay = vec2(0.9397, 0.3420);
const vec2 turn = vec2(0.5000, 0.8660);     // cosine and sine of the angle from set to set
const float sharpness = 64.0;      // of the change from one plane to the next on what is round

#ifdef LIGHT_SHARE
@LIGHT_SHARE@
#endif

struct Surface
{
    vec3 across;    // of object space, a pixel to the right
    vec3 up;        // a pixel up
    vec3 normal;    // object space
    vec3 shading;   // normal in world space
    vec4 texel;
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

vec2 bendAt(vec2 along)
{
    return waveAt(waves * along) + waveAt(1.618 * waves * along);
}

// What of the ink of a stroke is there at a place along it: less in gaps, where the pen was lifted.
// @param pixels of a segment
vec2 between(vec2 along, float pixels)
{
    vec2 part = fract(along);
    vec2 away = min(part, 1.0 - part) * pixels;
    return mix(vec2(inGap), vec2(1.0), clamp(away / (0.5 * gap * u_width) - 0.5, 0.0, 1.0));
}

// Ink of one set of strokes.
// @param place in the plane of the strokes; across, up: of it, a pixel to the right and up; way: theirs
// @param coverage share of the paper that they are to cover
float inkOf(vec2 place, vec2 across, vec2 up, vec2 way, float coverage)
{
    vec2 side = vec2(-way.y, way.x);
    // Units a pixel: across the strokes and along them.
    vec2 pixel = max(vec2(length(vec2(dot(across, side), dot(up, side))), length(vec2(dot(across, way), dot(up, way)))),
                     1.0e-30);
    // Where nearly all is black, gaps and pale strokes are filled in.
    float solid = clamp(2.0 * coverage - 1.0, 0.0, 1.0);
    coverage /= mix(inked, 1.0, solid);
    // From stroke to stroke and from gap to gap: the smallest powers of two that aren't below the lengths
    // asked for, and by how much they are above, 0 to 1.
    vec2 asked = pixel * u_width * vec2(1.0 / clamp(coverage, leastCoverage, mostCoverage), segment);
    vec2 lattice = exp2(ceil(log2(asked)));
    vec2 halfway = lattice / asked - 1.0;

    // The nearest stroke of the lattice and the nearest one halfway between two of them.
    float position = dot(place, side);
    float row = position / lattice.x;
    vec2 rows = vec2(floor(row + 0.5), floor(row) + 0.5) * lattice.x;
    vec2 numbers = numbersOf(rows);
    vec2 phase = hash(numbers);
    vec2 along = dot(place, way) / lattice.y + 7.0 * phase;
    vec2 bent = mix(bendAt(along), bendAt(2.0 * along), halfway.y) * bend
              + (2.0 * hash(numbers + 0.71) - 1.0) * aside;
    vec2 away = abs(position - rows - bent * asked.x) / pixel.x;
    float width = u_width * max(coverage / mostCoverage, 1.0);
    vec2 ink = clamp(0.5 * width + 0.5 - away, 0.0, 1.0);
    float pixels = lattice.y / pixel.y;
    vec2 there = mix(between(along, pixels), between(2.0 * along, 0.5 * pixels), halfway.y);
    ink *= mix(there * mix(vec2(palest), vec2(1.0), hash(numbers + 0.37)), vec2(1.0), solid);
    return min(ink.x + halfway.x * ink.y, 1.0) * min(coverage / leastCoverage, 1.0);
}

// A place of object space in a plane of two of its axes.
// @param plane 1 for the axis that it faces, 0 for the others
vec2 inPlane(vec3 plane, vec3 place)
{
    return plane.x * place.zy + plane.y * place.xz + plane.z * place.xy;
}

// The paper that the sets of strokes leave in a plane.
float paperIn(vec3 plane, Surface surface, float tone, float shadow)
{
    vec2 place = inPlane(plane, v_position);
    vec2 across = inPlane(plane, surface.across);
    vec2 up = inPlane(plane, surface.up);
    // Sets take it in turns, and beyond the last one all get denser.
    float least = min(1.0 - setCoverage, pow(tone, 1.0 / float(SETS)));
    vec2 way = firstWay;
    float coverage = 1.0 - max(tone, least);
    float begins = 1.0;
    float paper = 1.0;
    for (int i = 1; i < ROUNDS; ++i)
    {
        paper *= 1.0 - inkOf(place, across, up, way, coverage);
        begins *= 1.0 - setCoverage;
        bool isLast = tone >= begins || i >= SETS;
        if (isLast && shadow >= 1.0)
        {
            break;
        }
        way = isLast ? shadowWay : mat2(turn.x, turn.y, -turn.y, turn.x) * way;
        coverage = 1.0 - (isLast ? shadow : max(tone / begins, least));
        shadow = isLast ? 1.0 : shadow;
        tone = isLast ? 1.0 : tone;
    }
    return paper;
}

float largestOf(vec3 v)
{
    return max(max(v.x, v.y), v.z);
}

// The paper in the plane that the surface faces, and in two only where it bends from one to the other.
float paperOn(Surface surface, float tone, float shadow)
{
    // Factors settle it for what faces two alike.
    vec3 weights = abs(surface.normal) * vec3(1.0, 1.16, 1.07);
    weights = pow(weights / max(largestOf(weights), 1.0e-30), vec3(sharpness));
    float sum = 0.0;
    float paper = 0.0;
    for (int i = 0; i < ROUNDS; ++i)
    {
        float weight = largestOf(weights);
        vec3 plane = step(weight, weights);
        plane.yz *= 1.0 - plane.x;
        plane.z *= 1.0 - plane.y;
        paper += weight * paperIn(plane, surface, tone, shadow);
        sum += weight;
        weights *= 1.0 - plane;
        if (largestOf(weights) < 0.02)
        {
            break;
        }
    }
    return paper / sum;
}

void main()
{
    Surface surface = surfaceHere();
    Light light = lightOn(surface);
    float paper = paperOn(surface, toneOf(surface, light), light.shadow);
    // A pane is a veil of paper with the strokes on it.
    float veiled = mix(veil, 1.0, u_opacity);
    float covered = 1.0 - (1.0 - veiled) * paper;
    gl_FragColor = vec4(vec3(veiled * paper / covered), covered * surface.texel.a);
}
