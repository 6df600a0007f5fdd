// Shading in strokes of a pen, as wide on the screen whatever the size of the object and the distance
// of the eye.
//
// Strokes lie on lattices in object space whose spacings are powers of two. Of each direction the lattice
// counts whose strokes are once to twice as far apart as the tone asks for, and strokes halfway between
// these come in by as much as they are too far apart: the tone stays, and where one lattice gives way to
// the next one they show the same.

PRECISION_DEFAULT_HIGHP(float)

#define DIRECTIONS 4

uniform vec4 u_ambient;
uniform vec4 u_color;
uniform vec3 u_lightDir;           // world space, unit, towards the light
uniform float u_width;             // of a stroke, in pixels of what is drawn into
uniform LOWP int u_enableLight;
uniform LOWP int u_enableTexture;
uniform LOWP int u_enableNormals;
uniform sampler2D u_baseTexture;
uniform mat3 u_faceMatrix;         // as u_normalMatrix of the vertices

varying vec3 v_position;           // object space
varying vec3 v_normal;             // object space
varying vec3 v_world_normal;       // not of unit length
varying vec2 v_tc;

const float mostCoverage = 0.5;    // of a direction in strokes of that width; they get broader beyond
const float leastCoverage = 0.06;  // they get paler below
const float segment = 110.0;       // widths from gap to gap along a stroke, to twice as many
const float gap = 5.0;             // widths
const float inGap = 0.5;           // ink that is left in the middle of a gap
const float wave = 40.0;           // widths from bend to bend, to twice as many
const float bend = 0.06;           // of the distance between strokes
const float aside = 0.15;          // of the same, how far a stroke lies from its place in the row
const float palest = 0.6;          // ink of the palest stroke

#ifdef LIGHT_SHARE
@LIGHT_SHARE@
#endif

struct Surface
{
    vec3 across;    // of object space, a pixel to the right
    vec3 up;        // a pixel up
    vec3 normal;    // object space
    vec3 shading;   // normal in world space
};

Surface surfaceHere()
{
    Surface surface;
    surface.across = dFdx(v_position);
    surface.up = dFdy(v_position);
    vec3 face = cross(surface.across, surface.up);
    surface.normal = u_enableNormals == 1 ? v_normal : face;
    surface.shading = u_enableNormals == 1 ? v_world_normal : u_faceMatrix * face;
    return surface;
}

float luminance(Surface surface)
{
    vec4 lit = u_ambient + u_color;
    if (u_enableLight == 1)
    {
        float facing = dot(surface.shading, u_lightDir) / max(length(surface.shading), 1.0e-30);
        // Of a face alone it is not known which side is its front.
        lit = u_ambient + u_color * (u_enableNormals == 1 ? max(facing, 0.0) : abs(facing));
    }
    vec3 color = clamp(lit.rgb, 0.0, 1.0);
    if (u_enableTexture == 1)
    {
        color *= texture2D(u_baseTexture, v_tc).rgb;
    }
    return dot(color, vec3(0.299, 0.587, 0.114));
}

float hash(float x)
{
    x = fract(x * 0.1031);
    x *= x + 33.33;
    return fract(x * (x + x));
}

// A number of a stroke by its place, the same in each lattice that has it and of any magnitude.
float numberOf(float place)
{
    float size = abs(place);
    return size > 0.0 ? place * exp2(-floor(log2(size))) * 4093.0 : 0.0;
}

float waveAt(float x)
{
    float whole = floor(x);
    float part = x - whole;
    part *= part * (3.0 - 2.0 * part);
    return mix(hash(whole), hash(whole + 1.0), part) * 2.0 - 1.0;
}

// The smallest power of two that isn't below a length, and by how much it is above: 0 to 1.
vec2 lattice(float least)
{
    float spacing = exp2(ceil(log2(least)));
    return vec2(spacing, spacing / least - 1.0);
}

// What of the ink of a stroke is there at a place along it: less in gaps, where the pen was lifted.
// @param pixels of a lattice of gaps
float between(float along, float pixels, float width)
{
    float part = fract(along);
    float away = min(part, 1.0 - part) * pixels;
    return mix(inGap, 1.0, clamp(away / (0.5 * gap * width) - 0.5, 0.0, 1.0));
}

// One stroke, by the distance from where it would be without bends.
struct Pen
{
    float width;       // pixels
    float along;       // units
    float pixel;       // units across
    float pixelAlong;  // units along
    float spacing;     // units between strokes, as the tone asks for
    vec2 gaps;         // lattices along a stroke
    vec2 bends;
    float solid;       // 0 to 1: how far gaps and pale strokes are filled in, where nearly all is black
};

