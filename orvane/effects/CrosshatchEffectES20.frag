PRECISION_DEFAULT_HIGHP(float)

uniform vec4 u_ambient;
uniform vec4 u_color;
uniform bool u_ambientPass;
uniform LOWP int u_enableTexture;
uniform float u_hScale;            // divisors of the texture coordinate
uniform float u_vScale;
uniform sampler2D u_texture0;      // strokes in alpha, the lightest first
uniform sampler2D u_texture1;
uniform sampler2D u_texture2;
uniform sampler2D u_texture3;
uniform sampler2D u_baseTexture;
uniform sampler2D u_noiseTexture;  // not read

varying vec3 v_position;           // object space
varying vec2 v_tc;
varying vec3 v_normal;             // world space
varying float v_colorfactor;       // cosine between normal and light

const vec3 lumcoeff = vec3(0.299, 0.587, 0.114);
const float brushScale = 0.2;      // pictures a unit of object space

#ifdef LIGHT_SHARE
@LIGHT_SHARE@
#endif

vec4 surfaceColor()
{
    vec4 s = texture2D(u_baseTexture, v_tc / vec2(u_hScale, u_vScale));
    vec4 lit = clamp(u_ambient + u_color * v_colorfactor, 0.0, 1.0);
    vec4 color;
    if (u_ambientPass)
    {
        color = u_enableTexture == 1 ? u_ambient * s : u_ambient;
    }
    else if (u_enableTexture == 1)
    {
        color = vec4(lit.rgb * s.rgb, s.a * u_color.a);
    }
    else
    {
        color = vec4(lit.rgb, u_color.a);
    }
    return color;
}

// The picture laid on the surface along the three axes, each as far as the surface faces it.
vec4 sampleTex(sampler2D tex, float scale)
{
    vec3 w = normalize(max(abs(v_normal), 0.00001));
    w /= w.x + w.y + w.z;
    return texture2D(tex, v_position.yz * scale) * w.x
         + texture2D(tex, v_position.xz * scale) * w.y
         + texture2D(tex, v_position.xy * scale) * w.z;
}

// Two scales in the golden ratio keep the strokes from repeating visibly.
float strokes(sampler2D tex)
{
    return max(sampleTex(tex, brushScale).a, sampleTex(tex, 0.618 * brushScale).a);
}

float toneOf(float lum, float tone0, float tone1, float tone2, float tone3)
{
    float tone;
    if (lum < 0.25)
    {
        tone = mix(tone0, tone1, lum / 0.25);
    }
    else if (lum < 0.5)
    {
        tone = mix(tone1, tone2, (lum - 0.25) / 0.25);
    }
    else if (lum < 0.75)
    {
        tone = mix(tone2, tone3, (lum - 0.5) / 0.25);
    }
    else
    {
        tone = mix(tone3, 1.0, (lum - 0.75) / 0.25);
    }
    return tone;
}

void main()
{
    float lum = dot(surfaceColor().rgb, lumcoeff);
#ifdef LIGHT_SHARE
    // Twice, since half as much light is but one tone denser.
    float shade = OVSL_ShadowTone();
    lum *= shade * shade;
#endif
    float tone0 = 1.0 - strokes(u_texture3);
    float tone1 = 1.0 - strokes(u_texture2);
    float tone2 = 1.0 - strokes(u_texture1);
    float tone3 = 1.0 - strokes(u_texture0);
    float tone = toneOf(lum, tone0, tone1, tone2, tone3);
    gl_FragColor = vec4(tone, tone, tone, 1.0);
}
