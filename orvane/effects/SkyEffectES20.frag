PRECISION_DEFAULT_HIGHP(float)

uniform vec4 u_horizonColor;
uniform vec4 u_skyColor;
uniform vec4 u_upperSkyColor;
uniform float u_horizonStop; // v_tc.y where the horizon colour has faded into the sky colour
uniform float u_skyStop;     // v_tc.y where the sky colour has faded into the upper one

varying MEDIUMP vec2 v_tc;

void main()
{
    float weightHorizon = 1.0 - clamp(v_tc.y / u_horizonStop, 0.0, 1.0);
    float weightSky = 1.0 - clamp((v_tc.y - u_horizonStop) / (u_skyStop - u_horizonStop), 0.0, 1.0) - weightHorizon;
    float weightUpperSky = 1.0 - weightSky - weightHorizon;
    gl_FragColor = u_horizonColor * weightHorizon + u_skyColor * weightSky + u_upperSkyColor * weightUpperSky;
}
