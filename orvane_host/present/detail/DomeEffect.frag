PRECISION_DEFAULT_HIGHP(float)

uniform vec4 u_horizonColor;
uniform vec4 u_skyColor;
uniform vec4 u_upperSkyColor;
uniform float u_horizonStop; // where the horizon colour has faded into the sky colour, of a quarter turn up
uniform float u_skyStop;     // where the sky colour has faded into the upper one
uniform vec2 u_first;        // the lower left pixel of the target in all of the picture
uniform vec3 u_ray;          // world space, of the corner of all of the picture
uniform vec3 u_rayRight;     // and what a pixel to the right and one up add
uniform vec3 u_rayUp;

// 0 at the horizon, 1 straight up.
float heightHere()
{
    vec2 pixel = gl_FragCoord.xy + u_first;
    vec3 ray = u_ray + pixel.x * u_rayRight + pixel.y * u_rayUp;
    return atan(ray.y, length(ray.xz)) / 1.57079633;
}

void main()
{
    float height = heightHere();
    float horizon = 1.0 - clamp(height / u_horizonStop, 0.0, 1.0);
    float sky = 1.0 - clamp((height - u_horizonStop) / (u_skyStop - u_horizonStop), 0.0, 1.0) - horizon;
    float upperSky = 1.0 - sky - horizon;
    gl_FragColor = u_horizonColor * horizon + u_skyColor * sky + u_upperSkyColor * upperSky;
}
