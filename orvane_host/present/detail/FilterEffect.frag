// Smooths along the edges in the luminance of a picture.
//
// What lies between texels is mixed from their middles, by shares that follow from the distance to the pixel
// alone: coordinates of a texture are shares of its size, and rounding would differ from place to place.
//
// Where nothing differs, loops end early: where conditions only mask what they skip, on the software
// renderer, it would cost as much as all of it.

PRECISION_DEFAULT_HIGHP(float)

#define SPAN 8.0                  // pixels along an edge that are taken together at most
#define REDUCE_SHARE (1.0 / 8.0)  // of the mean luminance that keeps noise from making edges
#define REDUCE_LEAST (1.0 / 128.0)
#define LOOKS 4                   // along the edge
#define ROUNDS 64                 // of loops that end before; more than any compiler unrolls

uniform sampler2D u_picture;
uniform vec2 u_size;              // pixels

const vec3 luma = vec3(0.299, 0.587, 0.114);

// @param away whole pixels from this one
vec3 colorAt(vec2 away)
{
    return texture2D(u_picture, (gl_FragCoord.xy + away) / u_size).rgb;
}

vec3 colorBetween(vec2 away)
{
    vec2 whole = floor(away);
    vec2 share = away - whole;
    vec3 lower = mix(colorAt(whole), colorAt(whole + vec2(1.0, 0.0)), share.x);
    vec3 upper = mix(colorAt(whole + vec2(0.0, 1.0)), colorAt(whole + vec2(1.0, 1.0)), share.x);
    return mix(lower, upper, share.y);
}

// Luminance of the neighbours across the corners: lower left and right, upper left and right.
vec4 lumaAbout()
{
    return vec4(dot(colorAt(vec2(-1.0, -1.0)), luma), dot(colorAt(vec2(1.0, -1.0)), luma),
                dot(colorAt(vec2(-1.0, 1.0)), luma), dot(colorAt(vec2(1.0, 1.0)), luma));
}

// Across the gradient of the luminance, in pixels.
vec2 wayAlongEdge(vec4 about)
{
    vec2 way = vec2((about.z + about.w) - (about.x + about.y), (about.x + about.z) - (about.y + about.w));
    float reduce = max(dot(about, vec4(0.25 * REDUCE_SHARE)), REDUCE_LEAST);
    return clamp(way / (min(abs(way.x), abs(way.y)) + reduce), -SPAN, SPAN);
}

void main()
{
    vec3 here = colorAt(vec2(0.0));
    vec4 about = lumaAbout();
    vec2 way = wayAlongEdge(about);
    float lowest = min(dot(here, luma), min(min(about.x, about.y), min(about.z, about.w)));
    float highest = max(dot(here, luma), max(max(about.x, about.y), max(about.z, about.w)));
    bool isEdge = lowest < highest;
    vec3 ends = vec3(0.0);
    vec3 middle = vec3(0.0);
    for (int i = 0; i < ROUNDS; ++i)
    {
        vec3 color = colorBetween(way * (float(i) / float(LOOKS - 1) - 0.5));
        bool isEnd = i == 0 || i == LOOKS - 1;
        ends += isEnd ? color : vec3(0.0);
        middle += isEnd ? vec3(0.0) : color;
        if (!isEdge || i == LOOKS - 1)
        {
            break;
        }
    }
    vec3 narrow = 0.5 * middle;
    vec3 wide = 0.25 * (middle + ends);
    float reached = dot(wide, luma);
    vec3 smoothed = reached < lowest || reached > highest ? narrow : wide;
    gl_FragColor = vec4(isEdge ? smoothed : here, 1.0);
}
