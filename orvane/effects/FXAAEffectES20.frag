PRECISION_DEFAULT_MEDIUMP(float)

#define FXAA_SPAN_MAX 8.0
#define FXAA_REDUCE_MUL (1.0 / 8.0)
#define FXAA_REDUCE_MIN (1.0 / 128.0)
#define FXAA_EDGE_THRESH (1.0 / 8.0)
#define FXAA_EDGE_THRESH_MIN (1.0 / 16.0)

uniform float u_width;           // pixels
uniform float u_height;          // pixels
uniform sampler2D u_texture0;    // the captured picture

varying HIGHP vec2 v_fragCoord;  // pixels

const vec3 luma = vec3(0.299, 0.587, 0.114);

vec3 colorAt(vec2 coord)
{
    return texture2D(u_texture0, coord).rgb;
}

void main()
{
    vec2 inverseVP = vec2(1.0 / u_width, 1.0 / u_height);
    vec2 centre = v_fragCoord * inverseVP;
    vec3 rgbNW = colorAt((v_fragCoord + vec2(-1.0, -1.0)) * inverseVP);
    vec3 rgbNE = colorAt((v_fragCoord + vec2(1.0, -1.0)) * inverseVP);
    vec3 rgbSW = colorAt((v_fragCoord + vec2(-1.0, 1.0)) * inverseVP);
    vec3 rgbSE = colorAt((v_fragCoord + vec2(1.0, 1.0)) * inverseVP);
    vec3 rgbM = colorAt(centre);

    float lumaNW = dot(rgbNW, luma);
    float lumaNE = dot(rgbNE, luma);
    float lumaSW = dot(rgbSW, luma);
    float lumaSE = dot(rgbSE, luma);
    float lumaM = dot(rgbM, luma);
    float lumaMin = min(lumaM, min(min(lumaNW, lumaNE), min(lumaSW, lumaSE)));
    float lumaMax = max(lumaM, max(max(lumaNW, lumaNE), max(lumaSW, lumaSE)));

    // Along the edge: across the gradient of the luminance.
    vec2 dir = vec2(-((lumaNW + lumaNE) - (lumaSW + lumaSE)), (lumaNW + lumaSW) - (lumaNE + lumaSE));
    float dirReduce = max((lumaNW + lumaNE + lumaSW + lumaSE) * (0.25 * FXAA_REDUCE_MUL), FXAA_REDUCE_MIN);
    float rcpDirMin = 1.0 / (min(abs(dir.x), abs(dir.y)) + dirReduce);
    dir = clamp(dir * rcpDirMin, -FXAA_SPAN_MAX, FXAA_SPAN_MAX) * inverseVP;

    vec3 rgbA = 0.5 * (colorAt(centre + dir * (1.0 / 3.0 - 0.5)) + colorAt(centre + dir * (2.0 / 3.0 - 0.5)));
    vec3 rgbB = rgbA * 0.5 + 0.25 * (colorAt(centre + dir * -0.5) + colorAt(centre + dir * 0.5));
    float lumaB = dot(rgbB, luma);
    bool leavesRange = lumaB < lumaMin || lumaB > lumaMax;
    gl_FragColor = vec4(leavesRange ? rgbA : rgbB, 1.0);
}
