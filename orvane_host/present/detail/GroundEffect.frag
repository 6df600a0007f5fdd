PRECISION_DEFAULT_HIGHP(float)

// The ray of a pixel, as a value in the middle of the picture and its change to the right and
// upward. It follows from the number of the pixel in all of the picture: from corner to corner of a part it would
// round in another way. Along the ground in x and y, from the middle of the model; above the ground in z. A ray
// is as long as a unit along the line of sight.
uniform vec2 u_first;         // the lower left pixel of the target in all of the picture
uniform vec2 u_size;          // of all of it, pixels
uniform vec3 u_start;
uniform vec3 u_startRight;
uniform vec3 u_startUp;
uniform vec3 u_ray;
uniform vec3 u_rayRight;
uniform vec3 u_rayUp;

uniform vec4 u_color;         // alpha: 1 for a plain, 0 for shadows alone
uniform float u_reach;        // where half of the plain has faded
uniform vec2 u_fog;           // factor and offset of the share that is left at a distance
uniform vec4 u_fogColor;
uniform sampler2D u_shadow;   // how dark the ground is, in red
uniform vec4 u_shadowPlace;   // factor and offset from the ground to the texture
uniform float u_shadowStrength;
uniform vec4 u_depth;         // factors a, b, c, d of the depth (a z + b) / (c z + d)

vec3 along(vec3 middle, vec3 right, vec3 up)
{
    vec2 place = (gl_FragCoord.xy + u_first) / u_size * 2.0 - 1.0;
    return middle + place.x * right + place.y * up;
}

// How much of the ground's light is kept off.
float contactShadow(vec2 place)
{
    vec2 texel = place * u_shadowPlace.xy + u_shadowPlace.zw;
    vec2 inside = step(vec2(0.0), texel) * step(texel, vec2(1.0));
    return u_shadowStrength * inside.x * inside.y * texture2D(u_shadow, texel).r;
}

void main()
{
    vec3 start = along(u_start, u_startRight, u_startUp);
    vec3 ray = along(u_ray, u_rayRight, u_rayUp);
    // From below, and where the eye looks over the horizon, there is no ground.
    if (ray.z >= 0.0 || start.z <= 0.0)
    {
        discard;
    }
    float distance = start.z / -ray.z;
    vec2 place = start.xy + distance * ray.xy;

    float share = length(place) / u_reach;
    float plain = u_color.a / (1.0 + share * share * share);
    float shadow = contactShadow(place);
    float kept = clamp(distance * u_fog.x + u_fog.y, 0.0, 1.0);
    // A shadow alone is black and as opaque as it is dark; on a plain it darkens that.
    float opacity = plain + shadow * kept * (1.0 - plain);
    vec3 color = mix(u_fogColor.rgb, u_color.rgb * (1.0 - shadow), kept) * plain;
    gl_FragColor = vec4(color / max(opacity, 0.0001), opacity);
    gl_FragDepth = clamp((u_depth.x * distance + u_depth.y) / (u_depth.z * distance + u_depth.w), 0.0, 1.0);
}