float stroke(Pen pen, float place, float away)
{
    float number = numberOf(place);
    float phase = hash(number);
    vec2 bends = pen.along / pen.bends.x * vec2(1.0, 2.0) + 97.0 * phase;
    float bent = (mix(waveAt(bends.x), waveAt(bends.y), pen.bends.y) * bend + (2.0 * hash(number + 0.71) - 1.0) * aside)
        * pen.spacing;
    float reach = abs(away - bent) / pen.pixel;
    float ink = clamp(0.5 * pen.width + 0.5 - reach, 0.0, 1.0);

    vec2 along = pen.along / pen.gaps.x * vec2(1.0, 2.0) + 7.0 * phase;
    float pixels = pen.gaps.x / pen.pixelAlong;
    float there = mix(between(along.x, pixels, u_width), between(along.y, 0.5 * pixels, u_width), pen.gaps.y);
    return ink * mix(there * mix(palest, 1.0, hash(number + 0.37)), 1.0, pen.solid);
}

// The share of the paper that gaps and pale strokes leave inked of what strokes cover.
float inked(vec2 gaps)
{
    float lost = (1.0 - inGap) * gap / (segment * (1.0 + gaps.y));
    return (1.0 - lost * mix(1.0, 2.0, gaps.y)) * 0.5 * (1.0 + palest);
}

// Ink of the strokes of one direction.
// @param direction of the strokes, in object space; side: across them, in the same plane
float inkOf(Surface surface, vec3 direction, vec3 side, float coverage)
{
    Pen pen;
    pen.along = dot(v_position, direction);
    pen.pixel = max(length(vec2(dot(surface.across, side), dot(surface.up, side))), 1.0e-30);
    pen.pixelAlong = max(length(vec2(dot(surface.across, direction), dot(surface.up, direction))), 1.0e-30);
    pen.gaps = lattice(segment * u_width * pen.pixelAlong);
    pen.bends = lattice(wave * u_width * pen.pixelAlong);
    pen.solid = clamp(2.0 * coverage - 1.0, 0.0, 1.0);
    coverage /= mix(inked(pen.gaps), 1.0, pen.solid);
    float drawn = clamp(coverage, leastCoverage, mostCoverage);
    pen.width = u_width * max(coverage / mostCoverage, 1.0);
    pen.spacing = pen.pixel * u_width / drawn;
    vec2 rows = lattice(pen.spacing);

    float place = dot(v_position, side);
    float row = floor(place / rows.x + 0.5) * rows.x;
    float other = (floor(place / rows.x) + 0.5) * rows.x;
    float ink = stroke(pen, row, place - row) + rows.y * stroke(pen, other, place - other);
    return min(ink, 1.0) * min(coverage / leastCoverage, 1.0);
}

// The light that strokes of all directions leave of a plane of object space.
float paperIn(Surface surface, vec3 right, vec3 up, float tone)
{
    float paper = 1.0;
    // How much light is left when a direction begins, and which way it goes.
    vec4 begins = vec4(1.0, 0.62, 0.4, 0.25);
    vec4 ends = vec4(0.62, 0.4, 0.25, 0.0);
    for (int i = 0; i < DIRECTIONS; ++i)
    {
        float first = i == 0 ? begins.x : i == 1 ? begins.y : i == 2 ? begins.z : begins.w;
        float last = i == 0 ? ends.x : i == 1 ? ends.y : i == 2 ? ends.z : ends.w;
        if (tone >= first)
        {
            break;
        }
        vec2 way = i == 0 ? vec2(0.7071, 0.7071) : i == 1 ? vec2(-0.7071, 0.7071)
                 : i == 2 ? vec2(0.9397, 0.3420) : vec2(-0.3420, 0.9397);
        float coverage = 1.0 - max(tone, last) / first;
        vec3 direction = way.x * right + way.y * up;
        vec3 side = way.x * up - way.y * right;
        paper *= 1.0 - inkOf(surface, direction, side, coverage);
    }
    return paper;
}

void main()
{
    Surface surface = surfaceHere();
    float tone = luminance(surface);
#ifdef LIGHT_SHARE
    tone *= OVSL_ShadowTone();
#endif
    // Drawn in the plane of the axes that the surface faces, and in two only where it bends from one to
    // the other. Factors settle it for what faces two alike.
    vec3 weights = abs(surface.normal) / max(length(surface.normal), 1.0e-30) * vec3(1.0, 1.16, 1.07);
    weights = pow(weights, vec3(24.0));
    weights /= max(weights.x + weights.y + weights.z, 1.0e-30);
    float paper = 0.0;
    if (weights.x > 0.01)
    {
        paper += weights.x * paperIn(surface, vec3(0.0, 0.0, 1.0), vec3(0.0, 1.0, 0.0), tone);
    }
    if (weights.y > 0.01)
    {
        paper += weights.y * paperIn(surface, vec3(1.0, 0.0, 0.0), vec3(0.0, 0.0, 1.0), tone);
    }
    if (weights.z > 0.01)
    {
        paper += weights.z * paperIn(surface, vec3(1.0, 0.0, 0.0), vec3(0.0, 1.0, 0.0), tone);
    }
    vec3 drawn = step(vec3(0.01), weights) * weights;
    paper /= max(drawn.x + drawn.y + drawn.z, 0.01);
    gl_FragColor = vec4(vec3(paper), 1.0);
}
