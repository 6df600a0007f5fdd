@OPTION_DEFINITIONS@

PRECISION_DEFAULT_HIGHP(float)

#define PI 3.1415926

uniform HIGHP sampler2D uDepthTexture;
uniform sampler2D uRenderedTexture;    // the finished picture
uniform float uRenderedTextureWidth;   // of the whole picture, pixels
uniform float uRenderedTextureHeight;  // of the whole picture, pixels
uniform HIGHP float uZNear;
uniform HIGHP float uZFar;
#ifdef PART
uniform HIGHP vec4 uPart;              // lower left pixel of the textures in the whole picture, and their size
uniform HIGHP vec2 uWhole;             // size of the whole picture, in pixels as fine as those
#endif

varying vec2 texCoord;                 // 0 to 1, in the textures

const int samples = 16;
const float radius = 4.0;              // of the spiral
const float aoclamp = 0.3;             // lower bound of the depth that scales the step: no halos at the rim
const float noiseamount = 0.0002;      // dithering
const float diffarea = 0.3;            // bell width on the near side: no self-shadowing
const float gdisplace = 0.3;           // centre of the bell
const bool onlyAO = false;             // shows occlusion alone
const float lumInfluence = 0.5;        // how much luminance reduces occlusion

#define width uRenderedTextureWidth
#define height uRenderedTextureHeight
#define znear uZNear
#define zfar uZFar

// Samples are placed in the whole picture, of which the textures may hold a part. They are counted in pixels:
// shares of a part would round in another way than shares of the whole.
vec2 toTexture(vec2 coord)
{
#ifdef PART
    return (coord * uWhole - uPart.xy) / uPart.zw;
#else
    return coord;
#endif
}

// The pixel's own place in the whole picture.
vec2 placeInWhole()
{
#ifdef PART
    return (gl_FragCoord.xy + uPart.xy) / uWhole;
#else
    return texCoord;
#endif
}

vec2 rand(vec2 coord)
{
#ifdef USE_NOISE
    float noiseX = clamp(fract(sin(dot(coord, vec2(12.9898, 78.233))) * 43758.5453), 0.0, 1.0) * 2.0 - 1.0;
    float noiseY = clamp(fract(sin(dot(coord, vec2(12.9898, 78.233) * 2.0)) * 43758.5453), 0.0, 1.0) * 2.0 - 1.0;
#else
    float s = fract(1.0 - coord.s * (width / 2.0));
    float t = fract(coord.t * (height / 2.0));
    float noiseX = (s * 0.25 + t * 0.75) * 2.0 - 1.0;
    float noiseY = (s * 0.75 + t * 0.25) * 2.0 - 1.0;
#endif
    return vec2(noiseX, noiseY) * noiseamount;
}

#ifdef USE_MIST
float doMist()
{
    float miststart = znear;
    float mistend = zfar;
    float zdepth = texture2D(uDepthTexture, texCoord).x;
    float depth = -zfar * znear / (zdepth * (zfar - znear) - zfar);
    return clamp((depth - miststart) / mistend, 0.0, 1.0);
}
#endif

// Linear depth, 0 to 1. The pixel's own place is tested, not the argument: a sample outside the
// picture is meant to pass.
float readDepth(vec2 coord)
{
    float d = texture2D(uDepthTexture, toTexture(coord)).r;
    return texCoord.x < 0.0 || texCoord.y < 0.0 ? 1.0 : (2.0 * znear) / (zfar + znear - d * (zfar - znear));
}

float compareDepths(float depth1, float depth2, inout int far)
{
    float garea = 2.0;
    float diff = (depth1 - depth2) * 100.0;
    if (diff < gdisplace)
    {
        garea = diffarea;
    }
    else
    {
        far = 1;
    }
    return pow(2.7182, -2.0 * (diff - gdisplace) * (diff - gdisplace) / (garea * garea));
}

float calAO(float depth, float dw, float dh)
{
    float dd = (1.0 - depth) * radius;
    vec2 place = placeInWhole();
    vec2 coord = place + vec2(dw, dh) * dd;
    vec2 coord2 = place - vec2(dw, dh) * dd;
    int far = 0;
    float temp = compareDepths(depth, readDepth(coord), far);
    if (far > 0)
    {
        // Beyond an edge: what lies on the other side of the pixel tells more.
        float temp2 = compareDepths(readDepth(coord2), depth, far);
        temp += (1.0 - temp) * temp2;
    }
    return temp;
}

void main()
{
    vec2 noise = rand(placeInWhole());
    float depth = readDepth(placeInWhole());
    float w = (1.0 / width) / clamp(depth, aoclamp, 1.0) + noise.x * (1.0 - noise.x);
    float h = (1.0 / height) / clamp(depth, aoclamp, 1.0) + noise.y * (1.0 - noise.y);

    // The golden angle spreads the samples evenly. A turn at a time is cheaper than the cosine and
    // sine of each angle.
    float dl = PI * (3.0 - sqrt(5.0));
    mat2 turn = mat2(cos(dl), sin(dl), -sin(dl), cos(dl));
    vec2 spoke = vec2(1.0, 0.0);
    float dz = 1.0 / float(samples);
    float z = 1.0 - dz / 2.0;
    float ao = 0.0;
    // One sample more than the division below counts: that is meant.
    for (int i = 0; i <= samples; i++)
    {
        float r = sqrt(1.0 - z);
        ao += calAO(depth, spoke.x * r * w, spoke.y * r * h);
        z -= dz;
        spoke = turn * spoke;
    }
    ao = 1.0 - ao / float(samples);
#ifdef USE_MIST
    // The background is not dimmed.
    ao = clamp(mix(ao, 1.0, doMist()), 0.0, 1.0);
#endif

    vec3 color = texture2D(uRenderedTexture, texCoord).rgb;
    float lum = dot(color, vec3(0.299, 0.587, 0.114));
    vec3 shade = mix(vec3(ao), vec3(1.0), vec3(lum) * lumInfluence);
    vec3 final = onlyAO ? shade : color * shade;
    gl_FragColor = vec4(final, 1.0);
}
